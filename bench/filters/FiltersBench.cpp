// Filter benchmark: the bitmap filters on a 24-megapixel RGBA bitmap against libvips' own operations
// with the same masks, timed in the same run. Prints megapixels per second and the ratio to libvips.
//
// Usage: filters_bench [--size WxH] [--runs N]
#include "image/BitmapImageRep.h"

#include <vips/vips8>

#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace orvel;

namespace {

using Clock = std::chrono::steady_clock;

// The best of runs timings of work, in seconds; prepare runs untimed before each.
double best(int runs, const std::function<void()> &prepare, const std::function<void()> &work)
{
    double fastest = 1e30;
    for (int i = 0; i < runs; ++i) {
        prepare();
        const auto start = Clock::now();
        work();
        fastest = std::min(fastest, std::chrono::duration<double>(Clock::now() - start).count());
    }
    return fastest;
}

// A photograph-like test picture: smooth gradients plus grain, opaque alpha.
std::vector<unsigned char> makePicture(int w, int h)
{
    std::vector<unsigned char> pixels(size_t(w) * h * 4);
    std::mt19937 random(1);
    for (int y = 0; y < h; ++y) {
        unsigned char *p = pixels.data() + size_t(y) * w * 4;
        for (int x = 0; x < w; ++x, p += 4) {
            const int grain = int(random() % 33) - 16;
            p[0] = static_cast<unsigned char>(std::clamp(x * 255 / w + grain, 0, 255));
            p[1] = static_cast<unsigned char>(std::clamp(y * 255 / h + grain, 0, 255));
            p[2] = static_cast<unsigned char>(std::clamp(((x ^ y) & 255) / 2 + 64 + grain, 0, 255));
            p[3] = 255;
        }
    }
    return pixels;
}

// Runs a libvips pipeline on the picture to a memory buffer (so that it is computed), in seconds.
double timeVips(int runs, const std::vector<unsigned char> &picture, int w, int h,
    const std::function<vips::VImage(vips::VImage)> &operation)
{
    return best(
        runs, [] {},
        [&] {
            vips::VImage in = vips::VImage::new_from_memory(
                const_cast<unsigned char *>(picture.data()), picture.size(), w, h, 4, VIPS_FORMAT_UCHAR);
            size_t size = 0;
            void *out = operation(in).write_to_memory(&size);
            g_free(out);
        });
}

vips::VImage mask(int size, const std::vector<double> &weights, double scale)
{
    vips::VImage m
        = vips::VImage::new_matrix(size, size, const_cast<double *>(weights.data()), int(weights.size()));
    m.set("scale", scale);
    m.set("offset", 0.0);
    return m;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (VIPS_INIT(argv[0]))
        return 1;
    int w = 6000, h = 4000, runs = 3;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!strcmp(argv[i], "--size"))
            sscanf(argv[i + 1], "%dx%d", &w, &h);
        else if (!strcmp(argv[i], "--runs"))
            runs = std::max(1, atoi(argv[i + 1]));
    }
    const std::vector<unsigned char> picture = makePicture(w, h);
    auto rep = BitmapImageRep::createRGBA(w, h);
    if (!rep)
        return 1;
    const auto reset = [&] { memcpy(rep->bitmapData(), picture.data(), picture.size()); };
    const double megapixels = double(w) * h / 1e6;

    const std::vector<double> sharpen { 0, -1, 0, -1, 5, -1, 0, -1, 0 };
    std::vector<int32_t> box5(25);
    std::vector<double> box5d(25);
    for (int i = 0; i < 25; ++i) {
        box5[size_t(i)] = (i % 5 == 2 || i / 5 == 2) ? 2 : 1; // a cross-weighted blur, sum 33
        box5d[size_t(i)] = box5[size_t(i)];
    }

    struct Row
    {
        const char *name;
        std::function<void()> ours;
        std::function<vips::VImage(vips::VImage)> theirs;
        const char *reference;
    };
    const std::vector<Row> rows = {
        { "sharpenStrong", [&] { rep->sharpenStrong(); },
            [&](vips::VImage in) {
                return in.conv(
                    mask(3, sharpen, 1), vips::VImage::option()->set("precision", VIPS_PRECISION_INTEGER));
            },
            "vips conv 3x3 (integer)" },
        { "applyMatrixesFilter 5x5", [&] { rep->applyMatrixesFilter(box5.data(), 1, 5, 33, 0); },
            [&](vips::VImage in) {
                return in.conv(
                    mask(5, box5d, 33), vips::VImage::option()->set("precision", VIPS_PRECISION_INTEGER));
            },
            "vips conv 5x5 (integer)" },
        { "medianFilter 3", [&] { rep->medianFilter(3); }, [](vips::VImage in) { return in.median(3); },
            "vips median 3" },
        { "edgeDetect", [&] { rep->edgeDetect(false); }, [](vips::VImage in) { return in.sobel(); },
            "vips sobel" },
    };

    printf("Picture %dx%d RGBA (%.1f megapixels), best of %d runs; libvips %s\n", w, h, megapixels, runs,
        vips_version_string());
    printf("%-26s %10s | %-26s %12s %12s | %8s %8s\n", "operation", "MP/s", "reference", "1 thread",
        "default", "ratio 1t", "ratio def");
    const int threads = vips_concurrency_get();
    for (const Row &row : rows) {
        const double ours = best(runs, reset, row.ours);
        vips_concurrency_set(1);
        const double single = timeVips(runs, picture, w, h, row.theirs);
        vips_concurrency_set(threads);
        const double many = timeVips(runs, picture, w, h, row.theirs);
        printf("%-26s %10.1f | %-26s %12.1f %12.1f | %8.2f %8.2f\n", row.name, megapixels / ours,
            row.reference, megapixels / single, megapixels / many, single / ours, many / ours);
        fflush(stdout);
    }
    vips_shutdown();
    return 0;
}
