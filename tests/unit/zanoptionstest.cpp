#include "zancommon/zanoptions.h"

#include "support/devicetree.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "support/tracelines.h"
#include "zancommon/stationcfg.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <type_traits>

using namespace Qt::StringLiterals;

namespace {

struct Row {
    const char16_t* name;
    int option;
    const char16_t* writtenName;
};

constexpr Row ROWS[] = {
    {u"ZAN-CL", 1, u"ZAN-CL"},
    {u"ZAN-DR", 2, u"ZAN-DR"},
    {u"ZAN-GSM", 3, u"ZAN-GSM"},
    {u"ZAN-HFR", 4, u"ZAN-HFR"},
    {u"ZAN-LF", 5, u"ZAN-LF"},
    {u"ZAN-TS", 6, u"ZAN-TS"},
    {u"ZANTIDE-WB", 7, u"ZANTIDE-WB"},
    {u"ZANTIDE-SR", 8, u"ZANTIDE-SR"},
    {u"ZANREEF-HF", 9, u"ZANREEF-HF"},
    {u"ZANREEF-HBW", 10, u"ZANREEF-HBW"},
    {u"ZANREEF-SR", 11, u"ZANREEF-SR"},
    {u"ZANREEF-WB", 12, u"ZANREEF-WB"},
    {u"ZANDUNE-HFR", 4, u"ZAN-HFR"},
    {u"ZANDUNE-HF", 9, u"ZANREEF-HF"},
    {u"ZANDUNE-HBW", 10, u"ZANREEF-HBW"},
    {u"ZANFERN-4C", 13, u"ZANFERN-4C"},
    {u"ZAN-TRA", 14, u"ZAN-TRA"},
    {u"ZAN-SSL", 15, u"ZAN-SSL"},
    {u"ZANTIDE-MC", 16, u"ZANTIDE-MC"},
    {u"ZANTIDE-REM", 17, u"ZANTIDE-REM"},
    {u"ZANREEF-MC", 18, u"ZANREEF-MC"},
    {u"ZANREEF-REM", 19, u"ZANREEF-REM"},
};

class ZANOptionsTest : public testing::Test {
protected:
    void SetUp() override { options = ZANOptions::Instance(); }

    static QString Path() { return DeviceTree::Path() + StdDeviceDefinition::g_vdDevOptions.PathName(); }
    static ValueString* TreeValue() { return Tree::Instance()->Find<ValueString>(Path()); }

