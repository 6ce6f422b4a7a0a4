#include "zancommon/serialinterface.h"

#include "support/eventloop.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "support/tracelines.h"

#include <QFile>
#include <QMetaMethod>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned short RETRY_MS = 20;

const QString ORIGIN = u"devicecontrol\\directionfinder\\zancommon\\serialinterface"_s;
const QString OPENED = ORIGIN + u"(81): RS232Output: SerialInterface::OnOpen\n"_s;
const QString CLOSED = ORIGIN + u"(89): RS232Output: SerialInterface::OnClose\n"_s;
const QString DATA_CAME = ORIGIN + u"(94): RS232Output: SerialInterface::OnRead\n"_s;
const QString FAILED = ORIGIN + u"(99): RS232Output: SerialInterface::OnError\n"_s;

class SerialInterfaceTest : public testing::Test {
protected:
    /// Puts a serial line at the address, in place of one that was there.
    void PlugIn(const PseudoTerminal& line) {
        QFile::remove(m_link);
        ASSERT_TRUE(QFile::link(line.path, m_link));
    }
    std::unique_ptr<SerialInterface> Make(unsigned short retryMs = RETRY_MS) {
        return std::make_unique<SerialInterface>(m_link + u":9600,e,8,1"_s, retryMs, 10);
    }
    /// An interface that is open, with the retries over.
    std::unique_ptr<SerialInterface> MakeOpen(const PseudoTerminal& line) {
        PlugIn(line);
        auto serial = Make();
        EXPECT_TRUE(SpinUntil([this] { return m_trace.lines.contains(OPENED); }));
        m_trace.lines.clear();
        return serial;
    }
    static QTimer& RetryTimer(const SerialInterface& serial) { return *serial.findChild<QTimer*>(); }
    static bool Write(SerialInterface& serial, const QByteArray& bytes) {
        return serial.WriteToInterface(bytes.constData(), static_cast<int>(bytes.size()));
    }
    [[nodiscard]] qsizetype CountAttempts() const {
        return m_trace.lines.filter(u"cannot be opened"_s).size();
    }

    TraceLines m_trace;
    // Addresses name paths below "/dev/" only.
    QTemporaryDir m_directory{u"/dev/shm/zanserial-XXXXXX"_s};
    QString m_link = m_directory.filePath(u"line"_s);
};

TEST_F(SerialInterfaceTest, OpensItsAddressAtOnceAndSends) {
    const PseudoTerminal line;
    PlugIn(line);
    const auto serial = Make();
    EXPECT_TRUE(serial->Open());
    EXPECT_FALSE(RetryTimer(*serial).isActive());
    EXPECT_TRUE(Write(*serial, "$PLG,1\r\n"));
    EXPECT_TRUE(Write(*serial, "$PLG,2\r\n"));
    QByteArray received;
    EXPECT_TRUE(SpinUntil([&] { return (received += line.Read()).size() >= 16; }));
    EXPECT_EQ(received, "$PLG,1\r\n$PLG,2\r\n");
    EXPECT_EQ(m_trace.lines, QStringList(OPENED));
}

TEST_F(SerialInterfaceTest, WithoutAPortOpenFailsAndIsRetriedUntilThePortIsThere) {
    const auto serial = Make();
    EXPECT_FALSE(serial->Open());
    EXPECT_TRUE(RetryTimer(*serial).isActive());
    EXPECT_FALSE(RetryTimer(*serial).isSingleShot());
    EXPECT_TRUE(SpinUntil([this] { return CountAttempts() >= 5; }));
    const PseudoTerminal line;
    PlugIn(line);
    EXPECT_TRUE(SpinUntil([this] { return m_trace.lines.contains(OPENED); }));
    EXPECT_FALSE(RetryTimer(*serial).isActive());
    EXPECT_TRUE(Write(*serial, "$PLG"));
    EXPECT_TRUE(SpinUntil([&] { return line.Read() == "$PLG"; }));
}

TEST_F(SerialInterfaceTest, RetriesFollowEachOtherInTheGivenInterval) {
    const auto serial = Make(5000);
    EXPECT_TRUE(RetryTimer(*serial).isActive());
    EXPECT_EQ(RetryTimer(*serial).interval(), 5000);
    EXPECT_EQ(RetryTimer(*serial).parent(), serial.get());
}

TEST_F(SerialInterfaceTest, FurtherFailuresDoNotPutOffTheNextRetry) {
    const auto serial = Make(60000);
    const int timerId = RetryTimer(*serial).timerId();
    EXPECT_FALSE(serial->Open());
    EXPECT_EQ(RetryTimer(*serial).timerId(), timerId); // another one after a new start
}

