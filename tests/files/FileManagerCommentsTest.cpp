// Comments in "user.xdg.comment" and labels in the Finder info, at once and batched on the event loop.
#include "files/FileManager.h"

#include "testlib/TestSupport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::TempDir;
using orvel::test::writeBytes;

namespace {

/// Runs the event loop until done() holds or ten seconds pass; answers done().
template <typename Done> bool spinUntil(Done done)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return done();
}

bool userAttributesWork(const TempDir &dir)
{
    const QString probe = dir.file(u"probe"_s);
    writeBytes(probe, "p");
    const bool works = FileManager::setFinderComment(u"x"_s, probe);
    QFile::remove(probe);
    return works;
}

} // namespace

TEST(FileManagerComments, ACommentIsTheFreedesktopAttribute)
{
    TempDir dir;
    if (!userAttributesWork(dir))
        GTEST_SKIP() << "this file system keeps no user attributes";
    const QString path = dir.file(u"photo.jpg"_s);
    ASSERT_TRUE(writeBytes(path, "j"));
    EXPECT_TRUE(FileManager::finderComment(path).isNull());
    ASSERT_TRUE(FileManager::setFinderComment(u"Sommer am See – ☀"_s, path));
    EXPECT_EQ(FileManager::finderComment(path), u"Sommer am See – ☀"_s);
    QByteArray out;
    ASSERT_EQ(
        test::runProgram(u"getfattr"_s, { u"--only-values"_s, u"-n"_s, u"user.xdg.comment"_s, path }, &out),
        0);
    EXPECT_EQ(QString::fromUtf8(out), u"Sommer am See – ☀"_s);
    ASSERT_TRUE(FileManager::setFinderComment(QString(), path));
    EXPECT_TRUE(FileManager::finderComment(path).isNull());
    EXPECT_FALSE(FileManager::setFinderComment(u"c"_s, dir.file(u"none"_s)));
    EXPECT_FALSE(FileManager::setFinderComment(u"c"_s, dir.file(u"none"_s), true));
}

TEST(FileManagerComments, ThirtyQuickCommentsRunAsABatchOf25ThenOneOf5)
{
    TempDir dir;
    if (!userAttributesWork(dir))
        GTEST_SKIP() << "this file system keeps no user attributes";
    QStringList paths;
    for (int i = 0; i < 30; ++i) {
        paths << dir.file(u"f%1"_s.arg(i, 2, 10, QChar(u'0')));
        ASSERT_TRUE(writeBytes(paths.last(), "f"));
    }
    auto commented = [&] {
        return std::count_if(paths.begin(), paths.end(),
            [](const QString &p) { return !FileManager::finderComment(p).isNull(); });
    };
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(FileManager::setFinderComment(u"comment %1"_s.arg(i), paths[i], true));
    EXPECT_EQ(commented(), 0);
    ASSERT_EQ(FileManager::pendingFinderRequests(), 30);

    ASSERT_TRUE(spinUntil([] { return FileManager::pendingFinderRequests() < 30; }));
    EXPECT_GE(clock.elapsed(), 190);
    EXPECT_EQ(FileManager::pendingFinderRequests(), 5);
    EXPECT_EQ(commented(), 25);
    // The first 25 in path order went first.
    EXPECT_EQ(FileManager::finderComment(paths[24]), u"comment 24"_s);
    EXPECT_TRUE(FileManager::finderComment(paths[25]).isNull());

    ASSERT_TRUE(spinUntil([] { return FileManager::pendingFinderRequests() == 0; }));
    EXPECT_EQ(commented(), 30);
    QByteArray out;
    ASSERT_EQ(test::runProgram(
                  u"getfattr"_s, { u"--only-values"_s, u"-n"_s, u"user.xdg.comment"_s, paths[29] }, &out),
        0);
    EXPECT_EQ(out, "comment 29");
}

TEST(FileManagerComments, LabelsAreTheColourBitsOfTheFinderInfo)
{
    TempDir dir;
    const QString path = dir.file(u"f"_s);
    ASSERT_TRUE(writeBytes(path, "f"));
    ASSERT_TRUE(setFinderFlagsOfFile(path, FinderFlag::HasCustomIcon | FinderFlag::IsInvisible));
    EXPECT_EQ(FileManager::finderLabel(path), 0);
    ASSERT_TRUE(FileManager::setFinderLabel(6, path));
    EXPECT_EQ(FileManager::finderLabel(path), 6);
    EXPECT_EQ(finderFlagsOfFile(path), FinderFlag::HasCustomIcon | FinderFlag::IsInvisible | (6 << 1));
    EXPECT_FALSE(FileManager::setFinderLabel(8, path));
    EXPECT_FALSE(FileManager::setFinderLabel(-1, path));
    EXPECT_FALSE(FileManager::setFinderLabel(1, dir.file(u"none"_s)));

    // Queued labels: the same path twice keeps the last; batches of ten.
    QStringList paths;
    for (int i = 0; i < 12; ++i) {
        paths << dir.file(u"l%1"_s.arg(i, 2, 10, QChar(u'0')));
        ASSERT_TRUE(writeBytes(paths.last(), "l"));
        ASSERT_TRUE(FileManager::setFinderLabel(i % 7 + 1, paths.last(), true));
    }
    ASSERT_TRUE(FileManager::setFinderLabel(2, path, true));
    ASSERT_TRUE(FileManager::setFinderLabel(3, path, true));
    EXPECT_EQ(FileManager::pendingFinderRequests(), 13);
    ASSERT_TRUE(spinUntil([] { return FileManager::pendingFinderRequests() < 13; }));
    EXPECT_EQ(FileManager::pendingFinderRequests(), 3);
    ASSERT_TRUE(spinUntil([] { return FileManager::pendingFinderRequests() == 0; }));
    EXPECT_EQ(FileManager::finderLabel(path), 3);
    EXPECT_EQ(FileManager::finderLabel(paths[11]), 11 % 7 + 1);
}
