// The localisation walk over real widgets, with strings tables compiled in the test by lrelease.
#include "support/Localization.h"

#include "testlib/TestSupport.h"

#include <QAction>
#include <QButtonGroup>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTextEdit>
#include <QToolBar>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

using namespace orvel;
using orvel::test::DefaultLocale;
using orvel::test::TempDir;

namespace {

using Rows = std::vector<std::pair<QString, QString>>;

QString escaped(const QString &text) { return text.toHtmlEscaped(); }

// Compiles the table with lrelease into dir/translations/<table>_<language>.qm, context the table name.
bool compileTable(const QString &dir, const QString &table, const QString &language, const Rows &rows,
    const QString &context = QString())
{
    QString ts = u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE TS>\n"
                 "<TS version=\"2.1\" language=\"%1\">\n<context>\n<name>%2</name>\n"_s.arg(
                     language, escaped(context.isEmpty() ? table : context));
    for (const auto &[source, translation] : rows)
        ts += u"<message><source>%1</source><translation>%2</translation></message>\n"_s.arg(
            escaped(source), escaped(translation));
    ts += u"</context>\n</TS>\n"_s;
    QDir().mkpath(dir + u"/translations"_s);
    const QString base = dir + u"/translations/"_s + table + u'_' + language;
    if (!orvel::test::writeBytes(base + u".ts"_s, ts.toUtf8()))
        return false;
    return orvel::test::runProgram(
               QStringLiteral(ORVEL_LRELEASE), { u"-silent"_s, base + u".ts"_s, u"-qm"_s, base + u".qm"_s })
        == 0;
}

// German interface for the duration of a test.
class Localization : public ::testing::Test
{
protected:
    const DefaultLocale m_german { QLocale(QLocale::German, QLocale::Germany) };
    TempDir m_dir;
};

const Rows germanRows = { { "File", "Test-Datei" }, { "Open…", "Öffnen…" }, { "Recent", "Zuletzt" },
    { "Quit", "Beenden" }, { "Preferences", "Einstellungen" }, { "Make thumbnails", "Miniaturen erstellen" },
    { "Tools", "Werkzeuge" }, { "Details", "Einzelheiten" }, { "Create", "Erstellen" },
    { "Thumbnail", "Miniatur" }, { "Icon", "Symbol" }, { "Apply", "Anwenden" }, { "Format", "Format" },
    { "Low", "Niedrig" }, { "High", "Hoch" }, { "_thumb", "_miniatur" },
    { "Suffix or name", "Endung oder Name" }, { "Extension:", "Endung:" }, { "Column", "Spalte" },
    { "General", "Allgemein" }, { "Sizes", "Größen" }, { "Left", "Links" }, { "Right", "Rechts" },
    { "Segment tip", "Segment-Tipp" }, { "stringValue", "Zeichenkette" }, { "Notes", "Notizen" },
    { " px", " Pixel" }, { "Copy", "Kopieren" }, { "Characters", "Zeichen" }, { "Services", "Dienste" },
    { "Shows more", "Zeigt mehr" } };

} // namespace

