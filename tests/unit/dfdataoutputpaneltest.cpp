#include "zancommon/dfdataoutputpanel.h"

#include "support/printing.h"

#include <QGridLayout>
#include <QLabel>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const DFDataOutputPanel::Settings SETTINGS{.serialEnabled = true,
                                           .address = u"COM2:4800,n,8,1"_s,
                                           .fileEnabled = false,
                                           .fileName = u"/tmp/sentences.txt"_s,
                                           .interval = 500};

template <class T>
T* At(const DFDataOutputPanel& panel, int row, int column) {
    const auto* const layout = qobject_cast<QGridLayout*>(panel.layout());
    return qobject_cast<T*>(layout->itemAtPosition(row, column)->widget());
}

} // namespace

TEST(DFDataOutputPanel, HasThreeRows) {
    const DFDataOutputPanel panel;
    EXPECT_EQ(At<QCheckBox>(panel, 0, 0)->text(), u"RS232"_s);
    EXPECT_EQ(At<QLabel>(panel, 0, 1)->text(), u"Address:"_s);
    EXPECT_EQ(At<QCheckBox>(panel, 1, 0)->text(), u"File"_s);
    EXPECT_EQ(At<QLabel>(panel, 1, 1)->text(), u"Filename:"_s);
    EXPECT_EQ(At<QLabel>(panel, 2, 1)->text(), u"Output interval (ms):"_s);
    const auto* const interval = At<QSpinBox>(panel, 2, 2);
    EXPECT_EQ(interval->minimum(), 0);
    EXPECT_EQ(interval->maximum(), 10000);
    EXPECT_EQ(interval->singleStep(), 10);
}

TEST(DFDataOutputPanel, GivesBackWhatItShows) {
    DFDataOutputPanel panel;
    panel.Show(SETTINGS);
    EXPECT_EQ(panel.GetEntered(), SETTINGS);
}

TEST(DFDataOutputPanel, GivesWhatTheUserHasEntered) {
    DFDataOutputPanel panel;
    panel.Show(SETTINGS);
    At<QLineEdit>(panel, 1, 2)->setText(u"other.txt"_s);
    At<QCheckBox>(panel, 1, 0)->setChecked(true);
    const auto entered = panel.GetEntered();
    ASSERT_TRUE(entered);
    EXPECT_TRUE(entered->fileEnabled);
    EXPECT_EQ(entered->fileName, u"other.txt"_s);
    EXPECT_NE(*entered, SETTINGS);
}

TEST(DFDataOutputPanel, FieldsOfWhatIsNotCheckedCannotBeEdited) {
    DFDataOutputPanel panel;
    for (const bool isSerial : {false, true}) {
        for (const bool isFile : {false, true}) {
            DFDataOutputPanel::Settings settings = SETTINGS;
            settings.serialEnabled = isSerial;
            settings.fileEnabled = isFile;
            panel.Show(settings);
            EXPECT_EQ(At<QLineEdit>(panel, 0, 2)->isEnabled(), isSerial);
            EXPECT_EQ(At<QLineEdit>(panel, 1, 2)->isEnabled(), isFile);
            EXPECT_EQ(At<QSpinBox>(panel, 2, 2)->isEnabled(), isSerial || isFile);
        }
    }
}

TEST(DFDataOutputPanel, SaysWhenABoxIsCheckedOrUnchecked) {
    DFDataOutputPanel panel;
    int changes = 0;
    QObject::connect(&panel, &DFDataOutputPanel::StateChanged, &panel, [&changes] { ++changes; });
    At<QCheckBox>(panel, 0, 0)->setChecked(true);
    At<QCheckBox>(panel, 1, 0)->setChecked(true);
    At<QCheckBox>(panel, 1, 0)->setChecked(false);
    EXPECT_EQ(changes, 3);
}

TEST(DFDataOutputPanel, WithoutOneOfItsPartsItTakesAndGivesNothing) {
    DFDataOutputPanel panel;
    panel.Show(SETTINGS);
    delete At<QSpinBox>(panel, 2, 2);
    EXPECT_EQ(panel.GetEntered(), std::nullopt);
    panel.Show({});
    panel.EnableFields();
    EXPECT_EQ(At<QLineEdit>(panel, 0, 2)->text(), SETTINGS.address);
}
