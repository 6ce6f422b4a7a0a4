#include "simulator/receivepath.h"

#include <gtest/gtest.h>

#include <optional>

using namespace Simulator;

namespace {

/// The method with which a device of one antenna measures a frequency.
std::optional<EZANMethod> MethodOf(const QString& antenna, EZANConverter converter, double frequency,
                                   const KvZANCommon::DFSettingsStruct& wanted) {
    Scenario scenario;
    scenario.device.options = {OPTION_ZAN_HFR};
    scenario.device.converters = {converter};
    scenario.device.antennas = {{antenna, 0, -1, 0.0}};
    const auto path =
        ReceivePath::Find(scenario.device, MakeInitialSettings(scenario), EMODE_FFM, frequency, wanted);
    return path ? std::optional(path->GetMethod(wanted)) : std::nullopt;
}

} // namespace

TEST(ReceivePath, MethodIsTheWantedOneOfThoseThatTheAntennaHas) {
    KvZANCommon::DFSettingsStruct wanted;
    wanted.method = METHOD_COR;
    EXPECT_EQ(MethodOf(QStringLiteral("PX115SR"), CONVERTER_RCV03, 121.5e6, wanted), METHOD_COR);
    wanted.superResolution = true;
    EXPECT_EQ(MethodOf(QStringLiteral("PX115SR"), CONVERTER_RCV03, 121.5e6, wanted), METHOD_SUPR);
}

TEST(ReceivePath, MethodOfAnAntennaOfOneMethodIsThatOneWhateverIsWanted) {
    KvZANCommon::DFSettingsStruct wanted;
    EXPECT_EQ(MethodOf(QStringLiteral("PX110"), CONVERTER_RCV01, 10e6, wanted), METHOD_WAT);
    EXPECT_EQ(MethodOf(QStringLiteral("PX106"), CONVERTER_RCV03, 121.5e6, wanted), METHOD_COR);
    EXPECT_EQ(MethodOf(QStringLiteral("PX109"), CONVERTER_RCV03, 1.5e9, wanted), METHOD_VEC);
    wanted.method = METHOD_VEC;
    wanted.superResolution = true;
    EXPECT_EQ(MethodOf(QStringLiteral("PX110"), CONVERTER_RCV01, 10e6, wanted), METHOD_WAT);
    EXPECT_EQ(MethodOf(QStringLiteral("PX106"), CONVERTER_RCV03, 121.5e6, wanted), METHOD_COR);
}
