#include "zanstation/runcommand.h"

#include "connections/interfacecreator.h"
#include "connections/interruptibleinput.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/appoptions.h"
#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/directorylock.h"
#include "valueframework/tree.h"
#include "zancommon/recordingreader.h"
#include "zancommon/zanpath.h"
#include "zanserver/frequencytext.h"
#include "zanserver/operationmodetext.h"
#include "zanserver/outputcheck.h"
#include "zanserver/plural.h"
#include "zanserver/settingscheck.h"
#include "zanserver/stationcheck.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/journal.h"
#include "zanstation/servicenotifier.h"
#include "zanstation/signalwatcher.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

constexpr int PROGRESS_INTERVAL_MS = 200;
constexpr int WATCH_INTERVAL_MS = 1000;

/// The name of standard input and standard output on the command line.
constexpr QStringView STANDARD_STREAM = InterruptibleInput::STANDARD_INPUT;

/// The file for the sentences; empty for none.
QString GetOutputFile(const RunOptions& options) {
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    const QString stored =
        cfg.GetBool(u"FileOutput_Enabled"_s, false) ? cfg.GetString(u"FileOutput_Address"_s, {}) : QString();
    return options.output.value_or(stored);
}

/// Whether a recorder that was kept by an earlier run is left off: it is there for the device, and would make
/// a copy of each recording that is replayed, for which older recordings go.
bool IsRecorderLeftOff(const RunOptions& options) {
    return options.driver.name == DriverChoice::REPLAY && !options.record;
}

/// The file of the recorder; empty for none.
QString GetRecordFile(const RunOptions& options) {
    if (IsRecorderLeftOff(options)) {
        return {};
    }
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    const QString stored =
        cfg.GetBool(u"Recorder/Enabled"_s, false) ? cfg.GetString(u"Recorder/File"_s, {}) : QString();
    return options.record.value_or(stored);
}

/// What no output may overwrite.
StationFiles GetStationFiles(const RunOptions& options) {
    return {options.configDirectory, options.driver.GetStationAddress(),
            options.driver.name == DriverChoice::REPLAY ? options.driver.address : QString()};
}

QString Count(quint64 count) {
    return QString::number(count);
}

} // namespace

RunCommand::RunCommand(RunOptions options, DriverComponentPtr driver, const SignalWatcher& signals)
    : m_options(std::move(options))
    , m_signals(signals)
    , m_driver(std::move(driver))
    , m_modes(m_driver->Describe().modes) {}

int RunCommand::Run() {
    connect(&m_signals, &SignalWatcher::Interrupted, this, &RunCommand::Interrupt);
    m_station.emplace(m_options.driver);
    Console::Warn(m_station->GetWarnings());
    WarnOfStation();
    SetUpDevice();
    LimitDuration();
    StoreSettings();
    SetParameters();
    SetWishes();
    StartOutput();
    StartRecorder();
    JoinHub();
    Measure();
    if (const QString silence = DescribeSilence(true); !silence.isEmpty()) {
        Console::Warn(silence);
    }
    PrintSummary();
    QCoreApplication::processEvents(); // handles a signal that has arrived meanwhile
    if (m_signal != 0) {
        return ExitCodeOf(m_signal);
    }
    return m_hasFailed ? EXIT_FAILED : EXIT_OK;
}

void RunCommand::StartOutput() {
    if (m_options.output == STANDARD_STREAM) {
        Console::PrintToStandardError();
        m_station->StartOutput(STANDARD_STREAM.toString());
    } else {
        m_station->StartOutput();
    }
    m_outputs.emplace(m_station->GetOutput(), GetStationFiles(m_options));
    if (!m_station->GetOutput().IsEnabled()) {
        Console::Warn(u"no output is switched on: name one with --output or --serial"_s);
    }
}

