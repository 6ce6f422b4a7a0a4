#include "tolmappstartup/cfgcenter.h"

#include "kwbase/errorhandler.h"
#include "support/fulldisk.h"
#include "support/printing.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <limits>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned NOBODY = 65534;

// Permission bits do not stop root, in whose name the tests may run.
class WithoutRootRights {
public:
    WithoutRootRights()
        : m_oldUser(geteuid()) {
        if (m_oldUser == 0) {
            EXPECT_EQ(seteuid(NOBODY), 0);
        }
    }
    WithoutRootRights(const WithoutRootRights&) = delete;
    WithoutRootRights& operator=(const WithoutRootRights&) = delete;
    ~WithoutRootRights() { EXPECT_EQ(seteuid(m_oldUser), 0); }

private:
    uid_t m_oldUser;
};

class CfgCenterTest : public testing::Test {
public:
    CfgCenterTest() {
        ErrorHandler::Instance().SetSink([this](const QString& line) { m_trace.append(line); });
        EXPECT_TRUE(m_directory.isValid());
    }
    ~CfgCenterTest() override {
        CfgCenter::Close();
        ErrorHandler::Instance().SetSink({});
    }

protected:
    // As at the start of a program.
    void Open() { ASSERT_TRUE(CfgCenter::SetConfigDirectory(m_directory.path())); }
    static ICfg& App() { return CfgCenter::GetAppCfg(ICfg::View::Outputs); }

