#include "zancommon/nulldriver.h"
#include "support/driveroperations.h"
#include "zancommon/nulldrivercallback.h"
#include "zancommon/nulllegacydriver.h"

#include <gtest/gtest.h>

#include <string_view>
#include <tuple>
#include <type_traits>

namespace KvZANCommon {
namespace {

class BareLegacyDriver final : public NullLegacyDriver {};
class BareCallback final : public NullDriverCallback {};

/// Calls an operation with arguments of nothing.
template <class Partner, class Interface, class Result, class... Arguments>
Result Call(Partner& partner, Result (Interface::*operation)(Arguments...)) {
    std::tuple<std::remove_cvref_t<Arguments>...> arguments{};
    Interface& interface = partner;
    return std::apply([&](auto&... each) { return (interface.*operation)(each...); }, arguments);
}

/// What is expected of an operation of a driver, by its kind of result.
template <class Partner, class Interface, class Result, class... Arguments>
void ExpectUnsupported(std::string_view name, Partner& driver, Result (Interface::*operation)(Arguments...)) {
    if constexpr (std::is_void_v<Result>) {
        Call(driver, operation);
    } else if constexpr (std::is_same_v<Result, QString>) {
        EXPECT_EQ(Call(driver, operation), QString()) << name;
    } else {
        const bool isCount = name == "GetMaxChannelCount" || name == "GetReadCount";
        EXPECT_EQ(Call(driver, operation), isCount ? 0 : -1) << name;
    }
}

#define ZAN_EXPECT_UNSUPPORTED(identifier, result, name, parameters, arguments, constness)                   \
    ExpectUnsupported(#name, driver, static_cast<result(Interface::*) parameters>(&Interface::name));
#define ZAN_LEAVE_OUT(...)

TEST(NullDriver, AnswersEachRequestAsADeviceThatDoesNotHaveIt) {
    NullDriver driver;
    using Interface = IDriver;
    ZAN_DRIVER_OPERATIONS(ZAN_EXPECT_UNSUPPORTED, ZAN_LEAVE_OUT)
}

TEST(NullLegacyDriver, AnswersEachRequestAsADeviceThatDoesNotHaveIt) {
    BareLegacyDriver driver;
    using Interface = ILegacyDriver;
    ZAN_LEGACY_DRIVER_OPERATIONS(ZAN_EXPECT_UNSUPPORTED, ZAN_LEAVE_OUT)
}

TEST(NullDriver, LeavesWhatARequestWasToFillIn) {
    NullDriver driver;
    double frequency = 145e6;
    EXPECT_EQ(driver.GetFrequency(frequency), NullDriver::NOT_SUPPORTED);
    EXPECT_EQ(frequency, 145e6);
}

TEST(NullDriver, HasNoPosition) {
    GPSStruct position;
    position.latitude = 55.0;
    NullDriver driver;
    driver.GetGPSBuffer(position);
    EXPECT_EQ(position.latitude, GPSStruct().latitude);
}

#define ZAN_CALL(identifier, result, name, parameters, arguments, constness)                                 \
    Call(callback, static_cast<result(IDriverCallback::*) parameters>(&IDriverCallback::name));

TEST(NullDriverCallback, TakesEveryDelivery) {
    BareCallback callback;
    ZAN_CALLBACK_OPERATIONS(ZAN_CALL)
}

TEST(NullDriverCallback, IsInStandbyAndHasNoDevice) {
    BareCallback callback;
    EMode mode = EMODE_SCAN;
    callback.getOperateMode(mode);
    EXPECT_EQ(mode, EMODE_STANDBY);
    EXPECT_EQ(callback.GetDevAddress(), QString());
}

} // namespace
} // namespace KvZANCommon