TEST_F(Localization, StringsTableIsTheReadableFileOfTheTableAndLanguage)
{
    ASSERT_TRUE(compileTable(m_dir.path(), "Localizable", "de", { { "File", "Datei" } }));
    ASSERT_TRUE(compileTable(m_dir.path(), "Localizable", "fr", { { "File", "Fichier" } }));
    ASSERT_TRUE(compileTable(m_dir.path(), "Menus", "de", { { "File", "Ablage" } }));
    // A file whose messages carry another context holds no entries of its table.
    ASSERT_TRUE(compileTable(m_dir.path(), "Stray", "de", { { "File", "Falsch" } }, "Localizable"));
    const Bundle bundle("org.example.test", m_dir.path());

    EXPECT_EQ(bundle.localizedStringForKey("File", "", QString()), "Datei");
    EXPECT_EQ(bundle.localizedStringForKey("File", "", "Menus"), "Ablage");
    EXPECT_EQ(bundle.localizedStringForKey("File", "", "Stray"), "File");
    EXPECT_EQ(bundle.localizedStringForKey("Edit", "Bearbeiten", QString()), "Bearbeiten");
    EXPECT_EQ(bundle.localizedStringForKey("File", "", "Missing"), "File");
    EXPECT_EQ(bundle.localizedStringForKey("File", "", "../translations/Menus"), "File");
    EXPECT_EQ(bundle.stringsTable("", QLocale(QLocale::French)).localizedStringForKey("File"), "Fichier");
    EXPECT_TRUE(bundle.stringsTable("", QLocale(QLocale::Italian)).isEmpty());

    // A broken or cut table file leaves the texts as they are.
    ASSERT_TRUE(
        orvel::test::writeBytes(m_dir.file("translations/Localizable_de.qm"), QByteArray(4096, '\x3c')));
    ASSERT_TRUE(
        orvel::test::writeBytes(m_dir.file("translations/Short_de.qm"), QByteArray("\x3c\xb8\x64\x18")));
    const Bundle broken("org.example.broken", m_dir.path());
    EXPECT_EQ(broken.localizedStringForKey("File", "", QString()), "File");
    EXPECT_EQ(broken.localizedStringForKey("File", "", "Short"), "File");
}

TEST_F(Localization, ShippedToolkitTableTranslatesTheToolkit)
{
    EXPECT_EQ(Bundle::toolkitBundle().localizedStringForKey("Download", "", "Bundle"), "Herunterladen");
}

// The sorted sources of a shipped table, and how many translations in it are filled in.
static std::pair<QStringList, qsizetype> shippedMessages(const QString &file)
{
    const QString ts
        = QString::fromUtf8(orvel::test::readBytes(QStringLiteral(ORVEL_TRANSLATIONS_DIR "/") + file));
    QStringList sources;
    for (const QRegularExpressionMatch &m : QRegularExpression(u"<source>([^<]*)</source>"_s).globalMatch(ts))
        sources << m.captured(1);
    sources.sort();
    return { sources, ts.count(QRegularExpression(u"<translation>[^<]+</translation>"_s)) };
}

TEST(ShippedTables, GermanAndFrenchTranslateTheSameToolkitTextsCompletely)
{
    const auto [german, germanDone] = shippedMessages(u"Bundle_de.ts"_s);
    const auto [french, frenchDone] = shippedMessages(u"Bundle_fr.ts"_s);
    EXPECT_FALSE(german.isEmpty());
    EXPECT_EQ(german, french);
    EXPECT_EQ(germanDone, german.size());
    EXPECT_EQ(frenchDone, french.size());
}

// A main window holding each class that the walk knows; every widget ends up owned by the window.
struct Interface
{
    QMainWindow window;
    QMenu *fileMenu = window.menuBar()->addMenu("File");
    QAction *open = fileMenu->addAction("Open…");
    QMenu *recentMenu = fileMenu->addMenu("Recent");
    QAction *quit = fileMenu->addAction("Quit");
    QToolBar *toolBar = window.addToolBar("Tools");
    QAction *tools = toolBar->addAction("Make thumbnails");
    QLabel *dockLabel = new QLabel("Notes");
    QDockWidget *dock = new QDockWidget("Details", &window);
    QWidget *central = new QWidget;
    QGroupBox *box = new QGroupBox("Create");
    QRadioButton *thumbnail = new QRadioButton("Thumbnail");
    QRadioButton *icon = new QRadioButton("Icon");
    QButtonGroup *group = new QButtonGroup(central);
    QPushButton *apply = new QPushButton("Apply");
    QComboBox *format = new QComboBox;
    QLineEdit *extension = new QLineEdit("_thumb");
    QLabel *label = new QLabel("Extension:");
    QStandardItemModel model { 1, 2 };
    QTableView *table = new QTableView;
    QTabWidget *tabs = new QTabWidget;
    QTabBar *segments = new QTabBar;
    QLabel *segmentLabel = new QLabel("Notes", segments); // a segmented control's subviews are left alone
    QTextEdit *placeholderView = new QTextEdit;
    QPlainTextEdit *notes = new QPlainTextEdit("Notes");
    QSpinBox *width = new QSpinBox;

