// ThumbnailSettings: the schema of the stored thumbnail settings, one reading of them, and where a
// thumbnail goes.
#include "app/shared/ThumbnailSettings.h"

#include "app/shared/LocalizedText.h"
#include "app/shared/WorkerOptions.h"
#include "image/BitmapFileType.h"
#include "support/Failure.h"
#include "support/UserDefaults.h"

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

// The last path component less its extension. A name whose only dot leads it (".hidden") has none.
QString deletingPathExtension(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    const qsizetype dot = path.lastIndexOf(u'.');
    if (dot > slash + 1)
        return path.left(dot);
    return path;
}

QString folderOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    if (slash < 0)
        return QString();
    return slash == 0 ? u"/"_s : path.left(slash);
}

QString lastComponent(const QString &path) { return path.mid(path.lastIndexOf(u'/') + 1); }

QString appendingComponent(const QString &folder, const QString &name)
{
    if (folder.isEmpty())
        return name;
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

} // namespace

QVariant SettingKey::defaultValue() const
{
    switch (type) {
    case Type::Integer:
        return qint64(number);
    case Type::Float:
        return float(number);
    case Type::Boolean:
        return number != 0;
    case Type::String:
        break;
    }
    return QString::fromUtf16(text);
}

QString SettingKey::defaultText() const
{
    switch (type) {
    case Type::Integer:
        return QString::number(qint64(number));
    case Type::Float: {
        const QString text = QString::number(number);
        return text.contains(u'.') ? text : text + u".0"_s; // a float reads as one
    }
    case Type::Boolean:
        return number != 0 ? u"true"_s : u"false"_s;
    case Type::String:
        break;
    }
    return QString::fromUtf16(text);
}

QString SettingKey::typeName() const
{
    switch (type) {
    case Type::Integer:
        return u"integer"_s;
    case Type::Float:
        return u"float"_s;
    case Type::Boolean:
        return u"boolean"_s;
    case Type::String:
        break;
    }
    return u"string"_s;
}

std::optional<QVariant> SettingKey::checkedValue(const QVariant &value, QString *error) const
{
    // Text is read by the key's type, as "defaults write" without a type option gives it.
    QVariant typed = value;
    if (value.typeId() == QMetaType::QString && type != Type::String)
        typed = typedSettingValue(value.toString());

    const auto refuse = [&](const QString &takes) {
        QString why
            = localizedText(QStringLiteral("%1 takes %2, not '%3'")).arg(key(), takes, value.toString());
        if (option && type == Type::Integer && typed.typeId() == QMetaType::QString)
            why += u" ("_s
                + localizedText(QStringLiteral("try %1 %2")).arg(QString::fromUtf16(option), value.toString())
                + u')';
        return failure<std::optional<QVariant>>(error, why);
    };
    const auto range = [&](const QString &text) {
        return text.arg(QString::number(minimum, 'g', 10), QString::number(maximum, 'g', 10));
    };
    const int id = typed.typeId();
    const bool whole = id == QMetaType::LongLong || id == QMetaType::Int || id == QMetaType::UInt;
    const bool number = whole || id == QMetaType::Double || id == QMetaType::Float;
    switch (type) {
    case Type::Integer:
        if (!whole || typed.toLongLong() < qint64(minimum) || typed.toLongLong() > qint64(maximum))
            return refuse(range(localizedText(QStringLiteral("a whole number from %1 to %2"))));
        return QVariant(typed.toLongLong());
    case Type::Float:
        if (!number || !(typed.toDouble() >= minimum) || !(typed.toDouble() <= maximum))
            return refuse(range(localizedText(QStringLiteral("a number from %1 to %2"))));
        return QVariant(typed.toDouble());
    case Type::Boolean:
        if (id != QMetaType::Bool)
            return refuse(localizedText(QStringLiteral("true or false")));
        return typed;
    case Type::String:
        break;
    }
    if (id != QMetaType::QString)
        return refuse(localizedText(QStringLiteral("a text")));
    return typed;
}

std::span<const SettingKey> settingKeys()
{
    static constexpr SettingKey keys[] = { Setting::FileType, Setting::Width, Setting::Height,
        Setting::Sizing, Setting::Scale, Setting::Quality, Setting::Interpolation, Setting::Sharpen,
        Setting::Extension, Setting::ExtensionFormat, Setting::Create, Setting::QuitWhenDone };
    return keys;
}

const SettingKey *findSettingKey(QStringView name)
{
    for (const SettingKey &key : settingKeys()) {
        if (name == QStringView(key.name))
            return &key;
    }
    return nullptr;
}

