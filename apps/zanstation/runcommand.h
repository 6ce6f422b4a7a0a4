#pragma once

#include "zancommon/commandprotocol.h"
#include "zancommon/legacydriveradapter.h"
#include "zanstation/driverreceiver.h"
#include "zanstation/replaydriver.h"
#include "zanstation/station.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <optional>

/// What `zanstation run` is asked to do. What is not set stays as it is in the settings.
struct RunOptions {
    QString recording;             ///< absolute path
    double pace = 1.0;             ///< times as fast as recorded; `ReplayDriver::AS_FAST_AS_POSSIBLE`
    std::optional<QString> output; ///< absolute path; a later run may be started elsewhere
    std::optional<QString> serial;
    std::optional<int> interval; ///< milliseconds
    std::optional<double> pitchThreshold;
    std::optional<double> rollThreshold;
    std::optional<double> overheadThreshold;
    std::optional<int> connectionSpeed;
};

/// Replays a recording through the station and reports what became of it.
class RunCommand final : public QObject {
    Q_OBJECT

public:
    explicit RunCommand(RunOptions options);

    /// Runs until the recording has ended or the program is interrupted; returns the exit code.
    int Run();

private:
    void StoreOutputSettings() const;
    bool StartDriver();
    void Interrupt(int signal);
    void OnError(const KvZANCommon::ErrorStruct& error);
    void ReportOutputProblem();
    void LogCommand(const QString& command);
    void ReportCommandLogProblem();
    void ShowProgress();
    void PrintSummary() const;

    const RunOptions m_options;
    std::optional<Station> m_station;
    std::optional<DFDataOutput::Burst> m_burst;
    std::optional<DriverReceiver> m_receiver;
    std::optional<CommandProtocol> m_commandLog;
    std::optional<ReplayDriver> m_driver; // outlives the adapter, which it is given
    KvZANCommon::LegacyDriverAdapter m_adapter;
    KvZANCommon::IDriver& m_device = m_adapter; // what the application knows of the driver
    QString m_reportedProblem;
    bool m_isCommandLogBroken = false;
    bool m_hasFailed = false;
    int m_signal = 0; // that has ended the run
};