    Interface()
    {
        window.setWindowTitle("Preferences");
        open->setToolTip("Shows more");
        recentMenu->addAction("Copy");
        toolBar->addAction(open); // the same action in the menu and on the tool bar
        dock->setWidget(dockLabel);
        window.addDockWidget(Qt::LeftDockWidgetArea, dock);

        auto *layout = new QVBoxLayout(central);
        box->setToolTip("Shows more");
        auto *boxLayout = new QVBoxLayout(box);
        boxLayout->addWidget(thumbnail);
        boxLayout->addWidget(icon);
        group->addButton(thumbnail, 0);
        group->addButton(icon, 2);
        layout->addWidget(box);
        format->addItem("Low", 2);
        format->addItem("High", 3);
        format->setToolTip("Format");
        extension->setPlaceholderText("Suffix or name");
        extension->addAction(new QAction("Copy", extension)); // not a context menu: a text field has none
        model.setHorizontalHeaderLabels({ "Column", "Unlisted" });
        table->setModel(&model);
        tabs->addTab(new QLabel("Notes"), "General");
        tabs->addTab(new QWidget, "Sizes");
        segments->addTab("Left");
        segments->addTab("Right");
        segments->setTabToolTip(1, "Segment tip");
        placeholderView->setPlainText("stringValue");
        width->setSuffix(" px");
        for (QWidget *w : std::initializer_list<QWidget *> {
                 apply, format, extension, label, table, tabs, segments, placeholderView, notes, width })
            layout->addWidget(w);
        central->setContextMenuPolicy(Qt::ActionsContextMenu);
        central->addAction(new QAction("Characters", central));
        window.setCentralWidget(central);
    }
};

TEST_F(Localization, WalkTranslatesEveryMappedClass)
{
    ASSERT_TRUE(compileTable(m_dir.path(), "Panel", "de", germanRows));
    Interface ui;
    localizeUsingTable(&ui.window, "Panel", Bundle("org.example.test", m_dir.path()));

    EXPECT_EQ(ui.window.windowTitle(), "Einstellungen");
    EXPECT_EQ(ui.open->text(), "Öffnen…");
    EXPECT_EQ(ui.open->toolTip(), "Zeigt mehr");
    EXPECT_EQ(ui.quit->toolTip(), "Beenden"); // a tool tip that follows the text follows its translation
    EXPECT_EQ(ui.recentMenu->actions().value(0)->text(), "Kopieren");
    EXPECT_EQ(ui.toolBar->windowTitle(), "Werkzeuge");
    EXPECT_EQ(ui.dock->windowTitle(), "Einzelheiten");
    EXPECT_EQ(ui.dockLabel->text(), "Notizen");
    EXPECT_EQ(ui.box->title(), "Erstellen");
    EXPECT_EQ(ui.apply->text(), "Anwenden");
    EXPECT_EQ(ui.format->itemText(1), "Hoch");
    EXPECT_EQ(ui.extension->text(), "_miniatur");
    EXPECT_EQ(ui.extension->placeholderText(), "Endung oder Name");
    EXPECT_EQ(ui.extension->actions().value(0)->text(), "Copy");
    EXPECT_EQ(ui.label->text(), "Endung:");
    EXPECT_EQ(ui.model.headerData(0, Qt::Horizontal).toString(), "Spalte");
    EXPECT_EQ(ui.tabs->tabText(1), "Größen");
    EXPECT_EQ(qobject_cast<QLabel *>(ui.tabs->widget(0))->text(), "Notizen");
    EXPECT_EQ(ui.segments->tabToolTip(1), "Segment-Tipp");
    EXPECT_EQ(ui.segmentLabel->text(), "Notes");
    EXPECT_EQ(ui.placeholderView->toPlainText(), "stringValue");
    EXPECT_EQ(ui.notes->toPlainText(), "Notizen");
    EXPECT_EQ(ui.width->suffix(), " Pixel");
    EXPECT_EQ(ui.window.centralWidget()->actions().value(0)->text(), "Zeichen");
    // A menu's title comes from the main bundle's table of that name, which has none.
    EXPECT_EQ(ui.fileMenu->title(), "File");
}

