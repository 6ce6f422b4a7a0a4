#include "zancommon/dfsettingsparams.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

using KvZANCommon::DFSettingsParams;

namespace {

TEST(DFSettingsParams, StartWithTheDefaults) {
    const DFSettingsParams params;
    EXPECT_EQ(params.GetDFBandwidthKey(), 7);
    EXPECT_EQ(params.GetDFModeKey(), 0);
    EXPECT_EQ(params.GetUpdateIntervalKey(), 4);
    EXPECT_EQ(params.GetLevelThreshold(), 0.0);
}

TEST(DFSettingsParams, EachSettingIsItsOwn) {
    DFSettingsParams params;
    params.SetDFBandwidthKey(1);
    params.SetDFModeKey(2);
    params.SetUpdateIntervalKey(3);
    params.SetLevelThreshold(-12.7);
    EXPECT_EQ(params.GetDFBandwidthKey(), 1);
    EXPECT_EQ(params.GetDFModeKey(), 2);
    EXPECT_EQ(params.GetUpdateIntervalKey(), 3);
    EXPECT_EQ(params.GetLevelThreshold(), -12.7);
}

TEST(DFSettingsParams, KeysAreSetWithoutAndReadWithASign) {
    static_assert(
        std::is_same_v<decltype(&DFSettingsParams::GetDFBandwidthKey), long (DFSettingsParams::*)() const>);
    static_assert(
        std::is_same_v<decltype(&DFSettingsParams::SetDFModeKey), void (DFSettingsParams::*)(unsigned long)>);
    DFSettingsParams params;
    params.SetUpdateIntervalKey(std::numeric_limits<unsigned long>::max());
    EXPECT_EQ(params.GetUpdateIntervalKey(), -1);
}

TEST(DFSettingsParams, CopyHoldsTheSameAndIsIndependent) {
    static_assert(!std::is_polymorphic_v<DFSettingsParams>);
    DFSettingsParams params;
    params.SetDFModeKey(5);
    params.SetLevelThreshold(1.5);
    DFSettingsParams copy = params;
    copy.SetDFModeKey(6);
    EXPECT_EQ(params.GetDFModeKey(), 5);
    EXPECT_EQ(copy.GetLevelThreshold(), 1.5);
    params = copy;
    EXPECT_EQ(params.GetDFModeKey(), 6);
}

} // namespace
