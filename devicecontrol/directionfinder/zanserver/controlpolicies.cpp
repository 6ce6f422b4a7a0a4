#include "zanserver/controlpolicies.h"

#include "zancommon/antennadatalist.h"
#include "zancommon/zancharacteristicstools.h"
#include "zancommon/zanpath.h"
#include "zanserver/antennaentries.h"
#include "zanserver/frequencytext.h"
#include "zanserver/operationmodetext.h"
#include "zanserver/plural.h"
#include "zanserver/scanranges.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;

namespace ZANServer::ControlPolicies {

namespace {

constexpr double MILLISECONDS = 1000.0;
constexpr long AUTOMATIC_GAIN = 0; // key of the selection
constexpr long MANUAL_GAIN = 1;

QString OnOff(bool on) {
    return on ? u"on"_s : u"off"_s;
}

double CurrentNumber(const ValueSelection& selection, double otherwise) {
    const long index = selection.GetCurrentIndex();
    return index < 0 ? otherwise : selection.GetItems()[static_cast<std::size_t>(index)].GetValue();
}

/// \param isHeld whether the value holds what the device has; otherwise it would show something else
void Mark(ValueBase& value, bool isHeld, IObserver* originator) {
    value.SetState(isHeld ? TValueState::Valid : TValueState::NotMeasured, originator);
}

/// Makes the item with a number the current one; another one stays when there is none, not measured.
void SelectNumber(ValueSelection& selection, double number, IObserver* originator) {
    const auto& items = selection.GetItems();
    const auto found = std::ranges::find(items, number, &SelectionItem::GetValue);
    const bool isThere = found != items.end();
    if (isThere) {
        selection.SetCurrentIndex(found - items.begin(), originator);
    }
    Mark(selection, isThere, originator);
}

/// The same by key.
void SelectKey(ValueSelection& selection, long key, IObserver* originator) {
    Mark(selection, selection.SetCurrentKey(key, originator), originator);
}

/// A number that is out of the value's range leaves it as it was, not measured.
template <class Value, class Number>
void SetNumber(Value& value, Number number, IObserver* originator) {
    Mark(value, value.SetValue(number, originator), originator);
}

/// Whole decibels, as drivers take them.
qint32 ToDecibels(double level) {
    constexpr double MOST = 1000.0; // far beyond every level
    return static_cast<qint32>(std::clamp(std::trunc(level), -MOST, MOST));
}

/// What the device says of a setting that was set; not of one that was left to it.
template <class T>
void TakeIfSet(T& setting, const T& ofDevice) {
    const auto isSet = [](T value) {
        return std::is_same_v<T, bool> || (value != T(-1) && std::isfinite(static_cast<double>(value)));
    };
    if (isSet(setting) && isSet(ofDevice)) {
        setting = ofDevice;
    }
}

QString DescribeLimits(const FrequencyRange& limits) {
    return u"the mode goes from %1"_s.arg(FrequencyText::FormatRange(limits.low, limits.high));
}

bool IsOfGroup(const ControlValues& values, const ConverterSetupStruct& setup, bool isHf) {
    const auto type = static_cast<EZANConverter>(setup.type);
    return isHf ? values.characteristics.IsHfConverter(type) : values.characteristics.IsVuhfConverter(type);
}

} // namespace

EWish GpsTime::Read(bool& use, WishChange& /*change*/) const {
    use = values->gpsTime->GetValue();
    return EWish::SEND;
}
void GpsTime::Show(bool use) const {
    values->gpsTime->SetValue(use, values->owner);
}
QString GpsTime::Describe(bool use) {
    return OnOff(use);
}

bool Converters::Arguments::operator==(const Arguments& other) const {
    return std::ranges::equal(setups, other.setups,
                              [](ConverterSetupStruct first, const ConverterSetupStruct& second) {
                                  first.attenuation = second.attenuation;
                                  return first == second;
                              });
}
EWish Converters::Read(Arguments& wanted, WishChange& /*change*/) const {
    wanted.setups = values->converterSetups;
    for (ConverterSetupStruct& setup : wanted.setups) {
        if (IsOfGroup(*values, setup, true)) {
            setup.preamplifier = values->preAmplifierHf->GetValue();
            setup.attenuation = static_cast<qint32>(values->attenuationHf->GetCurrentKey());
        } else if (IsOfGroup(*values, setup, false)) {
            setup.preamplifier = values->preAmplifierVuhf->GetValue();
            setup.attenuation = static_cast<qint32>(values->attenuationVuhf->GetCurrentKey());
        }
    }
    return wanted.setups.empty() ? EWish::NOTHING : EWish::SEND;
}
void Converters::Show(const Arguments& arguments) const {
    for (const ConverterSetupStruct& setup : arguments.setups) {
        if (IsOfGroup(*values, setup, true)) {
            values->preAmplifierHf->SetValue(setup.preamplifier, values->owner);
        } else if (IsOfGroup(*values, setup, false)) {
            values->preAmplifierVuhf->SetValue(setup.preamplifier, values->owner);
        }
    }
}
QString Converters::Describe(const Arguments& arguments) {
    QStringList texts;
    for (const ConverterSetupStruct& setup : arguments.setups) {
        texts.append(u"%1: preamplifier %2"_s.arg(setup.typeName, OnOff(setup.preamplifier)));
    }
    return texts.join(u", "_s);
}

bool Converters::Ask(IDriver& driver, Arguments& arguments, std::size_t number) {
    ConverterSetupStruct& setup = arguments.setups[number];
    ConverterSetupStruct ofDevice = setup;
    if (driver.GetConverterSetup(static_cast<unsigned long>(setup.handle), ofDevice) != 0) {
        return false;
    }
    setup.preamplifier = ofDevice.preamplifier;
    return true;
}

EWish Antennas::Read(Arguments& wanted, WishChange& /*change*/) const {
    wanted.entries = AntennaEntries::Read();
    wanted.setups = AntennaEntries::ToSetups(wanted.entries, values->antennaSetups);
    return wanted.setups.empty() ? EWish::NOTHING : EWish::SEND;
}
void Antennas::Show(const Arguments& arguments) const {
    AntennaEntries::WriteBack(AntennaEntries::FromSetups(arguments.entries, arguments.setups), values->owner);
}
QString Antennas::Describe(const Arguments& arguments) {
    QStringList texts;
    for (const AntennaSetupStruct& setup : arguments.setups) {
        texts.append(
            u"antenna %1: %2"_s.arg(QString::number(setup.handle),
                                    FrequencyText::FormatRange(setup.range.first, setup.range.second)));
    }
    return texts.join(u", "_s);
}

bool Antennas::Ask(IDriver& driver, Arguments& arguments, std::size_t number) {
    AntennaSetupStruct& setup = arguments.setups[number];
    AntennaSetupStruct ofDevice = setup;
    if (driver.GetAntennaSetup(static_cast<unsigned long>(setup.handle), ofDevice) != 0 ||
        !std::isfinite(ofDevice.mechanicalOffset) || !(ofDevice.range.first < ofDevice.range.second)) {
        return false;
    }
    setup.range = ofDevice.range;
    setup.mechanicalOffset = ofDevice.mechanicalOffset;
    setup.polarisation = ofDevice.polarisation;
    setup.compassHandle = ofDevice.compassHandle;
    return true;
}

EWish Attenuation::Read(Arguments& wanted, WishChange& /*change*/) const {
    for (const ConverterSetupStruct& setup : values->converterSetups) {
        for (const bool isHf : {true, false}) {
            if (IsOfGroup(*values, setup, isHf)) {
                const ValueSelection& selection = isHf ? *values->attenuationHf : *values->attenuationVuhf;
                wanted.push_back({static_cast<unsigned long>(setup.handle), isHf, selection.GetCurrentKey()});
            }
        }
    }
    return wanted.empty() ? EWish::NOTHING : EWish::SEND;
}
void Attenuation::Show(const Arguments& arguments) const {
    for (const Of& each : arguments) {
        SelectKey(each.isHf ? *values->attenuationHf : *values->attenuationVuhf, each.attenuation,
                  values->owner);
    }
}
QString Attenuation::Describe(const Arguments& arguments) {
    QStringList texts;
    for (const Of& each : arguments) {
        texts.append(u"%1: %2 dB"_s.arg(each.isHf ? u"HF"_s : u"VUHF"_s).arg(each.attenuation));
    }
    return texts.join(u", "_s);
}

bool Attenuation::Ask(IDriver& driver, Arguments& arguments, std::size_t number) {
    ConverterSetupStruct ofDevice;
    ofDevice.attenuation = static_cast<qint32>(arguments[number].attenuation);
    if (driver.GetConverterSetup(arguments[number].converter, ofDevice) != 0) {
        return false;
    }
    arguments[number].attenuation = ofDevice.attenuation;
    return true;
}

EWish GainControl::Read(Arguments& wanted, WishChange& /*change*/) const {
    const bool isManual = values->gainControlMode->GetCurrentKey() == MANUAL_GAIN;
    wanted.mode = isManual ? u"manual"_s : u"auto"_s;
    wanted.gain = isManual ? values->mgcLevel->GetValue() : -1.0;
    return EWish::SEND;
}
void GainControl::Show(const Arguments& arguments) const {
    const bool isManual = arguments.mode == u"manual"_s;
    values->gainControlMode->SetCurrentKey(isManual ? MANUAL_GAIN : AUTOMATIC_GAIN, values->owner);
    if (isManual) {
        SetNumber(*values->mgcLevel, arguments.gain, values->owner);
    }
}
QString GainControl::Describe(const Arguments& arguments) {
    return arguments.mode == u"manual"_s ? u"manual, %1 dB"_s.arg(arguments.gain) : u"automatic"_s;
}
bool GainControl::Ask(IDriver& driver, Arguments& arguments, std::size_t) {
    GainControlStruct ofDevice = arguments;
    if (driver.GetGainControl(ofDevice) != 0 ||
        (ofDevice.mode != u"manual"_s && ofDevice.mode != u"auto"_s)) {
        return false;
    }
    arguments.mode = ofDevice.mode;
    arguments.gain = ofDevice.mode == u"auto"_s     ? -1.0
                     : std::isfinite(ofDevice.gain) ? ofDevice.gain
                                                    : arguments.gain;
    return true;
}

EWish Frequency::Read(double& frequency, WishChange& change) const {
    const double asked = values->frequency->GetValue();
    const FrequencyAdjustment adjustment = values->characteristics.AdjustFrequency(values->GetMode(), asked);
    frequency = adjustment.frequency;
    if (adjustment.antenna && frequency == asked) {
        return EWish::SEND;
    }
    change.asked = Describe(asked);
    if (!adjustment.antenna || !values->frequency->SetValue(frequency, values->owner)) {
        change.reason = adjustment.limits.low < adjustment.limits.high
                            ? u"no antenna serves it in this mode; "_s + DescribeLimits(adjustment.limits)
                            : u"no antenna serves this mode"_s;
        return EWish::REFUSED;
    }
    QStringList reasons;
    if (adjustment.intoLimits != 0.0) {
        reasons.append(DescribeLimits(adjustment.limits));
    }
    if (adjustment.intoRange != 0.0) {
        reasons.append(u"the band of %1 must lie in the range of %2"_s.arg(
            FrequencyText::Format(adjustment.bandwidth), adjustment.antenna->name));
    }
    change.reason = reasons.join(u"; "_s);
    return EWish::SEND;
}
void Frequency::Show(double frequency) const {
    SetNumber(*values->frequency, frequency, values->owner);
}
QString Frequency::Describe(double frequency) {
    return FrequencyText::Format(frequency);
}
bool Frequency::Ask(IDriver& driver, double& frequency, std::size_t) {
    double ofDevice = frequency;
    if (driver.GetFrequency(ofDevice) != 0 || !std::isfinite(ofDevice)) {
        return false;
    }
    frequency = ofDevice;
    return true;
}

EWish AverageTime::Read(double& seconds, WishChange& /*change*/) const {
    seconds = CurrentNumber(*values->updateInterval, 0.0) / MILLISECONDS;
    return EWish::SEND;
}
void AverageTime::Show(double seconds) const {
    SelectNumber(*values->updateInterval, std::round(seconds * MILLISECONDS), values->owner);
}
QString AverageTime::Describe(double seconds) {
    return u"%1 s"_s.arg(seconds);
}
bool AverageTime::Ask(IDriver& driver, double& seconds, std::size_t) {
    double ofDevice = seconds;
    if (driver.GetAverageTime(ofDevice) != 0 || !std::isfinite(ofDevice)) {
        return false;
    }
    seconds = ofDevice;
    return true;
}

EWish ScanAveraging::Read(unsigned long& count, WishChange& /*change*/) const {
    count = static_cast<unsigned long>(values->scanAveraging->GetValue());
    return EWish::SEND;
}
void ScanAveraging::Show(unsigned long count) const {
    values->scanAveraging->SetValue(static_cast<int>(count), values->owner);
}
QString ScanAveraging::Describe(unsigned long count) {
    return QString::number(count);
}

EWish HoldTimes::Read(Arguments& wanted, WishChange& /*change*/) const {
    wanted = {values->holdTime->GetValue(), values->signalTime->GetValue(), values->pauseTime->GetValue()};
    return EWish::SEND;
}
void HoldTimes::Show(const Arguments& arguments) const {
    values->holdTime->SetValue(arguments[0], values->owner);
    values->signalTime->SetValue(arguments[1], values->owner);
    values->pauseTime->SetValue(arguments[2], values->owner);
}
QString HoldTimes::Describe(const Arguments& arguments) {
    return u"hold %1 ms, signal %2 ms, pause %3 ms"_s.arg(arguments[0]).arg(arguments[1]).arg(arguments[2]);
}

EWish Emitters::Read(int& count, WishChange& /*change*/) const {
    count = values->srNumEmitters->GetValue();
    return EWish::SEND;
}
void Emitters::Show(int count) const {
    values->srNumEmitters->SetValue(count, values->owner);
}
QString Emitters::Describe(int count) {
    return count == 0 ? u"automatic"_s : QString::number(count);
}

EWish Measure::Read(Arguments& wanted, WishChange& change) const {
    const ZANCharacteristicsTools tools;
    auto polarisation =
        static_cast<quint32>(tools.TranslatePolarisationMode(values->polarisation->GetValue()));
    if (polarisation > POLARISATION_HORIZONTAL) {
        change = {u"polarisation "_s + Bounded(values->polarisation->GetValue(), 40),
                  u"there is no such polarisation"_s};
        polarisation = POLARISATION_VERTICAL;
        values->polarisation->SetValue(tools.TranslatePolarisationMode(polarisation), values->owner);
    }
    wanted.frequency = values->frequency->GetValue();
    const AntennaData* const antenna = values->GetAntenna();
    const bool hasMethods = values->dfMode->GetCurrentIndex() >= 0;
    wanted.isHf = values->characteristics.GetRangeTypeOfAntenna(antenna, OPMODE_ANY) == FREQRANGE_HF;
    DFSettingsStruct& df = wanted.df;
    df.resolutionBandwidth = CurrentNumber(*values->dfBandwidth, -1.0);
    df.method =
        hasMethods ? static_cast<qint32>(tools.TranslateDfMethod(values->dfMode->GetStringValue())) : -1;
    df.preamplifier = (wanted.isHf ? values->preAmplifierHf : values->preAmplifierVuhf)->GetValue();
    df.activeAntenna = values->antennaActive->GetValue() && antenna &&
                       values->characteristics.DoesAntennaSupportActivePassive(antenna->handle);
    df.levelThreshold = ToDecibels(values->levelThreshold->GetValue());
    df.relativeThreshold = true; // 0, the default, lets everything pass that is above the noise
    df.polarisation = antenna && antenna->polarizationSupport ? static_cast<qint32>(polarisation) : -1;
    const bool isSuperResolutionWanted = values->srStatus->GetCurrentKey() != 0;
    df.superResolution =
        isSuperResolutionWanted && antenna &&
        values->characteristics.HasAntennaDFMethod(antenna, wanted.frequency, METHODDETAILED_SUPR);
    if (isSuperResolutionWanted != df.superResolution) {
        change = {u"super resolution"_s, u"the antenna has no super resolution at this frequency"_s};
        values->srStatus->SetCurrentKey(0, values->owner); // the outputs would wait for emitters
    }
    DEMSettingsStruct& dem = wanted.dem;
    dem.demodulation = static_cast<qint32>(values->demodulation->GetCurrentKey());
    dem.squelch = values->squelch->GetValue() ? ToDecibels(values->audioThreshold->GetValue()) : -1;
    dem.gainControl = values->gainControlMode->GetCurrentKey() == AUTOMATIC_GAIN ? 1 : 0;
    dem.bandwidth = CurrentNumber(*values->bandwidth, -1.0);
    return EWish::SEND;
}
void Measure::Show(const Arguments& arguments) const {
    const ZANCharacteristicsTools tools;
    IObserver* const owner = values->owner;
    const DFSettingsStruct& df = arguments.df;
    if (df.resolutionBandwidth > 0.0) {
        SelectNumber(*values->dfBandwidth, df.resolutionBandwidth, owner);
    }
    if (df.method >= 0) {
        Mark(*values->dfMode,
             values->dfMode->SetStringValue(tools.TranslateDfMethod(static_cast<unsigned long>(df.method)),
                                            owner),
             owner);
    }
    (arguments.isHf ? values->preAmplifierHf : values->preAmplifierVuhf)->SetValue(df.preamplifier, owner);
    const AntennaData* const antenna = values->GetAntenna();
    if (antenna && values->characteristics.DoesAntennaSupportActivePassive(antenna->handle)) {
        values->antennaActive->SetValue(df.activeAntenna, owner);
    }
    SetNumber(*values->levelThreshold, df.levelThreshold, owner);
    if (df.polarisation >= 0) {
        values->polarisation->SetValue(
            tools.TranslatePolarisationMode(static_cast<unsigned long>(df.polarisation)), owner);
    }
    values->srStatus->SetCurrentKey(df.superResolution ? 1 : 0, owner);
    SelectKey(*values->demodulation, arguments.dem.demodulation, owner);
    values->squelch->SetValue(arguments.dem.squelch != -1, owner);
    if (arguments.dem.squelch != -1) {
        SetNumber(*values->audioThreshold, arguments.dem.squelch, owner);
    }
    if (arguments.dem.bandwidth > 0.0) {
        SelectNumber(*values->bandwidth, arguments.dem.bandwidth, owner);
    }
}
QString Measure::Describe(const Arguments& arguments) {
    const DFSettingsStruct& df = arguments.df;
    const DEMSettingsStruct& dem = arguments.dem;
    QStringList texts;
    if (df.resolutionBandwidth > 0.0) {
        texts.append(u"DF bandwidth "_s + FrequencyText::Format(df.resolutionBandwidth));
    }
    if (df.method >= 0) {
        texts.append(u"method "_s +
                     ZANCharacteristicsTools().TranslateDfMethod(static_cast<unsigned long>(df.method)));
    }
    texts.append(
        u"threshold %1 dB, preamplifier %2, active antenna %3, super resolution %4, demodulation %5"_s
            .arg(df.levelThreshold)
            .arg(OnOff(df.preamplifier), OnOff(df.activeAntenna), OnOff(df.superResolution))
            .arg(dem.demodulation));
    if (dem.bandwidth > 0.0) {
        texts.append(u"bandwidth "_s + FrequencyText::Format(dem.bandwidth));
    }
    texts.append(dem.squelch == -1 ? u"squelch off"_s : u"squelch %1 dB"_s.arg(dem.squelch));
    return texts.join(u", "_s);
}
bool Measure::Ask(IDriver& driver, Arguments& arguments, std::size_t) {
    double frequency = arguments.frequency;
    DFSettingsStruct df = arguments.df;
    DEMSettingsStruct dem = arguments.dem;
    if (driver.GetMeasureSettings(frequency, df, dem) != 0) {
        return false;
    }
    TakeIfSet(arguments.df.resolutionBandwidth, df.resolutionBandwidth);
    if (!arguments.df.superResolution) { // which is a method, too
        TakeIfSet(arguments.df.method, df.method);
    }
    TakeIfSet(arguments.df.preamplifier, df.preamplifier);
    TakeIfSet(arguments.df.activeAntenna, df.activeAntenna);
    TakeIfSet(arguments.df.superResolution, df.superResolution);
    TakeIfSet(arguments.df.levelThreshold, df.levelThreshold);
    TakeIfSet(arguments.df.polarisation, df.polarisation);
    TakeIfSet(arguments.dem.demodulation, dem.demodulation);
    TakeIfSet(arguments.dem.squelch, dem.squelch);
    TakeIfSet(arguments.dem.gainControl, dem.gainControl);
    TakeIfSet(arguments.dem.bandwidth, dem.bandwidth);
    return true;
}

bool Ranges::Arguments::operator==(const Arguments& other) const {
    return std::ranges::equal(ranges, other.ranges, ScanRanges::AreEqual);
}
EWish Ranges::Read(Arguments& wanted, WishChange& change) const {
    const QStringList texts(values->scanRanges->GetElements().begin(),
                            values->scanRanges->GetElements().end());
    const EOperationMode mode = values->GetMode() == OPMODE_SEARCH ? OPMODE_SEARCH : OPMODE_SCAN;
    change.asked = Plural(static_cast<std::size_t>(texts.size()), u"range"_s);
    if (texts.size() > ScanRanges::MOST_RANGES) {
        change.reason = u"there are more than %1"_s.arg(ScanRanges::MOST_RANGES);
        return EWish::REFUSED;
    }
    double channels = 0.0;
    QStringList reasons;
    for (const QString& text : texts) {
        auto range = ScanRanges::Parse(text, change.reason);
        if (!range) {
            return EWish::REFUSED;
        }
        const RangeAdjustment adjustment = values->characteristics.AdjustFrequencyRange(
            mode, {range->GetStartFreq(), range->GetStopFreq()}, ZANCharacteristics::fBANDWIDTH_ANY,
            ZANCharacteristics::ADJUST_DOWN);
        const QString asked = FrequencyText::FormatRange(range->GetStartFreq(), range->GetStopFreq());
        if (!adjustment.IsServed()) {
            change.reason = u"no antenna with a sample mode has the whole of %1; %2"_s.arg(
                asked, DescribeLimits(adjustment.limits));
            return EWish::REFUSED;
        }
        if (adjustment.range != adjustment.asked) {
            reasons.append(u"%1 is moved to %2: %3"_s.arg(
                asked, FrequencyText::FormatRange(adjustment.range.low, adjustment.range.high),
                adjustment.intoLimits != 0.0 ? DescribeLimits(adjustment.limits)
                                             : u"it straddled the border of two antennas"_s));
            range->SetStartFreq(adjustment.range.low);
            range->SetStopFreq(adjustment.range.high);
        }
        channels += ScanRanges::CountChannels(*range);
        if (channels > values->characteristics.GetMaxChannelCount()) {
            change.reason = u"the device has %1 channels, the ranges more"_s.arg(
                values->characteristics.GetMaxChannelCount());
            return EWish::REFUSED;
        }
        wanted.ranges.push_back(std::move(*range));
    }
    ScanRanges::Number(wanted.ranges);
    wanted.isScanning = values->isScanning;
    change.reason = reasons.join(u"; "_s);
    if (!reasons.isEmpty()) {
        Show(wanted);
    }
    return EWish::SEND;
}
void Ranges::Show(const Arguments& arguments) const {
    const auto transaction =
        values->scanRanges->CreateTransaction({TChangeCode::ListReplaced}, values->owner);
    values->scanRanges->Clear(values->owner);
    for (const FreqRangeDefinition& range : arguments.ranges) {
        values->scanRanges->PushBack(ScanRanges::Format(range), values->owner);
    }
}
QString Ranges::Describe(const Arguments& arguments) {
    return Plural(arguments.ranges.size(), u"range"_s);
}
long Ranges::Call(IDriver& driver, const Arguments& arguments, std::size_t number) {
    const std::size_t first = arguments.isScanning ? 1 : 0; // of the calls that set ranges
    if (number < first) {
        if (driver.SetMode(EMODE_STANDBY) != 0) {
            driver.ClearLastError(); // one that cannot stand by gets its ranges all the same
        }
        return 0;
    }
    if (number == first) {
        return driver.DeleteAllChannels();
    }
    FreqRangeDefinition range = arguments.ranges[number - first - 1];
    return driver.AddFreqRange(&range);
}

EWish Volume::Read(Arguments& wanted, WishChange& /*change*/) const {
    wanted = {values->volume->GetValue(), values->mute->GetValue()};
    return EWish::SEND;
}
void Volume::Show(const Arguments& arguments) const {
    values->volume->SetValue(arguments.volume, values->owner);
    values->mute->SetValue(arguments.isMuted, values->owner);
}
QString Volume::Describe(const Arguments& arguments) {
    return u"%1 percent%2"_s.arg(QString::number(arguments.volume),
                                 arguments.isMuted ? u", mute"_s : QString());
}

EWish Compass::Read(int& value, WishChange& /*change*/) const {
    value = values->compassValue->GetValue();
    return value < 0 ? EWish::NOTHING : EWish::SEND;
}
void Compass::Show(int /*value*/) const {}
QString Compass::Describe(int value) {
    return u"%1 degrees"_s.arg(value / 10.0);
}

EWish Mode::Read(EMode& mode, WishChange& /*change*/) const {
    mode = static_cast<EMode>(values->operationMode->GetCurrentKey());
    return EWish::SEND;
}
void Mode::Show(EMode mode) const {
    values->operationMode->SetCurrentKey(mode, values->owner);
}
QString Mode::Describe(EMode mode) {
    return OperationModeText::Format(static_cast<EOperationMode>(mode));
}

} // namespace ZANServer::ControlPolicies
