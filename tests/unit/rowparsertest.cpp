#include "zancommon/rowparser.h"
#include "support/printing.h"
#include "support/recordings.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;

namespace {

constexpr std::string_view ROW = "1000,121500000,71.5,-10,90,-52,12.3,1.5,-2.5,52.5,5.5,-4";

std::string_view Header() {
    return {RECORDING_HEADER.constData(), static_cast<std::size_t>(RECORDING_HEADER.size()) - 1};
}

const RecordingColumn& Column(std::string_view name) {
    return *std::ranges::find(RECORDING_COLUMNS, name, &RecordingColumn::name);
}

} // namespace

TEST(RowParser, ReadsEachColumnIntoItsMember) {
    RecordedBearing bearing;
    ASSERT_TRUE(RowParser().Parse(ROW, bearing));
    const RecordedBearing expected{1000, 121.5e6, 71.5, -10.0, 90.0, -52.0, 12.3, 1.5, -2.5, 52.5, 5.5, -4.0};
    EXPECT_EQ(bearing, expected);
}

TEST(RowParser, EmptyFieldOfAnOptionalColumnIsNotMeasured) {
    RecordedBearing bearing;
    ASSERT_TRUE(RowParser().Parse(ROW, bearing));
    ASSERT_TRUE(RowParser().Parse("1000,121500000,71.5,,90,,,,,,,", bearing));
    const RecordedBearing expected{1000, 121.5e6, 71.5, {}, 90.0, {}, {}, {}, {}, {}, {}, {}};
    EXPECT_EQ(bearing, expected);
}

TEST(RowParser, EmptyTimeIsRefusedWhereTheTimeIsRequired) {
    RowParser parser;
    RecordedBearing bearing;
    EXPECT_FALSE(parser.Parse(",121500000,71.5,,90,,,,,,,", bearing));
    EXPECT_EQ(parser.GetFault(), BadLine::MissingValue);
    EXPECT_EQ(parser.GetFaultText(), u"time_ms: required value missing"_s);
}

TEST(RowParser, EmptyTimeLeavesTheTimeAsItIsWhereItIsOptional) {
    RowParser parser(RowParser::Time::Optional);
    RecordedBearing bearing;
    bearing.timeMs = 77;
    ASSERT_TRUE(parser.Parse(",121500000,71.5,,90,,,,,,,", bearing));
    EXPECT_EQ(bearing.timeMs, 77U);
    ASSERT_TRUE(parser.Parse(ROW, bearing));
    EXPECT_EQ(bearing.timeMs, 1000U);
}

TEST(RowParser, HeaderNamesAtLeastOneColumn) {
    EXPECT_TRUE(RowParser::IsHeader(Header()));
    EXPECT_TRUE(RowParser::IsHeader("quality,something"));
    EXPECT_FALSE(RowParser::IsHeader("hello,world"));
    EXPECT_FALSE(RowParser::IsHeader(ROW));
    EXPECT_FALSE(RowParser::IsHeader(""));
}

TEST(RowParser, HeaderIsCheckedColumnByColumn) {
    EXPECT_EQ(RowParser().TakeHeader(Header()), QString());
    EXPECT_EQ(RowParser().TakeHeader("frequency_hz,time_ms"),
              u"header column 1 is \"frequency_hz\" instead of \"time_ms\""_s);
    EXPECT_EQ(RowParser().TakeHeader("hello"),
              u"the header line is missing, the file begins with \"hello\""_s);
}

TEST(RowParser, ByteOrderMarkIsTakenAwayOnce) {
    std::string_view line = "\xEF\xBB\xBFtime_ms";
    RowParser::DropByteOrderMark(line);
    EXPECT_EQ(line, "time_ms");
    RowParser::DropByteOrderMark(line);
    EXPECT_EQ(line, "time_ms");
}

TEST(RowParser, ValueIsAssignedToItsColumn) {
    RecordedBearing bearing;
    EXPECT_EQ(RowParser::Assign(Column("time_ms"), 253402300799999.0, bearing), std::nullopt);
    EXPECT_EQ(RowParser::Assign(Column("azimuth_deg"), 359.9, bearing), std::nullopt);
    EXPECT_EQ(RowParser::Assign(Column("level_db"), -20.5, bearing), std::nullopt);
    EXPECT_EQ(bearing.timeMs, 253402300799999U);
    EXPECT_EQ(bearing.azimuth, 359.9);
    EXPECT_EQ(bearing.level, -20.5);
}

TEST(RowParser, ValueThatItsColumnCannotHoldIsNotAssigned) {
    RecordedBearing bearing;
    EXPECT_EQ(RowParser::Assign(Column("time_ms"), -1.0, bearing), BadLine::OutOfRange);
    EXPECT_EQ(RowParser::Assign(Column("time_ms"), 253402300800000.0, bearing), BadLine::OutOfRange);
    EXPECT_EQ(RowParser::Assign(Column("time_ms"), 1.5, bearing), BadLine::NotANumber);
    EXPECT_EQ(RowParser::Assign(Column("azimuth_deg"), 360.0, bearing), BadLine::OutOfRange);
    EXPECT_EQ(RowParser::Assign(Column("level_db"), std::numeric_limits<double>::quiet_NaN(), bearing),
              BadLine::NotFinite);
    EXPECT_EQ(bearing, RecordedBearing());
}
