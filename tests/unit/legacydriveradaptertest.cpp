#include "zancommon/legacydriveradapter.h"

#include "support/printing.h"
#include "support/recordingpartners.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <type_traits>

using namespace Qt::StringLiterals;

// Counts what is allocated anywhere in the process.
namespace {

std::atomic<long> allocationCount = 0;
std::atomic<long> releaseCount = 0;

} // namespace

void* operator new(std::size_t size) {
    ++allocationCount;
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    releaseCount += memory != nullptr;
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    operator delete(memory);
}

namespace KvZANCommon {
namespace {

static_assert(std::is_base_of_v<IDriver, LegacyDriverAdapter>);
static_assert(std::is_base_of_v<ILegacyDriverCallback, LegacyDriverAdapter>);

/// An adapter between a recording legacy driver and a recording callback, wired as an application does it.
class Wired {
public:
    Wired() {
        adapter.SetLegacyDriver(&legacyDriver);
        adapter.SetCallback(&callback);
    }

    IDriver& Driver() { return adapter; }
    ILegacyDriverCallback& LegacyCallback() { return adapter; }

    RecordingLegacyDriver legacyDriver;
    RecordingCallback callback;
    LegacyDriverAdapter adapter;
};

/// One operation that the adapter passes on, between its two sides.
template <auto Place, class From, auto FromMember, auto ToMember>
struct Route {
    static constexpr auto place = static_cast<std::size_t>(Place);
    static constexpr auto from = FromMember;
    static constexpr auto to = ToMember;
    using Source = From;
    using Operation = OperationOf<std::remove_const_t<decltype(FromMember)>>;
    using Arguments = typename Operation::Arguments;
    using Result = typename Operation::Result;
    static constexpr bool hasResult = !std::is_void_v<Result>;
    static constexpr bool takesRecords = Operation::takesRecords;
};

template <DriverOperation From, LegacyOperation To>
using Downward = Route<To, IDriver, std::get<static_cast<std::size_t>(From)>(driverMembers<IDriver>),
                       std::get<static_cast<std::size_t>(To)>(legacyDriverMembers<ILegacyDriver>)>;

template <CallbackOperation Which>
using Upward = Route<Which, ILegacyDriverCallback,
                     std::get<static_cast<std::size_t>(Which)>(callbackMembers<ILegacyDriverCallback>),
                     std::get<static_cast<std::size_t>(Which)>(callbackMembers<IDriverCallback>)>;

/// Calls `visit(name, route)` for every operation that the adapter passes down, in order. The partners are
/// found by their names, never by their numbers.
template <class Visitor>
void ForEachDownward(Visitor visit) {
#define ZAN_VISIT(identifier, result, name, ...)                                                             \
    {                                                                                                        \
        SCOPED_TRACE(#identifier);                                                                           \
        visit(#name, Downward<DriverOperation::identifier, LegacyOperation::identifier>());                  \
    }
    ZAN_FORWARDED_OPERATIONS(ZAN_VISIT)
#undef ZAN_VISIT
}

/// Calls `visit(name, route)` for every operation that the adapter passes up, in order.
template <class Visitor>
void ForEachUpward(Visitor visit) {
#define ZAN_VISIT(identifier, result, name, ...)                                                             \
    {                                                                                                        \
        SCOPED_TRACE(#identifier);                                                                           \
        visit(#name, Upward<CallbackOperation::identifier>());                                               \
    }
    ZAN_CALLBACK_OPERATIONS(ZAN_VISIT)
#undef ZAN_VISIT
}

template <class Routed, class Record>
void ExpectPassedOn(Routed /*route*/, typename Routed::Source& from, Record& record, int seed) {
    const int callsBefore = record.Count();
    record.SetAnswers(seed + 20);
    typename Routed::Arguments arguments(seed);
    if constexpr (Routed::hasResult) {
        EXPECT_EQ(arguments.Call(from, Routed::from), record.template Answer<typename Routed::Result>());
    } else {
        arguments.Call(from, Routed::from);
    }
    EXPECT_EQ(record.Count(), callsBefore + 1);
    EXPECT_EQ(record.Last(), Routed::place);
    EXPECT_TRUE(record.template Kept<Routed::place>() == arguments.Keep());
}

TEST(LegacyDriverAdapter, PassesAllButThreeDriverOperationsDown) {
    // All but SetCallback and the two that keep a place.
    int count = 0;
    ForEachDownward([&](const char* /*name*/, auto /*route*/) { ++count; });
    EXPECT_EQ(count, 64 - 3);
}

TEST(LegacyDriverAdapter, PassesAllCallbackOperationsUp) {
    int count = 0;
    ForEachUpward([&](const char* /*name*/, auto /*route*/) { ++count; });
    EXPECT_EQ(count, 22);
}

// Two seeds, so that flags are seen in both states.

TEST(LegacyDriverAdapter, EveryDriverOperationReachesTheLegacyDriverWithItsArgumentsAndBringsBackItsResult) {
    Wired wired;
    for (const int seed : {1, 100}) {
        ForEachDownward([&](const char* /*name*/, auto route) {
            ExpectPassedOn(route, wired.Driver(), wired.legacyDriver.record, seed);
        });
    }
    EXPECT_EQ(wired.callback.record.Count(), 0);
}

TEST(LegacyDriverAdapter, EveryCallbackOperationReachesTheCallbackWithItsArgumentsAndBringsBackItsResult) {
    Wired wired;
    for (const int seed : {1, 100}) {
        ForEachUpward([&](const char* /*name*/, auto route) {
            ExpectPassedOn(route, wired.LegacyCallback(), wired.callback.record, seed);
        });
    }
    EXPECT_EQ(wired.legacyDriver.record.Count(), 0);
}

TEST(LegacyDriverAdapter, SyncTriggerCompassValueAndMissedCountReachTheirNamesakesDespiteTheOtherOrder) {
    Wired wired;
    auto& record = wired.legacyDriver.record;
    record.SetAnswers(1);

    EXPECT_EQ(wired.Driver().SetSyncTrigger(true), record.Answer<long>());
    EXPECT_EQ(record.Last(), static_cast<std::size_t>(LegacyOperation::SetSyncTrigger));
    EXPECT_EQ(wired.Driver().SetCompassValue(123), record.Answer<long>());
    EXPECT_EQ(record.Last(), static_cast<std::size_t>(LegacyOperation::SetCompassValue));
    EXPECT_EQ(wired.Driver().GetSyncMissedCount(), record.Answer<long>());
    EXPECT_EQ(record.Last(), static_cast<std::size_t>(LegacyOperation::GetSyncMissedCount));
    EXPECT_EQ(record.Count(), 3);
}

TEST(LegacyDriverAdapter, OptionalOperationsReturnWhatTheLegacyDriverReturnsNotTheDefaults) {
    Wired wired;
    wired.legacyDriver.record.SetAnswers(1);
    EXPECT_TRUE(wired.Driver().StartDRData(true, 1));
    EXPECT_EQ(wired.Driver().GetBufferCount(), Sample<long>(1));
    EXPECT_EQ(wired.Driver().RestartMassData(), Sample<long>(1));
}

TEST(LegacyDriverAdapter, OperationsThatKeepAPlaceReachNobody) {
    Wired wired;
    wired.Driver().ReservedAfterSearch();
    wired.Driver().ReservedAtEnd();
    EXPECT_EQ(wired.legacyDriver.record.Count(), 0);
    EXPECT_EQ(wired.callback.record.Count(), 0);
}

TEST(LegacyDriverAdapter, NothingReachesThePlaceKeepersOfTheLegacyDriver) {
    Wired wired;
    ForEachDownward([&](const char* /*name*/, auto route) {
        typename decltype(route)::Arguments arguments(1);
        arguments.Call(wired.Driver(), route.from);
    });
    const auto& record = wired.legacyDriver.record;
    EXPECT_FALSE(record.Kept<static_cast<std::size_t>(LegacyOperation::ReservedFirst)>());
    EXPECT_FALSE(record.Kept<static_cast<std::size_t>(LegacyOperation::ReservedSecond)>());
    EXPECT_FALSE(record.Kept<static_cast<std::size_t>(LegacyOperation::ReservedAfterSearch)>());
}

TEST(LegacyDriverAdapter, SettingTheCallbackReachesNobody) {
    Wired wired;
    wired.Driver().SetCallback(&wired.callback);
    EXPECT_EQ(wired.legacyDriver.record.Count(), 0);
    EXPECT_EQ(wired.callback.record.Count(), 0);
}

TEST(LegacyDriverAdapter, RecordOfTheCallerIsLeftAsItIs) {
    Wired wired;
    const auto setup = Sample<AntennaSetupStruct>(1);
    wired.Driver().SetAntennaSetup(setup);
    EXPECT_EQ(setup, Sample<AntennaSetupStruct>(1));
}

TEST(LegacyDriverAdapter, DriverOperationsWithoutResultAndWithoutLegacyDriverReturnWithoutEffect) {
    LegacyDriverAdapter adapter;
    IDriver& driver = adapter;
    std::string names;
    ForEachDownward([&](const char* name, auto route) {
        using Routed = decltype(route);
        if constexpr (!Routed::hasResult) {
            names += std::string(name) + " ";
            typename Routed::Arguments arguments(1);
            arguments.Call(driver, route.from);
        }
    });
    EXPECT_EQ(names, "GetGPSBuffer ClearLastError SetSimulationScan SetAudioFormat EnableTimeSync ");
}

TEST(LegacyDriverAdapter, GPSBufferIsNotTouchedWithoutLegacyDriver) {
    LegacyDriverAdapter adapter;
    const GPSStruct before{48.1, 11.6, 520.0, 1, 9, true};
    GPSStruct buffer = before;
    static_cast<IDriver&>(adapter).GetGPSBuffer(buffer);
    EXPECT_EQ(buffer, before);
}

TEST(LegacyDriverAdapter, CallbackOperationsWithoutCallbackReturnWithoutEffect) {
    RecordingLegacyDriver legacyDriver;
    LegacyDriverAdapter adapter;
    adapter.SetLegacyDriver(&legacyDriver);
    ILegacyDriverCallback& callback = adapter;
    int count = 0;
    ForEachUpward([&](const char* /*name*/, auto route) {
        using Routed = decltype(route);
        if constexpr (!Routed::hasResult) {
            ++count;
            typename Routed::Arguments arguments(1);
            arguments.Call(callback, route.from);
        }
    });
    EXPECT_EQ(count, 21);
    EXPECT_EQ(legacyDriver.record.Count(), 0);
}

TEST(LegacyDriverAdapter, DataIsNotTouchedWithoutCallback) {
    LegacyDriverAdapter adapter;
    ILegacyDriverCallback& callback = adapter;
    Bearing bearing;
    bearing.azimuth = 1234;
    const Bearing bearingBefore = bearing;
    StatusStruct status;
    status.heading = 12.5;
    const StatusStruct statusBefore = status;
    unsigned long long time = 77;
    EMode mode = EMODE_SCAN;

    callback.fillScanBuffer(1, time, 0, 1, &bearing, status);
    callback.getOperateMode(mode);
    EXPECT_EQ(bearing, bearingBefore);
    EXPECT_EQ(status, statusBefore);
    EXPECT_EQ(time, 77U);
    EXPECT_EQ(mode, EMODE_SCAN);
}

TEST(LegacyDriverAdapter, PartnersThatWereTakenAwayAreNotCalledAnyMore) {
    Wired wired;
    wired.adapter.SetLegacyDriver(nullptr);
    wired.Driver().SetCallback(nullptr);
    wired.Driver().ClearLastError();
    wired.LegacyCallback().CloseDataLink();
    EXPECT_EQ(wired.legacyDriver.record.Count(), 0);
    EXPECT_EQ(wired.callback.record.Count(), 0);
}

TEST(LegacyDriverAdapter, PartnersSetLaterReplaceEarlierOnesWithoutNotice) {
    Wired wired;
    RecordingLegacyDriver laterDriver;
    RecordingCallback laterCallback;
    wired.adapter.SetLegacyDriver(&laterDriver);
    wired.Driver().SetCallback(&laterCallback);
    wired.Driver().Reset();
    wired.LegacyCallback().SetEndOfScan(true);
    EXPECT_EQ(laterDriver.record.Count(), 1);
    EXPECT_EQ(laterCallback.record.Count(), 1);
    EXPECT_EQ(wired.legacyDriver.record.Count(), 0);
    EXPECT_EQ(wired.callback.record.Count(), 0);
}

TEST(LegacyDriverAdapter, HasNoParent) {
    EXPECT_EQ(LegacyDriverAdapter().parent(), nullptr);
}

TEST(LegacyDriverAdapter, DestroyingItLeavesBothPartnersAliveAndUncalled) {
    RecordingLegacyDriver legacyDriver;
    RecordingCallback callback;
    auto adapter = std::make_unique<LegacyDriverAdapter>();
    adapter->SetLegacyDriver(&legacyDriver);
    adapter->SetCallback(&callback);
    adapter.reset();
    EXPECT_EQ(legacyDriver.record.Count(), 0);
    EXPECT_EQ(callback.record.Count(), 0);

    // Both still answer, to the sanitizers too.
    legacyDriver.record.SetAnswers(1);
    callback.record.SetAnswers(2);
    EXPECT_EQ(legacyDriver.GetLastError(), u"1"_s);
    EXPECT_EQ(callback.GetDevAddress(), u"2"_s);
}

TEST(LegacyDriverAdapter, DataIsPassedOnOnTheThreadThatDeliversIt) {
    Wired wired;
    unsigned long long time = 1;
    Bearing bearing;
    StatusStruct status;
    std::thread driverThread([&] { wired.LegacyCallback().fillScanBuffer(1, time, 0, 1, &bearing, status); });
    const std::thread::id id = driverThread.get_id();
    driverThread.join();
    EXPECT_EQ(wired.callback.record.Thread(), id);
    EXPECT_NE(id, std::this_thread::get_id());
}

/// What a call allocates, and what of it is still there afterwards.
struct Allocations {
    long made;
    long kept;

    bool operator==(const Allocations&) const = default;
};

template <class Call>
Allocations AllocationsDuring(Call call) {
    const long allocated = allocationCount;
    const long released = releaseCount;
    call();
    const long made = allocationCount - allocated;
    return {made, made - (releaseCount - released)};
}

TEST(LegacyDriverAdapter, OperationsWithoutRecordsByValueAllocateNothing) {
    Wired wired;
    int count = 0;
    const auto expectNone = [&](auto route, auto& from) {
        using Routed = decltype(route);
        if constexpr (!Routed::takesRecords) {
            ++count;
            typename Routed::Arguments arguments(1);
            const Allocations allocations = AllocationsDuring([&] { arguments.Call(from, route.from); });
            EXPECT_EQ(allocations.made, 0);
        }
    };
    ForEachDownward([&](const char* /*name*/, auto route) { expectNone(route, wired.Driver()); });
    ForEachUpward([&](const char* /*name*/, auto route) { expectNone(route, wired.LegacyCallback()); });
    EXPECT_EQ(count, 61 - 6 + 22);
}

TEST(LegacyDriverAdapter, RecordsPassedByValueAreCopiedOnceAndReleased) {
    Wired wired;
    std::string names;
    ForEachDownward([&](const char* name, auto route) {
        using Routed = decltype(route);
        if constexpr (Routed::takesRecords) {
            names += std::string(name) + " ";
            typename Routed::Arguments arguments(1);
            const auto direct = [&] { arguments.Call(wired.legacyDriver, route.to); };
            direct(); // afterwards the recording driver keeps as much as it gives up
            const Allocations oneCopy = AllocationsDuring([&] { arguments.Copy(); });
            const Allocations directly = AllocationsDuring(direct);
            const Allocations adapted =
                AllocationsDuring([&] { arguments.Call(wired.Driver(), route.from); });
            EXPECT_EQ(adapted.made, directly.made + oneCopy.made);
            EXPECT_EQ(adapted.kept, 0);
        }
    });
    EXPECT_EQ(names, "SetTest SetGainControl SetFilterSettings SetAntennaSetup SetConverterSetup "
                     "AlterMeasureSetting ");
}

TEST(LegacyDriverAdapter, CopyOfAnAntennaSetupCostsItsSubRangesOnly) {
    // Shows that the counter sees the allocations inside the library.
    Wired wired;
    OperationOf<long (IDriver::*)(AntennaSetupStruct)>::Arguments arguments(1);
    const auto direct = [&] { arguments.Call(wired.legacyDriver, &ILegacyDriver::SetAntennaSetup); };
    direct();
    const long directly = AllocationsDuring(direct).made;
    EXPECT_EQ(AllocationsDuring([&] { arguments.Call(wired.Driver(), &IDriver::SetAntennaSetup); }).made,
              directly + 3);
}

// An operation with a result has no answer to give without its partner.

TEST(LegacyDriverAdapterDeathTest, DriverOperationsWithResultStopADebugBuildWithoutLegacyDriver) {
#if defined(QT_NO_DEBUG) && !defined(QT_FORCE_ASSERTS)
    GTEST_SKIP() << "Assertions are off in this build: such a call goes through a null pointer.";
#else
    LegacyDriverAdapter adapter;
    IDriver& driver = adapter;
    int count = 0;
    ForEachDownward([&](const char* name, auto route) {
        using Routed = decltype(route);
        if constexpr (Routed::hasResult) {
            ++count;
            typename Routed::Arguments arguments(1);
            EXPECT_DEATH(arguments.Call(driver, route.from),
                         "in " + std::string(name) + ": \"a legacy driver must have been set\"");
        }
    });
    EXPECT_EQ(count, 61 - 5);
#endif
}

TEST(LegacyDriverAdapterDeathTest, AskingForTheDeviceAddressStopsADebugBuildWithoutCallback) {
#if defined(QT_NO_DEBUG) && !defined(QT_FORCE_ASSERTS)
    GTEST_SKIP() << "Assertions are off in this build: such a call goes through a null pointer.";
#else
    LegacyDriverAdapter adapter;
    ILegacyDriverCallback& callback = adapter;
    EXPECT_DEATH(callback.GetDevAddress(), "in GetDevAddress: \"a callback must have been set\"");
#endif
}

} // namespace
} // namespace KvZANCommon
