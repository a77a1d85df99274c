// Movie: opening a movie file with FFmpeg under time limits, and taking one still frame from it.
#include "movie/Movie.h"

#include "movie/FFmpeg_p.h"
#include "support/Failure.h"
#include "support/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QTransform>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <new>
#include <typeinfo>
#include <utility>

namespace orvel {

using namespace movie_detail;

namespace {

std::atomic<int> decodingThreads { 0 };

int interruptCallback(void *opaque) { return static_cast<const Deadline *>(opaque)->passed() ? 1 : 0; }

double secondsOf(int64_t ts, AVRational base) { return double(ts) * av_q2d(base); }

bool sideFits(int side) { return side > 0 && side <= Movie::maxSide; }

bool sizeFits(int w, int h) { return sideFits(w) && sideFits(h) && qint64(w) * h <= Movie::maxPixels; }

// The clockwise rotation (0, 90, 180 or 270 degrees) that a player applies to the stream's frames.
int rotationOf(const AVStream *stream)
{
    size_t size = 0;
    const uint8_t *matrix = ffmpeg().av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!matrix || size < 9 * sizeof(int32_t))
        return 0;
    const double counterClockwise
        = ffmpeg().av_display_rotation_get(reinterpret_cast<const int32_t *>(matrix));
    if (std::isnan(counterClockwise))
        return 0;
    int degrees = int(std::lround(-counterClockwise)) % 360;
    if (degrees < 0)
        degrees += 360;
    // Only quarter turns are shown; anything else is taken as the nearest one.
    return ((degrees + 45) / 90 % 4) * 90;
}

// The picture size a player shows for w × h pixels of the aspect ratio: the height kept, the width
// stretched or narrowed. An absurd ratio is ignored rather than trusted.
QSize displaySize(int w, int h, AVRational sampleAspect)
{
    if (sampleAspect.num <= 0 || sampleAspect.den <= 0)
        return { w, h };
    const double ratio = av_q2d(sampleAspect);
    if (!(ratio >= 1.0 / 16 && ratio <= 16))
        return { w, h };
    const int width = std::max(1, int(std::lround(w * ratio)));
    if (!sizeFits(width, h))
        return { w, h };
    return { width, h };
}

int swsColourspace(AVColorSpace space)
{
    switch (space) {
    case AVCOL_SPC_BT709:
        return SWS_CS_ITU709;
    case AVCOL_SPC_FCC:
        return SWS_CS_FCC;
    case AVCOL_SPC_SMPTE240M:
        return SWS_CS_SMPTE240M;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return SWS_CS_BT2020;
    default:
        return SWS_CS_DEFAULT;
    }
}

void logFailure(const char *operation, const char *name, const QString &reason)
{
    logException(QString::fromLatin1(operation), QStringLiteral("Movie"), QString::fromLatin1(name), reason);
}

} // namespace

Movie::Movie()
    : m_h(std::make_unique<Handles>())
{
}

Movie::~Movie() = default;

void Movie::setLibraryLogging(bool on)
{
    // FFmpeg logs to standard error by default; it is quiet from its loading on unless asked.
    setFFmpegLogLevel(on ? AV_LOG_INFO : AV_LOG_QUIET);
}

void Movie::setDecodingThreads(int threads) { decodingThreads.store(std::max(0, threads)); }

MoviePtr Movie::initWithFile(const QString &path, QString *error)
{
    auto fail = [&](const QString &why) { return failure<MoviePtr>(error, why); };
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile())
        return fail(QStringLiteral("not a regular file"));
    if (info.size() == 0)
        return fail(QStringLiteral("empty file"));
    QString unavailable;
    if (!loadFFmpeg(&unavailable))
        return fail(unavailable);

    MoviePtr movie(new Movie());
    movie->m_path = path;
    Handles &h = *movie->m_h;

    AVFormatContext *format = ffmpeg().avformat_alloc_context();
    if (!format)
        return fail(QStringLiteral("out of memory"));
    format->interrupt_callback.callback = interruptCallback;
    format->interrupt_callback.opaque = &h.deadline;
    // Opening and probing share one wait: a slow file is used in whatever state it is then in.
    h.deadline.setFromNow(loadWaitSeconds);
    const QByteArray name = QFile::encodeName(path);
    if (ffmpeg().avformat_open_input(&format, name.constData(), nullptr, nullptr)
        < 0) // frees format on failure
        return fail(QStringLiteral("not a movie FFmpeg can read"));
    h.format.reset(format);

    // A probe cut short by the wait still leaves every stream that was found; go on with those.
    ffmpeg().avformat_find_stream_info(format, nullptr);
    h.deadline = Deadline();

    for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVStream *stream = format->streams[i];
        if (stream->codecpar->codec_type != AVMEDIA_TYPE_VIDEO)
            continue;
        if (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) {
            if (h.coverStream < 0 && stream->attached_pic.size > 0)
                h.coverStream = int(i);
        } else if (h.videoStream < 0) {
            h.videoStream = int(i);
        }
    }
    if (h.videoStream >= 0) {
        const int best = ffmpeg().av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        if (best >= 0 && !(format->streams[best]->disposition & AV_DISPOSITION_ATTACHED_PIC))
            h.videoStream = best;
    }
    return movie;
}

