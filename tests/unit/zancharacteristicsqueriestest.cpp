#include "support/cataloguefiles.h"
#include "support/devicetree.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "zancommon/zancharacteristics.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <ostream>
#include <set>
#include <utility>

using namespace Qt::StringLiterals;

// Makes GoogleTest print items as text.
static void PrintTo(const SelectionItem& item, std::ostream* out) {
    *out << '"' << item.GetName().toStdString() << "\" " << item.GetValue() << " [" << item.GetKey() << ']';
}

namespace {

constexpr double ANY_BANDWIDTH = ZANCharacteristics::fBANDWIDTH_ANY;
constexpr double ANY_FREQUENCY = ZANCharacteristics::fFREQUENCY_ANY;
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr quint32 UNKNOWN_CODE = 0xFFFFFFFF;
constexpr auto UNKNOWN = static_cast<EZANMethod>(-1); // the same 32 bits

using Antennas = std::vector<AntennaData>;
using Bandwidths = std::set<double>;
using Items = std::vector<SelectionItem>;
using Methods = std::list<EZANMethod>;
using Polarisations = std::list<EZANPolarisation>;

AntennaData Disabled(AntennaData antenna) {
    antenna.enabled = false;
    return antenna;
}

AntennaData WithMethods(AntennaData antenna, std::vector<quint32> methods) {
    antenna.dfMethods = std::move(methods);
    return antenna;
}

AntennaData WithPolarisation(AntennaData antenna, EZANPolarisation polarisation) {
    antenna.polarizationSupport = true;
    antenna.polarizationMode = polarisation;
    return antenna;
}

AntennaData CannotSwitch(AntennaData antenna) {
    antenna.polarizationSupport = false;
    return antenna;
}

/// The messages of the characteristics' trace lines. A line of another origin keeps it.
QStringList Messages(const TraceLines& traces) {
    static const QRegularExpression origin(
        uR"(^devicecontrol\\directionfinder\\zancommon\\zancharacteristics\([1-9]\d*\): )"_s);
    QStringList messages = traces.lines;
    messages.replaceInStrings(origin, u""_s);
    return messages;
}

/// A number as "%f" writes it.
QString Fixed(double number) {
    return QString::fromStdString(std::to_string(number));
}

/// A device with its antennas and options, and the trace lines that questions about it write.
class ZANCharacteristicsQueriesTest : public testing::Test {
protected:
    ZANCharacteristics& Connect(const QString& type, const QString& options, const Antennas& antennas) {
        DeviceTree::SetType(type);
        DeviceTree::SetAntennas(antennas);
        ZANOptions::Instance()->ClearAllOptions();
        ZANOptions::Instance()->AddOptionsFromString(options);
        ZANCharacteristics& characteristics = DeviceTree::Connect();
        traces.lines.clear();
        return characteristics;
    }

    DeviceTree device;
    TraceLines traces;
};

// The choice of the sample mode, made again from the rows of the catalogue's files

struct SampleModeRow {
    EZANSampleMode sampleMode;
    std::vector<EZANType> types;
    EZANOptions requiredOption;
    std::vector<EZANConverter> converters;
    double realtimeBandwidth;
    double low;
    double high;
    std::vector<EOperationMode> modes;
    int priority;
    std::vector<double> resolutionBandwidths;
    bool hasPreamplifier;
    EFreqRange range;
};

const std::vector<SampleModeRow>& SampleModes() {
    static const std::vector<SampleModeRow> rows = [] {
        std::map<QString, std::vector<double>> lists;
        for (const CatalogueRow& row : ReadCatalogue("resolutionbandwidths.csv")) {
            lists[row.Text(u"array"_s)] = row.Values<double>(u"values"_s);
        }
        std::vector<SampleModeRow> read;
        for (const CatalogueRow& row : ReadCatalogue("samplemodes.csv")) {
            EXPECT_EQ(row.Value<int>(u"excluded option"_s), 0);
            read.push_back(
                {row.Value<EZANSampleMode>(u"sample mode"_s), row.Values<EZANType>(u"device types"_s),
                 row.Value<EZANOptions>(u"required option"_s), row.Values<EZANConverter>(u"converters"_s),
                 row.Value<double>(u"realtime bandwidth"_s), row.Value<double>(u"minimum frequency"_s),
                 row.Value<double>(u"maximum frequency"_s), row.Values<EOperationMode>(u"operation modes"_s),
                 row.Value<int>(u"priority"_s), lists.at(row.Text(u"resolution bandwidths"_s)),
                 row.Value<bool>(u"preamplifier"_s), row.Value<EFreqRange>(u"range"_s)});
        }
        return read;
    }();
    return rows;
}

template <class List, class Element>
bool Contains(const List& list, const Element& element) {
    return std::ranges::find(list, element) != std::ranges::end(list);
}

/// What makes rows fit: the device, and the antenna whose whole range is to be covered.
struct Situation {
    EZANType type;
    std::set<EZANOptions> options;
    EZANConverter converter;
    double low;
    double high;
};

using Rows = std::vector<const SampleModeRow*>;

Rows RowsFor(const Situation& situation, EOperationMode mode) {
    Rows rows;
    for (const SampleModeRow& row : SampleModes()) {
        const bool isForMode =
            mode == -1 || Contains(row.modes, EOperationMode(-1)) || Contains(row.modes, mode);
        const bool hasOption = row.requiredOption == 0 || situation.options.contains(row.requiredOption);
        if (isForMode && hasOption && Contains(row.types, situation.type) &&
            Contains(row.converters, situation.converter) && situation.low >= row.low &&
            situation.high <= row.high) {
            rows.push_back(&row);
        }
    }
    return rows;
}

/// The first row of the highest priority among those of a realtime bandwidth; null when there is none.
const SampleModeRow* BestOf(Rows rows, double realtimeBandwidth) {
    if (!(realtimeBandwidth < 1.0)) {
        std::erase_if(rows, [realtimeBandwidth](const SampleModeRow* row) {
            return !(row->realtimeBandwidth == realtimeBandwidth);
        });
    }
    const auto best = std::ranges::max_element(rows, {}, &SampleModeRow::priority);
    return best == rows.end() ? nullptr : *best;
}

/// The smallest bandwidth of a row that is not below the wanted one, else the largest; 0 without a row.
double RoundedUp(const SampleModeRow* row, double wanted) {
    if (!row) {
        return 0.0;
    }
    const Bandwidths sorted(row->resolutionBandwidths.begin(), row->resolutionBandwidths.end());
    const auto next = sorted.lower_bound(wanted);
    return next == sorted.end() ? *sorted.rbegin() : *next;
}

const std::array deviceTypes{u"ZANTIDE"_s, u"ZANREEF"_s, u"ZANDUNE"_s, u"ZANFERN"_s, u"ZANMOSS"_s};

/// All converter names, and two that lead to no converter.
std::vector<std::pair<QString, EZANConverter>> ConverterNames() {
    std::vector<std::pair<QString, EZANConverter>> names{{u"RCV99"_s, CONVERTER_NONE}, {{}, CONVERTER_NONE}};
    for (const CatalogueRow& row : ReadCatalogue("convertertypes.csv")) {
        names.emplace_back(row.Text(u"name"_s), row.Value<EZANConverter>(u"converter"_s));
    }
    return names;
}

/// No option, each option that a row asks for, and all options.
std::set<std::set<EZANOptions>> OptionSets() {
    std::set<std::set<EZANOptions>> sets{{}};
    for (const SampleModeRow& row : SampleModes()) {
        if (row.requiredOption != 0) {
            sets.insert({row.requiredOption});
        }
    }
    std::set<EZANOptions> all;
    for (int option = OPTION_ZAN_CL; option <= OPTION_ZANREEF_REM; ++option) {
        all.insert(static_cast<EZANOptions>(option));
    }
    sets.insert(all);
    return sets;
}

void SetOptions(const std::set<EZANOptions>& options) {
    ZANOptions::Instance()->ClearAllOptions();
    for (const EZANOptions option : options) {
        ZANOptions::Instance()->AddOption(option);
    }
}

/// Ranges that end on, 1 Hz below and 1 Hz above the limits of the rows.
std::set<std::pair<double, double>> RangesAroundTheLimits() {
    std::set<std::pair<double, double>> ranges;
    for (const SampleModeRow& row : SampleModes()) {
        for (const double low : {row.low - 1.0, row.low, row.low + 1.0}) {
            for (const double high : {row.high - 1.0, row.high, row.high + 1.0}) {
                ranges.emplace(low, high);
            }
        }
    }
    return ranges;
}

std::set<double> AllRealtimeBandwidths() {
    std::set<double> bandwidths;
    for (const SampleModeRow& row : SampleModes()) {
        bandwidths.insert(row.realtimeBandwidth);
    }
    return bandwidths;
}

/// The choice for a device of each type.
class ZANCharacteristicsSampleModeTest : public ZANCharacteristicsQueriesTest,
                                         public testing::WithParamInterface<int> {
protected:
    ZANCharacteristicsSampleModeTest() {
        ErrorHandler::Instance().SetTraceMask(0);
        wantedRealtimeBandwidths.insert(wantedRealtimeBandwidths.end(),
                                        {ANY_BANDWIDTH, 0.5, 150e3, NOT_A_NUMBER});
    }

    /// Asks in one operation mode about the one antenna of the device.
    void ExpectChoice(const ZANCharacteristics& characteristics, const Situation& situation,
                      EOperationMode mode) {
        const auto inThis = [&situation, mode] {
            return u"options %1, converter %2, %3 Hz to %4 Hz, mode %5"_s
                .arg(ZANOptions::Instance()->GetOptionsAsString(), QString::number(situation.converter),
                     Fixed(situation.low), Fixed(situation.high), QString::number(mode))
                .toStdString();
        };
        const Rows rows = RowsFor(situation, mode);
        const SampleModeRow* const usual = BestOf(rows, ANY_BANDWIDTH);
        const double start = situation.low;
        const double stop = situation.low + 0.5;
        const AntennaData* const antenna = characteristics.GetAntennaByIndex(0);

        ASSERT_EQ(characteristics.IsAntennaSupportedByDevice(antenna, mode), usual != nullptr) << inThis();
        ASSERT_EQ(characteristics.IsAntennaSupportedByDevice(0, mode), usual != nullptr) << inThis();
        Bandwidths realtimeBandwidths;
        for (const SampleModeRow* row : rows) {
            realtimeBandwidths.insert(row->realtimeBandwidth);
        }
        ASSERT_EQ(characteristics.GetRealtimeBandwidths(mode, start, stop), realtimeBandwidths) << inThis();
        ASSERT_EQ(characteristics.GetDefaultRealtimeBandwidth(mode, start, stop),
                  usual ? usual->realtimeBandwidth : 0.0)
            << inThis();
        const EFreqRange lowOrHigh = situation.low >= 1e7 ? FREQRANGE_VUHF : FREQRANGE_HF;
        ASSERT_EQ(characteristics.GetRangeTypeOfAntenna(antenna, mode), usual ? usual->range : lowOrHigh)
            << inThis();
        for (const double wanted : wantedRealtimeBandwidths) {
            const SampleModeRow* const best = BestOf(rows, wanted);
            ASSERT_EQ(characteristics.GetBestSampleMode(mode, start, stop, wanted),
                      best ? best->sampleMode : -1)
                << inThis() << ", realtime bandwidth " << wanted;
            Bandwidths resolutionBandwidths;
            if (best) {
                resolutionBandwidths.insert(best->resolutionBandwidths.begin(),
                                            best->resolutionBandwidths.end());
            }
            ASSERT_EQ(characteristics.GetResolutionBandwidths(mode, start, stop, wanted),
                      resolutionBandwidths)
                << inThis() << ", realtime bandwidth " << wanted;
            ASSERT_EQ(characteristics.GetDefaultResolutionBandwidth(mode, start, stop, wanted),
                      RoundedUp(best, 20e3))
                << inThis() << ", realtime bandwidth " << wanted;
        }
    }

    const std::set<double> allRealtimeBandwidths = AllRealtimeBandwidths();
    std::vector<double> wantedRealtimeBandwidths{allRealtimeBandwidths.begin(), allRealtimeBandwidths.end()};
};

} // namespace

