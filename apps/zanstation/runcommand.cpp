#include "zanstation/runcommand.h"

#include "tolmappstartup/appoptions.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/stationcfg.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/signalwatcher.h"

#include <QCoreApplication>
#include <QTimer>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int PROGRESS_INTERVAL_MS = 200;

QString Count(quint64 count) {
    return QString::number(count);
}

} // namespace

RunCommand::RunCommand(RunOptions options)
    : m_options(std::move(options)) {}

int RunCommand::Run() {
    StoreOutputSettings();
    m_station.emplace();
    m_station->StartOutput();
    if (m_options.pitchThreshold) {
        m_station->SetPitchThreshold(*m_options.pitchThreshold);
    }
    if (m_options.rollThreshold) {
        m_station->SetRollThreshold(*m_options.rollThreshold);
    }
    if (m_options.overheadThreshold) {
        m_station->SetOverheadThreshold(*m_options.overheadThreshold);
    }
    if (m_options.connectionSpeed) {
        m_station->SetConnectionSpeed(*m_options.connectionSpeed);
    }
    if (!m_station->GetOutput().IsEnabled()) {
        Console::Warn(u"no output is switched on: name one with --output or --serial"_s);
    }
    // Before there is a second thread, for a signal may arrive on any.
    const SignalWatcher watcher;
    connect(&watcher, &SignalWatcher::Interrupted, this, &RunCommand::Interrupt);
    if (!StartDriver()) {
        return EXIT_FAILED;
    }

    QTimer progress;
    if (AppOptions::GetBoolean(u"Progress"_s, Console::IsTerminal())) {
        connect(&progress, &QTimer::timeout, this, &RunCommand::ShowProgress);
        progress.start(PROGRESS_INTERVAL_MS);
    }
    QCoreApplication::exec();

    m_device.SetMode(EMODE_STANDBY);
    m_receiver->PassOnWaiting();
    m_station->GetOutput().SetEnabled(false); // what waits is written, or counted as dropped
    ReportOutputProblem();
    if (progress.isActive()) {
        ShowProgress();
        Console::EndProgress();
    }
    PrintSummary();
    if (m_isInterrupted) {
        return EXIT_INTERRUPTED;
    }
    return m_hasFailed ? EXIT_FAILED : EXIT_OK;
}

void RunCommand::StoreOutputSettings() const {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    if (m_options.output) {
        cfg.SetBool(u"FileOutput_Enabled"_s, !m_options.output->isEmpty());
        if (!m_options.output->isEmpty()) {
            cfg.SetString(u"FileOutput_Address"_s, *m_options.output);
        }
    }
    if (m_options.serial) {
        cfg.SetBool(u"RS232Output_Enabled"_s, !m_options.serial->isEmpty());
        if (!m_options.serial->isEmpty()) {
            cfg.SetString(u"RS232Output_Address"_s, *m_options.serial);
        }
    }
    if (m_options.interval) {
        cfg.SetInt(u"Output_Interval"_s, *m_options.interval);
    }
}

bool RunCommand::StartDriver() {
    m_receiver.emplace(m_station->GetDeviceAddress());
    // What has been waiting since the last time is written together.
    connect(&*m_receiver, &DriverReceiver::PassingOnBegins, this,
            [this] { m_burst.emplace(m_station->GetOutput()); });
    connect(&*m_receiver, &DriverReceiver::PassingOnEnds, this, [this] { m_burst.reset(); });
    connect(&*m_receiver, &DriverReceiver::BlockReceived, this,
            [this](BearingBlock& block) { m_station->Process(block); });
    connect(&*m_receiver, &DriverReceiver::ErrorReported, this, &RunCommand::OnError);
    connect(&*m_receiver, &DriverReceiver::CommandReported, this, &RunCommand::LogCommand);
    connect(&*m_receiver, &DriverReceiver::LinkClosed, this, [] { QCoreApplication::quit(); });

    m_commandLog.emplace(Station::GetDeviceAddress(), StationCfg::GetStationName());
    if (!m_commandLog->Init()) {
        ReportCommandLogProblem();
    }
    m_driver.emplace(m_adapter, m_options.pace);
    m_adapter.SetLegacyDriver(&*m_driver);
    m_device.SetCallback(&*m_receiver);
    std::string recording = m_options.recording.toStdString();
    if (m_device.Initialize(recording, false) != ReplayDriver::OK) {
        Console::Error(m_device.GetLastError());
        return false;
    }
    m_device.SetMode(EMODE_SCAN);
    return true;
}

void RunCommand::Interrupt() {
    m_isInterrupted = true;
    m_receiver->StopBounding();
    QCoreApplication::quit();
}

void RunCommand::OnError(const KvZANCommon::ErrorStruct& error) {
    m_hasFailed = m_hasFailed || error.fatal;
    Console::Warn(error.text);
}

void RunCommand::LogCommand(const QString& command) {
    if (!m_isCommandLogBroken && !m_commandLog->Add(command)) {
        ReportCommandLogProblem();
    }
}

void RunCommand::ReportCommandLogProblem() {
    m_isCommandLogBroken = true; // once is enough
    Console::Warn(u"no command log: "_s + m_commandLog->GetLastError());
}

void RunCommand::ReportOutputProblem() {
    const QString problem = m_station->GetOutput().GetLastError();
    if (problem != m_reportedProblem) {
        m_reportedProblem = problem;
        if (!problem.isEmpty()) {
            m_hasFailed = true;
            Console::Warn(problem);
        }
    }
}

void RunCommand::ShowProgress() {
    ReportOutputProblem();
    const StationCounts& counts = m_station->GetCounts();
    const DFDataOutput::Counters output = m_station->GetOutput().GetCounters();
    Console::ShowProgress(m_driver->GetProgress(),
                          u"in %1  rejected: pitch/roll %2, overhead %3  sentences %4  dropped %5"_s.arg(
                              Count(counts.bearings), Count(counts.rejectedPitchRoll),
                              Count(counts.rejectedOverhead),
                              Count(output.fileSentences + output.serialSentences),
                              Count(output.fileDropped + output.serialDropped)));
}

void RunCommand::PrintSummary() const {
    const StationCounts& counts = m_station->GetCounts();
    const DFDataOutput::Counters output = m_station->GetOutput().GetCounters();
    using Line = std::pair<QString, quint64>;
    const std::array lines{
        Line{u"bearings in"_s, counts.bearings},
        Line{u"rejected: pitch/roll"_s, counts.rejectedPitchRoll},
        Line{u"rejected: overhead pass"_s, counts.rejectedOverhead},
        Line{u"without signal"_s, counts.withoutSignal},
        Line{u"marked as unusable"_s, counts.unusable},
        Line{u"published"_s, counts.published},
        Line{u"sentences to file"_s, output.fileSentences},
        Line{u"sentences to serial line"_s, output.serialSentences},
        Line{u"dropped: file"_s, output.fileDropped},
        Line{u"dropped: serial line"_s, output.serialDropped},
    };
    for (const auto& [name, count] : lines) {
        Console::Print(name.leftJustified(26) + Count(count).rightJustified(10));
    }
    for (const QString& badLines : m_driver->GetBadLineSummary()) {
        Console::Print(u"lines skipped, "_s + badLines);
    }
}
