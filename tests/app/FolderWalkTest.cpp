// Tests of the folder walk: order, results, links, loops and the hooks, on real folders.
#include "app/FolderWalk.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace orvel;
using orvel::test::TempDir;

namespace {

/// Records what the walk does; answers NO for files whose name starts with "bad".
class Recorder : public FolderWalk::Visitor
{
public:
    bool processFile(const QString &path) override
    {
        events << QStringLiteral("file ") + path;
        files << path;
        return !QFileInfo(path).fileName().startsWith(QStringLiteral("bad"));
    }
    void failed(const QString &path, const QString &reason) override
    {
        events << QStringLiteral("failed ") + path;
        failures << path + QStringLiteral(": ") + reason;
    }
    void willExamine(const QString &path) override { events << QStringLiteral("examine ") + path; }
    void willListFolder(const QString &path) override { events << QStringLiteral("list ") + path; }

    QStringList events;
    QStringList files;
    QStringList failures;
};

void touch(const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(orvel::test::writeBytes(path, "x")) << path.toStdString();
}

void link(const QString &target, const QString &linkPath)
{
    ASSERT_EQ(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(linkPath).constData()), 0);
}

/// The files under folder in depth-first listing order, worked out with QDir's unsorted listing.
QStringList depthFirstFiles(const QString &folder)
{
    QStringList result;
    const QStringList names = QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    for (const QString &name : names) {
        const QString path = folder + u'/' + name;
        if (QFileInfo(path).isDir())
            result += depthFirstFiles(path);
        else
            result << path;
    }
    return result;
}

} // namespace

TEST(FolderWalk, VisitsFilesDepthFirstInListingOrder)
{
    TempDir dir;
    for (const char *name : { "a/1", "a/b/2", "a/b/c/3", "a/4", "a/.hidden", "a/d/5", "a/6" })
        touch(dir.file(QString::fromLatin1(name)));

    Recorder recorder;
    EXPECT_TRUE(FolderWalk::processPath(dir.file(QStringLiteral("a")), recorder));
    EXPECT_EQ(recorder.files, depthFirstFiles(dir.file(QStringLiteral("a"))));
    EXPECT_EQ(recorder.files.size(), 7);
}

TEST(FolderWalk, AndsTheAnswersAndWalksOnAfterANo)
{
    TempDir dir;
    for (const char *name : { "bad1", "good1", "sub/bad2", "sub/good2", "good3" })
        touch(dir.file(QString::fromLatin1(name)));

    Recorder recorder;
    EXPECT_FALSE(FolderWalk::processPath(dir.path(), recorder));
    EXPECT_EQ(recorder.files.size(), 5);
    EXPECT_TRUE(recorder.failures.isEmpty());

    Recorder single;
    EXPECT_FALSE(FolderWalk::processPath(dir.file(QStringLiteral("bad1")), single));
    EXPECT_TRUE(FolderWalk::processPath(dir.file(QStringLiteral("good1")), single));
}

TEST(FolderWalk, EmptyFolderAnswersYesWithoutVisitingAnything)
{
    TempDir dir;
    QDir().mkpath(dir.file(QStringLiteral("empty/inner")));
    Recorder recorder;
    EXPECT_TRUE(FolderWalk::processPath(dir.file(QStringLiteral("empty")), recorder));
    EXPECT_TRUE(recorder.files.isEmpty());
    EXPECT_TRUE(recorder.failures.isEmpty());
}

TEST(FolderWalk, MissingPathsAndBrokenLinksAnswerNoWithAReason)
{
    TempDir dir;
    link(dir.file(QStringLiteral("gone.png")), dir.file(QStringLiteral("dangling")));
    link(dir.file(QStringLiteral("self")), dir.file(QStringLiteral("self")));

    Recorder recorder;
    EXPECT_FALSE(FolderWalk::processPath(dir.file(QStringLiteral("nothing")), recorder));
    EXPECT_FALSE(FolderWalk::processPath(dir.file(QStringLiteral("dangling")), recorder));
    EXPECT_FALSE(FolderWalk::processPath(dir.file(QStringLiteral("self")), recorder));
    EXPECT_FALSE(FolderWalk::processPath(QString(), recorder));
    EXPECT_TRUE(recorder.files.isEmpty());
    ASSERT_EQ(recorder.failures.size(), 4);
    EXPECT_EQ(recorder.failures[0],
        dir.file(QStringLiteral("nothing")) + QStringLiteral(": no such file or folder"));
    EXPECT_EQ(recorder.failures[1],
        dir.file(QStringLiteral("dangling")) + QStringLiteral(": broken link to ")
            + dir.file(QStringLiteral("gone.png")));
    EXPECT_EQ(recorder.failures[2],
        dir.file(QStringLiteral("self")) + QStringLiteral(": link loop: its links lead round in a circle"));
}

TEST(FolderWalk, BrokenLinkInsideAFolderMakesTheFolderAnswerNo)
{
    TempDir dir;
    touch(dir.file(QStringLiteral("f/ok")));
    link(QStringLiteral("missing"), dir.file(QStringLiteral("f/dangling")));
    Recorder recorder;
    EXPECT_FALSE(FolderWalk::processPath(dir.file(QStringLiteral("f")), recorder));
    EXPECT_EQ(recorder.files, QStringList { dir.file(QStringLiteral("f/ok")) });
    EXPECT_EQ(recorder.failures.size(), 1);
}

