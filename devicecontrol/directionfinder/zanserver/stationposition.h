#pragma once

#include "zanserver_export.h"

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"

#include <QtGlobal>

#include <optional>

namespace ZANServer {

/// The position of the station. Latitude and longitude in the tree are used for two things: the position that
/// the operator has set, which is kept in the settings, and the measured position.
///
/// While the position source is Manual they hold the set position; measurements do not change them, and the
/// time of the position is marked as not measured. While it is gpsd they hold the position that gpsd reports,
/// and with any other source the one that the driver delivers, with its time, or all three are marked as not
/// measured. The altitude is gpsd's while the source is gpsd, and otherwise the driver's. The set position is
/// kept and restored when Manual is chosen again. Until both latitude and longitude have been set, the set
/// position is marked as not measured as well.
///
/// Any other writer of latitude or longitude sets the position, whatever the source is. Writing the content
/// that a value has already is not a change: such writers also call `ValueBase::SetState` to make it valid.
///
/// Uses the values below "/ZANServer", which must outlive it. Belongs to the thread of the tree.
class ZANSERVER_EXPORT StationPosition final : public IObserver {
public:
    // Keys of the position source.
    static constexpr long SOURCE_MANUAL = 2;
    static constexpr long SOURCE_GPSD = 3;

    /// A measurement. Without latitude or longitude, or with one outside its range, there is no position.
    struct Measurement {
        std::optional<double> latitude;  ///< degrees, north positive
        std::optional<double> longitude; ///< degrees, east positive
        std::optional<double> altitude;  ///< metres
        std::optional<quint64> time;     ///< of the position, milliseconds since 1970-01-01 00:00:00 UTC
    };

    /// At first nothing is measured.
    /// \param latitude, longitude the set position in degrees, or what of it is known
    StationPosition(const std::optional<double>& latitude, const std::optional<double>& longitude);
    StationPosition(const StationPosition&) = delete;
    StationPosition& operator=(const StationPosition&) = delete;
    /// Writes the set position into the tree, from where it is saved to the settings. What was never set is
    /// removed from the tree, so that it is not saved.
    ~StationPosition() override;

    /// Takes what the driver delivers, as long as it is current.
    void SetMeasured(const Measurement& measurement);
    /// Takes what gpsd reports.
    void SetGpsd(const Measurement& measurement);
    /// Takes what a station has used when it made the recording that is replayed. From now on that is the
    /// position, whatever the source is.
    void SetRecorded(const Measurement& measurement);

    void Update(Observable* subject, TChangeCode code) override;

private:
    ZANSERVER_NO_EXPORT void ShowCurrent();
    ZANSERVER_NO_EXPORT void ShowPlace(const Measurement& place);

    ValueSelection* m_pSource;
    ValueNumericDouble* m_pLatitude;
    ValueNumericDouble* m_pLongitude;
    ValueNumericDouble* m_pAltitude;
    ValueTimeStamp* m_pTime;
    std::optional<double> m_setLatitude;
    std::optional<double> m_setLongitude;
    Measurement m_measured;
    Measurement m_gpsd;
    std::optional<Measurement> m_recorded;
};

} // namespace ZANServer