    [[nodiscard]] QString Path(const QString& name = u"Application.ini"_s) const {
        return m_directory.filePath(name);
    }
    void WriteFile(const QByteArray& bytes, const QString& name = u"Application.ini"_s) const {
        QFile file(Path(name));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    [[nodiscard]] QByteArray ReadFile(const QString& name = u"Application.ini"_s) const {
        QFile file(Path(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    // Every write puts another file into the place of the old one.
    [[nodiscard]] ino_t FileNumber() const {
        struct stat status {};
        EXPECT_EQ(stat(QFile::encodeName(Path()).constData(), &status), 0);
        return status.st_ino;
    }
    [[nodiscard]] QStringList Files() const {
        return QDir(m_directory.path()).entryList(QDir::Files, QDir::Name);
    }

    QTemporaryDir m_directory;
    QStringList m_trace;
};

// ---- Values
// --------------------------------------------------------------------------------------------------

TEST_F(CfgCenterTest, AbsentKeyGivesTheDefaultAndIsNotWritten) {
    Open();
    EXPECT_EQ(App().GetString(u"Name"_s, u"none"_s), u"none"_s);
    EXPECT_EQ(App().GetInt(u"Number"_s, -7), -7);
    EXPECT_TRUE(App().GetBool(u"Flag"_s, true));
    EXPECT_FALSE(App().GetBool(u"Flag"_s, false));
    App().CommitKey(u"Name"_s);
    EXPECT_TRUE(CfgCenter::Close());
    EXPECT_EQ(Files(), QStringList());
}

TEST_F(CfgCenterTest, ValuesAreThereInTheNextRun) {
    Open();
    App().SetString(u"Name"_s, u"Nordmast"_s);
    App().SetInt(u"Frequency"_s, 3600000000LL);
    App().SetInt(u"Smallest"_s, std::numeric_limits<qint64>::min());
    App().SetInt(u"Largest"_s, std::numeric_limits<qint64>::max());
    App().SetBool(u"On"_s, true);
    App().SetBool(u"Off"_s, false);
    EXPECT_TRUE(CfgCenter::Close());
    Open();
    EXPECT_EQ(App().GetString(u"Name"_s, {}), u"Nordmast"_s);
    EXPECT_EQ(App().GetInt(u"Frequency"_s, 0), 3600000000LL);
    EXPECT_EQ(App().GetInt(u"Smallest"_s, 0), std::numeric_limits<qint64>::min());
    EXPECT_EQ(App().GetInt(u"Largest"_s, 0), std::numeric_limits<qint64>::max());
    EXPECT_TRUE(App().GetBool(u"On"_s, false));
    EXPECT_FALSE(App().GetBool(u"Off"_s, true));
    EXPECT_EQ(m_trace, QStringList());
}

TEST_F(CfgCenterTest, EveryTextSurvivesTheFile) {
    QStringList texts = {u""_s,
                         u"plain"_s,
                         u"WB;SR;HF"_s,
                         u"20,30, 40"_s,
                         u"C:\\temp\\new"_s,
                         u"C:\\temp\\"_s,
                         u"a = b"_s,
                         u"; no comment"_s,
                         u"# no comment"_s,
                         u"[no section]"_s,
                         u"\""_s,
                         u"\"quoted\""_s,
                         u"\"a\";\"b\""_s,
                         u"in \"the\" middle"_s,
                         u" blanks around "_s,
                         u"\ttab\t"_s,
                         u"two\nlines"_s,
                         u"two\r\nlines"_s,
                         u"\n"_s,
                         u"\\n"_s,
                         u"\\u0041"_s,
                         u"\" \\n \\u0041"_s,
                         u"@Invalid()"_s,
                         u"@ByteArray(x)"_s,
                         u"%20 %1"_s,
                         u"Grüße, Δφ, 方位, \U0001F4E1"_s,
                         QString(QChar(0x00A0)) + u"no-break blank"_s,
                         QString(QChar::ByteOrderMark) + u"mark"_s,
                         QString(QChar(0x2028)),
                         QString(QChar(0x85)),
                         QString(QChar(0xD800)),
                         u"a"_s + QChar(0xDC00) + QChar(0xD800) + u"b"_s,
                         u"a"_s + QChar(0xD800) + QChar(0xD83D) + QChar(0xDCE1) + QChar(0xDCE1),
                         QString(100000, u'x')};
    for (char16_t c = 0; c < 0x20; ++c) {
        texts += u"x"_s + QChar(c) + u"y"_s;
        texts += QString(QChar(c));
    }
    Open();
    for (qsizetype i = 0; i < texts.size(); ++i) {
        App().SetString(u"Texts/Text%1"_s.arg(i), texts[i]);
    }
    EXPECT_TRUE(CfgCenter::Close());
    Open();
    for (qsizetype i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(App().GetString(u"Texts/Text%1"_s.arg(i), u"(absent)"_s), texts[i]) << "text " << i;
    }
    EXPECT_EQ(m_trace, QStringList());
}

TEST_F(CfgCenterTest, OnlyTextsThatNeedQuotesAreQuoted) {
    Open();
    App().SetString(u"List"_s, u"WB;SR,HF"_s);
    App().SetString(u"Path"_s, u"C:\\temp"_s);
    App().SetString(u"Blank"_s, u" x"_s);
    App().SetString(u"Lines"_s, u"1\n2"_s);
    App().SetString(u"Null"_s, QString(QChar::Null));
    App().SetInt(u"A/B/Key"_s, 1);
    App().SetInt(u"A/Key"_s, 2);
    App().CommitKey(u"List"_s);
    EXPECT_EQ(ReadFile(), "Blank=\" x\"\nLines=\"1\\n2\"\nList=WB;SR,HF\nNull=\"\\u0000\"\nPath=C:\\temp\n"
                          "\n[A]\nKey=2\n\n[A/B]\nKey=1\n");
}

TEST_F(CfgCenterTest, ValueTypedByHandReadsAsTheTextThatStandsThere) {
    struct Row {
        const char* line;
        QString text;
    };
    const std::vector<Row> rows = {
        {"Key=DF,SR , HF", u"DF,SR , HF"_s},
        {"Key=WB;SR;HF", u"WB;SR;HF"_s},
        {R"(Key=C:\temp\new\x64)", u"C:\\temp\\new\\x64"_s},
        {"Key=a=b", u"a=b"_s},
        {"Key=", u""_s},
        {"  Key \t=  text with blanks \t", u"text with blanks"_s},
        {R"(Key="a";"b")", u"\"a\";\"b\""_s},
        {"Key=\"a\" and b", u"\"a\" and b"_s},
        {"Key=5\" antenna", u"5\" antenna"_s},
        {"Key=text ; and no comment", u"text ; and no comment"_s},
        {"Key=@Variant(x)", u"@Variant(x)"_s},
        {"Key=M\xC3\xBCnchen", u"München"_s},
        {"Key=\" quoted \"", u" quoted "_s},
        {R"(Key="a\\b\"c\nd\re\tf\u0041g")", u"a\\b\"c\nd\re\tfAg"_s},
        {R"(Key="\d \u12 \u12G4 \x")", u"\\d \\u12 \\u12G4 \\x"_s},
        {"Key=\"\"", u""_s},
    };
    for (const Row& row : rows) {
        CfgCenter::Close();
        WriteFile(QByteArray(row.line) + '\n');
        Open();
        EXPECT_EQ(App().GetString(u"Key"_s, u"(absent)"_s), row.text) << row.line;
    }
    EXPECT_EQ(m_trace, QStringList());
}

TEST_F(CfgCenterTest, SectionsCommentsByteOrderMarkAndCarriageReturnsAreRead) {
    WriteFile("\xEF\xBB\xBFTop=1\r\n"
              "; a comment = 2\r\n"
              "# another = 3\r\n"
              "\r\n"
              "[ZANStations]\r\n"
              "Count=2\r\n"
              "  [ ZANStations/ZANStation0 ]  ; the mast\r\n"
              "DeviceAddress=10.0.0.7\r\n"
              "SystemConfiguration/AntennaCount=4\r\n"
              "[ZANStations]\r\n"
              "Later=5");
    Open();
    EXPECT_EQ(App().GetInt(u"Top"_s, 0), 1);
    EXPECT_EQ(App().GetInt(u"ZANStations/Count"_s, 0), 2);
    EXPECT_EQ(App().GetString(u"ZANStations/ZANStation0/DeviceAddress"_s, {}), u"10.0.0.7"_s);
    EXPECT_EQ(App().GetInt(u"ZANStations/ZANStation0/SystemConfiguration/AntennaCount"_s, 0), 4);
    EXPECT_EQ(App().GetInt(u"ZANStations/Later"_s, 0), 5);
    EXPECT_EQ(m_trace, QStringList());
}

TEST_F(CfgCenterTest, BooleansAreReadInAnyCaseAndFromZeroAndOne) {
    WriteFile("A=TRUE\nB=False\nC=1\nD=0\n");
    Open();
    EXPECT_TRUE(App().GetBool(u"A"_s, false));
    EXPECT_FALSE(App().GetBool(u"B"_s, true));
    EXPECT_TRUE(App().GetBool(u"C"_s, false));
    EXPECT_FALSE(App().GetBool(u"D"_s, true));
    App().SetInt(u"E"_s, 1);
    EXPECT_TRUE(App().GetBool(u"E"_s, false));
}

// ---- Sub-configurations, views and files
// --------------------------------------------------------------------

TEST_F(CfgCenterTest, SubConfigurationsAreKeyPrefixes) {
    Open();
    const CfgPtr pStations(App().GetSubCfg(u"ZANStations"_s));
    ASSERT_TRUE(pStations);
    const CfgPtr pStation(pStations->GetSubCfg(u"ZANStation0"_s));
    ASSERT_TRUE(pStation);
    pStation->SetInt(u"SystemConfiguration/Antenna0"_s, 5);
    EXPECT_EQ(App().GetInt(u"ZANStations/ZANStation0/SystemConfiguration/Antenna0"_s, 0), 5);
    const CfgPtr pSystem(App().GetSubCfg(u"ZANStations/ZANStation0/SystemConfiguration"_s));
    ASSERT_TRUE(pSystem);
    EXPECT_EQ(pSystem->GetInt(u"Antenna0"_s, 0), 5);
}

TEST_F(CfgCenterTest, SubConfigurationComesIntoBeingWithItsFirstKey) {
    Open();
    {
        const CfgPtr pNew(App().GetSubCfg(u"New"_s));
        ASSERT_TRUE(pNew);
        EXPECT_EQ(pNew->GetString(u"Key"_s, u"absent"_s), u"absent"_s);
    }
    EXPECT_EQ(Files(), QStringList());
    {
        const CfgPtr pNew(App().GetSubCfg(u"New"_s));
        pNew->SetString(u"Key"_s, u"x"_s);
    }
    EXPECT_EQ(ReadFile(), "[New]\nKey=x\n");
}

TEST_F(CfgCenterTest, NameThatCannotStandInAFileGivesNoSubConfigurationAndNoKey) {
    Open();
    const QStringList names = {u""_s,
                               u"/"_s,
                               u"/a"_s,
                               u"a/"_s,
                               u"a//b"_s,
                               u" a"_s,
                               u"a "_s,
                               u"a/ b"_s,
                               u"a=b"_s,
                               u"[a"_s,
                               u"a]"_s,
                               u";a"_s,
                               u"b/#a"_s,
                               u"a\nb"_s,
                               u"a\tb"_s,
                               QChar(0xD800) + u"a"_s,
                               u"a"_s + QChar::Null,
                               QChar(QChar::ByteOrderMark) + u"a"_s};
    for (const QString& name : names) {
        const qsizetype lines = m_trace.size();
        EXPECT_EQ(App().GetSubCfg(name), nullptr) << name.toStdString();
        App().SetString(name, u"x"_s);
        EXPECT_EQ(App().GetString(name, u"absent"_s), u"absent"_s) << name.toStdString();
        EXPECT_EQ(m_trace.size(), lines + 2) << name.toStdString();
    }
    EXPECT_TRUE(CfgCenter::Close());
    EXPECT_EQ(Files(), QStringList());
}

TEST_F(CfgCenterTest, AllViewsShowTheSameSettings) {
    Open();
    CfgCenter::GetAppCfg(ICfg::View::OverheadPass).SetInt(u"Key"_s, 1);
    EXPECT_EQ(CfgCenter::GetAppCfg(ICfg::View::Outputs).GetInt(u"Key"_s, 0), 1);
    EXPECT_EQ(CfgCenter::GetAppCfg(ICfg::View::Stations).GetInt(u"Key"_s, 0), 1);
}

TEST_F(CfgCenterTest, ViewNumbersAreKept) {
    EXPECT_EQ(static_cast<int>(ICfg::View::OverheadPass), 1);
    EXPECT_EQ(static_cast<int>(ICfg::View::Outputs), 2);
    EXPECT_EQ(static_cast<int>(ICfg::View::Stations), 5);
}

TEST_F(CfgCenterTest, ApplicationSettingsStayGoodWhenReleasedClosedAndOpenedAgain) {
    Open();
    ICfg& app = App();
    app.SetInt(u"Key"_s, 1);
    app.Release();
    EXPECT_EQ(ReadFile(), "Key=1\n");
    CfgCenter::Close();
    EXPECT_EQ(app.GetInt(u"Key"_s, 0), 0);
    Open();
    EXPECT_EQ(app.GetInt(u"Key"_s, 0), 1);
}

TEST_F(CfgCenterTest, FurtherSettingsHaveAFileOfTheirOwnThatAllWhoOpenItShare) {
    Open();
    const CfgPtr pFirst(CfgCenter::CreateCfg(u"DF output"_s, ICfg::View::Outputs, {}));
    const CfgPtr pSecond(CfgCenter::CreateCfg(u"DF output"_s, ICfg::View::Stations, {}));
    ASSERT_TRUE(pFirst && pSecond);
    pFirst->SetInt(u"Key"_s, 1);
    EXPECT_EQ(pSecond->GetInt(u"Key"_s, 0), 1);
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 0);
    pSecond->CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(u"DF output.ini"_s), "Key=1\n");
    EXPECT_EQ(Files(), QStringList(u"DF output.ini"_s));
}

TEST_F(CfgCenterTest, SettingsThatAreHeldBeyondCloseAreStillSavedInTheirFile) {
    Open();
    CfgPtr pHeld(CfgCenter::CreateCfg(u"Held"_s, ICfg::View::Outputs, {}));
    EXPECT_TRUE(CfgCenter::Close());
    Open();
    const CfgPtr pAgain(CfgCenter::CreateCfg(u"Held"_s, ICfg::View::Outputs, {}));
    pHeld->SetInt(u"Key"_s, 1);
    EXPECT_EQ(pAgain->GetInt(u"Key"_s, 0), 1);
    CfgCenter::Close();
    pHeld->SetInt(u"Key"_s, 2);
    pHeld.reset();
    EXPECT_EQ(ReadFile(u"Held.ini"_s), "Key=2\n");
}

TEST_F(CfgCenterTest, HostileFileNameGivesNoSettings) {
    Open();
    const QStringList names = {u""_s,
                               u"a/b"_s,
                               u"/etc/x"_s,
                               u"..\\x"_s,
                               u".."_s,
                               u"a..b"_s,
                               u"a\nb"_s,
                               u"a"_s + QChar::Null + u"b"_s,
                               QString(QChar(0xDC00))};
    for (const QString& name : names) {
        EXPECT_EQ(CfgCenter::CreateCfg(name, ICfg::View::Outputs, {}), nullptr) << name.toStdString();
        EXPECT_TRUE(CfgCenter::GetLastError().contains(u"cannot be the name of a settings file"));
    }
    EXPECT_EQ(Files(), QStringList());
}

TEST_F(CfgCenterTest, ConfigDirectoryIsMadeWhenItIsMissing) {
    const QString directory = Path(u"station/config"_s);
    EXPECT_TRUE(CfgCenter::SetConfigDirectory(directory));
    EXPECT_TRUE(QDir(directory).exists());
    App().SetInt(u"Key"_s, 1);
    EXPECT_TRUE(CfgCenter::Close());
    EXPECT_EQ(ReadFile(u"station/config/Application.ini"_s), "Key=1\n");
}

TEST_F(CfgCenterTest, ConfigDirectoryThatCannotBeHadIsRefusedWithAReason) {
    WriteFile("", u"file"_s);
    for (const QString& directory :
         {QString(), Path(u"file"_s), Path(u"file/below"_s), QString(QChar::Null)}) {
        EXPECT_FALSE(CfgCenter::SetConfigDirectory(directory));
        EXPECT_TRUE(CfgCenter::GetLastError().contains(directory));
        EXPECT_TRUE(CfgCenter::GetLastError().contains(u"cannot be had"));
        EXPECT_TRUE(m_trace.last().contains(CfgCenter::GetLastError()));
    }
}

TEST_F(CfgCenterTest, WithoutADirectorySettingsLiveInMemoryAndThatIsSaidOnce) {
    App().SetInt(u"Key"_s, 1);
    App().SetInt(u"Other"_s, 2);
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 1);
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(m_trace.size(), 1);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"memory only"));
    EXPECT_EQ(CfgCenter::CreateCfg(u"Name"_s, ICfg::View::Outputs, {}), nullptr);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"no configuration directory"));
}

