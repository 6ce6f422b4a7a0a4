#pragma once

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"
#include "zancommon/driverrecords.h"
#include "zancommon/zancharacteristics.h"

#include <vector>

namespace ZANServer {

/// Gives a selection that an application fills its items, when it has none and they do not depend on the
/// device: demodulations, bandwidths, update intervals, attenuations.
void FillSelection(const ValueDescriptor& descriptor, ValueSelection& selection);

/// The values of the tree through which an operator sets the device, and what is needed to make a wish valid.
/// The values are created when they are missing, and must outlive this. Belongs to the thread of the tree.
struct ControlValues {
    /// \param who the observer on whose behalf values are set
    ControlValues(ZANCharacteristics& whose, IObserver* who);

    ValueNumericDouble* frequency;
    ValueSelection* bandwidth;    ///< of the demodulation
    ValueSelection* demodulation; ///< the keys are the numbers of the demodulators
    ValueBool* preAmplifierHf;
    ValueBool* preAmplifierVuhf;
    ValueSelection* attenuationHf; ///< the keys are dB
    ValueSelection* attenuationVuhf;
    ValueSelection* gainControlMode;
    ValueNumericDouble* mgcLevel;
    ValueSelection* dfBandwidth; ///< the resolution bandwidths where the device is tuned to
    ValueSelection* dfMode;      ///< the methods of the antenna there
    ValueSelection* updateInterval;
    ValueNumericDouble* levelThreshold;
    ValueNumericInt* scanAveraging;
    ValueStringList* scanRanges;
    ValueNumericInt* holdTime;
    ValueNumericInt* signalTime;
    ValueNumericInt* pauseTime;
    ValueBool* antennaActive;
    ValueString* polarisation;
    ValueSelection* srStatus;
    ValueNumericInt* srNumEmitters;
    ValueNumericInt* compassValue;
    ValueBool* gpsTime;
    ValueBool* mute;
    ValueNumericInt* volume;
    ValueBool* squelch;
    ValueNumericDouble* audioThreshold;
    ValueSelection* operationMode;

    ZANCharacteristics& characteristics;
    IObserver* owner;
    // What the device has said of itself.
    bool isScanning = false; ///< the device, or searching
    std::vector<KvZANCommon::AntennaSetupStruct> antennaSetups;
    std::vector<KvZANCommon::ConverterSetupStruct> converterSetups;

    [[nodiscard]] EOperationMode GetMode() const {
        return static_cast<EOperationMode>(operationMode->GetCurrentKey());
    }
    /// The antenna that serves the frequency; null when none does.
    [[nodiscard]] const AntennaData* GetAntenna() const {
        return characteristics.GetAntennaForFrequency(frequency->GetValue(), false);
    }
};

} // namespace ZANServer
