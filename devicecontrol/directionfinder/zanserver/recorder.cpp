#include "zanserver/recorder.h"

#include "connections/interruptibleinput.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/dfdataoutput.h"
#include "zancommon/recordingline.h"
#include "zanserver/blockrow.h"
#include "zanserver/drivertext.h"
#include "zanserver/publish.h"
#include "zanserver/recordingfiles.h"
#include "zanserver/servervalue.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <iterator>
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

const QString NO_RECORDING = u"it is there and is not a recording"_s;

constexpr double TENTHS = 10.0;
constexpr qsizetype LONGEST_TEXT = 1000; // bytes, of a text in the tree

/// What a value of the tree has measured.
template <class V>
std::optional<double> Measured(const V& value, double unit = 1.0) {
    return value.GetState() == TValueState::Valid
               ? std::optional(static_cast<double>(value.GetValue()) / unit)
               : std::nullopt;
}

/// Why no recording can be written to a place, whatever is in the file.
QString CheckPlace(const QString& name, const StationFiles& files) {
    if (name == InterruptibleInput::STANDARD_INPUT) {
        return u"it is standard output, and a recording needs a file"_s;
    }
    if (const QStringList own = OutputCheck::FindOverwritten(name, files); !own.isEmpty()) {
        return u"it would overwrite %1, which belongs to the station"_s.arg(own.constFirst());
    }
    if (OutputCheck::IsReplayed(name, files)) {
        return u"it is the recording that is replayed"_s;
    }
    const QFileInfo file(name);
    if (file.exists() && !file.isFile()) {
        return u"it is not a file"_s;
    }
    const QString user = OutputFile::FindUser(name);
    return user.isEmpty() ? QString() : u"it is in use by "_s + user;
}

} // namespace