// ---- When a file is written
// ---------------------------------------------------------------------------------

TEST_F(CfgCenterTest, CommitSavesAtOnce) {
    Open();
    App().SetInt(u"Key"_s, 1);
    EXPECT_EQ(Files(), QStringList());
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(), "Key=1\n");
}

TEST_F(CfgCenterTest, EventLoopSavesWhatWasNotCommitted) {
    Open();
    App().SetInt(u"Key"_s, 1);
    QElapsedTimer timer;
    timer.start();
    while (!QFile::exists(Path()) && timer.elapsed() < 10000) {
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(ReadFile(), "Key=1\n");
}

TEST_F(CfgCenterTest, FileIsNotRewrittenWhenNothingChanged) {
    WriteFile("; comment\nKey = 5\nFlag=TRUE\n");
    Open();
    const ino_t fileNumber = FileNumber();
    App().SetInt(u"Key"_s, 5);
    App().CommitKey(u"Key"_s);
    EXPECT_TRUE(App().GetBool(u"Flag"_s, false));
    CfgPtr(App().GetSubCfg(u"Sub"_s)).reset();
    QCoreApplication::processEvents();
    EXPECT_TRUE(CfgCenter::Close());
    EXPECT_EQ(FileNumber(), fileNumber);
    EXPECT_EQ(ReadFile(), "; comment\nKey = 5\nFlag=TRUE\n");
}

TEST_F(CfgCenterTest, WhatOthersWroteMeanwhileIsKeptAndReadAfterTheNextSave) {
    WriteFile("Mine=1\nTheirs=1\n");
    Open();
    EXPECT_EQ(App().GetInt(u"Theirs"_s, 0), 1);
    WriteFile("Mine=1\nTheirs=2222\nNew=3\n");
    App().SetInt(u"Mine"_s, 2);
    App().CommitKey(u"Mine"_s);
    EXPECT_EQ(ReadFile(), "Mine=2\nNew=3\nTheirs=2222\n");
    EXPECT_EQ(App().GetInt(u"Mine"_s, 0), 2);
    EXPECT_EQ(App().GetInt(u"Theirs"_s, 0), 2222);
    EXPECT_EQ(App().GetInt(u"New"_s, 0), 3);
}

// ---- Damaged files
// ------------------------------------------------------------------------------------------

TEST_F(CfgCenterTest, DamagedLineIsReportedAndTheFileKeptBesideAndTheOtherLinesRead) {
    struct Row {
        QByteArray line;
        QString reason;
    };
    const std::vector<Row> rows = {
        {"no assignment", u"is neither a section nor a comment nor key=value"_s},
        {"=value", u"has no usable key"_s},
        {"a]b=value", u"has no usable key"_s},
        {"a//b=value", u"has no usable key"_s},
        {QByteArray("Bad=a\0b", 7), u"holds a NUL byte"_s},
        {"Bad=M\xFCnchen", u"is no UTF-8 text"_s},
        {"Bad=\"no end", u"opens a double quote and does not close it"_s},
        {R"(Bad="no end\")", u"opens a double quote and does not close it"_s},
        {"Bad=\"", u"opens a double quote and does not close it"_s},
        {"First=7\nFirst=1", u"repeats the key \"First\"; the later value counts"_s},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line.toStdString());
        CfgCenter::Close();
        const QByteArray content = "; heading\n" + row.line + "\n[Section]\nSecond=2\n";
        const QString name = u"row%1.ini"_s.arg(&row - rows.data());
        WriteFile(content, name);
        m_trace.clear();
        Open();
        const CfgPtr pCfg(CfgCenter::CreateCfg(name.chopped(4), ICfg::View::Outputs, {}));
        const QString number = QString::number(2 + row.line.count('\n'));
        const QString expected = u"The settings file "_s + Path(name) + u" is damaged: line "_s + number +
                                 u' ' + row.reason + u"; it is kept as "_s + Path(name) +
                                 u".damaged-1. The other lines stay in force."_s;
        EXPECT_EQ(CfgCenter::GetLastError(), expected);
        ASSERT_EQ(m_trace.size(), 1);
        EXPECT_TRUE(m_trace[0].endsWith(expected));
        EXPECT_EQ(ReadFile(name), content);
        EXPECT_EQ(ReadFile(name + u".damaged-1"_s), content);
        EXPECT_EQ(pCfg->GetInt(u"Section/Second"_s, 0), 2);
        EXPECT_EQ(pCfg->GetString(u"Bad"_s, u"default"_s), u"default"_s);

        pCfg->SetInt(u"Third"_s, 3);
        pCfg->CommitKey(u"Third"_s);
        EXPECT_TRUE(ReadFile(name).endsWith("Third=3\n\n[Section]\nSecond=2\n"));
        EXPECT_EQ(ReadFile(name + u".damaged-1"_s), content);
    }
}

