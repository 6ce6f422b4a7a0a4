#include "support/devicetree.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "support/treevalues.h"
#include "support/virtualslots.h"
#include "zancommon/zancharacteristics.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

const std::vector<TChangeCode> toldOnce{TChangeCode::Changed};
const std::vector<TChangeCode> notTold;

Node* CfgNode() {
    return Tree::Instance()->GetNode(DeviceTree::Path() + g_vdNodeCfg.PathName());
}

QString DevicePath(const ValueDescriptor& descriptor) {
    return DeviceTree::Path() + descriptor.PathName();
}

QString PolarisationPath() {
    return ZANPath::SERVER.toString() + g_vdPolarisation.PathName();
}

bool RemoveFromTree(const QString& path) {
    return Tree::Instance()->Remove(Tree::Instance()->GetValue(path));
}

template <class T>
void SetValueAt(const QString& path, const T& content) {
    using ValueOfContent = std::conditional_t<std::is_same_v<T, int>, ValueNumericInt, ValueString>;
    Tree::Instance()->Find<ValueOfContent>(path)->SetValue(content, nullptr);
}

AntennaData HfAntenna() {
    return MakeAntenna(u"PX103"_s, u"RCV01"_s, 300e3, 30e6);
}

AntennaData VuhfAntenna() {
    return MakeAntenna(u"PX106"_s, u"RCV03"_s, 20e6, 1300e6);
}

AntennaData WithHandle(AntennaData antenna, int handle) {
    antenna.handle = handle;
    return antenna;
}

AntennaData Disabled(AntennaData antenna) {
    antenna.enabled = false;
    return antenna;
}

/// Two antennas for the same range that differ by polarisation: 1 is vertical, 2 is horizontal.
std::vector<AntennaData> Pair() {
    AntennaData vertical = WithHandle(MakeAntenna(u"PX121_V"_s, u"RCV03"_s, 20e6, 1300e6), 1);
    vertical.polarizationMode = POLARISATION_VERTICAL;
    AntennaData horizontal = WithHandle(MakeAntenna(u"PX121_H"_s, u"RCV03"_s, 20e6, 1300e6), 2);
    horizontal.polarizationMode = POLARISATION_HORIZONTAL;
    return {vertical, horizontal};
}

int HandleAt(ZANCharacteristics& characteristics, double frequency) {
    const AntennaData* const antenna = characteristics.GetAntennaForFrequency(frequency, false);
    return antenna ? antenna->handle : -2;
}

std::size_t AntennaCount(const ZANCharacteristics& characteristics) {
    std::size_t count = 0;
    while (characteristics.GetAntennaByIndex(static_cast<int>(count))) {
        ++count;
    }
    return count;
}

/// How many observe each of the things of a device that the characteristics follow.
std::vector<std::size_t> ObserverCounts(const QString& device) {
    const Tree& tree = *Tree::Instance();
    return {tree.GetNode(device + g_vdNodeCfg.PathName())->GetObserverCount(),
            tree.GetValue(device + g_vdDevType.PathName())->GetObserverCount(),
            tree.GetValue(device + g_vdDevMaxChannelCount.PathName())->GetObserverCount(),
            tree.GetValue(device + g_vdCfgModifyTime.PathName())->GetObserverCount()};
}
const std::vector<std::size_t> nobody{0, 0, 0, 0};
const std::vector<std::size_t> one{1, 1, 1, 1};

class ZANCharacteristicsModelTest : public testing::Test {
protected:
    TraceLines m_traces; // also keeps the output of the tests readable
    DeviceTree m_device;
};

// Interface

TEST(ZANCharacteristicsInterface, VirtualOperationsAreInOrderBehindThoseOfTheObserver) {
    using C = ZANCharacteristics;
    // The destructor has the slots 0 and 1.
    ExpectVirtualSlotsFrom(
        2, &IObserver::Update, &C::SetBase_ValuePath, &C::UpdateCachedDataFromValueTree, &C::GetZANType,
        &C::GetAntennaByHandle, &C::GetAntennaByIndex, &C::GetAntennaHandles, &C::GetAntennaForFrequency,
        &C::GetAntennaDisplayName,
        static_cast<bool (C::*)(const AntennaData*, EOperationMode) const>(&C::IsAntennaSupportedByDevice),
        static_cast<bool (C::*)(int, EOperationMode) const>(&C::IsAntennaSupportedByDevice),
        &C::DoesAntennaSupportPolarization, &C::DoesAntennaSupportActivePassive, &C::GetRangeTypeOfAntenna,
        &C::CheckAntennaSetupValidity, &C::MakeAntennaSetupValid, &C::GetAvailablePolarisationModesForFreq,
        &C::GetAvailableDfMethodsForFreq, &C::GetDfMethodsDetailedForAntennaAndFrequency,
        &C::HasAntennaDFMethod, &C::GetAvailableConverters, &C::GetConverterForFrequencyRange,
        &C::IsHfConverter, &C::IsVuhfConverter, &C::IsHfPreampAvailable, &C::IsVuhfPreampAvailable,
        &C::GetMinFreq, &C::GetMaxFreq, &C::ToNextValidFrequency, &C::ToNextValidFrequencyRange,
        &C::ToNextValidResolutionBandwidth, &C::GetRealtimeBandwidths, &C::GetDefaultRealtimeBandwidth,
        &C::GetDefaultResolutionBandwidth, &C::GetResolutionBandwidths, &C::GetConverterSwitchFreq,
        &C::GetRangeTypeForFrequency, &C::GetBestSampleMode, &C::GetMaxChannelCount);
    EXPECT_EQ(VirtualSlot(&C::Update), VirtualSlot(&IObserver::Update));
}

TEST(ZANCharacteristicsInterface, IsAnObserverFirstAndAnObservableSecond) {
    ZANCharacteristics characteristics;
    EXPECT_EQ(static_cast<void*>(static_cast<IObserver*>(&characteristics)),
              static_cast<void*>(&characteristics));
    EXPECT_GT(static_cast<void*>(static_cast<Observable*>(&characteristics)),
              static_cast<void*>(&characteristics));
}

// Connection to the tree

struct ConnectionRow {
    const char* name;
    std::vector<QString> missing; // values that are taken out of the tree before
    bool isComplete;
};

class ZANCharacteristicsConnectionTest : public ZANCharacteristicsModelTest,
                                         public testing::WithParamInterface<ConnectionRow> {};

