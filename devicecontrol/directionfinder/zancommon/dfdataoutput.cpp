#include "zancommon/dfdataoutput.h"

#include "kwbase/tracesource.h"
#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/cfgdefault.h"
#include "valueframework/tree.h"
#include "zancommon/dfdatafile.h"
#include "zancommon/dfdataoutputpanel.h"
#include "zancommon/dfdatasentence.h"
#include "zancommon/dfdatavalues.h"
#include "zancommon/failurerun.h"
#include "zancommon/serialinterface.h"

#include <QApplication>
#include <QDateTime>
#include <QPointer>
#include <QScopeGuard>
#include <QTimerEvent>

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\dfdataoutput");

const QString KEY_SERIAL_ENABLED = u"RS232Output_Enabled"_s;
const QString KEY_INTERVAL = u"Output_Interval"_s;
const QString KEY_SERIAL_ADDRESS = u"RS232Output_Address"_s;
const QString KEY_FILE_ENABLED = u"FileOutput_Enabled"_s;
const QString KEY_FILE_NAME = u"FileOutput_Address"_s;

constexpr unsigned short RETRY_MS = 5000;
constexpr int WATCH_MS = 1000; // between two checks whether the file is still there
constexpr unsigned short SECOND = 10;
constexpr int NO_TIMER = -1;
constexpr QStringView STANDARD_OUTPUT = u"-";

void AddCounts(DFDataOutput::Counters& counters, const SerialInterface::Counts& counts) {
    counters.serialSentences += counts.sent;
    counters.serialDropped += counts.lost;
}

} // namespace

struct ZANCOMMON_NO_EXPORT DFDataOutput::Private {
    explicit Private(QString runFile);

    /// What has failed last.
    struct Failure {
        QString text;
        quint64 time = 0;
    };
    /// Remembers a failure of a sink, and traces it.
    void Fail(Failure& ofSink, const QString& text);
    [[nodiscard]] bool IsFileOn() const { return fileEnabled || !fileOfThisRun.isEmpty(); }
    /// The current settings, with the address, which the base class keeps.
    [[nodiscard]] Settings GetSettings(const QString& address) const {
        return {serialEnabled, address, fileEnabled, fileName, interval};
    }

    void SendNormal(const BearingResult& current);
    void SendSuperResolution(const BearingResult& current, const std::vector<BearingResult>& emitters);
    void WriteToSerialInterface();

    DFDataValues values;
    std::unique_ptr<SerialInterface> serial;
    DFDataFile file{RETRY_MS, WATCH_MS};
    DFDataSentence sentence;

    bool serialEnabled = false;
    bool fileEnabled = false;
    QString fileName;
    QString fileOfThisRun; // replaces the file of the settings; empty: that one is used
    int interval = 0;      // milliseconds; 0: no timer
    int timerId = NO_TIMER;

    QPointer<DFDataOutputPanel> panel;

    Counters counters; // without those of the file, and those of the open serial line
    QString lastError; // the later one of the two
    Failure fileFailure;
    Failure serialFailure;
    FailureRun serialFailures;
};

DFDataOutput::Private::Private(QString runFile)
    : fileOfThisRun(std::move(runFile)) {
    QObject::connect(&file, &DFDataFile::Failed, &file,
                     [this](const QString& text) { Fail(fileFailure, text); });
    QObject::connect(&file, &DFDataFile::Recovered, &file,
                     [](const QString& text) { TRACE.Information([&] { return text; }); });
}

void DFDataOutput::Private::Fail(Failure& ofSink, const QString& text) {
    lastError = text;
    ofSink = {text, static_cast<quint64>(QDateTime::currentMSecsSinceEpoch())};
    TRACE.Information([&] { return text; });
}

DFDataOutput::Burst::Burst(DFDataOutput& output)
    : m_output(output) {
    m_output.m_p->file.HoldBack();
}

DFDataOutput::Burst::~Burst() {
    m_output.m_p->file.Release();
}

DFDataOutput::DFDataOutput(QString name)
    : DFDataOutput(std::move(name), {}) {}

DFDataOutput::DFDataOutput(QString name, QString fileOfThisRun)
    : ZANAbstractInterface(std::move(name))
    , m_p(std::make_unique<Private>(std::move(fileOfThisRun))) {
    ReadConfigurationFromFile();
}

