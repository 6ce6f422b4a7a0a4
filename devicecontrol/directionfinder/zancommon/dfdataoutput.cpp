#include "zancommon/dfdataoutput.h"

#include "kwbase/errorhandler.h"
#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/cfgdefault.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/dfdatafile.h"
#include "zancommon/dfdatasentence.h"
#include "zancommon/failurerun.h"
#include "zancommon/serialinterface.h"

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QSpinBox>
#include <QTimerEvent>
#include <QWidget>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using DoubleValue = Value<double, FormatFloat<double>>;

const QString KEY_SERIAL_ENABLED = u"RS232Output_Enabled"_s;
const QString KEY_INTERVAL = u"Output_Interval"_s;
const QString KEY_SERIAL_ADDRESS = u"RS232Output_Address"_s;
const QString KEY_FILE_ENABLED = u"FileOutput_Enabled"_s;
const QString KEY_FILE_NAME = u"FileOutput_Address"_s;

constexpr unsigned short RETRY_MS = 5000;
constexpr int WATCH_MS = 1000; // from look to look whether the file is still there
constexpr unsigned short SECOND = 10;
constexpr int NO_TIMER = -1;
constexpr QStringView STANDARD_OUTPUT = u"-";
constexpr long SUPER_RESOLUTION_ACTIVE = 1; // index of the super-resolution status

/// The values of the tree that the sentences are made of; null when absent.
struct TreeValues {
    ObservablePtr<ValueBearing> bearing;
    ObservablePtr<ValueInt> heading;
    ObservablePtr<DoubleValue> altitude;
    ObservablePtr<DoubleValue> roll;
    ObservablePtr<DoubleValue> pitch;
    ObservablePtr<ValueTimeStamp> positionTime;
    ObservablePtr<DoubleValue> latitude;
    ObservablePtr<DoubleValue> longitude;
    ObservablePtr<ValueBearingList> superResolutionBearings;
    ObservablePtr<ValueSelection> superResolutionStatus;
    ObservablePtr<ValueBase> emitterCount; // no part of a sentence
    ObservablePtr<ValueSelection> operationMode;
};

template <class T>
void LookUp(ObservablePtr<T>& value, const QString& path) {
    if (!value) {
        value = Tree::Instance()->Find<T>(path);
    }
}

/// The value when its content holds. What is not measured any more counts as absent: a stale position must
/// not pass as the current one.
template <class T>
T* Current(const ObservablePtr<T>& value) {
    return value && value->GetState() == TValueState::Valid ? value.get() : nullptr;
}

/// Sets a field from a value; a field whose value is absent keeps its marker.
template <class Field, class T>
void Take(Field& field, const ObservablePtr<T>& value) {
    if (const T* current = Current(value)) {
        field = current->GetValue();
    }
}

/// Sets a field from a member of a bearing, likewise.
template <class Field, class T>
void Take(Field& field, const BearingResult& bearing, BearingResult::Member member,
          T (BearingResult::*getter)() const) {
    if (bearing.IsValueValid(member)) {
        field = (bearing.*getter)();
    }
}

/// The bearing; one without any member when it is absent.
BearingResult CurrentBearing(const TreeValues& values) {
    BearingResult bearing;
    Take(bearing, values.bearing);
    return bearing;
}

DFDataSentence::Head MakeHead(const BearingResult& bearing) {
    DFDataSentence::Head head;
    Take(head.azimuth, bearing, BearingResult::AZIMUTH, &BearingResult::GetAzimuth);
    Take(head.frequency, bearing, BearingResult::FREQUENCY, &BearingResult::GetFrequency);
    Take(head.quality, bearing, BearingResult::QUALITY, &BearingResult::GetQuality);
    Take(head.level, bearing, BearingResult::LEVEL, &BearingResult::GetLevel);
    Take(head.time, bearing, BearingResult::TIME_STAMP, &BearingResult::GetTimeStamp);
    return head;
}