TEST_P(ZANCharacteristicsSampleModeTest,
       IsTheRowOfTheHighestPriorityThatFitsDeviceOptionsConverterRangeAndMode) {
    Situation situation{};
    situation.type = static_cast<EZANType>(GetParam());
    DeviceTree::SetType(deviceTypes.at(static_cast<std::size_t>(GetParam())));
    const auto converters = ConverterNames();
    const auto optionSets = OptionSets();
    for (const auto& [low, high] : RangesAroundTheLimits()) {
        situation.low = low;
        situation.high = high;
        for (const auto& [name, converter] : converters) {
            situation.converter = converter;
            DeviceTree::SetAntennas({MakeAntenna(u"PX108"_s, name, low, high)});
            const ZANCharacteristics& characteristics = DeviceTree::Connect();
            ASSERT_EQ(characteristics.GetZANType(), situation.type);
            for (const auto& options : optionSets) {
                situation.options = options;
                SetOptions(options);
                for (int mode = OPMODE_ANY; mode <= OPMODE_9; ++mode) {
                    ExpectChoice(characteristics, situation, static_cast<EOperationMode>(mode));
                    if (HasFailure()) {
                        return;
                    }
                }
            }
        }
    }
}

TEST_P(ZANCharacteristicsSampleModeTest, PreamplifierIsThereWhenAnyRowForTheConverterOfTheGroupHasOne) {
    Situation situation{};
    situation.type = static_cast<EZANType>(GetParam());
    const auto groups = ReadCatalogue("converters.csv");
    const auto hf = groups.at(0).Values<EZANConverter>(u"values"_s);
    const auto vuhf = groups.at(1).Values<EZANConverter>(u"values"_s);
    for (const auto& [name, converter] : ConverterNames()) {
        // A range that no row covers: it makes no difference.
        const AntennaData antenna = MakeAntenna(u"PX108"_s, name, 1.0, 1e12);
        for (const auto& options : OptionSets()) {
            const bool hasPreamplifier = std::ranges::any_of(
                SampleModes(), [&situation, &options, converter = converter](const auto& row) {
                    return row.hasPreamplifier && Contains(row.types, situation.type) &&
                           Contains(row.converters, converter) &&
                           (row.requiredOption == 0 || options.contains(row.requiredOption));
                });
            ZANCharacteristics& characteristics =
                Connect(deviceTypes.at(static_cast<std::size_t>(GetParam())), {}, {antenna});
            SetOptions(options);
            EXPECT_EQ(characteristics.IsHfPreampAvailable(), hasPreamplifier && Contains(hf, converter))
                << name.toStdString();
            EXPECT_EQ(characteristics.IsVuhfPreampAvailable(), hasPreamplifier && Contains(vuhf, converter))
                << name.toStdString();
            characteristics.GetAntennaByIndex(0)->enabled = false;
            EXPECT_FALSE(characteristics.IsHfPreampAvailable()) << name.toStdString();
            EXPECT_FALSE(characteristics.IsVuhfPreampAvailable()) << name.toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Devices, ZANCharacteristicsSampleModeTest,
                         testing::Range(0, static_cast<int>(deviceTypes.size())), [](const auto& each) {
                             return deviceTypes.at(static_cast<std::size_t>(each.param)).toStdString();
                         });

// Sample modes

TEST_F(ZANCharacteristicsQueriesTest, EachRowOfTheTableIsReachedAndItsResolutionBandwidthsRoundUp) {
    for (const SampleModeRow& row : SampleModes()) {
        SCOPED_TRACE(testing::Message()
                     << "sample mode " << row.sampleMode << " of device type " << row.types[0]);
        const auto converters = ConverterNames();
        const auto converter =
            std::ranges::find(converters, row.converters[0], &std::pair<QString, EZANConverter>::second);
        ZANCharacteristics& characteristics =
            Connect(deviceTypes.at(static_cast<std::size_t>(row.types[0])), {},
                    {MakeAntenna(u"PX108"_s, converter->first, row.low, row.high)});
        SetOptions({row.requiredOption});
        const EOperationMode mode = row.modes[0];
        ASSERT_EQ(characteristics.GetBestSampleMode(mode, row.low, row.high, row.realtimeBandwidth),
                  row.sampleMode);

        std::vector<double> wanted{ANY_BANDWIDTH, -INFINITE, -1.0, 0.0, 1e300, INFINITE};
        for (const double bandwidth : row.resolutionBandwidths) {
            wanted.insert(wanted.end(),
                          {bandwidth - 1.0, bandwidth - 0.5, bandwidth, bandwidth + 0.5, bandwidth + 1.0});
        }
        for (const double each : wanted) {
            EXPECT_EQ(characteristics.ToNextValidResolutionBandwidth(mode, row.low, row.high,
                                                                     row.realtimeBandwidth, each),
                      RoundedUp(&row, each))
                << each;
        }
        EXPECT_EQ(characteristics.ToNextValidResolutionBandwidth(mode, row.low, row.high,
                                                                 row.realtimeBandwidth, NOT_A_NUMBER),
                  row.resolutionBandwidths.back());
        EXPECT_TRUE(traces.lines.isEmpty());
    }
}

TEST_F(ZANCharacteristicsQueriesTest, SampleModeMustCoverTheWorkingRangeOfTheAntenna) {
    const auto sampleMode = [this](double high) {
        return Connect(u"ZANMOSS"_s, {}, {MakeAntenna(u"PX101"_s, u"RCV09"_s, 5e5, high)})
            .GetBestSampleMode(OPMODE_FFM, 1e6, 2e6, ANY_BANDWIDTH);
    };
    EXPECT_EQ(sampleMode(29999990.0), SAMPLEMODE_ZANMOSS_RCV09);
    EXPECT_EQ(sampleMode(30000000.0), SAMPLEMODE_END) << "the receiver ends at 29.99999 MHz";

    AntennaData narrowed = MakeAntenna(u"PX101"_s, u"RCV09"_s, 3e5, 3e7);
    narrowed.minRange = 5e5;
    narrowed.maxRange = 29999990.0;
    EXPECT_EQ(Connect(u"ZANMOSS"_s, {}, {narrowed}).GetBestSampleMode(OPMODE_FFM, 1e6, 2e6, ANY_BANDWIDTH),
              SAMPLEMODE_ZANMOSS_RCV09)
        << "what the antenna covers beyond its working range makes no difference";
}

TEST_F(ZANCharacteristicsQueriesTest, RowOfAMissingOptionGivesWayToTheOneOfTheHighestPriority) {
    const Antennas antennas{MakeAntenna(u"PX101"_s, u"RCV01"_s, 3e5, 3e7)};
    for (const QString& options : {u"ZAN-CL"_s, u"ZANTIDE-WB"_s}) { // with WB rows of priority 0 fit too
        const ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, options, antennas);
        EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_WIDEBAND_FFM, 3e5, 3e7, ANY_BANDWIDTH),
                  SAMPLEMODE_HF_1M);
    }
    EXPECT_EQ(DeviceTree::Connect().GetRealtimeBandwidths(OPMODE_WIDEBAND_FFM, 3e5, 3e7),
              Bandwidths({1e6, 2e6, 5e6, 1e7}));
}

