// Progress: the one-line progress bar of a batch on a terminal, and the batch's closing summary.
#pragma once

#include <QElapsedTimer>
#include <QString>

#include <cstdio>

namespace orvel {

/// Writes text to stream in the local encoding and flushes it.
void writeText(FILE *stream, const QString &text);

/// Shows how far a batch has come on one line of standard error, redrawn in place, when that is a
/// terminal; prints the batch's other lines around it so the bar never tears them.
class Progress
{
public:
    struct Status
    {
        qint64 done = 0;
        /// The files of the batch: counted ahead when totalKnown, else those found so far.
        qint64 total = 0;
        bool totalKnown = false;
        /// The file last handed to the job.
        QString currentFile;
        double elapsedSeconds = 0;
    };

    /// The progress line for status in at most columns characters, for example
    /// "12/40 30% [=====>         ] 3.2 files/s 0:09 left  IMG_0042.jpg" with a known total, else
    /// "12 done 3.2 files/s  IMG_0042.jpg"; the file's name is shortened in the middle, then left
    /// out, and the bar left out on narrow terminals.
    [[nodiscard]] static QString formatLine(const Status &status, int columns);

    /// text shortened to columns characters by replacing its middle with "...".
    [[nodiscard]] static QString elideMiddle(const QString &text, int columns);

    /// The closing line of a batch, for example "12 thumbnails made, 2 skipped, 1 failed, 3.2 s,
    /// 1.4 MB written" (skipped files only when there are some, the size of the thumbnails written,
    /// in the user's number format, only when it is not 0).
    [[nodiscard]] static QString formatSummary(qint64 thumbnails, qint64 icons, qint64 skipped, qint64 failed,
        double seconds, qint64 bytesWritten = 0);

    /// A bar is drawn only when enabled and standard error is a terminal.
    explicit Progress(bool enabled);
    ~Progress();

    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// Whether the bar is drawn.
    bool isShown() const { return m_shown; }

    /// The number of files the batch will hand to the job, counted ahead of the work.
    void setTotal(qint64 total);
    /// A file was found and handed to the job.
    void fileStarted(const QString &path);
    /// A file's job answered.
    void fileFinished();

    /// Prints line and a line break on stream, with the bar taken away and drawn again after it.
    void printLine(FILE *stream, const QString &line);

    /// Takes the bar away for good.
    void finish();

    double elapsedSeconds() const;

private:
    void redraw(bool force);
    void clear();

    bool m_shown = false;
    bool m_drawn = false;
    Status m_status;
    qint64 m_started = 0;
    QElapsedTimer m_clock;
    qint64 m_lastDraw = -1;
};

} // namespace orvel
