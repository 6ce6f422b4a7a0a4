// Queries of the device model. The yardsticks are minimal loops over the same tables and antennas that give
// the same answers: what an application would write by hand if it knew its device, its options and its
// antennas.

#include "allocationcounter.h"

#include "kwbase/errorhandler.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/zaninformationcenter.h"
#include "zancommon/zanoptions.h"
#include "zancommon/zanvaluenames.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using SampleMode = ZANCharacteristics::SampleModeDescription;

constexpr double ANY = ZANCharacteristics::fBANDWIDTH_ANY;

struct Row {
    const char16_t* name;
    const char16_t* converter;
    double low;
    double high;
};

// Twelve antennas with adjacent ranges.
constexpr std::array<Row, 12> ANTENNAS{{
    {u"PX120", u"RCV07", 9e3, 300e3},
    {u"PX101", u"RCV01", 300001, 5e6},
    {u"PX102", u"RCV01", 5000001, 10e6},
    {u"PX110", u"RCV01", 10000001, 20e6},
    {u"PX113", u"RCV01", 20000001, 30e6},
    {u"PX105", u"RCV03", 30000001, 100e6},
    {u"PX106", u"RCV03", 100000001, 200e6},
    {u"PX107", u"RCV03", 200000001, 450e6},
    {u"PX115", u"RCV03", 450000001, 800e6},
    {u"PX115SR", u"RCV03", 800000001, 1300e6},
    {u"PX109", u"RCV03", 1300000001, 2000e6},
    {u"PX118", u"RCV03", 2000000001, 3000e6},
}};

/// The data of the hand-written loops: only the members of the same antennas that they need.
struct PlainAntenna {
    bool enabled;
    EZANPolarisation polarisation;
    QString converter;
    double low;
    double high;
};

/// The device of the benchmark in the tree, and a plain copy of its data.
class Device {
public:
    Device() {
        using namespace StdDeviceDefinition;
        ErrorHandler::Instance().SetTraceMask(0);
        CreateBranch(EBranch::DEVICE, Path());
        CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
        AntennaDataList antennas;
        for (const Row& row : ANTENNAS) {
            auto* const antenna = new AntennaData;
            antenna->name = QString::fromUtf16(row.name);
            antenna->converterTypeName = QString::fromUtf16(row.converter);
            antenna->minFreq = antenna->minRange = row.low;
            antenna->maxFreq = antenna->maxRange = row.high;
            antenna->polarizationMode = POLARISATION_VERTICAL;
            antenna->dfMethods = {METHOD_COR};
            antennas.AddAntenna(antenna);
            plainAntennas.push_back(
                {true, POLARISATION_VERTICAL, antenna->converterTypeName, row.low, row.high});
        }
        antennas.WriteAntennasToValueTree(Path());
        for (const auto& entry : ZANOptions::s_aOptionEntries) {
            ZANOptions::Instance()->AddOption(entry.option);
            hasOption[static_cast<std::size_t>(entry.option)] = true;
        }
        hasOption[OPTION_NONE] = true;
        characteristics.SetBase_ValuePath(Path(), true);
        polarisation =
            Tree::Instance()->Find<ValueString>(ZANPath::SERVER.toString() + g_vdPolarisation.PathName());
    }

    static QString Path() { return ZANPath::DEVICE_NODE.toString(); }

    ZANCharacteristics& characteristics = ZANInformationCenter::Instance()->GetZANCharacteristics();
    std::vector<PlainAntenna> plainAntennas;
    std::array<bool, 20> hasOption{};
    ValueString* polarisation = nullptr;
};

Device& GetDevice() {
    static Device device;
    return device;
}

// The hand-written answers

const PlainAntenna* PlainAntennaForRange(double start, double stop) {
    for (const PlainAntenna& antenna : GetDevice().plainAntennas) {
        if (antenna.enabled && antenna.low <= start && stop <= antenna.high) {
            return &antenna;
        }
    }
    return nullptr;
}

EZANConverter PlainConverter(const QString& name) {
    for (const auto& each : ZANCharacteristics::s_aConverterTypeNames) {
        if (each.name == name) {
            return each.converter;
        }
    }
    return CONVERTER_NONE;
}

