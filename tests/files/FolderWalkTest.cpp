// Tests of the folder walk: order, results, links, loops and the hooks, on real folders.
#include "files/FolderWalk.h"

#include "testlib/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;

namespace {

/// Records what the walk does; answers NO for files whose name starts with "bad".
class Recorder : public FolderWalk::Visitor
{
public:
    bool processFile(const QString &path, FolderWalk::Found) override
    {
        events << u"file "_s + path;
        files << path;
        return !QFileInfo(path).fileName().startsWith(u"bad"_s);
    }
    void failed(const QString &path, const QString &reason) override
    {
        events << u"failed "_s + path;
        failures << path + u": "_s + reason;
    }
    bool unreadableFolder(const QString &path, const QString &reason) override
    {
        unreadable << path + u": "_s + reason;
        return strict ? false : Visitor::unreadableFolder(path, reason);
    }
    void willExamine(const QString &path) override { events << u"examine "_s + path; }
    void willListFolder(const QString &path) override { events << u"list "_s + path; }

    QStringList events;
    QStringList files;
    QStringList failures;
    QStringList unreadable;
    bool strict = false; // answer NO for an unreadable folder
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

TEST(FolderWalk, VisitsFilesDepthFirstInListingOrderAndNoDeeperThanAllowed)
{
    TempDir dir;
    for (const char *name : { "a/1", "a/b/2", "a/b/c/3", "a/4", "a/.hidden", "a/d/5", "a/6" })
        touch(dir.file(QString::fromLatin1(name)));
    QDir().mkpath(dir.file(u"a/empty/inner"_s));
    const QString top = dir.file(u"a"_s);
    const QStringList all = depthFirstFiles(top);
    ASSERT_EQ(all.size(), 7);
    // Depth n reaches the files at most n − 1 folders down; −1 sets no limit.
    for (int depth : { -1, 0, 1, 2, 3 }) {
        QStringList expected;
        for (const QString &path : all)
            if (depth < 0 || path.mid(top.size() + 1).count(u'/') < depth)
                expected << path;
        Recorder recorder;
        EXPECT_TRUE(FolderWalk::processPath(top, recorder, depth)) << "an empty folder answers YES";
        EXPECT_EQ(recorder.files, expected) << depth;
    }
    // A file named directly is processed at any depth.
    Recorder named;
    EXPECT_TRUE(FolderWalk::processPath(dir.file(u"a/b/c/3"_s), named, 0));
    EXPECT_EQ(named.files.size(), 1);
}

TEST(FolderWalk, AndsTheAnswersAndWalksOnAfterANo)
{
    TempDir dir;
    for (const char *name : { "good1", "sub/bad", "sub/good2", "good3" })
        touch(dir.file(QString::fromLatin1(name)));
    Recorder recorder;
    EXPECT_FALSE(FolderWalk::processPath(dir.path(), recorder));
    EXPECT_EQ(recorder.files.size(), 4);
    EXPECT_TRUE(recorder.failures.isEmpty()) << "a NO of the visitor is no failure of the walk";

    // A broken link inside is a NO of the walk, with the rest still walked.
    ASSERT_TRUE(QFile::remove(dir.file(u"sub/bad"_s)));
    link(u"missing"_s, dir.file(u"sub/dangling"_s));
    Recorder broken;
    EXPECT_FALSE(FolderWalk::processPath(dir.path(), broken));
    EXPECT_EQ(broken.files.size(), 3);
    EXPECT_EQ(broken.failures, QStringList { dir.file(u"sub/dangling"_s) + u": broken link to missing"_s });
}

TEST(FolderWalk, MissingPathsAndBrokenLinksAnswerNoWithAReason)
{
    TempDir dir;
    link(dir.file(u"gone.png"_s), dir.file(u"dangling"_s));
    link(dir.file(u"self"_s), dir.file(u"self"_s));

    Recorder recorder;
    for (const QString &path :
        { dir.file(u"nothing"_s), dir.file(u"dangling"_s), dir.file(u"self"_s), QString() })
        EXPECT_FALSE(FolderWalk::processPath(path, recorder)) << path;
    EXPECT_TRUE(recorder.files.isEmpty());
    EXPECT_EQ(recorder.failures,
        (QStringList { dir.file(u"nothing"_s) + u": no such file or folder"_s,
            dir.file(u"dangling"_s) + u": broken link to "_s + dir.file(u"gone.png"_s),
            dir.file(u"self"_s) + u": link loop: its links lead round in a circle"_s,
            u": no such file or folder"_s }));
}

TEST(FolderWalk, LinkToAnAncestorIsALoopAndALinkToAFolderBesideIsWalked)
{
    TempDir dir;
    touch(dir.file(u"top/file"_s));
    touch(dir.file(u"top/sub/inner"_s));
    touch(dir.file(u"x/pic"_s));
    link(u".."_s, dir.file(u"top/sub/up"_s));
    link(dir.file(u"top/sub"_s), dir.file(u"top/sub/here"_s));
    link(u"../../x"_s, dir.file(u"top/sub/to-x"_s));

    Recorder recorder;
    EXPECT_FALSE(FolderWalk::processPath(dir.file(u"top"_s), recorder));
    QStringList files = recorder.files;
    QStringList failures = recorder.failures;
    files.sort();
    failures.sort();
    // The folder beside is reached through its link and handed on as the resolved file.
    EXPECT_EQ(
        files, (QStringList { dir.file(u"top/file"_s), dir.file(u"top/sub/inner"_s), dir.file(u"x/pic"_s) }));
    EXPECT_EQ(failures,
        (QStringList { dir.file(u"top/sub/here"_s) + u": link loop: leads back to "_s
                + dir.file(u"top/sub, which contains it"_s),
            dir.file(u"top/sub/up"_s) + u": link loop: leads back to "_s
                + dir.file(u"top, which contains it"_s) }));
}

TEST(FolderWalk, HooksComeBeforeEachLookAndEachListingAndFilesArriveResolved)
{
    TempDir dir;
    touch(dir.file(u"real/f"_s));
    link(dir.file(u"real"_s), dir.file(u"alias"_s));

    Recorder recorder;
    EXPECT_TRUE(FolderWalk::processPath(dir.file(u"alias"_s), recorder));
    EXPECT_EQ(recorder.events,
        (QStringList { u"examine "_s + dir.file(u"alias"_s), u"list "_s + dir.file(u"real"_s),
            u"examine "_s + dir.file(u"real/f"_s), u"file "_s + dir.file(u"real/f"_s) }));

    link(u"f"_s, dir.file(u"real/f-link"_s));
    Recorder direct;
    EXPECT_TRUE(FolderWalk::processPath(dir.file(u"alias/f-link"_s), direct));
    EXPECT_EQ(direct.files, QStringList { dir.file(u"real/f"_s) });
}

TEST(FolderWalk, UnreadableFolderIsReportedAndAnswersWhatTheVisitorSays)
{
    TempDir dir;
    touch(dir.file(u"locked/f"_s));
    const QString locked = dir.file(u"locked"_s);
    ASSERT_EQ(::chmod(QFile::encodeName(dir.path()).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(locked).constData(), 0), 0);
    struct Restore
    {
        QByteArray path;
        ~Restore() { ::chmod(path.constData(), 0700); }
    } restore { QFile::encodeName(locked) };

    auto check = [&] {
        Recorder plain, strict;
        strict.strict = true;
        const QStringList expected { locked + u": cannot read folder: permission denied"_s };
        // The default answer is YES, as for an empty folder, and the walk reports no failure of its own.
        return FolderWalk::processPath(locked, plain) && plain.files.isEmpty() && plain.failures.isEmpty()
            && plain.unreadable == expected && !FolderWalk::processPath(dir.path(), strict)
            && strict.unreadable == expected;
    };
    if (::geteuid() != 0) {
        EXPECT_TRUE(check());
        return;
    }
    // Root reads every folder; the walk runs as nobody in a child process.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        ::_exit(::setgid(65534) != 0 || ::setuid(65534) != 0 ? 99 : check() ? 0 : 1);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}
