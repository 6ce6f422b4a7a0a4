#include "zancommon/antennadatalist.h"

#include "stddevicedefinition/antbuilder.h"
#include "support/antennas.h"
#include "support/devicetree.h"
#include "support/observers.h"
#include "support/tracelines.h"
#include "support/treevalues.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using StdDeviceTree::Ant;

namespace {

/// The values of an antenna node that an entry has, in the order of the node.
struct Field {
    const ValueDescriptor& descriptor;
    ValueType type;
    QString text; // of the unusual antenna
    bool isEditable;
    std::function<void(AntennaData&)> reset; // what the entry holds when the value is missing
};

const std::vector<Field>& Fields() {
    using enum ValueType;
    const auto to = [](auto AntennaData::*field) {
        return [field](AntennaData& a) { a.*field = AntennaData().*field; };
    };
    static const std::vector<Field> fields{
        {g_vdAntName, String, u"PX122 (A/P)"_s, false, to(&AntennaData::name)},
        {g_vdAntHandle, Int, u"7"_s, false, to(&AntennaData::handle)},
        {g_vdAntEnabled, Bool, u"0"_s, true, to(&AntennaData::enabled)},
        {g_vdAntMinRange, Double, u"1500000"_s, true, to(&AntennaData::minRange)},
        {g_vdAntMaxRange, Double, u"2.5e+07"_s, true, to(&AntennaData::maxRange)},
        {g_vdAntCompassEnabled, Bool, u"1"_s, true, to(&AntennaData::compassEnabled)},
        {g_vdAntMechOffset, Double, u"-3.5"_s, true, to(&AntennaData::mechOffset)},
        {g_vdAntCompassSupport, Bool, u"1"_s, true, to(&AntennaData::compassSupport)},
        {g_vdAntDfAlgorithm, Selection, u"SUPR"_s, true,
         [](AntennaData& a) {
             a.dfMethods.clear();
             a.dfAlgorithms.clear();
         }},
        {g_vdAntMinFreq, Double, u"1e+06"_s, false, to(&AntennaData::minFreq)},
        {g_vdAntMaxFreq, Double, u"3e+07"_s, false, to(&AntennaData::maxFreq)},
        {g_vdAntPolarizationSupport, Int, u"1"_s, true, to(&AntennaData::polarizationSupport)},
        {g_vdAntPolarizationMode, Int, u"3"_s, true, to(&AntennaData::polarizationMode)},
        {g_vdAntActivePassiveSupport, Bool, u"1"_s, false, to(&AntennaData::activePassiveSupport)},
        {g_vdAntCompassValue, Double, u"12.5"_s, true, to(&AntennaData::compassValue)},
        {g_vdAntCompassHandle, Int, u"9"_s, true, to(&AntennaData::compassHandle)},
        {g_vdAntConverterHandle, Int, u"10"_s, true, to(&AntennaData::converterHandle)},
        {g_vdAntConverterTypeName, String, u"RCV01"_s, true, to(&AntennaData::converterTypeName)},
    };
    return fields;
}

/// An antenna with all that a node holds.
AntennaData MakePublishedAntenna() {
    AntennaData antenna = MakeUnusualAntenna();
    antenna.furtherFlag = false;
    antenna.reservedHandle = -1;
    antenna.auxiliaryValue1 = antenna.auxiliaryValue2 = antenna.auxiliaryValue3 = 0;
    return antenna;
}

class AntennaDataListTreeTest : public testing::Test {
protected:
    static QString NodePath(int number) { return DeviceTree::Path() + u"/Ant"_s + QString::number(number); }
    static ValueBase* ValueOf(int number, const ValueDescriptor& descriptor) {
        return Tree::Instance()->GetValue(NodePath(number) + descriptor.PathName());
    }
    static void SetText(int number, const ValueDescriptor& descriptor, const QString& text) {
        ASSERT_TRUE(ValueOf(number, descriptor)->SetStringValue(text, nullptr)) << text.toStdString();
    }
    static std::vector<ITreeItem*> AntennaNodes() {
        std::vector<ITreeItem*> nodes;
        for (ITreeItem* const item : Tree::Instance()->GetNode(DeviceTree::Path())->GetTreeItems()) {
            if (Ant::IsAntenna(item)) {
                nodes.push_back(item);
            }
        }
        return nodes;
    }
    static AntennaDataList Read() {
        AntennaDataList list;
        const int count = list.ReadAntennasFromValueTree(DeviceTree::Path());
        EXPECT_EQ(static_cast<std::size_t>(count), list.GetAntennas().size());
        return list;
    }