double Movie::movieDuration() const
{
    const AVFormatContext *format = m_h->format.get();
    if (!format)
        return 0.0;
    if (format->duration != AV_NOPTS_VALUE && format->duration > 0)
        return double(format->duration) / AV_TIME_BASE;
    if (m_h->videoStream >= 0) {
        const AVStream *stream = format->streams[m_h->videoStream];
        if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0)
            return secondsOf(stream->duration, stream->time_base);
    }
    return 0.0;
}

bool Movie::hasVideo() const { return m_h->videoStream >= 0; }

QSizeF Movie::movieSize() const
{
    const int index = m_h->videoStream >= 0 ? m_h->videoStream : m_h->coverStream;
    if (index < 0)
        return QSizeF(0, 0);
    AVStream *stream = m_h->format->streams[index];
    const int w = stream->codecpar->width;
    const int h = stream->codecpar->height;
    if (!sizeFits(w, h))
        return QSizeF(0, 0);
    QSize size = displaySize(w, h, ffmpeg().av_guess_sample_aspect_ratio(m_h->format.get(), stream, nullptr));
    if (rotationOf(stream) % 180 != 0)
        size.transpose();
    return QSizeF(size);
}

int Movie::loopMode() const
{
    if (m_loopsBackAndForth)
        return 2;
    return m_loops ? 1 : 0;
}

void Movie::setLoopMode(int mode)
{
    m_loops = mode == 1;
    m_loopsBackAndForth = mode == 2;
}

bool Movie::openDecoder(int index)
{
    Handles &h = *m_h;
    if (h.codec && h.codecStream == index) {
        ffmpeg().avcodec_flush_buffers(h.codec.get());
        return true;
    }
    h.codec.reset();
    const AVStream *stream = h.format->streams[index];
    const AVCodecParameters *parameters = stream->codecpar;
    // Refuse a huge declared picture before any buffer for it is made.
    if ((parameters->width != 0 || parameters->height != 0)
        && !sizeFits(parameters->width, parameters->height)) {
        m_error = QStringLiteral("the movie's picture is too large (%1 × %2)")
                      .arg(parameters->width)
                      .arg(parameters->height);
        return false;
    }
    const AVCodec *decoder = ffmpeg().avcodec_find_decoder(parameters->codec_id);
    if (!decoder) {
        m_error = QStringLiteral("no decoder for the movie's picture");
        return false;
    }
    CodecContextPtr codec(ffmpeg().avcodec_alloc_context3(decoder));
    if (!codec || ffmpeg().avcodec_parameters_to_context(codec.get(), parameters) < 0) {
        m_error = QStringLiteral("cannot set up the decoder");
        return false;
    }
    codec->pkt_timebase = stream->time_base;
    codec->max_pixels = maxPixels;
    codec->thread_count = decodingThreads.load();
    codec->thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
    if (ffmpeg().avcodec_open2(codec.get(), decoder, nullptr) < 0) {
        m_error = QStringLiteral("cannot open the decoder");
        return false;
    }
    h.codec = std::move(codec);
    h.codecStream = index;
    return true;
}

