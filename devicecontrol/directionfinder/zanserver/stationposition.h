#pragma once

#include "zanserver_export.h"

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"

#include <QtGlobal>

#include <optional>

namespace ZANServer {

/// Where the station is. Latitude and longitude of the tree carry two things: the place that the operator has
/// set, which the settings keep, and the place that is measured.
///
/// While the position source is Manual they hold the place that was set; no measurement touches them, and the
/// time of the position is not measured. With any other source they hold what is measured, with its time, or
/// all three say that nothing is. The place that was set waits meanwhile and is back when Manual is chosen.
/// Half a position is none: while latitude or longitude was never set, the place that was set is not
/// measured, either.
///
/// What somebody else writes into latitude or longitude, whatever the source, sets it. What stands there
/// already is no news: who sets that calls it valid, too (`ValueBase::SetState`).
///
/// Works on the values below "/ZANServer", which outlive it, on the thread of the tree.
class ZANSERVER_EXPORT StationPosition final : public IObserver {
public:
    static constexpr long SOURCE_MANUAL = 2; ///< key of the position source

    /// Nothing is measured yet.
    /// \param latitude, longitude the place that was set, in degrees, as far as it was
    StationPosition(const std::optional<double>& latitude, const std::optional<double>& longitude);
    StationPosition(const StationPosition&) = delete;
    StationPosition& operator=(const StationPosition&) = delete;
    /// Leaves the place that was set in the tree, from where the settings take it. What of it was never set
    /// goes from the tree, so that the settings do not get it.
    ~StationPosition() override;

    /// Takes a measurement: degrees, north and east positive, and milliseconds since 1970-01-01 00:00:00 UTC.
    void SetMeasured(const std::optional<double>& latitude, const std::optional<double>& longitude,
                     quint64 time);

    void Update(Observable* subject, TChangeCode code) override;

private:
    struct Place {
        double latitude = 0.0;
        double longitude = 0.0;
        std::optional<quint64> time;
    };

    [[nodiscard]] std::optional<Place> GetSet() const;
    void Show(const std::optional<Place>& place);
    void ShowCurrent();

    ValueSelection* m_pSource;
    ValueNumericDouble* m_pLatitude;
    ValueNumericDouble* m_pLongitude;
    ValueTimeStamp* m_pTime;
    std::optional<double> m_setLatitude;
    std::optional<double> m_setLongitude;
    std::optional<Place> m_measured;
};

} // namespace ZANServer
