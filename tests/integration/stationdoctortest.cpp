#include "support/eventloop.h"
#include "support/gpsdserver.h"
#include "support/printing.h"
#include "support/recordings.h"
#include "support/stationprocess.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

// What a person is told of the driver and the receivers that the settings choose.

namespace {

class StationDoctorTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_directory.isValid());
        ASSERT_TRUE(QDir().mkpath(Path(u"config"_s)));
        WriteFile(Path(u"recording.csv"_s), RECORDING_HEADER + "1000,121500000,71.5,10.0,90,,,,,,,\n");
    }

    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] StationResult Run(const QStringList& further = {}) const {
        return RunStation(QStringList{u"doctor"_s, u"--config"_s, Path(u"config"_s)} + further);
    }
    void WriteSettings(const QString& text) const {
        WriteFile(Path(u"config/Application.ini"_s), text.toUtf8());
    }
    void ChooseDriver(const QString& name, const QString& address) const {
        WriteSettings(u"[Driver]\nAddress=%1\nName=%2\n"_s.arg(address, name));
    }
    /// In the settings of a station that is there already.
    void ChooseGpsd(const QString& address) const {
        QString settings = QString::fromUtf8(ReadFile(Path(u"config/Application.ini"_s)));
        settings.remove(QRegularExpression(u"\\[Gpsd\\]\n.*\n"_s));
        settings.replace(QRegularExpression(u"CompassChoice=.*"_s), u"CompassChoice=4"_s);
        WriteSettings(settings + u"[Gpsd]\nAddress=%1\n"_s.arg(address));
    }
    /// The line of a finding; null when there is none.
    static QString FindLine(const StationResult& result, const QString& name) {
        const QRegularExpression line(u"^\\w+ +%1 .*$"_s.arg(name), QRegularExpression::MultilineOption);
        return line.match(result.out).captured();
    }

    QTemporaryDir m_directory;
};

} // namespace

TEST_F(StationDoctorTest, TellsWhereADriverWasLookedForAndWhatIsThere) {
    ChooseDriver(u"warp"_s, u"x"_s);
    const StationResult result = Run();
    EXPECT_EQ(result.exitCode, 1);
    const QString line = FindLine(result, u"driver"_s);
    EXPECT_TRUE(line.startsWith(u"BROKEN "_s)) << result.out.toStdString();
    EXPECT_TRUE(line.contains(u"/libzandriver-warp.so"_s)) << line.toStdString();
    EXPECT_TRUE(line.endsWith(u", replay, simulator, stream."_s)) << line.toStdString();

    const QString empty = Path(u"nowhere"_s);
    const StationResult none = Run({u"--components"_s, empty});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_TRUE(FindLine(none, u"driver"_s).endsWith(u"Found in %1: no driver."_s.arg(empty)))
        << none.out.toStdString();
}

TEST_F(StationDoctorTest, TellsWhyDriversAreRefused) {
    ChooseDriver(u"misnamed"_s, {});
    const QString own = FindLine(Run({u"--components"_s, QStringLiteral(ZAN_TEST_DRIVERS)}), u"driver"_s);
    EXPECT_TRUE(own.contains(u"it calls itself"_s)) << own.toStdString();
    EXPECT_EQ(own.count(u"zandriver-misnamed"_s), 1) << own.toStdString();
    EXPECT_TRUE(own.contains(u"Found in %1: current, legacy."_s.arg(QStringLiteral(ZAN_TEST_DRIVERS))))
        << own.toStdString();
    for (const QString& reason : {u"zandriver-outdated"_s, u"it has the driver interface version"_s,
                                  u"zandriver-stranger"_s, u"it is not a driver"_s}) {
        EXPECT_TRUE(own.contains(reason)) << own.toStdString();
    }
}

