#include "zanstation/hubcommand.h"

#include "tolmappstartup/cfgcenter.h"
#include "valueframework/valueaccess.h"
#include "zancommon/mshmanager.h"
#include "zancommon/zanvaluenames.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/signalwatcher.h"
#include "zanstation/station.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

/// A frequency of the control application, which the hub's client uses.
void Publish(QStringView name, double frequency) {
    if (auto* value = GetOrCreateValue<ValueNumericDouble>(ZANPath::CONTROL.toString() + name.toString())) {
        value->SetValue(frequency, nullptr);
    }
}

} // namespace

int JoinHub(bool asReceiver, const QString& name) {
    const ZANCharacteristics& characteristics = Station::GetCharacteristics();
    Publish(ZANValueName::SYSMINFREQ, characteristics.GetMinFreq(OPMODE_FFM));
    Publish(ZANValueName::SYSMAXFREQ, characteristics.GetMaxFreq(OPMODE_FFM));
    Publish(ZANValueName::HANDOVERFREQUENCY, characteristics.GetMinFreq(OPMODE_FFM));

    const SignalWatcher watcher;
    QObject::connect(&watcher, &SignalWatcher::Interrupted, &watcher, [] { QCoreApplication::quit(); });
    MshManager manager;
    if (asReceiver) {
        manager.CreateMshReceiver(name);
    } else {
        manager.CreateMshSender(name, nullptr);
    }
    if (!manager.IsReceiver() && !manager.IsSender()) {
        Console::Error(u"there is no client of the message hub: "_s + CfgCenter::GetLastError());
        return EXIT_FAILED;
    }
    Console::Print(asReceiver ? u"joined the hub as a receiver"_s : u"joined the hub as a sender"_s);
    QCoreApplication::exec();
    return EXIT_OK;
}
