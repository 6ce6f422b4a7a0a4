#include "stream/streamdriver.h"
#include "stream/streamsource.h"
#include "support/eventloop.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "support/recordings.h"
#include "zanserver/driverlink.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <sys/socket.h>
#include <sys/stat.h>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using Stream::StreamDriver;

namespace {

const QByteArray ROW = "1000,121500000,71.5,,90,,,,,,,\n";

/// A driver and what it delivers, on the main thread.
class StreamDriverTest : public testing::Test {
protected:
    StreamDriverTest() {
        QObject::connect(&m_receiver, &DriverReceiver::BlockReceived, &m_receiver,
                         [this](BearingBlock& block) { m_blocks.push_back(block); });
        QObject::connect(&m_receiver, &DriverReceiver::ErrorReported, &m_receiver,
                         [this](const KvZANCommon::ErrorStruct& error) {
                             (error.fatal ? m_fatal : m_errors).append(error.text);
                         });
        QObject::connect(&m_receiver, &DriverReceiver::BitResultReported, &m_receiver,
                         [this](const KvZANCommon::ErrorStruct& result) { m_results.append(result.text); });
        QObject::connect(&m_receiver, &DriverReceiver::CommandReported, &m_receiver,
                         [this](const QString& command) { m_commands.append(command); });
        QObject::connect(&m_receiver, &DriverReceiver::LinkClosed, &m_receiver, [this] { ++m_closed; });
        m_driver.SetCallback(&m_receiver);
    }

    int Open(const QString& address) {
        std::string text = address.toStdString();
        return m_driver.Initialize(text, false);
    }
    void Start(const QString& address, EMode mode = EMODE_SCAN) {
        ASSERT_EQ(Open(address), StreamDriver::OK) << m_driver.GetLastError().toStdString();
        ASSERT_EQ(m_driver.SetMode(mode), StreamDriver::OK);
    }
    [[nodiscard]] std::size_t CountBearings() const {
        std::size_t count = 0;
        for (const BearingBlock& block : m_blocks) {
            count += block.bearings.size();
        }
        return count;
    }
    [[nodiscard]] bool WaitForBlocks(std::size_t count) {
        return SpinUntil([&] { return m_blocks.size() >= count; });
    }
    [[nodiscard]] bool WaitForLoss() {
        return SpinUntil([&] { return m_closed > 0; });
    }
    void ExpectRefused(const QString& address, const QString& reason) {
        EXPECT_EQ(Open(address), StreamDriver::FAILED);
        EXPECT_EQ(m_driver.GetLastError(), reason);
    }

    QTemporaryDir m_directory;
    DriverReceiver m_receiver{u"stream"_s};
    std::vector<BearingBlock> m_blocks;
    QStringList m_errors;
    QStringList m_fatal;
    QStringList m_results;
    QStringList m_commands;
    int m_closed = 0;
    StreamDriver m_driver;
};

/// A program that sends bearings over TCP.
class TcpSender : public QTcpServer {
public:
    TcpSender() { EXPECT_TRUE(listen(QHostAddress::LocalHost)); }
    [[nodiscard]] QString Address() const { return u"tcp://127.0.0.1:%1"_s.arg(serverPort()); }
    /// The connection that waits, or that comes.
    QTcpSocket* Accept() {
        EXPECT_TRUE(SpinUntil([this] { return hasPendingConnections(); }));
        return nextPendingConnection();
    }
};

void Send(QIODevice& device, const QByteArray& text) {
    EXPECT_EQ(device.write(text), text.size());
    EXPECT_TRUE(SpinUntil([&] { return device.bytesToWrite() == 0; }));
}

} // namespace

