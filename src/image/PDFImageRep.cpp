// PDFImageRep and EPSImageRep: vector documents rendered through Poppler, PostScript through Ghostscript.
#include "image/PDFImageRep.h"

#include "image/GraphicsContext.h"
#include "support/Failure.h"
#include "support/SpawnAttributes.h"

#include <QFile>
#include <QPainter>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <poppler-qt6.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace orvel {

namespace {

void quietPoppler()
{
    // Poppler reports every oddity of a damaged document on standard error; the job answers NO instead.
    static const bool once = [] {
        Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, QVariant());
        return true;
    }();
    (void)once;
}

// A page rendered larger than this many pixels is refused (a hostile page size must not exhaust memory).
constexpr double MaxRenderPixels = 268435456.0; // 2^28

std::atomic<int> ghostscriptTimeLimit { 30 };

} // namespace

// --- PDFImageRep ---------------------------------------------------------------------------------

std::shared_ptr<PDFImageRep> PDFImageRep::imageRepWithData(const QByteArray &data, QString *error)
{
    quietPoppler();
    auto fail = [error](const QString &why) { return failure<std::shared_ptr<PDFImageRep>>(error, why); };
    if (data.isEmpty())
        return fail(QStringLiteral("empty document"));
    std::unique_ptr<Poppler::Document> document = Poppler::Document::loadFromData(data);
    if (!document)
        return fail(QStringLiteral("not a readable PDF document"));
    if (document->isLocked())
        return fail(QStringLiteral("the PDF document is encrypted"));
    if (document->numPages() < 1)
        return fail(QStringLiteral("the PDF document has no page"));
    std::unique_ptr<Poppler::Page> page = document->page(0);
    if (!page)
        return fail(QStringLiteral("the first page of the PDF document cannot be read"));
    const QSizeF size = page->pageSizeF();
    if (!(size.width() > 0) || !(size.height() > 0))
        return fail(QStringLiteral("the first page of the PDF document is empty"));
    document->setRenderHint(Poppler::Document::Antialiasing, true);
    document->setRenderHint(Poppler::Document::TextAntialiasing, true);
    document->setPaperColor(Qt::white);
    std::shared_ptr<PDFImageRep> rep(new PDFImageRep);
    rep->m_data = data;
    rep->m_document = std::move(document);
    rep->setSize(size);
    return rep;
}

PDFImageRep::~PDFImageRep() = default;

int PDFImageRep::pageCount() const
{
    std::lock_guard lock(m_mutex);
    return m_document ? m_document->numPages() : 0;
}