TEST_P(ZANCharacteristicsConnectionTest, NotifiesWhetherAllWasFoundAndConnectsToWhatIsThere) {
    DeviceTree::SetAntennas({HfAntenna()});
    for (const QString& path : GetParam().missing) {
        ASSERT_TRUE(RemoveFromTree(path));
    }
    ZANCharacteristics characteristics;
    EXPECT_EQ(characteristics.SetBase_ValuePath(DeviceTree::Path(), true), GetParam().isComplete);
    EXPECT_EQ(AntennaCount(characteristics), 1U);
    for (const ValueDescriptor* descriptor : {&g_vdDevType, &g_vdDevMaxChannelCount, &g_vdCfgModifyTime}) {
        if (const ValueBase* value = Tree::Instance()->GetValue(DevicePath(*descriptor))) {
            EXPECT_EQ(value->GetObserverCount(), 1U);
        }
    }
    EXPECT_EQ(CfgNode()->GetObserverCount(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    ZANCharacteristics, ZANCharacteristicsConnectionTest,
    testing::Values(ConnectionRow{"nothingMissing", {}, true},
                    ConnectionRow{"withoutDeviceType", {DevicePath(g_vdDevType)}, false},
                    ConnectionRow{"withoutChannelCount", {DevicePath(g_vdDevMaxChannelCount)}, false},
                    ConnectionRow{"withoutModifyTime", {DevicePath(g_vdCfgModifyTime)}, false},
                    ConnectionRow{"withoutPolarisation", {PolarisationPath()}, true},
                    ConnectionRow{"withoutAny",
                                  {DevicePath(g_vdDevType), DevicePath(g_vdDevMaxChannelCount),
                                   DevicePath(g_vdCfgModifyTime), PolarisationPath()},
                                  false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ZANCharacteristicsModelTest, ADeviceWithoutConfigurationNodeIsConnectedIncompletely) {
    DeviceTree::SetAntennas({HfAntenna()});
    ASSERT_TRUE(Tree::Instance()->Remove(CfgNode()));
    CodeObserver observer;
    ZANCharacteristics characteristics;
    characteristics.AddObserver(&observer);
    EXPECT_FALSE(characteristics.SetBase_ValuePath(DeviceTree::Path(), true));
    EXPECT_EQ(AntennaCount(characteristics), 1U);
    DeviceTree::SetType(u"ZANFERN"_s);
    EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANFERN);
    EXPECT_EQ(observer.codes, toldOnce);
}

TEST_F(ZANCharacteristicsModelTest, AValueOfAnotherTypeCountsAsMissing) {
    ASSERT_TRUE(RemoveFromTree(DevicePath(g_vdDevType)));
    ASSERT_TRUE(InsertInTree<ValueNumericInt>(DevicePath(g_vdDevType)));
    ZANCharacteristics characteristics;
    EXPECT_FALSE(characteristics.SetBase_ValuePath(DeviceTree::Path(), true));
    EXPECT_EQ(Tree::Instance()->GetValue(DevicePath(g_vdDevType))->GetObserverCount(), 0U);
}

TEST_F(ZANCharacteristicsModelTest, ASlashAtTheEndOfThePathMakesNoDifference) {
    DeviceTree::SetAntennas({HfAntenna()});
    ZANCharacteristics characteristics;
    EXPECT_TRUE(characteristics.SetBase_ValuePath(DeviceTree::Path() + u'/', true));
    EXPECT_EQ(AntennaCount(characteristics), 1U);
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), one);
}

TEST_F(ZANCharacteristicsModelTest, IsNotConnectedWithoutANodeAtThePath) {
    ZANCharacteristics characteristics;
    for (const QString& path : {QString(), u"/DEVICES/None"_s, u"DEVICES/ZANServer"_s, u"/"_s, u"//"_s,
                                DevicePath(g_vdDevType), DeviceTree::Path() + u"//"_s}) {
        SCOPED_TRACE(path.toStdString());
        ASSERT_TRUE(characteristics.SetBase_ValuePath(DeviceTree::Path(), true));
        EXPECT_FALSE(characteristics.SetBase_ValuePath(path, true));
        EXPECT_EQ(ObserverCounts(DeviceTree::Path()), nobody);
        EXPECT_EQ(Tree::Instance()->GetValue(PolarisationPath())->GetObserverCount(), 0U);
    }
}

TEST_F(ZANCharacteristicsModelTest, UpdatesNothingWhileItIsNotConnected) {
    DeviceTree::SetType(u"ZANMOSS"_s);
    DeviceTree::SetAntennas({HfAntenna()});
    ZANCharacteristics characteristics;
    characteristics.UpdateCachedDataFromValueTree();
    EXPECT_EQ(AntennaCount(characteristics), 0U);

    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    characteristics.SetBase_ValuePath(u"/None"_s, true);
    DeviceTree::SetType(u"ZANFERN"_s);
    DeviceTree::SetAntennas({});
    characteristics.UpdateCachedDataFromValueTree();
    EXPECT_EQ(AntennaCount(characteristics), 1U);
    EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANMOSS);
}

TEST_F(ZANCharacteristicsModelTest, ConnectingReadsAllThatIsCachedButNotifiesNobody) {
    DeviceTree::SetType(u"ZANREEF"_s);
    SetValueAt(DevicePath(g_vdDevMaxChannelCount), 1234);
    DeviceTree::SetAntennas({HfAntenna(), VuhfAntenna()});
    for (const bool autoUpdate : {false, true}) {
        CodeObserver observer;
        ZANCharacteristics characteristics;
        characteristics.AddObserver(&observer);
        characteristics.SetBase_ValuePath(DeviceTree::Path(), autoUpdate);
        EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANREEF);
        EXPECT_EQ(characteristics.GetMaxChannelCount(), 1234);
        EXPECT_EQ(AntennaCount(characteristics), 2U);
        EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 300e3);
        EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 1300e6);
        double vuhfStart = 0.0;
        double hfEnd = 0.0;
        EXPECT_TRUE(characteristics.GetConverterSwitchFreq(vuhfStart, hfEnd));
        EXPECT_EQ(observer.codes, notTold);
    }
}

