#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "support/fifo.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "support/storedsettings.h"
#include "valueframework/tree.h"
#include "zancommon/zanpath.h"
#include "zanserver/outputvalues.h"
#include "zanserver/recorder.h"
#include "zanserver/station.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using namespace StdDeviceDefinition;

// The outputs of a station that measures, as a display sets them through the tree.

namespace {

constexpr int SOON_MS = 1;

QString Text(const ValueDescriptor& descriptor) {
    return Tree::Instance()->GetValue(ZANPath::Server(descriptor))->GetStringValue();
}

bool Set(const ValueDescriptor& descriptor, const QString& text) {
    return Tree::Instance()->GetValue(ZANPath::Server(descriptor))->SetStringValue(text, nullptr);
}

class StationOutputsTest : public testing::Test {
protected:
    StationOutputsTest() {
        m_station.emplace();
        m_station->StartOutput();
        m_outputs.emplace(m_station->GetOutput(),
                          StationFiles{m_settings.GetDirectory(), Station::GetDeviceAddress(), {}}, SOON_MS);
        m_recorder.emplace(StationFiles{m_settings.GetDirectory(), Station::GetDeviceAddress(), {}});
        m_station->SetBlockObserver(
            [this](const BearingBlock& block, const std::vector<BearingResult>& bearings) {
                m_recorder->Take(block, bearings);
            });
    }

    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] static QByteArray Contents(const QString& name) {
        QFile file(name);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    /// The device delivers a bearing.
    void Measure() {
        BearingBlock block;
        block.time = m_time += 1000;
        block.status.frequency = 121.5e6;
        Bearing bearing;
        bearing.azimuth = 715;
        bearing.quality = 90;
        block.bearings = {bearing};
        m_station->Process(block);
    }

    StoredSettings m_settings;
    QTemporaryDir m_directory;
    quint64 m_time = 0;
    std::optional<Station> m_station;
    std::optional<OutputValues> m_outputs;
    std::optional<Recorder> m_recorder;
};

} // namespace

TEST_F(StationOutputsTest, OutputIsSwitchedMovedAndSlowedDownWhileTheStationMeasures) {
    Measure();
    EXPECT_TRUE(Set(g_vdFileName, Path(u"first"_s)));
    EXPECT_TRUE(Set(g_vdFileEnabled, u"true"_s));
    Measure();
    const PseudoTerminal line;
    EXPECT_TRUE(Set(g_vdSerAddress, line.path));
    EXPECT_TRUE(Set(g_vdSerEnabled, u"true"_s));
    EXPECT_TRUE(Set(g_vdFileName, Path(u"second"_s)));
    QByteArray received;
    EXPECT_TRUE(SpinUntil([&] {
        Measure();
        return (received += line.Read()).count("\r\n") >= 2;
    }));
    EXPECT_TRUE(received.contains(",LAT,")) << "the file is open";
    EXPECT_EQ(Contents(Path(u"first"_s)).count("\r\n"), 1);
    EXPECT_GE(Contents(Path(u"second"_s)).count("\r\n"), 2);
    EXPECT_TRUE(SpinUntil([] { return Text(g_vdSerSentences).toInt() >= 2; }));

    EXPECT_TRUE(Set(g_vdOutInterval, u"10000"_s));
    const qsizetype before = Contents(Path(u"second"_s)).size();
    Measure();
    EXPECT_EQ(Contents(Path(u"second"_s)).size(), before);
    EXPECT_TRUE(Set(g_vdOutInterval, u"0"_s));
    Measure();
    EXPECT_GT(Contents(Path(u"second"_s)).size(), before);
    EXPECT_FALSE(QFile::exists(Path(u"second.bak"_s))) << "one file from the beginning to the end";

    m_recorder.reset();
    m_outputs.reset();
    m_station.reset();
    const QString settings = m_settings.CloseAndRead();
    for (const QString& kept :
         {u"FileOutput_Enabled=true"_s, u"FileOutput_Address="_s + Path(u"second"_s),
          u"RS232Output_Enabled=true"_s, u"RS232Output_Address="_s + line.path, u"Output_Interval=0"_s}) {
        EXPECT_TRUE(settings.contains(kept)) << kept.toStdString() << " in " << settings.toStdString();
    }
}

