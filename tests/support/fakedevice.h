#pragma once

#include "zancommon/freqrangedefinition.h"
#include "zancommon/idevicedescription.h"
#include "zancommon/nulldriver.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <functional>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

/// A device of the tests: what it is, what it refuses, and what it was called for. Used by the thread of its
/// driver and by the test.
class FakeDevice {
public:
    /// Notes a call. Returns the code of a refusal when it is refused; throws when it is to throw.
    long Note(const QString& operation, const QString& arguments = {}) {
        const std::lock_guard lock(m_mutex);
        m_calls.append(arguments.isEmpty() ? operation : operation + u' ' + arguments);
        ++m_callCount;
        if (m_thrown == operation) {
            throw std::runtime_error("bad driver");
        }
        if (m_refused.contains(operation)) {
            m_error = m_refused[operation].first;
            return m_refused[operation].second;
        }
        return 0;
    }
    /// What was set since the last time, in order.
    QStringList TakeCalls() {
        const std::lock_guard lock(m_mutex);
        QStringList calls;
        for (const QString& call : std::exchange(m_calls, {})) {
            if (!IsQuestion(call)) {
                calls.append(call);
            }
        }
        return calls;
    }
    /// Of one operation only; the others are forgotten.
    QStringList TakeCalls(const QString& operation) {
        QStringList calls = TakeCalls();
        calls.removeIf([&](const QString& call) { return call.section(u' ', 0, 0) != operation; });
        return calls;
    }
    qsizetype CountCalls() {
        const std::lock_guard lock(m_mutex);
        return m_callCount;
    }
    void Refuse(const QString& operation, const QString& text, long code = -2) {
        const std::lock_guard lock(m_mutex);
        m_refused[operation] = {text, code};
    }
    void Allow(const QString& operation) {
        const std::lock_guard lock(m_mutex);
        m_refused.remove(operation);
    }
    void ThrowIn(const QString& operation) {
        const std::lock_guard lock(m_mutex);
        m_thrown = operation;
    }
    QString GetError() {
        const std::lock_guard lock(m_mutex);
        return m_error;
    }
    void ClearError() {
        const std::lock_guard lock(m_mutex);
        m_error.clear();
    }
    /// Everything below, from both threads.
    template <class Function>
    auto With(Function function) {
        const std::lock_guard lock(m_mutex);
        return function(*this);
    }

    double frequency = 1e6;
    bool isGpsTime = false;
    double averageTime = -1.0;                          ///< below 0: as it is set
    std::optional<KvZANCommon::GainControlStruct> gain; ///< nothing: as it is set
    std::vector<KvZANCommon::AntennaPropertyStruct> antennas;
    std::vector<KvZANCommon::AntennaSetupStruct> antennaSetups;
    std::vector<KvZANCommon::ConverterSetupStruct> converters;
    std::vector<KvZANCommon::CompassPropertyStruct> compasses;
    unsigned long compassValue = 900; ///< of the first one, tenths of a degree; each further one has one more
    std::vector<unsigned long> readCompasses; ///< those that were asked for
    std::optional<std::vector<KvZANCommon::ComponentInfo>> components;
    std::vector<KvZANCommon::FreqRangeDefinition> ranges;
    std::optional<KvZANCommon::DFSettingsStruct> df; ///< as set last
    std::optional<KvZANCommon::DEMSettingsStruct> dem;
    long maxChannelCount = 0;
    long sweepTime = 250;
    QString type;
    QString options;

private:
    static bool IsQuestion(const QString& call) {
        return call.startsWith(u"Get") || call.startsWith(u"Read") || call.startsWith(u"RequestHWStatus");
    }

    std::mutex m_mutex;
    QStringList m_calls;
    qsizetype m_callCount = 0;
    QMap<QString, std::pair<QString, long>> m_refused; // with text and code
    QString m_thrown;
    QString m_error;
};

/// The driver of a `FakeDevice`, which must outlive it.
class FakeDriver : public KvZANCommon::NullDriver, public KvZANCommon::IDeviceDescription {
public:
    explicit FakeDriver(FakeDevice& device)
        : m_device(device) {}

