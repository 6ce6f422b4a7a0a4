#include "zancommon/recordingwriter.h"

#include "support/fulldisk.h"
#include "support/printing.h"
#include "support/recordings.h"
#include "zancommon/recordingreader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cmath>
#include <limits>
#include <memory>
#include <span>
#include <vector>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

const RecordedBearing FULL{1527695886000, 1090000000.0, 72.7, 2.4,     90.0,    -52.04,
                           359.9,         -1.5,         2.5,  52.4603, 5.52722, -4.0};
const RecordedBearing SPARSE{.timeMs = 1527695886000,
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
                             .altitude = {}};

QByteArray Contents(const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

class RecordingWriterTest : public testing::Test {
protected:
    /// The row as it is in the file.
    QByteArray Written(const RecordedBearing& bearing) {
        RecordingWriter writer;
        EXPECT_TRUE(writer.Open(m_name) && writer.Write(bearing) && writer.Commit())
            << writer.GetErrorText().toStdString();
        QByteArray bytes = Contents(m_name);
        EXPECT_TRUE(bytes.startsWith(RECORDING_HEADER));
        return bytes.mid(RECORDING_HEADER.size());
    }
    [[nodiscard]] QStringList Files() const {
        return QDir(m_directory.path()).entryList(QDir::Files | QDir::Hidden | QDir::System);
    }

    QTemporaryDir m_directory;
    QString m_name = m_directory.filePath(u"recording.csv"_s);
};

} // namespace

TEST_F(RecordingWriterTest, WritesEachColumnWithItsDecimals) {
    EXPECT_EQ(Written(FULL),
              "1527695886000,1090000000,72.7,2.4,90,-52.04,359.9,-1.5,2.5,52.4603000,5.5272200,-4.0\n");
}

TEST_F(RecordingWriterTest, AMissingValueIsAnEmptyField) {
    EXPECT_EQ(Written(SPARSE), "1527695886000,462637500,318.0,,14,,,,,,,\n");
}

TEST_F(RecordingWriterTest, ARecordingWithoutRowsIsAHeader) {
    RecordingWriter writer;
    ASSERT_TRUE(writer.Open(m_name));
    ASSERT_TRUE(writer.Commit());
    EXPECT_EQ(Contents(m_name), RECORDING_HEADER);
}

TEST_F(RecordingWriterTest, FurtherColumnsFollowWhereTheyAreAskedFor) {
    RecordedBearing bearing = SPARSE;
    bearing.mode = 1;
    bearing.emitter = 2;
    bearing.positionTimeMs = 3;
    RecordingWriter writer;
    ASSERT_TRUE(writer.Open(m_name, std::span(KvZANCommon::FURTHER_RECORDING_COLUMNS).first(2)));
    ASSERT_TRUE(writer.Write(bearing) && writer.Commit());
    EXPECT_EQ(Contents(m_name), RECORDING_HEADER.chopped(1) + ",mode,emitter\n" +
                                    "1527695886000,462637500,318.0,,14,,,,,,,,1,2\n");
    EXPECT_EQ(Written(bearing), "1527695886000,462637500,318.0,,14,,,,,,,\n") << "only there";
}

TEST_F(RecordingWriterTest, AnAngleThatRoundsUpToTheFullCircleIsNorth) {
    RecordedBearing bearing = SPARSE;
    bearing.azimuth = 359.96;
    bearing.heading = 359.99;
    EXPECT_EQ(Written(bearing), "1527695886000,462637500,0.0,,14,,0.0,,,,,\n");
}

TEST_F(RecordingWriterTest, WhatRoundsToZeroHasNoSign) {
    RecordedBearing bearing = SPARSE;
    bearing.azimuth = -0.0;
    bearing.elevation = -0.04;
    bearing.level = -0.004;
    bearing.latitude = -0.00000001;
    bearing.altitude = -0.06;
    EXPECT_EQ(Written(bearing), "1527695886000,462637500,0.0,0.0,14,0.00,,,,0.0000000,,-0.1\n");
}

TEST_F(RecordingWriterTest, AFrequencyIsWrittenInFull) {
    for (const double frequency : {121500000.0, 8333.3333333333339, 0.1, 1e-300, 3e12, 5e-324}) {
        RecordedBearing bearing = SPARSE;
        bearing.frequency = frequency;
        ASSERT_FALSE(Written(bearing).contains('e'));
        RecordingReader reader;
        ASSERT_TRUE(reader.Open(m_name));
        const std::optional<RecordedBearing> back = reader.Next();
        ASSERT_TRUE(back.has_value()) << frequency;
        EXPECT_EQ(back->frequency, frequency);
    }
}

