#include "krakensdr/recordparser.h"
#include "krakensdr/recordreader.h"
#include "support/printing.h"
#include "support/receiverrecords.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <vector>

using namespace Qt::StringLiterals;
using namespace KrakenSdr;

namespace {

class RecordParserTest : public testing::Test {
protected:
    bool Parse(const ReceiverRecord& record) { return ParseLine(record.Line().chopped(1)); }
    bool ParseLine(const QByteArray& line) {
        m_line = line;
        return m_parser.Parse({m_line.constData(), static_cast<std::size_t>(m_line.size())}, m_record);
    }
    void ExpectFault(const ReceiverRecord& record, BadRecord fault, const QString& text) {
        EXPECT_FALSE(Parse(record));
        EXPECT_EQ(m_parser.GetFault(), fault);
        EXPECT_EQ(m_parser.GetFaultText(), text);
    }

    RecordParser m_parser;
    Record m_record;
    QByteArray m_line;
};

class RecordReaderTest : public testing::Test {
protected:
    /// The times of the new records of a body.
    std::vector<quint64> Read(const QByteArray& body) {
        std::vector<quint64> times;
        m_isAnswer = m_reader.Read(body, [&times](const Record& record) { times.push_back(record.timeMs); });
        return times;
    }

    QStringList m_told;
    RecordReader m_reader{[this](const QString& text) { m_told.append(text); }};
    bool m_isAnswer = false;
};

using Times = std::vector<quint64>;

ReceiverRecord At(const QByteArray& time, const QByteArray& frequency = "434500000") {
    ReceiverRecord record;
    record.time = time;
    record.frequency = frequency;
    return record;
}

} // namespace

TEST_F(RecordParserTest, ReadsEachFieldAndTheSpectrum) {
    ReceiverRecord record;
    record.station = "PIER";
    record.latitude = "52.5";
    record.longitude = "-5.25";
    record.heading = "10.5";
    ASSERT_TRUE(Parse(record)) << m_parser.GetFaultText().toStdString();
    EXPECT_EQ(m_record.timeMs, 1'700'000'000'000U);
    EXPECT_EQ(m_record.bearing, 92.0);
    EXPECT_EQ(m_record.confidence, 3.61);
    EXPECT_EQ(m_record.level, -25.5);
    EXPECT_EQ(m_record.frequency, 434.5e6);
    EXPECT_EQ(m_record.station, "PIER");
    EXPECT_EQ(m_record.latitude, 52.5);
    EXPECT_EQ(m_record.longitude, -5.25);
    EXPECT_EQ(m_record.heading, 10.5);
    ASSERT_TRUE(m_record.hasSpectrum);
    EXPECT_EQ(m_record.spectrum[0], 0.25F);
    EXPECT_EQ(m_record.spectrum[91], 0.5F);
    EXPECT_EQ(m_record.spectrum[92], 6.0F);
    EXPECT_EQ(m_record.spectrum[359], 0.5F);
}

TEST_F(RecordParserTest, FieldThatHoldsNothingIsNotMeasured) {
    ReceiverRecord record;
    record.level = "R";
    record.firstValue = "R";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.level, std::nullopt);
    EXPECT_EQ(m_record.station, "");
    EXPECT_EQ(m_record.latitude, std::nullopt);
    EXPECT_EQ(m_record.longitude, std::nullopt);
    EXPECT_EQ(m_record.heading, std::nullopt);
    EXPECT_FALSE(m_record.hasSpectrum);
    ASSERT_TRUE(Parse(ReceiverRecord()));
    EXPECT_TRUE(m_record.hasSpectrum) << "what one record lacks is not taken over by the next";
}

TEST_F(RecordParserTest, BlanksAroundAFieldAndTheEndOfAWindowsLineAreNoPartOfIt) {
    ReceiverRecord record;
    record.bearing = "  45\t ";
    record.heading = "10.5 ";
    EXPECT_TRUE(ParseLine(record.Line().chopped(1) + " \r")) << m_parser.GetFaultText().toStdString();
    EXPECT_EQ(m_record.bearing, 45.0);
    EXPECT_EQ(m_record.heading, 10.5);
}

