// ApplicationDelegate: the desktop application's lifecycle, its automatic quit and the handling of
// every opened file or folder.
#include "app/desktop/ApplicationDelegate.h"

#include "app/desktop/PreferencesPanel.h"
#include "app/engine/ThumbnailJob.h"
#include "app/shared/ThumbnailSettings.h"
#include "files/FolderWalk.h"
#include "support/Localization.h"
#include "support/UpdateCheck.h"
#include "support/UserDefaults.h"

#include <QCoreApplication>
#include <QMenuBar>

namespace orvel {

class DelegateWalk : public FolderWalk::Visitor
{
public:
    explicit DelegateWalk(ApplicationDelegate &delegate)
        : m_delegate(delegate)
    {
    }
    bool processFile(const QString &path, FolderWalk::Found found) override
    {
        // A thumbnail found beside its source is not made a thumbnail of again.
        if (found == FolderWalk::Found::InFolder
            && ThumbnailSettings::read(UserDefaults::standard()).couldHaveWritten(path))
            return true;
        m_delegate.m_fileInFolder = found == FolderWalk::Found::InFolder;
        const bool ok = m_delegate.processFile(path);
        m_delegate.m_fileInFolder = false;
        return ok;
    }
    void failed(const QString &path, const QString &reason) override
    {
        if (!m_delegate.m_cancelled)
            Q_EMIT m_delegate.pathFailed(path, reason);
    }

private:
    ApplicationDelegate &m_delegate;
};

ApplicationDelegate::ApplicationDelegate(PreferencesPanel *panel, QObject *parent)
    : QObject(parent)
    , m_preferencesPanel(panel)
    , m_fileProcessor([](const QString &path) { return ThumbnailJob::processFile(path); })
    , m_quitHandler([] { QCoreApplication::exit(0); })
{
    m_terminateTimer.setSingleShot(true);
    // A coarse timer may fire up to 5 % early; the quit must never come before its delay.
    m_terminateTimer.setTimerType(Qt::PreciseTimer);
    m_terminateTimer.setInterval(int(QuitDelay * 1000));
    connect(&m_terminateTimer, &QTimer::timeout, this, &ApplicationDelegate::delayedTerminate);
}

ApplicationDelegate::~ApplicationDelegate() = default;

void ApplicationDelegate::setFileProcessor(FileProcessor processor)
{
    m_fileProcessor = std::move(processor);
}

void ApplicationDelegate::setQuitHandler(std::function<void()> handler)
{
    m_quitHandler = std::move(handler);
}

void ApplicationDelegate::applicationWillFinishLaunching()
{
    // The main menu (the panel's menu bar) gets its localised titles before anything is shown.
    if (m_preferencesPanel)
        localize(m_preferencesPanel->menuBar());
}

void ApplicationDelegate::checkForUpdate() { UpdateCheck::checkForNewVersion(); }

void ApplicationDelegate::applicationDidFinishLaunching()
{
    if (!m_didDrop) {
        if (m_preferencesPanel)
            m_preferencesPanel->makeKeyAndOrderFront();
    } else if (ThumbnailSettings::read(UserDefaults::standard()).quitWhenDone) {
        scheduleTerminate();
        m_shouldQuit = true;
    }
    m_didFinish = true;
}

bool ApplicationDelegate::applicationOpenUntitledFile()
{
    if (!m_didFinish)
        return false;
    if (m_preferencesPanel)
        m_preferencesPanel->makeKeyAndOrderFront();
    return true;
}

void ApplicationDelegate::applicationWillTerminate()
{
    if (m_preferencesPanel && m_preferencesPanel->isVisible())
        m_preferencesPanel->apply(nullptr);
}

bool ApplicationDelegate::openFile(const QString &path)
{
    m_didDrop = true;
    cancelTerminate();
    if (m_shouldQuit)
        scheduleTerminate();
    if (m_preferencesPanel && m_preferencesPanel->isVisible())
        m_preferencesPanel->apply(nullptr);

    ++m_processingDepth;
    const bool ok = processPath(path);
    --m_processingDepth;

    if (m_processingDepth == 0) {
        m_cancelled = false;
        Q_EMIT processingFinished();
        if (m_terminateDeferred) {
            // The quit came due during the job; it fires as soon as the event loop runs again.
            m_terminateDeferred = false;
            m_terminateTimer.start(0);
        }
        if (m_terminateWhenIdle) {
            m_terminateWhenIdle = false;
            QTimer::singleShot(0, this, &ApplicationDelegate::terminate);
        }
    }
    return ok;
}

bool ApplicationDelegate::processPath(const QString &path)
{
    if (path.isEmpty())
        return false;
    DelegateWalk walk(*this);
    return FolderWalk::processPath(path, walk);
}

bool ApplicationDelegate::processFile(const QString &path)
{
    if (m_cancelled)
        return false;
    Q_EMIT fileStarted(path);
    const bool ok = m_fileProcessor ? m_fileProcessor(path) : false;
    Q_EMIT fileFinished(path, ok);
    return ok;
}

void ApplicationDelegate::cancelProcessing()
{
    if (m_processingDepth > 0)
        m_cancelled = true;
}

void ApplicationDelegate::terminate()
{
    if (m_processingDepth > 0) {
        m_terminateWhenIdle = true;
        return;
    }
    applicationWillTerminate();
    Q_EMIT terminating();
    if (m_quitHandler)
        m_quitHandler();
}

void ApplicationDelegate::scheduleTerminate() { m_terminateTimer.start(int(QuitDelay * 1000)); }

void ApplicationDelegate::cancelTerminate()
{
    m_terminateTimer.stop();
    m_terminateDeferred = false;
}

void ApplicationDelegate::delayedTerminate()
{
    // A job showing its progress lets the event loop run; the quit must never cut it short.
    if (m_processingDepth > 0) {
        m_terminateDeferred = true;
        return;
    }
    terminate();
}

} // namespace orvel
