// Path strings, worked on as UTF-16 views in one pass where it matters: standardisation, relative
// paths and file names run on every file of a batch.
#include "files/PathExtensions.h"

#include "files/FinderInfo.h"
#include "strings/CharacterTables.h"
#include "strings/FastCompare.h"
#include "strings/StringCharacters.h"
#include "strings/StringExtensions.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QVarLengthArray>

#include <pwd.h>
#include <unistd.h>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace orvel {

namespace {

using namespace Qt::StringLiterals;

/// Path components as views; paths rarely have more than 64.
using Components = QVarLengthArray<QStringView, 64>;

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

bool equalNoCase(QStringView a, QStringView b)
{
    return a.size() == b.size()
        && fastCaseInsensitiveCompareUnichars(a.utf16(), a.size(), b.utf16(), b.size()) == 0;
}

bool containsStringNoCase(const QStringList &list, QStringView s)
{
    for (const QString &item : list) {
        if (equalNoCase(item, s))
            return true;
    }
    return false;
}

/// The home folder of user (the current user for an empty name), or a null string.
QString homeOfUser(QStringView user)
{
    if (user.isEmpty())
        return QDir::homePath();
    const QByteArray name = user.toUtf8();
    passwd entry {};
    passwd *found = nullptr;
    QVarLengthArray<char, 1024> buffer(1024);
    while (getpwnam_r(name.constData(), &entry, buffer.data(), size_t(buffer.size()), &found) == ERANGE
        && buffer.size() < (1 << 20))
        buffer.resize(buffer.size() * 2);
    if (!found || !entry.pw_dir)
        return QString();
    return QFile::decodeName(entry.pw_dir);
}

QString currentUserName()
{
    passwd entry {};
    passwd *found = nullptr;
    char buffer[4096];
    if (getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found) == 0 && found && entry.pw_name)
        return QFile::decodeName(entry.pw_name);
    return qEnvironmentVariable("USER");
}

/// "~" and "~/x" with the home folder, "~ann/x" with ann's; anything else (and an unknown user) as is.
QString expandingTilde(const QString &s)
{
    if (!s.startsWith(u'~'))
        return s;
    qsizetype slash = s.indexOf(u'/');
    if (slash < 0)
        slash = s.size();
    const QString home = homeOfUser(QStringView(s).sliced(1, slash - 1));
    if (home.isEmpty())
        return s;
    QString out = home;
    if (out.endsWith(u'/') && slash < s.size())
        out.chop(1);
    return out.append(QStringView(s).sliced(slash));
}

/// The home folder replaced by "~".
QString abbreviatingWithTilde(QStringView s)
{
    const QString home = QDir::homePath();
    if (home.isEmpty() || home == u"/" || !s.startsWith(home))
        return s.toString();
    if (s.size() == home.size())
        return u"~"_s;
    if (s[home.size()] != u'/')
        return s.toString();
    return QString(u'~').append(s.sliced(home.size()));
}

/// Calls f with each non-empty component; a leading "/" comes first as its own component.
template <typename F> void forEachComponent(QStringView s, F &&f)
{
    const qsizetype n = s.size();
    qsizetype i = 0;
    if (n > 0 && s[0] == u'/') {
        f(s.first(1));
        i = 1;
    }
    while (i < n) {
        while (i < n && s[i] == u'/')
            ++i;
        const qsizetype start = i;
        while (i < n && s[i] != u'/')
            ++i;
        if (i > start)
            f(s.sliced(start, i - start));
    }
}

bool isRootComponent(QStringView c) { return c.size() == 1 && c[0] == u'/'; }
bool isDot(QStringView c) { return c.size() == 1 && c[0] == u'.'; }
bool isDotDot(QStringView c) { return c.size() == 2 && c[0] == u'.' && c[1] == u'.'; }

/// The walk of standardizedPathComponents(): ".." takes back whatever comes before it, the root too.
void standardizedComponents(QStringView s, Components &out)
{
    forEachComponent(s, [&out](QStringView c) {
        if (isDot(c))
            return;
        if (isDotDot(c)) {
            if (!out.isEmpty())
                out.removeLast();
            return;
        }
        out.append(c);
    });
}

