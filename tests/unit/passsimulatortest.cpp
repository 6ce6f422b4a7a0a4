#include "zanserver/passsimulator.h"

#include "zancommon/recordingreader.h"
#include "zancommon/recordingwriter.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::RecordedBearing;
using KvZANCommon::RecordingReader;
using KvZANCommon::RecordingWriter;

namespace {

std::vector<RecordedBearing> Simulate(quint64 seed, quint64 rowCount = PassSimulator::DEFAULT_ROW_COUNT) {
    PassSimulator simulator(seed, rowCount);
    std::vector<RecordedBearing> rows;
    while (const std::optional<RecordedBearing> bearing = simulator.Next()) {
        rows.push_back(*bearing);
    }
    return rows;
}

QByteArray FileHash(quint64 seed) {
    const QTemporaryDir directory;
    const QString name = directory.filePath(u"simulated.csv"_s);
    RecordingWriter writer;
    EXPECT_TRUE(writer.Open(name));
    for (const RecordedBearing& row : Simulate(seed)) {
        EXPECT_TRUE(writer.Write(row)) << writer.GetErrorText().toStdString();
    }
    EXPECT_TRUE(writer.Commit());
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex();
}

double TrueBearing(const RecordedBearing& row) {
    return std::fmod(row.azimuth + row.heading.value_or(0.0), 360.0);
}

/// The signed angle from one direction to another.
double Difference(double from, double to) {
    return std::remainder(to - from, 360.0);
}

bool IsLost(const RecordedBearing& row) {
    return row.quality == 0.0;
}

double Mean(const std::vector<RecordedBearing>& rows, std::size_t begin, std::size_t end, auto member) {
    double sum = 0.0;
    int count = 0;
    for (std::size_t i = begin; i < end; ++i) {
        if (!IsLost(rows[i])) {
            sum += member(rows[i]);
            ++count;
        }
    }
    return sum / count;
}

} // namespace

// Another hash means that recordings made from a seed before are not made from it any more.
TEST(PassSimulator, ASeedGivesTheSameFileEverywhere) {
    EXPECT_EQ(FileHash(1), "7ef243676ed695419358ccf274112da5afbb86de4f8d67e0099480a68a344239");
    EXPECT_EQ(FileHash(2), "593802c3e6a298a14b7d92d6fa81c22d5ea3e7f46e9c3b27d1cb7e86fcf14c82");
}

TEST(PassSimulator, TheDefaultIsTenMinutesAtOneHertz) {
    const std::vector<RecordedBearing> rows = Simulate(1);
    ASSERT_EQ(rows.size(), 600U);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].timeMs - rows[i - 1].timeMs, 1000U);
    }
}

TEST(PassSimulator, GivesAsManyRowsAsAskedFor) {
    for (const quint64 rowCount : {0U, 1U, 5000U}) {
        EXPECT_EQ(Simulate(1, rowCount).size(), rowCount);
    }
}

TEST(PassSimulator, EveryRowIsOneThatTheReaderTakes) {
    const QTemporaryDir directory;
    const QString name = directory.filePath(u"simulated.csv"_s);
    for (quint64 seed = 0; seed < 20; ++seed) {
        RecordingWriter writer;
        ASSERT_TRUE(writer.Open(name));
        for (const RecordedBearing& row : Simulate(seed, 1500)) {
            ASSERT_TRUE(writer.Write(row)) << writer.GetErrorText().toStdString();
        }
        ASSERT_TRUE(writer.Commit());
        RecordingReader reader;
        ASSERT_TRUE(reader.Open(name));
        while (reader.Next()) {
        }
        EXPECT_EQ(reader.GetRowCount(), 1500U);
        EXPECT_EQ(reader.GetBadLineCount(), 0U);
    }
}

TEST(PassSimulator, OnlyTheSecondPassGoesOverhead) {
    for (quint64 seed = 0; seed < 20; ++seed) {
        const std::vector<RecordedBearing> rows = Simulate(seed);
        const auto overhead = [](const RecordedBearing& row) { return row.elevation.value_or(0.0) > 60.0; };
        const auto middle = rows.begin() + 300;
        EXPECT_EQ(std::count_if(rows.begin(), middle, overhead), 0);
        const auto count = std::count_if(middle, rows.end(), overhead);
        EXPECT_GE(count, 25); // 3000 m high at 100 m/s: some 34 seconds
        EXPECT_LE(count, 40);
        EXPECT_NEAR(std::max_element(middle, rows.end(),
                                     [](const auto& a, const auto& b) {
                                         return a.elevation.value_or(0.0) < b.elevation.value_or(0.0);
                                     })
                        ->elevation.value(),
                    84.3, 3.0);
    }
}

TEST(PassSimulator, BearingsAreThoseOfTheTrack) {
    // Worked by hand from the track: metres east and north of the station, 2985 m above it.
    struct Case {
        std::size_t row;
        double east;
        double north;
    };
    const std::vector<Case> places{{0, -12000, 8000}, {40, -8000, 8000}, {120, 0, 8000},
                                   {200, 8000, 8000}, {381, 9990, 300},  {440, 4090, 300},
                                   {540, -5910, 300}, {599, -11810, 300}};
    for (quint64 seed = 0; seed < 20; ++seed) {
        const std::vector<RecordedBearing> rows = Simulate(seed);
        for (const auto& [index, east, north] : places) {
            const RecordedBearing& row = rows[index];
            if (!IsLost(row)) {
                const double distance = std::sqrt(east * east + north * north);
                const double degrees = 180.0 / std::numbers::pi;
                EXPECT_NEAR(Difference(std::atan2(east, north) * degrees, TrueBearing(row)), 0.0, 4.0)
                    << index;
                EXPECT_NEAR(*row.elevation, std::atan2(2985.0, distance) * degrees, 3.6) << index;
            }
        }
    }
}