TEST_F(StationOutputsTest, HostileNamesDestroyNothingAndTheStationMeasuresOn) {
    EXPECT_TRUE(Set(g_vdRecFile, Path(u"record.csv"_s)));
    EXPECT_TRUE(Set(g_vdRecEnabled, u"true"_s));
    EXPECT_TRUE(Set(g_vdFileName, Path(u"good"_s)));
    EXPECT_TRUE(Set(g_vdFileEnabled, u"true"_s));
    Measure();
    const QString ini = m_settings.GetDirectory() + u"/Application.ini"_s;
    EXPECT_TRUE(SpinUntil([this] { return m_settings.Read().contains(u"FileOutput_Enabled=true"_s); }));
    const Fifo fifo(Path(u"fifo"_s)); // that nobody reads
    ASSERT_TRUE(QDir(m_directory.path()).mkdir(u"directory"_s));
    ASSERT_TRUE(QFile::link(ini, Path(u"link"_s)));

    for (const QString& refused :
         {QString(1 << 20, u'x'), Path(u"nul"_s) + QChar::Null + u"x"_s, QString(), ini, Path(u"link"_s),
          Path(u"record.csv"_s), u"-"_s, Path(u"directory"_s)}) {
        EXPECT_TRUE(Set(g_vdFileName, refused));
        EXPECT_EQ(Text(g_vdFileName), Path(u"good"_s));
        EXPECT_NE(Text(g_vdFileRefused), QString());
        EXPECT_LE(Text(g_vdFileRefused).toUtf8().size(), OutputValues::LONGEST_TEXT);
        Measure();
    }
    EXPECT_EQ(Contents(Path(u"good"_s)).count("\r\n"), 9) << "none of them was noticed by the output";
    for (const QString& failing : {Path(u"fifo"_s), u"/dev/full"_s, u"/no/such/place"_s}) {
        EXPECT_TRUE(Set(g_vdFileName, failing));
        EXPECT_EQ(Text(g_vdFileName), failing);
        Measure();
        EXPECT_TRUE(SpinUntil([] { return Text(g_vdFileState) == u"Failed"; })) << failing.toStdString();
        EXPECT_TRUE(Text(g_vdFileLastError).contains(failing)) << Text(g_vdFileLastError).toStdString();
    }
    EXPECT_TRUE(Set(g_vdFileName, Path(u"after"_s)));
    Measure();
    EXPECT_EQ(Contents(Path(u"after"_s)).count("\r\n"), 1);
    EXPECT_EQ(Contents(Path(u"record.csv"_s)).count('\n'), 1 + 1 + 8 + 3 + 1) << "a header and each bearing";
    EXPECT_TRUE(m_settings.Read().startsWith(u"[General]\n"_s));
}

TEST_F(StationOutputsTest, HundredSwitchingsLeaveWhatTheLastOneSays) {
    EXPECT_TRUE(Set(g_vdFileName, Path(u"out"_s)));
    const auto countDescriptors = [] { return QDir(u"/proc/self/fd"_s).count(); };
    const auto before = countDescriptors();
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(Set(g_vdFileEnabled, u"true"_s));
        Measure();
        EXPECT_TRUE(Set(g_vdFileEnabled, u"false"_s));
        Measure();
    }
    EXPECT_EQ(countDescriptors(), before);
    EXPECT_EQ(Text(g_vdFileState), u"Off"_s);
    EXPECT_EQ(Text(g_vdFileSentences), u"100"_s);
    EXPECT_EQ(Text(g_vdFileDropped), u"0"_s);
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files), (QStringList{u"out"_s, u"out.bak"_s}));
}
