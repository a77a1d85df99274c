// ThumbnailJob: makes the thumbnail, or the custom icon, of one file with the stored settings.
#pragma once

#include <QString>

#include <memory>

namespace orvel {

class Image;
class UserDefaults;

/// The thumbnail job. Reentrant: it keeps no state between files, so several may run at once.
class ThumbnailJob
{
public:
    /// Makes the thumbnail or icon of the file at path (already resolved) with the settings of
    /// defaults (the standard store when null). Answers YES or NO; on NO, error (when given)
    /// receives a one-line explanation such as "not an image, PDF or movie file".
    static bool processFile(const QString &path, UserDefaults *defaults = nullptr, QString *error = nullptr);

    /// What the job made of a file.
    enum class Outcome {
        Made, ///< the thumbnail or icon is there
        Skipped, ///< not a picture, document or movie: nothing to make
        Failed, ///< it should have made something and could not
    };
    /// Whether the job changes anything on disk.
    enum class Mode {
        Write, ///< write the thumbnail or give the icon
        DryRun, ///< load and render as for real, then write nothing: Made says it would be made
    };
    /// processFile() telling a file it skips from one it fails on. A thumbnail file goes into
    /// outputFolder (created when missing) instead of beside its source when that is not empty;
    /// an icon is always the source's own.
    [[nodiscard]] static Outcome run(const QString &path, UserDefaults *defaults = nullptr,
        QString *error = nullptr, Mode mode = Mode::Write, const QString &outputFolder = QString());

    /// Classifies and loads the file as the job does: PDF and the PostScript family first (a
    /// document drawn when first needed), then pictures (decoded whole, orientation applied), then
    /// movies (the chosen frame), then whatever the content says. Null when there is nothing to
    /// load; error then says why.
    [[nodiscard]] static std::shared_ptr<Image> loadSource(const QString &path, QString *error);

    /// The thumbnail file the job writes for path with the settings of defaults (into outputFolder
    /// when that is not empty); empty when it writes none (create mode 2, an unknown create mode or
    /// format). The path is not resolved or checked.
    [[nodiscard]] static QString outputPathForFile(
        const QString &path, UserDefaults *defaults = nullptr, const QString &outputFolder = QString());
};

} // namespace orvel
