#include "tolmappstartup/cfgcenter.h"

#include "support/eventloop.h"
#include "support/fulldisk.h"
#include "support/printing.h"
#include "support/sleepingthread.h"
#include "support/tracelines.h"
#include "tolmappstartup/cfgdefault.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <limits>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>
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
    CfgCenterTest() { EXPECT_TRUE(m_directory.isValid()); }
    ~CfgCenterTest() override { CfgCenter::Close(); }

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
    TraceLines m_trace;
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
    EXPECT_EQ(m_trace.lines, QStringList());
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
    EXPECT_EQ(m_trace.lines, QStringList());
}

TEST_F(CfgCenterTest, OnlyTextsThatNeedQuotesAreQuoted) {
    Open();
    App().SetString(u"List"_s, u"WB;SR"_s);
    App().SetString(u"Methods"_s, u"COR,VEC"_s);
    App().SetString(u"Path"_s, u"C:\\temp"_s);
    App().SetString(u"Blank"_s, u" x"_s);
    App().SetString(u"Lines"_s, u"1\n2"_s);
    App().SetString(u"Null"_s, QChar(QChar::Null) + u"1x"_s);
    App().SetString(u"Quote"_s, u"5\" mast"_s);
    App().SetString(u"Type"_s, u"@Invalid()"_s);
    App().SetString(u"Plain"_s, u"a = b: #1 %2 [c] Grüße"_s);
    App().SetInt(u"A/B/Key"_s, 1);
    App().SetInt(u"A/Key"_s, 2);
    App().CommitKey(u"List"_s);
    EXPECT_EQ(ReadFile().toStdString(), R"ini([General]
Blank=" x"
Lines="1\n2"
List="WB;SR"
Methods="COR,VEC"
Null="\x00\x31x"
Path="C:\\temp"
Plain=a = b: #1 %2 [c] Grüße
Quote="5\" mast"
Type="@@Invalid()"

[A]
Key=2

[A/B]
Key=1
)ini");
}

TEST_F(CfgCenterTest, ValueTypedByHandReadsAsTheTextThatIsThere) {
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
        {R"(Key="\u12")", u"\\u12"_s},
        {R"(Key="\u+12a")", u"\\u+12a"_s},
        {R"(Key="\x41z\xe4g\x9")", u"Azäg\t"_s},
        {R"(Key="@@x")", u"@x"_s},
        {"Key=@@x", u"@@x"_s},
        {"Key=\"\"", u""_s},
    };
    for (const Row& row : rows) {
        CfgCenter::Close();
        WriteFile(QByteArray(row.line) + '\n');
        Open();
        EXPECT_EQ(App().GetString(u"Key"_s, u"(absent)"_s), row.text) << row.line;
    }
    EXPECT_EQ(m_trace.lines, QStringList());
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
    EXPECT_EQ(m_trace.lines, QStringList());
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
        pNew->CommitKey(u"Key"_s);
    }
    EXPECT_EQ(ReadFile(), "[New]\nKey=x\n");
}

TEST_F(CfgCenterTest, ReleasingSavesNothingSoThatOneCommitSavesAllThatWasSet) {
    Open();
    for (const QString& name : {u"First"_s, u"Second"_s}) {
        CfgPtr(App().GetSubCfg(name))->SetInt(u"Key"_s, 1);
    }
    EXPECT_EQ(Files(), QStringList());
    App().CommitKey(u"Other"_s);
    EXPECT_EQ(ReadFile(), "[First]\nKey=1\n\n[Second]\nKey=1\n");
}

TEST_F(CfgCenterTest, KeysAndSubConfigurationsOfASectionAreListed) {
    WriteFile("Top=1\n[A]\nLater=1\nEmpty=\n[A/B/C]\nDeep=1\n[A/D]\nKey=1\n[AB]\nOther=1\n");
    Open();
    App().SetInt(u"A/Unsaved"_s, 1);
    App().SetInt(u"A/D/Key"_s, 2);
    const CfgPtr pA(App().GetSubCfg(u"A"_s));
    EXPECT_EQ(App().GetKeys(), QStringList(u"Top"_s));
    EXPECT_EQ(App().GetSubCfgNames(), (QStringList{u"A"_s, u"AB"_s}));
    EXPECT_EQ(pA->GetKeys(), (QStringList{u"Empty"_s, u"Later"_s, u"Unsaved"_s}));
    EXPECT_EQ(pA->GetSubCfgNames(), (QStringList{u"B"_s, u"D"_s}));
    EXPECT_EQ(CfgPtr(App().GetSubCfg(u"A/B"_s))->GetKeys(), QStringList());
    EXPECT_EQ(CfgPtr(App().GetSubCfg(u"A/B"_s))->GetSubCfgNames(), QStringList(u"C"_s));
    EXPECT_EQ(CfgPtr(App().GetSubCfg(u"None"_s))->GetKeys(), QStringList());
    EXPECT_EQ(CfgPtr(App().GetSubCfg(u"None"_s))->GetSubCfgNames(), QStringList());
}

TEST_F(CfgCenterTest, SectionNamesThatOtherProgramsTakeForSomethingElseAreNoSubConfigurations) {
    Open();
    for (const QString& name : {u"General"_s, u"general"_s, u"%General"_s, u"DEFAULT"_s}) {
        EXPECT_EQ(App().GetSubCfg(name), nullptr) << name.toStdString();
        App().SetInt(name + u"/Key"_s, 1);
        EXPECT_EQ(App().GetInt(name + u"/Key"_s, 0), 0) << name.toStdString();
    }
    for (const QString& name : {u"General"_s, u"DEFAULT"_s}) {
        App().SetInt(name, 2);
        EXPECT_EQ(App().GetInt(name, 0), 2) << "as a key it is one like others";
        EXPECT_NE(CfgPtr(App().GetSubCfg(name + u"/Sub"_s)), nullptr) << name.toStdString();
    }
}

