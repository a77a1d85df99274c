// DesktopApplication: the desktop program around the delegate: launch order, hand-over, menus, progress.
#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

namespace orvel {

class ApplicationDelegate;
class IsolatedJob;
class PreferencesPanel;
class ProgressWindow;
class SingleInstance;

/// Plays the part of the platform's application object for the delegate: it delivers the paths
/// of a launch between the start and the end of launching, the paths of later launches, drops and
/// the open dialog one path at a time and in order (never while one is being processed), requests
/// to reopen, and termination; it connects the menu bar and shows progress.
class DesktopApplication : public QObject
{
    Q_OBJECT

public:
    struct Options
    {
        /// orvel-thumbs, whose worker processes make the thumbnails.
        QString workerExecutable;
        /// The id under which the running instance is found.
        QString applicationId;
        /// Time limit per file in seconds.
        int timeoutSeconds = 120;
    };

    explicit DesktopApplication(const Options &options, QObject *parent = nullptr);
    ~DesktopApplication() override;

    /// Launches with paths (absolute; none for a plain launch): hands them over to a running
    /// instance and answers 0 (or 1 when that failed), or becomes the running instance, delivers
    /// them and runs the event loop; answers the exit status.
    int run(const QStringList &paths);

    /// Becomes the running instance (false: another one runs) and delivers the launch's paths,
    /// without entering the event loop. run() is listen(), launch(), then the event loop.
    bool listen();
    void launch(const QStringList &paths);

    /// Delivers paths one by one to the delegate, or queues them while one is being processed.
    void open(const QStringList &paths);

    ApplicationDelegate &delegate() const { return *m_delegate; }
    PreferencesPanel &panel() const { return *m_panel; }
    ProgressWindow &progressWindow() const { return *m_progress; }
    SingleInstance &singleInstance() const { return *m_instance; }

private:
    void chooseFiles();
    void showAbout();

    Options m_options;
    std::unique_ptr<PreferencesPanel> m_panel;
    std::unique_ptr<ProgressWindow> m_progress;
    std::unique_ptr<IsolatedJob> m_job;
    ApplicationDelegate *m_delegate = nullptr;
    SingleInstance *m_instance = nullptr;
    QStringList m_queue;
    bool m_delivering = false;
};

/// The paths of a launch as absolute paths, in order; "--" ends the options, and the options
/// "--help" and "--version" are answered by the caller. An empty argument is kept (it fails).
[[nodiscard]] QStringList launchPaths(const QStringList &arguments);

} // namespace orvel
