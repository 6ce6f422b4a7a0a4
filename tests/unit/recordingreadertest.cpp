#include "zancommon/recordingreader.h"

#include "support/printing.h"
#include "support/recordings.h"

#include <QBuffer>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;
using BadLine = RecordingReader::BadLine;

namespace {

const QByteArray HEADER = RECORDING_HEADER.chopped(1); // without the end of the line
const QByteArray ROW = "1000,121500000,12.3,4.5,90,-52.04,359.9,-1.5,2.5,52.4603,5.52722,-4.0";

/// Hands out its bytes in pieces of a given size, and then ends or fails.
class PieceDevice : public QIODevice {
public:
    PieceDevice(QByteArray bytes, qint64 pieceSize, bool failsAtEnd = false)
        : m_bytes(std::move(bytes))
        , m_pieceSize(pieceSize)
        , m_failsAtEnd(failsAtEnd) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        const qint64 size = std::min({maxSize, m_pieceSize, m_bytes.size() - m_position});
        if (size == 0 && m_failsAtEnd) {
            setErrorString(u"the disk is gone"_s);
            return -1;
        }
        std::memcpy(data, m_bytes.constData() + m_position, static_cast<std::size_t>(size));
        m_position += size;
        return size;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_pieceSize;
    qint64 m_position = 0;
    bool m_failsAtEnd;
};

/// Repeats a piece of text a number of times between a begin and an end, without holding it.
class EndlessDevice : public QIODevice {
public:
    EndlessDevice(QByteArray begin, QByteArray repeated, qint64 count, QByteArray end)
        : m_parts{std::move(begin), std::move(repeated), std::move(end)}
        , m_counts{1, count, 1} {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        qint64 size = 0;
        while (size < maxSize && m_part < m_parts.size()) {
            const QByteArray& part = m_parts[m_part];
            const qint64 piece = std::min(maxSize - size, part.size() - m_position);
            std::memcpy(data + size, part.constData() + m_position, static_cast<std::size_t>(piece));
            size += piece;
            m_position += piece;
            if (m_position == part.size()) {
                m_position = 0;
                m_part += --m_counts[m_part] == 0 ? 1 : 0;
            }
        }
        return size;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    std::vector<QByteArray> m_parts;
    std::vector<qint64> m_counts;
    std::size_t m_part = 0;
    qint64 m_position = 0;
};

struct Content {
    std::vector<RecordedBearing> rows;
    quint64 badLineCount;
    QStringList badLineTexts;
    QString errorText;
};

Content ReadAll(RecordingReader& reader) {
    Content content{};
    while (const std::optional<RecordedBearing> bearing = reader.Next()) {
        content.rows.push_back(*bearing);
    }
    content.badLineCount = reader.GetBadLineCount();
    content.badLineTexts = reader.GetBadLineTexts();
    content.errorText = reader.GetErrorText();
    EXPECT_EQ(reader.GetRowCount(), content.rows.size());
    return content;
}

Content ReadBytes(QByteArray bytes) {
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    RecordingReader reader;
    EXPECT_TRUE(reader.Open(buffer)) << reader.GetErrorText().toStdString();
    return ReadAll(reader);
}

/// The row with one of its fields replaced.
QByteArray RowWith(qsizetype column, const QByteArray& field) {
    QByteArrayList fields = ROW.split(',');
    fields[column] = field;
    return fields.join(',');
}

qint64 PeakMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return qint64{usage.ru_maxrss} * 1024;
}

QString WriteFile(const QTemporaryDir& directory, const QByteArray& bytes) {
    QString name = directory.filePath(u"recording.csv"_s);
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(bytes), bytes.size());
    return name;
}

} // namespace

TEST(RecordingReader, EveryColumnFillsItsMember) {
    const Content content = ReadBytes(HEADER + '\n' + ROW + '\n');

    ASSERT_EQ(content.rows.size(), 1U);
    const RecordedBearing expected{1000,  121500000.0, 12.3, 4.5,     90.0,    -52.04,
                                   359.9, -1.5,        2.5,  52.4603, 5.52722, -4.0};
    EXPECT_EQ(content.rows.front(), expected);
    EXPECT_EQ(content.badLineCount, 0U);
    EXPECT_EQ(content.errorText, QString());
}