DFDataSentence::Tail MakeTail(const BearingResult& bearing, const TreeValues& values) {
    DFDataSentence::Tail tail;
    Take(tail.elevation, bearing, BearingResult::ELEVATION, &BearingResult::GetElevation);
    Take(tail.pitch, values.pitch);
    Take(tail.roll, values.roll);
    Take(tail.altitude, values.altitude);
    // Half a position is none, and the time of one that is lost would pass it off as current.
    if (Current(values.latitude) && Current(values.longitude)) {
        Take(tail.positionTime, values.positionTime);
        Take(tail.latitude, values.latitude);
        Take(tail.longitude, values.longitude);
    }
    return tail;
}

void AddCounts(DFDataOutput::Counters& counters, const SerialInterface::Counts& counts) {
    counters.serialSentences += counts.sent;
    counters.serialDropped += counts.lost;
}

void Trace(const QString& message, unsigned line) {
    TraceInformation([&] { return message; }, u"devicecontrol\\directionfinder\\zancommon\\dfdataoutput"_s,
                     line);
}

} // namespace

struct ZANCOMMON_NO_EXPORT DFDataOutput::Private {
    explicit Private(QString runFile);

    /// Notes a failure of a sink, and traces it.
    void Fail(const QString& text);
    [[nodiscard]] bool IsFileOn() const { return fileEnabled || !fileOfThisRun.isEmpty(); }
    /// The settings panel, while all of it is there.
    [[nodiscard]] bool HasWidgets() const {
        return serialCheck && addressEdit && fileCheck && fileNameEdit && intervalSpin;
    }

    TreeValues values;
    std::unique_ptr<SerialInterface> serial;
    DFDataFile file{RETRY_MS, WATCH_MS};
    DFDataSentence sentence;

    bool serialEnabled = false;
    bool fileEnabled = false;
    QString fileName;
    QString fileOfThisRun; // not in the settings; empty: the one that is
    int interval = 0;      // milliseconds; 0: no timer
    int timerId = NO_TIMER;

    QPointer<QCheckBox> serialCheck;
    QPointer<QLineEdit> addressEdit;
    QPointer<QCheckBox> fileCheck;
    QPointer<QLineEdit> fileNameEdit;
    QPointer<QSpinBox> intervalSpin;

    Counters counters; // without those of the file, and of the serial line that is open
    QString lastError;
    FailureRun serialFailures;
};

DFDataOutput::Private::Private(QString runFile)
    : fileOfThisRun(std::move(runFile)) {
    QObject::connect(&file, &DFDataFile::Failed, &file, [this](const QString& text) { Fail(text); });
    QObject::connect(&file, &DFDataFile::Recovered, &file,
                     [](const QString& text) { Trace(text, __LINE__); });
}

void DFDataOutput::Private::Fail(const QString& text) {
    lastError = text;
    Trace(text, __LINE__);
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
    ValueBearing* const bearing = m_p->values.bearing.get();
    if (!bearing || subject != bearing) {
        return;
    }
    if (code == TChangeCode::GoingAway) {
        bearing->DeleteObserver(this);
        m_p->values.bearing = {};
    } else if (code == TChangeCode::Changed) {
        if (m_p->timerId != NO_TIMER) {
            ++m_p->counters.leftToInterval;
        } else if (MakeHead(CurrentBearing(m_p->values)).quality > 0) {
            SendData();
        } else {
            ++m_p->counters.withoutQuality;
        }
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

bool DFDataOutput::TouchesFile(const QString& outputFile, const QString& file) {
    return OutputFile::IsSameFile(outputFile, file) ||
           OutputFile::IsSameFile(DFDataFile::BackupName(outputFile), file);
}

QString DFDataOutput::GetLastError() const {
    return m_p->lastError;
}

void DFDataOutput::SlotUpdateConfiguration() {
    UpdateConfigurationFromConfigWidget();
}

void DFDataOutput::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_p->timerId) {
        ZANAbstractInterface::timerEvent(event);
        return;
    }
    const ValueSelection* const mode = Current(m_p->values.operationMode);
    if (mode && mode->GetCurrentKey() != 0) {
        SendData();
    } else {
        ++m_p->counters.inStandby;
    }
}