void RunCommand::StartRecorder() {
    const bool isLeftOff = IsRecorderLeftOff(m_options);
    if (isLeftOff && CfgCenter::GetAppCfg(ICfg::View::Outputs).GetBool(u"Recorder/Enabled"_s, false)) {
        Console::Warn(u"the recorder is off in this run: a replay is recorded with --record only"_s);
    }
    m_recorder.emplace(GetStationFiles(m_options),
                       isLeftOff ? Recorder::Start::Off : Recorder::Start::AsKept);
    const auto report = [this](const QString& problem) {
        m_hasFailed = true;
        Console::Error(problem);
    };
    if (!m_recorder->GetProblem().isEmpty()) {
        report(m_recorder->GetProblem());
    }
    connect(&*m_recorder, &Recorder::Failed, this, report);
    connect(&*m_recorder, &Recorder::Recovered, this, [] { Console::Warn(u"the recorder works again"_s); });
    // A recorder that is off costs the bearings nothing.
    const auto observe = [this] {
        m_station->SetBlockObserver(
            m_recorder->IsOn()
                ? [this](const BearingBlock& block,
                         const std::vector<BearingResult>& bearings) { m_recorder->Take(block, bearings); }
                : Station::BlockObserver());
    };
    connect(&*m_recorder, &Recorder::Switched, this, observe);
    observe();
}

void RunCommand::JoinHub() {
    m_hub.emplace();
    if (!m_hub->GetProblem().isEmpty()) {
        Console::Warn(m_hub->GetProblem());
    }
}

void RunCommand::Measure() {
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, &RunCommand::Watch);
    watch.start(WATCH_INTERVAL_MS);
    QTimer progress;
    if (AppOptions::GetBoolean(u"Progress"_s, Console::IsTerminal() && !Console::IsQuiet())) {
        connect(&progress, &QTimer::timeout, this, &RunCommand::ShowProgress);
        progress.start(PROGRESS_INTERVAL_MS);
    }
    if (m_options.duration) {
        m_duration.start();
    }
    // Whoever runs it at a terminal has chosen that. A service measures with it until a driver is chosen, and
    // nobody sees that its bearings are not real.
    if (IsSimulated() && Journal::IsUsed()) {
        Console::Warn(u"the device is simulated: none of its bearings is real"_s);
    }
    m_device->Open();
    ServiceNotifier service([this] { return DescribeStatus(); });
    service.TellReady();
    QCoreApplication::exec();

    service.TellStopping();
    JudgeDevice();
    m_device->Close();
    m_errorTeller.TellRest();
    m_wasOutputOn = m_station->GetOutput().IsEnabled();
    m_station->GetOutput().SetEnabled(false); // waiting sentences are written, or counted as dropped
    ReportOutputProblem();
    if (progress.isActive()) {
        ShowProgress();
        Console::EndProgress();
    }
}

/// Refuses, with a message, a recording that cannot be read.
bool RunCommand::CanReplay(const QString& recording) {
    KvZANCommon::RecordingReader reader; // a stream is not touched: its writer would lose its reader again
    if (InterruptibleInput::IsStream(recording) || reader.Open(recording)) {
        return true;
    }
    Console::Error(reader.GetErrorText());
    return false;
}

bool RunCommand::CanBegin(const RunOptions& options) {
    const QString address = options.driver.GetStationAddress();
    for (const Findings& warnings : {CheckMeaning(address), CheckKeys(options.configDirectory)}) {
        for (const Finding& finding : warnings) {
            Console::Warn(finding.text);
        }
    }
    bool canBegin = true;
    for (const Finding& finding : CheckSettings(address)) {
        Console::Error(finding.text);
        canBegin = false;
    }
    const QString output = GetOutputFile(options);
    if (!output.isEmpty()) {
        QStringList reasons = OutputCheck::CheckFile(output, GetStationFiles(options));
        // Of two files that were kept, the recorder gives way.
        if (options.output || options.record) {
            reasons += OutputCheck::CheckBesideRecorder(output, GetRecordFile(options));
        }
        for (const QString& reason : reasons) {
            Console::Error(reason);
            canBegin = false;
        }
    }
    if (options.driver.name == DriverChoice::REPLAY && !CanReplay(options.driver.address)) {
        canBegin = false;
    }
    // A file that was kept is no reason to refuse: the recorder tells what is wrong and tries again, and the
    // station measures meanwhile.
    if (options.record && !options.record->isEmpty()) {
        if (const QString reason = Recorder::CheckFile(*options.record, GetStationFiles(options));
            !reason.isEmpty()) {
            Console::Error(u"the recorder cannot write to %1: %2"_s.arg(*options.record, reason));
            canBegin = false;
        }
    }
    return canBegin;
}

