#include "stddevicedefinition/stddevicedescriptors.h"
#include "stddevicedefinition/antbuilder.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"

#include <gtest/gtest.h>

#include <QSet>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using StdDeviceTree::Ant;
using ZANPlatform::GetOrCreateValue;

namespace {

struct Row {
    const ValueDescriptor& descriptor;
    QString path;
    ValueType type;
    QString defaultText;
};

void ExpectCreatedAsDescribed(const Row& row, const QString& basePath) {
    SCOPED_TRACE(row.path.toStdString());
    EXPECT_EQ(row.descriptor.PathName(), row.path);
    const ValueBase* value = Tree::Instance()->GetValue(basePath + row.path);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->GetType(), row.type);
    EXPECT_EQ(value->GetStringValue(), row.defaultText);
    EXPECT_EQ(value->GetDescriptor(), &row.descriptor);
}

} // namespace

TEST(StdDeviceDescriptors, ValuesThatOthersReadAreAtTheirPathsWithTheirTypes) {
    CreateBranch(EBranch::SERVER, u"/ZANServer"_s);
    const Row rows[] = {
        {g_vdAzimuth, u"/Res/DfR/Azimuth"_s, ValueType::Bearing, u",,,,,"_s},
        {g_vdTrueHeading, u"/Res/HeaR/TrueHeading"_s, ValueType::Int, u"0"_s},
        {g_vdAltitude, u"/Res/PosR/Altitude"_s, ValueType::Double, u"0"_s},
        {g_vdRoll, u"/Res/PosR/Roll"_s, ValueType::Double, u"0"_s},
        {g_vdPitch, u"/Res/PosR/Pitch"_s, ValueType::Double, u"0"_s},
        {g_vdPosLastUpdate, u"/Res/PosR/PosLastUpdate"_s, ValueType::TimeStamp, u"0"_s},
        {g_vdPosLatitude, u"/Res/PosR/PosLatitude"_s, ValueType::Double, u"0"_s},
        {g_vdPosLongitude, u"/Res/PosR/PosLongitude"_s, ValueType::Double, u"0"_s},
        {g_vdAzimuthList, u"/Res/DfR/AzimuthList"_s, ValueType::List, u""_s},
        {g_vdSRStatus, u"/Par/Evt/SRStatus"_s, ValueType::Selection, u"Off"_s},
        {g_vdSRNumEmitterResult, u"/Res/EvtR/SRNumEmitterResult"_s, ValueType::Int, u"0"_s},
        {g_vdOperationMode, u"/DevAttr/OperationMode"_s, ValueType::Selection, u"Standby"_s},
        {g_vdOutInterval, u"/Out/OutInterval"_s, ValueType::Int, u"0"_s},
        {g_vdOutWithoutQuality, u"/Out/OutWithoutQuality"_s, ValueType::Double, u"0"_s},
        {g_vdOutLeftToInterval, u"/Out/OutLeftToInterval"_s, ValueType::Double, u"0"_s},
        {g_vdOutInStandby, u"/Out/OutInStandby"_s, ValueType::Double, u"0"_s},
        {g_vdOutWithoutEmitter, u"/Out/OutWithoutEmitter"_s, ValueType::Double, u"0"_s},
        {g_vdOutWithoutSink, u"/Out/OutWithoutSink"_s, ValueType::Double, u"0"_s},
        {g_vdFileEnabled, u"/Out/File/FileEnabled"_s, ValueType::Bool, u"0"_s},
        {g_vdFileName, u"/Out/File/FileName"_s, ValueType::String, u""_s},
        {g_vdFileRefused, u"/Out/File/FileRefused"_s, ValueType::String, u""_s},
        {g_vdFileState, u"/Out/File/FileState"_s, ValueType::Selection, u"Off"_s},
        {g_vdFileContent, u"/Out/File/FileContent"_s, ValueType::Selection, u"Nothing"_s},
        {g_vdFileSentences, u"/Out/File/FileSentences"_s, ValueType::Double, u"0"_s},
        {g_vdFileDropped, u"/Out/File/FileDropped"_s, ValueType::Double, u"0"_s},
        {g_vdFileLastError, u"/Out/File/FileLastError"_s, ValueType::String, u""_s},
        {g_vdFileLastErrorTime, u"/Out/File/FileLastErrorTime"_s, ValueType::TimeStamp, u"0"_s},
        {g_vdSerEnabled, u"/Out/Ser/SerEnabled"_s, ValueType::Bool, u"0"_s},
        {g_vdSerAddress, u"/Out/Ser/SerAddress"_s, ValueType::String, u""_s},
        {g_vdSerRefused, u"/Out/Ser/SerRefused"_s, ValueType::String, u""_s},
        {g_vdSerState, u"/Out/Ser/SerState"_s, ValueType::Selection, u"Off"_s},
        {g_vdSerContent, u"/Out/Ser/SerContent"_s, ValueType::Selection, u"Nothing"_s},
        {g_vdSerSentences, u"/Out/Ser/SerSentences"_s, ValueType::Double, u"0"_s},
        {g_vdSerDropped, u"/Out/Ser/SerDropped"_s, ValueType::Double, u"0"_s},
        {g_vdSerLastError, u"/Out/Ser/SerLastError"_s, ValueType::String, u""_s},
        {g_vdSerLastErrorTime, u"/Out/Ser/SerLastErrorTime"_s, ValueType::TimeStamp, u"0"_s},
        {g_vdHubEnabled, u"/Out/Hub/HubEnabled"_s, ValueType::Bool, u"0"_s},
        {g_vdHubAddress, u"/Out/Hub/HubAddress"_s, ValueType::String, u"127.0.0.1"_s},
        {g_vdHubPort, u"/Out/Hub/HubPort"_s, ValueType::Int, u"4500"_s},
        {g_vdHubClientName, u"/Out/Hub/HubClientName"_s, ValueType::String, u""_s},
        {g_vdHubTargets, u"/Out/Hub/HubTargets"_s, ValueType::String, u""_s},
        {g_vdHubRefused, u"/Out/Hub/HubRefused"_s, ValueType::String, u""_s},
        {g_vdHubState, u"/Out/Hub/HubState"_s, ValueType::Selection, u"Off"_s},
        {g_vdHubLastError, u"/Out/Hub/HubLastError"_s, ValueType::String, u""_s},
        {g_vdHubLastErrorTime, u"/Out/Hub/HubLastErrorTime"_s, ValueType::TimeStamp, u"0"_s},
        {g_vdRecEnabled, u"/Out/Rec/RecEnabled"_s, ValueType::Bool, u"0"_s},
        {g_vdRecFile, u"/Out/Rec/RecFile"_s, ValueType::String, u""_s},
        {g_vdRecFileSize, u"/Out/Rec/RecFileSize"_s, ValueType::Int, u"100"_s},
        {g_vdRecFileCount, u"/Out/Rec/RecFileCount"_s, ValueType::Int, u"10"_s},
        {g_vdRecRefused, u"/Out/Rec/RecRefused"_s, ValueType::String, u""_s},
        {g_vdRecState, u"/Out/Rec/RecState"_s, ValueType::Selection, u"Off"_s},
        {g_vdRecRows, u"/Out/Rec/RecRows"_s, ValueType::Double, u"0"_s},
        {g_vdRecDropped, u"/Out/Rec/RecDropped"_s, ValueType::Double, u"0"_s},
        {g_vdRecLastError, u"/Out/Rec/RecLastError"_s, ValueType::String, u""_s},
        {g_vdRecLastErrorTime, u"/Out/Rec/RecLastErrorTime"_s, ValueType::TimeStamp, u"0"_s},
        {g_vdGpsdState, u"/Res/GpsdR/GpsdState"_s, ValueType::Selection, u"Off"_s},
        {g_vdGpsdLastFailure, u"/Res/GpsdR/GpsdLastFailure"_s, ValueType::String, u""_s},
        {g_vdGpsdReceiver, u"/Res/GpsdR/GpsdReceiver"_s, ValueType::String, u""_s},
        {g_vdGpsdFixMode, u"/Res/GpsdR/GpsdFixMode"_s, ValueType::Selection, u"Unknown"_s},
        {g_vdGpsdSatellitesUsed, u"/Res/GpsdR/GpsdSatellitesUsed"_s, ValueType::Int, u"0"_s},
        {g_vdGpsdSatellitesSeen, u"/Res/GpsdR/GpsdSatellitesSeen"_s, ValueType::Int, u"0"_s},
        {g_vdGpsdPositionAge, u"/Res/GpsdR/GpsdPositionAge"_s, ValueType::Int, u"0"_s},
        {g_vdGpsdHeadingAge, u"/Res/GpsdR/GpsdHeadingAge"_s, ValueType::Int, u"0"_s},
    };
    for (const Row& row : rows) {
        ExpectCreatedAsDescribed(row, u"/ZANServer"_s);
    }
}

