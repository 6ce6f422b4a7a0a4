#include "tolmappstartup/cfgcenter.h"
#include "valueframework/valueaccess.h"
#include "zancommon/tcfrequencylistpersistency.h"
#include "zancommon/zanvaluenames.h"
#include "zanserver/channelreader.h"
#include "zanserver/frequencytext.h"
#include "zanserver/plural.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/table.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <cstddef>
#include <map>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using ZANPlatform::GetOrCreateValue;

namespace {

ValueTrafficControlFrequencyList* GetList() {
    return GetOrCreateValue<ValueTrafficControlFrequencyList>(ZANPath::Control(u"TRAFFICCONTROLFREQUENCIES"));
}

const QString STORE = u"TrafficControl"_s;

KvZANCommon::TCFrequencyListPersistency GetPersistency(ValueTrafficControlFrequencyList* list) {
    return {list, STORE, ICfg::View::Outputs};
}

/// The key that the station adds to the entries of the list.
const QString NAME_KEY = u"/Name"_s;

CfgPtr OpenStore() {
    return CfgPtr(CfgCenter::CreateCfg(STORE, ICfg::View::Outputs, {}));
}

/// Replaces the list and its names in the file, all at once: the names are saved with the commit of the list.
void Store(ValueTrafficControlFrequencyList* list, const std::vector<NamedChannel>& channels) {
    const CfgPtr store = OpenStore();
    if (!store) {
        return;
    }
    for (qint64 index = 0; const NamedChannel& channel : channels) {
        store->SetString(KvZANCommon::TCFrequencyListPersistency::GetEntryName(index++) + NAME_KEY,
                         channel.name);
    }
    GetPersistency(list).MakePersistent();
}

/// Warns about channel numbers that are in several rows. The list gets all of these rows.
void WarnOfRepeatedNumbers(const std::vector<NamedChannel>& channels) {
    constexpr qsizetype MOST_NAMED = 10;
    std::map<int, quint64> rows;
    for (const NamedChannel& entry : channels) {
        ++rows[entry.channel.GetChannelID()];
    }
    QStringList repeated;
    for (const auto& [number, count] : rows) {
        if (count > 1) {
            repeated.append(u"number %1 in %2"_s.arg(QString::number(number), Plural(count, u"row"_s)));
        }
    }
    if (!repeated.isEmpty()) {
        const QString further = repeated.size() > MOST_NAMED ? u", ..."_s : QString();
        const QString isOrAre = repeated.size() == 1 ? u"is"_s : u"are"_s;
        Console::Warn(u"%1 %2 in several rows, which are all imported: "_s.arg(
                          Plural(static_cast<quint64>(repeated.size()), u"channel number"_s), isOrAre) +
                      repeated.first(std::min(repeated.size(), MOST_NAMED)).join(u", "_s) + further);
    }
}

/// Replaces the list by the channels of a CSV file. A file without a usable row does not change the list.
/// Returns the exit code.
int Import(const QString& fileName, ChannelReader& reader) {
    if (!reader.Read(fileName)) {
        Console::Error(reader.GetErrorText());
        return EXIT_FAILED;
    }
    const std::vector<NamedChannel>& channels = reader.GetChannels();
    for (const QString& row : reader.GetBadRows()) {
        Console::Warn(row);
    }
    if (channels.empty()) {
        Console::Error(fileName + u": no row can be used; the list is not changed"_s);
        return EXIT_FAILED;
    }
    WarnOfRepeatedNumbers(channels);
    ValueTrafficControlFrequencyList* const list = GetList();
    {
        const ValueTransaction transaction = list->CreateTransaction({TChangeCode::ListReplaced}, nullptr);
        list->Clear(nullptr);
        for (const NamedChannel& entry : channels) {
            list->PushBack(entry.channel, nullptr);
        }
    }
    Store(list, channels);
    return EXIT_OK;
}

/// Prints what was imported, and the rows that were left out.
void PrintImported(const ChannelReader& reader, bool asJson) {
    const std::size_t count = reader.GetChannels().size();
    if (asJson) {
        Console::PrintJson(
            QJsonDocument(QJsonObject{{u"imported"_s, static_cast<qint64>(count)},
                                      {u"left_out"_s, QJsonArray::fromStringList(reader.GetBadRows())}}));
    } else {
        Console::Tell(u"imported "_s + Plural(count, u"channel"_s) + u", left out "_s +
                      Plural(static_cast<quint64>(reader.GetBadRows().size()), u"row"_s));
    }
}

/// Whether the list can be restored without losing anything: `Restore` would replace an invalid count by the
/// default, but the operator is to correct it.
bool CanRestore(const ICfg& store) {
    const QString key = u"TrafficControlFrequencies/TCFrequencyCount"_s;
    return store.GetString(key, {}).isNull() || store.GetInt(key, 0) == store.GetInt(key, 1);
}

/// The list as it is stored.
std::vector<NamedChannel> Restore() {
    ValueTrafficControlFrequencyList* const list = GetList();
    const CfgPtr store = OpenStore();
    if (!store) {
        return {};
    }
    if (CanRestore(*store)) {
        GetPersistency(list).Restore();
    }
    const QStringList entries = GetPersistency(list).GetEntryNames();
    std::vector<NamedChannel> named;
    for (qsizetype index = 0; const TrafficControlFrequency& channel : list->GetElements()) {
        named.push_back({channel, store->GetString(entries.value(index++) + NAME_KEY, {})});
    }
    return named;
}

/// For people.
void Print(const std::vector<NamedChannel>& channels) {
    Table table({u"channel"_s, u"name"_s, u"frequency"_s, u"alarm"_s});
    for (const auto& [channel, name] : channels) {
        table.Add({QString::number(channel.GetChannelID()), name.isEmpty() ? u"-"_s : name,
                   FrequencyText::Format(channel.GetFrequency()),
                   channel.IsAlarmChannel() ? u"yes"_s : u"no"_s});
    }
    table.Print();
}

/// For programs.
void PrintAsJson(const std::vector<NamedChannel>& channels) {
    QJsonArray array;
    for (const auto& [channel, name] : channels) {
        QJsonObject object{{u"channel"_s, channel.GetChannelID()},
                           {u"frequency_hz"_s, channel.GetFrequency()},
                           {u"alarm"_s, channel.IsAlarmChannel()}};
        if (!name.isEmpty()) {
            object[u"name"_s] = name;
        }
        array.append(object);
    }
    Console::PrintJson(QJsonDocument(QJsonObject{{u"channels"_s, array}}));
}

/// Prints the list. Returns the exit code.
int List(bool asJson) {
    const std::vector<NamedChannel> channels = Restore();
    if (asJson) {
        PrintAsJson(channels);
    } else {
        Print(channels);
    }
    return EXIT_OK;
}

} // namespace

namespace Commands {

int Frequencies(const QStringList& arguments) {
    const QString actions = u"import FILE|list"_s;
    CommandLine line(
        u"frequencies"_s,
        u"Imports the traffic-control frequencies from a CSV file with a frequency column and, optionally, "
        "a name column, or lists them."_s,
        {CommandLine::JsonOption()}, actions);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const QStringList words = line.Positional();
    if (words.value(0) == u"import" && words.size() == 2) {
        if (words.at(1).isEmpty()) {
            return CommandLine::Refuse(u"import needs the name of a file"_s);
        }
        ChannelReader reader;
        const int exitCode = line.WithStation([&] { return Import(words.at(1), reader); });
        if (exitCode == EXIT_OK) { // so it has been saved
            PrintImported(reader, line.AsJson());
        }
        return exitCode;
    }
    if (words == QStringList{u"list"_s}) {
        return line.WithStation([&line] { return List(line.AsJson()); });
    }
    return CommandLine::Refuse(u"name one of these actions: "_s + actions);
}

} // namespace Commands