TEST(FolderWalk, LinkToAnAncestorIsALoopAndTheRestIsWalkedOnce)
{
    TempDir dir;
    touch(dir.file(QStringLiteral("top/file")));
    touch(dir.file(QStringLiteral("top/sub/inner")));
    link(QStringLiteral(".."), dir.file(QStringLiteral("top/sub/up")));
    link(dir.file(QStringLiteral("top/sub")), dir.file(QStringLiteral("top/sub/here")));

    Recorder recorder;
    EXPECT_FALSE(FolderWalk::processPath(dir.file(QStringLiteral("top")), recorder));
    QStringList files = recorder.files;
    files.sort();
    EXPECT_EQ(files,
        (QStringList { dir.file(QStringLiteral("top/file")), dir.file(QStringLiteral("top/sub/inner")) }));
    ASSERT_EQ(recorder.failures.size(), 2);
    for (const QString &failure : recorder.failures)
        EXPECT_TRUE(failure.contains(QStringLiteral(": link loop: leads back to "))) << failure.toStdString();
    EXPECT_TRUE(recorder.failures.join(u'\n').contains(dir.file(QStringLiteral("top/sub/up"))
        + QStringLiteral(": link loop: leads back to ") + dir.file(QStringLiteral("top"))));
}

TEST(FolderWalk, LinkToAFolderBesideIsNoLoopAndIsWalked)
{
    TempDir dir;
    touch(dir.file(QStringLiteral("x/pic")));
    QDir().mkpath(dir.file(QStringLiteral("y")));
    link(QStringLiteral("../x"), dir.file(QStringLiteral("y/to-x")));

    Recorder recorder;
    EXPECT_TRUE(FolderWalk::processPath(dir.path(), recorder));
    // Reached once directly and once through the link, both times as the resolved file.
    EXPECT_EQ(recorder.files,
        (QStringList { dir.file(QStringLiteral("x/pic")), dir.file(QStringLiteral("x/pic")) }));
}

TEST(FolderWalk, LinksAreResolvedBeforeTheFileIsHandedOn)
{
    TempDir dir;
    touch(dir.file(QStringLiteral("real/pic.png")));
    link(dir.file(QStringLiteral("real")), dir.file(QStringLiteral("alias")));
    link(QStringLiteral("pic.png"), dir.file(QStringLiteral("real/pic-link")));

    Recorder recorder;
    EXPECT_TRUE(FolderWalk::processPath(dir.file(QStringLiteral("alias/pic-link")), recorder));
    EXPECT_EQ(recorder.files, QStringList { dir.file(QStringLiteral("real/pic.png")) });
}

TEST(FolderWalk, HooksComeBeforeEachLookAndEachListing)
{
    TempDir dir;
    touch(dir.file(QStringLiteral("real/f")));
    link(dir.file(QStringLiteral("real")), dir.file(QStringLiteral("alias")));

    Recorder recorder;
    EXPECT_TRUE(FolderWalk::processPath(dir.file(QStringLiteral("alias")), recorder));
    EXPECT_EQ(recorder.events,
        (QStringList { QStringLiteral("examine ") + dir.file(QStringLiteral("alias")),
            QStringLiteral("list ") + dir.file(QStringLiteral("real")),
            QStringLiteral("examine ") + dir.file(QStringLiteral("real/f")),
            QStringLiteral("file ") + dir.file(QStringLiteral("real/f")) }));
}

TEST(FolderWalk, UnreadableFolderIsReportedAndAnswersWhatTheVisitorSays)
{
    TempDir dir;
    touch(dir.file(QStringLiteral("locked/f")));
    const QString locked = dir.file(QStringLiteral("locked"));
    ASSERT_EQ(::chmod(QFile::encodeName(dir.path()).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(locked).constData(), 0), 0);
    struct Restore
    {
        QByteArray path;
        ~Restore() { ::chmod(path.constData(), 0700); }
    } restore { QFile::encodeName(locked) };

    struct Strict : Recorder
    {
        bool unreadableFolder(const QString &path, const QString &reason) override
        {
            failures << path + QStringLiteral(": ") + reason;
            return false;
        }
    };
    // Answers 0 when the walk behaves, else the number of the check that failed.
    auto check = [&]() -> int {
        Recorder plain;
        if (!FolderWalk::processPath(locked, plain))
            return 1;
        if (!plain.files.isEmpty() || !plain.failures.isEmpty())
            return 2;
        Strict strict;
        if (FolderWalk::processPath(dir.path(), strict))
            return 3;
        if (strict.failures
            != QStringList { locked + QStringLiteral(": cannot read folder: permission denied") })
            return 4;
        return 0;
    };
    if (::geteuid() != 0) {
        EXPECT_EQ(check(), 0);
        return;
    }
    // Root reads every folder; the walk runs as nobody in a child process.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (::setgid(65534) != 0 || ::setuid(65534) != 0)
            ::_exit(99);
        ::_exit(check());
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}
