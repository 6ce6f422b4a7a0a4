#include "zanserver/outputvalues.h"

#include "connections/interfacecreator.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "zanserver/drivererrands.h"
#include "zanserver/publish.h"
#include "zanserver/servervalue.h"

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace ZANServer {

namespace {

const QString STANDARD_OUTPUT = u"-"_s;

QString CheckAddress(const QString& address) {
    if (address.toUtf8().size() > OutputValues::LONGEST_ADDRESS) {
        return u"the address of the serial line is longer than %1 bytes"_s.arg(OutputValues::LONGEST_ADDRESS);
    }
    const QString reason = CInterfaceCreator::CheckAddress(address);
    return reason.isEmpty() ? QString()
                            : u"%1 is not the address of a serial line: %2"_s.arg(address, reason);
}

} // namespace

OutputValues::OutputValues(DFDataOutput& output, StationFiles files, int publishMs)
    : m_output(output)
    , m_files(std::move(files))
    , m_file{ServerValue<ValueBool>(g_vdFileEnabled),
             ServerValue<ValueString>(g_vdFileName),
             ServerValue<ValueString>(g_vdFileRefused),
             ServerValue<ValueSelection>(g_vdFileState),
             ServerValue<ValueSelection>(g_vdFileContent),
             ServerValue<ValueNumericDouble>(g_vdFileSentences),
             ServerValue<ValueNumericDouble>(g_vdFileDropped),
             ServerValue<ValueString>(g_vdFileLastError),
             ServerValue<ValueTimeStamp>(g_vdFileLastErrorTime)}
    , m_serial{ServerValue<ValueBool>(g_vdSerEnabled),
               ServerValue<ValueString>(g_vdSerAddress),
               ServerValue<ValueString>(g_vdSerRefused),
               ServerValue<ValueSelection>(g_vdSerState),
               ServerValue<ValueSelection>(g_vdSerContent),
               ServerValue<ValueNumericDouble>(g_vdSerSentences),
               ServerValue<ValueNumericDouble>(g_vdSerDropped),
               ServerValue<ValueString>(g_vdSerLastError),
               ServerValue<ValueTimeStamp>(g_vdSerLastErrorTime)}
    , m_interval(ServerValue<ValueNumericInt>(g_vdOutInterval))
    , m_azimuth(ServerValue<ValueBearing>(g_vdAzimuth))
    , m_isRecording(ServerValue<ValueBool>(g_vdRecEnabled))
    , m_recordFile(ServerValue<ValueString>(g_vdRecFile))
    , m_withoutQuality(ServerValue<ValueNumericDouble>(g_vdOutWithoutQuality))
    , m_leftToInterval(ServerValue<ValueNumericDouble>(g_vdOutLeftToInterval))
    , m_inStandby(ServerValue<ValueNumericDouble>(g_vdOutInStandby))
    , m_withoutEmitter(ServerValue<ValueNumericDouble>(g_vdOutWithoutEmitter))
    , m_withoutSink(ServerValue<ValueNumericDouble>(g_vdOutWithoutSink)) {
    Publish();
    m_interval->AddObserver(this);
    for (const Sink& sink : {m_file, m_serial}) {
        sink.enabled->AddObserver(this);
        sink.address->AddObserver(this);
    }
    m_timer.callOnTimeout([this] { Publish(); });
    m_timer.start(publishMs);
}

void OutputValues::Update(Observable* subject, TChangeCode code) {
    if (code != TChangeCode::Changed) {
        return;
    }
    if (subject == m_azimuth) {
        const bool isPublished = m_azimuth->GetValue().GetQuality() > 0;
        m_whileOff += isPublished && !m_output.IsEnabled() ? 1 : 0;
        return;
    }
    if (subject == m_interval) {
        m_output.SetInterval(m_interval->GetValue());
    } else if (subject == m_file.enabled || subject == m_file.address) {
        SetFile();
    } else {
        SetSerialLine();
    }
    Publish();
}

OutputValues::Choice OutputValues::GetFile() const {
    const DFDataOutput::Settings settings = m_output.GetSettings();
    const QString ofThisRun = m_output.GetFileOfThisRun();
    return ofThisRun.isEmpty() ? Choice{settings.fileEnabled, settings.fileName} : Choice{true, ofThisRun};
}

OutputValues::Choice OutputValues::GetSerialLine() const {
    const DFDataOutput::Settings settings = m_output.GetSettings();
    return {settings.serialEnabled, settings.address};
}

void OutputValues::SetFile() {
    const Choice present = GetFile();
    const Choice wished{m_file.enabled->GetValue(), m_file.address->GetValue()};
    if (wished == present) {
        return;
    }
    const bool isOtherFile = wished.address != present.address;
    const QString reason = wished.on || isOtherFile ? CheckFile(wished.address) : QString();
    if (reason.isEmpty()) {
        // A file of this run only, when it is switched off, gives way to that of the settings.
        m_output.SetFileOutput(wished.on, isOtherFile ? wished.address : m_output.GetSettings().fileName);
    }
    Show(m_file, GetFile());
    m_file.refused->SetValue(Bounded(reason, LONGEST_TEXT), this);
}

void OutputValues::SetSerialLine() {
    const Choice present = GetSerialLine();
    const Choice wished{m_serial.enabled->GetValue(), m_serial.address->GetValue()};
    if (wished == present) {
        return;
    }
    const QString reason =
        wished.on || wished.address != present.address ? CheckAddress(wished.address) : QString();
    if (reason.isEmpty()) {
        m_output.SetSerialOutput(wished.on, wished.address);
    }
    Show(m_serial, GetSerialLine());
    m_serial.refused->SetValue(Bounded(reason, LONGEST_TEXT), this);
}

/// Why sentences cannot go to a file; empty when they can.
QString OutputValues::CheckFile(const QString& name) const {
    if (name == STANDARD_OUTPUT) {
        return u"standard output is only for a run that is started with it"_s;
    }
    const Choice present = GetFile();
    const QStringList reasons =
        OutputCheck::CheckBesideRecorder(name,
                                         m_isRecording->GetValue() ? m_recordFile->GetValue() : QString()) +
        OutputCheck::CheckFile(name, m_files, present.on ? present.address : QString());
    return reasons.value(0);
}

void OutputValues::Show(const Sink& sink, const Choice& choice) {
    sink.enabled->SetValue(choice.on, this);
    sink.address->SetValue(choice.address, this);
}

/// The output itself follows the bearings only while one of its sinks is on.
void OutputValues::FollowBearings() {
    if (m_output.IsEnabled()) {
        m_azimuth->DeleteObserver(this);
    } else {
        m_azimuth->AddObserver(this);
    }
}

void OutputValues::Publish() {
    FollowBearings();
    m_interval->SetValue(m_output.GetSettings().interval, this);
    Show(m_file, GetFile());
    Show(m_serial, GetSerialLine());
    const DFDataOutput::Counters counters = m_output.GetCounters();
    Tell(m_file, m_output.GetFileStatus(), counters.fileSentences, counters.fileDropped);
    Tell(m_serial, m_output.GetSerialStatus(), counters.serialSentences, counters.serialDropped);
    for (const auto& [value, count] : {std::pair{m_withoutQuality, counters.withoutQuality},
                                       {m_leftToInterval, counters.leftToInterval},
                                       {m_inStandby, counters.inStandby},
                                       {m_withoutEmitter, counters.withoutEmitter},
                                       {m_withoutSink, counters.withoutSink + m_whileOff}}) {
        value->SetValue(static_cast<double>(count), this);
    }
}

void OutputValues::Tell(const Sink& sink, const DFDataOutput::SinkStatus& status, quint64 sentences,
                        quint64 dropped) {
    sink.state->SetCurrentKey(static_cast<long>(status.state), this);
    sink.content->SetCurrentKey(static_cast<long>(status.content), this);
    sink.sentences->SetValue(static_cast<double>(sentences), this);
    sink.dropped->SetValue(static_cast<double>(dropped), this);
    ZANServer::Publish(*sink.lastErrorTime,
                       status.lastFailure.isEmpty() ? std::nullopt : std::optional(status.failureTime), this);
    sink.lastError->SetValue(Bounded(status.lastFailure, LONGEST_TEXT), this);
}

} // namespace ZANServer
