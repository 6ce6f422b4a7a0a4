#include "zanserver/outputvalues.h"

#include "connections/outputfile.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "support/storedsettings.h"
#include "valueframework/tree.h"
#include "zancommon/zanpath.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using namespace StdDeviceDefinition;

namespace {

constexpr int SOON_MS = 1;

template <class T>
T& ServerValue(const ValueDescriptor& descriptor) {
    return *Tree::Instance()->Find<T>(ZANPath::Server(descriptor));
}

QString Text(const ValueDescriptor& descriptor) {
    return Tree::Instance()->GetValue(ZANPath::Server(descriptor))->GetStringValue();
}

/// Sets a value as a display does. False when the value itself refuses it.
bool Set(const ValueDescriptor& descriptor, const QString& text, IObserver* originator = nullptr) {
    return Tree::Instance()->GetValue(ZANPath::Server(descriptor))->SetStringValue(text, originator);
}

void NewBearing(qint16 quality = 90) {
    BearingResult bearing;
    bearing.SetQuality(quality);
    ServerValue<ValueBearing>(g_vdAzimuth).SetValue(bearing, nullptr);
}

class OutputValuesTest : public testing::Test {
protected:
    OutputValuesTest() {
        Tree::Instance()->Clear();
        CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
        ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
        cfg.SetString(u"FileOutput_Address"_s, Path(u"out"_s));
        cfg.SetString(u"RS232Output_Address"_s, m_line.path);
    }

    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    void Make(bool isFileOn, const QString& ofThisRun = {}, const QString& recording = {}) {
        CfgCenter::GetAppCfg(ICfg::View::Outputs).SetBool(u"FileOutput_Enabled"_s, isFileOn);
        m_output.emplace(u"DF data output"_s, ofThisRun);
        m_values.emplace(*m_output, StationFiles{m_settings.GetDirectory(), u"replay"_s, recording}, SOON_MS);
    }
    [[nodiscard]] QByteArray Contents(const QString& name = u"out"_s) const {
        QFile file(Path(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    void Write(const QString& name, const QByteArray& content) const {
        QFile file(Path(name));
        ASSERT_TRUE(file.open(QFile::WriteOnly) && file.write(content) == content.size());
    }
    /// A change of the file's name is refused, and everything stays as it was.
    void ExpectRefused(const QString& name, const QString& reason) const {
        const QString present = Text(g_vdFileName);
        EXPECT_TRUE(Set(g_vdFileName, name));
        EXPECT_EQ(Text(g_vdFileName), present);
        EXPECT_EQ(Text(g_vdFileRefused), reason);
        EXPECT_EQ(m_output->GetSettings().fileName, present);
    }

    StoredSettings m_settings;
    QTemporaryDir m_directory;
    PseudoTerminal m_line;
    std::optional<DFDataOutput> m_output;
    std::optional<OutputValues> m_values;
};

} // namespace

TEST_F(OutputValuesTest, ShowWhatTheSettingsSay) {
    CfgCenter::GetAppCfg(ICfg::View::Outputs).SetInt(u"Output_Interval"_s, 500);
    Make(true);
    EXPECT_EQ(Text(g_vdFileEnabled), u"1"_s);
    EXPECT_EQ(Text(g_vdFileName), Path(u"out"_s));
    EXPECT_EQ(Text(g_vdFileState), u"Open"_s);
    EXPECT_EQ(Text(g_vdFileContent), u"Full"_s);
    EXPECT_EQ(Text(g_vdFileLastError), QString());
    EXPECT_EQ(ServerValue<ValueTimeStamp>(g_vdFileLastErrorTime).GetState(), TValueState::NotMeasured);
    EXPECT_EQ(Text(g_vdSerEnabled), u"0"_s);
    EXPECT_EQ(Text(g_vdSerAddress), m_line.path);
    EXPECT_EQ(Text(g_vdSerState), u"Off"_s);
    EXPECT_EQ(Text(g_vdSerContent), u"Nothing"_s);
    EXPECT_EQ(Text(g_vdOutInterval), u"500"_s);
}

TEST_F(OutputValuesTest, FileIsSwitchedAndMovedAtOnceAndKept) {
    Make(false);
    EXPECT_TRUE(Set(g_vdFileEnabled, u"true"_s));
    EXPECT_EQ(Text(g_vdFileState), u"Open"_s);
    NewBearing();
    EXPECT_TRUE(Set(g_vdFileName, Path(u"other"_s)));
    NewBearing();
    EXPECT_TRUE(Set(g_vdFileEnabled, u"false"_s));
    NewBearing();
    EXPECT_EQ(Contents().count("$PLG"), 1);
    EXPECT_EQ(Contents(u"other"_s).count("$PLG"), 1);
    EXPECT_EQ(Text(g_vdFileState), u"Off"_s);
    EXPECT_EQ(Text(g_vdFileRefused), QString());
    EXPECT_TRUE(Set(g_vdFileEnabled, u"true"_s));
    m_values.reset();
    m_output.reset();
    const QString settings = m_settings.CloseAndRead();
    EXPECT_TRUE(settings.contains(u"FileOutput_Enabled=true"_s)) << settings.toStdString();
    EXPECT_TRUE(settings.contains(u"FileOutput_Address="_s + Path(u"other"_s))) << settings.toStdString();
}

TEST_F(OutputValuesTest, WhatIsSetIsSavedWhileTheStationGoesOn) {
    Make(false);
    EXPECT_TRUE(Set(g_vdFileName, Path(u"other"_s)));
    EXPECT_TRUE(Set(g_vdOutInterval, u"70"_s));
    EXPECT_TRUE(SpinUntil([this] {
        return m_settings.Read().contains(u"FileOutput_Address="_s + Path(u"other"_s)) &&
               m_settings.Read().contains(u"Output_Interval=70"_s);
    })) << m_settings.Read().toStdString();
}

TEST_F(OutputValuesTest, SerialLineIsSwitchedAndItsAddressChangedAtOnce) {
    Make(false);
    const PseudoTerminal other;
    EXPECT_TRUE(Set(g_vdSerEnabled, u"true"_s));
    EXPECT_EQ(Text(g_vdSerState), u"Open"_s);
    EXPECT_EQ(Text(g_vdSerContent), u"Short"_s);
    EXPECT_TRUE(Set(g_vdSerAddress, other.path + u":4800,n,8,1"_s));
    EXPECT_TRUE(m_line.IsClosed());
    EXPECT_FALSE(other.IsClosed());
    EXPECT_TRUE(Set(g_vdSerEnabled, u"false"_s));
    EXPECT_TRUE(other.IsClosed());
    EXPECT_EQ(CfgCenter::GetAppCfg(ICfg::View::Outputs).GetString(u"RS232Output_Address"_s, {}),
              other.path + u":4800,n,8,1"_s);
}

TEST_F(OutputValuesTest, ChangeThatIsTakenBackInItsTransactionLeavesTheOutputsAsTheyAre) {
    Make(true);
    NewBearing();
    EXPECT_TRUE(Set(g_vdSerAddress, u"nowhere"_s));
    const QString refused = Text(g_vdSerRefused);
    EXPECT_FALSE(refused.isEmpty());
    for (const ValueDescriptor* const each : {&g_vdFileName, &g_vdSerAddress}) {
        auto& address = ServerValue<ValueString>(*each);
        const QString present = address.GetValue();
        const auto transaction = address.CreateTransaction({TChangeCode::Changed}, nullptr);
        address.SetValue(u"other"_s);
        address.SetValue(present);
    }
    EXPECT_EQ(Contents().count("$PLG"), 1) << "the file is not begun again";
    EXPECT_EQ(Text(g_vdSerRefused), refused);
    EXPECT_EQ(Text(g_vdSerAddress), m_line.path);
}

TEST_F(OutputValuesTest, StateOfAValueChangesNothing) {
    Make(true);
    NewBearing();
    EXPECT_TRUE(Set(g_vdSerAddress, u"nowhere"_s));
    const QString refused = Text(g_vdSerRefused);
    for (const ValueDescriptor* const each : {&g_vdFileName, &g_vdSerAddress, &g_vdOutInterval}) {
        Tree::Instance()->GetValue(ZANPath::Server(*each))->SetState(TValueState::NotMeasured, nullptr);
    }
    EXPECT_EQ(Contents().count("$PLG"), 1) << "the file is not begun again";
    EXPECT_EQ(Text(g_vdSerRefused), refused);
}

TEST_F(OutputValuesTest, AddressThatIsNoneIsRefusedWithTheReason) {
    Make(false);
    for (
        const auto& [address, reason] :
        {std::pair{
             u"/etc/passwd"_s,
             u"/etc/passwd is not the address of a serial line: the port is neither \"COM1\" to \"COM256\" nor a path below \"/dev/\""_s},
         {u""_s,
          u"is not the address of a serial line: the port is neither \"COM1\" to \"COM256\" nor a path below \"/dev/\""_s},
         {m_line.path + u":fast"_s,
          m_line.path +
              u":fast is not the address of a serial line: the baud rate is not a positive number"_s},
         {QString(1 << 20, u'x'), u"the address of the serial line is longer than 1000 bytes"_s}}) {
        EXPECT_TRUE(Set(g_vdSerAddress, address));
        EXPECT_EQ(Text(g_vdSerAddress), m_line.path);
        EXPECT_EQ(Text(g_vdSerRefused), reason);
    }
    EXPECT_TRUE(Set(g_vdSerAddress, u"COM1"_s));
    EXPECT_EQ(Text(g_vdSerRefused), QString()) << "until the next change";
}

TEST_F(OutputValuesTest, SerialLineWhoseStoredAddressIsNoneIsNotSwitchedOnAndCanBeSwitchedOff) {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    cfg.SetString(u"RS232Output_Address"_s, u"nonsense"_s);
    cfg.SetBool(u"RS232Output_Enabled"_s, true);
    Make(false);
    EXPECT_EQ(Text(g_vdSerState), u"Failed"_s);
    EXPECT_TRUE(Set(g_vdSerEnabled, u"false"_s));
    EXPECT_EQ(Text(g_vdSerState), u"Off"_s);
    EXPECT_TRUE(Set(g_vdSerEnabled, u"true"_s));
    EXPECT_EQ(Text(g_vdSerEnabled), u"0"_s);
    EXPECT_TRUE(Text(g_vdSerRefused).startsWith(u"nonsense is not the address of a serial line"_s));
}

TEST_F(OutputValuesTest, IntervalTakesEffectAtOnceAndOneThatIsNoneIsRefusedByItsValue) {
    Make(true);
    EXPECT_TRUE(Set(g_vdOutInterval, u"10000"_s));
    NewBearing();
    EXPECT_EQ(m_output->GetCounters().leftToInterval, 1U);
    for (const QString& interval : {u"10001"_s, u"-1"_s, u"x"_s}) {
        EXPECT_FALSE(Set(g_vdOutInterval, interval));
        EXPECT_EQ(m_output->GetSettings().interval, 10000);
    }
    EXPECT_TRUE(Set(g_vdOutInterval, u"0"_s));
    NewBearing();
    EXPECT_EQ(Contents().count("$PLG"), 1);
}

TEST_F(OutputValuesTest, NameThatNoFileHasIsRefused) {
    Make(true);
    const QString noCharacters = u"the output has a name with characters that no file has"_s;
    ExpectRefused({}, u"the output has no name of a file"_s);
    ExpectRefused(Path(u"with"_s) + QChar::Null, noCharacters);
    ExpectRefused(Path(u"half"_s) + QChar(0xD800), noCharacters);
    const QString tooLong = u"the output has a name of more than 4095 bytes"_s;
    ExpectRefused(u'/' + QString(4095, u'x'), tooLong);
    ExpectRefused(u'/' + QString(2048, QChar(0xE4)), tooLong); // of two bytes
    ExpectRefused(QString(1 << 20, u'x'), tooLong);
    NewBearing();
    EXPECT_EQ(Contents().count("$PLG"), 1) << "the output has gone on";
}

TEST_F(OutputValuesTest, FileThatIsTheStationsOwnIsRefused) {
    Make(false);
    const QString settings = m_settings.GetDirectory() + u"/Application.ini"_s;
    ExpectRefused(settings,
                  u"the output %1 would overwrite %1, which belongs to the station"_s.arg(settings));
    const QString log = m_settings.GetDirectory() + u"/ZANControl/commandlog-replay.txt"_s;
    ExpectRefused(log, u"the output %1 would overwrite %1, which belongs to the station"_s.arg(log));
}

TEST_F(OutputValuesTest, FileThatIsReplayedIsRefusedAlsoAsThePreviousFile) {
    Write(u"flight.csv.bak"_s, "bearings");
    Make(true, {}, Path(u"flight.csv.bak"_s));
    for (const QString& name : {u"flight.csv.bak"_s, u"flight.csv"_s}) {
        ExpectRefused(Path(name), u"the output %1 would overwrite the recording %2"_s.arg(
                                      Path(name), Path(u"flight.csv.bak"_s)));
    }
    EXPECT_EQ(Contents(u"flight.csv.bak"_s), "bearings");
}

TEST_F(OutputValuesTest, FileThatTheRecorderWritesIsRefused) {
    Make(false);
    ServerValue<ValueString>(g_vdRecFile).SetValue(Path(u"record.csv"_s));
    ServerValue<ValueBool>(g_vdRecEnabled).SetValue(true);
    ExpectRefused(Path(u"record.csv"_s), u"the output %1 would overwrite %1, which the recorder writes"_s.arg(
                                             Path(u"record.csv"_s)));
    Write(u"record.000001.csv"_s, "a recording");
    for (const QString& name : {u"record.000001.csv"_s, u"record.000002.csv"_s}) {
        ExpectRefused(Path(name),
                      u"the output %1 would overwrite %1, a numbered file of the recorder"_s.arg(Path(name)));
    }
    ServerValue<ValueBool>(g_vdRecEnabled).SetValue(false);
    EXPECT_TRUE(Set(g_vdFileName, Path(u"record.csv"_s)));
    EXPECT_EQ(Text(g_vdFileName), Path(u"record.csv"_s));
}

TEST_F(OutputValuesTest, FileThatAnotherOutputWritesIsRefusedAndTheOwnOneIsNot) {
    OutputFile other;
    ASSERT_TRUE(other.OpenOrCreate(Path(u"taken"_s)));
    Make(true);
    ExpectRefused(Path(u"taken"_s), u"the output %1 is in use by process %2"_s.arg(
                                        Path(u"taken"_s), QString::number(getpid())));
    ASSERT_TRUE(QFile::link(Path(u"out"_s), Path(u"link"_s)));
    EXPECT_TRUE(Set(g_vdFileName, Path(u"link"_s)));
    EXPECT_EQ(Text(g_vdFileRefused), QString());
    EXPECT_EQ(Text(g_vdFileName), Path(u"link"_s));
}

TEST_F(OutputValuesTest, FileIsCheckedAgainWhenItIsSwitchedOn) {
    Make(false);
    OutputFile other;
    ASSERT_TRUE(other.OpenOrCreate(Path(u"out"_s)));
    EXPECT_TRUE(Set(g_vdFileEnabled, u"true"_s));
    EXPECT_EQ(Text(g_vdFileEnabled), u"0"_s);
    EXPECT_TRUE(Text(g_vdFileRefused).contains(u"is in use by process"_s));
    other.Close();
    EXPECT_TRUE(Set(g_vdFileEnabled, u"true"_s));
    EXPECT_EQ(Text(g_vdFileState), u"Open"_s);
}

TEST_F(OutputValuesTest, FileThatCannotBeOpenedIsTakenAndToldAsFailed) {
    Make(true);
    const QString name = Path(u"missing/out"_s);
    EXPECT_TRUE(Set(g_vdFileName, name));
    EXPECT_EQ(Text(g_vdFileState), u"Failed"_s);
    EXPECT_TRUE(Text(g_vdFileLastError).startsWith(u"Could not open file "_s + name))
        << Text(g_vdFileLastError).toStdString();
    const auto& time = ServerValue<ValueTimeStamp>(g_vdFileLastErrorTime);
    EXPECT_LT(std::abs(QDateTime::currentMSecsSinceEpoch() - static_cast<qint64>(time.GetValue())), 60'000);
    EXPECT_EQ(time.GetState(), TValueState::Valid);
}

TEST_F(OutputValuesTest, DirectoryIsRefused) {
    Make(true);
    ExpectRefused(m_directory.path(), u"the output %1 is a directory"_s.arg(m_directory.path()));
}

TEST_F(OutputValuesTest, LongFailureIsToldInAsManyBytesAsAreAllowed) {
    Make(true);
    QString name = m_directory.path();
    while (name.size() < 3000) {
        name += u'/' + QString(200, u'x');
    }
    EXPECT_TRUE(Set(g_vdFileName, name));
    EXPECT_EQ(Text(g_vdFileState), u"Failed"_s);
    EXPECT_LE(Text(g_vdFileLastError).toUtf8().size(), OutputValues::LONGEST_TEXT);
    EXPECT_GT(Text(g_vdFileLastError).toUtf8().size(), OutputValues::LONGEST_TEXT / 2);
}

TEST_F(OutputValuesTest, CountersAndStatesFollowWithTheNextPublication) {
    Make(true);
    NewBearing();
    NewBearing(0);
    EXPECT_EQ(Text(g_vdFileSentences), u"0"_s) << "a bearing publishes nothing";
    EXPECT_TRUE(SpinUntil([] { return Text(g_vdFileSentences) == u"1"; }));
    EXPECT_EQ(Text(g_vdOutWithoutQuality), u"1"_s);
    m_output->SetInterval(10000);
    NewBearing();
    EXPECT_TRUE(SpinUntil([] { return Text(g_vdOutLeftToInterval) == u"1"; }));
    EXPECT_EQ(Text(g_vdOutInterval), u"10000"_s) << "set by others";
    m_output->SetEnabled(false);
    EXPECT_TRUE(SpinUntil([] { return Text(g_vdFileState) == u"Off"; }));
    EXPECT_EQ(Text(g_vdFileEnabled), u"1"_s) << "the switch is as it was";
}

TEST_F(OutputValuesTest, BearingsWhileEverythingIsOffAreCountedAsWithoutASink) {
    Make(false);
    NewBearing();
    NewBearing(0); // not published
    EXPECT_TRUE(Set(g_vdFileEnabled, u"true"_s));
    NewBearing();
    EXPECT_TRUE(Set(g_vdFileEnabled, u"false"_s));
    NewBearing();
    EXPECT_TRUE(SpinUntil([] { return Text(g_vdOutWithoutSink) == u"2"_s; }))
        << Text(g_vdOutWithoutSink).toStdString();
    EXPECT_EQ(Text(g_vdFileSentences), u"1"_s);
}

TEST_F(OutputValuesTest, DroppedSentencesAreCounted) {
    Make(true);
    EXPECT_TRUE(Set(g_vdFileName, u"/dev/full"_s));
    NewBearing();
    EXPECT_TRUE(SpinUntil([] { return Text(g_vdFileDropped) == u"1"; }));
    EXPECT_EQ(Text(g_vdFileState), u"Failed"_s);
    EXPECT_TRUE(Text(g_vdFileLastError).startsWith(u"Writing to /dev/full failed: "_s));
}

TEST_F(OutputValuesTest, OriginatorIsNotToldOfItsOwnChangeAndIsToldThatItGoesBack) {
    Make(false);
    auto& name = ServerValue<ValueString>(g_vdFileName);
    CodeObserver display;
    name.AddObserver(&display);
    EXPECT_TRUE(name.SetValue(Path(u"other"_s), &display));
    EXPECT_TRUE(display.codes.empty());
    EXPECT_TRUE(name.SetValue({}, &display));
    EXPECT_EQ(display.codes, std::vector{TChangeCode::Changed}) << "once: it is back";
    EXPECT_EQ(name.GetValue(), Path(u"other"_s));
}

TEST_F(OutputValuesTest, StandardOutputIsShownAndGivesWayWhenAFileIsSet) {
    Make(false, u"-"_s);
    EXPECT_EQ(Text(g_vdFileEnabled), u"1"_s);
    EXPECT_EQ(Text(g_vdFileName), u"-"_s);
    EXPECT_TRUE(Set(g_vdOutInterval, u"10000"_s));
    EXPECT_EQ(Text(g_vdFileName), u"-"_s) << "the interval does not end it";
    EXPECT_TRUE(Set(g_vdFileEnabled, u"false"_s));
    EXPECT_EQ(Text(g_vdFileState), u"Off"_s);
    EXPECT_EQ(Text(g_vdFileName), Path(u"out"_s)) << "that of the settings";
    ExpectRefused(u"-"_s, u"standard output is only for a run that is started with it"_s);
}