TEST_F(ZANCharacteristicsModelTest, SwitchingBetweenTwoDevicesAThousandTimesLeavesNothingBehind) {
    const QString other = u"/DEVICES/Other"_s;
    CreateBranch(EBranch::DEVICE, other);
    SetValueAt(other + g_vdDevType.PathName(), u"ZANMOSS"_s);
    DeviceTree::SetAntennas({HfAntenna()});
    ZANCharacteristics characteristics;
    for (int i = 0; i < 1000; ++i) {
        const bool isOther = i % 2 == 0;
        ASSERT_TRUE(characteristics.SetBase_ValuePath(isOther ? other : DeviceTree::Path(), i % 3 == 0));
        ASSERT_EQ(characteristics.GetZANType(), isOther ? ZANTYPE_ZANMOSS : ZANTYPE_ZANTIDE);
        ASSERT_EQ(AntennaCount(characteristics), isOther ? 0U : 1U);
    }
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), one);
    EXPECT_EQ(ObserverCounts(other), nobody);
    EXPECT_EQ(Tree::Instance()->GetValue(PolarisationPath())->GetObserverCount(), 1U);
    characteristics.SetBase_ValuePath({}, true);
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), nobody);
    EXPECT_EQ(Tree::Instance()->GetValue(PolarisationPath())->GetObserverCount(), 0U);
}

// Changes of the tree

/// One of the values that are followed: a change of it, and what the change does.
struct FollowedRow {
    const char* name;
    std::function<void()> change;
    std::function<int(ZANCharacteristics&)> query;
    int before;
    int after;
    bool isReadOnEachQuery;
};

const std::vector<FollowedRow>& FollowedValues() {
    static const std::vector<FollowedRow> rows{
        {"deviceType", [] { SetValueAt(DevicePath(g_vdDevType), u"ZANFERN"_s); },
         [](ZANCharacteristics& c) { return static_cast<int>(c.GetZANType()); }, ZANTYPE_ZANTIDE,
         ZANTYPE_ZANFERN, false},
        {"channelCount", [] { SetValueAt(DevicePath(g_vdDevMaxChannelCount), 77); },
         [](ZANCharacteristics& c) { return c.GetMaxChannelCount(); }, 60000, 77, false},
        {"modifyTime",
         [] {
             DeviceTree::SetAntennas({HfAntenna()});
             SetValueAt(DevicePath(g_vdCfgModifyTime), u"201126123456"_s);
         },
         [](ZANCharacteristics& c) { return static_cast<int>(AntennaCount(c)); }, 2, 1, false},
        {"polarisation", [] { SetValueAt(PolarisationPath(), u"Horizontal"_s); },
         [](ZANCharacteristics& c) { return HandleAt(c, 100e6); }, 1, 2, true},
    };
    return rows;
}

TEST_F(ZANCharacteristicsModelTest, FollowsAChangeWithAutoUpdateAndNotifiesItsObserversOnce) {
    for (const FollowedRow& row : FollowedValues()) {
        SCOPED_TRACE(row.name);
        const DeviceTree device;
        DeviceTree::SetAntennas(Pair());
        ZANCharacteristics characteristics;
        characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
        ASSERT_EQ(row.query(characteristics), row.before);
        int seen = -1;
        int count = 0;
        FunctionObserver observer([&](Observable* subject, TChangeCode code) {
            EXPECT_EQ(subject, &characteristics);
            EXPECT_EQ(code, TChangeCode::Changed);
            seen = row.query(characteristics);
            ++count;
        });
        characteristics.AddObserver(&observer);
        row.change();
        EXPECT_EQ(count, 1);
        EXPECT_EQ(seen, row.after) << "the observers are notified after the change is taken over";
        EXPECT_EQ(row.query(characteristics), row.after);
    }
}

TEST_F(ZANCharacteristicsModelTest, FollowsNothingWithoutAutoUpdateAndNotifiesNobody) {
    for (const FollowedRow& row : FollowedValues()) {
        SCOPED_TRACE(row.name);
        const DeviceTree device;
        DeviceTree::SetAntennas(Pair());
        ZANCharacteristics characteristics;
        characteristics.SetBase_ValuePath(DeviceTree::Path(), false);
        CodeObserver observer;
        characteristics.AddObserver(&observer);
        row.change();
        EXPECT_EQ(observer.codes, notTold);
        EXPECT_EQ(row.query(characteristics), row.isReadOnEachQuery ? row.after : row.before);
        characteristics.UpdateCachedDataFromValueTree();
        EXPECT_EQ(row.query(characteristics), row.after) << "what is asked for is read all the same";
        EXPECT_EQ(observer.codes, notTold);
    }
}

TEST_F(ZANCharacteristicsModelTest, AnotherDeviceTypeIsTakenOverAloneUntilTheNextRebuild) {
    DeviceTree::SetAntennas({HfAntenna()});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    ASSERT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 300e3);
    DeviceTree::SetType(u"ZANMOSS"_s); // which does not serve the converter of the antenna
    EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANMOSS);
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 300e3);
    SetValueAt(DevicePath(g_vdCfgModifyTime), u"201126123456"_s);
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 25e6);
}

TEST_F(ZANCharacteristicsModelTest, TheModifyTimeHasEverythingReadAgain) {
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    DeviceTree::SetAntennas({HfAntenna(), VuhfAntenna()});
    EXPECT_EQ(AntennaCount(characteristics), 0U);
    SetValueAt(DevicePath(g_vdCfgModifyTime), u"201126123456"_s);
    EXPECT_EQ(AntennaCount(characteristics), 2U);
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_SCAN), 300e3);
    EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_SCAN), 1300e6);
    double vuhfStart = 0.0;
    double hfEnd = 0.0;
    EXPECT_TRUE(characteristics.GetConverterSwitchFreq(vuhfStart, hfEnd));
    EXPECT_EQ(vuhfStart, 20e6);
    EXPECT_EQ(hfEnd, 30e6);
}

TEST_F(ZANCharacteristicsModelTest, ChangesOfOtherSubjectsAndOtherCodesDoNothing) {
    DeviceTree::SetAntennas({HfAntenna()});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    CodeObserver observer;
    characteristics.AddObserver(&observer);
    DeviceTree::SetAntennas({}); // what a rebuild would read

    ValueString stranger;
    characteristics.Update(&stranger, TChangeCode::Changed);
    characteristics.Update(nullptr, TChangeCode::Changed);
    characteristics.Update(CfgNode(), TChangeCode::Changed);
    characteristics.Update(DeviceTree::DeviceValue<ValueString>(g_vdCfgModifyTime),
                           TChangeCode::ListReplaced);
    characteristics.Update(&stranger, TChangeCode::GoingAway);
    characteristics.Update(nullptr, TChangeCode::GoingAway);
    characteristics.Update(nullptr, TChangeCode::NodeGoingAway);
    // The code of a node does not mean that of a value, nor the other way round.
    characteristics.Update(CfgNode(), TChangeCode::GoingAway);
    for (const ValueDescriptor* descriptor : {&g_vdDevType, &g_vdDevMaxChannelCount, &g_vdCfgModifyTime}) {
        characteristics.Update(Tree::Instance()->GetValue(DevicePath(*descriptor)),
                               TChangeCode::NodeGoingAway);
    }
    EXPECT_EQ(observer.codes, notTold);
    EXPECT_EQ(AntennaCount(characteristics), 1U);
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), one);
}