TEST_F(CfgCenterTest, NamesAreReadWithTheEscapesOfQSettingsAndKeepThem) {
    WriteFile("[%General]\nKey=1\n[a%20b%3D]\nc\\d%U00e9=2\n50%=3\n%UD800=4\nx\\\\y=5\n");
    Open();
    EXPECT_EQ(App().GetInt(u"General/Key"_s, 0), 1);
    EXPECT_EQ(App().GetInt(u"a b=/c/dé"_s, 0), 2);
    EXPECT_EQ(App().GetInt(u"a b=/50%"_s, 0), 3);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"line 6 has no usable key; line 7 has no usable key;"));
    App().SetInt(u"Mine"_s, 9);
    App().CommitKey(u"Mine"_s);
    EXPECT_EQ(ReadFile().toStdString(),
              "[General]\nMine=9\n\n[%General]\nKey=1\n\n[a b%3d]\n50%=3\n\n[a b%3d/c]\ndé=2\n");
}

TEST_F(CfgCenterTest, OuterBlanksAndMarksOfANameStayEscaped) {
    const QByteArray names = "%20a=1\n%U3000b=2\n%Ufeffc=3\n";
    WriteFile(names);
    Open();
    App().SetInt(u"Mine"_s, 9);
    App().CommitKey(u"Mine"_s);
    EXPECT_EQ(ReadFile(), "[General]\n%20a=1\nMine=9\n%U3000b=2\n%Ufeffc=3\n");
}

TEST_F(CfgCenterTest, NameThatCannotBeInAFileGivesNoSubConfigurationAndNoKey) {
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
                               u"a:b"_s,
                               u"a;b"_s,
                               u"a\"b"_s,
                               u"a\\b"_s,
                               u"a%20b"_s,
                               u"a%U0020b"_s,
                               QChar(0xD800) + u"a"_s,
                               u"a"_s + QChar::Null,
                               QChar(QChar::ByteOrderMark) + u"a"_s};
    for (const QString& name : names) {
        const qsizetype lines = m_trace.lines.size();
        EXPECT_EQ(App().GetSubCfg(name), nullptr) << name.toStdString();
        App().SetString(name, u"x"_s);
        EXPECT_EQ(App().GetString(name, u"absent"_s), u"absent"_s) << name.toStdString();
        EXPECT_EQ(m_trace.lines.size(), lines + 2) << name.toStdString();
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
    app.CommitKey(u"Key"_s);
    app.Release();
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
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
    EXPECT_EQ(ReadFile(u"DF output.ini"_s), "[General]\nKey=1\n");
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
    pHeld->CommitKey(u"Key"_s);
    pHeld.reset();
    EXPECT_EQ(ReadFile(u"Held.ini"_s), "[General]\nKey=2\n");
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
    EXPECT_EQ(ReadFile(u"station/config/Application.ini"_s), "[General]\nKey=1\n");
}

TEST_F(CfgCenterTest, ConfigDirectoryThatCannotBeUsedIsRefusedWithAReason) {
    WriteFile("", u"file"_s);
    for (const QString& directory :
         {QString(), Path(u"file"_s), Path(u"file/below"_s), QString(QChar::Null)}) {
        EXPECT_FALSE(CfgCenter::SetConfigDirectory(directory));
        EXPECT_TRUE(CfgCenter::GetLastError().contains(directory));
        EXPECT_TRUE(CfgCenter::GetLastError().contains(u"cannot be opened"));
        EXPECT_TRUE(m_trace.lines.last().contains(CfgCenter::GetLastError()));
    }
}

TEST_F(CfgCenterTest, WithoutADirectorySettingsLiveInMemoryAndThatIsSaidOnce) {
    App().SetInt(u"Key"_s, 1);
    App().SetInt(u"Other"_s, 2);
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 1);
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(m_trace.lines.size(), 1);
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
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
}

TEST_F(CfgCenterTest, EventLoopSavesWhatWasNotCommitted) {
    Open();
    App().SetInt(u"Key"_s, 1);
    EXPECT_TRUE(SpinUntil([this] { return QFile::exists(Path()); }));
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
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
    EXPECT_EQ(ReadFile(), "[General]\nMine=2\nNew=3\nTheirs=2222\n");
    EXPECT_EQ(App().GetInt(u"Mine"_s, 0), 2);
    EXPECT_EQ(App().GetInt(u"Theirs"_s, 0), 2222);
    EXPECT_EQ(App().GetInt(u"New"_s, 0), 3);
}

TEST_F(CfgCenterTest, FileOfTheSameSizeAndTimeThatOthersWroteIsRead) {
    WriteFile("[General]\nMine=1\nTheirs=1\n");
    QFile file(Path());
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    const QDateTime time = file.fileTime(QFile::FileModificationTime);
    Open();
    EXPECT_EQ(App().GetInt(u"Theirs"_s, 0), 1);
    ASSERT_EQ(file.write("[General]\nMine=1\nTheirs=2\n"),
              26); // in its place, so that it stays the same file
    ASSERT_TRUE(file.flush() && file.setFileTime(time, QFile::FileModificationTime));
    file.close();
    App().SetInt(u"Mine"_s, 2);
    App().CommitKey(u"Mine"_s);
    EXPECT_EQ(ReadFile(), "[General]\nMine=2\nTheirs=2\n");
    EXPECT_EQ(App().GetInt(u"Theirs"_s, 0), 2);
}

TEST_F(CfgCenterTest, ValueThatEqualsTheOneReadEarlierIsWrittenOverWhatOthersWrote) {
    WriteFile("Key=1\n");
    Open();
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 1);
    WriteFile("Key=2\n");
    App().SetInt(u"Key"_s, 1);
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
}

TEST_F(CfgCenterTest, KeysThatOthersRemovedStayRemoved) {
    WriteFile("Key=1\nGone=1\n");
    Open();
    WriteFile("Key=1\n");
    App().SetInt(u"Key"_s, 2);
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(), "[General]\nKey=2\n");
    EXPECT_EQ(App().GetInt(u"Gone"_s, -1), -1);
}