TEST(StdDeviceDescriptors, DeviceValuesAreBelowTheDeviceNode) {
    CreateBranch(EBranch::DEVICE, u"/DEVICES/ZANServer"_s);
    const Row rows[] = {
        {g_vdCfgModifyTime, u"/Cfg/CfgModifyTime"_s, ValueType::String, u""_s},
        {g_vdDevType, u"/DevAttr/DevType"_s, ValueType::String, u"ZANTIDE"_s},
        {g_vdDevOptions, u"/DevAttr/DevOptions"_s, ValueType::String, u""_s},
        {g_vdDevMaxChannelCount, u"/DevAttr/DevMaxChannelCount"_s, ValueType::Int, u"60000"_s},
        {g_vdDevState, u"/DevAttr/DevState"_s, ValueType::Int, u"0"_s},
        {g_vdBitMessages, u"/Res/BitR/BitMessages"_s, ValueType::String, u""_s},
        {g_vdCmdCommand, u"/Cmd/CmdCommand"_s, ValueType::String, u""_s},
    };
    for (const Row& row : rows) {
        ExpectCreatedAsDescribed(row, u"/DEVICES/ZANServer"_s);
    }
    EXPECT_NE(Tree::Instance()->GetNode(u"/DEVICES/ZANServer"_s + g_vdNodeCfg.PathName()), nullptr);
}