TEST_F(Localization, ActionAndButtonGroupAlone)
{
    ASSERT_TRUE(compileTable(m_dir.path(), "Panel", "de", germanRows));
    const Bundle bundle("org.example.test", m_dir.path());
    QAction action("Apply");
    localizeUsingTable(&action, "Panel", bundle);
    EXPECT_EQ(action.text(), "Anwenden");

    QButtonGroup group;
    QRadioButton icon("Icon");
    icon.setToolTip("Shows more");
    group.addButton(&icon);
    localizeUsingTable(&group, "Panel", bundle);
    EXPECT_EQ(icon.text(), "Symbol");
    EXPECT_EQ(icon.toolTip(), "Zeigt mehr");
    localize(static_cast<QWidget *>(nullptr)); // nothing to walk
}

TEST_F(Localization, MenuAloneTakesItsTitleFromTheMainBundleAndKeepsSystemTexts)
{
    ASSERT_TRUE(compileTable(m_dir.path(), "Localizable", "de", germanRows));
    const Bundle bundle("org.example.test", m_dir.path());
    QMenu menu("&File");
    QAction *characters = menu.addAction("Characters");
    characters->setProperty(SystemTextProperty, true);
    QMenu *services = menu.addMenu("Services");
    services->setProperty(SystemTextProperty, true);
    QAction *copy = services->addAction("Copy");

    localizeUsingTable(&menu, QString(), bundle);
    EXPECT_EQ(menu.title(), "&Datei"); // a menu's own title comes from the main bundle
    EXPECT_EQ(characters->text(), "Characters");
    EXPECT_EQ(services->menuAction()->text(), "Services"); // the main bundle has no "Services"
    EXPECT_EQ(copy->text(), "Copy");

    replaceString(&menu, "C", "K");
    EXPECT_EQ(characters->text(), "Kharacters"); // the character palette exception is for translation only
    EXPECT_EQ(copy->text(), "Copy");
}

TEST_F(Localization, ReplacementVisitsEachTextOnce)
{
    Interface ui;
    ui.window.setWindowTitle("Orvel Preferences");
    ui.open->setText("Open in Orvel");
    ui.thumbnail->setText("Orvel thumbnail");
    ui.tabs->setTabText(0, "Orvel");
    ui.format->setItemText(0, "Orvel low");

    replaceString(&ui.window, "Orvel", "Orvel Pro");
    EXPECT_EQ(ui.window.windowTitle(), "Orvel Pro Preferences");
    EXPECT_EQ(ui.open->text(), "Open in Orvel Pro"); // in the menu and on the tool bar
    EXPECT_EQ(ui.thumbnail->text(), "Orvel Pro thumbnail"); // in its group and in the group box
    EXPECT_EQ(ui.tabs->tabText(0), "Orvel Pro"); // on the tab widget and its tab bar
    EXPECT_EQ(ui.format->itemText(0), "Orvel Pro low");

    replaceString(&ui.window, "", "x");
    EXPECT_EQ(ui.window.windowTitle(), "Orvel Pro Preferences");
}

