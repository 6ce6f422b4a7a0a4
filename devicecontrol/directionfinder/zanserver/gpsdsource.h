#pragma once

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"
#include "zanserver/currentreading.h"
#include "zanserver/gpsdclient.h"
#include "zanserver/gpsdsettings.h"
#include "zanserver/stationattitude.h"
#include "zanserver/stationposition.h"

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <optional>

namespace ZANServer {

/// Position, heading, pitch and roll from gpsd. Is connected while the position source or the heading source
/// of the tree is gpsd, and hands over what is current: what is older than the age limit, or that the
/// receiver no longer has, is handed over as not measured. The values below "/ZANServer/Res/GpsdR" tell the
/// state of the connection and of the receiver in use.
///
/// Uses the values below "/ZANServer", which must outlive it. Belongs to the thread of the tree, which needs
/// an event loop.
class GpsdSource final : public IObserver {
public:
    /// Connects if a source is gpsd.
    GpsdSource(StationPosition& position, StationAttitude& attitude, const GpsdSettings& settings,
               const GpsdClient::Timing& timing = {});
    GpsdSource(const GpsdSource&) = delete;
    GpsdSource& operator=(const GpsdSource&) = delete;
    /// Ends the connection at once. The tree then says that it is off, and what was measured stays.
    ~GpsdSource() override;

    void Update(Observable* subject, TChangeCode code) override;

private:
    void Choose();
    void Take(const GpsdReport& report);
    void TakeFix(const GpsdReport& report);
    void TakeAttitude(const GpsdReport& report);
    void Show();
    void ShowState();
    [[nodiscard]] std::chrono::milliseconds Now() const;

    StationPosition& m_position;
    StationAttitude& m_attitude;
    ValueSelection* m_pPositionSource;
    ValueSelection* m_pHeadingSource;
    ValueSelection* m_pState;
    ValueString* m_pLastFailure;
    ValueString* m_pReceiver;
    ValueSelection* m_pFixMode;
    ValueNumericInt* m_pSatellitesUsed;
    ValueNumericInt* m_pSatellitesSeen;
    ValueNumericInt* m_pPositionAge;
    ValueNumericInt* m_pHeadingAge;

    struct Satellites {
        int used = 0;
        int seen = 0;
    };
    CurrentReading<StationPosition::Measurement> m_fix;
    CurrentReading<double> m_heading;
    CurrentReading<double> m_pitch;
    CurrentReading<double> m_roll;
    CurrentReading<int> m_mode;              // of the receiver in use
    CurrentReading<Satellites> m_satellites; // the same
    QElapsedTimer m_clock;
    QTimer m_ageing;
    GpsdClient m_client;
};

} // namespace ZANServer
