// PreferencesPanel: the window that shows the thumbnail settings and stores them.
#include "app/desktop/PreferencesPanel.h"

#include "app/desktop/LocalizedText.h"
#include "app/shared/ThumbnailSettings.h"
#include "support/Localization.h"
#include "support/UserDefaults.h"
#include "ui_PreferencesPanel.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QRegularExpression>
#include <QSpinBox>
#include <QStatusBar>
#include <QUrl>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace orvel {

namespace {

/// Gives each button of group the id written in its "tag" property.
void takeTags(QButtonGroup *group)
{
    const QList<QAbstractButton *> buttons = group->buttons();
    for (QAbstractButton *button : buttons)
        group->setId(button, button->property("tag").toInt());
}

/// Gives each item of menu the tag listed for it in the menu's "tags" property ("0,1,2").
void takeTags(QComboBox *menu)
{
    const QStringList tags = menu->property("tags").toString().split(u',', Qt::SkipEmptyParts);
    for (int i = 0; i < menu->count() && i < tags.size(); ++i)
        menu->setItemData(i, tags.at(i).trimmed().toInt());
}

void selectCellWithTag(QButtonGroup *group, qint64 tag)
{
    QAbstractButton *button = tag >= INT_MIN && tag <= INT_MAX ? group->button(int(tag)) : nullptr;
    if (button) {
        button->setChecked(true);
        return;
    }
    // No cell has that tag: none is selected.
    group->setExclusive(false);
    const QList<QAbstractButton *> buttons = group->buttons();
    for (QAbstractButton *other : buttons)
        other->setChecked(false);
    group->setExclusive(true);
}

void selectItemWithTag(QComboBox *menu, qint64 tag)
{
    menu->setCurrentIndex(tag >= INT_MIN && tag <= INT_MAX ? menu->findData(int(tag)) : -1);
}

qint64 selectedTag(const QButtonGroup *group) { return std::max(0, group->checkedId()); }

qint64 selectedTag(const QComboBox *menu)
{
    return menu->currentIndex() < 0 ? 0 : menu->currentData().toInt();
}

// The number a spin box holds as typed, before the box corrects it on leaving: apply() may come
// in the middle of an edit (a file dropped meanwhile) and stores what is typed, corrected.
qint64 typedValue(const QSpinBox *box) { return PreferencesPanel::integerValue(box->cleanText()); }

double typedValue(const QDoubleSpinBox *box)
{
    bool ok = false;
    const double value = box->locale().toDouble(box->cleanText(), &ok);
    return ok ? value : PreferencesPanel::floatValue(box->cleanText());
}

int spinValue(double value) { return int(std::clamp(std::round(value), double(INT_MIN), double(INT_MAX))); }

// How long a message stays in the status line, in milliseconds.
constexpr int StatusMessageTimeout = 10000;

// The widest the panel gets, in pixels, unless its texts need more.
constexpr int MaximumWidth = 760;

} // namespace

PreferencesPanel::PreferencesPanel(UserDefaults *defaults, QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::PreferencesPanel)
    , m_defaults(defaults)
{
    ui->setupUi(this);
    createIcons = ui->createIcons;
    extension = ui->extension;
    extensionFormat = ui->extensionFormat;
    extensionName = ui->extensionName;
    filetype = ui->filetype;
    quality = ui->quality;
    antialiasing = ui->antialiasing;
    sharpen = ui->sharpen;
    sizing = ui->sizing;
    scale = ui->scale;
    width = ui->width;
    height = ui->height;
    quitWhenDone = ui->quitWhenDone;

    // Every control stores the settings when the user has used it; the spin boxes do so once
    // their value is set (by their arrows, or typed and left), not at each key.
    for (QButtonGroup *group : { createIcons, extensionFormat, sizing }) {
        takeTags(group);
        connect(group, &QButtonGroup::idClicked, this, [this, group] { apply(group); });
        connect(group, &QButtonGroup::idToggled, this, [this](int, bool checked) {
            if (checked)
                updateControls();
        });
    }
    for (QComboBox *menu : { filetype, antialiasing, sharpen }) {
        takeTags(menu);
        connect(menu, &QComboBox::activated, this, [this, menu] { apply(menu); });
        connect(menu, &QComboBox::currentIndexChanged, this, &PreferencesPanel::updateControls);
    }
    connect(extension, &QLineEdit::editingFinished, this, [this] { apply(extension); });
    connect(extension, &QLineEdit::textChanged, this, &PreferencesPanel::updateControls);
    for (QAbstractSpinBox *box : std::initializer_list<QAbstractSpinBox *> { quality, scale, width, height })
        connect(box, &QAbstractSpinBox::editingFinished, this, [this, box] { apply(box); });
    for (QSpinBox *box : { quality, width, height })
        connect(box, &QSpinBox::valueChanged, this, [this, box] { apply(box); });
    connect(scale, &QDoubleSpinBox::valueChanged, this, [this] { apply(scale); });
    connect(quitWhenDone, &QCheckBox::clicked, this, [this] { apply(quitWhenDone); });
    connect(extensionFormat, &QButtonGroup::idToggled, this, [this](int, bool checked) {
        if (checked)
            didChangeDestination();
    });

    // A frame over the whole window that shows where dropped files go.
    m_dropHighlight = new QWidget(this);
    m_dropHighlight->setObjectName(QStringLiteral("dropHighlight"));
    m_dropHighlight->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_dropHighlight->setStyleSheet(QStringLiteral("#dropHighlight { border: 3px solid palette(highlight); "
                                                  "border-radius: 6px; }"));
    m_dropHighlight->hide();

    setAcceptDrops(true);
    awakeFromNib();
    // Room for the longer texts of other languages, but no stretching of the fields across a
    // wide screen.
    setMaximumWidth(std::max(sizeHint().width() * 2, MaximumWidth));
}