TEST_F(CfgCenterTest, EventLoopSavesAgainWhatIsSetAfterItSaved) {
    Open();
    for (int i = 1; i <= 3; ++i) {
        App().SetInt(u"Key"_s, i);
        QCoreApplication::processEvents();
        EXPECT_EQ(ReadFile(), "[General]\nKey=" + QByteArray::number(i) + "\n");
    }
}

TEST_F(CfgCenterTest, FileIsLockedUnderItsOwnNameWhateverLinkLedToIt) {
    WriteFile("Key=1\n", u"elsewhere"_s);
    ASSERT_TRUE(QFile::link(u"elsewhere"_s, Path()));
    Open();
    {
        QLockFile lock(Path(u"elsewhere.lock"_s));
        ASSERT_TRUE(lock.lock());
        App().SetInt(u"Key"_s, 2);
        App().CommitKey(u"Key"_s);
        EXPECT_EQ(ReadFile(u"elsewhere"_s), "Key=1\n") << "another process writes to it";
    }
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(u"elsewhere"_s), "[General]\nKey=2\n");
}

TEST_F(CfgCenterTest, LinkToAFileStaysALinkAndTheFileKeepsItsPermissions) {
    WriteFile("Key=1\n", u"elsewhere"_s);
    ASSERT_EQ(chmod(QFile::encodeName(Path(u"elsewhere"_s)).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(u"elsewhere"_s, Path()));
    Open();
    App().SetInt(u"Key"_s, 2);
    App().CommitKey(u"Key"_s);
    EXPECT_TRUE(QFileInfo(Path()).isSymLink());
    EXPECT_EQ(ReadFile(u"elsewhere"_s), "[General]\nKey=2\n");
    struct stat status {};
    ASSERT_EQ(stat(QFile::encodeName(Path(u"elsewhere"_s)).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

// ---- Writing back
// -------------------------------------------------------------------------------------------

TEST_F(CfgCenterTest, WritingBackChangesOnlyWhatThisProcessChanged) {
    WriteFile("Same=1\nMine=1\nTheirs=1\nBoth=1\nBothAlike=1\n");
    Open();
    const QStringList keys = {u"Same"_s, u"Mine"_s, u"Theirs"_s, u"Both"_s, u"BothAlike"_s, u"Absent"_s};
    for (const QString& key : keys) {
        EXPECT_EQ(App().GetInt(key, 1), 1);
    }
    WriteFile("Same=1\nMine=1\nTheirs=2\nBoth=2\nBothAlike=3\nAbsent=2\nNew=2\n");
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        for (const QString& key : {u"Same"_s, u"Theirs"_s, u"Absent"_s}) {
            App().SetInt(key, 1);
        }
        for (const QString& key : {u"Mine"_s, u"Both"_s, u"BothAlike"_s}) {
            App().SetInt(key, 3);
        }
    }
    EXPECT_EQ(ReadFile(), "[General]\nAbsent=2\nBoth=3\nBothAlike=3\nMine=3\nNew=2\nSame=1\nTheirs=2\n");
    EXPECT_EQ(App().GetInt(u"Theirs"_s, 0), 2);
    EXPECT_EQ(App().GetInt(u"Mine"_s, 0), 3);
}

TEST_F(CfgCenterTest, WritingBackGoesByWhatThisProcessReadAndNotByWhatTheStoreHasReadSince) {
    WriteFile("Key=1\n");
    Open();
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 1);
    WriteFile("Key=2\n");
    App().SetInt(u"Other"_s, 1);
    App().CommitKey(u"Other"_s); // reads the file again
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        App().SetInt(u"Key"_s, 1);
    }
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 2);
    EXPECT_EQ(ReadFile(), "[General]\nKey=2\nOther=1\n");
}

TEST_F(CfgCenterTest, WhatThisProcessSetBeforeIsNotChangedByWritingItBack) {
    Open();
    App().SetString(u"Key"_s, u"a"_s);
    App().CommitKey(u"Key"_s);
    WriteFile("Key=b\n");
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        App().SetString(u"Key"_s, u"a"_s);
    }
    EXPECT_EQ(App().GetString(u"Key"_s, {}), u"b"_s);
    App().SetString(u"Key"_s, u"a"_s); // while nothing is written back a set is a set
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(), "[General]\nKey=a\n");
}

TEST_F(CfgCenterTest, WritingBackWritesKeysThatAreNotInTheFile) {
    WriteFile("Gone=1\n");
    Open();
    EXPECT_EQ(App().GetInt(u"Gone"_s, 0), 1);
    EXPECT_EQ(App().GetInt(u"Never"_s, 5), 5);
    WriteFile("");
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        App().SetInt(u"Gone"_s, 1);
        App().SetInt(u"Never"_s, 5);
        App().SetInt(u"Unasked"_s, 7);
    }
    EXPECT_EQ(ReadFile(), "[General]\nGone=1\nNever=5\nUnasked=7\n");
}

TEST_F(CfgCenterTest, WritingBackTakesAKeyThatNobodyAskedForAsItStoodInTheFile) {
    WriteFile("Key=1\n");
    Open();
    WriteFile("Key=2\n");
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        App().SetInt(u"Key"_s, 1);
    }
    EXPECT_EQ(ReadFile(), "Key=2\n");
}

TEST_F(CfgCenterTest, LastOfSeveralTextsOfAKeyIsWrittenBack) {
    WriteFile("Key=1\n");
    Open();
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        App().SetInt(u"Key"_s, 2);
        App().SetInt(u"Key"_s, 3);
    }
    EXPECT_EQ(ReadFile(), "[General]\nKey=3\n");
}

TEST_F(CfgCenterTest, AnotherSpellingIsNoChangeWhenWritingBack) {
    WriteFile("Flag=TRUE\nNumber=007\nText=48.10\nMine=48.10\n");
    Open();
    EXPECT_TRUE(App().GetBool(u"Flag"_s, false));
    EXPECT_EQ(App().GetInt(u"Number"_s, 0), 7);
    EXPECT_EQ(App().GetString(u"Text"_s, {}), u"48.10"_s);
    EXPECT_EQ(App().GetString(u"Mine"_s, {}), u"48.10"_s);
    WriteFile("Flag=False\nNumber=8\nText=49\nMine=48.10\n");
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        App().SetBool(u"Flag"_s, true);
        App().SetInt(u"Number"_s, 7);
        App().SetString(u"Text"_s, u"48.1"_s);
        App().SetString(u"Mine"_s, u"48.1"_s);
    }
    EXPECT_EQ(ReadFile(), "[General]\nFlag=False\nMine=48.1\nNumber=8\nText=49\n");
}

