// Link resolution: scheme repairs, and one worked example per redirect group with the hosts of
// src/url/tables/redirect_group_*.inc.
#include "url/URL.h"
#include "url/URLStrings.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

struct Case
{
    const char16_t *base, *link, *expected; // expected null: nil
};

QString resolved(const QUrl &url) { return url.isValid() ? url.toString(QUrl::FullyEncoded) : QString(); }

// Resolves each row's link on its base page and compares the address (a null expectation: nil).
void expectResolved(std::initializer_list<Case> cases, QUrl (*resolve)(const QString &, const QUrl &))
{
    for (const Case &c : cases)
        EXPECT_EQ(resolved(resolve(QString::fromUtf16(c.link), QUrl(QString::fromUtf16(c.base)))),
            QString::fromUtf16(c.expected))
            << QString::fromUtf16(c.link);
}

TEST(URLRelativeTo, RepairsBrokenSchemesAndRefusesWhatIsNoAddress)
{
    const char16_t *b = u"http://b.org/", *page = u"http://b.org/d/p.html";
    expectResolved(
        { { b, u"hhttp://x.org", u"http://x.org" }, { b, u"http://http://x.org", u"http://x.org" },
            { b, u"  :http://x.org/\n", u"http://x.org/" },
            { b, u"feed:http://x.org/rss", u"http://x.org/rss" },
            { b, u"feed://x.org/rss", u"feed://x.org/rss" }, { b, u"mailto://me@x.org", u"mailto:me@x.org" },
            { b, u"mailto://", nullptr }, // too short to repair
            { b, u"mailto:http://x.org/", u"http://x.org/" }, { b, u"emailto:me@x.org", u"mailto:me@x.org" },
            { b, u"irc:irc.x.org/chan", u"irc:irc.x.org/chan" },
            { u"https://b.org/d/p.html", u"//cdn.x.org/a.js", u"https://cdn.x.org/a.js" },
            { page, u"../e/f.html", u"http://b.org/e/f.html" },
            { page, u"a b\"c\".html", u"http://b.org/d/a%20b%22c%22.html" },
            { b, u"http://x.org/ä", u"http://x.org/%C3%A4" }, { b, u"javascript:void(0)", nullptr },
            { b, u"{{url}}", nullptr }, { b, u"#", nullptr } },
        [](const QString &link, const QUrl &base) { return URL(base).URLRelativeTo(link); });
}

TEST(URLRelativeTo, CarriesCredentialsToTheSameHost)
{
    const URL base(QUrl(u"http://me:pw@b.org/d/"_s));
    EXPECT_EQ(resolved(base.URLRelativeTo(u"x.html"_s)), u"http://me:pw@b.org/d/x.html"_s);
    EXPECT_EQ(resolved(base.URLRelativeTo(u"HTTP://B.ORG/y"_s)), u"http://me:pw@b.org/y"_s);
    EXPECT_EQ(resolved(base.URLRelativeTo(u"http://c.org/y"_s)), u"http://c.org/y"_s);
}

TEST(URLRelativeTo, TrimsAnchorsAndStandardizes)
{
    const URL base(QUrl(u"http://b.org/d/"_s));
    EXPECT_EQ(resolved(base.URLRelativeTo(u"x.html#top"_s, true)), u"http://b.org/d/x.html"_s);
    EXPECT_EQ(resolved(base.URLRelativeTo(u"x.html#top"_s, false)), u"http://b.org/d/x.html#top"_s);
    EXPECT_TRUE(base.URLRelativeTo(u"#top"_s, true).isEmpty());
    EXPECT_EQ(resolved(base.URLRelativeTo(u"http://x.org/a/./b/../c"_s, false, "UTF-8", true)),
        u"http://x.org/a/c"_s);
    EXPECT_TRUE(base.URLRelativeTo(QString()).isEmpty());
}

TEST(URLRelativeTo, FileBaseResolvesPaths)
{
    const test::TempDir dir;
    const URL base(QUrl::fromLocalFile(dir.file(u"page.html"_s)));
    EXPECT_EQ(base.URLRelativeTo(u"img/../a.png"_s).toLocalFile(), dir.file(u"a.png"_s));
    EXPECT_EQ(base.URLRelativeTo(u"/etc//hosts"_s).toLocalFile(), u"/etc/hosts"_s);
    EXPECT_EQ(base.URLRelativeTo(u"~/x"_s).toLocalFile(), QDir::homePath() + u"/x"_s);
    // The anchor is not trimmed against a file base: it is part of the path there.
    EXPECT_EQ(base.URLRelativeTo(u"b#1"_s, true).toLocalFile(), dir.file(u"b#1"_s));
}

