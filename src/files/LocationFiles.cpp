// Internet-location files: property lists with the URL in their fork and a type code of their kind,
// ".url" internet shortcuts, and freedesktop.org links.
#include "files/FileManager.h"

#include "files/AtomicFile.h"
#include "files/FinderInfo.h"
#include "files/NativePath_p.h"
#include "files/PropertyList.h"
#include "files/ResourceFork.h"
#include "url/URLStrings.h"

#include <QFile>
#include <QStringDecoder>

#include <cstring>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

constexpr FileTypeCode code(const char (&c)[5])
{
    return (FileTypeCode(uchar(c[0])) << 24) | (FileTypeCode(uchar(c[1])) << 16)
        | (FileTypeCode(uchar(c[2])) << 8) | FileTypeCode(uchar(c[3]));
}

constexpr FileTypeCode TextType = code("TEXT");
constexpr FileTypeCode URLType = code("url ");
constexpr FileTypeCode DragType = code("drag");
constexpr qint16 URLResourceID = 256;
constexpr qint16 DragResourceID = 128;
/// Shortcuts and desktop entries are a few lines; anything larger is not read.
constexpr qint64 MaximumTextFileSize = 1024 * 1024;

/// A location file's kind: its extension and the type code written for it.
struct Kind
{
    const char16_t *extension;
    FileTypeCode type;
};

constexpr Kind WebKind { u"webloc", code("ilht") };
constexpr Kind FTPKind { u"ftploc", code("ilft") };
constexpr Kind MailKind { u"mailloc", code("ilma") };
constexpr Kind NewsKind { u"newsloc", code("ilnw") };
constexpr Kind VNCKind { u"vncloc", code("ilge") };
constexpr Kind OtherKind { u"inetloc", code("ilge") };
constexpr Kind FileKindOfURL { u"fileloc", code("ilfi") };

Kind kindOfString(QStringView url)
{
    if (isFileStringURL(url))
        return FileKindOfURL;
    if (isHTTPStringURL(url))
        return WebKind;
    if (isFTPStringURL(url))
        return FTPKind;
    if (isNewsStringURL(url))
        return NewsKind;
    if (isMailStringURL(url))
        return MailKind;
    if (url.startsWith(u"vnc://", Qt::CaseInsensitive))
        return VNCKind;
    return OtherKind;
}

Kind kindOfURL(const QUrl &url)
{
    if (url.isLocalFile() || url.scheme().compare(u"file", Qt::CaseInsensitive) == 0)
        return FileKindOfURL;
    const QString scheme = url.scheme().toLower();
    if (scheme == u"http" || scheme == u"https")
        return WebKind;
    if (scheme == u"ftp" || scheme == u"sftp" || scheme == u"ftps")
        return FTPKind;
    if (scheme == u"mailto")
        return MailKind;
    if (scheme == u"news" || scheme == u"nntp")
        return NewsKind;
    if (scheme == u"vnc")
        return VNCKind;
    return OtherKind;
}

/// The 'drag' resource that lists the 'TEXT' and 'url ' resources: a 32-byte header (the value 1
/// as 64 bits at its start, the count as 16 bits at byte 26) and a 24-byte entry per resource
/// (type at byte 0, ID at byte 6), numbers in this processor's byte order.
QByteArray dragResource()
{
    const FileTypeCode types[] = { TextType, URLType };
    QByteArray drag(32 + 24 * 2, '\0');
    const quint64 one = 1;
    const quint16 count = 2;
    std::memcpy(drag.data(), &one, sizeof one);
    std::memcpy(drag.data() + 26, &count, sizeof count);
    for (int i = 0; i < 2; ++i) {
        char *entry = drag.data() + 32 + 24 * i;
        std::memcpy(entry, &types[i], sizeof types[i]);
        std::memcpy(entry + 6, &URLResourceID, sizeof URLResourceID);
    }
    return drag;
}

bool writeLocation(const QString &url, const QString &path, FileTypeCode type)
{
    if (url.isEmpty() || !writePropertyListToFile(QVariantMap { { u"URL"_s, url } }, path))
        return false;
    const QByteArray bytes = url.toUtf8();
    // The URL in the fork is for the Finder of older systems; a file system that keeps no fork
    // still gets a location file that reads back through its property list.
    if (std::unique_ptr<ResourceFork> fork = ResourceFork::resourceForkForWritingAtPath(path)) {
        fork->addData(bytes, TextType, URLResourceID);
        fork->addData(bytes, URLType, URLResourceID);
        fork->addData(dragResource(), DragType, DragResourceID);
    }
    return setHFSTypeCodeOfFile(path, type);
}

QString extensionOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    const qsizetype dot = path.lastIndexOf(u'.');
    if (dot <= slash + 1)
        return QString();
    return path.mid(dot + 1);
}

/// The file's text as UTF-8 (malformed sequences replaced); null when it cannot be read or is
/// too large.
QString readSmallText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > MaximumTextFileSize)
        return QString();
    const QByteArray bytes = file.read(MaximumTextFileSize + 1);
    if (bytes.size() > MaximumTextFileSize)
        return QString();
    QString text = QString::fromUtf8(bytes);
    if (text.isNull())
        text = u""_s;
    return text;
}

/// Whether a line of a text file can be a URL: no control characters, nothing that was not UTF-8.
bool isPlausibleURL(QStringView text)
{
    for (QChar c : text) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f || c == QChar::ReplacementCharacter)
            return false;
    }
    return !text.isEmpty();
}

