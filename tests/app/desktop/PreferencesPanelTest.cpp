// Tests of the preferences panel: its outlets and tags, the corrections of apply(), the label
// switch, closing, and drops.
#include "app/desktop/PreferencesPanel.h"
#include "DesktopTestSupport.h"
#include "testlib/TestSupport.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMimeData>
#include <QRadioButton>
#include <QSignalSpy>
#include <QUrl>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

using namespace orvel;
using namespace orvel::test;

namespace {

class PreferencesPanelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        clearStandardDefaults();
        panel = std::make_unique<PreferencesPanel>();
    }

    template <typename T> T *outlet(const char *name) const
    {
        T *control = panel->findChild<T *>(QString::fromLatin1(name));
        EXPECT_NE(control, nullptr) << name;
        return control;
    }
    QLineEdit *field(const char *name) const { return outlet<QLineEdit>(name); }
    UserDefaults &store() const { return UserDefaults::standard(); }

    std::unique_ptr<PreferencesPanel> panel;
};

TEST_F(PreferencesPanelTest, AnEmptyStoreShowsEveryDefault)
{
    EXPECT_EQ(outlet<QButtonGroup>("createIcons")->checkedId(), 0);
    EXPECT_TRUE(outlet<QCheckBox>("quitWhenDone")->isChecked());
    EXPECT_EQ(field("extension")->text(), u"_thumb"_s);
    EXPECT_EQ(field("width")->text(), u"128"_s);
    EXPECT_EQ(field("height")->text(), u"128"_s);
    EXPECT_EQ(field("quality")->text(), u"80"_s);
    EXPECT_EQ(outlet<QComboBox>("filetype")->currentData().toInt(), 3);
    EXPECT_EQ(outlet<QComboBox>("antialiasing")->currentData().toInt(), 3);
    EXPECT_EQ(outlet<QComboBox>("sharpen")->currentData().toInt(), 0);
    EXPECT_EQ(outlet<QButtonGroup>("sizing")->checkedId(), 0);
    EXPECT_EQ(field("scale")->text(), u"100"_s);
    EXPECT_EQ(outlet<QButtonGroup>("extensionFormat")->checkedId(), 1);
    EXPECT_EQ(outlet<QLabel>("extensionName")->text(), u"Extension:"_s);
}

TEST_F(PreferencesPanelTest, EveryCellAndItemCarriesItsTag)
{
    auto ids = [](QButtonGroup *group) {
        QList<int> result;
        for (QAbstractButton *button : group->buttons())
            result << group->id(button);
        std::sort(result.begin(), result.end());
        return result;
    };
    EXPECT_EQ(ids(outlet<QButtonGroup>("createIcons")), QList<int>({ 0, 1, 2 }));
    EXPECT_EQ(ids(outlet<QButtonGroup>("extensionFormat")), QList<int>({ 0, 1, 2 }));
    EXPECT_EQ(ids(outlet<QButtonGroup>("sizing")), QList<int>({ 0, 1 }));
    auto tags = [](QComboBox *menu) {
        QList<int> result;
        for (int i = 0; i < menu->count(); ++i)
            result << menu->itemData(i).toInt();
        return result;
    };
    EXPECT_EQ(tags(outlet<QComboBox>("filetype")), QList<int>({ 0, 1, 2, 3, 4, 5 }));
    EXPECT_EQ(tags(outlet<QComboBox>("antialiasing")), QList<int>({ 0, 1, 2, 3 }));
    EXPECT_EQ(tags(outlet<QComboBox>("sharpen")), QList<int>({ 0, 1, 2, 3 }));
    // The file type items in the order of their codes.
    EXPECT_EQ(outlet<QComboBox>("filetype")->itemText(5), u"JPEG 2000"_s);
}