PreferencesPanel::~PreferencesPanel()
{
    // The controls are hidden and destroyed after this body, when the panel is half gone; a spin
    // box losing its edit then must not call back into it.
    const QList<QObject *> children = findChildren<QObject *>();
    for (QObject *child : children)
        QObject::disconnect(child, nullptr, this, nullptr);
}

UserDefaults &PreferencesPanel::defaults() const
{
    return m_defaults ? *m_defaults : UserDefaults::standard();
}

QAction *PreferencesPanel::openAction() const { return ui->actionOpen; }
QAction *PreferencesPanel::closeAction() const { return ui->actionClose; }
QAction *PreferencesPanel::quitAction() const { return ui->actionQuit; }
QAction *PreferencesPanel::aboutAction() const { return ui->actionAbout; }

void PreferencesPanel::awakeFromNib()
{
    m_showing = true;
    // The window and its menus in the user's language; the values below then replace whatever the
    // walk did to the fields.
    localize(this);
    const ThumbnailSettings stored = ThumbnailSettings::read(defaults());
    selectCellWithTag(createIcons, stored.create);
    quitWhenDone->setChecked(stored.quitWhenDone);
    extension->setText(stored.extension);
    // A value outside a box's range (set by the command line) shows as the nearest it can hold.
    width->setValue(spinValue(double(qint32(stored.width))));
    height->setValue(spinValue(double(qint32(stored.height))));
    quality->setValue(spinValue(double(stored.quality) * 100.0));
    selectItemWithTag(filetype, stored.filetype);
    selectItemWithTag(antialiasing, stored.interpolation);
    selectItemWithTag(sharpen, stored.sharpen);
    selectCellWithTag(sizing, stored.sizing);
    scale->setValue(double(stored.scale * 100.0f));
    selectCellWithTag(extensionFormat, stored.extensionFormat);
    didChangeDestination();
    m_showing = false;
}

ThumbnailSettings PreferencesPanel::controlValues() const
{
    const QString extensionText = extension->text();
    const qint64 widthValue = typedValue(width);
    const qint64 heightValue = typedValue(height);
    const float scaleValue = float(typedValue(scale));

    ThumbnailSettings values;
    values.create = selectedTag(createIcons);
    values.quitWhenDone = quitWhenDone->isChecked();
    values.extension = extensionText.isEmpty() ? u"_"_s : extensionText;
    values.width = std::max<qint64>(widthValue, 16);
    values.height = std::max<qint64>(heightValue, 16);
    values.quality = float(typedValue(quality)) / 100.0f;
    values.interpolation = selectedTag(antialiasing);
    values.filetype = selectedTag(filetype);
    values.sharpen = selectedTag(sharpen);
    values.sizing = selectedTag(sizing);
    values.extensionFormat = selectedTag(extensionFormat);
    values.scale = std::clamp(scaleValue, 1.0f, 100.0f) / 100.0f;
    return values;
}

void PreferencesPanel::apply(QObject *sender)
{
    if (m_showing)
        return;
    const ThumbnailSettings values = controlValues();
    UserDefaults &store = defaults();
    values.write(store);
    // The thumbnails are made in worker processes, which read the store's file.
    store.synchronize();
    Q_EMIT applied();

    if (sender)
        awakeFromNib();
}

