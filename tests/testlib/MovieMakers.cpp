// Real movies for the tests, made by the ffmpeg tool.
#include "testlib/MovieMakers.h"

#include "testlib/TestSupport.h"

#include <QImage>

using namespace Qt::StringLiterals;

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
    const int status = runProgram(u"ffmpeg"_s,
        QStringList { u"-nostdin"_s, u"-v"_s, u"error"_s, u"-y"_s } + args, nullptr, &err, 120000);
    if (status != 0)
        qWarning("ffmpeg failed: %s", err.constData());
    return status == 0;
}

bool writeSecondsMovie(const QString &path, double seconds, int w, int h, int fps,
    const QStringList &codecArgs, const QStringList &extraArgs)
{
    // The small offset keeps frame k/fps on its own side of a whole second despite rounding.
    const QString source = u"nullsrc=s=%1x%2:r=%3:d=%4,format=gbrp,"
                           "geq=r='30+mod(floor(T+0.001)*37,196)'"
                           ":g='30+mod(floor(T+0.001)*71+50,196)'"
                           ":b='30+mod(floor(T+0.001)*113+90,196)'"_s.arg(w)
                               .arg(h)
                               .arg(fps)
                               .arg(seconds);
    QStringList args { u"-f"_s, u"lavfi"_s, u"-i"_s, source };
    args += codecArgs.isEmpty() ? QStringList { u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"veryfast"_s,
        u"-x264-params"_s, u"keyint=100000:scenecut=0"_s }
                                : codecArgs;
    args += { u"-pix_fmt"_s, u"yuv420p"_s };
    args += extraArgs;
    args << path;
    return runFFmpeg(args);
}

bool writeNumberedFramesMovie(
    const QString &path, int count, const QString &rate, const QStringList &codecArgs, int w, int h)
{
    const QString source
        = u"nullsrc=s=%1x%2:r=%3,format=gbrp,"
          "geq=r='30+mod(N*37,196)':g='30+mod(N*71+50,196)':b='30+mod(N*113+90,196)'"_s.arg(w)
              .arg(h)
              .arg(rate);
    QStringList args { u"-f"_s, u"lavfi"_s, u"-i"_s, source, u"-frames:v"_s, QString::number(count) };
    args += codecArgs;
    args += { u"-pix_fmt"_s, u"yuv420p"_s, path };
    return runFFmpeg(args);
}

QColor centreColour(const QImage &picture)
{
    return picture.pixelColor(picture.width() / 2, picture.height() / 2);
}

} // namespace orvel::test