TEST_F(CfgCenterTest, FileIsLockedWhileItIsWrittenBackAndSavedAtTheEnd) {
    WriteFile("Key=1\n");
    Open();
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        QLockFile lock(Path() + u".lock"_s);
        EXPECT_FALSE(lock.tryLock(0));
        {
            const CfgWriteBack inner = App().BeginWriteBack();
            App().SetInt(u"Key"_s, 2);
            App().CommitKey(u"Key"_s);
        }
        CfgPtr(App().GetSubCfg(u"Sub"_s)).reset();
        QCoreApplication::processEvents();
        EXPECT_EQ(App().GetInt(u"Key"_s, 0), 2);
        EXPECT_EQ(ReadFile(), "Key=1\n");
        EXPECT_FALSE(lock.tryLock(0));
    }
    EXPECT_EQ(ReadFile(), "[General]\nKey=2\n");
    EXPECT_EQ(Files(), QStringList(u"Application.ini"_s));
}

TEST_F(CfgCenterTest, WhatWasWrittenBackWhileTheFileWasLockedIsStillMergedWhenItIsSaved) {
    WriteFile("Same=1\nMine=1\n");
    Open();
    EXPECT_EQ(App().GetInt(u"Same"_s, 0) + App().GetInt(u"Mine"_s, 0), 2);
    {
        QLockFile lock(Path() + u".lock"_s);
        ASSERT_TRUE(lock.tryLock(0));
        const CfgWriteBack writeBack = App().BeginWriteBack();
        App().SetInt(u"Same"_s, 1);
        App().SetInt(u"Mine"_s, 3);
        WriteFile("Same=2\nMine=2\n");
    }
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "[General]\nMine=3\nSame=2\n");
}

TEST_F(CfgCenterTest, WritingBackLeavesAFileThatLivesInMemoryAsItIs) {
    App().SetInt(u"Key"_s, 1);
    { const CfgWriteBack writeBack = App().BeginWriteBack(); }
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 1);
}

TEST_F(CfgCenterTest, CloseWhileWritingBackLeavesTheFileToTheEndOfThat) {
    Open();
    {
        const CfgWriteBack writeBack = App().BeginWriteBack();
        App().SetInt(u"Key"_s, 1);
        EXPECT_FALSE(CfgCenter::Close());
        EXPECT_FALSE(QFile::exists(Path()));
    }
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
}

// ---- Locks
// ---------------------------------------------------------------------------------------------------

// No call waits longer than a second; the rest is for a machine that does something else meanwhile.
constexpr qint64 LONGEST_WAIT_MS = 3000;

TEST_F(CfgCenterTest, CommitWaitsForALockedFileOnceAndNotForLong) {
    Open();
    QLockFile lock(Path() + u".lock"_s);
    ASSERT_TRUE(lock.tryLock(0));
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i) {
        App().SetInt(u"Key%1"_s.arg(i), i);
        App().CommitKey({});
    }
    EXPECT_LT(timer.elapsed(), LONGEST_WAIT_MS);
    EXPECT_EQ(Files(), QStringList(u"Application.ini.lock"_s));
    EXPECT_EQ(App().GetInt(u"Key99"_s, 0), 99);
    lock.unlock();
    App().CommitKey({});
    EXPECT_EQ(ReadFile().count('\n'), 101);
    EXPECT_EQ(m_trace.lines, QStringList()) << "nothing is lost";
}

TEST_F(CfgCenterTest, EventLoopSavesWhatWasCommittedWhileTheFileWasLocked) {
    Open();
    QLockFile lock(Path() + u".lock"_s);
    ASSERT_TRUE(lock.tryLock(0));
    App().SetInt(u"Key"_s, 1);
    App().CommitKey({});
    QCoreApplication::processEvents();
    lock.unlock();
    EXPECT_TRUE(SpinUntil([this] { return QFile::exists(Path()); }));
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
}

TEST_F(CfgCenterTest, CloseWaitsForALockedFile) {
    Open();
    QLockFile lock(Path() + u".lock"_s);
    ASSERT_TRUE(lock.tryLock(0));
    App().SetInt(u"Key"_s, 1);
    App().CommitKey({});
    std::thread other([&lock] {
        // Longer than the second for which a commit waits: this is what Close has more of.
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        lock.unlock();
    });
    EXPECT_TRUE(CfgCenter::Close());
    other.join();
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
    EXPECT_EQ(m_trace.lines, QStringList());
}

TEST_F(CfgCenterTest, CloseGivesUpAFileThatStaysLockedAndNamesTheKeysInOneLine) {
    Open();
    QLockFile lock(Path() + u".lock"_s);
    ASSERT_TRUE(lock.tryLock(0));
    App().SetInt(u"Key"_s, 1);
    App().SetInt(u"A/Other"_s, 1);
    App().CommitKey({});
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(CfgCenter::Close());
    EXPECT_GE(timer.elapsed(), 9000);
    EXPECT_LT(timer.elapsed(), 30000);
    EXPECT_EQ(m_trace.lines.size(), 1);
    EXPECT_TRUE(CfgCenter::GetLastError().startsWith(u"The settings file "_s + Path() +
                                                     u" could not be saved: it is locked by cfgcentertest "
                                                     u"(process "_s +
                                                     QString::number(getpid()) + u" on "_s))
        << CfgCenter::GetLastError().toStdString();
    EXPECT_TRUE(CfgCenter::GetLastError().endsWith(u"the new values of A/Other, Key are lost."_s));
}