Recorder::Recorder(StationFiles files, Start start, qint64 bytesPerMegabyte, int retryMs, int watchMs,
                   int stepBackMs)
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
    , m_pRefused(ServerValue<ValueString>(g_vdRecRefused))
    , m_pState(ServerValue<ValueSelection>(g_vdRecState))
    , m_pLastError(ServerValue<ValueString>(g_vdRecLastError))
    , m_pLastErrorTime(ServerValue<ValueTimeStamp>(g_vdRecLastErrorTime))
    , m_pOutputEnabled(ServerValue<ValueBool>(g_vdFileEnabled))
    , m_pOutputFile(ServerValue<ValueString>(g_vdFileName))
    , m_pHeading(ServerValue<ValueNumericInt>(g_vdTrueHeading))
    , m_pPitch(ServerValue<ValueNumericDouble>(g_vdPitch))
    , m_pRoll(ServerValue<ValueNumericDouble>(g_vdRoll))
    , m_pAltitude(ServerValue<ValueNumericDouble>(g_vdAltitude))
    , m_pLatitude(ServerValue<ValueNumericDouble>(g_vdPosLatitude))
    , m_pLongitude(ServerValue<ValueNumericDouble>(g_vdPosLongitude))
    , m_pPositionTime(ServerValue<ValueTimeStamp>(g_vdPosLastUpdate)) {
    ReadSettings(start);
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

void Recorder::ReadSettings(Start start) {
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    m_pEnabled->SetValue(start == Start::AsKept && cfg.GetBool(KEY_ENABLED, false), this);
    m_pFile->SetValue(cfg.GetString(KEY_FILE, {}), this);
    m_wished = m_pFile->GetValue();
    m_pFileSize->SetValue(static_cast<int>(cfg.GetInt(KEY_FILE_SIZE, m_pFileSize->GetValue())), this);
    m_pFileCount->SetValue(static_cast<int>(cfg.GetInt(KEY_FILE_COUNT, m_pFileCount->GetValue())), this);
}

/// Only what was changed: a recorder that is off in this run stays on in the settings.
void Recorder::Store(const Observable* changed) const {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    if (changed == m_pEnabled) {
        cfg.SetBool(KEY_ENABLED, m_pEnabled->GetValue());
    } else if (changed == m_pFile) {
        cfg.SetString(KEY_FILE, m_pFile->GetValue());
    } else if (changed == m_pFileSize) {
        cfg.SetInt(KEY_FILE_SIZE, m_pFileSize->GetValue());
    } else {
        cfg.SetInt(KEY_FILE_COUNT, m_pFileCount->GetValue());
    }
}

void Recorder::Update(Observable* subject, TChangeCode code) {
    if (code == TChangeCode::Changed) {
        if (subject == m_pEnabled || subject == m_pFile) {
            const QString reason = CheckWish();
            m_pRefused->SetValue(Bounded(reason, LONGEST_TEXT), this);
            if (!reason.isEmpty()) {
                m_pEnabled->SetValue(m_timer.isActive(), this);
                m_pFile->SetValue(m_wished, this);
                return;
            }
            m_wished = m_pFile->GetValue();
        }
        Store(subject);
        const bool wasOn = m_timer.isActive();
        if (IsOn() != wasOn || (wasOn && m_pFile->GetValue() != m_name)) {
            Restart();
        }
    }
}

/// Why the file that is wished now cannot be recorded to; empty when it can, or need not.
QString Recorder::CheckWish() const {
    const QString& name = m_pFile->GetValue();
    if (name == m_wished && (!IsOn() || m_timer.isActive())) {
        return {};
    }
    if (name.isEmpty()) {
        return IsOn() ? u"the recorder has no file"_s : QString();
    }
    const QString output = m_pOutputEnabled->GetValue() ? m_pOutputFile->GetValue() : QString();
    const QStringList reasons = OutputCheck::CheckBesideRecorder(output, name);
    const QString reason = reasons.isEmpty() ? CheckFile(name, m_files) : reasons.first();
    return reason.isEmpty() ? QString() : u"%1: %2"_s.arg(name, reason);
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
    if (!m_file.IsOpen()) {
        OpenOrRetry();
    } else if (!m_file.HasName(m_name)) {
        BeginAgain(u"File %1 was removed, moved or replaced while it was recorded"_s.arg(m_name));
    } else {
        CheckSize();
    }
}

/// A row behind a part of another one, or between rows of somebody else, would be lost.
void Recorder::CheckSize() {
    if (m_file.IsOpen() && m_file.GetSize() != m_size) {
        BeginAgain(u"File %1 was changed by another program while it was recorded"_s.arg(m_name));
    }
}

void Recorder::BeginAgain(const QString& problem) {
    m_file.Close();
    Fail(problem);
    OpenOrRetry();
}

void Recorder::OpenOrRetry() {
    m_timer.start(Open() ? m_watchMs : m_retryMs);
}

QString Recorder::CheckFile(const QString& name, const StationFiles& files) {
    const QString reason = CheckPlace(name, files);
    const bool isOther =
        QFileInfo::exists(name) && RecordingFiles::Examine(name) == RecordingFiles::Content::Other;
    return reason.isEmpty() && isOther ? NO_RECORDING : reason;
}

bool Recorder::Open() {
    m_name = m_pFile->GetValue();
    const auto fail = [this](const QString& reason) {
        return Fail(u"Could not open file %1: %2"_s.arg(m_name, reason));
    };
    if (m_pOutputEnabled->GetValue()) {
        if (const QStringList reasons = OutputCheck::CheckBesideRecorder(m_pOutputFile->GetValue(), m_name);
            !reasons.isEmpty()) {
            return fail(reasons.first());
        }
    }
    if (const QString reason = CheckPlace(m_name, m_files); !reason.isEmpty()) {
        return fail(reason);
    }
    m_place = OutputFile::FindPlace(m_name);
    OutputFile previous; // locked until it has its number
    if (previous.OpenExisting(m_place)) {
        if (!MakeRoom(previous)) {
            return false;
        }
    } else if (previous.GetError() != ENOENT) {
        return fail(previous.GetError() == EWOULDBLOCK ? u"it is in use"_s
                                                       : qt_error_string(previous.GetError()));
    }
    previous.Close();
    return BeginFile();
}

/// Whatever holds something that somebody may want goes elsewhere, or stays.
bool Recorder::MakeRoom(OutputFile& previous) {
    switch (RecordingFiles::Examine(m_place)) {
    case RecordingFiles::Content::NoRows:
        return previous.GetSize() == 0 || previous.Empty() ||
               Fail(u"Could not open file %1: %2"_s.arg(m_name, qt_error_string(previous.GetError())));
    case RecordingFiles::Content::Rows:
        if (!MoveToNumber(previous)) {
            return false;
        }
        RemoveOldest();
        return true;
    case RecordingFiles::Content::Damaged: {
        const QString kept = RecordingFiles::NextDamaged(m_place);
        if (!Move(previous, kept)) {
            return false;
        }
        Fail(u"File %1 was damaged, and is kept as %2"_s.arg(m_name, kept));
        return true;
    }
    case RecordingFiles::Content::Other:
        break;
    }
    return Fail(u"Could not open file %1: %2"_s.arg(m_name, NO_RECORDING));
}

/// The header line is written with the first row: a file without rows is empty.
bool Recorder::BeginFile() {
    if (!m_file.OpenOrCreate(m_place)) {
        return Fail(u"Could not open file %1: %2"_s.arg(m_name, qt_error_string(m_file.GetError())));
    }
    m_size = 0;
    m_keptSize = 0;
    m_latestTime = 0;
    return true;
}

bool Recorder::Move(OutputFile& file, const QString& newName) {
    if (newName.isEmpty()) {
        return Fail(u"Could not move file %1: no number is left"_s.arg(m_name));
    }
    return file.Rename(m_place, newName) ||
           Fail(u"Could not move file %1 to %2: %3"_s.arg(m_name, newName, qt_error_string(file.GetError())));
}

bool Recorder::MoveToNumber(OutputFile& file) {
    return Move(file, RecordingFiles::NextNumbered(m_place));
}

void Recorder::RemoveOldest() const {
    const std::map<int, QString> numbered = RecordingFiles::FindNumbered(m_place);
    auto left = std::ssize(numbered) - m_pFileCount->GetValue();
    for (auto file = numbered.cbegin(); left > 0; ++file, --left) {
        if (!IsNeeded(file->second)) {
            QFile::remove(file->second);
        }
    }
}

/// Whether a numbered file stays whatever its number is.
bool Recorder::IsNeeded(const QString& file) const {
    const RecordingFiles::Content content = RecordingFiles::Examine(file);
    return (content != RecordingFiles::Content::Rows && content != RecordingFiles::Content::NoRows) ||
           OutputCheck::IsReplayed(file, m_files) || !OutputFile::FindUser(file).isEmpty();
}

void Recorder::Take(const BearingBlock& block, const std::vector<BearingResult>& bearings) {
    if (!IsOn()) {
        return;
    }
    CheckSize();
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
        NoteError(u"a row was left out: "_s + fault);
    };
    if (const QString fault =
            RecordingLine::AppendRow(m_line, row, RecordingLine::Precision::Full,
                                     KvZANCommon::RECORDING_COLUMNS, KvZANCommon::FURTHER_RECORDING_COLUMNS);
        !fault.isEmpty()) {
        leaveOut(fault);
        return;
    }
    const bool isFull = m_size - m_keptSize + m_line.size() > m_pFileSize->GetValue() * m_bytesPerMegabyte;
    const bool isTooEarly = KvZANCommon::IsTooEarly(row.timeMs, m_latestTime);
    if (isTooEarly && !m_nextStepBack.hasExpired()) {
        leaveOut(u"its time is too early, and a file has just begun because of that"_s);
        return;
    }
    if (isTooEarly) {
        m_nextStepBack.setRemainingTime(m_stepBackMs);
    }
    if (m_file.IsOpen() && m_size > 0 && (isFull || isTooEarly)) {
        const bool isMoved = MoveToNumber(m_file);
        // A file that cannot be moved grows, and is tried again when it has grown as much.
        m_keptSize = m_size;
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
    if (m_size == 0) {
        m_line.prepend(RecordingFiles::Header());
    }
    if (!m_file.IsOpen() || !Write(m_line)) {
        ++m_droppedCount;
        return;
    }
    ++m_rowCount;
    m_latestTime = std::max(m_latestTime, row.timeMs);
    if (!std::exchange(m_problem, {}).isEmpty()) {
        Q_EMIT Recovered();
    }
}

/// Writes lines as a whole or not at all.
bool Recorder::Write(const QByteArray& lines) {
    const auto size = static_cast<std::size_t>(lines.size());
    const std::size_t written = m_file.Write({lines.constData(), size});
    if (written == size) {
        m_size += lines.size();
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
        NoteError(problem);
        Q_EMIT Failed(problem);
    }
    return false;
}

void Recorder::NoteError(const QString& error) {
    m_lastError = error;
    m_lastErrorTime = static_cast<quint64>(QDateTime::currentMSecsSinceEpoch());
}

void Recorder::Publish() {
    const auto state = !IsOn()                                  ? DFDataOutput::SinkState::Off
                       : m_file.IsOpen() && m_problem.isEmpty() ? DFDataOutput::SinkState::Open
                                                                : DFDataOutput::SinkState::Failed;
    m_pState->SetCurrentKey(static_cast<long>(state), this);
    ZANServer::Publish(*m_pLastErrorTime, m_lastErrorTime, this);
    m_pRows->SetValue(static_cast<double>(m_rowCount), this);
    m_pDropped->SetValue(static_cast<double>(m_droppedCount), this);
    m_pLastError->SetValue(Bounded(m_lastError, LONGEST_TEXT), this);
}

} // namespace ZANServer
