#include "zanserver/recorder.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/dfdataoutput.h"
#include "zancommon/recordingline.h"
#include "zancommon/recordingreader.h"
#include "zanserver/blockrow.h"
#include "zanserver/servervalue.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace ZANServer {

namespace {

using KvZANCommon::RecordedBearing;
namespace RecordingLine = KvZANCommon::RecordingLine;

const QString KEY_ENABLED = u"Recorder/Enabled"_s;
const QString KEY_FILE = u"Recorder/File"_s;
const QString KEY_FILE_SIZE = u"Recorder/FileSize"_s;
const QString KEY_FILE_COUNT = u"Recorder/FileCount"_s;

constexpr double TENTHS = 10.0;

/// What a value of the tree has measured.
template <class V>
std::optional<double> Measured(const V& value, double unit = 1.0) {
    return value.GetState() == TValueState::Valid
               ? std::optional(static_cast<double>(value.GetValue()) / unit)
               : std::nullopt;
}

QString NumberedName(const QString& name, int number) {
    const QFileInfo file(name);
    const QString suffix = file.suffix().isEmpty() ? QString() : u'.' + file.suffix();
    return file.dir().filePath(
        u"%1.%2%3"_s.arg(file.completeBaseName()).arg(number, 6, 10, QChar(u'0')).arg(suffix));
}

/// The numbered files of a recording, by their numbers.
std::map<int, QString> FindNumbered(const QString& name) {
    const QFileInfo file(name);
    const QString suffix = file.suffix().isEmpty() ? QString() : u'.' + file.suffix();
    const QRegularExpression numbered(
        QRegularExpression::anchoredPattern(QRegularExpression::escape(file.completeBaseName()) +
                                            u"\\.(\\d{6,9})"_s + QRegularExpression::escape(suffix)));
    std::map<int, QString> found;
    for (const QString& each : file.dir().entryList(QDir::Files | QDir::Hidden)) {
        if (const QRegularExpressionMatch match = numbered.match(each); match.hasMatch()) {
            found[match.captured(1).toInt()] = file.dir().filePath(each);
        }
    }
    return found;
}

} // namespace

Recorder::Recorder(StationFiles files, qint64 bytesPerMegabyte, int retryMs, int watchMs, int stepBackMs)
    : m_files(std::move(files))
    , m_bytesPerMegabyte(bytesPerMegabyte)
    , m_retryMs(retryMs)
    , m_watchMs(watchMs)
    , m_stepBackMs(stepBackMs)
    , m_pEnabled(ServerValue<ValueBool>(g_vdRecEnabled))
    , m_pFile(ServerValue<ValueString>(g_vdRecFile))
    , m_pFileSize(ServerValue<ValueNumericInt>(g_vdRecFileSize))
    , m_pFileCount(ServerValue<ValueNumericInt>(g_vdRecFileCount))
    , m_pRows(ServerValue<ValueNumericDouble>(g_vdRecRows))
    , m_pDropped(ServerValue<ValueNumericDouble>(g_vdRecDropped))
    , m_pLastError(ServerValue<ValueString>(g_vdRecLastError))
    , m_pOutputEnabled(ServerValue<ValueBool>(g_vdFileEnabled))
    , m_pOutputFile(ServerValue<ValueString>(g_vdFileName))
    , m_pHeading(ServerValue<ValueNumericInt>(g_vdTrueHeading))
    , m_pPitch(ServerValue<ValueNumericDouble>(g_vdPitch))
    , m_pRoll(ServerValue<ValueNumericDouble>(g_vdRoll))
    , m_pAltitude(ServerValue<ValueNumericDouble>(g_vdAltitude))
    , m_pLatitude(ServerValue<ValueNumericDouble>(g_vdPosLatitude))
    , m_pLongitude(ServerValue<ValueNumericDouble>(g_vdPosLongitude))
    , m_pPositionTime(ServerValue<ValueTimeStamp>(g_vdPosLastUpdate)) {
    ReadSettings();
    for (ValueBase* const value :
         {static_cast<ValueBase*>(m_pEnabled), static_cast<ValueBase*>(m_pFile),
          static_cast<ValueBase*>(m_pFileSize), static_cast<ValueBase*>(m_pFileCount)}) {
        value->AddObserver(this);
    }
    m_timer.callOnTimeout([this] { OnTimer(); });
    m_publishTimer.callOnTimeout([this] { Publish(); });
    Restart();
}

Recorder::~Recorder() {
    Publish();
}