TEST_F(CfgCenterTest, LockThatACrashLeftBehindHoldsUpNoCommit) {
    Open();
    QLockFile lock(Path(u"example.lock"_s));
    ASSERT_TRUE(lock.tryLock(0));
    const QByteArray ofThisProcess = ReadFile(u"example.lock"_s);
    lock.unlock();
    // One into which its maker did not get to write; one of a process that is gone; one whose number another
    // process has by now.
    const QByteArray rest = ofThisProcess.sliced(ofThisProcess.indexOf('\n'));
    const QByteArray another = ofThisProcess;
    int number = 0;
    for (const QByteArray& content : {QByteArray(), "4194305" + rest, another}) {
        SCOPED_TRACE(content.toStdString());
        WriteFile(content, u"Application.ini.lock"_s);
        App().SetInt(u"Key"_s, ++number);
        QElapsedTimer timer;
        timer.start();
        App().CommitKey({});
        EXPECT_LT(timer.elapsed(), LONGEST_WAIT_MS);
        EXPECT_EQ(ReadFile(), "[General]\nKey=" + QByteArray::number(number) + "\n");
        EXPECT_EQ(Files(), QStringList(u"Application.ini"_s));
    }
}

TEST_F(CfgCenterTest, LockOfAProcessThatLivesIsNotTakenAwayHoweverOldItIs) {
    Open();
    QLockFile lock(Path() + u".lock"_s);
    ASSERT_TRUE(lock.tryLock(0));
    QFile lockFile(Path() + u".lock"_s);
    ASSERT_TRUE(lockFile.open(QFile::ReadWrite));
    ASSERT_TRUE(lockFile.setFileTime(QDateTime::currentDateTime().addSecs(-20), QFile::FileModificationTime));
    App().SetInt(u"Key"_s, 1);
    App().CommitKey({});
    EXPECT_EQ(Files(), QStringList(u"Application.ini.lock"_s));
}

TEST_F(CfgCenterTest, LockThatARemoverLeftBehindHoldsUpNoCommitEither) {
    Open();
    WriteFile("", u"Application.ini.lock"_s);
    WriteFile("", u"Application.ini.lock.rmlock"_s);
    App().SetInt(u"Key"_s, 1);
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
    EXPECT_EQ(Files(), QStringList(u"Application.ini"_s));
}

TEST_F(CfgCenterTest, FileThatAKilledProcessWasWritingIsGoneWithTheNextSaveAndNoOtherIs) {
    WriteFile("half of", u"Application.ini.saving"_s);
    WriteFile("mine", u"Application.ini.backup"_s);
    Open();
    App().SetInt(u"Key"_s, 1);
    App().CommitKey({});
    EXPECT_EQ(Files(), (QStringList{u"Application.ini"_s, u"Application.ini.backup"_s}));
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
        {"Bad=M\xFCnchen", u"is not UTF-8 text"_s},
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
        m_trace.lines.clear();
        Open();
        const CfgPtr pCfg(CfgCenter::CreateCfg(name.chopped(4), ICfg::View::Outputs, {}));
        const QString number = QString::number(2 + row.line.count('\n'));
        const QString expected = u"The settings file "_s + Path(name) + u" is damaged: line "_s + number +
                                 u' ' + row.reason + u"; it is kept as "_s + Path(name) +
                                 u".damaged-1. The other lines are used."_s;
        EXPECT_EQ(CfgCenter::GetLastError(), expected);
        ASSERT_EQ(m_trace.lines.size(), 1);
        EXPECT_TRUE(m_trace.lines[0].endsWith(expected));
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
    EXPECT_TRUE(problem.contains(u"line 3 has text after the section name;"));
    EXPECT_TRUE(problem.contains(u"line 5 has no usable section name;"));
    EXPECT_TRUE(problem.contains(u"line 6 is below a section name that could not be read;"));
    EXPECT_TRUE(problem.contains(u"line 7 is not UTF-8 text;"));
    EXPECT_TRUE(problem.contains(u"line 8 is below a section name that could not be read;"));
}

TEST_F(CfgCenterTest, KeysBelowASectionNameThatCannotBeReadDoNotFallToTheSectionBefore) {
    for (const QByteArray header : {"[Bad\xFF]", "[]", " [a//b]", "[Bad%UD800]"}) {
        SCOPED_TRACE(header.toStdString());
        CfgCenter::Close();
        WriteFile("[Good]\nKey=5\n" + header + "\nKey=4\nOther=4\n");
        Open();
        EXPECT_EQ(App().GetInt(u"Good/Key"_s, 0), 5);
        EXPECT_EQ(App().GetInt(u"Good/Other"_s, 0), 0);
        EXPECT_EQ(App().GetInt(u"Other"_s, 0), 0);
    }
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
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"more lines;"));
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
    Open();
    EXPECT_EQ(Files().size(), 3);
    App().SetInt(u"Key"_s, 1);
    App().CommitKey({});
    App().SetInt(u"Key"_s, 2);
    App().CommitKey({});
    EXPECT_EQ(Files().size(), 3) << "what is not damaged is not kept";
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
    EXPECT_EQ(ReadFile(), "[General]\nGood=1\nNew=2\n");
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
        m_trace.lines.clear();
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
                      row.key + u"\", which is not "_s + (row.isNumber ? u"an integer"_s : u"a boolean"_s) +
                      u"; the default is used."_s);
        EXPECT_EQ(m_trace.lines.size(), 1);
        EXPECT_EQ(pCfg->GetString(row.key, u"absent"_s), row.text);
    }
    EXPECT_EQ(Files().size(), 1);
}

TEST_F(CfgCenterTest, ValueOfTheWrongTypeIsReportedAgainWhenItIsAnotherOne) {
    Open();
    for (const QString& text : {u"a"_s, u"b"_s, u"a"_s}) {
        m_trace.lines.clear();
        App().SetString(u"Key"_s, text);
        EXPECT_EQ(App().GetInt(u"Key"_s, 1), 1);
        EXPECT_EQ(App().GetInt(u"Key"_s, 1), 1);
        EXPECT_EQ(m_trace.lines.size(), 1);
    }
}

