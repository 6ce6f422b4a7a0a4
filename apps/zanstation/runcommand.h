#pragma once

#include "zancommon/commandprotocol.h"
#include "zancommon/legacydriveradapter.h"
#include "zanserver/driverreceiver.h"
#include "zanserver/replaydriver.h"
#include "zanserver/station.h"

#include <QObject>
#include <QString>

#include <optional>
#include <set>
#include <vector>

class SignalWatcher;

/// The options of `zanstation run`. For those that are not set the settings are used.
struct RunOptions {
    QString configDirectory; ///< absolute path
    QString recording;       ///< absolute path, or "-" for standard input
    double pace = 1.0;       ///< times as fast as recorded; `ReplayDriver::AS_FAST_AS_POSSIBLE`
    /// Absolute path, because a later run may be started in another directory; "-": standard output, for this
    /// run only.
    std::optional<QString> output;
    std::optional<QString> serial;
    std::optional<int> interval; ///< milliseconds
    std::optional<double> pitchThreshold;
    std::optional<double> rollThreshold;
    std::optional<double> overheadThreshold;
    std::optional<int> connectionSpeed;
    bool asJson = false; ///< the summary is printed as JSON
};

/// Replays a recording through the station and reports the results.
class RunCommand final : public QObject {
    Q_OBJECT

public:
    /// \param signals created before the run; must outlive it and the saving of the settings
    RunCommand(RunOptions options, const SignalWatcher& signals);

    /// Whether the run can begin. Refuses, with messages, settings that cannot be used, an output that would
    /// overwrite the recording or a file of the station, and one that another process writes to. Writes
    /// nothing.
    [[nodiscard]] static bool CanBegin(const RunOptions& options);

    /// Runs until the recording has ended or the program is interrupted; returns the exit code.
    int Run();

private:
    /// A count of the summary, and its name.
    struct SummaryLine {
        QString name;
        quint64 count = 0;
    };

    static void WarnOfStation();
    void WarnOfFrequency(double frequency);
    void StoreOutputSettings() const;
    void SetParameters();
    bool OpenRecording();
    void Interrupt(int signal);
    void OnError(const KvZANCommon::ErrorStruct& error);
    void ReportOutputProblem();
    void LogCommand(const QString& command);
    void ReportCommandLogProblem();
    void Watch();
    [[nodiscard]] QString DescribeSilence(bool isAtEnd) const;
    void ShowProgress();
    [[nodiscard]] std::vector<SummaryLine> GetSummary() const;
    void PrintSummary() const;
    void PrintSummaryAsJson() const;

    const RunOptions m_options;
    const SignalWatcher& m_signals;
    std::optional<ZANServer::Station> m_station;
    std::optional<DFDataOutput::Burst> m_burst;
    std::optional<ZANServer::DriverReceiver> m_receiver;
    std::optional<CommandProtocol> m_commandLog;
    std::optional<ZANServer::ReplayDriver> m_driver; // must outlive the adapter, which uses it
    KvZANCommon::LegacyDriverAdapter m_adapter;
    KvZANCommon::IDriver& m_device = m_adapter; // the driver as the application sees it
    QString m_reportedProblem;
    double m_lastFrequency = 0.0; // of the last block
    std::set<double> m_unservedFrequencies;
    bool m_isOutputOn = false; // when the driver was started
    bool m_isSilenceTold = false;
    bool m_isCommandLogBroken = false;
    bool m_hasFailed = false;
    int m_signal = 0; // the one that has ended the run; 0: none
};
