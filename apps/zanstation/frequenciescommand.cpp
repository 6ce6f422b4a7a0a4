#include "tolmappstartup/cfgcenter.h"
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

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

ValueTrafficControlFrequencyList* GetList() {
    return GetOrCreateValue<ValueTrafficControlFrequencyList>(ZANPath::CONTROL.toString() +
                                                              u"TRAFFICCONTROLFREQUENCIES"_s);
}

const QString STORE = u"TrafficControl"_s;

KvZANCommon::TCFrequencyListPersistency GetPersistency(ValueTrafficControlFrequencyList* list) {
    return {list, STORE, ICfg::View::Outputs};
}

/// The section of the store that the entries of the list stand in.
class EntrySections {
public:
    /// The section of an entry; null when the store cannot be had.
    [[nodiscard]] CfgPtr Get(qsizetype index) const {
        return CfgPtr(m_list ? m_list->GetSubCfg(u"TCFrequency_"_s + QString::number(index)) : nullptr);
    }

private:
    const CfgPtr m_store{CfgCenter::CreateCfg(STORE, ICfg::View::Outputs, {})};
    const CfgPtr m_list{m_store ? m_store->GetSubCfg(u"TrafficControlFrequencies"_s) : nullptr};
};

/// Names are the station's own addition to the entries of the list.
const QString NAME_KEY = u"Name"_s;

void StoreNames(const std::vector<NamedChannel>& channels) {
    const EntrySections sections;
    for (qsizetype index = 0; const NamedChannel& channel : channels) {
        if (const CfgPtr section = sections.Get(index++)) {
            section->SetString(NAME_KEY, channel.name);
        }
    }
}

/// Whether the section holds an entry; one that does not is skipped when the list is restored.
bool HoldsEntry(const ICfg& section) {
    const std::array keys{u"ChannelID"_s, u"Frequency"_s, u"Alarm"_s};
    return std::ranges::any_of(keys, [&section](const QString& key) {
        return section.GetString(key, u"0"_s) == section.GetString(key, u"1"_s);
    });
}

/// The names of the first entries of the store, as many as there are channels in the list.
QStringList RestoreNames(qsizetype count) {
    // One that is missing among them does not count; the bound is for a store that another process shortens.
    const qsizetype lastIndex = 2 * count + 1000;
    const EntrySections sections;
    QStringList names;
    for (qsizetype index = 0; names.size() < count && index < lastIndex; ++index) {
        const CfgPtr section = sections.Get(index);
        if (section && HoldsEntry(*section)) {
            names.append(section->GetString(NAME_KEY, {}));
        }
    }
    names.resize(count);
    return names;
}

/// Replaces the list by the channels of a CSV file, and reports the rows that were left out. A file without
/// one row that can be used leaves the list alone. Returns the exit code.
int Import(const QString& fileName, bool asJson) {
    ChannelReader reader;
    if (!reader.Read(fileName)) {
        Console::Error(reader.GetErrorText());
        return EXIT_FAILED;
    }
    const std::vector<NamedChannel>& channels = reader.GetChannels();
    for (const QString& row : reader.GetBadRows()) {
        Console::Warn(row);
    }
    if (channels.empty()) {
        Console::Error(fileName + u": no row can be used; the list stays as it was"_s);
        return EXIT_FAILED;
    }
    ValueTrafficControlFrequencyList* const list = GetList();
    {
        const ValueTransaction transaction = list->CreateTransaction({TChangeCode::ListReplaced}, nullptr);
        list->Clear(nullptr);
        for (const NamedChannel& entry : channels) {
            list->PushBack(entry.channel, nullptr);
        }
    }
    GetPersistency(list).MakePersistent();
    StoreNames(channels);
    if (asJson) {
        Console::PrintJson(
            QJsonDocument(QJsonObject{{u"imported"_s, static_cast<qint64>(channels.size())},
                                      {u"left_out"_s, QJsonArray::fromStringList(reader.GetBadRows())}}));
    } else {
        Console::Tell(u"imported "_s + QString::number(channels.size()) + u" channels, left out "_s +
                      QString::number(reader.GetBadRows().size()) + u" rows"_s);
    }
    return EXIT_OK;
}

/// The list as it is stored.
std::vector<NamedChannel> Restore() {
    ValueTrafficControlFrequencyList* const list = GetList();
    GetPersistency(list).Restore();
    const auto& channels = list->GetElements();
    const QStringList names = RestoreNames(static_cast<qsizetype>(channels.size()));
    std::vector<NamedChannel> named;
    for (qsizetype index = 0; const TrafficControlFrequency& channel : channels) {
        named.push_back({channel, names.at(index++)});
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

int Commands::Frequencies(const QStringList& arguments) {
    const QString actions = u"import FILE|list"_s;
    CommandLine line(
        u"frequencies"_s,
        u"Imports the traffic-control frequencies from a CSV file with a frequency column and, where it is "
        "there, a name column, or lists them."_s,
        {CommandLine::JsonOption()}, actions);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const QStringList words = line.Positional();
    if (words.value(0) == u"import" && words.size() == 2) {
        return line.WithStation([&] { return Import(words.at(1), line.AsJson()); });
    }
    if (words == QStringList{u"list"_s}) {
        return line.WithStation([&line] { return List(line.AsJson()); });
    }
    return CommandLine::Refuse(u"what shall be done? "_s + actions);
}
