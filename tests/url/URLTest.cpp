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

TEST(Credentials, AtAndHashAreEscapedInUserAndPassword)
{
    const URL url(QUrl(u"http://h/p"_s));
    EXPECT_EQ(url.URLForUser(u"a@b"_s, u"x#y"_s).toString(QUrl::FullyEncoded), u"http://a%40b:x%23y@h/p"_s);
    EXPECT_EQ(url.URLForUser(u"a"_s, QString()), url.url());
}

TEST(Credentials, FourFormatsByCredentialsAndPort)
{
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
    EXPECT_TRUE(URL::isScheme(u"sftp", URL::FileTransferScheme));
    EXPECT_TRUE(URL::isScheme(u"feed", URL::FeedScheme | URL::WebScheme));
    EXPECT_FALSE(URL::isScheme(QStringView(), 15));
    EXPECT_TRUE(URL(QUrl(u"https://h/"_s)).isRemoteWebKitURL());
    EXPECT_FALSE(URL(QUrl(u"file:///tmp"_s)).isRemoteWebKitURL());
    EXPECT_TRUE(URL(QUrl(u"file:///tmp"_s)).isWebKitURL());
    EXPECT_TRUE(URL(QUrl(u"https://duckduckgo.com/?q=1"_s)).isSearchEngine());
    EXPECT_FALSE(URL(QUrl(u"https://x.org/?q=google"_s)).isSearchEngine());
    EXPECT_TRUE(URL(QUrl(u"https://www.so.com/s?q=1"_s)).isSearchEngine());
    EXPECT_FALSE(URL(QUrl(u"https://www.espresso.com/"_s)).isSearchEngine()); // "so.com" inside a label
}

TEST(BaseDirectory, FolderOfTheFileOrThePathItselfAndItsStandardForm)
{
    const struct
    {
        const char16_t *url, *base, *standardized;
    } cases[]
        = { { u"http://h", u"/", u"/" }, { u"http://h/", u"/", u"/" }, { u"http://h/a/b/", u"/a/b", u"/a/b" },
              { u"http://h/a/b.html", u"/a", u"/a" }, { u"http://h/a/b?x=1", u"/a", u"/a" },
              { u"http://h/a/b", u"/a/b", u"/a/b" }, { u"http://h/a/b;type=a", u"/a", u"/a" },
              { u"http://h/x.html", u"/", u"/" }, { u"http://h/a/./c/../b.html", u"/a/./c/..", u"/a" },
              { u"file:///tmp/a/f.txt", u"/tmp/a", u"/tmp/a" }, { u"file:///tmp/a/", u"/tmp", u"/tmp" } };
    for (const auto &c : cases) {
        const URL url(QUrl(QString::fromUtf16(c.url)));
        EXPECT_EQ(url.baseDirectory(), QString::fromUtf16(c.base)) << QString::fromUtf16(c.url);
        EXPECT_EQ(url.standardizedBaseDirectory(), QString::fromUtf16(c.standardized))
            << QString::fromUtf16(c.url);
    }
}

TEST(BaseDirectory, IsBaseDirectoryWhenThePathIsItsOwnFolder)
{
    EXPECT_TRUE(URL(QUrl(u"http://h/a/"_s)).isBaseDirectory());
    EXPECT_TRUE(URL(QUrl(u"http://h/a"_s)).isBaseDirectory());
    EXPECT_FALSE(URL(QUrl(u"http://h/a/b.html"_s)).isBaseDirectory());
}

