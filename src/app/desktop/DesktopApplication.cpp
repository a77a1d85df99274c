// DesktopApplication: the desktop program around the delegate: launch order, hand-over, menus, progress.
#include "app/desktop/DesktopApplication.h"

#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/HelpMenu.h"
#include "app/desktop/IsolatedJob.h"
#include "app/desktop/LocalizedText.h"
#include "app/desktop/PreferencesPanel.h"
#include "app/desktop/ProgressWindow.h"
#include "app/desktop/SingleInstance.h"
#include "support/Log.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>

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
{
    m_delegate->setFileProcessor([this](const QString &path) {
        QString reason;
        const bool ok = m_job->processFile(path, &reason);
        if (!ok)
            logMessage(QStringLiteral("%1: %2").arg(path, reason));
        return ok;
    });
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
    connect(m_panel->quitAction(), &QAction::triggered, m_delegate, &ApplicationDelegate::terminate);
    connect(m_panel->aboutAction(), &QAction::triggered, this, &DesktopApplication::showAbout);
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
    connect(m_panel.get(), &PreferencesPanel::closed, m_delegate, &ApplicationDelegate::terminate,
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
    while (!m_queue.isEmpty())
        m_delegate->applicationOpenFile(m_queue.takeFirst());
    m_delivering = false;
}

void DesktopApplication::chooseFiles()
{
    const QStringList paths = QFileDialog::getOpenFileNames(
        m_panel.get(), localizedText(QStringLiteral("Make Thumbnails of Files")), QDir::homePath());
    open(paths);
}

void DesktopApplication::showAbout()
{
    const QString summary = localizedText(QStringLiteral("Makes thumbnails of pictures, documents and movies "
                                                         "dropped on it or opened with it, with the settings "
                                                         "of its preferences window."));
    QMessageBox::about(m_panel.get(), localizedText(QStringLiteral("About Orvel Thumbnails")),
        QStringLiteral("<p><b>Orvel Thumbnails</b> %1</p><p>%2</p>")
            .arg(QApplication::applicationVersion().toHtmlEscaped(), summary.toHtmlEscaped()));
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