TEST_F(ZANCharacteristicsQueriesTest, OfRowsOfEqualPriorityTheEarlierOneIsChosen) {
    const Antennas antennas{MakeAntenna(u"PX101"_s, u"RCV01"_s, 3e5, 3e7),
                            MakeAntenna(u"PX106"_s, u"RCV03"_s, 30000001.0, 1.3e9)};
    ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, u"ZAN-HFR"_s, antennas);
    EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_SEARCH, 3e5, 3e7, ANY_BANDWIDTH), SAMPLEMODE_HF_100K);
    EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_SEARCH, 1e8, 1e9, ANY_BANDWIDTH),
              SAMPLEMODE_VUHF_100K);
    EXPECT_EQ(characteristics.GetDefaultRealtimeBandwidth(OPMODE_SEARCH, 1e8, 1e9), 1e5);
    ZANOptions::Instance()->ClearAllOptions();
    EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_SEARCH, 1e8, 1e9, ANY_BANDWIDTH), SAMPLEMODE_VUHF_2M);
}

TEST_F(ZANCharacteristicsQueriesTest, RealtimeBandwidthBelowOneHertzMeansAny) {
    ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {MakeAntenna(u"PX101"_s, u"RCV01"_s, 3e5, 3e7)});
    struct Case {
        double realtimeBandwidth;
        EZANSampleMode sampleMode;
        double nextTo7000;
    };
    const auto cases = std::to_array<Case>({
        {ANY_BANDWIDTH, SAMPLEMODE_HF_1M, 10e3},
        {-INFINITE, SAMPLEMODE_HF_1M, 10e3},
        {-1e6, SAMPLEMODE_HF_1M, 10e3},
        {0.0, SAMPLEMODE_HF_1M, 10e3},
        {0.5, SAMPLEMODE_HF_1M, 10e3},
        {std::nextafter(1.0, 0.0), SAMPLEMODE_HF_1M, 10e3},
        {1.0, SAMPLEMODE_END, 0.0},
        {1e6, SAMPLEMODE_HF_1M, 10e3},
        {1e6 + 0.5, SAMPLEMODE_END, 0.0},
        {INFINITE, SAMPLEMODE_END, 0.0},
        {NOT_A_NUMBER, SAMPLEMODE_END, 0.0},
    });
    for (const auto& each : cases) {
        SCOPED_TRACE(each.realtimeBandwidth);
        EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_FFM, 1e6, 1e6, each.realtimeBandwidth),
                  each.sampleMode);
        EXPECT_EQ(
            characteristics.GetResolutionBandwidths(OPMODE_FFM, 1e6, 1e6, each.realtimeBandwidth).empty(),
            each.sampleMode == SAMPLEMODE_END);
        EXPECT_EQ(characteristics.ToNextValidResolutionBandwidth(OPMODE_FFM, 1e6, 1e6, each.realtimeBandwidth,
                                                                 7000.0),
                  each.nextTo7000);
    }
}

TEST_F(ZANCharacteristicsQueriesTest, FirstEnabledAntennaWhoseRangeHoldsBothFrequenciesDecides) {
    const ZANCharacteristics& characteristics = Connect(
        u"ZANTIDE"_s, {},
        {Disabled(MakeAntenna(u"PX101"_s, u"RCV03"_s, 2e7, 3e7)),
         MakeAntenna(u"PX102"_s, u"RCV01"_s, 3e5, 3e7), MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9)});
    struct Case {
        double start;
        double stop;
        EZANConverter converter;
        EZANSampleMode sampleMode;
        Bandwidths realtimeBandwidths;
    };
    const auto cases = std::to_array<Case>({
        {3e5, 3e7, CONVERTER_RCV01, SAMPLEMODE_HF_1M, {1e6}}, // both ends belong to the range
        {2e7, 3e7, CONVERTER_RCV01, SAMPLEMODE_HF_1M, {1e6}},
        {2.5e7, 2.5e7, CONVERTER_RCV01, SAMPLEMODE_HF_1M, {1e6}},
        {2e7, 30000000.5, CONVERTER_RCV03, SAMPLEMODE_VUHF_2M, {2e6, 5e6, 1e7}},
        {1.3e9, 1.3e9, CONVERTER_RCV03, SAMPLEMODE_VUHF_2M, {2e6, 5e6, 1e7}},
        {1e9, 1e6, CONVERTER_RCV01, SAMPLEMODE_HF_1M, {1e6}}, // start above 300 kHz, stop below 30 MHz
        {1e6, 1e8, CONVERTER_NONE, SAMPLEMODE_END, {}},       // no antenna has both
        {299999.5, 1e6, CONVERTER_NONE, SAMPLEMODE_END, {}},
        {1e9, 1300000000.5, CONVERTER_NONE, SAMPLEMODE_END, {}},
        {ANY_FREQUENCY, 1e6, CONVERTER_NONE, SAMPLEMODE_END, {}}, // a frequency like any other to the
                                                                  // antennas
        {1e6, ANY_FREQUENCY, CONVERTER_RCV01, SAMPLEMODE_HF_1M, {1e6}},
        {NOT_A_NUMBER, 1e6, CONVERTER_NONE, SAMPLEMODE_END, {}},
        {1e6, NOT_A_NUMBER, CONVERTER_NONE, SAMPLEMODE_END, {}},
    });
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << each.start << " to " << each.stop);
        EXPECT_EQ(characteristics.GetConverterForFrequencyRange(each.start, each.stop), each.converter);
        EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_SCAN, each.start, each.stop, ANY_BANDWIDTH),
                  each.sampleMode);
        EXPECT_EQ(characteristics.GetRealtimeBandwidths(OPMODE_SCAN, each.start, each.stop),
                  each.realtimeBandwidths);
    }
}

