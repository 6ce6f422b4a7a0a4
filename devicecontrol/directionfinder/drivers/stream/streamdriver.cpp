#include "stream/streamdriver.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace Stream {

using KvZANCommon::BadLine;
using KvZANCommon::ErrorStruct;
using KvZANCommon::RecordedBearing;

namespace {

/// Between two looks at a FIFO that nobody writes to.
constexpr std::chrono::milliseconds FIFO_PAUSE(50);

QString InputHasEnded() {
    return u"standard input has ended"_s;
}

} // namespace

StreamDriver::StreamDriver()
    : m_reader(m_lines, [this](const QString& text) { ReportBadLine(text); }) {}

StreamDriver::~StreamDriver() {
    Stop();
}

KvZANCommon::DriverDescription StreamDriver::Describe() {
    return {u"stream"_s,
            u"bearings from another program, as lines of CSV or JSON"_s,
            StreamSource::FORM.toString(),
            u"tcp://127.0.0.1:5555"_s,
            {EMODE_FFM, EMODE_SCAN}};
}

int StreamDriver::Initialize(std::string& address, bool /*simulation*/) {
    if (!m_pCallback) {
        return static_cast<int>(Refuse(u"there is no callback"_s));
    }
    Stop();
    m_lines.Close();
    m_address = QString::fromStdString(address);
    Log(u"open "_s + m_address);
    if (m_hasInputEnded && m_address == StreamSource::STANDARD_INPUT) {
        return static_cast<int>(Refuse(InputHasEnded()));
    }
    QString reason;
    m_fifo = StreamSource::FindFifo(m_address);
    m_isOpen = StreamSource::Open(m_lines, m_address, reason);
    return m_isOpen ? static_cast<int>(OK) : static_cast<int>(Refuse(reason));
}

long StreamDriver::SetMode(EMode mode) {
    if (m_pCallback) {
        Log(u"mode "_s + QString::number(mode));
    }
    if (mode != EMODE_STANDBY && mode != EMODE_FFM && mode != EMODE_SCAN) {
        return Refuse(u"mode %1 is not one of standby, fixed frequency, scan"_s.arg(mode), NOT_SUPPORTED);
    }
    const bool isMeasuring = mode != EMODE_STANDBY;
    if (isMeasuring && (!m_isOpen || m_isLost)) {
        return Refuse(m_isOpen ? u"the connection is lost"_s : u"the stream is not open"_s);
    }
    {
        const std::lock_guard lock(m_delivery); // what is being delivered is awaited
        m_isMeasuring = isMeasuring;
    }
    if (isMeasuring && !m_thread.joinable()) {
        m_thread = std::thread([this] { Read(); });
    }
    return OK;
}

/// Ends reading; the source stays as it is.
void StreamDriver::Stop() {
    {
        const std::lock_guard lock(m_delivery);
        m_isMeasuring = false;
    }
    if (m_thread.joinable()) {
        m_lines.Interrupt();
        m_thread.join();
        m_lines.Resume();
    }
    m_hasInputEnded = m_hasInputEnded || (m_isLost && m_address == StreamSource::STANDARD_INPUT);
    m_isOpen = false;
    m_isLost = false;
    m_reader.Reset();
    m_block.Clear();
    m_blockCount = 0;
}

void StreamDriver::Read() {
    ReadToEnd();
    // Closed, a FIFO would lose what the next writer puts into it until it is opened again.
    while (!m_lines.IsInterrupted() && m_lines.GetErrorText().isEmpty() && m_fifo &&
           m_fifo == StreamSource::FindFifo(m_address)) {
        ReportCounts();
        m_reader.Reset();
        std::this_thread::sleep_for(FIFO_PAUSE);
        ReadToEnd();
    }
    if (!m_lines.IsInterrupted()) {
        Lose();
    }
}

void StreamDriver::ReadToEnd() {
    const RecordedBearing* row = m_reader.Next();
    while (row) {
        while (row && m_block.Add(*row)) {
            row = m_reader.NextIfHere(); // a block is not delayed by rows that have not arrived
        }
        Deliver();
        if (!row) {
            row = m_reader.Next();
        }
    }
}

void StreamDriver::Deliver() {
    const std::lock_guard lock(m_delivery);
    if (m_isMeasuring) {
        ++m_blockCount;
        m_block.Deliver(*m_pCallback);
    } else {
        m_block.Clear();
    }
}

void StreamDriver::ReportBadLine(const QString& text) {
    const std::lock_guard lock(m_delivery);
    if (m_isMeasuring) {
        Report(text, false);
    }
}

/// How many lines of this source were bad.
void StreamDriver::ReportCounts() {
    for (int i = 0; i < static_cast<int>(BadLine::COUNT); ++i) {
        const auto reason = static_cast<BadLine>(i);
        if (const quint64 count = m_reader.GetCounts().Get(reason); count > 0) {
            ErrorStruct result{FAILED, false, GetReasonText(reason) + u": "_s + QString::number(count)};
            m_pCallback->ReportBITResult(result);
        }
    }
}

void StreamDriver::Lose() {
    m_isLost = true;
    ReportCounts();
    const QString& failure = m_lines.GetErrorText();
    if (!failure.isEmpty()) {
        Report(m_address + u": "_s + failure, true);
    } else if (m_address == StreamSource::STANDARD_INPUT) {
        Report(InputHasEnded(), true);
    } else {
        Report(m_address + u": the other end has closed it"_s, true);
    }
    m_pCallback->CloseDataLink();
}

long StreamDriver::Refuse(const QString& reason, long code) {
    m_lastError = reason;
    return code;
}

void StreamDriver::Log(QString line) {
    m_pCallback->SetCommandLog(line);
}

void StreamDriver::Report(const QString& text, bool isFatal) {
    ErrorStruct error{FAILED, isFatal, text};
    m_pCallback->reportError(error);
}

} // namespace Stream
