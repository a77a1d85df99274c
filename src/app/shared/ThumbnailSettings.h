// ThumbnailSettings: the schema of the stored thumbnail settings, one reading of them, and where a
// thumbnail goes.
#pragma once

#include <QString>
#include <QVariant>

#include <optional>
#include <span>

namespace orvel {

class UserDefaults;

/// One stored setting: its key, type, default and meaning. The table of them (settingKeys()) is
/// the one place where keys and defaults are written; the job, the panel, the command line and its
/// help read it, and a test holds the README's settings table against it.
struct SettingKey
{
    enum class Type { Integer, Float, Boolean, String };

    const char16_t *name;
    Type type;
    /// The default of an integer, float or boolean (0 or 1) setting.
    double number;
    /// The default of a string setting.
    const char16_t *text;
    /// One line for the help text.
    const char16_t *meaning;
    /// The values a user may give a number: from minimum to maximum.
    double minimum = 0;
    double maximum = 0;
    /// The option that sets the key by name, suggested when a name is given for a number.
    const char16_t *option = nullptr;

    [[nodiscard]] QString key() const { return QString::fromUtf16(name); }
    /// The default as the store would hold it (qint64, float, bool or QString).
    [[nodiscard]] QVariant defaultValue() const;
    /// The default as the README and the help write it: 3, 0.8, true, _thumb.
    [[nodiscard]] QString defaultText() const;
    /// "integer", "float", "boolean" or "string".
    [[nodiscard]] QString typeName() const;

    /// value as the store should hold it for this key (qint64, double, bool or QString), when it
    /// is of the key's type and range; a whole number is also a float, and text is read by the
    /// key's type ("64", "0.5", "true"). nullopt otherwise, with error (when given) saying what
    /// the key takes. Used where users give values (--set, defaults write), so that the job never
    /// reads a value other than as it was meant.
    [[nodiscard]] std::optional<QVariant> checkedValue(const QVariant &value, QString *error = nullptr) const;
};

namespace Setting {
inline constexpr SettingKey FileType { u"filetype", SettingKey::Type::Integer, 3, nullptr,
    QT_TR_NOOP(u"output format: 0 TIFF, 1 BMP, 2 GIF, 3 JPEG, 4 PNG, 5 JPEG 2000"), 0, 5, u"--format" };
inline constexpr SettingKey Width { u"width", SettingKey::Type::Integer, 128, nullptr,
    QT_TR_NOOP(u"width of the box a thumbnail must fit, in pixels"), 1, 1000000 };
inline constexpr SettingKey Height { u"height", SettingKey::Type::Integer, 128, nullptr,
    QT_TR_NOOP(u"height of the box a thumbnail must fit, in pixels"), 1, 1000000 };
inline constexpr SettingKey Sizing { u"sizing", SettingKey::Type::Integer, 0, nullptr,
    QT_TR_NOOP(u"0 fit the box; anything else scale by scale"), 0, 1 };
inline constexpr SettingKey Scale { u"scale", SettingKey::Type::Float, 1.0, nullptr,
    QT_TR_NOOP(u"scale factor of the source's pixel size"), 0.0001, 1 };
inline constexpr SettingKey Quality { u"quality", SettingKey::Type::Float, 0.8, nullptr,
    QT_TR_NOOP(u"compression factor, 0 to 1"), 0, 1 };
inline constexpr SettingKey Interpolation { u"Antialiasing", SettingKey::Type::Integer, 3, nullptr,
    QT_TR_NOOP(u"interpolation: 0 default, 1 none, 2 low, 3 high"), 0, 3, u"--interpolation" };
inline constexpr SettingKey Sharpen { u"sharpen", SettingKey::Type::Integer, 0, nullptr,
    QT_TR_NOOP(u"0 none, 1 light, 2 medium, 3 strong"), 0, 3, u"--sharpen" };
inline constexpr SettingKey Extension { u"extension", SettingKey::Type::String, 0, u"_thumb",
    QT_TR_NOOP(u"suffix, prefix or sub-folder name") };
inline constexpr SettingKey ExtensionFormat { u"extensionFormat", SettingKey::Type::Integer, 1, nullptr,
    QT_TR_NOOP(u"1 suffix, 0 prefix, anything else a sub-folder"), 0, 2 };
inline constexpr SettingKey Create { u"create", SettingKey::Type::Integer, 0, nullptr,
    QT_TR_NOOP(u"0 thumbnail, 1 thumbnail and its icon, 2 icon of the source"), 0, 2, u"--create" };
inline constexpr SettingKey QuitWhenDone { u"QuitWhenDone", SettingKey::Type::Boolean, 1, nullptr,
    QT_TR_NOOP(u"desktop application: quit after a launch by drop") };
} // namespace Setting

/// Every setting, in the order of the README's table.
[[nodiscard]] std::span<const SettingKey> settingKeys();
/// The setting named name; null when there is none.
[[nodiscard]] const SettingKey *findSettingKey(QStringView name);

/// The settings as one reading of the store gives them, each missing key at its default. Values
/// are kept raw, as stored: a code outside its enum stays what it is, for the rules that fail on
/// it (an unknown create mode or format) or treat it as one of the others (the naming rule).
struct ThumbnailSettings
{
    enum class CreateMode : qint64 { Thumbnail = 0, ThumbnailAndIcon = 1, Icon = 2 };
    enum class NamingRule { Prefix, Suffix, SubFolder };
    enum class Sharpening : qint64 { None = 0, Light = 1, Medium = 2, Strong = 3 };
    enum class Interpolation : qint64 { Default = 0, None = 1, Low = 2, High = 3 };