TEST_F(ZANCharacteristicsQueriesTest, WithoutAntennaThereIsNothingToOffer) {
    ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, u"ZAN-HFR"_s, {});
    EXPECT_EQ(characteristics.GetConverterForFrequencyRange(1e6, 1e6), CONVERTER_NONE);
    EXPECT_TRUE(characteristics.GetAvailableConverters().empty());
    EXPECT_FALSE(characteristics.IsHfPreampAvailable());
    EXPECT_FALSE(characteristics.IsVuhfPreampAvailable());
    EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_ANY, 1e6, 1e6, ANY_BANDWIDTH), -1);
    EXPECT_TRUE(characteristics.GetRealtimeBandwidths(OPMODE_ANY, 1e6, 1e6).empty());
    EXPECT_EQ(characteristics.GetDefaultRealtimeBandwidth(OPMODE_ANY, 1e6, 1e6), 0.0);
    EXPECT_TRUE(characteristics.GetResolutionBandwidths(OPMODE_ANY, 1e6, 1e6, ANY_BANDWIDTH).empty());
    EXPECT_EQ(characteristics.GetDefaultResolutionBandwidth(OPMODE_ANY, 1e6, 1e6, ANY_BANDWIDTH), 0.0);
    EXPECT_EQ(characteristics.ToNextValidResolutionBandwidth(OPMODE_ANY, 1e6, 1e6, ANY_BANDWIDTH, 1.0), 0.0);
    EXPECT_EQ(characteristics.GetRangeTypeForFrequency(1e6), -1);
    EXPECT_TRUE(characteristics.GetAvailableDfMethodsForFreq(1e6, 0.0).empty());
    EXPECT_TRUE(characteristics.GetAvailablePolarisationModesForFreq(1e6, 0.0).empty());
    EXPECT_FALSE(characteristics.IsSuperResolutionAvailable());
}

TEST_F(ZANCharacteristicsQueriesTest, NullAndMissingAntennasAreNotSupported) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {MakeAntenna(u"PX101"_s, u"RCV01"_s, 3e5, 3e7)});
    EXPECT_FALSE(characteristics.IsAntennaSupportedByDevice(nullptr, OPMODE_ANY));
    EXPECT_TRUE(characteristics.IsAntennaSupportedByDevice(0, OPMODE_ANY));
    for (const int index : {-1, 1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_FALSE(characteristics.IsAntennaSupportedByDevice(index, OPMODE_ANY)) << index;
    }
    EXPECT_TRUE(traces.lines.isEmpty()) << "where there is no antenna there is no sample mode to look for";
}

TEST_F(ZANCharacteristicsQueriesTest, AntennaNeedNotBeEnabledOrConnectedToBeSupported) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {Disabled(MakeAntenna(u"PX101"_s, u"RCV01"_s, 3e5, 3e7))});
    EXPECT_TRUE(characteristics.IsAntennaSupportedByDevice(0, OPMODE_FFM));
    const AntennaData other = MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9);
    EXPECT_TRUE(characteristics.IsAntennaSupportedByDevice(&other, OPMODE_FFM));
    EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_FFM, 1e6, 1e6, ANY_BANDWIDTH), SAMPLEMODE_END);
}

TEST_F(ZANCharacteristicsQueriesTest, OptionCountsFromTheMomentThatItIsReported) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANDUNE"_s, {}, {MakeAntenna(u"PX101"_s, u"RCV01"_s, 3e5, 3e7)});
    EXPECT_EQ(characteristics.GetRealtimeBandwidths(OPMODE_SCAN, 1e6, 1e6), Bandwidths({1e6}));
    const auto& options = StdDeviceDefinition::g_vdDevOptions;
    DeviceTree::DeviceValue<ValueString>(options)->SetValue(u"ZANDUNE-HFR"_s, nullptr);
    ASSERT_TRUE(ZANOptions::Instance()->ReadFromValueTree(DeviceTree::Path() + options.PathName()));
    EXPECT_EQ(characteristics.GetRealtimeBandwidths(OPMODE_SCAN, 1e6, 1e6), Bandwidths({1e5, 2e5, 5e5, 1e6}));
}

// Converters

TEST_F(ZANCharacteristicsQueriesTest, ConvertersOfAllAntennasAreAvailableOnceEach) {
    const ZANCharacteristics& characteristics = Connect(
        u"ZANTIDE"_s, {},
        {MakeAntenna(u"a"_s, u"RCV10"_s, 1e6, 2e6), Disabled(MakeAntenna(u"b"_s, u"RCV01"_s, 1e6, 2e6)),
         MakeAntenna(u"c"_s, u"RCV10"_s, 2e6, 3e6), MakeAntenna(u"d"_s, u"RCV99"_s, 2e6, 3e6),
         MakeAntenna(u"e"_s, {}, 2e6, 3e6), MakeAntenna(u"f"_s, u"RCV05"_s, 3e6, 4e6)});
    EXPECT_EQ(characteristics.GetAvailableConverters(),
              std::set({CONVERTER_RCV01, CONVERTER_RCV05, CONVERTER_RCV10}));
}

TEST_F(ZANCharacteristicsQueriesTest, ConvertersBelongToAtMostOneGroup) {
    const ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, {}, {});
    for (int value = -1; value <= 12; ++value) {
        const auto converter = static_cast<EZANConverter>(value);
        EXPECT_EQ(characteristics.IsHfConverter(converter), Contains(std::vector{2, 8, 10, 5}, value))
            << value;
        EXPECT_EQ(characteristics.IsVuhfConverter(converter), Contains(std::vector{3, 6, 7, 9, 11}, value))
            << value;
    }
}

TEST_F(ZANCharacteristicsQueriesTest, PreamplifierOfALaterAntennaCounts) {
    const AntennaData without = MakeAntenna(u"PX101"_s, u"RCV09"_s, 5e5, 2.9e7);
    const AntennaData with = MakeAntenna(u"PX102"_s, u"RCV02"_s, 3e5, 3e7);
    EXPECT_FALSE(Connect(u"ZANMOSS"_s, {}, {without}).IsHfPreampAvailable());
    EXPECT_TRUE(Connect(u"ZANMOSS"_s, {}, {without, with}).IsHfPreampAvailable());
    EXPECT_FALSE(Connect(u"ZANMOSS"_s, {}, {without, Disabled(with)}).IsHfPreampAvailable());
    EXPECT_FALSE(Connect(u"ZANMOSS"_s, {}, {without, with}).IsVuhfPreampAvailable());
    EXPECT_TRUE(traces.lines.isEmpty());
}

// Bandwidths

TEST_F(ZANCharacteristicsQueriesTest, WantedResolutionBandwidthIsRoundedUpUnlessItIsAboveTheList) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9)});
    struct Case {
        double wanted;
        double next;
    };
    const auto cases = std::to_array<Case>({
        {ANY_BANDWIDTH, 1000.0},  {-1.0, 1000.0},       {0.0, 1000.0},
        {999.5, 1000.0},          {1000.0, 1000.0},     {1000.5, 2000.0},
        {7000.0, 8333.0},         {8332.5, 8333.0},     {8333.0, 8333.0},
        {8333.5, 10000.0},        {10001.0, 12500.0},   {20000.0, 20000.0},
        {50001.0, 100000.0},      {99999.5, 100000.0},  {100000.0, 100000.0},
        {100000.5, 100000.0},     {300000.0, 100000.0}, {INFINITE, 100000.0},
        {NOT_A_NUMBER, 100000.0},
    });
    for (const auto& each : cases) {
        EXPECT_EQ(
            characteristics.ToNextValidResolutionBandwidth(OPMODE_FFM, 1e8, 1e8, ANY_BANDWIDTH, each.wanted),
            each.next)
            << each.wanted;
    }
}

