#pragma once

#include "zancommon/frequencyrange.h"
#include "zancommon/zandomain.h"
#include "zancommon_export.h"

#include <QString>
#include <QStringList>

#include <vector>

/// One entry of the antenna setup: what an antenna is, and in which part of its coverage it is used.
///
/// An antenna may have several entries, one for each frequency range or polarisation; they share its handle.
/// A plain record: a copy shares nothing with its source. Entries read from the settings keep
/// minFreq <= minRange <= maxRange <= maxFreq; the record itself checks nothing.
class ZANCOMMON_EXPORT AntennaData {
public:
    AntennaData() = default;
    AntennaData(const AntennaData&) = default;
    AntennaData& operator=(const AntennaData&) = default;
    virtual ~AntennaData();

    QString name;          ///< model name as the device reports it, such as "PX104_L" or "PX122 (A/P)"
    qint32 handle = -1;    ///< of the antenna at the device; -1: not known yet
    double minFreq = 0.0;  ///< Hz: lowest frequency that the antenna covers
    double maxFreq = 0.0;  ///< Hz: highest frequency that the antenna covers
    double minRange = 0.0; ///< Hz: lower end of the range in which this entry is used
    double maxRange = 0.0; ///< Hz: upper end of the range in which this entry is used
    bool enabled = true;   ///< takes part in the search for the antenna of a frequency
    std::vector<quint32> dfMethods;    ///< EZANMethod values in the device's order; 0xFFFFFFFF: unknown name
    QStringList dfAlgorithms;          ///< the same methods by name
    bool compassSupport = false;       ///< has a compass
    bool compassEnabled = false;       ///< the compass is to be used
    float compassValue = -1.0F;        ///< degrees; -1: none
    float mechOffset = 0.0F;           ///< degrees: offset of the mounting
    bool polarizationSupport = false;  ///< can switch its polarisation
    bool activePassiveSupport = false; ///< can switch between active and passive operation
    bool furtherFlag = false;          ///< carried along
    EZANPolarisation polarizationMode = POLARISATION_LEFT; ///< polarisation in which this entry is used
    qint32 reservedHandle = -1;                            ///< carried along
    qint32 compassHandle = -1;                             ///< of the antenna's compass at the device
    quint64 auxiliaryValue1 = 0;                           ///< carried along
    qint32 converterHandle = -1; ///< of the frequency converter behind the antenna; -1: none
    QString converterTypeName;   ///< type name of the converter, such as "RCV01"
    quint64 auxiliaryValue2 = 0; ///< carried along
    quint64 auxiliaryValue3 = 0; ///< carried along
};

/// What the antenna covers.
[[nodiscard]] inline FrequencyRange CoverageOf(const AntennaData& antenna) {
    return {antenna.minFreq, antenna.maxFreq};
}

/// The range in which the entry is used.
[[nodiscard]] inline FrequencyRange RangeOf(const AntennaData& antenna) {
    return {antenna.minRange, antenna.maxRange};
}

/// Sets the range in which the entry is used. Nothing is checked.
inline void SetRange(AntennaData& antenna, const FrequencyRange& range) {
    antenna.minRange = range.low;
    antenna.maxRange = range.high;
}