TEST(Redirects, EachGroupUnwrapsItsLinksAndAcceptRefusesTheRest)
{
    const char16_t *bing = u"https://www.bing.com/search?q=x", *info = u"https://www.info.com/serp?q=x",
                   *dogpile = u"https://www.dogpile.com/serp?q=x",
                   *yahoo = u"https://search.yahoo.com/search?p=x",
                   *google = u"https://www.google.com/search?q=x",
                   *findlaw = u"https://lawyers.findlaw.com/search", *news = u"https://news.example.org/";
    expectResolved(
        { // A: the engine's "&furl=" target; its own portal and help pages are no results.
            { bing, u"/r?id=1&furl=http://x.org/a&k=2", u"http://x.org/a" },
            { bing, u"https://go.microsoft.com/fwlink/?x", nullptr },
            { bing, u"/r?&furl=ftp://x.org/&k", nullptr },
            // B: the portal's redirect ("bu=", cut at "&qte=") and tracking ("u=") prefixes.
            { u"https://results.excite.com/serp?q=x", u"/redir?a=1&bu=http%3a%2f%2fx.org%2fp&qte=0",
                u"http://x.org/p" },
            { info, u"/click?k=1&u=http://x.org/q", u"http://x.org/q" }, { info, u"/redir?a=1", nullptr },
            // C: the meta-search portal's free redirect (the last address), raw target and click handler.
            { dogpile, u"/redirfree.htm?u=http://a.b/&t=http://x.org/p&time=1", u"http://x.org/p" },
            { dogpile, u"/redirpaid.htm?u=http://x.org/", nullptr },
            { dogpile, u"/ClickHandler.ashx?ru=https%3a%2f%2fx.org%2f%C3%A4&du=1", u"https://x.org/%C3%A4" },
            { dogpile, u"/x?a=1&rawto=http://x.org/z", u"http://x.org/z" },
            // D: the shared results platform: "/RU=" up to the next "/", the old "*-http" form.
            { yahoo,
                u"https://r.search.yahoo.com/_ylt=A;_ylu=B/RV=2/RE=1/RO=10/"
                u"RU=https%3a%2f%2fx.org%2fp%3fq%3d1/RK=2/RS=z",
                u"https://x.org/p?q=1" },
            { u"https://search.aol.com/aol/search?q=x", u"http://rds.yahoo.com/S=1/*-http%3A//x.org/a",
                u"http://x.org/a" },
            { yahoo, u"https://beap.gemini.yahoo.com/mbclk?a=1", nullptr },
            // E: the engine's "/url?q=" redirect, image results, scholar, and what accept refuses.
            { google, u"/url?q=https://x.org/p%3Fa%3D1&sa=U&ved=0", u"https://x.org/p?a=1" },
            { u"https://www.google.de/search?q=x", u"/url?url=https://x.org/de", u"https://x.org/de" },
            { google, u"/imgres?imgurl=http://x.org/i.jpg&imgrefurl=http://x.org/page&h=1",
                u"http://x.org/page" },
            { u"https://scholar.google.com/scholar?q=x",
                u"https://scholar.google.com/url?q=http://x.org/paper", u"http://x.org/paper" },
            { google, u"https://www.youtube.com/watch?v=1", nullptr },
            // F and G: the medical and legal search services.
            { u"https://vsearch.nlm.nih.gov/vivisimo/cgi-bin/query-meta?q=x",
                u"/vivisimo/cgi-bin/query-meta?v=1&url=http://x.org/m&rid=5", u"http://x.org/m" },
            { findlaw, u"/Refer.aspx?Type=WebResult&x=1&url=http://x.org/l", u"http://x.org/l" },
            { findlaw, u"/Refer.aspx?Type=WebResult&x=1", nullptr },
            // No group: cached copies, translations and relative links are refused by accept.
            { news, u"https://webcache.googleusercontent.com/search?q=cache:x", nullptr },
            { news, u"/local/page.html", nullptr },
            { news, u"https://x.org/story", u"https://x.org/story" } },
        acceptStringURL);
}

TEST(Redirects, WithoutAcceptTheCandidateIsResolvedAgainstTheBase)
{
    const QUrl base(u"https://news.example.org/dir/page.html"_s);
    EXPECT_EQ(
        resolved(resolveStringURL(u"other.html"_s, base)), u"https://news.example.org/dir/other.html"_s);
    EXPECT_EQ(resolved(resolveStringURL(u"/url?q=/x"_s, QUrl(u"https://www.google.com/"_s))),
        u"https://www.google.com/x"_s);
    EXPECT_TRUE(resolveStringURL(QString(), base).isEmpty());
}

TEST(Redirects, HostileLinksAnswer)
{
    const QUrl base(u"https://search.yahoo.com/search?p=x"_s);
    const QString huge = u"/RU=http"_s + u"%2f/."_s.repeated(200000);
    resolveStringURL(huge, base, true);
    resolveStringURL(QString(1 << 20, u'%'), QUrl(u"https://www.google.com/"_s), false);
    resolveStringURL(
        QString(QChar(char16_t(0xD800))) + u"http://x"_s, QUrl(u"https://www.dogpile.com/"_s), true);
    SUCCEED();
}

} // namespace