    QString GetLastError() override { return m_device.GetError(); }
    void ClearLastError() override { m_device.ClearError(); }
    long SetMode(EMode mode) override {
        return m_device.Note(QStringLiteral("SetMode"), QString::number(mode));
    }
    long Reset() override { return m_device.Note(QStringLiteral("Reset")); }
    long Calibrate(unsigned long converter) override {
        return m_device.Note(QStringLiteral("Calibrate"), QString::number(converter));
    }
    long BIT(long& result, bool full, bool) override {
        result = 0;
        return m_device.Note(QStringLiteral("BIT"), QString::number(full));
    }
    long SetTest(QString command) override { return m_device.Note(QStringLiteral("SetTest"), command); }
    long SearchHold() override { return m_device.Note(QStringLiteral("SearchHold")); }
    long SearchContinue(unsigned long channel) override {
        return m_device.Note(QStringLiteral("SearchContinue"), QString::number(channel));
    }
    long SetRfAttenuator(unsigned long converter, long attenuation) override {
        return m_device.Note(QStringLiteral("SetRfAttenuator"),
                             QStringLiteral("%1 %2").arg(converter).arg(attenuation));
    }
    long SetFrequency(double frequency) override {
        const long result = m_device.Note(QStringLiteral("SetFrequency"), QString::number(frequency, 'f', 0));
        if (result == 0) {
            m_device.With([=](FakeDevice& device) { device.frequency = frequency; });
        }
        return result;
    }
    long SetGainControl(KvZANCommon::GainControlStruct settings) override {
        return m_device.Note(QStringLiteral("SetGainControl"),
                             QStringLiteral("%1 %2").arg(settings.mode).arg(settings.gain));
    }
    long SetAverageTime(double time) override {
        return m_device.Note(QStringLiteral("SetAverageTime"), QString::number(time));
    }
    long AddFreqRange(KvZANCommon::FreqRangeDefinition* range) override {
        const long result =
            m_device.Note(QStringLiteral("AddFreqRange"), QStringLiteral("%1: %2-%3/%4")
                                                              .arg(range->GetIndex())
                                                              .arg(range->GetFirstChannel())
                                                              .arg(range->GetLastChannel())
                                                              .arg(range->GetStartFreq(), 0, 'f', 0));
        if (result == 0) {
            m_device.With([=](FakeDevice& device) { device.ranges.push_back(*range); });
        }
        range->SetStartFreq(-1.0); // a driver may write into what it is given
        return result;
    }
    long DeleteAllChannels() override {
        m_device.With([](FakeDevice& device) { device.ranges.clear(); });
        return m_device.Note(QStringLiteral("DeleteAllChannels"));
    }
    long SetGPSTimeUsage(bool use) override {
        const long result = m_device.Note(QStringLiteral("SetGPSTimeUsage"), QString::number(use));
        if (result == 0) {
            m_device.With([=](FakeDevice& device) { device.isGpsTime = use; });
        }
        return result;
    }
    long GetGPSTimeUsage(bool& use) override {
        const long result = m_device.Note(QStringLiteral("GetGPSTimeUsage"));
        use = m_device.With([](FakeDevice& device) { return device.isGpsTime; });
        return result;
    }
    long SetAntennaSetup(KvZANCommon::AntennaSetupStruct setup) override {
        const long result =
            m_device.Note(QStringLiteral("SetAntennaSetup"), QStringLiteral("%1: %2-%3, %4, compass %5")
                                                                 .arg(setup.handle)
                                                                 .arg(setup.range.first, 0, 'f', 0)
                                                                 .arg(setup.range.second, 0, 'f', 0)
                                                                 .arg(setup.mechanicalOffset)
                                                                 .arg(setup.compassHandle));
        Replace(&FakeDevice::antennaSetups, setup, result);
        return result;
    }
    long SetConverterSetup(KvZANCommon::ConverterSetupStruct setup) override {
        const long result =
            m_device.Note(QStringLiteral("SetConverterSetup"), QStringLiteral("%1: preamplifier %2, %3 dB")
                                                                   .arg(setup.handle)
                                                                   .arg(setup.preamplifier)
                                                                   .arg(setup.attenuation));
        Replace(&FakeDevice::converters, setup, result);
        return result;
    }
    long SetAudioVolume(int volume) override {
        return m_device.Note(QStringLiteral("SetAudioVolume"), QString::number(volume));
    }
    long SetHoldTime(int hold, int signal, int pause) override {
        return m_device.Note(QStringLiteral("SetHoldTime"),
                             QStringLiteral("%1 %2 %3").arg(hold).arg(signal).arg(pause));
    }
    long SetSRNumOfEmitters(bool automatic, long count) override {
        return m_device.Note(QStringLiteral("SetSRNumOfEmitters"),
                             QStringLiteral("%1 %2").arg(automatic).arg(count));
    }
    long SetScanAveraging(unsigned long count) override {
        return m_device.Note(QStringLiteral("SetScanAveraging"), QString::number(count));
    }
    long SetCompassValue(unsigned long value) override {
        return m_device.Note(QStringLiteral("SetCompassValue"), QString::number(value));
    }
    long AlterMeasureSetting(double frequency, KvZANCommon::DFSettingsStruct df,
                             KvZANCommon::DEMSettingsStruct dem) override {
        const long result =
            m_device.Note(QStringLiteral("AlterMeasureSetting"), QString::number(frequency, 'f', 0));
        if (result == 0) {
            m_device.With([&](FakeDevice& device) {
                device.df = df;
                device.dem = dem;
            });
        }
        return result;
    }
    long GetFrequency(double& frequency) override {
        const long result = m_device.Note(QStringLiteral("GetFrequency"));
        if (result == 0) {
            frequency = m_device.With([](FakeDevice& device) { return device.frequency; });
        }
        return result;
    }
    long GetGainControl(KvZANCommon::GainControlStruct& settings) override {
        const long result = m_device.Note(QStringLiteral("GetGainControl"));
        settings = m_device.With([&](FakeDevice& device) { return device.gain.value_or(settings); });
        return result;
    }
    long GetMeasureSettings(double&, KvZANCommon::DFSettingsStruct& df,
                            KvZANCommon::DEMSettingsStruct& dem) override {
        const long result = m_device.Note(QStringLiteral("GetMeasureSettings"));
        m_device.With([&](FakeDevice& device) {
            df = device.df.value_or(df);
            dem = device.dem.value_or(dem);
        });
        return result;
    }
    long GetAverageTime(double& time) override {
        const long result = m_device.Note(QStringLiteral("GetAverageTime"));
        m_device.With(
            [&](FakeDevice& device) { time = device.averageTime < 0.0 ? time : device.averageTime; });
        return result;
    }
    long GetAntennaProperty(unsigned long antenna, KvZANCommon::AntennaPropertyStruct& property,
                            KvZANCommon::AntennaSubRangeStruct& subRange, int& count) override {
        const long result = m_device.Note(QStringLiteral("GetAntennaProperty"));
        subRange.dfMethods = METHODDETAILED_COR;
        count = 1;
        return result == 0 ? Find(&FakeDevice::antennas, antenna, property) : result;
    }
    long GetAntennaSetup(unsigned long antenna, KvZANCommon::AntennaSetupStruct& setup) override {
        const long result = m_device.Note(QStringLiteral("GetAntennaSetup"));
        return result == 0 ? Find(&FakeDevice::antennaSetups, antenna, setup) : result;
    }
    long GetConverterProperty(unsigned long converter, KvZANCommon::ConverterSetupStruct& property) override {
        const long result = m_device.Note(QStringLiteral("GetConverterProperty"));
        return result == 0 ? Find(&FakeDevice::converters, converter, property) : result;
    }
    long GetConverterSetup(unsigned long converter, KvZANCommon::ConverterSetupStruct& setup) override {
        return GetConverterProperty(converter, setup);
    }
    long GetCompassProperty(unsigned long compass, KvZANCommon::CompassPropertyStruct& property) override {
        const long result = m_device.Note(QStringLiteral("GetCompassProperty"));
        return result == 0 ? Find(&FakeDevice::compasses, compass, property) : result;
    }
    long ReadCompass(unsigned long compass, unsigned long& value) override {
        const long result = m_device.Note(QStringLiteral("ReadCompass"));
        m_device.With([&](FakeDevice& device) {
            device.readCompasses.push_back(compass);
            value = device.compassValue + compass;
        });
        return result;
    }
    long GetMaxChannelCount(EMode) override {
        m_device.Note(QStringLiteral("GetMaxChannelCount"));
        return m_device.With([](FakeDevice& device) { return device.maxChannelCount; });
    }
    long RequestHWStatus(QList<KvZANCommon::ComponentInfo*>* list) override {
        m_device.Note(QStringLiteral("RequestHWStatus"));
        return m_device.With([list](FakeDevice& device) -> long {
            for (const auto& each : device.components.value_or(std::vector<KvZANCommon::ComponentInfo>())) {
                list->append(new KvZANCommon::ComponentInfo(each));
            }
            return device.components ? 0 : -1;
        });
    }
    long GetSweepTime(long& time) override {
        time = m_device.With([](FakeDevice& device) { return device.sweepTime; });
        return m_device.Note(QStringLiteral("GetSweepTime"));
    }
    QString GetDeviceType() override {
        m_device.Note(QStringLiteral("GetDeviceType"));
        return m_device.With([](FakeDevice& device) { return device.type; });
    }
    QString GetDeviceOptions() override {
        return m_device.With([](FakeDevice& device) { return device.options; });
    }

private:
    template <class T>
    long Find(std::vector<T> FakeDevice::*list, unsigned long number, T& found) {
        return m_device.With([&](FakeDevice& device) -> long {
            if (number >= (device.*list).size()) {
                return -1;
            }
            found = (device.*list)[number];
            return 0;
        });
    }

    /// Takes over what was set of the one with its handle, unless that was refused.
    template <class T>
    void Replace(std::vector<T> FakeDevice::*list, const T& setup, long result) {
        m_device.With([&](FakeDevice& device) {
            const auto found = std::ranges::find(device.*list, setup.handle, &T::handle);
            if (result == 0 && found != (device.*list).end()) {
                *found = setup;
            }
        });
    }

    FakeDevice& m_device;
};
