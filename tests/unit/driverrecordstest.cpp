#include "zancommon/driverrecords.h"

#include "support/printing.h"
#include "zancommon/alarmsettings.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <type_traits>
#include <vector>

using namespace Qt::StringLiterals;

namespace KvZANCommon {
namespace {

static_assert(std::is_same_v<std::underlying_type_t<EMode>, qint32>);

TEST(Bearing, HasEight16BitMembersInTheirOrder) {
    EXPECT_EQ(sizeof(Bearing), 16U);
    EXPECT_EQ(offsetof(Bearing, channel), 0U);
    EXPECT_EQ(offsetof(Bearing, azimuth), 2U);
    EXPECT_EQ(offsetof(Bearing, elevation), 4U);
    EXPECT_EQ(offsetof(Bearing, level), 6U);
    EXPECT_EQ(offsetof(Bearing, marker), 8U);
    EXPECT_EQ(offsetof(Bearing, azimuthSpread), 10U);
    EXPECT_EQ(offsetof(Bearing, averageCount), 12U);
    EXPECT_EQ(offsetof(Bearing, quality), 14U);
    static_assert(std::is_same_v<decltype(Bearing::azimuth), quint16>);
    static_assert(std::is_same_v<decltype(Bearing::elevation), qint16>);
    static_assert(std::is_same_v<decltype(Bearing::level), qint16>);
    static_assert(std::is_same_v<decltype(Bearing::marker), qint16>);
    static_assert(std::is_same_v<decltype(Bearing::quality), quint16>);
}

TEST(Bearing, StartsRejectedAndNotMeasured) {
    const Bearing bearing;
    EXPECT_EQ(Bearing::NOT_MEASURED, -32768);
    EXPECT_EQ(bearing.elevation, Bearing::NOT_MEASURED);
    EXPECT_EQ(bearing.level, Bearing::NOT_MEASURED);
    EXPECT_EQ(bearing.marker, 0);
    EXPECT_EQ(bearing.quality, 0);
}

TEST(DriverRecords, ResultOfAFixedFrequencyStartsRejectedAndNotMeasured) {
    const FFMData data;
    EXPECT_EQ(data.time, 0U);
    EXPECT_EQ(data.frequency, 0.0);
    EXPECT_EQ(data.bandwidth, 0.0);
    EXPECT_EQ(data.azimuth, 0);
    EXPECT_EQ(data.elevation, Bearing::NOT_MEASURED);
    EXPECT_EQ(data.level, Bearing::NOT_MEASURED);
    EXPECT_EQ(data.azimuthSpread, 0);
    EXPECT_EQ(data.averageCount, 0);
    EXPECT_EQ(data.quality, 0);
}

TEST(DriverRecords, ResultsOfAFixedFrequencyAreEqualWhenAllTheirMembersAre) {
    const FFMData first;
    FFMData second;
    EXPECT_TRUE(first == second);
    second.elevation = 10;
    EXPECT_FALSE(first == second);
    second = first;
    second.quality = 1;
    EXPECT_FALSE(first == second);
}

TEST(DriverRecords, DFSettingsStartNotSet) {
    const auto [resolutionBandwidth, method, realtimeBandwidth, sampleMode, preamplifier, activeAntenna,
                superResolution, averageTime, measurementTime, levelThreshold, relativeThreshold,
                polarisation, userData] = DFSettingsStruct();
    EXPECT_EQ(resolutionBandwidth, -1.0);
    EXPECT_EQ(method, -1);
    EXPECT_EQ(realtimeBandwidth, -1.0);
    EXPECT_EQ(sampleMode, -1);
    EXPECT_FALSE(preamplifier);
    EXPECT_FALSE(activeAntenna);
    EXPECT_FALSE(superResolution);
    EXPECT_EQ(averageTime, -1.0);
    EXPECT_EQ(measurementTime, -1.0);
    EXPECT_EQ(levelThreshold, -1);
    EXPECT_FALSE(relativeThreshold);
    EXPECT_EQ(polarisation, -1);
    EXPECT_EQ(userData, 0U);
}

TEST(DriverRecords, DemodulationSettingsStartOffAndNotSet) {
    const auto [demodulation, squelch, gainControl, bandwidth, offset, beatFrequency] = DEMSettingsStruct();
    EXPECT_EQ(demodulation, 0);
    EXPECT_EQ(squelch, -1);
    EXPECT_EQ(gainControl, -1);
    EXPECT_EQ(bandwidth, -1.0);
    EXPECT_EQ(offset, -1.0);
    EXPECT_EQ(beatFrequency, -1.0);
}

TEST(DriverRecords, DefaultFilterPassesTheWholeCircleUpToTheZenith) {
    const auto [azimuthFrom, azimuthTo, qualityMin, azimuthSpreadMax, durationMin, durationMax, elevationFrom,
                elevationTo, signalClasses] = FilterSettingsStruct();
    EXPECT_EQ(azimuthFrom, 0);
    EXPECT_EQ(azimuthTo, 35999);
    EXPECT_EQ(qualityMin, 0);
    EXPECT_EQ(azimuthSpreadMax, 0);
    EXPECT_EQ(durationMin, 0);
    EXPECT_EQ(durationMax, 0);
    EXPECT_EQ(elevationFrom, 0);
    EXPECT_EQ(elevationTo, 9000);
    EXPECT_EQ(signalClasses, std::numeric_limits<quint64>::max());
}

TEST(DriverRecords, GainControlStartsNotSet) {
    const auto [mode, attenuation, gain] = GainControlStruct();
    EXPECT_EQ(mode, QString());
    EXPECT_EQ(attenuation, -1);
    EXPECT_EQ(gain, -1.0);
}

TEST(DriverRecords, SetupsHaveTheirFieldsInOrder) {
    // Structured bindings follow the declaration order, so the types show the layout.
    const auto [converterHandle, type, typeName, antennaHandle, attenuation, enabled, preamplifier] =
        ConverterSetupStruct();
    static_assert(std::is_same_v<decltype(converterHandle), const qint32>);
    static_assert(std::is_same_v<decltype(type), const qint32>);
    static_assert(std::is_same_v<decltype(typeName), const QString>);
    static_assert(std::is_same_v<decltype(antennaHandle), const qint32>);
    static_assert(std::is_same_v<decltype(attenuation), const qint32>);
    EXPECT_FALSE(enabled);
    EXPECT_FALSE(preamplifier);

    const auto [handle, range, polarisation, converter, compass, mechanicalOffset, subRanges] =
        AntennaSetupStruct();
    static_assert(std::is_same_v<decltype(handle), const qint32>);
    static_assert(sizeof(range) == 16);
    static_assert(std::is_same_v<decltype(polarisation), const qint32>);
    static_assert(std::is_same_v<decltype(converter), const qint32>);
    static_assert(std::is_same_v<decltype(compass), const qint32>);
    static_assert(sizeof(mechanicalOffset) == 8);
    EXPECT_TRUE(subRanges.empty());
}

TEST(DriverRecords, CopyOfAnAntennaSetupHasItsOwnSubRanges) {
    AntennaSetupStruct source;
    source.subRanges = {{3e5, 3e7, METHODDETAILED_WAT}, {2e7, 1.3e9, METHODDETAILED_COR}};
    const AntennaSetupStruct copy(source);
    source.subRanges.front().minFrequency = 0.0;
    source.subRanges.pop_back();
    ASSERT_EQ(copy.subRanges.size(), 2U);
    EXPECT_EQ(copy.subRanges.front().minFrequency, 3e5);
    EXPECT_EQ(copy.subRanges.back().dfMethods, METHODDETAILED_COR);
}

TEST(DriverRecords, StatusStartsWithoutMeasurements) {
    const StatusStruct status;
    EXPECT_EQ(status.frequency, 0.0);
    EXPECT_FALSE(status.levelOverflow || status.magneticHeading || status.withoutMechOffset);
    EXPECT_FALSE(status.heading || status.pitch || status.roll);
    EXPECT_FALSE(status.latitude || status.longitude || status.altitude);
}

TEST(DriverRecords, StatusTellsZeroFromNotMeasured) {
    StatusStruct level;
    level.pitch = 0.0;
    EXPECT_TRUE(level.pitch.has_value());
    EXPECT_NE(level, StatusStruct());
}

TEST(DriverRecords, ErrorsStartWithoutCodeAndText) {
    std::vector<ErrorStruct> errors(1);
    EXPECT_EQ(errors[0].code, 0);
    EXPECT_FALSE(errors[0].fatal);
    EXPECT_EQ(errors[0].text, QString());
}

TEST(DriverRecords, ErrorsAreComparedByContent) {
    const ErrorStruct error{3, true, u"no answer"_s};
    EXPECT_EQ(error, (ErrorStruct{3, true, u"no answer"_s}));
    for (const ErrorStruct& other :
         {ErrorStruct{4, true, u"no answer"_s}, ErrorStruct{3, false, u"no answer"_s},
          ErrorStruct{3, true, u"no answers"_s}}) {
        EXPECT_NE(error, other);
    }
}

TEST(DriverRecords, FixedFrequencyResultStartsRejectedAndNotMeasured) {
    const FFMData data;
    EXPECT_EQ(data.elevation, Bearing::NOT_MEASURED);
    EXPECT_EQ(data.level, Bearing::NOT_MEASURED);
    EXPECT_EQ(data.quality, 0);
}

// Twelve scalars that all differ, and two sectors.
AlarmSettings FilledAlarmSettings() {
    AlarmSettings alarms;
    double value = 0.0;
    for (double* const scalar :
         {&alarms.levelMin, &alarms.levelMax, &alarms.levelHysteresis, &alarms.qualityMin,
          &alarms.elevationMin, &alarms.elevationMax, &alarms.bandwidthMin, &alarms.bandwidthMax,
          &alarms.durationMin, &alarms.durationMax, &alarms.holdTime}) {
        *scalar = ++value;
    }
    alarms.sectors = {{10.0, 20.0}, {350.0, 5.0}};
    alarms.actions = 12;
    return alarms;
}

void ExpectFilled(const AlarmSettings& alarms) {
    double value = 0.0;
    for (const double scalar :
         {alarms.levelMin, alarms.levelMax, alarms.levelHysteresis, alarms.qualityMin, alarms.elevationMin,
          alarms.elevationMax, alarms.bandwidthMin, alarms.bandwidthMax, alarms.durationMin,
          alarms.durationMax, alarms.holdTime}) {
        EXPECT_EQ(scalar, ++value);
    }
    ASSERT_EQ(alarms.sectors.size(), 2U);
    EXPECT_EQ(alarms.sectors.front().azimuthTo, 20.0);
    EXPECT_EQ(alarms.sectors.back().azimuthFrom, 350.0);
    EXPECT_EQ(alarms.actions, 12U);
}

TEST(AlarmSettings, StartAllZeroWithAnEmptyList) {
    static_assert(std::has_virtual_destructor_v<AlarmSettings>);
    const AlarmSettings alarms;
    EXPECT_EQ(alarms.levelMin, 0.0);
    EXPECT_EQ(alarms.levelMax, 0.0);
    EXPECT_EQ(alarms.levelHysteresis, 0.0);
    EXPECT_EQ(alarms.qualityMin, 0.0);
    EXPECT_EQ(alarms.elevationMin, 0.0);
    EXPECT_EQ(alarms.elevationMax, 0.0);
    EXPECT_EQ(alarms.bandwidthMin, 0.0);
    EXPECT_EQ(alarms.bandwidthMax, 0.0);
    EXPECT_EQ(alarms.durationMin, 0.0);
    EXPECT_EQ(alarms.durationMax, 0.0);
    EXPECT_EQ(alarms.holdTime, 0.0);
    EXPECT_TRUE(alarms.sectors.empty());
    EXPECT_EQ(alarms.actions, 0U);
}

TEST(AlarmSettings, AssignmentReplacesTheListByACopy) {
    AlarmSettings source = FilledAlarmSettings();
    AlarmSettings target;
    target.sectors = {{1.0, 2.0}, {3.0, 4.0}, {5.0, 6.0}};
    target = source;
    source.sectors.clear();
    ExpectFilled(target);
}

TEST(AlarmSettings, CopyHasItsOwnList) {
    AlarmSettings source = FilledAlarmSettings();
    const AlarmSettings copy(source);
    source.sectors.front().azimuthTo = 0.0;
    ExpectFilled(copy);
}

TEST(AlarmSettings, SectorsAreComparedByContent) {
    AlarmSettings alarms;
    alarms.sectors.emplace_back(); // from 0 to 0
    AlarmSettings other;
    other.sectors = {{0.0, 0.0}};
    EXPECT_EQ(alarms, other);
    other.sectors = {{0.0, 1.0}};
    EXPECT_NE(alarms, other);
    other.sectors = {{1.0, 0.0}};
    EXPECT_NE(alarms, other);
}

TEST(AlarmSettings, AssignmentToItselfChangesNothing) {
    AlarmSettings alarms = FilledAlarmSettings();
    const AlarmSettings& self = alarms;
    alarms = self;
    ExpectFilled(alarms);
}

} // namespace
} // namespace KvZANCommon