TEST_F(RecordingWriterTest, WhatIsReadBackIsTheRowAtThePrecisionOfItsColumns) {
    // Values that do not end at the decimals of their columns, the limits among them.
    std::vector<RecordedBearing> rows{FULL, SPARSE};
    for (const RecordingColumn& column : RECORDING_COLUMNS) {
        for (const double part : {0.0, 0.123456789, 0.3333333333, 0.5, 0.87654321, 1.0}) {
            const double value = column.minimum + (column.maximum - column.minimum) * part;
            RecordedBearing bearing = FULL;
            if (column.Holds(value) && column.required) {
                bearing.*column.required = value;
            } else if (column.Holds(value) && column.optional) {
                bearing.*column.optional = value;
            }
            rows.push_back(bearing);
        }
    }
    RecordingWriter writer;
    ASSERT_TRUE(writer.Open(m_name));
    for (const RecordedBearing& row : rows) {
        ASSERT_TRUE(writer.Write(row)) << writer.GetErrorText().toStdString();
    }
    ASSERT_TRUE(writer.Commit());

    const QString copyName = m_directory.filePath(u"copy.csv"_s);
    RecordingWriter copy;
    ASSERT_TRUE(copy.Open(copyName));
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(m_name));
    for (const RecordedBearing& row : rows) {
        const std::optional<RecordedBearing> back = reader.Next();
        ASSERT_TRUE(back.has_value());
        EXPECT_EQ(back->timeMs, row.timeMs);
        for (const RecordingColumn& column : RECORDING_COLUMNS) {
            const double step =
                column.decimals == RecordingColumn::AS_NEEDED ? 0.0 : std::pow(10.0, -column.decimals);
            if (column.required) {
                EXPECT_NEAR((*back).*column.required, row.*column.required, step * 0.501) << column.name;
            } else if (column.optional) {
                ASSERT_EQ(((*back).*column.optional).has_value(), (row.*column.optional).has_value());
                EXPECT_NEAR(((*back).*column.optional).value_or(0.0), (row.*column.optional).value_or(0.0),
                            step * 0.501)
                    << column.name;
            }
        }
        ASSERT_TRUE(copy.Write(*back));
    }
    EXPECT_EQ(reader.GetBadLineCount(), 0U);
    ASSERT_TRUE(copy.Commit());
    EXPECT_EQ(Contents(copyName), Contents(m_name));
}

TEST_F(RecordingWriterTest, RefusesARowThatTheReaderWouldNotTake) {
    const auto changed = [](auto change) {
        RecordedBearing bearing = FULL;
        change(bearing);
        return bearing;
    };
    struct Case {
        RecordedBearing bearing;
        QString error;
    };
    const std::vector<Case> rows{
        {changed([](auto& b) { b.azimuth = 360.0; }), u"azimuth_deg: out of range: 360"_s},
        {changed([](auto& b) { b.azimuth = NOT_A_NUMBER; }), u"azimuth_deg: out of range: nan"_s},
        {changed([](auto& b) { b.frequency = 0.0; }), u"frequency_hz: out of range: 0"_s},
        {changed([](auto& b) { b.altitude = INFINITE; }), u"altitude_m: out of range: inf"_s},
        {changed([](auto& b) { b.quality = -200.0; }), u"quality: out of range: -200"_s},
        {changed([](auto& b) { b.level = 400.0; }), u"level_db: out of range: 400"_s},
        {changed([](auto& b) { b.timeMs = std::numeric_limits<quint64>::max(); }),
         u"time_ms: out of range: 1.84467e+19"_s},
        {changed([](auto& b) { b.timeMs -= 10001; }), u"time runs backwards: 1527695875999"_s},
    };
    const QByteArray row = Written(FULL);
    RecordingWriter writer;
    ASSERT_TRUE(writer.Open(m_name));
    ASSERT_TRUE(writer.Write(FULL));
    for (const auto& [bearing, error] : rows) {
        EXPECT_FALSE(writer.Write(bearing));
        EXPECT_EQ(writer.GetErrorText(), m_name + u": "_s + error);
    }
    EXPECT_TRUE(writer.Write(FULL));
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(Contents(m_name), RECORDING_HEADER + row + row);
}

TEST_F(RecordingWriterTest, RowMayBeAsEarlyAsTheReaderTakesIt) {
    RecordedBearing early = FULL;
    early.timeMs -= 10000;
    RecordingWriter writer;
    ASSERT_TRUE(writer.Open(m_name));
    for (const RecordedBearing& bearing : {FULL, early, FULL}) {
        EXPECT_TRUE(writer.Write(bearing)) << writer.GetErrorText().toStdString();
    }
}

