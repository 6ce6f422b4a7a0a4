#include "fuzz.h"
#include "zancommon/displayfilterrange.h"

#include "valueframework/tree.h"

#include <cstring>

using namespace Qt::StringLiterals;

/// Sectors of a device filter: any numbers.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    DeviceFilterRange range;
    for (std::size_t at = 0; at + 2 * sizeof(double) <= size; at += 2 * sizeof(double)) {
        double sector[2];
        std::memcpy(sector, data + at, sizeof sector);
        range.acceptedSectors.emplace_back(sector[0], sector[1]);
    }
    DisplayFilterRange display(u"Ranges"_s, u"/Fuzz"_s);
    display.Reset();
    display.AddDeviceFilterRange(range);
    display.Publish();
    double previous = 0.0;
    for (const QuadFloat& gap :
         Tree::Instance()->Find<ValueQuadFloatList>(u"/Fuzz/Ranges"_s)->GetElements()) {
        Require(gap.third >= previous && gap.third < gap.fourth && gap.fourth <= 359.99);
        previous = gap.fourth;
    }
    return 0;
}
