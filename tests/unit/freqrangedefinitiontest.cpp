#include "zancommon/freqrangedefinition.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace Qt::StringLiterals;

namespace KvZANCommon {
namespace {

static_assert(!std::is_polymorphic_v<FreqRangeDefinition>);

FreqRangeDefinition MadeByTheUser() {
    DFSettingsStruct dfSettings;
    dfSettings.resolutionBandwidth = 200.0;
    dfSettings.levelThreshold = 12;
    DEMSettingsStruct demSettings;
    demSettings.bandwidth = 2400.0;
    FilterSettingsStruct filterSettings;
    filterSettings.azimuthFrom = 9000;
    AlarmSettings alarmSettings;
    alarmSettings.levelMin = 20.0;
    alarmSettings.sectors = {{10.0, 20.0}, {30.0, 40.0}};
    GainControlStruct gainSettings{u"AGC"_s, 6, 3.5};

    FreqRangeDefinition range;
    range.SetIndex(4);
    range.SetStartFreq(1e6);
    range.SetStepFreq(25e3);
    range.SetStopFreq(2e6);
    range.SetName(u"Harbour"_s);
    range.SetFirstChannel(1);
    range.SetLastChannel(41);
    range.SetDFSettings(dfSettings);
    range.SetDEMSettings(demSettings);
    range.SetFilterSettings(filterSettings);
    range.SetAlarmSettings(alarmSettings);
    range.SetGainSettings(gainSettings);
    range.SetAverageTime(500);
    return range;
}

// All that the copy from a pointer takes over, too.
void ExpectFrequenciesAndSettings(const FreqRangeDefinition& range) {
    EXPECT_EQ(range.GetIndex(), 4);
    EXPECT_EQ(range.GetStartFreq(), 1e6);
    EXPECT_EQ(range.GetStepFreq(), 25e3);
    EXPECT_EQ(range.GetStopFreq(), 2e6);
    EXPECT_EQ(range.GetFirstChannel(), 1UL);
    EXPECT_EQ(range.GetLastChannel(), 41UL);
    EXPECT_EQ(range.GetDFSettings().resolutionBandwidth, 200.0);
    EXPECT_EQ(range.GetThreshold(), 12);
    EXPECT_EQ(range.GetDEMSettings().bandwidth, 2400.0);
    EXPECT_EQ(range.GetFilterSettings().azimuthFrom, 9000);
    EXPECT_EQ(range.GetGainSettings(), (GainControlStruct{u"AGC"_s, 6, 3.5}));
    EXPECT_EQ(range.GetAverageTime(), 500);
}

void ExpectNameAndAlarms(const FreqRangeDefinition& range) {
    EXPECT_EQ(range.GetName(), u"Harbour"_s);
    EXPECT_EQ(range.GetAlarmSettings().levelMin, 20.0);
    EXPECT_EQ(range.GetAlarmSettings().sectors.size(), 2U);
}

TEST(FreqRangeDefinition, StartsWithItsDefaults) {
    const FreqRangeDefinition range;
    EXPECT_EQ(range.GetIndex(), -1);
    EXPECT_EQ(range.GetStartFreq(), 0.0);
    EXPECT_EQ(range.GetStepFreq(), 0.0);
    EXPECT_EQ(range.GetStopFreq(), 0.0);
    EXPECT_EQ(range.GetName(), QString());
    EXPECT_EQ(range.GetFirstChannel(), 0UL);
    EXPECT_EQ(range.GetLastChannel(), 0UL);
    EXPECT_EQ(range.GetDFSettings(), DFSettingsStruct());
    EXPECT_EQ(range.GetDEMSettings(), DEMSettingsStruct());
    EXPECT_EQ(range.GetFilterSettings(), FilterSettingsStruct());
    EXPECT_EQ(range.GetAlarmSettings(), AlarmSettings());
    EXPECT_EQ(range.GetGainSettings(), GainControlStruct());
    EXPECT_EQ(range.GetAverageTime(), 0);
    EXPECT_EQ(range.GetThreshold(), -1);
}

TEST(FreqRangeDefinition, AccessorsReadWhatWasSet) {
    const FreqRangeDefinition range = MadeByTheUser();
    ExpectFrequenciesAndSettings(range);
    ExpectNameAndAlarms(range);
}

TEST(FreqRangeDefinition, ThresholdShowsInTheDFSettings) {
    FreqRangeDefinition range;
    range.SetThreshold(-17);
    EXPECT_EQ(range.GetDFSettings().levelThreshold, -17);
}

TEST(FreqRangeDefinition, DFSettingsSetTheThreshold) {
    FreqRangeDefinition range;
    range.SetThreshold(5);
    DFSettingsStruct settings;
    settings.levelThreshold = 33;
    range.SetDFSettings(settings);
    EXPECT_EQ(range.GetThreshold(), 33);
}

TEST(FreqRangeDefinition, ThresholdIs32BitsWideAndWraps) {
    FreqRangeDefinition range;
    range.SetThreshold(static_cast<long>(0x100000007LL));
    EXPECT_EQ(range.GetThreshold(), 7);
    range.SetThreshold(static_cast<long>(0xFFFFFFFFLL));
    EXPECT_EQ(range.GetThreshold(), -1);
}

TEST(FreqRangeDefinition, SettersCopy) {
    FreqRangeDefinition range;
    AlarmSettings alarms;
    alarms.sectors = {{1.0, 2.0}};
    range.SetAlarmSettings(alarms);
    alarms.sectors.clear();
    GainControlStruct gain{u"MGC"_s, 3, 1.0};
    range.SetGainSettings(gain);
    gain.mode = u"AGC"_s;
    EXPECT_EQ(range.GetAlarmSettings().sectors.size(), 1U);
    EXPECT_EQ(range.GetGainSettings().mode, u"MGC"_s);
}

TEST(FreqRangeDefinition, SettingsCanBeChangedThroughTheirReferences) {
    FreqRangeDefinition range;
    range.GetDFSettings().levelThreshold = 8;
    range.GetDEMSettings().squelch = 9;
    range.GetFilterSettings().azimuthTo = 10;
    range.GetAlarmSettings().actions = 11;
    range.GetGainSettings().attenuation = 12;
    const FreqRangeDefinition& reader = range;
    EXPECT_EQ(reader.GetThreshold(), 8);
    EXPECT_EQ(reader.GetDEMSettings().squelch, 9);
    EXPECT_EQ(reader.GetFilterSettings().azimuthTo, 10);
    EXPECT_EQ(reader.GetAlarmSettings().actions, 11U);
    EXPECT_EQ(reader.GetGainSettings().attenuation, 12);
}

TEST(FreqRangeDefinition, NameIsReturnedAsACopy) {
    FreqRangeDefinition range;
    range.SetName(u"Harbour"_s);
    QString name = range.GetName();
    name += u" east"_s;
    EXPECT_EQ(range.GetName(), u"Harbour"_s);
}

TEST(FreqRangeDefinition, CopyHasEveryMember) {
    const FreqRangeDefinition source = MadeByTheUser();
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is looked at
    const FreqRangeDefinition copy(source);
    ExpectFrequenciesAndSettings(copy);
    ExpectNameAndAlarms(copy);
}

TEST(FreqRangeDefinition, AssignmentTakesOverEveryMember) {
    FreqRangeDefinition target;
    target.SetName(u"Old"_s);
    target.GetAlarmSettings().sectors = {{1.0, 2.0}, {3.0, 4.0}, {5.0, 6.0}};
    target = MadeByTheUser();
    ExpectFrequenciesAndSettings(target);
    ExpectNameAndAlarms(target);
}

TEST(FreqRangeDefinition, CopySharesNothingWithItsSource) {
    FreqRangeDefinition source = MadeByTheUser();
    const FreqRangeDefinition copy(source);
    source.SetName(u"Other"_s);
    source.GetAlarmSettings().sectors.clear();
    source.GetGainSettings().mode.clear();
    source.SetThreshold(99);
    ExpectFrequenciesAndSettings(copy);
    ExpectNameAndAlarms(copy);
}

TEST(FreqRangeDefinition, RangeFromAPointerHasTheSettingsButNeitherNameNorAlarms) {
    FreqRangeDefinition source = MadeByTheUser();
    const FreqRangeDefinition range(&source);
    ExpectFrequenciesAndSettings(range);
    EXPECT_EQ(range.GetName(), QString());
    EXPECT_EQ(range.GetAlarmSettings(), AlarmSettings());
    ExpectNameAndAlarms(source);
}

TEST(FreqRangeDefinition, RangeFromANullPointerIsADefaultRange) {
    const FreqRangeDefinition range(nullptr);
    EXPECT_EQ(range.GetIndex(), -1);
    EXPECT_EQ(range.GetThreshold(), -1);
    EXPECT_EQ(range.GetGainSettings(), GainControlStruct());
}

} // namespace
} // namespace KvZANCommon
