// Telling a URL string's kind by the scheme at its start.
#include "url/URLStrings.h"

#include <initializer_list>

namespace orvel {

namespace {

bool startsWithAny(QStringView s, std::initializer_list<QStringView> prefixes)
{
    for (QStringView p : prefixes) {
        if (s.startsWith(p, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

} // namespace

bool isFileStringURL(QStringView s) { return startsWithAny(s, { u"file:" }); }

bool isHTTPStringURL(QStringView s) { return startsWithAny(s, { u"http://", u"https://" }); }

bool isFTPStringURL(QStringView s) { return startsWithAny(s, { u"ftp://", u"ftps://", u"sftp://" }); }

bool isNewsStringURL(QStringView s) { return startsWithAny(s, { u"news:", u"nntp:" }); }

bool isMailStringURL(QStringView s) { return startsWithAny(s, { u"mailto:" }); }

} // namespace orvel
