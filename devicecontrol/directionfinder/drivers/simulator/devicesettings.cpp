#include "simulator/devicesettings.h"

#include "simulator/receivepath.h"
#include "zancommon/zancharacteristics.h"

#include <algorithm>

namespace Simulator {

using namespace KvZANCommon;

DeviceSettings MakeInitialSettings(const Scenario& scenario) {
    const Device& device = scenario.device;
    DeviceSettings settings;
    settings.frequency = device.frequency;
    settings.df.method = -1;
    settings.compassOffsets.resize(scenario.platform.compasses.size());
    for (const EZANConverter converter : device.converters) {
        ConverterSetupStruct setup;
        setup.handle = static_cast<qint32>(settings.converters.size());
        setup.type = converter;
        const auto* const row = std::ranges::find(ZANCharacteristics::s_aConverterTypeNames, converter,
                                                  &ZANCharacteristics::ConverterTypeName::converter);
        if (row != ZANCharacteristics::s_aConverterTypeNames.end()) {
            setup.typeName = row->name.toString();
        }
        setup.enabled = true;
        settings.converters.push_back(setup);
    }
    for (const Antenna& antenna : device.antennas) {
        AntennaSetupStruct setup;
        setup.handle = static_cast<qint32>(settings.antennas.size());
        setup.range = ReceivePath::GetAntennaRange(antenna.name);
        setup.polarisation = POLARISATION_VERTICAL;
        setup.converterHandle = antenna.converter;
        setup.compassHandle = antenna.compass;
        setup.mechanicalOffset = antenna.mechanicalOffset;
        setup.subRanges = ReceivePath::GetSubRanges(antenna.name);
        auto& converter = settings.converters.at(static_cast<std::size_t>(antenna.converter));
        if (converter.antennaHandle < 0) {
            converter.antennaHandle = setup.handle;
        }
        settings.antennas.push_back(setup);
    }
    for (const ScanRange& range : device.ranges) {
        settings.ranges.push_back(MakeRange(range, static_cast<int>(settings.ranges.size())));
    }
    settings.skipped.resize(ZANCharacteristics::MAX_CHANNEL_COUNT_DEFAULT);
    return settings;
}

FreqRangeDefinition MakeRange(const ScanRange& range, int index) {
    FreqRangeDefinition definition;
    definition.SetIndex(index);
    definition.SetStartFreq(range.start);
    definition.SetStepFreq(range.step);
    definition.SetStopFreq(range.stop);
    return definition;
}

} // namespace Simulator
