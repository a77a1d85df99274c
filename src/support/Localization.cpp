// The localisation walk over Qt's widget tree, and the localisation of menu shortcuts.
#include "support/Localization.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAction>
#include <QButtonGroup>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSet>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QWidget>

#include <optional>
#include <utility>

namespace orvel {

namespace {

// One walk: what it does to a text (translate or replace) and which objects it has visited.
class Walk
{
public:
    Walk(const QString &table, const Bundle &bundle)
        : m_tableName(table)
        , m_table(bundle.stringsTable(table))
    {
    }
    Walk(const QString &oldText, const QString &newText)
        : m_replacing(true)
        , m_oldText(oldText)
        , m_newText(newText)
    {
    }

    bool isReplacing() const { return m_replacing; }

    // Each widget, menu and action is visited once per walk: an action shown both in a menu and on a
    // tool bar, or a page reachable from its tab widget and from the tab widget's stack, would
    // otherwise be rewritten twice ("Thumbs" -> "Thumbs Pro" -> "Thumbs Pro Pro").
    bool firstVisit(const QObject *object)
    {
        if (!object || m_seen.contains(object))
            return false;
        m_seen.insert(object);
        return true;
    }
    void markVisited(const QObject *object) { m_seen.insert(object); }

    // The rule for one text attribute: an empty text is left alone; any other is looked up (or has
    // its substrings replaced) and set when that changes it. Setting an unchanged text would only
    // send change signals (and pin an action's tool tip that follows its text).
    template <typename Setter> void apply(const QString &text, Setter set) { applyFrom(m_table, text, set); }
    // A menu's own title comes from the main bundle's table of the same name, whatever bundle the
    // walk was given.
    template <typename Setter> void applyTitle(const QString &text, Setter set)
    {
        if (!m_replacing && !m_titleTable)
            m_titleTable = Bundle::mainBundle().stringsTable(m_tableName);
        applyFrom(m_replacing ? m_table : *m_titleTable, text, set);
    }

private:
    template <typename Setter> void applyFrom(const StringsTable &table, const QString &text, Setter set)
    {
        if (text.isEmpty())
            return;
        QString result;
        if (m_replacing) // every occurrence, left to right; an empty old text changes nothing
            result = m_oldText.isEmpty() ? text : QString(text).replace(m_oldText, m_newText);
        else
            result = table.localizedStringForKey(text);
        if (result != text)
            set(result);
    }

