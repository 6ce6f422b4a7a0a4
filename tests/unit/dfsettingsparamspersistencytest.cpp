#include "zancommon/dfsettingsparamspersistency.h"

#include "support/printing.h"
#include "support/storedsettings.h"
#include "support/tracelines.h"
#include "zancommon/dfsettingsparams.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <ostream>

using namespace Qt::StringLiterals;
using KvZANCommon::DFSettingsParams;
using KvZANCommon::DFSettingsParamsPersistency;

namespace {

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr auto VIEW = ICfg::View::Outputs;

struct Settings {
    long bandwidthKey;
    long modeKey;
    long intervalKey;
    double threshold;

    bool operator==(const Settings&) const = default;
};

void PrintTo(const Settings& settings, std::ostream* out) {
    *out << settings.bandwidthKey << ' ' << settings.modeKey << ' ' << settings.intervalKey << ' '
         << settings.threshold;
}

constexpr Settings DEFAULTS{7, 0, 4, 0.0};
constexpr Settings UNUSUAL{11, 12, 13, 14.5};

DFSettingsParams ParamsOf(const Settings& settings) {
    DFSettingsParams params;
    params.SetDFBandwidthKey(static_cast<unsigned long>(settings.bandwidthKey));
    params.SetDFModeKey(static_cast<unsigned long>(settings.modeKey));
    params.SetUpdateIntervalKey(static_cast<unsigned long>(settings.intervalKey));
    params.SetLevelThreshold(settings.threshold);
    return params;
}

Settings SettingsOf(const DFSettingsParams& params) {
    return {params.GetDFBandwidthKey(), params.GetDFModeKey(), params.GetUpdateIntervalKey(),
            params.GetLevelThreshold()};
}

class DFSettingsParamsPersistencyTest : public testing::Test {
protected:
    static void MakePersistent(const Settings& toStore, const QString& name = u"Application"_s) {
        DFSettingsParams params = ParamsOf(toStore);
        DFSettingsParamsPersistency(params, name, VIEW).MakePersistent();
        EXPECT_EQ(SettingsOf(params), toStore);
    }
    static Settings Restore(const QString& name = u"Application"_s) {
        DFSettingsParams params = ParamsOf(UNUSUAL);
        DFSettingsParamsPersistency(params, name, VIEW).Restore();
        return SettingsOf(params);
    }

