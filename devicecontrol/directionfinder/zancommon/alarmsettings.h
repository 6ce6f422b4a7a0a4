#pragma once

#include "zancommon_export.h"

#include <QtGlobal>

#include <list>

/// When a signal in a frequency range raises an alarm. The library only carries it from the application to
/// the driver; a limit of 0 restricts nothing.
class ZANCOMMON_EXPORT AlarmSettings {
public:
    /// Azimuths from north, clockwise.
    struct Sector {
        double azimuthFrom = 0.0; ///< degrees, clockwise to `azimuthTo`
        double azimuthTo = 0.0;   ///< degrees

        bool operator==(const Sector&) const = default;
    };

    AlarmSettings() = default;
    AlarmSettings(const AlarmSettings&) = default;
    AlarmSettings& operator=(const AlarmSettings&) = default;
    virtual ~AlarmSettings();

    bool operator==(const AlarmSettings&) const = default;

    double levelMin = 0.0;        ///< dB
    double levelMax = 0.0;        ///< dB
    double levelHysteresis = 0.0; ///< dB
    double qualityMin = 0.0;      ///< 0 to 100
    double elevationMin = 0.0;    ///< degrees
    double elevationMax = 0.0;    ///< degrees
    double bandwidthMin = 0.0;    ///< Hz
    double bandwidthMax = 0.0;    ///< Hz
    double durationMin = 0.0;     ///< seconds
    double durationMax = 0.0;     ///< seconds
    double holdTime = 0.0;        ///< seconds for which the alarm continues after the signal has gone
    std::list<Sector> sectors;    ///< azimuths that raise the alarm; empty: all
    quint64 actions = 0;          ///< one bit per action of the application
};
