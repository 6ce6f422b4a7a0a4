#include "zancommon/hwstatustester.h"

#include "support/devicetree.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "support/tracelines.h"
#include "support/virtualslots.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <set>
#include <vector>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

using Names = std::set<QString>;
using State = HwStatusTester::HwComponentState;

class HwStatusTesterTest : public testing::Test {
protected:
    static ValueString* Required() { return DeviceTree::ServerValue<ValueString>(g_vdDevRequiredComponents); }
    static ValueString* Optional() { return DeviceTree::ServerValue<ValueString>(g_vdDevOptionalComponents); }
    static ValueBool* Check() { return DeviceTree::ServerValue<ValueBool>(g_vdDevCheckRequirements); }
    static ValueBool* Editable() { return DeviceTree::ServerValue<ValueBool>(g_vdDevRequirementsEditable); }
    static ValueSelection* Info() { return DeviceTree::ServerValue<ValueSelection>(g_vdDevInfo); }

    static std::unique_ptr<ValueSelection> InfoOf(std::initializer_list<QString> lines) {
        auto info = std::make_unique<ValueSelection>();
        for (const QString& line : lines) {
            info->AddItem({line, 0.0, 0}, nullptr);
        }
        return info;
    }
    static void Install(HwStatusTester& tester, std::initializer_list<QString> names) {
        for (const QString& name : names) {
            tester.ReadHwListFromValue(InfoOf({u"1;2;3;"_s + name}).get());
        }
    }
    /// The required components as text.
    static QString TextOf(const HwStatusTester& tester) {
        tester.WriteHwRequirementsToTree();
        return Required()->GetValue();
    }
    /// The settings of a station.
    static CfgPtr Station() {
        return CfgPtr(CfgCenter::GetAppCfg(ICfg::View::Stations).GetSubCfg(u"Station"_s));
    }
    /// All that a tester holds of the requirements, as the tree shows it.
    static QString RequirementsOf(const HwStatusTester& tester) {
        tester.WriteHwRequirementsToTree();
        return Required()->GetValue() + u'|' + Optional()->GetValue() + u'|' + Check()->GetStringValue() +
               Editable()->GetStringValue();
    }

    DeviceTree device;
    StoredSettings settings;
    TraceLines trace;
    HwStatusTester tester{u"/ZANServer"_s};
};

// --- the interface ---

TEST_F(HwStatusTesterTest, VirtualOperationsAreInTheOrderOfTheInterface) {
    ExpectVirtualSlotsFrom(
        2, // behind the two of the destructor
        &HwStatusTester::ReadHwRequirementsFromTree, &HwStatusTester::WriteHwRequirementsToTree,
        &HwStatusTester::ReadHwRequirementsFromCfg, &HwStatusTester::WriteHwRequirementsToCfg,
        &HwStatusTester::ReadHwListFromTree, &HwStatusTester::ReadHwListFromValue,
        &HwStatusTester::AreRequirementsEditable, &HwStatusTester::SetRequirementsEditable,
        &HwStatusTester::GetCheckRequirements, &HwStatusTester::SetCheckRequirements,
        &HwStatusTester::FindMissingRequiredHardware, &HwStatusTester::FindUnknownHardware,
        &HwStatusTester::GetAllComponents, &HwStatusTester::SetRequiredComponents,
        &HwStatusTester::SetOptionalComponents);
    static_assert(std::has_virtual_destructor_v<HwStatusTester>);
}

TEST_F(HwStatusTesterTest, KnowsNothingAtFirst) {
    EXPECT_EQ(tester.GetAllComponents(), Names());
    EXPECT_EQ(tester.FindMissingRequiredHardware(), Names());
    EXPECT_EQ(tester.FindUnknownHardware(), Names());
    EXPECT_FALSE(tester.AreRequirementsEditable());
    EXPECT_FALSE(tester.GetCheckRequirements());
    EXPECT_EQ(tester.GetComponentState(u"A"_s), State::NotRequired);
}

