#include "tolmappstartup/cfgdefault.h"

#include "support/printing.h"
#include "tolmappstartup/cfgcenter.h"

#include <QFile>
#include <QHash>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

// A store that writes down every call.
class RecordingCfg final : public ICfg {
public:
    virtual ~RecordingCfg() = default;

    [[nodiscard]] QString GetString(const QString& key, const QString& defaultValue) const override {
        calls += u"GetString %1 %2"_s.arg(key, defaultValue);
        return values.value(key, defaultValue);
    }
    [[nodiscard]] qint64 GetInt(const QString& key, qint64 defaultValue) const override {
        calls += u"GetInt %1 %2"_s.arg(key, QString::number(defaultValue));
        return values.value(key, QString::number(defaultValue)).toLongLong();
    }
    [[nodiscard]] bool GetBool(const QString& key, bool defaultValue) const override {
        calls += u"GetBool %1 %2"_s.arg(key, defaultValue ? u"true"_s : u"false"_s);
        return values.value(key, defaultValue ? u"true"_s : u"false"_s) == u"true";
    }
    void CommitKey(const QString& key) override { calls += u"CommitKey %1"_s.arg(key); }
    void SetString(const QString& key, const QString& value) override {
        calls += u"SetString %1 %2"_s.arg(key, value);
        values[key] = value;
    }
    void SetInt(const QString& key, qint64 value) override {
        calls += u"SetInt %1 %2"_s.arg(key, QString::number(value));
        values[key] = QString::number(value);
    }
    void SetBool(const QString& key, bool value) override {
        calls += u"SetBool %1 %2"_s.arg(key, value ? u"true"_s : u"false"_s);
        values[key] = value ? u"true"_s : u"false"_s;
    }
    [[nodiscard]] ICfg* GetSubCfg(const QString&) override { return nullptr; }
    void Release() override {}
    [[nodiscard]] QStringList GetKeys() const override { return values.keys(); }
    [[nodiscard]] QStringList GetSubCfgNames() const override { return {}; }
    [[nodiscard]] CfgWriteBack BeginWriteBack() override { return {}; }

    mutable QStringList calls;
    QHash<QString, QString> values;
};

TEST(CfgDefault, AbsentKeyIsReadTwiceWrittenCommittedAndReadAgain) {
    RecordingCfg cfg;
    EXPECT_EQ(ReadOrCreateInt(cfg, u"Number"_s, 600), 600);
    EXPECT_EQ(cfg.calls, QStringList({u"GetInt Number 0"_s, u"GetInt Number 1"_s, u"SetInt Number 600"_s,
                                      u"CommitKey Number"_s, u"GetInt Number 600"_s}));
    cfg.calls.clear();
    EXPECT_TRUE(ReadOrCreateBool(cfg, u"Flag"_s, true));
    EXPECT_EQ(cfg.calls, QStringList({u"GetBool Flag false"_s, u"GetBool Flag true"_s, u"SetBool Flag true"_s,
                                      u"CommitKey Flag"_s, u"GetBool Flag true"_s}));
    cfg.calls.clear();
    EXPECT_EQ(ReadOrCreateString(cfg, u"Name"_s, u"mast"_s), u"mast"_s);
    EXPECT_EQ(cfg.calls, QStringList({u"GetString Name A"_s, u"GetString Name B"_s, u"SetString Name mast"_s,
                                      u"CommitKey Name"_s, u"GetString Name mast"_s}));
}

TEST(CfgDefault, PresentKeyIsReadThreeTimesAndNotWritten) {
    RecordingCfg cfg;
    // Values that are equal to one of the two defaults are values all the same.
    cfg.values = {{u"Number"_s, u"1"_s}, {u"Flag"_s, u"false"_s}, {u"Name"_s, u"A"_s}};
    EXPECT_EQ(ReadOrCreateInt(cfg, u"Number"_s, 600), 1);
    EXPECT_FALSE(ReadOrCreateBool(cfg, u"Flag"_s, true));
    EXPECT_EQ(ReadOrCreateString(cfg, u"Name"_s, u"mast"_s), u"A"_s);
    EXPECT_EQ(cfg.calls,
              QStringList({u"GetInt Number 0"_s, u"GetInt Number 1"_s, u"GetInt Number 600"_s,
                           u"GetBool Flag false"_s, u"GetBool Flag true"_s, u"GetBool Flag true"_s,
                           u"GetString Name A"_s, u"GetString Name B"_s, u"GetString Name mast"_s}));
}

TEST(CfgDefault, SecondRunReadsTheFileWithoutWritingIt) {
    const QTemporaryDir directory;
    const QByteArray path = QFile::encodeName(directory.filePath(u"Application.ini"_s));
    const auto run = [&](int expectedNumber) {
        EXPECT_TRUE(CfgCenter::SetConfigDirectory(directory.path()));
        ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::OverheadPass);
        EXPECT_EQ(ReadOrCreateInt(cfg, u"OverheadPass/Threshold"_s, 600), expectedNumber);
        EXPECT_FALSE(ReadOrCreateBool(cfg, u"OverheadPass/Valid"_s, false));
        EXPECT_EQ(ReadOrCreateString(cfg, u"Name"_s, {}), QString());
        struct stat status {};
        EXPECT_EQ(stat(path.constData(), &status), 0); // every key was committed
        EXPECT_TRUE(CfgCenter::Close());
        return status.st_ino; // another one after each write
    };
    const ino_t firstRun = run(600);
    EXPECT_EQ(run(600), firstRun);
    QFile file(directory.filePath(u"Application.ini"_s));
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    EXPECT_EQ(file.readAll(), "[General]\nName=\n\n[OverheadPass]\nThreshold=600\nValid=false\n");
    ASSERT_TRUE(file.resize(0));
    ASSERT_GT(file.write("Name=\n\n[OverheadPass]\nThreshold=75\nValid=0\n"), 0);
    file.close();
    EXPECT_EQ(run(75), firstRun);
}

TEST(CfgDefault, UnreadableValueIsReplacedByTheDefaultAndKeptBeside) {
    const QTemporaryDir directory;
    QFile file(directory.filePath(u"Application.ini"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    ASSERT_GT(file.write("Threshold=6OO\n"), 0);
    file.close();
    ASSERT_TRUE(CfgCenter::SetConfigDirectory(directory.path()));
    EXPECT_EQ(ReadOrCreateInt(CfgCenter::GetAppCfg(ICfg::View::OverheadPass), u"Threshold"_s, 600), 600);
    EXPECT_TRUE(CfgCenter::Close());
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_EQ(file.readAll(), "[General]\nThreshold=600\n");
    QFile copy(directory.filePath(u"Application.ini.damaged-1"_s));
    ASSERT_TRUE(copy.open(QFile::ReadOnly));
    EXPECT_EQ(copy.readAll(), "Threshold=6OO\n");
}

} // namespace