TEST_F(CfgCenterTest, SectionNameThatIsCertainEnoughStaysInForceAndAnUncertainOneTakesItsKeysAlong) {
    WriteFile("[Open\nKey=1\n[Text] behind\nKey=2\n[]\nKey=3\n[Bad\xFF]\nKey=4\n[Good]\nKey=5\n");
    Open();
    EXPECT_EQ(App().GetInt(u"Open/Key"_s, 0), 1);
    EXPECT_EQ(App().GetInt(u"Text/Key"_s, 0), 2);
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 0);
    EXPECT_EQ(App().GetInt(u"Good/Key"_s, 0), 5);
    const QString problem = CfgCenter::GetLastError();
    EXPECT_TRUE(problem.contains(u"line 1 opens a section name and does not close it with \"]\";"));
    EXPECT_TRUE(problem.contains(u"line 3 has text behind the section name;"));
    EXPECT_TRUE(problem.contains(u"line 5 has no usable section name;"));
    EXPECT_TRUE(problem.contains(u"line 6 stands below a section name that could not be read;"));
    EXPECT_TRUE(problem.contains(u"line 7 is no UTF-8 text;"));
    EXPECT_TRUE(problem.contains(u"line 8 stands below a section name that could not be read;"));
}

TEST_F(CfgCenterTest, TruncatedFileKeepsWhatIsReadable) {
    const QByteArray whole = "First=1\n[Section]\nSecond=\"two\"\nThird=3\n";
    for (qsizetype length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        CfgCenter::Close();
        const QString name = u"cut%1"_s.arg(length);
        WriteFile(whole.first(length), name + u".ini"_s);
        Open();
        const CfgPtr pCfg(CfgCenter::CreateCfg(name, ICfg::View::Outputs, {}));
        EXPECT_EQ(pCfg->GetInt(u"First"_s, 0), whole.indexOf("=1") + 2 <= length ? 1 : 0);
        EXPECT_EQ(pCfg->GetString(u"Section/Second"_s, u"none"_s),
                  whole.indexOf("two\"") + 4 <= length ? u"two"_s
                  : whole.indexOf("\"two") == length   ? u""_s
                                                       : u"none"_s);
        EXPECT_EQ(ReadFile(name + u".ini"_s), whole.first(length));
    }
}