QImage PDFImageRep::renderPage(int w, int h) const
{
    if (w <= 0 || h <= 0 || double(w) * h > MaxRenderPixels)
        return {};
    std::lock_guard lock(m_mutex);
    std::unique_ptr<Poppler::Page> page = m_document ? m_document->page(0) : nullptr;
    if (!page)
        return {};
    const QSizeF points = size();
    const double xres = 72.0 * w / points.width();
    const double yres = 72.0 * h / points.height();
    QImage image = page->renderToImage(xres, yres, 0, 0, w, h);
    if (image.isNull())
        return {};
    if (image.width() != w || image.height() != h)
        image = image.scaled(w, h, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image;
}

bool PDFImageRep::drawInRect(const QRectF &rect)
{
    GraphicsContext *context = GraphicsContext::current();
    if (!context || !context->painter() || !context->painter()->isActive())
        return false;
    QPainter *painter = context->painter();
    const QTransform transform = painter->transform();
    const QRectF device = transform.mapRect(rect);
    const int dw = qMax(1, qRound(device.width()));
    const int dh = qMax(1, qRound(device.height()));
    // Rendered at the destination's own resolution, then placed pixel for pixel where possible.
    const QImage page = renderPage(dw, dh);
    if (page.isNull())
        return false;
    if (transform.type() <= QTransform::TxScale && transform.m11() > 0 && transform.m22() > 0) {
        painter->save();
        painter->resetTransform();
        painter->drawImage(QRectF(device.topLeft(), QSizeF(dw, dh)), page);
        painter->restore();
    } else {
        painter->drawImage(rect, page);
    }
    return true;
}

// --- EPSImageRep ---------------------------------------------------------------------------------

int EPSImageRep::conversionTimeLimit() { return ghostscriptTimeLimit.load(); }

void EPSImageRep::setConversionTimeLimit(int seconds) { ghostscriptTimeLimit.store(qMax(1, seconds)); }

std::shared_ptr<EPSImageRep> EPSImageRep::imageRepWithData(const QByteArray &data, QString *error)
{
    // PostScript starts with "%!"; DOS EPS files with a binary header C5 D0 D3 C6.
    const bool dosEps = data.startsWith("\xC5\xD0\xD3\xC6");
    if (!data.startsWith("%!") && !dosEps)
        return nullptr;
    std::shared_ptr<EPSImageRep> rep(new EPSImageRep);
    rep->m_data = data;
    static const QRegularExpression boxLine(
        QStringLiteral("%%BoundingBox:\\s*(-?[0-9.]+)\\s+(-?[0-9.]+)\\s+(-?[0-9.]+)\\s+(-?[0-9.]+)"));
    const QString head = QString::fromLatin1(data.left(65536));
    const QRegularExpressionMatch m = boxLine.match(head);
    if (m.hasMatch()) {
        const double llx = m.captured(1).toDouble(), lly = m.captured(2).toDouble();
        const double urx = m.captured(3).toDouble(), ury = m.captured(4).toDouble();
        if (urx > llx && ury > lly)
            rep->m_boundingBox = QRectF(llx, lly, urx - llx, ury - lly);
    }
    if (!rep->m_boundingBox.isEmpty()) {
        rep->setSize(rep->m_boundingBox.size());
    } else if (!rep->initializePDFImageRep()) {
        // No declared size and no page: nothing to show.
        return failure<std::shared_ptr<EPSImageRep>>(error, rep->m_error);
    }
    return rep;
}

EPSImageRep::~EPSImageRep() = default;

std::shared_ptr<PDFImageRep> EPSImageRep::PDFImageRep() const { return m_pdf; }

std::shared_ptr<PDFImageRep> EPSImageRep::initializePDFImageRep()
{
    if (m_pdf || m_triedConversion)
        return m_pdf;
    m_triedConversion = true;
    const QByteArray pdf
        = convertPostScriptToPDF(m_data, !m_boundingBox.isEmpty(), conversionTimeLimit(), &m_error);
    if (pdf.isEmpty())
        return nullptr;
    m_pdf = orvel::PDFImageRep::imageRepWithData(pdf, &m_error);
    if (m_pdf && size().isEmpty())
        setSize(m_pdf->size());
    return m_pdf;
}

QByteArray EPSImageRep::PDFRepresentation() const
{
    return m_pdf ? m_pdf->PDFRepresentation() : QByteArray();
}

bool EPSImageRep::drawInRect(const QRectF &rect)
{
    GraphicsContext *context = GraphicsContext::current();
    QPainter *painter = context ? context->painter() : nullptr;
    if (!m_pdf && !m_triedConversion && !m_boundingBox.isEmpty() && painter && painter->isActive()) {
        const QTransform transform = painter->transform();
        if (transform.type() <= QTransform::TxScale && transform.m11() > 0 && transform.m22() > 0) {
            // Drawn at the destination's own pixel size, Ghostscript straight to pixels: cheaper
            // than the PDF form and its rendering, which are made only when asked for.
            const QRectF device = transform.mapRect(rect);
            const QSize pixels(qMax(1, qRound(device.width())), qMax(1, qRound(device.height())));
            const QImage page
                = renderPostScriptPage(m_data, m_boundingBox, pixels, conversionTimeLimit(), &m_error);
            if (page.isNull()) {
                m_triedConversion = true; // the PDF form would fail the same way: not tried again
                return false;
            }
            painter->save();
            painter->resetTransform();
            painter->drawImage(QRectF(device.topLeft(), QSizeF(pixels)), page);
            painter->restore();
            return true;
        }
    }
    const std::shared_ptr<orvel::PDFImageRep> pdf = initializePDFImageRep();
    return pdf && pdf->drawInRect(rect);
}

namespace {

/// What Ghostscript prints when it finishes a page (see convertPostScriptToPDF).
constexpr char PageDoneMarker[] = "%orvel-page-done";

/// The first 64 KiB of the file at path.
QByteArray readText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(64 * 1024) : QByteArray();
}

/// Whether data is a PDF that was finished (its end marker written) and has a page to show.
bool isCompletePDF(const QByteArray &data)
{
    if (!data.startsWith("%PDF") || !data.trimmed().endsWith("%%EOF"))
        return false;
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::loadFromData(data);
    return document && !document->isLocked() && document->numPages() >= 1;
}

/// ": " and the first error line of Ghostscript's messages in the file at path; empty when there is none.
QString firstErrorLine(const QString &path)
{
    const QList<QByteArray> lines = readText(path).split('\n');
    QByteArray chosen;
    for (const QByteArray &line : lines) {
        const QByteArray text = line.trimmed();
        if (text == PageDoneMarker)
            continue;
        if (text.startsWith("Error:") || (chosen.isEmpty() && !text.isEmpty()))
            chosen = text;
        if (text.startsWith("Error:"))
            break;
    }
    return chosen.isEmpty() ? QString() : QStringLiteral(": ") + QString::fromLocal8Bit(chosen.left(200));
}

} // namespace

