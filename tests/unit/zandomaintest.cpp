#include "zancommon/zandomain.h"

#include "zancommon/zancharacteristics.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <vector>

namespace {

template <class Enumeration>
constexpr bool is32BitsWide = std::is_same_v<std::underlying_type_t<Enumeration>, qint32>;

static_assert(is32BitsWide<EZANType>);
static_assert(is32BitsWide<EZANConverter>);
static_assert(is32BitsWide<EOperationMode>);
static_assert(is32BitsWide<EZANSampleMode>);
static_assert(is32BitsWide<EFreqRange>);
static_assert(is32BitsWide<EZANMethod>);
static_assert(is32BitsWide<EZANMethodDetailed>);
static_assert(is32BitsWide<EZANPolarisation>);
static_assert(is32BitsWide<EZANOptions>);
static_assert(is32BitsWide<ZANCharacteristics::EAdjustMode>);

using Values = std::vector<int>;

TEST(ZANDomain, DeviceModelsKeepTheirNumbers) {
    EXPECT_EQ((Values{ZANTYPE_ZANTIDE, ZANTYPE_ZANREEF, ZANTYPE_ZANDUNE, ZANTYPE_ZANFERN, ZANTYPE_ZANMOSS,
                      ZANTYPE_5, ZANTYPE_6, ZANTYPE_7, ZANTYPE_END}),
              (Values{0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(ZANDomain, ConvertersKeepTheirNumbers) {
    EXPECT_EQ((Values{CONVERTER_NONE, CONVERTER_1, CONVERTER_RCV01, CONVERTER_RCV02, CONVERTER_RCV03,
                      CONVERTER_RCV04, CONVERTER_RCV05, CONVERTER_RCV06, CONVERTER_RCV07, CONVERTER_RCV08,
                      CONVERTER_RCV09, CONVERTER_RCV10}),
              (Values{0, 1, 2, 8, 3, 6, 4, 7, 5, 9, 10, 11}));
}

TEST(ZANDomain, OperationModesKeepTheirNumbers) {
    EXPECT_EQ((Values{OPMODE_END, OPMODE_ANY, OPMODE_0, OPMODE_FFM, OPMODE_WIDEBAND_FFM, OPMODE_SCAN,
                      OPMODE_SEARCH, OPMODE_5, OPMODE_TDMA, OPMODE_7, OPMODE_8, OPMODE_9}),
              (Values{-2, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(ZANDomain, SampleModesKeepTheirNumbers) {
    EXPECT_EQ((Values{SAMPLEMODE_END,
                      SAMPLEMODE_HF_100K,
                      SAMPLEMODE_HF_200K,
                      SAMPLEMODE_HF_500K,
                      SAMPLEMODE_HF_1M,
                      SAMPLEMODE_HF_WIDEBAND_1M,
                      SAMPLEMODE_HF_WIDEBAND_2M,
                      SAMPLEMODE_HF_WIDEBAND_5M,
                      SAMPLEMODE_HF_WIDEBAND_10M,
                      SAMPLEMODE_VUHF_100K,
                      SAMPLEMODE_VUHF_200K,
                      SAMPLEMODE_VUHF_500K,
                      SAMPLEMODE_VUHF_1M,
                      SAMPLEMODE_VUHF_2M,
                      SAMPLEMODE_VUHF_5M,
                      SAMPLEMODE_VUHF_10M,
                      SAMPLEMODE_VLF_100K,
                      SAMPLEMODE_VLF_200K,
                      SAMPLEMODE_VLF_500K,
                      SAMPLEMODE_TDMA_200K,
                      SAMPLEMODE_VLF_1M,
                      SAMPLEMODE_ZANMOSS_RCV02_04_06,
                      SAMPLEMODE_ZANMOSS_RCV08,
                      SAMPLEMODE_ZANMOSS_RCV09,
                      SAMPLEMODE_ZANMOSS_RCV10}),
              (Values{-1, 0,  1,  2,  3,  4,  5,  6,  7,    8,    9,    10,  11,
                      12, 13, 14, 15, 16, 17, 18, 19, 1000, 1001, 1002, 1003}));
}

TEST(ZANDomain, FrequencyRangesKeepTheirNumbers) {
    EXPECT_EQ((Values{FREQRANGE_UNKNOWN, FREQRANGE_HF, FREQRANGE_VUHF, FREQRANGE_VLF}),
              (Values{-1, 0, 1, 2}));
}

TEST(ZANDomain, MethodsKeepTheirNumbers) {
    EXPECT_EQ((Values{METHOD_WAT, METHOD_COR, METHOD_SUPR, METHOD_VEC}), (Values{0, 1, 2, 3}));
}

TEST(ZANDomain, DetailedMethodsAreBitsOfTheMasksInUse) {
    EXPECT_EQ((Values{METHODDETAILED_NONE, METHODDETAILED_WAT, METHODDETAILED_COR, METHODDETAILED_VEC,
                      METHODDETAILED_COR | METHODDETAILED_SUPR}),
              (Values{0, 1, 2, 4, 10}));
}

TEST(ZANDomain, PolarisationsKeepTheirNumbers) {
    EXPECT_EQ((Values{POLARISATION_LEFT, POLARISATION_RIGHT, POLARISATION_VERTICAL, POLARISATION_HORIZONTAL}),
              (Values{0, 1, 2, 3}));
}

TEST(ZANDomain, AdjustModesKeepTheirNumbers) {
    EXPECT_EQ((Values{ZANCharacteristics::ADJUST_DOWN, ZANCharacteristics::ADJUST_UP}), (Values{0, 1}));
}

TEST(ZANDomain, OptionsKeepTheirNumbers) {
    EXPECT_EQ((Values{OPTION_NONE,       OPTION_ZAN_CL,      OPTION_ZAN_DR,      OPTION_ZAN_GSM,
                      OPTION_ZAN_HFR,    OPTION_ZAN_LF,      OPTION_ZAN_TS,      OPTION_ZANTIDE_WB,
                      OPTION_ZANTIDE_SR, OPTION_ZANREEF_HF,  OPTION_ZANREEF_HBW, OPTION_ZANREEF_SR,
                      OPTION_ZANREEF_WB, OPTION_ZANFERN_4C,  OPTION_ZAN_TRA,     OPTION_ZAN_SSL,
                      OPTION_ZANTIDE_MC, OPTION_ZANTIDE_REM, OPTION_ZANREEF_MC,  OPTION_ZANREEF_REM}),
              (Values{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
}

TEST(ZANDomain, AnyFrequencyAndAnyBandwidthAreTheMostNegativeFiniteDouble) {
    EXPECT_EQ(ZANCharacteristics::fFREQUENCY_ANY, -1.7976931348623157e308);
    EXPECT_EQ(ZANCharacteristics::fBANDWIDTH_ANY, -1.7976931348623157e308);
}

TEST(ZANDomain, DefaultChannelCountIs60000) {
    EXPECT_EQ(ZANCharacteristics::MAX_CHANNEL_COUNT_DEFAULT, 60000);
}

TEST(ZANDomain, ConverterGroupsKeepTheirOrderAndAreClosedByZero) {
    const auto& hf = ZANCharacteristics::s_aHF_CONVERTERS;
    const auto& vuhf = ZANCharacteristics::s_aVUHF_CONVERTERS;
    EXPECT_EQ(Values(hf.begin(), hf.end()), (Values{2, 8, 10, 5, 0}));
    EXPECT_EQ(Values(vuhf.begin(), vuhf.end()), (Values{3, 6, 7, 9, 11, 0}));
}

TEST(ZANDomain, ConvertersBelongToTheGroupThatListsThem) {
    struct Row {
        EZANConverter converter;
        bool hf;
        bool vuhf;
    };
    for (const Row& row : {
             Row{CONVERTER_RCV01, true, false},
             Row{CONVERTER_RCV02, true, false},
             Row{CONVERTER_RCV03, false, true},
             Row{CONVERTER_RCV04, false, true},
             Row{CONVERTER_RCV06, false, true},
             Row{CONVERTER_RCV07, true, false},
             Row{CONVERTER_RCV08, false, true},
             Row{CONVERTER_RCV09, true, false},
             Row{CONVERTER_RCV10, false, true},
             Row{CONVERTER_1, false, false},
             Row{static_cast<EZANConverter>(12), false, false},
         }) {
        EXPECT_EQ(ZANCharacteristics::IsInGroup(ZANCharacteristics::s_aHF_CONVERTERS, row.converter), row.hf)
            << row.converter;
        EXPECT_EQ(ZANCharacteristics::IsInGroup(ZANCharacteristics::s_aVUHF_CONVERTERS, row.converter),
                  row.vuhf)
            << row.converter;
    }
}

TEST(ZANDomain, Rcv05IsNeitherHfNorVuhfConverter) {
    EXPECT_FALSE(ZANCharacteristics::IsInGroup(ZANCharacteristics::s_aHF_CONVERTERS, CONVERTER_RCV05));
    EXPECT_FALSE(ZANCharacteristics::IsInGroup(ZANCharacteristics::s_aVUHF_CONVERTERS, CONVERTER_RCV05));
}

TEST(ZANDomain, NoConverterIsInNoGroup) {
    EXPECT_FALSE(ZANCharacteristics::IsInGroup(ZANCharacteristics::s_aHF_CONVERTERS, CONVERTER_NONE));
    EXPECT_FALSE(ZANCharacteristics::IsInGroup(ZANCharacteristics::s_aVUHF_CONVERTERS, CONVERTER_NONE));
}

TEST(ZANDomain, GroupEndsAtItsClosingZero) {
    constexpr std::array group{CONVERTER_RCV01, CONVERTER_NONE, CONVERTER_RCV03};
    EXPECT_TRUE(ZANCharacteristics::IsInGroup(group, CONVERTER_RCV01));
    EXPECT_FALSE(ZANCharacteristics::IsInGroup(group, CONVERTER_RCV03));
}

TEST(ZANDomain, LimitsAreInclusive) {
    EXPECT_TRUE(ZANCharacteristics::LimitsHold(9000, 1e6, 9000, 1e6));
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, 8999.9, 1e6));
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, 9000, 1000000.1));
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, 2e6, 2e6));
}

TEST(ZANDomain, AnyFrequencyIsNeverCompared) {
    constexpr double any = ZANCharacteristics::fFREQUENCY_ANY;
    EXPECT_TRUE(ZANCharacteristics::LimitsHold(9000, 1e6, any, any));
    EXPECT_TRUE(ZANCharacteristics::LimitsHold(9000, 1e6, any, 1e6));
    EXPECT_TRUE(ZANCharacteristics::LimitsHold(9000, 1e6, 9000, any));
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, any, 2e6));
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, 0, any));
    // Not even with limits that nothing else can lie in.
    EXPECT_TRUE(ZANCharacteristics::LimitsHold(1e6, 9000, any, any));
}

TEST(ZANDomain, NegativeFrequenciesAreCompared) {
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, -1, 1e6));
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, -1e308, 1e6));
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, -2, 9000, -1));
    EXPECT_TRUE(ZANCharacteristics::LimitsHold(-2, 1e6, -1, -1));
}

TEST(ZANDomain, NoLimitsHoldANumberThatIsNone) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, nan, 1e6));
    EXPECT_FALSE(ZANCharacteristics::LimitsHold(9000, 1e6, 9000, nan));
}

TEST(ZANDomain, CatalogueRowsAreEndRowsByDefault) {
    const ZANCharacteristics::AntennaDescription antenna;
    EXPECT_TRUE(antenna.name.isEmpty());
    EXPECT_EQ(antenna.minFrequency, 0.0);
    EXPECT_EQ(antenna.maxFrequency, 0.0);
    EXPECT_EQ(antenna.dfMethods, 0);

    const ZANCharacteristics::SampleModeDescription row;
    EXPECT_EQ(row.sampleMode, SAMPLEMODE_END);
    EXPECT_EQ(row.deviceTypes.front(), ZANTYPE_END);
    EXPECT_EQ(row.operationModes.front(), OPMODE_END);
}

TEST(ZANDomain, SampleModeRowHoldsTenModelsAndTenModesBesideTheClosingValues) {
    using Row = ZANCharacteristics::SampleModeDescription;
    EXPECT_EQ(Row().deviceTypes.size(), 11U);
    EXPECT_EQ(Row().operationModes.size(), 11U);
}

} // namespace
