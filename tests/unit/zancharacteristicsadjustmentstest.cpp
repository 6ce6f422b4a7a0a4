#include "support/devicetree.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "support/treevalues.h"
#include "zancommon/zancharacteristics.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double HIGHEST_DOUBLE = std::numeric_limits<double>::max();
constexpr double ANY = ZANCharacteristics::fFREQUENCY_ANY;
constexpr int NO_ANTENNA = -2;

constexpr auto ADJUST_OTHER = static_cast<ZANCharacteristics::EAdjustMode>(2);
constexpr auto ADJUST_NEGATIVE = static_cast<ZANCharacteristics::EAdjustMode>(-1);

EOperationMode Mode(int mode) {
    return static_cast<EOperationMode>(mode);
}

AntennaData Antenna(int handle, const QString& converter, double low, double high) {
    AntennaData antenna = MakeAntenna(u"PX"_s + QString::number(handle), converter, low, high);
    antenna.handle = handle;
    return antenna;
}

AntennaData Polarised(AntennaData antenna, EZANPolarisation polarisation) {
    antenna.polarizationMode = polarisation;
    return antenna;
}

// The usual device: HF (1) and VUHF (2), 1 Hz apart.
const AntennaData& Hf() {
    static const AntennaData antenna = Antenna(1, u"RCV01"_s, 300e3, 30e6);
    return antenna;
}
const AntennaData& Vuhf() {
    static const AntennaData antenna = Antenna(2, u"RCV03"_s, 30000001.0, 1300e6);
    return antenna;
}

int HandleOf(const AntennaData* antenna) {
    return antenna ? antenna->handle : NO_ANTENNA;
}

void ExpectSame(double value, double expected) {
    if (std::isnan(expected)) {
        EXPECT_TRUE(std::isnan(value)) << value;
    } else {
        EXPECT_EQ(value, expected) << QByteArray::number(value, 'f', 3).toStdString();
    }
}

class ZANCharacteristicsAdjustmentsTest : public testing::Test {
protected:
    ZANCharacteristics& Connect(const std::vector<AntennaData>& antennas) {
        DeviceTree::SetAntennas(antennas);
        return DeviceTree::Connect();
    }

    TraceLines m_traces; // keeps the output of the tests readable
    DeviceTree m_device;
};

// A frequency

struct FrequencyRow {
    double frequency;
    double adjusted;
    int antenna;
};

TEST_F(ZANCharacteristicsAdjustmentsTest, AFrequencyIsClampedIntoTheLimitsOfItsModeAndServedThere) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    const std::vector<FrequencyRow> rows{
        {299999.0, 300e3, 1},
        {299999.5, 300e3, 1},
        {300e3, 300e3, 1},
        {300000.5, 300000.5, 1},
        {300001.0, 300001.0, 1},
        {29999999.0, 29999999.0, 1},
        {30e6, 30e6, 1},
        {30000000.5, 30000000.5, NO_ANTENNA},
        {30000001.0, 30000001.0, 2},
        {1299999999.0, 1299999999.0, 2},
        {1299999999.5, 1299999999.5, 2},
        {1300e6, 1300e6, 2},
        {1300000000.5, 1300e6, 2},
        {1300000001.0, 1300e6, 2},
        {0.0, 300e3, 1},
        {-1.0, 300e3, 1},
        {ANY, 300e3, 1},
        {-INFINITE, 300e3, 1},
        {INFINITE, 1300e6, 2},
        {HIGHEST_DOUBLE, 1300e6, 2},
        {NOT_A_NUMBER, NOT_A_NUMBER, NO_ANTENNA},
    };
    for (const int mode : {0, 1, 3, 4, 6, 9}) {
        for (const FrequencyRow& row : rows) {
            SCOPED_TRACE("mode " + std::to_string(mode) + ", " + std::to_string(row.frequency));
            double frequency = row.frequency;
            double bandwidth = 1e6;
            EXPECT_EQ(HandleOf(characteristics.ToNextValidFrequency(Mode(mode), frequency, bandwidth)),
                      row.antenna);
            ExpectSame(frequency, row.adjusted);
            EXPECT_EQ(bandwidth, 1e6);
        }
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, Mode5ClampsAnyFrequencyAndServesNone) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    for (const int mode : {5, 7, 8, 10, 14, 15, -1, -2, INT_MAX, INT_MIN}) {
        for (const double wanted : {1.0, 25e6, 24999999.5, 100e6, INFINITE, -INFINITE, ANY}) {
            double frequency = wanted;
            double bandwidth = 1e6;
            EXPECT_EQ(characteristics.ToNextValidFrequency(Mode(mode), frequency, bandwidth), nullptr);
            EXPECT_EQ(frequency, 25e6) << "mode " << mode << ", " << wanted;
        }
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, Mode2PushesTheWholeBandIntoTheRangeOfTheAntenna) {
    struct Row {
        double frequency;
        double bandwidth;
        double adjusted;
    };
    const std::vector<Row> rows{
        {20.1e6, 1e6, 20.5e6},
        {1299.8e6, 1e6, 1299.5e6},
        {20e6, 1e6, 20.5e6},
        {1.0, 1e6, 20.5e6},
        {1300e6, 1e6, 1299.5e6},
        {2000e6, 1e6, 1299.5e6},
        {20499999.0, 1e6, 20.5e6},
        {20499999.5, 1e6, 20.5e6},
        {20500000.0, 1e6, 20500000.0},
        {20500000.5, 1e6, 20500000.5},
        {20500001.0, 1e6, 20500001.0},
        {1299499999.0, 1e6, 1299499999.0},
        {1299499999.5, 1e6, 1299499999.5},
        {1299500000.0, 1e6, 1299500000.0},
        {1299500000.5, 1e6, 1299500000.0},
        {1299500001.0, 1e6, 1299500000.0},
        {600e6, 1e6, 600e6},
        {20e6, 0.0, 20e6},
        {1300e6, 0.0, 1300e6},
        {600e6, 1280e6, 660e6}, // as wide as the range
        {700e6, 1280e6, 660e6},
        {600e6, 2000e6, 1020e6}, // wider: begins where the range begins
        {1300e6, 2000e6, 300e6}, // or ends where the range ends, when it began above its start
        {20e6, 2000e6, 1020e6},
        {600e6, -1e6, 600e6},
        {600e6, INFINITE, INFINITE},
        {600e6, NOT_A_NUMBER, 600e6},
    };
    ZANCharacteristics& characteristics = Connect({Antenna(3, u"RCV03"_s, 20e6, 1300e6)});
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.frequency) + ", " + std::to_string(row.bandwidth));
        double frequency = row.frequency;
        double bandwidth = row.bandwidth;
        EXPECT_EQ(HandleOf(characteristics.ToNextValidFrequency(OPMODE_WIDEBAND_FFM, frequency, bandwidth)),
                  3);
        ExpectSame(frequency, row.adjusted);
        ExpectSame(bandwidth, row.bandwidth);
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, Mode2MovesTheBandOffTheBorderOfTwoAntennasToTheOneOfTheFrequency) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    double bandwidth = 1e6;
    double frequency = 29.9e6;
    EXPECT_EQ(HandleOf(characteristics.ToNextValidFrequency(OPMODE_WIDEBAND_FFM, frequency, bandwidth)), 1);
    EXPECT_EQ(frequency, 29.5e6);
    frequency = 30.1e6;
    EXPECT_EQ(HandleOf(characteristics.ToNextValidFrequency(OPMODE_WIDEBAND_FFM, frequency, bandwidth)), 2);
    EXPECT_EQ(frequency, 30500001.0);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, Mode2WithoutAntennaLeavesTheFrequencyAsClamped) {
    ZANCharacteristics& characteristics = Connect({Hf(), Antenna(2, u"RCV03"_s, 100e6, 1300e6)});
    double bandwidth = 1e6;
    double frequency = 50e6;
    EXPECT_EQ(characteristics.ToNextValidFrequency(OPMODE_WIDEBAND_FFM, frequency, bandwidth), nullptr);
    EXPECT_EQ(frequency, 50e6);
    ZANCharacteristics& empty = Connect({});
    EXPECT_EQ(empty.ToNextValidFrequency(OPMODE_WIDEBAND_FFM, frequency, bandwidth), nullptr);
    EXPECT_EQ(frequency, 25e6);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AFrequencyIsClampedByItsOwnMode) {
    DeviceTree::SetType(u"ZANMOSS"_s); // serves the modes 1, 3 and 4
    ZANCharacteristics& characteristics = Connect({Antenna(1, u"RCV02"_s, 300e3, 30e6)});
    double bandwidth = 0.0;
    double frequency = 10e6;
    EXPECT_EQ(HandleOf(characteristics.ToNextValidFrequency(OPMODE_FFM, frequency, bandwidth)), 1);
    EXPECT_EQ(frequency, 10e6);
    EXPECT_EQ(HandleOf(characteristics.ToNextValidFrequency(OPMODE_TDMA, frequency, bandwidth)), 1);
    EXPECT_EQ(frequency, 25e6);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, WhereMinimumExceedsMaximumTheMaximumCounts) {
    DeviceTree::SetType(u"ZANFERN"_s);
    ZANCharacteristics& characteristics = Connect({}); // 450 MHz and 100 MHz
    double bandwidth = 0.0;
    double frequency = 200e6;
    EXPECT_EQ(characteristics.ToNextValidFrequency(OPMODE_FFM, frequency, bandwidth), nullptr);
    EXPECT_EQ(frequency, 100e6);
}

