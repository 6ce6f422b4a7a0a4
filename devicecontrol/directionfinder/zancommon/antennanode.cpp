#include "zancommon/antennanode.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/valuetypes.h"

#include <array>
#include <type_traits>

using namespace StdDeviceDefinition;
using StdDeviceTree::Ant;

namespace {

/// With which part a field is read when not all are.
enum class EPart { IDENTITY, EDITABLE, OTHER };

struct Field {
    const ValueDescriptor& descriptor;
    EPart part;
    void (*read)(const Ant& node, const ValueDescriptor& descriptor, AntennaData& antenna);
    void (*write)(const Ant& node, const ValueDescriptor& descriptor, const AntennaData& antenna,
                  const ZANCharacteristicsTools& tools);
};

template <class T, auto MEMBER>
void ReadMember(const Ant& node, const ValueDescriptor& descriptor, AntennaData& antenna) {
    if (const T* value = node.GetValue<T>(descriptor)) {
        antenna.*MEMBER = static_cast<std::remove_reference_t<decltype(antenna.*MEMBER)>>(value->GetValue());
    }
}

template <class T, auto MEMBER>
void WriteMember(const Ant& node, const ValueDescriptor& descriptor, const AntennaData& antenna,
                 const ZANCharacteristicsTools& /*tools*/) {
    if (T* value = node.GetValue<T>(descriptor)) {
        value->SetValue(static_cast<std::decay_t<decltype(value->GetValue())>>(antenna.*MEMBER));
    }
}

/// A field that is a value of type T.
template <class T, auto MEMBER>
constexpr Field MakeField(const ValueDescriptor& descriptor, EPart part) {
    return {descriptor, part, &ReadMember<T, MEMBER>, &WriteMember<T, MEMBER>};
}

void ReadMethods(const Ant& node, const ValueDescriptor& descriptor, AntennaData& antenna) {
    antenna.dfMethods.clear();
    antenna.dfAlgorithms.clear();
    if (const auto* selection = node.GetValue<ValueSelection>(descriptor)) {
        for (const SelectionItem& item : selection->GetItems()) {
            antenna.dfMethods.push_back(static_cast<quint32>(item.GetKey()));
            antenna.dfAlgorithms.append(item.GetName());
        }
    }
}

void WriteMethods(const Ant& node, const ValueDescriptor& descriptor, const AntennaData& antenna,
                  const ZANCharacteristicsTools& tools) {
    if (auto* selection = node.GetValue<ValueSelection>(descriptor)) {
        for (const quint32 method : antenna.dfMethods) {
            selection->AddItem({tools.TranslateDfMethod(method), 0.0, static_cast<long>(method)});
        }
    }
}

constexpr std::array FIELDS{
    MakeField<ValueString, &AntennaData::name>(g_vdAntName, EPart::IDENTITY),
    MakeField<ValueNumericInt, &AntennaData::handle>(g_vdAntHandle, EPart::IDENTITY),
    MakeField<ValueBool, &AntennaData::enabled>(g_vdAntEnabled, EPart::EDITABLE),
    MakeField<ValueNumericDouble, &AntennaData::minRange>(g_vdAntMinRange, EPart::EDITABLE),
    MakeField<ValueNumericDouble, &AntennaData::maxRange>(g_vdAntMaxRange, EPart::EDITABLE),
    MakeField<ValueBool, &AntennaData::compassEnabled>(g_vdAntCompassEnabled, EPart::EDITABLE),
    MakeField<ValueNumericDouble, &AntennaData::mechOffset>(g_vdAntMechOffset, EPart::EDITABLE),
    MakeField<ValueBool, &AntennaData::compassSupport>(g_vdAntCompassSupport, EPart::EDITABLE),
    Field{g_vdAntDfAlgorithm, EPart::EDITABLE, &ReadMethods, &WriteMethods},
    MakeField<ValueNumericDouble, &AntennaData::minFreq>(g_vdAntMinFreq, EPart::IDENTITY),
    MakeField<ValueNumericDouble, &AntennaData::maxFreq>(g_vdAntMaxFreq, EPart::IDENTITY),
    MakeField<ValueNumericInt, &AntennaData::polarizationSupport>(g_vdAntPolarizationSupport,
                                                                  EPart::EDITABLE),
    MakeField<ValueNumericInt, &AntennaData::polarizationMode>(g_vdAntPolarizationMode, EPart::EDITABLE),
    MakeField<ValueBool, &AntennaData::activePassiveSupport>(g_vdAntActivePassiveSupport, EPart::OTHER),
    MakeField<ValueNumericDouble, &AntennaData::compassValue>(g_vdAntCompassValue, EPart::EDITABLE),
    MakeField<ValueNumericInt, &AntennaData::compassHandle>(g_vdAntCompassHandle, EPart::EDITABLE),
    MakeField<ValueNumericInt, &AntennaData::converterHandle>(g_vdAntConverterHandle, EPart::EDITABLE),
    MakeField<ValueString, &AntennaData::converterTypeName>(g_vdAntConverterTypeName, EPart::EDITABLE),
};

bool IsRead(EPart part, AntennaNode::EValues values) {
    switch (values) {
    case AntennaNode::EValues::IDENTITY:
        return part == EPart::IDENTITY;
    case AntennaNode::EValues::EDITABLE:
        return part == EPart::EDITABLE;
    case AntennaNode::EValues::ALL:
        break;
    }
    return true;
}

} // namespace

void AntennaNode::Read(EValues values, AntennaData& antenna) const {
    for (const Field& field : FIELDS) {
        if (IsRead(field.part, values)) {
            field.read(m_node, field.descriptor, antenna);
        }
    }
}

void AntennaNode::Write(const AntennaData& antenna) const {
    for (const Field& field : FIELDS) {
        field.write(m_node, field.descriptor, antenna, m_tools);
    }
}