TEST_F(CfgCenterTest, FileWithAValueOfTheWrongTypeIsKeptBesideBeforeItIsOverwritten) {
    const QByteArray typed = "Number=12OO\nOther=x\n";
    WriteFile(typed);
    Open();
    EXPECT_EQ(App().GetInt(u"Number"_s, 5), 5);
    EXPECT_EQ(Files().size(), 1);
    App().SetInt(u"Number"_s, 5);
    QCoreApplication::processEvents();
    EXPECT_EQ(ReadFile(), "[General]\nNumber=5\nOther=x\n");
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-1"_s), typed);
    App().SetInt(u"Number"_s, 6);
    App().CommitKey(u"Number"_s);
    EXPECT_EQ(Files().size(), 2);
}

// ---- Writes that fail
// ---------------------------------------------------------------------------------------

TEST_F(CfgCenterTest, ReadOnlyPlaceIsReportedOnceAndTheNextCommitTriesAgain) {
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
                u" could not be saved: the file or its folder cannot be written (read-only, or the disk "
                u"is full). The old file is unchanged; the new values of Key stay in memory, and the next "
                u"commit tries again."_s);
        App().SetInt(u"Other"_s, 3);
        App().CommitKey(u"Other"_s);
        QCoreApplication::processEvents();
        EXPECT_EQ(m_trace.lines.size(), 1) << "one line, not one for each try";
        EXPECT_EQ(App().GetInt(u"Key"_s, 0), 2);
    }
    EXPECT_EQ(ReadFile(), "Key=1\n");
    chmod(QFile::encodeName(m_directory.path()).constData(), 0755);
    chmod(QFile::encodeName(Path()).constData(), 0644);
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(m_trace.lines.size(), 1);
    EXPECT_EQ(ReadFile(), "[General]\nKey=2\nOther=3\n");
}

TEST_F(CfgCenterTest, NameOfTheNewFileThatIsTakenIsReportedAndTheOldFileStays) {
    WriteFile("Key=1\n");
    const QString inTheWay = Path(u"Application.ini.saving"_s);
    ASSERT_TRUE(QDir().mkdir(inTheWay));
    Open();
    App().SetInt(u"Key"_s, 2);
    App().CommitKey(u"Key"_s);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(
        u"could not be saved: the file or its folder cannot be written (read-only, or the disk is full)"));
    EXPECT_EQ(ReadFile(), "Key=1\n");
    ASSERT_TRUE(QDir().rmdir(inTheWay));
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(), "[General]\nKey=2\n");
}

TEST_F(CfgCenterTest, FailedSaveFromTheEventLoopIsReported) {
    WriteFile("Key=1\n");
    Open();
    const FullDisk disk(3);
    App().SetInt(u"Key"_s, 2);
    EXPECT_TRUE(SpinUntil([this] { return !m_trace.lines.isEmpty(); }));
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"could not be saved"));
    EXPECT_EQ(ReadFile(), "Key=1\n");
}

TEST_F(CfgCenterTest, FullDiskLeavesTheOldFileWholeAndTheNextCommitTriesAgain) {
    for (const qsizetype size : {1000, 100000}) {
        SCOPED_TRACE(size);
        m_trace.lines.clear();
        Open();
        App().SetString(u"Key"_s, QString(size, u'a'));
        App().CommitKey(u"Key"_s);
        const QByteArray old = ReadFile();
        EXPECT_EQ(old, "[General]\nKey=" + QByteArray(size, 'a') + "\n");
        App().SetString(u"Key"_s, QString(size + 10, u'b'));
        {
            const FullDisk disk(size);
            App().CommitKey(u"Key"_s);
        }
        EXPECT_EQ(m_trace.lines.size(), 1);
        EXPECT_TRUE(
            CfgCenter::GetLastError().contains(u"could not be saved: the disk did not take all of it"));
        EXPECT_EQ(ReadFile(), old);
        EXPECT_EQ(Files(), QStringList(u"Application.ini"_s));
        EXPECT_EQ(App().GetString(u"Key"_s, {}), QString(size + 10, u'b'));
        App().CommitKey(u"Key"_s);
        EXPECT_EQ(m_trace.lines.size(), 1);
        EXPECT_EQ(ReadFile(), "[General]\nKey=" + QByteArray(size + 10, 'b') + "\n");
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
    EXPECT_EQ(ReadFile(u"Further.ini"_s), "[General]\nKey=7\n");
}

TEST_F(CfgCenterTest, FailureIsReportedAgainWhenItHasAnotherReasonOrCameBack) {
    WriteFile("Good=1\nno assignment\n" + QByteArray(10000, 'x'));
    {
        const FullDisk disk(1000);
        Open();
        m_trace.lines.clear();
        App().SetInt(u"New"_s, 2);
        App().CommitKey(u"New"_s);
        App().CommitKey(u"New"_s);
        EXPECT_EQ(m_trace.lines.size(), 1);
        EXPECT_TRUE(m_trace.lines.last().contains(u"could not be saved: a copy of it cannot be kept"));
        WriteFile("Good=2\n");
    }
    App().CommitKey(u"New"_s);
    EXPECT_EQ(m_trace.lines.size(), 1);
    for (int round = 1; round <= 2; ++round) {
        {
            const FullDisk disk(100);
            App().SetString(u"New"_s, QString(1000 * round, u'x'));
            App().CommitKey(u"New"_s);
            App().CommitKey(u"New"_s);
        }
        EXPECT_EQ(m_trace.lines.size(), 1 + round);
        EXPECT_TRUE(m_trace.lines.last().contains(u"could not be saved: the disk did not take all of it"));
        App().CommitKey(u"New"_s);
    }
}

TEST_F(CfgCenterTest, ReportOfAFailureNamesABoundedNumberOfKeys) {
    Open();
    for (int i = 10; i < 80; ++i) {
        App().SetInt(u"Key%1"_s.arg(i), i);
    }
    {
        const FullDisk disk(3);
        App().CommitKey({});
    }
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"the new values of Key10, Key11, "));
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u", Key19 and 60 more stay in memory"));
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