TEST(KeyEquivalentKey, IsBuiltAndSplitBackOnlyLeadingPrefixesBeingModifiers)
{
    const QKeyCombination none(Qt::Key_unknown); // a key that is only split
    // The shortcut, its key, and what splitting the key back gives.
    const std::tuple<QKeyCombination, const char *, const char *, Qt::KeyboardModifiers> cases[] = {
        { Qt::CTRL | Qt::SHIFT | Qt::Key_S, "CMD_SHIFT_s", "s", Qt::ControlModifier | Qt::ShiftModifier },
        { Qt::CTRL | Qt::ALT | Qt::Key_X, "CMD_OPT_x", "x", Qt::ControlModifier | Qt::AltModifier },
        { Qt::SHIFT | Qt::ALT | Qt::META | Qt::CTRL | Qt::Key_F5, "CMD_CTRL_OPT_SHIFT_F5", "F5",
            Qt::ControlModifier | Qt::MetaModifier | Qt::AltModifier | Qt::ShiftModifier },
        { Qt::CTRL | Qt::Key_Comma, "CMD_,", ",", Qt::ControlModifier },
        { QKeyCombination(Qt::ControlModifier | Qt::KeypadModifier, Qt::Key_Plus), "CMD_+", "+",
            Qt::ControlModifier },
        { QKeyCombination(Qt::Key_Delete), "Del", "Del", Qt::NoModifier },
        { Qt::META | Qt::Key_Underscore, "CTRL__", "_", Qt::MetaModifier },
        { none, "", "", Qt::NoModifier },
        { none, "cmd_q", "cmd_q", Qt::NoModifier },
        { none, "OPT_", "", Qt::AltModifier },
    };
    for (const auto &[shortcut, key, characters, modifiers] : cases) {
        if (shortcut != none || !*key) {
            EXPECT_EQ(keyEquivalentKey(shortcut), QString::fromUtf8(key));
        }
        Qt::KeyboardModifiers mask;
        EXPECT_EQ(keyEquivalentAndModifierMask(QString::fromUtf8(key), &mask), QString::fromUtf8(characters))
            << key;
        EXPECT_EQ(mask, modifiers) << key;
    }
    EXPECT_EQ(keyEquivalentAndModifierMask(u"SHIFT_Left", nullptr), "Left");
}

TEST_F(Localization, KeyEquivalentsMoveWhereTheTableSays)
{
    ASSERT_TRUE(compileTable(m_dir.path(), "Keys", "de",
        { { "CMD_OPT_x", "CMD_SHIFT_y" }, { "CMD_w", "CMD_no key" }, { "CMD_c", "OPT_c" },
            { "SHIFT_Del", "CMD_" } }));
    const Bundle bundle("org.example.keys", m_dir.path());
    QMenuBar bar;
    QMenu *file = bar.addMenu("File");
    QMenu *edit = file->addMenu("Edit");
    QMenu *services = file->addMenu("Services");
    services->setProperty(SystemTextProperty, true);
    auto add = [](QMenu *menu, QKeyCombination shortcut) {
        QAction *action = menu->addAction("Item");
        action->setShortcut(shortcut);
        return action;
    };
    QAction *cut = add(file, Qt::CTRL | Qt::ALT | Qt::Key_X);
    QAction *quit = add(file, Qt::CTRL | Qt::Key_Q);
    QAction *close = add(file, Qt::CTRL | Qt::Key_W);
    QAction *copy = add(edit, Qt::CTRL | Qt::Key_C);
    QAction *erase = add(edit, Qt::SHIFT | Qt::Key_Delete);
    QAction *system = add(services, Qt::CTRL | Qt::Key_C);

    localizeKeyEquivalentsUsingTable(&bar, "Keys", bundle);
    EXPECT_EQ(cut->shortcut(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Y));
    EXPECT_EQ(quit->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q)); // untranslated: kept
    EXPECT_EQ(close->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_W)); // not one key: kept
    EXPECT_EQ(copy->shortcut(), QKeySequence(Qt::ALT | Qt::Key_C)); // in a submenu
    EXPECT_TRUE(erase->shortcut().isEmpty()); // a translation may take it away
    EXPECT_EQ(system->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_C)); // the system's menu is left alone

    QAction alone("Quit");
    alone.setShortcut(Qt::CTRL | Qt::ALT | Qt::Key_X);
    localizeKeyEquivalentUsingTable(&alone, "Keys", bundle);
    EXPECT_EQ(alone.shortcut(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Y));
}
