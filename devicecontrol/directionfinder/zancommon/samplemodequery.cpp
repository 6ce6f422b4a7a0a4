#include "zancommon/samplemodequery.h"

#include "zancommon/closedtable.h"
#include "zancommon/zanoptions.h"

#include <algorithm>

using EReason = AntennaSupport::EReason;

AntennaSupport::EReason SampleModeQuery::Test(const Row& row) const {
    if (converter == CONVERTER_NONE) {
        return EReason::UNKNOWN_CONVERTER;
    }
    if (converter != row.firstConverter && converter != row.secondConverter) {
        return EReason::CONVERTER;
    }
    const auto endsTypes = [this](EZANType each) { return each == deviceType || each == ZANTYPE_END; };
    if (*std::ranges::find_if(row.deviceTypes, endsTypes) == ZANTYPE_END) {
        return EReason::DEVICE_TYPE;
    }
    const auto endsModes = [this](EOperationMode each) {
        return each == mode || each == OPMODE_ANY || each == OPMODE_END;
    };
    if (mode != OPMODE_ANY && *std::ranges::find_if(row.operationModes, endsModes) == OPMODE_END) {
        return EReason::OPERATION_MODE;
    }
    if (!ZANCharacteristics::LimitsHold(row.minFrequency, row.maxFrequency, start, stop)) {
        return EReason::FREQUENCY_RANGE;
    }
    // Looking up options is the most expensive test and comes last.
    const ZANOptions& options = *ZANOptions::Instance();
    if (!options.HasOption(row.requiredOption)) {
        return EReason::OPTION_MISSING;
    }
    const bool isExcluded = row.excludedOption != OPTION_NONE && options.HasOption(row.excludedOption);
    return isExcluded ? EReason::OPTION_EXCLUDES : EReason::SUPPORTED;
}

bool SampleModeQuery::Fits(const Row& row) const {
    // The cheapest tests come first: most rows are for another converter or other frequencies.
    return (converter == row.firstConverter || converter == row.secondConverter) &&
           ZANCharacteristics::LimitsHold(row.minFrequency, row.maxFrequency, start, stop) &&
           (realtimeBandwidth == ZANCharacteristics::fBANDWIDTH_ANY ||
            realtimeBandwidth == row.realtimeBandwidth) &&
           Test(row) == EReason::SUPPORTED;
}

const SampleModeQuery::Row* SampleModeQuery::FindBest() const {
    const Row* best = nullptr;
    int bestPriority = -100000;
    for (const Row& row : Rows(ZANCharacteristics::s_aSampleModeDescription)) {
        if (row.priority > bestPriority && Fits(row)) {
            best = &row;
            bestPriority = row.priority;
        }
    }
    return best;
}

std::vector<const SampleModeQuery::Row*> SampleModeQuery::FindAll() const {
    std::vector<const Row*> rows;
    for (const Row& row : Rows(ZANCharacteristics::s_aSampleModeDescription)) {
        if (Fits(row)) {
            rows.push_back(&row);
        }
    }
    return rows;
}

AntennaSupport SampleModeQuery::Explain() const {
    AntennaSupport support;
    for (const Row& row : Rows(ZANCharacteristics::s_aSampleModeDescription)) {
        const EReason reason = Test(row);
        if (reason < support.reason) {
            continue;
        }
        if (reason > support.reason) {
            support = {reason, {}};
        }
        const EZANOptions option =
            reason == EReason::OPTION_MISSING ? row.requiredOption : row.excludedOption;
        const bool isAboutOption = reason == EReason::OPTION_MISSING || reason == EReason::OPTION_EXCLUDES;
        if (isAboutOption && std::ranges::find(support.options, option) == support.options.end()) {
            support.options.push_back(option);
        }
    }
    return support;
}