TEST_F(ZANCharacteristicsModelTest, NullIsNoSubjectWhileNothingIsHeld) {
    ZANCharacteristics characteristics;
    CodeObserver observer;
    characteristics.AddObserver(&observer);
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    Tree::Instance()->Remove(Tree::Instance()->GetNode(DeviceTree::Path()));
    characteristics.Update(nullptr, TChangeCode::Changed);
    EXPECT_EQ(observer.codes, notTold);
}

TEST_F(ZANCharacteristicsModelTest, ForgetsAValueThatGoesAwayAndAnswersItsDefault) {
    struct Row {
        const char* name;
        QString path;
        std::function<int(ZANCharacteristics&)> query;
        int before;
        int afterwards;
    };
    const std::vector<Row> rows{
        {"deviceType", DevicePath(g_vdDevType),
         [](ZANCharacteristics& c) { return static_cast<int>(c.GetZANType()); }, ZANTYPE_ZANMOSS,
         ZANTYPE_ZANTIDE},
        {"channelCount", DevicePath(g_vdDevMaxChannelCount),
         [](ZANCharacteristics& c) { return c.GetMaxChannelCount(); }, 77, 60000},
        {"modifyTime", DevicePath(g_vdCfgModifyTime),
         [](ZANCharacteristics& c) { return static_cast<int>(AntennaCount(c)); }, 2, 2},
        // Neither antenna has the default: the last one is taken.
        {"polarisation", PolarisationPath(), [](ZANCharacteristics& c) { return HandleAt(c, 100e6); }, 1, 2},
    };
    for (const Row& row : rows) {
        for (const bool autoUpdate : {false, true}) {
            SCOPED_TRACE(row.name);
            const DeviceTree device;
            DeviceTree::SetType(u"ZANMOSS"_s);
            SetValueAt(DevicePath(g_vdDevMaxChannelCount), 77);
            DeviceTree::SetAntennas(Pair());
            ZANCharacteristics characteristics;
            characteristics.SetBase_ValuePath(DeviceTree::Path(), autoUpdate);
            CodeObserver observer;
            characteristics.AddObserver(&observer);
            ASSERT_EQ(row.query(characteristics), row.before);
            ASSERT_TRUE(RemoveFromTree(row.path));
            EXPECT_EQ(row.query(characteristics), row.afterwards);
            characteristics.UpdateCachedDataFromValueTree();
            EXPECT_EQ(row.query(characteristics), row.afterwards);
            EXPECT_EQ(observer.codes, notTold);
        }
    }
}

TEST_F(ZANCharacteristicsModelTest, DetachesFromEachThingThatGoesAway) {
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    for (const QString& path : {DevicePath(g_vdDevType), DevicePath(g_vdDevMaxChannelCount),
                                DevicePath(g_vdCfgModifyTime), PolarisationPath()}) {
        SCOPED_TRACE(path.toStdString());
        ValueBase* const value = Tree::Instance()->GetValue(path);
        characteristics.Update(value, TChangeCode::GoingAway);
        EXPECT_EQ(value->GetObserverCount(), 0U);
        characteristics.Update(value, TChangeCode::GoingAway);
    }
    characteristics.Update(CfgNode(), TChangeCode::NodeGoingAway);
    EXPECT_EQ(CfgNode()->GetObserverCount(), 0U);

    CodeObserver observer;
    characteristics.AddObserver(&observer);
    DeviceTree::SetType(u"ZANFERN"_s);
    characteristics.Update(DeviceTree::DeviceValue<ValueString>(g_vdDevType), TChangeCode::Changed);
    EXPECT_EQ(observer.codes, notTold);
}

TEST_F(ZANCharacteristicsModelTest, AValueThatDoesNotObserveIsNotForgotten) {
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    auto* const type = DeviceTree::DeviceValue<ValueString>(g_vdDevType);
    type->SetValue(u"ZANFERN"_s, nullptr);
    type->DeleteObserver(&characteristics);
    characteristics.Update(type, TChangeCode::GoingAway); // detaching does not succeed
    characteristics.UpdateCachedDataFromValueTree();
    EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANFERN);
}

TEST_F(ZANCharacteristicsModelTest, ADeviceThatGoesAwayAndComesBackIsFollowedAgainAfterReconnecting) {
    ZANCharacteristics characteristics;
    CodeObserver observer;
    characteristics.AddObserver(&observer);
    for (int i = 0; i < 3; ++i) {
        DeviceTree::SetAntennas({HfAntenna()});
        ASSERT_TRUE(characteristics.SetBase_ValuePath(DeviceTree::Path(), true));
        ASSERT_TRUE(Tree::Instance()->Remove(Tree::Instance()->GetNode(DeviceTree::Path())));
        characteristics.UpdateCachedDataFromValueTree();
        EXPECT_EQ(AntennaCount(characteristics), 0U);
        EXPECT_FALSE(characteristics.SetBase_ValuePath(DeviceTree::Path(), true));

        CreateBranch(EBranch::DEVICE, DeviceTree::Path());
        DeviceTree::SetType(u"ZANFERN"_s);
        EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANTIDE);
        EXPECT_EQ(observer.codes, notTold);

        ASSERT_TRUE(characteristics.SetBase_ValuePath(DeviceTree::Path(), true));
        EXPECT_EQ(ObserverCounts(DeviceTree::Path()), one);
        EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANFERN);
        DeviceTree::SetType(u"ZANTIDE"_s);
        EXPECT_EQ(observer.codes, toldOnce);
        observer.codes.clear();
    }
}

