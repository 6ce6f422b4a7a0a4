#include "replay/replaydriver.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace Replay {

using KvZANCommon::RecordedBearing;
using KvZANCommon::RecordingReader;

namespace {

constexpr double AS_FAST_AS_POSSIBLE = 0.0;

} // namespace

ReplayDriver::ReplayDriver(KvZANCommon::ILegacyDriverCallback& callback)
    : m_callback(callback) {}

ReplayDriver::~ReplayDriver() {
    Stop();
}

KvZANCommon::DriverDescription ReplayDriver::Describe() {
    return {u"replay"_s, u"replays a recording of bearings"_s, u"FILE"_s, u"bearings.csv"_s, {EMODE_SCAN}};
}

int ReplayDriver::Initialize(std::string& recording, bool /*simulation*/) {
    Stop();
    m_reader.Resume();
    m_reportedLines = 0;
    m_toldProgress = 0.0;
    m_blockCount = 0;
    const QString name = QString::fromStdString(recording);
    ReportCommand(u"open "_s + name);
    m_lastError = m_reader.Open(name) ? QString() : m_reader.GetErrorText();
    return static_cast<int>(m_lastError.isEmpty() ? OK : FAILED);
}

QString ReplayDriver::GetLastError() {
    return m_lastError;
}

void ReplayDriver::ClearLastError() {
    m_lastError.clear();
}

long ReplayDriver::SetMode(EMode mode) {
    Stop();
    ReportCommand(u"mode "_s + QString::number(mode));
    if (mode != EMODE_STANDBY) {
        Start();
    }
    return OK;
}

long ReplayDriver::SetTest(QString command) {
    ReportCommand(u"test "_s + command);
    const QStringList words = command.simplified().split(u' ');
    if (words.size() != 2 || words[0] != u"speed") {
        m_lastError = u"\"%1\" is not known; there is: speed realtime|N|max"_s.arg(command);
        return FAILED;
    }
    bool isNumber = words[1] == u"realtime" || words[1] == u"max";
    const double pace =
        isNumber ? (words[1] == u"max" ? AS_FAST_AS_POSSIBLE : 1.0) : words[1].toDouble(&isNumber);
    if (!isNumber || !std::isfinite(pace) || (pace <= 0.0 && words[1] != u"max")) {
        m_lastError = u"speed takes realtime, max or a number above 0, not "_s + words[1];
        return FAILED;
    }
    m_pace = pace;
    return OK;
}

void ReplayDriver::Start() {
    m_isStopping = false;
    m_reader.Resume();
    m_firstTime.reset();
    m_toldPosition.reset();
    m_thread = std::thread([this] { Replay(); });
}

void ReplayDriver::Stop() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_stopRequested.notify_all();
    m_reader.Interrupt();
    m_thread.join();
}

void ReplayDriver::Replay() {
    std::optional<RecordedBearing> row = Tell(m_reader.Next());
    while (row && WaitFor(row->timeMs)) {
        TellPosition(*row);
        while (row && m_block.Add(*row)) {
            row = Tell(m_reader.NextIfHere()); // a block is not delayed by rows that have not arrived
        }
        ++m_blockCount;
        m_block.Deliver(m_callback);
        if (!row) {
            row = Tell(m_reader.Next());
        }
    }
    // A stream that is stopped before its header line has arrived looks like an empty one.
    if (!m_reader.GetErrorText().isEmpty() && !IsStopping()) {
        Report(m_reader.GetErrorText(), true);
    }
    TellBadLines();
    ReportCommand(u"end of the recording"_s);
    m_callback.CloseDataLink();
}

/// Reports the progress and the bad lines that were found while reading a row; returns the row.
std::optional<RecordedBearing> ReplayDriver::Tell(std::optional<RecordedBearing> row) {
    TellProgress();
    while (m_reportedLines < m_reader.GetBadLineTexts().size()) {
        Report(m_reader.GetBadLineTexts().at(m_reportedLines++), false);
    }
    return row;
}

void ReplayDriver::TellProgress() {
    constexpr double STEP = 0.01;
    double progress = m_reader.GetProgress();
    if (progress >= m_toldProgress + STEP || (progress >= 1.0 && m_toldProgress < 1.0)) {
        m_toldProgress = progress;
        m_callback.fillTestValuesBuffer(&progress, 1);
    }
}

/// One result per kind of bad lines, with their number.
void ReplayDriver::TellBadLines() {
    for (int i = 0; i < static_cast<int>(RecordingReader::BadLine::COUNT); ++i) {
        const auto reason = static_cast<RecordingReader::BadLine>(i);
        if (const quint64 count = m_reader.GetBadLineCount(reason); count > 0) {
            KvZANCommon::ErrorStruct result{
                FAILED, false, KvZANCommon::GetReasonText(reason) + u": "_s + QString::number(count)};
            m_callback.ReportBITResult(result);
        }
    }
}

void ReplayDriver::Report(const QString& text, bool isFatal) {
    KvZANCommon::ErrorStruct error{FAILED, isFatal, text};
    m_callback.reportError(error);
}

void ReplayDriver::ReportCommand(QString command) {
    m_callback.SetCommandLog(command);
}

bool ReplayDriver::IsStopping() {
    const std::lock_guard lock(m_mutex);
    return m_isStopping;
}

bool ReplayDriver::WaitFor(quint64 recordedTime) {
    std::unique_lock lock(m_mutex);
    if (m_pace == AS_FAST_AS_POSSIBLE) {
        return !m_isStopping;
    }
    if (!m_firstTime) {
        m_firstTime = recordedTime;
        m_begin = std::chrono::steady_clock::now();
    }
    constexpr double LONGEST = 1e12; // ms, some thirty years; the clock counts some hundred years
    const quint64 recorded = std::max(recordedTime, *m_firstTime) - *m_firstTime; // a row may be earlier
    const std::chrono::duration<double, std::milli> sinceFirst(
        std::min(static_cast<double>(recorded) / m_pace, LONGEST));
    const auto due = m_begin + std::chrono::duration_cast<std::chrono::steady_clock::duration>(sinceFirst);
    return !m_stopRequested.wait_until(lock, due, [this] { return m_isStopping; });
}

/// A recording with the time of the position has the position that a station has used. It is told when it
/// changes; a time of 0 means that the time is not known.
void ReplayDriver::TellPosition(const RecordedBearing& platform) {
    const Position position{platform.latitude, platform.longitude, platform.positionTimeMs};
    if (m_reader.HasColumn("position_time_ms") && std::exchange(m_toldPosition, position) != position) {
        const bool isValid = platform.latitude && platform.longitude;
        m_callback.fillGPSData(platform.latitude.value_or(0.0), platform.longitude.value_or(0.0),
                               static_cast<unsigned long long>(platform.positionTimeMs.value_or(0.0)),
                               isValid, 0, 0);
    }
}

} // namespace Replay
