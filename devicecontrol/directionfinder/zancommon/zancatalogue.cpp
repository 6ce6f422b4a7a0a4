#include "zancommon/zancharacteristics.h"

#include "zancommon/closedtable.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>

// The catalogue: what devices, receivers and antennas can do, one row per line. The order of the rows
// matters: a search takes the first row that fits, or the first of those with the highest priority.

namespace {

using Antenna = ZANCharacteristics::AntennaDescription;
using SampleMode = ZANCharacteristics::SampleModeDescription;
using DeviceTypes = decltype(SampleMode::deviceTypes);
using OperationModes = decltype(SampleMode::operationModes);

consteval double operator""_Hz(unsigned long long value) {
    return static_cast<double>(value);
}
consteval double operator""_kHz(unsigned long long value) {
    return static_cast<double>(value * 1'000);
}
consteval double operator""_MHz(unsigned long long value) {
    return static_cast<double>(value * 1'000'000);
}

constexpr qint32 SUPER_RESOLUTION = METHODDETAILED_COR | METHODDETAILED_SUPR;

// Lists of devices and operation modes that several rows of the sample-mode table use. clang-format off
constexpr DeviceTypes TIDE_REEF_5_DUNE_7{ZANTYPE_ZANTIDE, ZANTYPE_ZANREEF, ZANTYPE_5,
                                         ZANTYPE_ZANDUNE, ZANTYPE_7,       ZANTYPE_END};
constexpr DeviceTypes TIDE_7{ZANTYPE_ZANTIDE, ZANTYPE_7, ZANTYPE_END};
constexpr DeviceTypes REEF_7{ZANTYPE_ZANREEF, ZANTYPE_7, ZANTYPE_END};
constexpr DeviceTypes TIDE_REEF_FERN_5_DUNE_7{ZANTYPE_ZANTIDE, ZANTYPE_ZANREEF, ZANTYPE_ZANFERN, ZANTYPE_5,
                                              ZANTYPE_ZANDUNE, ZANTYPE_7,       ZANTYPE_END};
constexpr DeviceTypes REEF_FERN_7{ZANTYPE_ZANREEF, ZANTYPE_ZANFERN, ZANTYPE_7, ZANTYPE_END};
constexpr DeviceTypes TIDE_FERN_7{ZANTYPE_ZANTIDE, ZANTYPE_ZANFERN, ZANTYPE_7, ZANTYPE_END};
constexpr DeviceTypes MOSS{ZANTYPE_ZANMOSS, ZANTYPE_END};

constexpr OperationModes SCAN_SEARCH_WIDEBAND{OPMODE_SCAN, OPMODE_SEARCH, OPMODE_WIDEBAND_FFM, OPMODE_END};
constexpr OperationModes ANY_MODE{OPMODE_ANY, OPMODE_END};
constexpr OperationModes FFM_SCAN_SEARCH_WIDEBAND{OPMODE_FFM, OPMODE_SCAN, OPMODE_SEARCH, OPMODE_WIDEBAND_FFM,
                                                  OPMODE_END};
constexpr OperationModes SEARCH_WIDEBAND{OPMODE_SEARCH, OPMODE_WIDEBAND_FFM, OPMODE_END};
constexpr OperationModes TDMA{OPMODE_TDMA, OPMODE_END};
constexpr OperationModes FFM_SCAN_SEARCH{OPMODE_FFM, OPMODE_SCAN, OPMODE_SEARCH, OPMODE_END};
// clang-format on

} // namespace

// clang-format off
constexpr std::array<ZANCharacteristics::AntennaDescription, 49> ZANCharacteristics::s_aAntennaLibrary{{
    // model, lowest and highest frequency, methods
    {u"PX101", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX102", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX103", 300_kHz, 30_MHz, METHODDETAILED_COR},
    {u"PX104_L", 300_kHz, 30_MHz, METHODDETAILED_COR},
    {u"PX104_R", 300_kHz, 30_MHz, METHODDETAILED_COR},
    {u"PX105", 20_MHz, 650_MHz, METHODDETAILED_WAT},
    {u"PX106", 20_MHz, 1300_MHz, METHODDETAILED_COR},
    {u"PX107", 20_MHz, 200_MHz, METHODDETAILED_COR},
    {u"PX108", 300_kHz, 3600_MHz, METHODDETAILED_NONE},
    {u"PX109", 1300_MHz, 3000_MHz, METHODDETAILED_VEC},
    {u"PX110", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX110P", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX110D", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX111HF", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX112(1)", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX112(2)", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX113", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX114", 800_MHz, 2000_MHz, METHODDETAILED_VEC},
    {u"PX109_VAR22", 1300_MHz, 2000_MHz, METHODDETAILED_VEC},
    {u"PX115", 20_MHz, 1300_MHz, METHODDETAILED_COR},
    {u"PX116", 300_kHz, 30_MHz, METHODDETAILED_WAT},
    {u"PX116", 30000001_Hz, 3000_MHz, METHODDETAILED_COR},
    {u"PX117", 300_kHz, 105_MHz, METHODDETAILED_WAT},
    {u"PX117", 105000001_Hz, 3000_MHz, METHODDETAILED_VEC},
    {u"PX118", 300_kHz, 105_MHz, METHODDETAILED_WAT},
    {u"PX118", 105000001_Hz, 3000_MHz, METHODDETAILED_VEC},
    {u"PX119_VLF", 1_Hz, 30_MHz, METHODDETAILED_WAT},
    {u"PX120", 9_kHz, 1_MHz, METHODDETAILED_WAT},
    {u"PX120_R", 9_kHz, 1_MHz, METHODDETAILED_WAT},
    {u"PX120_L", 9_kHz, 1_MHz, METHODDETAILED_WAT},
    {u"PX115SR", 20_MHz, 1300_MHz, SUPER_RESOLUTION},
    {u"PX107SR", 20_MHz, 450_MHz, SUPER_RESOLUTION},
    {u"PX104SR_L", 300_kHz, 30_MHz, SUPER_RESOLUTION},
    {u"PX104SR_R", 300_kHz, 30_MHz, SUPER_RESOLUTION},
    {u"PX104SR_100m_L", 300_kHz, 30_MHz, SUPER_RESOLUTION},
    {u"PX104SR_100m_R", 300_kHz, 30_MHz, SUPER_RESOLUTION},
    {u"PX121_V", 20_MHz, 1300_MHz, METHODDETAILED_COR},
    {u"PX121_H", 20_MHz, 1300_MHz, METHODDETAILED_COR},
    {u"PX122", 20_MHz, 1300_MHz, METHODDETAILED_COR},
    {u"PX122", 1300000001_Hz, 3600_MHz, METHODDETAILED_VEC},
    {u"PX104SR_150m_L", 300_kHz, 30_MHz, SUPER_RESOLUTION},
    {u"PX104SR_150m_R", 300_kHz, 30_MHz, SUPER_RESOLUTION},
    {u"PX122 (A/P)", 20_MHz, 1300_MHz, METHODDETAILED_COR},
    {u"PX122 (A/P)", 1300000001_Hz, 3600_MHz, METHODDETAILED_VEC},
    {u"PX115SR_VAR1x", 20_MHz, 1300_MHz, SUPER_RESOLUTION},
    {u"PX107SR_VAR1x", 20_MHz, 450_MHz, SUPER_RESOLUTION},
    {u"PX121_VAR2x_V", 20_MHz, 1300_MHz, METHODDETAILED_COR},
    {u"PX121_VAR2x_H", 20_MHz, 1300_MHz, METHODDETAILED_COR},
    {u"", 0_Hz, 0_Hz, METHODDETAILED_NONE},
}};

constexpr std::array<double, 8> ZANCharacteristics::s_aRESBWS_STD_20_2K{20, 50, 100, 200, 500, 1000, 2000, -1.0};
constexpr std::array<double, 7> ZANCharacteristics::s_aRESBWS_STD_50_2K{50, 100, 200, 500, 1000, 2000, -1.0};
constexpr std::array<double, 10> ZANCharacteristics::s_aRESBWS_STD_50_20K{50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000, -1.0};
constexpr std::array<double, 9> ZANCharacteristics::s_aRESBWS_STD_100_20K{100, 200, 500, 1000, 2000, 5000, 10000, 20000, -1.0};
constexpr std::array<double, 8> ZANCharacteristics::s_aRESBWS_STD_200_20K{200, 500, 1000, 2000, 5000, 10000, 20000, -1.0};
constexpr std::array<double, 7> ZANCharacteristics::s_aRESBWS_STD_500_20K{500, 1000, 2000, 5000, 10000, 20000, -1.0};
constexpr std::array<double, 9> ZANCharacteristics::s_aRESBWS_STD_500_100K{500, 1000, 2000, 5000, 10000, 20000, 50000, 100000, -1.0};
constexpr std::array<double, 10> ZANCharacteristics::s_aRESBWS_STD_500_200K{500, 1000, 2000, 5000, 10000, 20000, 50000, 100000, 200000, -1.0};
constexpr std::array<double, 8> ZANCharacteristics::s_aRESBWS_STD_1K_100K{1000, 2000, 5000, 10000, 20000, 50000, 100000, -1.0};
constexpr std::array<double, 9> ZANCharacteristics::s_aRESBWS_STD_1K_200K{1000, 2000, 5000, 10000, 20000, 50000, 100000, 200000, -1.0};
constexpr std::array<double, 11> ZANCharacteristics::s_aRESBWS_EXT_1K_100K{1000, 2000, 5000, 8333, 10000, 12500, 20000, 25000, 50000, 100000, -1.0};
constexpr std::array<double, 12> ZANCharacteristics::s_aRESBWS_EXT_1K_200K{1000, 2000, 5000, 8333, 10000, 12500, 20000, 25000, 50000, 100000, 200000, -1.0};
constexpr std::array<double, 8> ZANCharacteristics::s_aRESBWS_STD_2K_200K{2000, 5000, 10000, 20000, 50000, 100000, 200000, -1.0};
constexpr std::array<double, 11> ZANCharacteristics::s_aRESBWS_EXT_2K_200K{2000, 5000, 8333, 10000, 12500, 20000, 25000, 50000, 100000, 200000, -1.0};
constexpr std::array<double, 2> ZANCharacteristics::s_aRESBWS_STD_200K_200K{200000, -1.0};
constexpr std::array<double, 8> ZANCharacteristics::s_aRESBWS_HF_0125K_25K{125, 250, 500, 1000, 2500, 5000, 25000, -1.0};
constexpr std::array<double, 12> ZANCharacteristics::s_aRESBWS_VUHF_1K_200K{1000, 2000, 4000, 8000, 10000, 12500, 20000, 25000, 50000, 100000, 200000, -1.0};
constexpr std::array<double, 6> ZANCharacteristics::s_aRESBWS_VUHF_5K_50K{5000, 10000, 12500, 25000, 50000, -1.0};
constexpr std::array<double, 7> ZANCharacteristics::s_aRESBWS_HF_0250K_12K{250, 500, 1000, 2500, 6000, 12000, -1.0};

constexpr std::array<ZANCharacteristics::SampleModeDescription, 30> ZANCharacteristics::s_aSampleModeDescription{{
    // sample mode, devices, required and excluded option, converters, realtime bandwidth, lowest and highest frequency, operation modes, priority, resolution bandwidths, preamplifier, range class
    {SAMPLEMODE_HF_100K,             TIDE_REEF_5_DUNE_7,      OPTION_ZAN_HFR,     OPTION_NONE, CONVERTER_RCV01, CONVERTER_NONE,  100_kHz, 300_kHz,  30_MHz,       SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_STD_20_2K.data(),     1, FREQRANGE_HF},
    {SAMPLEMODE_HF_200K,             TIDE_REEF_5_DUNE_7,      OPTION_ZAN_HFR,     OPTION_NONE, CONVERTER_RCV01, CONVERTER_NONE,  200_kHz, 300_kHz,  30_MHz,       SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_STD_50_2K.data(),     1, FREQRANGE_HF},
    {SAMPLEMODE_HF_500K,             TIDE_REEF_5_DUNE_7,      OPTION_ZAN_HFR,     OPTION_NONE, CONVERTER_RCV01, CONVERTER_NONE,  500_kHz, 300_kHz,  30_MHz,       SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_STD_100_20K.data(),   1, FREQRANGE_HF},
    {SAMPLEMODE_HF_1M,               TIDE_REEF_5_DUNE_7,      OPTION_NONE,        OPTION_NONE, CONVERTER_RCV01, CONVERTER_NONE,  1_MHz,   300_kHz,  30_MHz,       ANY_MODE,                 1, s_aRESBWS_STD_200_20K.data(),   1, FREQRANGE_HF},
    {SAMPLEMODE_HF_WIDEBAND_1M,      TIDE_7,                  OPTION_ZANTIDE_WB,  OPTION_NONE, CONVERTER_RCV03, CONVERTER_RCV01, 1_MHz,   300_kHz,  30_MHz,       FFM_SCAN_SEARCH_WIDEBAND, 0, s_aRESBWS_STD_200_20K.data(),   0, FREQRANGE_HF},
    {SAMPLEMODE_HF_WIDEBAND_1M,      REEF_7,                  OPTION_ZANREEF_HF,  OPTION_NONE, CONVERTER_RCV03, CONVERTER_RCV01, 1_MHz,   300_kHz,  30_MHz,       FFM_SCAN_SEARCH_WIDEBAND, 0, s_aRESBWS_STD_200_20K.data(),   0, FREQRANGE_HF},
    {SAMPLEMODE_HF_WIDEBAND_2M,      TIDE_7,                  OPTION_ZANTIDE_WB,  OPTION_NONE, CONVERTER_RCV03, CONVERTER_RCV01, 2_MHz,   300_kHz,  30_MHz,       SCAN_SEARCH_WIDEBAND,     0, s_aRESBWS_STD_500_20K.data(),   0, FREQRANGE_HF},
    {SAMPLEMODE_HF_WIDEBAND_5M,      TIDE_7,                  OPTION_ZANTIDE_WB,  OPTION_NONE, CONVERTER_RCV03, CONVERTER_RCV01, 5_MHz,   300_kHz,  30_MHz,       SCAN_SEARCH_WIDEBAND,     0, s_aRESBWS_STD_1K_200K.data(),   0, FREQRANGE_HF},
    {SAMPLEMODE_HF_WIDEBAND_10M,     TIDE_7,                  OPTION_ZANTIDE_WB,  OPTION_NONE, CONVERTER_RCV03, CONVERTER_RCV01, 10_MHz,  300_kHz,  30_MHz,       SCAN_SEARCH_WIDEBAND,     0, s_aRESBWS_STD_2K_200K.data(),   0, FREQRANGE_HF},
    {SAMPLEMODE_VUHF_100K,           TIDE_REEF_FERN_5_DUNE_7, OPTION_ZAN_HFR,     OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  100_kHz, 20_MHz,   3600_MHz,     SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_STD_20_2K.data(),     1, FREQRANGE_VUHF},
    {SAMPLEMODE_VUHF_200K,           TIDE_REEF_FERN_5_DUNE_7, OPTION_ZAN_HFR,     OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  200_kHz, 20_MHz,   3600_MHz,     SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_STD_50_2K.data(),     1, FREQRANGE_VUHF},
    {SAMPLEMODE_VUHF_500K,           TIDE_REEF_FERN_5_DUNE_7, OPTION_ZAN_HFR,     OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  500_kHz, 20_MHz,   3600_MHz,     SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_STD_100_20K.data(),   1, FREQRANGE_VUHF},
    {SAMPLEMODE_VUHF_1M,             TIDE_REEF_FERN_5_DUNE_7, OPTION_ZAN_HFR,     OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  1_MHz,   20_MHz,   3600_MHz,     SEARCH_WIDEBAND,          1, s_aRESBWS_STD_200_20K.data(),   1, FREQRANGE_VUHF},
    {SAMPLEMODE_VUHF_2M,             TIDE_REEF_FERN_5_DUNE_7, OPTION_NONE,        OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  2_MHz,   20_MHz,   3600_MHz,     ANY_MODE,                 1, s_aRESBWS_EXT_1K_100K.data(),   1, FREQRANGE_VUHF},
    {SAMPLEMODE_VUHF_5M,             TIDE_7,                  OPTION_NONE,        OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  5_MHz,   20_MHz,   3600_MHz,     SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_EXT_1K_200K.data(),   1, FREQRANGE_VUHF},
    {SAMPLEMODE_VUHF_5M,             REEF_FERN_7,             OPTION_ZANREEF_HBW, OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  5_MHz,   20_MHz,   3600_MHz,     SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_EXT_1K_200K.data(),   1, FREQRANGE_VUHF},
    {SAMPLEMODE_VUHF_10M,            TIDE_FERN_7,             OPTION_NONE,        OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  10_MHz,  20_MHz,   3600_MHz,     SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_EXT_2K_200K.data(),   1, FREQRANGE_VUHF},
    {SAMPLEMODE_VUHF_10M,            REEF_FERN_7,             OPTION_ZANREEF_HBW, OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  10_MHz,  20_MHz,   3600_MHz,     SCAN_SEARCH_WIDEBAND,     1, s_aRESBWS_EXT_2K_200K.data(),   1, FREQRANGE_VUHF},
    {SAMPLEMODE_VLF_100K,            TIDE_REEF_5_DUNE_7,      OPTION_ZAN_LF,      OPTION_NONE, CONVERTER_RCV07, CONVERTER_RCV01, 100_kHz, 9_kHz,    1_MHz,        ANY_MODE,                 0, s_aRESBWS_STD_20_2K.data(),     0, FREQRANGE_VLF},
    {SAMPLEMODE_VLF_200K,            TIDE_REEF_5_DUNE_7,      OPTION_ZAN_LF,      OPTION_NONE, CONVERTER_RCV07, CONVERTER_RCV01, 200_kHz, 9_kHz,    1_MHz,        SCAN_SEARCH_WIDEBAND,     0, s_aRESBWS_STD_50_2K.data(),     0, FREQRANGE_VLF},
    {SAMPLEMODE_VLF_500K,            TIDE_REEF_5_DUNE_7,      OPTION_ZAN_LF,      OPTION_NONE, CONVERTER_RCV07, CONVERTER_RCV01, 500_kHz, 9_kHz,    1_MHz,        SCAN_SEARCH_WIDEBAND,     0, s_aRESBWS_STD_100_20K.data(),   0, FREQRANGE_VLF},
    {SAMPLEMODE_TDMA_200K,           TIDE_REEF_5_DUNE_7,      OPTION_NONE,        OPTION_NONE, CONVERTER_RCV03, CONVERTER_NONE,  200_kHz, 20_MHz,   3600_MHz,     TDMA,                     1, s_aRESBWS_STD_200K_200K.data(), 1, FREQRANGE_VUHF},
    {SAMPLEMODE_VLF_1M,              TIDE_REEF_5_DUNE_7,      OPTION_ZAN_LF,      OPTION_NONE, CONVERTER_RCV07, CONVERTER_RCV01, 1_MHz,   9_kHz,    1_MHz,        FFM_SCAN_SEARCH_WIDEBAND, 0, s_aRESBWS_STD_200_20K.data(),   0, FREQRANGE_VLF},
    {SAMPLEMODE_ZANMOSS_RCV02_04_06, MOSS,                    OPTION_NONE,        OPTION_NONE, CONVERTER_RCV02, CONVERTER_NONE,  25_kHz,  300_kHz,  30_MHz,       FFM_SCAN_SEARCH,          0, s_aRESBWS_HF_0125K_25K.data(),  1, FREQRANGE_HF},
    {SAMPLEMODE_ZANMOSS_RCV02_04_06, MOSS,                    OPTION_NONE,        OPTION_NONE, CONVERTER_RCV04, CONVERTER_NONE,  200_kHz, 20_MHz,   1300_MHz,     FFM_SCAN_SEARCH,          0, s_aRESBWS_VUHF_1K_200K.data(),  0, FREQRANGE_VUHF},
    {SAMPLEMODE_ZANMOSS_RCV02_04_06, MOSS,                    OPTION_NONE,        OPTION_NONE, CONVERTER_RCV06, CONVERTER_NONE,  200_kHz, 1300_MHz, 3000_MHz,     FFM_SCAN_SEARCH,          0, s_aRESBWS_VUHF_1K_200K.data(),  0, FREQRANGE_VUHF},
    {SAMPLEMODE_ZANMOSS_RCV08,       MOSS,                    OPTION_NONE,        OPTION_NONE, CONVERTER_RCV08, CONVERTER_NONE,  200_kHz, 20_MHz,   1300_MHz,     FFM_SCAN_SEARCH,          0, s_aRESBWS_VUHF_5K_50K.data(),   0, FREQRANGE_VUHF},
    {SAMPLEMODE_ZANMOSS_RCV09,       MOSS,                    OPTION_NONE,        OPTION_NONE, CONVERTER_RCV09, CONVERTER_NONE,  25_kHz,  500_kHz,  29999990_Hz,  FFM_SCAN_SEARCH,          0, s_aRESBWS_HF_0250K_12K.data(),  0, FREQRANGE_HF},
    {SAMPLEMODE_ZANMOSS_RCV10,       MOSS,                    OPTION_NONE,        OPTION_NONE, CONVERTER_RCV10, CONVERTER_NONE,  200_kHz, 20_MHz,   999999990_Hz, FFM_SCAN_SEARCH,          0, s_aRESBWS_VUHF_5K_50K.data(),   0, FREQRANGE_VUHF},
    {}, // the default sample mode closes the table
}};

constexpr std::array<ZANCharacteristics::DeviceTypeName, 5> ZANCharacteristics::s_aDeviceTypeNames{{
    {u"ZANREEF", ZANTYPE_ZANREEF},
    {u"ZANTIDE", ZANTYPE_ZANTIDE},
    {u"ZANFERN", ZANTYPE_ZANFERN},
    {u"ZANDUNE", ZANTYPE_ZANDUNE},
    {u"ZANMOSS", ZANTYPE_ZANMOSS},
}};

constexpr std::array<ZANCharacteristics::ConverterTypeName, 10> ZANCharacteristics::s_aConverterTypeNames{{
    {u"RCV01", CONVERTER_RCV01},
    {u"RCV02", CONVERTER_RCV02},
    {u"RCV03", CONVERTER_RCV03},
    {u"RCV04", CONVERTER_RCV04},
    {u"RCV05", CONVERTER_RCV05},
    {u"RCV06", CONVERTER_RCV06},
    {u"RCV07", CONVERTER_RCV07},
    {u"RCV08", CONVERTER_RCV08},
    {u"RCV09", CONVERTER_RCV09},
    {u"RCV10", CONVERTER_RCV10},
}};
// clang-format on

// Checks of the tables by the compiler.

namespace {

constexpr bool IsClosed(std::span<const EZANConverter> group) {
    return std::ranges::find(group, CONVERTER_NONE) == std::prev(group.end());
}

constexpr bool AreDisjoint(std::span<const EZANConverter> first, std::span<const EZANConverter> second) {
    return std::ranges::none_of(first, [second](EZANConverter converter) {
        return ZANCharacteristics::IsInGroup(second, converter);
    });
}

static_assert(IsClosed(ZANCharacteristics::s_aHF_CONVERTERS));
static_assert(IsClosed(ZANCharacteristics::s_aVUHF_CONVERTERS));
static_assert(AreDisjoint(ZANCharacteristics::s_aHF_CONVERTERS, ZANCharacteristics::s_aVUHF_CONVERTERS));

/// Whether the last row closes the table, and only this one.
template <class Table, class IsEnd>
constexpr bool IsClosedBy(const Table& table, IsEnd isEnd) {
    return isEnd(table.back()) && std::ranges::count_if(table, isEnd) == 1;
}

constexpr bool HasOrderedFrequencies(const auto& row) {
    return row.minFrequency > 0.0 && row.minFrequency <= row.maxFrequency;
}

constexpr bool IsAscendingBandwidthList(std::span<const double> list) {
    const auto bandwidths = list.first(list.size() - 1);
    return list.back() == -1.0 && !bandwidths.empty() && bandwidths.front() > 0.0 &&
           std::ranges::adjacent_find(bandwidths, std::ranges::greater_equal()) == bandwidths.end();
}

/// A name in a form that can be compared at compile time.
constexpr std::u16string_view NameOf(const auto& row) {
    return {row.name.utf16(), static_cast<std::size_t>(row.name.size())};
}

constexpr bool HaveUniqueNames(const auto& table) {
    for (auto row = table.begin(); row != table.end(); ++row) {
        if (row->name.isEmpty() || std::any_of(table.begin(), row, [row](const auto& other) {
                return NameOf(other) == NameOf(*row);
            })) {
            return false;
        }
    }
    return true;
}

/// Whether each row of an antenna model begins above the end of the one before, so that only one row fits a
/// frequency.
constexpr bool AreRowsOfOneModelDisjoint(std::span<const Antenna> rows) {
    for (auto row = rows.begin(); row != rows.end(); ++row) {
        if (std::any_of(rows.begin(), row, [row](const Antenna& other) {
                return NameOf(other) == NameOf(*row) && row->minFrequency <= other.maxFrequency;
            })) {
            return false;
        }
    }
    return true;
}

constexpr bool HasClosedLists(const SampleMode& row) {
    const auto& types = row.deviceTypes;
    const auto& modes = row.operationModes;
    return types.front() != ZANTYPE_END && std::ranges::find(types, ZANTYPE_END) != types.end() &&
           modes.front() != OPMODE_END && std::ranges::find(modes, OPMODE_END) != modes.end();
}

// Does not test for a missing list: reading it would not compile, and g++ cannot compare its address under
// the sanitizers.
constexpr bool HasConverterAndBandwidths(const SampleMode& row) {
    return row.firstConverter != CONVERTER_NONE && row.realtimeBandwidth > 0.0 &&
           row.resolutionBandwidths[0] > 0.0;
}

static_assert(Rows(ZANCharacteristics::s_aAntennaLibrary).size() == 48);
static_assert(IsClosedBy(ZANCharacteristics::s_aAntennaLibrary,
                         [](const Antenna& row) { return row.name.isEmpty(); }));
static_assert(std::ranges::all_of(Rows(ZANCharacteristics::s_aAntennaLibrary),
                                  HasOrderedFrequencies<Antenna>));
static_assert(AreRowsOfOneModelDisjoint(Rows(ZANCharacteristics::s_aAntennaLibrary)));

static_assert(Rows(ZANCharacteristics::s_aSampleModeDescription).size() == 29);
static_assert(IsClosedBy(ZANCharacteristics::s_aSampleModeDescription,
                         [](const SampleMode& row) { return row.sampleMode == SAMPLEMODE_END; }));
static_assert(std::ranges::all_of(Rows(ZANCharacteristics::s_aSampleModeDescription),
                                  HasOrderedFrequencies<SampleMode>));
static_assert(std::ranges::all_of(Rows(ZANCharacteristics::s_aSampleModeDescription), HasClosedLists));
static_assert(std::ranges::all_of(Rows(ZANCharacteristics::s_aSampleModeDescription),
                                  HasConverterAndBandwidths));

static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_20_2K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_50_2K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_50_20K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_100_20K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_200_20K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_500_20K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_500_100K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_500_200K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_1K_100K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_1K_200K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_EXT_1K_100K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_EXT_1K_200K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_2K_200K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_EXT_2K_200K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_STD_200K_200K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_HF_0125K_25K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_VUHF_1K_200K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_VUHF_5K_50K));
static_assert(IsAscendingBandwidthList(ZANCharacteristics::s_aRESBWS_HF_0250K_12K));

static_assert(HaveUniqueNames(ZANCharacteristics::s_aDeviceTypeNames));
static_assert(HaveUniqueNames(ZANCharacteristics::s_aConverterTypeNames));

} // namespace
