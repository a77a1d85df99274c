// DesktopApplication: the desktop program around the delegate: launch order, hand-over, menus, progress.
#include "app/desktop/DesktopApplication.h"

#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/HelpMenu.h"
#include "app/desktop/IsolatedJob.h"
#include "app/desktop/LocalizedText.h"
#include "app/desktop/OpenPanel.h"
#include "app/desktop/PreferencesPanel.h"
#include "app/desktop/ProgressWindow.h"
#include "app/desktop/SingleInstance.h"
#include "app/shared/ThumbnailSettings.h"
#include "support/Log.h"
#include "support/UserDefaults.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QStyle>
#include <QSystemTrayIcon>
#include <QTimer>

namespace orvel {

DesktopApplication::DesktopApplication(const Options &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_panel(std::make_unique<PreferencesPanel>())
    , m_progress(std::make_unique<ProgressWindow>())
    , m_job(std::make_unique<IsolatedJob>(options.workerExecutable, options.timeoutSeconds))
    , m_delegate(new ApplicationDelegate(m_panel.get(), this))
    , m_instance(new SingleInstance(
          options.applicationId.isEmpty() ? SingleInstance::defaultApplicationId() : options.applicationId,
          this))
    , m_notifier(std::make_unique<DesktopNotifier>(QDBusConnection::sessionBus()))
{
    m_delegate->setFileProcessor([this](const QString &path) {
        QString reason;
        bool skipped = false;
        const bool ok = m_job->processFile(path, &reason, &skipped);
        if (ok) {
            ++m_results.made;
        } else {
            logMessage(QStringLiteral("%1: %2").arg(path, reason));
            // A file of another kind met in a folder is passed over, not a failure to report;
            // one the user named is. The file a cancel cut short is not reported either.
            if (!(skipped && m_delegate->isFileInFolder()) && !m_delegate->isCancelled())
                m_results.failures.append({ path, reason });
        }
        return ok;
    });
    connect(m_delegate, &ApplicationDelegate::pathFailed, this,
        [this](const QString &path, const QString &reason) {
            m_results.failures.append({ path, reason });
        });
    m_delegate->setQuitHandler([this] { quitWhenReported(); });
    connect(m_delegate, &ApplicationDelegate::fileStarted, m_progress.get(), &ProgressWindow::fileStarted);
    connect(m_delegate, &ApplicationDelegate::fileFinished, m_progress.get(), &ProgressWindow::fileFinished);
    connect(
        m_delegate, &ApplicationDelegate::processingFinished, m_progress.get(), &ProgressWindow::runFinished);

    // Requests from other launches arrive from the event loop, never inside a delivery.
    connect(
        m_instance, &SingleInstance::openRequested, this, &DesktopApplication::open, Qt::QueuedConnection);
    connect(m_instance, &SingleInstance::activateRequested, m_delegate,
        &ApplicationDelegate::applicationOpenUntitledFile, Qt::QueuedConnection);

    connect(m_panel.get(), &PreferencesPanel::filesDropped, this, &DesktopApplication::open,
        Qt::QueuedConnection);
    connect(m_panel->openAction(), &QAction::triggered, this, &DesktopApplication::chooseFiles);
    connect(m_panel->closeAction(), &QAction::triggered, m_panel.get(), &QWidget::close);
    connect(m_panel->quitAction(), &QAction::triggered, this, &DesktopApplication::quit);
    connect(m_progress.get(), &ProgressWindow::cancelRequested, this, &DesktopApplication::cancel);
    connect(m_panel->aboutAction(), &QAction::triggered, this, &DesktopApplication::showAbout);
    connect(m_panel.get(), &PreferencesPanel::applied, this, &DesktopApplication::updateStatusIcon);
    addHelpActions(m_panel->findChild<QMenu *>(QStringLiteral("menuHelp")), m_delegate);
    m_panel->quitAction()->setShortcuts(QKeySequence::Quit);
    m_panel->openAction()->setShortcuts(QKeySequence::Open);
    m_panel->closeAction()->setShortcuts(QKeySequence::Close);
}

DesktopApplication::~DesktopApplication() = default;

bool DesktopApplication::listen() { return m_instance->listen(); }

void DesktopApplication::launch(const QStringList &paths)
{
    m_delegate->applicationWillFinishLaunching();
    open(paths);
    m_delegate->applicationDidFinishLaunching();
    updateStatusIcon();
}

void DesktopApplication::panelClosed()
{
    // With an icon in the status area the program lives on there; without, closing the panel
    // would leave no way back to it.
    if (m_statusIcon && m_statusIcon->isVisible())
        return;
    m_delegate->terminate();
}

QSystemTrayIcon *DesktopApplication::statusIcon() const { return m_statusIcon.get(); }

void DesktopApplication::updateStatusIcon()
{
    if (ThumbnailSettings::read(UserDefaults::standard()).quitWhenDone) {
        m_statusIcon.reset();
        return;
    }
    if (!m_statusIcon) {
        QIcon icon = QApplication::windowIcon();
        if (icon.isNull())
            icon = QApplication::style()->standardIcon(QStyle::SP_DesktopIcon);
        m_statusIcon = std::make_unique<QSystemTrayIcon>(icon);
        m_statusIcon->setToolTip(QApplication::applicationDisplayName());
        auto *menu = new QMenu(m_panel.get());
        menu->setObjectName(QStringLiteral("statusMenu"));
        QAction *show = menu->addAction(localizedText(QStringLiteral("Show Preferences")));
        QAction *choose = menu->addAction(localizedText(QStringLiteral("Make Thumbnails…")));
        menu->addSeparator();
        QAction *quitAction = menu->addAction(localizedText(QStringLiteral("Quit")));
        connect(show, &QAction::triggered, m_panel.get(), &PreferencesPanel::makeKeyAndOrderFront);
        connect(choose, &QAction::triggered, this, &DesktopApplication::chooseFiles);
        connect(quitAction, &QAction::triggered, this, &DesktopApplication::quit);
        m_statusIcon->setContextMenu(menu);
        connect(m_statusIcon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason why) {
                if (why == QSystemTrayIcon::Trigger)
                    m_panel->makeKeyAndOrderFront();
            });
    }
    m_statusIcon->setVisible(QSystemTrayIcon::isSystemTrayAvailable());
}

int DesktopApplication::run(const QStringList &paths)
{
    if (!listen()) {
        if (m_instance->handOver(paths))
            return 0;
        logMessage(QStringLiteral("Cannot reach the running instance of %1.").arg(m_options.applicationId));
        return 1;
    }
    // Closing the panel ends the program (its settings stored); with no window shown, a launch
    // by drop keeps running until it quits by itself or another launch shows the panel.
    QApplication::setQuitOnLastWindowClosed(false);
    connect(m_panel.get(), &PreferencesPanel::closed, this, &DesktopApplication::panelClosed,
        Qt::QueuedConnection);
    launch(paths);
    return QApplication::exec();
}

void DesktopApplication::open(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    m_progress->addExpectedFiles(countFiles(paths));
    m_queue += paths;
    if (m_delivering)
        return;
    m_delivering = true;
    m_results = RunResults();
    while (!m_queue.isEmpty())
        m_delegate->applicationOpenFile(m_queue.takeFirst());
    m_delivering = false;
    reportRun();
    m_runFromDialog = false;
}

void DesktopApplication::setNotificationBus(const QDBusConnection &bus)
{
    m_notifier = std::make_unique<DesktopNotifier>(bus);
}

QWidget *DesktopApplication::resultsDialog() const { return m_resultsDialog; }

void DesktopApplication::reportRun()
{
    m_lastResults = m_results;
    const RunResults &results = m_lastResults;
    if (results.failures.isEmpty()) {
        // A run the user started from the open dialog ends with a sign that it is done.
        if (m_runFromDialog && !results.cancelled) {
            const QString done = localizedText(QStringLiteral("Thumbnails made: %1")).arg(results.made);
            if (m_panel->isVisible())
                m_panel->showStatusMessage(done);
            else
                m_notifier->notify(done, QString());
        }
        return;
    }
    const bool sent
        = m_notifier->notify(results.summary(), results.listing(10), [this, results](bool delivered) {
              if (!delivered)
                  showResultsDialog(results);
              else if (m_quitting)
                  quitWhenReported();
          });
    if (!sent)
        showResultsDialog(results);
}

void DesktopApplication::showResultsDialog(const RunResults &results)
{
    // One dialog at a time: a later run's failures replace an earlier one's.
    if (m_resultsDialog)
        m_resultsDialog->close();
    auto *box = new QMessageBox(QMessageBox::Warning, QGuiApplication::applicationDisplayName(),
        results.summary(), QMessageBox::Ok, m_panel->isVisible() ? m_panel.get() : nullptr);
    box->setObjectName(QStringLiteral("resultsDialog"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(results.listing(10));
    if (results.failures.size() > 1)
        box->setDetailedText(results.listing(int(results.failures.size()), true));
    connect(box, &QMessageBox::finished, this, [this] {
        if (m_quitting)
            QTimer::singleShot(0, this, &DesktopApplication::quitWhenReported);
    });
    m_resultsDialog = box;
    box->open();
}

void DesktopApplication::quitWhenReported()
{
    // The automatic quit waits until the user has seen what went wrong.
    m_quitting = true;
    if (m_resultsDialog || m_notifier->pendingCount() > 0)
        return;
    QCoreApplication::exit(0);
}

void DesktopApplication::cancel()
{
    if (!m_delegate->isProcessing())
        return;
    m_queue.clear();
    m_results.cancelled = true;
    m_delegate->cancelProcessing();
    m_job->cancel();
}

void DesktopApplication::quit()
{
    cancel();
    // Asked for by the user, the quit does not wait for a report to be read.
    if (m_resultsDialog)
        m_resultsDialog->close();
    m_delegate->terminate();
}

void DesktopApplication::chooseFiles()
{
    if (m_openPanel) {
        m_openPanel->raise();
        m_openPanel->activateWindow();
        return;
    }
    // Not modal to the program: a run going on meanwhile goes on.
    auto *dialog = new OpenPanel(m_panel->isVisible() ? m_panel.get() : nullptr);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_openPanel = dialog;
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        const QStringList paths = dialog->chosenPaths();
        // Opened once the dialog has gone.
        QTimer::singleShot(0, this, [this, paths] {
            if (paths.isEmpty())
                return;
            m_runFromDialog = !m_delivering;
            open(paths);
        });
    });
    dialog->open();
}

OpenPanel *DesktopApplication::openPanel() const { return m_openPanel; }

void DesktopApplication::showAbout()
{
    if (m_aboutBox) {
        m_aboutBox->raise();
        m_aboutBox->activateWindow();
        return;
    }
    const QString summary = localizedText(QStringLiteral("Makes thumbnails of pictures, documents and movies "
                                                         "dropped on it or opened with it, with the settings "
                                                         "of its preferences window."));
    const QString licence = localizedText(QStringLiteral("Free software under the MIT licence."));
    const QString credits = localizedText(QStringLiteral("Written by the Orvel Thumbnails developers, on Qt, "
                                                         "libvips, Poppler, Ghostscript, FFmpeg, libplist "
                                                         "and libarchive."));
    const QString website = QStringLiteral("https://orvel.org/thumbnails");
    auto *box = new QMessageBox(QMessageBox::NoIcon, localizedText(QStringLiteral("About Orvel Thumbnails")),
        QStringLiteral(
            "<p><b>Orvel Thumbnails</b> %1</p><p>%2</p><p>%3</p><p><a href=\"%4\">%4</a></p><p>%5</p>")
            .arg(QApplication::applicationVersion().toHtmlEscaped(), summary.toHtmlEscaped(),
                licence.toHtmlEscaped(), website, credits.toHtmlEscaped()),
        QMessageBox::Ok, m_panel->isVisible() ? m_panel.get() : nullptr);
    box->setObjectName(QStringLiteral("aboutBox"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::RichText);
    box->setTextInteractionFlags(Qt::TextBrowserInteraction);
    const QIcon icon = QApplication::windowIcon();
    if (!icon.isNull())
        box->setIconPixmap(icon.pixmap(64, 64));
    m_aboutBox = box;
    box->open();
}

QStringList launchPaths(const QStringList &arguments)
{
    QStringList paths;
    bool optionsEnded = false;
    for (const QString &argument : arguments) {
        if (!optionsEnded && argument == u"--") {
            optionsEnded = true;
            continue;
        }
        if (!optionsEnded && argument.startsWith(u'-') && argument.size() > 1)
            continue;
        paths << (argument.isEmpty() ? argument : QFileInfo(argument).absoluteFilePath());
    }
    return paths;
}

} // namespace orvel
