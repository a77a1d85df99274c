// Real movies for the tests, made by the ffmpeg tool.
#include "MovieTestSupport.h"

#include "testlib/TestSupport.h"

#include <QImage>

namespace orvel::test {

// Components stay within 30..225, clear of the clipping at either end of video range, and
// neighbouring seconds differ by at least 37 in red.
QColor colourOfSecond(int second)
{
    return QColor(30 + second * 37 % 196, 30 + (second * 71 + 50) % 196, 30 + (second * 113 + 90) % 196);
}

bool runFFmpeg(const QStringList &args)
{
    QByteArray err;
    const int status = runProgram(QStringLiteral("ffmpeg"),
        QStringList {
            QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y") }
            + args,
        nullptr, &err, 120000);
    if (status != 0)
        qWarning("ffmpeg failed: %s", err.constData());
    return status == 0;
}

bool writeSecondsMovie(const QString &path, double seconds, int w, int h, int fps,
    const QStringList &codecArgs, const QStringList &extraArgs)
{
    // The small offset keeps frame k/fps on its own side of a whole second despite rounding.
    const QString source = QStringLiteral("nullsrc=s=%1x%2:r=%3:d=%4,format=gbrp,"
                                          "geq=r='30+mod(floor(T+0.001)*37,196)'"
                                          ":g='30+mod(floor(T+0.001)*71+50,196)'"
                                          ":b='30+mod(floor(T+0.001)*113+90,196)'")
                               .arg(w)
                               .arg(h)
                               .arg(fps)
                               .arg(seconds);
    QStringList args { QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), source };
    args += codecArgs.isEmpty() ? QStringList { QStringLiteral("-c:v"), QStringLiteral("libx264"),
        QStringLiteral("-preset"), QStringLiteral("veryfast"), QStringLiteral("-x264-params"),
        QStringLiteral("keyint=100000:scenecut=0") }
                                : codecArgs;
    args += { QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p") };
    args += extraArgs;
    args << path;
    return runFFmpeg(args);
}

bool writeNumberedFramesMovie(
    const QString &path, int count, const QString &rate, const QStringList &codecArgs, int w, int h)
{
    const QString source
        = QStringLiteral("nullsrc=s=%1x%2:r=%3,format=gbrp,"
                         "geq=r='30+mod(N*37,196)':g='30+mod(N*71+50,196)':b='30+mod(N*113+90,196)'")
              .arg(w)
              .arg(h)
              .arg(rate);
    QStringList args { QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), source,
        QStringLiteral("-frames:v"), QString::number(count) };
    args += codecArgs;
    args += { QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"), path };
    return runFFmpeg(args);
}

QColor centreColour(const QImage &picture)
{
    return picture.pixelColor(picture.width() / 2, picture.height() / 2);
}

} // namespace orvel::test
