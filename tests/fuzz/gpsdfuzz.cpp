#include "fuzz.h"
#include "zanserver/currentreading.h"
#include "zanserver/gpsdreport.h"

#include <cmath>

using namespace ZANServer;
using namespace std::chrono_literals;

namespace {

void RequireWithin(double minimum, const std::optional<double>& number, double maximum) {
    Require(!number || (*number >= minimum && *number <= maximum));
}

} // namespace

/// What comes from gpsd, line by line, one each second: what is out of range is never passed on, and what is
/// too old is never current.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr auto MAX_AGE = 3s;
    CurrentReading<double> latitude(MAX_AGE);
    std::chrono::milliseconds now{};
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    for (const QByteArray& line : input.split('\n')) {
        now += 1s;
        if (const std::optional<GpsdReport> report = GpsdReport::Read(line)) {
            RequireWithin(-90.0, report->latitude, 90.0);
            RequireWithin(-180.0, report->longitude, 180.0);
            RequireWithin(0.0, report->heading, 360.0);
            RequireWithin(-90.0, report->pitch, 90.0);
            RequireWithin(-180.0, report->roll, 180.0);
            Require(!report->altitude || std::isfinite(*report->altitude));
            Require(report->mode >= 0 && report->mode <= 3);
            Require(report->HasFix() || !(report->latitude || report->longitude || report->altitude));
            Require(report->satellitesUsed >= 0 && report->satellitesUsed <= report->satellitesSeen);
            if (report->latitude) {
                latitude.Take(report->receiver, report->time, *report->latitude, now);
            } else {
                latitude.Lose(report->receiver);
            }
        }
        Require(latitude.GetAge(now).value_or(0s) <= MAX_AGE);
    }
    return 0;
}