/// A ".url" shortcut: the first "URL=" line, or the one line of a ".url" file.
QString resolveShortcut(const QString &path, bool isURLFile)
{
    const QString text = readSmallText(path);
    if (text.isNull())
        return QString();
    // A last line break ends the last line; it does not start another.
    const QStringList lines = QStringView(text).chopped(text.endsWith(u'\n') ? 1 : 0).toString().split(u'\n');
    for (const QString &line : lines) {
        if (line.startsWith(u"URL=", Qt::CaseInsensitive)) {
            const QString url = line.mid(4).trimmed();
            return isPlausibleURL(url) ? url : QString();
        }
    }
    if (isURLFile && lines.size() == 1) {
        const QString url = lines.front().trimmed();
        if (isPlausibleURL(url))
            return url;
    }
    return QString();
}

/// A freedesktop.org desktop entry of Type=Link: its "URL" key in the "[Desktop Entry]" group.
QString resolveDesktopLink(const QString &path)
{
    const QString text = readSmallText(path);
    if (text.isNull())
        return QString();
    bool inEntry = false, isLink = false;
    QString url;
    for (QStringView line : QStringView(text).split(u'\n')) {
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        if (line.startsWith(u'[')) {
            if (inEntry)
                break; // only the first group counts
            inEntry = line == u"[Desktop Entry]";
            continue;
        }
        if (!inEntry)
            continue;
        const qsizetype equals = line.indexOf(u'=');
        if (equals < 0)
            continue;
        const QStringView key = line.left(equals).trimmed();
        const QStringView value = line.mid(equals + 1).trimmed();
        if (key == u"Type")
            isLink = value == u"Link";
        else if (key == u"URL")
            url = value.toString();
    }
    if (!isLink || !isPlausibleURL(url))
        return QString();
    // Desktop-entry strings escape a few characters with a backslash.
    url.replace(u"\\s"_s, u" "_s).replace(u"\\\\"_s, u"\\"_s);
    return url;
}

/// The first resource of type in the fork, as UTF-8 text; null when there is none.
QString firstResourceText(const ResourceFork &fork, FileTypeCode type)
{
    for (const auto &[t, id] : fork.resources()) {
        if (t == type)
            return QString::fromUtf8(fork.dataForType(t, id));
    }
    return QString();
}

} // namespace

QString FileManager::pathExtensionForInternetLocation(const QString &url)
{
    if (url.isEmpty())
        return QString();
    return QStringView(kindOfString(url).extension).toString();
}

QString FileManager::pathExtensionForInternetLocation(const QUrl &url)
{
    return QStringView(kindOfURL(url).extension).toString();
}

bool FileManager::createInternetLocation(const QString &url, const QString &path)
{
    return writeLocation(url, path, kindOfString(url).type);
}

bool FileManager::createInternetLocation(const QUrl &url, const QString &path)
{
    return writeLocation(url.toString(QUrl::FullyEncoded), path, kindOfURL(url).type);
}

bool FileManager::createURL(const QString &url, const QString &path)
{
    if (url.isEmpty())
        return false;
    return writeFileAtomically(path, "[InternetShortCut]\nURL=" + url.toUtf8() + '\n');
}

QStringList FileManager::InternetLocationTypes()
{
    return { u"'ilht'"_s, u"'ilft'"_s, u"'ilfi'"_s, u"'ilma'"_s, u"'ilnw'"_s, u"'ilaf'"_s, u"'ilat'"_s,
        u"'ilns'"_s, u"'ilge'"_s, u"'ilvn'"_s, u"webloc"_s, u"mailloc"_s, u"newsloc"_s, u"fileloc"_s,
        u"ftploc"_s, u"inetloc"_s, u"vncloc"_s, u"url"_s, u"URL"_s, u"'LINK'"_s };
}

bool FileManager::isInternetLocationExtension(QStringView extension, FileTypeCode type)
{
    static constexpr FileTypeCode types[] = { code("LINK"), code("ilns"), code("ilnw"), code("ilma"),
        code("ilht"), code("ilge"), code("ilat"), code("ilfi"), code("ilft"), code("ilaf") };
    for (FileTypeCode t : types) {
        if (type == t)
            return true;
    }
    for (QStringView e :
        { u"webloc", u"mailloc", u"ftploc", u"inetloc", u"newsloc", u"fileloc", u"vncloc", u"url" }) {
        if (extension.compare(e, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

bool FileManager::isInternetLocationFile(const QString &path)
{
    return isInternetLocationExtension(extensionOf(path), HFSTypeCodeOfFile(path));
}

QString FileManager::resolveInternetLocation(const QString &path)
{
    QByteArray native;
    if (!detail::nativePath(path, &native))
        return QString();
    const QString extension = extensionOf(path);
    if (extension.compare(u"desktop", Qt::CaseInsensitive) == 0)
        return resolveDesktopLink(path);
    const FileTypeCode type = HFSTypeCodeOfFile(path);
    if (!isInternetLocationExtension(extension, type))
        return QString();
    const bool isURLFile = extension.compare(u"url", Qt::CaseInsensitive) == 0;
    if (isURLFile || type == code("LINK"))
        return resolveShortcut(path, isURLFile);
    if (const std::unique_ptr<ResourceFork> fork = ResourceFork::resourceForkForReadingAtPath(path)) {
        QString url = firstResourceText(*fork, URLType);
        if (url.isNull())
            url = firstResourceText(*fork, TextType);
        if (!url.isNull())
            return url;
    }
    const std::optional<QVariant> plist = propertyListFromFile(path);
    if (!plist || plist->typeId() != QMetaType::QVariantMap)
        return QString();
    const QVariant url = plist->toMap().value(u"URL"_s);
    return url.typeId() == QMetaType::QString ? url.toString() : QString();
}

} // namespace orvel
