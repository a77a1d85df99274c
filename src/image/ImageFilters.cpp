// ImageFilters: the bitmap filters applied to every bitmap representation of an image, in place.
#include "image/Image.h"

namespace orvel {

namespace {

// The image's bitmap representations, in order. A snapshot, so that a filter may change the list.
std::vector<BitmapImageRepPtr> bitmapsOf(const Image &image)
{
    std::vector<BitmapImageRepPtr> bitmaps;
    for (const ImageRepPtr &rep : image.representations())
        if (rep && rep->kind() == ImageRep::Kind::Bitmap)
            bitmaps.push_back(std::static_pointer_cast<BitmapImageRep>(rep));
    return bitmaps;
}

template <typename Operation> void forEachBitmap(const Image &image, Operation operation)
{
    for (const BitmapImageRepPtr &bitmap : bitmapsOf(image))
        operation(*bitmap);
}

constexpr int32_t SharpenLightKernel[9] = { 0, -1, 0, -1, 8, -1, 0, -1, 0 };
constexpr int32_t SharpenMediumKernel[9] = { 0, -1, 0, -1, 6, -1, 0, -1, 0 };
constexpr int32_t SharpenStrongKernel[9] = { 0, -1, 0, -1, 5, -1, 0, -1, 0 };

} // namespace

bool Image::canFilter() const
{
    for (const BitmapImageRepPtr &bitmap : bitmapsOf(*this))
        if (bitmap->canFilter())
            return true;
    return false;
}

void Image::scaleWithDivisor(float divisor, float offset)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.scaleWithDivisor(divisor, offset); });
}

void Image::applyMatrixFilter(
    const int32_t *matrix, int32_t divisor, int32_t offset, BitmapImageRep::MatrixCallback callback)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.applyMatrixFilter(matrix, divisor, offset, callback); });
}

void Image::applyMatrixesFilter(const int32_t *matrixes, int count, int size, int32_t divisor, int32_t offset,
    BitmapImageRep::MatrixCallback callback)
{
    forEachBitmap(*this,
        [&](BitmapImageRep &b) { b.applyMatrixesFilter(matrixes, count, size, divisor, offset, callback); });
}

void Image::applyStatisticalFilter(BitmapImageRep::StatisticalCallback callback, bool mono)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.applyStatisticalFilter(callback, mono); });
}

void Image::applyNormalizeFilter(BitmapImageRep::NormalizeCallback callback, bool mono)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.applyNormalizeFilter(callback, mono); });
}

void Image::applySampleFilter(BitmapImageRep::SampleCallback callback)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.applySampleFilter(callback); });
}

void Image::applyPixelFilter(BitmapImageRep::PixelCallback callback)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.applyPixelFilter(callback); });
}

void Image::applyInterlaceFilter(unsigned shift)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.applyInterlaceFilter(shift); });
}

void Image::grayScale(bool thresholdMode, unsigned threshhold)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.grayScale(thresholdMode, threshhold); });
}

void Image::edgeDetect(bool addToImage)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.edgeDetect(addToImage); });
}

void Image::medianFilter(unsigned size)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.medianFilter(size); });
}

void Image::makeTransparentGray(float grey, float threshhold)
{
    makeTransparentRed(grey, grey, grey, threshhold);
}

void Image::makeTransparentRed(float red, float green, float blue, float threshhold)
{
    makeTransparentSample1(red, green, blue, 0.0f, threshhold);
}

void Image::makeTransparentSample1(
    float sample1, float sample2, float sample3, float sample4, float threshhold)
{
    for (BitmapImageRepPtr bitmap : bitmapsOf(*this)) {
        if (!bitmap->hasAlpha()) {
            // The copy with alpha takes the old bitmap's place at the end of the list.
            BitmapImageRepPtr withAlpha = bitmap->bitmapImageRepWithAlpha();
            if (!withAlpha)
                continue;
            removeRepresentation(bitmap);
            addRepresentation(withAlpha);
            bitmap = std::move(withAlpha);
        }
        bitmap->makeTransparentSample1(sample1, sample2, sample3, sample4, threshhold);
    }
}

void Image::tintGray(float grey) { tintRed(grey, grey, grey); }

void Image::tintRed(float red, float green, float blue) { tintSample1(red, green, blue, 0.0f); }

void Image::tintSample1(float sample1, float sample2, float sample3, float sample4)
{
    forEachBitmap(*this, [&](BitmapImageRep &b) { b.tintSample1(sample1, sample2, sample3, sample4); });
}

void Image::sharpenLight() { applyMatrixFilter(SharpenLightKernel, 4, 0); }
void Image::sharpenMedium() { applyMatrixFilter(SharpenMediumKernel, 2, 0); }
void Image::sharpenStrong() { applyMatrixFilter(SharpenStrongKernel, 1, 0); }

} // namespace orvel