// Decodes the stream from a seek to the key frame before seconds (from where it stands when there
// is no time) and converts the frame shown at that time, or the first frame when there is no time.
QImage Movie::decodeFrame(int index, std::optional<double> seconds)
{
    Handles &h = *m_h;
    if (!openDecoder(index))
        return {};
    AVFormatContext *format = h.format.get();
    AVStream *stream = format->streams[index];
    AVCodecContext *codec = h.codec.get();
    codec->skip_frame = AVDISCARD_DEFAULT;

    int64_t target = 0;
    const int64_t start = stream->start_time != AV_NOPTS_VALUE ? stream->start_time : 0;
    h.deadline.setFromNow(decodeLimitSeconds);
    if (seconds) {
        target = start
            + ffmpeg().av_rescale_q(
                int64_t(std::llround(*seconds * AV_TIME_BASE)), AV_TIME_BASE_Q, stream->time_base);
        // A file that cannot seek is read from where it stands, which is its beginning.
        if (ffmpeg().av_seek_frame(format, index, target, AVSEEK_FLAG_BACKWARD) < 0)
            ffmpeg().av_seek_frame(format, index, start, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY);
        ffmpeg().avcodec_flush_buffers(codec);
    }

    const int64_t skipBefore
        = target - ffmpeg().av_rescale_q(2 * AV_TIME_BASE, AV_TIME_BASE_Q, stream->time_base);
    // Where the stream ends, when the file says: a frame that ends before it is followed by another.
    int64_t streamEnd = AV_NOPTS_VALUE;
    if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0)
        streamEnd = start + stream->duration;
    else if (format->duration != AV_NOPTS_VALUE && format->duration > 0)
        streamEnd = start + ffmpeg().av_rescale_q(format->duration, AV_TIME_BASE_Q, stream->time_base);
    // A frame no other frame refers to is needed only if it is the one on screen at the target. It
    // is not when the next frame starts at or before the target: its packet ends there, and the
    // stream goes on past the target. Without a packet duration only a wide margin tells.
    auto neverOnScreen = [&](const AVPacket *p) {
        if (p->pts == AV_NOPTS_VALUE)
            return false;
        // Past the known end the last frame is the one on screen, whatever its kind.
        const bool beforeEnd = streamEnd == AV_NOPTS_VALUE || target < streamEnd;
        if (p->pts < skipBefore)
            return beforeEnd;
        return p->duration > 0 && streamEnd != AV_NOPTS_VALUE && beforeEnd && p->pts + p->duration <= target;
    };
    // The frame on screen at the target is known from its packet when that packet starts at the target
    // or lasts past it. Every frame it refers to came before it in the file, so once it is sent the
    // decoder can be drained: the frames after it in the file are not needed. With pictures coded as
    // separate fields a packet may hold only half a frame, so this holds only for progressive video.
    const bool progressive = stream->codecpar->field_order == AV_FIELD_PROGRESSIVE;
    auto onScreen = [&](const AVPacket *p) {
        if (!progressive || p->pts == AV_NOPTS_VALUE || p->pts > target
            || (p->flags & (AV_PKT_FLAG_DISCARD | AV_PKT_FLAG_CORRUPT)))
            return false;
        return p->pts == target || (p->duration > 0 && p->pts + p->duration > target);
    };
    PacketPtr packet(ffmpeg().av_packet_alloc());
    FramePtr frame(ffmpeg().av_frame_alloc());
    FramePtr chosen(ffmpeg().av_frame_alloc());
    if (!packet || !frame || !chosen)
        return {};
    bool haveChosen = false;
    bool done = false;
    bool draining = false;

    // A seek goes to a key frame by its decoding time, and such a frame can be shown after the target:
    // the frames before it on screen then belong to the previous key frame, or refer back to it (an
    // open group of pictures). When the first packet after the seek starts after the target, the seek
    // is repeated from before that key frame, a few times at most and only while it moves back.
    bool firstAfterSeek = seconds.has_value();
    int64_t landedAt = INT64_MAX;
    int reseeks = 0;
    auto seekedBackAgain = [&](const AVPacket *p) {
        if (!std::exchange(firstAfterSeek, false) || p->pts == AV_NOPTS_VALUE || p->pts <= target
            || p->pts >= landedAt || reseeks >= 3)
            return false;
        landedAt = p->pts;
        const int64_t before = (p->dts != AV_NOPTS_VALUE ? std::min(p->dts, p->pts) : p->pts) - 1;
        if (ffmpeg().av_seek_frame(format, index, before, AVSEEK_FLAG_BACKWARD) < 0)
            return false;
        ffmpeg().avcodec_flush_buffers(codec);
        ++reseeks;
        firstAfterSeek = true;
        return true;
    };

    // Takes the frames the decoder has ready; done once the frame shown at the target is known.
    auto receive = [&] {
        while (!done) {
            const int status = ffmpeg().avcodec_receive_frame(codec, frame.get());
            if (status < 0)
                return status;
            // A frame the decoder had to patch up (missing references, damaged data) is never shown.
            if ((frame->flags & AV_FRAME_FLAG_CORRUPT) || frame->decode_error_flags != 0) {
                ffmpeg().av_frame_unref(frame.get());
                continue;
            }
            int64_t pts = frame->best_effort_timestamp;
            if (pts == AV_NOPTS_VALUE)
                pts = frame->pts;
            const bool atOrBefore = !seconds || pts == AV_NOPTS_VALUE || pts <= target;
            if (atOrBefore || !haveChosen) {
                ffmpeg().av_frame_unref(chosen.get());
                ffmpeg().av_frame_move_ref(chosen.get(), frame.get());
                haveChosen = true;
            }
            ffmpeg().av_frame_unref(frame.get());
            // The first frame after the target ends the search: the one before it is on screen.
            if (!seconds || !atOrBefore)
                done = true;
        }
        return 0;
    };

    while (!done) {
        if (h.deadline.passed()) {
            m_error = QStringLiteral("decoding took longer than %1 seconds").arg(decodeLimitSeconds);
            return {};
        }
        if (!draining) {
            const int read = ffmpeg().av_read_frame(format, packet.get());
            if (read < 0) {
                draining = true;
                ffmpeg().avcodec_send_packet(codec, nullptr);
            } else {
                if (packet->stream_index == index && !seekedBackAgain(packet.get())) {
                    const bool last = seconds && onScreen(packet.get());
                    if (seconds)
                        codec->skip_frame
                            = !last && neverOnScreen(packet.get()) ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
                    int sent = ffmpeg().avcodec_send_packet(codec, packet.get());
                    while (sent == AVERROR(EAGAIN) && !done && !h.deadline.passed()) {
                        receive();
                        sent = ffmpeg().avcodec_send_packet(codec, packet.get());
                    }
                    if (last && sent >= 0 && !done) {
                        draining = true;
                        ffmpeg().avcodec_send_packet(codec, nullptr);
                    }
                }
                ffmpeg().av_packet_unref(packet.get());
            }
        }
        const int status = receive();
        if (draining && !done && (status == AVERROR_EOF || status == AVERROR(EAGAIN) || status < 0))
            break;
    }
    h.deadline = Deadline();
    if (!haveChosen) {
        m_error = QStringLiteral("no frame could be decoded");
        return {};
    }
    return toDisplayImage(chosen.get());
}