TEST_F(CfgCenterTest, PipeInThePlaceOfTheFileIsNotWaitedForNorWrittenTo) {
    ASSERT_EQ(mkfifo(QFile::encodeName(Path()).constData(), 0600), 0);
    Open();
    EXPECT_TRUE(CfgCenter::GetLastError().contains(Path() + u" cannot be read"_s));
    App().SetInt(u"Key"_s, 1);
    App().CommitKey(u"Key"_s);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"could not be saved: it cannot be read"_s));
    QFile::remove(Path());
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
}

TEST_F(CfgCenterTest, LargestFileIsReadAndALargerOneIsRefusedAndStays) {
    const auto write = [this](qint64 size) {
        WriteFile("[General]\nKey=" + QByteArray(size - 14, 'x'));
        ASSERT_EQ(QFileInfo(Path()).size(), size);
    };
    write(CfgCenter::MAX_FILE_SIZE);
    Open();
    EXPECT_EQ(App().GetString(u"Key"_s, {}).size(), CfgCenter::MAX_FILE_SIZE - 14);
    EXPECT_EQ(m_trace.lines, QStringList());
    write(CfgCenter::MAX_FILE_SIZE + 1);
    Open();
    EXPECT_TRUE(CfgCenter::GetLastError().contains(Path() + u" cannot be read (it is larger than 8 MiB)"_s));
    App().SetInt(u"Other"_s, 1);
    App().CommitKey({});
    EXPECT_TRUE(CfgCenter::GetLastError().contains(
        u"could not be saved: it cannot be read (it is larger than 8 MiB)"));
    EXPECT_EQ(QFileInfo(Path()).size(), CfgCenter::MAX_FILE_SIZE + 1);
}

TEST_F(CfgCenterTest, FileThatWouldBecomeTooLargeIsNotSaved) {
    WriteFile("[General]\nKey=1\n");
    Open();
    App().SetString(u"Other"_s, QString(CfgCenter::MAX_FILE_SIZE, u'x'));
    App().CommitKey({});
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"could not be saved: it would be larger than 8 MiB"));
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
    App().SetString(u"Other"_s, u"short"_s);
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\nOther=short\n");
}

TEST_F(CfgCenterTest, PipeInThePlaceOfAKeptCopyIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(QFile::encodeName(Path(u"Application.ini.damaged-1"_s)).constData(), 0600), 0);
    WriteFile("no assignment\n");
    Open();
    EXPECT_EQ(ReadFile(u"Application.ini.damaged-2"_s), "no assignment\n");
}

// ---- Programs that do not know the lock
// ---------------------------------------------------------------------------

TEST_F(CfgCenterTest, FileThatAnEditorIsWritingIsWaitedFor) {
    WriteFile("[General]\nKey=1\nTheirs=1\n");
    Open();
    EXPECT_EQ(App().GetInt(u"Theirs"_s, 0), 1);
    QFile editor(Path());
    ASSERT_TRUE(editor.open(QFile::WriteOnly | QFile::Truncate | QFile::Unbuffered));
    std::thread saving([&editor, saver = gettid()] {
        for (const QByteArray& part :
             {QByteArray("[General]\nKe"), QByteArray("y=1\nThei"), QByteArray("rs=2\n")}) {
            EXPECT_TRUE(AwaitSleep(saver));
            editor.write(part);
        }
        editor.close();
    });
    App().SetInt(u"Mine"_s, 1);
    App().CommitKey({});
    saving.join();
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\nMine=1\nTheirs=2\n");
    EXPECT_EQ(Files(), QStringList(u"Application.ini"_s)) << "half a file is not a damaged one";
}

TEST_F(CfgCenterTest, FileThatSomebodyGoesOnWritingIsLeftAloneAndSavedLater) {
    WriteFile("[General]\nKey=1\n");
    Open();
    QFile other(Path());
    ASSERT_TRUE(other.open(QFile::WriteOnly | QFile::Truncate | QFile::Unbuffered));
    App().SetInt(u"Mine"_s, 1);
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "");
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 1) << "what was read stays in force";
    EXPECT_EQ(m_trace.lines, QStringList()) << "it is too early to complain";
    QElapsedTimer timer;
    timer.start();
    App().CommitKey({});
    EXPECT_LT(timer.elapsed(), 500) << "it is not waited for again";
    other.write("[General]\nKey=2\n");
    other.close();
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "[General]\nKey=2\nMine=1\n");
}

TEST_F(CfgCenterTest, KeysAreNamedThatAreLostBecauseSomebodyGoesOnWritingTheFile) {
    Open();
    App().SetInt(u"Key"_s, 1);
    App().CommitKey({});
    QFile other(Path());
    ASSERT_TRUE(other.open(QFile::ReadWrite));
    App().SetInt(u"Mine"_s, 1);
    EXPECT_FALSE(CfgCenter::Close());
    EXPECT_TRUE(
        CfgCenter::GetLastError().contains(u"could not be saved: other programs go on writing it. The old "
                                           u"file is unchanged; the new values of Mine are lost"));
}

TEST_F(CfgCenterTest, FileThatIsOpenForWritingAtTheStartIsReadAsItIs) {
    WriteFile("[General]\nKey=1\n");
    QFile other(Path());
    ASSERT_TRUE(other.open(QFile::ReadWrite));
    Open();
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 1);
}

TEST_F(CfgCenterTest, DefaultsOfAStartWhileAnEditorHasEmptiedTheFileDoNotReplaceWhatTheEditorSaves) {
    WriteFile("");
    QFile editor(Path());
    ASSERT_TRUE(editor.open(QFile::ReadWrite));
    Open();
    EXPECT_EQ(ReadOrCreateInt(App(), u"Key"_s, 600), 600);
    editor.write("[General]\nKey=555\n");
    editor.close();
    App().CommitKey(u"Key"_s);
    EXPECT_EQ(ReadFile(), "[General]\nKey=555\n");
    EXPECT_EQ(App().GetInt(u"Key"_s, 0), 555);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"its values are kept for Key."));
}