TEST_F(ZANCharacteristicsQueriesTest, DefaultResolutionBandwidthIs20kHzOrTheNextOne) {
    struct Case {
        QString type;
        QString converter;
        double low;
        double high;
        EOperationMode mode;
        double resolutionBandwidth;
    };
    const auto cases = std::to_array<Case>({
        {u"ZANTIDE"_s, u"RCV01"_s, 3e5, 3e7, OPMODE_FFM, 20e3},
        {u"ZANTIDE"_s, u"RCV01"_s, 9e3, 1e6, OPMODE_FFM, 2e3}, // all of them are smaller
        {u"ZANTIDE"_s, u"RCV03"_s, 2e7, 3.6e9, OPMODE_FFM, 20e3},
        {u"ZANTIDE"_s, u"RCV03"_s, 2e7, 3.6e9, OPMODE_TDMA, 20e3},
        {u"ZANMOSS"_s, u"RCV02"_s, 3e5, 3e7, OPMODE_FFM, 25e3},
        {u"ZANMOSS"_s, u"RCV08"_s, 2e7, 1.3e9, OPMODE_FFM, 25e3},
        {u"ZANMOSS"_s, u"RCV09"_s, 5e5, 2.9e7, OPMODE_FFM, 12e3},
        {u"ZANMOSS"_s, u"RCV09"_s, 5e5, 2.9e7, OPMODE_WIDEBAND_FFM, 0.0},
    });
    for (const auto& each : cases) {
        const ZANCharacteristics& characteristics =
            Connect(each.type, u"ZAN-LF"_s, {MakeAntenna(u"PX108"_s, each.converter, each.low, each.high)});
        EXPECT_EQ(
            characteristics.GetDefaultResolutionBandwidth(each.mode, each.low, each.high, ANY_BANDWIDTH),
            each.resolutionBandwidth)
            << each.converter.toStdString() << " in mode " << each.mode;
    }
    const ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9)});
    EXPECT_EQ(characteristics.GetDefaultResolutionBandwidth(OPMODE_TDMA, 1e8, 1e8, 2e5), 200e3);
}

TEST(ZANCharacteristicsFormatBandwidth, ShowsTheNumberInItsUnit) {
    struct Case {
        double bandwidth;
        int precision;
        bool keepTrailingZeros;
        QString text;
    };
    const auto cases = std::to_array<Case>({
        // each border of a unit
        {0.0, 3, false, u"0 Hz"_s},
        {0.5, 3, false, u"0.5 Hz"_s},
        {1.0, 3, false, u"1 Hz"_s},
        {998.0, 3, false, u"998 Hz"_s},
        {999.0, 3, false, u"999 Hz"_s},
        {999.5, 3, false, u"999.5 Hz"_s},
        {1000.0, 3, false, u"1 kHz"_s},
        {1000.5, 4, false, u"1.0005 kHz"_s},
        {1001.0, 3, false, u"1.001 kHz"_s},
        {999999.0, 3, false, u"999.999 kHz"_s},
        {999999.5, 4, false, u"999.9995 kHz"_s},
        {1000000.0, 3, false, u"1 MHz"_s},
        {1000000.5, 7, false, u"1.0000005 MHz"_s},
        {1000001.0, 6, false, u"1.000001 MHz"_s},
        {999999999.0, 6, false, u"999.999999 MHz"_s},
        {999999999.5, 7, false, u"999.9999995 MHz"_s},
        {1000000000.0, 3, false, u"1000000000"_s}, // no unit from here on
        {1000000000.5, 3, false, u"1000000000.5"_s},
        {1000000001.0, 3, false, u"1000000001"_s},
        {1500000000.0, 2, false, u"1500000000"_s},
        {1500000000.0, 2, true, u"1500000000.00"_s},
        {1e15, 1, false, u"1000000000000000"_s},
        // digits
        {12500.0, 3, false, u"12.5 kHz"_s},
        {12500.0, 3, true, u"12.500 kHz"_s},
        {8333.0, 2, false, u"8.33 kHz"_s},
        {8333.0, 2, true, u"8.33 kHz"_s},
        {100000.0, 2, false, u"100 kHz"_s},
        {100000.0, 2, true, u"100.00 kHz"_s},
        {999.0, -1, false, u"999 Hz"_s}, // 6 digits
        {999.0, -1, true, u"999.000000 Hz"_s},
        {1234567.0, -1, true, u"1.234567 MHz"_s},
        {1234.5678, -7, true, u"1.234568 kHz"_s},
        {999.999, 2, true, u"1000.00 Hz"_s}, // the unit is chosen before rounding
        {999.999, 2, false, u"1000 Hz"_s},
        {100.24, 1, true, u"100.2 Hz"_s},
        // without digits after the point, the zeros of a whole number go
        {0.0, 0, false, u" Hz"_s},
        {0.0, 0, true, u"0 Hz"_s},
        {10.0, 0, false, u"1 Hz"_s},
        {100000.0, 0, false, u"1 kHz"_s},
        {100000.0, 0, true, u"100 kHz"_s},
        {20400.0, 0, true, u"20 kHz"_s},
        {101000.0, 0, false, u"101 kHz"_s},
        {20e6, 0, false, u"2 MHz"_s},
        {1e9, 0, false, u"1"_s},
        {1e9, 0, true, u"1000000000"_s},
        // all below 1 kHz is in Hz
        {-0.5, 1, false, u"-0.5 Hz"_s},
        {-1000.0, 3, false, u"-1000 Hz"_s},
        {-1000.0, 3, true, u"-1000.000 Hz"_s},
        {-12500.0, 0, false, u"-125 Hz"_s},
        {-2e9, 1, false, u"-2000000000 Hz"_s},
        {-INFINITE, 1, false, u"-inf Hz"_s},
        {INFINITE, 1, false, u"inf"_s},
        {NOT_A_NUMBER, 1, false, u"nan"_s},
    });
    for (const auto& each : cases) {
        EXPECT_EQ(ZANCharacteristics::FormatBandwidth(each.bandwidth, each.precision, each.keepTrailingZeros),
                  each.text)
            << each.bandwidth << " with " << each.precision << " digits";
    }
}

// Range class

TEST_F(ZANCharacteristicsQueriesTest, RangeClassIsThatOfTheSampleModeBeforeThatOfTheFrequency) {
    struct Case {
        QString converter;
        double low;
        double high;
        EFreqRange range;
    };
    const auto cases = std::to_array<Case>({
        {u"RCV01"_s, 3e5, 3e7, FREQRANGE_HF},
        {u"RCV01"_s, 2e7, 3e7, FREQRANGE_HF}, // though it lies above 10 MHz
        {u"RCV03"_s, 2e7, 1.3e9, FREQRANGE_VUHF},
        {u"RCV07"_s, 9e3, 1e6, FREQRANGE_VLF},
        {u"RCV01"_s, 3e5, 1e6, FREQRANGE_HF}, // HF rows come before those of VLF
        {u"RCV01"_s, 9e3, 1e6, FREQRANGE_VLF},
    });
    for (const auto& each : cases) {
        ZANCharacteristics& characteristics = Connect(
            u"ZANTIDE"_s, u"ZAN-LF"_s, {MakeAntenna(u"PX108"_s, each.converter, each.low, each.high)});
        EXPECT_EQ(characteristics.GetRangeTypeOfAntenna(characteristics.GetAntennaByIndex(0), OPMODE_FFM),
                  each.range);
        EXPECT_EQ(characteristics.GetRangeTypeForFrequency(each.low), each.range);
        EXPECT_EQ(characteristics.GetRangeTypeForFrequency(each.high), each.range);
        EXPECT_TRUE(traces.lines.isEmpty());
    }
}

TEST_F(ZANCharacteristicsQueriesTest, WithoutSampleModeTheLowestFrequencyOfTheCoverageDecidesTheRangeClass) {
    struct Case {
        double minFreq;
        EFreqRange range;
    };
    const auto cases = std::to_array<Case>({
        {0.0, FREQRANGE_HF},
        {3e5, FREQRANGE_HF},
        {9999999.0, FREQRANGE_HF},
        {9999999.5, FREQRANGE_HF},
        {10000000.0, FREQRANGE_VUHF},
        {10000000.5, FREQRANGE_VUHF},
        {10000001.0, FREQRANGE_VUHF},
        {2e7, FREQRANGE_VUHF},
        {NOT_A_NUMBER, FREQRANGE_HF},
    });
    for (const auto& each : cases) {
        AntennaData antenna = MakeAntenna(u"PX108"_s, u"RCV05"_s, each.minFreq, 1.3e9);
        for (const double minRange : {5e6, 2e7}) { // makes no difference
            antenna.minRange = minRange;
            const ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, {}, {antenna});
            EXPECT_EQ(characteristics.GetRangeTypeOfAntenna(&antenna, OPMODE_ANY), each.range)
                << each.minFreq;
        }
    }
}

