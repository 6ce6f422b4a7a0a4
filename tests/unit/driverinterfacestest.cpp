#include "support/driveroperations.h"
#include "support/printing.h"
#include "support/stubdrivers.h"
#include "support/virtualslots.h"
#include "zancommon/legacydriveradapter.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <link.h>

#include <array>
#include <cstddef>
#include <numeric>
#include <span>
#include <type_traits>
#include <vector>

namespace KvZANCommon {
namespace {

static_assert(std::is_base_of_v<QObject, IDriver> && std::has_virtual_destructor_v<IDriver>);
static_assert(!std::has_virtual_destructor_v<ILegacyDriver> && !std::is_destructible_v<ILegacyDriver>);
static_assert(!std::has_virtual_destructor_v<IDriverCallback> && !std::is_destructible_v<IDriverCallback>);
static_assert(!std::is_destructible_v<ILegacyDriverCallback>);

static_assert(std::tuple_size_v<std::remove_const_t<decltype(driverMembers<IDriver>)>> == 64);
static_assert(std::tuple_size_v<std::remove_const_t<decltype(legacyDriverMembers<ILegacyDriver>)>> == 64);
static_assert(std::tuple_size_v<std::remove_const_t<decltype(callbackMembers<IDriverCallback>)>> == 22);

// Numbers of operations as people know them, counted from 1.
constexpr int Number(auto operation) {
    return static_cast<int>(operation) + 1;
}
static_assert(Number(DriverOperation::SetCallback) == 1);
static_assert(Number(DriverOperation::ReservedAfterSearch) == 29);
static_assert(Number(DriverOperation::SendCompassCommand) == 60);
static_assert(Number(DriverOperation::SetSyncTrigger) == 61);
static_assert(Number(DriverOperation::SetCompassValue) == 62);
static_assert(Number(DriverOperation::GetSyncMissedCount) == 63);
static_assert(Number(DriverOperation::ReservedAtEnd) == 64);
static_assert(Number(LegacyOperation::Initialize) == 3);
static_assert(Number(LegacyOperation::ReservedAfterSearch) == 30);
static_assert(Number(LegacyOperation::SetCompassValue) == 62);
static_assert(Number(LegacyOperation::GetSyncMissedCount) == 63);
static_assert(Number(LegacyOperation::SetSyncTrigger) == 64);
static_assert(Number(CallbackOperation::fillSyncTimestamp) == 22);

template <class Members>
std::vector<std::ptrdiff_t> Slots(const Members& members) {
    return std::apply([](auto... member) { return std::vector<std::ptrdiff_t>{VirtualSlot(member)...}; },
                      members);
}

std::vector<std::ptrdiff_t> Consecutive(std::ptrdiff_t first, std::size_t count) {
    std::vector<std::ptrdiff_t> slots(count);
    std::iota(slots.begin(), slots.end(), first);
    return slots;
}

struct OpenQObject : QObject {
    using QObject::disconnectNotify;
};

/// The number of entries without the zeros behind them, by which clang's address sanitizer guards a table. It
/// lets only those read them that it does not watch.
[[gnu::no_sanitize_address]] std::size_t CountEntries(void* const* table, std::size_t size) {
    while (size > 0 && table[size - 1] == nullptr) {
        --size;
    }
    return size;
}

/// The virtual table of a class as the library holds it: offset to top, type, then the slots.
std::span<void* const> VirtualTable(const char* symbol) {
    void* const address = dlsym(RTLD_DEFAULT, symbol);
    Dl_info info;
    void* entry = nullptr;
    if (address == nullptr || dladdr1(address, &info, &entry, RTLD_DL_SYMENT) == 0 || entry == nullptr) {
        ADD_FAILURE() << symbol << " not found";
        return {};
    }
    const auto size = static_cast<const ElfW(Sym)*>(entry)->st_size;
    auto* const table = static_cast<void* const*>(address);
    return {table, CountEntries(table, size / sizeof(void*))};
}

constexpr std::size_t TABLE_HEAD = 2;
constexpr std::size_t QOBJECT_SLOTS = 12; // eleven operations, the destructor has two slots

template <std::size_t Count>
void ExpectDefaults(std::span<void* const> table, const std::array<bool, Count>& defaults) {
    void* const pureVirtual = dlsym(RTLD_DEFAULT, "__cxa_pure_virtual");
    ASSERT_NE(pureVirtual, nullptr);
    ASSERT_EQ(table.size(), Count);
    for (std::size_t place = 0; place < Count; ++place) {
        EXPECT_EQ(table[place] != pureVirtual, defaults.at(place)) << "operation " << place + 1;
    }
}

TEST(IDriver, OperationsAreInOrderRightAfterThoseOfQObject) {
    const std::ptrdiff_t lastOfQObject = VirtualSlot(&OpenQObject::disconnectNotify);
    EXPECT_EQ(lastOfQObject, QOBJECT_SLOTS - 1);
    EXPECT_EQ(Slots(driverMembers<IDriver>), Consecutive(lastOfQObject + 1, 64));
}

TEST(IDriver, HasADefaultForExactlyTheOptionalOperationsAndEndsAfterThem) {
    const auto table = VirtualTable("_ZTVN11KvZANCommon7IDriverE");
    ASSERT_GT(table.size(), TABLE_HEAD + QOBJECT_SLOTS);
    ExpectDefaults(table.subspan(TABLE_HEAD + QOBJECT_SLOTS), driverDefaults);
}

TEST(IDriver, HasNoMetaObjectOfItsOwn) {
    const StubDriver driver;
    EXPECT_EQ(driver.metaObject(), &QObject::staticMetaObject);
}

TEST(IDriver, OptionalOperationsAnswerNoNothingOrNotSupported) {
    StubDriver driver;
    driver.ReservedAfterSearch();
    driver.SetAudioFormat(48000, 16, 2);
    EXPECT_FALSE(driver.StartDRData(true, 1));
    EXPECT_EQ(driver.GetBufferCount(), 0);
    EXPECT_EQ(driver.RestartMassData(), 0);
    EXPECT_EQ(driver.SetSyncTrigger(true), -1);
    EXPECT_EQ(driver.GetSyncMissedCount(), -1);
    driver.ReservedAtEnd();
}

TEST(IDriver, IsDestroyedThroughQObject) {
    class Driver : public StubDriver {
    public:
        explicit Driver(bool& destroyed)
            : m_destroyed(destroyed) {}
        ~Driver() override { m_destroyed = true; }

    private:
        bool& m_destroyed;
    };
    bool destroyed = false;
    const QObject* const driver = new Driver(destroyed);
    delete driver;
    EXPECT_TRUE(destroyed);
}

TEST(ILegacyDriver, OperationsAreInOrderFromTheStart) {
    EXPECT_EQ(Slots(legacyDriverMembers<ILegacyDriver>), Consecutive(0, 64));
}

TEST(ILegacyDriver, HasADefaultForExactlyTheOptionalOperationsAndEndsAfterThem) {
    const auto table = VirtualTable("_ZTVN11KvZANCommon13ILegacyDriverE");
    ASSERT_GT(table.size(), TABLE_HEAD);
    ExpectDefaults(table.subspan(TABLE_HEAD), legacyDriverDefaults);
}

TEST(ILegacyDriver, OptionalOperationsAnswerNoNothingOrNotSupported) {
    StubLegacyDriver driver;
    driver.ReservedFirst();
    driver.ReservedSecond();
    driver.ReservedAfterSearch();
    driver.SetAudioFormat(48000, 16, 2);
    EXPECT_FALSE(driver.StartDRData(true, 1));
    EXPECT_EQ(driver.GetBufferCount(), 0);
    EXPECT_EQ(driver.RestartMassData(), 0);
    EXPECT_EQ(driver.GetSyncMissedCount(), -1);
    EXPECT_EQ(driver.SetSyncTrigger(true), -1);
}

TEST(IDriverCallback, OperationsAreInOrderFromTheStart) {
    EXPECT_EQ(Slots(callbackMembers<IDriverCallback>), Consecutive(0, 22));
}

TEST(ILegacyDriverCallback, OperationsAreInTheSameOrderAsInIDriverCallback) {
    EXPECT_EQ(Slots(callbackMembers<ILegacyDriverCallback>), Slots(callbackMembers<IDriverCallback>));
}

TEST(LegacyDriverAdapter, HasTheOperationsOfItsTwoBasesAndNoMore) {
    // The operations that override those of the second base are in the first table too; the table of the
    // second base follows it in the same symbol.
    EXPECT_EQ(VirtualTable("_ZTVN11KvZANCommon19LegacyDriverAdapterE").size(),
              TABLE_HEAD + QOBJECT_SLOTS + 64 + 22 + TABLE_HEAD + 22);
}

} // namespace
} // namespace KvZANCommon
