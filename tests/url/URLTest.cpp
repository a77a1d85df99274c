// QUrl extensions: credentials, schemes, base directories, HTTP phrases and predicates, file types
// and MIME types.
#include "url/URL.h"

#include "testlib/TestSupport.h"

#include <QCoreApplication>
#include <QTranslator>
#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

TEST(Credentials, EscapedInUserAndPasswordAndFourFormatsByCredentialsAndPort)
{
    const URL url(QUrl(u"http://h/p"_s));
    EXPECT_EQ(url.URLForUser(u"a@b"_s, u"x#y"_s).toString(QUrl::FullyEncoded), u"http://a%40b:x%23y@h/p"_s);
    EXPECT_EQ(url.URLForUser(u"a"_s, QString()), url.url());
    const QUrl withPort(u"http://h:8080/p;q?x=1#f"_s);
    const QUrl without(u"http://h/p;q?x=1#f"_s);
    auto rebuilt = [](const QUrl &url, const QString &user, const QString &password) {
        return URL::URLWithSchemeHostUserPassword(url, u"https"_s, u"k.org"_s, user, password)
            .toString(QUrl::FullyEncoded);
    };
    EXPECT_EQ(rebuilt(withPort, u"u"_s, u"p"_s), u"https://u:p@k.org:8080/p;q?x=1#f"_s);
    EXPECT_EQ(rebuilt(without, u"u"_s, u"p"_s), u"https://u:p@k.org/p;q?x=1#f"_s);
    EXPECT_EQ(rebuilt(withPort, u"u"_s, QString()), u"https://k.org:8080/p;q?x=1#f"_s);
    EXPECT_EQ(rebuilt(without, QString(), u"p"_s), u"https://k.org/p;q?x=1#f"_s);
}

TEST(Schemes, NewSchemeKeepsTheResourceSpecifier)
{
    const URL url(QUrl(u"http://u@h:81/p?q#f"_s));
    EXPECT_EQ(url.URLWithScheme(u"feed"_s).toString(), u"feed://u@h:81/p?q#f"_s);
    EXPECT_EQ(url.URLWithScheme(QString()), url.url());
}

TEST(Schemes, ClassesCompareWholeNamesIgnoringCase)
{
    EXPECT_TRUE(URL::isScheme(u"HTTPS", URL::WebScheme));
    EXPECT_FALSE(URL::isScheme(u"httpx", URL::WebScheme));
    EXPECT_FALSE(URL::isScheme(u"http", URL::FileTransferScheme | URL::FileScheme));
    EXPECT_TRUE(URL::isScheme(u"feed", URL::FeedScheme | URL::WebScheme));
    EXPECT_FALSE(URL::isScheme(QStringView(), 15));
    EXPECT_TRUE(URL(QUrl(u"https://h/"_s)).isRemoteWebKitURL());
    EXPECT_FALSE(URL(QUrl(u"file:///tmp"_s)).isRemoteWebKitURL());
    EXPECT_TRUE(URL(QUrl(u"file:///tmp"_s)).isWebKitURL());
    EXPECT_FALSE(URL(QUrl(u"https://x.org/?q=google"_s)).isSearchEngine());
    EXPECT_TRUE(URL(QUrl(u"https://www.so.com/s?q=1"_s)).isSearchEngine());
    EXPECT_FALSE(URL(QUrl(u"https://www.espresso.com/"_s)).isSearchEngine()); // "so.com" inside a label
}