void Recorder::ReadSettings() {
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    m_pEnabled->SetValue(cfg.GetBool(KEY_ENABLED, false), this);
    m_pFile->SetValue(cfg.GetString(KEY_FILE, {}), this);
    m_pFileSize->SetValue(static_cast<int>(cfg.GetInt(KEY_FILE_SIZE, m_pFileSize->GetValue())), this);
    m_pFileCount->SetValue(static_cast<int>(cfg.GetInt(KEY_FILE_COUNT, m_pFileCount->GetValue())), this);
}

void Recorder::StoreSettings() const {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    cfg.SetBool(KEY_ENABLED, m_pEnabled->GetValue());
    cfg.SetString(KEY_FILE, m_pFile->GetValue());
    cfg.SetInt(KEY_FILE_SIZE, m_pFileSize->GetValue());
    cfg.SetInt(KEY_FILE_COUNT, m_pFileCount->GetValue());
}

void Recorder::Update(Observable* /*subject*/, TChangeCode code) {
    if (code == TChangeCode::Changed) {
        StoreSettings();
        const bool wasOn = m_timer.isActive();
        if (IsOn() != wasOn || (wasOn && m_pFile->GetValue() != m_name)) {
            Restart();
        }
    }
}

void Recorder::Restart() {
    m_file.Close();
    m_timer.stop();
    m_problem.clear(); // that of the file before
    if (IsOn()) {
        m_publishTimer.start(WATCH_MS);
        OpenOrRetry();
    } else {
        m_publishTimer.stop();
    }
    Publish();
    Q_EMIT Switched();
}

void Recorder::OnTimer() {
    if (m_file.IsOpen() && m_file.HasName(m_name)) {
        return;
    }
    if (m_file.IsOpen()) {
        m_file.Close();
        Fail(u"File %1 was removed, moved or replaced while it was recorded"_s.arg(m_name));
    }
    OpenOrRetry();
}

void Recorder::OpenOrRetry() {
    m_timer.start(Open() ? m_watchMs : m_retryMs);
}

QString Recorder::CheckFile(const QString& name, const StationFiles& files) {
    if (const QStringList own = OutputCheck::FindOverwritten(name, files); !own.isEmpty()) {
        return u"it would overwrite %1, which belongs to the station"_s.arg(own.constFirst());
    }
    const QFileInfo file(name);
    if (!file.exists()) {
        return {};
    }
    if (!file.isFile()) {
        return u"it is not a file"_s;
    }
    if (const QString user = OutputFile::FindUser(name); !user.isEmpty()) {
        return u"it is in use by "_s + user;
    }
    KvZANCommon::RecordingReader reader;
    return file.size() == 0 || reader.Open(name) ? QString() : u"it is there and is not a recording"_s;
}

bool Recorder::Open() {
    m_name = m_pFile->GetValue();
    const auto fail = [this](const QString& reason) {
        return Fail(u"Could not open file %1: %2"_s.arg(m_name, reason));
    };
    if (m_pOutputEnabled->GetValue() && DFDataOutput::TouchesFile(m_pOutputFile->GetValue(), m_name)) {
        return fail(u"it is the output, too"_s);
    }
    if (const QString reason = CheckFile(m_name, m_files); !reason.isEmpty()) {
        return fail(reason);
    }
    OutputFile previous; // locked until it has its number
    if (previous.OpenExisting(m_name)) {
        if (QFileInfo(m_name).size() > 0) {
            if (!MoveToNumber()) {
                return false;
            }
            RemoveOldest();
        }
    } else if (previous.GetError() != ENOENT) {
        return fail(previous.GetError() == EWOULDBLOCK ? u"it is in use"_s
                                                       : qt_error_string(previous.GetError()));
    }
    previous.Close();
    return BeginFile();
}

bool Recorder::BeginFile() {
    if (!m_file.OpenOrCreate(m_name)) {
        return Fail(u"Could not open file %1: %2"_s.arg(m_name, qt_error_string(m_file.GetError())));
    }
    m_size = 0;
    m_hasRows = false;
    m_latestTime = 0;
    QByteArray header;
    RecordingLine::AppendHeader(header, KvZANCommon::RECORDING_COLUMNS,
                                KvZANCommon::FURTHER_RECORDING_COLUMNS);
    if (!Write(header)) {
        m_file.Close();
        return false;
    }
    return true;
}

/// Gives the file the next number.
bool Recorder::MoveToNumber() {
    const std::map<int, QString> numbered = FindNumbered(m_name);
    const int number = numbered.empty() ? 1 : numbered.rbegin()->first + 1;
    const QString target = NumberedName(m_name, number);
    if (std::rename(QFile::encodeName(m_name).constData(), QFile::encodeName(target).constData()) != 0) {
        return Fail(u"Could not move file %1 to %2: %3"_s.arg(m_name, target, qt_error_string(errno)));
    }
    return true;
}

