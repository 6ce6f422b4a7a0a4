#include "zancommon/tcfrequencylistpersistency.h"

#include "kwbase/tracesource.h"
#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/cfgdefault.h"
#include "zancommon/truncation.h"

#include <algorithm>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\tcfrequencylistpersistency");

constexpr QStringView LIST = u"TrafficControlFrequencies";

/// The sub-configuration of the list in a store; null when it cannot be opened.
CfgPtr OpenList(const CfgPtr& store) {
    return CfgPtr(store ? store->GetSubCfg(LIST.toString()) : nullptr);
}

constexpr QStringView ENTRY = u"TCFrequency_";

CfgPtr OpenEntry(ICfg& list, qint64 index) {
    return CfgPtr(list.GetSubCfg(ENTRY.toString() + QString::number(index)));
}

bool IsStored(const ICfg& cfg, const QString& key) {
    return cfg.GetString(key, u"A"_s) == cfg.GetString(key, u"B"_s);
}

/// Whether the list holds any key of an entry.
bool IsEntry(ICfg& list, qint64 index) {
    const CfgPtr entry = OpenEntry(list, index);
    return entry && (IsStored(*entry, u"ChannelID"_s) || IsStored(*entry, u"Frequency"_s) ||
                     IsStored(*entry, u"Alarm"_s));
}

/// The indices below a count that the list has entries for, in order.
std::vector<qint64> GetStoredIndices(ICfg& list, qint64 count) {
    std::vector<qint64> indices;
    for (const QString& name : list.GetSubCfgNames()) {
        const QString number = name.startsWith(ENTRY) ? name.sliced(ENTRY.size()) : QString();
        const qint64 index = number.toLongLong();
        if (number == QString::number(index) && index >= 0 && index < count && IsEntry(list, index)) {
            indices.push_back(index);
        }
    }
    std::sort(indices.begin(), indices.end());
    return indices;
}

/// The channel number; 0, with a trace line, when the stored number is too large.
int ReadChannelID(const ICfg& entry) {
    const qint64 channelID = entry.GetInt(u"ChannelID"_s, 0);
    if (std::in_range<int>(channelID)) {
        return static_cast<int>(channelID);
    }
    TRACE.Information([channelID] {
        return u"The traffic-control channel number %1 of the settings is out of range; 0 is used."_s.arg(
            channelID);
    });
    return 0;
}

} // namespace

TCFrequencyListPersistency::TCFrequencyListPersistency(ValueTrafficControlFrequencyList* list, QString name,
                                                       ICfg::View view)
    : m_pList(list)
    , m_name(std::move(name))
    , m_view(view) {}

void TCFrequencyListPersistency::MakePersistent() {
    const CfgPtr store(m_pList ? CfgCenter::CreateCfg(m_name, m_view, {}) : nullptr);
    const CfgPtr cfg = OpenList(store);
    if (!cfg) {
        return;
    }
    const std::vector<TrafficControlFrequency>& entries = m_pList->GetElements();
    const QString countKey = u"TCFrequencyCount"_s;
    cfg->SetInt(countKey, static_cast<qint64>(entries.size()));
    for (qint64 index = 0; const TrafficControlFrequency& entry : entries) {
        if (const CfgPtr section = OpenEntry(*cfg, index++)) {
            section->SetInt(u"ChannelID"_s, entry.GetChannelID());
            section->SetInt(u"Frequency"_s, Truncate<qint64>(entry.GetFrequency()));
            section->SetInt(u"Alarm"_s, entry.IsAlarmChannel() ? 1 : 0);
        }
    }
    cfg->CommitKey(countKey);
}

void TCFrequencyListPersistency::Restore() {
    const CfgPtr store(m_pList ? CfgCenter::CreateCfg(m_name, m_view, {}) : nullptr);
    const CfgPtr cfg = OpenList(store);
    if (!cfg) {
        return;
    }
    const qint64 count = ReadOrCreateInt(*cfg, u"TCFrequencyCount"_s, 0);
    if (count < 1) {
        return;
    }
    const ValueTransaction transaction = m_pList->CreateTransaction({TChangeCode::ListReplaced}, nullptr);
    m_pList->Clear(nullptr);
    for (const qint64 index : GetStoredIndices(*cfg, count)) {
        const CfgPtr section = OpenEntry(*cfg, index);
        TrafficControlFrequency entry;
        entry.SetChannelID(ReadChannelID(*section));
        entry.SetFrequency(static_cast<double>(section->GetInt(u"Frequency"_s, 0)));
        entry.SetIsAlarmChannel(section->GetBool(u"Alarm"_s, false));
        m_pList->PushBack(entry, nullptr);
    }
}

QString TCFrequencyListPersistency::GetEntryName(qint64 index) {
    return LIST.toString() + u'/' + ENTRY.toString() + QString::number(index);
}

QStringList TCFrequencyListPersistency::GetEntryNames() const {
    const CfgPtr store(CfgCenter::CreateCfg(m_name, m_view, {}));
    const CfgPtr cfg = OpenList(store);
    QStringList names;
    if (cfg) {
        for (const qint64 index : GetStoredIndices(*cfg, cfg->GetInt(u"TCFrequencyCount"_s, 0))) {
            names.append(GetEntryName(index));
        }
    }
    return names;
}

} // namespace KvZANCommon