TEST(BaseDirectory, FolderOfTheFileOrThePathItselfAndItsStandardForm)
{
    // The address, its base directory and that standardised, and whether the path is its own folder.
    const std::tuple<const char16_t *, const char16_t *, const char16_t *, bool> cases[]
        = { { u"http://h", u"/", u"/", true }, { u"http://h/", u"/", u"/", true },
              { u"http://h/a/b/", u"/a/b", u"/a/b", true }, { u"http://h/a/b.html", u"/a", u"/a", false },
              { u"http://h/a/b?x=1", u"/a", u"/a", false }, { u"http://h/a/b", u"/a/b", u"/a/b", true },
              { u"http://h/a/b;type=a", u"/a", u"/a", false }, { u"http://h/x.html", u"/", u"/", false },
              { u"http://h/a/./c/../b.html", u"/a/./c/..", u"/a", false },
              { u"file:///tmp/a/f.txt", u"/tmp/a", u"/tmp/a", false },
              { u"file:///tmp/a/", u"/tmp", u"/tmp", false } };
    for (const auto &[address, base, standardized, isBase] : cases) {
        const URL url(QUrl(QString::fromUtf16(address)));
        EXPECT_EQ(url.baseDirectory(), QString::fromUtf16(base)) << url.url().toString();
        EXPECT_EQ(url.standardizedBaseDirectory(), QString::fromUtf16(standardized)) << url.url().toString();
        EXPECT_EQ(url.isBaseDirectory(), isBase) << url.url().toString();
    }
}

// A translator for the "HTTPStatus" context, installed as an application's translations would be.
class GermanStatus : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char *, int) const override
    {
        if (qstrcmp(context, "HTTPStatus") == 0 && qstrcmp(source, "Not Found") == 0)
            return u"Nicht gefunden"_s;
        return QString();
    }
    bool isEmpty() const override { return false; }
};

TEST(HTTPStatus, PhrasesGoThroughTheApplicationsLookupOrTranslations)
{
    GermanStatus german;
    ASSERT_TRUE(QCoreApplication::installTranslator(&german));
    EXPECT_EQ(URL::messageForHTTPError(404), u"Nicht gefunden"_s);
    EXPECT_EQ(URL::messageForHTTPError(403), u"Forbidden"_s); // a missing entry gives the key
    QCoreApplication::removeTranslator(&german);
    EXPECT_EQ(URL::messageForHTTPError(404), u"Not Found"_s);

    // An application's own lookup comes first.
    URL::setLocalizedStringLookup(
        [](const QString &english) { return english == u"Gone"_s ? u"Disparu"_s : QString(); });
    EXPECT_EQ(URL::messageForHTTPError(410), u"Disparu"_s);
    EXPECT_EQ(URL::messageForHTTPError(409), u"Conflict"_s); // no entry: the English text
    EXPECT_TRUE(URL::messageForHTTPError(999).isNull());
    URL::setLocalizedStringLookup({});
    EXPECT_EQ(URL::messageForHTTPError(410), u"Gone"_s);
}

TEST(FileTypes, GroupsFollowTheirFlags)
{
    const QStringList word = URL::officeTypesIncludingMSWord(true, false, false, false, true, false);
    EXPECT_TRUE(word.contains(u"docx"_s) && word.contains(u"pdf"_s) && !word.contains(u"odt"_s));
    EXPECT_FALSE(URL::binaryFileTypes().contains(u"rtf"_s));
    EXPECT_TRUE(URL::binaryFileTypesIncludingRichText(true, false, false, false, false, false, false)
                    .contains(u"rtf"_s));
    // The media tables are searched by length and case-blind, each only when asked for.
    EXPECT_TRUE(URL::isMultimediaType(u"MP3", true, false, false));
    EXPECT_FALSE(URL::isMultimediaType(u"swf", false, true, false));
    EXPECT_TRUE(URL::isMultimediaType(u"Movie", false, true, false));
    EXPECT_FALSE(URL::isMultimediaType(u"movies", true, true, true));
}

TEST(MIMETypes, FromTheSharedDatabaseThenTheToolkitsTables)
{
    EXPECT_EQ(URL::MIMETypeForExtension(u"png"_s), u"image/png"_s);
    EXPECT_EQ(URL::MIMETypeForExtension(u"PDF"_s), u"application/pdf"_s);
    // Not in the database: the toolkit's own tables answer.
    EXPECT_EQ(URL::MIMETypeForExtension(u"cod"_s), u"image/cod"_s);
    EXPECT_TRUE(URL::MIMETypeForExtension(u"zzqq"_s).isNull());
    EXPECT_TRUE(URL::MIMETypeForExtension(QString()).isNull());
    EXPECT_EQ(URL::extensionForMIMEType(u"image/jpeg"_s), u"jpg"_s);
    EXPECT_TRUE(URL::extensionForMIMEType(u"x-none/none"_s).isNull());
}

} // namespace
