// ApplicationDelegate: the desktop application's lifecycle, its automatic quit and the handling of
// every opened file or folder.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

namespace orvel {

class PreferencesPanel;

/// Receives every path the user opens with the application (a launch with files, a second launch
/// handing its files over, a drop on the window, the open dialog), walks folders and hands each
/// file to the thumbnail job. Shows the preferences panel after a plain launch, and quits by
/// itself shortly after a launch by drop when "QuitWhenDone" is on.
///
/// The platform layer calls, in this order: applicationWillFinishLaunching(), applicationOpenFile()
/// for each path of the launch, applicationDidFinishLaunching(); later, applicationOpenFile() for
/// each path opened while running and applicationOpenUntitledFile() for a request to reopen.
class ApplicationDelegate : public QObject
{
    Q_OBJECT

public:
    /// Makes the thumbnail of one file (resolved, not a folder); answers YES or NO.
    using FileProcessor = std::function<bool(const QString &path)>;

    /// The delay of the automatic quit, in seconds.
    static constexpr double QuitDelay = 0.1;

    /// panel may be null (no window is ever shown then).
    explicit ApplicationDelegate(PreferencesPanel *panel, QObject *parent = nullptr);
    ~ApplicationDelegate() override;

    PreferencesPanel *preferencesPanel() const { return m_preferencesPanel; }

    friend class DelegateWalk;

    /// What processFile() runs; by default the thumbnail job in this process.
    void setFileProcessor(FileProcessor processor);
    /// What terminate() finally does; by default QCoreApplication::exit(0).
    void setQuitHandler(std::function<void()> handler);

    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    /// Every way of opening a path (a launch, a hand-over, a drop, the open dialog) comes here.
    bool applicationOpenFile(const QString &path) { return openFile(path); }
    /// A request to reopen the running application: shows the panel once launching has finished.
    bool applicationOpenUntitledFile();
    /// Stores the panel's settings when it is on screen.
    void applicationWillTerminate();

    /// The common entry for every opened path: re-arms the automatic quit, stores the panel's
    /// edits, then processes the path.
    bool openFile(const QString &path);
    /// Resolves a link at the end of path; a file goes to processFile(), a folder is walked
    /// depth-first in listing order, every entry processed and the answers ANDed.
    bool processPath(const QString &path);
    /// The thumbnail job for one file.
    bool processFile(const QString &path);

    /// Stops the run: the files that the walk meets from now until the outermost openFile()
    /// returns are left alone (answered NO, never started). The file being made is the caller's
    /// to end.
    void cancelProcessing();
    /// Whether cancelProcessing() was asked during this run.
    bool isCancelled() const { return m_cancelled; }
    /// Whether the file being processed was found inside a folder rather than opened by name.
    bool isFileInFolder() const { return m_fileInFolder; }

    /// Ends the application: applicationWillTerminate(), then the quit handler. Asked while a
    /// file is being processed (from a nested event loop), it waits until processing is done.
    void terminate();

    /// The Help menu's "Check for Updates…": starts the update check, nothing else.
    void checkForUpdate();

    bool didDrop() const { return m_didDrop; }
    bool shouldQuit() const { return m_shouldQuit; }
    bool didFinish() const { return m_didFinish; }
    /// Whether a delayed terminate() is pending.
    bool isTerminateScheduled() const { return m_terminateTimer.isActive() || m_terminateDeferred; }
    /// Whether openFile() is running.
    bool isProcessing() const { return m_processingDepth > 0; }

Q_SIGNALS:
    /// A file is handed to the thumbnail job.
    void fileStarted(const QString &path);
    /// The job answered for the file.
    void fileFinished(const QString &path, bool ok);
    /// The walk itself answered NO for path (nothing there, a broken link, a link loop).
    void pathFailed(const QString &path, const QString &reason);
    /// The outermost openFile() returned; nothing is being processed now.
    void processingFinished();
    /// terminate() is about to quit the application.
    void terminating();

private:
    void scheduleTerminate();
    void cancelTerminate();
    void delayedTerminate();

    PreferencesPanel *m_preferencesPanel = nullptr;
    FileProcessor m_fileProcessor;
    std::function<void()> m_quitHandler;
    QTimer m_terminateTimer;
    // A delayed terminate that came due while a file was being processed; it fires once
    // processing is done, unless the next opened item cancels it first.
    bool m_terminateDeferred = false;
    bool m_terminateWhenIdle = false;
    int m_processingDepth = 0;
    bool m_cancelled = false;
    bool m_fileInFolder = false;

    // Each set once and never reset.
    bool m_didDrop = false;
    bool m_shouldQuit = false;
    bool m_didFinish = false;
};

} // namespace orvel
