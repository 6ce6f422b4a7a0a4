#include "zanstation/simulation.h"

#include "zanserver/blockrow.h"
#include "zanserver/drivererrands.h"
#include "zanserver/scanranges.h"
#include "zanstation/console.h"

#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::IDriver;
using KvZANCommon::RecordedBearing;

namespace {

constexpr std::chrono::milliseconds WATCH_INTERVAL(200);
/// A lost device is sought after it. Its link is closed long before.
constexpr std::chrono::milliseconds RECONNECT_DELAY(100);

/// The device may be slow on demand: each call takes up to a minute then.
std::chrono::milliseconds GetLongestCall(DriverCall /*kind*/) {
    return std::chrono::seconds(90);
}

} // namespace

Simulation::Simulation(DriverComponentPtr driver, SimulationOptions options, TakeRow takeRow)
    : m_options(std::move(options))
    , m_takeRow(std::move(takeRow))
    , m_link([component = std::shared_ptr<KvZANCommon::IDriverComponent>(
                  std::move(driver))] { return component->CreateDriver(); },
             m_options.scenario, u"simulator"_s, DriverLink::Kind::Device, RECONNECT_DELAY, GetLongestCall) {
    connect(&m_link, &DriverLink::Connected, this, &Simulation::OnConnected);
    connect(&m_link, &DriverLink::Lost, this, &Simulation::OnLost);
    connect(&m_link, &DriverLink::GivenUp, this, &Simulation::End);
    connect(&m_link, &DriverLink::CallFailed, this, &Simulation::End);
    connect(&m_link.GetReceiver(), &DriverReceiver::BlockReceived, this, &Simulation::TakeBlock);
    m_watch.callOnTimeout(this, &Simulation::Watch);
}

bool Simulation::Run() {
    m_link.Open();
    m_watch.start(WATCH_INTERVAL);
    m_loop.exec();
    m_watch.stop();
    m_link.Close();
    return m_errorText.isEmpty();
}

void Simulation::Stop() {
    End({});
}

void Simulation::End(const QString& error) {
    if (!std::exchange(m_isOver, true)) {
        m_errorText = error;
        m_loop.quit();
    }
}

/// A scenario may lose the link: what is behind the loss follows what was before it.
void Simulation::OnLost(const QString& reason) {
    if (m_wasThere) {
        Console::Warn(reason);
    } else {
        End(reason);
    }
}

void Simulation::OnConnected() {
    if (!std::exchange(m_wasThere, true)) {
        const auto test = [this](const QString& command) {
            Post(DriverCall::Setting, command,
                 [command](IDriver& driver) { return driver.SetTest(command); });
        };
        test(u"speed max"_s);
        if (m_options.seed) {
            test(u"seed %1"_s.arg(*m_options.seed));
        }
    }
    if (m_end) {
        Measure();
    } else {
        SetUp();
    }
}

void Simulation::SetUp() {
    if (!m_options.ranges.empty()) {
        Post(DriverCall::Setting, u"--ranges"_s, [](IDriver& driver) { return driver.DeleteAllChannels(); });
        for (KvZANCommon::FreqRangeDefinition range : m_options.ranges) {
            Post(DriverCall::Setting, u"--ranges"_s,
                 [range](IDriver& driver) mutable { return driver.AddFreqRange(&range); });
        }
    }
    if (m_options.frequency) {
        Post(DriverCall::Setting, u"--frequency"_s,
             [frequency = *m_options.frequency](IDriver& driver) { return driver.SetFrequency(frequency); });
    }
    const auto begin = std::make_shared<unsigned long long>(0);
    Post(DriverCall::Query, u"time"_s, [begin](IDriver& driver) { return driver.GetZANTime(*begin); });
    AfterCalls([this, begin] {
        m_end = *begin + static_cast<unsigned long long>(m_options.duration.count());
        Measure();
    });
}

void Simulation::Measure() {
    Post(DriverCall::SetMode, u"--mode"_s,
         [mode = m_options.mode](IDriver& driver) { return driver.SetMode(mode); });
    if (m_options.mode == EMODE_WIDEBAND_FFM) {
        AskForBandwidth();
    }
    AfterCalls([] {});
}

