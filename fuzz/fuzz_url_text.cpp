// Links and addresses harvested from pages: the cleaning pipeline, redirect unwrapping, the query
// scanner and the escaping dialects. The first line is the page's address, the rest the link; an
// input whose first byte is odd is read as raw UTF-16 units, so lone surrogates come in too.
#include "FuzzSupport.h"

#include "url/URL.h"
#include "url/URLStrings.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = orvel::fuzz::bytesOf(data, size);
    const QString text = (size > 0 && (data[0] & 1))
        ? QString(reinterpret_cast<const QChar *>(bytes.constData() + 1), (bytes.size() - 1) / 2)
        : QString::fromUtf8(bytes);
    const qsizetype newline = text.indexOf(u'\n');
    const QUrl base(newline < 0 ? QString() : text.first(newline));
    const QString link = newline < 0 ? text : text.sliced(newline + 1);

    // The canonical key never ends in "/".
    const QString key = orvel::simplifiedStringURL(link);
    if (key.endsWith(u'/'))
        std::abort();
    orvel::isEqualToStringURL(link, key);
    orvel::stringURLIsAdvertisementIncludingCommonHosts(link, true);
    orvel::resolveStringURL(link, base, false);
    orvel::acceptStringURL(link, base);
    orvel::URL(base).URLRelativeTo(link, true, "UTF-8", true);

    const QString name = link.left(3);
    const QHash<QString, QString> params = orvel::queryParams(link);
    if (orvel::numberOfQueryParams(link) < params.size())
        std::abort();
    for (const QString &value : params)
        if (value.isEmpty())
            std::abort();
    const QString value = orvel::queryParamNamed(link, name);
    if (!value.isNull() && !orvel::containsQueryParamNamed(link, name))
        std::abort();
    if (!value.isNull()
        && orvel::queryParamNamed(orvel::stringByReplacingQueryParamNamed(link, name, value + value), name)
               .isNull())
        std::abort();

    // The ASCII dialects undo each other: every escape they write is one they read back.
    if (orvel::stringByReplacingASCIIPercentEscapesOfURL(orvel::stringByAddingASCIIPercentEscapesToURL(link))
        != link)
        std::abort();
    // The standard dialects do not ("%23" stays), but decoding never makes a string longer.
    const QString standard = orvel::stringByAddingStandardPercentEscapesToURL(link);
    if (orvel::stringByReplacingStandardPercentEscapesOfURL(standard).size() > standard.size())
        std::abort();
    const QString encoded = orvel::stringByAddingPercentEscapesToURL(link, "UTF-8");
    if (!encoded.isNull() && orvel::stringByReplacingPercentEscapesOfURL(encoded, "UTF-8").isNull()
        && !link.contains(u'%'))
        std::abort();
    return 0;
}