TEST_F(CfgCenterTest, BinaryFileIsKeptBesideAndTheReportStaysShort) {
    QByteArray bytes;
    for (unsigned i = 0; i < 100000; ++i) {
        bytes += static_cast<char>((i * 2654435761U) >> 13);
    }
    WriteFile(bytes);
    Open();
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"lines more;"));
    EXPECT_LT(CfgCenter::GetLastError().size(), 2000);
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-1"_s), bytes);
    App().SetInt(u"Key"_s, 1);
    EXPECT_TRUE(CfgCenter::Close());
    EXPECT_TRUE(ReadFile().contains("Key=1\n"));
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-1"_s), bytes);
}

TEST_F(CfgCenterTest, EarlierCopyIsNeverOverwrittenAndTheSameContentIsKeptOnce) {
    WriteFile("old", u"Application.ini.damaged-1"_s);
    WriteFile("damaged");
    Open();
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-1"_s), "old");
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-2"_s), "damaged");
    CfgCenter::Close();
    WriteFile("damaged");
    QFile later(Path(u"Application.ini"_s)); // else Qt takes it for the file that it knows
    ASSERT_TRUE(later.open(QFile::ReadWrite));
    ASSERT_TRUE(later.setFileTime(QDateTime::currentDateTime().addSecs(10), QFile::FileModificationTime));
    later.close();
    Open();
    EXPECT_EQ(Files().size(), 3);
    CfgCenter::Close();
    WriteFile("damaged again");
    Open();
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-3"_s), "damaged again");
    EXPECT_EQ(Files().size(), 4);
}