    StoredSettings settings;
    TraceLines trace;
};

TEST_F(DFSettingsParamsPersistencyTest, RestoreFromAnEmptyFileGivesTheDefaultsAndWritesThem) {
    EXPECT_EQ(Restore(), DEFAULTS);
    EXPECT_EQ(settings.Read(),
              u"[DFSettings]\nDFBandwidthKey=7\nDFModeKey=0\nLevelThreshold=0\nUpdateIntervalKey=4\n"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(DFSettingsParamsPersistencyTest, SettingsAreOnDiskWhenMakePersistentReturns) {
    MakePersistent({1, 2, 3, -12.7});
    EXPECT_EQ(settings.Read(),
              u"[DFSettings]\nDFBandwidthKey=1\nDFModeKey=2\nLevelThreshold=-12\nUpdateIntervalKey=3\n"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(DFSettingsParamsPersistencyTest, NextRunFindsTheSettingsButNoFractionOfTheThreshold) {
    constexpr long LOWEST = std::numeric_limits<long>::min();
    constexpr long HIGHEST = std::numeric_limits<long>::max();
    struct Case {
        Settings stored;
        Settings restored;
    };
    const Case cases[] = {
        {{1, 2, 3, 35.9}, {1, 2, 3, 35.0}},
        {{0, 0, 0, -12.7}, {0, 0, 0, -12.0}},
        {{1, 1, 1, 1.0}, {1, 1, 1, 1.0}},
        {{7, 0, 4, 0.99}, {7, 0, 4, 0.0}},
        {{-1, LOWEST, HIGHEST, -0.99}, {-1, LOWEST, HIGHEST, 0.0}}, // keys keep all their bits
        {{1L << 40, 2, 3, 3e9}, {1L << 40, 2, 3, 3e9}},
        {{1, 2, 3, 1e300}, {1, 2, 3, 9223372036854775807.0}},
        {{1, 2, 3, -INF}, {1, 2, 3, -9223372036854775808.0}},
    };
    for (const Case& each : cases) {
        MakePersistent(each.stored);
        settings.Reopen();
        EXPECT_EQ(Restore(), each.restored);
    }
}

TEST_F(DFSettingsParamsPersistencyTest, ThresholdThatIsNoNumberIsStoredAsZero) {
    DFSettingsParams params = ParamsOf({1, 2, 3, NOT_A_NUMBER});
    DFSettingsParamsPersistency(params, u"Application"_s, VIEW).MakePersistent();
    EXPECT_EQ(Restore(), (Settings{1, 2, 3, 0.0}));
}

TEST_F(DFSettingsParamsPersistencyTest, WhatIsMissingOrUnreadableIsWrittenWithItsDefault) {
    struct Case {
        const char* text;
        Settings restored;
        bool isReported;
    };
    const Case cases[] = {
        {"DFModeKey=2\nUpdateIntervalKey=3\nLevelThreshold=5\n", {7, 2, 3, 5}, false},
        {"DFBandwidthKey=1\nUpdateIntervalKey=3\nLevelThreshold=5\n", {1, 0, 3, 5}, false},
        {"DFBandwidthKey=1\nDFModeKey=2\nLevelThreshold=5\n", {1, 2, 4, 5}, false},
        {"DFBandwidthKey=1\nDFModeKey=2\nUpdateIntervalKey=3\n", {1, 2, 3, 0}, false},
        {"DFBandwidthKey=wide\nDFModeKey=2\nUpdateIntervalKey=3\nLevelThreshold=5\n", {7, 2, 3, 5}, true},
        {"DFBandwidthKey=1\nDFModeKey=\nUpdateIntervalKey=9223372036854775808\nLevelThreshold=5.5\n",
         {1, 0, 4, 0},
         true},
        // The defaults of the probing reads are values like others.
        {"DFBandwidthKey=0\nDFModeKey=1\nLevelThreshold=1\nUpdateIntervalKey=0\n", {0, 1, 0, 1}, false},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.text);
        trace.lines.clear();
        settings.Write(QByteArray("[DFSettings]\n") + each.text);
        EXPECT_EQ(Restore(), each.restored);
        EXPECT_EQ(!trace.lines.isEmpty(), each.isReported);
        const Settings& stored = each.restored;
        EXPECT_EQ(settings.CloseAndRead(),
                  QString::asprintf("[DFSettings]\nDFBandwidthKey=%ld\nDFModeKey=%ld\nLevelThreshold=%d\n"
                                    "UpdateIntervalKey=%ld\n",
                                    stored.bandwidthKey, stored.modeKey, static_cast<int>(stored.threshold),
                                    stored.intervalKey));
    }
}

TEST_F(DFSettingsParamsPersistencyTest, SecondRunReadsWithoutWriting) {
    const QByteArray text = "; by hand\n[DFSettings]\nDFBandwidthKey=1\nDFModeKey=2\nLevelThreshold=3\n"
                            "UpdateIntervalKey=4\n";
    settings.Write(text); // the comment would not survive a write
    EXPECT_EQ(Restore(), (Settings{1, 2, 4, 3.0}));
    EXPECT_EQ(settings.CloseAndRead(), QString::fromUtf8(text));
}

TEST_F(DFSettingsParamsPersistencyTest, OtherSettingsAreLeftAlone) {
    settings.Write("[DFSettings]\nOther=x\n\n[Elsewhere]\nDFModeKey=9\n");
    MakePersistent({1, 2, 3, 4});
    EXPECT_EQ(settings.CloseAndRead(), u"[DFSettings]\nDFBandwidthKey=1\nDFModeKey=2\nLevelThreshold=4\n"
                                       "Other=x\nUpdateIntervalKey=3\n\n[Elsewhere]\nDFModeKey=9\n"_s);
}

TEST_F(DFSettingsParamsPersistencyTest, NameChoosesTheFile) {
    MakePersistent({1, 2, 3, 4}, u"First"_s);
    MakePersistent({5, 6, 7, 8}, u"Second"_s);
    settings.Reopen();
    EXPECT_EQ(Restore(u"First"_s), (Settings{1, 2, 3, 4}));
    EXPECT_EQ(Restore(u"Second"_s), (Settings{5, 6, 7, 8}));
    EXPECT_EQ(settings.Read(), QString());
}

TEST_F(DFSettingsParamsPersistencyTest, CopyServesTheSameParametersAndFile) {
    DFSettingsParams params = ParamsOf({1, 2, 3, 4});
    auto persistency = std::make_unique<DFSettingsParamsPersistency>(params, u"Application"_s, VIEW);
    DFSettingsParamsPersistency copy = *persistency;
    persistency.reset();
    copy.MakePersistent();
    params = ParamsOf(UNUSUAL);
    copy.Restore();
    EXPECT_EQ(SettingsOf(params), (Settings{1, 2, 3, 4}));
}

TEST_F(DFSettingsParamsPersistencyTest, WithoutAFileNothingHappens) {
    for (const QString& name : {QString(), u"../Application"_s, u"a/b"_s}) {
        MakePersistent({1, 2, 3, 4}, name);
        EXPECT_EQ(Restore(name), UNUSUAL);
    }
    EXPECT_EQ(settings.CloseAndRead(), QString());
    MakePersistent({1, 2, 3, 4}); // no directory is set any more
    EXPECT_EQ(Restore(), UNUSUAL);
}

} // namespace
