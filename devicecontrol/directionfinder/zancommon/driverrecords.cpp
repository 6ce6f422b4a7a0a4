#include "zancommon/driverrecords.h"

#include <cstddef>

// Existing drivers rely on the layout of the settings records.

namespace KvZANCommon {

static_assert(offsetof(DFSettingsStruct, resolutionBandwidth) == 0);
static_assert(offsetof(DFSettingsStruct, method) == 8);
static_assert(offsetof(DFSettingsStruct, realtimeBandwidth) == 16);
static_assert(offsetof(DFSettingsStruct, sampleMode) == 24);
static_assert(offsetof(DFSettingsStruct, preamplifier) == 28);
static_assert(offsetof(DFSettingsStruct, activeAntenna) == 29);
static_assert(offsetof(DFSettingsStruct, superResolution) == 30);
static_assert(offsetof(DFSettingsStruct, averageTime) == 32);
static_assert(offsetof(DFSettingsStruct, measurementTime) == 40);
static_assert(offsetof(DFSettingsStruct, levelThreshold) == 48);
static_assert(offsetof(DFSettingsStruct, relativeThreshold) == 52);
static_assert(offsetof(DFSettingsStruct, polarisation) == 56);
static_assert(offsetof(DFSettingsStruct, userData) == 64);
static_assert(sizeof(DFSettingsStruct) == 72);

static_assert(offsetof(DEMSettingsStruct, demodulation) == 0);
static_assert(offsetof(DEMSettingsStruct, squelch) == 4);
static_assert(offsetof(DEMSettingsStruct, gainControl) == 8);
static_assert(offsetof(DEMSettingsStruct, bandwidth) == 16);
static_assert(offsetof(DEMSettingsStruct, offset) == 24);
static_assert(offsetof(DEMSettingsStruct, beatFrequency) == 32);
static_assert(sizeof(DEMSettingsStruct) == 40);

static_assert(offsetof(FilterSettingsStruct, azimuthFrom) == 0);
static_assert(offsetof(FilterSettingsStruct, azimuthTo) == 4);
static_assert(offsetof(FilterSettingsStruct, qualityMin) == 8);
static_assert(offsetof(FilterSettingsStruct, azimuthSpreadMax) == 12);
static_assert(offsetof(FilterSettingsStruct, durationMin) == 16);
static_assert(offsetof(FilterSettingsStruct, durationMax) == 20);
static_assert(offsetof(FilterSettingsStruct, elevationFrom) == 24);
static_assert(offsetof(FilterSettingsStruct, elevationTo) == 28);
static_assert(offsetof(FilterSettingsStruct, signalClasses) == 32);
static_assert(sizeof(FilterSettingsStruct) == 40);

static_assert(offsetof(GainControlStruct, mode) == 0);
static_assert(offsetof(GainControlStruct, attenuation) == sizeof(QString));
static_assert(offsetof(GainControlStruct, gain) == sizeof(QString) + 8);
static_assert(sizeof(GainControlStruct) == sizeof(QString) + 16);

static_assert(offsetof(ConverterSetupStruct, handle) == 0);
static_assert(offsetof(ConverterSetupStruct, type) == 4);
static_assert(offsetof(ConverterSetupStruct, typeName) == 8);
static_assert(offsetof(ConverterSetupStruct, antennaHandle) == 8 + sizeof(QString));
static_assert(offsetof(ConverterSetupStruct, attenuation) == 12 + sizeof(QString));
static_assert(offsetof(ConverterSetupStruct, enabled) == 16 + sizeof(QString));
static_assert(offsetof(ConverterSetupStruct, preamplifier) == 17 + sizeof(QString));
static_assert(sizeof(ConverterSetupStruct) == 24 + sizeof(QString));

static_assert(sizeof(AntennaSetupStruct::range) == 16);
static_assert(sizeof(AntennaSetupStruct::mechanicalOffset) == 8);

} // namespace KvZANCommon