TEST_F(CfgCenterTest, FileThatAnEditorHasMovedAwayToSaveANewOneIsWaitedFor) {
    WriteFile("[General]\nKey=1\nTheirs=1\n");
    Open();
    ASSERT_TRUE(QFile::rename(Path(), Path(u"Application.ini~"_s)));
    std::thread saving([this, saver = gettid()] {
        EXPECT_TRUE(AwaitSleep(saver));
        WriteFile("[General]\nKey=1\nTheirs=2\n", u"new"_s);
        ASSERT_TRUE(QFile::rename(Path(u"new"_s), Path()));
    });
    App().SetInt(u"Mine"_s, 1);
    App().CommitKey({});
    saving.join();
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\nMine=1\nTheirs=2\n");
}

TEST_F(CfgCenterTest, NothingIsLostOfAFileThatSomebodyReplacesAllTheTime) {
    WriteFile("[General]\nTheirs=0\n");
    Open();
    std::atomic<bool> isOver = false;
    int round = 0;
    std::thread other([&] {
        while (!isOver) {
            WriteFile("[General]\nTheirs=" + QByteArray::number(++round) + '\n', u"new"_s);
            std::rename(QFile::encodeName(Path(u"new"_s)).constData(), QFile::encodeName(Path()).constData());
        }
    });
    for (int i = 1; i <= 3; ++i) {
        App().SetInt(u"Mine"_s, i);
        App().CommitKey({});
    }
    isOver = true;
    other.join();
    App().SetInt(u"Mine"_s, 4);
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "[General]\nMine=4\nTheirs=" + QByteArray::number(round) + '\n');
}

TEST_F(CfgCenterTest, FileOfSomebodyElseInTheGroupStaysTheGroups) {
    WriteFile("[General]\nKey=1\n");
    for (const auto& [path, mode] : {std::pair{m_directory.path(), 0777U}, std::pair{Path(), 0664U}}) {
        ASSERT_EQ(chmod(QFile::encodeName(path).constData(), mode), 0);
    }
    const WithoutRootRights noRights;
    Open();
    App().SetInt(u"Key"_s, 2);
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "[General]\nKey=2\n");
    struct stat status {};
    ASSERT_EQ(stat(QFile::encodeName(Path()).constData(), &status), 0);
    EXPECT_EQ(status.st_gid, getegid());
    EXPECT_EQ(status.st_mode & 07777, 0664U);
}

TEST_F(CfgCenterTest, FileThatAnEditorPutsIntoThePlaceOfALinkIsTheOneThatIsSaved) {
    WriteFile("[General]\nKey=1\n", u"elsewhere"_s);
    ASSERT_TRUE(QFile::link(Path(u"elsewhere"_s), Path()));
    Open();
    App().SetInt(u"Mine"_s, 1);
    App().CommitKey({});
    EXPECT_EQ(ReadFile(u"elsewhere"_s), "[General]\nKey=1\nMine=1\n");
    EXPECT_TRUE(QFileInfo(Path()).isSymLink());

    ASSERT_TRUE(QFile::remove(Path()));
    WriteFile("[General]\nKey=2\n");
    App().SetInt(u"Mine"_s, 2);
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "[General]\nKey=2\nMine=2\n");
    EXPECT_EQ(ReadFile(u"elsewhere"_s), "[General]\nKey=1\nMine=1\n");
}

TEST_F(CfgCenterTest, FileThatWasRemovedComesIntoBeingAgainWithWhatIsSet) {
    WriteFile("[General]\nKey=1\n");
    Open();
    ASSERT_TRUE(QFile::remove(Path()));
    App().SetInt(u"Mine"_s, 1);
    App().CommitKey({});
    EXPECT_EQ(ReadFile(), "[General]\nMine=1\n");
}

TEST_F(CfgCenterTest, FileStaysItsOwnersWithItsPermissions) {
    WriteFile("[General]\nKey=1\n");
    const uid_t owner = geteuid() == 0 ? NOBODY : geteuid();
    const QByteArray path = QFile::encodeName(Path());
    ASSERT_EQ(chown(path.constData(), owner, static_cast<gid_t>(-1)), 0);
    ASSERT_EQ(chmod(path.constData(), 0640), 0);
    Open();
    App().SetInt(u"Key"_s, 2);
    App().CommitKey({});
    ASSERT_EQ(ReadFile(), "[General]\nKey=2\n");
    struct stat status {};
    ASSERT_EQ(stat(path.constData(), &status), 0);
    EXPECT_EQ(status.st_uid, owner);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST_F(CfgCenterTest, SectionsAreListedWhateverCharactersAreBesideTheSlash) {
    Open();
    for (const QString& key :
         {u"A"_s, u"A!/K"_s, u"A-b"_s, u"A/K"_s, u"A/S/K"_s, u"A/S/L"_s, u"A/S0"_s, u"A0/K"_s, u"B"_s}) {
        App().SetInt(key, 1);
    }
    const auto expectLists = [] {
        EXPECT_EQ(App().GetKeys(), (QStringList{u"A"_s, u"A-b"_s, u"B"_s}));
        EXPECT_EQ(App().GetSubCfgNames(), (QStringList{u"A"_s, u"A!"_s, u"A0"_s}));
        const CfgPtr section(App().GetSubCfg(u"A"_s));
        EXPECT_EQ(section->GetKeys(), (QStringList{u"K"_s, u"S0"_s}));
        EXPECT_EQ(section->GetSubCfgNames(), QStringList(u"S"_s));
    };
    expectLists();
    App().CommitKey({});
    expectLists();
}

TEST_F(CfgCenterTest, EmptyLockThatACrashLeftBehindDoesNotHoldUpTheNextRun) {
    WriteFile("", u"Application.ini.lock"_s);
    QElapsedTimer timer;
    timer.start();
    Open();
    App().SetInt(u"Key"_s, 1);
    App().CommitKey(u"Key"_s);
    EXPECT_LT(timer.elapsed(), 15000);
    EXPECT_EQ(ReadFile(), "[General]\nKey=1\n");
    EXPECT_EQ(Files(), QStringList(u"Application.ini"_s));
}

} // namespace
