#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/directorylock.h"
#include "valueframework/tree.h"
#include "zancommon/zanpath.h"
#include "zanserver/devicecommands.h"
#include "zanserver/driverchoice.h"
#include "zanserver/driverlibrary.h"
#include "zanserver/driverlink.h"
#include "zanserver/station.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/errorteller.h"
#include "zanstation/exitcodes.h"
#include "zanstation/signalwatcher.h"

#include <QEventLoop>

#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

/// Gives a device one command, and waits for what becomes of it.
class Commander final : public IObserver {
public:
    Commander(const DriverChoice& choice, DriverComponentPtr driver)
        : m_link([component = std::shared_ptr<KvZANCommon::IDriverComponent>(
                      std::move(driver))] { return component->CreateDriver(); },
                 choice.address, Station::GetDeviceAddress())
        , m_result(Tree::Instance()->Find<ValueString>(ZANPath::Device(StdDeviceDefinition::g_vdCmdResult))) {
        DriverReceiver& receiver = m_link.GetReceiver();
        QObject::connect(&receiver, &DriverReceiver::BitResultReported, &m_loop,
                         [](const KvZANCommon::ErrorStruct& result) { Console::Print(result.text); });
        QObject::connect(&receiver, &DriverReceiver::ErrorReported, &m_loop,
                         [this](const KvZANCommon::ErrorStruct& error) { m_errorTeller.Tell(error.text); });
        for (const auto signal : {&DriverLink::Lost, &DriverLink::GivenUp}) {
            QObject::connect(&m_link, signal, &m_loop, [this](const QString& reason) { End(reason); });
        }
    }

    /// Returns the exit code.
    int Give(const QString& command, const SignalWatcher& signals) {
        int exitCode = EXIT_OK;
        QObject::connect(&signals, &SignalWatcher::Interrupted, &m_loop, [&](int signal) {
            exitCode = ExitCodeOf(signal);
            m_loop.quit();
        });
        QObject::connect(&m_link, &DriverLink::Connected, &m_loop, [&] {
            m_commands.SetConnected(true);
            m_result->AddObserver(this);
            Tree::Instance()
                ->Find<ValueString>(ZANPath::Device(StdDeviceDefinition::g_vdCmdCommand))
                ->SetValue(command);
        });
        m_link.Open();
        m_loop.exec();
        m_link.Close();
        m_errorTeller.TellRest();
        if (!m_error.isEmpty()) {
            Console::Error(m_error);
            return EXIT_FAILED;
        }
        return exitCode;
    }

    void Update(Observable* /*subject*/, TChangeCode code) override {
        if (code == TChangeCode::Changed && m_result->GetValue() != u"busy") {
            End(Tree::Instance()
                    ->Find<ValueString>(ZANPath::Device(StdDeviceDefinition::g_vdCmdError))
                    ->GetValue());
        }
    }

private:
    void End(const QString& error) {
        m_error = error;
        // Queued: from within a change of the tree, and behind what the device reports of the command.
        QMetaObject::invokeMethod(&m_loop, &QEventLoop::quit, Qt::QueuedConnection);
    }

    QEventLoop m_loop;
    ErrorTeller m_errorTeller;
    DriverLink m_link;
    DriverErrands m_errands{m_link.GetThread()};
    DeviceCommands m_commands{m_errands};
    ValueString* m_result;
    QString m_error;
};

} // namespace

namespace Commands {

int Command(const QStringList& arguments) {
    const QString commands = u"reset|calibrate CONVERTER|bit|bit full|test TEXT|hold|continue CHANNEL"_s;
    CommandLine line(u"command"_s,
                     u"Gives the station's device a command, and prints what it reports. Fails when the "
                     "device does not carry it out."_s,
                     {CommandLine::ComponentsOption()}, commands);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    if (line.Positional().isEmpty()) {
        return CommandLine::Refuse(u"name one of these commands: "_s + commands);
    }
    if (!line.OpenStore()) {
        return EXIT_FAILED;
    }
    // A device serves one program; the station that runs on these settings has it.
    DirectoryLock lock;
    if (!lock.Take(line.GetConfigDirectory())) {
        Console::Error(lock.GetErrorText());
        return EXIT_FAILED;
    }
    line.TakeComponentDirectory();
    const DriverChoice choice = DriverChoice::FromSettings();
    QString fault;
    DriverComponentPtr driver = DriverLibrary::Load(choice.name, fault);
    if (!driver) {
        Console::Error(fault);
        return EXIT_FAILED;
    }
    const SignalWatcher signals;
    int exitCode = EXIT_OK;
    {
        const Station station(choice);
        Commander commander(choice, std::move(driver));
        exitCode = commander.Give(line.Positional().join(u' '), signals);
    }
    return CfgCenter::Close() || exitCode != EXIT_OK ? exitCode : EXIT_FAILED;
}

} // namespace Commands