    bool m_replacing = false;
    QString m_tableName;
    StringsTable m_table;
    std::optional<StringsTable> m_titleTable;
    QString m_oldText;
    QString m_newText;
    QSet<const QObject *> m_seen;
};

// Repainting paused while a menu's items change, and restored after.
class UpdatesPaused
{
public:
    explicit UpdatesPaused(QWidget *widget)
        : m_widget(widget)
        , m_was(widget->updatesEnabled())
    {
        m_widget->setUpdatesEnabled(false);
    }
    ~UpdatesPaused() { m_widget->setUpdatesEnabled(m_was); }
    UpdatesPaused(const UpdatesPaused &) = delete;
    UpdatesPaused &operator=(const UpdatesPaused &) = delete;

private:
    QWidget *m_widget;
    bool m_was;
};

bool isSystemText(const QObject *object) { return object->property(SystemTextProperty).toBool(); }

void walkWidget(QWidget *widget, Walk &walk);
void walkMenu(QMenu *menu, Walk &walk);

// A menu item or tool bar action: its text, icon text and tool tip, then its submenu.
void walkAction(QAction *action, Walk &walk)
{
    if (!walk.firstVisit(action))
        return;
    QMenu *submenu = action->menu<QMenu *>();
    if (!isSystemText(action) || walk.isReplacing()) {
        const QString toolTip = action->toolTip();
        const QString iconText = action->iconText();
        const auto setText = [action](const QString &text) { action->setText(text); };
        // The item of a submenu shows that menu's title.
        if (submenu)
            walk.applyTitle(action->text(), setText);
        else
            walk.apply(action->text(), setText);
        // An action's icon text (its tool bar label) and tool tip follow its text unless they were set
        // on their own: only those that did not follow are looked up themselves.
        if (action->iconText() == iconText)
            walk.apply(iconText, [action](const QString &text) { action->setIconText(text); });
        if (action->toolTip() == toolTip)
            walk.apply(toolTip, [action](const QString &text) { action->setToolTip(text); });
    }
    if (submenu && !isSystemText(submenu))
        walkMenu(submenu, walk);
}

void walkMenuItems(QWidget *menu, Walk &walk)
{
    const UpdatesPaused paused(menu);
    for (QAction *action : menu->actions())
        walkAction(action, walk);
}

// A menu once visited: its items, then its own title.
void walkMenuContents(QMenu *menu, Walk &walk)
{
    walkMenuItems(menu, walk);
    // Reached through its item, the title is already done (the item shows it).
    if (walk.firstVisit(menu->menuAction()))
        walk.applyTitle(menu->title(), [menu](const QString &text) { menu->setTitle(text); });
}

void walkMenu(QMenu *menu, Walk &walk)
{
    if (walk.firstVisit(menu))
        walkMenuContents(menu, walk);
}

void walkButtonGroup(QButtonGroup *group, Walk &walk)
{
    for (QAbstractButton *button : group->buttons())
        walkWidget(button, walk);
}

// The rest of a view: its context menu (the actions it shows on a right click), the radio-button
// groups it owns, then its child widgets in order. Child windows (dialogs, pop-ups) are not
// part of the view.
void walkSubviews(QWidget *widget, Walk &walk, bool withContextMenu)
{
    if (withContextMenu) {
        for (QAction *action : widget->actions())
            walkAction(action, walk);
    }
    for (QButtonGroup *group : widget->findChildren<QButtonGroup *>(Qt::FindDirectChildrenOnly))
        walkButtonGroup(group, walk);
    for (QObject *child : widget->children()) {
        QWidget *subview = qobject_cast<QWidget *>(child);
        if (subview && !subview->isWindow())
            walkWidget(subview, walk);
    }
}

bool isTextField(const QWidget *widget)
{
    return qobject_cast<const QLineEdit *>(widget) || qobject_cast<const QLabel *>(widget);
}

bool isTextView(const QWidget *widget)
{
    return qobject_cast<const QTextEdit *>(widget) || qobject_cast<const QPlainTextEdit *>(widget);
}

// The general view operation: tool tip, title, text contents, then context menu and subviews.
void walkView(QWidget *widget, Walk &walk)
{
    walk.apply(widget->toolTip(), [widget](const QString &text) { widget->setToolTip(text); });
    if (auto *button = qobject_cast<QAbstractButton *>(widget))
        walk.apply(button->text(), [button](const QString &text) { button->setText(text); });
    // A text view's contents, unless they are the placeholder left in interface designs.
    if (auto *textEdit = qobject_cast<QTextEdit *>(widget)) {
        const QString contents = textEdit->toPlainText();
        if (contents != StringValuePlaceholder)
            walk.apply(contents, [textEdit](const QString &text) { textEdit->setPlainText(text); });
    } else if (auto *plainEdit = qobject_cast<QPlainTextEdit *>(widget)) {
        const QString contents = plainEdit->toPlainText();
        if (contents != StringValuePlaceholder)
            walk.apply(contents, [plainEdit](const QString &text) { plainEdit->setPlainText(text); });
    }
    walkSubviews(widget, walk, !isTextField(widget) && !isTextView(widget));
}

void walkTabBar(QTabBar *bar, Walk &walk)
{
    for (int i = 0; i < bar->count(); ++i) {
        walk.apply(bar->tabText(i), [bar, i](const QString &text) { bar->setTabText(i, text); });
        walk.apply(bar->tabToolTip(i), [bar, i](const QString &text) { bar->setTabToolTip(i, text); });
    }
    walk.apply(bar->toolTip(), [bar](const QString &text) { bar->setToolTip(text); });
}

void walkComboBox(QComboBox *box, Walk &walk)
{
    walk.apply(box->toolTip(), [box](const QString &text) { box->setToolTip(text); });
    // The items keep their data (the tags that the code selects them by).
    for (int i = 0; i < box->count(); ++i)
        walk.apply(box->itemText(i), [box, i](const QString &text) { box->setItemText(i, text); });
    walk.apply(box->placeholderText(), [box](const QString &text) { box->setPlaceholderText(text); });
    walkSubviews(box, walk, false);
}

// A spin box is a field whose text is its value: only the texts around the value are interface.
void walkSpinBox(QAbstractSpinBox *box, Walk &walk)
{
    walk.apply(box->toolTip(), [box](const QString &text) { box->setToolTip(text); });
    walk.apply(box->specialValueText(), [box](const QString &text) { box->setSpecialValueText(text); });
    if (auto *spin = qobject_cast<QSpinBox *>(box)) {
        walk.apply(spin->prefix(), [spin](const QString &text) { spin->setPrefix(text); });
        walk.apply(spin->suffix(), [spin](const QString &text) { spin->setSuffix(text); });
    } else if (auto *spin = qobject_cast<QDoubleSpinBox *>(box)) {
        walk.apply(spin->prefix(), [spin](const QString &text) { spin->setPrefix(text); });
        walk.apply(spin->suffix(), [spin](const QString &text) { spin->setSuffix(text); });
    }
}

// The column titles of a table or tree view, in its model.
void walkColumnTitles(QAbstractItemView *view, Walk &walk)
{
    if (!qobject_cast<QTableView *>(view) && !qobject_cast<QTreeView *>(view))
        return;
    QAbstractItemModel *model = view->model();
    if (!model)
        return;
    for (int column = 0; column < model->columnCount(); ++column) {
        walk.apply(model->headerData(column, Qt::Horizontal).toString(),
            [model, column](const QString &text) { model->setHeaderData(column, Qt::Horizontal, text); });
    }
}

void walkWidget(QWidget *widget, Walk &walk)
{
    if (!widget || !walk.firstVisit(widget))
        return;
    const auto setWindowTitle = [widget](const QString &text) { widget->setWindowTitle(text); };

    if (auto *menu = qobject_cast<QMenu *>(widget)) {
        walkMenuContents(menu, walk);
        return;
    }
    if (auto *bar = qobject_cast<QMenuBar *>(widget)) {
        walkMenuItems(bar, walk);
        return;
    }
    // A tool bar and a dock widget show their titles in the main window's context menu and (floating)
    // on their frame; a tool bar's contents are its actions, a dock widget's the widget it holds.
    if (auto *toolBar = qobject_cast<QToolBar *>(widget)) {
        walk.apply(toolBar->windowTitle(), setWindowTitle);
        for (QAction *action : localizableItems(toolBar))
            walkAction(action, walk);
        return;
    }
    if (auto *dock = qobject_cast<QDockWidget *>(widget)) {
        walk.apply(dock->windowTitle(), setWindowTitle);
        walkWidget(dock->widget(), walk);
        return;
    }

    // A window: its title, then itself as the view it is.
    if (widget->isWindow())
        walk.apply(widget->windowTitle(), setWindowTitle);

    if (auto *bar = qobject_cast<QTabBar *>(widget)) {
        walkTabBar(bar, walk); // its tab buttons are not visited
        return;
    }
    if (auto *box = qobject_cast<QGroupBox *>(widget)) {
        walk.apply(box->toolTip(), [box](const QString &text) { box->setToolTip(text); });
        // A group box shows its title whenever it has one.
        walk.apply(box->title(), [box](const QString &text) { box->setTitle(text); });
        walkSubviews(box, walk, true);
        return;
    }
    if (auto *box = qobject_cast<QComboBox *>(widget)) {
        walkComboBox(box, walk);
        return;
    }
    if (auto *box = qobject_cast<QAbstractSpinBox *>(widget)) {
        walkSpinBox(box, walk);
        return;
    }
    if (auto *tabs = qobject_cast<QTabWidget *>(widget)) {
        for (int i = 0; i < tabs->count(); ++i)
            walk.apply(tabs->tabText(i), [tabs, i](const QString &text) { tabs->setTabText(i, text); });
        walk.markVisited(tabs->tabBar()); // its labels are the tab widget's
        for (int i = 0; i < tabs->count(); ++i)
            walkWidget(tabs->widget(i), walk);
    } else if (auto *view = qobject_cast<QAbstractItemView *>(widget);
               view && !qobject_cast<QHeaderView *>(view)) {
        walkColumnTitles(view, walk);
    } else if (auto *field = qobject_cast<QLineEdit *>(widget)) {
        walk.apply(field->text(), [field](const QString &text) { field->setText(text); });
        walk.apply(
            field->placeholderText(), [field](const QString &text) { field->setPlaceholderText(text); });
    } else if (auto *label = qobject_cast<QLabel *>(widget)) {
        walk.apply(label->text(), [label](const QString &text) { label->setText(text); });
    } else if (auto *button = qobject_cast<QPushButton *>(widget)) {
        if (button->menu())
            walkMenu(button->menu(), walk);
    } else if (auto *button = qobject_cast<QToolButton *>(widget)) {
        if (button->menu())
            walkMenu(button->menu(), walk);
    }
    walkView(widget, walk);
}

// Shortcuts: the key-equivalent key of each item looked up in one table.
class KeyWalk
{
public:
    explicit KeyWalk(StringsTable table)
        : m_table(std::move(table))
    {
    }

