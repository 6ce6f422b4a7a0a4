#pragma once

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"

#include <QtGlobal>

#include <optional>

/// Where the station is. Latitude and longitude of the tree carry two things: the place that the operator has
/// set, which the settings keep, and the place that is measured.
///
/// While the position source is Manual they hold the place that was set; no measurement touches them, and the
/// time of the position is not measured. With any other source they hold what is measured, with its time, or
/// all three say that nothing is: half a position is none. The place that was set waits meanwhile and is back
/// when Manual is chosen. What somebody else writes into latitude or longitude, whatever the source, sets it.
///
/// Works on the values below "/ZANServer", which outlive it, on the thread of the tree.
class StationPosition final : public IObserver {
public:
    /// Takes the place that stands in the tree for the one that was set; nothing is measured yet.
    StationPosition();
    StationPosition(const StationPosition&) = delete;
    StationPosition& operator=(const StationPosition&) = delete;
    /// Leaves the place that was set in the tree, from where the settings take it.
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

    void Show(const std::optional<Place>& place);
    void ShowCurrent();

    ValueSelection* m_pSource;
    ValueNumericDouble* m_pLatitude;
    ValueNumericDouble* m_pLongitude;
    ValueTimeStamp* m_pTime;
    Place m_set; // without a time
    std::optional<Place> m_measured;
};