DFDataOutput::~DFDataOutput() {
    SaveConfigurationToFile();
    DFDataOutput::SetEnabled(false);
    delete m_pConfigWidget;
}

void DFDataOutput::SetEnabled(bool on) {
    if (on == m_bEnabled) {
        return;
    }
    m_bEnabled = on;
    if (!on) {
        DisconnectFromTree();
        CloseSerialInterface();
        CloseFile();
        KillOutputTimer();
        return;
    }
    ConnectToTree();
    if (m_p->serialEnabled) {
        OpenSerialInterface();
    } else {
        CloseSerialInterface();
    }
    if (m_p->IsFileOn()) {
        OpenFile();
    } else {
        CloseFile();
    }
    if (m_p->interval >= 1 && m_p->timerId == NO_TIMER) {
        StartOutputTimer();
    }
}

void DFDataOutput::Update(Observable* subject, TChangeCode code) {
    DFDataValues& values = m_p->values;
    if (values.LetGoOfBearingIfGoing(subject, code) || !values.IsBearing(subject) ||
        code != TChangeCode::Changed) {
        return;
    }
    if (m_p->timerId != NO_TIMER) {
        ++m_p->counters.leftToInterval;
    } else if (values.MakeHead(values.GetBearing()).quality > 0) {
        SendData();
    } else {
        ++m_p->counters.withoutQuality;
    }
}

DFDataOutput::Counters DFDataOutput::GetCounters() const {
    Counters counters = m_p->counters;
    counters.fileSentences = m_p->file.GetWrittenCount();
    counters.fileDropped = m_p->file.GetDroppedCount();
    if (m_p->serial) {
        AddCounts(counters, m_p->serial->GetCounts());
    }
    return counters;
}

DFDataOutput::Settings DFDataOutput::GetSettings() const {
    return m_p->GetSettings(m_strAddress);
}

QString DFDataOutput::GetFileOfThisRun() const {
    return m_p->fileOfThisRun;
}

void DFDataOutput::SetFileOutput(bool on, const QString& name) {
    if (m_p->fileOfThisRun.isEmpty() && on == m_p->fileEnabled && name == m_p->fileName) {
        return;
    }
    CloseFile();
    m_p->fileOfThisRun.clear();
    m_p->fileEnabled = on;
    m_p->fileName = name;
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    cfg.SetBool(KEY_FILE_ENABLED, on);
    cfg.SetString(KEY_FILE_NAME, name);
    ShowSettings();
    if (m_bEnabled && on) {
        OpenFile();
    }
    SetEnabled(m_p->serialEnabled || on);
}

void DFDataOutput::SetSerialOutput(bool on, const QString& address) {
    if (on == m_p->serialEnabled && address == GetAddress()) {
        return;
    }
    CloseSerialInterface();
    m_p->serialEnabled = on;
    SetAddress(address);
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    cfg.SetBool(KEY_SERIAL_ENABLED, on);
    cfg.SetString(KEY_SERIAL_ADDRESS, address);
    ShowSettings();
    if (m_bEnabled && on) {
        OpenSerialInterface();
    }
    SetEnabled(on || m_p->IsFileOn());
}

void DFDataOutput::SetInterval(int milliseconds) {
    if (milliseconds == m_p->interval) {
        return;
    }
    KillOutputTimer();
    m_p->interval = milliseconds;
    CfgCenter::GetAppCfg(ICfg::View::Outputs).SetInt(KEY_INTERVAL, milliseconds);
    ShowSettings();
    if (m_bEnabled && milliseconds >= 1) {
        StartOutputTimer();
    }
}

DFDataOutput::SinkStatus DFDataOutput::GetFileStatus() const {
    SinkStatus status{.lastFailure = m_p->fileFailure.text, .failureTime = m_p->fileFailure.time};
    if (m_bEnabled && m_p->IsFileOn()) {
        status.state =
            m_p->file.IsOpen() && m_p->file.GetProblem().isEmpty() ? SinkState::Open : SinkState::Failed;
        status.content = m_p->values.GetEmitters() ? Content::Emitters : Content::Full;
    }
    return status;
}

