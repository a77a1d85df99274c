// ProgressWindow: the small window that shows how far a long run of thumbnails has come.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace orvel {

/// Follows the files of a run (from the first file until processing stops) and appears once the
/// run has taken longer than showDelay, showing the files done of the total and the current
/// file; it disappears when the run ends. Its Cancel button (or Escape, or closing the window)
/// asks for the run to stop.
class ProgressWindow : public QWidget
{
    Q_OBJECT

public:
    /// The time a run takes before the window appears, in milliseconds.
    static constexpr int ShowDelay = 1000;

    explicit ProgressWindow(QWidget *parent = nullptr);

    /// Files that the run is expected to hold besides those already counted (a count made
    /// before the walk; the total never falls below the files started).
    void addExpectedFiles(qint64 count);

    /// The run's counts.
    qint64 filesDone() const { return m_done; }
    qint64 filesTotal() const { return std::max(m_expected, m_started); }
    /// The text of the count line, for example "3 of 10 files".
    [[nodiscard]] QString countText() const;
    /// The size of the thumbnails written in this run, as the stored settings name them.
    qint64 bytesWritten() const { return m_bytesWritten; }
    [[nodiscard]] QString currentFile() const { return m_current; }
    /// The button that asks for the run to stop.
    QPushButton *cancelButton() const { return m_cancelButton; }

Q_SIGNALS:
    /// The user asked for the run to stop (once per run).
    void cancelRequested();

public Q_SLOTS:
    void fileStarted(const QString &path);
    void fileFinished(const QString &path, bool ok);
    /// Processing stopped. Unless another file follows before the event loop runs again, the run
    /// has ended: the window goes and the counts start again.
    void runFinished();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void requestCancel();
    void endRun();
    void update(bool repaint);
    void startRunIfIdle();

    QLabel *m_countLabel = nullptr;
    QLabel *m_fileLabel = nullptr;
    QProgressBar *m_bar = nullptr;
    QPushButton *m_cancelButton = nullptr;
    QElapsedTimer m_clock;
    QTimer m_endTimer;
    QTimer m_showTimer;
    qint64 m_expected = 0;
    qint64 m_started = 0;
    qint64 m_done = 0;
    qint64 m_bytesWritten = 0;
    QString m_current;
};

/// The number of files under paths as the walk would meet them (folders searched through, links
/// to files counted), at most limit; it follows no link to a folder, so it always ends.
qint64 countFiles(const QStringList &paths, qint64 limit = 1000000);

} // namespace orvel
