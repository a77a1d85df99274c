// Helpers shared by the tests: real images and documents made in a temporary folder, pixel checks.
#include "testlib/TestSupport.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>
#include <gtest/gtest.h>
#include <vips/vips8>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace orvel::test {

TempDir::TempDir()
    : m_dir(QDir::tempPath() + u"/orvel-test-XXXXXX"_s)
{
}

static bool save(vips::VImage image, const QString &path)
{
    try {
        image.write_to_file(QFile::encodeName(path).constData());
        return true;
    } catch (const vips::VError &) {
        return false;
    }
}

bool writeTestImage(const QString &path, int w, int h, bool alpha)
{
    using vips::VImage;
    VImage x = VImage::xyz(w, h)[0];
    VImage y = VImage::xyz(w, h)[1];
    VImage r = (x * (255.0 / std::max(1, w - 1))).cast(VIPS_FORMAT_UCHAR);
    VImage g = (y * (255.0 / std::max(1, h - 1))).cast(VIPS_FORMAT_UCHAR);
    VImage b = VImage::black(w, h) + 128;
    VImage rgb = r.bandjoin(g).bandjoin(b.cast(VIPS_FORMAT_UCHAR));
    if (alpha)
        rgb = rgb.bandjoin((255 - x * (255.0 / std::max(1, w - 1))).cast(VIPS_FORMAT_UCHAR));
    rgb = rgb.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    return save(rgb, path);
}

bool writeSolidImage(const QString &path, int w, int h, QColor c)
{
    using vips::VImage;
    std::vector<double> ink = { double(c.red()), double(c.green()), double(c.blue()) };
    if (c.alpha() != 255)
        ink.push_back(c.alpha());
    VImage img = VImage::black(w, h, VImage::option()->set("bands", int(ink.size()))).new_from_image(ink);
    img = img.cast(VIPS_FORMAT_UCHAR).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    return save(img, path);
}

static QString psColour(QColor c)
{
    return u"%1 %2 %3 setrgbcolor"_s.arg(c.redF()).arg(c.greenF()).arg(c.blueF());
}

bool writeTestPdf(const QString &path, double wPt, double hPt, QColor colour, int pages)
{
    TempDir dir;
    QString ps = u"%!PS\n<< /PageSize [%1 %2] >> setpagedevice\n"_s.arg(wPt).arg(hPt);
    for (int i = 0; i < pages; ++i)
        ps += u"%1 0 0 %2 %3 rectfill showpage\n"_s.arg(psColour(colour)).arg(wPt).arg(hPt);
    QString src = dir.file(u"in.ps"_s);
    if (!writeBytes(src, ps.toLatin1()))
        return false;
    return runProgram(u"gs"_s,
               { u"-q"_s, u"-dSAFER"_s, u"-dBATCH"_s, u"-dNOPAUSE"_s, u"-sDEVICE=pdfwrite"_s,
                   u"-sOutputFile="_s + path, src })
        == 0;
}

bool writeTestEps(const QString &path, int w, int h, QColor colour)
{
    QString eps = u"%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 %1 %2\n%%EndComments\n"
                  "%3 0 0 %1 %2 rectfill\nshowpage\n%%EOF\n"_s.arg(w)
                      .arg(h)
                      .arg(psColour(colour));
    return writeBytes(path, eps.toLatin1());
}

static quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = 0xFFFFFFFFu;
    for (char ch : bytes) {
        crc ^= quint8(ch);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

QByteArray pngDeclaring(quint32 width, quint32 height)
{
    auto be32 = [](quint32 v) {
        QByteArray b(4, 0);
        for (int i = 0; i < 4; ++i)
            b[i] = char((v >> (24 - 8 * i)) & 0xFF);
        return b;
    };
    auto chunk = [&](const QByteArray &type, const QByteArray &data) {
        return be32(quint32(data.size())) + type + data + be32(crc32(type + data));
    };
    const QByteArray header = be32(width) + be32(height) + QByteArray("\x08\x02\x00\x00\x00", 5);
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", header)
        + chunk("IDAT", QByteArray("\x78\x9c\x03\x00\x00\x00\x00\x01", 8)) + chunk("IEND", {});
}

bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}

