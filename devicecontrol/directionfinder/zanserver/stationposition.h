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
/// time of the position is marked as not measured. With any other source they hold the measured position,
/// with its time, or all three are marked as not measured. The set position is kept and restored when Manual
/// is chosen again. Until both latitude and longitude have been set, the set position is marked as not
/// measured as well.
///
/// Any other writer of latitude or longitude sets the position, whatever the source is. Writing the content
/// that a value has already is not a change: such writers also call `ValueBase::SetState` to make it valid.
///
/// Uses the values below "/ZANServer", which must outlive it. Belongs to the thread of the tree.
class ZANSERVER_EXPORT StationPosition final : public IObserver {
public:
    static constexpr long SOURCE_MANUAL = 2; ///< key of the position source

    /// At first nothing is measured.
    /// \param latitude, longitude the set position in degrees, or what of it is known
    StationPosition(const std::optional<double>& latitude, const std::optional<double>& longitude);
    StationPosition(const StationPosition&) = delete;
    StationPosition& operator=(const StationPosition&) = delete;
    /// Writes the set position into the tree, from where it is saved to the settings. What was never set is
    /// removed from the tree, so that it is not saved.
    ~StationPosition() override;

    /// Takes a measurement: degrees, north and east positive, and milliseconds since 1970-01-01 00:00:00 UTC.
    void SetMeasured(const std::optional<double>& latitude, const std::optional<double>& longitude,
                     quint64 time);

    /// Takes the position that a station has used when it made the recording that is replayed. From now on
    /// that is the position, whatever the source is.
    void SetRecorded(const std::optional<double>& latitude, const std::optional<double>& longitude,
                     const std::optional<quint64>& time);

    void Update(Observable* subject, TChangeCode code) override;

private:
    struct Place {
        double latitude = 0.0;
        double longitude = 0.0;
        std::optional<quint64> time;
    };

    [[nodiscard]] ZANSERVER_NO_EXPORT std::optional<Place> GetSet() const;
    ZANSERVER_NO_EXPORT void Show(const std::optional<Place>& place);
    ZANSERVER_NO_EXPORT void ShowCurrent();

    ValueSelection* m_pSource;
    ValueNumericDouble* m_pLatitude;
    ValueNumericDouble* m_pLongitude;
    ValueTimeStamp* m_pTime;
    std::optional<double> m_setLatitude;
    std::optional<double> m_setLongitude;
    std::optional<Place> m_measured;
    std::optional<Place> m_recorded;
    bool m_isRecorded = false; // `m_recorded` is the position
};

} // namespace ZANServer
