// Helpers shared by the tests: real images and documents made in a temporary folder, pixel checks.
#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QLocale>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <ostream>

QT_BEGIN_NAMESPACE
// Lets GoogleTest print a QString in a failure message.
inline void PrintTo(const QString &s, std::ostream *os) { *os << '"' << s.toStdString() << '"'; }
// Lets a QString be streamed into a failure message: EXPECT_TRUE(ok) << path.
inline std::ostream &operator<<(std::ostream &os, const QString &s) { return os << s.toStdString(); }
QT_END_NAMESPACE

namespace orvel::test {

/// A temporary folder that lives as long as the object; path() has no trailing slash.
class TempDir
{
public:
    TempDir();
    QString path() const { return m_dir.path(); }
    QString file(const QString &name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
};

/// Writes a w×h picture through libvips to path (format from the extension): a horizontal red ramp,
/// a vertical green ramp and blue 128; with alpha, the alpha falls from 255 at the left to 0 at the right.
bool writeTestImage(const QString &path, int w, int h, bool alpha = false);
/// Writes a w×h picture of one colour through libvips (format from the extension).
bool writeSolidImage(const QString &path, int w, int h, QColor colour);
/// Writes a PDF of pages pages of the given size in points, each page filled with the colour (Ghostscript).
bool writeTestPdf(const QString &path, double wPt, double hPt, QColor colour, int pages = 1);
/// Writes an EPS whose bounding box is w×h points, filled with the colour.
bool writeTestEps(const QString &path, int w, int h, QColor colour);
/// A PNG whose header declares width × height pixels, followed by a tiny image data chunk: a
/// decompression bomb's shape without its size.
QByteArray pngDeclaring(quint32 width, quint32 height);
/// Writes bytes to path; answers whether all were written.
bool writeBytes(const QString &path, const QByteArray &bytes);
QByteArray readBytes(const QString &path);
/// Every file below folder, hidden ones included, relative to it, sorted.
QStringList filesBelow(const QString &folder);
/// The permission bits (07777) of what is at path, links followed; 0 when nothing is there.
unsigned fileMode(const QString &path);
/// Loads a file through libvips into an 8-bit RGBA (straight alpha) QImage; a null image on failure.
QImage loadImage(const QString &path);
/// True when every channel of a and b differ by at most tolerance.
bool colourNear(QColor a, QColor b, int tolerance);
/// The groups of a key file (a desktop entry, a file manager's action), each with its keys; comments
/// and lines without "=" left out.
QMap<QString, QMap<QString, QString>> readKeyFile(const QString &path);
/// Runs a program and answers its exit code (-1 when it could not start or was killed).
int runProgram(const QString &program, const QStringList &args, QByteArray *out = nullptr,
    QByteArray *err = nullptr, int timeoutMs = 60000, const QStringList &extraEnv = {});
/// The orvel-thumbs executable under test (from $ORVEL_THUMBS).
QString thumbsExecutable();
/// Runs orvel-thumbs with settings, cache and temporary folders of its own (config/, cache/ and
/// tmp/ in home), so that nothing of the user's plays a part; answers its exit code.
int runThumbs(
    const TempDir &home, const QStringList &args, QByteArray *out = nullptr, QByteArray *err = nullptr);

/// Runs the event loop until condition holds or timeoutMs pass; answers the condition.
bool processEventsUntil(const std::function<bool()> &condition, int timeoutMs = 10000);

/// In a sanitizer run, leaves leak detection to this process: the programs a test starts (and
/// their workers) run without it. LeakSanitizer's tracer crashes now and then in those children
/// ("Tracer caught signal 11"), and its messages would land in the reports the tests compare. This
/// process read its own options at start-up, so the change reaches the children alone.
void keepLeakDetectionToThisProcess();

/// Sets an environment variable for as long as it lives, then puts back what was there.
class EnvironmentOverride
{
public:
    EnvironmentOverride(const char *name, const QString &value);
    ~EnvironmentOverride();
    EnvironmentOverride(const EnvironmentOverride &) = delete;
    EnvironmentOverride &operator=(const EnvironmentOverride &) = delete;

private:
    const char *m_name;
    bool m_wasSet;
    QByteArray m_old;
};

/// Makes locale the default QLocale for as long as it lives, then puts back the one before.
class DefaultLocale
{
public:
    explicit DefaultLocale(const QLocale &locale) { QLocale::setDefault(locale); }
    ~DefaultLocale() { QLocale::setDefault(m_saved); }
    DefaultLocale(const DefaultLocale &) = delete;
    DefaultLocale &operator=(const DefaultLocale &) = delete;

private:
    QLocale m_saved;
};

} // namespace orvel::test
