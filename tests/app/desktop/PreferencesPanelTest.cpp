// The preferences panel: what it stores and corrects, drops, other languages, the shipped tables.
#include "app/desktop/PreferencesPanel.h"
#include "DesktopTestSupport.h"
#include "app/desktop/ApplicationDelegate.h"
#include "support/Bundle.h"
#include "testlib/TestSupport.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDirIterator>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QUrl>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <set>
#include <tuple>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

class PreferencesPanelTest : public DesktopTest
{
protected:
    void SetUp() override
    {
        DesktopTest::SetUp();
        panel = std::make_unique<PreferencesPanel>();
    }

    QLineEdit *field(const char *name) const { return typingLine(*panel, name); }
    QSpinBox *spin(const char *name) const { return outlet<QSpinBox>(*panel, name); }
    QComboBox *menu(const char *name) const { return outlet<QComboBox>(*panel, name); }
    QButtonGroup *group(const char *name) const { return outlet<QButtonGroup>(*panel, name); }
    UserDefaults &store() const { return UserDefaults::standard(); }

    std::unique_ptr<PreferencesPanel> panel;
};

TEST_F(PreferencesPanelTest, ClosingStoresEachControlUnderItsKeyAndAFreshPanelShowsIt)
{
    panel->show();
    QSignalSpy closed(panel.get(), &PreferencesPanel::closed);
    // One control of each kind: a button group, a menu, a check box, a field, a spin box.
    group("createIcons")->button(2)->setChecked(true);
    menu("antialiasing")->setCurrentIndex(menu("antialiasing")->findData(1));
    outlet<QCheckBox>(*panel, "quitWhenDone")->setChecked(false);
    field("extension")->setText(u"small-"_s);
    spin("width")->setValue(200);
    panel->close();
    EXPECT_EQ(closed.size(), 1);

    const QVariantMap stored = store().dictionaryRepresentation();
    const QVariantMap expected = { { u"create"_s, qint64(2) }, { u"Antialiasing"_s, qint64(1) },
        { u"QuitWhenDone"_s, false }, { u"extension"_s, u"small-"_s }, { u"width"_s, qint64(200) } };
    for (auto it = expected.cbegin(); it != expected.cend(); ++it)
        EXPECT_EQ(stored.value(it.key()), it.value()) << it.key();
    EXPECT_EQ(stored.value(u"quality"_s).typeId(), QMetaType::Double);
}

TEST_F(PreferencesPanelTest, ApplyStoresTheCorrectedValues)
{
    const struct
    {
        const char *field;
        const char *typed;
        double stored;
    } cases[] = { { "width", "15", 16 }, { "width", "1e30", double(std::numeric_limits<qint64>::max()) },
        { "height", "300.9", 300 }, { "height", " 64px", 64 }, { "height", "tall", 16 },
        { "scale", "250", 1.0 }, { "scale", "12.5", 0.125 }, { "scale", "  .5%", 0.01 },
        { "quality", "-20", -0.2 }, { "quality", "nan", 0.0 } };
    for (const auto &c : cases) {
        field(c.field)->setText(QString::fromUtf8(c.typed));
        panel->apply(nullptr);
        EXPECT_DOUBLE_EQ(store().doubleForKey(QString::fromLatin1(c.field)), c.stored)
            << c.field << " = \"" << c.typed << '"';
    }
}

TEST_F(PreferencesPanelTest, OnlyApplyFromAControlShowsTheValuesAsStored)
{
    field("width")->setText(u"3"_s);
    field("extension")->setText(QString());
    field("scale")->setText(u"250"_s);
    field("quality")->setText(u"150"_s);
    panel->apply(nullptr);
    EXPECT_EQ(store().stringForKey(u"extension"_s), u"_"_s);
    EXPECT_EQ(field("width")->text(), u"3"_s);
    EXPECT_EQ(field("extension")->text(), QString());

    panel->apply(field("width"));
    EXPECT_EQ(spin("width")->value(), 16);
    EXPECT_EQ(field("extension")->text(), u"_"_s);
    EXPECT_EQ(outlet<QDoubleSpinBox>(*panel, "scale")->value(), 100);
    // A factor stored above 1 shows as the box's most, and stays stored as it is until changed.
    EXPECT_EQ(spin("quality")->value(), 100);
    EXPECT_DOUBLE_EQ(store().doubleForKey(u"quality"_s), 1.5);

    // Typed and left, a number below the box's least is stored and shown as that least.
    spin("height")->setFocus();
    field("height")->selectAll();
    QTest::keyClicks(spin("height"), u"5"_s);
    EXPECT_EQ(store().integerForKey(u"height"_s), 128) << "stored at a key, before the edit ended";
    QTest::keyClick(spin("height"), Qt::Key_Return);
    EXPECT_EQ(store().integerForKey(u"height"_s), 16);
    EXPECT_EQ(spin("height")->value(), 16);
    // The arrows store at once.
    QTest::keyClick(spin("height"), Qt::Key_Up);
    EXPECT_EQ(store().integerForKey(u"height"_s), 17);
}

