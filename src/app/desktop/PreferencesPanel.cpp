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
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QRegularExpression>
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

QString numberText(double value) { return QString::number(value, 'g', 6); }

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

    for (QButtonGroup *group : { createIcons, extensionFormat, sizing }) {
        takeTags(group);
        connect(group, &QButtonGroup::idClicked, this, [this, group] { apply(group); });
    }
    for (QComboBox *menu : { filetype, antialiasing, sharpen }) {
        takeTags(menu);
        connect(menu, &QComboBox::activated, this, [this, menu] { apply(menu); });
    }
    for (QLineEdit *field : { extension, quality, scale, width, height })
        connect(field, &QLineEdit::editingFinished, this, [this, field] { apply(field); });
    connect(quitWhenDone, &QCheckBox::clicked, this, [this] { apply(quitWhenDone); });
    connect(extensionFormat, &QButtonGroup::idToggled, this, [this](int, bool checked) {
        if (checked)
            didChangeDestination();
    });

    setAcceptDrops(true);
    awakeFromNib();
}

PreferencesPanel::~PreferencesPanel() = default;

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
    // The window and its menus in the user's language; the values below then replace whatever the
    // walk did to the fields.
    localize(this);
    const ThumbnailSettings stored = ThumbnailSettings::read(defaults());
    selectCellWithTag(createIcons, stored.create);
    quitWhenDone->setChecked(stored.quitWhenDone);
    extension->setText(stored.extension);
    width->setText(QString::number(qint32(stored.width)));
    height->setText(QString::number(qint32(stored.height)));
    quality->setText(numberText(stored.quality * 100.0f));
    selectItemWithTag(filetype, stored.filetype);
    selectItemWithTag(antialiasing, stored.interpolation);
    selectItemWithTag(sharpen, stored.sharpen);
    selectCellWithTag(sizing, stored.sizing);
    scale->setText(numberText(stored.scale * 100.0f));
    selectCellWithTag(extensionFormat, stored.extensionFormat);
    didChangeDestination();
}

void PreferencesPanel::apply(QObject *sender)
{
    const QString extensionText = extension->text();
    const qint64 widthValue = integerValue(width->text());
    const qint64 heightValue = integerValue(height->text());
    const float scaleValue = float(floatValue(scale->text()));

    ThumbnailSettings values;
    values.create = selectedTag(createIcons);
    values.quitWhenDone = quitWhenDone->isChecked();
    values.extension = extensionText.isEmpty() ? u"_"_s : extensionText;
    values.width = std::max<qint64>(widthValue, 16);
    values.height = std::max<qint64>(heightValue, 16);
    values.quality = float(floatValue(quality->text())) / 100.0f;
    values.interpolation = selectedTag(antialiasing);
    values.filetype = selectedTag(filetype);
    values.sharpen = selectedTag(sharpen);
    values.sizing = selectedTag(sizing);
    values.extensionFormat = selectedTag(extensionFormat);
    values.scale = std::clamp(scaleValue, 1.0f, 100.0f) / 100.0f;
    UserDefaults &store = defaults();
    values.write(store);
    // The thumbnails are made in worker processes, which read the store's file.
    store.synchronize();

    if (sender)
        awakeFromNib();
}

void PreferencesPanel::didChangeDestination()
{
    extensionName->setText(extensionFormat->checkedId() == 2 ? localizedText(QStringLiteral("Name:"))
                                                             : localizedText(QStringLiteral("Extension:")));
}

void PreferencesPanel::makeKeyAndOrderFront()
{
    show();
    raise();
    activateWindow();
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
    if (std::any_of(urls.cbegin(), urls.cend(), [](const QUrl &url) { return url.isLocalFile(); }))
        event->acceptProposedAction();
}

void PreferencesPanel::dropEvent(QDropEvent *event)
{
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