const SampleMode* PlainBestRow(EOperationMode mode, const PlainAntenna& antenna, double bandwidth) {
    const EZANConverter converter = PlainConverter(antenna.converter);
    const auto& hasOption = GetDevice().hasOption;
    const SampleMode* best = nullptr;
    for (const SampleMode* row = ZANCharacteristics::s_aSampleModeDescription.data();
         row->sampleMode != SAMPLEMODE_END; ++row) {
        if (best && row->priority <= best->priority) {
            continue;
        }
        const EZANType* type = row->deviceTypes.data();
        while (*type != ZANTYPE_ZANTIDE && *type != ZANTYPE_END) {
            ++type;
        }
        if (*type == ZANTYPE_END || !hasOption[static_cast<std::size_t>(row->requiredOption)] ||
            (row->firstConverter != converter && row->secondConverter != converter) ||
            (bandwidth != ANY && bandwidth != row->realtimeBandwidth) || antenna.low < row->minFrequency ||
            antenna.high > row->maxFrequency) {
            continue;
        }
        for (const EOperationMode* each = row->operationModes.data(); *each != OPMODE_END; ++each) {
            if (*each == mode || *each == OPMODE_ANY) {
                best = row;
                break;
            }
        }
    }
    return best;
}

EZANPolarisation PlainPolarisation() {
    const QString& name = GetDevice().polarisation->GetValue();
    if (name == "Left"_L1) {
        return POLARISATION_LEFT;
    }
    if (name == "Right"_L1) {
        return POLARISATION_RIGHT;
    }
    return name == "Vertical"_L1 ? POLARISATION_VERTICAL : POLARISATION_HORIZONTAL;
}

const PlainAntenna* PlainAntennaForFrequency(double frequency) {
    const EZANPolarisation polarisation = PlainPolarisation();
    const PlainAntenna* fallback = nullptr;
    for (const PlainAntenna& antenna : GetDevice().plainAntennas) {
        if (antenna.enabled && antenna.low <= frequency && frequency <= antenna.high) {
            if (antenna.polarisation == polarisation) {
                return &antenna;
            }
            fallback = &antenna;
        }
    }
    return fallback;
}

EZANSampleMode PlainBestSampleMode(EOperationMode mode, double start, double stop) {
    const PlainAntenna* const antenna = PlainAntennaForRange(start, stop);
    const SampleMode* const row = antenna ? PlainBestRow(mode, *antenna, ANY) : nullptr;
    return row ? row->sampleMode : SAMPLEMODE_END;
}

std::set<double> PlainResolutionBandwidths(EOperationMode mode, double start, double stop) {
    std::set<double> bandwidths;
    if (const PlainAntenna* antenna = PlainAntennaForRange(start, stop)) {
        if (const SampleMode* row = PlainBestRow(mode, *antenna, ANY)) {
            for (const double* each = row->resolutionBandwidths; *each > 0.0; ++each) {
                bandwidths.insert(*each);
            }
        }
    }
    return bandwidths;
}

constexpr double LOWEST = 9e3;
constexpr double HIGHEST = 3000e6;

const PlainAntenna* PlainNextFrequency(double& frequency, double bandwidth) {
    frequency = std::clamp(frequency, LOWEST, HIGHEST);
    const PlainAntenna* const antenna = PlainAntennaForFrequency(frequency);
    if (antenna) {
        if (frequency - bandwidth / 2 < antenna->low) {
            frequency = antenna->low + bandwidth / 2;
        } else if (frequency + bandwidth / 2 > antenna->high) {
            frequency = antenna->high - bandwidth / 2;
        }
    }
    return antenna;
}

const PlainAntenna* PlainNextRange(EOperationMode mode, double& start, double& stop) {
    double shift = start < LOWEST ? LOWEST - start : 0.0;
    if (stop > HIGHEST) {
        shift = HIGHEST - stop;
    }
    double movedStart = start + shift;
    double movedStop = stop + shift;
    const PlainAntenna* const first = PlainAntennaForFrequency(movedStart);
    const PlainAntenna* const second = PlainAntennaForFrequency(movedStop);
    if (first && second && first != second) {
        const double move = first->high - movedStop;
        movedStart += move;
        movedStop += move;
    }
    const PlainAntenna* const antenna = PlainAntennaForRange(movedStart, movedStop);
    if (!antenna || !PlainBestRow(mode, *antenna, ANY)) {
        return nullptr;
    }
    start = movedStart;
    stop = movedStop;
    return first;
}

