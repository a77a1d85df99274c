// Movie: movie file types, and a still frame of a movie file (through FFmpeg) as a thumbnail source.
#pragma once

#include "image/Image.h"

#include <QImage>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <chrono>
#include <memory>
#include <optional>

namespace orvel {

class Movie;
using MoviePtr = std::shared_ptr<Movie>;

namespace movie_detail {
struct Handles;
}

/// An open movie file: its duration, natural size, a current time and a loop mode, and still frames.
/// Every FFmpeg handle is owned by the object and freed with it.
class Movie
{
public:
    ~Movie();
    Movie(const Movie &) = delete;
    Movie &operator=(const Movie &) = delete;

    // --- Types (class methods) ---------------------------------------------------------------
    /// The extensions that the installed FFmpeg's demuxers list for their files, in FFmpeg's order.
    [[nodiscard]] static QStringList movieFileTypes();
    /// The movie type list: movieFileTypes(), then the classic extensions and quoted HFS type codes
    /// not already in it, in a fixed order, case kept. Built once; the same list on every call.
    static const QStringList &QuickTimeFileTypes();
    /// Whether the list holds extension (ignoring case) or type (exactly).
    static bool isQuickTimeExtension(const QString &extension, const QString &type);
    /// isQuickTimeExtension() with the path's extension and the file's HFS type code.
    static bool isQuickTimeFile(const QString &path);

    // --- Opening -----------------------------------------------------------------------------
    /// Opens and probes the movie, waiting at most loadWaitSeconds for a slow file before going on
    /// with what is known. Null when the file cannot be opened; error (if given) then says why.
    static MoviePtr initWithFile(const QString &path, QString *error = nullptr);

    /// The thumbnail source of a movie file: the frame that thumbnailImage() picks. size and
    /// duration (pass both or neither) receive the natural size and the duration, and are zero
    /// when the file cannot be opened. Null on failure; error (if given) then says why.
    [[nodiscard]] static ImagePtr thumbnailImageForMovieWithFile(
        const QString &path, QSizeF *size = nullptr, double *duration = nullptr, QString *error = nullptr);

    // --- Frames ------------------------------------------------------------------------------
    /// The frame at floor(min(max(duration × 0.5, 0), 15)) seconds, else the poster image; null
    /// when neither can be had.
    [[nodiscard]] ImagePtr thumbnailImage();
    /// The frame shown at the time, at the natural size (display aspect ratio and rotation
    /// applied); a null image when there is none.
    [[nodiscard]] QImage frameImageAtTime(double seconds);
    /// The attached cover picture if the file has one, else the first frame; null when neither.
    [[nodiscard]] ImagePtr posterImage();
    /// Why the last frame request failed, for messages; empty when it did not.
    [[nodiscard]] QString frameError() const { return m_error; }

    // --- Attributes --------------------------------------------------------------------------
    double movieTime() const { return m_time; }
    void setMovieTime(double seconds) { m_time = seconds; }
    /// The duration in seconds; 0.0 when the file does not say.
    double movieDuration() const;
    /// The size a player shows (display aspect ratio and rotation applied); (0, 0) without a picture.
    [[nodiscard]] QSizeF movieSize() const;
    /// Whether the movie has a picture track (not counting an attached cover picture).
    bool hasVideo() const;

    /// 0 play once, 1 loop, 2 loop back and forth.
    int loopMode() const;
    /// Sets "loops" to (mode == 1) and "loops back and forth" to (mode == 2).
    void setLoopMode(int mode);
    bool loops() const { return m_loops; }
    bool loopsBackAndForth() const { return m_loopsBackAndForth; }

    // --- Process-wide settings ---------------------------------------------------------------
    /// FFmpeg's own log: quiet unless set (the command line's --verbose).
    static void setLibraryLogging(bool on);
    /// Threads per decoder; 0 lets FFmpeg choose.
    static void setDecodingThreads(int threads);

    /// Longest wait for a slow file to open and probe.
    static constexpr double loadWaitSeconds = 1.0;
    /// Longest time spent reading and decoding towards one frame.
    static constexpr double decodeLimitSeconds = 10.0;
    /// Largest picture decoded: each side, and the pixel count.
    static constexpr int maxSide = 16384;
    static constexpr qint64 maxPixels = qint64(1) << 26;

private:
    Movie();
    [[nodiscard]] QImage decodeFrame(int stream, std::optional<double> seconds);
    [[nodiscard]] QImage toDisplayImage(const void *frame);
    bool openDecoder(int stream);

    std::unique_ptr<movie_detail::Handles> m_h;
    QString m_path;
    QString m_error;
    double m_time = 0.0;
    bool m_loops = false;
    bool m_loopsBackAndForth = false;
};

} // namespace orvel