TEST_F(StreamDriverTest, BearingsOfATcpConnectionAreDelivered) {
    TcpSender sender;
    Start(sender.Address());
    QTcpSocket* const connection = sender.Accept();
    Send(*connection,
         RECORDING_HEADER + "1500,121500000,71.55,-10.04,90,-52.046,12.3,1.5,-2.5,52.5,5.5,-4.0\n");
    ASSERT_TRUE(WaitForBlocks(1));
    const BearingBlock& block = m_blocks[0];
    EXPECT_EQ(block.time, 1500U);
    EXPECT_EQ(block.status.frequency, 121.5e6);
    EXPECT_EQ(block.status.heading, 12.3);
    EXPECT_EQ(block.status.latitude, 52.5);
    ASSERT_EQ(block.bearings.size(), 1U);
    EXPECT_EQ(block.bearings[0].azimuth, 716);
    EXPECT_EQ(block.bearings[0].level, -5205);
    EXPECT_EQ(block.bearings[0].quality, 90);
    EXPECT_EQ(m_driver.GetReadCount(), 1);
}

TEST_F(StreamDriverTest, BearingsAreDeliveredInFixedFrequencyModeAlike) {
    TcpSender sender;
    Start(sender.Address(), EMODE_FFM);
    Send(*sender.Accept(), ROW);
    EXPECT_TRUE(WaitForBlocks(1));
}

TEST_F(StreamDriverTest, RowIsDeliveredWhenItsLineIsComplete) {
    TcpSender sender;
    Start(sender.Address());
    QTcpSocket* const connection = sender.Accept();
    Send(*connection, ROW + ROW.left(10));
    ASSERT_TRUE(WaitForBlocks(1));
    EXPECT_EQ(m_blocks[0].bearings.size(), 1U);
    Send(*connection, ROW.mid(10));
    EXPECT_TRUE(WaitForBlocks(2));
}

TEST_F(StreamDriverTest, ConnectionThatIsClosedIsReportedOnceAndOpenedAgainByInitialize) {
    TcpSender sender;
    Start(sender.Address());
    QTcpSocket* connection = sender.Accept();
    Send(*connection, "bad\nbad\n" + ROW);
    connection->disconnectFromHost();
    ASSERT_TRUE(WaitForLoss());
    EXPECT_EQ(m_fatal, QStringList(sender.Address() + u": the other end has closed it"_s));
    EXPECT_EQ(m_errors, QStringList(u"line 1: wrong number of columns: 1"_s));
    EXPECT_EQ(m_results, QStringList(u"wrong number of columns: 2"_s));
    EXPECT_EQ(m_driver.SetMode(EMODE_SCAN), StreamDriver::FAILED);
    EXPECT_EQ(m_driver.GetLastError(), u"the connection is lost"_s);

    Start(sender.Address());
    Send(*sender.Accept(), ROW);
    ASSERT_TRUE(WaitForBlocks(2));
    EXPECT_EQ(m_closed, 1);
}

TEST_F(StreamDriverTest, LineThatTheEndOfTheConnectionCutsShortIsToldAndNotDelivered) {
    TcpSender sender;
    Start(sender.Address());
    QTcpSocket* const connection = sender.Accept();
    Send(*connection, ROW + "2000,121500000,7");
    delete connection;
    ASSERT_TRUE(WaitForLoss());
    ASSERT_TRUE(WaitForBlocks(1));
    EXPECT_EQ(m_blocks.size(), 1U);
    EXPECT_EQ(m_errors, QStringList(u"line 2: line cut short"_s));
    EXPECT_EQ(m_results, QStringList(u"line cut short: 1"_s));
}

TEST_F(StreamDriverTest, InStandbyNothingIsDeliveredAndWhatArrivesIsDropped) {
    TcpSender sender;
    Start(sender.Address());
    QTcpSocket* const connection = sender.Accept();
    Send(*connection, ROW);
    ASSERT_TRUE(WaitForBlocks(1));
    EXPECT_EQ(m_driver.SetMode(EMODE_STANDBY), StreamDriver::OK);
    Send(*connection, "2000,121500000,71.5,,90,,,,,,,\nbad\n");
    // The kernel passes on no more than this without a reader: all before its end has been dropped.
    constexpr qsizetype MUCH = 20'000'000;
    Send(*connection, QByteArray(MUCH, '\n'));
    EXPECT_EQ(m_driver.SetMode(EMODE_SCAN), StreamDriver::OK);
    Send(*connection, "3000,121500000,71.5,,90,,,,,,,\n");
    ASSERT_TRUE(WaitForBlocks(2));
    EXPECT_EQ(m_blocks[1].time, 3000U);
    EXPECT_EQ(m_errors, QStringList());
}