    DeviceTree device; // finalises the options at its end
    ZANOptions* options = nullptr;
};

// --- the set ---

TEST_F(ZANOptionsTest, ThereIsOneSetUntilItIsFinalised) {
    options->AddOption(OPTION_ZAN_CL);
    EXPECT_EQ(ZANOptions::Instance(), options);
    EXPECT_TRUE(ZANOptions::Instance()->HasOption(OPTION_ZAN_CL));
    ZANOptions::Finalise();
    EXPECT_FALSE(ZANOptions::Instance()->HasOption(OPTION_ZAN_CL));
    EXPECT_EQ(ZANOptions::Instance()->GetOptionsAsString(), QString());
    ZANOptions::Finalise();
    ZANOptions::Finalise();
    static_assert(!std::is_copy_constructible_v<ZANOptions> && std::has_virtual_destructor_v<ZANOptions>);
}

TEST_F(ZANOptionsTest, OptionsAreCounted) {
    EXPECT_EQ(options->GetOptionCount(OPTION_ZAN_CL), 0);
    EXPECT_FALSE(options->HasOption(OPTION_ZAN_CL));
    for (int count = 1; count <= 3; ++count) {
        options->AddOption(OPTION_ZAN_CL);
        EXPECT_EQ(options->GetOptionCount(OPTION_ZAN_CL), count);
        EXPECT_TRUE(options->HasOption(OPTION_ZAN_CL));
    }
    EXPECT_EQ(options->GetOptionCount(OPTION_ZAN_DR), 0);
}

TEST_F(ZANOptionsTest, RemovedOptionIsGoneHoweverOftenItWasAdded) {
    EXPECT_TRUE(options->AddOptionsFromString(u"ZAN-CL;ZAN-CL;ZAN-DR;ZAN-CL"_s));
    options->RemoveOption(OPTION_ZAN_CL);
    EXPECT_FALSE(options->HasOption(OPTION_ZAN_CL));
    EXPECT_EQ(options->GetOptionCount(OPTION_ZAN_CL), 0);
    EXPECT_EQ(options->GetOptionsAsString(), u"ZAN-DR"_s);
    options->RemoveOption(OPTION_ZAN_CL);
    options->RemoveOption(OPTION_NONE);
    EXPECT_EQ(options->GetOptionsAsString(), u"ZAN-DR"_s);
}

TEST_F(ZANOptionsTest, ClearingRemovesAllOptions) {
    EXPECT_TRUE(options->AddOptionsFromString(u"ZAN-CL;ZAN-CL;ZAN-DR"_s));
    options->ClearAllOptions();
    EXPECT_EQ(options->GetOptionsAsString(), QString());
    EXPECT_FALSE(options->HasOption(OPTION_ZAN_DR));
}

TEST_F(ZANOptionsTest, AskingForNoOptionSucceeds) {
    EXPECT_TRUE(options->HasOption(OPTION_NONE));
    options->AddOption(OPTION_NONE);
    EXPECT_EQ(options->GetOptionCount(OPTION_NONE), 0);
    EXPECT_EQ(options->GetOptionsAsString(), QString());
    options->ClearAllOptions();
    EXPECT_TRUE(options->HasOption(OPTION_NONE));
}

// --- names ---

TEST_F(ZANOptionsTest, TableHoldsEveryNameAndIsClosed) {
    ASSERT_EQ(ZANOptions::s_aOptionEntries.size(), std::size(ROWS) + 1);
    for (std::size_t i = 0; i < std::size(ROWS); ++i) {
        EXPECT_EQ(ZANOptions::s_aOptionEntries[i].name, QStringView(ROWS[i].name)) << i;
        EXPECT_EQ(ZANOptions::s_aOptionEntries[i].option, static_cast<EZANOptions>(ROWS[i].option)) << i;
    }
    EXPECT_TRUE(ZANOptions::s_aOptionEntries.back().name.isEmpty());
    EXPECT_EQ(ZANOptions::s_aOptionEntries.back().option, OPTION_NONE);
}

TEST_F(ZANOptionsTest, EveryNameIsReadAndWrittenByTheFirstNameOfItsOption) {
    for (const Row& row : ROWS) {
        const QString name = QString::fromUtf16(row.name);
        SCOPED_TRACE(name.toStdString());
        options->ClearAllOptions();
        EXPECT_TRUE(options->AddOptionByName(name));
        EXPECT_EQ(options->GetOptionCount(static_cast<EZANOptions>(row.option)), 1);
        EXPECT_EQ(options->GetOptionsAsString(), QString::fromUtf16(row.writtenName));
        EXPECT_TRUE(options->AddOptionsFromString(name));
        EXPECT_EQ(options->GetOptionCount(static_cast<EZANOptions>(row.option)), 2);
    }
}

TEST_F(ZANOptionsTest, UnknownNamesAddNothing) {
    for (const QString& name : {u""_s, QString(), u"BOGUS"_s, u"zan-cl"_s, u" ZAN-CL"_s, u"ZAN-CL "_s,
                                u"ZAN-C"_s, u"ZAN-CLX"_s, u"ZAN-CL\0"_s, u"ZAN-CL;ZAN-DR"_s, u"1"_s}) {
        EXPECT_FALSE(options->AddOptionByName(name)) << name.toStdString();
        EXPECT_EQ(options->GetOptionsAsString(), QString()) << name.toStdString();
    }
}

TEST_F(ZANOptionsTest, TextsAreReadUpToTheFirstUnknownName) {
    struct Case {
        QString text;
        bool isKnown;
        QString options;
    };
    const qsizetype many = 1'000'000;
    const Case cases[] = {
        {u"ZAN-CL"_s, true, u"ZAN-CL"_s},
        {u"ZAN-CL;ZAN-CL;ZANTIDE-WB"_s, true, u"ZAN-CL;ZAN-CL;ZANTIDE-WB"_s},
        {u"ZANREEF-REM;ZAN-CL;ZANTIDE-WB;ZAN-CL"_s, true, u"ZAN-CL;ZAN-CL;ZANTIDE-WB;ZANREEF-REM"_s},
        {u"ZANDUNE-HF;ZANREEF-HF"_s, true, u"ZANREEF-HF;ZANREEF-HF"_s},
        {u"ZAN-CL;BOGUS;ZAN-DR"_s, false, u"ZAN-CL"_s},
        {u"BOGUS;ZAN-CL"_s, false, u""_s},
        {u"ZAN-CL;"_s, false, u"ZAN-CL"_s},
        {u";ZAN-CL"_s, false, u""_s},
        {u"ZAN-CL;;ZAN-DR"_s, false, u"ZAN-CL"_s},
        {u"ZAN-CL; ZAN-DR"_s, false, u"ZAN-CL"_s},
        {u"ZAN-CL;zan-dr;ZAN-LF"_s, false, u"ZAN-CL"_s},
        {u"ZAN-CL,ZAN-DR"_s, false, u""_s},
        {u"ZAN-CL;ZAN-DR\0;ZAN-LF"_s, false, u"ZAN-CL"_s},
        {u"\0"_s, false, u""_s},
        {u""_s, false, u""_s},
        {QString(), false, u""_s},
        {u";"_s, false, u""_s},
        {QString(many, u';'), false, u""_s},
        {QString(many, u'x'), false, u""_s},
        {u"ZAN-CL"_s + QString(many, u';'), false, u"ZAN-CL"_s},
        {u"ZAN-CL"_s + u";ZAN-CL"_s.repeated(99'999), true, u"ZAN-CL"_s + u";ZAN-CL"_s.repeated(99'999)},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.text.left(40).toStdString());
        options->ClearAllOptions();
        EXPECT_EQ(options->AddOptionsFromString(each.text), each.isKnown);
        EXPECT_TRUE(options->GetOptionsAsString() == each.options);
    }
}

