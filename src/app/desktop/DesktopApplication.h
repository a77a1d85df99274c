// DesktopApplication: the desktop program around the delegate: launch order, hand-over, menus, progress.
#pragma once

#include "app/desktop/RunReport.h"

#include <QDBusConnection>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QWidget>

class QSystemTrayIcon;

#include <memory>

namespace orvel {

class ApplicationDelegate;
class IsolatedJob;
class OpenPanel;
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
    /// At the end of a run in which a file got no thumbnail, the user is told which and why: by
    /// a notification when the desktop has a notification service, else by a dialog.
    void open(const QStringList &paths);

    /// The bus on which the notification service is looked for; the session bus by default.
    void setNotificationBus(const QDBusConnection &bus);
    /// The results of the last run that ended.
    const RunResults &lastResults() const { return m_lastResults; }
    /// The dialog listing the failures of a run, while it is open; null otherwise.
    QWidget *resultsDialog() const;

    /// Shows the dialog of File > Make Thumbnails… (without waiting for it); what it chooses is
    /// opened as a run of its own, which ends with a sign that it is done.
    void chooseFiles();
    /// The dialog of chooseFiles() while it is open; null otherwise.
    OpenPanel *openPanel() const;
    /// Shows the About box (without waiting for it).
    void showAbout();
    /// The About box while it is open; null otherwise.
    QWidget *aboutBox() const { return m_aboutBox; }

    /// The status-area icon, made while "QuitWhenDone" is off (the program then stays running
    /// after a launch by drop); from its menu the panel can be shown and the program quit. Null
    /// while the setting is on. It is on screen when the desktop has a status area.
    QSystemTrayIcon *statusIcon() const;

    /// Stops the run: the file being made is ended (its worker killed, nothing of it written) and
    /// the files not yet started, queued or still to be met in a folder, are left alone.
    void cancel();
    /// Quits; a run going on is cancelled first.
    void quit();

    ApplicationDelegate &delegate() const { return *m_delegate; }
    IsolatedJob &job() const { return *m_job; }
    PreferencesPanel &panel() const { return *m_panel; }
    ProgressWindow &progressWindow() const { return *m_progress; }
    SingleInstance &singleInstance() const { return *m_instance; }

private:
    void updateStatusIcon();
    void panelClosed();
    void reportRun();
    void showResultsDialog(const RunResults &results);
    void quitWhenReported();

    Options m_options;
    std::unique_ptr<PreferencesPanel> m_panel;
    std::unique_ptr<ProgressWindow> m_progress;
    std::unique_ptr<IsolatedJob> m_job;
    ApplicationDelegate *m_delegate = nullptr;
    SingleInstance *m_instance = nullptr;
    std::unique_ptr<DesktopNotifier> m_notifier;
    QPointer<QWidget> m_resultsDialog;
    QPointer<OpenPanel> m_openPanel;
    QPointer<QWidget> m_aboutBox;
    std::unique_ptr<QSystemTrayIcon> m_statusIcon;
    QStringList m_queue;
    RunResults m_results;
    RunResults m_lastResults;
    bool m_delivering = false;
    bool m_runFromDialog = false;
    bool m_quitting = false;
};

/// The paths of a launch as absolute paths, in order; "--" ends the options, and the options
/// "--help" and "--version" are answered by the caller. An empty argument is kept (it fails).
[[nodiscard]] QStringList launchPaths(const QStringList &arguments);

} // namespace orvel