QImage Movie::toDisplayImage(const void *opaqueFrame)
{
    const AVFrame *frame = static_cast<const AVFrame *>(opaqueFrame);
    const AVStream *stream = m_h->format->streams[m_h->codecStream];
    if (!sizeFits(frame->width, frame->height)) {
        m_error = QStringLiteral("the movie's picture is too large (%1 × %2)")
                      .arg(frame->width)
                      .arg(frame->height);
        return {};
    }
    const AVRational aspect = ffmpeg().av_guess_sample_aspect_ratio(
        m_h->format.get(), const_cast<AVStream *>(stream), const_cast<AVFrame *>(frame));
    const QSize size = displaySize(frame->width, frame->height, aspect);

    // The frame is nearly always made smaller afterwards, so the converter's fast paths are used (for
    // 4:2:0 each colour sample serves its 2 × 2 pixels): a 128-pixel thumbnail of a 1080p frame comes
    // out within 4 levels of an exactly rounded conversion with interpolated colour, at a twentieth of
    // the time.
    SwsContextPtr sws(ffmpeg().sws_getContext(frame->width, frame->height, AVPixelFormat(frame->format),
        size.width(), size.height(), AV_PIX_FMT_RGBA, SWS_BICUBIC, nullptr, nullptr, nullptr));
    if (!sws) {
        m_error = QStringLiteral("cannot convert the movie's pixels");
        return {};
    }
    const int *coefficients = ffmpeg().sws_getCoefficients(swsColourspace(frame->colorspace));
    ffmpeg().sws_setColorspaceDetails(sws.get(), coefficients, frame->color_range == AVCOL_RANGE_JPEG ? 1 : 0,
        ffmpeg().sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);

    QImage picture(size, QImage::Format_RGBA8888);
    if (picture.isNull()) {
        m_error = QStringLiteral("out of memory");
        return {};
    }
    uint8_t *destination[4] = { picture.bits(), nullptr, nullptr, nullptr };
    const int destinationStride[4] = { int(picture.bytesPerLine()), 0, 0, 0 };
    if (ffmpeg().sws_scale(
            sws.get(), frame->data, frame->linesize, 0, frame->height, destination, destinationStride)
        != size.height()) {
        m_error = QStringLiteral("cannot convert the movie's pixels");
        return {};
    }
    const int rotation = rotationOf(stream);
    if (rotation != 0)
        picture = picture.transformed(QTransform().rotate(rotation));
    return picture;
}

