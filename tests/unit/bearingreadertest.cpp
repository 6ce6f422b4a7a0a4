#include "stream/bearingreader.h"
#include "support/printing.h"
#include "support/recordings.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QStringList>

#include <vector>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;
using Stream::BearingReader;

namespace {

constexpr quint64 NOW = 1'700'000'000'000;
const QByteArray ROW = "1000,121500000,71.5,,90,,,,,,,\n";
const RecordedBearing BEARING{1000, 121.5e6, 71.5, {}, 90.0, {}, {}, {}, {}, {}, {}, {}};

class BearingReaderTest : public testing::Test {
protected:
    std::vector<RecordedBearing> Read(const QByteArray& text) {
        QBuffer source;
        source.setData(text);
        EXPECT_TRUE(source.open(QBuffer::ReadOnly));
        LineReader lines;
        EXPECT_TRUE(lines.Open(source));
        BearingReader reader(
            lines, [this](const QString& told) { m_told.append(told); }, [] { return NOW; });
        std::vector<RecordedBearing> bearings;
        while (const RecordedBearing* const bearing = reader.Next()) {
            bearings.push_back(*bearing);
        }
        m_lastFault = reader.GetLastFault();
        m_badLineCount = reader.GetCounts().GetTotal();
        return bearings;
    }
    /// One line that is not valid, and what is told of it.
    void ExpectFault(const QByteArray& line, const QString& told) {
        m_told.clear();
        EXPECT_EQ(Read(line + "\n" + ROW), std::vector{BEARING}) << line.toStdString();
        EXPECT_EQ(m_told, QStringList(u"line 1: "_s + told));
    }

    QStringList m_told;
    QString m_lastFault;
    quint64 m_badLineCount = 0;
};

} // namespace

TEST_F(BearingReaderTest, ModeAndEmitterOfARecordingAreReadFromRowsAndObjects) {
    const QByteArray header = RECORDING_HEADER.chopped(1) + ",mode,emitter\n";
    RecordedBearing bearing = BEARING;
    bearing.mode = 6.0;
    bearing.emitter = 1.0;
    EXPECT_EQ(Read(header + "1000,121500000,71.5,,90,,,,,,,,6,1\n"), std::vector{bearing});
    EXPECT_EQ(Read(R"({"time_ms":1000,"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90,)"
                   R"("mode":6,"emitter":1})"
                   "\n"),
              std::vector{bearing});
    EXPECT_EQ(m_told, QStringList());
}

TEST_F(BearingReaderTest, ModeAndEmitterOfARowAreNotThoseOfTheNext) {
    const QByteArray header = RECORDING_HEADER.chopped(1) + ",mode,emitter\n";
    const QByteArray object = R"({"time_ms":1000,"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90})"
                              "\n";
    const std::vector<RecordedBearing> bearings =
        Read(header + "1000,121500000,71.5,,90,,,,,,,,6,1\n" + object + RECORDING_HEADER + ROW);
    ASSERT_EQ(bearings.size(), 3U);
    EXPECT_EQ(bearings[1], BEARING);
    EXPECT_EQ(bearings[2], BEARING);
}

TEST_F(BearingReaderTest, RowsAreReadWithAndWithoutHeaderLine) {
    EXPECT_EQ(Read(ROW), std::vector{BEARING});
    EXPECT_EQ(Read("\xEF\xBB\xBF" + RECORDING_HEADER + ROW), std::vector{BEARING});
    EXPECT_EQ(Read(ROW + RECORDING_HEADER + ROW), (std::vector{BEARING, BEARING}))
        << "the sender was restarted";
    EXPECT_EQ(m_told, QStringList());
}

TEST_F(BearingReaderTest, ObjectHasTheNamesOfTheColumns) {
    const RecordedBearing all{1000, 121.5e6, 71.5, -10.0, 90.0, -52.0, 12.3, 1.5, -2.5, 52.5, 5.5, -4.0};
    EXPECT_EQ(
        Read(R"({"time_ms":1000,"frequency_hz":121.5e6,"azimuth_deg":71.5,"elevation_deg":-10,"quality":90,)"
             R"("level_db":-52,"heading_deg":12.3,"pitch_deg":1.5,"roll_deg":-2.5,"latitude_deg":52.5,)"
             R"("longitude_deg":5.5,"altitude_m":-4})"
             "\n"),
        std::vector{all});
    EXPECT_EQ(m_told, QStringList());
}

TEST_F(BearingReaderTest, ObjectMayLeaveOutWhatWasNotMeasuredAndHaveOtherMembers) {
    EXPECT_EQ(
        Read(R"({"zone":{"a":[1]},"quality":90,"azimuth_deg":71.5,"antenna":"A","frequency_hz":121500000,)"
             R"("level_db":null,"time_ms":1000,"é":1})"
             "\n"),
        std::vector{BEARING});
    EXPECT_EQ(m_told, QStringList());
}

TEST_F(BearingReaderTest, WhatOneLineMeasuresIsNotTakenOverByTheNext) {
    EXPECT_EQ(Read("1000,121500000,71.5,5,90,-3,1,1,1,1,1,1\n"
                   R"({"time_ms":1000,"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90})"
                   "\n")
                  .at(1),
              BEARING);
}

TEST_F(BearingReaderTest, RowWithoutATimeGetsThatOfItsArrival) {
    const std::vector<RecordedBearing> bearings =
        Read(",121500000,71.5,,90,,,,,,,\n"
             R"({"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90})"
             "\n"
             R"({"time_ms":null,"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90})"
             "\n");
    ASSERT_EQ(bearings.size(), 3U);
    for (const RecordedBearing& bearing : bearings) {
        EXPECT_EQ(bearing.timeMs, NOW);
    }
}

