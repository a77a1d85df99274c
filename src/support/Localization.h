// Interface localisation: one walk over menus, windows, tool bars and widgets that replaces every
// visible text by its translation from a bundle's strings table, or one substring by another.
#pragma once

#include "support/Bundle.h"

#include <QList>
#include <QString>
#include <QStringView>
#include <QtCore/qnamespace.h>

QT_BEGIN_NAMESPACE
class QAction;
class QButtonGroup;
class QMenu;
class QMenuBar;
class QToolBar;
class QWidget;
QT_END_NAMESPACE

namespace orvel {

/// The dynamic property that marks a menu or a menu item whose texts the system supplies: such a
/// menu is never entered (localised or rewritten), such an item is not localised but is rewritten.
inline constexpr const char *SystemTextProperty = "orvelSystemText";

/// The texts that the walk leaves alone: a text view that holds exactly this placeholder keeps it.
inline constexpr QStringView StringValuePlaceholder = u"stringValue";

// A widget is localised by what it is: a window (its title, then its contents), a menu (its items,
// their submenus, then its own title from the main bundle), a menu bar (its menus), a tool bar (its
// actions), a dock widget (its title and its contents), a group box, a button, a combo box (its
// items), a line edit or a label (text and placeholder), an item view (its column headers), a tab
// widget (tab labels and pages), a tab bar (labels and tool tips, nothing below), any other widget
// (tool tip, context menu, button groups, child widgets). A null table name means the bundle's
// default table; the short forms use the main bundle. A missing table, bundle or entry leaves a text
// as it is. Each widget and action is visited once per call, even when it is reachable twice.

void localize(QWidget *widget);
void localizeUsingTable(QWidget *widget, const QString &table);
void localizeUsingTable(QWidget *widget, const QString &table, const Bundle &bundle);
/// The same walk, replacing every occurrence of oldText by newText in each text.
void replaceString(QWidget *widget, const QString &oldText, const QString &newText);

/// A menu item (or tool bar action): its text and tool tip, then its submenu.
void localize(QAction *item);
void localizeUsingTable(QAction *item, const QString &table);
void localizeUsingTable(QAction *item, const QString &table, const Bundle &bundle);
void replaceString(QAction *item, const QString &oldText, const QString &newText);

/// A radio-button group: each button's title, tool tip and contents.
void localize(QButtonGroup *group);
void localizeUsingTable(QButtonGroup *group, const QString &table);
void localizeUsingTable(QButtonGroup *group, const QString &table, const Bundle &bundle);
void replaceString(QButtonGroup *group, const QString &oldText, const QString &newText);

/// The actions of a tool bar that the walk translates.
[[nodiscard]] QList<QAction *> localizableItems(const QToolBar *toolBar);

/// The shortcut of every item of a menu or menu bar and of their submenus, looked up by its
/// key-equivalent key (see keyEquivalentKey()); an item whose key has no translation keeps it.
void localizeKeyEquivalents(QMenu *menu);
void localizeKeyEquivalentsUsingTable(QMenu *menu, const QString &table);
void localizeKeyEquivalentsUsingTable(QMenu *menu, const QString &table, const Bundle &bundle);
void localizeKeyEquivalents(QMenuBar *menuBar);
void localizeKeyEquivalentsUsingTable(QMenuBar *menuBar, const QString &table);
void localizeKeyEquivalentsUsingTable(QMenuBar *menuBar, const QString &table, const Bundle &bundle);
void localizeKeyEquivalent(QAction *item);
void localizeKeyEquivalentUsingTable(QAction *item, const QString &table);
void localizeKeyEquivalentUsingTable(QAction *item, const QString &table, const Bundle &bundle);

/// The key under which a shortcut is translated: "CMD_", "CTRL_", "OPT_", "SHIFT_" (in this order,
/// for the modifiers it has), then the key itself (a letter in lower case, any other key by its
/// portable name: "CMD_SHIFT_s", "CMD_F5", "OPT_Left"). Empty for no key.
/// The command modifier is Qt::ControlModifier, control is Qt::MetaModifier: see
/// keyEquivalentAndModifierMask().
[[nodiscard]] QString keyEquivalentKey(QKeyCombination shortcut);

/// Splits a key-equivalent key: the leading "CMD_", "CTRL_", "OPT_" and "SHIFT_" prefixes become the
/// modifiers stored in *mask (when mask is not null) and the remaining characters are returned.
[[nodiscard]] QString keyEquivalentAndModifierMask(QStringView key, Qt::KeyboardModifiers *mask);

} // namespace orvel
