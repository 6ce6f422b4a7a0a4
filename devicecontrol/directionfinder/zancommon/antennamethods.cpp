#include "zancommon/antennamethods.h"

#include "zancommon/closedtable.h"
#include "zancommon/zancharacteristics.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

template <class T>
void AddOnce(std::list<T>& list, T element) {
    if (std::ranges::find(list, element) == list.end()) {
        list.push_back(element);
    }
}

} // namespace

long AntennaMethods::GetDetailed(const AntennaData& antenna, double frequency) {
    for (const auto& row : Rows(ZANCharacteristics::s_aAntennaLibrary)) {
        if (row.name == antenna.name &&
            FrequencyRange{row.minFrequency, row.maxFrequency}.Contains(frequency)) {
            return row.dfMethods;
        }
    }
    const bool isSuperResolution = antenna.name.contains("SR"_L1);
    return isSuperResolution ? METHODDETAILED_COR | METHODDETAILED_SUPR : METHODDETAILED_COR;
}

std::list<EZANMethod> AntennaMethods::GetAvailable(const AntennaDataList& antennas, double frequency) {
    std::list<EZANMethod> methods;
    for (const auto& antenna : antennas.GetAntennas()) {
        if (antenna->enabled && RangeOf(*antenna).Contains(frequency)) {
            for (const quint32 method : antenna->dfMethods) {
                AddOnce(methods, static_cast<EZANMethod>(method));
            }
        }
    }
    return methods;
}

std::list<EZANPolarisation> AntennaMethods::GetPolarisations(const AntennaDataList& antennas,
                                                             double frequency, double secondFrequency) {
    std::list<EZANPolarisation> modes;
    for (const auto& antenna : antennas.GetAntennas()) {
        const bool isReached = !(secondFrequency > 0.0) || antenna->maxRange >= secondFrequency;
        if (antenna->enabled && antenna->polarizationSupport && isReached &&
            RangeOf(*antenna).Contains(frequency)) {
            AddOnce(modes, antenna->polarizationMode);
        }
    }
    return modes;
}