    void item(QAction *action)
    {
        if (!action || m_seen.contains(action))
            return;
        m_seen.insert(action);
        const QKeySequence shortcut = action->shortcut();
        if (shortcut.isEmpty())
            return;
        const QString key = keyEquivalentKey(shortcut[0]);
        if (key.isEmpty())
            return;
        const QString translation = m_table.localizedStringForKey(key);
        if (translation == key)
            return; // untranslated: the shortcut stays
        Qt::KeyboardModifiers mask;
        const QString characters = keyEquivalentAndModifierMask(translation, &mask);
        if (characters.isEmpty()) {
            action->setShortcut(QKeySequence()); // a translation may take the shortcut away
            return;
        }
        // A single letter is a key whatever its case: a shift is written as "SHIFT_".
        QString name = characters;
        if (name.size() == 1 && name.at(0).isLower() && name.at(0).unicode() < 128)
            name = name.toUpper();
        const QKeySequence parsed = QKeySequence::fromString(name, QKeySequence::PortableText);
        if (parsed.count() != 1 || parsed[0].keyboardModifiers() != Qt::NoModifier
            || parsed[0].key() == Qt::Key_unknown)
            return; // not one key: the shortcut stays
        action->setShortcut(QKeySequence(QKeyCombination(mask, parsed[0].key())));
    }

