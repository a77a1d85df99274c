// The query scanner and its four uses: one value, presence, all pairs, the count; and replacing a
// value.
#include "url/URLStrings.h"

#include "strings/CharacterTables.h"

namespace orvel {

namespace {

struct Pair
{
    qsizetype keyStart, keyEnd, valueStart, valueEnd;
};

// Calls visit(pair) for every key=value pair of units[0, n) in order; stops when visit answers false.
template <typename Visit> void scanQuery(const char16_t *u, qsizetype n, Visit visit)
{
    const CharacterSetRep alnum = alphaNumCharacterSetRep();
    qsizetype i = 0;
    while (i < n) {
        while (i < n && !isCharacterPartOfSet(alnum, u[i]))
            ++i;
        if (i >= n)
            return;
        const qsizetype keyStart = i;
        while (i < n && u[i] != u'=')
            ++i;
        if (i >= n)
            return; // a key without "=" ends the scan
        const qsizetype keyEnd = i++;
        const qsizetype valueStart = i;
        while (i < n && u[i] != u'&' && u[i] != u';')
            ++i;
        if (!visit(Pair { keyStart, keyEnd, valueStart, i }))
            return;
        if (i < n)
            ++i; // past the terminator
    }
}

inline bool keyIs(const char16_t *u, const Pair &p, const char16_t *name, qsizetype nameLength)
{
    if (p.keyEnd - p.keyStart != nameLength)
        return false;
    for (qsizetype k = 0; k < nameLength; ++k)
        if (u[p.keyStart + k] != name[k])
            return false;
    return true;
}

// The first pair of name (with a non-empty value when nonEmpty); valueStart < 0 when none.
Pair findParam(const char16_t *u, qsizetype n, const char16_t *name, qsizetype nameLength, bool nonEmpty)
{
    Pair found { -1, -1, -1, -1 };
    if (!u || !name || nameLength <= 0 || nameLength >= n)
        return found;
    scanQuery(u, n, [&](const Pair &p) {
        if (keyIs(u, p, name, nameLength) && (!nonEmpty || p.valueEnd > p.valueStart)) {
            found = p;
            return false;
        }
        return true;
    });
    return found;
}

// The scanned part of a string: from its first "?" on; null when there is none.
QStringView queryPart(QStringView s)
{
    const qsizetype q = s.indexOf(u'?');
    return q < 0 ? QStringView() : s.sliced(q);
}

inline const char16_t *unitsOf(QStringView s) { return reinterpret_cast<const char16_t *>(s.utf16()); }

} // namespace

QString queryParamNamed(const char16_t *units, qsizetype length, const char16_t *name, qsizetype nameLength)
{
    const Pair p = findParam(units, length, name, nameLength, true);
    if (p.valueStart < 0)
        return QString();
    return QString(reinterpret_cast<const QChar *>(units + p.valueStart), p.valueEnd - p.valueStart);
}

QString queryParamNamed(QStringView s, QStringView name)
{
    const QStringView q = queryPart(s);
    if (q.isNull())
        return QString();
    return queryParamNamed(unitsOf(q), q.size(), unitsOf(name), name.size());
}

bool containsQueryParamNamed(
    const char16_t *units, qsizetype length, const char16_t *name, qsizetype nameLength)
{
    return findParam(units, length, name, nameLength, false).valueStart >= 0;
}

bool containsQueryParamNamed(QStringView s, QStringView name)
{
    const QStringView q = queryPart(s);
    return !q.isNull() && containsQueryParamNamed(unitsOf(q), q.size(), unitsOf(name), name.size());
}

QHash<QString, QString> queryParams(const char16_t *units, qsizetype length)
{
    QHash<QString, QString> params;
    if (!units || length <= 0)
        return params;
    params.reserve(8);
    scanQuery(units, length, [&](const Pair &p) {
        if (p.keyEnd > p.keyStart && p.valueEnd > p.valueStart)
            params.insert(QString(reinterpret_cast<const QChar *>(units + p.keyStart), p.keyEnd - p.keyStart),
                QString(reinterpret_cast<const QChar *>(units + p.valueStart), p.valueEnd - p.valueStart));
        return true;
    });
    return params;
}

QHash<QString, QString> queryParams(QStringView s)
{
    const QStringView q = queryPart(s);
    return q.isNull() ? QHash<QString, QString>() : queryParams(unitsOf(q), q.size());
}

qsizetype numberOfQueryParams(const char16_t *units, qsizetype length)
{
    if (!units || length <= 0)
        return 0;
    qsizetype count = 0;
    scanQuery(units, length, [&](const Pair &) {
        ++count;
        return true;
    });
    return count;
}

qsizetype numberOfQueryParams(QStringView s)
{
    const QStringView q = queryPart(s);
    return q.isNull() ? 0 : numberOfQueryParams(unitsOf(q), q.size());
}

QString stringByReplacingQueryParamNamed(const QString &s, QStringView name, const QString &replacement)
{
    const QStringView q = queryPart(s);
    if (q.isNull())
        return s;
    const Pair p = findParam(unitsOf(q), q.size(), unitsOf(name), name.size(), true);
    if (p.valueStart < 0)
        return s;
    const qsizetype offset = s.size() - q.size();
    QString out;
    out.reserve(s.size() - (p.valueEnd - p.valueStart) + replacement.size());
    out.append(QStringView(s).first(offset + p.valueStart));
    out.append(replacement);
    out.append(QStringView(s).sliced(offset + p.valueEnd));
    return out;
}

} // namespace orvel
