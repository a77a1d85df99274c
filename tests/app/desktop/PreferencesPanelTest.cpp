// Tests of the preferences panel: what apply() stores and corrects, showing stored values, closing,
// and drops.
#include "app/desktop/PreferencesPanel.h"
#include "DesktopTestSupport.h"
#include "testlib/TestSupport.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QRadioButton>
#include <QSignalSpy>
#include <QUrl>
#include <gtest/gtest.h>

#include <limits>

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

    QLineEdit *field(const char *name) const { return outlet<QLineEdit>(*panel, name); }
    QComboBox *menu(const char *name) const { return outlet<QComboBox>(*panel, name); }
    QButtonGroup *group(const char *name) const { return outlet<QButtonGroup>(*panel, name); }
    UserDefaults &store() const { return UserDefaults::standard(); }

    std::unique_ptr<PreferencesPanel> panel;
};

TEST_F(PreferencesPanelTest, ApplyStoresEachControlUnderItsKeyWithItsType)
{
    group("createIcons")->button(2)->setChecked(true);
    group("extensionFormat")->button(0)->setChecked(true);
    group("sizing")->button(1)->setChecked(true);
    menu("filetype")->setCurrentIndex(menu("filetype")->findData(5));
    menu("antialiasing")->setCurrentIndex(menu("antialiasing")->findData(1));
    menu("sharpen")->setCurrentIndex(menu("sharpen")->findData(2));
    outlet<QCheckBox>(*panel, "quitWhenDone")->setChecked(false);
    field("extension")->setText(u"small-"_s);
    panel->apply(nullptr);

    const QVariantMap stored = store().dictionaryRepresentation();
    const QVariantMap expected = { { u"create"_s, qint64(2) }, { u"extensionFormat"_s, qint64(0) },
        { u"sizing"_s, qint64(1) }, { u"filetype"_s, qint64(5) }, { u"Antialiasing"_s, qint64(1) },
        { u"sharpen"_s, qint64(2) }, { u"QuitWhenDone"_s, false }, { u"extension"_s, u"small-"_s } };
    for (auto it = expected.cbegin(); it != expected.cend(); ++it)
        EXPECT_EQ(stored.value(it.key()), it.value()) << it.key();
    EXPECT_EQ(stored.value(u"quality"_s).typeId(), QMetaType::Double);
    EXPECT_EQ(stored.size(), 12);
}

struct Correction
{
    const char *field;
    const char *typed;
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
    EXPECT_DOUBLE_EQ(store().doubleForKey(QString::fromLatin1(c.field)), c.stored)
        << c.field << " = \"" << c.typed << '"';
}

INSTANTIATE_TEST_SUITE_P(Fields, PreferencesPanelCorrection,
    ::testing::Values(Correction { "width", "0", 16 }, Correction { "width", "-5", 16 },
        Correction { "width", "15", 16 }, Correction { "width", "16", 16 },
        Correction { "width", "10000", 10000 }, Correction { "height", "7", 16 },
        Correction { "height", "300.9", 300 }, Correction { "height", " 64px", 64 },
        Correction { "height", "tall", 16 }, Correction { "scale", "0.5", 0.01 },
        Correction { "scale", "250", 1.0 }, Correction { "scale", "50", 0.5 },
        Correction { "scale", "-3", 0.01 }, Correction { "scale", "12.5", 0.125 },
        Correction { "quality", "150", 1.5 }, Correction { "quality", "80", 0.8 },
        Correction { "quality", "0", 0.0 }, Correction { "quality", "-20", -0.2 }));

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
    EXPECT_EQ(field("width")->text(), u"16"_s);
    EXPECT_EQ(field("extension")->text(), u"_"_s);
    EXPECT_EQ(field("scale")->text(), u"100"_s);
    EXPECT_EQ(field("quality")->text(), u"150"_s);

    // Finishing an edit applies from that field.
    field("height")->setText(u"5"_s);
    Q_EMIT field("height")->editingFinished();
    EXPECT_EQ(store().integerForKey(u"height"_s), 16);
    EXPECT_EQ(field("height")->text(), u"16"_s);
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
    EXPECT_EQ(outlet<QLabel>(*panel, "extensionName")->text(), u"Name:"_s);
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
    outlet<QRadioButton>(*panel, "sizeScale")->setChecked(true);
    panel->close();
    EXPECT_EQ(closed.size(), 1);
    EXPECT_EQ(store().integerForKey(u"width"_s), 200);

    PreferencesPanel reopened;
    EXPECT_EQ(outlet<QLineEdit>(reopened, "width")->text(), u"200"_s);
    EXPECT_EQ(outlet<QLineEdit>(reopened, "extension")->text(), u"-small"_s);
    EXPECT_EQ(outlet<QButtonGroup>(reopened, "sizing")->checkedId(), 1);
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

TEST(PreferencesPanelValues, FieldsReadTheirLeadingNumber)
{
    const std::pair<QString, qint64> integers[] = { { u"12px"_s, 12 }, { u"7.9"_s, 7 }, { u"-7.9"_s, -7 },
        { u"x12"_s, 0 }, { u"1e30"_s, std::numeric_limits<qint64>::max() } };
    for (const auto &[text, value] : integers)
        EXPECT_EQ(PreferencesPanel::integerValue(text), value) << text;
    const std::pair<QString, double> floats[]
        = { { u"  .5%"_s, 0.5 }, { u"2e1"_s, 20.0 }, { u"nan"_s, 0.0 } };
    for (const auto &[text, value] : floats)
        EXPECT_DOUBLE_EQ(PreferencesPanel::floatValue(text), value) << text;
}

} // namespace
