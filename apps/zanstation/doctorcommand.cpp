#include "zanstation/doctorcommand.h"

#include "tolmappstartup/cfgcenter.h"
#include "zancommon/zanserverorb.h"
#include "zanstation/broker.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/station.h"

#include <QSerialPortInfo>
#include <QStringList>
#include <QTemporaryFile>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// What was found out about one thing.
struct Finding {
    enum class Verdict { Ok, Absent, Broken };

    Verdict verdict = Verdict::Ok;
    QString text;
};

using Verdict = Finding::Verdict;

Finding ExamineSettings(const QString& directory) {
    if (const QString problem = CfgCenter::GetLastError(); !problem.isEmpty()) {
        return {Verdict::Broken, problem};
    }
    QTemporaryFile file(directory + u"/doctor-XXXXXX"_s);
    return file.open() && file.write("?") == 1 && file.flush()
               ? Finding{Verdict::Ok, u"writable: "_s + directory}
               : Finding{Verdict::Broken, directory + u": "_s + file.errorString()};
}

Finding ExamineSetup() {
    QString verdict;
    const bool isValid = Station::GetCharacteristics().CheckAntennaSetupValidity(nullptr, verdict);
    return {isValid ? Verdict::Ok : Verdict::Broken, verdict};
}

Finding ExamineSerialPorts() {
    QStringList names;
    for (const QSerialPortInfo& port : QSerialPortInfo::availablePorts()) {
        names.append(port.systemLocation());
    }
    return names.isEmpty() ? Finding{Verdict::Absent, u"none seen"_s}
                           : Finding{Verdict::Ok, names.join(u", "_s)};
}

Finding ExamineBroker() {
    Broker::Make();
    ZANServerORB& broker = *ZANServerORB::Instance();
    Finding finding{Verdict::Ok, u"listens on "_s + Broker::DescribeEndpoint()};
    try {
        static_cast<void>(broker.RootPoa());
        static_cast<void>(broker.InsPoa());
    } catch (const CORBA::Exception& exception) {
        finding = {Verdict::Broken, QString::fromLatin1(exception._name()) + u" for the endpoint "_s +
                                        Broker::DescribeEndpoint()};
    }
    Broker::Release();
    return finding;
}

Finding ExamineHubClient() {
    IDllInstance* const client = CfgCenter::CreateDllInstanceByFileName(u"MshClient.dll"_s, {}, false, false);
    if (!client) {
        return {Verdict::Absent, CfgCenter::GetLastError()};
    }
    CfgCenter::DestroyDllInstanceByPointer(client);
    return {Verdict::Ok, u"found"_s};
}

} // namespace

int RunDoctor(const QString& configDirectory) {
    using NamedFinding = std::pair<QString, Finding>;
    const std::array findings{
        NamedFinding{u"settings"_s, ExamineSettings(configDirectory)},
        NamedFinding{u"device setup"_s, ExamineSetup()},
        NamedFinding{u"serial ports"_s, ExamineSerialPorts()},
        NamedFinding{u"broker"_s, ExamineBroker()},
        NamedFinding{u"hub client"_s, ExamineHubClient()},
    };
    int exitCode = EXIT_OK;
    for (const auto& [name, finding] : findings) {
        const QString verdict = finding.verdict == Verdict::Ok       ? u"ok"_s
                                : finding.verdict == Verdict::Absent ? u"none"_s
                                                                     : u"BROKEN"_s;
        Console::Print(verdict.leftJustified(8) + name.leftJustified(14) + finding.text);
        if (finding.verdict == Verdict::Broken) {
            exitCode = EXIT_FAILED;
        }
    }
    return exitCode;
}