TEST(HTTPStatus, PhrasesForKnownCodesAndNilOtherwise)
{
    EXPECT_EQ(URL::messageForHTTPError(401), u"Authorization Required"_s);
    EXPECT_EQ(URL::messageForHTTPError(510), u"Disconnected"_s);
    EXPECT_TRUE(URL::messageForHTTPError(418).isNull());
    EXPECT_TRUE(URL::messageForHTTPError(-1).isNull());
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

TEST(HTTPStatus, PhrasesGoThroughTheApplicationsTranslations)
{
    GermanStatus german;
    ASSERT_TRUE(QCoreApplication::installTranslator(&german));
    EXPECT_EQ(URL::messageForHTTPError(404), u"Nicht gefunden"_s);
    EXPECT_EQ(URL::messageForHTTPError(403), u"Forbidden"_s); // a missing entry gives the key
    QCoreApplication::removeTranslator(&german);
    EXPECT_EQ(URL::messageForHTTPError(404), u"Not Found"_s);
}

TEST(HTTPStatus, AnApplicationsLookupComesFirst)
{
    URL::setLocalizedStringLookup(
        [](const QString &english) { return english == u"Gone"_s ? u"Disparu"_s : QString(); });
    EXPECT_EQ(URL::messageForHTTPError(410), u"Disparu"_s);
    EXPECT_EQ(URL::messageForHTTPError(409), u"Conflict"_s); // no entry: the English text
    EXPECT_TRUE(URL::messageForHTTPError(999).isNull());
    URL::setLocalizedStringLookup({});
    EXPECT_EQ(URL::messageForHTTPError(410), u"Gone"_s);
}

TEST(HTTPStatus, OkayAndTemporaryPredicatesKeepTheirChoices)
{
    std::vector<int> okay;
    for (int code = 100; code < 600; ++code)
        if (URL::isHTTPStatusCodeOkay(code) != (code < 300))
            okay.push_back(code);
    EXPECT_EQ(okay, (std::vector<int> { 201, 202, 203, 204, 205, 206 }));
    std::vector<int> temporary;
    for (int code = 100; code < 600; ++code)
        if (URL::isHTTPStatusCodeTemporaryError(code))
            temporary.push_back(code);
    EXPECT_EQ(temporary, (std::vector<int> { 307, 408, 500, 502, 503, 504, 507, 509, 510 }));
}

TEST(URLErrors, TemporaryErrorsAndTheirStatusCodes)
{
    std::vector<int> temporary;
    for (int error = -1200; error < 0; ++error)
        if (URL::isTemporaryURLError(error))
            temporary.push_back(error);
    EXPECT_EQ(temporary, (std::vector<int> { -1011, -1009, -1005, -1001 }));
    const std::pair<int, int> map[] = { { -1014, 204 }, { -1013, 401 }, { -1012, 401 }, { -1010, 302 },
        { -1007, 302 }, { -1001, 408 }, { -1102, 403 }, { -1100, 404 }, { -1009, 0 }, { 0, 0 } };
    for (const auto &[error, status] : map)
        EXPECT_EQ(URL::HTTPStatusCodeForURLError(error), status) << error;
}

TEST(FileTypes, VocabulariesAndTheirTests)
{
    EXPECT_TRUE(URL::isImageType(u"JFIF"));
    EXPECT_FALSE(URL::isImageType(u""));
    EXPECT_TRUE(URL::isMarkupType(u"xmloutline"));
    EXPECT_TRUE(URL::isRichTextType(u"rtfd"));
    EXPECT_TRUE(URL::isArchiveType(u"sparseimage"));
    EXPECT_TRUE(URL::isExecutableType(u"class"));
    EXPECT_FALSE(URL::isExecutableType(u"sh"));
}

TEST(FileTypes, OfficeGroupsFollowTheirFlags)
{
    EXPECT_EQ(URL::officeTypesIncludingMSWord(false, false, false, false, false, false).size(), 11);
    const QStringList word = URL::officeTypesIncludingMSWord(true, false, false, false, true, false);
    EXPECT_TRUE(word.contains(u"docx"_s));
    EXPECT_TRUE(word.contains(u"pdf"_s));
    EXPECT_FALSE(word.contains(u"odt"_s));
    EXPECT_EQ(URL::officeTypes().size(), 11 + 7 + 2 + 2 + 1 + 1 + 4);
    EXPECT_FALSE(URL::binaryFileTypes().contains(u"rtf"_s));
    EXPECT_TRUE(URL::binaryFileTypes().contains(u"sxw"_s));
    EXPECT_TRUE(URL::binaryFileTypesIncludingRichText(true, false, false, false, false, false, false)
                    .contains(u"rtf"_s));
}

TEST(FileTypes, MediaTablesByLength)
{
    EXPECT_TRUE(URL::isMultimediaType(u"MP3", true, false, false));
    EXPECT_FALSE(URL::isMultimediaType(u"swf", false, true, false));
    EXPECT_TRUE(URL::isMultimediaType(u"swf", false, false, true));
    EXPECT_TRUE(URL::isMultimediaType(u"Movie", false, true, false));
    EXPECT_TRUE(URL::isMultimediaType(u"qt", false, true, false));
    EXPECT_FALSE(URL::isMultimediaType(u"qt", true, false, true));
    EXPECT_FALSE(URL::isMultimediaType(u"m", true, true, true));
    EXPECT_FALSE(URL::isMultimediaType(u"movies", true, true, true));
    EXPECT_FALSE(URL::isMultimediaType(u"mp3", false, false, false));
}

TEST(MIMETypes, FromTheSharedDatabaseThenTheToolkitsTables)
{
    EXPECT_EQ(URL::MIMETypeForExtension(u"png"_s), u"image/png"_s);
    EXPECT_EQ(URL::MIMETypeForExtension(u"PDF"_s), u"application/pdf"_s);
    // Not in the database: the toolkit's own tables answer.
    EXPECT_EQ(URL::MIMETypeForExtension(u"cod"_s), u"image/cod"_s);
    EXPECT_EQ(URL::MIMETypeForExtension(u"rmi"_s), u"audio/rmi"_s);
    EXPECT_TRUE(URL::MIMETypeForExtension(u"zzqq"_s).isNull());
    EXPECT_TRUE(URL::MIMETypeForExtension(QString()).isNull());
    EXPECT_EQ(URL::extensionForMIMEType(u"image/jpeg"_s), u"jpg"_s);
    // The database knows "image/pjpeg" as an alias of image/jpeg.
    EXPECT_EQ(URL::extensionForMIMEType(u"image/pjpeg"_s), u"jpg"_s);
    EXPECT_EQ(URL::extensionForMIMEType(u"image/pjpg"_s), u"jpg"_s);
    EXPECT_TRUE(URL::extensionForMIMEType(u"x-none/none"_s).isNull());
    EXPECT_TRUE(URL::extensionForMIMEType(QString()).isNull());
}

} // namespace