    qint64 filetype = qint64(Setting::FileType.number);
    qint64 width = qint64(Setting::Width.number);
    qint64 height = qint64(Setting::Height.number);
    qint64 sizing = qint64(Setting::Sizing.number);
    float scale = float(Setting::Scale.number);
    float quality = float(Setting::Quality.number);
    qint64 interpolation = qint64(Setting::Interpolation.number);
    qint64 sharpen = qint64(Setting::Sharpen.number);
    QString extension = QString::fromUtf16(Setting::Extension.text);
    qint64 extensionFormat = qint64(Setting::ExtensionFormat.number);
    qint64 create = qint64(Setting::Create.number);
    bool quitWhenDone = Setting::QuitWhenDone.number != 0;

    [[nodiscard]] static ThumbnailSettings read(const UserDefaults &defaults);
    /// Stores every value with its schema type (the store's file is written later, on synchronize).
    void write(UserDefaults &defaults) const;

    /// The create mode; nullopt for a value that is none of them.
    [[nodiscard]] std::optional<CreateMode> createMode() const;
    /// 1 suffix, 0 prefix, any other value a sub-folder.
    [[nodiscard]] NamingRule namingRule() const;
    /// The sharpening; None also for a value that is none of them.
    [[nodiscard]] Sharpening sharpening() const;
    /// Whether the thumbnail is the source scaled by scale rather than fitted into the box.
    [[nodiscard]] bool scalesBySize() const { return sizing != 0; }

    /// The extension of the output format; null for an unknown format code.
    [[nodiscard]] QString fileExtension() const;
    /// The thumbnail's path for the source at path by the naming rule, whatever the create mode.
    [[nodiscard]] QString outputPathFor(const QString &path) const;
    /// The same, with the thumbnail (or its sub-folder) in folder instead of beside the source;
    /// an empty folder means the source's own.
    [[nodiscard]] QString outputPathFor(const QString &path, const QString &folder) const;
    /// Whether the file at path could be a thumbnail that this naming rule wrote: its name carries
    /// the naming string and an output format's extension where the rule puts them, or (the
    /// sub-folder rule) it lies in a folder of that name. Never for an empty naming string. A walk
    /// skips such files, so that a second run over a folder makes no thumbnails of thumbnails.
    [[nodiscard]] bool couldHaveWritten(const QString &path) const;
    /// outputPathFor(path) when the job writes a thumbnail file (create mode 0 or 1 and a known
    /// format); empty otherwise.
    [[nodiscard]] QString thumbnailPathFor(const QString &path) const;
    /// thumbnailPathFor() with the thumbnail written into folder (the source's own when empty).
    [[nodiscard]] QString thumbnailPathFor(const QString &path, const QString &folder) const;
};

} // namespace orvel
