// PostScript and EPS documents: converted to PDF by Ghostscript in a child process with a time
// limit, then rendered. Slow per input (a process each), so run it with few, small inputs.
#include "FuzzSupport.h"

#include "image/Image.h"

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    orvel::fuzz::startApplication(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = orvel::fuzz::scratchFile(orvel::fuzz::bytesOf(data, size), "eps");
    const orvel::ImagePtr image = orvel::Image::initByReferencingFile(path);
    if (image && image->isReallyValid())
        image->bitmapImageWithPixelSize(QSizeF(32, 32), true, 2);
    return 0;
}