TEST_F(StreamDriverTest, LinesThatComeBeforeTheFirstModeWaitForIt) {
    TcpSender sender;
    ASSERT_EQ(Open(sender.Address()), StreamDriver::OK);
    Send(*sender.Accept(), ROW);
    m_driver.SetMode(EMODE_SCAN);
    EXPECT_TRUE(WaitForBlocks(1));
}

TEST_F(StreamDriverTest, HostThatRefusesIsAFailureWithItsReason) {
    QString address;
    {
        const TcpSender sender;
        address = sender.Address();
    }
    ExpectRefused(address, address + u": Connection refused"_s);
}

TEST_F(StreamDriverTest, HostMayBeInBrackets) {
    TcpSender sender;
    Start(u"tcp://[127.0.0.1]:%1"_s.arg(sender.serverPort()));
    Send(*sender.Accept(), ROW);
    EXPECT_TRUE(WaitForBlocks(1));
}

TEST_F(StreamDriverTest, ConnectionThatIsResetIsToldWithTheReason) {
    TcpSender sender;
    Start(sender.Address());
    QTcpSocket* const connection = sender.Accept();
    Send(*connection, ROW);
    ASSERT_TRUE(WaitForBlocks(1));
    constexpr linger AT_ONCE{1, 0}; // what a machine does that has lost the connection
    ASSERT_EQ(::setsockopt(static_cast<int>(connection->socketDescriptor()), SOL_SOCKET, SO_LINGER, &AT_ONCE,
                           sizeof AT_ONCE),
              0);
    delete connection;
    ASSERT_TRUE(WaitForLoss());
    EXPECT_EQ(m_fatal,
              QStringList(sender.Address() + u": cannot be read after line 1: Connection reset by peer"_s));
}

TEST_F(StreamDriverTest, PortThatAnotherProgramHasIsRefusedWithTheReason) {
    QUdpSocket other;
    ASSERT_TRUE(other.bind(QHostAddress::LocalHost));
    const QString address = u"udp://:%1"_s.arg(other.localPort());
    ExpectRefused(address, address + u": The bound address is already in use"_s);
}

TEST_F(StreamDriverTest, WithoutACallbackItIsNotOpened) {
    StreamDriver driver;
    std::string address = "tcp://127.0.0.1:1";
    EXPECT_EQ(driver.Initialize(address, false), StreamDriver::FAILED);
    EXPECT_EQ(driver.GetLastError(), u"there is no callback"_s);
}

TEST_F(StreamDriverTest, AddressesThatAreNoneAreRefusedWithTheReason) {
    ExpectRefused(QString(), u"the address is none of "_s + Stream::StreamSource::FORM.toString());
    ExpectRefused(u"tcp://localhost"_s, u"tcp://localhost: there is no port from 1 to 65535"_s);
    ExpectRefused(u"tcp://localhost:70000"_s, u"tcp://localhost:70000: there is no port from 1 to 65535"_s);
    ExpectRefused(u"udp://nowhere:5000"_s,
                  u"udp://nowhere:5000: \"nowhere\" is not an address of this machine"_s);
    ExpectRefused(u"unix:"_s, u"unix:: a socket has a path of 1 to 107 bytes"_s);
    ExpectRefused(u"unix:/nowhere/s"_s, u"unix:/nowhere/s: No such file or directory"_s);
    ExpectRefused(u"/nowhere/fifo"_s, u"/nowhere/fifo: cannot be opened: No such file or directory"_s);
    ExpectRefused(m_directory.path(), m_directory.path() + u": is a directory"_s);
    ExpectRefused(u"/etc/passwd"_s,
                  u"/etc/passwd: is a file, not a stream; the driver \"replay\" reads it"_s);
    ExpectRefused(u"COM1:9600,x"_s,
                  u"COM1:9600,x: cannot be opened: the parity is not one of n, e, o, m, s"_s);
    ExpectRefused(u"/dev/nothing:9600,x"_s,
                  u"/dev/nothing:9600,x: cannot be opened: the parity is not one of n, e, o, m, s"_s);
}

