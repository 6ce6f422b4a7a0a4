#include "simulator/simulatordriver.h"

#include "simulator/scenarioreader.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;

namespace Simulator {

namespace {

constexpr double MOST_CHANNELS = ZANCharacteristics::MAX_CHANNEL_COUNT_DEFAULT;
constexpr long HIGHEST_ATTENUATION = 60;        // dB
constexpr double HIGHEST_AVERAGE_TIME = 3600.0; // s
constexpr double HIGHEST_PACE = 1e6;
constexpr long MOST_EMITTERS = 4;
constexpr unsigned long MOST_SCAN_AVERAGES = 1000;

const QString& LinkIsLost() {
    static const QString text = u"the link to the device is lost"_s;
    return text;
}

QString InHertz(double frequency) {
    return QString::number(frequency, 'f', 0) + u" Hz"_s;
}

template <class Number>
QString NoSuch(QStringView what, Number number) {
    return u"there is no %1 %2"_s.arg(what).arg(number);
}

QString NotWithin(QStringView what, long number, long highest) {
    return u"%1 of %2 is not within 0 to %3"_s.arg(what).arg(number).arg(highest);
}

QString GetModeName(EMode mode) {
    switch (mode) {
    case EMODE_FFM:
        return u"fixed frequency"_s;
    case EMODE_WIDEBAND_FFM:
        return u"wideband"_s;
    case EMODE_SCAN:
        return u"scan"_s;
    case EMODE_SEARCH:
        return u"search"_s;
    default:
        return QString::number(mode);
    }
}

bool IsMeasured(EMode mode) {
    return mode == EMODE_FFM || mode == EMODE_WIDEBAND_FFM || mode == EMODE_SCAN || mode == EMODE_SEARCH;
}

QString OnOff(bool on) {
    return on ? u"on"_s : u"off"_s;
}

/// The element at a place that the application has named; null when there is none.
template <class List>
auto* Find(List& list, auto place) {
    return std::cmp_less(place, 0) || std::cmp_greater_equal(place, list.size())
               ? nullptr
               : &list[static_cast<std::size_t>(place)];
}

template <class List>
auto FindRange(List& ranges, const FreqRangeDefinition& wanted) {
    return std::ranges::find_if(ranges, [&wanted](const FreqRangeDefinition& each) {
        return wanted.GetIndex() >= 0 ? each.GetIndex() == wanted.GetIndex()
                                      : each.GetStartFreq() == wanted.GetStartFreq() &&
                                            each.GetStopFreq() == wanted.GetStopFreq();
    });
}

} // namespace

DriverDescription SimulatorDriver::Describe() {
    return {u"simulator"_s,
            u"a simulated direction finder in a scenario of emitters"_s,
            u"SCENARIO"_s,
            u"airfield"_s,
            {EMODE_FFM, EMODE_WIDEBAND_FFM, EMODE_SCAN, EMODE_SEARCH}};
}

SimulatorDriver::~SimulatorDriver() {
    Stop();
}

int SimulatorDriver::Initialize(std::string& address, bool /*simulation*/) {
    Stop();
    m_mode = EMODE_STANDBY;
    Log(u"open "_s + QString::fromStdString(address));
    if (m_session && m_session->state.isLinkLost && address == m_address) {
        if (!IsLinkBack()) {
            return static_cast<int>(Refuse(LinkIsLost()));
        }
        m_session->state.isLinkLost = false;
        return OK;
    }
    ScenarioReader reader;
    std::optional<Scenario> scenario = reader.ReadFile(QString::fromStdString(address));
    if (!scenario) {
        m_session.reset();
        return static_cast<int>(Refuse(reader.GetErrorText()));
    }
    if (!m_callback) {
        return static_cast<int>(Refuse(u"there is no callback"_s));
    }
    m_address = address;
    m_session = std::make_unique<Session>(std::move(*scenario), *m_callback);
    return OK;
}

/// The faults of the scenario last as long as its clock would take; those that were commanded until they are
/// taken back.
bool SimulatorDriver::IsLinkBack() {
    DeviceState& state = m_session->state;
    if (state.faults.IsCommanded(EFault::LOST_LINK)) {
        return false;
    }
    const double time = state.GetSeconds();
    const Fault* const fault = state.faults.FindScheduled(EFault::LOST_LINK, time);
    if (!fault) {
        return true;
    }
    const double rest = fault->at + fault->duration - time;
    const std::chrono::duration<double> passed =
        std::chrono::steady_clock::now() - m_session->lostSince.load();
    if (m_pace != SimulatedClock::AS_FAST_AS_POSSIBLE && passed.count() * m_pace < rest) {
        return false;
    }
    state.clock.Set(SimulatedClock::Time(std::llround((fault->at + fault->duration) * 1e6)));
    return true;
}

long SimulatorDriver::SetMode(EMode mode) {
    if (mode == EMODE_STANDBY) { // always possible
        Stop();
        m_mode = mode;
        Log(u"mode standby"_s);
        return OK;
    }
    if (!Takes(u"mode "_s + GetModeName(mode))) {
        return FAILED;
    }
    if (!IsMeasured(mode)) {
        return NOT_SUPPORTED;
    }
    Stop();
    m_mode = mode;
    m_session->state.clock.SetPace(m_pace);
    m_session->state.clock.Resume();
    m_thread = std::thread([this, mode] {
        m_session->measurement.Run(mode);
        m_session->lostSince = std::chrono::steady_clock::now();
    });
    return OK;
}

void SimulatorDriver::Stop() {
    if (m_thread.joinable()) {
        m_session->state.clock.Interrupt();
        m_thread.join();
    }
}

long SimulatorDriver::Reset() {
    if (!Takes(u"reset"_s)) {
        return FAILED;
    }
    Stop();
    m_mode = EMODE_STANDBY;
    return Change([this](DeviceSettings& settings) {
        const quint64 changes = settings.rangeChanges;
        settings = MakeInitialSettings(m_session->scenario);
        settings.rangeChanges = changes + 1;
    });
}

long SimulatorDriver::Calibrate(unsigned long converter) {
    if (!Takes(u"calibrate converter %1"_s.arg(converter))) {
        return FAILED;
    }
    if (!Find(m_session->scenario.device.converters, converter)) {
        return Refuse(NoSuch(u"converter", converter));
    }
    DeviceState& state = m_session->state;
    if (state.faults.IsThere(EFault::CALIBRATION, state.GetSeconds())) {
        ErrorStruct error{FAILED, false, u"the calibration of converter %1 has failed"_s.arg(converter)};
        m_callback->reportError(error);
        return Refuse(error.text);
    }
    return OK;
}

long SimulatorDriver::BIT(long& result, bool full, bool repeat) {
    if (!Takes((full ? u"built-in test, full"_s : u"built-in test, short"_s) +
               (repeat ? u", repeated"_s : QString()))) {
        return FAILED;
    }
    Change([repeat](DeviceSettings& settings) { settings.isTestRepeated = repeat; });
    result = 0;
    for (const HardwareComponent& component : m_session->scenario.device.components) {
        ErrorStruct report{component.operational ? 0 : 1, false,
                           component.name + (component.operational ? u": no error"_s : u": does not work"_s)};
        result += component.operational ? 0 : 1;
        if (full || !component.operational) {
            m_callback->ReportBITResult(report);
        }
    }
    if (!full && result == 0) {
        ErrorStruct report{0, false, u"built-in test: no error"_s};
        m_callback->ReportBITResult(report);
    }
    return OK;
}

long SimulatorDriver::SetTest(QString command) {
    Log(u"test "_s + command);
    const QStringList words = command.simplified().split(u' ');
    if (words.size() == 2 && words[0] == u"speed") {
        return SetSpeed(words[1]);
    }
    if (words.size() >= 3 && words[0] == u"fault") {
        return SetFault(words);
    }
    if (words.size() == 2 && words[0] == u"seed") {
        return SetSeed(words[1]);
    }
    return Refuse(u"\"%1\" is not known; there are: speed realtime|N|max, "
                  "fault lostlink|silence|slow|calibration on|off, seed N"_s.arg(command));
}

long SimulatorDriver::SetSpeed(const QString& speed) {
    bool isNumber = false;
    const double pace = speed.toDouble(&isNumber);
    if (speed == u"realtime") {
        m_pace = 1.0;
    } else if (speed == u"max") {
        m_pace = SimulatedClock::AS_FAST_AS_POSSIBLE;
    } else if (isNumber && pace > 0.0 && pace <= HIGHEST_PACE) {
        m_pace = pace;
    } else {
        return Refuse(u"\"%1\" is not a speed: realtime, max, or a number above 0"_s.arg(speed));
    }
    return OK;
}

long SimulatorDriver::SetFault(const QStringList& words) {
    const std::optional<EFault> kind = Faults::FindByName(words[1]);
    const bool isOn = words[2] == u"on";
    const bool hasDelay = words.size() == 4 && kind == EFault::SLOW && isOn;
    bool isNumber = true;
    const double delay = hasDelay ? words[3].toDouble(&isNumber) : Faults::DEFAULT_DELAY;
    if (!kind || (!isOn && words[2] != u"off") || (words.size() > 3 && !hasDelay) || !isNumber ||
        !(delay >= 0.0 && delay <= 60.0)) {
        return Refuse(u"\"%1\" is not a fault: lostlink|silence|slow|calibration on|off"_s.arg(
            words.mid(1).join(u' ')));
    }
    if (!m_session) {
        return Refuse(u"the device is not open"_s);
    }
    m_session->state.faults.SetDelay(delay);
    m_session->state.faults.SetCommanded(*kind, isOn);
    return OK;
}

long SimulatorDriver::SetSeed(const QString& seed) {
    bool isNumber = false;
    const quint64 number = seed.toULongLong(&isNumber);
    if (!isNumber) {
        return Refuse(u"\"%1\" is not a seed: a whole number from 0 on"_s.arg(seed));
    }
    if (!m_session) {
        return Refuse(u"the device is not open"_s);
    }
    Stop();
    m_mode = EMODE_STANDBY;
    Scenario scenario = m_session->scenario;
    scenario.seed = number;
    m_session = std::make_unique<Session>(std::move(scenario), *m_callback);
    return OK;
}

long SimulatorDriver::SetRfAttenuator(unsigned long converter, long attenuation) {
    if (!Takes(u"attenuation of converter %1 %2 dB"_s.arg(converter).arg(attenuation))) {
        return FAILED;
    }
    if (!Find(m_session->scenario.device.converters, converter)) {
        return Refuse(NoSuch(u"converter", converter));
    }
    if (attenuation < 0 || attenuation > HIGHEST_ATTENUATION) {
        return Refuse(NotWithin(u"an attenuation", attenuation, HIGHEST_ATTENUATION));
    }
    return Change([&](DeviceSettings& settings) {
        settings.converters[converter].attenuation = static_cast<qint32>(attenuation);
    });
}

long SimulatorDriver::SetFrequency(double frequency) {
    if (!Takes(u"frequency "_s + InHertz(frequency))) {
        return FAILED;
    }
    const QString fault = FindFaultOf(frequency, EMODE_STANDBY, {});
    return fault.isEmpty() ? Change([=](DeviceSettings& settings) { settings.frequency = frequency; })
                           : Refuse(fault);
}

long SimulatorDriver::SetGainControl(GainControlStruct settings) {
    if (!Takes(u"gain control %1, attenuation %2 dB"_s.arg(settings.mode).arg(settings.attenuation))) {
        return FAILED;
    }
    if (settings.mode != u"auto" && settings.mode != u"manual") {
        return Refuse(u"\"%1\" is not a gain control: auto, manual"_s.arg(settings.mode));
    }
    if (settings.attenuation < -1 || settings.attenuation > HIGHEST_ATTENUATION) {
        return Refuse(NotWithin(u"an attenuation", settings.attenuation, HIGHEST_ATTENUATION));
    }
    return Change([&](DeviceSettings& all) { all.gain = settings; });
}

long SimulatorDriver::SetFilterSettings(FilterSettingsStruct settings) {
    if (!Takes(u"filter"_s)) {
        return FAILED;
    }
    return Change([&](DeviceSettings& all) { all.filter = settings; });
}

long SimulatorDriver::SetFilterSettings(FreqRangeDefinition* range) {
    if (!Takes(u"filter of range %1"_s.arg(range ? range->GetIndex() : -1))) {
        return FAILED;
    }
    bool isFound = false;
    Change([&](DeviceSettings& all) {
        const auto found = range ? FindRange(all.ranges, *range) : all.ranges.end();
        isFound = found != all.ranges.end();
        if (isFound) {
            found->SetFilterSettings(range->GetFilterSettings());
        }
    });
    return isFound ? OK : Refuse(u"there is no such range"_s);
}

long SimulatorDriver::SetAverageTime(double time) {
    if (!Takes(u"average time %1 s"_s.arg(time))) {
        return FAILED;
    }
    if (!(time >= 0.0 && time <= HIGHEST_AVERAGE_TIME)) {
        return Refuse(u"an average time of %1 s is not within 0 to %2"_s.arg(time).arg(HIGHEST_AVERAGE_TIME));
    }
    return Change([=](DeviceSettings& settings) { settings.averageTime = time; });
}

long SimulatorDriver::ResetAverage() {
    if (!Takes(u"reset the average"_s)) {
        return FAILED;
    }
    return Change([](DeviceSettings& settings) { ++settings.averageResets; });
}

long SimulatorDriver::AddFreqRange(FreqRangeDefinition* range) {
    if (!Takes(range ? u"add range %1: %2 to %3, step %4"_s.arg(range->GetIndex())
                           .arg(InHertz(range->GetStartFreq()), InHertz(range->GetStopFreq()),
                                InHertz(range->GetStepFreq()))
                     : u"add range"_s)) {
        return FAILED;
    }
    QString fault = FindFaultOf(range);
    if (fault.isEmpty() && !HasChannelsFor(*range)) {
        fault = u"there would be more than %1 channels"_s.arg(MOST_CHANNELS);
    }
    return fault.isEmpty() ? Change([range](DeviceSettings& settings) {
        settings.ranges.push_back(*range);
        settings.areRangesGiven = true;
        ++settings.rangeChanges;
    })
                           : Refuse(fault);
}

/// A number of a channel has 16 bits.
bool SimulatorDriver::HasChannelsFor(const FreqRangeDefinition& range) const {
    constexpr unsigned long NUMBERS = 65536;
    std::vector<FreqRangeDefinition> ranges = m_session->state.GetSettings().ranges;
    ranges.push_back(range);
    double count = 0.0;
    unsigned long next = 0;
    for (const FreqRangeDefinition& each : ranges) {
        const unsigned long first = ScanPlan::GetFirstChannel(each, next);
        const double channels = ScanPlan::CountChannels(each);
        count += channels;
        next = first + static_cast<unsigned long>(channels);
        if (count > MOST_CHANNELS || first >= NUMBERS || next > NUMBERS) {
            return false;
        }
    }
    return true;
}

long SimulatorDriver::SetGPSTimeUsage(bool use) {
    if (!Takes(u"time from GPS "_s + OnOff(use))) {
        return FAILED;
    }
    return Change([=](DeviceSettings& settings) { settings.isTimeFromGps = use; });
}

long SimulatorDriver::GetGPSTimeUsage(bool& use) {
    if (!Answers()) {
        return FAILED;
    }
    use = m_session->state.GetSettings().isTimeFromGps;
    return OK;
}

long SimulatorDriver::SetAntennaSetup(AntennaSetupStruct setup) {
    if (!Takes(u"setup of antenna %1: %2 to %3"_s.arg(setup.handle)
                   .arg(InHertz(setup.range.first), InHertz(setup.range.second)))) {
        return FAILED;
    }
    const Antenna* const antenna = Find(m_session->scenario.device.antennas, setup.handle);
    if (!antenna) {
        return Refuse(NoSuch(u"antenna", setup.handle));
    }
    const auto [lowest, highest] = ReceivePath::GetAntennaRange(antenna->name);
    if (!(setup.range.first >= lowest && setup.range.first <= setup.range.second &&
          setup.range.second <= highest)) {
        return Refuse(u"%1 has the range %2 to %3"_s.arg(antenna->name, InHertz(lowest), InHertz(highest)));
    }
    if (!Find(m_session->scenario.device.converters, setup.converterHandle)) {
        return Refuse(NoSuch(u"converter", setup.converterHandle));
    }
    if (setup.compassHandle != -1 && !Find(m_session->scenario.platform.compasses, setup.compassHandle)) {
        return Refuse(NoSuch(u"compass", setup.compassHandle));
    }
    if (!std::isfinite(setup.mechanicalOffset)) {
        return Refuse(u"the mechanical offset is not a number"_s);
    }
    return Change(
        [&](DeviceSettings& settings) { settings.antennas[static_cast<std::size_t>(setup.handle)] = setup; });
}

long SimulatorDriver::SetConverterSetup(ConverterSetupStruct setup) {
    if (!Takes(u"setup of converter %1: %2, attenuation %3 dB, preamplifier %4"_s.arg(setup.handle)
                   .arg(OnOff(setup.enabled))
                   .arg(setup.attenuation)
                   .arg(OnOff(setup.preamplifier)))) {
        return FAILED;
    }
    const EZANConverter* const type = Find(m_session->scenario.device.converters, setup.handle);
    if (!type) {
        return Refuse(NoSuch(u"converter", setup.handle));
    }
    if (setup.type != *type) {
        return Refuse(u"converter %1 is of another type"_s.arg(setup.handle));
    }
    if (setup.attenuation < 0 || setup.attenuation > HIGHEST_ATTENUATION) {
        return Refuse(NotWithin(u"an attenuation", setup.attenuation, HIGHEST_ATTENUATION));
    }
    return Change([&](DeviceSettings& settings) {
        settings.converters[static_cast<std::size_t>(setup.handle)] = setup;
    });
}

long SimulatorDriver::ReadCompass(unsigned long compass, unsigned long& value) {
    if (!Answers()) {
        return FAILED;
    }
    if (!Find(m_session->scenario.platform.compasses, compass)) {
        return Refuse(NoSuch(u"compass", compass));
    }
    constexpr long CIRCLE = 3600;
    const double shown = m_session->measurement.ReadCompass(m_session->state.GetSettings(), compass);
    value = static_cast<unsigned long>(std::lround(shown * 10.0) % CIRCLE);
    return OK;
}

long SimulatorDriver::SetAudioVolume(int volume) {
    if (!Takes(u"volume %1"_s.arg(volume))) {
        return FAILED;
    }
    if (volume < 0 || volume > 100) {
        return Refuse(u"a volume of %1 is not within 0 to 100"_s.arg(volume));
    }
    return Change([=](DeviceSettings& settings) { settings.volume = volume; });
}

long SimulatorDriver::SetHoldTime(int holdTime, int signalTime, int pauseTime) {
    if (!Takes(u"hold time %1 ms, signal time %2 ms, pause time %3 ms"_s.arg(holdTime)
                   .arg(signalTime)
                   .arg(pauseTime))) {
        return FAILED;
    }
    if (holdTime < 0 || signalTime < 0 || pauseTime < 0) {
        return Refuse(u"a time is below 0"_s);
    }
    return Change([=](DeviceSettings& settings) {
        settings.holdTime = holdTime;
        settings.signalTime = signalTime;
        settings.pauseTime = pauseTime;
    });
}

long SimulatorDriver::SearchHold() {
    if (!Takes(u"hold the search"_s)) {
        return FAILED;
    }
    return Change([](DeviceSettings& settings) { settings.isSearchHeld = true; });
}

long SimulatorDriver::SearchContinue(unsigned long channel) {
    if (!Takes(u"continue the search at channel %1"_s.arg(channel))) {
        return FAILED;
    }
    return Change([=](DeviceSettings& settings) {
        settings.isSearchHeld = false;
        settings.searchChannel = channel;
        ++settings.searchContinues;
    });
}

long SimulatorDriver::GetFrequency(double& frequency) {
    if (!Answers()) {
        return FAILED;
    }
    frequency = m_session->state.GetSettings().frequency;
    return OK;
}

long SimulatorDriver::GetGainControl(GainControlStruct& settings) {
    if (!Answers()) {
        return FAILED;
    }
    settings = m_session->state.GetSettings().gain;
    return OK;
}

long SimulatorDriver::GetMeasureSettings(double& frequency, DFSettingsStruct& dfSettings,
                                         DEMSettingsStruct& demSettings) {
    if (!Answers()) {
        return FAILED;
    }
    const DeviceSettings settings = m_session->state.GetSettings();
    frequency = settings.frequency;
    dfSettings = settings.df;
    demSettings = settings.dem;
    dfSettings.averageTime = settings.averageTime;
    const EMode mode = m_mode == EMODE_STANDBY ? EMODE_FFM : m_mode;
    if (const auto path =
            ReceivePath::Find(m_session->scenario.device, settings, mode, frequency, settings.df)) {
        dfSettings.sampleMode = path->sampleMode->sampleMode;
        dfSettings.realtimeBandwidth = path->sampleMode->realtimeBandwidth;
        dfSettings.resolutionBandwidth = path->GetResolutionBandwidth(
            settings.df.resolutionBandwidth > 0.0 ? settings.df.resolutionBandwidth
                                                  : Measurement::GetDefaultResolution(mode));
        dfSettings.method = path->GetMethod(settings.df);
    }
    return OK;
}

long SimulatorDriver::GetFilterSettings(FilterSettingsStruct& settings) {
    if (!Answers()) {
        return FAILED;
    }
    settings = m_session->state.GetSettings().filter;
    return OK;
}

long SimulatorDriver::GetAverageTime(double& time) {
    if (!Answers()) {
        return FAILED;
    }
    time = m_session->state.GetSettings().averageTime;
    return OK;
}

long SimulatorDriver::GetAntennaProperty(unsigned long antenna, AntennaPropertyStruct& property,
                                         AntennaSubRangeStruct& subRange, int& subRangeCount) {
    if (!Answers()) {
        return FAILED;
    }
    const Antenna* const which = Find(m_session->scenario.device.antennas, antenna);
    if (!which) {
        return Refuse(NoSuch(u"antenna", antenna));
    }
    const auto subRanges = ReceivePath::GetSubRanges(which->name);
    property.handle = static_cast<qint32>(antenna);
    property.name = which->name;
    std::tie(property.minFrequency, property.maxFrequency) = ReceivePath::GetAntennaRange(which->name);
    property.compassSupport = !m_session->scenario.platform.compasses.empty();
    property.polarisationSupport = false;
    property.activePassiveSupport = false;
    subRange = subRanges.front();
    subRangeCount = static_cast<int>(subRanges.size());
    return OK;
}

long SimulatorDriver::GetAntennaSetup(unsigned long antenna, AntennaSetupStruct& setup) {
    if (!Answers()) {
        return FAILED;
    }
    const DeviceSettings settings = m_session->state.GetSettings();
    const AntennaSetupStruct* const found = Find(settings.antennas, antenna);
    if (!found) {
        return Refuse(NoSuch(u"antenna", antenna));
    }
    setup = *found;
    return OK;
}

long SimulatorDriver::GetConverterProperty(unsigned long converter, ConverterSetupStruct& property) {
    if (!Answers()) {
        return FAILED;
    }
    const DeviceSettings initial = MakeInitialSettings(m_session->scenario);
    const ConverterSetupStruct* const found = Find(initial.converters, converter);
    if (!found) {
        return Refuse(NoSuch(u"converter", converter));
    }
    property = *found;
    return OK;
}

long SimulatorDriver::GetConverterSetup(unsigned long converter, ConverterSetupStruct& setup) {
    if (!Answers()) {
        return FAILED;
    }
    const DeviceSettings settings = m_session->state.GetSettings();
    const ConverterSetupStruct* const found = Find(settings.converters, converter);
    if (!found) {
        return Refuse(NoSuch(u"converter", converter));
    }
    setup = *found;
    return OK;
}

long SimulatorDriver::GetCompassProperty(unsigned long compass, CompassPropertyStruct& property) {
    if (!Answers()) {
        return FAILED;
    }
    const Compass* const which = Find(m_session->scenario.platform.compasses, compass);
    if (!which) {
        return Refuse(NoSuch(u"compass", compass));
    }
    property = {static_cast<qint32>(compass), which->type, which->resolution, which->pitchRoll};
    return OK;
}

long SimulatorDriver::AlterMeasureSetting(double frequency, DFSettingsStruct dfSettings,
                                          DEMSettingsStruct demSettings) {
    if (!Takes(u"measure settings for "_s + InHertz(frequency))) {
        return FAILED;
    }
    if (std::abs(frequency - m_session->state.GetSettings().frequency) >= 0.5) {
        return Refuse(InHertz(frequency) + u" is not measured"_s);
    }
    const QString fault = FindFaultOf(frequency, m_mode, dfSettings);
    return fault.isEmpty() ? Change([&](DeviceSettings& settings) {
        settings.df = dfSettings;
        settings.areDfSettingsGiven = true;
        settings.dem = demSettings;
        if (dfSettings.averageTime >= 0.0) {
            settings.averageTime = dfSettings.averageTime;
        }
    })
                           : Refuse(fault);
}

long SimulatorDriver::AlterMeasureSetting(FreqRangeDefinition* range) {
    if (!Takes(u"measure settings for range %1"_s.arg(range ? range->GetIndex() : -1))) {
        return FAILED;
    }
    const QString fault = FindFaultOf(range);
    if (!fault.isEmpty()) {
        return Refuse(fault);
    }
    bool isFound = false;
    Change([&](DeviceSettings& settings) {
        const auto found = FindRange(settings.ranges, *range);
        isFound = found != settings.ranges.end();
        if (isFound) {
            // Its channels stay: only the settings are changed.
            found->SetDFSettings(range->GetDFSettings());
            found->SetDEMSettings(range->GetDEMSettings());
            found->SetGainSettings(range->GetGainSettings());
            found->SetAverageTime(static_cast<int>(range->GetAverageTime()));
            ++settings.rangeChanges;
        }
    });
    return isFound ? OK : Refuse(u"there is no such range"_s);
}

long SimulatorDriver::DeleteAllChannels() {
    if (!Takes(u"delete all channels"_s)) {
        return FAILED;
    }
    return Change([](DeviceSettings& settings) {
        settings.ranges.clear();
        settings.skipped.assign(settings.skipped.size(), false);
        ++settings.rangeChanges;
    });
}

long SimulatorDriver::SetSkip(long firstChannel, long lastChannel, bool skip) {
    if (!Takes((skip ? u"skip channels %1 to %2"_s : u"take channels %1 to %2 in again"_s)
                   .arg(firstChannel)
                   .arg(lastChannel))) {
        return FAILED;
    }
    if (firstChannel < 0 || lastChannel < firstChannel || lastChannel >= static_cast<long>(MOST_CHANNELS)) {
        return Refuse(u"there are no channels %1 to %2"_s.arg(firstChannel).arg(lastChannel));
    }
    return Change([=](DeviceSettings& settings) {
        std::fill(settings.skipped.begin() + firstChannel, settings.skipped.begin() + lastChannel + 1, skip);
        ++settings.rangeChanges;
    });
}

long SimulatorDriver::GetMaxChannelCount(EMode mode) {
    return mode == EMODE_FFM ? 1 : IsMeasured(mode) ? static_cast<long>(MOST_CHANNELS) : 0;
}

long SimulatorDriver::SetSRNumOfEmitters(bool automatic, long count) {
    if (!Takes(automatic ? u"number of emitters automatic"_s : u"number of emitters %1"_s.arg(count))) {
        return FAILED;
    }
    if (!automatic && (count < 1 || count > MOST_EMITTERS)) {
        return Refuse(u"%1 emitters are not within 1 to %2"_s.arg(count).arg(MOST_EMITTERS));
    }
    return Change([=](DeviceSettings& settings) {
        settings.isEmitterCountAutomatic = automatic;
        settings.emitterCount = automatic ? settings.emitterCount : count;
    });
}

long SimulatorDriver::SetScanAveraging(unsigned long count) {
    if (!Takes(u"scan averaging %1"_s.arg(count))) {
        return FAILED;
    }
    if (count < 1 || count > MOST_SCAN_AVERAGES) {
        return Refuse(u"a scan averaging of %1 is not within 1 to %2"_s.arg(count).arg(MOST_SCAN_AVERAGES));
    }
    return Change([=](DeviceSettings& settings) { settings.scanAveraging = static_cast<long>(count); });
}

long SimulatorDriver::GetReadCount() {
    return m_session ? m_session->state.readCount.load() : 0;
}

void SimulatorDriver::GetGPSBuffer(GPSStruct& buffer) {
    buffer = m_session ? m_session->state.GetFix() : GPSStruct();
}

long SimulatorDriver::RequestHWStatus(QList<ComponentInfo*>* components) {
    if (!Takes(u"hardware status"_s)) {
        return FAILED;
    }
    for (const HardwareComponent& each : m_session->scenario.device.components) {
        components->append(new ComponentInfo{each.name, each.serialNumber, each.version, each.operational});
    }
    return OK;
}

long SimulatorDriver::GetSweepTime(long& time) {
    if (!Answers()) {
        return FAILED;
    }
    const ScanPlan plan(m_session->scenario.device, m_session->state.GetSettings(),
                        m_mode == EMODE_SEARCH ? EMODE_SEARCH : EMODE_SCAN);
    if (plan.GetHops().empty()) {
        return Refuse(u"there are no channels"_s);
    }
    time = static_cast<long>(std::chrono::ceil<std::chrono::milliseconds>(plan.GetSweepTime()).count());
    return OK;
}

long SimulatorDriver::GetZANTime(unsigned long long& time) {
    if (!Answers()) {
        return FAILED;
    }
    time = m_session->measurement.GetTimeStamp();
    return OK;
}

long SimulatorDriver::SendCompassCommand(unsigned long compass, const QString& command, QString& answer) {
    if (!Takes(u"compass %1: %2"_s.arg(compass).arg(command))) {
        return FAILED;
    }
    const Compass* const which = Find(m_session->scenario.platform.compasses, compass);
    if (!which) {
        return Refuse(NoSuch(u"compass", compass));
    }
    if (command == u"ID?") {
        answer = which->type;
    } else if (command == u"HDG?") {
        answer = QString::number(m_session->measurement.ReadCompass(m_session->state.GetSettings(), compass),
                                 'f', 1);
    } else {
        return Refuse(u"the compass does not know \"%1\""_s.arg(command));
    }
    return OK;
}

long SimulatorDriver::SetCompassValue(unsigned long value) {
    if (!Takes(u"compass shows %1"_s.arg(static_cast<double>(value) / 10.0))) {
        return FAILED;
    }
    if (m_session->scenario.platform.compasses.empty()) {
        return Refuse(u"there is no compass"_s);
    }
    if (value >= 3600) {
        return Refuse(u"%1 is not within 0 to 3599"_s.arg(value));
    }
    const double shown = m_session->measurement.ReadCompass(m_session->state.GetSettings(), 0);
    return Change([=](DeviceSettings& settings) {
        settings.compassOffsets.front() += static_cast<double>(value) / 10.0 - shown;
    });
}

bool SimulatorDriver::Takes(const QString& command) {
    Log(command);
    return Answers();
}

bool SimulatorDriver::Answers() {
    if (!m_session) {
        Refuse(u"the device is not open"_s);
        return false;
    }
    DeviceState& state = m_session->state;
    if (state.isLinkLost || state.faults.IsThere(EFault::LOST_LINK, state.GetSeconds())) {
        if (!state.isLinkLost.exchange(true)) {
            m_session->lostSince = std::chrono::steady_clock::now();
            m_session->measurement.TellLostLink();
        }
        Refuse(LinkIsLost());
        return false;
    }
    if (const double delay = state.faults.GetDelay(state.GetSeconds()); delay > 0.0) {
        std::this_thread::sleep_for(std::chrono::duration<double>(delay));
    }
    return true;
}

long SimulatorDriver::Refuse(const QString& reason) {
    m_lastError = reason;
    return FAILED;
}

void SimulatorDriver::Log(QString line) {
    if (m_callback) {
        m_callback->SetCommandLog(line);
    }
}

/// Why the device cannot measure a range; empty: it can.
QString SimulatorDriver::FindFaultOf(const FreqRangeDefinition* range) const {
    if (!range) {
        return u"there is no range"_s;
    }
    const double start = range->GetStartFreq();
    const double stop = range->GetStopFreq();
    if (!std::isfinite(start) || !std::isfinite(stop) || stop < start) {
        return u"the range ends before it begins"_s;
    }
    if (!(range->GetStepFreq() > 0.0) || !std::isfinite(range->GetStepFreq())) {
        return u"the step is not above 0"_s;
    }
    if (ScanPlan::CountChannels(*range) > MOST_CHANNELS) {
        return u"there would be more than %1 channels"_s.arg(MOST_CHANNELS);
    }
    const QString fault = FindFaultOf(start, EMODE_SCAN, range->GetDFSettings());
    return fault.isEmpty() ? FindFaultOf(stop, EMODE_SCAN, range->GetDFSettings()) : fault;
}

/// Why the device cannot measure a frequency; empty: it can. In standby any mode will do.
QString SimulatorDriver::FindFaultOf(double frequency, EMode mode, const DFSettingsStruct& settings) const {
    constexpr auto ANY_MODE = static_cast<EMode>(OPMODE_ANY);
    const DeviceSettings all = m_session->state.GetSettings();
    const auto path = ReceivePath::Find(m_session->scenario.device, all,
                                        mode == EMODE_STANDBY ? ANY_MODE : mode, frequency, settings);
    if (!path) {
        return u"no antenna serves "_s + InHertz(frequency);
    }
    if (!(settings.averageTime <= HIGHEST_AVERAGE_TIME) ||
        !(settings.measurementTime <= HIGHEST_AVERAGE_TIME)) {
        return u"a time is above %1 s"_s.arg(HIGHEST_AVERAGE_TIME);
    }
    const bool isMethodWanted = settings.method != -1;
    if (isMethodWanted && (settings.method < METHOD_WAT || settings.method > METHOD_VEC ||
                           !path->HasMethod(static_cast<EZANMethod>(settings.method)))) {
        return u"the antenna for %1 does not have the method %2"_s.arg(InHertz(frequency))
            .arg(settings.method);
    }
    if (settings.superResolution && !path->HasMethod(METHOD_SUPR)) {
        return u"the antenna for %1 has no super resolution"_s.arg(InHertz(frequency));
    }
    return {};
}

} // namespace Simulator