TEST(RecordingReader, EmptyFieldIsAValueThatWasNotMeasured) {
    const Content content = ReadBytes(HEADER + '\n' + ROW + "\n2000,462637500,318.0,,14,,,,,,,\n");

    ASSERT_EQ(content.rows.size(), 2U);
    EXPECT_EQ(content.rows[1], (RecordedBearing{.timeMs = 2000,
                                                .frequency = 462637500.0,
                                                .azimuth = 318.0,
                                                .elevation = {},
                                                .quality = 14.0,
                                                .level = {},
                                                .heading = {},
                                                .pitch = {},
                                                .roll = {},
                                                .latitude = {},
                                                .longitude = {},
                                                .altitude = {}}));
}

struct LineCase {
    const char* name;
    QByteArray line;
    BadLine reason;
    QString text;
};

void PrintTo(const LineCase& lineCase, std::ostream* out) {
    *out << lineCase.name;
}

class RecordingReaderBadLineTest : public testing::TestWithParam<LineCase> {};

TEST_P(RecordingReaderBadLineTest, IsReportedAndTheRestIsUsed) {
    const auto& [name, line, reason, text] = GetParam();
    QByteArray bytes = HEADER + '\n' + ROW + '\n' + line + '\n' + ROW + '\n';
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(buffer));
    const Content content = ReadAll(reader);

    EXPECT_EQ(content.rows.size(), 2U);
    EXPECT_EQ(content.badLineCount, 1U);
    EXPECT_EQ(reader.GetBadLineCount(reason), 1U);
    EXPECT_EQ(content.badLineTexts, QStringList(u"line 3: "_s + text));
    EXPECT_EQ(content.errorText, QString());
}

