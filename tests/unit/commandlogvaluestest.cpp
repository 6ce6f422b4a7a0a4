#include "zanserver/commandlogvalues.h"

#include "support/devicetree.h"
#include "support/eventloop.h"
#include "support/observers.h"
#include "support/printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

class CommandLogValuesTest : public testing::Test {
protected:
    static const std::vector<QString>& GetLines() {
        return DeviceTree::DeviceValue<ValueStringList>(StdDeviceDefinition::g_vdCommandLog)->GetElements();
    }

    DeviceTree m_tree;
    CommandLogValues m_log;
};

constexpr quint64 NOON = 12ULL * 3600 * 1000;

} // namespace

TEST_F(CommandLogValuesTest, LinesAreInOrderWithTheTimeInFront) {
    m_log.OnCommandReported(u"frequency 1 Hz"_s, NOON);
    m_log.OnCommandReported(u"mode scan"_s, NOON + 1);
    EXPECT_EQ(GetLines(), (std::vector{u"12:00:00.000 frequency 1 Hz"_s, u"12:00:00.001 mode scan"_s}));
}

TEST_F(CommandLogValuesTest, TheLastThousandLinesStay) {
    for (int i = 0; i < 2500; ++i) {
        m_log.OnCommandReported(QString::number(i), NOON);
    }
    ASSERT_EQ(GetLines().size(), 1000U);
    EXPECT_EQ(GetLines().front(), u"12:00:00.000 1500"_s);
    EXPECT_EQ(GetLines().back(), u"12:00:00.000 2499"_s);
}

TEST_F(CommandLogValuesTest, LongLinesAreCutOffAndAllTogetherAreBounded) {
    for (int i = 0; i < 1000; ++i) {
        m_log.OnCommandReported(QString(1'000'000, u'x'), NOON);
    }
    std::size_t size = 0;
    for (const QString& line : GetLines()) {
        size += static_cast<std::size_t>(line.size());
        EXPECT_LE(line.size(), CommandLogValues::LONGEST_LINE + 13);
    }
    EXPECT_LE(size, CommandLogValues::MOST_CHARACTERS);
    EXPECT_GT(GetLines().size(), 10U);
}

TEST_F(CommandLogValuesTest, DisplayIsNotifiedOfManyLinesAtOnce) {
    CodeObserver display;
    DeviceTree::DeviceValue<ValueStringList>(StdDeviceDefinition::g_vdCommandLog)->AddObserver(&display);
    for (int i = 0; i < 1000; ++i) {
        m_log.OnCommandReported(u"a command"_s, NOON);
    }
    EXPECT_TRUE(SpinUntil([&] { return !display.codes.empty(); }));
    EXPECT_LE(display.codes.size(), 20U);
}
