// What the log writes to standard error.
#include "support/Log.h"

#include "testlib/TestSupport.h"

#include <QFile>
#include <QLoggingCategory>
#include <gtest/gtest.h>

#include <functional>

#include <fcntl.h>
#include <unistd.h>

using namespace orvel;

namespace {

/// What write() puts on standard error, which is redirected to a file meanwhile.
QByteArray standardErrorOf(const std::function<void()> &write)
{
    orvel::test::TempDir dir;
    const QString path = dir.file("stderr");
    fflush(stderr);
    const int saved = dup(STDERR_FILENO);
    const int fd = open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(fd, STDERR_FILENO);
    close(fd);
    write();
    fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    return orvel::test::readBytes(path);
}

Q_LOGGING_CATEGORY(testCategory, "orvel.test")

} // namespace

TEST(Log, ExceptionIsOneMessageInTheFixedLayoutUnlessSwitchedOff)
{
    setLogToStandardError(true);
    EXPECT_EQ(standardErrorOf([] {
        logException(
            "processFile:", "ThumbnailJob", "ImageError", "broken %1 file", { "frame 1", "frame 2" });
        logMessage(QString::fromUtf8("caf\u00e9"));
    }),
        QByteArray("orvel-thumbs: processFile: (ThumbnailJob):\nImageError\nbroken %1 file\n"
                   "frame 1\nframe 2\norvel-thumbs: caf\xc3\xa9\n"));
    setLogToStandardError(false);
    EXPECT_EQ(standardErrorOf([] { logMessage("quiet"); }), QByteArray());
    setLogToStandardError(true);
}

TEST(Log, ToolkitQtCategoriesGoThroughTheLog)
{
    setLogToStandardError(true);
    routeToolkitQtMessages();
    routeToolkitQtMessages(); // a second call changes nothing
    const QByteArray text = standardErrorOf([] {
        qCWarning(testCategory).noquote() << "Unknown date: someday";
        qCDebug(testCategory) << "a debug message";
    });
    EXPECT_TRUE(text.startsWith("orvel-thumbs: Unknown date: someday\n")) << text.toStdString();
    EXPECT_FALSE(text.contains("orvel-thumbs: a debug message")) << text.toStdString();
}
