#include "simulator/measurement.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;

namespace Simulator {

namespace {

constexpr double SHORTEST_INTERVAL = 0.01; // s, between results in fixed frequency mode
constexpr double LONGEST_INTERVAL = 0.1;   // s
constexpr double PREAMPLIFIER_GAIN = 6.0;  // dB that the noise is less with it
constexpr double OVERLOAD_LEVEL = -20.0;   // dBm behind attenuator and preamplifier
constexpr double SPECTRUM_LINES = 1000.0;  // beside the one in the middle, at most
constexpr int FEWEST_SATELLITES = 4;       // for a position
constexpr long MOST_EMITTERS = 4;          // that super resolution resolves

double FullCircle(double degrees) {
    return std::fmod(std::fmod(degrees, 360.0) + 360.0, 360.0);
}

double FromDecibel(double level) {
    return std::pow(10.0, level / 10.0);
}

short ToHundredths(double level) {
    return static_cast<short>(std::clamp(std::lround(level * 100.0), -32767L, 32767L));
}

/// Carries out a wish but for ranges and resolution bandwidth that the application has set: it would take the
/// frequency of one channel for that of another. False when these are left out.
bool CarryOut(const Wish& wish, DeviceSettings& settings) {
    settings.frequency = wish.frequency.value_or(settings.frequency);
    settings.averageTime = wish.averageTime.value_or(settings.averageTime);
    settings.df.superResolution = wish.superResolution.value_or(settings.df.superResolution);
    if (wish.resolutionBandwidth && !settings.areDfSettingsGiven) {
        settings.df.resolutionBandwidth = *wish.resolutionBandwidth;
    }
    if (wish.ranges && !settings.areRangesGiven) {
        ++settings.rangeChanges;
        settings.ranges.clear();
        for (const ScanRange& range : *wish.ranges) {
            settings.ranges.push_back(MakeRange(range, static_cast<int>(settings.ranges.size())));
        }
    }
    return !(wish.resolutionBandwidth && settings.areDfSettingsGiven) &&
           !(wish.ranges && settings.areRangesGiven);
}

} // namespace

Measurement::Measurement(const Scenario& scenario, DeviceState& state, IDriverCallback& callback)
    : m_scenario(scenario)
    , m_state(state)
    , m_callback(callback)
    , m_motion(scenario.platform, scenario.seed)
    , m_reception(scenario)
    , m_random(scenario.seed) {}

void Measurement::Run(EMode mode) {
    m_mode = mode;
    m_version = 0;
    m_averagedSince = m_state.GetSeconds();
    GoOnFrom(0);
    do {
        m_time = m_state.GetSeconds();
        CarryOutWishes();
        TakeSettings();
        if (LoseLink()) {
            return;
        }
        if (!m_state.clock.AdvanceTo(m_state.clock.GetTime() + GetDuration())) {
            return;
        }
        m_time = m_state.GetSeconds();
        Deliver();
    } while (true);
}

/// Of the block that is measured next.
Measurement::Time Measurement::GetDuration() {
    const bool isHopping = m_mode == EMODE_SCAN || (m_mode == EMODE_SEARCH && !m_held);
    if (isHopping && m_hop < m_plan.GetHops().size()) {
        return m_plan.GetHops()[m_hop].duration;
    }
    const double interval = std::clamp(m_settings.averageTime, SHORTEST_INTERVAL, LONGEST_INTERVAL);
    return Time(std::llround(interval * 1e6));
}

void Measurement::Deliver() {
    if (m_state.faults.IsThere(EFault::SILENCE, m_time)) {
        return;
    }
    m_platform = m_motion.GetState(m_time);
    ReportPosition();
    ++m_state.readCount;
    switch (m_mode) {
    case EMODE_WIDEBAND_FFM:
        DeliverWideband();
        break;
    case EMODE_SCAN:
        DeliverHop();
        break;
    case EMODE_SEARCH:
        Search();
        break;
    default:
        DeliverFixed();
        break;
    }
}

bool Measurement::LoseLink() {
    if (!m_state.faults.IsThere(EFault::LOST_LINK, m_time)) {
        return false;
    }
    if (!m_state.isLinkLost.exchange(true)) {
        TellLostLink();
    }
    return true;
}

void Measurement::TellLostLink() {
    ErrorStruct error{-2, true, u"the link to the device is lost"_s};
    m_callback.reportError(error);
    m_callback.CloseDataLink();
}

void Measurement::TakeSettings() {
    const quint64 version = m_state.GetVersion();
    if (version == m_version) {
        return;
    }
    DeviceSettings settings = m_state.GetSettings();
    if (settings.frequency != m_settings.frequency || settings.df != m_settings.df ||
        settings.averageResets != m_settings.averageResets) {
        m_averagedSince = m_time;
    }
    const bool areRangesNew = settings.rangeChanges != m_settings.rangeChanges;
    m_version = version;
    m_settings = std::move(settings);
    m_plan = ScanPlan(m_scenario.device, m_settings, m_mode);
    if (areRangesNew || m_hop >= m_plan.GetHops().size()) {
        GoOnFrom(0);
    }
}

void Measurement::CarryOutWishes() {
    for (; m_nextWish < m_scenario.wishes.size() && m_scenario.wishes[m_nextWish].at <= m_time;
         ++m_nextWish) {
        const Wish& wish = m_scenario.wishes[m_nextWish];
        m_mode = wish.mode.value_or(m_mode);
        bool isWhole = true;
        m_state.Change([&](DeviceSettings& settings) { isWhole = CarryOut(wish, settings); });
        if (!isWhole) {
            ErrorStruct error{
                -2, false, u"ranges or bandwidth that the scenario wishes are left out: others were set"_s};
            m_callback.reportError(error);
        }
    }
}

/// Once a second.
void Measurement::ReportPosition() {
    const auto second = static_cast<quint64>(m_time);
    if (m_lastFix == second) {
        return;
    }
    m_lastFix = second;
    const bool isValid = m_scenario.platform.satellites >= FEWEST_SATELLITES;
    GPSStruct fix;
    fix.time = GetTimeStamp();
    fix.satelliteCount = m_scenario.platform.satellites;
    fix.valid = isValid;
    if (isValid) {
        fix.latitude = m_platform.place.latitude;
        fix.longitude = m_platform.place.longitude;
        fix.altitude = m_platform.place.altitude;
    }
    m_state.SetFix(fix);
    m_callback.fillGPSData(fix.latitude, fix.longitude, fix.time, isValid, fix.satelliteCount,
                           isValid ? m_scenario.platform.gpsQuality : 0);
    if (m_settings.isTestRepeated) {
        ErrorStruct result{0, false, u"built-in test: no error"_s};
        m_callback.ReportBITResult(result);
    }
}

void Measurement::DeliverFixed() {
    MeasureFixed(m_settings.frequency, m_settings.df, m_settings.filter);
}

bool Measurement::MeasureFixed(double frequency, const DFSettingsStruct& df,
                               const FilterSettingsStruct& filter) {
    const auto path = ReceivePath::Find(m_scenario.device, m_settings, m_mode, frequency, df);
    if (!path) {
        return false;
    }
    const double resolution = path->GetResolutionBandwidth(
        df.resolutionBandwidth > 0.0 ? df.resolutionBandwidth : GetDefaultResolution(EMODE_FFM));
    const double averaged = std::min(m_settings.averageTime, m_time - m_averagedSince);
    const double count = ScanPlan::CountMeasurements(averaged, ScanPlan::GetMeasurementTime(df, resolution));
    const BearingMeter::Setup setup = MakeSetup(*path, resolution, df, filter, count);
    StatusStruct status = MakeStatus(*path, frequency);
    const auto signals = m_reception.Receive(m_time, m_platform.place, frequency - resolution / 2.0,
                                             frequency + resolution / 2.0);

    // The list of the emitters comes before the bearing that belongs to it: with that the list is put out.
    if (setup.method == METHOD_SUPR) {
        DeliverSuperResolution(signals, frequency, setup, status);
    }
    Bearing bearing;
    m_meter.Measure(signals, frequency, resolution, setup, {&bearing, 1});
    FFMData data;
    data.time = GetTimeStamp();
    data.frequency = frequency;
    data.bandwidth = resolution;
    data.azimuth = bearing.azimuth;
    data.elevation = bearing.elevation;
    data.level = bearing.level;
    data.azimuthSpread = bearing.azimuthSpread;
    data.averageCount = bearing.averageCount;
    data.quality = bearing.quality;
    m_callback.fillFFMBuffer(data, status, count > 1.0);
    DeliverAudioLevel(bearing, 10.0 * std::log10(setup.noise));
    DeliverSpectrum(*path, frequency);
    return bearing.quality > 0;
}

void Measurement::DeliverWideband() {
    const DFSettingsStruct& df = m_settings.df;
    const auto path = ReceivePath::Find(m_scenario.device, m_settings, m_mode, m_settings.frequency, df);
    if (!path) {
        return;
    }
    const double resolution = path->GetResolutionBandwidth(
        df.resolutionBandwidth > 0.0 ? df.resolutionBandwidth : GetDefaultResolution(EMODE_WIDEBAND_FFM));
    const double bandwidth = path->sampleMode->realtimeBandwidth;
    constexpr double MOST_CHANNELS = ZANCharacteristics::MAX_CHANNEL_COUNT_DEFAULT;
    // The tuned frequency is the channel in the middle.
    const double half = std::floor(std::min((bandwidth / resolution - 1.0) / 2.0, MOST_CHANNELS / 2.0 - 1.0));
    const double first = m_settings.frequency - half * resolution;
    const double averaged = std::min(m_settings.averageTime, m_time - m_averagedSince);
    const double count = ScanPlan::CountMeasurements(averaged, ScanPlan::GetMeasurementTime(df, resolution));
    StatusStruct status = MakeStatus(*path, m_settings.frequency);
    m_bearings.resize(2 * static_cast<std::size_t>(half) + 1);
    m_meter.Measure(m_reception.Receive(m_time, m_platform.place, m_settings.frequency - bandwidth / 2.0,
                                        m_settings.frequency + bandwidth / 2.0),
                    first, resolution, MakeSetup(*path, resolution, df, m_settings.filter, count),
                    m_bearings);
    for (std::size_t i = 0; i < m_bearings.size(); ++i) {
        m_bearings[i].channel = static_cast<quint16>(i);
    }
    unsigned long long time = GetTimeStamp();
    constexpr long NO_RANGE = -1;
    m_callback.fillScanBuffer(NO_RANGE, time, 0, static_cast<unsigned>(m_bearings.size()), m_bearings.data(),
                              status);
    DeliverSpectrum(*path, m_settings.frequency);
}

void Measurement::MeasureHop(const ScanPlan::Hop& hop) {
    const FreqRangeDefinition& range = m_settings.ranges[hop.range];
    const double bandwidth = hop.path.sampleMode->realtimeBandwidth;
    m_bearings.resize(hop.count);
    const auto signals = m_reception.Receive(m_time, m_platform.place, hop.GetMiddle() - bandwidth / 2.0,
                                             hop.GetMiddle() + bandwidth / 2.0);
    m_meter.Measure(signals, hop.firstFrequency, hop.step,
                    MakeSetup(hop.path, hop.resolution, range.GetDFSettings(), range.GetFilterSettings(),
                              hop.averageCount),
                    m_bearings);
    for (std::size_t i = 0; i < m_bearings.size(); ++i) {
        m_bearings[i].channel = static_cast<quint16>(hop.firstChannel + i);
    }
}

void Measurement::DeliverHop() {
    if (m_plan.GetHops().empty()) {
        return;
    }
    if (m_hop == 0) {
        m_callback.SetEndOfScan(false);
    }
    const ScanPlan::Hop& hop = m_plan.GetHops()[m_hop];
    MeasureHop(hop);
    const int index = m_settings.ranges[hop.range].GetIndex();
    StatusStruct status = MakeStatus(hop.path, hop.GetMiddle());
    unsigned long long time = GetTimeStamp();
    m_callback.fillScanBuffer(index >= 0 ? index : static_cast<long>(hop.range), time,
                              static_cast<unsigned>(hop.firstChannel), hop.count, m_bearings.data(), status);
    NextHop();
    if (m_hop == 0) {
        m_callback.SetEndOfScan(true);
    }
}

void Measurement::NextHop() {
    m_hop = (m_hop + 1) % m_plan.GetHops().size();
}

void Measurement::Search() {
    if (m_plan.GetHops().empty()) {
        return;
    }
    if (std::exchange(m_searchContinues, m_settings.searchContinues) != m_settings.searchContinues) {
        GoOnFrom(m_settings.searchChannel);
    }
    if (!m_held) {
        SearchInHop();
        return;
    }
    const ScanPlan::Hop& hop = m_plan.GetHops()[m_hop];
    const FreqRangeDefinition& range = m_settings.ranges[hop.range];
    if (MeasureFixed(m_held->frequency, range.GetDFSettings(), range.GetFilterSettings())) {
        m_held->lastHeard = m_time;
    }
    if (!m_held->isTold && (m_time - m_held->since) * 1000.0 >= m_settings.signalTime) {
        m_held->isTold = true;
        m_callback.setSearchFrequency(m_held->frequency);
    }
    const double pause = m_held->isTold ? m_settings.pauseTime : 0.0; // a signal that is too short is left
    const bool isGone = (m_time - m_held->lastHeard) * 1000.0 > pause;
    const bool isOver = m_settings.holdTime > 0 && (m_time - m_held->since) * 1000.0 >= m_settings.holdTime;
    if (!m_settings.isSearchHeld && (isGone || isOver)) {
        m_searchFrom = m_held->channel + 1;
        m_isPassingOver = true;
        m_held.reset();
    }
}

/// Holds at the first channel ahead in which something is heard.
void Measurement::SearchInHop() {
    const ScanPlan::Hop& hop = m_plan.GetHops()[m_hop];
    if (m_settings.isSearchHeld) {
        HoldAt(hop, static_cast<unsigned>(std::clamp<unsigned long>(m_searchFrom, hop.firstChannel,
                                                                    hop.firstChannel + hop.count - 1) -
                                          hop.firstChannel));
        return;
    }
    MeasureHop(hop);
    for (unsigned i = 0; i < hop.count; ++i) {
        if (hop.firstChannel + i < m_searchFrom) {
            continue;
        }
        const bool isHeard = m_bearings[i].quality > 0;
        if (isHeard && !m_isPassingOver) {
            HoldAt(hop, i);
            return;
        }
        m_isPassingOver = isHeard;
    }
    NextHop();
    m_searchFrom = m_plan.GetHops()[m_hop].firstChannel;
}

void Measurement::HoldAt(const ScanPlan::Hop& hop, unsigned channel) {
    m_held = Held{hop.GetFrequency(channel), hop.firstChannel + channel, m_time, m_time, false};
    m_averagedSince = m_time;
}

void Measurement::GoOnFrom(unsigned long channel) {
    m_held.reset();
    m_isPassingOver = false;
    m_hop = m_plan.FindHop(channel);
    m_searchFrom = channel;
}

/// The level in lines over the realtime bandwidth, in hundredths of a dBm.
void Measurement::DeliverSpectrum(const ReceivePath& path, double frequency) {
    const double bandwidth = path.sampleMode->realtimeBandwidth;
    const double width = bandwidth / (SPECTRUM_LINES + 1.0);
    const double noise = GetNoiseDensity(path) * width;
    const double first = frequency - SPECTRUM_LINES / 2.0 * width;
    m_powers.assign(static_cast<std::size_t>(SPECTRUM_LINES) + 1, noise);
    for (const auto& signal : m_reception.Receive(m_time, m_platform.place, frequency - bandwidth / 2.0,
                                                  frequency + bandwidth / 2.0)) {
        const double from = std::clamp(std::floor((signal.low - first) / width), 0.0, SPECTRUM_LINES);
        const double to = std::clamp(std::ceil((signal.high - first) / width), 0.0, SPECTRUM_LINES);
        for (double i = from; i <= to; ++i) {
            m_powers[static_cast<std::size_t>(i)] += BearingMeter::GetPower(signal, first + i * width, width);
        }
    }
    m_spectrum.clear();
    for (const double power : m_powers) {
        m_spectrum.push_back(ToHundredths(10.0 * std::log10(power) + m_random.Normal()));
    }
    m_callback.fillSpectrumBuffer(m_spectrum.data(), static_cast<int>(m_spectrum.size()));
}

/// The emitters, and 360 values of their spectrum over the azimuth, in hundredths of a dBm.
void Measurement::DeliverSuperResolution(std::span<const Reception::Signal> signals, double frequency,
                                         const BearingMeter::Setup& setup, StatusStruct& status) {
    const long most = m_settings.isEmitterCountAutomatic ? MOST_EMITTERS : m_settings.emitterCount;
    SuperResolutionStruct data;
    data.time = GetTimeStamp();
    data.frequency = frequency;
    data.emitters = m_meter.Resolve(signals, frequency, setup, static_cast<std::size_t>(most));
    m_callback.fillFFMSRBuffer(data, status);

    constexpr double CIRCLE = 360.0;
    constexpr double SHARPNESS = 5.0; // degrees
    m_spectrum.clear();
    for (double azimuth = 0.0; azimuth < CIRCLE; ++azimuth) {
        double power = setup.noise;
        for (const Bearing& emitter : data.emitters) {
            const double off = std::remainder(azimuth - emitter.azimuth / 10.0, CIRCLE) / SHARPNESS;
            power += FromDecibel(emitter.level / 100.0) * std::exp(-off * off / 2.0);
        }
        m_spectrum.push_back(ToHundredths(10.0 * std::log10(power)));
    }
    unsigned long long time = data.time;
    m_callback.fillSRSpectrumBuffer(m_spectrum.data(), static_cast<int>(m_spectrum.size()), time);
}

/// 0 to 1 of full scale; silence while nothing is demodulated, and below the squelch.
void Measurement::DeliverAudioLevel(const Bearing& bearing, double noiseLevel) {
    constexpr double FULL_SCALE = 40.0; // dB above the noise
    const double level = bearing.level / 100.0;
    const DEMSettingsStruct& dem = m_settings.dem;
    const bool isOpen = dem.demodulation != 0 && (dem.squelch == -1 || level >= dem.squelch);
    m_callback.fillAudioLevel(
        isOpen ? std::clamp((level - noiseLevel) / FULL_SCALE, 0.0, 1.0) * m_settings.volume / 100.0 : 0.0);
}

double Measurement::GetDefaultResolution(EMode mode) {
    return mode == EMODE_WIDEBAND_FFM ? 20'000.0 : 10'000.0;
}

double Measurement::ReadCompass(const DeviceSettings& settings, std::size_t compass) const {
    return GetCompassHeading(m_motion.GetState(m_state.GetSeconds()), settings, compass);
}

quint64 Measurement::GetTimeStamp() const {
    using std::chrono::milliseconds;
    return m_scenario.startTime +
           static_cast<quint64>(std::chrono::floor<milliseconds>(m_state.clock.GetTime()).count());
}

double Measurement::GetCompassHeading(const PlatformMotion::State& platform, const DeviceSettings& settings,
                                      std::size_t compass) const {
    const Compass& which = m_scenario.platform.compasses.at(compass);
    const double shown = platform.heading - (which.magnetic ? m_scenario.platform.declination : 0.0) +
                         settings.compassOffsets.at(compass);
    return FullCircle(std::round(shown / which.resolution) * which.resolution);
}

StatusStruct Measurement::MakeStatus(const ReceivePath& path, double frequency) {
    StatusStruct status;
    status.frequency = frequency;
    const int compass = m_settings.antennas[path.antenna].compassHandle;
    if (compass >= 0) {
        const Compass& which = m_scenario.platform.compasses.at(static_cast<std::size_t>(compass));
        status.heading = GetCompassHeading(m_platform, m_settings, static_cast<std::size_t>(compass));
        status.magneticHeading = which.magnetic;
        if (which.pitchRoll) {
            status.pitch = m_platform.pitch;
            status.roll = m_platform.roll;
        }
    }
    if (m_scenario.platform.satellites >= FEWEST_SATELLITES) {
        status.latitude = m_platform.place.latitude;
        status.longitude = m_platform.place.longitude;
        status.altitude = m_platform.place.altitude;
    }
    const double bandwidth = path.sampleMode->realtimeBandwidth;
    double power = 0.0;
    for (const auto& signal : m_reception.Receive(m_time, m_platform.place, frequency - bandwidth / 2.0,
                                                  frequency + bandwidth / 2.0)) {
        power += signal.power;
    }
    status.levelOverflow = power * FromDecibel(GetGain(path)) > FromDecibel(OVERLOAD_LEVEL);
    return status;
}

/// Azimuths count from the bow where there is a compass, else from north.
BearingMeter::Setup Measurement::MakeSetup(const ReceivePath& path, double resolution,
                                           const DFSettingsStruct& df, const FilterSettingsStruct& filter,
                                           double averageCount) {
    const AntennaSetupStruct& antenna = m_settings.antennas[path.antenna];
    BearingMeter::Setup setup;
    setup.resolution = resolution;
    setup.noise = GetNoiseDensity(path) * resolution;
    setup.method = path.GetMethod(df);
    setup.averageCount = averageCount;
    const double mounted = m_scenario.device.antennas[path.antenna].mechanicalOffset;
    const double bow = antenna.compassHandle >= 0 ? m_platform.heading : 0.0;
    setup.azimuthOffset = antenna.mechanicalOffset - mounted - bow;
    if (df.levelThreshold != -1) {
        const double floor = df.relativeThreshold ? 10.0 * std::log10(setup.noise) : 0.0;
        setup.lowestLevel = floor + df.levelThreshold;
    }
    setup.filter = filter;
    return setup;
}

/// dB of preamplifier and attenuators.
double Measurement::GetGain(const ReceivePath& path) const {
    const ConverterSetupStruct& converter = m_settings.converters[path.converter];
    const bool isManual = m_settings.gain.mode == u"manual";
    return (converter.preamplifier ? PREAMPLIFIER_GAIN : 0.0) - converter.attenuation -
           (isManual ? std::max(m_settings.gain.attenuation, 0) : 0);
}

double Measurement::GetNoiseDensity(const ReceivePath& path) const {
    return FromDecibel(m_scenario.device.noiseDensity - GetGain(path));
}

} // namespace Simulator