    DeviceTree device;
    TraceLines trace;
};

// --- writing ---

TEST_F(AntennaDataListTreeTest, EachEntryIsWrittenAsANodeWithAllItsValuesInOrder) {
    DeviceTree::SetAntennas({MakeUnusualAntenna(), AntennaData()});
    ASSERT_EQ(AntennaNodes().size(), 2U);
    const Node* const node = Tree::Instance()->GetNode(NodePath(0));
    ASSERT_NE(node, nullptr);
    std::vector<const ValueDescriptor*> order;
    for (const ITreeItem* const item : node->GetTreeItems()) {
        order.push_back(item->GetDescriptor());
    }
    // Two values of the node are not fields of an entry.
    std::vector<const ValueDescriptor*> wanted{&g_vdAntChanged};
    for (const Field& field : Fields()) {
        wanted.push_back(&field.descriptor);
        if (&field.descriptor == &g_vdAntActivePassiveSupport) {
            wanted.push_back(&g_vdAntActivePassiveState);
        }
    }
    EXPECT_EQ(order, wanted);
    for (const Field& field : Fields()) {
        const ValueBase* const value = ValueOf(0, field.descriptor);
        ASSERT_NE(value, nullptr) << field.descriptor.GetName().toStdString();
        EXPECT_EQ(value->GetType(), field.type) << field.descriptor.GetName().toStdString();
        EXPECT_EQ(value->GetStringValue(), field.text) << field.descriptor.GetName().toStdString();
    }
    EXPECT_EQ(ValueOf(1, g_vdAntHandle)->GetStringValue(), u"-1"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(AntennaDataListTreeTest, MethodsAreWrittenByTheirFamilyNames) {
    AntennaData antenna;
    antenna.dfMethods = {3, 1, 0, 99, 0xFFFFFFFFU, 1};
    antenna.dfAlgorithms = {u"VMR"_s}; // the codes count
    DeviceTree::SetAntennas({antenna});
    const auto* const selection = dynamic_cast<ValueSelection*>(ValueOf(0, g_vdAntDfAlgorithm));
    ASSERT_NE(selection, nullptr);
    const std::vector<SelectionItem> items{{u"VEC"_s, 0.0, 3},
                                           {u"COR"_s, 0.0, 1},
                                           {u"WAT"_s, 0.0, 0},
                                           {u"Unknown"_s, 0.0, 99},
                                           {u"Unknown"_s, 0.0, 0xFFFFFFFF},
                                           {u"COR"_s, 0.0, 1}};
    EXPECT_EQ(selection->GetItems(), items);
    EXPECT_EQ(Read().GetAntennaByIndex(0)->dfMethods, antenna.dfMethods);
}

TEST_F(AntennaDataListTreeTest, NodesAreAppendedToThoseThatAreThere) {
    DeviceTree::SetAntennas({MakeAntenna(u"A"_s, {}, 1, 2)});
    AntennaDataList list;
    Append(list, MakeAntenna(u"C"_s, {}, 1, 2));
    Append(list, MakeAntenna(u"B"_s, {}, 1, 2));
    list.WriteAntennasToValueTree(DeviceTree::Path());
    EXPECT_EQ(NamesOf(Read()), (QStringList{u"A"_s, u"C"_s, u"B"_s}));
}

TEST_F(AntennaDataListTreeTest, WithoutTheParentNodeEachEntryIsReportedAndNothingIsMade) {
    AntennaDataList list;
    Append(list, MakeAntenna(u"A"_s, {}, 1, 2));
    Append(list, MakeAntenna(u"B"_s, {}, 1, 2));
    const qsizetype count = Tree::Instance()->GetValueCount();
    list.WriteAntennasToValueTree(u"/DEVICES/Other"_s);
    EXPECT_EQ(Tree::Instance()->GetValueCount(), count);
    EXPECT_EQ(Tree::Instance()->GetNode(u"/DEVICES/Other"_s), nullptr);
    ASSERT_EQ(trace.lines.size(), 4);
    for (int i = 0; i < 4; i += 2) {
        EXPECT_EQ(
            trace.lines[i],
            u"valueframework\\valueclasses\\valueobservermacros(175): Could not create node according to value descriptor /Ant."_s);
        EXPECT_TRUE(
            trace.lines[i + 1].startsWith(u"devicecontrol\\directionfinder\\zancommon\\antennadata("_s));
        EXPECT_TRUE(trace.lines[i + 1].endsWith(u"): Assertion failed: pAnt"_s));
    }

    trace.lines.clear();
    ErrorHandler::Instance().SetTraceMask(TraceBit::ASSERTION);
    list.WriteAntennasToValueTree(u"/DEVICES/Other"_s);
    EXPECT_EQ(trace.lines.filter(u"pAnt"_s).size(), 2);
    EXPECT_EQ(trace.lines.size(), 2);

    trace.lines.clear();
    AntennaDataList().WriteAntennasToValueTree(u"/DEVICES/Other"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

// --- reading ---

TEST_F(AntennaDataListTreeTest, WhatWasWrittenIsRead) {
    AntennaData plain = MakeAntenna(u"Plain"_s, {}, 1e6, 2e6);
    plain.handle = INT_MIN;
    plain.converterHandle = INT_MAX;
    DeviceTree::SetAntennas({MakeUnusualAntenna(), plain, AntennaData()});
    AntennaDataList list;
    Append(list, MakeAntenna(u"Old"_s, {}, 1, 2));
    EXPECT_EQ(list.ReadAntennasFromValueTree(DeviceTree::Path()), 3);
    ASSERT_EQ(list.GetAntennas().size(), 3U);
    ExpectSame(*list.GetAntennaByIndex(0), MakePublishedAntenna());
    ExpectSame(*list.GetAntennaByIndex(1), plain);
    ExpectSame(*list.GetAntennaByIndex(2), AntennaData());
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(AntennaDataListTreeTest, EntriesAreInTheOrderOfTheNodes) {
    DeviceTree::SetAntennas({MakeAntenna(u"Z"_s, {}, 5, 6), MakeAntenna(u"A"_s, {}, 1, 2)});
    EXPECT_EQ(NamesOf(Read()), (QStringList{u"Z"_s, u"A"_s})); // reading does not sort
}

TEST_F(AntennaDataListTreeTest, ChildrenOfOtherTypesAreIgnored) {
    Tree& tree = *Tree::Instance();
    tree.CreateNode(DeviceTree::Path() + u"/Ant"_s);
    tree.CreateNode(DeviceTree::Path() + u"/Other"_s, &g_vdNodeCfg);
    DeviceTree::SetAntennas({MakeAntenna(u"A"_s, {}, 1, 2)});
    Node* const deeper = tree.CreateNode(DeviceTree::Path() + u"/Deeper"_s);
    AntBuilder::InsertChild(deeper);
    EXPECT_EQ(NamesOf(Read()), QStringList{u"A"_s});
    AntennaDataList list;
    Append(list, MakeAntenna(u"A"_s, {}, 1, 2));
    EXPECT_EQ(list.UpdateAntennasFromValueTree(DeviceTree::Path()), 1);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(AntennaDataListTreeTest, WithoutTheNodeTheListIsEmptied) {
    AntennaDataList list;
    Append(list, MakeAntenna(u"A"_s, {}, 1, 2));
    EXPECT_EQ(list.UpdateAntennasFromValueTree(u"/DEVICES/Other"_s), 0);
    EXPECT_EQ(list.GetAntennas().size(), 1U);
    EXPECT_EQ(list.ReadAntennasFromValueTree(u"/DEVICES/Other"_s), 0);
    EXPECT_TRUE(list.GetAntennas().empty());
    list.DeleteAllAntennasFromValueTree(u"/DEVICES/Other"_s);
    list.DeleteAllAntennasFromValueTree(u"no path"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(AntennaDataListTreeTest, EmptyPathMeansTheBasePath) {
    DeviceTree::SetAntennas({MakeAntenna(u"A"_s, {}, 1, 2)});
    AntennaDataList list(DeviceTree::Path(), {});
    EXPECT_EQ(list.ReadAntennasFromValueTree({}), 1);
    EXPECT_EQ(list.UpdateAntennasFromValueTree(u""_s), 1);
    list.WriteAntennasToValueTree({});
    EXPECT_EQ(AntennaNodes().size(), 2U);
    AntennaDataList copy;
    copy.CopyFrom(list);
    EXPECT_EQ(copy.ReadAntennasFromValueTree({}), 2);
    AntennaDataList(list).DeleteAllAntennasFromValueTree({});
    EXPECT_TRUE(AntennaNodes().empty());
    EXPECT_EQ(AntennaDataList().ReadAntennasFromValueTree({}), 0); // no base path, no node
}

TEST_F(AntennaDataListTreeTest, MissingValueHasItsDefaultAndIsTraced) {
    for (const Field& field : Fields()) {
        const QString name = field.descriptor.GetName();
        SCOPED_TRACE(name.toStdString());
        AntennaData expected = MakePublishedAntenna();
        field.reset(expected);
        for (const bool isThereWithAnotherType : {false, true}) {
            DeviceTree::SetAntennas({MakeUnusualAntenna()});
            ASSERT_TRUE(Tree::Instance()->Remove(ValueOf(0, field.descriptor)));
            if (isThereWithAnotherType) {
                ASSERT_TRUE(InsertInTree<ValueTimeStamp>(NodePath(0) + u'/' + name, 5U));
            }
            trace.lines.clear();
            const AntennaDataList list = Read();
            ASSERT_EQ(list.GetAntennas().size(), 1U);
            ExpectSame(*list.GetAntennaByIndex(0), expected);
            EXPECT_EQ(trace.lines, QStringList{u"devicecontrol\\stddevicedefinition\\stdadapter(219): "
                                               u"_GETVALUE "_s +
                                               name + u" failed - ignored"_s});
        }
    }
}

TEST_F(AntennaDataListTreeTest, NodeWithoutValuesIsAnEntryOfDefaults) {
    Tree::Instance()->CreateNode(NodePath(0), &g_vdNodeAnt);
    const AntennaDataList list = Read();
    ASSERT_EQ(list.GetAntennas().size(), 1U);
    ExpectSame(*list.GetAntennaByIndex(0), AntennaData());
    EXPECT_EQ(trace.lines.size(), static_cast<qsizetype>(Fields().size()));
}

TEST_F(AntennaDataListTreeTest, AnyPolarisationSupportButZeroIsOne) {
    DeviceTree::SetAntennas({MakeAntenna(u"A"_s, {}, 1, 2)});
    AntennaDataList updated = Read();
    for (const int support : {1, 0, 2, -1, INT_MIN, 256}) {
        SetText(0, g_vdAntPolarizationSupport, QString::number(support));
        EXPECT_EQ(Read().GetAntennaByIndex(0)->polarizationSupport, support != 0) << support;
        EXPECT_EQ(updated.UpdateAntennasFromValueTree(DeviceTree::Path()), 1);
        EXPECT_EQ(updated.GetAntennaByIndex(0)->polarizationSupport, support != 0) << support;
    }
}

// --- updating ---

TEST_F(AntennaDataListTreeTest, UpdateTakesWhatCanBeEditedAndNothingElse) {
    DeviceTree::SetAntennas({MakeUnusualAntenna()});
    AntennaData antenna = MakeAntenna(u"PX122 (A/P)"_s, u"RCV09"_s, 1e6, 30e6);
    antenna.handle = 77;
    antenna.dfMethods = {0, 0, 0, 0};
    antenna.dfAlgorithms = {u"WAT"_s};
    antenna.furtherFlag = true;
    antenna.reservedHandle = 78;
    antenna.auxiliaryValue1 = 79;
    AntennaDataList list;
    Append(list, antenna);
    EXPECT_EQ(list.UpdateAntennasFromValueTree(DeviceTree::Path()), 1);
    AntennaData expected = MakePublishedAntenna();
    expected.handle = 77;
    expected.activePassiveSupport = false;
    expected.furtherFlag = true;
    expected.reservedHandle = 78;
    expected.auxiliaryValue1 = 79;
    ExpectSame(*list.GetAntennaByIndex(0), expected);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(AntennaDataListTreeTest, UpdateLeavesWhatTheNodeLacks) {
    for (const Field& field : Fields()) {
        if (!field.isEditable || &field.descriptor == &g_vdAntDfAlgorithm) {
            continue;
        }
        SCOPED_TRACE(field.descriptor.GetName().toStdString());
        DeviceTree::SetAntennas({MakeUnusualAntenna()});
        AntennaDataList list = Read();
        ASSERT_TRUE(Tree::Instance()->Remove(ValueOf(0, field.descriptor)));
        trace.lines.clear();
        EXPECT_EQ(list.UpdateAntennasFromValueTree(DeviceTree::Path()), 1);
        ExpectSame(*list.GetAntennaByIndex(0), MakePublishedAntenna());
        EXPECT_EQ(trace.lines.size(), 1);
    }
}

TEST_F(AntennaDataListTreeTest, NodesAndEntriesAreWalkedSideBySide) {
    struct Case {
        const char* what;
        QStringList nodes;
        QStringList entries;
        QStringList updated; // entries that were updated
        QStringList refused; // nodes that were warned of
    };
    const Case cases[] = {
        {"all match", {u"A"_s, u"B"_s}, {u"A"_s, u"B"_s}, {u"A"_s, u"B"_s}, {}},
        {"a node too many in front", {u"X"_s, u"A"_s, u"B"_s}, {u"A"_s, u"B"_s}, {u"A"_s, u"B"_s}, {u"X"_s}},
        {"between", {u"A"_s, u"X"_s, u"B"_s}, {u"A"_s, u"B"_s}, {u"A"_s, u"B"_s}, {u"X"_s}},
        {"behind", {u"A"_s, u"X"_s}, {u"A"_s}, {u"A"_s}, {u"X"_s}},
        {"an entry too many stops the update", {u"B"_s, u"C"_s}, {u"A"_s, u"B"_s}, {}, {u"B"_s, u"C"_s}},
        {"other order", {u"B"_s, u"A"_s}, {u"A"_s, u"B"_s}, {u"A"_s}, {u"B"_s}},
        {"fewer nodes", {u"A"_s}, {u"A"_s, u"B"_s}, {u"A"_s}, {}},
        {"no entries", {u"A"_s}, {}, {}, {u"A"_s}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        std::vector<AntennaData> published;
        for (const QString& name : each.nodes) {
            published.push_back(MakeAntenna(name, u"new"_s, 1, 2));
        }
        DeviceTree::SetAntennas(published);
        AntennaDataList list;
        for (const QString& name : each.entries) {
            Append(list, MakeAntenna(name, u"old"_s, 1, 2));
        }
        trace.lines.clear();
        EXPECT_EQ(list.UpdateAntennasFromValueTree(DeviceTree::Path()), each.updated.size());
        EXPECT_EQ(NamesOf(list), each.entries);
        QStringList updated;
        for (const auto& antenna : list.GetAntennas()) {
            if (antenna->converterTypeName == u"new"_s) {
                updated.append(antenna->name);
            }
        }
        EXPECT_EQ(updated, each.updated);
        ASSERT_EQ(trace.lines.size(), each.refused.size());
        for (qsizetype i = 0; i < each.refused.size(); ++i) {
            EXPECT_TRUE(trace.lines[i].contains(u"antenna "_s + each.refused[i] + u' '));
        }
    }
}

TEST_F(AntennaDataListTreeTest, NodeThatDoesNotMatchIsTraced) {
    AntennaData antenna = MakeAntenna(u"PX%2 (A/P)"_s, {}, 1e6, 3.0000001e9);
    antenna.handle = 12;
    DeviceTree::SetAntennas({antenna});
    AntennaDataList list;
    EXPECT_EQ(list.UpdateAntennasFromValueTree(DeviceTree::Path()), 0);
    ASSERT_EQ(trace.lines.size(), 1);
    EXPECT_TRUE(trace.lines[0].startsWith(u"devicecontrol\\directionfinder\\zancommon\\antennadata("_s));
    EXPECT_EQ(
        trace.lines[0].section(u"): "_s, 1),
        u"WARNING: antenna PX%2 (A/P) 1e+06 - 3e+09 (handle=12) in value tree does not match AntennaDataList"_s);

    ErrorHandler::Instance().SetTraceMask(~TraceBit::INFORMATION);
    EXPECT_EQ(list.UpdateAntennasFromValueTree(DeviceTree::Path()), 0);
    EXPECT_EQ(trace.lines.size(), 1);
}

TEST_F(AntennaDataListTreeTest, NameAndCoverageMustMatchExactly) {
    const AntennaData entry = MakeAntenna(u"PX122"_s, {}, 1e6, 30e6);
    struct Case {
        const char* what;
        std::function<void(AntennaData&)> change;
        bool isMatch;
    };
    const Case cases[] = {
        {"the same", [](AntennaData&) {}, true},
        {"another name", [](AntennaData& a) { a.name = u"px122"_s; }, false},
        {"a lower coverage", [](AntennaData& a) { a.minFreq = std::nextafter(a.minFreq, 0.0); }, false},
        {"a higher coverage", [](AntennaData& a) { a.maxFreq = std::nextafter(a.maxFreq, 1e9); }, false},
        {"another range", [](AntennaData& a) { a.minRange = a.maxRange = 5e6; }, true},
        {"another handle", [](AntennaData& a) { a.handle = 3; }, true},
        {"another polarisation", [](AntennaData& a) { a.polarizationMode = POLARISATION_RIGHT; }, true},
    };
    for (const Case& each : cases) {
        AntennaData published = entry;
        each.change(published);
        DeviceTree::SetAntennas({published});
        AntennaDataList list;
        Append(list, entry);
        EXPECT_EQ(list.UpdateAntennasFromValueTree(DeviceTree::Path()), each.isMatch ? 1 : 0) << each.what;
    }
}

TEST_F(AntennaDataListTreeTest, NodeWithoutANameMatchesNoEntryThatHasOne) {
    DeviceTree::SetAntennas({MakeAntenna(u"A"_s, {}, 1, 2)});
    AntennaDataList list = Read();
    ASSERT_TRUE(Tree::Instance()->Remove(ValueOf(0, g_vdAntName)));
    EXPECT_EQ(list.UpdateAntennasFromValueTree(DeviceTree::Path()), 0);
    EXPECT_EQ(trace.lines.filter(u"_GETVALUE AntName failed - ignored"_s).size(), 1);
    EXPECT_EQ(trace.lines.filter(u"does not match AntennaDataList"_s).size(), 1);
}

// --- deleting ---

TEST_F(AntennaDataListTreeTest, DeletingTakesTheAntennasAndLeavesOtherChildren) {
    Tree& tree = *Tree::Instance();
    const qsizetype count = tree.GetValueCount();
    const auto othersBefore = tree.GetNode(DeviceTree::Path())->GetTreeItems();
    DeviceTree::SetAntennas({AntennaData(), AntennaData(), AntennaData()});
    const Node* const other = tree.CreateNode(DeviceTree::Path() + u"/Ant"_s);
    AntennaDataList list = Read();
    list.DeleteAllAntennasFromValueTree(DeviceTree::Path());
    EXPECT_EQ(tree.GetNode(DeviceTree::Path())->GetTreeItems().size(), othersBefore.size() + 1);
    EXPECT_EQ(tree.GetNode(DeviceTree::Path() + u"/Ant"_s), other);
    EXPECT_EQ(tree.GetValueCount(), count);
    EXPECT_EQ(list.GetAntennas().size(), 3U); // the entries are another matter
}

TEST_F(AntennaDataListTreeTest, DeletingNotifiesTheObserversOfTheNodes) {
    DeviceTree::SetAntennas({AntennaData()});
    CodeObserver observer;
    AntennaNodes().at(0)->AddObserver(&observer);
    AntennaDataList().DeleteAllAntennasFromValueTree(DeviceTree::Path());
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::NodeGoingAway});
}

TEST_F(AntennaDataListTreeTest, ObserversMayDeleteAntennasMeanwhile) {
    DeviceTree::SetAntennas({AntennaData(), AntennaData(), AntennaData()});
    FunctionObserver all([](Observable*, TChangeCode) {
        AntennaDataList().DeleteAllAntennasFromValueTree(DeviceTree::Path());
    });
    AntennaNodes().at(0)->AddObserver(&all);
    EXPECT_TRUE(Tree::Instance()->Remove(AntennaNodes().at(0)));
    EXPECT_TRUE(AntennaNodes().empty());

    DeviceTree::SetAntennas({AntennaData(), AntennaData(), AntennaData()});
    FunctionObserver last([](Observable*, TChangeCode) { Tree::Instance()->Remove(AntennaNodes().back()); });
    AntennaNodes().at(0)->AddObserver(&last);
    AntennaDataList().DeleteAllAntennasFromValueTree(DeviceTree::Path());
    EXPECT_TRUE(AntennaNodes().empty());
}

TEST_F(AntennaDataListTreeTest, AntennasThatObserversMakeMeanwhileStay) {
    DeviceTree::SetAntennas({AntennaData()});
    FunctionObserver observer;
    observer.onUpdate = [&observer](Observable*, TChangeCode) {
        Node* const another = AntBuilder::InsertChild(Tree::Instance()->GetNode(DeviceTree::Path()));
        another->AddObserver(&observer);
    };
    AntennaNodes().at(0)->AddObserver(&observer);
    AntennaDataList().DeleteAllAntennasFromValueTree(DeviceTree::Path());
    ASSERT_EQ(AntennaNodes().size(), 1U);
    AntennaNodes().at(0)->DeleteObserver(&observer);
}

} // namespace