// A frequency range

struct RangeRow {
    const char* name;
    std::vector<AntennaData> antennas;
    EOperationMode mode;
    double start;
    double stop;
    double realtimeBandwidth;
    ZANCharacteristics::EAdjustMode adjustMode;
    int antenna;
    double adjustedStart;
    double adjustedStop;
};

void ExpectAdjusted(ZANCharacteristics& characteristics, const RangeRow& row) {
    SCOPED_TRACE(row.name);
    double start = row.start;
    double stop = row.stop;
    double realtimeBandwidth = row.realtimeBandwidth;
    double unused = 123.0;
    EXPECT_EQ(HandleOf(characteristics.ToNextValidFrequencyRange(row.mode, start, stop, realtimeBandwidth,
                                                                 unused, row.adjustMode)),
              row.antenna);
    ExpectSame(start, row.adjustedStart);
    ExpectSame(stop, row.adjustedStop);
    ExpectSame(realtimeBandwidth, row.realtimeBandwidth);
    EXPECT_EQ(unused, 123.0);
}

constexpr auto DOWN = ZANCharacteristics::ADJUST_DOWN;
constexpr auto UP = ZANCharacteristics::ADJUST_UP;

TEST_F(ZANCharacteristicsAdjustmentsTest, ARangeIsMovedAsAWholeToWhereItIsServed) {
    const std::vector<AntennaData> usual{Hf(), Vuhf()};
    const std::vector<AntennaData> hf{Hf()};
    // Two vertical antennas side by side, and a horizontal one over both.
    const std::vector<AntennaData> bridged{
        Polarised(Antenna(1, u"RCV03"_s, 20e6, 30e6), POLARISATION_VERTICAL),
        Polarised(Antenna(2, u"RCV03"_s, 30000001.0, 40e6), POLARISATION_VERTICAL),
        Polarised(Antenna(3, u"RCV03"_s, 20e6, 40e6), POLARISATION_HORIZONTAL)};
    const std::vector<RangeRow> rows{
        {"inside stays", usual, OPMODE_SCAN, 1e6, 2e6, 0.0, DOWN, 1, 1e6, 2e6},
        {"single frequency", usual, OPMODE_SCAN, 1e6, 1e6, 0.0, DOWN, 1, 1e6, 1e6},
        {"straddling, down", usual, OPMODE_SCAN, 25e6, 35e6, 0.0, DOWN, 1, 20e6, 30e6},
        {"straddling, up", usual, OPMODE_SCAN, 25e6, 35e6, 0.0, UP, 1, 30000001.0, 40000001.0},
        {"straddling, other", usual, OPMODE_SCAN, 25e6, 35e6, 0.0, ADJUST_OTHER, NO_ANTENNA, 25e6, 35e6},
        {"straddling, -1", usual, OPMODE_SCAN, 25e6, 35e6, 0.0, ADJUST_NEGATIVE, NO_ANTENNA, 25e6, 35e6},
        {"straddling, other, but bridged", bridged, OPMODE_SCAN, 25e6, 35e6, 0.0, ADJUST_OTHER, 1, 25e6,
         35e6},
        {"straddling, down, bridged", bridged, OPMODE_SCAN, 25e6, 35e6, 0.0, DOWN, 1, 20e6, 30e6},
        {"straddling, up, bridged", bridged, OPMODE_SCAN, 25e6, 32e6, 0.0, UP, 1, 30000001.0, 37000001.0},
        {"too wide for the lower antenna", usual, OPMODE_SCAN, 1e6, 61e6, 0.0, DOWN, NO_ANTENNA, 1e6, 61e6},
        {"wide, but up", usual, OPMODE_SCAN, 1e6, 61e6, 0.0, UP, 1, 30000001.0, 90000001.0},
        {"ends on the border", usual, OPMODE_SCAN, 25e6, 30e6, 0.0, UP, 1, 25e6, 30e6},
        {"ends in the gap", usual, OPMODE_SCAN, 25e6, 30000000.5, 0.0, UP, NO_ANTENNA, 25e6, 30000000.5},
        {"ends 1 Hz behind the border, up", usual, OPMODE_SCAN, 25e6, 30000001.0, 0.0, UP, 1, 30000001.0,
         35000002.0},
        {"ends 1 Hz behind the border, down", usual, OPMODE_SCAN, 25e6, 30000001.0, 0.0, DOWN, 1, 24999999.0,
         30e6},
        {"starts in the gap", usual, OPMODE_SCAN, 30000000.5, 35e6, 0.0, DOWN, NO_ANTENNA, 30000000.5, 35e6},
        {"below by 100 kHz", usual, OPMODE_SCAN, 200e3, 500e3, 0.0, DOWN, 1, 300e3, 600e3},
        {"below by 1 Hz", usual, OPMODE_SCAN, 299999.0, 400e3, 0.0, DOWN, 1, 300e3, 400001.0},
        {"below by half a hertz", usual, OPMODE_SCAN, 299999.5, 400e3, 0.0, DOWN, 1, 300e3, 400000.5},
        {"on the lowest frequency", usual, OPMODE_SCAN, 300e3, 400e3, 0.0, DOWN, 1, 300e3, 400e3},
        {"above by 1 Hz", usual, OPMODE_SCAN, 1200e6, 1300000001.0, 0.0, DOWN, 2, 1199999999.0, 1300e6},
        {"above by half a hertz", usual, OPMODE_SCAN, 1200e6, 1300000000.5, 0.0, DOWN, 2, 1199999999.5,
         1300e6},
        {"on the highest frequency", usual, OPMODE_SCAN, 1200e6, 1300e6, 0.0, DOWN, 2, 1200e6, 1300e6},
        {"far above", usual, OPMODE_SCAN, 5000e6, 5100e6, 0.0, DOWN, 2, 1200e6, 1300e6},
        {"clamped onto the border, up", usual, OPMODE_SCAN, 0.0, 29.9e6, 0.0, UP, 1, 30000001.0, 59900001.0},
        {"clamped onto the border, down", usual, OPMODE_SCAN, 0.0, 29.9e6, 0.0, DOWN, NO_ANTENNA, 0.0,
         29.9e6},
        {"wider than all", usual, OPMODE_SCAN, 100e3, 2000e6, 0.0, DOWN, NO_ANTENNA, 100e3, 2000e6},
        {"realtime bandwidth of a sample mode", hf, OPMODE_SCAN, 200e3, 500e3, 1e6, DOWN, 1, 300e3, 600e3},
        {"realtime bandwidth of none", hf, OPMODE_SCAN, 200e3, 500e3, 1.5e6, DOWN, NO_ANTENNA, 200e3, 500e3},
        {"realtime bandwidth below 1 Hz", hf, OPMODE_SCAN, 200e3, 500e3, 0.5, DOWN, 1, 300e3, 600e3},
        {"realtime bandwidth 1 Hz", hf, OPMODE_SCAN, 200e3, 500e3, 1.0, DOWN, NO_ANTENNA, 200e3, 500e3},
        {"realtime bandwidth not a number", hf, OPMODE_SCAN, 200e3, 500e3, NOT_A_NUMBER, DOWN, NO_ANTENNA,
         200e3, 500e3},
        {"mode with limits of 25 MHz", hf, OPMODE_5, 20e6, 25e6, 0.0, DOWN, 1, 25e6, 30e6},
        {"the same above", hf, OPMODE_5, 20e6, 30e6, 0.0, DOWN, 1, 15e6, 25e6},
        {"no antenna", {}, OPMODE_SCAN, 1e6, 2e6, 0.0, DOWN, NO_ANTENNA, 1e6, 2e6},
        // A range given the wrong way round is served by an antenna that does not hold its start.
        {"reversed", hf, OPMODE_SCAN, 100e6, 40e6, 0.0, DOWN, NO_ANTENNA, 90e6, 30e6},
        {"start not a number", usual, OPMODE_SCAN, NOT_A_NUMBER, 2e6, 0.0, DOWN, NO_ANTENNA, NOT_A_NUMBER,
         2e6},
        {"stop not a number", usual, OPMODE_SCAN, 1e6, NOT_A_NUMBER, 0.0, DOWN, NO_ANTENNA, 1e6,
         NOT_A_NUMBER},
        {"start any", usual, OPMODE_SCAN, ANY, 2e6, 0.0, DOWN, NO_ANTENNA, ANY, 2e6},
    };
    for (const RangeRow& row : rows) {
        ExpectAdjusted(Connect(row.antennas), row);
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, ARangeOverTheBorderOfTwoAntennasEndsOrBeginsAtTheBorder) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    const std::vector<RangeRow> rows{
        {"down", {}, OPMODE_FFM, 25e6, 35e6, 1e6, DOWN, 1, 20e6, 30e6},
        {"up", {}, OPMODE_FFM, 25e6, 35e6, 2e6, UP, 1, 30000001.0, 40000001.0},
        {"down, but without sample mode there",
         {},
         OPMODE_FFM,
         25e6,
         35e6,
         2e6,
         DOWN,
         NO_ANTENNA,
         25e6,
         35e6},
        {"up, but without sample mode there", {}, OPMODE_FFM, 25e6, 35e6, 1e6, UP, NO_ANTENNA, 25e6, 35e6},
    };
    for (const RangeRow& row : rows) {
        ExpectAdjusted(characteristics, row);
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, ARangeThatNoSampleModeFitsKeepsItsFrequencies) {
    DeviceTree::SetType(u"ZANMOSS"_s); // no wideband FFM
    ZANCharacteristics& characteristics =
        Connect({Antenna(1, u"RCV02"_s, 300e3, 30e6), Antenna(2, u"RCV04"_s, 30000001.0, 1300e6)});
    const std::vector<RangeRow> rows{
        {"served", {}, OPMODE_SCAN, 25e6, 35e6, 0.0, DOWN, 1, 20e6, 30e6},
        {"not served", {}, OPMODE_WIDEBAND_FFM, 25e6, 35e6, 0.0, DOWN, NO_ANTENNA, 25e6, 35e6},
        {"nor clamped", {}, OPMODE_WIDEBAND_FFM, 1e6, 2e6, 0.0, DOWN, NO_ANTENNA, 1e6, 2e6},
    };
    for (const RangeRow& row : rows) {
        ExpectAdjusted(characteristics, row);
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, BothLimitsAreTestedOnTheRangeAsGivenAndTheUpperOneOverrides) {
    ZANCharacteristics& characteristics = Connect({Antenna(1, u"RCV01"_s, 10e6, 20e6)});
    AntennaData& antenna = *characteristics.GetAntennaByIndex(0);
    antenna.minRange = 300e3; // reaches beyond the limits that were read
    antenna.maxRange = 30e6;
    const std::vector<RangeRow> rows{
        {"both outside", {}, OPMODE_SCAN, 9e6, 21e6, 0.0, DOWN, 1, 8e6, 20e6},
        {"stop inside before the shift", {}, OPMODE_SCAN, 9e6, 19.5e6, 0.0, DOWN, 1, 10e6, 20.5e6},
        {"start inside before the shift", {}, OPMODE_SCAN, 10.5e6, 21e6, 0.0, DOWN, 1, 9.5e6, 20e6},
    };
    for (const RangeRow& row : rows) {
        ExpectAdjusted(characteristics, row);
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AnyNumberGoesThrough) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    const std::vector<double> numbers{0.0,      -0.0,      1.0,          25e6,  ANY, HIGHEST_DOUBLE,
                                      INFINITE, -INFINITE, NOT_A_NUMBER, 5e-324};
    for (int mode = -3; mode < 17; ++mode) {
        for (const double first : numbers) {
            for (const double second : numbers) {
                double frequency = first;
                double bandwidth = second;
                characteristics.ToNextValidFrequency(Mode(mode), frequency, bandwidth);
                for (const double third : numbers) {
                    for (const auto adjustMode : {DOWN, UP, ADJUST_OTHER}) {
                        double start = first;
                        double stop = second;
                        double realtimeBandwidth = third;
                        double unused = third;
                        if (!characteristics.ToNextValidFrequencyRange(
                                Mode(mode), start, stop, realtimeBandwidth, unused, adjustMode)) {
                            continue;
                        }
                        EXPECT_TRUE(std::isfinite(start)) << mode << ' ' << first << ' ' << second;
                    }
                }
            }
        }
    }
}

// An azimuth

/// Replaces a value of the server by another one of the same name.
template <class T>
T* ReplaceServerValue(const ValueDescriptor& descriptor) {
    const QString path = ZANPath::SERVER.toString() + descriptor.PathName();
    Tree::Instance()->Remove(Tree::Instance()->GetValue(path));
    return InsertInTree<T>(path);
}

void RemoveServerValue(const ValueDescriptor& descriptor) {
    Tree::Instance()->Remove(Tree::Instance()->GetValue(ZANPath::SERVER.toString() + descriptor.PathName()));
}

/// Sets a declination, also one that no operator could set.
void SetDeclination(int declination) {
    auto* const value = DeviceTree::ServerValue<ValueNumericInt>(g_vdDeclination);
    value->SetMinMax(INT_MIN, INT_MAX, 1, nullptr);
    value->SetValue(declination, nullptr);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AnAzimuthIsTurnedByDisplayMode) {
    struct Row {
        int azimuth;
        int displayMode;
        int declination;
        int expected;
    };
    const std::vector<Row> rows{
        {100, 1, 200, 3500},      {100, 0, 200, 100},   {0, 0, 0, 0},           {3599, 0, 0, 3599},
        {3600, 0, 0, 0},          {3601, 0, 0, 1},      {7200, 0, 0, 0},        {32767, 0, 0, 367},
        {32768, 0, 0, 3232}, // as a signed number -32768
        {65535, 0, 0, 3599},      {61936, 0, 0, 0},     {61935, 0, 0, 3599},    {200, 1, 200, 0},
        {199, 1, 200, 3599},      {0, 1, 1, 3599},      {0, 1, 1800, 1800},     {0, 1, -1800, 1800},
        {3599, 1, -1, 0},         {3599, 1, -2, 1},     {0, 2, 99, 1800},       {1799, 2, 99, 3599},
        {1800, 2, 99, 0},         {1801, 2, 99, 1},     {3599, 2, 99, 1799},    {100, 3, 200, 1700},
        {1900, 3, 100, 0},        {1899, 3, 100, 3599}, {3599, 3, -1800, 3599}, {0, 3, 1800, 0},
        {30967, 2, 0, 367},       {30968, 2, 0, 3232},  {0, 1, 65536, 0},       {5, 1, 65537, 4},
        {0, 1, 32768, 3232},      {0, 1, -32768, 3232}, {0, 1, INT_MIN, 0},     {0, 1, INT_MAX, 1},
        {65535, 3, -32768, 1431}, // comes to -30969 in 16 bits
    };
    const ZANCharacteristics characteristics;
    for (const Row& row : rows) {
        SetDeclination(row.declination);
        auto azimuth = static_cast<unsigned short>(row.azimuth);
        EXPECT_TRUE(characteristics.AdjustAzimuthToDisplayMode(azimuth, row.displayMode));
        EXPECT_EQ(azimuth, row.expected)
            << row.azimuth << ", mode " << row.displayMode << ", declination " << row.declination;
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, DisplayMode1TakesTheDeclinationOff) {
    SetDeclination(200);
    unsigned short azimuth = 100;
    EXPECT_TRUE(ZANCharacteristics().AdjustAzimuthToDisplayMode(azimuth, 1));
    EXPECT_EQ(azimuth, 3500);
}

/// The azimuth to display, worked out step by step in wide numbers.
long ExpectedAzimuth(long azimuth, int displayMode, long declination) {
    if (displayMode == 1 || displayMode == 3) {
        azimuth -= declination;
    }
    if (displayMode == 2 || displayMode == 3) {
        azimuth += 1800;
    }
    while (azimuth < -32768) {
        azimuth += 65536;
    }
    while (azimuth > 32767) {
        azimuth -= 65536;
    }
    while (azimuth < 0) {
        azimuth += 3600;
    }
    while (azimuth >= 3600) {
        azimuth -= 3600;
    }
    return azimuth;
}

TEST_F(ZANCharacteristicsAdjustmentsTest, EveryAzimuthIsBroughtIntoOneTurn) {
    const ZANCharacteristics characteristics;
    for (const int declination : {-1800, -1, 0, 200, 1800, 40000}) {
        SetDeclination(declination);
        for (int displayMode = 0; displayMode < 4; ++displayMode) {
            for (long given = 0; given <= 65535; ++given) {
                auto azimuth = static_cast<unsigned short>(given);
                ASSERT_TRUE(characteristics.AdjustAzimuthToDisplayMode(azimuth, displayMode));
                ASSERT_EQ(azimuth, ExpectedAzimuth(given, displayMode, declination))
                    << given << ", mode " << displayMode << ", declination " << declination;
            }
        }
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AnotherDisplayModeLeavesTheAzimuth) {
    const ZANCharacteristics characteristics;
    for (const int displayMode : {-1, 4, 5, INT_MAX, INT_MIN}) {
        unsigned short azimuth = 40000;
        EXPECT_FALSE(characteristics.AdjustAzimuthToDisplayMode(azimuth, displayMode)) << displayMode;
        EXPECT_EQ(azimuth, 40000);
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, WithoutDeclinationOrHeadingSourceTheAzimuthStays) {
    struct Row {
        const char* name;
        void (*spoil)();
    };
    const std::vector<Row> rows{
        {"no declination", [] { RemoveServerValue(g_vdDeclination); }},
        {"declination is a text", [] { ReplaceServerValue<ValueString>(g_vdDeclination); }},
        {"declination is a fraction", [] { ReplaceServerValue<ValueNumericDouble>(g_vdDeclination); }},
        {"no heading source", [] { RemoveServerValue(g_vdHeaSource); }},
        {"heading source is a number", [] { ReplaceServerValue<ValueNumericInt>(g_vdHeaSource); }},
        {"neither", [] { Tree::Instance()->Clear(); }},
    };
    for (const Row& row : rows) {
        const DeviceTree device;
        row.spoil();
        const ZANCharacteristics characteristics;
        for (int displayMode = 0; displayMode < 4; ++displayMode) {
            unsigned short azimuth = 40000;
            EXPECT_FALSE(characteristics.AdjustAzimuthToDisplayMode(azimuth, displayMode)) << row.name;
            EXPECT_EQ(azimuth, 40000) << row.name;
        }
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, OnlyThePresenceOfTheHeadingSourceMatters) {
    const ZANCharacteristics characteristics;
    SetDeclination(100);
    auto* const source = DeviceTree::ServerValue<ValueSelection>(g_vdHeaSource);
    ASSERT_FALSE(source->GetItems().empty());
    for (long index = 0; index < static_cast<long>(source->GetItems().size()); ++index) {
        source->SetCurrentIndex(index, nullptr);
        unsigned short azimuth = 300;
        EXPECT_TRUE(characteristics.AdjustAzimuthToDisplayMode(azimuth, 1));
        EXPECT_EQ(azimuth, 200);
    }
    source->Clear(nullptr);
    unsigned short azimuth = 300;
    EXPECT_TRUE(characteristics.AdjustAzimuthToDisplayMode(azimuth, 1));
    EXPECT_EQ(azimuth, 200);
}

// The antenna of a frequency

TEST_F(ZANCharacteristicsAdjustmentsTest, TheAntennaOfAFrequencyIsOneOfThePolarisationOfThisMoment) {
    DeviceTree::SetAntennas({Polarised(Antenna(1, u"RCV03"_s, 20e6, 1300e6), POLARISATION_VERTICAL),
                             Polarised(Antenna(2, u"RCV03"_s, 20e6, 1300e6), POLARISATION_HORIZONTAL)});
    auto* const polarisation = DeviceTree::ServerValue<ValueString>(g_vdPolarisation);
    for (const bool autoUpdate : {false, true}) {
        ZANCharacteristics& characteristics = DeviceTree::Connect(autoUpdate);
        double frequency = 100e6;
        double bandwidth = 0.0;
        for (const auto& [name, handle] :
             std::vector<std::pair<QString, int>>{{u"Horizontal"_s, 2}, {u"Vertical"_s, 1}}) {
            polarisation->SetValue(name, nullptr);
            EXPECT_EQ(HandleOf(characteristics.GetAntennaForFrequency(100e6, false)), handle);
            EXPECT_EQ(HandleOf(characteristics.ToNextValidFrequency(OPMODE_FFM, frequency, bandwidth)),
                      handle);
        }
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AntennasAreLookedUpByFrequencyBothEndsIncluded) {
    struct Row {
        double frequency;
        bool preferRangeStart;
        int antenna;
    };
    const std::vector<Row> rows{
        {300e3, false, 1},
        {299999.5, false, NO_ANTENNA},
        {30e6, false, 1},
        {30e6, true, 2}, // the range of the second one begins here
        {30000000.5, true, 2},
        {1300e6, true, 2},
        {1300000000.5, false, NO_ANTENNA},
        {0.0, false, NO_ANTENNA},
        {ANY, false, NO_ANTENNA},
        {ANY, true, NO_ANTENNA},
        {INFINITE, false, NO_ANTENNA},
        {NOT_A_NUMBER, false, NO_ANTENNA},
        {NOT_A_NUMBER, true, NO_ANTENNA},
    };
    ZANCharacteristics& characteristics =
        Connect({Polarised(Hf(), POLARISATION_VERTICAL),
                 Polarised(Antenna(2, u"RCV03"_s, 30e6, 1300e6), POLARISATION_VERTICAL)});
    for (const Row& row : rows) {
        EXPECT_EQ(HandleOf(characteristics.GetAntennaForFrequency(row.frequency, row.preferRangeStart)),
                  row.antenna)
            << row.frequency << ", " << row.preferRangeStart;
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, OfSeveralAntennasWithoutTheWantedPolarisationTheLastIsTaken) {
    ZANCharacteristics& characteristics =
        Connect({Polarised(Antenna(1, u"RCV03"_s, 20e6, 1300e6), POLARISATION_LEFT),
                 Polarised(Antenna(2, u"RCV03"_s, 20e6, 1300e6), POLARISATION_RIGHT)});
    EXPECT_EQ(HandleOf(characteristics.GetAntennaForFrequency(100e6, false)), 2);
    EXPECT_EQ(HandleOf(characteristics.GetAntennaForFrequency(20e6, true)), 1);
}

// What an antenna is called and can do

TEST(ZANCharacteristicsNames, AreDisplayedWithoutTheEndingOfAPair) {
    struct Row {
        QString name;
        QString displayed;
    };
    const std::vector<Row> rows{
        {u"PX121_V"_s, u"PX121"_s},
        {u"PX121_H"_s, u"PX121"_s},
        {u"PX104_L"_s, u"PX104"_s},
        {u"PX104_R"_s, u"PX104"_s},
        {u"PX122 (A/P)"_s, u"PX122 (A/P)"_s},
        {u"PX104SR_100m_L"_s, u"PX104SR_100m"_s},
        {u"PX121_VAR2x_V"_s, u"PX121_VAR2x"_s},
        {u"PX119_VLF"_s, u"PX119_VLF"_s},
        {u"PX121_v"_s, u"PX121_v"_s},
        {u"PX121_X"_s, u"PX121_X"_s},
        {u"PX121V"_s, u"PX121V"_s},
        {u"PX121_V "_s, u"PX121_V "_s},
        {u"PX_H_V"_s, u"PX_H"_s}, // one ending only
        {u"_R"_s, QString()},
        {u"R"_s, u"R"_s},
        {QString(), QString()},
    };
    const ZANCharacteristics characteristics;
    for (const Row& row : rows) {
        const AntennaData antenna = MakeAntenna(row.name, u"RCV01"_s, 1e6, 2e6);
        EXPECT_EQ(characteristics.GetAntennaDisplayName(&antenna), row.displayed);
        EXPECT_EQ(antenna.name, row.name);
    }
    EXPECT_EQ(characteristics.GetAntennaDisplayName(nullptr), QString());
}

TEST_F(ZANCharacteristicsAdjustmentsTest, CapabilitiesAreThoseOfTheRecordButPX120NeverSwitches) {
    struct Row {
        QString name;
        bool polarisation; // of the record
        bool activePassive;
        bool switches; // between active and passive, as the device says
    };
    const std::vector<Row> rows{
        {u"PX122 (A/P)"_s, false, true, true},
        {u"PX122"_s, true, false, false},
        {u"PX121_V"_s, true, true, true},
        {u"PX120"_s, true, true, false},
        {u"PX120_R"_s, false, true, false},
        {u"PX120_L"_s, false, false, false},
        {u"an PX120 antenna"_s, true, true, false},
        {u"px120"_s, false, true, true},
        {u"PX12"_s, false, true, true},
    };
    std::vector<AntennaData> antennas;
    for (const Row& row : rows) {
        antennas.push_back(Antenna(static_cast<int>(antennas.size()), u"RCV01"_s, 1e6, 2e6));
        antennas.back().name = row.name;
        antennas.back().polarizationSupport = row.polarisation;
        antennas.back().activePassiveSupport = row.activePassive;
        antennas.back().enabled = antennas.size() % 2 == 0; // makes no difference
    }
    const ZANCharacteristics& characteristics = Connect(antennas);
    for (std::size_t handle = 0; handle < rows.size(); ++handle) {
        SCOPED_TRACE(rows[handle].name.toStdString());
        EXPECT_EQ(characteristics.DoesAntennaSupportPolarization(static_cast<long>(handle)),
                  rows[handle].polarisation);
        EXPECT_EQ(characteristics.DoesAntennaSupportActivePassive(static_cast<long>(handle)),
                  rows[handle].switches);
    }
    for (const long unknown : {-1L, 99L, LONG_MAX, LONG_MIN}) {
        EXPECT_FALSE(characteristics.DoesAntennaSupportPolarization(unknown));
        EXPECT_FALSE(characteristics.DoesAntennaSupportActivePassive(unknown));
    }
}

TEST_F(ZANCharacteristicsAdjustmentsTest, ARangeOnASharedEdgeBelongsToTheAntennaThatEndsThere) {
    ZANCharacteristics& characteristics =
        Connect({Polarised(Antenna(1, u"RCV03"_s, 20e6, 30e6), POLARISATION_VERTICAL),
                 Polarised(Antenna(2, u"RCV03"_s, 30e6, 40e6), POLARISATION_VERTICAL)});
    double start = 30e6;
    double stop = 30e6;
    double realtimeBandwidth = ZANCharacteristics::fBANDWIDTH_ANY;
    double unused = 0.0;
    const AntennaData* const antenna = characteristics.ToNextValidFrequencyRange(
        OPMODE_SCAN, start, stop, realtimeBandwidth, unused, ZANCharacteristics::ADJUST_UP);
    ASSERT_NE(antenna, nullptr);
    EXPECT_EQ(antenna->handle, 1);
    EXPECT_EQ(start, 30e6);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, ARangeThatEndsOnASharedEdgeStaysWithTheAntennaThatEndsThere) {
    ZANCharacteristics& characteristics =
        Connect({Polarised(Antenna(1, u"RCV03"_s, 20e6, 30e6), POLARISATION_VERTICAL),
                 Polarised(Antenna(2, u"RCV03"_s, 30e6, 40e6), POLARISATION_VERTICAL)});
    for (const auto adjustMode : {ZANCharacteristics::ADJUST_UP, ZANCharacteristics::ADJUST_DOWN}) {
        double start = 25e6;
        double stop = 30e6;
        double realtimeBandwidth = ZANCharacteristics::fBANDWIDTH_ANY;
        double unused = 0.0;
        const AntennaData* const antenna = characteristics.ToNextValidFrequencyRange(
            OPMODE_SCAN, start, stop, realtimeBandwidth, unused, adjustMode);
        ASSERT_NE(antenna, nullptr);
        EXPECT_EQ(antenna->handle, 1);
        EXPECT_EQ(start, 25e6);
        EXPECT_EQ(stop, 30e6);
    }
}

// What was done, and why

TEST_F(ZANCharacteristicsAdjustmentsTest, AFrequencyThatIsServedAsItIsIsMovedByNothing) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    const FrequencyAdjustment adjustment = characteristics.AdjustFrequency(OPMODE_FFM, 100e6);
    EXPECT_TRUE(adjustment.IsServed());
    EXPECT_EQ(adjustment.asked, 100e6);
    EXPECT_EQ(adjustment.frequency, 100e6);
    EXPECT_EQ(adjustment.intoLimits, 0.0);
    EXPECT_EQ(adjustment.intoRange, 0.0);
    EXPECT_EQ(adjustment.limits, (FrequencyRange{300e3, 1300e6}));
    EXPECT_EQ(HandleOf(adjustment.antenna), 2);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AFrequencyTellsHowFarItWasMovedIntoTheLimits) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    const FrequencyAdjustment raised = characteristics.AdjustFrequency(OPMODE_FFM, 100e3);
    EXPECT_EQ(raised.intoLimits, 200e3);
    EXPECT_EQ(raised.frequency, 300e3);
    EXPECT_EQ(HandleOf(raised.antenna), 1);
    const FrequencyAdjustment lowered = characteristics.AdjustFrequency(OPMODE_FFM, 2000e6);
    EXPECT_EQ(lowered.intoLimits, -700e6);
    EXPECT_EQ(lowered.frequency, 1300e6);
    EXPECT_EQ(HandleOf(lowered.antenna), 2);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AFrequencyTellsHowFarItsBandWasMovedIntoTheRangeOfTheAntenna) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    const FrequencyAdjustment adjustment =
        characteristics.AdjustFrequency(OPMODE_WIDEBAND_FFM, 2000e6, 2e6); // both moves
    EXPECT_TRUE(adjustment.IsServed());
    EXPECT_EQ(adjustment.intoLimits, -700e6);
    EXPECT_EQ(adjustment.intoRange, -1e6);
    EXPECT_EQ(adjustment.frequency, 1299e6);
    EXPECT_EQ(adjustment.bandwidth, 2e6);
    EXPECT_EQ(HandleOf(adjustment.antenna), 2);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, WithoutABandwidthTheBandHasTheOneOfTheBestSampleMode) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    const FrequencyAdjustment adjustment = characteristics.AdjustFrequency(OPMODE_WIDEBAND_FFM, 300e3);
    EXPECT_EQ(adjustment.bandwidth,
              characteristics.GetDefaultRealtimeBandwidth(OPMODE_WIDEBAND_FFM, 300e3, 300e3));
    EXPECT_EQ(adjustment.bandwidth, 1e6);
    EXPECT_EQ(adjustment.frequency, 800e3);
    EXPECT_EQ(characteristics.AdjustFrequency(OPMODE_FFM, 300e3, 1e6).bandwidth, 0.0)
        << "no band in this mode";
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AFrequencyThatIsNotServedTellsWhatIsMissing) {
    using EMissing = FrequencyAdjustment::EMissing;
    ZANCharacteristics& characteristics = Connect({Hf(), Antenna(2, u"RCV03"_s, 100e6, 1300e6)});
    const FrequencyAdjustment inGap = characteristics.AdjustFrequency(OPMODE_FFM, 50e6);
    EXPECT_EQ(inGap.missing, EMissing::ANTENNA);
    EXPECT_EQ(inGap.antenna, nullptr);
    EXPECT_EQ(inGap.frequency, 50e6);
    const FrequencyAdjustment inOtherMode = characteristics.AdjustFrequency(OPMODE_5, 50e6);
    EXPECT_EQ(inOtherMode.missing, EMissing::MODE);
    EXPECT_EQ(inOtherMode.antenna, nullptr);
    EXPECT_EQ(inOtherMode.frequency, 25e6) << "clamped all the same";
    const FrequencyAdjustment tooWide =
        characteristics.AdjustFrequency(OPMODE_WIDEBAND_FFM, 10e6, 29700001.0);
    EXPECT_EQ(tooWide.missing, EMissing::WIDTH);
    EXPECT_EQ(HandleOf(tooWide.antenna), 1) << "the one that is too narrow";
    EXPECT_FALSE(tooWide.IsServed());
    EXPECT_TRUE(characteristics.AdjustFrequency(OPMODE_WIDEBAND_FFM, 10e6, 29.7e6).IsServed());
}

TEST_F(ZANCharacteristicsAdjustmentsTest, ARangeTellsHowFarItWasMovedAndOffWhichBorder) {
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    constexpr double ANY_BANDWIDTH = ZANCharacteristics::fBANDWIDTH_ANY;
    const RangeAdjustment up = characteristics.AdjustFrequencyRange(OPMODE_SCAN, {25e6, 35e6}, ANY_BANDWIDTH,
                                                                    ZANCharacteristics::ADJUST_UP);
    EXPECT_TRUE(up.IsServed());
    EXPECT_EQ(up.asked, (FrequencyRange{25e6, 35e6}));
    EXPECT_EQ(up.limits, (FrequencyRange{300e3, 1300e6}));
    EXPECT_EQ(up.intoLimits, 0.0);
    ASSERT_TRUE(up.border);
    EXPECT_EQ(up.border->frequency, 30000001.0);
    EXPECT_EQ(HandleOf(up.border->below), 1);
    EXPECT_EQ(HandleOf(up.border->above), 2);
    EXPECT_EQ(up.offBorder, 5000001.0);
    EXPECT_EQ(up.range, (FrequencyRange{30000001.0, 40000001.0}));
    EXPECT_EQ(HandleOf(up.antenna), 2) << "serves the moved range";
    EXPECT_EQ(HandleOf(up.antennaOfStart), 1) << "served the start before that";

    const RangeAdjustment down = characteristics.AdjustFrequencyRange(
        OPMODE_SCAN, {25e6, 35e6}, ANY_BANDWIDTH, ZANCharacteristics::ADJUST_DOWN);
    ASSERT_TRUE(down.border);
    EXPECT_EQ(down.border->frequency, 30e6);
    EXPECT_EQ(down.offBorder, -5e6);
    EXPECT_EQ(down.range, (FrequencyRange{20e6, 30e6}));
    EXPECT_EQ(HandleOf(down.antenna), 1);

    const RangeAdjustment inLimits = characteristics.AdjustFrequencyRange(
        OPMODE_SCAN, {100e3, 200e3}, ANY_BANDWIDTH, ZANCharacteristics::ADJUST_DOWN);
    EXPECT_EQ(inLimits.intoLimits, 200e3);
    EXPECT_FALSE(inLimits.border);
    EXPECT_EQ(inLimits.range, (FrequencyRange{300e3, 400e3}));
}

TEST_F(ZANCharacteristicsAdjustmentsTest, ARangeThatIsNotServedTellsWhatIsMissing) {
    using EMissing = RangeAdjustment::EMissing;
    constexpr double ANY_BANDWIDTH = ZANCharacteristics::fBANDWIDTH_ANY;
    ZANCharacteristics& characteristics = Connect({Hf(), Vuhf()});
    const RangeAdjustment straddling =
        characteristics.AdjustFrequencyRange(OPMODE_SCAN, {25e6, 35e6}, ANY_BANDWIDTH, ADJUST_OTHER);
    EXPECT_EQ(straddling.missing, EMissing::ANTENNA);
    EXPECT_EQ(straddling.antenna, nullptr);
    ASSERT_TRUE(straddling.border);
    EXPECT_EQ(straddling.border->frequency, 30e6);
    EXPECT_EQ(straddling.offBorder, 0.0);
    const RangeAdjustment withoutMode =
        characteristics.AdjustFrequencyRange(OPMODE_SCAN, {1e6, 2e6}, 1.5e6, ZANCharacteristics::ADJUST_DOWN);
    EXPECT_EQ(withoutMode.missing, EMissing::SAMPLE_MODE);
    EXPECT_EQ(withoutMode.antenna, nullptr);
    EXPECT_EQ(HandleOf(withoutMode.antennaOfStart), 1);
    EXPECT_FALSE(withoutMode.IsServed());
}

TEST_F(ZANCharacteristicsAdjustmentsTest, TheAntennaOfARangeContainsAllOfIt) {
    constexpr double ANY_BANDWIDTH = ZANCharacteristics::fBANDWIDTH_ANY;
    // The start of the moved range is the end of the first antenna, too.
    ZANCharacteristics& sharedEdge =
        Connect({Polarised(Antenna(1, u"RCV03"_s, 20e6, 30e6), POLARISATION_VERTICAL),
                 Polarised(Antenna(2, u"RCV03"_s, 30e6, 40e6), POLARISATION_VERTICAL)});
    EXPECT_EQ(HandleOf(sharedEdge
                           .AdjustFrequencyRange(OPMODE_SCAN, {28e6, 32e6}, ANY_BANDWIDTH,
                                                 ZANCharacteristics::ADJUST_UP)
                           .antenna),
              2);
    // Two narrow antennas below and above a border, and a wide one of another polarisation over both.
    ZANCharacteristics& wide =
        Connect({Polarised(Antenna(1, u"RCV03"_s, 20e6, 30e6), POLARISATION_LEFT),
                 Polarised(Antenna(2, u"RCV03"_s, 30000001.0, 40e6), POLARISATION_LEFT),
                 Polarised(Antenna(3, u"RCV03"_s, 20e6, 40e6), POLARISATION_RIGHT)});
    const RangeAdjustment adjustment =
        wide.AdjustFrequencyRange(OPMODE_SCAN, {28e6, 32e6}, ANY_BANDWIDTH, ADJUST_OTHER);
    EXPECT_TRUE(adjustment.IsServed());
    EXPECT_EQ(HandleOf(adjustment.antenna), 3);
}

TEST_F(ZANCharacteristicsAdjustmentsTest, AreAskedOfTheOperationsThatADerivedClassOverrides) {
    class Narrow final : public ZANCharacteristics {
    public:
        [[nodiscard]] double GetMinFreq(EOperationMode /*mode*/) const override { return 5e6; }
        [[nodiscard]] double GetMaxFreq(EOperationMode /*mode*/) const override { return 6e6; }
    };
    DeviceTree::SetAntennas({Hf(), Vuhf()});
    Narrow narrow;
    narrow.SetBase_ValuePath(DeviceTree::Path(), true);
    EXPECT_EQ(narrow.AdjustFrequency(OPMODE_FFM, 100e6).frequency, 6e6);
    EXPECT_EQ(narrow
                  .AdjustFrequencyRange(OPMODE_SCAN, {1e6, 1.5e6}, ZANCharacteristics::fBANDWIDTH_ANY,
                                        ZANCharacteristics::ADJUST_DOWN)
                  .range,
              (FrequencyRange{5e6, 5.5e6}));
}

} // namespace