TEST_F(ZANCharacteristicsModelTest, OnlyTheConfigurationGoesAwayAndComesBack) {
    ZANCharacteristics characteristics;
    CodeObserver observer;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    characteristics.AddObserver(&observer);
    ASSERT_TRUE(Tree::Instance()->Remove(CfgNode()));
    CreateBranch(EBranch::DEVICE, DeviceTree::Path());
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), (std::vector<std::size_t>{0, 1, 1, 0}));
    SetValueAt(DevicePath(g_vdCfgModifyTime), u"201126123456"_s);
    EXPECT_EQ(observer.codes, notTold);
    EXPECT_TRUE(characteristics.SetBase_ValuePath(DeviceTree::Path(), true));
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), one);
}

TEST_F(ZANCharacteristicsModelTest, AnObserverMayDestroyTheInformationCenter) {
    for (const FollowedRow& row : FollowedValues()) {
        SCOPED_TRACE(row.name);
        const DeviceTree device;
        DeviceTree::SetAntennas(Pair());
        FunctionObserver destroyer([](Observable*, TChangeCode) { ZANInformationCenter::Finalise(); });
        CodeObserver later;
        ZANCharacteristics& characteristics = DeviceTree::Connect();
        characteristics.AddObserver(&destroyer);
        characteristics.AddObserver(&later);
        row.change();
        EXPECT_EQ(later.codes, notTold);
        EXPECT_EQ(ObserverCounts(DeviceTree::Path()), nobody);
        EXPECT_EQ(AntennaCount(ZANInformationCenter::Instance()->GetZANCharacteristics()), 0U);
    }
}

TEST_F(ZANCharacteristicsModelTest, AnObserverMayConnectAgainToWhatItLikes) {
    const QString other = u"/DEVICES/Other"_s;
    for (const QString& path : {DeviceTree::Path(), other, u"/None"_s}) {
        for (const FollowedRow& row : FollowedValues()) {
            SCOPED_TRACE(path.toStdString() + " " + row.name);
            const DeviceTree device;
            CreateBranch(EBranch::DEVICE, other);
            DeviceTree::SetAntennas(Pair());
            ZANCharacteristics characteristics;
            characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
            int count = 0;
            FunctionObserver switcher([&](Observable*, TChangeCode) {
                ++count;
                characteristics.SetBase_ValuePath(path, true);
            });
            characteristics.AddObserver(&switcher);
            row.change();
            EXPECT_EQ(count, 1);
            EXPECT_EQ(ObserverCounts(DeviceTree::Path()), path == DeviceTree::Path() ? one : nobody);
            EXPECT_EQ(ObserverCounts(other), path == other ? one : nobody);
        }
    }
}

TEST_F(ZANCharacteristicsModelTest, DetachesFromTheTreeAtItsEnd) {
    auto characteristics = std::make_unique<ZANCharacteristics>();
    characteristics->SetBase_ValuePath(DeviceTree::Path(), true);
    ASSERT_EQ(ObserverCounts(DeviceTree::Path()), one);
    characteristics.reset();
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), nobody);
    EXPECT_EQ(Tree::Instance()->GetValue(PolarisationPath())->GetObserverCount(), 0U);
}

TEST_F(ZANCharacteristicsModelTest, OutlivesTheValuesOfTheTree) {
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    Tree::Instance()->Clear();
    EXPECT_EQ(characteristics.GetAntennaForFrequency(100e6, false), nullptr);
    EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANTIDE);
}

// Copies

TEST_F(ZANCharacteristicsModelTest, ACopyHoldsWhatItsSourceHoldsAndFollowsByItself) {
    DeviceTree::SetType(u"ZANREEF"_s);
    SetValueAt(DevicePath(g_vdDevMaxChannelCount), 77);
    AntennaData antenna = WithHandle(VuhfAntenna(), 5);
    antenna.dfMethods = {METHOD_SUPR};
    DeviceTree::SetAntennas({WithHandle(HfAntenna(), 4), antenna});
    ZANCharacteristics source;
    source.SetBase_ValuePath(DeviceTree::Path(), false);
    ASSERT_EQ(source.GetAvailableDfMethodsForFreq(100e6, 0.0).size(), 1U);
    // What the tree holds meanwhile is not what the source holds.
    DeviceTree::SetType(u"ZANFERN"_s);
    SetValueAt(DevicePath(g_vdDevMaxChannelCount), 88);
    DeviceTree::SetAntennas({});

    ZANCharacteristics assigned;
    assigned = source;
    const ZANCharacteristics constructed(source);
    for (const ZANCharacteristics* copy : {&constructed, static_cast<const ZANCharacteristics*>(&assigned)}) {
        EXPECT_EQ(copy->GetZANType(), ZANTYPE_ZANREEF);
        EXPECT_EQ(copy->GetMaxChannelCount(), 77);
        EXPECT_EQ(copy->GetAntennaHandles(false), (std::set<long>{4, 5}));
        EXPECT_EQ(copy->GetMinFreq(OPMODE_FFM), 300e3);
        EXPECT_EQ(copy->GetMaxFreq(OPMODE_FFM), 1300e6);
        EXPECT_TRUE(copy->IsSuperResolutionAvailable());
        double vuhfStart = 0.0;
        double hfEnd = 0.0;
        EXPECT_TRUE(copy->GetConverterSwitchFreq(vuhfStart, hfEnd));
        EXPECT_EQ(vuhfStart, 20e6);
        EXPECT_EQ(hfEnd, 30e6);
        ASSERT_NE(copy->GetAntennaByIndex(1), nullptr);
        EXPECT_NE(copy->GetAntennaByIndex(1), source.GetAntennaByIndex(1));
        EXPECT_EQ(copy->GetAntennaByIndex(1)->name, source.GetAntennaByIndex(1)->name);
        EXPECT_EQ(copy->GetAntennaByIndex(1)->dfMethods, source.GetAntennaByIndex(1)->dfMethods);
    }
    source.GetAntennaByIndex(1)->enabled = false;
    EXPECT_TRUE(constructed.GetAntennaByIndex(1)->enabled);
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), (std::vector<std::size_t>{3, 3, 3, 3}));

    assigned.SetBase_ValuePath(DeviceTree::Path(), true);
    EXPECT_EQ(assigned.GetZANType(), ZANTYPE_ZANFERN);
    EXPECT_EQ(constructed.GetZANType(), ZANTYPE_ZANREEF);
    EXPECT_EQ(source.GetZANType(), ZANTYPE_ZANREEF);
}

