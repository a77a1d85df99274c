// Not API: owning handles for FFmpeg's C objects, shared by the movie module's files.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <chrono>
#include <memory>

namespace orvel::movie_detail {

struct FormatContextDeleter
{
    void operator()(AVFormatContext *p) const noexcept { avformat_close_input(&p); }
};
struct CodecContextDeleter
{
    void operator()(AVCodecContext *p) const noexcept { avcodec_free_context(&p); }
};
struct FrameDeleter
{
    void operator()(AVFrame *p) const noexcept { av_frame_free(&p); }
};
struct PacketDeleter
{
    void operator()(AVPacket *p) const noexcept { av_packet_free(&p); }
};
struct SwsContextDeleter
{
    void operator()(SwsContext *p) const noexcept { sws_freeContext(p); }
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
            + std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(seconds));
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