INSTANTIATE_TEST_SUITE_P(
    Lines, RecordingReaderBadLineTest,
    testing::Values(
        LineCase{"TooFewColumns", "1000,121500000,12.3", BadLine::ColumnCount,
                 u"wrong number of columns: 3"_s},
        LineCase{"TooManyColumns", ROW + ",1", BadLine::ColumnCount, u"wrong number of columns: 13"_s},
        LineCase{"SemicolonsForCommas", QByteArray(ROW).replace(',', ';'), BadLine::ColumnCount,
                 u"wrong number of columns: 1"_s},
        LineCase{"BlankLineWithin", "", BadLine::ColumnCount, u"wrong number of columns: 1"_s},
        LineCase{"HeaderAgain", HEADER, BadLine::NotANumber, u"time_ms: not a number: \"time_ms\""_s},
        LineCase{"TimeMissing", RowWith(0, ""), BadLine::MissingValue, u"time_ms: required value missing"_s},
        LineCase{"FrequencyMissing", RowWith(1, ""), BadLine::MissingValue,
                 u"frequency_hz: required value missing"_s},
        LineCase{"AzimuthMissing", RowWith(2, ""), BadLine::MissingValue,
                 u"azimuth_deg: required value missing"_s},
        LineCase{"QualityMissing", RowWith(4, ""), BadLine::MissingValue,
                 u"quality: required value missing"_s},
        LineCase{"LettersForTime", RowWith(0, "noon"), BadLine::NotANumber,
                 u"time_ms: not a number: \"noon\""_s},
        LineCase{"LettersForAzimuth", RowWith(2, "north"), BadLine::NotANumber,
                 u"azimuth_deg: not a number: \"north\""_s},
        LineCase{"LettersBehindANumber", RowWith(2, "12.3deg"), BadLine::NotANumber,
                 u"azimuth_deg: not a number: \"12.3deg\""_s},
        LineCase{"LettersInTheLastColumn", RowWith(11, "15m"), BadLine::NotANumber,
                 u"altitude_m: not a number: \"15m\""_s},
        LineCase{"SpaceBeforeANumber", RowWith(2, " 12.3"), BadLine::NotANumber,
                 u"azimuth_deg: not a number: \" 12.3\""_s},
        LineCase{"HexadecimalNumber", RowWith(5, "0x1F"), BadLine::NotANumber,
                 u"level_db: not a number: \"0x1F\""_s},
        LineCase{"TimeWithFraction", RowWith(0, "1000.5"), BadLine::NotANumber,
                 u"time_ms: not a number: \"1000.5\""_s},
        LineCase{"NegativeTime", RowWith(0, "-1000"), BadLine::NotANumber,
                 u"time_ms: not a number: \"-1000\""_s},
        LineCase{"ControlCharactersAreNotRepeated", RowWith(2, "1\x1b[2J"), BadLine::NotANumber,
                 u"azimuth_deg: not a number: \"1?[2J\""_s},
        LineCase{"LongFieldIsCutInTheText", RowWith(2, QByteArray(100, 'x')), BadLine::NotANumber,
                 u"azimuth_deg: not a number: \""_s + QString(40, u'x') + u"...\""_s},
        LineCase{"NotANumberAzimuth", RowWith(2, "nan"), BadLine::NotFinite,
                 u"azimuth_deg: not a finite number: \"nan\""_s},
        LineCase{"NotANumberLevel", RowWith(5, "-NaN"), BadLine::NotFinite,
                 u"level_db: not a finite number: \"-NaN\""_s},
        LineCase{"InfiniteFrequency", RowWith(1, "inf"), BadLine::NotFinite,
                 u"frequency_hz: not a finite number: \"inf\""_s},
        LineCase{"InfiniteAltitude", RowWith(11, "-Infinity"), BadLine::NotFinite,
                 u"altitude_m: not a finite number: \"-Infinity\""_s},
        LineCase{"NumberBeyondADouble", RowWith(1, "1e999"), BadLine::OutOfRange,
                 u"frequency_hz: out of range: \"1e999\""_s},
        LineCase{"TimeBeyond64Bits", RowWith(0, "18446744073709551616"), BadLine::OutOfRange,
                 u"time_ms: out of range: \"18446744073709551616\""_s},
        LineCase{"TimeBeyondTheCalendar", RowWith(0, "253402300800000"), BadLine::OutOfRange,
                 u"time_ms: out of range: \"253402300800000\""_s},
        LineCase{"NulWithinANumber", RowWith(2, QByteArray("1\0002", 3)), BadLine::NulByte, u"NUL byte"_s},
        LineCase{"NulAtTheEnd", ROW + '\0', BadLine::NulByte, u"NUL byte"_s},
        LineCase{"OnlyNuls", QByteArray(100, '\0'), BadLine::NulByte, u"NUL byte"_s},
        LineCase{"TooLong", QByteArray(RecordingReader::MAX_LINE_LENGTH + 1, '1'), BadLine::TooLong,
                 u"line too long"_s},
        LineCase{"FarTooLong", QByteArray(1000000, ','), BadLine::TooLong, u"line too long"_s}),
    [](const auto& param) { return std::string(param.param.name); });

struct RangeCase {
    qsizetype column;
    QByteArrayList inside;
    QByteArrayList outside;
};

void PrintTo(const RangeCase& range, std::ostream* out) {
    *out << HEADER.split(',')[range.column].constData();
}

class RecordingReaderRangeTest : public testing::TestWithParam<RangeCase> {};