DFDataOutput::SinkStatus DFDataOutput::GetSerialStatus() const {
    SinkStatus status{.lastFailure = m_p->serialFailure.text, .failureTime = m_p->serialFailure.time};
    if (m_bEnabled && m_p->serial) {
        status.state = m_p->serial->IsOpen() && m_p->serialFailures.GetText().isEmpty() ? SinkState::Open
                                                                                        : SinkState::Failed;
        status.content = !m_p->file.IsOpen()         ? Content::Short
                         : m_p->values.GetEmitters() ? Content::Nothing
                                                     : Content::Full;
    }
    return status;
}

bool DFDataOutput::TouchesFile(const QString& outputFile, const QString& file) {
    return DFDataFile::Touches(outputFile, file);
}

QString DFDataOutput::GetLastError() const {
    return m_p->lastError;
}

QStringList DFDataOutput::GetProblems() const {
    QStringList problems;
    if (m_bEnabled && m_p->IsFileOn()) {
        problems += m_p->file.GetProblem();
    }
    if (m_bEnabled && m_p->serial) {
        problems += m_p->serialFailures.GetText();
    }
    problems.removeAll(QString());
    return problems;
}

void DFDataOutput::SlotUpdateConfiguration() {
    UpdateConfigurationFromConfigWidget();
}

void DFDataOutput::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_p->timerId) {
        ZANAbstractInterface::timerEvent(event);
        return;
    }
    if (m_p->values.IsOperating()) {
        SendData();
    } else {
        ++m_p->counters.inStandby;
    }
}

void DFDataOutput::SlotStateChanged() {
    if (m_p->panel) {
        m_p->panel->EnableFields();
    }
}

bool DFDataOutput::ConnectToTree() {
    if (!Tree::Instance()) {
        return false;
    }
    m_p->values.Find(this);
    return true;
}

void DFDataOutput::DisconnectFromTree() {
    m_p->values.LetGo();
}

void DFDataOutput::OpenFile() {
    if (m_p->fileOfThisRun == STANDARD_OUTPUT) {
        m_p->file.OpenStandardOutput();
    } else {
        m_p->file.Open(m_p->fileOfThisRun.isEmpty() ? m_p->fileName : m_p->fileOfThisRun);
    }
}

void DFDataOutput::CloseFile() {
    m_p->file.Close();
}

void DFDataOutput::OpenSerialInterface() {
    if (!m_p->serial) {
        m_p->serialFailures.End(); // those of an earlier line are over
        m_p->serial = std::make_unique<SerialInterface>(GetAddress(), RETRY_MS, SECOND);
    }
}

void DFDataOutput::CloseSerialInterface() {
    if (m_p->serial) {
        m_p->serial->Close();
        AddCounts(m_p->counters, m_p->serial->GetCounts());
        m_p->serial.reset();
    }
}

void DFDataOutput::StartOutputTimer() {
    m_p->timerId = startTimer(m_p->interval);
}

void DFDataOutput::KillOutputTimer() {
    if (m_p->timerId != NO_TIMER) {
        killTimer(std::exchange(m_p->timerId, NO_TIMER));
    }
}

void DFDataOutput::CreateConfigWidget() {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        return; // a program without a display
    }
    m_p->panel = new DFDataOutputPanel;
    connect(m_p->panel, &DFDataOutputPanel::StateChanged, this, &DFDataOutput::SlotStateChanged);
    AdoptConfigWidget(m_p->panel);
}

void DFDataOutput::ReadConfigurationFromFile() {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    m_p->serialEnabled = ReadOrCreateBool(cfg, KEY_SERIAL_ENABLED, false);
    m_p->interval = static_cast<int>(
        std::clamp<qint64>(ReadOrCreateInt(cfg, KEY_INTERVAL, 0), 0, std::numeric_limits<int>::max()));
    SetAddress(ReadOrCreateString(cfg, KEY_SERIAL_ADDRESS, u"COM1:9600,e,8,1"_s));
    m_p->fileEnabled = ReadOrCreateBool(cfg, KEY_FILE_ENABLED, false);
    m_p->fileName = ReadOrCreateString(cfg, KEY_FILE_NAME, u"C:/temp/DFDataOutput.txt"_s);

    if (!m_pConfigWidget) {
        CreateConfigWidget();
    }
    ShowSettings();
    DFDataOutput::SetEnabled(m_p->serialEnabled || m_p->IsFileOn()); // called by the constructor
}