    void menu(QWidget *menu)
    {
        if (!menu || m_seen.contains(menu))
            return;
        m_seen.insert(menu);
        const UpdatesPaused paused(menu);
        for (QAction *action : menu->actions()) {
            item(action);
            QMenu *submenu = action->menu<QMenu *>();
            if (submenu && !isSystemText(submenu))
                this->menu(submenu);
        }
    }

private:
    StringsTable m_table;
    QSet<const QObject *> m_seen;
};

} // namespace

void localize(QWidget *widget) { localizeUsingTable(widget, QString()); }

void localizeUsingTable(QWidget *widget, const QString &table)
{
    localizeUsingTable(widget, table, Bundle::mainBundle());
}

void localizeUsingTable(QWidget *widget, const QString &table, const Bundle &bundle)
{
    if (!widget)
        return;
    Walk walk(table, bundle);
    walkWidget(widget, walk);
}

void replaceString(QWidget *widget, const QString &oldText, const QString &newText)
{
    if (!widget)
        return;
    Walk walk(oldText, newText);
    walkWidget(widget, walk);
}

void localize(QAction *item) { localizeUsingTable(item, QString()); }

void localizeUsingTable(QAction *item, const QString &table)
{
    localizeUsingTable(item, table, Bundle::mainBundle());
}

void localizeUsingTable(QAction *item, const QString &table, const Bundle &bundle)
{
    if (!item)
        return;
    Walk walk(table, bundle);
    walkAction(item, walk);
}

void replaceString(QAction *item, const QString &oldText, const QString &newText)
{
    if (!item)
        return;
    Walk walk(oldText, newText);
    walkAction(item, walk);
}

void localize(QButtonGroup *group) { localizeUsingTable(group, QString()); }

void localizeUsingTable(QButtonGroup *group, const QString &table)
{
    localizeUsingTable(group, table, Bundle::mainBundle());
}

void localizeUsingTable(QButtonGroup *group, const QString &table, const Bundle &bundle)
{
    if (!group)
        return;
    Walk walk(table, bundle);
    walkButtonGroup(group, walk);
}

void replaceString(QButtonGroup *group, const QString &oldText, const QString &newText)
{
    if (!group)
        return;
    Walk walk(oldText, newText);
    walkButtonGroup(group, walk);
}

QList<QAction *> localizableItems(const QToolBar *toolBar)
{
    // Every action the tool bar holds, shown or not (a hidden action can be shown later).
    return toolBar ? toolBar->actions() : QList<QAction *>();
}

void localizeKeyEquivalents(QMenu *menu) { localizeKeyEquivalentsUsingTable(menu, QString()); }

void localizeKeyEquivalentsUsingTable(QMenu *menu, const QString &table)
{
    localizeKeyEquivalentsUsingTable(menu, table, Bundle::mainBundle());
}

void localizeKeyEquivalentsUsingTable(QMenu *menu, const QString &table, const Bundle &bundle)
{
    if (menu)
        KeyWalk(bundle.stringsTable(table)).menu(menu);
}

void localizeKeyEquivalents(QMenuBar *menuBar) { localizeKeyEquivalentsUsingTable(menuBar, QString()); }

void localizeKeyEquivalentsUsingTable(QMenuBar *menuBar, const QString &table)
{
    localizeKeyEquivalentsUsingTable(menuBar, table, Bundle::mainBundle());
}

void localizeKeyEquivalentsUsingTable(QMenuBar *menuBar, const QString &table, const Bundle &bundle)
{
    if (menuBar)
        KeyWalk(bundle.stringsTable(table)).menu(menuBar);
}

void localizeKeyEquivalent(QAction *item) { localizeKeyEquivalentUsingTable(item, QString()); }

void localizeKeyEquivalentUsingTable(QAction *item, const QString &table)
{
    localizeKeyEquivalentUsingTable(item, table, Bundle::mainBundle());
}

void localizeKeyEquivalentUsingTable(QAction *item, const QString &table, const Bundle &bundle)
{
    if (item)
        KeyWalk(bundle.stringsTable(table)).item(item);
}

// "CMD_" is the main shortcut modifier, which is Ctrl on Linux (Ctrl+S saves, Ctrl+Q quits), and
// "CTRL_" the secondary one, the Meta key. That is also how Qt names them on the platform that has
// a command key (Qt::ControlModifier is the command key there, Qt::MetaModifier the control key), so
// a table's keys mean the same shortcut on every platform Qt runs on.
static constexpr struct
{
    QStringView prefix;
    Qt::KeyboardModifier modifier;
} modifierPrefixes[] = {
    { u"CMD_", Qt::ControlModifier },
    { u"CTRL_", Qt::MetaModifier },
    { u"OPT_", Qt::AltModifier },
    { u"SHIFT_", Qt::ShiftModifier },
};

QString keyEquivalentKey(QKeyCombination shortcut)
{
    const Qt::Key key = shortcut.key();
    if (key == Qt::Key_unknown || key == 0)
        return QString();
    QString name = QKeySequence(QKeyCombination(key)).toString(QKeySequence::PortableText);
    if (name.isEmpty())
        return QString();
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        name = name.toLower();
    QString result;
    for (const auto &entry : modifierPrefixes) {
        if (shortcut.keyboardModifiers().testFlag(entry.modifier))
            result += entry.prefix;
    }
    return result + name;
}

QString keyEquivalentAndModifierMask(QStringView key, Qt::KeyboardModifiers *mask)
{
    Qt::KeyboardModifiers modifiers;
    bool found = true;
    while (found) {
        found = false;
        for (const auto &entry : modifierPrefixes) {
            if (key.startsWith(entry.prefix)) {
                modifiers |= entry.modifier;
                key = key.mid(entry.prefix.size());
                found = true;
            }
        }
    }
    if (mask)
        *mask = modifiers;
    return key.toString();
}

} // namespace orvel
