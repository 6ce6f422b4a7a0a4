#include "zanserver/supportreason.h"

#include "zancommon/zanoptions.h"
#include "zanserver/frequencytext.h"

#include <QStringList>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

using SampleMode = ZANCharacteristics::SampleModeDescription;

bool IsForDevice(const SampleMode& row, EZANType type) {
    const auto* const end = std::ranges::find(row.deviceTypes, ZANTYPE_END);
    return std::find(row.deviceTypes.begin(), end, type) != end;
}

QString OptionName(EZANOptions option) {
    return std::ranges::find(ZANOptions::s_aOptionEntries, option, &ZANOptions::OptionEntry::option)
        ->name.toString();
}

} // namespace

QString GetSupportProblem(const ZANCharacteristics& characteristics, const AntennaData& antenna) {
    if (characteristics.IsAntennaSupportedByDevice(&antenna, OPMODE_ANY)) {
        return {};
    }
    const auto& names = ZANCharacteristics::s_aConverterTypeNames;
    const auto* const named = std::ranges::find(names, QStringView(antenna.converterTypeName),
                                                &ZANCharacteristics::ConverterTypeName::name);
    if (named == names.end()) {
        return u"there is no converter '%1'"_s.arg(antenna.converterTypeName);
    }
    std::vector<const SampleMode*> rows; // of the converter at this device
    for (const SampleMode& row : ZANCharacteristics::s_aSampleModeDescription) {
        if (IsForDevice(row, characteristics.GetZANType()) &&
            (row.firstConverter == named->converter || row.secondConverter == named->converter)) {
            rows.push_back(&row);
        }
    }
    if (rows.empty()) {
        return u"the device has no sample mode for the converter %1"_s.arg(antenna.converterTypeName);
    }
    QStringList options;
    for (const SampleMode* row : rows) {
        const QString option = OptionName(row->requiredOption);
        if (ZANCharacteristics::LimitsHold(row->minFrequency, row->maxFrequency, antenna.minRange,
                                           antenna.maxRange) &&
            !options.contains(option)) {
            options.append(option);
        }
    }
    if (!options.isEmpty()) {
        return u"needs the option "_s + options.join(u" or "_s);
    }
    return u"no sample mode of the converter %1 holds the range %2"_s.arg(
        antenna.converterTypeName, FrequencyText::FormatRange(antenna.minRange, antenna.maxRange));
}

} // namespace ZANServer