void DFDataOutput::ShowSettings() {
    if (m_p->panel) {
        m_p->panel->Show(GetSettings());
    }
}

void DFDataOutput::SaveConfigurationToFile() {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    cfg.SetBool(KEY_SERIAL_ENABLED, m_p->serialEnabled);
    cfg.SetInt(KEY_INTERVAL, m_p->interval);
    cfg.SetString(KEY_SERIAL_ADDRESS, GetAddress());
    cfg.SetBool(KEY_FILE_ENABLED, m_p->fileEnabled);
    cfg.SetString(KEY_FILE_NAME, m_p->fileName);
    for (const QString& key :
         {KEY_SERIAL_ENABLED, KEY_INTERVAL, KEY_SERIAL_ADDRESS, KEY_FILE_ENABLED, KEY_FILE_NAME}) {
        cfg.CommitKey(key);
    }
}

void DFDataOutput::UpdateConfigurationFromConfigWidget() {
    const auto entered = m_p->panel ? m_p->panel->GetEntered() : std::nullopt;
    if (!entered) {
        return;
    }
    const bool differs = *entered != m_p->GetSettings(GetAddress());
    m_p->serialEnabled = entered->serialEnabled;
    SetAddress(entered->address);
    m_p->fileEnabled = entered->fileEnabled;
    m_p->fileName = entered->fileName;
    m_p->interval = entered->interval;
    if (differs) {
        SetEnabled(false);
        if (m_p->serialEnabled || m_p->IsFileOn()) {
            SetEnabled(true);
        }
    }
}

void DFDataOutput::SendData() {
    if (!m_p->serial && !m_p->IsFileOn()) {
        ++m_p->counters.withoutSink;
        return;
    }
    const BearingResult current = m_p->values.GetBearing();
    const auto* const emitters = m_p->values.GetEmitters();
    if (emitters && m_p->file.IsOpen()) {
        m_p->SendSuperResolution(current, *emitters);
    } else {
        m_p->SendNormal(current);
    }
}

void DFDataOutput::Private::SendNormal(const BearingResult& current) {
    DFDataSentence::Head head = values.MakeHead(current);
    if (head.quality <= 0) {
        head.azimuth = DFDataSentence::Head().azimuth;
    }
    sentence.Begin(head);
    if (file.IsOpen()) {
        // The serial line gets the tail, too, when the file is open.
        sentence.AddTail(values.MakeTail(current));
    }
    sentence.EndLine();
    if (IsFileOn()) {
        file.WriteLine(sentence.GetText());
    }
    if (serial) {
        WriteToSerialInterface();
    }
}

void DFDataOutput::Private::SendSuperResolution(const BearingResult& current,
                                                const std::vector<BearingResult>& emitters) {
    if (emitters.empty()) {
        ++counters.withoutEmitter;
        return;
    }
    file.HoldBack();
    const auto release = qScopeGuard([this] { file.Release(); });
    const DFDataSentence::Time time = values.MakeHead(current).time;
    const DFDataSentence::Tail tail = values.MakeTail(current);
    unsigned number = 0;
    for (const BearingResult& emitter : emitters) {
        DFDataSentence::Head head = values.MakeHead(emitter);
        head.time = time;
        sentence.Begin(head);
        sentence.AddTail(tail);
        sentence.AddElementNumber(number++);
        sentence.EndLine();
        file.WriteLine(sentence.GetText());
    }
    file.WriteLine("\r\n");
}

void DFDataOutput::Private::WriteToSerialInterface() {
    const std::string_view line = sentence.GetText();
    if (serial->WriteToInterface(line.data(), static_cast<int>(line.size()))) {
        if (serialFailures.End()) {
            TRACE.Information([this] { return tr("Writing to %1 works again").arg(serial->GetAddress()); });
        }
        return;
    }
    ++counters.serialDropped;
    const QString problem =
        tr("Writing to %1 failed: %2").arg(serial->GetAddress(), tr("the serial line is not ready"));
    if (serialFailures.Add(problem)) {
        Fail(serialFailure, problem);
    }
}
