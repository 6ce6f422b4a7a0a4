#include "zancommon/ohpparamspersistency.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "support/tracelines.h"
#include "zancommon/overheadpassparams.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using KvZANCommon::OHPParamsPersistency;
using KvZANCommon::OverheadPassParams;

namespace {

class OHPParamsPersistencyTest : public testing::Test {
protected:
    static QString Stored(const QString& key) {
        return CfgCenter::GetAppCfg(ICfg::View{1}).GetString(u"OverheadPass/"_s + key, u"(none)"_s);
    }
    void ExpectRestored(int threshold, bool isValid) {
        OverheadPassParams params;
        params.SetThreshold(threshold + 1, nullptr);
        params.SetValid(!isValid, nullptr);
        OHPParamsPersistency(params).Restore();
        EXPECT_EQ(params.GetThreshold(), threshold);
        EXPECT_EQ(params.IsValid(), isValid);
    }

    TraceLines m_trace;
    StoredSettings m_settings;
};

TEST_F(OHPParamsPersistencyTest, RestoreOnAnEmptyStoreGivesTheDefaultsAndWritesThem) {
    ExpectRestored(600, false);
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"false"_s);
    m_settings.Reopen();
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"false"_s);
}

TEST_F(OHPParamsPersistencyTest, WhatIsMadePersistentIsRestoredByTheNextRun) {
    for (const int threshold :
         {0, 1, 600, 900, -5, std::numeric_limits<int>::min() + 1, std::numeric_limits<int>::max() - 1}) {
        for (const bool isValid : {true, false}) {
            SCOPED_TRACE(threshold);
            OverheadPassParams params;
            params.SetThreshold(threshold, nullptr);
            params.SetValid(isValid, nullptr);
            OHPParamsPersistency(params).MakePersistent();
            m_settings.Reopen();
            ExpectRestored(threshold, isValid);
        }
    }
}

TEST_F(OHPParamsPersistencyTest, ParametersAreOnDiskWhenMakePersistentReturns) {
    OverheadPassParams params;
    params.SetThreshold(123, nullptr);
    params.SetValid(true, nullptr);
    OHPParamsPersistency(params).MakePersistent();
    EXPECT_EQ(m_settings.Read().simplified(), u"[OverheadPass] Threshold=123 Valid=true"_s);
}

TEST_F(OHPParamsPersistencyTest, OneMissingKeyIsWrittenAndTheOtherOneKept) {
    m_settings.Write("[OverheadPass]\nThreshold=450\n");
    ExpectRestored(450, false);
    EXPECT_EQ(Stored(u"Threshold"_s), u"450"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"false"_s);

    m_settings.Write("[OverheadPass]\nValid=true\n");
    ExpectRestored(600, true);
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"true"_s);
}

TEST_F(OHPParamsPersistencyTest, SecondRunReadsWithoutWriting) {
    OverheadPassParams params;
    OHPParamsPersistency persistency(params);
    persistency.Restore();
    const QString text = m_settings.CloseAndRead();
    // A comment would not survive a write.
    m_settings.Write("; by hand\n" + text.toUtf8());
    persistency.Restore();
    EXPECT_EQ(m_settings.CloseAndRead(), u"; by hand\n"_s + text);
}

TEST_F(OHPParamsPersistencyTest, StoredDefaultsOfTheProbingReadsAreValuesLikeOthers) {
    for (const int threshold : {0, 1}) {
        for (const bool isValid : {true, false}) {
            m_settings.Write("[OverheadPass]\nThreshold=" + QByteArray::number(threshold) +
                             "\nValid=" + (isValid ? "true" : "false") + "\n");
            ExpectRestored(threshold, isValid);
        }
    }
}

TEST_F(OHPParamsPersistencyTest, UnreadableTextsGiveTheDefaults) {
    m_settings.Write("[OverheadPass]\nThreshold=high\nValid=perhaps\n");
    ExpectRestored(600, false);
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"false"_s);
}

TEST_F(OHPParamsPersistencyTest, ThresholdTooLargeForAnIntGivesTheDefaultAndIsReported) {
    for (const char* const text : {"2147483648", "-2147483649", "4294967896"}) {
        SCOPED_TRACE(text);
        m_settings.Write(QByteArray("[OverheadPass]\nThreshold=") + text + "\nValid=true\n");
        m_trace.lines.clear();
        ExpectRestored(600, true);
        ASSERT_EQ(m_trace.lines.size(), 1);
        EXPECT_TRUE(m_trace.lines[0].contains(QLatin1StringView(text))) << m_trace.lines[0].toStdString();
        EXPECT_EQ(Stored(u"Threshold"_s), QString::fromLatin1(text));
    }
}

TEST_F(OHPParamsPersistencyTest, RestoreNotifiesTheObserversOfEachChange) {
    m_settings.Write("[OverheadPass]\nThreshold=450\nValid=true\n");
    OverheadPassParams params;
    std::vector<std::pair<int, bool>> seen;
    FunctionObserver reaction(
        [&](Observable*, TChangeCode) { seen.emplace_back(params.GetThreshold(), params.IsValid()); });
    params.AddObserver(&reaction);
    OHPParamsPersistency persistency(params);
    persistency.Restore();
    persistency.Restore();
    EXPECT_EQ(seen, (std::vector<std::pair<int, bool>>{{450, false}, {450, true}}));
}

TEST_F(OHPParamsPersistencyTest, OtherSettingsAreLeftAlone) {
    m_settings.Write("[DFSettings]\nThreshold=1\n\n[OverheadPass]\nOther=x\nThreshold=2\n");
    OverheadPassParams params;
    OHPParamsPersistency(params).MakePersistent();
    m_settings.Reopen();
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View{1});
    EXPECT_EQ(cfg.GetInt(u"DFSettings/Threshold"_s, 0), 1);
    EXPECT_EQ(Stored(u"Other"_s), u"x"_s);
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
}

} // namespace