TEST_F(RecordParserTest, FullCircleIsNorth) {
    ReceiverRecord record;
    record.bearing = "360";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.bearing, 0.0);
}

TEST_F(RecordParserTest, PlaceOfAReceiverThatWasGivenNoneIsNone) {
    ReceiverRecord record;
    record.latitude = "0.0";
    record.longitude = "0.0";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.latitude, std::nullopt);
    EXPECT_EQ(m_record.longitude, std::nullopt);
    record.longitude = "5";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.latitude, 0.0);
    EXPECT_EQ(m_record.longitude, 5.0);
}

TEST_F(RecordParserTest, HeadingIsThatOfTheSensorThatTheReceiverNames) {
    ReceiverRecord record;
    record.heading = "10";
    record.compass = "-20";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.heading, 10.0);
    record.mainHeading = "Compass";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.heading, 340.0);
    record.mainHeading = "GPS";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.heading, 10.0);
    record.heading = "R";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.heading, std::nullopt) << "the other sensor is not taken for the one that is named";
    record.mainHeading = "R";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.heading, 340.0);
}

TEST_F(RecordParserTest, HeadingOutOfRangeIsNoneAndTheBearingStays) {
    ReceiverRecord record;
    record.heading = "360.5";
    record.mainHeading = "GPS";
    ASSERT_TRUE(Parse(record)) << m_parser.GetFaultText().toStdString();
    EXPECT_EQ(m_record.heading, std::nullopt);
    EXPECT_EQ(m_record.bearing, 92.0);
    record.compass = "-361";
    record.mainHeading = "Compass";
    ASSERT_TRUE(Parse(record));
    EXPECT_EQ(m_record.heading, std::nullopt);
    record.compass = "10x";
    ExpectFault(record, BadRecord::NotANumber, u"field 12 (heading): not a number: \"10x\""_s);
}

TEST_F(RecordParserTest, WhatIsNoRecordIsRefusedWithTheReason) {
    ReceiverRecord record;
    record.time = "R";
    ExpectFault(record, BadRecord::Missing, u"field 1 (time): required value missing: \"R\""_s);
    record = {};
    record.bearing = "361";
    ExpectFault(record, BadRecord::OutOfRange, u"field 2 (bearing): out of range: \"361\""_s);
    record = {};
    record.confidence = "nan";
    ExpectFault(record, BadRecord::NotANumber, u"field 3 (confidence): not a number: \"nan\""_s);
    record = {};
    record.level = "";
    ExpectFault(record, BadRecord::NotANumber, u"field 4 (level): not a number: \"\""_s);
    record = {};
    record.frequency = "0";
    ExpectFault(record, BadRecord::OutOfRange, u"field 5 (frequency): out of range: \"0\""_s);
    record.frequency = "4e12";
    ExpectFault(record, BadRecord::OutOfRange, u"field 5 (frequency): out of range: \"4e12\""_s);
    record = {};
    record.latitude = "90.1";
    ExpectFault(record, BadRecord::OutOfRange, u"field 9 (latitude): out of range: \"90.1\""_s);
    record = {};
    record.firstValue = "1..5";
    ExpectFault(record, BadRecord::NotANumber, u"field 18 (spectrum): not a number: \"1..5\""_s);
    record = {};
    record.time = "253402300800000";
    ExpectFault(record, BadRecord::OutOfRange, u"field 1 (time): out of range: \"253402300800000\""_s);
    EXPECT_FALSE(ParseLine("<html>"));
    EXPECT_EQ(m_parser.GetFaultText(), u"1 fields instead of 377: \"<html>\""_s);
    EXPECT_FALSE(ParseLine(ReceiverRecord().Line().chopped(1) + ", 1"));
    EXPECT_EQ(m_parser.GetFault(), BadRecord::FieldCount);
}