TEST_F(ZANCharacteristicsModelTest, CopyAndSourceFollowTheTreeAndEndInEitherOrder) {
    for (const bool isSourceFirst : {false, true}) {
        auto source = std::make_unique<ZANCharacteristics>();
        source->SetBase_ValuePath(DeviceTree::Path(), true);
        auto copy = std::make_unique<ZANCharacteristics>(*source);
        DeviceTree::SetType(u"ZANMOSS"_s);
        EXPECT_EQ(source->GetZANType(), ZANTYPE_ZANMOSS);
        EXPECT_EQ(copy->GetZANType(), ZANTYPE_ZANMOSS);
        (isSourceFirst ? source : copy).reset();
        DeviceTree::SetType(u"ZANFERN"_s);
        EXPECT_EQ((isSourceFirst ? copy : source)->GetZANType(), ZANTYPE_ZANFERN);
        EXPECT_EQ(ObserverCounts(DeviceTree::Path()), one);
        source.reset();
        copy.reset();
        EXPECT_EQ(ObserverCounts(DeviceTree::Path()), nobody);
        DeviceTree::SetType(u"ZANTIDE"_s);
    }
}

TEST_F(ZANCharacteristicsModelTest, AssigningToItselfChangesNothing) {
    DeviceTree::SetAntennas({HfAntenna()});
    ZANCharacteristics characteristics;
    CodeObserver observer;
    characteristics.AddObserver(&observer);
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    const AntennaData* const antenna = characteristics.GetAntennaByIndex(0);
    const ZANCharacteristics& same = characteristics;
    characteristics = same;
    EXPECT_EQ(characteristics.GetAntennaByIndex(0), antenna);
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), one);
    DeviceTree::SetType(u"ZANMOSS"_s);
    EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANMOSS);
    EXPECT_EQ(observer.codes, toldOnce);
}

TEST_F(ZANCharacteristicsModelTest, AssigningAnUnconnectedOneDisconnects) {
    DeviceTree::SetAntennas({HfAntenna()});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    characteristics = ZANCharacteristics();
    EXPECT_EQ(ObserverCounts(DeviceTree::Path()), nobody);
    EXPECT_EQ(AntennaCount(characteristics), 0U);
    characteristics.UpdateCachedDataFromValueTree();
    EXPECT_EQ(AntennaCount(characteristics), 0U);
}

// Device type and channel count

TEST_F(ZANCharacteristicsModelTest, DeviceTypeNamesLeadToTypes) {
    struct Row {
        QString name;
        EZANType type;
        bool isKnown;
    };
    const std::vector<Row> rows{
        {u"ZANTIDE"_s, ZANTYPE_ZANTIDE, true},           {u"ZANREEF"_s, ZANTYPE_ZANREEF, true},
        {u"ZANDUNE"_s, ZANTYPE_ZANDUNE, true},           {u"ZANFERN"_s, ZANTYPE_ZANFERN, true},
        {u"ZANMOSS"_s, ZANTYPE_ZANMOSS, true},           {u"zanmoss"_s, ZANTYPE_ZANTIDE, false},
        {u"ZANMOSS "_s, ZANTYPE_ZANTIDE, false},         {QString(), ZANTYPE_ZANTIDE, false},
        {u"ZAN %1 %s"_s, ZANTYPE_ZANTIDE, false},        {u"5"_s, ZANTYPE_ZANTIDE, false},
        {u"ZANKÄÖ\U0001F4E1"_s, ZANTYPE_ZANTIDE, false},
    };
    ZANCharacteristics characteristics;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name.toStdString());
        DeviceTree::SetType(u"ZANMOSS"_s);
        characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
        m_traces.lines.clear();
        DeviceTree::SetType(row.name);
        EXPECT_EQ(characteristics.GetZANType(), row.type);
        ASSERT_EQ(m_traces.lines.size(), row.isKnown ? 0 : 1);
        if (!row.isKnown) {
            const QString& line = m_traces.lines.first();
            EXPECT_TRUE(line.startsWith(u"devicecontrol\\directionfinder\\zancommon\\zancharacteristics("_s))
                << line.toStdString();
            EXPECT_EQ(line.section(u"): "_s, 1),
                      u"WARNING: device type "_s + row.name + u" not fully supported"_s);
        }
    }
}

TEST_F(ZANCharacteristicsModelTest, AMissingDeviceTypeIsNotTraced) {
    RemoveFromTree(DevicePath(g_vdDevType));
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANTIDE);
    EXPECT_TRUE(m_traces.lines.isEmpty());
}

TEST_F(ZANCharacteristicsModelTest, AnUnknownDeviceTypeIsTracedOnlyWhenInformationIs) {
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    ErrorHandler::Instance().SetTraceMask(~TraceBit::INFORMATION);
    DeviceTree::SetType(u"other"_s);
    EXPECT_TRUE(m_traces.lines.isEmpty());
}

TEST_F(ZANCharacteristicsModelTest, AChannelCountBelowOneYieldsTheDefault) {
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    for (const auto& [count, expected] : std::vector<std::pair<int, int>>{
             {1, 1}, {0, 60000}, {2, 2}, {-1, 60000}, {60001, 60001}, {INT_MIN, 60000}, {INT_MAX, INT_MAX}}) {
        SetValueAt(DevicePath(g_vdDevMaxChannelCount), count);
        EXPECT_EQ(characteristics.GetMaxChannelCount(), expected) << count;
    }
}

TEST(ZANCharacteristicsDefaults, AreInForceWhileNothingWasEverConnected) {
    const TraceLines traces;
    ZANCharacteristics characteristics;
    EXPECT_EQ(ZANCharacteristics::MAX_CHANNEL_COUNT_DEFAULT, 60000);
    EXPECT_EQ(characteristics.GetMaxChannelCount(), 60000);
    EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANTIDE);
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 25e6);
    EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 25e6);
    EXPECT_EQ(characteristics.GetAntennaByIndex(0), nullptr);
    EXPECT_EQ(characteristics.GetAntennaByHandle(-1), nullptr);
    EXPECT_EQ(characteristics.GetAntennaForFrequency(25e6, false), nullptr);
    double vuhfStart = 1.0;
    double hfEnd = 1.0;
    EXPECT_FALSE(characteristics.GetConverterSwitchFreq(vuhfStart, hfEnd));
    EXPECT_EQ(vuhfStart, 0.0);
    EXPECT_EQ(hfEnd, 0.0);
}

// Polarisation

