// The Help menu's own actions.
#include "app/desktop/HelpMenu.h"

#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/LocalizedText.h"
#include "support/HelpActions.h"

#include <QAction>
#include <QMenu>

namespace orvel {

void addHelpActions(QMenu *menu, ApplicationDelegate *delegate)
{
    if (!menu)
        return;
    QAction *before = menu->actions().value(0);
    const auto add = [menu, before](const char *name, const QString &title) {
        auto *action = new QAction(title, menu);
        action->setObjectName(QString::fromLatin1(name));
        menu->insertAction(before, action);
        return action;
    };
    QAction *update = add("actionCheckForUpdates", localizedText(QStringLiteral("Check for &Updates…")));
    if (delegate)
        QObject::connect(update, &QAction::triggered, delegate, &ApplicationDelegate::checkForUpdate);
    menu->insertSeparator(before);
    QAction *help = add("actionHelp", localizedText(QStringLiteral("Orvel Thumbnails &Help")));
    help->setShortcut(QKeySequence::HelpContents);
    QObject::connect(help, &QAction::triggered, [] { HelpActions::showHelp(); });
    QObject::connect(add("actionReleaseNotes", localizedText(QStringLiteral("&Release Notes"))),
        &QAction::triggered, [] { HelpActions::releaseNotes(); });
    menu->insertSeparator(before);
    QObject::connect(add("actionWebsite", localizedText(QStringLiteral("&Website"))), &QAction::triggered,
        [] { HelpActions::website(); });
    QObject::connect(add("actionSupport", localizedText(QStringLiteral("&Support"))), &QAction::triggered,
        [] { HelpActions::support(); });
    QObject::connect(add("actionForum", localizedText(QStringLiteral("&Forum"))), &QAction::triggered,
        [] { HelpActions::forum(); });
    QObject::connect(add("actionDownloads", localizedText(QStringLiteral("&Downloads"))), &QAction::triggered,
        [] { HelpActions::downloads(); });
    QObject::connect(add("actionFeedback", localizedText(QStringLiteral("Send &Feedback…"))),
        &QAction::triggered, [] { HelpActions::feedback(); });
    if (before)
        menu->insertSeparator(before);
}

} // namespace orvel
