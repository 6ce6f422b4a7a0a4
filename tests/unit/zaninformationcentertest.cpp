#include "zancommon/zaninformationcenter.h"

#include "support/devicetree.h"
#include "support/tracelines.h"
#include "zancommon/zanabstractinterface.h"

#include <QPointer>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

static_assert(std::has_virtual_destructor_v<ZANInformationCenter>);
static_assert(!std::is_copy_constructible_v<ZANInformationCenter> &&
              !std::is_copy_assignable_v<ZANInformationCenter>);

namespace {

class TestInterface : public ZANAbstractInterface {
public:
    using ZANAbstractInterface::ZANAbstractInterface;

    void SetEnabled(bool /*on*/) override {}
    void SlotUpdateConfiguration() override {}
};

class ZANInformationCenterTest : public testing::Test {
protected:
    TraceLines m_traces; // keeps the output of the tests readable
    DeviceTree m_device;
};

TEST_F(ZANInformationCenterTest, IsTheSameObjectOnEachCall) {
    ZANInformationCenter* const center = ZANInformationCenter::Instance();
    ASSERT_NE(center, nullptr);
    EXPECT_EQ(ZANInformationCenter::Instance(), center);
    EXPECT_EQ(&ZANInformationCenter::Instance()->GetZANCharacteristics(), &center->GetZANCharacteristics());
    EXPECT_EQ(&ZANInformationCenter::Instance()->GetZANInterfaces(), &center->GetZANInterfaces());
}

TEST_F(ZANInformationCenterTest, BeginsUnconnectedAndWithoutOutputs) {
    ZANInformationCenter& center = *ZANInformationCenter::Instance();
    EXPECT_TRUE(center.GetZANCharacteristics().GetAntennaHandles(false).empty());
    EXPECT_EQ(center.GetZANCharacteristics().GetZANType(), ZANTYPE_ZANTIDE);
    EXPECT_EQ(center.GetZANCharacteristics().GetMaxChannelCount(), 60000);
    EXPECT_EQ(center.GetZANInterfaces().Size(), 0U);
}

TEST_F(ZANInformationCenterTest, IsFreshAfterFinalise) {
    DeviceTree::SetType(u"ZANFERN"_s);
    DeviceTree::SetAntennas({MakeAntenna(u"PX106"_s, u"RCV03"_s, 20e6, 1300e6)});
    DeviceTree::Connect();
    TestInterface output(u"Output"_s);
    ZANInformationCenter::Instance()->GetZANInterfaces().Add(&output);
    ASSERT_EQ(ZANInformationCenter::Instance()->GetZANCharacteristics().GetZANType(), ZANTYPE_ZANFERN);

    ZANInformationCenter::Finalise();
    ZANInformationCenter& center = *ZANInformationCenter::Instance();
    EXPECT_EQ(center.GetZANCharacteristics().GetZANType(), ZANTYPE_ZANTIDE);
    EXPECT_EQ(center.GetZANCharacteristics().GetAntennaByIndex(0), nullptr);
    EXPECT_EQ(center.GetZANInterfaces().Size(), 0U);
}

TEST_F(ZANInformationCenterTest, IsFinalisedTwiceAndBeforeItsFirstUseWithoutEffect) {
    ZANInformationCenter::Finalise();
    ZANInformationCenter::Instance();
    ZANInformationCenter::Finalise();
    ZANInformationCenter::Finalise();
    EXPECT_NE(ZANInformationCenter::Instance(), nullptr);
}

TEST_F(ZANInformationCenterTest, OutputsInTheListStayAlive) {
    const auto output = std::make_unique<TestInterface>(u"Output"_s);
    const QPointer<TestInterface> watched = output.get();
    ZANInformationCenter::Instance()->GetZANInterfaces().Add(output.get());
    ZANInformationCenter::Finalise();
    EXPECT_FALSE(watched.isNull());
}

TEST_F(ZANInformationCenterTest, DetachesFromTheTreeWhenItIsFinalised) {
    auto* const type = DeviceTree::DeviceValue<ValueString>(g_vdDevType);
    DeviceTree::Connect();
    ASSERT_EQ(type->GetObserverCount(), 1U);
    ZANInformationCenter::Finalise();
    EXPECT_EQ(type->GetObserverCount(), 0U);
    EXPECT_EQ(DeviceTree::ServerValue<ValueString>(g_vdPolarisation)->GetObserverCount(), 0U);
    type->SetValue(u"ZANMOSS"_s, nullptr);
}

} // namespace