/// The index of the first "/" in p[0, n) that ends the text or is followed by "/" or ".", or n: the
/// only places where a path can need standardising. Eight units at a time where the processor can.
qsizetype findSlashPair(const char16_t *p, qsizetype n)
{
    qsizetype i = 0;
#ifdef __SSE2__
    const __m128i slash = _mm_set1_epi16(u'/');
    const __m128i dot = _mm_set1_epi16(u'.');
    for (; i + 9 <= n; i += 8) {
        const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i));
        const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i + 1));
        const __m128i pair = _mm_and_si128(_mm_cmpeq_epi16(here, slash),
            _mm_or_si128(_mm_cmpeq_epi16(next, slash), _mm_cmpeq_epi16(next, dot)));
        const int mask = _mm_movemask_epi8(pair);
        if (mask != 0)
            return i + __builtin_ctz(unsigned(mask)) / 2;
    }
#endif
    for (; i < n; ++i) {
        if (p[i] == u'/' && (i + 1 == n || p[i + 1] == u'/' || p[i + 1] == u'.'))
            return i;
    }
    return n;
}

/// Whether standardizing changes nothing: no trailing "/" (so not "/" either), no empty, "." or ".."
/// component. Most paths are so; only the places findSlashPair() finds ("/.cache" among them) and the
/// start of a relative path are looked at closely.
bool isStandardized(QStringView s)
{
    const qsizetype n = s.size();
    if (n == 0)
        return true;
    const char16_t *p = s.utf16();
    if (p[0] == u'.')
        return false;
    for (qsizetype i = findSlashPair(p, n); i < n; i += 1 + findSlashPair(p + i + 1, n - i - 1)) {
        if (i + 1 == n || p[i + 1] == u'/')
            return false;
        // "/." followed by the end or "/", or by "." and the end or "/".
        if (i + 2 == n || p[i + 2] == u'/' || (p[i + 2] == u'.' && (i + 3 == n || p[i + 3] == u'/')))
            return false;
    }
    return true;
}

/// The platform's standardisation before comparing folders: ".." stops at the root of an absolute
/// path and stays in a relative one. The views point into s.
void comparableComponents(QStringView s, Components &out)
{
    const bool absolute = s.startsWith(u'/');
    forEachComponent(s, [&out, absolute](QStringView c) {
        if (isDot(c))
            return;
        if (isDotDot(c) && absolute) {
            if (out.size() > 1)
                out.removeLast();
            return;
        }
        out.append(c);
    });
}

/// The length of the longest prefix of s whose UTF-8 form takes at most maxBytes; a surrogate pair
/// stays whole.
qsizetype prefixFittingUtf8(QStringView s, qsizetype maxBytes)
{
    const qsizetype n = s.size();
    qsizetype bytes = 0;
    qsizetype i = 0;
    while (i < n) {
        const char16_t c = s[i].unicode();
        qsizetype units = 1;
        qsizetype b = 3;
        if (c < 0x80)
            b = 1;
        else if (c < 0x800)
            b = 2;
        else if (QChar::isHighSurrogate(c) && i + 1 < n && QChar::isLowSurrogate(s[i + 1].unicode())) {
            b = 4;
            units = 2;
        }
        if (bytes + b > maxBytes)
            break;
        bytes += b;
        i += units;
    }
    return i;
}

bool isSeparatorInFilename(char16_t c) { return c == u'/' || c == u':' || c == u'~'; }
/// ".", "/", ":" and "~", one bit each of two 64-bit masks.
bool isFilenameTrimCharacter(char16_t c)
{
    constexpr quint64 low = (quint64(1) << u'.') | (quint64(1) << u'/') | (quint64(1) << u':');
    constexpr quint64 high = quint64(1) << (u'~' - 64);
    return c < 64 ? (low >> c) & 1 : c < 128 ? (high >> (c - 64)) & 1 : false;
}

/// The index of the first unit in p[0, n) that is "/", ":", "~" or U+0300 and above (where
/// composition may change the text), or n.
qsizetype findSeparatorOrMark(const char16_t *p, qsizetype n)
{
    qsizetype i = 0;
#ifdef __SSE2__
    const __m128i slash = _mm_set1_epi16(u'/');
    const __m128i colon = _mm_set1_epi16(u':');
    const __m128i tilde = _mm_set1_epi16(u'~');
    const __m128i below = _mm_set1_epi16(0x2FF);
    for (; i + 8 <= n; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i));
        // Saturating subtraction leaves non-zero lanes exactly where a unit exceeds U+02FF.
        const __m128i high = _mm_cmpeq_epi16(_mm_subs_epu16(v, below), _mm_setzero_si128());
        const __m128i separator = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi16(v, slash), _mm_cmpeq_epi16(v, colon)), _mm_cmpeq_epi16(v, tilde));
        const int mask = _mm_movemask_epi8(separator) | (~_mm_movemask_epi8(high) & 0xFFFF);
        if (mask != 0)
            return i + __builtin_ctz(unsigned(mask)) / 2;
    }