TEST(StdDeviceDescriptors, EveryRowOfEveryBranchIsCreatedUnderAPathOfItsOwn) {
    for (const EBranch branch : {EBranch::DEVICE, EBranch::SERVER, EBranch::ANTENNA}) {
        const QString basePath = u"/Branch%1"_s.arg(static_cast<int>(branch));
        CreateBranch(branch, basePath);
        QSet<QString> paths;
        for (const ValueDescriptor* descriptor : GetDescriptors(branch)) {
            paths.insert(descriptor->PathName());
            const QString path = basePath + descriptor->PathName();
            EXPECT_TRUE(Tree::Instance()->GetValue(path) || Tree::Instance()->GetNode(path))
                << path.toStdString();
        }
        EXPECT_EQ(static_cast<std::size_t>(paths.size()), GetDescriptors(branch).size());
    }
}

TEST(StdDeviceDescriptors, SourcesOfPositionAndHeadingHaveTheirKeysAndGpsdComesLast) {
    CreateBranch(EBranch::SERVER, u"/ZANServer"_s);
    const auto itemsOf = [](const ValueDescriptor& descriptor) {
        QStringList items;
        for (const SelectionItem& item :
             Tree::Instance()->Find<ValueSelection>(u"/ZANServer"_s + descriptor.PathName())->GetItems()) {
            items.append(QString::number(item.GetKey()) + u' ' + item.GetName());
        }
        return items;
    };
    EXPECT_EQ(itemsOf(g_vdPosSource), (QStringList{u"0 None"_s, u"1 GPS"_s, u"2 Manual"_s, u"3 gpsd"_s}));
    EXPECT_EQ(itemsOf(g_vdHeaSource),
              (QStringList{u"0 None"_s, u"1 Compass"_s, u"2 GPS"_s, u"3 Manual"_s, u"4 gpsd"_s}));
}

TEST(StdDeviceDescriptors, BasePathMayEndWithASlash) {
    CreateBranch(EBranch::DEVICE, u"/DEVICES/ZANServer/"_s);
    EXPECT_NE(Tree::Instance()->Find<ValueString>(u"/DEVICES/ZANServer/DevAttr/DevType"_s), nullptr);
    EXPECT_NE(Tree::Instance()->GetNode(u"/DEVICES/ZANServer/Cfg"_s), nullptr);
}

TEST(StdDeviceDescriptors, CreatingABranchAgainLeavesItsValuesAsTheyAre) {
    CreateBranch(EBranch::SERVER, u"/ZANServer"_s);
    auto* declination = Tree::Instance()->Find<ValueNumericInt>(u"/ZANServer"_s + g_vdDeclination.PathName());
    ASSERT_NE(declination, nullptr);
    declination->SetValue(17, nullptr);
    CreateBranch(EBranch::SERVER, u"/ZANServer"_s);
    EXPECT_EQ(Tree::Instance()->Find<ValueNumericInt>(u"/ZANServer"_s + g_vdDeclination.PathName()),
              declination);
    EXPECT_EQ(declination->GetValue(), 17);
}

TEST(StdDeviceDescriptors, CreatingABranchKeepsTheBasePathOfTheProcess) {
    ValueDescriptor::SetBasePath(u"/Kept"_s);
    CreateBranch(EBranch::DEVICE, u"/Device"_s);
    EXPECT_EQ(ValueDescriptor::GetBasePath(), u"/Kept"_s);
}

