// File-type vocabularies by extension, the media tables by length, and MIME types through the
// freedesktop.org shared MIME database.
#include "url/URL.h"

#include "strings/CharacterTables.h"

#include <QMimeDatabase>
#include <QVarLengthArray>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

QStringList listOf(std::initializer_list<const char *> extensions)
{
    QStringList list;
    list.reserve(qsizetype(extensions.size()));
    for (const char *e : extensions)
        list << QString::fromLatin1(e);
    return list;
}

bool containsNoCase(const QStringList &list, QStringView extension)
{
    if (extension.isEmpty())
        return false;
    for (const QString &e : list)
        if (extension.compare(e, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

} // namespace

const QStringList &URL::imageTypes()
{
    static const QStringList list = listOf({ "jpeg", "jpe", "jpg", "jfif", "ief", "gif", "png", "bmp", "tiff",
        "tif", "ras", "cmx", "ico", "pnm", "pbm", "pgm", "ppm", "rgb", "xbm", "xwd", "cod", "mjpg" });
    return list;
}

const QStringList &URL::multimediaTypes()
{
    static const QStringList list = listOf({ "ra", "rm", "qt", "au", "dv", "avi", "vfw", "swf", "swa", "viv",
        "ram", "wmv", "wma", "moov", "mpeg", "mpv2", "mpga", "divx", "aiff", "aifc", "midi", "movie" });
    return list;
}

const QStringList &URL::markupTypes()
{
    static const QStringList list = listOf({ "sgm", "sgml", "dtd", "xml", "xsl", "xslt", "xbl", "ent", "wml",
        "opml", "plist", "sdef", "ooutline", "idata", "xmloutline", "rss", "rdf", "rsd", "tbx" });
    return list;
}

const QStringList &URL::richTextTypes()
{
    static const QStringList list = listOf({ "rtf", "rtfd" });
    return list;
}

const QStringList &URL::archiveTypes()
{
    static const QStringList list = listOf({ "gz", "bz", "7z", "tgz", "tar", "tbz", "bz2", "bin", "hqx",
        "sit", "zip", "sitx", "gzip", "bzip", "bzip2", "bzip5", "torrent", "sparseimage" });
    return list;
}

const QStringList &URL::executableTypes()
{
    static const QStringList list = listOf({ "class", "exe" });
    return list;
}

QStringList URL::officeTypesIncludingMSWord(
    bool msWord, bool openOffice, bool starOffice, bool wordPerfect, bool pdf, bool postScript)
{
    QStringList list
        = listOf({ "xls", "xlsx", "xla", "xlc", "xlm", "xlt", "xlw", "pps", "pot", "ppt", "pptx" });
    if (msWord)
        list << listOf({ "word", "doc", "docm", "docx", "dot", "dotm", "dotx" });
    if (openOffice)
        list << listOf({ "odt", "ott" });
    if (starOffice)
        list << listOf({ "stw", "sxw" });
    if (wordPerfect)
        list << u"wpd"_s;
    if (pdf)
        list << u"pdf"_s;
    if (postScript)
        list << listOf({ "postscript", "ps", "eps", "ai" });
    return list;
}

const QStringList &URL::officeTypes()
{
    static const QStringList list = officeTypesIncludingMSWord(true, true, true, true, true, true);
    return list;
}

QStringList URL::binaryFileTypesIncludingRichText(
    bool richText, bool msWord, bool openOffice, bool starOffice, bool wordPerfect, bool pdf, bool postScript)
{
    QStringList list = imageTypes();
    list << multimediaTypes() << archiveTypes() << executableTypes()
         << officeTypesIncludingMSWord(msWord, openOffice, starOffice, wordPerfect, pdf, postScript);
    if (richText)
        list << richTextTypes();
    return list;
}

const QStringList &URL::binaryFileTypes()
{
    static const QStringList list
        = binaryFileTypesIncludingRichText(false, true, true, true, true, true, true);
    return list;
}

bool URL::isImageType(QStringView extension) { return containsNoCase(imageTypes(), extension); }
bool URL::isMarkupType(QStringView extension) { return containsNoCase(markupTypes(), extension); }
bool URL::isRichTextType(QStringView extension) { return containsNoCase(richTextTypes(), extension); }
bool URL::isArchiveType(QStringView extension) { return containsNoCase(archiveTypes(), extension); }
bool URL::isExecutableType(QStringView extension) { return containsNoCase(executableTypes(), extension); }

namespace {

// The media extensions by length (2 to 5), each length with its audio, video and embedded lists.
struct MediaRow
{
    std::initializer_list<const char *> audio, video, embedded;
};

const MediaRow mediaRows[] = {
    { { "ra", "au" }, { "rm", "qt" }, {} },
    { { "ram", "wma", "mp3", "m3u", "m4a", "mpa", "m4p", "aif", "m2a", "wav", "snd", "mid", "rmi" },
        { "mp2", "mpe", "wmv", "asf", "asx", "mov", "avi", "mpe", "m1v", "mp4", "m2v", "mpg", "3g2", "flc",
            "wvx", "flv", "m4v", "f4v", "fid" },
        { "swf", "viv" } },
    { { "aifc", "aiff", "mpga", "midi" }, { "mpeg", "divx", "moov", "mpv2", "rmvb" }, {} },
    { {}, { "movie" }, {} },
};

bool inList(std::initializer_list<const char *> list, const char16_t *lowered, qsizetype n)
{
    for (const char *e : list) {
        qsizetype i = 0;
        while (i < n && char16_t(e[i]) == lowered[i])
            ++i;
        if (i == n)
            return true;
    }
    return false;
}

} // namespace

bool URL::isMultimediaType(QStringView extension, bool audio, bool video, bool embedded)
{
    const qsizetype n = extension.size();
    if (n < 2 || n > 5)
        return false;
    const ConversionTable lower = lowerCharsTable();
    char16_t lowered[5];
    for (qsizetype i = 0; i < n; ++i)
        lowered[i] = lower[extension[i].unicode()];
    const MediaRow &row = mediaRows[n - 2];
    return (audio && inList(row.audio, lowered, n)) || (video && inList(row.video, lowered, n))
        || (embedded && inList(row.embedded, lowered, n));
}

QString URL::extensionForMIMEType(const QString &mimeType)
{
    if (mimeType.isNull())
        return QString();
    const QMimeType type = QMimeDatabase().mimeTypeForName(mimeType);
    if (type.isValid() && !type.preferredSuffix().isEmpty())
        return type.preferredSuffix();
    if (mimeType == "image/pjpg"_L1)
        return u"jpg"_s;
    if (mimeType == "image/pjpeg"_L1)
        return u"jpeg"_s;
    return QString();
}

QString URL::MIMETypeForExtension(const QString &extension)
{
    if (extension.isNull())
        return QString();
    if (!extension.isEmpty()) {
        const QMimeType type
            = QMimeDatabase().mimeTypeForFile(u"file."_s + extension, QMimeDatabase::MatchExtension);
        if (type.isValid() && !type.isDefault())
            return type.name();
    }
    // What the database does not know, the toolkit's own tables answer.
    if (extension.compare("pdf"_L1, Qt::CaseInsensitive) == 0)
        return u"application/pdf"_s;
    for (QLatin1StringView postScript : { "ps"_L1, "eps"_L1, "ai"_L1 })
        if (extension.compare(postScript, Qt::CaseInsensitive) == 0)
            return u"application/postscript"_s;
    if (isImageType(extension)) {
        for (QLatin1StringView jpeg : { "jpg"_L1, "jpe"_L1, "jpeg"_L1 })
            if (extension.compare(jpeg, Qt::CaseInsensitive) == 0)
                return u"image/jpeg"_s;
        return "image/"_L1 + extension;
    }
    if (isMultimediaType(extension, true, false, false))
        return "audio/"_L1 + extension;
    if (isMultimediaType(extension, false, true, false))
        return "video/"_L1 + extension;
    if (isMultimediaType(extension, false, true, true))
        return "application/"_L1 + extension;
    return QString();
}

} // namespace orvel