TEST_F(CfgCenterTest, FileIsNotOverwrittenWhileItsCopyCannotBeKept) {
    const QByteArray damaged = "Good=1\n" + QByteArray(100000, 'x');
    WriteFile(damaged);
    {
        const FullDisk disk(1000);
        Open();
        EXPECT_TRUE(CfgCenter::GetLastError().contains(u"a copy of it cannot be kept"));
        App().SetInt(u"New"_s, 2);
        App().CommitKey(u"New"_s);
        EXPECT_TRUE(CfgCenter::GetLastError().contains(u"could not be saved: a copy of it cannot be kept"));
        EXPECT_EQ(ReadFile(), damaged);
        EXPECT_EQ(App().GetInt(u"New"_s, 0), 2);
    }
    App().CommitKey(u"New"_s);
    EXPECT_EQ(ReadFile(), "Good=1\nNew=2\n");
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-1"_s), damaged);
}

// ---- Values that cannot be read as wanted
// -------------------------------------------------------------------

TEST_F(CfgCenterTest, ValueOfTheWrongTypeGivesTheDefaultAndIsReportedOnceWithKeyAndText) {
    WriteFile("[S]\nNumber=abc\nBig=9223372036854775808\nFraction=1.5\nEmpty=\nFlag=maybe\nTwo=2\n");
    Open();
    const CfgPtr pCfg(App().GetSubCfg(u"S"_s));
    struct Row {
        QString key;
        QString text;
        bool isNumber;
    };
    const std::vector<Row> rows = {
        {u"Number"_s, u"abc"_s, true},   {u"Big"_s, u"9223372036854775808"_s, true},
        {u"Fraction"_s, u"1.5"_s, true}, {u"Empty"_s, u""_s, true},
        {u"Flag"_s, u"maybe"_s, false},  {u"Two"_s, u"2"_s, false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.key.toStdString());
        m_trace.clear();
        for (int i = 0; i < 3; ++i) {
            if (row.isNumber) {
                EXPECT_EQ(pCfg->GetInt(row.key, 42), 42);
                EXPECT_EQ(pCfg->GetInt(row.key, 43), 43);
            } else {
                EXPECT_TRUE(pCfg->GetBool(row.key, true));
                EXPECT_FALSE(pCfg->GetBool(row.key, false));
            }
        }
        EXPECT_EQ(CfgCenter::GetLastError(),
                  u"The settings file "_s + Path() + u" holds \""_s + row.text + u"\" under the key \"S/"_s +
                      row.key + u"\", which is no "_s + (row.isNumber ? u"integer"_s : u"boolean"_s) +
                      u"; the default is used."_s);
        EXPECT_EQ(m_trace.size(), 1);
        EXPECT_EQ(pCfg->GetString(row.key, u"absent"_s), row.text);
    }
    EXPECT_EQ(Files().size(), 1);
}

