#pragma once

/// \file
/// The records that cross the driver interfaces: plain values, compared by content. Drivers are built
/// separately from the application, so the order and the widths of the fields must not change. Times are
/// milliseconds since 1970-01-01 00:00:00 UTC, angles clockwise, positions WGS84. Handles are the
/// device's own; -1: none. Nothing is checked here.

#include "zancommon/bearing.h"
#include "zancommon/zandomain.h"

#include <QString>

#include <list>
#include <optional>
#include <utility>
#include <vector>

/// Operating mode of the driver, numbered like the operation modes of the device.
enum EMode : qint32 {
    EMODE_STANDBY = 0,
    EMODE_FFM = 1,
    EMODE_WIDEBAND_FFM = 2,
    EMODE_SCAN = 3,
    EMODE_SEARCH = 4,
    EMODE_TDMA = 6
};

namespace KvZANCommon {

/// DF measurement settings of one frequency range; -1 and -1.0: not set.
struct DFSettingsStruct {
    double resolutionBandwidth = -1.0; ///< Hz
    qint32 method = -1;                ///< EZANMethod
    double realtimeBandwidth = -1.0;   ///< Hz
    qint32 sampleMode = -1;            ///< EZANSampleMode
    bool preamplifier = false;
    bool activeAntenna = false;
    bool superResolution = false;
    double averageTime = -1.0;      ///< seconds
    double measurementTime = -1.0;  ///< seconds
    qint32 levelThreshold = -1;     ///< dB
    bool relativeThreshold = false; ///< the threshold is relative to the noise floor
    qint32 polarisation = -1;       ///< EZANPolarisation
    quint64 userData = 0;           ///< for the application; not interpreted

    bool operator==(const DFSettingsStruct&) const = default;
};

/// Demodulation settings of one frequency range; -1 and -1.0: not set.
struct DEMSettingsStruct {
    qint32 demodulation = 0;     ///< 0: off, otherwise the demodulator's number
    qint32 squelch = -1;         ///< dB
    qint32 gainControl = -1;     ///< 0: manual, 1: automatic
    double bandwidth = -1.0;     ///< Hz
    double offset = -1.0;        ///< Hz, from the receive frequency
    double beatFrequency = -1.0; ///< Hz

    bool operator==(const DEMSettingsStruct&) const = default;
};

/// Filter for the results of one frequency range. The default lets everything pass; a 0 restricts nothing.
struct FilterSettingsStruct {
    qint32 azimuthFrom = 0;              ///< hundredths of a degree, clockwise to `azimuthTo`
    qint32 azimuthTo = 35999;            ///< hundredths of a degree
    qint32 qualityMin = 0;               ///< 0 to 100
    qint32 azimuthSpreadMax = 0;         ///< hundredths of a degree
    qint32 durationMin = 0;              ///< milliseconds
    qint32 durationMax = 0;              ///< milliseconds
    qint32 elevationFrom = 0;            ///< hundredths of a degree
    qint32 elevationTo = 9000;           ///< hundredths of a degree
    quint64 signalClasses = ~quint64{0}; ///< one bit per class that passes

    bool operator==(const FilterSettingsStruct&) const = default;
};

/// Gain control of the receiver.
struct GainControlStruct {
    QString mode;            ///< as the driver names it
    qint32 attenuation = -1; ///< dB, -1: not set
    double gain = -1.0;      ///< dB, -1.0: not set

    bool operator==(const GainControlStruct&) const = default;
};

/// A frequency converter and how it is set up.
struct ConverterSetupStruct {
    qint32 handle = -1;
    qint32 type = CONVERTER_NONE; ///< EZANConverter
    QString typeName;
    qint32 antennaHandle = -1;
    qint32 attenuation = 0; ///< dB
    bool enabled = false;
    bool preamplifier = false;

    bool operator==(const ConverterSetupStruct&) const = default;
};

/// Part of an antenna's frequency range with its own methods.
struct AntennaSubRangeStruct {
    double minFrequency = 0.0;              ///< Hz
    double maxFrequency = 0.0;              ///< Hz
    qint32 dfMethods = METHODDETAILED_NONE; ///< mask of EZANMethodDetailed

    bool operator==(const AntennaSubRangeStruct&) const = default;
};

/// How an antenna is set up.
struct AntennaSetupStruct {
    qint32 handle = -1;
    std::pair<double, double> range; ///< Hz, lower and upper end of the range in which the antenna is used
    qint32 polarisation = POLARISATION_LEFT; ///< EZANPolarisation
    qint32 converterHandle = -1;
    qint32 compassHandle = -1;
    double mechanicalOffset = 0.0; ///< degrees
    std::list<AntennaSubRangeStruct> subRanges;