TEST_F(ZANCharacteristicsQueriesTest, RangeClassDependsOnTheOperationMode) {
    ZANCharacteristics& characteristics =
        Connect(u"ZANMOSS"_s, {}, {MakeAntenna(u"PX101"_s, u"RCV02"_s, 1e7, 3e7)});
    const AntennaData* const antenna = characteristics.GetAntennaByIndex(0);
    EXPECT_EQ(characteristics.GetRangeTypeOfAntenna(antenna, OPMODE_FFM), FREQRANGE_HF);
    EXPECT_EQ(characteristics.GetRangeTypeOfAntenna(antenna, OPMODE_WIDEBAND_FFM), FREQRANGE_VUHF)
        << "no sample mode for it, so the frequency decides";
    EXPECT_EQ(characteristics.GetRangeTypeForFrequency(1e7), FREQRANGE_HF) << "of any mode";
}

TEST_F(ZANCharacteristicsQueriesTest, RangeClassIsThatOfTheAntennaThatServesTheRange) {
    const AntennaData hf = MakeAntenna(u"PX101"_s, u"RCV01"_s, 2e7, 3e7);
    const AntennaData vuhf = MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9);
    const ZANCharacteristics& first = Connect(u"ZANTIDE"_s, {}, {vuhf, hf});
    EXPECT_EQ(first.GetRangeTypeOfAntenna(&hf, OPMODE_FFM), FREQRANGE_VUHF) << "the first one serves it";
    const ZANCharacteristics& second = Connect(u"ZANTIDE"_s, {}, {Disabled(vuhf), hf});
    EXPECT_EQ(second.GetRangeTypeOfAntenna(&hf, OPMODE_FFM), FREQRANGE_HF);
}

TEST_F(ZANCharacteristicsQueriesTest, RangeClassOfNoAntennaIsUnknown) {
    ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {MakeAntenna(u"PX101"_s, u"RCV01"_s, 3e5, 3e7)});
    EXPECT_EQ(characteristics.GetRangeTypeOfAntenna(nullptr, OPMODE_ANY), -1);
    EXPECT_EQ(characteristics.GetRangeTypeForFrequency(30000000.5), -1);
    EXPECT_EQ(characteristics.GetRangeTypeForFrequency(ANY_FREQUENCY), -1);
    EXPECT_EQ(Messages(traces),
              QStringList(3, u"WARNING: cannot determine range type for unknown antenna"_s));
}

// DF methods and polarisations

TEST_F(ZANCharacteristicsQueriesTest, AntennaHasAMethodWhenAllItsBitsAreSet) {
    const ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, {}, {});
    struct Antenna {
        QString name;
        double frequency;
        long methods;
    };
    const auto antennas = std::to_array<Antenna>({
        {u"PX108"_s, 1e6, 0},
        {u"PX101"_s, 1e6, 1},
        {u"PX103"_s, 1e6, 2},
        {u"PX109"_s, 1.3e9, 4},
        {u"PX115SR"_s, 1e8, 10},
    });
    for (const auto& each : antennas) {
        AntennaData antenna;
        antenna.name = each.name;
        EXPECT_EQ(characteristics.GetDfMethodsDetailedForAntennaAndFrequency(&antenna, each.frequency),
                  each.methods);
        for (long method = 0; method < 16; ++method) {
            bool isSubset = true;
            for (const long bit : {1L, 2L, 4L, 8L}) {
                isSubset = isSubset && (!(method & bit) || (each.methods & bit));
            }
            EXPECT_EQ(characteristics.HasAntennaDFMethod(&antenna, each.frequency,
                                                         static_cast<EZANMethodDetailed>(method)),
                      isSubset)
                << each.name.toStdString() << ", " << method;
        }
    }
}

TEST_F(ZANCharacteristicsQueriesTest, NullAntennaHasNoMethods) {
    const ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, {}, {});
    EXPECT_EQ(characteristics.GetDfMethodsDetailedForAntennaAndFrequency(nullptr, 1e6), 0);
    EXPECT_FALSE(characteristics.HasAntennaDFMethod(nullptr, 1e6, METHODDETAILED_COR));
}

TEST_F(ZANCharacteristicsQueriesTest, MethodsAreInTheOrderOfTheirFirstAppearance) {
    ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {},
                {WithMethods(MakeAntenna(u"a"_s, u"RCV01"_s, 1e6, 2e6), {METHOD_VEC, METHOD_WAT, METHOD_VEC}),
                 Disabled(WithMethods(MakeAntenna(u"b"_s, u"RCV01"_s, 1e6, 9e6), {METHOD_SUPR})),
                 MakeAntenna(u"c"_s, u"RCV01"_s, 1e6, 9e6), // without methods
                 WithMethods(MakeAntenna(u"d"_s, {}, 2e6, 3e6), {UNKNOWN_CODE, METHOD_WAT, METHOD_COR})});
    struct Case {
        double frequency;
        Methods methods;
    };
    const auto cases = std::to_array<Case>({
        {999999.5, {}},
        {1e6, {METHOD_VEC, METHOD_WAT}}, // both ends belong to a range
        {2e6, {METHOD_VEC, METHOD_WAT, UNKNOWN, METHOD_COR}},
        {2000000.5, {UNKNOWN, METHOD_WAT, METHOD_COR}},
        {3e6, {UNKNOWN, METHOD_WAT, METHOD_COR}},
        {3000000.5, {}},
        {ANY_FREQUENCY, {}},
        {NOT_A_NUMBER, {}},
    });
    for (const auto& each : cases) {
        for (const double unused : {0.0, 2e6, -1.0, NOT_A_NUMBER}) {
            EXPECT_EQ(characteristics.GetAvailableDfMethodsForFreq(each.frequency, unused), each.methods)
                << each.frequency;
        }
    }
    EXPECT_FALSE(characteristics.IsSuperResolutionAvailable()) << "no enabled antenna has it";
}

TEST_F(ZANCharacteristicsQueriesTest, SuperResolutionStaysAvailableOnceItWasFound) {
    const AntennaData with =
        WithMethods(MakeAntenna(u"a"_s, u"RCV01"_s, 1e6, 2e6), {METHOD_COR, METHOD_SUPR});
    const AntennaData without = WithMethods(MakeAntenna(u"b"_s, u"RCV01"_s, 3e6, 4e6), {METHOD_COR});
    ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, {}, {with, without});
    EXPECT_FALSE(characteristics.IsSuperResolutionAvailable());
    EXPECT_EQ(characteristics.GetAvailableDfMethodsForFreq(3e6, 1e6), Methods({METHOD_COR}));
    EXPECT_FALSE(characteristics.IsSuperResolutionAvailable());
    EXPECT_EQ(characteristics.GetAvailableDfMethodsForFreq(1e6, 0.0), Methods({METHOD_COR, METHOD_SUPR}));
    EXPECT_TRUE(characteristics.IsSuperResolutionAvailable());
    EXPECT_EQ(characteristics.GetAvailableDfMethodsForFreq(3e6, 0.0), Methods({METHOD_COR}));
    EXPECT_TRUE(characteristics.IsSuperResolutionAvailable());
    Connect(u"ZANTIDE"_s, {}, {without});
    EXPECT_TRUE(characteristics.GetAvailableDfMethodsForFreq(1e6, 0.0).empty());
    EXPECT_TRUE(characteristics.IsSuperResolutionAvailable()) << "the antenna may be gone";
}

