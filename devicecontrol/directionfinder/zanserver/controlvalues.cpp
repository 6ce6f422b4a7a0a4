#include "zanserver/controlvalues.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "zanserver/servervalue.h"

#include <vector>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace ZANServer {

namespace {

using Items = std::vector<SelItemDesc>;

const Items& GetItems(const ValueDescriptor& descriptor) {
    static const Items demodulations{{u"Off"_s, 0, 0}, {u"AM"_s, 0, 1},  {u"FM"_s, 0, 2},
                                     {u"USB"_s, 0, 3}, {u"LSB"_s, 0, 4}, {u"CW"_s, 0, 5}};
    static const Items bandwidths{{u"150 Hz"_s, 150, 0},    {u"600 Hz"_s, 600, 1},    {u"2.4 kHz"_s, 2400, 2},
                                  {u"3.1 kHz"_s, 3100, 3},  {u"6 kHz"_s, 6000, 4},    {u"8 kHz"_s, 8000, 5},
                                  {u"15 kHz"_s, 15e3, 6},   {u"25 kHz"_s, 25e3, 7},   {u"50 kHz"_s, 50e3, 8},
                                  {u"150 kHz"_s, 150e3, 9}, {u"250 kHz"_s, 250e3, 10}};
    static const Items intervals{{u"20 ms"_s, 20, 0},   {u"50 ms"_s, 50, 1},   {u"100 ms"_s, 100, 2},
                                 {u"200 ms"_s, 200, 3}, {u"500 ms"_s, 500, 4}, {u"1 s"_s, 1000, 5},
                                 {u"2 s"_s, 2000, 6},   {u"5 s"_s, 5000, 7}};
    static const Items none;
    if (&descriptor == &g_vdDemodulation) {
        return demodulations;
    }
    if (&descriptor == &g_vdBandwidth) {
        return bandwidths;
    }
    return &descriptor == &g_vdUpdateInterval ? intervals : none;
}

ValueSelection* GetSelection(const ValueDescriptor& descriptor) {
    auto* const selection = ServerValue<ValueSelection>(descriptor);
    FillSelection(descriptor, *selection);
    return selection;
}

} // namespace

void FillSelection(const ValueDescriptor& descriptor, ValueSelection& selection) {
    if (!selection.GetItems().empty()) {
        return;
    }
    if (&descriptor == &g_vdAttenuationHf || &descriptor == &g_vdAttenuationVuhf) {
        constexpr int ALL_ATTENUATIONS = 4;
        ZANCharacteristics::UpdateRfAttenuatorValuesAtVT(&selection, ALL_ATTENUATIONS, nullptr);
    } else {
        const Items& items = GetItems(descriptor);
        SelItemDesc::AddItems(items.data(), static_cast<int>(items.size()), &selection);
    }
}

ControlValues::ControlValues(ZANCharacteristics& whose, IObserver* who)
    : frequency(ServerValue<ValueNumericDouble>(g_vdFrequency))
    , bandwidth(GetSelection(g_vdBandwidth))
    , demodulation(GetSelection(g_vdDemodulation))
    , preAmplifierHf(ServerValue<ValueBool>(g_vdPreAmplifierHf))
    , preAmplifierVuhf(ServerValue<ValueBool>(g_vdPreAmplifierVuhf))
    , attenuationHf(GetSelection(g_vdAttenuationHf))
    , attenuationVuhf(GetSelection(g_vdAttenuationVuhf))
    , gainControlMode(ServerValue<ValueSelection>(g_vdGainControlMode))
    , mgcLevel(ServerValue<ValueNumericDouble>(g_vdMGCLevel))
    , dfBandwidth(ServerValue<ValueSelection>(g_vdDfBandwidth))
    , dfMode(ServerValue<ValueSelection>(g_vdDfMode))
    , updateInterval(GetSelection(g_vdUpdateInterval))
    , levelThreshold(ServerValue<ValueNumericDouble>(g_vdLevelThreshold))
    , scanAveraging(ServerValue<ValueNumericInt>(g_vdScanAveraging))
    , scanRanges(ServerValue<ValueStringList>(g_vdScanRanges))
    , holdTime(ServerValue<ValueNumericInt>(g_vdHoldTime))
    , signalTime(ServerValue<ValueNumericInt>(g_vdSignalTime))
    , pauseTime(ServerValue<ValueNumericInt>(g_vdPauseTime))
    , antennaActive(ServerValue<ValueBool>(g_vdAntennaActive))
    , polarisation(ServerValue<ValueString>(g_vdPolarisation))
    , srStatus(ServerValue<ValueSelection>(g_vdSRStatus))
    , srNumEmitters(ServerValue<ValueNumericInt>(g_vdSRNumEmitters))
    , compassValue(ServerValue<ValueNumericInt>(g_vdCompassValue))
    , gpsTime(ServerValue<ValueBool>(g_vdGpsTime))
    , mute(ServerValue<ValueBool>(g_vdAuChannelMute))
    , volume(ServerValue<ValueNumericInt>(g_vdAuChannelVolume))
    , squelch(ServerValue<ValueBool>(g_vdAuSquelch))
    , audioThreshold(ServerValue<ValueNumericDouble>(g_vdAudioThreshold))
    , operationMode(ServerValue<ValueSelection>(g_vdOperationMode))
    , characteristics(whose)
    , owner(who) {}

} // namespace ZANServer