TEST_P(RecordingReaderRangeTest, LimitsAreValidAndBeyondThemIsOutOfRange) {
    const auto& [column, inside, outside] = GetParam();
    for (const QByteArray& field : inside) {
        const Content content = ReadBytes(HEADER + '\n' + RowWith(column, field));
        EXPECT_EQ(content.rows.size(), 1U) << field.constData();
    }
    for (const QByteArray& field : outside) {
        const Content content = ReadBytes(HEADER + '\n' + RowWith(column, field));
        EXPECT_EQ(content.rows.size(), 0U) << field.constData();
        EXPECT_EQ(content.badLineTexts.join(u'\n'), QString::fromUtf8("line 2: " + HEADER.split(',')[column] +
                                                                      ": out of range: \"" + field + '"'));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Columns, RecordingReaderRangeTest,
    testing::Values(RangeCase{0, {"0", "253402300799999"}, {"253402300800000"}},
                    RangeCase{1, {"0.001", "1e3", "3000000000000"}, {"0", "-0.0", "-1", "3000000000001"}},
                    RangeCase{2, {"0", "0.0", "359.9", "359.99999"}, {"360", "360.0", "361", "-0.1", "-90"}},
                    RangeCase{3, {"-90", "90"}, {"-90.1", "90.1"}},
                    RangeCase{4, {"0", "100"}, {"-1", "100.1"}},
                    RangeCase{5, {"-327.68", "327.67"}, {"-327.69", "327.68"}},
                    RangeCase{6, {"0", "359.9"}, {"360", "-0.1"}},
                    RangeCase{7, {"-90", "90"}, {"-90.1", "90.1"}},
                    RangeCase{8, {"-180", "180"}, {"-180.1", "180.1"}},
                    RangeCase{9, {"-90", "90"}, {"-90.0000001", "90.0000001"}},
                    RangeCase{10, {"-180", "180"}, {"-180.0000001", "180.0000001"}},
                    RangeCase{11, {"-12000", "100000"}, {"-12000.1", "100000.1"}}),
    [](const auto& param) { return HEADER.split(',')[param.param.column].toStdString(); });

TEST(RecordingReader, TheSameTimeAgainIsValid) {
    const Content content = ReadBytes(HEADER + '\n' + ROW + '\n' + ROW + '\n');
    EXPECT_EQ(content.rows.size(), 2U);
    EXPECT_EQ(content.badLineCount, 0U);
}

TEST(RecordingReader, TimeMayStepBackTenSecondsFromTheLatestAndNoFurther) {
    QByteArray bytes = HEADER + '\n';
    for (const char* const time : {"20000", "10000", "9999", "10000", "19999", "20001", "10001", "10000"}) {
        bytes += RowWith(0, time) + '\n';
    }
    const Content content = ReadBytes(bytes);
    std::vector<quint64> times;
    for (const RecordedBearing& row : content.rows) {
        times.push_back(row.timeMs);
    }
    EXPECT_EQ(times, (std::vector<quint64>{20000, 10000, 10000, 19999, 20001, 10001}));
    EXPECT_EQ(content.badLineTexts, (QStringList{u"line 4: time_ms: time runs backwards: \"9999\""_s,
                                                 u"line 9: time_ms: time runs backwards: \"10000\""_s}));
}

TEST(RecordingReader, ALineThatIsNotValidDoesNotMoveTheTime) {
    QByteArrayList late = RowWith(0, "50000").split(',');
    late[2] = "360";
    const Content content = ReadBytes(HEADER + '\n' + ROW + '\n' + late.join(',') + '\n' + ROW + '\n');
    EXPECT_EQ(content.rows.size(), 2U);
    EXPECT_EQ(content.badLineCount, 1U);
}

TEST(RecordingReader, NothingOfABadLineReachesTheNextRow) {
    const Content content = ReadBytes(HEADER + '\n' + ROW + "x\n2000,462637500,318.0,,14,,,,,,,\n");
    ASSERT_EQ(content.rows.size(), 1U);
    const RecordedBearing& row = content.rows.front();
    for (const RecordingColumn& column : RECORDING_COLUMNS) {
        EXPECT_FALSE(column.optional && (row.*column.optional).has_value()) << column.name;
    }
}

TEST(RecordingReader, CountsBadLinesByReason) {
    QByteArray bytes = HEADER + '\n' + RowWith(2, "360") + '\n' + RowWith(2, "x") + '\n' + RowWith(4, "101") +
                       '\n' + ROW + '\n';
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(buffer));
    ReadAll(reader);
    EXPECT_EQ(reader.GetBadLineCount(BadLine::OutOfRange), 2U);
    EXPECT_EQ(reader.GetBadLineCount(BadLine::NotANumber), 1U);
    EXPECT_EQ(reader.GetBadLineCount(BadLine::TooLong), 0U);
    EXPECT_EQ(reader.GetBadLineCount(), 3U);
    EXPECT_EQ(GetReasonText(BadLine::OutOfRange), u"out of range"_s);
}