TEST_F(CfgCenterTest, FileWithAValueOfTheWrongTypeIsKeptBesideBeforeItIsOverwritten) {
    const QByteArray typed = "Number=12OO\nOther=x\n";
    WriteFile(typed);
    Open();
    EXPECT_EQ(App().GetInt(u"Number"_s, 5), 5);
    EXPECT_EQ(Files().size(), 1);
    App().SetInt(u"Number"_s, 5);
    QCoreApplication::processEvents();
    EXPECT_EQ(ReadFile(), "Number=5\nOther=x\n");
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-1"_s), typed);
    App().SetInt(u"Number"_s, 6);
    App().CommitKey(u"Number"_s);
    EXPECT_EQ(Files().size(), 2);
}

// ---- Writes that fail
// ---------------------------------------------------------------------------------------

TEST_F(CfgCenterTest, ReadOnlyPlaceIsReportedAndTheNextCommitTriesAgain) {
    WriteFile("Key=1\n");
    chmod(QFile::encodeName(Path()).constData(), 0444);
    chmod(QFile::encodeName(m_directory.path()).constData(), 0555);
    Open();
    {
        const WithoutRootRights rights;
        App().SetInt(u"Key"_s, 2);
        App().CommitKey(u"Key"_s);
        EXPECT_EQ(
            CfgCenter::GetLastError(),
            u"The settings file "_s + Path() +
                u" could not be saved: the file or its folder cannot be written (read-only, or the disk is "
                u"full). "
                u"The old file is unchanged; the new values stay in memory, and the next commit tries again."_s);
        EXPECT_EQ(m_trace.size(), 1);
        App().CommitKey(u"Key"_s);
        EXPECT_EQ(m_trace.size(), 2);
        EXPECT_EQ(App().GetInt(u"Key"_s, 0), 2);
    }
    EXPECT_EQ(ReadFile(), "Key=1\n");
    chmod(QFile::encodeName(m_directory.path()).constData(), 0755);
    chmod(QFile::encodeName(Path()).constData(), 0644);
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(m_trace.size(), 2);
    EXPECT_EQ(ReadFile(), "Key=2\n");
}

TEST_F(CfgCenterTest, FailedSaveFromTheEventLoopIsReported) {
    WriteFile("Key=1\n");
    Open();
    const FullDisk disk(3);
    App().SetInt(u"Key"_s, 2);
    QElapsedTimer timer;
    timer.start();
    while (m_trace.isEmpty() && timer.elapsed() < 10000) {
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"could not be saved"));
    EXPECT_EQ(ReadFile(), "Key=1\n");
}