void DFDataOutput::SlotStateChanged() {
    if (!m_p->HasWidgets()) {
        return;
    }
    const bool isSerialChecked = m_p->serialCheck->isChecked();
    const bool isFileChecked = m_p->fileCheck->isChecked();
    m_p->addressEdit->setEnabled(isSerialChecked);
    m_p->fileNameEdit->setEnabled(isFileChecked);
    m_p->intervalSpin->setEnabled(isSerialChecked || isFileChecked);
}

bool DFDataOutput::ConnectToTree() {
    if (!Tree::Instance()) {
        return false;
    }
    TreeValues& values = m_p->values;
    LookUp(values.bearing, u"/ZANServer/Res/DfR/Azimuth"_s);
    LookUp(values.heading, u"/ZANServer/Res/HeaR/TrueHeading"_s);
    LookUp(values.altitude, u"/ZANServer/Res/PosR/Altitude"_s);
    LookUp(values.roll, u"/ZANServer/Res/PosR/Roll"_s);
    LookUp(values.pitch, u"/ZANServer/Res/PosR/Pitch"_s);
    LookUp(values.positionTime, u"/ZANServer/Res/PosR/PosLastUpdate"_s);
    LookUp(values.latitude, u"/ZANServer/Res/PosR/PosLatitude"_s);
    LookUp(values.longitude, u"/ZANServer/Res/PosR/PosLongitude"_s);
    LookUp(values.superResolutionBearings, u"/ZANServer/Res/DfR/AzimuthList"_s);
    LookUp(values.superResolutionStatus, u"/ZANServer/Par/Evt/SRStatus"_s);
    LookUp(values.emitterCount, u"/ZANServer/Res/EvtR/SRNumEmitterResult"_s);
    LookUp(values.operationMode, u"/ZANServer/DevAttr/OperationMode"_s);
    if (values.bearing) {
        values.bearing->AddObserver(this);
    }
    if (values.superResolutionBearings) {
        values.superResolutionBearings->AddObserver(this);
    }
    return true;
}

void DFDataOutput::DisconnectFromTree() {
    if (m_p->values.bearing) {
        m_p->values.bearing->DeleteObserver(this);
    }
    if (m_p->values.superResolutionBearings) {
        m_p->values.superResolutionBearings->DeleteObserver(this);
    }
    m_p->values = {};
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
    m_pConfigWidget = new QWidget;
    m_p->serialCheck = new QCheckBox(tr("RS232"));
    m_p->addressEdit = new QLineEdit;
    m_p->fileCheck = new QCheckBox(tr("File"));
    m_p->fileNameEdit = new QLineEdit;
    m_p->intervalSpin = new QSpinBox;
    m_p->intervalSpin->setRange(0, 10000);
    m_p->intervalSpin->setSingleStep(10);

    auto* layout = new QGridLayout(m_pConfigWidget);
    layout->addWidget(m_p->serialCheck, 0, 0);
    layout->addWidget(new QLabel(tr("Address:")), 0, 1);
    layout->addWidget(m_p->addressEdit, 0, 2);
    layout->addWidget(m_p->fileCheck, 1, 0);
    layout->addWidget(new QLabel(tr("Filename:")), 1, 1);
    layout->addWidget(m_p->fileNameEdit, 1, 2);
    layout->addWidget(new QLabel(tr("Output interval (ms):")), 2, 1);
    layout->addWidget(m_p->intervalSpin, 2, 2);

    connect(m_p->serialCheck, &QCheckBox::stateChanged, this, &DFDataOutput::SlotStateChanged);
    connect(m_p->fileCheck, &QCheckBox::stateChanged, this, &DFDataOutput::SlotStateChanged);
    connect(m_pConfigWidget, &QObject::destroyed, this, &DFDataOutput::SlotOnConfigWidgetDestroyed);
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
    if (m_p->HasWidgets()) {
        m_p->serialCheck->setChecked(m_p->serialEnabled);
        m_p->addressEdit->setText(GetAddress());
        m_p->fileCheck->setChecked(m_p->fileEnabled);
        m_p->fileNameEdit->setText(m_p->fileName);
        m_p->intervalSpin->setValue(m_p->interval);
        SlotStateChanged(); // also for the boxes that stay as they were made
    }
    DFDataOutput::SetEnabled(m_p->serialEnabled || m_p->IsFileOn()); // called by the constructor
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
    if (!m_p->HasWidgets()) {
        return;
    }
    const bool serialEnabled = m_p->serialCheck->isChecked();
    const QString address = m_p->addressEdit->text();
    const bool fileEnabled = m_p->fileCheck->isChecked();
    const QString fileName = m_p->fileNameEdit->text();
    const int interval = m_p->intervalSpin->value();
    const bool differs = serialEnabled != m_p->serialEnabled || address != GetAddress() ||
                         fileEnabled != m_p->fileEnabled || fileName != m_p->fileName ||
                         interval != m_p->interval;
    m_p->serialEnabled = serialEnabled;
    SetAddress(address);
    m_p->fileEnabled = fileEnabled;
    m_p->fileName = fileName;
    m_p->interval = interval;
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
    const TreeValues& values = m_p->values;
    const BearingResult current = CurrentBearing(values);
    const ValueSelection* const status = Current(values.superResolutionStatus);
    if (status && Current(values.superResolutionBearings) &&
        status->GetCurrentIndex() == SUPER_RESOLUTION_ACTIVE && m_p->file.IsOpen()) {
        SendSuperResolution(current);
    } else {
        SendNormal(current);
    }
}