TEST(RecordingReader, AcceptsHowOtherProgramsEndLinesAndBeginFiles) {
    struct Case {
        const char* name;
        QByteArray bytes;
    };
    const std::vector<Case> files{
        {"no final newline", HEADER + '\n' + ROW + '\n' + ROW},
        {"CR LF", HEADER + "\r\n" + ROW + "\r\n" + ROW + "\r\n"},
        {"CR LF, the last without LF", HEADER + "\r\n" + ROW + "\r\n" + ROW + '\r'},
        {"byte order mark", "\xEF\xBB\xBF" + HEADER + '\n' + ROW + '\n' + ROW + '\n'},
        {"blank last line", HEADER + '\n' + ROW + '\n' + ROW + "\n\n"},
        {"blank last line, CR LF", HEADER + "\r\n" + ROW + "\r\n" + ROW + "\r\n\r\n"},
        {"blank last line without newline", HEADER + "\r\n" + ROW + "\r\n" + ROW + "\r\n\r"},
    };
    for (const auto& [name, bytes] : files) {
        const Content content = ReadBytes(bytes);
        EXPECT_EQ(content.rows.size(), 2U) << name;
        EXPECT_EQ(content.badLineTexts.join(u'\n'), QString()) << name;
        EXPECT_EQ(content.errorText, QString()) << name;
    }
}

TEST(RecordingReader, AHeaderAloneIsARecordingWithoutRows) {
    for (const char* const end : {"", "\n", "\r\n", "\n\n"}) {
        const Content content = ReadBytes(HEADER + end);
        EXPECT_EQ(content.rows.size(), 0U);
        EXPECT_EQ(content.badLineCount, 0U);
        EXPECT_EQ(content.errorText, QString());
    }
}

TEST(RecordingReader, LineOfTheGreatestLengthIsRead) {
    const auto spare = static_cast<qsizetype>(RecordingReader::MAX_LINE_LENGTH) - ROW.size();
    const Content content =
        ReadBytes(HEADER + '\n' + RowWith(2, "12.3" + QByteArray(spare, '0')) + '\n' + ROW);
    EXPECT_EQ(content.badLineTexts.join(u'\n'), QString());
    ASSERT_EQ(content.rows.size(), 2U);
    EXPECT_EQ(content.rows[0], content.rows[1]);
}

TEST(RecordingReader, RowsAreTheSameInWhateverPiecesTheyArrive) {
    QByteArray bytes = HEADER + "\r\n";
    for (int i = 0; i < 50; ++i) {
        bytes += RowWith(0, QByteArray::number(1000 + i)) + "\r\n";
        bytes += i % 10 == 0 ? QByteArray(5000, 'x') + '\n' : QByteArray();
    }
    const Content whole = ReadBytes(bytes);
    ASSERT_EQ(whole.rows.size(), 50U);
    ASSERT_EQ(whole.badLineCount, 5U);
    for (const qint64 pieceSize : {1, 2, 3, 7, 64, 132, 133, 4095, 4096, 4097, 4098}) {
        PieceDevice device(bytes, pieceSize);
        RecordingReader reader;
        ASSERT_TRUE(reader.Open(device));
        const Content content = ReadAll(reader);
        EXPECT_EQ(content.rows, whole.rows) << pieceSize;
        EXPECT_EQ(content.badLineTexts, whole.badLineTexts) << pieceSize;
    }
}

TEST(RecordingReader, RowsThatCrossTheBufferAreWhole) {
    constexpr int COUNT = 20000; // some 1.5 MB
    QByteArray bytes = HEADER + '\n';
    for (int i = 0; i < COUNT; ++i) {
        bytes += RowWith(0, QByteArray::number(i * 7)) + '\n';
    }
    const Content content = ReadBytes(bytes);
    ASSERT_EQ(content.rows.size(), std::size_t{COUNT});
    RecordedBearing expected = content.rows.front();
    for (const RecordedBearing& row : content.rows) {
        EXPECT_EQ(row, expected);
        expected.timeMs += 7;
    }
}