TEST_F(BearingReaderTest, TimesMayGoBackwards) {
    const std::vector<RecordedBearing> bearings =
        Read("2000,121500000,1,,90,,,,,,,\n1000,121500000,2,,90,,,,,,,\n0,121500000,3,,90,,,,,,,\n");
    ASSERT_EQ(bearings.size(), 3U);
    EXPECT_EQ(bearings[1].timeMs, 1000U);
    EXPECT_EQ(bearings[2].timeMs, 0U);
}

TEST_F(BearingReaderTest, RowsAndObjectsMayBeMixedWithEmptyLines) {
    EXPECT_EQ(Read("\n\r\n" + ROW +
                   R"({"time_ms":1000,"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90})"
                   "\r\n\n" +
                   ROW)
                  .size(),
              3U);
    EXPECT_EQ(m_told, QStringList());
}

TEST_F(BearingReaderTest, WhatIsNotARowIsToldAndTheRestIsRead) {
    ExpectFault("1000,121500000", u"wrong number of columns: 2"_s);
    ExpectFault("1000,121500000,360,,90,,,,,,,", u"azimuth_deg: out of range: \"360\""_s);
    ExpectFault("1000,0,10,,90,,,,,,,", u"frequency_hz: out of range: \"0\""_s);
    ExpectFault("1000,121500000,nan,,90,,,,,,,", u"azimuth_deg: not a finite number: \"nan\""_s);
    ExpectFault("-1,121500000,10,,90,,,,,,,", u"time_ms: not a number: \"-1\""_s);
    ExpectFault("253402300800000,121500000,10,,90,,,,,,,", u"time_ms: out of range: \"253402300800000\""_s);
    ExpectFault("1000,,10,,90,,,,,,,", u"frequency_hz: required value missing"_s);
    ExpectFault(QByteArray("1000,121500000\0,10,,90,,,,,,,", 30), u"NUL byte"_s);
    ExpectFault("hello", u"wrong number of columns: 1"_s);
    ExpectFault(QByteArray(5000, '1'), u"line too long"_s);
}

TEST_F(BearingReaderTest, LastLineWithoutALineEndIsCutShortAndNoBearing) {
    EXPECT_EQ(Read(ROW + "1000,121500000,71.5,,9,,,,,,,"), std::vector{BEARING});
    EXPECT_EQ(m_told, QStringList(u"line 2: line cut short"_s));
    EXPECT_EQ(m_badLineCount, 1U);
    EXPECT_EQ(Read(R"({"time_ms":1000,"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90})"),
              std::vector<RecordedBearing>())
        << "lines are lines";
}

TEST_F(BearingReaderTest, WhatIsNotAnObjectOfABearingIsToldAndTheRestIsRead) {
    ExpectFault("{\"time_ms\":1000,", u"not a JSON object: unterminated object"_s);
    ExpectFault(R"({"time_ms":1000,"frequency_hz":121500000,"quality":90})",
                u"azimuth_deg: required value missing"_s);
    ExpectFault(R"({"time_ms":1000,"frequency_hz":121500000,"azimuth_deg":"71.5","quality":90})",
                u"azimuth_deg: not a number: \"71.5\""_s);
    ExpectFault(R"({"time_ms":1000,"frequency_hz":121500000,"azimuth_deg":[71.5],"quality":90})",
                u"azimuth_deg: not a number: \"[...]\""_s);
    ExpectFault(R"({"time_ms":-1,"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90})",
                u"time_ms: out of range: \"-1\""_s);
    ExpectFault(R"({"time_ms":1000.5,"frequency_hz":121500000,"azimuth_deg":71.5,"quality":90})",
                u"time_ms: not a number: \"1000.5\""_s);
    ExpectFault(R"({"time_ms":1000,"frequency_hz":4e12,"azimuth_deg":71.5,"quality":90})",
                u"frequency_hz: out of range: \"4000000000000\""_s);
}

TEST_F(BearingReaderTest, BelowAHeaderWithOtherColumnsNoRowIsReadUntilARightOneFollows) {
    QByteArray other = RECORDING_HEADER;
    other.replace("frequency_hz,azimuth_deg", "azimuth_deg,frequency_hz");
    EXPECT_EQ(Read(other + ROW + ROW), std::vector<RecordedBearing>());
    EXPECT_EQ(m_badLineCount, 3U);
    EXPECT_EQ(m_told,
              QStringList(u"line 1: header column 2 is \"azimuth_deg\" instead of \"frequency_hz\""_s));
    EXPECT_EQ(Read(other + ROW + RECORDING_HEADER + ROW), std::vector{BEARING});
}

TEST_F(BearingReaderTest, FloodOfBadLinesIsToldAFewTimesWithTheLastReason) {
    QByteArray text;
    for (int i = 0; i < 1500; ++i) {
        text += "bad\n";
    }
    Read(text + "worse,still\n");
    EXPECT_EQ(
        m_told,
        (QStringList{u"line 1: wrong number of columns: 1"_s,
                     u"10 lines so far: wrong number of columns; the last one: line 10: wrong number of "
                     "columns: 1"_s,
                     u"100 lines so far: wrong number of columns; the last one: line 100: wrong number of "
                     "columns: 1"_s,
                     u"1000 lines so far: wrong number of columns; the last one: line 1000: wrong number "
                     "of columns: 1"_s}));
    EXPECT_EQ(m_badLineCount, 1501U);
    EXPECT_EQ(m_lastFault, u"line 1501: wrong number of columns: 2"_s);
}
