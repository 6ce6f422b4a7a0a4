#include "zancommon/zanoptions.h"

#include "tolmappstartup/icfg.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/stationcfg.h"

#include <QStringList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

static_assert(ZANOptions::s_aOptionEntries.back().name.isEmpty(), "the table is closed");
static_assert(std::ranges::count_if(ZANOptions::s_aOptionEntries,
                                    [](const auto& entry) { return entry.name.isEmpty(); }) == 1,
              "the table is closed once");
static_assert(std::ranges::all_of(ZANOptions::s_aOptionEntries,
                                  [](const auto& entry) {
                                      return entry.name.isEmpty() == (entry.option == OPTION_NONE);
                                  }),
              "every name has an option");

namespace {

/// Null when there is no text value at the path, or at the end of the process no tree any more.
ValueString* FindText(const QString& path) {
    const Tree* const tree = Tree::Instance();
    return tree ? tree->Find<ValueString>(path) : nullptr;
}

} // namespace

ZANOptions* ZANOptions::m_pInstance = nullptr;

ZANOptions* ZANOptions::Instance() {
    if (!m_pInstance) {
        m_pInstance = new ZANOptions;
    }
    return m_pInstance;
}

void ZANOptions::Finalise() {
    delete std::exchange(m_pInstance, nullptr);
}

ZANOptions::~ZANOptions() = default;

void ZANOptions::AddOption(EZANOptions o) {
    if (o != OPTION_NONE) {
        ++m_options[o];
    }
}

void ZANOptions::RemoveOption(EZANOptions o) {
    m_options.erase(o);
}

void ZANOptions::ClearAllOptions() {
    m_options.clear();
}

bool ZANOptions::HasOption(EZANOptions o) const {
    return o == OPTION_NONE || m_options.contains(o);
}

int ZANOptions::GetOptionCount(EZANOptions o) const {
    const auto found = m_options.find(o);
    return found == m_options.end() ? 0 : found->second;
}

bool ZANOptions::AddOptionByName(const QString& name) {
    const EZANOptions option = GetOptionForName(name);
    AddOption(option);
    return option != OPTION_NONE;
}

bool ZANOptions::AddOptionsFromString(const QString& text) {
    // NOLINTNEXTLINE(readability-use-anyofallof): each round adds an option
    for (const QStringView name : QStringView(text).tokenize(u';')) {
        const EZANOptions option = GetOptionForName(name);
        if (option == OPTION_NONE) {
            return false;
        }
        AddOption(option);
    }
    return true;
}

QString ZANOptions::GetOptionsAsString() const {
    QStringList names;
    for (const auto& [option, count] : m_options) {
        names += QStringList(count, GetNameForOption(option));
    }
    return names.join(u';');
}

bool ZANOptions::ReadFromValueTree(const QString& path) {
    const ValueString* const value = FindText(path);
    if (!value) {
        return false;
    }
    ClearAllOptions();
    return AddOptionsFromString(value->GetValue());
}

bool ZANOptions::WriteToValueTree(const QString& path, IObserver* originator) const {
    ValueString* const value = FindText(path);
    return value && value->SetValue(GetOptionsAsString(), originator);
}

// NOLINTNEXTLINE(readability-make-member-function-const): changes the settings
bool ZANOptions::WriteToCfg() {
    const CfgPtr station(StationCfg::GetStationCfg(StationCfg::GetStationAddress(), true));
    if (!station) {
        return false;
    }
    station->SetString(u"DevOptions"_s, GetOptionsAsString());
    station->CommitKey(u"DevOptions"_s);
    return true;
}

QString ZANOptions::GetNameForOption(EZANOptions option) {
    const auto* const entry = std::ranges::find(s_aOptionEntries, option, &OptionEntry::option);
    return entry == s_aOptionEntries.end() ? QString() : entry->name.toString();
}

EZANOptions ZANOptions::GetOptionForName(QStringView name) {
    const auto* const entry = std::ranges::find(s_aOptionEntries, name, &OptionEntry::name);
    return entry == s_aOptionEntries.end() ? OPTION_NONE : entry->option;
}
