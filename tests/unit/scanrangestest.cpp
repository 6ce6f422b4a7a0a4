#include "zanserver/scanranges.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::FreqRangeDefinition;

namespace {

QString FaultOf(const QString& text) {
    QString fault;
    return ScanRanges::Parse(text, fault) ? u"none"_s : fault;
}

FreqRangeDefinition Parse(const QString& text) {
    QString fault;
    const auto range = ScanRanges::Parse(text, fault);
    EXPECT_TRUE(range) << fault.toStdString();
    return range.value_or(FreqRangeDefinition());
}

} // namespace

TEST(ScanRanges, RangeNeedsOnlyStartStopAndStep) {
    const FreqRangeDefinition range = Parse(uR"({"start": 118e6, "stop": 137e6, "step": 25e3})"_s);
    EXPECT_EQ(range.GetStartFreq(), 118e6);
    EXPECT_EQ(range.GetStopFreq(), 137e6);
    EXPECT_EQ(range.GetStepFreq(), 25e3);
    EXPECT_EQ(range.GetDFSettings(), KvZANCommon::DFSettingsStruct());
    EXPECT_EQ(range.GetFilterSettings(), KvZANCommon::FilterSettingsStruct());
}

TEST(ScanRanges, SettingsOfEachGroupAreReadInTheirUnits) {
    const FreqRangeDefinition range = Parse(uR"({"start":1e6,"stop":2e6,"step":1e3,"name":"short waves",
             "df":{"bandwidth":2000,"method":1,"threshold":-7,"superResolution":true,"averageTime":0.5},
             "demodulation":{"demodulation":2,"squelch":10,"offset":-500},
             "filter":{"azimuthFrom":350,"azimuthTo":10.5,"quality":50,"durationMin":0.25,"elevationTo":45},
             "alarm":{"levelMin":20,"holdTime":3,"sectors":[[0,90],[350,10]]}})"_s);
    EXPECT_EQ(range.GetName(), u"short waves"_s);
    EXPECT_EQ(range.GetDFSettings().resolutionBandwidth, 2000.0);
    EXPECT_EQ(range.GetDFSettings().method, 1);
    EXPECT_EQ(range.GetThreshold(), -7);
    EXPECT_TRUE(range.GetDFSettings().superResolution);
    EXPECT_EQ(range.GetDFSettings().averageTime, 0.5);
    EXPECT_EQ(range.GetDEMSettings().demodulation, 2);
    EXPECT_EQ(range.GetDEMSettings().squelch, 10);
    EXPECT_EQ(range.GetDEMSettings().offset, -500.0);
    EXPECT_EQ(range.GetFilterSettings().azimuthFrom, 35000);
    EXPECT_EQ(range.GetFilterSettings().azimuthTo, 1050);
    EXPECT_EQ(range.GetFilterSettings().qualityMin, 50);
    EXPECT_EQ(range.GetFilterSettings().durationMin, 250);
    EXPECT_EQ(range.GetFilterSettings().elevationTo, 4500);
    EXPECT_EQ(range.GetAlarmSettings().levelMin, 20.0);
    EXPECT_EQ(range.GetAlarmSettings().holdTime, 3.0);
    EXPECT_EQ(range.GetAlarmSettings().sectors.size(), 2U);
    EXPECT_EQ(range.GetAlarmSettings().sectors.back(), (AlarmSettings::Sector{350, 10}));
}

TEST(ScanRanges, TextOfARangeReadsBackAsTheSameRange) {
    const QString text =
        uR"({"start":1e6,"stop":2e6,"step":1e3,"name":"a \"b\"","df":{"bandwidth":2000,"preamplifier":true},
             "demodulation":{"bandwidth":6000},"filter":{"azimuthFrom":90},"alarm":{"sectors":[[1,2]]}})"_s;
    const FreqRangeDefinition range = Parse(text);
    EXPECT_TRUE(ScanRanges::AreEqual(Parse(ScanRanges::Format(range)), range));
    EXPECT_EQ(ScanRanges::Format(Parse(ScanRanges::Format(range))), ScanRanges::Format(range));
}

TEST(ScanRanges, MembersWithTheirDefaultsAreLeftOut) {
    FreqRangeDefinition range;
    range.SetStartFreq(1e6);
    range.SetStopFreq(2e6);
    range.SetStepFreq(1e3);
    EXPECT_EQ(ScanRanges::Format(range), uR"({"start":1000000,"step":1000,"stop":2000000})"_s);
}