#endif
    for (; i < n; ++i) {
        if (p[i] >= 0x300 || isSeparatorInFilename(p[i]))
            return i;
    }
    return n;
}

/// Canonical compositions of a Latin letter (below U+0250) with one combining mark of U+0300..U+036F,
/// keyed base << 16 | mark; each checked against Qt's own composition when the table is built.
const QHash<quint32, char16_t> &latinCompositions()
{
    static const QHash<quint32, char16_t> table = [] {
        QHash<quint32, char16_t> t;
        for (char32_t c = 0xC0; c < 0x10000; ++c) {
            if (QChar::isSurrogate(c) || QChar::decompositionTag(c) != QChar::Canonical)
                continue;
            const QString parts = QChar::decomposition(c);
            if (parts.size() != 2 || parts[0].unicode() >= 0x250 || parts[1].unicode() < 0x300
                || parts[1].unicode() > 0x36F)
                continue;
            if (parts.normalized(QString::NormalizationForm_C) == QChar(char16_t(c)))
                t.insert(quint32(parts[0].unicode()) << 16 | parts[1].unicode(), char16_t(c));
        }
        return t;
    }();
    return table;
}

/// Composes s (Unicode NFC) when it is Latin text with single combining marks, as names from a Mac
/// disk come decomposed; false, leaving s alone, for anything else (two marks in a row, other
/// scripts), which the general normalisation handles.
bool composeLatin(QString &s)
{
    const QHash<quint32, char16_t> &table = latinCompositions();
    const char16_t *p = reinterpret_cast<const char16_t *>(s.constData());
    const qsizetype n = s.size();
    QString out(n, Qt::Uninitialized);
    char16_t *begin = reinterpret_cast<char16_t *>(out.data());
    char16_t *o = begin;
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = p[i];
        if (c < 0x300) {
            *o++ = c;
            continue;
        }
        // U+0340, U+0341, U+0343 and U+0344 are replaced by other marks, and a mark after a composed
        // letter may have to go before the letter's own mark ("À" and a dot below): the full way.
        const char16_t base = o == begin ? 0 : p[i - 1];
        if (c > 0x36F || base == 0 || base >= 0x250 || (c >= 0x340 && c <= 0x344 && c != 0x342)
            || (base >= 0xC0 && QChar::decompositionTag(base) == QChar::Canonical))
            return false;
        const auto found = table.constFind(quint32(p[i - 1]) << 16 | c);
        if (found != table.constEnd())
            o[-1] = *found;
        else
            *o++ = c;
    }
    out.truncate(o - begin);
    s = std::move(out);
    return true;
}

template <typename Map> qsizetype compareNumericAware(QStringView a, QStringView b, Map map)
{
    if (b.isNull())
        return -1;
    if (a.isEmpty() || b.isEmpty())
        return a.size() - b.size();
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        const char16_t ca = a[i].unicode();
        const char16_t cb = b[j].unicode();
        if (isDigit(ca) && isDigit(cb)) {
            // Numbers of any length: leading zeros skipped, then the longer run is the larger number,
            // and runs of one length compare digit by digit.
            qsizetype endA = i;
            while (endA < a.size() && isDigit(a[endA].unicode()))
                ++endA;
            qsizetype endB = j;
            while (endB < b.size() && isDigit(b[endB].unicode()))
                ++endB;
            while (i < endA && a[i] == u'0')
                ++i;
            while (j < endB && b[j] == u'0')
                ++j;
            if (endA - i != endB - j)
                return endA - i < endB - j ? -1 : 1;
            for (; i < endA; ++i, ++j) {
                if (a[i] != b[j])
                    return a[i] < b[j] ? -1 : 1;
            }
            j = endB;
            continue;
        }
        const char16_t ma = map(ca);
        const char16_t mb = map(cb);
        if (ma != mb)
            return qsizetype(ma) - qsizetype(mb);
        ++i;
        ++j;
    }
    return a.size() - b.size();
}