TEST(RecordingReader, ALineWithoutEndIsSkippedInLittleMemory) {
    EndlessDevice device(HEADER + '\n' + ROW + '\n', QByteArray(1 << 20, '1'), 256, '\n' + ROW + '\n');
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(device));
    const qint64 before = PeakMemory();
    const Content content = ReadAll(reader);

    EXPECT_LT(PeakMemory() - before, 16 << 20);
    EXPECT_EQ(content.rows.size(), 2U);
    EXPECT_EQ(content.badLineTexts, QStringList(u"line 3: line too long"_s));
}

TEST(RecordingReader, ARecordingOfBadLinesIsReadInLittleMemory) {
    constexpr qint64 COUNT = 2000000;
    EndlessDevice device(HEADER + '\n', RowWith(2, "360") + '\n', COUNT, ROW);
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(device));
    const qint64 before = PeakMemory();
    const Content content = ReadAll(reader);

    EXPECT_LT(PeakMemory() - before, 16 << 20);
    EXPECT_EQ(content.rows.size(), 1U);
    EXPECT_EQ(content.badLineCount, quint64{COUNT});
    EXPECT_EQ(content.badLineTexts.size(), RecordingReader::MAX_BAD_LINE_TEXTS);
    EXPECT_EQ(content.badLineTexts.last(), u"line 21: azimuth_deg: out of range: \"360\""_s);
}

TEST(RecordingReader, FurtherColumnsAreReadWhenTheHeaderHasThem) {
    const Content all =
        ReadBytes(HEADER + ",mode,emitter,position_time_ms\n" + ROW + ",1,2,1527695886000\n" + ROW + ",,,\n");
    ASSERT_EQ(all.rows.size(), 2U);
    EXPECT_EQ(all.rows[0].mode, 1.0);
    EXPECT_EQ(all.rows[0].emitter, 2.0);
    EXPECT_EQ(all.rows[0].positionTimeMs, 1527695886000.0);
    EXPECT_FALSE(all.rows[1].mode || all.rows[1].emitter || all.rows[1].positionTimeMs);

    const Content one = ReadBytes(HEADER + ",emitter\n" + ROW + ",-1\n" + ROW + '\n' + ROW + ",-2\n");
    ASSERT_EQ(one.rows.size(), 1U);
    EXPECT_EQ(one.rows[0].emitter, RecordedBearing::NO_EMITTER);
    EXPECT_EQ(one.badLineTexts, (QStringList{u"line 3: wrong number of columns: 12"_s,
                                             u"line 4: emitter: out of range: \"-2\""_s}));
}

TEST(RecordingReader, SaysWhichColumnsTheRecordingHas) {
    QByteArray bytes = HEADER + ",mode\n";
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(buffer));
    EXPECT_TRUE(reader.HasColumn("altitude_m"));
    EXPECT_TRUE(reader.HasColumn("mode"));
    EXPECT_FALSE(reader.HasColumn("position_time_ms"));
}

TEST(RecordingReader, OpenSaysWhatIsWrongWithTheHeader) {
    struct Case {
        QByteArray bytes;
        QString error;
    };
    const std::vector<Case> files{
        {"", u"is empty"_s},
        {"\xEF\xBB\xBF", u"is empty"_s},
        {"\n", u"is empty"_s},
        {"\n" + HEADER, u"the header line is missing, the file begins with \"\""_s},
        {ROW,
         u"the header line is missing, the file begins with \"1000,121500000,12.3,4.5,90,-52.04,359.9,...\""_s},
        {QByteArray(HEADER).replace("azimuth_deg", "bearing") + '\n' + ROW,
         u"header column 3 is \"bearing\" instead of \"azimuth_deg\""_s},
        {QByteArray(HEADER).replace("quality,level_db", "level_db,quality"),
         u"header column 5 is \"level_db\" instead of \"quality\""_s},
        {QByteArray(HEADER).replace(",altitude_m", ""), u"header column 12 is missing: \"altitude_m\""_s},
        {HEADER + ",speed_kn", u"header column 13 is unknown: \"speed_kn\""_s},
        {HEADER + ',', u"header column 13 is unknown: \"\""_s},
        {HEADER + ",mode,speed_kn", u"header column 14 is unknown: \"speed_kn\""_s},
        {HEADER + ",emitter,mode", u"header column 14 is at the wrong place: \"mode\""_s},
        {HEADER + ",mode,mode", u"header column 14 is at the wrong place: \"mode\""_s},
        {QByteArray(HEADER).replace("time_ms", "TIME_MS"),
         u"header column 1 is \"TIME_MS\" instead of \"time_ms\""_s},
        {QByteArray(HEADER).replace("time_ms", QByteArray("time_ms\0", 8)),
         u"header column 1 is \"time_ms?\" instead of \"time_ms\""_s},
    };
    for (auto [bytes, error] : files) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        RecordingReader reader;
        EXPECT_FALSE(reader.Open(buffer));
        EXPECT_EQ(reader.GetErrorText(), u"recording: "_s + error);
        EXPECT_FALSE(reader.Next().has_value());
    }
}