namespace {

/// Runs Ghostscript on page 1 of postScript with the output device arguments given (page 1 only,
/// the page cropped to the bounding box when encapsulated, pageSetup added to the page device's
/// settings) and answers what it wrote; empty (with a reason) on failure or time-out. An error after page 1
/// still answers the output when complete() accepts it and Ghostscript said it finished the page.
enum class ProgramRun { NotStarted, TimedOut, Failed, Succeeded };

/// Waits up to timeout for the child pid to end and reaps it; false when it is still running.
/// Sleeps in the kernel on a process descriptor where there is one, else polls.
bool reapWithin(pid_t pid, std::chrono::milliseconds timeout, int *status)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    const int pidfd = int(::syscall(SYS_pidfd_open, pid, 0));
    auto wait = std::chrono::milliseconds(1);
    for (;;) {
        const pid_t reaped = ::waitpid(pid, status, WNOHANG);
        if (reaped == pid || (reaped < 0 && errno != EINTR)) {
            if (pidfd >= 0)
                ::close(pidfd);
            return true;
        }
        const auto left
            = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            if (pidfd >= 0)
                ::close(pidfd);
            return false;
        }
        if (pidfd >= 0) {
            pollfd fd = { pidfd, POLLIN, 0 };
            ::poll(&fd, 1, int(std::min<long long>(left.count(), 1000)));
        } else {
            std::this_thread::sleep_for(std::min(wait, left));
            wait = std::min(wait * 2, std::chrono::milliseconds(20));
        }
    }
}