TEST(AntBuilder, AntennasBecomeNumberedNodesWithAllTheirValuesAtTheirDefaults) {
    Node* device = Tree::Instance()->CreateNode(u"/DEVICES/ZANServer"_s);
    const Node* first = AntBuilder::InsertChild(device);
    Node* second = AntBuilder::InsertChild(device);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->GetPath(), u"/DEVICES/ZANServer/Ant0"_s);
    EXPECT_EQ(second->GetPath(), u"/DEVICES/ZANServer/Ant1"_s);
    EXPECT_EQ(second->GetTreeItems().size(), 20);

    const Ant antenna(second);
    EXPECT_EQ(antenna.GetValue<ValueString>(g_vdAntName)->GetValue(), QString());
    EXPECT_EQ(antenna.GetValue<ValueInt>(g_vdAntHandle)->GetValue(), -1);
    EXPECT_TRUE(antenna.GetValue<ValueBool>(g_vdAntEnabled)->GetValue());
    EXPECT_EQ(antenna.GetValue<ValueNumericDouble>(g_vdAntCompassValue)->GetValue(), -1.0);
    EXPECT_EQ(antenna.GetValue<ValueInt>(g_vdAntConverterHandle)->GetValue(), -1);
    EXPECT_TRUE(antenna.GetValue<ValueSelection>(g_vdAntDfAlgorithm)->GetItems().empty());
}

TEST(AntBuilder, FreedNumberIsUsedAgain) {
    Node* device = Tree::Instance()->CreateNode(u"/Device"_s);
    Node* first = AntBuilder::InsertChild(device);
    AntBuilder::InsertChild(device);
    Tree::Instance()->Remove(first);
    EXPECT_EQ(AntBuilder::InsertChild(device)->GetPath(), u"/Device/Ant0"_s);
}

TEST(AntBuilder, NumberThatAValueHasIsLeftOut) {
    Node* device = Tree::Instance()->CreateNode(u"/Shared"_s);
    const auto* inTheWay = GetOrCreateValue<ValueInt>(u"/Shared/Ant1"_s);
    EXPECT_EQ(AntBuilder::InsertChild(device)->GetPath(), u"/Shared/Ant0"_s);
    EXPECT_EQ(AntBuilder::InsertChild(device)->GetPath(), u"/Shared/Ant2"_s);
    EXPECT_EQ(Tree::Instance()->GetValue(u"/Shared/Ant1"_s), inTheWay);
}

TEST(AntBuilder, OnlyNodesOfTheAntennaTypeAreAntennas) {
    Node* device = Tree::Instance()->CreateNode(u"/Device"_s);
    EXPECT_TRUE(Ant::IsAntenna(AntBuilder::InsertChild(device)));
    EXPECT_FALSE(Ant::IsAntenna(Tree::Instance()->CreateNode(u"/Device/Ant"_s)));
    EXPECT_FALSE(Ant::IsAntenna(nullptr));
}

TEST(AntBuilder, NodeThatCannotBeMadeIsTraced) {
    const QString deepest = u"/n"_s.repeated(Tree::MAX_LEVELS);
    Tree& tree = *Tree::Instance();
    Node* const withoutRoom = tree.CreateNode(deepest);
    ASSERT_NE(withoutRoom, nullptr);
    Node* const going = tree.CreateNode(u"/Going"_s);
    Node* made = going;
    FunctionObserver observer([&](Observable*, TChangeCode) { made = AntBuilder::InsertChild(going); });
    going->AddObserver(&observer);

    TraceLines trace;
    EXPECT_EQ(AntBuilder::InsertChild(nullptr), nullptr);
    EXPECT_EQ(AntBuilder::InsertChild(withoutRoom), nullptr);
    EXPECT_TRUE(tree.Remove(going));
    EXPECT_EQ(made, nullptr);
    const QString line = u"valueframework\\valueclasses\\valueobservermacros(175): "
                         u"Could not create node according to value descriptor /Ant."_s;
    EXPECT_EQ(trace.lines, (QStringList{line, line, line}));

    ErrorHandler::Instance().SetTraceMask(~TraceBit::INFORMATION);
    EXPECT_EQ(AntBuilder::InsertChild(nullptr), nullptr);
    EXPECT_EQ(trace.lines.size(), 3);
}

TEST(AntBuilder, NodeThatIsMadeIsNotTraced) {
    TraceLines trace;
    EXPECT_NE(AntBuilder::InsertChild(Tree::Instance()->GetNode(u"/"_s)), nullptr);
    EXPECT_TRUE(trace.lines.isEmpty());
}