TEST_F(PreferencesPanelTest, ApplyStoresTheSelectedTagsWithTheirTypes)
{
    outlet<QButtonGroup>("createIcons")->button(2)->setChecked(true);
    outlet<QButtonGroup>("extensionFormat")->button(0)->setChecked(true);
    outlet<QButtonGroup>("sizing")->button(1)->setChecked(true);
    outlet<QComboBox>("filetype")->setCurrentIndex(outlet<QComboBox>("filetype")->findData(5));
    outlet<QComboBox>("antialiasing")->setCurrentIndex(outlet<QComboBox>("antialiasing")->findData(1));
    outlet<QComboBox>("sharpen")->setCurrentIndex(outlet<QComboBox>("sharpen")->findData(2));
    outlet<QCheckBox>("quitWhenDone")->setChecked(false);
    field("extension")->setText(u"small-"_s);
    panel->apply(nullptr);

    const QVariantMap stored = store().dictionaryRepresentation();
    EXPECT_EQ(stored.value(u"create"_s), QVariant(qint64(2)));
    EXPECT_EQ(stored.value(u"extensionFormat"_s), QVariant(qint64(0)));
    EXPECT_EQ(stored.value(u"sizing"_s), QVariant(qint64(1)));
    EXPECT_EQ(stored.value(u"filetype"_s), QVariant(qint64(5)));
    EXPECT_EQ(stored.value(u"Antialiasing"_s), QVariant(qint64(1)));
    EXPECT_EQ(stored.value(u"sharpen"_s), QVariant(qint64(2)));
    EXPECT_EQ(stored.value(u"QuitWhenDone"_s), QVariant(false));
    EXPECT_EQ(stored.value(u"extension"_s), QVariant(u"small-"_s));
    EXPECT_EQ(stored.value(u"quality"_s).typeId(), QMetaType::Double);
    EXPECT_EQ(stored.size(), 12);
}

struct Correction
{
    const char *field;
    const char *typed;
    const char *key;
    double stored;
};

class PreferencesPanelCorrection : public PreferencesPanelTest,
                                   public ::testing::WithParamInterface<Correction>
{
};

TEST_P(PreferencesPanelCorrection, StoresTheCorrectedValue)
{
    const Correction c = GetParam();
    field(c.field)->setText(QString::fromUtf8(c.typed));
    panel->apply(nullptr);
    EXPECT_DOUBLE_EQ(store().doubleForKey(QString::fromLatin1(c.key)), c.stored) << c.typed;
}

INSTANTIATE_TEST_SUITE_P(Sides, PreferencesPanelCorrection,
    ::testing::Values(Correction { "width", "0", "width", 16 }, Correction { "width", "-5", "width", 16 },
        Correction { "width", "15", "width", 16 }, Correction { "width", "16", "width", 16 },
        Correction { "width", "10000", "width", 10000 }, Correction { "height", "7", "height", 16 },
        Correction { "height", "300.9", "height", 300 }, Correction { "height", " 64px", "height", 64 },
        Correction { "height", "tall", "height", 16 }));
INSTANTIATE_TEST_SUITE_P(Scale, PreferencesPanelCorrection,
    ::testing::Values(Correction { "scale", "0.5", "scale", 0.01 },
        Correction { "scale", "250", "scale", 1.0 }, Correction { "scale", "50", "scale", 0.5 },
        Correction { "scale", "-3", "scale", 0.01 }, Correction { "scale", "12.5", "scale", 0.125 }));
INSTANTIATE_TEST_SUITE_P(Quality, PreferencesPanelCorrection,
    ::testing::Values(Correction { "quality", "150", "quality", 1.5 },
        Correction { "quality", "80", "quality", 0.8 }, Correction { "quality", "0", "quality", 0.0 },
        Correction { "quality", "-20", "quality", -0.2 }));

TEST_F(PreferencesPanelTest, AnEmptyNamingStringIsStoredAsAnUnderscore)
{
    field("extension")->setText(QString());
    panel->apply(nullptr);
    EXPECT_EQ(store().stringForKey(u"extension"_s), u"_"_s);
    EXPECT_EQ(field("extension")->text(), QString()) << "without a sender the field is left alone";
}

TEST_F(PreferencesPanelTest, ApplyFromAControlShowsTheValuesAsStored)
{
    field("width")->setText(u"3"_s);
    field("extension")->setText(QString());
    field("scale")->setText(u"250"_s);
    field("quality")->setText(u"150"_s);
    panel->apply(field("width"));
    EXPECT_EQ(field("width")->text(), u"16"_s);
    EXPECT_EQ(field("extension")->text(), u"_"_s);
    EXPECT_EQ(field("scale")->text(), u"100"_s);
    EXPECT_EQ(field("quality")->text(), u"150"_s);
}

TEST_F(PreferencesPanelTest, EditingAFieldAppliesIt)
{
    field("height")->setText(u"5"_s);
    Q_EMIT field("height")->editingFinished();
    EXPECT_EQ(store().integerForKey(u"height"_s), 16);
    EXPECT_EQ(field("height")->text(), u"16"_s);
}

