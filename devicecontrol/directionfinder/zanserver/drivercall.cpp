#include "zanserver/drivercall.h"

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ZANServer {

namespace {

struct Row {
    QStringView name;
    std::chrono::milliseconds timeout;
};

// The one place of all time-outs, in the order of `DriverCall`. Each is several times what the slowest device
// of its kind needs, so that only a driver that hangs exceeds it, and short enough for an operator who waits
// for the program's end.
constexpr std::array<Row, 9> ROWS{{
    {u"creating the driver", 5s}, // a constructor that touches no device
    {u"Initialize", 30s}, // a network device that is switched off: two attempts of TCP's connect, 10 s each
    {u"SetMode", 10s},    // standby waits for the block that is being measured, 5 s at the longest
    {u"a setting", 5s},   // one command and its answer, also over a serial line
    {u"a query", 5s},     // the same
    {u"Reset", 60s},      // receivers that boot
    {u"Calibrate", 300s}, // all frequencies of a converter
    {u"BIT", 600s},       // the full test of all components
    {u"destroying the driver", 10s} // as standby
}};

const Row& RowOf(DriverCall call) {
    return ROWS.at(static_cast<std::size_t>(call));
}

} // namespace

std::chrono::milliseconds GetTimeout(DriverCall call) {
    return RowOf(call).timeout;
}

QString GetName(DriverCall call) {
    return RowOf(call).name.toString();
}

} // namespace ZANServer