TEST(RecordingReader, AFileWithoutLineEndsFailsAtItsHeader) {
    EndlessDevice device("", QByteArray(1 << 20, '\0'), std::numeric_limits<qint64>::max(), "");
    RecordingReader reader;
    EXPECT_FALSE(reader.Open(device));
    EXPECT_TRUE(reader.GetErrorText().contains(u"the header line is missing"_s));
}

TEST(RecordingReader, AFileThatCannotBeOpenedIsNamedWithTheReason) {
    RecordingReader reader;
    EXPECT_FALSE(reader.Open(u"/nowhere/%1.csv"_s));
    EXPECT_EQ(reader.GetErrorText(), u"/nowhere/%1.csv: cannot be opened: No such file or directory"_s);
    EXPECT_FALSE(reader.Next().has_value());
}

TEST(RecordingReader, ADirectoryIsNoRecording) {
    RecordingReader reader;
    EXPECT_FALSE(reader.Open(QDir::tempPath()));
    EXPECT_EQ(reader.GetErrorText(), QDir::tempPath() + u": is a directory"_s);
}

TEST(RecordingReader, ADeviceThatIsNotOpenIsRefused) {
    QBuffer buffer;
    RecordingReader reader;
    EXPECT_FALSE(reader.Open(buffer));
    EXPECT_EQ(reader.GetErrorText(), u"recording: is not open for reading"_s);
}

TEST(RecordingReader, WithoutOpenThereAreNoRows) {
    RecordingReader reader;
    EXPECT_FALSE(reader.Next().has_value());
    EXPECT_EQ(reader.GetErrorText(), QString());
}

TEST(RecordingReader, AReadErrorIsReportedAndHalfARowIsNotUsed) {
    // Cut within the altitude, where what is left would still read as a row.
    PieceDevice device(HEADER + '\n' + ROW + '\n' + ROW.chopped(2), 1000, true);
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(device));
    const Content content = ReadAll(reader);
    EXPECT_EQ(content.rows.size(), 1U);
    EXPECT_EQ(content.badLineCount, 0U);
    EXPECT_EQ(content.errorText, u"recording: cannot be read after line 2: the disk is gone"_s);
    EXPECT_FALSE(reader.Next().has_value());
}

TEST(RecordingReader, AReadErrorWithinTheHeaderFailsOpen) {
    PieceDevice device(HEADER, 10, true);
    RecordingReader reader;
    EXPECT_FALSE(reader.Open(device));
    EXPECT_EQ(reader.GetErrorText(), u"recording: cannot be read after line 0: the disk is gone"_s);
}

TEST(RecordingReader, AFileThatBecomesShorterWhileItIsReadIsAnError) {
    const QTemporaryDir directory;
    const QString name = directory.filePath(u"recording.csv"_s);
    QFile file(name);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(HEADER + '\n' + QByteArray(ROW + '\n').repeated(20000));
    file.close();
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(name));
    ASSERT_TRUE(file.resize(file.size() / 2));
    while (reader.Next()) {
    }
    EXPECT_EQ(reader.GetErrorText(), name + u": became shorter while it was read"_s);
    EXPECT_LT(reader.GetRowCount(), 20000U);
}

