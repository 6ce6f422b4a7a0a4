#include "valueframework/valueaccess.h"
#include "zancommon/tcfrequencylistpersistency.h"
#include "zancommon/zanvaluenames.h"
#include "zanstation/channelreader.h"
#include "zanstation/commandline.h"
#include "zanstation/commands.h"
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

/// Replaces the list by the channels of a CSV file, and reports the rows that were left out. Returns the exit
/// code.
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

/// Prints the list. Returns the exit code.
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

} // namespace

int Commands::Frequencies(const QStringList& arguments) {
    const QString actions = u"import FILE|list"_s;
    CommandLine line(
        u"frequencies"_s,
        u"Imports the traffic-control frequencies from a CSV file with a name and a frequency column, "
        "or lists them."_s,
        {}, actions);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const QStringList words = line.Positional();
    if (words.value(0) == u"import" && words.size() == 2) {
        return line.WithStation([&words] { return Import(words.at(1)); });
    }
    if (words == QStringList{u"list"_s}) {
        return line.WithStation(List);
    }
    return CommandLine::Refuse(u"what shall be done? "_s + actions);
}
