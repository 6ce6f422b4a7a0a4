#include "zancommon/hwstatustester.h"

#include "kwbase/tracesource.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/icfg.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\hwstatustester");

/// The component that a line of the device information names, if any.
std::optional<QString> ComponentOf(const QString& line) {
    constexpr qsizetype COMPONENT_FIELD = 3;
    if (line.startsWith(">>"_L1) || line.startsWith("Option"_L1)) {
        return {};
    }
    const QStringList fields = line.split(u';');
    return fields.size() > COMPONENT_FIELD ? std::optional(fields.at(COMPONENT_FIELD)) : std::nullopt;
}

} // namespace

HwStatusTester::HwStatusTester(QString path)
    : m_valuePath(std::move(path)) {}

HwStatusTester::HwStatusTester(const HwStatusTester& other)
    : HwStatusTester(other.m_valuePath) {}

HwStatusTester& HwStatusTester::operator=(const HwStatusTester& other) {
    m_valuePath = other.m_valuePath;
    m_installed.clear();
    m_required.clear();
    m_optional.clear();
    m_requirementsEditable = false;
    m_checkRequirements = false;
    return *this;
}

HwStatusTester::~HwStatusTester() = default;

template <class T>
T* HwStatusTester::GetValue(const ValueDescriptor& descriptor) const {
    return Tree::Instance()->Find<T>(Tree::PathBelow(m_valuePath, descriptor.PathName()));
}

void HwStatusTester::ReadHwRequirementsFromTree() {
    const auto readText = [this](const ValueDescriptor& descriptor) {
        const auto* const value = GetValue<ValueString>(descriptor);
        return value ? value->GetValue() : QString();
    };
    const auto readFlag = [this](const ValueDescriptor& descriptor) {
        const auto* const value = GetValue<ValueBool>(descriptor);
        return value && value->GetValue();
    };
    m_required = String2HwSet(readText(g_vdDevRequiredComponents));
    m_optional = String2HwSet(readText(g_vdDevOptionalComponents));
    m_checkRequirements = readFlag(g_vdDevCheckRequirements);
    m_requirementsEditable = readFlag(g_vdDevRequirementsEditable);
}

void HwStatusTester::WriteHwRequirementsToTree() const {
    const auto write = [](auto* value, const auto& content) {
        if (value) {
            value->SetValue(content, nullptr);
        }
    };
    write(GetValue<ValueString>(g_vdDevRequiredComponents), HwSet2String(m_required));
    write(GetValue<ValueString>(g_vdDevOptionalComponents), HwSet2String(m_optional));
    write(GetValue<ValueBool>(g_vdDevCheckRequirements), m_checkRequirements);
    write(GetValue<ValueBool>(g_vdDevRequirementsEditable), m_requirementsEditable);
}

void HwStatusTester::ReadHwRequirementsFromCfg(ICfg* cfg) {
    if (!cfg) {
        return;
    }
    m_required = String2HwSet(cfg->GetString(u"HwRequiredComponents"_s, {}));
    m_optional = String2HwSet(cfg->GetString(u"HwOptionalComponents"_s, {}));
    m_requirementsEditable = cfg->GetBool(u"HwRequirementsEditable"_s, false);
    m_checkRequirements = cfg->GetBool(u"HwCheckRequirements"_s, false);
}

void HwStatusTester::WriteHwRequirementsToCfg(ICfg* cfg) const {
    if (!cfg) {
        return;
    }
    cfg->SetString(u"HwRequiredComponents"_s, HwSet2String(m_required));
    cfg->SetString(u"HwOptionalComponents"_s, HwSet2String(m_optional));
    cfg->SetBool(u"HwRequirementsEditable"_s, m_requirementsEditable);
    cfg->SetBool(u"HwCheckRequirements"_s, m_checkRequirements);
    cfg->CommitKey(u"HwCheckRequirements"_s);
}

void HwStatusTester::ReadHwListFromTree() {
    auto* const pDevInfo = GetValue<ValueSelection>(g_vdDevInfo);
    if (!pDevInfo) {
        TRACE.Assertion(L"pDevInfo");
    }
    ReadHwListFromValue(pDevInfo);
}

void HwStatusTester::ReadHwListFromValue(ValueSelection* info) {
    if (!info) {
        return;
    }
    for (const SelectionItem& line : info->GetItems()) {
        if (const std::optional<QString> component = ComponentOf(line.GetName())) {
            m_installed.insert(*component);
        }
    }
}

bool HwStatusTester::AreRequirementsEditable() {
    return m_requirementsEditable;
}

void HwStatusTester::SetRequirementsEditable(bool editable) {
    m_requirementsEditable = editable;
}

bool HwStatusTester::GetCheckRequirements() {
    return m_checkRequirements;
}

void HwStatusTester::SetCheckRequirements(bool check) {
    m_checkRequirements = check;
}

std::set<QString> HwStatusTester::FindMissingRequiredHardware() const {
    std::set<QString> missing;
    std::ranges::set_difference(m_required, m_installed, std::inserter(missing, missing.end()));
    return missing;
}

std::set<QString> HwStatusTester::FindUnknownHardware() const {
    std::set<QString> unknown;
    std::ranges::copy_if(m_installed, std::inserter(unknown, unknown.end()),
                         [this](const QString& name) { return GetComponentState(name) == NotRequired; });
    return unknown;
}

std::set<QString> HwStatusTester::GetAllComponents() const {
    std::set<QString> all = m_installed;
    all.insert(m_required.begin(), m_required.end());
    all.insert(m_optional.begin(), m_optional.end());
    return all;
}

void HwStatusTester::SetRequiredComponents(std::set<QString> components) {
    m_required = std::move(components);
}

void HwStatusTester::SetOptionalComponents(std::set<QString> components) {
    m_optional = std::move(components);
}

HwStatusTester::HwComponentState HwStatusTester::GetComponentState(const QString& name) const {
    const bool isInstalled = m_installed.contains(name);
    if (m_required.contains(name)) {
        return isInstalled ? RequiredInstalled : RequiredMissing;
    }
    if (m_optional.contains(name)) {
        return isInstalled ? OptionalInstalled : OptionalMissing;
    }
    return NotRequired;
}

QString HwStatusTester::HwSet2String(const std::set<QString>& components) {
    return QStringList(components.begin(), components.end()).join(u';');
}

std::set<QString> HwStatusTester::String2HwSet(const QString& text) {
    const QStringList names = text.split(u';', Qt::SkipEmptyParts);
    return {names.begin(), names.end()};
}