/// Runs program with arguments, its standard input /dev/null, its standard output and error into
/// the file at messages, for at most timeLimitSeconds; killed and reaped past that. The program
/// stays in this process's group, so whoever ends the group ends it too. Spawned rather than
/// forked: a fork would copy this large process's page tables for every document.
ProgramRun runProgram(
    const QString &program, const QStringList &arguments, const QString &messages, int timeLimitSeconds)
{
    std::vector<QByteArray> strings { QFile::encodeName(program) };
    for (const QString &argument : arguments)
        strings.push_back(QFile::encodeName(argument));
    std::vector<char *> argv;
    for (QByteArray &string : strings)
        argv.push_back(string.data());
    argv.push_back(nullptr);
    const QByteArray messagesPath = QFile::encodeName(messages);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(
        &actions, STDOUT_FILENO, messagesPath.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    const SpawnAttributes attributes;
    pid_t pid = -1;
    const int spawned = ::posix_spawn(&pid, argv.front(), &actions, attributes.get(), argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        return ProgramRun::NotStarted;

    int status = -1; // a failure, should the child have been reaped elsewhere
    if (!reapWithin(pid, std::chrono::seconds(timeLimitSeconds), &status)) {
        ::kill(pid, SIGKILL);
        while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) { }
        return ProgramRun::TimedOut;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? ProgramRun::Succeeded : ProgramRun::Failed;
}

QByteArray runGhostscript(const QByteArray &postScript, bool encapsulated, int timeLimitSeconds,
    const QStringList &device, const QString &pageSetup, bool (*complete)(const QByteArray &),
    const QString &emptyText, QString *error)
{
    auto fail = [error](const QString &why) { return failure<QByteArray>(error, why); };
    const QString gs = QStandardPaths::findExecutable(QStringLiteral("gs"));
    if (gs.isEmpty())
        return fail(QStringLiteral("Ghostscript (gs) is not installed"));
    QTemporaryDir dir;
    if (!dir.isValid())
        return fail(QStringLiteral("no temporary folder"));
    const QString in = dir.filePath(QStringLiteral("in.ps"));
    const QString out = dir.filePath(QStringLiteral("out"));
    {
        QFile file(in);
        if (!file.open(QIODevice::WriteOnly) || file.write(postScript) != postScript.size())
            return fail(QStringLiteral("cannot write a temporary file"));
    }
    QStringList args = { QStringLiteral("-q"), QStringLiteral("-dSAFER"), QStringLiteral("-dBATCH"),
        QStringLiteral("-dNOPAUSE"), QStringLiteral("-dNOINTERPOLATE") };
    args << device;
    args << QStringLiteral("-dFirstPage=1") << QStringLiteral("-dLastPage=1")
         << QStringLiteral("-sOutputFile=") + out;
    if (encapsulated)
        args << QStringLiteral("-dEPSCrop");
    // Each finished page says so on standard output, so that an error after page 1 can be told
    // from one before it.
    args << QStringLiteral("-c")
         << QStringLiteral(
                "<< /EndPage { exch pop dup 0 eq { (%1\\n) print flush } if 2 ne } %2 >> setpagedevice")
                .arg(QLatin1StringView(PageDoneMarker), pageSetup);
    args << QStringLiteral("-f") << in;
    // Ghostscript writes its errors to standard output, and some to standard error.
    const QString messages = dir.filePath(QStringLiteral("messages.txt"));
    const ProgramRun run = runProgram(gs, args, messages, timeLimitSeconds);
    if (run == ProgramRun::NotStarted)
        return fail(QStringLiteral("Ghostscript could not be started"));
    if (run == ProgramRun::TimedOut)
        return fail(QStringLiteral("PostScript conversion timed out after %1 s").arg(timeLimitSeconds));
    QFile result(out);
    const QByteArray output = result.open(QIODevice::ReadOnly) ? result.readAll() : QByteArray();
    if (run != ProgramRun::Succeeded) {
        // Ghostscript reports errors that come after the first page too: a TeX document's links to
        // later pages, for one, which it cannot resolve when only page 1 is converted. A finished
        // page is all the thumbnail needs.
        if (!complete(output) || !readText(messages).contains(PageDoneMarker))
            return fail(QStringLiteral("Ghostscript could not convert the PostScript document")
                + firstErrorLine(messages));
        return output;
    }
    if (output.isEmpty())
        return fail(emptyText);
    return output;
}

bool isPicture(const QByteArray &data) { return !QImage::fromData(data, "PPM").isNull(); }

} // namespace

QByteArray convertPostScriptToPDF(
    const QByteArray &postScript, bool encapsulated, int timeLimitSeconds, QString *error)
{
    return runGhostscript(postScript, encapsulated, timeLimitSeconds, { QStringLiteral("-sDEVICE=pdfwrite") },
        QString(), isCompletePDF, QStringLiteral("Ghostscript made an empty PDF"), error);
}

QImage renderPostScriptPage(
    const QByteArray &postScript, QRectF boundingBox, QSize pixels, int timeLimitSeconds, QString *error)
{
    // Drawn at four times the size without Ghostscript's own anti-aliasing, then each 4 × 4 block
    // averaged: the same 16 samples a pixel as its alpha bits, at about half their cost.
    constexpr int Supersampling = 4;
    const QSize drawn = pixels * Supersampling;
    if (pixels.isEmpty() || boundingBox.isEmpty() || double(drawn.width()) * drawn.height() > MaxRenderPixels)
        return failure<QImage>(error,
            QStringLiteral("no page of %1 × %2 pixels can be drawn")
                .arg(pixels.width())
                .arg(pixels.height()));
    const double xres = 72.0 * drawn.width() / boundingBox.width();
    const double yres = 72.0 * drawn.height() / boundingBox.height();
    // The page is the bounding box, whatever size the document asks for, and Ghostscript stops
    // once page 1 is out rather than running the rest of the document for nothing.
    const QString pageSetup = QStringLiteral("/Install { %1 %2 translate } /BeginPage { 1 ge { quit } if }")
                                  .arg(-boundingBox.left(), 0, 'f', 4)
                                  .arg(-boundingBox.top(), 0, 'f', 4);
    const QByteArray ppm = runGhostscript(postScript, false, timeLimitSeconds,
        { QStringLiteral("-sDEVICE=ppmraw"),
            QStringLiteral("-r%1x%2").arg(xres, 0, 'f', 4).arg(yres, 0, 'f', 4),
            QStringLiteral("-g%1x%2").arg(drawn.width()).arg(drawn.height()),
            QStringLiteral("-dFIXEDMEDIA") },
        pageSetup, isPicture, QStringLiteral("Ghostscript drew nothing"), error);
    const QImage image = QImage::fromData(ppm, "PPM");
    if (image.isNull())
        return ppm.isEmpty() ? QImage() : failure<QImage>(error, QStringLiteral("Ghostscript drew nothing"));
    return image.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace orvel
