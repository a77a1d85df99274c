// PreferencesPanel: the window that shows the thumbnail settings and stores them.
#pragma once

#include <QMainWindow>

#include <memory>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace Ui {
class PreferencesPanel;
}

namespace orvel {

struct ThumbnailSettings;
class UserDefaults;

/// The preferences panel, laid out in PreferencesPanel.ui. Its outlets are the controls of that
/// file, by object name: the radio groups createIcons, extensionFormat and sizing (each button's
/// "tag" property is its id and its stored value), the pop-up menus filetype, antialiasing and
/// sharpen (their "tags" property lists the tag of each item in order), the field extension, the
/// spin boxes quality, scale, width and height (with the ranges of the settings), the label
/// extensionName and the check box quitWhenDone.
///
/// The label of the naming string says what it holds under the chosen naming rule, a line below it
/// shows the name an example file would get, and controls that have no effect under the chosen
/// create mode, sizing or format are disabled; all of it follows the controls as they are edited.
///
/// It also carries the application's menu bar and takes files dropped on it (filesDropped()),
/// highlighting itself while files are dragged over it.
class PreferencesPanel : public QMainWindow
{
    Q_OBJECT

public:
    /// A panel on defaults (the standard store when null), showing the stored settings.
    explicit PreferencesPanel(UserDefaults *defaults = nullptr, QWidget *parent = nullptr);
    ~PreferencesPanel() override;

    /// Shows the stored settings in the controls.
    void awakeFromNib();
    /// Stores the controls' values, corrected (width and height at least 16, scale 1 to 100 percent,
    /// "_" for an empty naming string, quality and scale divided by 100). With a sender, the
    /// controls then show the values as stored; with none they are left as they are.
    void apply(QObject *sender);
    /// Sets the label of the naming string by the chosen naming rule ("Prefix:", "Suffix:",
    /// "Folder name:"), and with it the example line and which controls are enabled.
    void didChangeDestination();
    /// Shows the panel in front and gives it the keyboard.
    void makeKeyAndOrderFront();
    /// Shows text for a while in the panel's status line.
    void showStatusMessage(const QString &text);

    /// The menu actions that the application connects.
    QAction *openAction() const;
    QAction *closeAction() const;
    QAction *quitAction() const;
    QAction *aboutAction() const;

    /// The settings as apply() would store them from the controls now.
    [[nodiscard]] ThumbnailSettings controlValues() const;
    /// The example line: the name that exampleSource gets under the controls' settings.
    [[nodiscard]] QString exampleText() const;
    /// The file the example line names.
    static constexpr const char16_t *ExampleSource = u"IMG_0001.jpg";
    /// Whether files are being dragged over the panel.
    bool isDropHighlighted() const;

    /// The integer value of a field as a number field reads it: its leading whole number after
    /// blanks, 0 when there is none ("12px" 12, "7.9" 7, "x" 0).
    static qint64 integerValue(const QString &text);
    /// The float value of a field: its leading decimal number after blanks, 0 when there is none.
    static double floatValue(const QString &text);

Q_SIGNALS:
    /// Files or folders were dropped on the window (local paths, in the order of the drop).
    void filesDropped(const QStringList &paths);
    /// The user closed the window (its values are stored by then).
    void closed();
    /// apply() stored the controls' values.
    void applied();

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    UserDefaults &defaults() const;
    void updateControls();
    void setDropHighlighted(bool on);

    std::unique_ptr<Ui::PreferencesPanel> ui;
    UserDefaults *m_defaults = nullptr;

    // The outlets, in the order the settings are described.
    QButtonGroup *createIcons = nullptr;
    QLineEdit *extension = nullptr;
    QButtonGroup *extensionFormat = nullptr;
    QLabel *extensionName = nullptr;
    QComboBox *filetype = nullptr;
    QSpinBox *quality = nullptr;
    QComboBox *antialiasing = nullptr;
    QComboBox *sharpen = nullptr;
    QButtonGroup *sizing = nullptr;
    QDoubleSpinBox *scale = nullptr;
    QSpinBox *width = nullptr;
    QSpinBox *height = nullptr;
    QCheckBox *quitWhenDone = nullptr;

    QWidget *m_dropHighlight = nullptr;
    // Set while awakeFromNib() fills the controls, whose signals then apply nothing.
    bool m_showing = false;
};

} // namespace orvel