    bool operator==(const AntennaSetupStruct&) const = default;
};

/// What an antenna is and covers.
struct AntennaPropertyStruct {
    qint32 handle = -1;
    QString name;
    double minFrequency = 0.0; ///< Hz
    double maxFrequency = 0.0; ///< Hz
    bool compassSupport = false;
    bool polarisationSupport = false;
    bool activePassiveSupport = false;

    bool operator==(const AntennaPropertyStruct&) const = default;
};

/// What a compass is.
struct CompassPropertyStruct {
    qint32 handle = -1;
    QString typeName;
    double resolution = 0.0; ///< degrees
    bool pitchRollSupport = false;

    bool operator==(const CompassPropertyStruct&) const = default;
};

/// Last position fix of the device.
struct GPSStruct {
    double latitude = 0.0;  ///< degrees, north positive
    double longitude = 0.0; ///< degrees, east positive
    double altitude = 0.0;  ///< metres
    quint64 time = 0;       ///< of the fix, milliseconds since 1970-01-01 00:00:00 UTC
    qint32 satelliteCount = 0;
    bool valid = false; ///< false: the other fields hold no fix

    bool operator==(const GPSStruct&) const = default;
};

/// What is measured of a GSM cell.
struct GSMSettingsStruct {
    qint32 channel = -1;  ///< radio channel number, -1: any
    qint32 timeSlot = -1; ///< 0 to 7, -1: all
    bool uplink = true;

    bool operator==(const GSMSettingsStruct&) const = default;
};

/// Set-up of a simulation.
struct INITStruct {
    EMode mode = EMODE_STANDBY;
    double startFrequency = 0.0; ///< Hz
    double stopFrequency = 0.0;  ///< Hz
    quint32 emitterCount = 0;

    bool operator==(const INITStruct&) const = default;
};

/// Channels with one spacing.
struct ChannelRangeStruct {
    quint32 firstChannel = 0;
    quint32 lastChannel = 0;
    double startFrequency = 0.0; ///< Hz, of the first channel
    double stepFrequency = 0.0;  ///< Hz, from channel to channel

    bool operator==(const ChannelRangeStruct&) const = default;
};

/// Error or result of a built-in test.
struct ErrorStruct {
    long code = 0;      ///< the driver's own code
    bool fatal = false; ///< the device cannot go on measuring
    QString text;

    bool operator==(const ErrorStruct&) const = default;
};

/// State of the device while a data block was measured; empty: not measured.
struct StatusStruct {
    double frequency = 0.0; ///< Hz, receive frequency of the block
    bool levelOverflow = false;
    bool magneticHeading = false;   ///< the heading refers to magnetic north, not to true north
    bool withoutMechOffset = false; ///< the antenna's mechanical offset must still be added to the azimuths
    /// Degrees, of the platform. The azimuths of the block count clockwise from the platform's bow when there
    /// is a heading, else from true north.
    std::optional<double> heading;
    std::optional<double> pitch;     ///< degrees
    std::optional<double> roll;      ///< degrees
    std::optional<double> latitude;  ///< degrees, north positive
    std::optional<double> longitude; ///< degrees, east positive
    std::optional<double> altitude;  ///< metres

    bool operator==(const StatusStruct&) const = default;
};

/// One result in fixed frequency mode.
struct FFMData {
    quint64 time = 0;                         ///< milliseconds since 1970-01-01 00:00:00 UTC
    double frequency = 0.0;                   ///< Hz
    double bandwidth = 0.0;                   ///< Hz
    quint16 azimuth = 0;                      ///< as `Bearing::azimuth`
    qint16 elevation = Bearing::NOT_MEASURED; ///< tenths of a degree
    qint16 level = Bearing::NOT_MEASURED;     ///< hundredths of a dB
    quint16 azimuthSpread = 0;                ///< tenths of a degree
    quint16 averageCount = 0;                 ///< number of averaged measurements
    quint16 quality = 0;                      ///< 0 to 100, 0: rejected

    bool operator==(const FFMData&) const = default;
};

/// One super-resolution result: the emitters that share a frequency.
struct SuperResolutionStruct {
    quint64 time = 0;       ///< milliseconds since 1970-01-01 00:00:00 UTC
    double frequency = 0.0; ///< Hz
    std::vector<Bearing> emitters;

    bool operator==(const SuperResolutionStruct&) const = default;
};

/// Status of one hardware component.
struct ComponentInfo {
    QString name;
    QString serialNumber;
    QString version;
    bool operational = false;

    bool operator==(const ComponentInfo&) const = default;
};

} // namespace KvZANCommon