bool PlainIsValid() {
    double high = -1.0;
    for (const PlainAntenna& antenna : GetDevice().plainAntennas) {
        if (!PlainBestRow(OPMODE_ANY, antenna, ANY) || (high > 0.0 && antenna.low != high + 1.0)) {
            return false;
        }
        high = antenna.high;
    }
    return high > 0.0;
}

/// Frequencies over the whole range of the device, one after the other.
class Frequencies {
public:
    double Next() {
        m_index = (m_index + 1) % m_frequencies.size();
        return m_frequencies[m_index];
    }

private:
    std::array<double, 13> m_frequencies{100e3, 1e6,   7e6,   15e6,   25e6,   35e6, 145e6,
                                         433e6, 500e6, 868e6, 1575e6, 2400e6, 5e9};
    std::size_t m_index = 0;
};

template <class Answer>
void Ask(benchmark::State& state, Answer answer) {
    GetDevice();
    Frequencies frequencies;
    answer(frequencies.Next());
    const AllocationCounter allocations(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(answer(frequencies.Next()));
    }
}

void BestSampleModePlain(benchmark::State& state) {
    Ask(state, [](double f) { return PlainBestSampleMode(OPMODE_SCAN, f, f); });
}
void BestSampleMode(benchmark::State& state) {
    Ask(state,
        [](double f) { return GetDevice().characteristics.GetBestSampleMode(OPMODE_SCAN, f, f, ANY); });
}

void ResolutionBandwidthsPlain(benchmark::State& state) {
    Ask(state, [](double f) { return PlainResolutionBandwidths(OPMODE_SCAN, f, f); });
}
void ResolutionBandwidths(benchmark::State& state) {
    Ask(state,
        [](double f) { return GetDevice().characteristics.GetResolutionBandwidths(OPMODE_SCAN, f, f, ANY); });
}

void AntennaForFrequencyPlain(benchmark::State& state) {
    Ask(state, [](double f) { return PlainAntennaForFrequency(f); });
}
void AntennaForFrequency(benchmark::State& state) {
    Ask(state, [](double f) { return GetDevice().characteristics.GetAntennaForFrequency(f, false); });
}

void NextFrequencyPlain(benchmark::State& state) {
    Ask(state, [](double f) { return PlainNextFrequency(f, 1e6) ? f : 0.0; });
}
void NextFrequency(benchmark::State& state) {
    Ask(state, [](double f) {
        double bandwidth = 1e6;
        return GetDevice().characteristics.ToNextValidFrequency(OPMODE_WIDEBAND_FFM, f, bandwidth) ? f : 0.0;
    });
}

void NextRangePlain(benchmark::State& state) {
    Ask(state, [](double f) {
        double stop = f + 1e6;
        return PlainNextRange(OPMODE_SCAN, f, stop) ? f : 0.0;
    });
}
void NextRange(benchmark::State& state) {
    Ask(state, [](double f) {
        double stop = f + 1e6;
        double bandwidth = ANY;
        double unused = 0.0;
        return GetDevice().characteristics.ToNextValidFrequencyRange(OPMODE_SCAN, f, stop, bandwidth, unused,
                                                                     ZANCharacteristics::ADJUST_DOWN)
                   ? f
                   : 0.0;
    });
}

void SetupValidityPlain(benchmark::State& state) {
    Ask(state, [](double) { return PlainIsValid() ? u"Antenna setup is valid."_s : QString(); });
}
void SetupValidity(benchmark::State& state) {
    Ask(state, [](double) {
        QString message;
        benchmark::DoNotOptimize(GetDevice().characteristics.CheckAntennaSetupValidity(nullptr, message));
        return message;
    });
}

