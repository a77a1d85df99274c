// Tests of the desktop application in another language: the panel, its label switch and menus in
// German and French, the layout making room for the longer texts, and the shipped tables holding
// every text the application shows and nothing else.
#include "DesktopTestSupport.h"
#include "app/desktop/ApplicationDelegate.h"
#include "app/desktop/PreferencesPanel.h"
#include "support/Bundle.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDirIterator>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
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

using InLanguage = DesktopTest;

TEST_F(InLanguage, ThePanelIsTranslatedButItsTagsAndValuesStay)
{
    use(QLocale::German);
    PreferencesPanel panel;
    EXPECT_EQ(panel.windowTitle(), u"Orvel Thumbnails – Einstellungen");
    EXPECT_EQ(outlet<QRadioButton>(panel, "nameFolder")->text(), u"Unterordner");
    // Items are translated in place: each keeps the tag it is selected and stored by.
    auto *sharpen = outlet<QComboBox>(panel, "sharpen");
    EXPECT_EQ(sharpen->itemText(3), u"Stark");
    EXPECT_EQ(sharpen->itemData(3).toInt(), 3);
    auto *filetype = outlet<QComboBox>(panel, "filetype");
    EXPECT_EQ(filetype->currentText(), u"JPEG"); // a format's name stays
    EXPECT_EQ(filetype->currentData().toInt(), 3);
    // The values shown are the stored ones, not translations of them.
    EXPECT_EQ(outlet<QLineEdit>(panel, "extension")->text(), u"_thumb");
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
    EXPECT_EQ(UserDefaults::standard().integerForKey(u"extensionFormat"_s), 2);
    // apply() from a control shows the panel again: the label stays translated once, not twice.
    panel.apply(outlet<QRadioButton>(panel, "nameFolder"));
    EXPECT_EQ(label->text(), GetParam().name);
    outlet<QRadioButton>(panel, "namePrefix")->click();
    EXPECT_EQ(label->text(), GetParam().extension);
    outlet<QRadioButton>(panel, "nameFolder")->click();
    outlet<QRadioButton>(panel, "nameSuffix")->click();
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
    delegate.applicationWillFinishLaunching();
    EXPECT_EQ(panel.menuBar()->actions().at(0)->text(), u"&Fichier");
    EXPECT_EQ(panel.quitAction()->text(), u"&Quitter");
    EXPECT_EQ(panel.quitAction()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
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
    QFile ui(u"" ORVEL_SOURCE_DIR "/src/app/desktop/PreferencesPanel.ui"_s);
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

    // localizedText(QStringLiteral("..." "...")): adjacent literals joined.
    static const QRegularExpression call(uR"re(localizedText\(QStringLiteral\(((?:\s*"[^"\\]*")+)\)\))re"_s);
    static const QRegularExpression literal(uR"re("([^"\\]*)")re"_s);
    QDirIterator sources(
        u"" ORVEL_SOURCE_DIR "/src/app"_s, { u"*.cpp"_s }, QDir::Files, QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        QFile source(sources.next());
        EXPECT_TRUE(source.open(QIODevice::ReadOnly));
        const QString code = QString::fromUtf8(source.readAll());
        for (const QRegularExpressionMatch &match : call.globalMatch(code)) {
            QString text;
            for (const QRegularExpressionMatch &part : literal.globalMatch(match.captured(1)))
                text += part.captured(1);
            texts.insert(text);
        }
    }
    return texts;
}

TEST(ShippedTranslations, EachLanguageTranslatesExactlyTheShownTexts)
{
    const std::set<QString> texts = shownTexts();
    ASSERT_TRUE(texts.count(u"&Quit"_s) && texts.count(u"Name:"_s) && texts.count(u"%1 of %2 files"_s));
    for (const auto &[language, code] :
        { std::pair { QLocale::German, "de" }, std::pair { QLocale::French, "fr" } }) {
        // Missing: the compiled-in table the application loads has no translation.
        const StringsTable table = Bundle::mainBundle().stringsTable(QString(), QLocale(language));
        for (const QString &text : texts)
            EXPECT_NE(table.localizedStringForKey(text, u"\x01"_s), u"\x01"_s)
                << code << ": no entry for \"" << text.toStdString() << '"';
        // Extra: the shipped file has an entry that nothing shows.
        QFile ts(u"" ORVEL_SOURCE_DIR "/data/translations/Localizable_%1.ts"_s.arg(QLatin1String(code)));
        ASSERT_TRUE(ts.open(QIODevice::ReadOnly)) << code;
        QXmlStreamReader xml(&ts);
        while (!xml.atEnd()) {
            if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"source") {
                const QString entry = xml.readElementText();
                EXPECT_TRUE(texts.count(entry)) << code << ": nothing shows \"" << entry.toStdString() << '"';
            }
        }
    }
}

} // namespace