ThumbnailSettings ThumbnailSettings::read(const UserDefaults &d)
{
    const auto integer
        = [&d](const SettingKey &key) { return d.integerForKey(key.key(), qint64(key.number)); };
    const auto real = [&d](const SettingKey &key) { return d.floatForKey(key.key(), float(key.number)); };
    ThumbnailSettings s;
    s.filetype = integer(Setting::FileType);
    s.width = integer(Setting::Width);
    s.height = integer(Setting::Height);
    s.sizing = integer(Setting::Sizing);
    s.scale = real(Setting::Scale);
    s.quality = real(Setting::Quality);
    s.interpolation = integer(Setting::Interpolation);
    s.sharpen = integer(Setting::Sharpen);
    s.extension = d.stringForKey(Setting::Extension.key(), QString::fromUtf16(Setting::Extension.text));
    s.extensionFormat = integer(Setting::ExtensionFormat);
    s.create = integer(Setting::Create);
    s.quitWhenDone = d.boolForKey(Setting::QuitWhenDone.key(), Setting::QuitWhenDone.number != 0);
    return s;
}

void ThumbnailSettings::write(UserDefaults &d) const
{
    d.setObject(create, Setting::Create.key());
    d.setObject(quitWhenDone, Setting::QuitWhenDone.key());
    d.setObject(extension, Setting::Extension.key());
    d.setObject(width, Setting::Width.key());
    d.setObject(height, Setting::Height.key());
    d.setObject(quality, Setting::Quality.key());
    d.setObject(interpolation, Setting::Interpolation.key());
    d.setObject(filetype, Setting::FileType.key());
    d.setObject(sharpen, Setting::Sharpen.key());
    d.setObject(sizing, Setting::Sizing.key());
    d.setObject(extensionFormat, Setting::ExtensionFormat.key());
    d.setObject(scale, Setting::Scale.key());
}

// The codes are compared as 32-bit integers, as the job always has: 2^32 reads as 0.
std::optional<ThumbnailSettings::CreateMode> ThumbnailSettings::createMode() const
{
    const qint32 code = qint32(create);
    if (code < qint32(CreateMode::Thumbnail) || code > qint32(CreateMode::Icon))
        return std::nullopt;
    return CreateMode(code);
}

ThumbnailSettings::NamingRule ThumbnailSettings::namingRule() const
{
    const qint32 code = qint32(extensionFormat);
    return code == 1 ? NamingRule::Suffix : code == 0 ? NamingRule::Prefix : NamingRule::SubFolder;
}

ThumbnailSettings::Sharpening ThumbnailSettings::sharpening() const
{
    const qint32 code = qint32(sharpen);
    if (code < qint32(Sharpening::None) || code > qint32(Sharpening::Strong))
        return Sharpening::None;
    return Sharpening(code);
}

QString ThumbnailSettings::fileExtension() const { return bitmapFileTypeExtension(int(filetype)); }

QString ThumbnailSettings::outputPathFor(const QString &path) const
{
    const QString suffix = u'.' + fileExtension();
    switch (namingRule()) {
    case NamingRule::Suffix:
        return deletingPathExtension(path) + extension + suffix;
    case NamingRule::Prefix:
        return folderOf(path) + u'/' + extension + deletingPathExtension(lastComponent(path)) + suffix;
    case NamingRule::SubFolder:
        break;
    }
    return appendingComponent(
        appendingComponent(folderOf(path), extension), deletingPathExtension(lastComponent(path)) + suffix);
}

QString ThumbnailSettings::outputPathFor(const QString &path, const QString &folder) const
{
    if (folder.isEmpty())
        return outputPathFor(path);
    const QString name = deletingPathExtension(lastComponent(path)) + u'.' + fileExtension();
    switch (namingRule()) {
    case NamingRule::Suffix:
        return appendingComponent(folder, deletingPathExtension(lastComponent(path)) + extension) + u'.'
            + fileExtension();
    case NamingRule::Prefix:
        return appendingComponent(folder, extension + name);
    case NamingRule::SubFolder:
        break;
    }
    return appendingComponent(appendingComponent(folder, extension), name);
}

bool ThumbnailSettings::couldHaveWritten(const QString &path) const
{
    if (extension.isEmpty())
        return false;
    const QString name = lastComponent(path);
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0)
        return false;
    bool isOutput = false;
    for (int type = TIFFFileType; type <= JPEG2000FileType; ++type)
        isOutput = isOutput || QStringView(name).mid(dot + 1) == bitmapFileTypeExtension(type);
    if (!isOutput)
        return false;
    const QStringView base = QStringView(name).left(dot);
    switch (namingRule()) {
    case NamingRule::Suffix:
        return base.size() > extension.size() && base.endsWith(extension);
    case NamingRule::Prefix:
        return base.size() > extension.size() && base.startsWith(extension);
    case NamingRule::SubFolder:
        break;
    }
    return lastComponent(folderOf(path)) == extension;
}

QString ThumbnailSettings::thumbnailPathFor(const QString &path) const
{
    if (fileExtension().isNull() || !createMode() || createMode() == CreateMode::Icon)
        return QString();
    return outputPathFor(path);
}

QString ThumbnailSettings::thumbnailPathFor(const QString &path, const QString &folder) const
{
    const QString beside = thumbnailPathFor(path);
    return beside.isEmpty() || folder.isEmpty() ? beside : outputPathFor(path, folder);
}

} // namespace orvel
