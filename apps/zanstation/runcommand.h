#pragma once

#include "zanserver/driverchoice.h"
#include "zanserver/driverlibrary.h"
#include "zanserver/hubvalues.h"
#include "zanserver/outputvalues.h"
#include "zanserver/recorder.h"
#include "zanserver/station.h"
#include "zanserver/stationdevice.h"
#include "zanstation/devicewishes.h"
#include "zanstation/errorteller.h"
#include "zanstation/statusline.h"
#include "zanstation/wishteller.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <optional>
#include <set>
#include <vector>

class SignalWatcher;

/// The options of `zanstation run`. For those that are not set the settings are used.
struct RunOptions {
    QString configDirectory; ///< absolute path
    /// The driver and its device. The address of a recording is its absolute path, or "-" for standard input.
    ZANServer::DriverChoice driver;
    bool isDriverKept = false;    ///< the choice is for later runs, too
    std::optional<QString> speed; ///< pace of the device's clock: realtime, max, or how many times faster
    /// Seconds after which the run ends: those of the device's clock when its speed is given.
    std::optional<double> duration;
    /// Absolute path, because a later run may be started in another directory; "-": standard output, for this
    /// run only.
    std::optional<QString> output;
    std::optional<QString> serial;
    std::optional<int> interval; ///< milliseconds
    /// The file of the recorder, absolute path; empty: nothing is recorded.
    std::optional<QString> record;
    std::optional<int> recordSize;  ///< MB
    std::optional<int> recordFiles; ///< the number that is kept
    std::optional<double> pitchThreshold;
    std::optional<double> rollThreshold;
    std::optional<double> overheadThreshold;
    std::optional<int> connectionSpeed;
    DeviceWishes wishes;
    bool asJson = false; ///< the summary is printed as JSON
};

/// Runs the station on a device and reports the results.
class RunCommand final : public QObject {
    Q_OBJECT

public:
    /// \param driver  of the choice; not null
    /// \param signals created before the run; must outlive it and the saving of the settings
    RunCommand(RunOptions options, ZANServer::DriverComponentPtr driver, const SignalWatcher& signals);

    /// Whether the run can begin. Refuses, with messages, settings that cannot be used, an output that would
    /// overwrite the recording or a file of the station, and one that another process writes to, and a file
    /// to record to that the run is given and that cannot be one. Writes nothing.
    [[nodiscard]] static bool CanBegin(const RunOptions& options);

    /// Runs until the duration is over, the recording has ended, or the program is interrupted; returns the
    /// exit code.
    int Run();

private:
    /// A count of the summary, and its name.
    struct SummaryLine {
        QString name;
        quint64 count = 0;
    };

    [[nodiscard]] static bool CanReplay(const QString& recording);
    static void WarnOfStation();
    void WarnOfFrequency(double frequency);
    void StoreSettings() const;
    void SetParameters();
    void SetWishes() const;
    [[nodiscard]] bool IsRecording() const;
    [[nodiscard]] bool IsSimulated() const;
    void StartOutput();
    void StartRecorder();
    void JoinHub();
    void Measure();
    void SetUpDevice();
    void LimitDuration();
    void OnBlock(const ZANServer::BearingBlock& block);
    void OnLost(const QString& reason);
    void JudgeDevice();
    void Interrupt(int signal);
    void ReportOutputProblem();
    void Watch();
    void WarnOfLostReadings();
    [[nodiscard]] QString DescribeSilence(bool isAtEnd) const;
    void ShowProgress();
    [[nodiscard]] QString DescribeStatus();
    [[nodiscard]] std::vector<SummaryLine> GetSummary() const;
    void PrintSummary() const;
    void PrintSummaryAsJson() const;

    const RunOptions m_options;
    const SignalWatcher& m_signals;
    ZANServer::DriverComponentPtr m_driver; // until the device has it
    const QList<EMode> m_modes;             // in which the driver measures
    std::optional<ZANServer::Station> m_station;
    std::optional<ZANServer::OutputValues> m_outputs;
    std::optional<ZANServer::Recorder> m_recorder; // takes the blocks of the device
    std::optional<ZANServer::StationDevice> m_device;
    std::optional<ZANServer::HubValues> m_hub;
    double m_progress = 0.0; // of a recording
    QStringList m_skippedLines;
    QString m_reportedProblem;
    StatusLine m_statusLine;      // for the service manager
    double m_lastFrequency = 0.0; // of the last block
    std::set<double> m_unservedFrequencies;
    std::optional<WishTeller> m_wishTeller;
    ErrorTeller m_errorTeller;
    QTimer m_duration;
    QSet<QString> m_readings; // of heading and position that are measured
    QSet<QString> m_lostReadings;
    bool m_wasThere = false;    // the device
    bool m_wasOutputOn = false; // at the end of the measurement
    bool m_isSilenceTold = false;
    bool m_hasFailed = false;
    int m_signal = 0; // the one that has ended the run; 0: none
};