TEST(PassSimulator, WithoutHeadingTheAzimuthIsFromNorth) {
    const std::vector<RecordedBearing> rows = Simulate(1);
    int count = 0;
    for (std::size_t i = 1; i + 1 < rows.size(); ++i) {
        if (!rows[i].heading && !IsLost(rows[i])) {
            // The aircraft moves by less than a degree a second here.
            const std::size_t neighbour = rows[i - 1].heading ? i - 1 : i + 1;
            EXPECT_NEAR(Difference(TrueBearing(rows[neighbour]), TrueBearing(rows[i])), 0.0, 5.0);
            ++count;
        }
    }
    EXPECT_GT(count, 0);
}

TEST(PassSimulator, AttitudeAndPositionAreMissingForAShortWhile) {
    const std::vector<RecordedBearing> rows = Simulate(1);
    EXPECT_EQ(
        std::ranges::count_if(rows, [](const auto& row) { return !row.heading && !row.pitch && !row.roll; }),
        8);
    EXPECT_EQ(
        std::ranges::count_if(rows, [](const auto& row) { return !row.heading || !row.pitch || !row.roll; }),
        8);
    const auto position = [](const auto& row) { return row.latitude && row.longitude && row.altitude; };
    EXPECT_EQ(std::ranges::count_if(rows, position), 588);
}

TEST(PassSimulator, ThePlatformTurnsALittleThroughNorth) {
    for (quint64 seed = 0; seed < 20; ++seed) {
        double last = *Simulate(seed).front().heading;
        for (const RecordedBearing& row : Simulate(seed, 2000)) {
            if (row.heading) {
                EXPECT_LE(std::abs(Difference(355.0, *row.heading)), 12.0);
                EXPECT_LE(std::abs(Difference(last, *row.heading)), 1.0);
                last = *row.heading;
            }
        }
    }
}

TEST(PassSimulator, RollAndPitchExceedFiveDegreesForAStretchOnly) {
    for (quint64 seed = 0; seed < 20; ++seed) {
        const std::vector<RecordedBearing> rows = Simulate(seed);
        int rolled = 0;
        int pitched = 0;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const bool rolls = std::abs(rows[i].roll.value_or(0.0)) > 5.0;
            const bool pitches = std::abs(rows[i].pitch.value_or(0.0)) > 5.0;
            rolled += rolls;
            pitched += pitches;
            EXPECT_TRUE((!rolls && !pitches) || (i > 120 && i < 240)) << i;
            EXPECT_LT(std::abs(rows[i].roll.value_or(0.0)), 10.0);
            EXPECT_LT(std::abs(rows[i].pitch.value_or(0.0)), 10.0);
        }
        EXPECT_GT(rolled, 10);
        EXPECT_GT(pitched, 3);
    }
}

TEST(PassSimulator, QualityFallsWithRangeAndLowElevation) {
    const std::vector<RecordedBearing> rows = Simulate(1);
    const auto quality = [](const RecordedBearing& row) { return row.quality; };
    const double distant = Mean(rows, 0, 20, quality);
    const double abeam = Mean(rows, 110, 130, quality);
    const double overhead = Mean(rows, 471, 491, quality);
    EXPECT_LT(distant, abeam - 15.0);
    EXPECT_LT(abeam, overhead - 10.0);
    EXPECT_GT(distant, 10.0);
}

TEST(PassSimulator, LevelIsThatOfFreeSpacePropagation) {
    const std::vector<RecordedBearing> rows = Simulate(1);
    const auto level = [](const RecordedBearing& row) { return *row.level; };
    const double abeam = Mean(rows, 115, 126, level);    // at 8.5 km
    const double overhead = Mean(rows, 479, 484, level); // at 3.0 km
    EXPECT_NEAR(abeam, 40.0 - 93.2, 1.0);
    EXPECT_NEAR(overhead - abeam, 20.0 * std::log10(8.55 / 3.0), 1.0);
}

TEST(PassSimulator, TheSignalIsLostNowAndThen) {
    for (quint64 seed = 0; seed < 20; ++seed) {
        const std::vector<RecordedBearing> rows = Simulate(seed);
        const auto lost = std::ranges::count_if(rows, IsLost);
        EXPECT_GE(lost, 8);
        EXPECT_LE(lost, 40);
        for (const RecordedBearing& row : rows) {
            EXPECT_EQ(IsLost(row), !row.elevation.has_value());
            EXPECT_EQ(IsLost(row), *row.level < -90.0);
        }
    }
}

TEST(PassSimulator, AnotherLapFollowsTheFirst) {
    const std::vector<RecordedBearing> rows = Simulate(1, 1444);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i].elevation && rows[i - 1].elevation && *rows[i].elevation < 60.0) {
            EXPECT_NEAR(*rows[i].elevation, *rows[i - 1].elevation, 8.0) << i;
        }
    }
    EXPECT_GT(rows[481 + 722].elevation.value_or(90.0), 60.0);
}
