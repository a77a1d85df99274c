// Picture and PDF data as a dropped file brings it: classification, decoding and a thumbnail,
// through libvips and Poppler.
#include "FuzzSupport.h"

#include "image/Image.h"

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    orvel::fuzz::startApplication(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = orvel::fuzz::bytesOf(data, size);
    // PostScript goes to a Ghostscript child process; fuzz_postscript covers it at its own pace.
    if (bytes.startsWith("%!") || bytes.startsWith("\xC5\xD0\xD3\xC6"))
        return 0;
    const orvel::ImagePtr image = orvel::Image::initWithData(bytes);
    // Pictures the product accepts may still be large (up to 2^29 pixels decoded whole); the fuzzer
    // looks for memory faults, not for the memory a permitted picture takes.
    if (image && image->size().width() * image->size().height() > 16.0 * 1024 * 1024)
        return 0;
    if (image && image->isReallyValid()) {
        image->setScalesWhenResized(true);
        const QSizeF box = image->thumbSize(QSizeF(64, 64));
        image->bitmapImageWithPixelSize(box, true, 3);
    }
    return 0;
}