QImage Movie::frameImageAtTime(double seconds)
{
    m_error.clear();
    if (m_h->videoStream < 0) {
        m_error = QStringLiteral("no picture in the file");
        return {};
    }
    return decodeFrame(m_h->videoStream, std::max(0.0, seconds));
}

ImagePtr Movie::posterImage()
{
    m_error.clear();
    QImage picture;
    if (m_h->coverStream >= 0) {
        // The cover is one packet held by the stream itself; no reading of the file is needed.
        Handles &h = *m_h;
        if (openDecoder(h.coverStream)) {
            PacketPtr packet(ffmpeg().av_packet_alloc());
            FramePtr frame(ffmpeg().av_frame_alloc());
            if (packet && frame
                && ffmpeg().av_packet_ref(packet.get(), &h.format->streams[h.coverStream]->attached_pic) == 0
                && ffmpeg().avcodec_send_packet(h.codec.get(), packet.get()) >= 0) {
                ffmpeg().avcodec_send_packet(h.codec.get(), nullptr);
                if (ffmpeg().avcodec_receive_frame(h.codec.get(), frame.get()) >= 0)
                    picture = toDisplayImage(frame.get());
            }
        }
    }
    if (picture.isNull() && m_h->videoStream >= 0) {
        ffmpeg().av_seek_frame(m_h->format.get(), m_h->videoStream, 0, AVSEEK_FLAG_BACKWARD);
        picture = decodeFrame(m_h->videoStream, std::nullopt);
    }
    if (picture.isNull() && m_error.isEmpty())
        m_error = m_h->videoStream >= 0 || m_h->coverStream >= 0 ? QStringLiteral("no frame could be decoded")
                                                                 : QStringLiteral("no picture in the file");
    return Image::imageWithCGImageRef(picture);
}

ImagePtr Movie::thumbnailImage()
{
    try {
        // The middle of the movie, but never later than 15 seconds in, in whole seconds.
        const double seconds = std::floor(std::clamp(movieDuration() * 0.5, 0.0, 15.0));
        const QImage frame = frameImageAtTime(seconds);
        if (!frame.isNull())
            return Image::imageWithCGImageRef(frame);
        const QString frameFailure = m_error;
        ImagePtr poster = posterImage();
        if (!poster && !frameFailure.isEmpty() && m_h->videoStream >= 0)
            m_error = frameFailure;
        return poster;
    } catch (const std::bad_alloc &e) {
        m_error = QStringLiteral("out of memory");
        logFailure("thumbnailImage", typeid(e).name(), QString::fromLocal8Bit(e.what()));
    } catch (const std::exception &e) {
        m_error = QString::fromLocal8Bit(e.what());
        logFailure("thumbnailImage", typeid(e).name(), m_error);
    }
    return nullptr;
}

ImagePtr Movie::thumbnailImageForMovieWithFile(
    const QString &path, QSizeF *size, double *duration, QString *error)
{
    if (size)
        *size = QSizeF(0, 0);
    if (duration)
        *duration = 0.0;
    ImagePtr image;
    try {
        const MoviePtr movie = initWithFile(path, error);
        if (!movie)
            return nullptr;
        image = movie->thumbnailImage();
        if (!image && error)
            *error = movie->frameError();
        if (size)
            *size = movie->movieSize();
        if (duration)
            *duration = movie->movieDuration();
    } catch (const std::exception &e) {
        logFailure("thumbnailImageForMovieWithFile:size:duration:", typeid(e).name(),
            QString::fromLocal8Bit(e.what()));
        if (error && !image)
            *error = QString::fromLocal8Bit(e.what());
    }
    return image;
}

} // namespace orvel
