#include "simulator/receivepath.h"

#include "zancommon/closedtable.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Simulator {

using KvZANCommon::DFSettingsStruct;

namespace {

using SampleMode = ReceivePath::SampleMode;

/// The bit of each method, in the order of `EZANMethod`.
constexpr std::array<qint32, 4> METHOD_BITS{METHODDETAILED_WAT, METHODDETAILED_COR, METHODDETAILED_SUPR,
                                            METHODDETAILED_VEC};

const ZANCharacteristics::AntennaDescription* FindLibraryRow(const QString& name, double frequency) {
    for (const auto& row : Rows(ZANCharacteristics::s_aAntennaLibrary)) {
        if (row.name == name && frequency >= row.minFrequency && frequency <= row.maxFrequency) {
            return &row;
        }
    }
    return nullptr;
}

template <class List>
bool HoldsBefore(const List& list, auto value, auto end) {
    const auto place = [&list](auto each) { return std::ranges::find(list, each) - list.begin(); };
    return place(value) < place(end);
}

bool HasOption(const Device& device, EZANOptions option) {
    return option == OPTION_NONE || std::ranges::find(device.options, option) != device.options.end();
}

bool Allows(const SampleMode& row, const Device& device, EZANConverter converter, EOperationMode mode,
            double frequency) {
    return converter != CONVERTER_NONE &&
           (converter == row.firstConverter || converter == row.secondConverter) &&
           frequency >= row.minFrequency && frequency <= row.maxFrequency &&
           HoldsBefore(row.deviceTypes, device.type, ZANTYPE_END) && HasOption(device, row.requiredOption) &&
           (row.excludedOption == OPTION_NONE || !HasOption(device, row.excludedOption)) &&
           (mode == OPMODE_ANY || HoldsBefore(row.operationModes, OPMODE_ANY, OPMODE_END) ||
            HoldsBefore(row.operationModes, mode, OPMODE_END));
}

/// Of two rows that are allowed.
bool IsBetter(const SampleMode& row, const SampleMode& than, const DFSettingsStruct& wanted) {
    const auto fits = [&wanted](const SampleMode& each) {
        return each.sampleMode == wanted.sampleMode || each.realtimeBandwidth == wanted.realtimeBandwidth;
    };
    if (fits(row) != fits(than)) {
        return fits(row);
    }
    if (row.priority != than.priority) {
        return row.priority > than.priority;
    }
    return row.realtimeBandwidth > than.realtimeBandwidth;
}

const SampleMode* FindSampleMode(const Device& device, EZANConverter converter, EOperationMode mode,
                                 double frequency, const DFSettingsStruct& wanted) {
    const SampleMode* best = nullptr;
    for (const SampleMode& row : Rows(ZANCharacteristics::s_aSampleModeDescription)) {
        if (Allows(row, device, converter, mode, frequency) && (!best || IsBetter(row, *best, wanted))) {
            best = &row;
        }
    }
    return best;
}

} // namespace

std::optional<ReceivePath> ReceivePath::Find(const Device& device, const DeviceSettings& settings, EMode mode,
                                             double frequency, const DFSettingsStruct& wanted) {
    for (std::size_t i = 0; i < device.antennas.size(); ++i) {
        const auto& setup = settings.antennas.at(i);
        const auto& receiver = settings.converters.at(static_cast<std::size_t>(setup.converterHandle));
        if (!receiver.enabled || frequency < setup.range.first || frequency > setup.range.second) {
            continue;
        }
        const auto* const row = FindLibraryRow(device.antennas[i].name, frequency);
        const SampleMode* const best =
            row ? FindSampleMode(device, static_cast<EZANConverter>(receiver.type),
                                 static_cast<EOperationMode>(mode), frequency, wanted)
                : nullptr;
        if (best) {
            return ReceivePath{i, static_cast<std::size_t>(setup.converterHandle), row->dfMethods, best};
        }
    }
    return {};
}

bool ReceivePath::FindAntenna(const Device& device, double frequency) {
    return std::ranges::any_of(device.antennas, [&](const Antenna& each) {
        const auto place = static_cast<std::size_t>(each.converter);
        return FindLibraryRow(each.name, frequency) && place < device.converters.size() &&
               FindSampleMode(device, device.converters[place], OPMODE_ANY, frequency, {});
    });
}

std::pair<double, double> ReceivePath::GetAntennaRange(const QString& name) {
    std::pair<double, double> range{std::numeric_limits<double>::max(), 0.0};
    for (const auto& each : GetSubRanges(name)) {
        range.first = std::min(range.first, each.minFrequency);
        range.second = std::max(range.second, each.maxFrequency);
    }
    return range;
}

std::list<KvZANCommon::AntennaSubRangeStruct> ReceivePath::GetSubRanges(const QString& name) {
    std::list<KvZANCommon::AntennaSubRangeStruct> ranges;
    for (const auto& row : Rows(ZANCharacteristics::s_aAntennaLibrary)) {
        if (row.name == name) {
            ranges.push_back({row.minFrequency, row.maxFrequency, row.dfMethods});
        }
    }
    return ranges;
}

double ReceivePath::GetResolutionBandwidth(double wanted) const {
    double best = *sampleMode->resolutionBandwidths;
    for (const double* each = sampleMode->resolutionBandwidths; *each > 0.0; ++each) {
        if (*each <= wanted) {
            best = *each;
        }
    }
    return best;
}

EZANMethod ReceivePath::GetMethod(const DFSettingsStruct& wanted) const {
    if (wanted.superResolution && HasMethod(METHOD_SUPR)) {
        return METHOD_SUPR;
    }
    if (wanted.method >= METHOD_WAT && wanted.method <= METHOD_VEC &&
        HasMethod(static_cast<EZANMethod>(wanted.method))) {
        return static_cast<EZANMethod>(wanted.method);
    }
    for (const EZANMethod method : {METHOD_COR, METHOD_VEC, METHOD_SUPR}) {
        if (HasMethod(method)) {
            return method;
        }
    }
    return METHOD_WAT;
}

bool ReceivePath::HasMethod(EZANMethod method) const {
    return (methods & METHOD_BITS.at(static_cast<std::size_t>(method))) != 0;
}

} // namespace Simulator
