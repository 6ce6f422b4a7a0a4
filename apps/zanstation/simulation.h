#pragma once

#include "zancommon/driverrecords.h"
#include "zancommon/freqrangedefinition.h"
#include "zancommon/recordedbearing.h"
#include "zanserver/driverlibrary.h"
#include "zanserver/driverlink.h"

#include <QEventLoop>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// What the simulated device is to do.
struct SimulationOptions {
    QString scenario;           ///< its name, or its file
    std::optional<qint64> seed; ///< empty: that of the scenario
    EMode mode = EMODE_FFM;
    std::optional<double> frequency;                      ///< Hz; empty: that of the scenario
    std::vector<KvZANCommon::FreqRangeDefinition> ranges; ///< numbered; empty: those of the scenario
    std::chrono::milliseconds duration{};                 ///< by the clock of the scenario
};

/// Lets the simulated device measure as fast as it can, without a station, and gives what it hears as rows
/// of a recording: the same rows each time.
class Simulation final : public QObject {
    Q_OBJECT

public:
    /// Takes a row. False ends the simulation.
    using TakeRow = std::function<bool(const KvZANCommon::RecordedBearing& row)>;

    /// \param driver the simulator's component; not null
    Simulation(ZANServer::DriverComponentPtr driver, SimulationOptions options, TakeRow takeRow);

    /// Measures until the duration is over, no more rows are taken, or it is stopped. False when it cannot go
    /// on; `GetErrorText` then says why.
    bool Run();
    void Stop();
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }

private:
    using Call = std::function<long(KvZANCommon::IDriver& driver)>;

    void OnConnected();
    void OnLost(const QString& reason);
    void SetUp();
    void Measure();
    void AskForBandwidth();
    void Post(ZANServer::DriverCall kind, const QString& name, Call call);
    void AfterCalls(std::function<void()> next);
    void TakeBlock(const ZANServer::BearingBlock& block);
    [[nodiscard]] double GetFrequency(const ZANServer::BearingBlock& block, std::size_t bearing) const;
    [[nodiscard]] bool AreFrequenciesKnown(const ZANServer::BearingBlock& block) const;
    void Watch();
    void End(const QString& error);

    const SimulationOptions m_options;
    const TakeRow m_takeRow;
    ZANServer::DriverLink m_link;
    QEventLoop m_loop;
    QTimer m_watch;
    std::shared_ptr<QString> m_failure;         // of the calls that are under way
    std::optional<unsigned long long> m_end;    // in the time of the bearings; once the device is set up
    KvZANCommon::DFSettingsStruct m_bandwidths; // of the mode wideband
    bool m_wasThere = false;                    // the device
    bool m_hasDelivered = false;                // since the last look
    bool m_isOver = false;
    QString m_errorText;
};
