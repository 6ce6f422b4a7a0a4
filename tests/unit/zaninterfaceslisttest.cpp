#include "zancommon/zaninterfaceslist.h"

#include "zancommon/zanabstractinterface.h"

#include <QPointer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <type_traits>

using namespace Qt::StringLiterals;

static_assert(std::is_base_of_v<QList<ZANAbstractInterface*>, ZANInterfacesList>);
static_assert(std::has_virtual_destructor_v<ZANInterfacesList>);

namespace {

class TestInterface : public ZANAbstractInterface {
public:
    using ZANAbstractInterface::ZANAbstractInterface;
    ~TestInterface() override {
        if (onDestroyed) {
            onDestroyed();
        }
    }

    void SetEnabled(bool /*on*/) override {}
    void SlotUpdateConfiguration() override {}

    std::function<void()> onDestroyed;
};

} // namespace

TEST(ZANInterfacesList, FindsWhatWasAddedByItsExactName) {
    TestInterface first(u"DF Output"_s);
    TestInterface second(u"Other"_s);
    ZANInterfacesList list;
    EXPECT_TRUE(list.Add(&first));
    EXPECT_TRUE(list.Add(&second));
    EXPECT_EQ(list.Size(), 2U);
    EXPECT_EQ(list.at(0), &first);
    EXPECT_EQ(list.at(1), &second);
    EXPECT_EQ(list.GetInterfaceByName(u"DF Output"_s), &first);
    EXPECT_EQ(list.GetInterfaceByName(u"Other"_s), &second);
    EXPECT_EQ(list.GetInterfaceByName(u"DF Outpu"_s), nullptr);
    EXPECT_EQ(list.GetInterfaceByName(u"DF Output "_s), nullptr);
    EXPECT_EQ(list.GetInterfaceByName({}), nullptr);
}

TEST(ZANInterfacesList, SecondInterfaceOfANameIsRefusedAndTheListUnchanged) {
    TestInterface first(u"Output"_s);
    TestInterface second(u"Output"_s);
    ZANInterfacesList list;
    EXPECT_TRUE(list.Add(&first));
    EXPECT_FALSE(list.Add(&second));
    EXPECT_FALSE(list.Add(&first));
    EXPECT_EQ(list.Size(), 1U);
    EXPECT_EQ(list.GetInterfaceByName(u"Output"_s), &first);
}

TEST(ZANInterfacesList, NamesThatDifferOnlyInCaseAreTwoEntries) {
    TestInterface first(u"Output"_s);
    TestInterface second(u"OUTPUT"_s);
    ZANInterfacesList list;
    EXPECT_TRUE(list.Add(&first));
    EXPECT_TRUE(list.Add(&second));
    EXPECT_EQ(list.GetInterfaceByName(u"Output"_s), &first);
    EXPECT_EQ(list.GetInterfaceByName(u"OUTPUT"_s), &second);
}

TEST(ZANInterfacesList, NullIsRefused) {
    ZANInterfacesList list;
    EXPECT_FALSE(list.Add(nullptr));
    EXPECT_EQ(list.Size(), 0U);
}

TEST(ZANInterfacesList, NullEntriesAreSkipped) {
    auto* output = new TestInterface(u"Output"_s);
    ZANInterfacesList list;
    list.append(nullptr);
    EXPECT_TRUE(list.Add(output));
    EXPECT_EQ(list.GetInterfaceByName(u"Output"_s), output);
    EXPECT_TRUE(list.Remove(u"Output"_s));
    EXPECT_EQ(list.Size(), 1U);
    EXPECT_FALSE(list.Remove(u"Output"_s));
}

TEST(ZANInterfacesList, FirstOfSeveralInterfacesOfANameIsFoundAndRemoved) {
    const QPointer<TestInterface> first = new TestInterface(u"Output"_s);
    TestInterface second(u"Output"_s);
    ZANInterfacesList list;
    list.append(first);
    list.append(&second);
    EXPECT_EQ(list.GetInterfaceByName(u"Output"_s), first);
    EXPECT_TRUE(list.Remove(u"Output"_s));
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(list.GetInterfaceByName(u"Output"_s), &second);
}

TEST(ZANInterfacesList, RemoveOfAnUnknownNameIsRefused) {
    TestInterface output(u"Output"_s);
    ZANInterfacesList list;
    EXPECT_FALSE(list.Remove(u"Output"_s));
    list.Add(&output);
    EXPECT_FALSE(list.Remove(u"output"_s));
    EXPECT_EQ(list.Size(), 1U);
}

TEST(ZANInterfacesList, RemoveDeletesExactlyTheInterfaceOfTheName) {
    TestInterface first(u"A"_s);
    const QPointer<TestInterface> second = new TestInterface(u"B"_s);
    TestInterface third(u"C"_s);
    ZANInterfacesList list;
    list.Add(&first);
    list.Add(second);
    list.Add(&third);
    EXPECT_TRUE(list.Remove(u"B"_s));
    EXPECT_TRUE(second.isNull());
    EXPECT_EQ(list, QList<ZANAbstractInterface*>({&first, &third}));
}

TEST(ZANInterfacesList, InterfaceThatIsBeingDestroyedIsNotFoundAnyMore) {
    ZANInterfacesList list;
    auto* output = new TestInterface(u"Output"_s);
    list.Add(output);
    bool wasFound = true;
    output->onDestroyed = [&] { wasFound = list.GetInterfaceByName(u"Output"_s) != nullptr; };
    EXPECT_TRUE(list.Remove(u"Output"_s));
    EXPECT_FALSE(wasFound);
}

TEST(ZANInterfacesList, InterfacesAreAliveAfterClearAndAfterTheListsEnd) {
    bool isDestroyed = false;
    TestInterface output(u"Output"_s);
    output.onDestroyed = [&] { isDestroyed = true; };
    auto list = std::make_unique<ZANInterfacesList>();
    list->Add(&output);
    list->Clear();
    EXPECT_EQ(list->Size(), 0U);
    EXPECT_FALSE(isDestroyed);
    list->Add(&output);
    list.reset();
    EXPECT_FALSE(isDestroyed);
    EXPECT_EQ(output.GetName(), u"Output"_s);
}

TEST(ZANInterfacesList, CopiesShareTheInterfaces) {
    TestInterface first(u"A"_s);
    TestInterface second(u"B"_s);
    ZANInterfacesList list;
    list.Add(&first);
    ZANInterfacesList copy(list);
    copy.Add(&second);
    EXPECT_EQ(list.Size(), 1U);
    EXPECT_EQ(copy.GetInterfaceByName(u"A"_s), &first);
    list = copy;
    EXPECT_EQ(list.GetInterfaceByName(u"B"_s), &second);
    copy.Clear();
    EXPECT_EQ(list.Size(), 2U);
}