QString stringByDeletingLastPathComponent(QStringView s)
{
    qsizetype end = s.size();
    while (end > 1 && s[end - 1] == u'/')
        --end;
    const qsizetype slash = s.first(end).lastIndexOf(u'/');
    if (slash < 0)
        return u""_s;
    qsizetype keep = slash;
    while (keep > 0 && s[keep - 1] == u'/')
        --keep;
    return keep == 0 ? u"/"_s : s.first(keep).toString();
}

/// The path without trailing "/" (the root keeps its one).
QStringView withoutTrailingSlashes(QStringView s)
{
    qsizetype end = s.size();
    while (end > 1 && s[end - 1] == u'/')
        --end;
    return s.first(end);
}

QString stringByDeletingPathExtension(QStringView s)
{
    const QStringView trimmed = withoutTrailingSlashes(s);
    const qsizetype extension = pathExtension(trimmed).size();
    return extension == 0 ? trimmed.toString() : trimmed.chopped(extension + 1).toString();
}

/// "." and extension after the last component; a path without a name ("" or "/") stays as it is.
QString stringByAppendingPathExtension(const QString &s, QStringView extension)
{
    const QStringView trimmed = withoutTrailingSlashes(s);
    if (trimmed.isEmpty() || trimmed == u"/")
        return s;
    return trimmed.toString().append(u'.').append(extension);
}

/// A name inside a colon-separated form from a POSIX one and back: "/" and ":" trade places.
void appendSwappingSeparators(QString &out, QStringView name)
{
    for (QChar c : name)
        out += c == u':' ? u'/' : c == u'/' ? u':' : c;
}

/// Where a removable volume of this name is mounted.
QString mountPointOfVolume(const QString &name)
{
    const QString user = currentUserName();
    const QString under = user.isEmpty() ? QString() : user + u'/';
    const QString run = u"/run/media/"_s + under + name;
    if (QFileInfo::exists(run))
        return run;
    return u"/media/"_s + under + name;
}

} // namespace

// --- Fitting the file system ----------------------------------------------------------------------

void createFileSystemRepresentation(QString &s)
{
    const qsizetype keep = prefixFittingUtf8(s, FileSystemRepresentationLimit - 1);
    if (keep < s.size())
        s.truncate(keep);
}

void createFileSystemRepresentationAndAppendExtension(QString &s, QStringView extension)
{
    if (extension.isEmpty() || extension.size() > MaximumPathExtensionLength) {
        createFileSystemRepresentation(s);
        return;
    }
    // A buffer of 249 minus the extension's length, its terminating zero included.
    const qsizetype keep = prefixFittingUtf8(s, FileSystemRepresentationLimit - 2 - extension.size());
    if (keep < s.size())
        s.truncate(keep);
    if (!(s.endsWith(extension) && s.size() > extension.size() && s[s.size() - extension.size() - 1] == u'.'))
        s.append(u'.').append(extension);
}

QString stringByCreatingFileSystemRepresentation(const QString &s)
{
    if (s.isEmpty())
        return s;
    QString out = s;
    createFileSystemRepresentation(out);
    return out;
}

QString stringByCreatingFileSystemRepresentationByAppendingExtension(const QString &s, QStringView extension)
{
    if (s.isEmpty())
        return s;
    QString out = s;
    createFileSystemRepresentationAndAppendExtension(out, extension);
    return out;
}

// --- File names -----------------------------------------------------------------------------------

void trimInvalidFilenameCharacters(QString &s)
{
    qsizetype begin = 0;
    qsizetype end = s.size();
    while (begin < end && isFilenameTrimCharacter(s[begin].unicode()))
        ++begin;
    while (end > begin && isFilenameTrimCharacter(s[end - 1].unicode()))
        --end;
    if (begin > 0 || end < s.size())
        s = QStringView(s).sliced(begin, end - begin).toString();
}

