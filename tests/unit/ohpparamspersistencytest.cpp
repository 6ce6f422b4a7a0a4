#include "zancommon/ohpparamspersistency.h"

#include "kwbase/errorhandler.h"
#include "support/printing.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/overheadpassparams.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <functional>
#include <limits>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using KvZANCommon::OHPParamsPersistency;
using KvZANCommon::OverheadPassParams;

namespace {

class Reaction : public IObserver {
public:
    explicit Reaction(std::function<void()> reaction)
        : m_reaction(std::move(reaction)) {}
    void Update(Observable*, TChangeCode) override { m_reaction(); }

private:
    std::function<void()> m_reaction;
};

class OHPParamsPersistencyTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_directory.isValid());
        ASSERT_TRUE(CfgCenter::SetConfigDirectory(m_directory.path()));
        ErrorHandler::Instance().SetSink([this](const QString& line) { m_traces.append(line); });
    }
    void TearDown() override {
        ErrorHandler::Instance().SetSink({});
        EXPECT_TRUE(CfgCenter::Close());
    }

    [[nodiscard]] QString FilePath() const { return m_directory.filePath(u"Application.ini"_s); }
    [[nodiscard]] QString FileText() const {
        QFile file(FilePath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    void WriteFile(const QByteArray& text) const {
        ASSERT_TRUE(CfgCenter::Close());
        QFile file(FilePath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(text), text.size());
        file.close();
        Reopen();
    }
    /// What another run of the program finds.
    void Reopen() const { ASSERT_TRUE(CfgCenter::SetConfigDirectory(m_directory.path())); }
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

    QTemporaryDir m_directory;
    QStringList m_traces;
};

TEST_F(OHPParamsPersistencyTest, RestoreOnAnEmptyStoreGivesTheDefaultsAndWritesThem) {
    ExpectRestored(600, false);
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"false"_s);
    Reopen();
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
            Reopen();
            ExpectRestored(threshold, isValid);
        }
    }
}

TEST_F(OHPParamsPersistencyTest, ParametersAreOnDiskWhenMakePersistentReturns) {
    OverheadPassParams params;
    params.SetThreshold(123, nullptr);
    params.SetValid(true, nullptr);
    OHPParamsPersistency(params).MakePersistent();
    EXPECT_EQ(FileText().simplified(), u"[OverheadPass] Threshold=123 Valid=true"_s);
}

TEST_F(OHPParamsPersistencyTest, OneMissingKeyIsWrittenAndTheOtherOneKept) {
    WriteFile("[OverheadPass]\nThreshold=450\n");
    ExpectRestored(450, false);
    EXPECT_EQ(Stored(u"Threshold"_s), u"450"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"false"_s);

    WriteFile("[OverheadPass]\nValid=true\n");
    ExpectRestored(600, true);
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"true"_s);
}

TEST_F(OHPParamsPersistencyTest, SecondRunReadsWithoutWriting) {
    OverheadPassParams params;
    OHPParamsPersistency persistency(params);
    persistency.Restore();
    ASSERT_TRUE(CfgCenter::Close());
    const QString text = FileText();
    // A comment would not survive a write.
    WriteFile("; by hand\n" + text.toUtf8());
    persistency.Restore();
    ASSERT_TRUE(CfgCenter::Close());
    EXPECT_EQ(FileText(), u"; by hand\n"_s + text);
}

TEST_F(OHPParamsPersistencyTest, StoredDefaultsOfTheProbingReadsAreValuesLikeOthers) {
    for (const int threshold : {0, 1}) {
        for (const bool isValid : {true, false}) {
            WriteFile("[OverheadPass]\nThreshold=" + QByteArray::number(threshold) +
                      "\nValid=" + (isValid ? "true" : "false") + "\n");
            ExpectRestored(threshold, isValid);
        }
    }
}

TEST_F(OHPParamsPersistencyTest, UnreadableTextsGiveTheDefaults) {
    WriteFile("[OverheadPass]\nThreshold=high\nValid=perhaps\n");
    ExpectRestored(600, false);
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
    EXPECT_EQ(Stored(u"Valid"_s), u"false"_s);
}

TEST_F(OHPParamsPersistencyTest, ThresholdTooLargeForAnIntGivesTheDefaultAndIsReported) {
    for (const char* const text : {"2147483648", "-2147483649", "4294967896"}) {
        SCOPED_TRACE(text);
        WriteFile(QByteArray("[OverheadPass]\nThreshold=") + text + "\nValid=true\n");
        m_traces.clear();
        ExpectRestored(600, true);
        ASSERT_EQ(m_traces.size(), 1);
        EXPECT_TRUE(m_traces[0].contains(QLatin1StringView(text))) << m_traces[0].toStdString();
        EXPECT_EQ(Stored(u"Threshold"_s), QString::fromLatin1(text));
    }
}

TEST_F(OHPParamsPersistencyTest, RestoreTellsTheObserversOfEachChange) {
    WriteFile("[OverheadPass]\nThreshold=450\nValid=true\n");
    OverheadPassParams params;
    std::vector<std::pair<int, bool>> seen;
    Reaction reaction([&] { seen.emplace_back(params.GetThreshold(), params.IsValid()); });
    params.AddObserver(&reaction);
    OHPParamsPersistency persistency(params);
    persistency.Restore();
    persistency.Restore();
    EXPECT_EQ(seen, (std::vector<std::pair<int, bool>>{{450, false}, {450, true}}));
}

TEST_F(OHPParamsPersistencyTest, OtherSettingsAreLeftAlone) {
    WriteFile("[DFSettings]\nThreshold=1\n\n[OverheadPass]\nOther=x\nThreshold=2\n");
    OverheadPassParams params;
    OHPParamsPersistency(params).MakePersistent();
    Reopen();
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View{1});
    EXPECT_EQ(cfg.GetInt(u"DFSettings/Threshold"_s, 0), 1);
    EXPECT_EQ(Stored(u"Other"_s), u"x"_s);
    EXPECT_EQ(Stored(u"Threshold"_s), u"600"_s);
}

} // namespace