TEST(ScanRanges, WhatIsNotARangeIsRefusedWithTheMember) {
    const QString base = uR"({"start":1e6,"stop":2e6,"step":1e3,%1})"_s;
    EXPECT_EQ(FaultOf(u"nonsense"_s), u"a range is not a JSON object: nonsense"_s);
    EXPECT_EQ(FaultOf(u"[]"_s), u"a range is not a JSON object: []"_s);
    EXPECT_EQ(FaultOf(u"{}"_s), u"a range needs start, stop not below it, and step"_s);
    EXPECT_EQ(FaultOf(uR"({"start":2e6,"stop":1e6,"step":1})"_s),
              u"a range needs start, stop not below it, and step"_s);
    EXPECT_EQ(FaultOf(uR"({"start":1e6,"stop":2e6,"step":0})"_s), u"step cannot be 0"_s);
    EXPECT_EQ(FaultOf(uR"({"start":1e6,"stop":2e6,"step":-5})"_s), u"step cannot be -5"_s);
    EXPECT_EQ(FaultOf(uR"({"start":"1e6","stop":2e6,"step":1})"_s), u"start cannot be \"1e6\""_s);
    EXPECT_EQ(FaultOf(uR"({"start":1e6,"stop":1e300,"step":1})"_s), u"stop cannot be 1e+300"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("name":5)"_s)), u"name cannot be 5"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("df":5)"_s)), u"df cannot be 5"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("wings":{"a":5})"_s)), u"wings is not known"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("typo":1)"_s)), u"typo is not known"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("df":{"typo":1})"_s)), u"there is no member df.typo"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("df":{"method":4})"_s)), u"df.method cannot be 4"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("df":{"method":1.5})"_s)), u"df.method cannot be 1.5"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("df":{"preamplifier":1})"_s)), u"df.preamplifier cannot be 1"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("filter":{"azimuthFrom":361})"_s)), u"filter.azimuthFrom cannot be 361"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("alarm":{"sectors":[[1,2,3]]})"_s)), u"a sector cannot be [1,2,3]"_s);
    EXPECT_EQ(FaultOf(base.arg(uR"("alarm":{"sectors":7})"_s)), u"alarm.sectors cannot be 7"_s);
    EXPECT_EQ(FaultOf(base.arg(u"\"name\":\"%1\""_s.arg(QString(5000, u'x')))),
              u"the text of a range is longer than 4000"_s);
}

TEST(ScanRanges, ChannelsIncludeBothEndsAndAreNotLostToRounding) {
    EXPECT_EQ(ScanRanges::CountChannels(Parse(uR"({"start":118e6,"stop":137e6,"step":25e3})"_s)), 761.0);
    EXPECT_EQ(ScanRanges::CountChannels(Parse(uR"({"start":1e6,"stop":1e6,"step":25e3})"_s)), 1.0);
    EXPECT_EQ(ScanRanges::CountChannels(Parse(uR"({"start":0,"stop":0.3,"step":0.1})"_s)), 4.0);
    EXPECT_EQ(ScanRanges::CountChannels(Parse(uR"({"start":0,"stop":99,"step":10})"_s)), 10.0);
}

TEST(ScanRanges, FrequencyOfAChannelIsKnownWithinItsRangeOnly) {
    std::vector<FreqRangeDefinition> ranges(2, Parse(uR"({"start":100,"stop":109,"step":1})"_s));
    ScanRanges::Number(ranges);
    EXPECT_EQ(ScanRanges::GetChannelFrequency(ranges, 0, 0), 100.0);
    EXPECT_EQ(ScanRanges::GetChannelFrequency(ranges, 1, 19), 109.0);
    for (const auto& [range, channel] : {std::pair{-1, 0U}, {0, 10U}, {1, 9U}, {1, 20U}, {2, 20U}}) {
        EXPECT_TRUE(std::isnan(ScanRanges::GetChannelFrequency(ranges, range, channel))) << range;
    }
}

TEST(ScanRanges, ChannelsAreCountedOnOverTheRanges) {
    std::vector<FreqRangeDefinition> ranges(3, Parse(uR"({"start":0,"stop":9,"step":1})"_s));
    ScanRanges::Number(ranges);
    EXPECT_EQ(ranges[0].GetFirstChannel(), 0U);
    EXPECT_EQ(ranges[0].GetLastChannel(), 9U);
    EXPECT_EQ(ranges[2].GetIndex(), 2);
    EXPECT_EQ(ranges[2].GetFirstChannel(), 20U);
    EXPECT_EQ(ranges[2].GetLastChannel(), 29U);
}
