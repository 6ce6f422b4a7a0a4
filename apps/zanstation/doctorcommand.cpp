#include "connections/interruptibleinput.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/recordingreader.h"
#include "zanserver/broker.h"
#include "zanserver/driverchoice.h"
#include "zanserver/finding.h"
#include "zanserver/plural.h"
#include "zanserver/settingscheck.h"
#include "zanserver/station.h"
#include "zanserver/stationcheck.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QSerialPortInfo>
#include <QStringList>
#include <QTemporaryFile>

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::RecordedBearing;
using KvZANCommon::RecordingReader;

namespace {

using Severity = Finding::Severity;

/// A finding, and the name of what was checked.
struct NamedFinding {
    QString name;
    Finding finding;
};

Finding ExamineSettings(const QString& directory) {
    if (const QString problem = CfgCenter::GetLastError(); !problem.isEmpty()) {
        return {Severity::Error, problem};
    }
    QTemporaryFile file(directory + u"/doctor-XXXXXX"_s);
    return file.open() && file.write("?") == 1 && file.flush()
               ? Finding{Severity::Ok, u"writable: "_s + directory}
               : Finding{Severity::Error, directory + u": "_s + file.errorString()};
}

Finding ExamineSerialPorts() {
    QStringList names;
    for (const QSerialPortInfo& port : QSerialPortInfo::availablePorts()) {
        names.append(port.systemLocation());
    }
    return names.isEmpty() ? Finding{Severity::Absent, u"none seen"_s}
                           : Finding{Severity::Ok, names.join(u", "_s)};
}

Finding ExamineHubClient() {
    IDllInstance* const client = CfgCenter::CreateDllInstanceByFileName(u"MshClient.dll"_s, {}, false, false);
    if (!client) {
        return {Severity::Absent, CfgCenter::GetLastError()};
    }
    CfgCenter::DestroyDllInstanceByPointer(client);
    return {Severity::Ok, u"found"_s};
}

/// Checks whether the recording can be read and an antenna serves each of its frequencies.
Finding ExamineRecording(const QString& fileName) {
    RecordingReader reader;
    if (reader.Open(fileName)) {
        double frequency = 0.0; // of the previous row
        while (const std::optional<RecordedBearing> row = reader.Next()) {
            if (row->frequency == frequency) {
                continue;
            }
            frequency = row->frequency;
            if (const Finding finding = StationCheck::CheckFrequency(frequency);
                finding.severity == Severity::Error) {
                return {Severity::Error, fileName + u": "_s + finding.text};
            }
        }
    }
    if (!reader.GetErrorText().isEmpty()) {
        return {Severity::Error, reader.GetErrorText()};
    }
    const quint64 badLines = reader.GetBadLineCount();
    return {badLines == 0 ? Severity::Ok : Severity::Warning,
            u"%1, %2 skipped: "_s.arg(Plural(reader.GetRowCount(), u"row"_s), Plural(badLines, u"line"_s)) +
                fileName};
}

/// Checks settings, driver, device, recording, gpsd, serial ports, broker and hub client.
std::vector<NamedFinding> Examine(const QString& configDirectory, const std::optional<QString>& recording) {
    std::vector<NamedFinding> findings{{u"settings"_s, ExamineSettings(configDirectory)}};
    const QString address = Station::GetDeviceAddress();
    for (const Findings& each : {CheckSettings(address), CheckMeaning(address), CheckKeys(configDirectory)}) {
        for (const Finding& finding : each) {
            findings.push_back({u"settings"_s, finding});
        }
    }
    const DriverChoice driver = DriverChoice::FromSettings();
    findings.push_back({u"driver"_s, StationCheck::CheckDriver(driver)});
    findings.push_back({u"device type"_s, StationCheck::CheckDeviceType()});
    findings.push_back({u"device setup"_s, StationCheck::CheckAntennaSetup()});
    findings.push_back({u"hardware"_s, StationCheck::CheckHardware()});
    const bool isReplay =
        driver.name == DriverChoice::REPLAY && !InterruptibleInput::IsStream(driver.address);
    if (recording || isReplay) {
        findings.push_back({u"recording"_s, ExamineRecording(recording.value_or(driver.address))});
    }
    if (const std::optional<Finding> gpsd = StationCheck::CheckGpsd()) {
        findings.push_back({u"gpsd"_s, *gpsd});
    }
    findings.push_back({u"serial ports"_s, ExamineSerialPorts()});
    findings.push_back({u"broker"_s, Broker::Check()});
    findings.push_back({u"hub client"_s, ExamineHubClient()});
    return findings;
}

QString GetVerdict(Severity severity) {
    switch (severity) {
    case Severity::Ok:
        return u"ok"_s;
    case Severity::Absent:
        return u"none"_s;
    case Severity::Warning:
        return u"warning"_s;
    case Severity::Error:
        break;
    }
    return u"BROKEN"_s;
}

void Print(const std::vector<NamedFinding>& findings) {
    for (const auto& [name, finding] : findings) {
        Console::Print(GetVerdict(finding.severity).leftJustified(8) + name.leftJustified(14) + finding.text);
    }
}

void PrintAsJson(const std::vector<NamedFinding>& findings) {
    QJsonArray array;
    for (const auto& [name, finding] : findings) {
        array.append(QJsonObject{{u"name"_s, name},
                                 {u"verdict"_s, GetVerdict(finding.severity).toLower()},
                                 {u"text"_s, finding.text}});
    }
    Console::PrintJson(QJsonDocument(QJsonObject{{u"findings"_s, array}}));
}

/// Returns the exit code: failed when something is broken; what is only missing or unusual does not count.
int GetExitCode(const std::vector<NamedFinding>& findings) {
    const bool isBroken = std::ranges::any_of(
        findings, [](const NamedFinding& each) { return each.finding.severity == Severity::Error; });
    return isBroken ? EXIT_FAILED : EXIT_OK;
}

} // namespace

namespace Commands {

int Doctor(const QStringList& arguments) {
    CommandLine line(u"doctor"_s, u"Checks what works on this machine. Fails when something is broken."_s,
                     {CommandLine::ComponentsOption(),
                      {u"recording"_s, u"Checks this recording, too."_s, u"FILE"_s},
                      CommandLine::JsonOption()});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const std::optional<QString> recording = line.Text(u"recording"_s);
    if (recording && InterruptibleInput::IsStream(*recording)) {
        return CommandLine::Refuse(
            u"--recording takes a file here, not a stream, because reading it would use up its bearings: "_s +
            CommandLine::Quote(*recording));
    }
    line.TakeComponentDirectory();
    return line.WithStation([&] {
        const std::vector<NamedFinding> findings = Examine(line.GetConfigDirectory(), recording);
        if (line.AsJson()) {
            PrintAsJson(findings);
        } else {
            Print(findings);
        }
        return GetExitCode(findings);
    });
}

} // namespace Commands
