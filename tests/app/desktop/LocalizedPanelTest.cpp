// Tests of the desktop application in another language: the real panel, its menus, the label switch
// and the progress window in German and French, the layout making room for the longer texts, and
// the shipped tables holding every text the application shows.
#include "DesktopTestSupport.h"
#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/PreferencesPanel.h"
#include "app/desktop/ProgressWindow.h"
#include "support/Bundle.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include <set>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

// The user's language for one test, restored after it.
class InLanguage : public ::testing::Test
{
protected:
    void SetUp() override { clearStandardDefaults(); }
    void TearDown() override { QLocale::setDefault(m_saved); }
    static void use(QLocale::Language language) { QLocale::setDefault(QLocale(language)); }

private:
    QLocale m_saved;
};

template <typename T> T *outlet(const QWidget &window, const char *name)
{
    T *widget = window.findChild<T *>(QString::fromLatin1(name));
    EXPECT_NE(widget, nullptr) << name;
    return widget;
}

TEST_F(InLanguage, ThePanelShowsGermanTextsAndKeepsItsTags)
{
    use(QLocale::German);
    PreferencesPanel panel;
    EXPECT_EQ(panel.windowTitle(), u"Orvel Thumbnails – Einstellungen");
    EXPECT_EQ(outlet<QGroupBox>(panel, "createBox")->title(), u"Erstellen");
    EXPECT_EQ(outlet<QRadioButton>(panel, "createThumbnailWithIcon")->text(),
        u"Eine Miniaturdatei mit eigenem Symbol");
    EXPECT_EQ(outlet<QRadioButton>(panel, "nameFolder")->text(), u"Unterordner");
    EXPECT_EQ(outlet<QLabel>(panel, "qualityLabel")->text(), u"Qualität (Prozent):");
    EXPECT_EQ(
        outlet<QCheckBox>(panel, "quitWhenDone")->text(), u"Beenden, sobald geöffnete Dateien fertig sind");
    // Items are translated in place: each keeps the tag it is selected and stored by.
    auto *sharpen = outlet<QComboBox>(panel, "sharpen");
    EXPECT_EQ(sharpen->itemText(0), u"Keine");
    EXPECT_EQ(sharpen->itemText(3), u"Stark");
    EXPECT_EQ(sharpen->itemData(3).toInt(), 3);
    auto *filetype = outlet<QComboBox>(panel, "filetype");
    EXPECT_EQ(filetype->currentText(), u"JPEG"); // a format's name stays
    EXPECT_EQ(filetype->currentData().toInt(), 3);
    // The values shown are the stored ones, not translations of them.
    EXPECT_EQ(outlet<QLineEdit>(panel, "extension")->text(), u"_thumb");
    EXPECT_EQ(panel.menuBar()->actions().at(0)->text(), u"&Datei");
}

struct LabelTexts
{
    QLocale::Language language;
    const char16_t *extension;
    const char16_t *name;
};

class LabelSwitch : public InLanguage, public ::testing::WithParamInterface<LabelTexts>
{
};

TEST_P(LabelSwitch, GivesTheTranslatedLabelOfEachNamingRule)
{
    use(GetParam().language);
    PreferencesPanel panel;
    auto *label = outlet<QLabel>(panel, "extensionName");
    EXPECT_EQ(label->text(), GetParam().extension);
    outlet<QRadioButton>(panel, "nameFolder")->click();
    EXPECT_EQ(label->text(), GetParam().name);
    // apply() from a control shows the panel again: the label stays translated once, not twice.
    panel.apply(outlet<QRadioButton>(panel, "nameFolder"));
    EXPECT_EQ(label->text(), GetParam().name);
    outlet<QRadioButton>(panel, "namePrefix")->click();
    EXPECT_EQ(label->text(), GetParam().extension);
}

INSTANTIATE_TEST_SUITE_P(Languages, LabelSwitch,
    ::testing::Values(LabelTexts { QLocale::German, u"Zusatz:", u"Name:" },
        LabelTexts { QLocale::French, u"Extension\u00a0:", u"Nom\u00a0:" },
        LabelTexts { QLocale::English, u"Extension:", u"Name:" }));

TEST_F(InLanguage, LaunchingTranslatesTheMainMenuAndItsShortcutsStay)
{
    PreferencesPanel panel; // made in English
    ASSERT_EQ(panel.quitAction()->text(), u"&Quit");
    use(QLocale::French);
    ApplicationDelegate delegate(&panel);
    delegate.setQuitHandler([] {});
    delegate.applicationWillFinishLaunching();

    const QList<QAction *> menus = panel.menuBar()->actions();
    ASSERT_EQ(menus.size(), 2);
    EXPECT_EQ(menus.at(0)->text(), u"&Fichier");
    EXPECT_EQ(menus.at(1)->text(), u"&Aide");
    EXPECT_EQ(panel.openAction()->text(), u"&Créer des vignettes de fichiers…");
    EXPECT_EQ(panel.closeAction()->text(), u"&Fermer la fenêtre");
    EXPECT_EQ(panel.quitAction()->text(), u"&Quitter");
    EXPECT_EQ(panel.aboutAction()->text(), u"À &propos d’Orvel Thumbnails");
    EXPECT_EQ(panel.quitAction()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    EXPECT_EQ(panel.openAction()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
    EXPECT_EQ(panel.closeAction()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_W));
}

TEST_F(InLanguage, TheProgressWindowCountsInGerman)
{
    use(QLocale::German);
    ProgressWindow window;
    window.addExpectedFiles(10);
    window.fileStarted(u"/tmp/a.png"_s);
    window.fileFinished(u"/tmp/a.png"_s, true);
    EXPECT_EQ(window.windowTitle(), u"Miniaturen werden erstellt");
    EXPECT_EQ(window.countText(), u"1 von 10 Dateien");
    window.runFinished();
}

// Every text of the panel that a layout sizes is shown whole.
void expectNothingCutOff(const PreferencesPanel &panel)
{
    const QList<QWidget *> widgets = panel.findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        if (!widget->isVisible())
            continue;
        const auto *label = qobject_cast<const QLabel *>(widget);
        if (label && label->wordWrap()) {
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << label->text().toStdString();
        } else if (label || qobject_cast<const QAbstractButton *>(widget)
            || qobject_cast<const QComboBox *>(widget)) {
            EXPECT_GE(widget->width(), widget->sizeHint().width()) << widget->objectName().toStdString();
        } else if (const auto *box = qobject_cast<const QGroupBox *>(widget)) {
            EXPECT_GE(box->width(), box->minimumSizeHint().width()) << box->title().toStdString();
        }
    }
}

