#include "valueframework/valueaccess.h"
#include "zancommon/mshmanager.h"
#include "zancommon/zanvaluenames.h"
#include "zanserver/hubvalues.h"
#include "zanserver/station.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/signalwatcher.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using ZANPlatform::GetOrCreateValue;

namespace {

/// Joins the message hub as a receiver or a sender until a signal ends the program. Returns the exit code:
/// that of the signal, or failed when there is no client component; a message then says where it was looked
/// for.
int JoinHub(bool asReceiver, const QString& name) {
    HubValues::PublishRange();
    if (auto* const handover =
            GetOrCreateValue<ValueNumericDouble>(ZANPath::Control(ZANValueName::HANDOVERFREQUENCY))) {
        handover->SetValue(Station::GetCharacteristics().GetMinFreq(OPMODE_FFM), nullptr);
    }

    const SignalWatcher watcher;
    QObject::connect(&watcher, &SignalWatcher::Interrupted, &watcher,
                     [](int signal) { QCoreApplication::exit(ExitCodeOf(signal)); });
    MshManager manager;
    if (asReceiver) {
        manager.CreateMshReceiver(name);
    } else {
        manager.CreateMshSender(name, nullptr);
    }
    if (!manager.IsReceiver() && !manager.IsSender()) {
        Console::Error(HubValues::DescribeFailure());
        return EXIT_FAILED;
    }
    Console::Tell(asReceiver ? u"joined the hub as a receiver"_s : u"joined the hub as a sender"_s);
    Console::Flush(std::chrono::milliseconds(0)); // readers of a pipe or file may wait for this line
    return QCoreApplication::exec();
}

} // namespace

namespace Commands {

int Hub(const QStringList& arguments) {
    const QString roles = u"receive|send"_s;
    CommandLine line(
        u"hub"_s, u"Joins the message hub through the installed client component, until it is interrupted."_s,
        {CommandLine::ComponentsOption(), {u"name"_s, u"Name at the hub."_s, u"NAME"_s}}, roles);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const QString role = line.Positional().value(0);
    if (line.Positional().size() != 1 || (role != u"receive" && role != u"send")) {
        return CommandLine::Refuse(u"name one of these roles: "_s + roles);
    }
    line.TakeComponentDirectory();
    return line.WithStation(
        [&] { return JoinHub(role == u"receive", line.Text(u"name"_s).value_or(QString())); });
}

} // namespace Commands
