// PngScaledDecoder: PNG rows from libpng, premultiplied and summed into a box shrink as they come.
#include "image/PngScaledDecoder_p.h"

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <png.h>
#include <unistd.h>

namespace orvel {

namespace {

// The largest shrink factor: 255 × factor² must fit the 32-bit box sums. A larger shrink is left to
// the final resize.
constexpr int MaxFactor = 4096;
// Column sums of 16 bits hold up to 257 rows of 8-bit samples.
constexpr int MaxNarrowFactor = 257;
// Beyond this many pixels the shrunk picture would cost more memory than the streaming general path.
constexpr double MaxShrunkPixels = 67108864.0; // 2^26, 256 MiB of RGBA
// libpng refuses wider or taller files before allocating rows for them.
constexpr png_uint_32 MaxSide = 1u << 24;
// Chunks libpng keeps in memory (a colour profile, a palette) are limited to this; text and other
// metadata are not read at all.
constexpr png_alloc_size_t MaxChunkBytes = 8u << 20;
// Files are read through a buffer of this size: a few reads a file, and no buffer the size of it.
constexpr size_t ReadBufferSize = 256 * 1024;

// Where libpng's bytes come from: encoded data held in memory, or a file read through a buffer.
struct Input
{
    const unsigned char *data = nullptr;
    size_t size = 0;
    size_t at = 0;
    int fd = -1;
    unsigned char *buffer = nullptr;
    // Where the file ends early, the last read is given what there is followed by zeros, so that
    // the rows in those bytes are decoded; a read after that fails.
    bool padEnd = false;
};

// Everything used between setjmp and a longjmp out of libpng. Plain data only: a longjmp skips
// destructors, so whatever owns memory lives in the caller's frame.
struct Decoding
{
    png_structp png = nullptr;
    png_infop info = nullptr;
    Input input;
    char message[160] = {};
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int bands = 0;
    int factor = 1;
    unsigned char *row = nullptr;
    void *sums = nullptr; // per source column and band, over the rows of the current box
    unsigned char *out = nullptr;
    void (*addRow)(void *sums, const unsigned char *row, int width) = nullptr;
    void (*emitRow)(void *sums, int width, int bands, int factor, int rows, unsigned char *out) = nullptr;
    png_uint_32 rowsRead = 0;
};

void readBytes(png_structp png, png_bytep to, size_t length)
{
    auto *in = static_cast<Input *>(png_get_io_ptr(png));
    while (length > 0) {
        if (in->at == in->size) {
            ssize_t got = 0;
            if (in->fd >= 0)
                do
                    got = ::read(in->fd, in->buffer, ReadBufferSize);
                while (got < 0 && errno == EINTR);
            if (got < 0)
                png_error(png, "the file cannot be read");
            if (got == 0 && !in->padEnd)
                png_error(png, "the file ends early");
            if (got == 0) {
                in->padEnd = false;
                memset(to, 0, length);
                return;
            }
            in->data = in->buffer;
            in->size = size_t(got);
            in->at = 0;
        }
        const size_t n = std::min(length, in->size - in->at);
        memcpy(to, in->data + in->at, n);
        in->at += n;
        to += n;
        length -= n;
    }
}

[[noreturn]] void onError(png_structp png, png_const_charp message)
{
    auto *decoding = static_cast<Decoding *>(png_get_error_ptr(png));
    qstrncpy(decoding->message, message, sizeof decoding->message);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) { } // damage is judged by errors alone

// c × a ÷ 255, rounded to nearest, in integers.
inline unsigned premultiply(unsigned c, unsigned a)
{
    const unsigned t = c * a + 128;
    return (t + (t >> 8)) >> 8;
}

// Adds a decoded row to the column sums, premultiplying RGBA; loops kept plain for the vectoriser.
template <typename Sum, int Bands> void addRow(void *sums, const unsigned char *row, int width)
{
    Sum *s = static_cast<Sum *>(sums);
    if constexpr (Bands == 3) {
        for (int i = 0; i < width * 3; ++i)
            s[i] = Sum(s[i] + row[i]);
    } else {
        for (int x = 0; x < width * 4; x += 4) {
            const unsigned a = row[x + 3];
            s[x] = Sum(s[x] + premultiply(row[x], a));
            s[x + 1] = Sum(s[x + 1] + premultiply(row[x + 1], a));
            s[x + 2] = Sum(s[x + 2] + premultiply(row[x + 2], a));
            s[x + 3] = Sum(s[x + 3] + a);
        }
    }
}

// Turns the column sums of a box's rows into one output row (the box averages, rounded) and clears
// them. rows is the box's height; the last column's box may be narrower.
template <typename Sum>
void emitRow(void *sums, int width, int bands, int factor, int rows, unsigned char *out)
{
    Sum *s = static_cast<Sum *>(sums);
    const int outWidth = (width + factor - 1) / factor;
    for (int ox = 0; ox < outWidth; ++ox) {
        const int first = ox * factor;
        const int n = std::min(factor, width - first);
        const float scale = 1.0f / float(n * rows);
        for (int c = 0; c < bands; ++c) {
            uint32_t total = 0;
            for (int k = 0; k < n; ++k)
                total += s[(first + k) * bands + c];
            out[ox * bands + c] = static_cast<unsigned char>(float(total) * scale + 0.5f);
        }
    }
    std::fill_n(s, size_t(width) * size_t(bands), Sum(0));
}

// Reads the chunks up to the picture data. False (the reason in message) when libpng fails.
bool readHeader(Decoding *d)
{
    if (setjmp(png_jmpbuf(d->png)))
        return false;
    png_read_info(d->png, d->info);
    d->width = png_get_image_width(d->png, d->info);
    d->height = png_get_image_height(d->png, d->info);
    const bool alpha = (png_get_color_type(d->png, d->info) & PNG_COLOR_MASK_ALPHA) != 0
        || png_get_valid(d->png, d->info, PNG_INFO_tRNS) != 0;
    d->bands = alpha ? 4 : 3;
    return true;
}

// Asks libpng for 8-bit RGB or RGBA rows and sums them into the shrunk picture. False (the reason in
// message) when libpng fails; the rows before that are summed.
bool readRows(Decoding *d)
{
    if (setjmp(png_jmpbuf(d->png)))
        return false;
    png_structp png = d->png;
    const int type = png_get_color_type(png, d->info);
    if (type == PNG_COLOR_TYPE_PALETTE)
        png_set_palette_to_rgb(png);
    if (png_get_valid(png, d->info, PNG_INFO_tRNS))
        png_set_tRNS_to_alpha(png);
    if (!(type & PNG_COLOR_MASK_COLOR)) {
        png_set_expand_gray_1_2_4_to_8(png);
        png_set_gray_to_rgb(png);
    }
    if (png_get_bit_depth(png, d->info) == 16)
        png_set_scale_16(png); // rounds to nearest, where stripping the low byte would truncate
    png_read_update_info(png, d->info);
    if (png_get_rowbytes(png, d->info) != size_t(d->width) * size_t(d->bands))
        png_error(png, "unexpected row layout");
    const int width = int(d->width);
    while (d->rowsRead < d->height) {
        png_read_row(png, d->row, nullptr);
        d->addRow(d->sums, d->row, width);
        ++d->rowsRead;
        if (d->rowsRead % png_uint_32(d->factor) == 0 || d->rowsRead == d->height) {
            const png_uint_32 box = (d->rowsRead - 1) / png_uint_32(d->factor);
            const int rows = int(std::min<png_uint_32>(d->factor, d->height - box * png_uint_32(d->factor)));
            const int outWidth = (width + d->factor - 1) / d->factor;
            d->emitRow(d->sums, width, d->bands, d->factor, rows,
                d->out + size_t(box) * size_t(outWidth) * size_t(d->bands));
        }
    }
    return true;
}

struct ReadStruct
{
    Decoding *decoding;
    ~ReadStruct() { png_destroy_read_struct(&decoding->png, &decoding->info, nullptr); }
};

template <typename Sum> void chooseRows(Decoding &d)
{
    d.addRow = d.bands == 4 ? addRow<Sum, 4> : addRow<Sum, 3>;
    d.emitRow = emitRow<Sum>;
}

PngScaledDecoder::Outcome failed(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return PngScaledDecoder::Outcome::Failed;
}

} // namespace

int PngScaledDecoder::shrinkFactor(int width, int height, int targetWidth, int targetHeight)
{
    if (width <= 0 || height <= 0 || targetWidth <= 0 || targetHeight <= 0)
        return 1;
    // Leave at least a factor of two for the final Lanczos step.
    const double shrink = std::min(double(width) / targetWidth, double(height) / targetHeight) / 2.0;
    return int(std::clamp(std::floor(shrink), 1.0, double(MaxFactor)));
}

PngScaledDecoder::Outcome PngScaledDecoder::decode(const QString &path, const QByteArray &data,
    int targetWidth, int targetHeight, double maxSourcePixels, Damage damage, ShrunkPicture *result,
    QString *error)
{
    if (targetWidth <= 0 || targetHeight <= 0)
        return Outcome::Unsupported;
    Decoding d;
    QFile file(path);
    std::vector<unsigned char> readBuffer;
    if (data.isEmpty()) {
        // Unbuffered: the descriptor is read directly, in large blocks.
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return failed(error, file.errorString());
        readBuffer.resize(ReadBufferSize);
        d.input.fd = file.handle();
        d.input.buffer = readBuffer.data();
    } else {
        d.input.data = reinterpret_cast<const unsigned char *>(data.constData());
        d.input.size = size_t(data.size());
    }

    d.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &d, onError, onWarning);
    if (!d.png)
        return failed(error, QStringLiteral("out of memory"));
    ReadStruct owner { &d };
    d.info = png_create_info_struct(d.png);
    if (!d.info)
        return failed(error, QStringLiteral("out of memory"));
    d.input.padEnd = damage == Damage::Tolerate;
    png_set_read_fn(d.png, &d.input, readBytes);
    png_set_user_limits(d.png, MaxSide, MaxSide);
    png_set_chunk_malloc_max(d.png, MaxChunkBytes);
    static const png_byte ignored[] = "tEXt\0zTXt\0iTXt\0eXIf\0tIME\0sPLT\0hIST";
    png_set_keep_unknown_chunks(d.png, PNG_HANDLE_CHUNK_NEVER, ignored, int(sizeof ignored / 5));
    // The picture data's checksums are not computed (some 7 % of a thumbnail's time): damage only
    // they would find fails a first decode, and the retry that tolerates damage gives the same rows.
    png_set_option(d.png, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
    png_set_crc_action(
        d.png, PNG_CRC_QUIET_USE, damage == Damage::Tolerate ? PNG_CRC_QUIET_USE : PNG_CRC_DEFAULT);

    if (!readHeader(&d))
        return failed(error, QStringLiteral("damaged PNG data (%1)").arg(QLatin1String(d.message)));
    // A colour profile is converted by the general path; interlaced rows come in seven passes.
    if (png_get_interlace_type(d.png, d.info) != PNG_INTERLACE_NONE
        || png_get_valid(d.png, d.info, PNG_INFO_iCCP) != 0
        || double(d.width) * double(d.height) > maxSourcePixels)
        return Outcome::Unsupported;
    d.factor = shrinkFactor(int(d.width), int(d.height), targetWidth, targetHeight);
    const int outWidth = int((d.width + png_uint_32(d.factor) - 1) / png_uint_32(d.factor));
    const int outHeight = int((d.height + png_uint_32(d.factor) - 1) / png_uint_32(d.factor));
    if (d.factor < 2 || double(outWidth) * double(outHeight) > MaxShrunkPixels)
        return Outcome::Unsupported;

    const size_t rowSamples = size_t(d.width) * size_t(d.bands);
    std::vector<unsigned char> row(rowSamples);
    std::vector<uint16_t> narrowSums;
    std::vector<uint32_t> wideSums;
    if (d.factor <= MaxNarrowFactor) {
        narrowSums.assign(rowSamples, 0);
        d.sums = narrowSums.data();
        chooseRows<uint16_t>(d);
    } else {
        wideSums.assign(rowSamples, 0);
        d.sums = wideSums.data();
        chooseRows<uint32_t>(d);
    }
    result->pixels.assign(size_t(outWidth) * size_t(outHeight) * size_t(d.bands), 0);
    d.row = row.data();
    d.out = result->pixels.data();

    if (!readRows(&d)) {
        if (damage == Damage::Fail || d.rowsRead == 0) {
            result->pixels = {};
            return failed(error, QStringLiteral("damaged PNG data (%1)").arg(QLatin1String(d.message)));
        }
        // The box the rows ended in, with the missing rows as transparent black.
        const png_uint_32 factor = png_uint_32(d.factor);
        if (d.rowsRead % factor != 0) {
            const png_uint_32 box = d.rowsRead / factor;
            d.emitRow(d.sums, int(d.width), d.bands, d.factor, int(std::min(factor, d.height - box * factor)),
                d.out + size_t(box) * size_t(outWidth) * size_t(d.bands));
        }
    }
    result->width = outWidth;
    result->height = outHeight;
    result->bands = d.bands;
    result->factor = d.factor;
    return Outcome::Decoded;
}

} // namespace orvel