TEST_F(SerialInterfaceTest, UnpluggedPortIsDroppedAndFoundAgainWhenItIsBack) {
    PseudoTerminal line;
    const auto serial = MakeOpen(line);
    QFile::remove(m_link);
    line.Unplug();
    EXPECT_TRUE(SpinUntil([this] { return m_trace.lines.contains(FAILED); }));
    EXPECT_TRUE(RetryTimer(*serial).isActive());
    EXPECT_FALSE(Write(*serial, "$PLG"));
    EXPECT_TRUE(SpinUntil([this] { return CountAttempts() >= 2; }));

    const PseudoTerminal other;
    PlugIn(other);
    EXPECT_TRUE(SpinUntil([this] { return m_trace.lines.contains(OPENED); }));
    EXPECT_FALSE(RetryTimer(*serial).isActive());
    EXPECT_TRUE(Write(*serial, "$PLG"));
    EXPECT_TRUE(SpinUntil([&] { return other.Read() == "$PLG"; }));
    EXPECT_EQ(m_trace.lines.count(FAILED), 1);
}

TEST_F(SerialInterfaceTest, LineThatIsUnpluggedAHundredTimesWorksEachTimeItIsBack) {
    auto first = std::make_unique<PseudoTerminal>();
    const auto serial = MakeOpen(*first);
    std::unique_ptr<PseudoTerminal> line = std::move(first);
    for (int plug = 0; plug < 100; ++plug) {
        line->Unplug();
        ASSERT_TRUE(SpinUntil([this] { return m_trace.lines.contains(FAILED); })) << "unplugged " << plug;
        m_trace.lines.clear();
        line = std::make_unique<PseudoTerminal>();
        PlugIn(*line);
        ASSERT_TRUE(SpinUntil([this] { return m_trace.lines.contains(OPENED); })) << "plugged in " << plug;
        m_trace.lines.clear();
        const QByteArray text = "sentence " + QByteArray::number(plug);
        ASSERT_TRUE(Write(*serial, text));
        QByteArray received;
        ASSERT_TRUE(SpinUntil([&] { return (received += line->Read()) == text; })) << received.toStdString();
    }
}

TEST_F(SerialInterfaceTest, EventLoopIsIdleWhileThePortIsGone) {
    PseudoTerminal line;
    const auto serial = MakeOpen(line);
    QFile::remove(m_link);
    line.Unplug();
    EXPECT_TRUE(SpinUntil([this] { return m_trace.lines.contains(FAILED); }));
    EXPECT_LT(CountWakeUps(), FEW_WAKE_UPS);
}

TEST_F(SerialInterfaceTest, WriteWhileClosedReturnsFalseWithoutATraceLine) {
    const auto serial = Make(60000);
    m_trace.lines.clear();
    EXPECT_FALSE(Write(*serial, "$PLG"));
    EXPECT_TRUE(m_trace.lines.isEmpty());
}

TEST_F(SerialInterfaceTest, WriteToALineThatIsNotReadyReturnsFalseWithoutATraceLine) {
    const PseudoTerminal line; // that nobody reads
    const auto serial = MakeOpen(line);
    const QByteArray sentence(100, 'x');
    EXPECT_TRUE(SpinUntil([&] { return !Write(*serial, sentence); }));
    EXPECT_TRUE(m_trace.lines.isEmpty());
    EXPECT_TRUE(SpinUntil([&] { return !line.Read().isEmpty() && Write(*serial, sentence); }));
    EXPECT_TRUE(m_trace.lines.isEmpty());
}

TEST_F(SerialInterfaceTest, IncomingDataIsTracedAndIgnored) {
    const PseudoTerminal line;
    const auto serial = MakeOpen(line);
    EXPECT_EQ(line.Write("hello"), 5);
    EXPECT_TRUE(SpinUntil([this] { return !m_trace.lines.isEmpty(); }));
    EXPECT_EQ(m_trace.lines.first(), DATA_CAME);
    EXPECT_TRUE(Write(*serial, "$PLG"));
}

TEST_F(SerialInterfaceTest, CloseNoticeAloneChangesNothing) {
    const PseudoTerminal line;
    const auto serial = MakeOpen(line);
    serial->OnClose();
    EXPECT_EQ(m_trace.lines, QStringList(CLOSED));
    EXPECT_FALSE(RetryTimer(*serial).isActive());
    EXPECT_TRUE(Write(*serial, "$PLG"));
}

TEST_F(SerialInterfaceTest, NoticesAreTracedOnlyWhenTheMaskWantsThem) {
    const auto serial = Make(60000);
    m_trace.lines.clear();
    const unsigned mask = ErrorHandler::Instance().GetTraceMask();
    ErrorHandler::Instance().SetTraceMask(mask & ~TraceBit::INFORMATION);
    serial->OnOpen();
    serial->OnClose();
    serial->OnRead();
    serial->OnError();
    EXPECT_TRUE(m_trace.lines.isEmpty());
    ErrorHandler::Instance().SetTraceMask(mask);
    serial->OnOpen();
    serial->OnClose();
    serial->OnRead();
    serial->OnError();
    EXPECT_EQ(m_trace.lines, QStringList({OPENED, CLOSED, DATA_CAME, FAILED}));
}

TEST_F(SerialInterfaceTest, MetaObjectHasTheSlotOfTheTimer) {
    const QMetaObject& meta = SerialInterface::staticMetaObject;
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 1);
    EXPECT_EQ(meta.method(meta.methodOffset()).methodSignature(), "SlotOnTimer()");
    EXPECT_EQ(meta.method(meta.methodOffset()).methodType(), QMetaMethod::Slot);
}

} // namespace
