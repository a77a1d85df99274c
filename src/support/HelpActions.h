// The Help menu's actions: web pages, the help book, feedback, and the system version they report.
#pragma once

#include <QString>
#include <QStringView>

namespace orvel {

/// What every application of the toolkit puts in its Help menu. Pages open in the user's browser
/// (QDesktopServices); the help book is the HTML manual installed with the program.
class HelpActions
{
public:
    /// The kernel's release numbers (uname), as major, minor and bug-fix version; each
    /// out-parameter may be null. False when they cannot be read.
    static bool getSystemVersion(unsigned *major, unsigned *minor, unsigned *bugFix);
    /// The leading "major.minor.bugFix" of a kernel release such as "6.1.0-13-amd64" or
    /// "5.15.90.1-microsoft"; a missing third number is 0. False when the release does not start with two
    /// numbers.
    static bool parseSystemVersion(QStringView release, unsigned *major, unsigned *minor, unsigned *bugFix);
    /// "%u.%u.%u" of getSystemVersion(); null when unknown.
    [[nodiscard]] static QString systemVersion();
    /// The distribution's name: PRETTY_NAME of /etc/os-release (else /usr/lib/os-release); null when
    /// neither names one.
    [[nodiscard]] static QString distributionName();
    /// PRETTY_NAME of os-release text; null when it has none.
    [[nodiscard]] static QString prettyNameOfOsRelease(const QByteArray &text);

    /// Opens url with the user's browser or the program registered for it; false for an empty or
    /// invalid address or when nothing could open it.
    static bool launchStringURL(const QString &url);
    static bool launchHelpURL(const QString &url) { return launchStringURL(url); }
    /// Fills format's three "%@" with the escaped subject (feedbackSubject()), the user's name and
    /// e-mail address (both empty: the desktop keeps no card of its user), and opens it.
    static bool launchFeedbackURL(const QString &format, const QString &subject, bool appStore = false);
    /// subject, then " %@" with the main bundle's "CFBundleVersion", then ", %@ %@ (%@)" with the
    /// distribution, the system version and the processor architecture when the system version is known.
    [[nodiscard]] static QString feedbackSubject(const QString &subject);

    /// The maker's web server (ORVEL_WEB_SERVER) and forum server (ORVEL_FORUM_SERVER), without a
    /// trailing "/".
    [[nodiscard]] static QString webServer();
    [[nodiscard]] static QString forumServer();

    // Menu actions.
    static bool website();
    static bool support();
    static bool forum();
    static bool downloads();
    static bool feedback();
    /// The help book's front page; false when the help book is not installed.
    static bool showHelp();
    /// The help book's "_whatsnew" anchor.
    static bool releaseNotes();
    /// The file of the main bundle's help book ("CFBundleHelpBookName") that holds its front page;
    /// empty when it is not installed.
    [[nodiscard]] static QString helpBookIndex();
};

} // namespace orvel