TEST_F(PreferencesPanelTest, ChoosingTheSubFolderRuleSwitchesTheLabel)
{
    auto *label = outlet<QLabel>("extensionName");
    outlet<QRadioButton>("nameFolder")->click();
    EXPECT_EQ(label->text(), u"Name:"_s);
    EXPECT_EQ(store().integerForKey(u"extensionFormat"_s), 2);
    outlet<QRadioButton>("namePrefix")->click();
    EXPECT_EQ(label->text(), u"Extension:"_s);
    outlet<QRadioButton>("nameFolder")->click();
    outlet<QRadioButton>("nameSuffix")->click();
    EXPECT_EQ(label->text(), u"Extension:"_s);
    EXPECT_TRUE(field("extension")->isEnabled());
}

TEST_F(PreferencesPanelTest, StoredValuesWithoutAMatchingTagSelectNothingAndStoreZero)
{
    store().setObject(qint64(9), u"filetype"_s);
    store().setObject(qint64(7), u"create"_s);
    store().setObject(qint64(2), u"extensionFormat"_s);
    store().setObject(0.25, u"scale"_s);
    panel->awakeFromNib();
    EXPECT_EQ(outlet<QComboBox>("filetype")->currentIndex(), -1);
    EXPECT_EQ(outlet<QButtonGroup>("createIcons")->checkedId(), -1);
    EXPECT_EQ(outlet<QLabel>("extensionName")->text(), u"Name:"_s);
    EXPECT_EQ(field("scale")->text(), u"25"_s);
    panel->apply(nullptr);
    EXPECT_EQ(store().integerForKey(u"filetype"_s), 0);
    EXPECT_EQ(store().integerForKey(u"create"_s), 0);
}

TEST_F(PreferencesPanelTest, ClosingStoresAndAFreshPanelShowsTheStoredValues)
{
    panel->show();
    QSignalSpy closed(panel.get(), &PreferencesPanel::closed);
    field("width")->setText(u"200"_s);
    field("extension")->setText(u"-small"_s);
    outlet<QRadioButton>("sizeScale")->setChecked(true);
    panel->close();
    EXPECT_EQ(closed.size(), 1);
    EXPECT_EQ(store().integerForKey(u"width"_s), 200);

    PreferencesPanel reopened;
    EXPECT_EQ(reopened.findChild<QLineEdit *>(u"width"_s)->text(), u"200"_s);
    EXPECT_EQ(reopened.findChild<QLineEdit *>(u"extension"_s)->text(), u"-small"_s);
    EXPECT_EQ(reopened.findChild<QButtonGroup *>(u"sizing"_s)->checkedId(), 1);
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
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(panel.get(), &drop);
    ASSERT_EQ(dropped.size(), 1);
    EXPECT_EQ(dropped.at(0).at(0).toStringList(), QStringList({ u"/tmp/b.png"_s, u"/tmp/a folder"_s }));
}

TEST_F(PreferencesPanelTest, TheLayoutMakesRoomForLongerTexts)
{
    panel->show();
    auto *label = outlet<QLabel>("extensionName");
    label->setText(u"Name des Unterordners für die Miniaturen:"_s);
    panel->adjustSize();
    QCoreApplication::processEvents();
    EXPECT_GE(label->width(), label->sizeHint().width());
    EXPECT_NE(panel->centralWidget()->layout(), nullptr);
}

TEST(PreferencesPanelValues, FieldsReadTheirLeadingNumber)
{
    EXPECT_EQ(PreferencesPanel::integerValue(u"12px"_s), 12);
    EXPECT_EQ(PreferencesPanel::integerValue(u"7.9"_s), 7);
    EXPECT_EQ(PreferencesPanel::integerValue(u"-7.9"_s), -7);
    EXPECT_EQ(PreferencesPanel::integerValue(u"x12"_s), 0);
    EXPECT_EQ(PreferencesPanel::integerValue(u"1e30"_s), std::numeric_limits<qint64>::max());
    EXPECT_DOUBLE_EQ(PreferencesPanel::floatValue(u"  .5%"_s), 0.5);
    EXPECT_DOUBLE_EQ(PreferencesPanel::floatValue(u"2e1"_s), 20.0);
    EXPECT_DOUBLE_EQ(PreferencesPanel::floatValue(u"nan"_s), 0.0);
}

} // namespace
