// ProgressWindow: the small window that shows how far a long run of thumbnails has come.
#include "app/desktop/ProgressWindow.h"

#include "app/desktop/LocalizedText.h"
#include "app/engine/ThumbnailJob.h"
#include "support/NumberFormatter.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDirIterator>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace orvel {

ProgressWindow::ProgressWindow(QWidget *parent)
    : QWidget(parent, Qt::Window)
{
    setWindowTitle(localizedText(QStringLiteral("Making Thumbnails")));
    setObjectName(QStringLiteral("progressWindow"));
    m_endTimer.setSingleShot(true);
    m_endTimer.setInterval(0);
    connect(&m_endTimer, &QTimer::timeout, this, &ProgressWindow::endRun);
    // The event loop runs while a job works, so the window can come in the middle of a file.
    m_showTimer.setSingleShot(true);
    connect(&m_showTimer, &QTimer::timeout, this, [this] {
        show();
        update(false);
    });
    auto *layout = new QVBoxLayout(this);
    m_countLabel = new QLabel(this);
    m_bar = new QProgressBar(this);
    m_bar->setTextVisible(false);
    m_fileLabel = new QLabel(this);
    m_fileLabel->setTextFormat(Qt::PlainText);
    m_fileLabel->setMinimumWidth(360);
    layout->addWidget(m_countLabel);
    layout->addWidget(m_bar);
    layout->addWidget(m_fileLabel);
    auto *buttons = new QDialogButtonBox(this);
    m_cancelButton
        = buttons->addButton(localizedText(QStringLiteral("Cancel")), QDialogButtonBox::RejectRole);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    m_cancelButton->setToolTip(localizedText(QStringLiteral(
        "Stops the file being made (nothing of it is written) and leaves the files not yet started alone")));
    connect(m_cancelButton, &QPushButton::clicked, this, &ProgressWindow::requestCancel);
    layout->addWidget(buttons);
}

void ProgressWindow::requestCancel()
{
    if (!m_clock.isValid() || !m_cancelButton->isEnabled())
        return;
    m_cancelButton->setEnabled(false);
    m_fileLabel->setText(localizedText(QStringLiteral("Cancelling…")));
    Q_EMIT cancelRequested();
}

void ProgressWindow::closeEvent(QCloseEvent *event)
{
    // Closing the window during a run stops the run; the window goes once the run has ended.
    if (m_clock.isValid()) {
        event->ignore();
        requestCancel();
        return;
    }
    QWidget::closeEvent(event);
}

void ProgressWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        requestCancel();
        return;
    }
    QWidget::keyPressEvent(event);
}

void ProgressWindow::addExpectedFiles(qint64 count)
{
    startRunIfIdle();
    m_expected = std::max(m_expected, m_started) + std::max<qint64>(count, 0);
}

QString ProgressWindow::countText() const
{
    return localizedText(QStringLiteral("%1 of %2 files")).arg(m_done).arg(filesTotal());
}

void ProgressWindow::fileStarted(const QString &path)
{
    startRunIfIdle();
    ++m_started;
    m_current = path;
    update(true);
}

void ProgressWindow::fileFinished(const QString &path, bool ok)
{
    ++m_done;
    if (ok) // (nothing for an icon: no output path, no size)
        m_bytesWritten += std::max<qint64>(QFileInfo(ThumbnailJob::outputPathForFile(path)).size(), 0);
    update(false);
}

void ProgressWindow::runFinished() { m_endTimer.start(); }

void ProgressWindow::endRun()
{
    hide();
    m_showTimer.stop();
    m_clock.invalidate();
    m_expected = m_started = m_done = m_bytesWritten = 0;
    m_current.clear();
    m_cancelButton->setEnabled(true);
}

void ProgressWindow::startRunIfIdle()
{
    m_endTimer.stop();
    if (!m_clock.isValid()) {
        m_clock.start();
        m_showTimer.start(ShowDelay);
    }
}

void ProgressWindow::update(bool repaint)
{
    if (!isVisible() && m_clock.isValid() && m_clock.elapsed() >= ShowDelay)
        show();
    if (!isVisible())
        return;
    m_countLabel->setText(m_bytesWritten > 0
            ? localizedText(QStringLiteral("%1, %2 written"))
                  .arg(countText(), NumberFormatter::stringForSize(m_bytesWritten))
            : countText());
    m_bar->setRange(0, int(std::min<qint64>(filesTotal(), INT_MAX)));
    m_bar->setValue(int(std::min<qint64>(m_done, INT_MAX)));
    if (m_cancelButton->isEnabled())
        m_fileLabel->setText(QFileInfo(m_current).fileName());
    m_fileLabel->setToolTip(m_current);
    // The job blocks the event loop while it runs; let the window draw itself first.
    if (repaint)
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

qint64 countFiles(const QStringList &paths, qint64 limit)
{
    qint64 count = 0;
    for (const QString &path : paths) {
        const QFileInfo info(path);
        if (!info.isDir()) {
            ++count;
        } else {
            QDirIterator it(path, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                QDirIterator::Subdirectories);
            while (count < limit && it.hasNext()) {
                it.next();
                ++count;
            }
        }
        if (count >= limit)
            return limit;
    }
    return count;
}

} // namespace orvel
