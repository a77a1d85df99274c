// JPEG pictures decoded straight at a reduced scale through libjpeg's own interface: the file read
// in large blocks, the decoder's DCT scaling doing the shrink, the rows written into one tight buffer.
// No tiles, threads or small reads around the decoder, which is most of a thumbnail's cost.
#include "image/JpegScaledDecoder_p.h"

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdio> // jpeglib.h wants FILE declared first
#include <cstring>
#include <jerror.h>
#include <jpeglib.h>
#include <unistd.h>
#include <vector>

namespace orvel {

namespace {

// A progressive file may hold any number of scans, each one a pass over the whole picture: a small
// hostile file with hundreds of thousands of them would keep the decoder busy for minutes.
constexpr int MaxScans = 1000;
// A progressive picture is held whole as coefficients (2 bytes a sample) while its scans arrive;
// past this the decoder refuses instead of allocating more.
constexpr long MaxDecoderMemory = 2L << 30;
// Larger decoded pictures are left to the streaming loader, which never holds them whole.
constexpr double MaxBufferPixels = 33554432.0; // 2^25, 96 MiB of RGB
// A file is read in blocks of this size: few system calls, and never the whole file in memory.
constexpr size_t ReadBlockBytes = 256 * 1024;

// Everything the decode touches between setjmp and a longjmp out of libjpeg lives here (in memory
// the decoder's callbacks reach through client_data), with no C++ destructors on the way.
struct Decoder
{
    jpeg_decompress_struct info;
    jpeg_error_mgr errors;
    jpeg_progress_mgr progress;
    std::jmp_buf escape;
    bool tolerateDamage;
    bool headerRead;
    char message[JMSG_LENGTH_MAX];
    unsigned char *pixels; // malloc'd, handed to the caller
    JOCTET *icc; // malloc'd by libjpeg
    unsigned int iccSize;
    int width;
    int height;
    int bands;
};

[[noreturn]] void escape(j_common_ptr info)
{
    std::longjmp(static_cast<Decoder *>(info->client_data)->escape, 1);
}

[[noreturn]] void onError(j_common_ptr info)
{
    info->err->format_message(info, static_cast<Decoder *>(info->client_data)->message);
    escape(info);
}

void onMessage(j_common_ptr info, int level)
{
    if (level >= 0)
        return; // trace output
    auto *decoder = static_cast<Decoder *>(info->client_data);
    ++info->err->num_warnings;
    // Stray bytes before a marker are common in camera files and cost nothing of the picture; any
    // other warning (data missing or corrupt) means damage.
    if (decoder->tolerateDamage || info->err->msg_code == JWRN_EXTRANEOUS_DATA)
        return;
    onError(info);
}

void onProgress(j_common_ptr info)
{
    auto *decoder = static_cast<Decoder *>(info->client_data);
    if (decoder->info.input_scan_number > MaxScans) {
        std::snprintf(decoder->message, sizeof decoder->message, "more than %d scans", MaxScans);
        escape(info);
    }
}

// The decoder's input from a file descriptor, a block at a time. At the end of a truncated file an
// end-of-image marker is supplied with a warning, as libjpeg's own sources do, so that damage is
// judged by the warning handler.
struct FileSource
{
    jpeg_source_mgr manager;
    int fd;
    JOCTET *buffer;
    bool atStart;
};

void startFileSource(j_decompress_ptr info) { reinterpret_cast<FileSource *>(info->src)->atStart = true; }

boolean fillFromFile(j_decompress_ptr info)
{
    auto *source = reinterpret_cast<FileSource *>(info->src);
    ssize_t n;
    do
        n = ::read(source->fd, source->buffer, ReadBlockBytes);
    while (n < 0 && errno == EINTR);
    if (n <= 0) {
        if (source->atStart)
            ERREXIT(info, JERR_INPUT_EMPTY);
        WARNMS(info, JWRN_JPEG_EOF);
        source->buffer[0] = 0xFF;
        source->buffer[1] = JPEG_EOI;
        n = 2;
    }
    source->manager.next_input_byte = source->buffer;
    source->manager.bytes_in_buffer = size_t(n);
    source->atStart = false;
    return TRUE;
}

void skipInFile(j_decompress_ptr info, long count)
{
    jpeg_source_mgr *source = info->src;
    if (count <= 0)
        return;
    while (size_t(count) > source->bytes_in_buffer) {
        count -= long(source->bytes_in_buffer);
        fillFromFile(info);
    }
    source->next_input_byte += count;
    source->bytes_in_buffer -= size_t(count);
}

void endFileSource(j_decompress_ptr) { }

void useFileSource(j_decompress_ptr info, int fd)
{
    auto *source = static_cast<FileSource *>(
        (*info->mem->alloc_small)(reinterpret_cast<j_common_ptr>(info), JPOOL_PERMANENT, sizeof(FileSource)));
    source->buffer = static_cast<JOCTET *>(
        (*info->mem->alloc_large)(reinterpret_cast<j_common_ptr>(info), JPOOL_PERMANENT, ReadBlockBytes));
    source->fd = fd;
    source->manager.init_source = startFileSource;
    source->manager.fill_input_buffer = fillFromFile;
    source->manager.skip_input_data = skipInFile;
    source->manager.resync_to_restart = jpeg_resync_to_restart;
    source->manager.term_source = endFileSource;
    source->manager.bytes_in_buffer = 0;
    source->manager.next_input_byte = nullptr;
    info->src = &source->manager;
}

int freeProfile(void *profile, void *)
{
    g_free(profile);
    return 0;
}

// The JPEG data to decode: bytes in memory, or else an open file.
struct Input
{
    const unsigned char *data;
    size_t size;
    int fd;
};

JpegDecodeResult run(Decoder &d, Input input, int scale, double maxPixels)
{
    if (setjmp(d.escape))
        return d.headerRead ? JpegDecodeResult::Failed : JpegDecodeResult::Unsupported;
    d.info.err = jpeg_std_error(&d.errors);
    d.errors.error_exit = onError;
    d.errors.emit_message = onMessage;
    d.info.client_data = &d;
    jpeg_create_decompress(&d.info);
    d.info.mem->max_memory_to_use = MaxDecoderMemory;
    d.progress.progress_monitor = onProgress;
    d.info.progress = &d.progress;
    if (input.data)
        jpeg_mem_src(&d.info, input.data, static_cast<unsigned long>(input.size));
    else
        useFileSource(&d.info, input.fd);
    jpeg_save_markers(&d.info, JPEG_APP0 + 2, 0xFFFF); // the colour profile and nothing else
    if (jpeg_read_header(&d.info, TRUE) != JPEG_HEADER_OK || d.info.data_precision != 8 || d.info.arith_code)
        return JpegDecodeResult::Unsupported;
    switch (d.info.jpeg_color_space) {
    case JCS_GRAYSCALE:
        d.info.out_color_space = JCS_GRAYSCALE;
        break;
    case JCS_YCbCr:
    case JCS_RGB:
        d.info.out_color_space = JCS_RGB;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        d.info.out_color_space = JCS_CMYK;
        break;
    default:
        return JpegDecodeResult::Unsupported;
    }
    d.info.scale_num = 1;
    d.info.scale_denom = static_cast<unsigned int>(scale);
    // The decoder's default transform and chroma upsampling are kept: with the DCT doing the shrink
    // the faster choices save nothing measurable, and at full scale they cost quality.
    jpeg_calc_output_dimensions(&d.info);
    // A picture in several scans is held whole by any loader: it is decoded here, within the memory
    // limit, rather than handed to one that has none.
    if (double(d.info.output_width) * d.info.output_height > maxPixels && !jpeg_has_multiple_scans(&d.info))
        return JpegDecodeResult::Unsupported;
    jpeg_read_icc_profile(&d.info, &d.icc, &d.iccSize);
    d.headerRead = true;

    jpeg_start_decompress(&d.info);
    d.width = int(d.info.output_width);
    d.height = int(d.info.output_height);
    d.bands = d.info.output_components;
    const size_t stride = size_t(d.width) * size_t(d.bands);
    d.pixels = static_cast<unsigned char *>(std::malloc(stride * size_t(d.height)));
    if (!d.pixels) {
        std::snprintf(d.message, sizeof d.message, "out of memory");
        return JpegDecodeResult::Failed;
    }
    while (d.info.output_scanline < d.info.output_height) {
        JSAMPROW rows[4];
        const JDIMENSION count = std::min<JDIMENSION>(4, d.info.output_height - d.info.output_scanline);
        for (JDIMENSION i = 0; i < count; ++i)
            rows[i] = d.pixels + size_t(d.info.output_scanline + i) * stride;
        if (jpeg_read_scanlines(&d.info, rows, count) == 0) {
            std::snprintf(d.message, sizeof d.message, "the decoder stopped");
            return JpegDecodeResult::Failed;
        }
    }
    // Whole pixels only, as the library's own loader gives them: a last column or row made from
    // fewer than scale source pixels is dropped (the rows packed again, in place).
    const int width = std::max(1, int(d.info.image_width) / scale);
    const int height = std::max(1, int(d.info.image_height) / scale);
    if (width < d.width)
        for (int y = 1; y < height; ++y)
            std::memmove(d.pixels + size_t(y) * size_t(width) * size_t(d.bands),
                d.pixels + size_t(y) * stride, size_t(width) * size_t(d.bands));
    d.width = std::min(d.width, width);
    d.height = std::min(d.height, height);
    // Adobe's CMYK files store the inks inverted.
    if (d.bands == 4 && d.info.saw_Adobe_marker)
        for (size_t i = 0, n = size_t(d.width) * size_t(d.height) * 4; i < n; ++i)
            d.pixels[i] = static_cast<unsigned char>(255 - d.pixels[i]);
    return JpegDecodeResult::Decoded;
}

double lanczos3(double x)
{
    x = std::abs(x);
    if (x < 1e-9)
        return 1.0;
    if (x >= 3.0)
        return 0.0;
    const double px = M_PI * x;
    return 3.0 * std::sin(px) * std::sin(px / 3.0) / (px * px);
}

// The filter taps along one axis: for each output position, the first source index and the
// normalised weights of the source samples from there (taps past an edge folded onto the edge).
struct Taps
{
    int count = 0;
    std::vector<int> first;
    std::vector<float> weights; // count a position
};

Taps tapsFor(int in, int out)
{
    const double scale = double(in) / out;
    const double widen = std::max(1.0, scale);
    const int reach = int(std::ceil(3.0 * widen));
    Taps taps;
    taps.count = std::min(in, 2 * reach + 2);
    taps.first.resize(size_t(out));
    taps.weights.assign(size_t(out) * size_t(taps.count), 0.0f);
    std::vector<double> w(size_t(taps.count));
    for (int o = 0; o < out; ++o) {
        const double centre = (o + 0.5) * scale - 0.5;
        const int nearest = int(std::floor(centre));
        const int first = std::clamp(nearest - reach, 0, in - taps.count);
        std::fill(w.begin(), w.end(), 0.0);
        double sum = 0.0;
        for (int i = nearest - reach; i <= nearest + reach + 1; ++i) {
            const double v = lanczos3((i - centre) / widen);
            w[size_t(std::clamp(std::clamp(i, 0, in - 1) - first, 0, taps.count - 1))] += v;
            sum += v;
        }
        taps.first[size_t(o)] = first;
        for (int k = 0; k < taps.count; ++k)
            taps.weights[size_t(o) * size_t(taps.count) + size_t(k)] = float(w[size_t(k)] / sum);
    }
    return taps;
}

} // namespace

unsigned char *lanczos3Resample(const unsigned char *src, int inW, int inH, int bands, int outW, int outH)
{
    const Taps across = tapsFor(inW, outW);
    const Taps down = tapsFor(inH, outH);
    // Down first, whole rows at a time (the long loops, over contiguous samples), into floats
    // (outH × inW); then across into bytes, the samples of a pixel together.
    const size_t bandCount = size_t(std::min(bands, 4));
    const size_t inStride = size_t(inW) * bandCount;
    std::vector<float> middle(size_t(outH) * inStride, 0.0f);
    for (int y = 0; y < outH; ++y) {
        const float *w = down.weights.data() + size_t(y) * size_t(down.count);
        const unsigned char *from = src + size_t(down.first[size_t(y)]) * inStride;
        float *sums = middle.data() + size_t(y) * inStride;
        for (int k = 0; k < down.count; ++k, from += inStride)
            for (size_t i = 0; i < inStride; ++i)
                sums[i] += w[k] * float(from[i]);
    }
    auto *out = static_cast<unsigned char *>(std::malloc(size_t(outW) * size_t(outH) * bandCount));
    if (!out)
        return nullptr;
    for (int y = 0; y < outH; ++y) {
        const float *row = middle.data() + size_t(y) * inStride;
        unsigned char *to = out + size_t(y) * size_t(outW) * bandCount;
        for (int x = 0; x < outW; ++x) {
            const float *w = across.weights.data() + size_t(x) * size_t(across.count);
            const float *from = row + size_t(across.first[size_t(x)]) * bandCount;
            float sum[4] = { 0.0f, 0.0f, 0.0f, 0.0f };
            for (int k = 0; k < across.count; ++k, from += bandCount)
                for (size_t b = 0; b < bandCount; ++b)
                    sum[b] += w[k] * from[b];
            for (size_t b = 0; b < bandCount; ++b)
                to[size_t(x) * bandCount + b]
                    = static_cast<unsigned char>(std::clamp(sum[b] + 0.5f, 0.0f, 255.0f));
        }
    }
    return out;
}

namespace {

JpegDecodeResult decode(
    Input input, int scale, bool tolerateDamage, double maxPixels, ScaledJpeg &out, QString *error)
{
    if (scale != 1 && scale != 2 && scale != 4 && scale != 8)
        return JpegDecodeResult::Unsupported;
    auto *d = static_cast<Decoder *>(std::calloc(1, sizeof(Decoder)));
    if (!d)
        return JpegDecodeResult::Unsupported;
    d->tolerateDamage = tolerateDamage;
    const JpegDecodeResult result = run(*d, input, scale, maxPixels);
    jpeg_destroy_decompress(&d->info);
    if (result == JpegDecodeResult::Decoded) {
        out.pixels.reset(d->pixels);
        out.width = d->width;
        out.height = d->height;
        out.bands = d->bands;
        out.iccProfile = d->icc ? QByteArray(reinterpret_cast<const char *>(d->icc), qsizetype(d->iccSize))
                                : QByteArray();
    } else {
        std::free(d->pixels);
        if (result == JpegDecodeResult::Failed && error)
            *error = QString::fromLocal8Bit(d->message);
    }
    std::free(d->icc);
    std::free(d);
    return result;
}

} // namespace

JpegDecodeResult decodeScaledJpeg(const unsigned char *data, size_t size, int scale, bool tolerateDamage,
    double maxPixels, ScaledJpeg &out, QString *error)
{
    if (!data || size == 0)
        return JpegDecodeResult::Unsupported;
    return decode(Input { data, size, -1 }, scale, tolerateDamage, maxPixels, out, error);
}

bool loadScaledJpeg(
    const QString &path, const QByteArray &data, int scale, bool tolerateDamage, vips::VImage &image)
{
    ScaledJpeg jpeg;
    QString error;
    JpegDecodeResult result;
    if (!data.isEmpty()) {
        result = decodeScaledJpeg(reinterpret_cast<const unsigned char *>(data.constData()),
            size_t(data.size()), scale, tolerateDamage, MaxBufferPixels, jpeg, &error);
    } else {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return false;
        result = decode(
            Input { nullptr, 0, file.handle() }, scale, tolerateDamage, MaxBufferPixels, jpeg, &error);
    }
    switch (result) {
    case JpegDecodeResult::Unsupported:
        return false;
    case JpegDecodeResult::Failed:
        throw vips::VError(error.toStdString());
    case JpegDecodeResult::Decoded:
        break;
    }
    const size_t size = size_t(jpeg.width) * size_t(jpeg.bands) * size_t(jpeg.height);
    vips::VImage decoded = vips::VImage::new_from_memory_steal(
        jpeg.pixels.release(), size, jpeg.width, jpeg.height, jpeg.bands, VIPS_FORMAT_UCHAR);
    const VipsInterpretation interpretation = jpeg.bands == 1 ? VIPS_INTERPRETATION_B_W
        : jpeg.bands == 4                                     ? VIPS_INTERPRETATION_CMYK
                                                              : VIPS_INTERPRETATION_sRGB;
    decoded = decoded.copy(vips::VImage::option()->set("interpretation", interpretation));
    if (!jpeg.iccProfile.isEmpty()) {
        void *profile = g_memdup2(jpeg.iccProfile.constData(), gsize(jpeg.iccProfile.size()));
        decoded.set(VIPS_META_ICC_NAME, freeProfile, profile, size_t(jpeg.iccProfile.size()));
    }
    image = decoded;
    return true;
}

} // namespace orvel