TEST_F(HwStatusTesterTest, FlagsAreIndependent) {
    tester.SetRequirementsEditable(true);
    EXPECT_TRUE(tester.AreRequirementsEditable());
    EXPECT_FALSE(tester.GetCheckRequirements());
    tester.SetCheckRequirements(true);
    tester.SetRequirementsEditable(false);
    EXPECT_FALSE(tester.AreRequirementsEditable());
    EXPECT_TRUE(tester.GetCheckRequirements());
}

TEST_F(HwStatusTesterTest, CopyTestsTheSameDeviceAndKnowsNothingYet) {
    HwStatusTester source(u"/Elsewhere"_s);
    Install(source, {u"A"_s});
    source.SetRequiredComponents({u"B"_s});
    source.SetOptionalComponents({u"C"_s});
    source.SetCheckRequirements(true);
    source.SetRequirementsEditable(true);
    HwStatusTester assigned = source; // filled below, so that the assignment has something to clear
    Install(assigned, {u"D"_s});
    assigned.SetRequiredComponents({u"E"_s});
    assigned.SetOptionalComponents({u"F"_s});
    assigned.SetCheckRequirements(true);
    assigned.SetRequirementsEditable(true);
    assigned = tester;
    HwStatusTester copy = tester;
    HwStatusTester copyOfSource = source;
    for (HwStatusTester* each : {&assigned, &copy, &copyOfSource}) {
        EXPECT_EQ(each->GetAllComponents(), Names());
        EXPECT_FALSE(each->GetCheckRequirements());
        EXPECT_FALSE(each->AreRequirementsEditable());
    }
    Required()->SetValue(u"R"_s, nullptr);
    assigned.ReadHwRequirementsFromTree();
    copyOfSource.ReadHwRequirementsFromTree();
    EXPECT_EQ(assigned.GetAllComponents(), Names{u"R"_s});
    EXPECT_EQ(copyOfSource.GetAllComponents(), Names()) << "there is nothing below its path";
    EXPECT_EQ(source.GetAllComponents(), (Names{u"A"_s, u"B"_s, u"C"_s})) << "a source stays as it is";
}

// --- states ---

TEST_F(HwStatusTesterTest, StateOfAComponentFollowsFromWhatIsRequiredOptionalAndInstalled) {
    Install(tester, {u"ri"_s, u"oi"_s, u"roi"_s, u"i"_s});
    tester.SetRequiredComponents({u"r"_s, u"ri"_s, u"ro"_s, u"roi"_s});
    tester.SetOptionalComponents({u"o"_s, u"oi"_s, u"ro"_s, u"roi"_s});
    const std::pair<const char16_t*, State> cases[] = {
        {u"r", State::RequiredMissing},    {u"ro", State::RequiredMissing},
        {u"ri", State::RequiredInstalled}, {u"roi", State::RequiredInstalled},
        {u"oi", State::OptionalInstalled}, {u"o", State::OptionalMissing},
        {u"i", State::NotRequired},        {u"none", State::NotRequired},
        {u"R", State::NotRequired},        {u"", State::NotRequired},
    };
    for (const auto& [name, state] : cases) {
        EXPECT_EQ(tester.GetComponentState(QString::fromUtf16(name)), state)
            << QString::fromUtf16(name).toStdString();
    }
    EXPECT_EQ(tester.FindMissingRequiredHardware(), (Names{u"r"_s, u"ro"_s}));
    EXPECT_EQ(tester.FindUnknownHardware(), Names{u"i"_s});
    EXPECT_EQ(tester.GetAllComponents(),
              (Names{u"r"_s, u"ri"_s, u"ro"_s, u"roi"_s, u"o"_s, u"oi"_s, u"i"_s}));
}