TEST_F(RecordingWriterTest, TheFileAppearsWithCommit) {
    RecordingWriter writer;
    ASSERT_TRUE(writer.Open(m_name));
    ASSERT_TRUE(writer.Write(FULL));
    EXPECT_FALSE(QFileInfo::exists(m_name));
    ASSERT_TRUE(writer.Commit());
    EXPECT_EQ(Files(), QStringList(u"recording.csv"_s));
}

TEST_F(RecordingWriterTest, WithoutCommitTheFormerFileStays) {
    const QByteArray row = Written(FULL);
    {
        RecordingWriter writer;
        ASSERT_TRUE(writer.Open(m_name));
        ASSERT_TRUE(writer.Write(SPARSE));
    }
    EXPECT_EQ(Contents(m_name), RECORDING_HEADER + row);
    EXPECT_EQ(Files(), QStringList(u"recording.csv"_s));
}

TEST_F(RecordingWriterTest, OpeningAnotherFileGivesUpTheOneBegun) {
    const QString other = m_directory.filePath(u"other.csv"_s);
    RecordingWriter writer;
    ASSERT_TRUE(writer.Open(m_name));
    ASSERT_TRUE(writer.Write(FULL));
    ASSERT_TRUE(writer.Open(other));
    ASSERT_TRUE(writer.Commit());
    EXPECT_EQ(Files(), QStringList(u"other.csv"_s));
    EXPECT_EQ(Contents(other), RECORDING_HEADER);
}

TEST_F(RecordingWriterTest, EachRecordingBeginsAgain) {
    RecordedBearing early = FULL;
    early.timeMs = 1000;
    RecordingWriter writer;
    for (const RecordedBearing& bearing : {FULL, early}) {
        ASSERT_TRUE(writer.Open(m_name));
        ASSERT_TRUE(writer.Write(bearing)) << writer.GetErrorText().toStdString();
        ASSERT_TRUE(writer.Commit());
        EXPECT_EQ(Contents(m_name).count('\n'), 2);
    }
}

TEST_F(RecordingWriterTest, WithoutARecordingBegunNothingIsWritten) {
    RecordingWriter writer;
    const auto isRefused = [&] {
        return !writer.Write(FULL) && writer.GetErrorText().endsWith(u": is not open"_s) &&
               !writer.Commit() && writer.GetErrorText().endsWith(u": is not open"_s);
    };
    EXPECT_TRUE(isRefused());
    ASSERT_TRUE(writer.Open(m_name) && writer.Commit());
    EXPECT_TRUE(isRefused());
    ASSERT_TRUE(writer.Open(m_name));
    EXPECT_FALSE(writer.Open(m_directory.path()));
    EXPECT_TRUE(isRefused());
}

TEST_F(RecordingWriterTest, AFullDiskIsReportedAndLeavesTheFormerFile) {
    const QByteArray row = Written(FULL);
    for (const int rowCount : {100, 10000}) { // fails when the buffer is written out at last, and before
        auto disk = std::make_unique<FullDisk>(4096);
        RecordingWriter writer;
        ASSERT_TRUE(writer.Open(m_name));
        int written = 0;
        while (written < rowCount && writer.Write(FULL)) {
            ++written;
        }
        const bool committed = writer.Commit();
        disk.reset();
        EXPECT_EQ(written == rowCount, rowCount == 100);
        EXPECT_FALSE(committed);
        EXPECT_TRUE(writer.GetErrorText().startsWith(m_name + u": cannot be written: "_s));
        EXPECT_TRUE(writer.GetErrorText().contains(u"too large"_s)) << writer.GetErrorText().toStdString();
        EXPECT_EQ(Contents(m_name), RECORDING_HEADER + row);
        EXPECT_EQ(Files(), QStringList(u"recording.csv"_s));
    }
}

TEST_F(RecordingWriterTest, ANameThatCannotBeWrittenIsRefusedWithTheReason) {
    RecordingWriter writer;
    const QString name = m_directory.filePath(u"missing/%1.csv"_s);
    EXPECT_FALSE(writer.Open(name));
    EXPECT_EQ(writer.GetErrorText(), name + u": cannot be written: No such file or directory"_s);
    EXPECT_FALSE(writer.Write(FULL));
    EXPECT_FALSE(writer.Commit());
    EXPECT_EQ(writer.GetErrorText(), name + u": is not open"_s);
}

TEST_F(RecordingWriterTest, DirectoriesAndDevicesAreNotReplaced) {
    const QString pipe = m_directory.filePath(u"pipe"_s);
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& name : {m_directory.path(), pipe}) {
        RecordingWriter writer;
        EXPECT_FALSE(writer.Open(name));
        EXPECT_EQ(writer.GetErrorText(), name + u": is not a regular file"_s);
    }
    EXPECT_FALSE(QFileInfo(pipe).isFile());
}