TEST_F(ZANCharacteristicsQueriesTest, PolarisationsOfSwitchableAntennasAreListedOnceEachInTheOrderOfTheList) {
    const ZANCharacteristics& characteristics = Connect(
        u"ZANTIDE"_s, {},
        {WithPolarisation(MakeAntenna(u"a"_s, u"RCV01"_s, 1e6, 2e6), POLARISATION_HORIZONTAL),
         WithPolarisation(MakeAntenna(u"b"_s, u"RCV01"_s, 1e6, 4e6), POLARISATION_LEFT),
         Disabled(WithPolarisation(MakeAntenna(u"c"_s, u"RCV01"_s, 1e6, 4e6), POLARISATION_RIGHT)),
         CannotSwitch(WithPolarisation(MakeAntenna(u"d"_s, u"RCV01"_s, 1e6, 4e6), POLARISATION_RIGHT)),
         WithPolarisation(MakeAntenna(u"e"_s, u"RCV01"_s, 1e6, 4e6), POLARISATION_LEFT),
         WithPolarisation(MakeAntenna(u"f"_s, u"RCV01"_s, 2e6, 4e6), POLARISATION_VERTICAL)});
    constexpr auto L = POLARISATION_LEFT;
    constexpr auto V = POLARISATION_VERTICAL;
    constexpr auto H = POLARISATION_HORIZONTAL;
    struct Case {
        double frequency;
        double second;
        Polarisations polarisations;
    };
    const auto cases = std::to_array<Case>({
        {999999.5, 0.0, {}},
        {1e6, 0.0, {H, L}}, // both ends belong to a range
        {2e6, 0.0, {H, L, V}},
        {2000000.5, 0.0, {L, V}},
        {4e6, 0.0, {L, V}},
        {4000000.5, 0.0, {}},
        {1e6, 2e6, {H, L}},
        {1e6, 2000000.5, {L}},
        {1e6, 4e6, {L}},
        {1e6, 4000000.5, {}},
        {2e6, 1.0, {H, L, V}}, // the second one is compared with the end of the range only
        {2e6, -1.0, {H, L, V}},
        {2e6, ANY_FREQUENCY, {H, L, V}},
        {2e6, NOT_A_NUMBER, {H, L, V}},
        {NOT_A_NUMBER, 0.0, {}},
    });
    for (const auto& each : cases) {
        EXPECT_EQ(characteristics.GetAvailablePolarisationModesForFreq(each.frequency, each.second),
                  each.polarisations)
            << each.frequency << ", " << each.second;
    }
}

// Trace lines

TEST_F(ZANCharacteristicsQueriesTest, MissingSampleModeIsTraced) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANMOSS"_s, {}, {MakeAntenna(u"PX%1%s"_s, u"RCV09"_s, 5e5, 3e7)});
    const QString forAntenna =
        u"No sample mode matching eConverter=10, eOpMode=%1, fStartFreq=500000.000000, fStopFreq=30000000.000000, fRealtimeBw=%2"_s;
    const QString anyBandwidth = Fixed(ANY_BANDWIDTH);
    struct Case {
        const char* query;
        std::function<void()> ask;
        QStringList messages;
    };
    const auto cases = std::to_array<Case>({
        {"best sample mode",
         [&] { (void)characteristics.GetBestSampleMode(OPMODE_FFM, 1e6, 2e6 + 0.25, 25000.75); },
         {forAntenna.arg(u"1"_s, u"25000.750000"_s),
          u"WARNING: No sample mode found for eOpMode=1, fStartFreq=1000000.000000, fStopFreq=2000000.250000, fRealtimeBw=25000"_s}},
        {"best sample mode without antenna",
         [&] { (void)characteristics.GetBestSampleMode(OPMODE_ANY, ANY_FREQUENCY, 1e6, 1e6); },
         {u"WARNING: No sample mode found for eOpMode=-1, fStartFreq="_s + Fixed(ANY_FREQUENCY) +
          u", fStopFreq=1000000.000000, fRealtimeBw=1000000"_s}},
        {"support of the antenna",
         [&] { (void)characteristics.IsAntennaSupportedByDevice(0, OPMODE_TDMA); },
         {forAntenna.arg(u"6"_s, anyBandwidth)}},
        {"range class",
         [&] {
             (void)characteristics.GetRangeTypeOfAntenna(characteristics.GetAntennaByIndex(0), OPMODE_ANY);
         },
         {forAntenna.arg(u"-1"_s, anyBandwidth),
          u"WARNING: cannot determine range type for antenna PX%1%s 500000.000000 - 30000000.000000"_s}},
        {"default realtime bandwidth",
         [&] { (void)characteristics.GetDefaultRealtimeBandwidth(OPMODE_SCAN, 1e6, 2e6); },
         {forAntenna.arg(u"3"_s, anyBandwidth)}},
        {"resolution bandwidths",
         [&] { (void)characteristics.GetResolutionBandwidths(OPMODE_SCAN, 1e6, 2e6, 0.5); },
         {forAntenna.arg(u"3"_s, anyBandwidth)}},
        {"next resolution bandwidth",
         [&] { (void)characteristics.ToNextValidResolutionBandwidth(OPMODE_SCAN, 1e6, 2e6, 1.0, 1.0); },
         {forAntenna.arg(u"3"_s, u"1.000000"_s)}},
        {"realtime bandwidths",
         [&] { (void)characteristics.GetRealtimeBandwidths(OPMODE_SCAN, 1e6, 2e6); },
         {}},
        {"next resolution bandwidth without antenna",
         [&] { (void)characteristics.ToNextValidResolutionBandwidth(OPMODE_SCAN, 1e8, 1e8, 1.0, 1.0); },
         {}},
    });
    for (const auto& each : cases) {
        SCOPED_TRACE(each.query);
        ErrorHandler::Instance().SetTraceMask(TraceBit::INFORMATION);
        traces.lines.clear();
        each.ask();
        EXPECT_EQ(Messages(traces), each.messages);

        ErrorHandler::Instance().SetTraceMask(~TraceBit::INFORMATION);
        traces.lines.clear();
        each.ask();
        EXPECT_TRUE(traces.lines.isEmpty());
    }
}

TEST_F(ZANCharacteristicsQueriesTest, RangeClassOfNoAntennaIsNotTracedWithoutItsBit) {
    const ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, {}, {});
    ErrorHandler::Instance().SetTraceMask(~TraceBit::INFORMATION);
    EXPECT_EQ(characteristics.GetRangeTypeOfAntenna(nullptr, OPMODE_ANY), -1);
    EXPECT_TRUE(traces.lines.isEmpty());
}

TEST_F(ZANCharacteristicsQueriesTest, RealtimeBandwidthIsTracedAsAnIntegerAndTheLowestOneWhenItFitsNone) {
    const ZANCharacteristics& characteristics = Connect(u"ZANTIDE"_s, {}, {});
    struct Case {
        double realtimeBandwidth;
        QString text;
    };
    const auto cases = std::to_array<Case>({
        {0.0, u"0"_s},
        {0.5, u"0"_s},
        {-0.5, u"0"_s},
        {-1.5, u"-1"_s},
        {199999.9, u"199999"_s},
        {2147483647.0, u"2147483647"_s},
        {2147483647.5, u"2147483647"_s},
        {2147483648.0, u"2147483647"_s},
        {-2147483647.5, u"-2147483647"_s},
        {-2147483648.0, u"-2147483648"_s},
        {-2147483649.0, u"-2147483648"_s},
        {1e12, u"2147483647"_s},
        {-1e12, u"-2147483648"_s},
        {ANY_BANDWIDTH, u"-2147483648"_s},
        {INFINITE, u"2147483647"_s},
        {-INFINITE, u"-2147483648"_s},
        {NOT_A_NUMBER, u"0"_s},
    });
    for (const auto& each : cases) {
        traces.lines.clear();
        EXPECT_EQ(characteristics.GetBestSampleMode(OPMODE_SEARCH, 0.0, 0.5, each.realtimeBandwidth), -1);
        EXPECT_EQ(
            Messages(traces),
            QStringList(
                u"WARNING: No sample mode found for eOpMode=4, fStartFreq=0.000000, fStopFreq=0.500000, fRealtimeBw="_s +
                each.text));
    }
}

// Selections

TEST(ZANCharacteristicsSelections, MethodsAreListedByNameWithTheirPositionAsKey) {
    ValueSelection selection;
    ZANCharacteristics::FillSelectionWithDfMethods(
        selection, {METHOD_SUPR, METHOD_COR, METHOD_WAT, METHOD_VEC, UNKNOWN, METHOD_COR}, nullptr);
    EXPECT_EQ(selection.GetItems(), Items({{u"SUPR"_s, 0.0, 0},
                                           {u"COR"_s, 0.0, 1},
                                           {u"WAT"_s, 0.0, 2},
                                           {u"VEC"_s, 0.0, 3},
                                           {u"Unknown"_s, 0.0, 4},
                                           {u"COR"_s, 0.0, 5}}));
}

TEST(ZANCharacteristicsSelections, PolarisationsAreListedByNameWithTheirPositionAsKey) {
    ValueSelection selection;
    ZANCharacteristics::FillSelectionWithPolarisationModes(selection,
                                                           {POLARISATION_HORIZONTAL, POLARISATION_LEFT,
                                                            POLARISATION_VERTICAL, POLARISATION_RIGHT,
                                                            static_cast<EZANPolarisation>(7)},
                                                           nullptr);
    EXPECT_EQ(selection.GetItems(), Items({{u"Horizontal"_s, 0.0, 0},
                                           {u"Left"_s, 0.0, 1},
                                           {u"Vertical"_s, 0.0, 2},
                                           {u"Right"_s, 0.0, 3},
                                           {u""_s, 0.0, 4}}));
}

