// Not API: FFmpeg's functions as loaded at run time, and owning handles for its C objects, shared
// by the movie module's files.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/version.h>
#include <libavformat/avformat.h>
#include <libavformat/version.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/version.h>
#include <libswscale/swscale.h>
#include <libswscale/version.h>
}

#include <QString>

#include <chrono>
#include <memory>

namespace orvel::movie_detail {

// Every FFmpeg function the module calls, with the library (avutil, swscale, avcodec, avformat) that
// holds it. The module links none of them: they are looked up when the first movie is met, so that
// processes which never meet one do not pay for loading FFmpeg.
#define ORVEL_FFMPEG_FUNCTIONS(X)                                                                            \
    X(avutil, av_log_set_level)                                                                              \
    X(avutil, av_display_rotation_get)                                                                       \
    X(avutil, av_rescale_q)                                                                                  \
    X(avutil, av_frame_alloc)                                                                                \
    X(avutil, av_frame_free)                                                                                 \
    X(avutil, av_frame_unref)                                                                                \
    X(avutil, av_frame_move_ref)                                                                             \
    X(swscale, sws_getContext)                                                                               \
    X(swscale, sws_freeContext)                                                                              \
    X(swscale, sws_getCoefficients)                                                                          \
    X(swscale, sws_setColorspaceDetails)                                                                     \
    X(swscale, sws_scale)                                                                                    \
    X(avcodec, avcodec_find_decoder)                                                                         \
    X(avcodec, avcodec_alloc_context3)                                                                       \
    X(avcodec, avcodec_free_context)                                                                         \
    X(avcodec, avcodec_parameters_to_context)                                                                \
    X(avcodec, avcodec_open2)                                                                                \
    X(avcodec, avcodec_flush_buffers)                                                                        \
    X(avcodec, avcodec_send_packet)                                                                          \
    X(avcodec, avcodec_receive_frame)                                                                        \
    X(avcodec, av_packet_alloc)                                                                              \
    X(avcodec, av_packet_free)                                                                               \
    X(avcodec, av_packet_ref)                                                                                \
    X(avcodec, av_packet_unref)                                                                              \
    X(avformat, avformat_alloc_context)                                                                      \
    X(avformat, avformat_open_input)                                                                         \
    X(avformat, avformat_close_input)                                                                        \
    X(avformat, avformat_find_stream_info)                                                                   \
    X(avformat, av_find_best_stream)                                                                         \
    X(avformat, av_guess_sample_aspect_ratio)                                                                \
    X(avformat, av_stream_get_side_data)                                                                     \
    X(avformat, av_seek_frame)                                                                               \
    X(avformat, av_read_frame)                                                                               \
    X(avformat, av_demuxer_iterate)                                                                          \
    X(avformat, av_find_input_format)

/// The loaded functions, each under its own name and type.
struct FFmpegLibrary
{
#define ORVEL_FFMPEG_MEMBER(library, function) decltype(&::function) function = nullptr;
    ORVEL_FFMPEG_FUNCTIONS(ORVEL_FFMPEG_MEMBER)
#undef ORVEL_FFMPEG_MEMBER
};

/// Loads FFmpeg on the first call (once per process, thread-safe, never unloaded). Null when it
/// cannot be loaded; why (if given) then says so, starting "FFmpeg is not available: ".
const FFmpegLibrary *loadFFmpeg(QString *error = nullptr);
/// The loaded functions; only for code that holds an FFmpeg object, which proves the load.
const FFmpegLibrary &ffmpeg();
/// FFmpeg's log level (AV_LOG_*), applied now if FFmpeg is loaded, else as soon as it is.
void setFFmpegLogLevel(int level);

struct FormatContextDeleter
{
    void operator()(AVFormatContext *p) const noexcept { ffmpeg().avformat_close_input(&p); }
};
struct CodecContextDeleter
{
    void operator()(AVCodecContext *p) const noexcept { ffmpeg().avcodec_free_context(&p); }
};
struct FrameDeleter
{
    void operator()(AVFrame *p) const noexcept { ffmpeg().av_frame_free(&p); }
};
struct PacketDeleter
{
    void operator()(AVPacket *p) const noexcept { ffmpeg().av_packet_free(&p); }
};
struct SwsContextDeleter
{
    void operator()(SwsContext *p) const noexcept { ffmpeg().sws_freeContext(p); }
};

using FormatContextPtr = std::unique_ptr<AVFormatContext, FormatContextDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using SwsContextPtr = std::unique_ptr<SwsContext, SwsContextDeleter>;

/// A point in time after which FFmpeg's blocking calls are interrupted.
struct Deadline
{
    std::chrono::steady_clock::time_point end = std::chrono::steady_clock::time_point::max();

    void setFromNow(double seconds)
    {
        end = std::chrono::steady_clock::now()
            + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                std::chrono::duration<double>(seconds));
    }
    bool passed() const { return std::chrono::steady_clock::now() >= end; }
};

/// Everything one open movie holds. The format context's interrupt callback points at deadline,
/// so the object never moves once opened.
struct Handles
{
    Deadline deadline;
    FormatContextPtr format;
    CodecContextPtr codec;
    int codecStream = -1;
    int videoStream = -1; // the picture track, -1 when there is none
    int coverStream = -1; // an attached cover picture, -1 when there is none
};

} // namespace orvel::movie_detail
