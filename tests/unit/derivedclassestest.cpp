#include "support/printing.h"
#include "valueframework/valuetypes.h"
#include "zancommon/hwstatustester.h"
#include "zancommon/zanabstractinterface.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

// Classes of an application that override every virtual operation of the library's base classes, with
// arguments, types and constness as they are documented. That this compiles is most of the test.

namespace {

using Names = std::set<QString>;
using Calls = std::vector<std::string>;

class OwnTester : public HwStatusTester {
public:
    OwnTester(const QString& path, Calls& log)
        : HwStatusTester(path)
        , calls(log) {}
    ~OwnTester() override { calls.emplace_back("~"); }

    void ReadHwRequirementsFromTree() override { calls.emplace_back("ReadHwRequirementsFromTree"); }
    void WriteHwRequirementsToTree() const override { calls.emplace_back("WriteHwRequirementsToTree"); }
    void ReadHwRequirementsFromCfg(ICfg* /*cfg*/) override {
        calls.emplace_back("ReadHwRequirementsFromCfg");
    }
    void WriteHwRequirementsToCfg(ICfg* /*cfg*/) const override {
        calls.emplace_back("WriteHwRequirementsToCfg");
    }
    void ReadHwListFromTree() override { calls.emplace_back("ReadHwListFromTree"); }
    void ReadHwListFromValue(ValueSelection* /*info*/) override { calls.emplace_back("ReadHwListFromValue"); }
    bool AreRequirementsEditable() override { return Note("AreRequirementsEditable"); }
    void SetRequirementsEditable(bool /*editable*/) override {
        calls.emplace_back("SetRequirementsEditable");
    }
    bool GetCheckRequirements() override { return Note("GetCheckRequirements"); }
    void SetCheckRequirements(bool /*check*/) override { calls.emplace_back("SetCheckRequirements"); }
    [[nodiscard]] std::set<QString> FindMissingRequiredHardware() const override {
        calls.emplace_back("FindMissingRequiredHardware");
        return {};
    }
    [[nodiscard]] std::set<QString> FindUnknownHardware() const override {
        calls.emplace_back("FindUnknownHardware");
        return {};
    }
    [[nodiscard]] std::set<QString> GetAllComponents() const override {
        calls.emplace_back("GetAllComponents");
        return {};
    }
    void SetRequiredComponents(std::set<QString> /*components*/) override {
        calls.emplace_back("SetRequiredComponents");
    }
    void SetOptionalComponents(std::set<QString> /*components*/) override {
        calls.emplace_back("SetOptionalComponents");
    }

private:
    bool Note(const char* call) {
        calls.emplace_back(call);
        return true;
    }

    Calls& calls;
};

class OwnOutput : public ZANAbstractInterface {
public:
    OwnOutput(QString& name, Calls& log)
        : ZANAbstractInterface(name)
        , calls(log) {}
    ~OwnOutput() override { calls.emplace_back("~"); }

    void SetConfigPath(const QString& path) override {
        calls.emplace_back("SetConfigPath");
        ZANAbstractInterface::SetConfigPath(path);
    }
    void SetEnabled(bool on) override {
        calls.emplace_back("SetEnabled");
        m_bEnabled = on;
    }
    bool IsEnabled() override {
        calls.emplace_back("IsEnabled");
        return ZANAbstractInterface::IsEnabled();
    }
    QWidget* GetConfigWidget() override {
        calls.emplace_back("GetConfigWidget");
        return ZANAbstractInterface::GetConfigWidget();
    }
    // NOLINTNEXTLINE(readability-const-return-type): as documented
    const QString GetName() override {
        calls.emplace_back("GetName");
        return ZANAbstractInterface::GetName();
    }
    void SlotUpdateConfiguration() override { calls.emplace_back("SlotUpdateConfiguration"); }

    void Send() {
        SetAddress(u"COM1"_s);
        EXPECT_EQ(GetAddress(), u"COM1"_s);
    }

protected:
    void SetAddress(const QString& address) override {
        calls.emplace_back("SetAddress");
        ZANAbstractInterface::SetAddress(address);
    }
    // NOLINTNEXTLINE(readability-const-return-type): as documented
    const QString GetAddress() override {
        calls.emplace_back("GetAddress");
        return ZANAbstractInterface::GetAddress();
    }

private:
    Calls& calls;
};

} // namespace

TEST(DerivedClasses, EveryOperationOfTheHardwareTesterCanBeOverridden) {
    Calls calls;
    {
        OwnTester own(u"/ZANServer"_s, calls);
        HwStatusTester& tester = own;
        tester.ReadHwRequirementsFromTree();
        tester.WriteHwRequirementsToTree();
        tester.ReadHwRequirementsFromCfg(nullptr);
        tester.WriteHwRequirementsToCfg(nullptr);
        tester.ReadHwListFromTree();
        tester.ReadHwListFromValue(nullptr);
        EXPECT_TRUE(tester.AreRequirementsEditable());
        tester.SetRequirementsEditable(true);
        EXPECT_TRUE(tester.GetCheckRequirements());
        tester.SetCheckRequirements(true);
        EXPECT_EQ(tester.FindMissingRequiredHardware(), Names());
        EXPECT_EQ(tester.FindUnknownHardware(), Names());
        EXPECT_EQ(tester.GetAllComponents(), Names());
        tester.SetRequiredComponents({u"A"_s});
        tester.SetOptionalComponents({u"A"_s});
    }
    EXPECT_EQ(calls,
              (Calls{"ReadHwRequirementsFromTree", "WriteHwRequirementsToTree", "ReadHwRequirementsFromCfg",
                     "WriteHwRequirementsToCfg", "ReadHwListFromTree", "ReadHwListFromValue",
                     "AreRequirementsEditable", "SetRequirementsEditable", "GetCheckRequirements",
                     "SetCheckRequirements", "FindMissingRequiredHardware", "FindUnknownHardware",
                     "GetAllComponents", "SetRequiredComponents", "SetOptionalComponents", "~"}));
}

TEST(DerivedClasses, EveryOperationOfTheOutputInterfaceCanBeOverridden) {
    Calls calls;
    {
        QString name = u"Output"_s;
        OwnOutput own(name, calls);
        ZANAbstractInterface& output = own;
        output.SetConfigPath(u"Outputs/0"_s);
        output.SetEnabled(true);
        EXPECT_TRUE(output.IsEnabled());
        EXPECT_EQ(output.GetConfigWidget(), nullptr);
        EXPECT_EQ(output.GetName(), u"Output"_s);
        output.SlotUpdateConfiguration();
        own.Send();
    }
    EXPECT_EQ(calls, (Calls{"SetConfigPath", "SetEnabled", "IsEnabled", "GetConfigWidget", "GetName",
                            "SlotUpdateConfiguration", "SetAddress", "GetAddress", "~"}));
}
