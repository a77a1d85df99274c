// URL strings: percent escaping and unescaping, the query scanner, cleaning to a canonical key,
// link classification (caches, translations, advertisements) and redirect unwrapping.
#pragma once

#include "strings/NotFound.h"

#include <QHash>
#include <QString>
#include <QStringView>
#include <QUrl>

namespace orvel {

// As everywhere in the toolkit, a transformation that finds nothing to change answers the receiver
// itself (the same shared text); nil is a null QString or an invalid QUrl. Every operation here reads
// its input once or a bounded number of times: no input makes it quadratic.

// ---- Percent escaping ----------------------------------------------------------------------------

/// Escapes units as "%" and two lower-case hexadecimal digits. Standard (true): exactly the twelve
/// units " #$%&+/:;=?@". ASCII (false): every unit below 128 that is not an ASCII letter or digit;
/// units of 128 and above are copied as they are.
[[nodiscard]] QString stringByAddingPercentEscapesToURL(const QString &s, bool standard);
[[nodiscard]] QString stringByAddingStandardPercentEscapesToURL(const QString &s);
[[nodiscard]] QString stringByAddingASCIIPercentEscapesToURL(const QString &s);

/// The units that an address may not carry as they are (controls, space, '"', '<', '>', '\\', '^',
/// '`', '{', '|', '}', DEL and everything beyond ASCII) plus every unit of toBeEscaped, minus the units
/// of leaveUnescaped, written as upper-case escapes of their bytes in the named encoding ("UTF-8",
/// "ISO-8859-1", "windows-1252", "Shift_JIS" ... as the installed Qt offers). Nil when the encoding is
/// unknown or cannot represent a unit (a lone surrogate, a Kanji in Latin-1).
[[nodiscard]] QString stringByAddingPercentEscapesToURL(const QString &s, const char *encoding);
[[nodiscard]] QString stringByAddingPercentEscapesToURL(
    const QString &s, const char *encoding, QStringView leaveUnescaped);
/// As above; a null toBeEscaped stands for ":?&;@".
[[nodiscard]] QString stringByAddingPercentEscapesToURL(
    const QString &s, const char *encoding, QStringView leaveUnescaped, QStringView toBeEscaped);

// ---- Percent unescaping --------------------------------------------------------------------------

/// Decodes escapes in place and answers the new length. A "%" is decoded only when two hexadecimal
/// digits (either case) follow it; arrays shorter than 3 units are left alone. Standard (true): only
/// TAB, LF, CR, " $%&'+/:;=@~" are decoded, and "?" only when the array holds no literal "?"; every
/// other escape, "%23" among them, stays. ASCII (false): every value below 128. The output is not
/// scanned again, so "%2541" becomes "%41" and a second call "A": unescaping is not idempotent.
qsizetype convertPercentEscapesOfURL(char16_t *units, qsizetype length, bool standard);
[[nodiscard]] QString stringByReplacingStandardPercentEscapesOfURL(const QString &s);
[[nodiscard]] QString stringByReplacingASCIIPercentEscapesOfURL(const QString &s);
/// Every escape decoded; runs of escapes are read as bytes in the named encoding. Nil for an unknown
/// encoding, bytes that are not valid in it, or a "%" without two hexadecimal digits.
[[nodiscard]] QString stringByReplacingPercentEscapesOfURL(const QString &s, const char *encoding);
/// The same in UTF-8.
[[nodiscard]] QString stringByReplacingPercentEscapesOfURL(const QString &s);

// ---- Query parameters ----------------------------------------------------------------------------
// One scanner: units outside the alphanumeric rep are skipped, the first member starts a key, the
// key runs to the next "=" (none: the scan ends), the value to the next "&" or ";" or the end. Keys
// compare case-sensitively by length and units. The string forms start at the first "?" (none: not
// found); a name that is empty or not shorter than the scanned text is never found. The scanner
// reads the text in place and allocates nothing but its result.

/// The first non-empty value of name, or nil.
QString queryParamNamed(QStringView s, QStringView name);
/// The same on raw units scanned from 0 (no "?" is looked for).
QString queryParamNamed(const char16_t *units, qsizetype length, const char16_t *name, qsizetype nameLength);
/// True when name occurs with any value, even an empty one.
bool containsQueryParamNamed(QStringView s, QStringView name);
bool containsQueryParamNamed(
    const char16_t *units, qsizetype length, const char16_t *name, qsizetype nameLength);
/// Every pair with a non-empty key and value; a later pair replaces an earlier one of the same key.
QHash<QString, QString> queryParams(QStringView s);
QHash<QString, QString> queryParams(const char16_t *units, qsizetype length);
/// The number of key=value pairs, empty values included.
qsizetype numberOfQueryParams(QStringView s);
qsizetype numberOfQueryParams(const char16_t *units, qsizetype length);
/// A copy of s whose first non-empty value of name is replacement (nil counts as ""); s itself when
/// the name has no such value.
[[nodiscard]] QString stringByReplacingQueryParamNamed(
    const QString &s, QStringView name, const QString &replacement);

// ---- Cleaning ------------------------------------------------------------------------------------

/// Session identifiers removed, repeatedly (see URLCleaning.cpp for the order of keys); then the
/// address cut after "/login", "/register" or ".html" when a query follows those.
[[nodiscard]] QString stringURLByRemovingSessionIDs(const QString &s);
/// The utm_ tracking parameters removed.
[[nodiscard]] QString stringURLByRemovingAnalytics(const QString &s);
/// Every "key=" with an empty value removed with its separator; "?&" becomes "?".
[[nodiscard]] QString stringURLByRemovingEmptyParams(const QString &s);
/// A trailing "/index.html" (and its kin: .htm .shtml .phtml .jhtml .php .chm .asp .cgi) cut.
[[nodiscard]] QString stringURLByRemovingIndexPages(const QString &s);
/// The first occurrence of key (its "=" included, case ignored) after "&", ";" or "?" removed with
/// its value.
[[nodiscard]] QString stringURLByRemovingQueryParam(const QString &s, QStringView key);
/// Cut at the first "#", unless "#!" or "#/" and one more unit follow (client-side routes).
[[nodiscard]] QString stringURLWithoutAnchor(const QString &s);
/// Doubled "/" collapsed before the query ("://" kept); without a query, trailing "/." and "/.."
/// dropped.
[[nodiscard]] QString standardizedStringURL(const QString &s);
/// The canonical key: unescaped, without anchor, standardised, without session identifiers, analytics,
/// empty parameters and index pages, "www." and "https" folded to "http://", trailing "/" trimmed,
/// lower-cased.
[[nodiscard]] QString simplifiedStringURL(const QString &s);
[[nodiscard]] QString simplifiedStringURLByRemovingSessionIDs(
    const QString &s, bool sessionIDs, bool analytics, bool indexPages, bool emptyParams, bool anchors);
/// Anchor-less, standardised, "/"-trimmed forms equal case-insensitively.
bool isEqualToStringURL(const QString &s, const QString &other);

// ---- Classification ------------------------------------------------------------------------------
// Each is a case-insensitive search for the entries of one table (src/url/tables/).

bool stringURLIsCached(QStringView s);
bool stringURLIsTranslation(QStringView s);
bool stringURLIsRecaptcha(QStringView s);
bool stringURLIsTopicOrThread(QStringView s);
bool stringURLIsForum(QStringView s);
/// A text-advertising network's address, or an image advertisement.
bool stringURLIsAdSense(QStringView s);
bool stringURLIsImageAd(QStringView s);
/// A link to a social-bookmarking or sharing service (matched on the host).
bool stringURLIsBookmarklet(QStringView s);
bool stringURLIsAdvertisement(QStringView s);
/// With includingCommonHosts, any address on the large advertising networks' hosts counts too.
bool stringURLIsAdvertisementIncludingCommonHosts(QStringView s, bool includingCommonHosts);

// ---- Scheme tests -------------------------------------------------------------------------------
// Each looks at the start of the string alone, case ignored, and parses nothing.

/// "file:".
bool isFileStringURL(QStringView s);
/// "http://" or "https://".
bool isHTTPStringURL(QStringView s);
/// "ftp://", "ftps://" or "sftp://".
bool isFTPStringURL(QStringView s);
/// "news:" or "nntp:".
bool isNewsStringURL(QStringView s);
/// "mailto:".
bool isMailStringURL(QStringView s);

// ---- Resolution and redirect unwrapping ----------------------------------------------------------

/// The address a link found on the page at base leads to: the redirectors of search engines and
/// portals unwrapped, resolved against base. With accept, only a remote web address that is not a
/// search engine's own page, a cached copy, a translation or a captcha page is answered. Nil (an
/// invalid QUrl) otherwise.
QUrl resolveStringURL(const QString &link, const QUrl &base, bool accept = false);
QUrl acceptStringURL(const QString &link, const QUrl &base);

} // namespace orvel