/// The frequencies of the channels follow from it, so no block is processed before it is there.
void Simulation::AskForBandwidth() {
    const auto bandwidths = std::make_shared<KvZANCommon::DFSettingsStruct>();
    Post(DriverCall::Query, u"bandwidth"_s, [bandwidths](IDriver& driver) {
        double frequency = 0.0;
        KvZANCommon::DEMSettingsStruct demodulation;
        return driver.GetMeasureSettings(frequency, *bandwidths, demodulation);
    });
    if (m_link.GetThread().Wait()) {
        m_bandwidths = *bandwidths;
    }
}

/// Calls the driver, unless a call before, since the last `AfterCalls`, has failed.
void Simulation::Post(DriverCall kind, const QString& name, Call call) {
    if (!m_failure) {
        m_failure = std::make_shared<QString>();
    }
    m_link.GetThread().Post(kind, [failure = m_failure, name, call = std::move(call)](IDriver& driver) {
        if (const long result = failure->isEmpty() ? call(driver) : 0; result != 0) {
            *failure = name + u": "_s + TakeLastError(driver, result);
        }
    });
}

/// Goes on when all calls have succeeded. A device that is lost meanwhile is set up again when it is back.
void Simulation::AfterCalls(std::function<void()> next) {
    m_link.GetThread().Post(
        DriverCall::Query, [](IDriver&) {},
        [this, failure = std::exchange(m_failure, {}), next = std::move(next)] {
            if (m_link.GetState() != DriverLink::State::Connected) {
                return;
            }
            if (failure->isEmpty()) {
                next();
            } else {
                End(*failure);
            }
        });
}

void Simulation::TakeBlock(const BearingBlock& block) {
    m_hasDelivered = true;
    if (m_isOver) {
        return;
    }
    if (block.time > m_end) { // the time is that of the end of a block
        End({});
        return;
    }
    RecordedBearing row = BlockRow::Begin(block);
    row.heading = block.status.heading;
    row.pitch = block.status.pitch;
    row.roll = block.status.roll;
    row.latitude = block.status.latitude;
    row.longitude = block.status.longitude;
    row.altitude = block.status.altitude;
    for (std::size_t i = 0; i < block.bearings.size() && !m_isOver; ++i) {
        if (block.bearings[i].quality == 0) { // nothing is heard
            continue;
        }
        if (!AreFrequenciesKnown(block)) {
            End(u"the scenario lets the device measure channels that were not asked for: ask for them with "
                "--ranges"_s);
            return;
        }
        BlockRow::Put(block, i, row);
        row.frequency = GetFrequency(block, i);
        if (!m_takeRow(row)) {
            End({});
        }
    }
}

double Simulation::GetFrequency(const BearingBlock& block, std::size_t bearing) const {
    if (block.kind != BearingBlock::Kind::Scan) {
        return block.status.frequency;
    }
    if (block.range == BearingBlock::WIDEBAND) { // the receive frequency is that of the channel in the middle
        const double middle = (static_cast<double>(block.bearings.size()) - 1.0) / 2.0;
        return block.status.frequency +
               (static_cast<double>(bearing) - middle) * m_bandwidths.resolutionBandwidth;
    }
    return ScanRanges::GetChannelFrequency(m_options.ranges, block.range,
                                           block.firstChannel + static_cast<unsigned>(bearing));
}

/// Wishes of the scenario may change ranges and bandwidths, of which the driver does not tell.
bool Simulation::AreFrequenciesKnown(const BearingBlock& block) const {
    if (block.kind != BearingBlock::Kind::Scan) {
        return true;
    }
    const auto count = static_cast<double>(block.bearings.size());
    if (block.range == BearingBlock::WIDEBAND) { // as many channels as the realtime bandwidth holds
        const double rest = m_bandwidths.realtimeBandwidth - count * m_bandwidths.resolutionBandwidth;
        return rest >= 0.0 && rest < 2.0 * m_bandwidths.resolutionBandwidth;
    }
    constexpr double ROUNDING = 1.0; // Hz
    const double middle = (GetFrequency(block, 0) + GetFrequency(block, block.bearings.size() - 1)) / 2.0;
    return std::abs(middle - block.status.frequency) < ROUNDING;
}

/// A device that hears nothing still has its time.
void Simulation::Watch() {
    if (std::exchange(m_hasDelivered, false) || !m_end || m_link.GetState() != DriverLink::State::Connected) {
        return;
    }
    const auto time = std::make_shared<unsigned long long>(0);
    m_link.GetThread().Post(
        DriverCall::Query, [time](IDriver& driver) { driver.GetZANTime(*time); },
        [this, time] {
            if (*time > m_end) {
                End({});
            }
        });
}