class PanelLayout : public InLanguage, public ::testing::WithParamInterface<QLocale::Language>
{
};

TEST_P(PanelLayout, MakesRoomForTheTranslatedTexts)
{
    use(GetParam());
    PreferencesPanel panel;
    panel.show();
    QCoreApplication::processEvents();
    expectNothingCutOff(panel);
    // The longer label of the sub-folder rule comes while the panel is shown.
    outlet<QRadioButton>(panel, "nameFolder")->click();
    QCoreApplication::processEvents();
    expectNothingCutOff(panel);
}

INSTANTIATE_TEST_SUITE_P(Languages, PanelLayout, ::testing::Values(QLocale::German, QLocale::French));

// The texts the application shows: those of the panel's interface file (menus included) that are
// meant for translation, and those its code passes to localizedText().
std::set<QString> shownTexts()
{
    std::set<QString> texts;
    QFile ui(QStringLiteral(ORVEL_SOURCE_DIR "/src/app/desktop/PreferencesPanel.ui"));
    EXPECT_TRUE(ui.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&ui);
    QString property;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"property") {
            property = xml.attributes().value(QLatin1String("name")).toString();
        } else if (xml.name() == u"string") {
            const bool translatable = xml.attributes().value(QLatin1String("notr")) != u"true";
            const QString text = xml.readElementText();
            if (translatable && property != u"shortcut" && !text.isEmpty())
                texts.insert(text);
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();

    // localizedText(u"..." "..."_s): adjacent literals joined.
    static const QRegularExpression call(
        QStringLiteral(R"re(localizedText\(QStringLiteral\(((?:\s*"[^"\\]*")+)\)\))re"));
    static const QRegularExpression literal(QStringLiteral(R"re("([^"\\]*)")re"));
    QDirIterator sources(QStringLiteral(ORVEL_SOURCE_DIR "/src/app"), { u"*.cpp"_s }, QDir::Files,
        QDirIterator::Subdirectories);
    int calls = 0;
    while (sources.hasNext()) {
        QFile source(sources.next());
        EXPECT_TRUE(source.open(QIODevice::ReadOnly));
        const QString code = QString::fromUtf8(source.readAll());
        for (const QRegularExpressionMatch &match : call.globalMatch(code)) {
            QString text;
            for (const QRegularExpressionMatch &part : literal.globalMatch(match.captured(1)))
                text += part.captured(1);
            texts.insert(text);
            ++calls;
        }
    }
    EXPECT_GE(calls, 6);
    return texts;
}

// The source texts of a shipped table file.
std::set<QString> tableEntries(const QString &language)
{
    std::set<QString> entries;
    QFile ts(QStringLiteral(ORVEL_SOURCE_DIR "/data/translations/Localizable_%1.ts").arg(language));
    EXPECT_TRUE(ts.open(QIODevice::ReadOnly)) << language.toStdString();
    QXmlStreamReader xml(&ts);
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"source")
            entries.insert(xml.readElementText());
    }
    return entries;
}

TEST(ShippedTranslations, EveryShownTextHasAnEntryInEachLanguageAndNothingElseDoes)
{
    const std::set<QString> texts = shownTexts();
    ASSERT_GT(texts.size(), 30u);
    ASSERT_TRUE(texts.count(u"&Quit"_s) && texts.count(u"Name:"_s) && texts.count(u"%1 of %2 files"_s));
    const QString missing = u"\x01missing"_s;
    for (const auto &[language, code] :
        { std::pair { QLocale::German, "de" }, std::pair { QLocale::French, "fr" } }) {
        // The compiled-in table the application loads.
        const StringsTable table = Bundle::mainBundle().stringsTable(QString(), QLocale(language));
        ASSERT_FALSE(table.isEmpty()) << code;
        for (const QString &text : texts) {
            const QString translation = table.localizedStringForKey(text, missing);
            EXPECT_NE(translation, missing) << code << ": no entry for \"" << text.toStdString() << '"';
            EXPECT_FALSE(translation.trimmed().isEmpty()) << code << ": " << text.toStdString();
            // The panel is localised again whenever it shows the stored values: a translation
            // must not be the key of another one.
            const QString twice = table.localizedStringForKey(translation, missing);
            EXPECT_TRUE(twice == missing || twice == translation)
                << code << ": " << translation.toStdString();
        }
        for (const QString &entry : tableEntries(QString::fromLatin1(code)))
            EXPECT_TRUE(texts.count(entry)) << code << ": nothing shows \"" << entry.toStdString() << '"';
    }
}

} // namespace
