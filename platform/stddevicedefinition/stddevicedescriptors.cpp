#include "stddevicedefinition/stddevicedescriptors.h"

#include <array>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace MakeDefault;

namespace StdDeviceDefinition {

namespace {

// The items of the selections in the table. Programs use the keys.
using Items = std::initializer_list<SelItemDesc>;
const Items OPERATION_MODES = {{u"Standby"_s, 0, 0}, {u"FFM"_s, 0, 1},    {u"WidebandFFM"_s, 0, 2},
                               {u"Scan"_s, 0, 3},    {u"Search"_s, 0, 4}, {u"TDMA"_s, 0, 6}};
const Items GAIN_CONTROL_MODES = {{u"AGC"_s, 0, 0}, {u"MGC"_s, 0, 1}};
const Items OFF_ON = {{u"Off"_s, 0, 0}, {u"On"_s, 0, 1}};
const Items HEADING_SOURCES = {
    {u"None"_s, 0, 0}, {u"Compass"_s, 0, 1}, {u"GPS"_s, 0, 2}, {u"Manual"_s, 0, 3}, {u"gpsd"_s, 0, 4}};
const Items POSITION_SOURCES = {{u"None"_s, 0, 0}, {u"GPS"_s, 0, 1}, {u"Manual"_s, 0, 2}, {u"gpsd"_s, 0, 3}};
const Items GPSD_STATES = {
    {u"Off"_s, 0, 0}, {u"Connecting"_s, 0, 1}, {u"Connected"_s, 0, 2}, {u"Waiting"_s, 0, 3}};
const Items FIX_MODES = {{u"Unknown"_s, 0, 0}, {u"NoFix"_s, 0, 1}, {u"2D"_s, 0, 2}, {u"3D"_s, 0, 3}};
const Items OUTPUT_STATES = {{u"Off"_s, 0, 0}, {u"Open"_s, 0, 1}, {u"Failed"_s, 0, 2}};
const Items OUTPUT_CONTENTS = {
    {u"Nothing"_s, 0, 0}, {u"Short"_s, 0, 1}, {u"Full"_s, 0, 2}, {u"Emitters"_s, 0, 3}};
const Items HUB_STATES = {{u"Off"_s, 0, 0}, {u"Started"_s, 0, 1}, {u"Failed"_s, 0, 2}};

} // namespace

#define ZAN_DESCRIPTOR(name, branch, path, maker) const ValueDescriptor name(QStringLiteral(path), maker);
#include "stddevicedefinition/stddevicedescriptors.def"
#undef ZAN_DESCRIPTOR

std::span<const ValueDescriptor* const> GetDescriptors(EBranch branch) {
    static const auto branches = [] {
        constexpr std::array ROWS{
#define ZAN_DESCRIPTOR(name, branch, path, maker) std::pair{EBranch::branch, &(name)},
#include "stddevicedefinition/stddevicedescriptors.def"
#undef ZAN_DESCRIPTOR
        };
        std::array<std::vector<const ValueDescriptor*>, 4> lists;
        for (const auto& [rowBranch, descriptor] : ROWS) {
            lists.at(static_cast<std::size_t>(rowBranch)).push_back(descriptor);
        }
        return lists;
    }();
    return branches.at(static_cast<std::size_t>(branch));
}

void CreateBranch(EBranch branch, const QString& basePath) {
    for (const ValueDescriptor* descriptor : GetDescriptors(branch)) {
        descriptor->CreateBelow(basePath, nullptr);
    }
}

} // namespace StdDeviceDefinition
