#include "support/allocations.h"
#include "support/devicetree.h"
#include "support/tracelines.h"
#include "zancommon/zancharacteristics.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <set>

using namespace Qt::StringLiterals;

namespace {

constexpr double ANY_BANDWIDTH = ZANCharacteristics::fBANDWIDTH_ANY;

} // namespace

TEST(ZANCharacteristicsAllocation, AllocationsOfStringsAndContainersAreCounted) {
    EXPECT_GT(AllocationsOf([] { EXPECT_FALSE(QString(100, u'x').isEmpty()); }), 0);
    EXPECT_GT(AllocationsOf([] { EXPECT_FALSE(std::set<double>{1.0}.empty()); }), 0);
    EXPECT_EQ(AllocationsOf([] {}), 0);
}

TEST(ZANCharacteristicsAllocation, QuestionsWithoutAListAsAnswerAllocateNothingOnceTheyWereAsked) {
    const DeviceTree device;
    const TraceLines traces;
    ErrorHandler::Instance().SetTraceMask(0);
    // An antenna with sample modes, one whose range none covers, and one with an unknown converter. No
    // antenna serves frequencies above.
    DeviceTree::SetAntennas({MakeAntenna(u"PX104SR_L"_s, u"RCV01"_s, 3e5, 3e7),
                             MakeAntenna(u"PX106"_s, u"RCV03"_s, 3e7, 4e9),
                             MakeAntenna(u"unknown"_s, u"unknown"_s, 5e9, 6e9)});
    ZANOptions::Instance()->AddOption(OPTION_ZAN_HFR);
    ZANCharacteristics& characteristics = DeviceTree::Connect();
    const AntennaData* antenna = nullptr; // the one that is asked about
    double frequency = 0.0;
    double start = 0.0;
    double stop = 0.0;
    double bandwidth = ANY_BANDWIDTH;
    unsigned short azimuth = 0;
    struct Question {
        const char* name;
        std::function<void()> ask;
    };
    const auto questions = std::to_array<Question>({
        {"GetBestSampleMode",
         [&] { (void)characteristics.GetBestSampleMode(OPMODE_SCAN, frequency, frequency, bandwidth); }},
        {"IsAntennaSupportedByDevice",
         [&] { (void)characteristics.IsAntennaSupportedByDevice(antenna, OPMODE_SCAN); }},
        {"IsAntennaSupportedByDevice at a position",
         [&] { (void)characteristics.IsAntennaSupportedByDevice(2, OPMODE_SCAN); }},
        {"ToNextValidResolutionBandwidth",
         [&] {
             (void)characteristics.ToNextValidResolutionBandwidth(OPMODE_SCAN, frequency, frequency,
                                                                  bandwidth, 7000.0);
         }},
        {"GetDefaultRealtimeBandwidth",
         [&] { (void)characteristics.GetDefaultRealtimeBandwidth(OPMODE_SCAN, frequency, frequency); }},
        {"GetDefaultResolutionBandwidth",
         [&] {
             (void)characteristics.GetDefaultResolutionBandwidth(OPMODE_SCAN, frequency, frequency,
                                                                 bandwidth);
         }},
        {"GetConverterForFrequencyRange",
         [&] { (void)characteristics.GetConverterForFrequencyRange(frequency, frequency); }},
        {"IsHfPreampAvailable", [&] { (void)characteristics.IsHfPreampAvailable(); }},
        {"IsVuhfPreampAvailable", [&] { (void)characteristics.IsVuhfPreampAvailable(); }},
        {"GetRangeTypeOfAntenna", [&] { (void)characteristics.GetRangeTypeOfAntenna(antenna, OPMODE_SCAN); }},
        {"GetRangeTypeForFrequency", [&] { (void)characteristics.GetRangeTypeForFrequency(frequency); }},
        {"HasAntennaDFMethod",
         [&] { (void)characteristics.HasAntennaDFMethod(antenna, frequency, METHODDETAILED_SUPR); }},
        {"GetAntennaForFrequency", [&] { (void)characteristics.GetAntennaForFrequency(frequency, true); }},
        {"GetMinFreq", [&] { (void)characteristics.GetMinFreq(OPMODE_SCAN); }},
        {"GetMaxFreq", [&] { (void)characteristics.GetMaxFreq(OPMODE_SCAN); }},
        {"ToNextValidFrequency",
         [&] {
             start = frequency;
             stop = 1e6;
             (void)characteristics.ToNextValidFrequency(OPMODE_WIDEBAND_FFM, start, stop);
         }},
        {"ToNextValidFrequencyRange",
         [&] {
             start = frequency;
             stop = frequency + 5e6;
             (void)characteristics.ToNextValidFrequencyRange(OPMODE_SCAN, start, stop, bandwidth, bandwidth,
                                                             ZANCharacteristics::ADJUST_DOWN);
         }},
        {"AdjustAzimuthToDisplayMode", [&] { (void)characteristics.AdjustAzimuthToDisplayMode(azimuth, 3); }},
    });
    for (const auto& each : questions) {
        SCOPED_TRACE(each.name);
        each.ask();
        for (int index = 0; index <= 3; ++index) { // the last one is not an antenna
            antenna = characteristics.GetAntennaByIndex(index);
            frequency = antenna ? antenna->maxRange - 1e6 : 9e9;
            EXPECT_EQ(AllocationsOf(each.ask), 0) << "about antenna " << index;
        }
    }
    EXPECT_TRUE(traces.lines.isEmpty());
}