void RunCommand::WarnOfStation() {
    for (const auto& [name, finding] : {std::pair{u"device type"_s, StationCheck::CheckDeviceType()},
                                        std::pair{u"antenna setup"_s, StationCheck::CheckAntennaSetup()},
                                        std::pair{u"hardware"_s, StationCheck::CheckHardware()}}) {
        if (finding.severity == Finding::Severity::Error) {
            Console::Warn(name + u": "_s + finding.text);
        }
    }
}

/// Warns about the first frequencies of the recording that no antenna serves.
void RunCommand::WarnOfFrequency(double frequency) {
    constexpr std::size_t MOST_WARNINGS = 10;
    if (frequency == m_lastFrequency || m_unservedFrequencies.size() == MOST_WARNINGS) {
        return;
    }
    m_lastFrequency = frequency;
    const Finding finding = StationCheck::CheckFrequency(frequency);
    if (finding.severity == Finding::Severity::Error && m_unservedFrequencies.insert(frequency).second) {
        Console::Warn(finding.text);
    }
}

void RunCommand::SetParameters() {
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
}

/// Only wishes: what becomes of them is the matter of the device's control.
void RunCommand::SetWishes() const {
    using namespace StdDeviceDefinition;
    auto* const mode = Tree::Instance()->Find<ValueSelection>(ZANPath::Server(g_vdOperationMode));
    if (m_options.wishes.mode && !mode->SetCurrentKey(*m_options.wishes.mode)) {
        Console::Warn(u"OperationMode: asked for %1, not carried out: there is no such mode"_s.arg(
            OperationModeText::Format(*m_options.wishes.mode)));
    }
    // A station that has never been asked for a mode scans, which not every driver does.
    if (mode->GetCurrentKey() != EMODE_STANDBY && !m_modes.isEmpty() &&
        !m_modes.contains(static_cast<EMode>(mode->GetCurrentKey()))) {
        mode->SetCurrentKey(m_modes.front());
    }
    auto* const frequency = Tree::Instance()->Find<ValueNumericDouble>(ZANPath::Server(g_vdFrequency));
    if (m_options.wishes.frequency && !frequency->SetValue(*m_options.wishes.frequency)) {
        Console::Warn(u"Frequency: asked for %1, not carried out: it is from %2 to %3"_s.arg(
            FrequencyText::Format(*m_options.wishes.frequency), FrequencyText::Format(frequency->GetMin()),
            FrequencyText::Format(frequency->GetMax())));
    }
    if (!m_options.wishes.ranges.isEmpty()) {
        auto* const ranges = Tree::Instance()->Find<ValueStringList>(ZANPath::Server(g_vdScanRanges));
        const auto transaction = ranges->CreateTransaction({TChangeCode::ListReplaced}, nullptr);
        ranges->Clear();
        for (const QString& range : m_options.wishes.ranges) {
            ranges->PushBack(range);
        }
    }
}

