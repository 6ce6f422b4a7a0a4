#include "fuzz.h"
#include "simulator/devicesettings.h"
#include "simulator/platformmotion.h"
#include "simulator/reception.h"
#include "simulator/scanplan.h"
#include "simulator/scenarioreader.h"

#include <cmath>

using namespace Simulator;

/// Scenarios of the simulated device: any file may be its address. What is accepted can be measured in.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray document(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    ScenarioReader reader;
    const std::optional<Scenario> scenario = reader.Read(document);
    Require(scenario.has_value() == reader.GetErrorText().isEmpty());
    if (!scenario) {
        return 0;
    }
    const DeviceSettings settings = MakeInitialSettings(*scenario);
    const PlatformMotion motion(scenario->platform, scenario->seed);
    Reception reception(*scenario);
    for (const double time : {0.0, 1.0, 1e9}) {
        const PlatformMotion::State state = motion.GetState(time);
        Require(std::isfinite(state.heading) && state.heading >= 0.0 && state.heading < 360.0);
        Require(std::abs(state.place.latitude) <= 90.0 && std::abs(state.place.longitude) <= 180.0);
        for (const auto& signal : reception.Receive(time, state.place, 0.0, 1e12)) {
            Require(std::isfinite(signal.power) && signal.azimuth >= 0.0 && signal.azimuth < 360.0);
        }
    }
    const ScanPlan plan(scenario->device, settings, EMODE_SCAN);
    for (const ScanPlan::Hop& hop : plan.GetHops()) {
        Require(hop.count > 0 && hop.duration.count() > 0);
    }
    return 0;
}