TEST_F(PreferencesPanelTest, StoredValuesWithoutAMatchingTagSelectNothingAndStoreZero)
{
    store().setObject(qint64(9), u"filetype"_s);
    store().setObject(qint64(7), u"create"_s);
    store().setObject(qint64(2), u"extensionFormat"_s);
    store().setObject(0.25, u"scale"_s);
    panel->awakeFromNib();
    EXPECT_EQ(menu("filetype")->currentIndex(), -1);
    EXPECT_EQ(group("createIcons")->checkedId(), -1);
    EXPECT_EQ(outlet<QLabel>(*panel, "extensionName")->text(), u"Folder &name:"_s);
    EXPECT_EQ(outlet<QDoubleSpinBox>(*panel, "scale")->value(), 25);
    panel->apply(nullptr);
    EXPECT_EQ(store().integerForKey(u"filetype"_s), 0);
    EXPECT_EQ(store().integerForKey(u"create"_s), 0);
}

TEST_F(PreferencesPanelTest, DroppedLocalFilesAreHandedOnInOrder)
{
    QSignalSpy dropped(panel.get(), &PreferencesPanel::filesDropped);
    QMimeData data;
    data.setUrls({ QUrl::fromLocalFile(u"/tmp/b.png"_s), QUrl(u"https://example.org/x.png"_s),
        QUrl::fromLocalFile(u"/tmp/a folder"_s) });
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(panel.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_TRUE(panel->isDropHighlighted());
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(panel.get(), &leave);
    EXPECT_FALSE(panel->isDropHighlighted());
    QCoreApplication::sendEvent(panel.get(), &enter);
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(panel.get(), &drop);
    ASSERT_EQ(dropped.size(), 1);
    EXPECT_EQ(dropped.at(0).at(0).toStringList(), QStringList({ u"/tmp/b.png"_s, u"/tmp/a folder"_s }));
    EXPECT_FALSE(panel->isDropHighlighted());
}

// The example line under a naming rule, naming string, format and create mode, as typed.
struct ExampleCase
{
    const char *rule;
    const char *extension;
    int filetype;
    const char *create;
    const char16_t *shown;
};

class ExampleLine : public PreferencesPanelTest, public ::testing::WithParamInterface<ExampleCase>
{
};

TEST_P(ExampleLine, ShowsTheNameTheExampleFileWouldGetAsTheControlsStand)
{
    const ExampleCase &c = GetParam();
    outlet<QRadioButton>(*panel, c.create)->click();
    outlet<QRadioButton>(*panel, c.rule)->click();
    menu("filetype")->setCurrentIndex(menu("filetype")->findData(c.filetype));
    field("extension")->setText(QString::fromUtf8(c.extension));
    EXPECT_EQ(outlet<QLabel>(*panel, "exampleName")->text(), QString::fromUtf16(c.shown));
    // The line follows the edit; the store gets it only when the edit ends.
    EXPECT_EQ(store().stringForKey(u"extension"_s), u"_thumb"_s);
}

INSTANTIATE_TEST_SUITE_P(PreferencesPanel, ExampleLine,
    ::testing::Values(ExampleCase { "nameSuffix", "_thumb", 3, "createThumbnail",
                          u"For example: IMG_0001.jpg → IMG_0001_thumb.jpg" },
        ExampleCase {
            "namePrefix", "small-", 4, "createThumbnail", u"For example: IMG_0001.jpg → small-IMG_0001.png" },
        // An empty naming string is stored as "_"; the line shows what will be.
        ExampleCase {
            "nameFolder", "", 0, "createThumbnailWithIcon", u"For example: IMG_0001.jpg → _/IMG_0001.tiff" },
        ExampleCase { "nameSuffix", "_thumb", 3, "createIconOnly",
            u"For example: IMG_0001.jpg gets its own picture as its icon; nothing is written" }));

TEST_F(PreferencesPanelTest, ControlsWithoutEffectUnderTheChosenSettingsAreDisabled)
{
    auto enabled = [this](const char *name) { return outlet<QWidget>(*panel, name)->isEnabled(); };
    EXPECT_TRUE(enabled("width") && enabled("height") && enabled("quality"));
    EXPECT_FALSE(enabled("scale"));
    outlet<QRadioButton>(*panel, "sizeScale")->click();
    EXPECT_TRUE(enabled("scale"));
    EXPECT_FALSE(enabled("width") || enabled("height"));
    // BMP is written uncompressed.
    menu("filetype")->setCurrentIndex(menu("filetype")->findData(1));
    EXPECT_FALSE(enabled("quality"));
    // Only an icon: nothing about a written file applies; the interpolation still does.
    outlet<QRadioButton>(*panel, "createIconOnly")->click();
    for (const char *name : { "extension", "nameFolder", "scale", "filetype", "quality", "sharpen" })
        EXPECT_FALSE(enabled(name)) << name;
    EXPECT_TRUE(enabled("antialiasing"));
}

using InLanguage = DesktopTest;

TEST_F(InLanguage, ThePanelIsTranslatedButItsTagsAndValuesStay)
{
    use(QLocale::German);
    PreferencesPanel panel;
    // Items are translated in place: each keeps the tag it is selected and stored by.
    auto *sharpen = outlet<QComboBox>(panel, "sharpen");
    EXPECT_EQ(sharpen->itemText(3), u"Stark");
    EXPECT_EQ(sharpen->itemData(3).toInt(), 3);
    EXPECT_EQ(outlet<QComboBox>(panel, "filetype")->currentText(), u"JPEG"); // a format's name stays
    EXPECT_EQ(outlet<QLineEdit>(panel, "extension")->text(), u"_thumb");
}

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

// The letter after the "&" of a text, lower-cased; none when it has no mnemonic.
QChar mnemonic(const QString &text)
{
    for (qsizetype i = text.indexOf(u'&'); i >= 0 && i + 1 < text.size(); i = text.indexOf(u'&', i + 2)) {
        if (text.at(i + 1) != u'&')
            return text.at(i + 1).toLower();
    }
    return {};
}

// Every mnemonic of menus, buttons and field labels is its own; the naming label is the caller's.
void expectOwnMnemonics(const PreferencesPanel &panel, const char *code, std::map<QChar, QString> *taken)
{
    auto take = [&](const QString &text) {
        const QChar letter = mnemonic(text);
        const auto [it, fresh] = taken->emplace(letter, text);
        EXPECT_TRUE(letter.isNull() || fresh)
            << code << ": \"" << text << "\" and \"" << it->second << "\" share a mnemonic";
    };
    for (const QAction *menu : panel.menuBar()->actions())
        take(menu->text());
    for (const QWidget *control : panel.centralWidget()->findChildren<QWidget *>()) {
        if (const auto *button = qobject_cast<const QAbstractButton *>(control))
            take(button->text());
        const auto *label = qobject_cast<const QLabel *>(control);
        if (label && label->buddy() && label->objectName() != u"extensionName") {
            EXPECT_FALSE(mnemonic(label->text()).isNull()) << code << ": " << label->text();
            take(label->text());
        }
    }
}

TEST_F(InLanguage, TheNamingLabelSwitchesInEachLanguageWithAMnemonicOfItsOwn)
{
    // The language, its code, and the naming label under the prefix, suffix and sub-folder rules.
    const std::tuple<QLocale::Language, const char *, QString, QString, QString> cases[] = {
        { QLocale::German, "de", u"Präfi&x:"_s, u"Suffi&x:"_s, u"Ordnern&ame:"_s },
        { QLocale::French, "fr", u"Préfix&e\u00a0:"_s, u"Suffix&e\u00a0:"_s, u"Nom du &dossier\u00a0:"_s },
        { QLocale::English, "en", u"Prefi&x:"_s, u"Suffi&x:"_s, u"Folder &name:"_s }
    };
    for (const auto &[language, code, prefix, suffix, folder] : cases) {
        clearStandardDefaults();
        use(language);
        PreferencesPanel panel;
        panel.show();
        std::map<QChar, QString> taken;
        expectOwnMnemonics(panel, code, &taken);
        auto *label = outlet<QLabel>(panel, "extensionName");
        EXPECT_EQ(label->text(), suffix) << code;
        EXPECT_FALSE(taken.count(mnemonic(suffix))) << code << ": " << suffix;
        outlet<QRadioButton>(panel, "nameFolder")->click();
        EXPECT_EQ(label->text(), folder) << code;
        EXPECT_FALSE(taken.count(mnemonic(folder))) << code << ": " << folder;
        EXPECT_EQ(UserDefaults::standard().integerForKey(u"extensionFormat"_s), 2);
        // apply() from a control shows the panel again: the label stays translated once, not twice.
        panel.apply(outlet<QRadioButton>(panel, "nameFolder"));
        EXPECT_EQ(label->text(), folder) << code;
        outlet<QRadioButton>(panel, "namePrefix")->click();
        EXPECT_EQ(label->text(), prefix) << code;
        EXPECT_FALSE(taken.count(mnemonic(prefix))) << code << ": " << prefix;
    }
}

// The texts the application shows: the interface file's translatable ones and its code's.
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

    // localizedText(QStringLiteral("..." "...")) and QT_TR_NOOP(u"..." u"..."): adjacent literals joined.
    static const QRegularExpression call(
        uR"re((?:localizedText\(\s*QStringLiteral\(|QT_TR_NOOP\()((?:\s*u?"[^"\\]*")+)\))re"_s);
    static const QRegularExpression literal(uR"re("([^"\\]*)")re"_s);
    QDirIterator sources(u"" ORVEL_SOURCE_DIR "/src/app"_s, { u"*.cpp"_s, u"*.h"_s }, QDir::Files,
        QDirIterator::Subdirectories);
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
    ASSERT_TRUE(
        texts.count(u"&Quit"_s) && texts.count(u"Folder &name:"_s) && texts.count(u"%1 of %2 files"_s));
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
