// Movie files: FFmpeg's demuxers and decoders behind the frame the thumbnail shows.
#include "FuzzSupport.h"

#include "image/Image.h"
#include "movie/Movie.h"

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    orvel::fuzz::startApplication(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The extension decides nothing: FFmpeg probes the content.
    const QString path = orvel::fuzz::scratchFile(orvel::fuzz::bytesOf(data, size), "mov");
    QSizeF natural;
    double duration = 0;
    const orvel::ImagePtr frame = orvel::Movie::thumbnailImageForMovieWithFile(path, &natural, &duration);
    if (frame)
        frame->bitmapImageWithPixelSize(frame->thumbSize(QSizeF(32, 32)), true, 2);
    return 0;
}