TEST_F(ZANOptionsTest, TextsAddToWhatIsThere) {
    EXPECT_TRUE(options->AddOptionsFromString(u"ZAN-DR;ZAN-CL"_s));
    EXPECT_TRUE(options->AddOptionsFromString(u"ZAN-CL"_s));
    EXPECT_EQ(options->GetOptionCount(OPTION_ZAN_CL), 2);
    EXPECT_EQ(options->GetOptionCount(OPTION_ZAN_DR), 1);
}

TEST_F(ZANOptionsTest, OptionWithoutANameIsWrittenAsAnEmptyOne) {
    options->AddOption(EZANOptions{99});
    EXPECT_EQ(options->GetOptionsAsString(), QString());
    options->AddOption(EZANOptions{99});
    options->AddOption(OPTION_ZAN_CL);
    EXPECT_EQ(options->GetOptionsAsString(), u"ZAN-CL;;"_s);
    options->AddOption(EZANOptions{-5});
    EXPECT_EQ(options->GetOptionsAsString(), u";ZAN-CL;;"_s);
    EXPECT_EQ(options->GetOptionCount(EZANOptions{99}), 2);
}

// --- value tree ---

TEST_F(ZANOptionsTest, SetIsReplacedByTheTextInTheTree) {
    options->AddOption(OPTION_ZAN_SSL);
    TreeValue()->SetValue(u"ZAN-CL;ZANDUNE-HF;ZAN-CL"_s, nullptr);
    EXPECT_TRUE(options->ReadFromValueTree(Path()));
    EXPECT_EQ(options->GetOptionsAsString(), u"ZAN-CL;ZAN-CL;ZANREEF-HF"_s);

    TreeValue()->SetValue(u"ZAN-DR;BOGUS;ZAN-CL"_s, nullptr);
    EXPECT_FALSE(options->ReadFromValueTree(Path()));
    EXPECT_EQ(options->GetOptionsAsString(), u"ZAN-DR"_s);

    TreeValue()->SetValue(u""_s, nullptr); // a device without options is an unknown name too
    EXPECT_FALSE(options->ReadFromValueTree(Path()));
    EXPECT_EQ(options->GetOptionsAsString(), QString());
}

TEST_F(ZANOptionsTest, WithoutATextValueNothingIsReadOrWritten) {
    options->AddOption(OPTION_ZAN_SSL);
    const QString ofAnotherType = DeviceTree::Path() + StdDeviceDefinition::g_vdDevState.PathName();
    for (const QString& path :
         {u"/DEVICES/Other"_s, DeviceTree::Path(), ofAnotherType, u""_s, u"no path"_s}) {
        EXPECT_FALSE(options->ReadFromValueTree(path)) << path.toStdString();
        EXPECT_FALSE(options->WriteToValueTree(path, nullptr)) << path.toStdString();
        EXPECT_EQ(options->GetOptionsAsString(), u"ZAN-SSL"_s) << path.toStdString();
    }
    EXPECT_EQ(Tree::Instance()->GetValue(ofAnotherType)->GetStringValue(), u"0"_s);
    EXPECT_EQ(Tree::Instance()->GetValue(u"/DEVICES/Other"_s), nullptr);
}

