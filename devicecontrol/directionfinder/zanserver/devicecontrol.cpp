#include "zanserver/devicecontrol.h"

#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/cfgdefault.h"
#include "zancommon/displayfilterrange.h"
#include "zancommon/zaninformationcenter.h"
#include "zancommon/zanvaluenames.h"
#include "zanserver/antennaentries.h"
#include "zanserver/compasswatch.h"
#include "zanserver/controlpolicies.h"
#include "zanserver/devicecommands.h"
#include "zanserver/deviceproperties.h"
#include "zanserver/dfsettings.h"
#include "zanserver/gpsdsettings.h"
#include "zanserver/keptwishes.h"
#include "zanserver/scanranges.h"
#include "zanserver/wishreport.h"

#include <QTimer>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;
using KvZANCommon::FreqRangeDefinition;

namespace ZANServer {

using namespace ControlPolicies;

namespace {

std::chrono::milliseconds ReadInterval(bool mayWrite) {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    const QString key = u"Control_Interval"_s;
    const qint64 interval = mayWrite ? ReadOrCreateInt(cfg, key, DeviceControl::DEFAULT_INTERVAL)
                                     : cfg.GetInt(key, DeviceControl::DEFAULT_INTERVAL);
    constexpr qint64 LONGEST = 10000;
    return std::chrono::milliseconds(interval >= 0 && interval <= LONGEST ? interval
                                                                          : DeviceControl::DEFAULT_INTERVAL);
}

} // namespace

class DeviceControl::Impl final : public ControlHost {
public:
    Impl(DeviceControl& control, DriverThread& thread, QString station, Options options)
        : m_control(control)
        , m_station(std::move(station))
        , m_keepsWishes(options.keepsWishes)
        , m_characteristics(ZANInformationCenter::Instance()->GetZANCharacteristics())
        , m_values(m_characteristics, &control)
        , m_compasses(m_errands, options.now, GpsdSettings::Read().maxAge)
        , m_errands(thread)
        , m_commands(m_errands)
        , m_filterRanges(ZANValueName::AZIMUTH_FILTER_RANGE.toString(), ZANPath::SERVER.toString()) {
        now = std::move(options.now);
        pace = ReadInterval(m_keepsWishes);
        errands = &m_errands;
        KeptWishes::Restore(m_station, &control);
        m_dfSettings.emplace(m_values);
        AddOperations();
        m_next = m_operations.size();
        m_commands.SetOnReset([this] { Connect(); });
        m_wakeUp.setSingleShot(true);
        m_wakeUp.callOnTimeout([this] { SendDue(); });
        m_keeping.setSingleShot(true);
        m_keeping.setInterval(KEEPING_INTERVAL);
        m_keeping.callOnTimeout([this] { Keep(); });
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() override {
        if (m_keeping.isActive()) {
            Keep();
        }
    }

    void Observe() {
        for (const auto& [value, operation] : m_wishes) {
            value->AddObserver(&m_control);
        }
        // Before the characteristics, which make all that depends on it be wished again.
        m_values.polarisation->MakeFirstObserver(&m_control);
        m_characteristics.AddObserver(&m_control);
        AntennaEntries::Observe(&m_control);
    }

    /// A device is there, which has nothing of what was wished.
    void Connect() {
        isConnected = true;
        ++m_connection;
        m_next = 0;
        m_awaited = nullptr;
        for (ControlOperation* const each : m_operations) {
            each->Forget();
        }
        m_ranges.reset();
        m_resolutionBandwidth = 0.0;
        m_compasses.Stop();
        m_values.isScanning = true; // nobody has told it to stop: it stands by before it gets its ranges
        m_commands.SetConnected(true);
        if (m_values.compassValue->GetValue() >= 0) {
            m_compassReport.Tell(Compass::Describe(m_values.compassValue->GetValue()), {},
                                 u"there was no device"_s);
            m_values.compassValue->SetValue(-1, &m_control);
        }
        ReadDevice(m_errands, [this, connection = m_connection](const DeviceReading& reading) {
            if (isConnected && connection == m_connection) {
                TakeReading(reading);
                GoOn();
            }
        });
    }

    void Lose() {
        isConnected = false;
        ++m_connection;
        m_next = m_operations.size();
        for (ControlOperation* const each : m_operations) {
            each->Forget();
        }
        m_awaited = nullptr;
        m_ranges.reset();
        m_resolutionBandwidth = 0.0;
        m_wakeUp.stop();
        m_compasses.Stop();
        m_status.Forget();
        m_commands.SetConnected(false);
        DeviceProperties::ForgetMeasured();
    }

    void Update(Observable* subject) {
        if (subject == &m_characteristics) {
            m_dfSettings->ForgetAntenna();
            AntennaEntries::Observe(&m_control);
            WishAgainWhatDependsOnTheAntenna();
            m_antennas->WishAgain();
            return;
        }
        bool isWish = false;
        for (const auto& [value, operation] : m_wishes) {
            if (value == subject) {
                isWish = true;
                Prepare(*value, *operation);
                operation->WishAnew();
                if (operation == m_frequency && m_dfSettings->Follow()) {
                    m_measure->WishAgain();
                }
            }
        }
        if (!isWish) {
            m_antennas->WishAnew();
        }
    }

    void SendDue() {
        for (ControlOperation* const each : m_operations) {
            each->WishWaiting();
        }
        m_compasses.WatchDue();
    }

    // What the operations report.

    void OnCarriedOut(ControlOperation& operation) override {
        if (&operation == m_scanRanges) {
            TakeRanges();
        }
        if (&operation == m_mode) {
            const EMode mode = *m_mode->GetCarriedOut();
            m_values.isScanning = mode == EMODE_SCAN || mode == EMODE_SEARCH;
        }
        if (&operation == m_compass) {
            m_compass->Forget();
            m_values.compassValue->SetValue(-1, &m_control);
        }
        const bool changesSweep = &operation == m_scanRanges || &operation == m_mode ||
                                  &operation == m_average || &operation == m_scanAveraging ||
                                  &operation == m_measure;
        if (changesSweep && m_next == m_operations.size()) {
            AskSweepTime();
        }
        if (m_keepsWishes && !m_keeping.isActive()) {
            m_keeping.start();
        }
    }

    void OnPartlyDone(ControlOperation& operation) override {
        if (&operation == m_scanRanges) {
            m_ranges.reset();
        }
    }

    void OnSettled(ControlOperation& operation) override {
        if (&operation == m_compass && !operation.IsWaiting()) {
            m_values.compassValue->SetValue(-1, &m_control); // refused, too
        }
        if (&operation == m_measure && !operation.IsUnderWay()) {
            const auto& settings = m_measure->GetCarriedOut();
            m_resolutionBandwidth = settings ? settings->df.resolutionBandwidth : 0.0;
        }
        operation.WishWaiting();
        m_mode->WishWaiting();
        if (&operation == m_scanRanges && std::exchange(m_values.isScanning, false)) {
            m_mode->ForgetCarriedOut(); // it is in standby
            m_mode->WishAgain();
        }
        if (&operation == m_awaited && !operation.IsUnderWay()) {
            GoOn();
        }
    }

    void MarkValues(const ControlOperation& operation) override {
        if (&operation == m_compass) { // its value is a command, and no state of the device
            return;
        }
        for (const auto& [value, ofValue] : m_wishes) {
            if (ofValue == &operation && !(operation.IsKnown() && value->GetState() == TValueState::Valid)) {
                const bool isKnown = std::ranges::all_of(m_wishes, [value = value](const auto& each) {
                    return each.first != value || each.second->IsKnown();
                });
                value->SetState(isKnown ? TValueState::Valid : TValueState::NotMeasured, &m_control);
            }
        }
    }

    void WakeAt(std::chrono::steady_clock::time_point time) override {
        const auto rest = std::max(std::chrono::ceil<std::chrono::milliseconds>(time - now()),
                                   std::chrono::milliseconds(1));
        if (!m_wakeUp.isActive() || m_wakeUp.remainingTimeAsDuration() > rest) {
            m_wakeUp.start(rest);
        }
    }

    [[nodiscard]] bool HasToWait(const ControlOperation& operation) const override {
        for (std::size_t i = m_next; i < m_operations.size(); ++i) {
            if (m_operations[i] == &operation) {
                return true; // it comes to its turn
            }
        }
        // Ranges that wait have been refused in part: it would measure with those that it has taken.
        return &operation == m_mode && (m_scanRanges->IsWaiting() ||
                                        std::ranges::any_of(m_operations, [](const ControlOperation* each) {
                                            return each->IsUnderWay();
                                        }));
    }

    [[nodiscard]] double GetFrequency(const BearingBlock& block, std::size_t bearing) const {
        if (block.kind != BearingBlock::Kind::Scan) {
            return block.status.frequency;
        }
        if (block.range ==
            BearingBlock::WIDEBAND) { // the receive frequency is that of the channel in the middle
            const double middle = (static_cast<double>(block.GetWholeCount()) - 1.0) / 2.0;
            return block.status.frequency +
                   (static_cast<double>(block.firstOfWhole + bearing) - middle) * GetResolutionBandwidth();
        }
        if (m_ranges && !m_ranges->empty()) {
            return ScanRanges::GetChannelFrequency(*m_ranges, block.range,
                                                   block.firstChannel + static_cast<unsigned>(bearing));
        }
        // A driver that takes no ranges tells the frequency with each block. From any other one that is the
        // receive frequency, which is that of a channel only where there is but one.
        return m_scanRanges->IsUnsupported() || block.GetWholeCount() == 1
                   ? block.status.frequency
                   : std::numeric_limits<double>::quiet_NaN();
    }
    [[nodiscard]] DeviceStatus& GetStatus() { return m_status; }
    [[nodiscard]] DeviceCommands& GetCommands() { return m_commands; }

private:
    static constexpr std::chrono::milliseconds KEEPING_INTERVAL{1000};

    template <class Policy>
    OperationOf<Policy>* Add(Policy policy, std::initializer_list<ValueBase*> values) {
        auto operation = std::make_unique<OperationOf<Policy>>(*this, policy);
        OperationOf<Policy>* const added = operation.get();
        m_errands.Keep(std::move(operation));
        for (ValueBase* const value : values) {
            m_wishes.emplace_back(value, added);
        }
        return added;
    }

    /// In the order in which a device that is connected gets them: settings before what they are for, and the
    /// mode, which begins to measure, behind all.
    void AddOperations() {
        ControlValues* const values = &m_values;
        using Values = std::initializer_list<ValueBase*>;
        const auto add = [this](auto policy, Values wishes) {
            auto* const added = Add(policy, wishes);
            m_operations.push_back(added);
            return added;
        };
        add(GpsTime{values}, {values->gpsTime});
        m_converters = add(Converters{values}, {values->preAmplifierHf, values->preAmplifierVuhf});
        m_antennas = add(Antennas{values}, {});
        m_attenuation = add(Attenuation{values}, {values->attenuationHf, values->attenuationVuhf});
        add(GainControl{values}, {values->gainControlMode, values->mgcLevel});
        m_frequency = add(Frequency{values}, {values->frequency});
        m_average = add(AverageTime{values}, {values->updateInterval});
        m_scanAveraging = add(ScanAveraging{values}, {values->scanAveraging});
        add(HoldTimes{values}, {values->holdTime, values->signalTime, values->pauseTime});
        add(Emitters{values}, {values->srNumEmitters});
        const Values measured{values->bandwidth,        values->demodulation,    values->dfBandwidth,
                              values->dfMode,           values->levelThreshold,  values->preAmplifierHf,
                              values->preAmplifierVuhf, values->antennaActive,   values->polarisation,
                              values->srStatus,         values->gainControlMode, values->squelch,
                              values->audioThreshold};
        m_measure = add(Measure{values}, measured);
        m_scanRanges = add(Ranges{values}, {values->scanRanges});
        add(Volume{values}, {values->volume, values->mute});
        m_compass = Add(Compass{values}, Values{values->compassValue});
        m_mode = add(Mode{values}, {values->operationMode});
    }

    /// What has to be done before a wish is carried out that has changed.
    void Prepare(const ValueBase& value, const ControlOperation& operation) {
        if (&operation == m_mode) {
            WishAgainWhatDependsOnTheAntenna();
        } else if (&value == m_values.polarisation) {
            m_frequency->WishAgain();
            m_dfSettings->Follow();
        } else if (&value == m_values.dfBandwidth || &value == m_values.dfMode) {
            m_dfSettings->TakeChoice();
        }
    }

    void WishAgainWhatDependsOnTheAntenna() {
        m_frequency->WishAgain();
        m_dfSettings->Follow();
        m_measure->WishAgain();
        m_scanRanges->WishAgain();
    }

    void TakeReading(const DeviceReading& reading) {
        m_values.antennaSetups.clear();
        for (const DeviceReading::Antenna& each : reading.antennas) {
            if (each.setup) {
                m_values.antennaSetups.push_back(*each.setup);
            }
        }
        m_values.converterSetups = reading.converters;
        m_properties.Publish(reading);
        m_compasses.Start(reading.compasses);
        for (const QString& warning : m_properties.GetWarnings()) {
            m_status.ReportError(warning);
        }
        m_characteristics.UpdateCachedDataFromValueTree();
        AntennaEntries::Observe(&m_control);
        m_dfSettings->ForgetAntenna();
        m_dfSettings->Follow();
        // What it has already need not be set.
        m_antennas->SetCarriedOut({m_values.antennaSetups, AntennaEntries::Read()});
        m_converters->SetCarriedOut({m_values.converterSetups});
    }

    /// Gives the device what comes next, until something is under way.
    void GoOn() {
        while (isConnected && m_next < m_operations.size()) {
            ControlOperation* const operation = m_operations[m_next++];
            if (operation == m_measure) {
                m_dfSettings->Follow(); // the frequency may have been moved to another antenna
            }
            operation->WishAgain();
            if (operation->IsUnderWay()) {
                m_awaited = operation;
                return;
            }
        }
        m_awaited = nullptr;
        if (isConnected) {
            AskSweepTime();
        }
    }

    void TakeRanges() {
        m_ranges = m_scanRanges->GetCarriedOut()->ranges;
        m_filterRanges.Reset();
        for (const FreqRangeDefinition& range : *m_ranges) {
            const auto& filter = range.GetFilterSettings();
            const std::pair accepted{filter.azimuthFrom / 100.0, filter.azimuthTo / 100.0};
            m_filterRanges.AddDeviceFilterRange({range.GetStartFreq(), range.GetStopFreq(), {accepted}});
        }
        m_filterRanges.Publish();
        m_status.SetChannelCount(m_ranges->empty() ? 0
                                                   : static_cast<int>(m_ranges->back().GetLastChannel() + 1));
    }

    /// Hz; NaN while it is not known which one the blocks that come were measured with.
    [[nodiscard]] double GetResolutionBandwidth() const {
        const auto* const sent = m_measure->GetBeingSent();
        return m_resolutionBandwidth > 0.0 && (!sent || sent->df.resolutionBandwidth == m_resolutionBandwidth)
                   ? m_resolutionBandwidth
                   : std::numeric_limits<double>::quiet_NaN();
    }

    void AskSweepTime() {
        const auto time = std::make_shared<std::optional<int>>();
        m_errands.Call(
            DriverCall::Query,
            [time](IDriver& driver) {
                long milliseconds = -1;
                if (driver.GetSweepTime(milliseconds) == 0 && milliseconds >= 0 &&
                    std::in_range<int>(milliseconds)) {
                    *time = static_cast<int>(milliseconds);
                } else {
                    driver.ClearLastError();
                }
            },
            [this, time, connection = m_connection] {
                if (isConnected && connection == m_connection) {
                    m_status.SetSweepTime(*time);
                }
            });
    }

    void Keep() {
        KeptWishes::Keep(m_station);
        m_dfSettings->MakePersistent();
    }

    DeviceControl& m_control;
    const QString m_station;
    const bool m_keepsWishes;
    ZANCharacteristics& m_characteristics;
    ControlValues m_values;
    std::optional<DfSettings> m_dfSettings;
    DeviceStatus m_status;
    DeviceProperties m_properties;
    std::vector<std::pair<ValueBase*, ControlOperation*>> m_wishes;
    std::vector<ControlOperation*> m_operations;
    std::size_t m_next = 0;                ///< the first operation that the connected device has not come to
    ControlOperation* m_awaited = nullptr; ///< with which the next one waits
    quint64 m_connection = 0;
    OperationOf<Converters>* m_converters = nullptr;
    OperationOf<Antennas>* m_antennas = nullptr;
    ControlOperation* m_attenuation = nullptr;
    OperationOf<Frequency>* m_frequency = nullptr;
    ControlOperation* m_average = nullptr;
    ControlOperation* m_scanAveraging = nullptr;
    OperationOf<Measure>* m_measure = nullptr;
    OperationOf<Ranges>* m_scanRanges = nullptr;
    ControlOperation* m_compass = nullptr;
    OperationOf<Mode>* m_mode = nullptr;
    std::optional<std::vector<FreqRangeDefinition>>
        m_ranges;                       ///< of the device; nothing while that is not known
    double m_resolutionBandwidth = 0.0; ///< Hz, of the device; 0: not known
    QTimer m_wakeUp;
    QTimer m_keeping;
    WishReport m_compassReport{Compass::NAME};
    CompassWatch m_compasses;
    DriverErrands m_errands;
    DeviceCommands m_commands;
    DisplayFilterRange m_filterRanges;
};

DeviceControl::DeviceControl(DriverThread& thread, QString station, Options options)
    : m_impl(std::make_unique<Impl>(*this, thread, std::move(station), std::move(options))) {
    m_impl->Observe();
}

DeviceControl::~DeviceControl() = default;

void DeviceControl::OnConnected() {
    m_impl->Connect();
}

void DeviceControl::OnLost() {
    m_impl->Lose();
}

double DeviceControl::GetFrequency(const BearingBlock& block, std::size_t bearing) const {
    return m_impl->GetFrequency(block, bearing);
}

DeviceStatus& DeviceControl::GetStatus() {
    return m_impl->GetStatus();
}

DeviceCommands& DeviceControl::GetCommands() {
    return m_impl->GetCommands();
}

void DeviceControl::SendDue() {
    m_impl->SendDue();
}

void DeviceControl::Update(Observable* subject, TChangeCode code) {
    if (code == TChangeCode::Changed || code == TChangeCode::ListReplaced) {
        m_impl->Update(subject);
    }
}

} // namespace ZANServer