TEST_F(RecordReaderTest, RecordIsNewWhenItsFrequencyAndTimeWereNotMetTogether) {
    EXPECT_EQ(Read(At("1000").Line()), Times{1000});
    EXPECT_EQ(Read(At("1000").Line()), Times());
    EXPECT_TRUE(m_isAnswer) << "a receiver without a new bearing is there";
    EXPECT_EQ(Read(At("2000").Line()), Times{2000});
    EXPECT_EQ(Read(At("1500").Line()), Times{1500}) << "its clock was set back";
    EXPECT_EQ(Read(At("1500", "121500000").Line() + At("1500").Line()), Times{1500});
}

TEST_F(RecordReaderTest, RecordsOfOneFrequencyWithDifferentTimesAreNewOnce) {
    const QByteArray body = At("1000").Line() + At("2000").Line();
    EXPECT_EQ(Read(body), (Times{1000, 2000}));
    EXPECT_EQ(Read(body), Times());
    EXPECT_EQ(Read(body), Times());
}

TEST_F(RecordReaderTest, RecordThatStaysIsNotForgottenBesideOthersThatAreRenewed) {
    const QByteArray staying = At("1000", "121500000").Line();
    EXPECT_EQ(Read(staying), Times{1000});
    for (quint64 time = 2000; time < 2200; ++time) {
        EXPECT_EQ(Read(At(QByteArray::number(time)).Line() + staying), Times{time});
    }
}

TEST_F(RecordReaderTest, ReceiverThatIsConnectedAgainBringsNothingTwice) {
    Read("garbage\n" + At("1000").Line());
    m_reader.Reconnect();
    EXPECT_EQ(m_reader.GetCounts().GetTotal(), 0U);
    EXPECT_EQ(Read(At("1000").Line()), Times());
    m_reader.Reset();
    EXPECT_EQ(Read(At("1000").Line()), Times{1000}) << "another receiver";
}

TEST_F(RecordReaderTest, LinesOfSixteenFrequenciesAreReadAndNoMore) {
    QByteArray body;
    for (int i = 0; i < 17; ++i) {
        body += At("1000", QByteArray::number(100'000'000 + i)).Line();
    }
    EXPECT_EQ(Read(body).size(), 16U);
    EXPECT_EQ(m_told, QStringList(u"more lines than frequencies"_s));
}

TEST_F(RecordReaderTest, RecordThatIsCutShortIsTakenWhenItIsWhole) {
    const QByteArray line = At("1000").Line();
    EXPECT_EQ(Read(line.left(500)), Times());
    EXPECT_TRUE(m_isAnswer);
    EXPECT_EQ(m_told, QStringList());
    EXPECT_EQ(Read(line), Times{1000});
    EXPECT_EQ(Read(At("2000", "1000000").Line() + line.left(500)), Times{2000})
        << "the lines before it are whole";
}

TEST_F(RecordReaderTest, LastLineWithoutAnEndCountsWhenItComesAgain) {
    const QByteArray line = At("1000").Line().chopped(1);
    EXPECT_EQ(Read(line), Times());
    EXPECT_EQ(Read(line), Times{1000});
    EXPECT_EQ(Read(line), Times());
}

TEST_F(RecordReaderTest, EmptyBodyAndGarbageAreNoAnswer) {
    Read("");
    EXPECT_FALSE(m_isAnswer);
    Read("<html><body>Not found</body></html>\n");
    EXPECT_FALSE(m_isAnswer);
    EXPECT_EQ(m_told.size(), 1);
    Read(QByteArray(9000, '1') + '\n');
    EXPECT_FALSE(m_isAnswer);
    EXPECT_EQ(m_told.value(1), u"line too long"_s);
    EXPECT_EQ(m_reader.GetCounts().GetTotal(), 2U);
}

TEST_F(RecordReaderTest, FrequenciesOfAReceiverThatIsTunedOnAndOnAreForgotten) {
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(Read(At("1000", QByteArray::number(100'000'000 + i)).Line()).size(), 1U);
    }
    EXPECT_EQ(Read(At("1000", "100000000").Line()), Times());
    Read(At("1000", "200000000").Line());
    EXPECT_EQ(Read(At("1000", "100000000").Line()), Times()) << "it was met again";
    EXPECT_EQ(Read(At("1000", "100000001").Line()), Times{1000});
}