TEST_F(ZANOptionsTest, OriginatorIsNotNotifiedOfItsOwnWrite) {
    CodeObserver originator;
    CodeObserver other;
    TreeValue()->AddObserver(&originator);
    TreeValue()->AddObserver(&other);
    EXPECT_TRUE(options->AddOptionsFromString(u"ZAN-DR;ZANDUNE-HBW"_s));
    EXPECT_TRUE(options->WriteToValueTree(Path(), &originator));
    EXPECT_EQ(TreeValue()->GetValue(), u"ZAN-DR;ZANREEF-HBW"_s);
    EXPECT_TRUE(originator.codes.empty());
    EXPECT_EQ(other.codes.size(), 1U);
    EXPECT_TRUE(options->WriteToValueTree(Path(), nullptr)); // nothing new to publish
    options->ClearAllOptions();
    EXPECT_TRUE(options->WriteToValueTree(Path(), nullptr));
    EXPECT_EQ(TreeValue()->GetValue(), QString());
    EXPECT_EQ(originator.codes.size(), 1U);
    EXPECT_EQ(other.codes.size(), 2U);
}

TEST_F(ZANOptionsTest, WhatWasWrittenReadsTheSame) {
    EXPECT_TRUE(options->AddOptionsFromString(u"ZAN-CL;ZAN-CL;ZANTIDE-WB"_s));
    EXPECT_TRUE(options->WriteToValueTree(Path(), nullptr));
    options->ClearAllOptions();
    EXPECT_TRUE(options->ReadFromValueTree(Path()));
    EXPECT_EQ(options->GetOptionCount(OPTION_ZAN_CL), 2);
    EXPECT_EQ(options->GetOptionCount(OPTION_ZANTIDE_WB), 1);
}

/// Uses options and station at the very end of the process, when the value tree is gone.
class Latecomer {
public:
    Latecomer() = default;
    Latecomer(const Latecomer&) = delete;
    Latecomer& operator=(const Latecomer&) = delete;
    ~Latecomer() {
        if (isAwaited) {
            ZANOptions& late = *ZANOptions::Instance();
            const bool isSafe = !Tree::Instance() && !late.ReadFromValueTree(u"/x"_s) &&
                                !late.WriteToValueTree(u"/x"_s, nullptr) &&
                                StationCfg::GetStationAddress() == u"Default"_s &&
                                StationCfg::GetStationName() == u"Default"_s;
            std::_Exit(isSafe ? 42 : 1);
        }
    }

    bool isAwaited = false;
};

Latecomer latecomer; // made before the tree, so destroyed after it

TEST_F(ZANOptionsTest, WithoutATreeNothingIsReadOrWritten) {
    EXPECT_EXIT(
        {
            latecomer.isAwaited = true;
            std::exit(0); // NOLINT(concurrency-mt-unsafe)
        },
        testing::ExitedWithCode(42), "");
}

// --- settings ---

TEST_F(ZANOptionsTest, OptionsAreStoredWithTheStationThatIsConnected) {
    const StoredSettings settings;
    TraceLines trace;
    DeviceTree::ServerValue<ValueString>(StdDeviceDefinition::g_vdDevAddress)
        ->SetValue(u"DF.Ship:5000"_s, nullptr);
    EXPECT_TRUE(options->AddOptionsFromString(u"ZANDUNE-HF;ZAN-CL;ZAN-CL"_s));
    EXPECT_TRUE(options->WriteToCfg());
    options->ClearAllOptions();
    options->AddOption(OPTION_ZAN_DR);
    DeviceTree::ServerValue<ValueString>(StdDeviceDefinition::g_vdDevAddress)->SetValue(u""_s, nullptr);
    EXPECT_TRUE(options->WriteToCfg());
    EXPECT_EQ(settings.CloseAndRead(), uR"([ZANStations]
Count=2

[ZANStations/ZANStation0]
DevOptions="ZAN-CL;ZAN-CL;ZANREEF-HF"
DeviceAddress=df.ship:5000

[ZANStations/ZANStation1]
DevOptions=ZAN-DR
DeviceAddress=Default
)"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(ZANOptionsTest, StoredOptionsAreReplaced) {
    const StoredSettings settings;
    options->AddOption(OPTION_ZAN_DR);
    EXPECT_TRUE(options->WriteToCfg());
    settings.Reopen();
    options->ClearAllOptions();
    EXPECT_TRUE(options->WriteToCfg());
    settings.Reopen();
    const CfgPtr station(StationCfg::GetStationCfg({}, false));
    ASSERT_TRUE(station);
    EXPECT_EQ(station->GetString(u"DevOptions"_s, u"(none)"_s), QString());
}

} // namespace