TEST_F(StationDoctorTest, TellsAnAddressThatDoesNotHaveTheFormOfItsDriver) {
    struct Case {
        QString address;
        QString finding;
    };
    for (const auto& [address, finding] :
         {Case{u"http://10.0.0.1"_s,
               u"warning driver        the address \"http://10.0.0.1\" does not have the form "
               "that simulator wants: SCENARIO, such as airfield"_s},
          Case{u"airfield"_s, u"warning driver        the device is simulated"_s}}) {
        ChooseDriver(u"simulator"_s, address);
        const StationResult result = Run();
        EXPECT_TRUE(FindLine(result, u"driver"_s).startsWith(finding)) << result.out.toStdString();
        EXPECT_EQ(result.exitCode, 0) << "it may work all the same";
    }
}

TEST_F(StationDoctorTest, TellsAnAddressThatTheDriverHasNoUseFor) {
    ChooseDriver(u"legacy"_s, u"here"_s);
    const StationResult result = Run({u"--components"_s, QStringLiteral(ZAN_TEST_DRIVERS)});
    EXPECT_EQ(FindLine(result, u"driver"_s),
              u"warning driver        legacy takes no address, and has \"here\""_s);
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(StationDoctorTest, LooksIntoTheRecordingThatTheDriverReplays) {
    ChooseDriver(u"replay"_s, Path(u"recording.csv"_s));
    StationResult result = Run();
    EXPECT_EQ(FindLine(result, u"driver"_s), u"ok      driver        replay "_s + Path(u"recording.csv"_s));
    EXPECT_TRUE(FindLine(result, u"recording"_s).startsWith(u"ok "_s)) << result.out.toStdString();
    QFile::remove(Path(u"recording.csv"_s));
    result = Run();
    EXPECT_TRUE(FindLine(result, u"recording"_s).startsWith(u"BROKEN "_s)) << result.out.toStdString();
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(StationDoctorTest, TellsWhetherGpsdAnswersWhenItIsChosen) {
    EXPECT_EQ(FindLine(Run(), u"gpsd"_s), QString()) << "nothing is taken from it";
    ChooseGpsd(u"127.0.0.1:1"_s);
    StationResult result = Run();
    EXPECT_EQ(FindLine(result, u"gpsd"_s),
              u"warning gpsd          does not answer: 127.0.0.1:1: Connection refused"_s);
    EXPECT_EQ(result.exitCode, 0) << "it may be started later";

    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost)); // takes the connection, and says nothing
    const QString address = u"127.0.0.1:%1"_s.arg(silent.serverPort());
    ChooseGpsd(address);
    result = Run();
    EXPECT_EQ(FindLine(result, u"gpsd"_s),
              u"warning gpsd          does not answer: %1: no answer within 2000 ms"_s.arg(address));

    ChooseGpsd(u"gpsd://here"_s);
    result = Run();
    EXPECT_EQ(FindLine(result, u"gpsd"_s), QString());
    EXPECT_TRUE(result.out.contains(u"BROKEN  settings      the setting \"Gpsd/Address\""_s))
        << result.out.toStdString();
}

TEST_F(StationDoctorTest, TellsThatGpsdAnswers) {
    EXPECT_EQ(FindLine(Run(), u"gpsd"_s), QString()) << "it writes the settings";
    const GpsdServer server;
    const QString address = u"127.0.0.1:%1"_s.arg(server.GetPort());
    ChooseGpsd(address);
    QProcess doctor; // beside the server, which needs the event loop
    doctor.start(QStringLiteral(ZAN_STATION), {u"doctor"_s, u"--config"_s, Path(u"config"_s)});
    ASSERT_TRUE(SpinUntil([&] { return doctor.state() == QProcess::NotRunning; }));
    const StationResult result{doctor.exitCode(), QString::fromUtf8(doctor.readAllStandardOutput()), {}};
    EXPECT_EQ(FindLine(result, u"gpsd"_s), u"ok      gpsd          %1 answers"_s.arg(address));
}
