#include "zanserver/gpsdsource.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "zanserver/publish.h"
#include "zanserver/servervalue.h"

#include <algorithm>

using namespace StdDeviceDefinition;
using namespace std::chrono_literals;

namespace ZANServer {

namespace {

using Milliseconds = std::chrono::milliseconds;

/// How often the ages in the tree follow the clock while nothing arrives.
constexpr Milliseconds AGE_INTERVAL = 1s;

/// Some receivers list their satellites only every few seconds. The list is for the operator, who would see
/// it come and go with the age limit of the position.
constexpr Milliseconds SATELLITES_MAX_AGE = 10s;

std::optional<int> ToInt(const std::optional<Milliseconds>& age) {
    return age ? std::optional(static_cast<int>(age->count())) : std::nullopt;
}

} // namespace

GpsdSource::GpsdSource(StationPosition& position, StationAttitude& attitude, const GpsdSettings& settings,
                       const GpsdClient::Timing& timing)
    : m_position(position)
    , m_attitude(attitude)
    , m_pPositionSource(ServerValue<ValueSelection>(g_vdPosSource))
    , m_pHeadingSource(ServerValue<ValueSelection>(g_vdHeaSource))
    , m_pState(ServerValue<ValueSelection>(g_vdGpsdState))
    , m_pLastFailure(ServerValue<ValueString>(g_vdGpsdLastFailure))
    , m_pReceiver(ServerValue<ValueString>(g_vdGpsdReceiver))
    , m_pFixMode(ServerValue<ValueSelection>(g_vdGpsdFixMode))
    , m_pSatellitesUsed(ServerValue<ValueNumericInt>(g_vdGpsdSatellitesUsed))
    , m_pSatellitesSeen(ServerValue<ValueNumericInt>(g_vdGpsdSatellitesSeen))
    , m_pPositionAge(ServerValue<ValueNumericInt>(g_vdGpsdPositionAge))
    , m_pHeadingAge(ServerValue<ValueNumericInt>(g_vdGpsdHeadingAge))
    , m_fix(settings.maxAge, settings.positionReceiver)
    , m_heading(settings.maxAge, settings.headingReceiver)
    , m_pitch(settings.maxAge, settings.headingReceiver)
    , m_roll(settings.maxAge, settings.headingReceiver)
    , m_mode(settings.maxAge)
    , m_satellites(std::max(settings.maxAge, SATELLITES_MAX_AGE))
    , m_client(
          settings.address, timing, [this](const GpsdReport& report) { Take(report); },
          [this] { ShowState(); }) {
    m_clock.start();
    m_ageing.setSingleShot(true);
    QObject::connect(&m_ageing, &QTimer::timeout, &m_ageing, [this] { Show(); });
    m_pPositionSource->AddObserver(this);
    m_pHeadingSource->AddObserver(this);
    Show();
    Choose();
}

GpsdSource::~GpsdSource() {
    m_client.Stop();
    m_position.SetGpsd({});
    m_attitude.SetGpsd({});
}

void GpsdSource::Update(Observable* /*subject*/, TChangeCode code) {
    if (code == TChangeCode::Changed) {
        Choose();
    }
}

/// Connects while one of the sources is gpsd.
void GpsdSource::Choose() {
    if (m_pPositionSource->GetCurrentKey() == StationPosition::SOURCE_GPSD ||
        m_pHeadingSource->GetCurrentKey() == StationAttitude::SOURCE_GPSD) {
        m_client.Start();
    } else {
        m_client.Stop();
    }
}

void GpsdSource::Take(const GpsdReport& report) {
    if (report.kind == GpsdReport::Kind::Fix) {
        TakeFix(report);
    } else if (report.kind == GpsdReport::Kind::Attitude) {
        TakeAttitude(report);
    } else if (report.kind == GpsdReport::Kind::Satellites && m_fix.Listens(report.receiver, Now())) {
        m_satellites.Take(QString(), {}, {report.satellitesUsed, report.satellitesSeen}, Now());
    }
    Show();
}

void GpsdSource::TakeFix(const GpsdReport& report) {
    const Milliseconds now = Now();
    if (report.latitude && report.longitude) {
        m_fix.Take(report.receiver, report.time,
                   {report.latitude, report.longitude, report.altitude, report.time}, now);
    } else if (!report.HasFix()) {
        m_fix.Lose(report.receiver);
    }
    if (m_fix.Listens(report.receiver, now)) {
        m_mode.Take(QString(), {}, report.mode, now);
    }
}

void GpsdSource::TakeAttitude(const GpsdReport& report) {
    const auto take = [&, now = Now()](CurrentReading<double>& current, const std::optional<double>& angle) {
        if (angle) {
            current.Take(report.receiver, report.time, *angle, now);
        }
    };
    take(m_heading, report.heading);
    take(m_pitch, report.pitch);
    take(m_roll, report.roll);
}

/// Hands over what is current, and comes back when that changes by itself.
void GpsdSource::Show() {
    const Milliseconds now = Now();
    const std::optional<StationPosition::Measurement> fix = m_fix.Get(now);
    m_position.SetGpsd(fix.value_or(StationPosition::Measurement()));
    m_attitude.SetGpsd({m_heading.Get(now), false, m_pitch.Get(now), m_roll.Get(now)});

    m_pReceiver->SetValue(fix ? m_fix.GetReceiver() : QString(), this);
    const std::optional<int> mode = m_mode.Get(now);
    m_pFixMode->SetCurrentKey(mode.value_or(0), this);
    m_pFixMode->SetState(mode ? TValueState::Valid : TValueState::NotMeasured, this);
    const std::optional<Satellites> satellites = m_satellites.Get(now);
    Publish(*m_pSatellitesUsed, satellites ? std::optional(satellites->used) : std::nullopt, this);
    Publish(*m_pSatellitesSeen, satellites ? std::optional(satellites->seen) : std::nullopt, this);
    Publish(*m_pPositionAge, ToInt(m_fix.GetAge(now)), this);
    Publish(*m_pHeadingAge, ToInt(m_heading.GetAge(now)), this);

    std::optional<Milliseconds> next;
    for (const std::optional<Milliseconds>& rest :
         {m_fix.GetRest(now), m_heading.GetRest(now), m_pitch.GetRest(now), m_roll.GetRest(now),
          m_mode.GetRest(now), m_satellites.GetRest(now)}) {
        if (rest) {
            next = std::min({next.value_or(AGE_INTERVAL), *rest + 1ms, AGE_INTERVAL});
        }
    }
    if (next) {
        m_ageing.start(*next);
    }
}

void GpsdSource::ShowState() {
    m_pState->SetCurrentKey(static_cast<long>(m_client.GetState()), this);
    m_pLastFailure->SetValue(m_client.GetLastFailure(), this);
}

Milliseconds GpsdSource::Now() const {
    return Milliseconds(m_clock.elapsed());
}

} // namespace ZANServer