void RunCommand::StoreSettings() const {
    if (m_options.isDriverKept) {
        m_options.driver.Store();
    }
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    if (m_options.output && m_options.output != STANDARD_STREAM) { // standard output is for this run only
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
    if (m_options.record) {
        cfg.SetBool(u"Recorder/Enabled"_s, !m_options.record->isEmpty());
        if (!m_options.record->isEmpty()) {
            cfg.SetString(u"Recorder/File"_s, *m_options.record);
        }
    }
    if (m_options.recordSize) {
        cfg.SetInt(u"Recorder/FileSize"_s, *m_options.recordSize);
    }
    if (m_options.recordFiles) {
        cfg.SetInt(u"Recorder/FileCount"_s, *m_options.recordFiles);
    }
}

bool RunCommand::IsSimulated() const {
    return m_options.driver.name == DriverChoice::SIMULATOR;
}

bool RunCommand::IsRecording() const {
    return m_options.driver.name == DriverChoice::REPLAY;
}

void RunCommand::SetUpDevice() {
    m_device.emplace(*m_station, m_options.driver, std::move(m_driver));
    if (m_options.speed) {
        m_device->SetFirstCommand(u"speed "_s + *m_options.speed);
    }
    const auto reportLog = [](const QString& problem) { Console::Warn(u"no command log: "_s + problem); };
    if (!m_device->GetLogProblem().isEmpty()) {
        reportLog(m_device->GetLogProblem());
    }
    connect(&*m_device, &StationDevice::LogFailed, this, reportLog);
    QStringList asked;
    for (const auto& [isAsked, wish] : {std::pair{m_options.wishes.mode.has_value(), u"OperationMode"_s},
                                        {m_options.wishes.frequency.has_value(), u"Frequency"_s},
                                        {!m_options.wishes.ranges.isEmpty(), u"ScanRanges"_s}}) {
        if (isAsked) {
            asked.append(wish);
        }
    }
    m_wishTeller.emplace(asked);
    connect(&*m_device, &StationDevice::BlockReceived, this, &RunCommand::OnBlock);
    connect(&*m_device, &StationDevice::Refused, this, [](const QString& reason) { Console::Warn(reason); });

    DriverLink& link = m_device->GetLink();
    connect(&link, &DriverLink::Lost, this, &RunCommand::OnLost);
    connect(&link, &DriverLink::Connected, this, [this] { m_wasThere = true; });
    connect(&link, &DriverLink::ThereAgain, this, [] { Console::Warn(u"the device is there again"_s); });
    connect(&link, &DriverLink::GivenUp, this, [this](const QString& reason) {
        m_hasFailed = true;
        Console::Error(reason);
    });
    connect(&link, &DriverLink::Ended, this, [] { QCoreApplication::quit(); });

    DriverReceiver& receiver = link.GetReceiver();
    connect(&receiver, &DriverReceiver::ErrorReported, this, [this](const KvZANCommon::ErrorStruct& error) {
        if (!error.fatal) { // a fatal one means that the device is lost
            m_errorTeller.Tell(error.text);
        }
    });
    if (IsRecording()) {
        connect(&receiver, &DriverReceiver::TestValuesReceived, this,
                [this](const QList<double>& values) { m_progress = values.value(0); });
        connect(&receiver, &DriverReceiver::BitResultReported, this,
                [this](const KvZANCommon::ErrorStruct& result) { m_skippedLines.append(result.text); });
    }
}

/// A device whose clock is told its speed measures for so long by that clock, however quickly that is done.
/// The clock of a real device may be set while it measures, so there the real time counts.
void RunCommand::LimitDuration() {
    if (!m_options.duration) {
        return;
    }
    using Milliseconds = std::chrono::milliseconds;
    std::chrono::duration<double> limit(*m_options.duration);
    if (m_options.speed) {
        m_device->MeasureFor(std::chrono::ceil<Milliseconds>(limit));
        const double pace = m_options.speed->toDouble(); // 0 for a word
        limit = pace > 0.0 && pace < 1.0 ? limit / pace : limit;
    }
    connect(&*m_device, &StationDevice::DurationIsOver, this, [] { QCoreApplication::quit(); });
    m_duration.setSingleShot(true);
    m_duration.callOnTimeout(this, [] { QCoreApplication::quit(); });
    constexpr std::chrono::hours LONGEST(500); // a timer takes some 596
    m_duration.setInterval(
        std::chrono::ceil<Milliseconds>(std::min<std::chrono::duration<double>>(limit, LONGEST)));
}

void RunCommand::OnBlock(const BearingBlock& block) {
    WarnOfFrequency(block.status.frequency);
}

void RunCommand::OnLost(const QString& reason) {
    if (IsRecording()) {
        m_hasFailed = true;
        Console::Error(reason);
        QCoreApplication::quit();
    } else {
        Console::Warn((m_wasThere ? u"the device is lost, and sought again and again: "_s
                                  : u"the device cannot be opened, and is sought again and again: "_s) +
                      reason);
    }
}

/// A run that ends without its device has failed, whatever it has measured before. Of a recording that cannot
/// be read it is told when that is found, and who interrupts the run need not be told.
void RunCommand::JudgeDevice() {
    const DriverLink& link = m_device->GetLink();
    const DriverLink::State state = link.GetState();
    const bool isMissing =
        state == DriverLink::State::Connecting || (state == DriverLink::State::Lost && !IsRecording());
    if (!isMissing || m_signal != 0) {
        return;
    }
    m_hasFailed = true;
    const QString reason = link.GetReason().isEmpty() ? u"it was still being opened"_s : link.GetReason();
    Console::Error(
        (m_wasThere ? u"the device was lost when the run ended: "_s : u"the device was never there: "_s) +
        reason);
}

void RunCommand::Interrupt(int signal) {
    if (m_signal == 0) {
        m_signal = signal;
    }
    QCoreApplication::quit();
}

void RunCommand::ReportOutputProblem() {
    const QString problem = m_station->GetOutput().GetLastError();
    if (problem != m_reportedProblem) {
        m_reportedProblem = problem;
        if (!problem.isEmpty()) {
            m_hasFailed = true;
            Console::Error(problem);
        }
    }
}

/// Reports problems during the run that would otherwise only be noticed at its end.
void RunCommand::Watch() {
    ReportOutputProblem();
    WarnOfLostReadings();
    const QString silence = m_isSilenceTold ? QString() : DescribeSilence(false);
    if (!silence.isEmpty()) {
        m_isSilenceTold = true;
        Console::Warn(silence);
    }
}

/// Without them a bearing means something else: without a heading nobody can tell where north is.
void RunCommand::WarnOfLostReadings() {
    using namespace StdDeviceDefinition;
    if (IsRecording() || m_device->GetLink().GetState() != DriverLink::State::Connected) {
        return; // the rows of a recording have them or not, and a lost device is told of
    }
    for (const auto& [descriptor, name] :
         {std::pair{&g_vdTrueHeading, u"heading"_s}, {&g_vdPosLatitude, u"position"_s}}) {
        const auto* const value = Tree::Instance()->GetValue(ZANPath::Server(*descriptor));
        const bool isThere = value->GetState() == TValueState::Valid;
        if (!isThere && m_readings.remove(name)) {
            Console::Warn(u"the %1 is not measured any more"_s.arg(name));
            m_lostReadings.insert(name);
        } else if (isThere) {
            m_readings.insert(name);
            if (m_lostReadings.remove(name)) {
                Console::Warn(u"the %1 is measured again"_s.arg(name));
            }
        }
    }
}

/// Why bearings are published but no sentence is written; empty when sentences are written.
QString RunCommand::DescribeSilence(bool isAtEnd) const {
    const quint64 published = m_station->GetCounts().published;
    const DFDataOutput::Counters output = m_station->GetOutput().GetCounters();
    if (published == 0 || output.fileSentences + output.serialSentences > 0) {
        return {};
    }
    const bool isOutputOn = isAtEnd ? m_wasOutputOn : m_station->GetOutput().IsEnabled();
    const auto describeCause = [&] {
        if (!isOutputOn || output.withoutSink > 0) {
            return u"all outputs are off"_s;
        }
        if (output.fileDropped + output.serialDropped > 0) {
            return u"no output has accepted one"_s;
        }
        if (output.inStandby > 0) {
            return u"the operation mode is Standby"_s;
        }
        if (output.leftToInterval == 0) {
            return u"the serial line has not sent one"_s;
        }
        const QString interval =
            CfgCenter::GetAppCfg(ICfg::View::Outputs).GetString(u"Output_Interval"_s, {});
        return (isAtEnd ? u"the interval of %1 ms is longer than the run"_s : u"the interval is %1 ms"_s)
            .arg(interval);
    };
    return u"%1 published, no sentence written%2: %3"_s.arg(Plural(published, u"bearing"_s),
                                                            isAtEnd ? QString() : u" yet"_s, describeCause());
}

QString RunCommand::DescribeStatus() {
    StatusLine::State state = StatusLine::GetState(*m_station);
    state.isSimulated = IsSimulated();
    state.problems = QStringList{m_device->GetLink().GetReason(), DescribeSilence(false),
                                 m_recorder->GetProblem(), m_hub->GetProblem()} +
                     m_station->GetOutput().GetProblems();
    return m_statusLine.Describe(state, StatusLine::Clock::now());
}

void RunCommand::ShowProgress() {
    ReportOutputProblem();
    const StationCounts& counts = m_station->GetCounts();
    const DFDataOutput::Counters output = m_station->GetOutput().GetCounters();
    Console::ShowProgress(
        m_progress, u"in %1  rejected: pitch/roll %2, overhead %3  sentences %4  dropped %5"_s.arg(
                        Count(counts.bearings), Count(counts.rejectedPitchRoll),
                        Count(counts.rejectedOverhead), Count(output.fileSentences + output.serialSentences),
                        Count(output.fileDropped + output.serialDropped)));
}

std::vector<RunCommand::SummaryLine> RunCommand::GetSummary() const {
    const StationCounts& counts = m_station->GetCounts();
    const DFDataOutput::Counters output = m_station->GetOutput().GetCounters();
    std::vector<SummaryLine> summary{
        {u"bearings in"_s, counts.bearings},
        {u"rejected: pitch/roll"_s, counts.rejectedPitchRoll},
        {u"rejected: overhead pass"_s, counts.rejectedOverhead},
        {u"without signal"_s, counts.withoutSignal},
        {u"marked as unusable"_s, counts.unusable},
        {u"published"_s, counts.published},
        {u"sentences to file"_s, output.fileSentences},
        {u"sentences to serial line"_s, output.serialSentences},
        {u"dropped: file"_s, output.fileDropped},
        {u"dropped: serial line"_s, output.serialDropped},
    };
    if (m_recorder->GetRowCount() + m_recorder->GetDroppedCount() > 0) {
        summary.push_back({u"recorded"_s, m_recorder->GetRowCount()});
        summary.push_back({u"dropped: recorder"_s, m_recorder->GetDroppedCount()});
    }
    return summary;
}

void RunCommand::PrintSummary() const {
    if (m_options.asJson) {
        PrintSummaryAsJson();
        return;
    }
    for (const SummaryLine& line : GetSummary()) {
        Console::Tell(line.name.leftJustified(26) + Count(line.count).rightJustified(10));
    }
    for (const QString& badLines : m_skippedLines) {
        Console::Tell(u"lines skipped, "_s + badLines);
    }
}

/// The member names are those of the summary in the usual form: "rejected: pitch/roll" is
/// "rejected_pitch_roll".
void RunCommand::PrintSummaryAsJson() const {
    static const QRegularExpression betweenWords(u"[^a-z]+"_s);
    QJsonObject summary;
    for (SummaryLine& line : GetSummary()) {
        summary[line.name.replace(betweenWords, u"_"_s)] = static_cast<qint64>(line.count);
    }
    summary[u"lines_skipped"_s] = QJsonArray::fromStringList(m_skippedLines);
    Console::PrintJson(QJsonDocument(summary));
}

namespace {

/// The absolute path of a file; "-" is not changed. A directory that depends on the process, such as
/// "/proc/self/cwd", is replaced by the one that it is now.
QString AbsolutePath(const QString& name) {
    if (name == STANDARD_STREAM) {
        return name;
    }
    constexpr QStringView PROCESSES = u"/proc/";
    const QFileInfo file(QFileInfo(name).absoluteFilePath());
    const QString directory = QFileInfo(file.path()).canonicalFilePath();
    const bool isNow =
        file.path().startsWith(PROCESSES) && !directory.isEmpty() && !directory.startsWith(PROCESSES);
    return isNow ? QDir(directory).filePath(file.fileName()) : file.filePath();
}

/// "realtime", "max", or how many times faster.
bool IsSpeed(const QString& text) {
    bool isNumber = false;
    const double pace = text.toDouble(&isNumber);
    return text == u"realtime" || text == u"max" || (isNumber && pace > 0.0 && std::isfinite(pace));
}

/// Takes the wishes of the command line. False, with a message, when one is none.
bool ReadWishes(const CommandLine& line, RunOptions& options) {
    for (const QString& name : {u"mode"_s, u"frequency"_s, u"ranges"_s}) {
        if (line.IsSet(name) && line.IsSet(u"recording"_s)) {
            CommandLine::Refuse(u"--%1 is for a device; a recording has it already"_s.arg(name));
            return false;
        }
    }
    const std::optional<DeviceWishes> wishes = DeviceWishes::Read(line);
    options.wishes = wishes.value_or(DeviceWishes());
    return wishes.has_value();
}

/// Why the mode that is asked for cannot be measured in; empty when it can.
QString CheckMode(const RunOptions& options, const KvZANCommon::DriverDescription& driver) {
    if (!options.wishes.mode || *options.wishes.mode == static_cast<EOperationMode>(EMODE_STANDBY) ||
        driver.modes.isEmpty() || driver.modes.contains(static_cast<EMode>(*options.wishes.mode))) {
        return {};
    }
    QStringList modes;
    for (const EMode mode : driver.modes) {
        modes += OperationModeText::Format(static_cast<EOperationMode>(mode));
    }
    return u"the driver %1 does not have the mode %2; it has %3"_s.arg(
        driver.name, OperationModeText::Format(*options.wishes.mode), modes.join(u", "_s));
}

/// The driver of the command line, or else of the settings.
DriverChoice ChooseDriver(const CommandLine& line, RunOptions& options) {
    if (const std::optional<QString> recording = line.Text(u"recording"_s)) {
        return {DriverChoice::REPLAY.toString(), AbsolutePath(*recording)};
    }
    DriverChoice choice = DriverChoice::FromSettings();
    const std::optional<QString> name = line.Text(u"driver"_s);
    const std::optional<QString> address = line.Text(u"address"_s);
    if (name && *name != choice.name) {
        choice = {*name, {}};
    }
    choice.address = address.value_or(choice.address);
    // The name of a file: the station works in the directory of its settings, and later runs elsewhere.
    if (choice.address == STANDARD_STREAM || QFileInfo::exists(choice.address)) {
        choice.address = AbsolutePath(choice.address);
    }
    options.isDriverKept = name || address;
    return choice;
}

} // namespace

namespace Commands {

int Run(const QStringList& arguments) {
    CommandLine line(
        u"run"_s,
        u"Measures with a device, and brings its bearings through filters and outputs. Options that are not "
        "given are taken from the settings; those for driver, outputs and thresholds are saved there."_s,
        QList<QCommandLineOption>{
            {u"driver"_s, u"Driver of the device (default: simulator); \"zanstation drivers\" lists them."_s,
             u"NAME"_s},
            {u"address"_s, u"Address of the device, in the form that its driver wants."_s, u"ADDRESS"_s},
            {u"recording"_s,
             u"Replays a recording, in this run only; \"-\" is standard input. Short for the driver replay."_s,
             u"FILE"_s},
            {u"speed"_s,
             u"Pace of a recording or a simulated device: realtime, how many times faster, or max."_s,
             u"realtime|N|max"_s},
            {u"duration"_s, u"Ends the run after so many seconds."_s, u"S"_s}} +
            DeviceWishes::GetOptions() +
            QList<QCommandLineOption>{
                {u"output"_s,
                 u"File for the sentences; \"\" switches it off. The previous file is kept as FILE.bak. "
                 u"\"-\" is "
                 "standard output, for this run only; everything else then goes to standard error."_s,
                 u"FILE"_s},
                {u"serial"_s,
                 u"Serial line for the sentences, such as /dev/ttyUSB0:9600,n,8,1; \"\" switches it off."_s,
                 u"ADDRESS"_s},
                {u"interval"_s, u"Milliseconds between sentences; 0: one with each bearing."_s, u"MS"_s},
                {u"record"_s,
                 u"Records what the device delivers to this file, which can be replayed; \"\" switches it off."_s,
                 u"FILE"_s},
                {u"record-size"_s, u"Size from which on the next file of the recording begins, in MB."_s,
                 u"MB"_s},
                {u"record-files"_s, u"How many full files of the recording are kept."_s, u"N"_s},
                {u"pitch-threshold"_s, u"Rejects bearings from this pitch on, in degrees."_s, u"DEG"_s},
                {u"roll-threshold"_s, u"Rejects bearings from this roll on, in degrees."_s, u"DEG"_s},
                {u"overhead-threshold"_s, u"Rejects bearings from this elevation on, in degrees."_s,
                 u"DEG"_s},
                {u"connection-speed"_s, u"From 1 on, bearings without quality are marked as unusable."_s,
                 u"N"_s},
                CommandLine::ComponentsOption(),
                CommandLine::JsonOption()});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    if (line.IsSet(u"recording"_s) && (line.IsSet(u"driver"_s) || line.IsSet(u"address"_s))) {
        return CommandLine::Refuse(
            u"--recording names driver and address: leave out --driver and --address"_s);
    }
    RunOptions options;
    options.speed = line.Text(u"speed"_s);
    if (options.speed && !IsSpeed(*options.speed)) {
        return CommandLine::Refuse(u"--speed takes realtime, max or a number above 0"_s);
    }
    if (!ReadWishes(line, options)) {
        return EXIT_USAGE;
    }
    constexpr double LONGEST_DURATION = 1e6;
    options.output = line.Text(u"output"_s);
    if (options.output && !options.output->isEmpty()) {
        options.output = AbsolutePath(*options.output);
    }
    options.serial = line.Text(u"serial"_s);
    if (options.serial && !options.serial->isEmpty()) {
        if (const QString reason = CInterfaceCreator::CheckAddress(*options.serial); !reason.isEmpty()) {
            return CommandLine::Refuse(
                u"%1 is not the address of a serial line: %2"_s.arg(*options.serial, reason));
        }
    }
    options.record = line.Text(u"record"_s);
    if (options.record && !options.record->isEmpty()) {
        options.record = AbsolutePath(*options.record);
    }
    constexpr int LONGEST_INTERVAL = 10000;
    constexpr int LARGEST_RECORD = 100'000; // MB
    constexpr int MOST_RECORDS = 10'000;
    if (!line.Number(u"interval"_s, 0, LONGEST_INTERVAL, options.interval) ||
        !line.Number(u"record-size"_s, 1, LARGEST_RECORD, options.recordSize) ||
        !line.Number(u"record-files"_s, 1, MOST_RECORDS, options.recordFiles) ||
        !line.Number(u"pitch-threshold"_s, 0.0, 90.0, options.pitchThreshold) ||
        !line.Number(u"roll-threshold"_s, 0.0, 180.0, options.rollThreshold) ||
        !line.Number(u"overhead-threshold"_s, 0.0, 90.0, options.overheadThreshold) ||
        !line.Number(u"connection-speed"_s, 0, std::numeric_limits<int>::max(), options.connectionSpeed) ||
        !line.Number(u"duration"_s, 0.0, LONGEST_DURATION, options.duration)) {
        return EXIT_USAGE;
    }
    if (!line.OpenStore()) {
        return EXIT_FAILED;
    }
    options.configDirectory = line.GetConfigDirectory();
    DirectoryLock lock;
    if (!lock.Take(options.configDirectory)) {
        Console::Error(lock.GetErrorText());
        return EXIT_FAILED;
    }
    options.asJson = line.AsJson();
    options.driver = ChooseDriver(line, options);
    line.TakeComponentDirectory();
    // The command log is below the current directory, and relative names in the settings refer to it; so make
    // it the directory of the settings.
    QDir::setCurrent(options.configDirectory);
    if (!RunCommand::CanBegin(options)) {
        return EXIT_FAILED;
    }
    QString fault;
    DriverComponentPtr driver = DriverLibrary::Load(options.driver.name, fault);
    if (!driver) {
        Console::Error(fault);
        return EXIT_FAILED;
    }
    if (const QString reason = CheckMode(options, driver->Describe()); !reason.isEmpty()) {
        Console::Error(reason);
        return EXIT_FAILED;
    }
    // A signal does not interrupt the saving of the settings.
    const SignalWatcher signals;
    const int exitCode = RunCommand(options, std::move(driver), signals).Run();
    return CfgCenter::Close() || exitCode != EXIT_OK ? exitCode : EXIT_FAILED;
}

} // namespace Commands