void createFilename(QString &s)
{
    // Composition changes nothing below U+0300, where the first combining marks begin.
    const char16_t *units = reinterpret_cast<const char16_t *>(s.constData());
    for (qsizetype i = 0; i < s.size(); ++i) {
        if (units[i] >= 0x300) {
            if (!composeLatin(s))
                s = s.normalized(QString::NormalizationForm_C);
            break;
        }
    }
    const QStringView v(s);
    qsizetype begin = 0;
    qsizetype end = v.size();
    while (begin < end && isFilenameTrimCharacter(v[begin].unicode()))
        ++begin;
    while (end > begin && isFilenameTrimCharacter(v[end - 1].unicode()))
        --end;
    // Inner "." stay; only "/", ":" and "~" are replaced.
    bool replaces = false;
    for (qsizetype i = begin; i < end && !replaces; ++i)
        replaces = isSeparatorInFilename(v[i].unicode());
    if (begin == 0 && end == v.size() && !replaces)
        return;
    if (s.isDetached()) {
        // Composition made a buffer of our own: trim and replace in it.
        char16_t *d = reinterpret_cast<char16_t *>(s.data());
        for (qsizetype i = begin; i < end; ++i)
            d[i - begin] = isSeparatorInFilename(d[i]) ? u'-' : d[i];
        s.truncate(end - begin);
        return;
    }
    QString out(end - begin, Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    const char16_t *in = v.utf16();
    for (qsizetype i = begin; i < end; ++i) {
        const char16_t c = in[i];
        *o++ = isSeparatorInFilename(c) ? u'-' : c;
    }
    s = std::move(out);
}

QString stringByTrimmingInvalidFilenameCharacters(const QString &s)
{
    QString out = s;
    trimInvalidFilenameCharacters(out);
    return out;
}

QString stringByCreatingFilename(const QString &s)
{
    if (s.isEmpty())
        return s;
    const char16_t *units = reinterpret_cast<const char16_t *>(s.constData());
    const qsizetype n = s.size();
    qsizetype begin = 0;
    while (begin < n && isFilenameTrimCharacter(units[begin]))
        ++begin;
    qsizetype end = n;
    while (end > begin && isFilenameTrimCharacter(units[end - 1]))
        --end;
    // Between the trimmed ends: text that needs composition takes the general way; "/", ":" and "~"
    // are replaced. Most names have neither.
    const qsizetype first = begin + findSeparatorOrMark(units + begin, end - begin);
    if (first == end) {
        if (begin == 0 && end == n)
            return s;
        return QString(s.constData() + begin, end - begin);
    }
    QString out(end - begin, Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    std::copy(units + begin, units + first, o);
    o += first - begin;
    for (qsizetype i = first; i < end; ++i) {
        const char16_t c = units[i];
        if (c >= 0x300) {
            out = s;
            createFilename(out);
            return out;
        }
        *o++ = isSeparatorInFilename(c) ? u'-' : c;
    }
    return out;
}

// --- Ordering -------------------------------------------------------------------------------------

qsizetype compareWithLastPathComponent(QStringView s, QStringView other)
{
    return compareNumericAware(s, other, [](char16_t c) { return c; });
}

qsizetype caseInsensitiveCompareWithLastPathComponent(QStringView s, QStringView other)
{
    const ConversionTable table = upperCharsTable();
    return compareNumericAware(s, other, [table](char16_t c) { return table[c]; });
}

qsizetype nonUmlautedCaseInsensitiveCompareWithLastPathComponent(QStringView s, QStringView other)
{
    const ConversionTable table = upperUmlautsCharsTable();
    return compareNumericAware(s, other, [table](char16_t c) { return table[c]; });
}

// --- Relations between paths ----------------------------------------------------------------------

QString relativePathToDirectory(QStringView s, QStringView directory)
{
    // Tilde expansion is rare; the expanded text must outlive the views into it.
    QString expandedPath;
    QString expandedDirectory;
    if (s.startsWith(u'~')) {
        expandedPath = expandingTilde(s.toString());
        s = expandedPath;
    }
    if (directory.startsWith(u'~')) {
        expandedDirectory = expandingTilde(directory.toString());
        directory = expandedDirectory;
    }
    Components path;
    Components folder;
    comparableComponents(s, path);
    comparableComponents(directory, folder);
    qsizetype common = 0;
    while (common < path.size() && common < folder.size() && path[common] == folder[common])
        ++common;

    qsizetype length = common == folder.size() ? 2 : 3 * (folder.size() - common);
    for (qsizetype i = common; i < path.size(); ++i)
        length += path[i].size() + 1;
    QString out;
    out.reserve(length);
    if (common == folder.size()) {
        out += u"./";
    } else {
        for (qsizetype i = common; i < folder.size(); ++i)
            out += u"../";
    }
    for (qsizetype i = common; i < path.size(); ++i) {
        if (i > common)
            out += u'/';
        out += path[i];
    }
    return out;
}

bool pathIsInDirectory(QStringView s, QStringView directory)
{
    if (directory.isNull() || (s.data() == directory.data() && s.size() == directory.size()))
        return false;
    qsizetype n = directory.size();
    while (n > 0 && directory[n - 1] == u'/')
        --n;
    // Nothing lies in the root folder: kept on purpose.
    if (n == 0 || !s.startsWith(directory.first(n)))
        return false;
    return s.size() == n || s[n] == u'/';
}

bool pathIsInDirectories(QStringView s, const QStringList &directories)
{
    for (const QString &directory : directories) {
        if (pathIsInDirectory(s, directory))
            return true;
    }
    return false;
}

QString stringByDeletingFileComponent(const QString &s)
{
    if (s.isEmpty())
        return u""_s;
    if (!s.endsWith(u'/'))
        return stringByDeletingLastPathComponent(s);
    return s.size() == 1 ? u""_s : s.chopped(1);
}

// --- Standardisation ------------------------------------------------------------------------------

QStringList standardizedPathComponents(QStringView s)
{
    Components components;
    standardizedComponents(s, components);
    QStringList out;
    out.reserve(components.size());
    for (QStringView c : components)
        out.append(c.toString());
    return out;
}

QString standardizedPath(const QString &s)
{
    if (isStandardized(s))
        return s;
    // One pass into a buffer as long as s. The output is the standardised path so far; the root
    // component writes nothing but makes the next component start with "/". Components are looked
    // at one by one only where findSlashPair() stops; the runs between are copied whole.
    const qsizetype n = s.size();
    const char16_t *p = reinterpret_cast<const char16_t *>(s.constData());
    QString out(n, Qt::Uninitialized);
    char16_t *o = reinterpret_cast<char16_t *>(out.data());
    qsizetype length = 0;
    bool root = p[0] == u'/';
    qsizetype i = root ? 1 : 0;
    while (i < n) {
        while (i < n && p[i] == u'/')
            ++i;
        if (i == n)
            break;
        qsizetype end = i;
        while (end < n && p[end] != u'/')
            ++end;
        const qsizetype size = end - i;
        if (size == 2 && p[i] == u'.' && p[i + 1] == u'.') {
            // Takes back the component before it, or the root when it is first.
            if (length > 0) {
                while (length > 0 && o[length - 1] != u'/')
                    --length;
                length = length > 0 ? length - 1 : 0;
            } else {
                root = false;
            }
        } else if (size != 1 || p[i] != u'.') {
            if (root || length > 0)
                o[length++] = u'/';
            std::copy(p + i, p + end, o + length);
            length += size;
        }
        // Up to the next place that needs a look: "/name/name..." of plain names.
        const qsizetype next = end + findSlashPair(p + end, n - end);
        if (next > end) {
            const qsizetype from = (root || length > 0) ? end : end + 1;
            std::copy(p + from, p + next, o + length);
            length += next - from;
        }
        i = next;
    }
    out.truncate(length);
    return out;
}

// --- Extensions -----------------------------------------------------------------------------------

QString pathExtension(QStringView s)
{
    const QStringView trimmed = withoutTrailingSlashes(s);
    const QStringView name = trimmed.sliced(trimmed.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    // A name that starts with its only dot (".profile") is hidden, not extended.
    if (dot <= 0)
        return u""_s;
    return name.sliced(dot + 1).toString();
}

QString stringByAppendingPathExtensionIfNecessary(const QString &s, QStringView extension)
{
    if (extension.isEmpty() || equalNoCase(pathExtension(s), extension))
        return s;
    return stringByAppendingPathExtension(s, extension);
}

QString stringByReplacingPathExtensionWith(const QString &s, QStringView extension)
{
    if (pathExtension(s) == extension)
        return s;
    const QString stem = stringByDeletingPathExtension(s);
    return extension.isEmpty() ? stem : stringByAppendingPathExtension(stem, extension);
}

bool isValidPathExtension(QStringView s)
{
    return s.size() >= 1 && s.size() <= MaximumPathExtensionLength && isAlphaNumString(s);
}

QString validPathExtension(QStringView s)
{
    QString extension = pathExtension(s);
    const qsizetype cut = findOneOf(extension, u"?&;=#");
    if (cut != NotFound)
        extension.truncate(cut);
    return isValidPathExtension(extension) ? extension : u""_s;
}

bool pathMatchingExtensions(QStringView s, const QStringList &extensions)
{
    return containsStringNoCase(extensions, pathExtension(s));
}

bool pathMatchingExtensionsOrTypes(const QString &s, const QStringList &types)
{
    if (types.isEmpty() || s.isEmpty())
        return false;
    if (containsStringNoCase(types, pathExtension(s)))
        return true;
    return types.contains(HFSTypeOfFile(s));
}

// --- Colon-separated (HFS) forms ------------------------------------------------------------------

QString HFSPath(const QString &s)
{
    if (!s.contains(u'/'))
        return s;
    QString out;
    QStringView rest = s;
    if (!s.startsWith(u'/')) {
        out = u":"_s;
    } else {
        // A removable volume is mounted at /media/USER/NAME (or /run/media/USER/NAME).
        QString volume = QString::fromUtf16(RootVolumeName);
        rest = QStringView(s).sliced(1);
        const QString user = currentUserName();
        for (const QString &base : { u"/media/"_s, u"/run/media/"_s }) {
            const QString prefix = base + user + u'/';
            if (user.isEmpty() || !s.startsWith(prefix) || s.size() == prefix.size())
                continue;
            QStringView tail = QStringView(s).sliced(prefix.size());
            const qsizetype slash = tail.indexOf(u'/');
            volume.clear();
            appendSwappingSeparators(volume, slash < 0 ? tail : tail.first(slash));
            rest = slash < 0 ? QStringView() : tail.sliced(slash + 1);
            break;
        }
        out = volume + u':';
    }
    bool first = true;
    forEachComponent(rest, [&](QStringView c) {
        if (isRootComponent(c))
            return;
        if (!first)
            out += u':';
        appendSwappingSeparators(out, c);
        first = false;
    });
    if (!first && rest.endsWith(u'/'))
        out += u':';
    return out;
}

QString POSIXPath(const QString &s)
{
    if (s.isEmpty())
        return s;
    if (s.startsWith(u'/') || s.startsWith(u'~'))
        return expandingTilde(s);
    if (!s.contains(u':'))
        return u'/' + s;
    const QList<QStringView> parts = QStringView(s).split(u':');
    QString out;
    if (!parts.first().isEmpty() && parts.first() != RootVolumeName) {
        QString volume;
        appendSwappingSeparators(volume, parts.first());
        out = mountPointOfVolume(volume);
    }
    for (qsizetype i = 1; i < parts.size(); ++i) {
        const QStringView part = parts.at(i);
        if (part.isEmpty() && i + 1 == parts.size()) {
            // A trailing ":" marks a folder.
            if (!out.endsWith(u'/'))
                out += u'/';
            break;
        }
        out += u'/';
        if (part.isEmpty())
            out += u"..";
        else
            appendSwappingSeparators(out, part);
    }
    return out.isEmpty() ? u"/"_s : out;
}

// --- Temporary locations --------------------------------------------------------------------------

bool isTemporaryPath(QStringView s)
{
    if (s.isNull())
        return false;
    // A plain prefix test: "/tmpfoo" counts, as it always has.
    if (s.startsWith(u"/tmp") || s.startsWith(u"/var/tmp/"))
        return true;
    // The process's temporary folder as its environment names it, not canonicalised.
    QString temporary = qEnvironmentVariable("TMPDIR");
    if (temporary.startsWith(u'/') && temporary != u"/") {
        if (!temporary.endsWith(u'/'))
            temporary += u'/';
        if (s.startsWith(temporary))
            return true;
    }
    if (!s.contains(u"/mimetmp/"))
        return false;
    const QString abbreviated = abbreviatingWithTilde(s);
    if (!abbreviated.startsWith(u"~/."))
        return false;
    const qsizetype slash = abbreviated.indexOf(u'/', 3);
    return slash > 3 && QStringView(abbreviated).sliced(slash).startsWith(u"/mimetmp/");
}

} // namespace orvel
