#include "zanstation/frequenciescommand.h"

#include "valueframework/valueaccess.h"
#include "zancommon/tcfrequencylistpersistency.h"
#include "zancommon/zanvaluenames.h"
#include "zanstation/channelreader.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/frequencytext.h"
#include "zanstation/table.h"

using namespace Qt::StringLiterals;

namespace {

ValueTrafficControlFrequencyList* GetList() {
    return GetOrCreateValue<ValueTrafficControlFrequencyList>(ZANPath::CONTROL.toString() +
                                                              u"TRAFFICCONTROLFREQUENCIES"_s);
}

KvZANCommon::TCFrequencyListPersistency GetPersistency(ValueTrafficControlFrequencyList* list) {
    return {list, u"TrafficControl"_s, ICfg::View::Outputs};
}

} // namespace

namespace FrequenciesCommand {

int Import(const QString& fileName) {
    ChannelReader reader;
    if (!reader.Read(fileName)) {
        Console::Error(reader.GetErrorText());
        return EXIT_FAILED;
    }
    ValueTrafficControlFrequencyList* const list = GetList();
    {
        const ValueTransaction transaction = list->CreateTransaction({TChangeCode::ListReplaced}, nullptr);
        list->Clear(nullptr);
        for (const NamedChannel& entry : reader.GetChannels()) {
            list->PushBack(entry.channel, nullptr);
        }
    }
    GetPersistency(list).MakePersistent();
    for (const QString& row : reader.GetBadRows()) {
        Console::Warn(row);
    }
    Console::Print(u"imported "_s + QString::number(reader.GetChannels().size()) + u" channels, left out "_s +
                   QString::number(reader.GetBadRows().size()) + u" rows"_s);
    return EXIT_OK;
}

int List() {
    ValueTrafficControlFrequencyList* const list = GetList();
    GetPersistency(list).Restore();
    Table table({u"channel"_s, u"frequency"_s, u"alarm"_s});
    for (const TrafficControlFrequency& channel : list->GetElements()) {
        table.Add({QString::number(channel.GetChannelID()), FrequencyText::Format(channel.GetFrequency()),
                   channel.IsAlarmChannel() ? u"yes"_s : u"no"_s});
    }
    table.Print();
    return EXIT_OK;
}

} // namespace FrequenciesCommand