/// The yardstick of the rebuild: every value of every antenna, looked up in the tree and copied.
void RebuildPlain(benchmark::State& state) {
    const auto descriptors = StdDeviceDefinition::GetDescriptors(StdDeviceDefinition::EBranch::ANTENNA);
    std::vector<QString> nodes;
    for (std::size_t i = 0; i < ANTENNAS.size(); ++i) {
        nodes.push_back(GetDevice().Path() + u"/Ant"_s + QString::number(i));
    }
    Ask(state, [&](double) {
        const Tree& tree = *Tree::Instance();
        std::vector<std::unique_ptr<AntennaData>> antennas;
        for (const QString& node : nodes) {
            auto& antenna = *antennas.emplace_back(std::make_unique<AntennaData>());
            for (const ValueDescriptor* descriptor : descriptors) {
                const ValueBase* const value = tree.GetValue(node + descriptor->PathName());
                if (const auto* text = dynamic_cast<const ValueString*>(value)) {
                    (antenna.name.isEmpty() ? antenna.name : antenna.converterTypeName) = text->GetValue();
                } else if (const auto* number = dynamic_cast<const ValueNumericDouble*>(value)) {
                    antenna.maxRange = number->GetValue();
                } else if (const auto* flag = dynamic_cast<const ValueBool*>(value)) {
                    antenna.enabled = flag->GetValue();
                } else if (const auto* integer = dynamic_cast<const ValueNumericInt*>(value)) {
                    antenna.handle = integer->GetValue();
                }
            }
        }
        for (const PlainAntenna& antenna : GetDevice().plainAntennas) {
            for (const EOperationMode mode :
                 {OPMODE_FFM, OPMODE_WIDEBAND_FFM, OPMODE_SEARCH, OPMODE_SCAN, OPMODE_TDMA, OPMODE_9}) {
                benchmark::DoNotOptimize(PlainBestRow(mode, antenna, ANY));
            }
        }
        return antennas.size();
    });
}
void Rebuild(benchmark::State& state) {
    Ask(state, [](double) {
        GetDevice().characteristics.UpdateCachedDataFromValueTree();
        return GetDevice().characteristics.GetMaxFreq(OPMODE_SCAN);
    });
}

BENCHMARK(BestSampleModePlain);
BENCHMARK(BestSampleMode);
BENCHMARK(ResolutionBandwidthsPlain);
BENCHMARK(ResolutionBandwidths);
BENCHMARK(AntennaForFrequencyPlain);
BENCHMARK(AntennaForFrequency);
BENCHMARK(NextFrequencyPlain);
BENCHMARK(NextFrequency);
BENCHMARK(NextRangePlain);
BENCHMARK(NextRange);
BENCHMARK(SetupValidityPlain);
BENCHMARK(SetupValidity);
BENCHMARK(RebuildPlain);
BENCHMARK(Rebuild);

/// Whether the hand-written loops give the answers of the library; a yardstick with other answers is useless.
bool AgreeWithTheLibrary() {
    ZANCharacteristics& device = GetDevice().characteristics;
    Frequencies frequencies;
    bool agree = true;
    for (int i = 0; i < 13; ++i) {
        const double f = frequencies.Next();
        agree = agree &&
                PlainBestSampleMode(OPMODE_SCAN, f, f) == device.GetBestSampleMode(OPMODE_SCAN, f, f, ANY);
        agree = agree && PlainResolutionBandwidths(OPMODE_SCAN, f, f) ==
                             device.GetResolutionBandwidths(OPMODE_SCAN, f, f, ANY);
        const PlainAntenna* const plain = PlainAntennaForFrequency(f);
        const AntennaData* const antenna = device.GetAntennaForFrequency(f, false);
        agree = agree && (plain ? antenna && antenna->minRange == plain->low : !antenna);
        double plainFrequency = f;
        double frequency = f;
        double bandwidth = 1e6;
        PlainNextFrequency(plainFrequency, bandwidth);
        device.ToNextValidFrequency(OPMODE_WIDEBAND_FFM, frequency, bandwidth);
        agree = agree && plainFrequency == frequency;
        double plainStart = f;
        double plainStop = f + 1e6;
        double start = f;
        double stop = f + 1e6;
        double unused = 0.0;
        bandwidth = ANY;
        PlainNextRange(OPMODE_SCAN, plainStart, plainStop);
        device.ToNextValidFrequencyRange(OPMODE_SCAN, start, stop, bandwidth, unused,
                                         ZANCharacteristics::ADJUST_DOWN);
        agree = agree && plainStart == start && plainStop == stop;
    }
    QString message;
    return agree && device.CheckAntennaSetupValidity(nullptr, message) == PlainIsValid();
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (!AgreeWithTheLibrary()) {
        std::cerr << "the hand-written loops do not answer as the library does\n";
        return EXIT_FAILURE;
    }
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