void DFDataOutput::SendNormal(const BearingResult& current) {
    DFDataSentence::Head head = MakeHead(current);
    if (head.quality <= 0) {
        head.azimuth = DFDataSentence::Head().azimuth;
    }
    Take(head.heading, m_p->values.heading);
    m_p->sentence.Begin(head);
    if (m_p->file.IsOpen()) {
        // The serial line takes this too: what it gets depends on whether the file is open.
        m_p->sentence.AddTail(MakeTail(current, m_p->values));
    }
    m_p->sentence.EndLine();
    if (m_p->IsFileOn()) {
        m_p->file.WriteLine(m_p->sentence.GetText());
    }
    if (m_p->serial) {
        WriteToSerialInterface();
    }
}

void DFDataOutput::SendSuperResolution(const BearingResult& current) {
    const auto& bearings = m_p->values.superResolutionBearings->GetElements();
    if (bearings.empty()) {
        ++m_p->counters.withoutEmitter;
        return;
    }
    const Burst burst(*this);
    const DFDataSentence::Time time = MakeHead(current).time;
    const DFDataSentence::Tail tail = MakeTail(current, m_p->values);
    unsigned number = 0;
    for (const BearingResult& bearing : bearings) {
        DFDataSentence::Head head = MakeHead(bearing);
        Take(head.heading, m_p->values.heading);
        head.time = time;
        m_p->sentence.Begin(head);
        m_p->sentence.AddTail(tail);
        m_p->sentence.AddElementNumber(number++);
        m_p->sentence.EndLine();
        m_p->file.WriteLine(m_p->sentence.GetText());
    }
    m_p->file.WriteLine("\r\n");
}

void DFDataOutput::WriteToSerialInterface() {
    const std::string_view line = m_p->sentence.GetText();
    if (m_p->serial->WriteToInterface(line.data(), static_cast<int>(line.size()))) {
        if (m_p->serialFailures.End()) {
            Trace(tr("Writing to %1 works again").arg(GetAddress()), __LINE__);
        }
        return;
    }
    ++m_p->counters.serialDropped;
    const QString problem =
        tr("Writing to %1 failed: %2").arg(GetAddress(), tr("the serial line is not ready"));
    if (m_p->serialFailures.Add(problem)) {
        m_p->Fail(problem);
    }
}