void Recorder::RemoveOldest() const {
    std::map<int, QString> numbered = FindNumbered(m_name);
    while (numbered.size() > static_cast<std::size_t>(m_pFileCount->GetValue())) {
        QFile::remove(numbered.begin()->second);
        numbered.erase(numbered.begin());
    }
}

void Recorder::Take(const BearingBlock& block, const std::vector<BearingResult>& bearings) {
    if (!IsOn()) {
        return;
    }
    RecordedBearing row = MakeRow(block);
    if (block.kind == BearingBlock::Kind::SuperResolution && bearings.empty()) {
        row.emitter = RecordedBearing::NO_EMITTER;
        TakeRow(row);
        return;
    }
    for (std::size_t i = 0; i < bearings.size(); ++i) {
        if (block.bearings[i].marker != Bearing().marker) {
            continue;
        }
        BlockRow::Put(block, i, row);
        row.frequency = bearings[i].GetFrequency();
        row.azimuth = bearings[i].GetAzimuth() / TENTHS; // as the antenna is mounted
        TakeRow(row);
    }
}

/// What is the same for all bearings of a block.
RecordedBearing Recorder::MakeRow(const BearingBlock& block) const {
    RecordedBearing row = BlockRow::Begin(block);
    row.heading = Measured(*m_pHeading, TENTHS);
    row.pitch = Measured(*m_pPitch);
    row.roll = Measured(*m_pRoll);
    row.latitude = Measured(*m_pLatitude);
    row.longitude = Measured(*m_pLongitude);
    row.altitude = Measured(*m_pAltitude);
    row.positionTimeMs = Measured(*m_pPositionTime);
    return row;
}

void Recorder::TakeRow(const RecordedBearing& row) {
    m_line.clear();
    const auto leaveOut = [this](const QString& fault) {
        ++m_droppedCount;
        m_lastError = u"a row was left out: "_s + fault;
    };
    if (const QString fault =
            RecordingLine::AppendRow(m_line, row, RecordingLine::Precision::Full,
                                     KvZANCommon::RECORDING_COLUMNS, KvZANCommon::FURTHER_RECORDING_COLUMNS);
        !fault.isEmpty()) {
        leaveOut(fault);
        return;
    }
    const bool isFull = m_size + m_line.size() > m_pFileSize->GetValue() * m_bytesPerMegabyte;
    const bool isTooEarly = KvZANCommon::IsTooEarly(row.timeMs, m_latestTime);
    if (isTooEarly && !m_nextStepBack.hasExpired()) {
        leaveOut(u"its time is too early, and a file has just begun because of that"_s);
        return;
    }
    if (isTooEarly) {
        m_nextStepBack.setRemainingTime(m_stepBackMs);
    }
    if (m_file.IsOpen() && m_hasRows && (isFull || isTooEarly)) {
        const bool isMoved = MoveToNumber();
        m_size = 0; // a file that cannot be moved grows, and is tried again when it has grown as much
        if (isMoved && isFull) { // a clock that is often set back would soon remove every older recording
            RemoveOldest();
        }
        if (isMoved || isTooEarly) {
            m_file.Close();
            if (!isMoved || !BeginFile()) {
                m_timer.start(m_retryMs);
            }
        }
    }
    if (!m_file.IsOpen() || !Write(m_line)) {
        ++m_droppedCount;
        return;
    }
    ++m_rowCount;
    m_hasRows = true;
    m_latestTime = std::max(m_latestTime, row.timeMs);
    if (!std::exchange(m_problem, {}).isEmpty()) {
        Q_EMIT Recovered();
    }
}

/// Writes a line as a whole or not at all.
bool Recorder::Write(const QByteArray& line) {
    const auto size = static_cast<std::size_t>(line.size());
    const std::size_t written = m_file.Write({line.constData(), size});
    if (written == size) {
        m_size += line.size();
        return true;
    }
    const QString reason = qt_error_string(m_file.GetError());
    if (written > 0 && !m_file.TakeBack(written)) {
        m_file.Close(); // the rest of the line would be taken for a part of the next one
        m_timer.start(m_retryMs);
    }
    return Fail(u"Writing to %1 failed: %2"_s.arg(m_name, reason));
}

/// Returns false.
bool Recorder::Fail(const QString& problem) {
    if (std::exchange(m_problem, problem) != problem) {
        m_lastError = problem;
        Q_EMIT Failed(problem);
    }
    return false;
}

void Recorder::Publish() {
    m_pRows->SetValue(static_cast<double>(m_rowCount), this);
    m_pDropped->SetValue(static_cast<double>(m_droppedCount), this);
    m_pLastError->SetValue(m_lastError, this);
}

} // namespace ZANServer