TEST(ZANCharacteristicsSelections, WithoutMethodsOrPolarisationsTheSelectionBecomesEmpty) {
    ValueSelection selection;
    selection.AddItem({u"old"_s, 1.0, 5}, nullptr);
    ZANCharacteristics::FillSelectionWithDfMethods(selection, {}, nullptr);
    EXPECT_TRUE(selection.GetItems().empty());
    selection.AddItem({u"old"_s, 1.0, 5}, nullptr);
    ZANCharacteristics::FillSelectionWithPolarisationModes(selection, {}, nullptr);
    EXPECT_TRUE(selection.GetItems().empty());
}

TEST(ZANCharacteristicsSelections, TwoAttenuationsAreThereForTheCounts0And2AndFourForAllOthers) {
    const Items two{{u"0 dB"_s, 0.0, 0}, {u"12 dB"_s, 12.0, 12}};
    const Items four{
        {u"0 dB"_s, 0.0, 0}, {u"12 dB"_s, 12.0, 12}, {u"24 dB"_s, 24.0, 24}, {u"30 dB"_s, 30.0, 30}};
    ValueSelection selection;
    selection.AddItem({u"old"_s, 1.0, 5}, nullptr);
    const auto cases = std::to_array<std::pair<int, Items>>({
        {0, two},
        {1, four},
        {2, two},
        {3, four},
        {4, four},
        {-1, four},
        {std::numeric_limits<int>::min(), four},
        {0, two},
    });
    for (const auto& [count, items] : cases) {
        ZANCharacteristics::UpdateRfAttenuatorValuesAtVT(&selection, count, nullptr);
        EXPECT_EQ(selection.GetItems(), items) << count;
    }
}

TEST_F(ZANCharacteristicsQueriesTest, ResolutionBandwidthsAreOfferedAscendingWithTheirPositionAsKey) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9)});
    ValueSelection selection;
    selection.AddItem({u"old"_s, 1.0, 5}, nullptr);
    characteristics.UpdateResolutionBandwidthSelection(&selection, OPMODE_FFM, 1e8, 2e8, ANY_BANDWIDTH,
                                                       nullptr);
    EXPECT_EQ(selection.GetItems(), Items({{u"1 kHz"_s, 1000.0, 0},
                                           {u"2 kHz"_s, 2000.0, 1},
                                           {u"5 kHz"_s, 5000.0, 2},
                                           {u"8.33 kHz"_s, 8333.0, 3},
                                           {u"10 kHz"_s, 10000.0, 4},
                                           {u"12.5 kHz"_s, 12500.0, 5},
                                           {u"20 kHz"_s, 20000.0, 6},
                                           {u"25 kHz"_s, 25000.0, 7},
                                           {u"50 kHz"_s, 50000.0, 8},
                                           {u"100 kHz"_s, 100000.0, 9}}));
    characteristics.UpdateResolutionBandwidthSelection(&selection, OPMODE_TDMA, 1e8, 2e8, 2e5, nullptr);
    EXPECT_EQ(selection.GetItems(), Items({{u"200 kHz"_s, 200000.0, 0}}));
}

TEST_F(ZANCharacteristicsQueriesTest, RealtimeBandwidthsAreOfferedForHops) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, u"ZAN-HFR"_s, {MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9)});
    ValueSelection selection;
    selection.AddItem({u"old"_s, 1.0, 5}, nullptr);
    characteristics.UpdateHopBandwidthSelection(&selection, OPMODE_SEARCH, 1e8, 2e8, nullptr);
    EXPECT_EQ(selection.GetItems(), Items({{u"100 kHz"_s, 1e5, 0},
                                           {u"200 kHz"_s, 2e5, 1},
                                           {u"500 kHz"_s, 5e5, 2},
                                           {u"1 MHz"_s, 1e6, 3},
                                           {u"2 MHz"_s, 2e6, 4},
                                           {u"5 MHz"_s, 5e6, 5},
                                           {u"10 MHz"_s, 1e7, 6}}));
}

TEST_F(ZANCharacteristicsQueriesTest, SelectionStaysAsItIsWhenThereAreNoBandwidths) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANMOSS"_s, {}, {MakeAntenna(u"PX101"_s, u"RCV09"_s, 5e5, 3e7)});
    const Items before{{u"old"_s, 1.0, 5}, {u"chosen"_s, 2.0, 6}};
    ValueSelection selection;
    for (const SelectionItem& item : before) {
        selection.AddItem(item, nullptr);
    }
    selection.SetCurrentKey(6, nullptr);
    CodeObserver observer;
    selection.AddObserver(&observer);
    for (const double frequency : {1e6, 1e8}) { // without sample mode, and without antenna
        characteristics.UpdateResolutionBandwidthSelection(&selection, OPMODE_FFM, frequency, frequency,
                                                           ANY_BANDWIDTH, nullptr);
        characteristics.UpdateHopBandwidthSelection(&selection, OPMODE_FFM, frequency, frequency, nullptr);
    }
    EXPECT_EQ(selection.GetItems(), before);
    EXPECT_EQ(selection.GetCurrentKey(), 6);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ZANCharacteristicsQueriesTest, NullSelectionIsLeftAlone) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9)});
    CodeObserver observer;
    characteristics.UpdateResolutionBandwidthSelection(nullptr, OPMODE_FFM, 1e8, 1e8, ANY_BANDWIDTH,
                                                       &observer);
    characteristics.UpdateHopBandwidthSelection(nullptr, OPMODE_FFM, 1e8, 1e8, &observer);
    ZANCharacteristics::UpdateRfAttenuatorValuesAtVT(nullptr, 1, &observer);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ZANCharacteristicsQueriesTest, ObserversOfASelectionAreNotifiedOnceWhenItIsFilledButNotTheOriginator) {
    const ZANCharacteristics& characteristics =
        Connect(u"ZANTIDE"_s, {}, {MakeAntenna(u"PX106"_s, u"RCV03"_s, 2e7, 1.3e9)});
    struct Case {
        const char* name;
        std::function<void(ValueSelection&, IObserver*)> fill;
        std::size_t count;
    };
    const auto cases = std::to_array<Case>({
        {"methods",
         [](ValueSelection& selection, IObserver* originator) {
             ZANCharacteristics::FillSelectionWithDfMethods(selection, {METHOD_WAT, METHOD_COR}, originator);
         },
         2},
        {"no methods",
         [](ValueSelection& selection, IObserver* originator) {
             ZANCharacteristics::FillSelectionWithDfMethods(selection, {}, originator);
         },
         0},
        {"polarisations",
         [](ValueSelection& selection, IObserver* originator) {
             ZANCharacteristics::FillSelectionWithPolarisationModes(
                 selection, {POLARISATION_LEFT, POLARISATION_RIGHT}, originator);
         },
         2},
        {"resolution bandwidths",
         [&characteristics](ValueSelection& selection, IObserver* originator) {
             characteristics.UpdateResolutionBandwidthSelection(&selection, OPMODE_FFM, 1e8, 1e8, 0.0,
                                                                originator);
         },
         10},
        {"hop bandwidths",
         [&characteristics](ValueSelection& selection, IObserver* originator) {
             characteristics.UpdateHopBandwidthSelection(&selection, OPMODE_SCAN, 1e8, 1e8, originator);
         },
         3},
        {"attenuations",
         [](ValueSelection& selection, IObserver* originator) {
             ZANCharacteristics::UpdateRfAttenuatorValuesAtVT(&selection, 4, originator);
         },
         4},
    });
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        ValueSelection selection;
        selection.AddItem({u"old"_s, 1.0, 5}, nullptr);
        std::vector<std::size_t> counts;
        CodeObserver originator;
        FunctionObserver observer([&](Observable* subject, TChangeCode code) {
            EXPECT_EQ(subject, &selection);
            EXPECT_EQ(code, TChangeCode::Changed);
            counts.push_back(selection.GetItems().size());
        });
        selection.AddObserver(&originator);
        selection.AddObserver(&observer);
        each.fill(selection, &originator);
        EXPECT_EQ(counts, std::vector{each.count});
        EXPECT_TRUE(originator.codes.empty());

        each.fill(selection, nullptr);
        EXPECT_EQ(originator.codes, std::vector{TChangeCode::Changed});
    }
}