TEST_F(ZANCharacteristicsModelTest, PolarisationPrefersTheAntennaOfItsName) {
    std::vector<AntennaData> antennas;
    for (int mode = 0; mode < 4; ++mode) {
        antennas.push_back(WithHandle(VuhfAntenna(), mode));
        antennas.back().polarizationMode = static_cast<EZANPolarisation>(mode);
    }
    antennas.push_back(WithHandle(VuhfAntenna(), 9));
    antennas.back().polarizationMode = static_cast<EZANPolarisation>(9);
    DeviceTree::SetAntennas(antennas);
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    // A name that is none prefers no antenna: the last one is taken.
    for (const auto& [name, handle] : std::vector<std::pair<QString, int>>{{u"Left"_s, 0},
                                                                           {u"Right"_s, 1},
                                                                           {u"Vertical"_s, 2},
                                                                           {u"Horizontal"_s, 3},
                                                                           {u"left"_s, 9},
                                                                           {QString(), 9}}) {
        SetValueAt(PolarisationPath(), name);
        EXPECT_EQ(HandleAt(characteristics, 100e6), handle) << name.toStdString();
    }
    RemoveFromTree(PolarisationPath());
    EXPECT_EQ(HandleAt(characteristics, 100e6), POLARISATION_LEFT);
}

// Converter switch frequencies

struct SwitchRow {
    const char* name;
    std::vector<AntennaData> antennas;
    double vuhfStart;
    double hfEnd;
};

AntennaData Range(double low, double high) {
    return MakeAntenna(u"PX106"_s, u"RCV03"_s, low, high);
}

TEST_F(ZANCharacteristicsModelTest, ConverterSwitchFrequenciesComeFromTheEnabledAntennas) {
    const std::vector<SwitchRow> rows{
        {"no antenna", {}, 0.0, 0.0},
        {"VUHF from 20 MHz", {Range(20e6, 1300e6)}, 20e6, 0.0},
        {"VUHF from 30 MHz", {Range(30e6, 1300e6)}, 30e6, 0.0},
        {"VUHF from 30.5 MHz", {Range(30.5e6, 1300e6)}, 0.0, 0.0},
        {"1 Hz below the lowest start", {Range(19999999.0, 1300e6)}, 0.0, 0.0},
        {"half a hertz below the lowest start", {Range(19999999.5, 1300e6)}, 0.0, 0.0},
        {"1 Hz above the lowest start", {Range(20000001.0, 1300e6)}, 20000001.0, 0.0},
        {"on the highest start", {Range(30000001.0, 1300e6)}, 30000001.0, 0.0},
        {"half a hertz above the highest start", {Range(30000001.5, 1300e6)}, 0.0, 0.0},
        {"1 Hz above the highest start", {Range(30000002.0, 1300e6)}, 0.0, 0.0},
        {"HF up to its end", {Range(300e3, 30e6)}, 0.0, 30e6},
        {"HF up to 1 Hz below its end", {Range(300e3, 29999999.0)}, 0.0, 29999999.0},
        {"too high by half a hertz for HF, too low for VUHF", {Range(300e3, 30000000.5)}, 0.0, 0.0},
        {"1 Hz above the end of HF", {Range(25e6, 30000001.0)}, 25e6, 0.0},
        {"HF before VUHF when both fit", {Range(20e6, 30e6)}, 0.0, 30e6},
        {"both", {Range(300e3, 30e6), Range(30000001.0, 1300e6)}, 30000001.0, 30e6},
        {"later ones overwrite",
         {Range(300e3, 30e6), Range(20e6, 100e6), Range(300e3, 1e6), Range(25e6, 100e6)},
         25e6,
         1e6},
        {"later ones that do not fit do not", {Range(20e6, 100e6), Range(100e6, 200e6)}, 20e6, 0.0},
        {"disabled ones do not count", {Disabled(Range(300e3, 30e6)), Disabled(Range(20e6, 1300e6))}, 0, 0},
    };
    ZANCharacteristics characteristics;
    for (const SwitchRow& row : rows) {
        SCOPED_TRACE(row.name);
        DeviceTree::SetAntennas(row.antennas);
        characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
        double vuhfStart = -1.0;
        double hfEnd = -1.0;
        EXPECT_EQ(characteristics.GetConverterSwitchFreq(vuhfStart, hfEnd), row.vuhfStart != 0.0);
        EXPECT_EQ(vuhfStart, row.vuhfStart);
        EXPECT_EQ(hfEnd, row.hfEnd);
    }
}

// Limits of the operation modes

constexpr std::array<int, 8> UNSERVED_MODES{5, 7, 8, 10, 11, 12, 13, 14};
constexpr std::array<int, 5> NO_MODES{-1, -2, 15, INT_MAX, INT_MIN};

TEST_F(ZANCharacteristicsModelTest, EachServedModeHasTheLimitsOfItsAntennas) {
    DeviceTree::SetAntennas({VuhfAntenna(), HfAntenna()});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    for (const int mode : {0, 1, 2, 3, 4, 6, 9}) {
        EXPECT_EQ(characteristics.GetMinFreq(static_cast<EOperationMode>(mode)), 300e3) << mode;
        EXPECT_EQ(characteristics.GetMaxFreq(static_cast<EOperationMode>(mode)), 1300e6) << mode;
    }
}

TEST_F(ZANCharacteristicsModelTest, ModesThatNoAntennaServesAreAt25MHz) {
    DeviceTree::SetAntennas({VuhfAntenna(), HfAntenna()});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    for (const auto& modes : {std::vector<int>(UNSERVED_MODES.begin(), UNSERVED_MODES.end()),
                              std::vector<int>(NO_MODES.begin(), NO_MODES.end())}) {
        for (const int mode : modes) {
            EXPECT_EQ(characteristics.GetMinFreq(static_cast<EOperationMode>(mode)), 25e6) << mode;
            EXPECT_EQ(characteristics.GetMaxFreq(static_cast<EOperationMode>(mode)), 25e6) << mode;
        }
    }
}

TEST_F(ZANCharacteristicsModelTest, WithNoAntennaForAModeADeviceOtherThanZanfernReports25MHzTwice) {
    DeviceTree::SetType(u"ZANMOSS"_s); // whose sample modes are for the modes 1, 3 and 4 only
    DeviceTree::SetAntennas({MakeAntenna(u"PX103"_s, u"RCV02"_s, 1e6, 30e6)});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    for (const int mode : {0, 1, 3, 4}) {
        EXPECT_EQ(characteristics.GetMinFreq(static_cast<EOperationMode>(mode)), 1e6) << mode;
        EXPECT_EQ(characteristics.GetMaxFreq(static_cast<EOperationMode>(mode)), 30e6) << mode;
    }
    for (const int mode : {2, 6, 9}) {
        EXPECT_EQ(characteristics.GetMinFreq(static_cast<EOperationMode>(mode)), 25e6) << mode;
        EXPECT_EQ(characteristics.GetMaxFreq(static_cast<EOperationMode>(mode)), 25e6) << mode;
    }
}

