// The Help menu: its items in order, translated; its update check.
#include "DesktopTestSupport.h"
#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/DesktopApplication.h"
#include "app/desktop/PreferencesPanel.h"
#include "support/UpdateCheck.h"
#include "support/UserDefaults.h"
#include "testlib/TestSupport.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace orvel;
using namespace orvel::test;

namespace {

// The texts of the Help menu's items, separators as "-".
QStringList helpMenuTexts(const DesktopApplication &application)
{
    const auto *menu = application.panel().findChild<QMenu *>(u"menuHelp"_s);
    QStringList texts;
    if (menu) {
        for (const QAction *action : menu->actions())
            texts << (action->isSeparator() ? u"-"_s : action->text());
    }
    return texts;
}

} // namespace

// Built in the user's language: the items, translated, stand before About.
TEST(HelpMenu, HoldsTheTranslatedHelpActionsBeforeAbout)
{
    const DefaultLocale german(QLocale(QLocale::German, QLocale::Germany));
    DesktopApplication::Options options;
    options.applicationId = uniqueApplicationId();
    DesktopApplication application(options);
    application.delegate().applicationWillFinishLaunching();
    EXPECT_EQ(helpMenuTexts(application),
        QStringList({ u"Nach &Updates suchen …"_s, u"-"_s, u"Orvel Thumbnails-&Hilfe"_s,
            u"&Versionshinweise"_s, u"-"_s, u"&Website"_s, u"&Support"_s, u"&Forum"_s, u"&Downloads"_s,
            u"&Feedback senden …"_s, u"-"_s, u"Ü&ber Orvel Thumbnails"_s }));
}

// The update check of the menu runs beside the event loop and ends in its dialog.
TEST(HelpMenu, CheckForUpdatesStartsTheApplicationsCheck)
{
    DesktopApplication::Options options;
    options.applicationId = uniqueApplicationId();
    DesktopApplication application(options);
    // Pointed at a port where nothing listens (a privileged one): it runs, and ends up to date.
    UpdateCheck::shared().setServerAddress(QUrl(u"http://127.0.0.1:1"_s));
    application.panel().findChild<QAction *>(u"actionCheckForUpdates"_s)->trigger();
    EXPECT_TRUE(UpdateCheck::shared().isRunning());
    QMessageBox *box = nullptr;
    ASSERT_TRUE(processEventsUntil([&box] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->objectName() == u"upToDateDialog")
                box = qobject_cast<QMessageBox *>(widget);
        }
        return box != nullptr;
    }));
    box->buttons().value(0)->click();
    EXPECT_TRUE(processEventsUntil([] { return !UpdateCheck::shared().isRunning(); }));
}