QStringList filesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << QDir(folder).relativeFilePath(it.next());
    files.sort();
    return files;
}

unsigned fileMode(const QString &path)
{
    struct stat st = {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return 0;
    return st.st_mode & 07777;
}

QByteArray readBytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QMap<QString, QMap<QString, QString>> readKeyFile(const QString &path)
{
    QMap<QString, QMap<QString, QString>> groups;
    QString group;
    for (const QString &line : QString::fromUtf8(readBytes(path)).split(u'\n')) {
        if (line.startsWith(u'[') && line.endsWith(u']'))
            group = line.mid(1, line.size() - 2);
        else if (const qsizetype eq = line.indexOf(u'='); eq > 0 && !line.startsWith(u'#'))
            groups[group].insert(line.left(eq), line.mid(eq + 1));
    }
    return groups;
}

QImage loadImage(const QString &path)
{
    try {
        using vips::VImage;
        VImage img = VImage::new_from_file(QFile::encodeName(path).constData());
        img = img.colourspace(VIPS_INTERPRETATION_sRGB);
        if (!img.has_alpha())
            img = img.bandjoin(255);
        img = img.cast(VIPS_FORMAT_UCHAR);
        size_t size = 0;
        void *mem = img.write_to_memory(&size);
        QImage out(img.width(), img.height(), QImage::Format_RGBA8888);
        memcpy(out.bits(), mem, size);
        g_free(mem);
        return out;
    } catch (const vips::VError &) {
        return {};
    }
}

bool colourNear(QColor a, QColor b, int t)
{
    return std::abs(a.red() - b.red()) <= t && std::abs(a.green() - b.green()) <= t
        && std::abs(a.blue() - b.blue()) <= t && std::abs(a.alpha() - b.alpha()) <= t;
}

int runProgram(const QString &program, const QStringList &args, QByteArray *out, QByteArray *err,
    int timeoutMs, const QStringList &extraEnv)
{
    QProcess p;
    if (!extraEnv.isEmpty()) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const QString &kv : extraEnv) {
            qsizetype eq = kv.indexOf(u'=');
            env.insert(kv.left(eq), kv.mid(eq + 1));
        }
        p.setProcessEnvironment(env);
    }
    p.start(program, args);
    if (!p.waitForStarted(10000))
        return -1;
    p.closeWriteChannel();
    if (!p.waitForFinished(timeoutMs)) {
        p.kill();
        p.waitForFinished();
        return -1;
    }
    if (out)
        *out = p.readAllStandardOutput();
    if (err)
        *err = p.readAllStandardError();
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

QString thumbsExecutable() { return qEnvironmentVariable("ORVEL_THUMBS"); }

int runThumbs(const TempDir &home, const QStringList &args, QByteArray *out, QByteArray *err)
{
    const QString executable = thumbsExecutable();
    if (executable.isEmpty()) {
        ADD_FAILURE() << "ORVEL_THUMBS does not name the orvel-thumbs executable";
        return -1;
    }
    QDir().mkpath(home.file(u"tmp"_s));
    return runProgram(executable, args, out, err, 60000,
        { u"XDG_CONFIG_HOME="_s + home.file(u"config"_s), u"XDG_CACHE_HOME="_s + home.file(u"cache"_s),
            u"TMPDIR="_s + home.file(u"tmp"_s) });
}

bool processEventsUntil(const std::function<bool()> &condition, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    return true;
}

void keepLeakDetectionToThisProcess()
{
    const QByteArray options = qgetenv("ASAN_OPTIONS");
    if (!options.isEmpty())
        qputenv("ASAN_OPTIONS", options + ":detect_leaks=0:fast_unwind_on_malloc=1");
}

EnvironmentOverride::EnvironmentOverride(const char *name, const QString &value)
    : m_name(name)
    , m_wasSet(qEnvironmentVariableIsSet(name))
    , m_old(qgetenv(name))
{
    qputenv(name, QFile::encodeName(value));
}

EnvironmentOverride::~EnvironmentOverride()
{
    if (m_wasSet)
        qputenv(m_name, m_old);
    else
        qunsetenv(m_name);
}

} // namespace orvel::test