TEST_F(CfgCenterTest, FullDiskLeavesTheOldFileWholeAndTheNextCommitTriesAgain) {
    for (const qsizetype size : {1000, 100000}) {
        SCOPED_TRACE(size);
        m_trace.clear();
        Open();
        App().SetString(u"Key"_s, QString(size, u'a'));
        App().CommitKey(u"Key"_s);
        const QByteArray old = ReadFile();
        EXPECT_EQ(old.size(), size + 5);
        App().SetString(u"Key"_s, QString(size + 10, u'b'));
        {
            const FullDisk disk(size);
            App().CommitKey(u"Key"_s);
        }
        EXPECT_EQ(m_trace.size(), 1);
        EXPECT_TRUE(
            CfgCenter::GetLastError().contains(u"could not be saved: the disk did not take all of it"));
        EXPECT_EQ(ReadFile(), old);
        EXPECT_EQ(Files(), QStringList(u"Application.ini"_s));
        EXPECT_EQ(App().GetString(u"Key"_s, {}), QString(size + 10, u'b'));
        App().CommitKey(u"Key"_s);
        EXPECT_EQ(m_trace.size(), 1);
        EXPECT_EQ(ReadFile(), "Key=" + QByteArray(size + 10, 'b') + "\n");
    }
}

TEST_F(CfgCenterTest, ValuesOfAFurtherFileThatCouldNotBeSavedStayReadableAfterItsRelease) {
    Open();
    {
        const FullDisk disk(3);
        const CfgPtr pCfg(CfgCenter::CreateCfg(u"Further"_s, ICfg::View::Outputs, {}));
        pCfg->SetInt(u"Key"_s, 7);
    }
    EXPECT_FALSE(QFile::exists(Path(u"Further.ini"_s)));
    const CfgPtr pCfg(CfgCenter::CreateCfg(u"Further"_s, ICfg::View::Outputs, {}));
    EXPECT_EQ(pCfg->GetInt(u"Key"_s, 0), 7);
    pCfg->CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(u"Further.ini"_s), "Key=7\n");
}

TEST_F(CfgCenterTest, CloseTellsWhenSomethingCouldNotBeSaved) {
    Open();
    App().SetInt(u"Key"_s, 7);
    const FullDisk disk(3);
    EXPECT_FALSE(CfgCenter::Close());
}

TEST_F(CfgCenterTest, FileThatCannotBeReadIsReportedAndNotOverwritten) {
    ASSERT_TRUE(QDir(m_directory.path()).mkdir(u"Application.ini"_s));
    Open();
    EXPECT_TRUE(CfgCenter::GetLastError().contains(Path() + u" cannot be read"_s));
    App().SetInt(u"Key"_s, 1);
    App().CommitKey(u"Key"_s);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"could not be saved"));
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 1);
    EXPECT_TRUE(QDir(Path()).exists());
}

TEST_F(CfgCenterTest, EmptyLockThatACrashLeftBehindDoesNotHoldUpTheNextRun) {
    WriteFile("", u"Application.ini.lock"_s);
    QElapsedTimer timer;
    timer.start();
    Open();
    App().SetInt(u"Key"_s, 1);
    App().CommitKey(u"Key"_s);
    EXPECT_LT(timer.elapsed(), 15000);
    EXPECT_EQ(ReadFile(), "Key=1\n");
    EXPECT_EQ(Files(), QStringList(u"Application.ini"_s));
}

TEST_F(CfgCenterTest, KillDuringWritingLeavesTheFileWhole) {
    constexpr int ROUNDS = 20;
    constexpr int KEYS = 200;
    constexpr int COMMITS = 3; // that a round waits for
    for (int round = 0; round < ROUNDS; ++round) {
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            CfgCenter::SetConfigDirectory(m_directory.path());
            for (int generation = round * 1000000;; ++generation) {
                for (int key = 0; key < KEYS; ++key) {
                    App().SetInt(u"Section/Key%1"_s.arg(key), generation);
                }
                App().CommitKey({});
                if (write(ends[1], "x", 1) != 1) {
                    _exit(1);
                }
            }
        }
        close(ends[1]);
        for (int i = 0; i < COMMITS; ++i) {
            char sign = 0;
            ASSERT_EQ(read(ends[0], &sign, 1), 1);
        }
        usleep(static_cast<useconds_t>(round) * 300); // at another place of its work in each round
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(ends[0]);

        Open();
        const qint64 generation = App().GetInt(u"Section/Key0"_s, -1);
        EXPECT_GE(generation, round * 1000000 + COMMITS - 1);
        for (int key = 1; key < KEYS; ++key) {
            ASSERT_EQ(App().GetInt(u"Section/Key%1"_s.arg(key), -1), generation);
        }
        EXPECT_EQ(m_trace, QStringList());
        CfgCenter::Close();
    }
}

} // namespace