TEST_F(HwStatusTesterTest, StatesKeepTheirNumbers) {
    static_assert(State::RequiredMissing == 0 && State::RequiredInstalled == 1 &&
                  State::OptionalInstalled == 2 && State::OptionalMissing == 3 && State::NotRequired == 4);
}

TEST_F(HwStatusTesterTest, SettingComponentsReplacesThem) {
    tester.SetRequiredComponents({u"A"_s});
    tester.SetOptionalComponents({u"B"_s});
    tester.SetRequiredComponents({u"C"_s});
    tester.SetOptionalComponents({u"D"_s});
    EXPECT_EQ(tester.GetAllComponents(), (Names{u"C"_s, u"D"_s}));
    EXPECT_EQ(tester.FindMissingRequiredHardware(), Names{u"C"_s});
}

TEST_F(HwStatusTesterTest, NamesAreCaseSensitive) {
    Install(tester, {u"rx"_s});
    tester.SetRequiredComponents({u"RX"_s});
    EXPECT_EQ(tester.FindMissingRequiredHardware(), Names{u"RX"_s});
    EXPECT_EQ(tester.FindUnknownHardware(), Names{u"rx"_s});
}

// --- device information ---

TEST_F(HwStatusTesterTest, ComponentIsTheFourthFieldOfALine) {
    struct Case {
        QString line;
        Names installed;
    };
    const Case cases[] = {
        {u""_s, {}},
        {u"a"_s, {}},
        {u"a;b"_s, {}},
        {u"a;b;c"_s, {}},
        {u";;"_s, {}},
        {u"a;b;c;D"_s, {u"D"_s}},
        {u"a;b;c;D;"_s, {u"D"_s}},
        {u"a;b;c;D;e;f;g"_s, {u"D"_s}},
        {u";;;D;;;"_s, {u"D"_s}},
        {u"a;b;c; D d ;e"_s, {u" D d "_s}},
        {u";;;"_s, {u""_s}},
        {u"a;b;c;;e"_s, {u""_s}},
        {u"a;b;c;>>D"_s, {u">>D"_s}},
        {u"a;b;c;Option"_s, {u"Option"_s}},
        {u"Ä;ö;ü;\U0001F4E1;x"_s, {u"\U0001F4E1"_s}},
        {u"a\0;b;c;D\0d;e"_s, {u"D\0d"_s}},
        {u"\0>>;b;c;D"_s, {u"D"_s}},
        // Heads and options
        {u">>"_s, {}},
        {u">>a;b;c;D;e"_s, {}},
        {u">> Receiver;b;c;D"_s, {}},
        {u"Option"_s, {}},
        {u"Option;b;c;D;e"_s, {}},
        {u"Options of the device;b;c;D"_s, {}},
        // What only looks like them
        {u">a;b;c;D"_s, {u"D"_s}},
        {u" >>a;b;c;D"_s, {u"D"_s}},
        {u"option;b;c;D"_s, {u"D"_s}},
        {u"OPTION;b;c;D"_s, {u"D"_s}},
        {u" Option;b;c;D"_s, {u"D"_s}},
        {u"Optio;b;c;D"_s, {u"D"_s}},
    };
    for (const Case& each : cases) {
        HwStatusTester fresh(u"/ZANServer"_s);
        fresh.ReadHwListFromValue(InfoOf({each.line}).get());
        EXPECT_EQ(fresh.GetAllComponents(), each.installed) << each.line.toStdString();
        EXPECT_EQ(fresh.FindUnknownHardware(), each.installed);
    }
}

TEST_F(HwStatusTesterTest, LongLinesAreRead) {
    constexpr qsizetype MEGABYTE = 1 << 20;
    const QString longName(MEGABYTE, u'x');
    tester.ReadHwListFromValue(
        InfoOf({QString(MEGABYTE, u';'), u"a;b;c;"_s + longName, u"a;b;c;D"_s + QString(MEGABYTE, u';')})
            .get());
    EXPECT_EQ(tester.GetAllComponents(), (Names{QString(), longName, u"D"_s}));
}

