#include "zancommon/zancharacteristicstools.h"

#include "zancommon/zandomain.h"

#include <algorithm>
#include <array>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned long UNKNOWN = 0xFFFFFFFF;

template <class Value>
struct Row {
    std::u16string_view name;
    Value value;
};

// In alphabetical order: a method is translated to the first of its names.
constexpr auto s_aMETHODS = std::to_array<Row<EZANMethod>>({
    {u"COR", METHOD_COR},
    {u"COR8", METHOD_COR},
    {u"COR8O", METHOD_COR},
    {u"COR9", METHOD_COR},
    {u"SUPR", METHOD_SUPR},
    {u"VEC", METHOD_VEC},
    {u"VMI", METHOD_VEC},
    {u"VMR", METHOD_VEC},
    {u"WAT", METHOD_WAT},
});
static_assert(std::ranges::adjacent_find(s_aMETHODS, std::ranges::greater_equal(), &Row<EZANMethod>::name) ==
                  s_aMETHODS.end(),
              "the names ascend and are unique");

constexpr auto s_aPOLARISATIONS = std::to_array<Row<EZANPolarisation>>({
    {u"Left", POLARISATION_LEFT},
    {u"Right", POLARISATION_RIGHT},
    {u"Vertical", POLARISATION_VERTICAL},
    {u"Horizontal", POLARISATION_HORIZONTAL},
});

/// The first row of the table with the value; null when there is none.
template <class Table>
const typename Table::value_type* RowOf(const Table& table, unsigned long value) {
    const auto row =
        std::ranges::find(table, value, [](const auto& r) { return static_cast<unsigned long>(r.value); });
    return row == table.end() ? nullptr : &*row;
}

template <class Table>
unsigned long ValueOf(const Table& table, QStringView name) {
    const auto row = std::ranges::find(table, name, [](const auto& r) { return QStringView(r.name); });
    return row == table.end() ? UNKNOWN : static_cast<unsigned long>(row->value);
}

} // namespace

ZANCharacteristicsTools::~ZANCharacteristicsTools() = default;

QString ZANCharacteristicsTools::TranslateDfMethod(unsigned long value) const {
    const auto* const row = RowOf(s_aMETHODS, value);
    return row ? QStringView(row->name).toString() : u"Unknown"_s;
}

unsigned long ZANCharacteristicsTools::TranslateDfMethod(const QString& name) const {
    return ValueOf(s_aMETHODS, name);
}

QString ZANCharacteristicsTools::TranslatePolarisationMode(unsigned long value) const {
    const auto* const row = RowOf(s_aPOLARISATIONS, value);
    return row ? QStringView(row->name).toString() : QString();
}

unsigned long ZANCharacteristicsTools::TranslatePolarisationMode(const QString& name) const {
    return ValueOf(s_aPOLARISATIONS, name);
}