TEST_F(StreamDriverTest, DatagramsAreWholeLines) {
    QUdpSocket probe;
    ASSERT_TRUE(probe.bind(QHostAddress::LocalHost));
    const quint16 port = probe.localPort();
    probe.close();
    Start(u"udp://:%1"_s.arg(port));
    QUdpSocket sender;
    for (const QByteArray& datagram :
         {ROW.chopped(1), ROW + "2000,121500000,71.5,,90,,,,,,,", QByteArray(), ROW}) {
        sender.writeDatagram(datagram, QHostAddress::LocalHost, port);
    }
    ASSERT_TRUE(SpinUntil([this] {
        std::size_t count = 0;
        for (const BearingBlock& block : m_blocks) {
            count += block.bearings.size();
        }
        return count == 4;
    }));
    EXPECT_EQ(m_errors, QStringList());
}

TEST_F(StreamDriverTest, UnixSocketIsConnectedTo) {
    QLocalServer server;
    const QString path = m_directory.filePath(u"bearings"_s);
    ASSERT_TRUE(server.listen(path));
    Start(u"unix:"_s + path);
    ASSERT_TRUE(SpinUntil([&] { return server.hasPendingConnections(); }));
    Send(*server.nextPendingConnection(), ROW);
    EXPECT_TRUE(WaitForBlocks(1));
}

TEST_F(StreamDriverTest, SerialLineIsReadFromTheFirstWholeLineOnUntilItIsUnplugged) {
    PseudoTerminal terminal;
    Start(terminal.path + u":115200,n,8,1"_s);
    EXPECT_GT(terminal.Write("90,,,,,,,\n" + ROW), 0);
    ASSERT_TRUE(WaitForBlocks(1));
    EXPECT_EQ(m_errors, QStringList());
    terminal.Unplug();
    EXPECT_TRUE(WaitForLoss());
}

TEST_F(StreamDriverTest, FifoLosesNothingOfWritersThatComeAndGo) {
    const QString name = m_directory.filePath(u"fifo"_s);
    ASSERT_EQ(mkfifo(name.toLocal8Bit().constData(), 0600), 0);
    Start(name);
    constexpr std::size_t WRITERS = 20;
    for (std::size_t i = 1; i <= WRITERS; ++i) {
        QFile writer(name);
        ASSERT_TRUE(writer.open(QFile::WriteOnly | QFile::Unbuffered));
        writer.write(ROW);
        if (i % 2 == 0) { // the others may meet a reader that has not seen the end yet
            ASSERT_TRUE(SpinUntil([&] { return CountBearings() == i; })) << i;
        }
    }
    EXPECT_TRUE(SpinUntil([this] { return CountBearings() == WRITERS; })) << CountBearings();
    EXPECT_EQ(m_closed, 0);
}

TEST_F(StreamDriverTest, CutLineOfAWriterDoesNotRunIntoThatOfTheNextOne) {
    const QString name = m_directory.filePath(u"fifo"_s);
    ASSERT_EQ(mkfifo(name.toLocal8Bit().constData(), 0600), 0);
    Start(name);
    {
        QFile writer(name);
        ASSERT_TRUE(writer.open(QFile::WriteOnly | QFile::Unbuffered));
        writer.write("17000");
    }
    ASSERT_TRUE(SpinUntil([this] { return m_errors.size() == 1; }));
    EXPECT_TRUE(m_errors.first().contains(u"line cut short"_s)) << m_errors.first().toStdString();
    QFile writer(name);
    ASSERT_TRUE(writer.open(QFile::WriteOnly | QFile::Unbuffered));
    writer.write(ROW);
    ASSERT_TRUE(WaitForBlocks(1));
    EXPECT_EQ(m_errors.size(), 1);
}

TEST_F(StreamDriverTest, FifoThatIsRemovedOrReplacedIsLost) {
    const QString name = m_directory.filePath(u"fifo"_s);
    for (const int round : {1, 2}) {
        ASSERT_EQ(mkfifo(name.toLocal8Bit().constData(), 0600), 0);
        Start(name);
        QFile writer(name);
        ASSERT_TRUE(writer.open(QFile::WriteOnly | QFile::Unbuffered));
        QFile::remove(name);
        if (round == 2) {
            ASSERT_EQ(mkfifo(name.toLocal8Bit().constData(), 0600), 0);
        }
        writer.close();
        EXPECT_TRUE(SpinUntil([&] { return m_closed == round; }));
    }
}