TEST_F(HwStatusTesterTest, EveryListAddsToWhatIsInstalledAlready) {
    tester.ReadHwListFromValue(InfoOf({u">>RX"_s, u"1;2;3;B"_s, u"1;2;3;A"_s, u"1;2;3;B"_s}).get());
    tester.ReadHwListFromValue(InfoOf({u"1;2;3;C"_s}).get());
    tester.ReadHwListFromValue(InfoOf({}).get());
    tester.ReadHwListFromValue(nullptr);
    EXPECT_EQ(tester.GetAllComponents(), (Names{u"A"_s, u"B"_s, u"C"_s}));
}

TEST_F(HwStatusTesterTest, ListIsTakenFromTheDeviceInformationOfTheTree) {
    Info()->AddItem({u">> Receiver"_s, 0, 0}, nullptr);
    Info()->AddItem({u"slot;1;2;RX1;ok"_s, 0, 1}, nullptr);
    tester.ReadHwListFromTree();
    EXPECT_EQ(tester.GetAllComponents(), Names{u"RX1"_s});
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(HwStatusTesterTest, MissingDeviceInformationIsReportedAsAnAssertion) {
    Install(tester, {u"A"_s});
    Tree::Instance()->Remove(Info());
    tester.ReadHwListFromTree();
    ASSERT_EQ(trace.lines.size(), 1);
    EXPECT_TRUE(trace.lines[0].startsWith(u"devicecontrol\\directionfinder\\zancommon\\hwstatustester("_s));
    EXPECT_TRUE(trace.lines[0].endsWith(u"): Assertion failed: pDevInfo"_s)) << trace.lines[0].toStdString();
    EXPECT_EQ(tester.GetAllComponents(), Names{u"A"_s});

    ErrorHandler::Instance().SetTraceMask(~TraceBit::ASSERTION);
    tester.ReadHwListFromTree();
    EXPECT_EQ(trace.lines.size(), 1);
}

// --- sets as text ---

TEST_F(HwStatusTesterTest, TextBecomesASetWithoutEmptyNames) {
    const std::pair<QString, Names> cases[] = {
        {u""_s, {}},
        {u";"_s, {}},
        {u";;;"_s, {}},
        {u"A"_s, {u"A"_s}},
        {u"A;;B;"_s, {u"A"_s, u"B"_s}},
        {u";B;A;B"_s, {u"A"_s, u"B"_s}},
        {u" A ;a; "_s, {u" A "_s, u"a"_s, u" "_s}},
        {u"A,B|C"_s, {u"A,B|C"_s}},
        {u"Ä;\U0001F4E1;A\0B"_s, {u"Ä"_s, u"\U0001F4E1"_s, u"A\0B"_s}},
    };
    for (const auto& [text, names] : cases) {
        Required()->SetValue(text, nullptr);
        tester.ReadHwRequirementsFromTree();
        EXPECT_EQ(tester.FindMissingRequiredHardware(), names) << text.toStdString();
    }
}

TEST_F(HwStatusTesterTest, SetBecomesATextInItsOrder) {
    const std::pair<Names, QString> cases[] = {
        {{}, u""_s},
        {{u"A"_s}, u"A"_s},
        {{u"B"_s, u"A"_s}, u"A;B"_s},
        {{u"b"_s, u"a"_s, u"B"_s, u"A"_s, u"10"_s, u"9"_s, u"Ä"_s}, u"10;9;A;B;a;b;Ä"_s},
        {{u"%1"_s, u" "_s, u"A\0B"_s}, u" ;%1;A\0B"_s},
    };
    for (const auto& [names, text] : cases) {
        tester.SetRequiredComponents(names);
        EXPECT_EQ(TextOf(tester), text);
    }
}

// --- the tree ---

TEST_F(HwStatusTesterTest, RequirementsGoToTheTreeAndBack) {
    for (const bool flag : {false, true}) {
        tester.SetRequiredComponents({u"B"_s, u"A"_s});
        tester.SetOptionalComponents({u"C"_s});
        tester.SetCheckRequirements(flag);
        tester.SetRequirementsEditable(!flag);
        tester.WriteHwRequirementsToTree();
        EXPECT_EQ(Required()->GetValue(), u"A;B"_s);
        EXPECT_EQ(Optional()->GetValue(), u"C"_s);
        EXPECT_EQ(Check()->GetValue(), flag);
        EXPECT_EQ(Editable()->GetValue(), !flag);

        HwStatusTester other(u"/ZANServer"_s);
        other.SetRequiredComponents({u"X"_s});
        other.SetOptionalComponents({u"Y"_s});
        other.ReadHwRequirementsFromTree();
        EXPECT_EQ(other.GetAllComponents(), (Names{u"A"_s, u"B"_s, u"C"_s}));
        EXPECT_EQ(other.GetComponentState(u"C"_s), State::OptionalMissing);
        EXPECT_EQ(other.GetCheckRequirements(), flag);
        EXPECT_EQ(other.AreRequirementsEditable(), !flag);
    }
}

TEST_F(HwStatusTesterTest, RequirementsAreThoseBelowThePath) {
    CreateBranch(EBranch::SERVER, u"/Second/Server"_s);
    HwStatusTester second(u"/Second/Server"_s);
    second.SetRequiredComponents({u"A"_s});
    second.WriteHwRequirementsToTree();
    EXPECT_EQ(Required()->GetValue(), QString());
    EXPECT_EQ(Tree::Instance()->GetValue(u"/Second/Server/DevAttr/DevRequiredComponents"_s)->GetStringValue(),
              u"A"_s);
}

TEST_F(HwStatusTesterTest, WhatTheTreeDoesNotHaveCountsAsEmptyAndFalse) {
    const ValueDescriptor* const descriptors[] = {&g_vdDevRequiredComponents, &g_vdDevOptionalComponents,
                                                  &g_vdDevCheckRequirements, &g_vdDevRequirementsEditable};
    const QString expected[] = {u"|B|11"_s, u"A||11"_s, u"A|B|01"_s, u"A|B|10"_s};
    for (std::size_t i = 0; i < std::size(descriptors); ++i) {
        HwStatusTester full(u"/ZANServer"_s);
        full.SetRequiredComponents({u"A"_s});
        full.SetOptionalComponents({u"B"_s});
        full.SetCheckRequirements(true);
        full.SetRequirementsEditable(true);
        full.WriteHwRequirementsToTree();
        Tree::Instance()->Remove(DeviceTree::ServerValue<ValueBase>(*descriptors[i]));
        full.WriteHwRequirementsToTree(); // the others are written
        full.ReadHwRequirementsFromTree();
        CreateBranch(EBranch::SERVER, u"/ZANServer"_s);
        EXPECT_EQ(RequirementsOf(full), expected[i]);
    }
    Tree::Instance()->Clear();
    tester.WriteHwRequirementsToTree();
    tester.ReadHwRequirementsFromTree();
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(HwStatusTesterTest, PathMayEndWithASlash) {
    HwStatusTester slashed(u"/ZANServer/"_s);
    slashed.SetRequiredComponents({u"A"_s});
    slashed.WriteHwRequirementsToTree();
    EXPECT_EQ(Required()->GetValue(), u"A"_s);
    Optional()->SetValue(u"B"_s, nullptr);
    Info()->AddItem({u"1;2;3;C"_s, 0.0, 0}, nullptr);
    slashed.ReadHwRequirementsFromTree();
    slashed.ReadHwListFromTree();
    EXPECT_EQ(slashed.GetAllComponents(), (Names{u"A"_s, u"B"_s, u"C"_s}));
    EXPECT_TRUE(trace.lines.isEmpty());
}

// --- the settings ---

TEST_F(HwStatusTesterTest, RequirementsAreFourKeysOfTheStation) {
    tester.SetRequiredComponents({u"B"_s, u"A"_s});
    tester.SetOptionalComponents({u"C"_s});
    tester.SetCheckRequirements(true);
    tester.WriteHwRequirementsToCfg(Station().get());
    EXPECT_EQ(settings.CloseAndRead(),
              u"[Station]\nHwCheckRequirements=true\nHwOptionalComponents=C\nHwRequiredComponents=\"A;B\"\n"
              "HwRequirementsEditable=false\n"_s);
}

TEST_F(HwStatusTesterTest, NextRunFindsTheRequirements) {
    const Names cases[] = {
        {},
        {u"A"_s},
        {u"A"_s, u"B"_s},
        {u" A"_s, u"B "_s, u" "_s},
        {u"\"A\""_s, u"B\\n"_s, u"#C"_s, u"k=v"_s, u"[D]"_s},
        {u"\n"_s, u"\t\r"_s, u"A\0B"_s, u"%1"_s},
        {u"Ä"_s, u"\U0001F4E1"_s},
        {QString(1 << 20, u'x')},
    };
    for (const Names& names : cases) {
        for (const bool flag : {false, true}) {
            HwStatusTester before(u"/ZANServer"_s);
            before.SetRequiredComponents(names);
            before.SetOptionalComponents(names);
            before.SetCheckRequirements(flag);
            before.SetRequirementsEditable(!flag);
            before.WriteHwRequirementsToCfg(Station().get());
            settings.Reopen();
            HwStatusTester after(u"/ZANServer"_s);
            after.SetRequiredComponents({u"X"_s});
            after.SetOptionalComponents({u"Y"_s});
            after.ReadHwRequirementsFromCfg(Station().get());
            EXPECT_EQ(RequirementsOf(after), RequirementsOf(before));
            EXPECT_EQ(after.FindMissingRequiredHardware(), names);
        }
    }
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(HwStatusTesterTest, WhatTheSettingsDoNotHaveCountsAsEmptyAndFalse) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "||00"},
        {"HwRequiredComponents=A;;B;\n", "A;B||00"},
        {"HwOptionalComponents=B\n", "|B|00"},
        {"HwCheckRequirements=true\n", "||10"},
        {"HwRequirementsEditable=1\n", "||01"},
        {"HwRequirementsEditable=perhaps\nHwCheckRequirements=2\n", "||00"},
    };
    for (const auto& [text, requirements] : cases) {
        settings.Write(QByteArray("[Station]\nOther=1\n") + text);
        HwStatusTester full(u"/ZANServer"_s);
        full.SetRequiredComponents({u"X"_s});
        full.SetOptionalComponents({u"Y"_s});
        full.SetCheckRequirements(true);
        full.SetRequirementsEditable(true);
        full.ReadHwRequirementsFromCfg(Station().get());
        EXPECT_EQ(RequirementsOf(full), QLatin1StringView(requirements)) << text;
        EXPECT_EQ(settings.CloseAndRead().toUtf8(), QByteArray("[Station]\nOther=1\n") + text)
            << "reading writes nothing";
        settings.Reopen();
    }
}

TEST_F(HwStatusTesterTest, WithoutSettingsNothingChanges) {
    tester.SetRequiredComponents({u"A"_s});
    tester.SetOptionalComponents({u"B"_s});
    tester.SetCheckRequirements(true);
    tester.SetRequirementsEditable(true);
    tester.ReadHwRequirementsFromCfg(nullptr);
    tester.WriteHwRequirementsToCfg(nullptr);
    EXPECT_EQ(RequirementsOf(tester), u"A|B|11"_s);
    EXPECT_EQ(settings.CloseAndRead(), QString());
}

} // namespace