TEST(RecordingReader, ReadingEndsWhenItIsInterruptedAndGoesOnAfterwards) {
    QBuffer buffer;
    buffer.setData(HEADER + '\n' + QByteArray(ROW + '\n').repeated(20000));
    ASSERT_TRUE(buffer.open(QIODevice::ReadOnly));
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(buffer));
    reader.Interrupt();
    quint64 count = 0;
    while (reader.Next()) {
        ++count;
    }
    EXPECT_LT(count, 20000U) << "no more than what has been received";
    EXPECT_EQ(reader.GetErrorText(), QString());
    EXPECT_EQ(reader.GetBadLineCount(), 0U) << "the row that has been received in part waits";
    reader.Resume();
    while (reader.Next()) {
        ++count;
    }
    EXPECT_EQ(count, 20000U);
}

TEST(RecordingReader, OpensOneFileAfterAnother) {
    const QTemporaryDir directory;
    const QString name = WriteFile(directory, HEADER + '\n' + ROW + '\n' + RowWith(2, "360") + '\n');
    RecordingReader reader;
    EXPECT_FALSE(reader.Open(directory.filePath(u"other.csv"_s)));
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(reader.Open(name));
        const Content content = ReadAll(reader);
        EXPECT_EQ(content.rows.size(), 1U);
        EXPECT_EQ(content.badLineCount, 1U);
        EXPECT_EQ(content.badLineTexts, QStringList(u"line 3: azimuth_deg: out of range: \"360\""_s));
        EXPECT_EQ(content.errorText, QString());
        EXPECT_FALSE(reader.Next().has_value());
    }
}

TEST(RecordingReader, NothingOfOneRecordingReachesTheNext) {
    const QByteArray late = HEADER + '\n' + RowWith(0, "5000") + '\n';
    for (const QByteArray& rest : {RowWith(0, "6000") + '\n', QByteArray(10000, 'x')}) {
        PieceDevice former(late + rest, 1000000);
        QByteArray bytes = HEADER + '\n' + ROW + '\n';
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        RecordingReader reader;
        ASSERT_TRUE(reader.Open(former));
        ASSERT_TRUE(reader.Next().has_value());
        if (rest.startsWith('x')) { // ends within a line that is too long; the other is left before its end
            ASSERT_FALSE(reader.Next().has_value());
        }
        ASSERT_TRUE(reader.Open(buffer)) << reader.GetErrorText().toStdString();
        const Content content = ReadAll(reader);
        EXPECT_EQ(content.rows.size(), 1U);
        EXPECT_EQ(content.badLineCount, 0U);
    }
}

TEST(RecordingReader, ProgressIsTheShareOfTheBytesThatHaveBeenRead) {
    QByteArray bytes = HEADER + '\n' + ROW + '\n' + ROW + '\n';
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    RecordingReader reader;
    EXPECT_EQ(reader.GetProgress(), 0.0);
    ASSERT_TRUE(reader.Open(buffer));
    ASSERT_TRUE(reader.Next().has_value());
    const auto size = static_cast<double>(bytes.size());
    EXPECT_DOUBLE_EQ(reader.GetProgress(), (size - static_cast<double>(ROW.size()) - 1.0) / size);
    while (reader.Next()) {
    }
    EXPECT_EQ(reader.GetProgress(), 1.0);
}

TEST(RecordingReader, ProgressIsZeroWhereTheSizeIsNotKnown) {
    PieceDevice device(HEADER + '\n' + ROW + '\n', 10);
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(device));
    ASSERT_TRUE(reader.Next().has_value());
    EXPECT_EQ(reader.GetProgress(), 0.0);
}

TEST(RecordingReader, TheLocaleDoesNotChangeNumbers) {
    QLocale::setDefault(QLocale(QLocale::German));
    const std::string former = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8"); // where it is installed
    const Content content = ReadBytes(HEADER + '\n' + ROW);
    std::setlocale(LC_ALL, former.c_str());
    ASSERT_EQ(content.rows.size(), 1U);
    EXPECT_EQ(content.rows.front().azimuth, 12.3);
}
