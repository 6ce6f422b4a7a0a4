#pragma once

#include "zanserver_export.h"

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"

#include <optional>

namespace ZANServer {

/// Heading, pitch and roll of the station in the tree. While the heading source is gpsd they are those that
/// gpsd reports, and otherwise those that the driver delivers; what the source does not measure is marked as
/// not measured. A source other than gpsd has no effect of its own.
///
/// One source chooses all three, because they come from one instrument. The operator's offset is added to
/// every heading, and the declination to a magnetic one.
///
/// Uses the values below "/ZANServer", which must outlive it. Belongs to the thread of the tree.
class ZANSERVER_EXPORT StationAttitude final : public IObserver {
public:
    static constexpr long SOURCE_GPSD = 4; ///< key of the heading source

    /// A measurement, in degrees.
    struct Measurement {
        std::optional<double> heading; ///< as the instrument shows it
        bool isMagnetic = false;       ///< the heading is from magnetic, not from true north
        std::optional<double> pitch;
        std::optional<double> roll;
    };

    /// At first nothing is measured; the values are left as they are until something is.
    /// \param usePitchAndRoll whether gpsd brings pitch and roll; otherwise they are always the driver's
    explicit StationAttitude(bool usePitchAndRoll = true);
    StationAttitude(const StationAttitude&) = delete;
    StationAttitude& operator=(const StationAttitude&) = delete;
    ~StationAttitude() override = default;

    /// Takes what the driver delivers, as long as it is current.
    void SetMeasured(const Measurement& measurement);
    /// Takes what gpsd reports.
    void SetGpsd(const Measurement& measurement);
    /// Takes what a station has used when it made the recording that is replayed. From now on that is the
    /// attitude, whatever the source is, and nothing is added to the heading.
    void SetRecorded(const Measurement& measurement);

    void Update(Observable* subject, TChangeCode code) override;

private:
    ZANSERVER_NO_EXPORT void ShowCurrent();
    [[nodiscard]] ZANSERVER_NO_EXPORT std::optional<int> GetTrueHeading(const Measurement& measured) const;

    const bool m_usePitchAndRoll;
    ValueSelection* m_pSource;
    ValueNumericInt* m_pHeading;
    ValueNumericInt* m_pOffset;
    ValueNumericInt* m_pDeclination;
    ValueNumericDouble* m_pPitch;
    ValueNumericDouble* m_pRoll;
    Measurement m_measured;
    Measurement m_gpsd;
    std::optional<Measurement> m_recorded;
};

} // namespace ZANServer
