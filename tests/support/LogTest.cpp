// What the log writes to standard error.
#include "support/Log.h"

#include "testlib/TestSupport.h"

#include <QFile>
#include <QLoggingCategory>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace orvel;

namespace {

/// Standard error redirected to a file while the object lives.
class CapturedStandardError
{
public:
    CapturedStandardError()
        : m_path(m_dir.file("stderr"))
    {
        fflush(stderr);
        m_saved = dup(STDERR_FILENO);
        const int fd = open(QFile::encodeName(m_path).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(fd, STDERR_FILENO);
        close(fd);
    }
    ~CapturedStandardError() { restore(); }
    QByteArray text()
    {
        restore();
        return orvel::test::readBytes(m_path);
    }

private:
    void restore()
    {
        if (m_saved >= 0) {
            dup2(m_saved, STDERR_FILENO);
            close(m_saved);
            m_saved = -1;
        }
    }
    orvel::test::TempDir m_dir;
    QString m_path;
    int m_saved = -1;
};

Q_LOGGING_CATEGORY(testCategory, "orvel.test")

} // namespace

TEST(Log, ExceptionIsOneMessageInTheFixedLayoutUnlessSwitchedOff)
{
    setLogToStandardError(true);
    CapturedStandardError captured;
    logException("processFile:", "ThumbnailJob", "ImageError", "broken %1 file", { "frame 1", "frame 2" });
    logMessage(QString::fromUtf8("caf\u00e9"));
    EXPECT_EQ(captured.text(),
        QByteArray("orvel-thumbs: processFile: (ThumbnailJob):\nImageError\nbroken %1 file\n"
                   "frame 1\nframe 2\norvel-thumbs: caf\xc3\xa9\n"));

    setLogToStandardError(false);
    CapturedStandardError quiet;
    logMessage("quiet");
    EXPECT_EQ(quiet.text(), QByteArray());
    setLogToStandardError(true);
}

TEST(Log, ToolkitQtCategoriesGoThroughTheLog)
{
    setLogToStandardError(true);
    routeToolkitQtMessages();
    routeToolkitQtMessages(); // a second call changes nothing
    CapturedStandardError captured;
    qCWarning(testCategory).noquote() << "Unknown date: someday";
    qCDebug(testCategory) << "a debug message";
    const QByteArray text = captured.text();
    EXPECT_TRUE(text.startsWith("orvel-thumbs: Unknown date: someday\n")) << text.toStdString();
    EXPECT_FALSE(text.contains("orvel-thumbs: a debug message")) << text.toStdString();
}