TEST_F(StreamDriverTest, StandardInputIsReadToItsEndAndNotOpenedAgain) {
    int ends[2]{-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const int before = dup(STDIN_FILENO);
    ASSERT_EQ(dup2(ends[0], STDIN_FILENO), STDIN_FILENO);
    EXPECT_EQ(write(ends[1], ROW.constData(), static_cast<std::size_t>(ROW.size())), ROW.size());
    close(ends[1]);
    Start(u"-"_s);
    EXPECT_TRUE(WaitForBlocks(1));
    EXPECT_TRUE(WaitForLoss());
    EXPECT_EQ(m_fatal, QStringList(u"standard input has ended"_s));
    ExpectRefused(u"-"_s, u"standard input has ended"_s);
    dup2(before, STDIN_FILENO);
    close(before);
    close(ends[0]);
}

TEST_F(StreamDriverTest, CommandsAreReportedAndWhatAStreamCannotDoIsRefused) {
    TcpSender sender;
    Start(sender.Address());
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_TRUE(SpinUntil([this] { return m_commands.size() == 3; }));
    EXPECT_EQ(m_commands, (QStringList{u"open "_s + sender.Address(), u"mode 3"_s, u"mode 0"_s}));
    EXPECT_EQ(m_driver.SetFrequency(1e6), StreamDriver::NOT_SUPPORTED);
    EXPECT_EQ(m_driver.SetMode(EMODE_SEARCH), StreamDriver::NOT_SUPPORTED);
    EXPECT_EQ(m_driver.GetLastError(), u"mode 4 is not one of standby, fixed frequency, scan"_s);
    m_driver.ClearLastError();
    EXPECT_EQ(m_driver.GetLastError(), QString());
}

TEST_F(StreamDriverTest, ModeBeforeInitializeIsAFailure) {
    EXPECT_EQ(m_driver.SetMode(EMODE_SCAN), StreamDriver::FAILED);
    EXPECT_EQ(m_driver.GetLastError(), u"the stream is not open"_s);
}

TEST_F(StreamDriverTest, HundredLossesLeaveNoDescriptorBehind) {
    const auto count = [] {
        return QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
    };
    TcpSender sender;
    qsizetype before = 0;
    for (int i = 1; i <= 100; ++i) {
        Start(sender.Address());
        delete sender.Accept();
        ASSERT_TRUE(SpinUntil([&] { return m_closed == i; }));
        before = i == 1 ? count() : before;
    }
    EXPECT_EQ(count(), before);
}

TEST(StreamDriverLink, LostConnectionIsOpenedAgainByTheStation) {
    TcpSender sender;
    std::vector<quint64> times;
    DriverLink link([] { return std::make_unique<StreamDriver>(); }, sender.Address(), u"stream"_s,
                    DriverLink::Kind::Device, std::chrono::milliseconds(10));
    QObject::connect(&link, &DriverLink::Connected, &link, [&link] {
        link.GetThread().Post(DriverCall::SetMode,
                              [](KvZANCommon::IDriver& driver) { driver.SetMode(EMODE_SCAN); });
    });
    QObject::connect(&link.GetReceiver(), &DriverReceiver::BlockReceived, &link,
                     [&times](const BearingBlock& block) { times.push_back(block.time); });
    std::size_t losses = 0;
    QObject::connect(&link, &DriverLink::Lost, &link, [&losses] { ++losses; });
    link.Open();
    for (const QByteArray time : {"1000", "2000", "3000"}) {
        QTcpSocket* const connection = sender.Accept();
        const std::size_t count = times.size() + 1;
        Send(*connection, time + ",121500000,71.5,,90,,,,,,,\n");
        ASSERT_TRUE(SpinUntil([&] { return times.size() == count; }));
        delete connection;
        ASSERT_TRUE(SpinUntil([&] { return losses == times.size(); }));
    }
    EXPECT_EQ(times, (std::vector<quint64>{1000, 2000, 3000}));
}