TEST_F(ZANCharacteristicsModelTest, DisabledAndUnsupportedAntennasDoNotExtendTheLimits) {
    DeviceTree::SetAntennas({Disabled(HfAntenna()), Range(100e6, 200e6),
                             MakeAntenna(u"PX122"_s, u"RCV99"_s, 20e6, 3600e6), Range(19e6, 300e6),
                             Range(150e6, 160e6)});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 100e6);
    EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 200e6);
    DeviceTree::SetAntennas({Disabled(HfAntenna())});
    characteristics.UpdateCachedDataFromValueTree();
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 25e6);
    EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 25e6);
}

TEST_F(ZANCharacteristicsModelTest, AMaximumChannelCountOfZeroOrLessYields60000) {
    ZANCharacteristics characteristics;
    for (const int count : {0, -5}) {
        SetValueAt(DevicePath(g_vdDevMaxChannelCount), count);
        characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
        EXPECT_EQ(characteristics.GetMaxChannelCount(), 60000);
    }
}

TEST_F(ZANCharacteristicsModelTest, ZanfernWithAntennasFrom20MHzTo3GHzReports100MHzAnd450MHz) {
    DeviceTree::SetType(u"ZANFERN"_s);
    DeviceTree::SetAntennas({Range(20e6, 1300e6), Range(1300e6, 3000e6)});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 100e6);
    EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 450e6);
}

TEST_F(ZANCharacteristicsModelTest, LimitsArePlausibleForTheDevice) {
    struct Row {
        QString type;
        double low; // of the range; above its end, where only one of the two is of interest
        double high;
        double minimum;
        double maximum;
    };
    // A range whose end lies below its start is supported as well when each lies within the sample mode.
    const std::vector<Row> rows{
        {u"ZANFERN"_s, 99999999.0, 449999999.0, 1e8, 449999999.0},
        {u"ZANFERN"_s, 99999999.5, 449999999.5, 1e8, 449999999.5},
        {u"ZANFERN"_s, 1e8, 4.5e8, 1e8, 4.5e8},
        {u"ZANFERN"_s, 100000000.5, 450000000.5, 100000000.5, 4.5e8},
        {u"ZANFERN"_s, 100000001.0, 450000001.0, 100000001.0, 4.5e8},
        {u"ZANFERN"_s, 500e6, 600e6, 4.5e8, 4.5e8},
        {u"ZANFERN"_s, 20e6, 50e6, 1e8, 1e8},
        {u"ZANTIDE"_s, 99e6, 3599999999.0, 99e6, 3599999999.0},
        {u"ZANTIDE"_s, 99e6, 3.6e9, 99e6, 3.6e9},
        {u"ZANTIDE"_s, 3.6e9, 3.6e9, 3.6e9, 3.6e9},
        {u"ZANTIDE"_s, 3600000000.5, 3.6e9, 25e6, 3.6e9},
        {u"ZANTIDE"_s, 3600000001.0, 3.6e9, 25e6, 3.6e9},
        {u"ZANTIDE"_s, 20e6, 9001.0, 20e6, 9001.0},
        {u"ZANTIDE"_s, 20e6, 9000.0, 20e6, 9000.0},
        {u"ZANTIDE"_s, 20e6, 8999.5, 20e6, 25e6},
        {u"ZANTIDE"_s, 20e6, 8999.0, 20e6, 25e6},
        {u"ZANTIDE"_s, ZANCharacteristics::fFREQUENCY_ANY, 50e6, 25e6, 50e6},
    };
    ZANCharacteristics characteristics;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type.toStdString() + " " + std::to_string(row.low) + " " + std::to_string(row.high));
        DeviceTree::SetType(row.type);
        DeviceTree::SetAntennas({Range(row.low, row.high)});
        characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
        EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), row.minimum);
        EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), row.maximum);
    }
}

TEST_F(ZANCharacteristicsModelTest, TheLowestPlausibleFrequencyIs9kHz) {
    ZANOptions::Instance()->AddOption(OPTION_ZAN_LF);
    DeviceTree::SetAntennas({MakeAntenna(u"PX120"_s, u"RCV07"_s, 9000.0, 1e6)});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 9000.0);
    EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 1e6);
}

TEST_F(ZANCharacteristicsModelTest, ZanfernClampsAlsoTheModesThatNoAntennaServes) {
    DeviceTree::SetType(u"ZANFERN"_s);
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    for (const int mode : NO_MODES) {
        EXPECT_EQ(characteristics.GetMinFreq(static_cast<EOperationMode>(mode)), 450e6) << mode;
        EXPECT_EQ(characteristics.GetMaxFreq(static_cast<EOperationMode>(mode)), 100e6) << mode;
    }
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 450e6);
    EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 100e6);
}

// Antennas by handle and position

TEST_F(ZANCharacteristicsModelTest, AntennasAreFoundByHandleAndPosition) {
    DeviceTree::SetAntennas({WithHandle(HfAntenna(), 7), Disabled(WithHandle(VuhfAntenna(), 3))});
    ZANCharacteristics characteristics;
    characteristics.SetBase_ValuePath(DeviceTree::Path(), true);
    ASSERT_NE(characteristics.GetAntennaByIndex(0), nullptr);
    EXPECT_EQ(characteristics.GetAntennaByIndex(0)->handle, 7);
    EXPECT_EQ(characteristics.GetAntennaByHandle(7), characteristics.GetAntennaByIndex(0));
    EXPECT_EQ(characteristics.GetAntennaByHandle(3), characteristics.GetAntennaByIndex(1));
    for (const int index : {-1, 2, INT_MAX, INT_MIN}) {
        EXPECT_EQ(characteristics.GetAntennaByIndex(index), nullptr) << index;
    }
    for (const long handle : {-1L, 0L, LONG_MAX, LONG_MIN}) {
        EXPECT_EQ(characteristics.GetAntennaByHandle(handle), nullptr) << handle;
    }
    EXPECT_EQ(characteristics.GetAntennaHandles(false), (std::set<long>{3, 7}));
    EXPECT_EQ(characteristics.GetAntennaHandles(true), (std::set<long>{7}));
}

} // namespace
