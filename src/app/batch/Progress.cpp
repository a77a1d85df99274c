// Progress: the one-line progress bar of a batch on a terminal, and the batch's closing summary.
#include "app/batch/Progress.h"

#include "app/shared/LocalizedText.h"
#include "support/NumberFormatter.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace orvel {

namespace {

// Redraw at most this often; a batch of small files finishes hundreds per second.
constexpr qint64 RedrawIntervalMs = 100;

int terminalColumns(int fd)
{
    winsize size {};
    if (::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return 80;
}

QString rateText(qint64 done, double seconds)
{
    const double rate = seconds > 0 ? double(done) / seconds : 0.0;
    return localizedText(QStringLiteral("%1 files/s")).arg(QLocale().toString(rate, 'f', rate < 10 ? 1 : 0));
}

} // namespace

void writeText(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

QString Progress::elideMiddle(const QString &text, int columns)
{
    if (text.size() <= columns)
        return text;
    static const QString dots = QStringLiteral("...");
    if (columns <= dots.size())
        return dots.left(std::max(0, columns));
    const int kept = columns - int(dots.size());
    // Keep a little more of the end, where the extension and the number of a file usually are.
    const int head = kept / 2;
    const int tail = kept - head;
    return text.left(head) + dots + text.right(tail);
}

QString Progress::formatLine(const Status &status, int columns)
{
    const qint64 total = std::max(status.total, status.done);
    const QString rate = rateText(status.done, status.elapsedSeconds);
    // Without a total counted ahead the bar would only ever look nearly full: a count instead.
    QString count = status.totalKnown ? QStringLiteral("%1/%2").arg(status.done).arg(total)
                                      : localizedText(QStringLiteral("%1 done")).arg(status.done);
    if (status.totalKnown)
        count += QStringLiteral(" %1%").arg(total > 0 ? 100 * status.done / total : 100);
    QString left;
    const QString leftText = localizedText(QStringLiteral("%1 left"));
    if (status.totalKnown && status.done > 0 && status.done < total && status.elapsedSeconds > 0) {
        const qint64 seconds
            = qint64(status.elapsedSeconds * double(total - status.done) / double(status.done));
        const QString time = seconds >= 3600
            ? QStringLiteral("%1:%2:%3")
                  .arg(seconds / 3600)
                  .arg(seconds / 60 % 60, 2, 10, QChar(u'0'))
                  .arg(seconds % 60, 2, 10, QChar(u'0'))
            : QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QChar(u'0'));
        left = u' ' + leftText.arg(time);
    }

    // Never use the last column: writing there makes some terminals wrap the line.
    const int usable = columns - 1;
    QString line = count;
    constexpr int BarWidth = 20;
    if (status.totalKnown && usable >= int(count.size() + rate.size() + left.size()) + BarWidth + 4 + 16) {
        const int filled = total > 0 ? int(BarWidth * status.done / total) : 0;
        QString bar(BarWidth, u' ');
        for (int i = 0; i < filled; ++i)
            bar[i] = u'=';
        if (filled < BarWidth && status.done < total)
            bar[filled] = u'>';
        line += QStringLiteral(" [") + bar + u']';
    }
    if (usable >= int(line.size() + 1 + rate.size()))
        line += u' ' + rate;
    if (usable >= int(line.size() + left.size()))
        line += left;

    QString name = status.currentFile.mid(status.currentFile.lastIndexOf(u'/') + 1);
    const int room = usable - int(line.size()) - 2;
    if (!name.isEmpty() && room >= 8)
        line += QStringLiteral("  ") + elideMiddle(name, room);
    return line.left(std::max(0, usable));
}

QString Progress::formatSummary(
    qint64 thumbnails, qint64 icons, qint64 skipped, qint64 failed, double seconds, qint64 bytesWritten)
{
    QStringList parts;
    if (thumbnails > 0 || icons == 0)
        parts << (thumbnails == 1 ? localizedText(QStringLiteral("1 thumbnail made"))
                                  : localizedText(QStringLiteral("%1 thumbnails made")).arg(thumbnails));
    if (icons > 0)
        parts << (icons == 1 ? localizedText(QStringLiteral("1 icon set"))
                             : localizedText(QStringLiteral("%1 icons set")).arg(icons));
    if (skipped > 0)
        parts << localizedText(QStringLiteral("%1 skipped")).arg(skipped);
    parts << localizedText(QStringLiteral("%1 failed")).arg(failed);
    parts << QStringLiteral("%1 s").arg(QLocale().toString(seconds, 'f', 1)); // the user's decimal sign
    if (bytesWritten > 0)
        parts << localizedText(QStringLiteral("%1 written"))
                     .arg(NumberFormatter::stringForSize(quint64(bytesWritten)));
    return parts.join(QStringLiteral(", "));
}

Progress::Progress(bool enabled)
    : m_shown(enabled && ::isatty(STDERR_FILENO))
{
    m_clock.start();
}

Progress::~Progress() { finish(); }

void Progress::setTotal(qint64 total)
{
    m_status.total = total;
    m_status.totalKnown = true;
}

void Progress::fileStarted(const QString &path)
{
    // A file that the count ahead could not see (made by an earlier job) still counts.
    ++m_started;
    m_status.total = std::max(m_status.total, m_started);
    m_status.currentFile = path;
    redraw(false);
}

void Progress::fileFinished()
{
    ++m_status.done;
    redraw(m_status.done == m_status.total);
}

void Progress::printLine(FILE *stream, const QString &line)
{
    clear();
    writeText(stream, line + u'\n');
    redraw(true);
}

void Progress::finish()
{
    clear();
    m_shown = false;
}

double Progress::elapsedSeconds() const { return double(m_clock.nsecsElapsed()) / 1e9; }

void Progress::redraw(bool force)
{
    if (!m_shown)
        return;
    const qint64 now = m_clock.elapsed();
    if (!force && m_lastDraw >= 0 && now - m_lastDraw < RedrawIntervalMs)
        return;
    m_lastDraw = now;
    m_status.elapsedSeconds = elapsedSeconds();
    // \r goes back to the start of the line and ESC [K clears the rest of the line.
    writeText(
        stderr, u'\r' + formatLine(m_status, terminalColumns(STDERR_FILENO)) + QStringLiteral("\x1b[K"));
    m_drawn = true;
}

void Progress::clear()
{
    if (!m_drawn)
        return;
    writeText(stderr, QStringLiteral("\r\x1b[K"));
    m_drawn = false;
}

} // namespace orvel