void PreferencesPanel::didChangeDestination()
{
    switch (extensionFormat->checkedId()) {
    case 0:
        extensionName->setText(localizedText(QStringLiteral("Prefi&x:")));
        break;
    case 2:
        extensionName->setText(localizedText(QStringLiteral("Folder &name:")));
        break;
    default:
        extensionName->setText(localizedText(QStringLiteral("Suffi&x:")));
        break;
    }
    updateControls();
}

QString PreferencesPanel::exampleText() const
{
    const ThumbnailSettings values = controlValues();
    const QString source = QString::fromUtf16(ExampleSource);
    if (values.createMode() == ThumbnailSettings::CreateMode::Icon) {
        const QString note = localizedText(QStringLiteral("For example: %1 gets its own picture as its "
                                                          "icon; nothing is written"));
        return note.arg(source);
    }
    const QString folder = u"/example"_s;
    const QString output = values.outputPathFor(folder + u'/' + source);
    // The path as seen from the source's folder.
    const QString shown = output.startsWith(folder + u'/') ? output.mid(folder.size() + 1) : output;
    return localizedText(QStringLiteral("For example: %1 → %2")).arg(source, shown);
}

void PreferencesPanel::updateControls()
{
    const qint64 create = selectedTag(createIcons);
    // Only a custom icon: nothing is written, so nothing about the written file applies.
    const bool writes = create != 2;
    const bool scales = sizing->checkedId() == 1;
    ui->namingBox->setEnabled(writes);
    ui->sizeBox->setEnabled(writes);
    for (QWidget *control :
        std::initializer_list<QWidget *> { ui->widthLabel, width, ui->heightLabel, height, ui->pixelsLabel })
        control->setEnabled(!scales);
    ui->scaleLabel->setEnabled(scales);
    scale->setEnabled(scales);
    for (QWidget *control :
        std::initializer_list<QWidget *> { ui->filetypeLabel, filetype, ui->sharpenLabel, sharpen })
        control->setEnabled(writes);
    // BMP is written uncompressed: the factor has no effect on it.
    const bool compresses = writes && selectedTag(filetype) != 1;
    ui->qualityLabel->setEnabled(compresses);
    quality->setEnabled(compresses);
    ui->exampleName->setText(exampleText());
}

void PreferencesPanel::makeKeyAndOrderFront()
{
    show();
    raise();
    activateWindow();
}

void PreferencesPanel::showStatusMessage(const QString &text)
{
    statusBar()->showMessage(text, StatusMessageTimeout);
}

qint64 PreferencesPanel::integerValue(const QString &text)
{
    const double value = floatValue(text);
    if (!(value > -9.2e18 && value < 9.2e18))
        return value > 0 ? std::numeric_limits<qint64>::max()
            : value < 0  ? std::numeric_limits<qint64>::min()
                         : 0;
    return qint64(value);
}

double PreferencesPanel::floatValue(const QString &text)
{
    // Read in the C locale whatever the user's locale is, as the stored values are.
    static const QRegularExpression number(
        QStringLiteral("^\\s*[+-]?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?"));
    const QRegularExpressionMatch match = number.match(text);
    if (!match.hasMatch())
        return 0;
    // Out of range, toDouble() gives an infinity or 0, which the corrections then clamp.
    const double value = match.captured(0).trimmed().toDouble();
    return std::isnan(value) ? 0 : value;
}

void PreferencesPanel::closeEvent(QCloseEvent *event)
{
    apply(nullptr);
    QMainWindow::closeEvent(event);
    if (event->isAccepted())
        Q_EMIT closed();
}

void PreferencesPanel::dragEnterEvent(QDragEnterEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (std::any_of(urls.cbegin(), urls.cend(), [](const QUrl &url) { return url.isLocalFile(); })) {
        event->acceptProposedAction();
        setDropHighlighted(true);
    }
}

void PreferencesPanel::dragLeaveEvent(QDragLeaveEvent *event)
{
    setDropHighlighted(false);
    QMainWindow::dragLeaveEvent(event);
}

bool PreferencesPanel::isDropHighlighted() const { return !m_dropHighlight->isHidden(); }

void PreferencesPanel::setDropHighlighted(bool on)
{
    if (on) {
        m_dropHighlight->setGeometry(rect());
        m_dropHighlight->raise();
    }
    m_dropHighlight->setVisible(on);
}

void PreferencesPanel::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    m_dropHighlight->setGeometry(rect());
}

void PreferencesPanel::dropEvent(QDropEvent *event)
{
    setDropHighlighted(false);
    QStringList paths;
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    Q_EMIT filesDropped(paths);
}

} // namespace orvel
