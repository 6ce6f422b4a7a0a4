#include "connections/interfacecreator.h"

#include "connections/iinterface.h"
#include "connections/iinterfacecallback.h"
#include "support/eventloop.h"
#include "support/fewdescriptors.h"
#include "support/fixedbaudrate.h"
#include "support/fulldisk.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "support/tracelines.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <termios.h>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int MAX_WAITING_BYTES = 4096;

class Callback final : public IInterfaceCallback {
public:
    virtual ~Callback() = default;

    void OnOpen() override { Count(opens, onOpen); }
    void OnClose() override { ++closes; }
    void OnRead() override { Count(reads, onRead); }
    void OnError() override { Count(errors, onError); }
    void OnWritten() override { Count(writtens, onWritten); }

    [[nodiscard]] int Calls() const { return opens + closes + reads + errors + writtens; }

    int opens = 0;
    int closes = 0;
    int reads = 0;
    int errors = 0;
    int writtens = 0;
    std::function<void()> onOpen;
    std::function<void()> onRead;
    std::function<void()> onWritten;
    std::function<void()> onError;

private:
    static void Count(int& counter, const std::function<void()>& action) {
        ++counter;
        if (action) {
            action();
        }
    }
};

// Does something right before the first queued call of an object.
class BeforeQueuedCall final : public QObject {
public:
    explicit BeforeQueuedCall(std::function<void()> action)
        : m_action(std::move(action)) {}

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::MetaCall && m_action) {
            std::exchange(m_action, {})();
        }
        return false;
    }

private:
    std::function<void()> m_action;
};

class InterfaceCreatorTest : public testing::Test {
protected:
    std::unique_ptr<IInterface> Create(const QString& address) {
        return std::unique_ptr<IInterface>(
            CInterfaceCreator::CreateInterface(address, &m_callback, 10000, false));
    }
    std::unique_ptr<IInterface> Open() {
        std::unique_ptr<IInterface> pInterface = Create(m_line.path + u":9600,n,8,1"_s);
        EXPECT_TRUE(pInterface);
        EXPECT_TRUE(SpinUntil([&] { return m_callback.opens == 1; }));
        return pInterface;
    }

    TraceLines m_trace;
    PseudoTerminal m_line;
    Callback m_callback;
};

TEST_F(InterfaceCreatorTest, BytesArriveAtTheOtherEndAsTheyWereWritten) {
    const auto pInterface = Open();
    QByteArray bytes = "$PLG,1,FRQ,2\r\n";
    for (int i = 0; i < 256; ++i) {
        bytes += static_cast<char>(i);
    }
    const int length = static_cast<int>(bytes.size());
    EXPECT_TRUE(pInterface->IsReadyToWrite(bytes.constData(), length));
    EXPECT_TRUE(pInterface->Write(bytes.constData(), length));
    QByteArray received;
    EXPECT_TRUE(SpinUntil([&] {
        received += m_line.Read();
        return received.size() >= bytes.size() && m_callback.writtens > 0;
    }));
    EXPECT_EQ(received, bytes);
    EXPECT_EQ(m_callback.errors, 0);
}

TEST_F(InterfaceCreatorTest, NoCallbackComesFromInsideAnOperation) {
    const auto pInterface = Create(m_line.path + u":9600,n,8,1"_s);
    ASSERT_TRUE(pInterface);
    EXPECT_EQ(m_callback.Calls(), 0);
    EXPECT_TRUE(SpinUntil([&] { return m_callback.opens == 1; }));
    m_line.Unplug();
    pInterface->Write("x", 1);
    EXPECT_EQ(m_callback.Calls(), 1);
}

TEST_F(InterfaceCreatorTest, IncomingDataIsReportedAndDiscarded) {
    const auto pInterface = Open();
    const QByteArray bytes(1000, 'x');
    qint64 sent = 0;
    EXPECT_TRUE(SpinUntil([&] { // far more than the line's own buffers hold
        sent += std::max<qint64>(m_line.Write(bytes), 0);
        return sent >= 1000000;
    }));
    EXPECT_GT(m_callback.reads, 0);
    EXPECT_TRUE(SpinUntil([&] { return CountWakeUps() < FEW_WAKE_UPS; }));
    EXPECT_EQ(m_callback.errors, 0);
}

TEST_F(InterfaceCreatorTest, UnpluggedPortIsOneErrorAndNoSpin) {
    for (const bool isSending : {false, true}) {
        SCOPED_TRACE(isSending);
        PseudoTerminal line;
        Callback callback;
        const std::unique_ptr<IInterface> pInterface(
            CInterfaceCreator::CreateInterface(line.path, &callback, 10000, false));
        ASSERT_TRUE(pInterface);
        if (isSending) {
            while (pInterface->Write("sentence", 8)) {
                QCoreApplication::processEvents();
            }
        }
        line.Unplug();
        EXPECT_TRUE(SpinUntil([&] { return callback.errors > 0; }));
        EXPECT_LT(CountWakeUps(), FEW_WAKE_UPS);
        EXPECT_EQ(callback.errors, 1);
        EXPECT_EQ(callback.closes, 0);
        EXPECT_FALSE(pInterface->IsReadyToWrite("x", 1));
        EXPECT_FALSE(pInterface->Write("x", 1));
        EXPECT_TRUE(m_trace.lines.value(m_trace.lines.size() - 1).contains(line.path.sliced(5)));
    }
}

TEST_F(InterfaceCreatorTest, SlowReaderTurnsReadinessOffUntilThereIsRoomAgain) {
    const auto pInterface = Open();
    const QByteArray sentence = "$PLG,1,FRQ,145000000,CMP,1234\r\n";
    const int length = static_cast<int>(sentence.size());
    int written = 0;
    EXPECT_TRUE(SpinUntil([&] {
        while (pInterface->IsReadyToWrite(sentence.constData(), length)) {
            EXPECT_TRUE(pInterface->Write(sentence.constData(), length));
            ++written;
        }
        // The line itself takes up some of it, and only then it is full.
        return CountWakeUps() < FEW_WAKE_UPS && !pInterface->IsReadyToWrite(sentence.constData(), length);
    }));
    EXPECT_FALSE(pInterface->Write(sentence.constData(), length));
    EXPECT_GE(written, MAX_WAITING_BYTES / length);
    EXPECT_LT(written * length, 200000); // what the line's own buffers and the interface can hold

    const int writtens = m_callback.writtens;
    QByteArray received;
    EXPECT_TRUE(SpinUntil([&] {
        received += m_line.Read();
        return received.size() >= static_cast<qsizetype>(written) * length;
    }));
    EXPECT_EQ(received, sentence.repeated(written));
    EXPECT_TRUE(SpinUntil([&] { return m_callback.writtens > writtens; }));
    EXPECT_TRUE(pInterface->IsReadyToWrite(sentence.constData(), MAX_WAITING_BYTES));
    EXPECT_EQ(m_callback.errors, 0);
}

TEST_F(InterfaceCreatorTest, WrittenIsReportedWhenNothingWaitsAnyMoreAndNotBefore) {
    const auto pInterface = Open();
    bool hasWaited = false;
    m_callback.onWritten = [&] { hasWaited = hasWaited || pInterface->GetUnsentCount() > 0; };
    // More is written while the notice of what was sent is on its way.
    BeforeQueuedCall filter([&] { EXPECT_TRUE(pInterface->Write("second", 6)); });
    dynamic_cast<QObject&>(*pInterface).installEventFilter(&filter);
    EXPECT_TRUE(pInterface->Write("first", 5));
    EXPECT_TRUE(SpinUntil([&] { return m_callback.writtens > 0; }));
    EXPECT_FALSE(hasWaited);
    EXPECT_EQ(m_callback.writtens, 1);
    EXPECT_EQ(m_line.Read(11), "firstsecond");
}

TEST_F(InterfaceCreatorTest, WhatAnUnpluggedPortHasNotSentIsCounted) {
    const LineStop line(m_line);
    const auto pInterface = Open();
    line.Stop();
    EXPECT_TRUE(pInterface->Write("sentence", 8));
    QCoreApplication::processEvents();
    EXPECT_EQ(pInterface->GetUnsentCount(), 8);
    m_line.Unplug();
    EXPECT_TRUE(SpinUntil([&] { return m_callback.errors == 1; }));
    EXPECT_EQ(pInterface->GetUnsentCount(), 8);
}

TEST_F(InterfaceCreatorTest, FinishedInterfaceHasSentWhatWaitedAndTakesNothingMore) {
    const auto pInterface = Open();
    EXPECT_TRUE(pInterface->Write("sentence", 8));
    EXPECT_EQ(pInterface->GetUnsentCount(), 8);
    pInterface->Finish();
    EXPECT_EQ(pInterface->GetUnsentCount(), 0);
    EXPECT_EQ(m_line.Read(8), "sentence");
    EXPECT_FALSE(pInterface->IsReadyToWrite("x", 1));
    EXPECT_FALSE(pInterface->Write("x", 1));
    pInterface->Finish();
    EXPECT_EQ(pInterface->GetUnsentCount(), 0);
}

TEST_F(InterfaceCreatorTest, PortThatCannotBeOpenedForWantOfResourcesIsReportedSo) {
    EXPECT_TRUE(Create(m_line.path));
    {
        const FewDescriptors none(0);
        EXPECT_FALSE(Create(m_line.path));
    }
    EXPECT_TRUE(m_trace.lines.value(0).endsWith(u": Too many open files."_s))
        << m_trace.lines.value(0).toStdString();
    m_trace.lines.clear();
    {
        const FullDisk disk(0);
        EXPECT_FALSE(Create(m_line.path));
    }
    EXPECT_TRUE(m_trace.lines.value(0).endsWith(u": File too large."_s))
        << m_trace.lines.value(0).toStdString();
    EXPECT_TRUE(Create(m_line.path));
}

TEST_F(InterfaceCreatorTest, DataIsTakenAsAWholeOrNotAtAll) {
    const auto pInterface = Open();
    const QByteArray bytes(MAX_WAITING_BYTES + 1, 'x');
    EXPECT_FALSE(pInterface->IsReadyToWrite(bytes.constData(), MAX_WAITING_BYTES + 1));
    EXPECT_FALSE(pInterface->Write(bytes.constData(), MAX_WAITING_BYTES + 1));
    EXPECT_FALSE(pInterface->Write(bytes.constData(), std::numeric_limits<int>::max()));
    EXPECT_FALSE(pInterface->Write(bytes.constData(), -1));
    EXPECT_FALSE(pInterface->Write(nullptr, 1));
    EXPECT_TRUE(pInterface->Write(bytes.constData(), 0));
    EXPECT_TRUE(pInterface->Write(bytes.constData(), MAX_WAITING_BYTES));
    EXPECT_FALSE(pInterface->Write(bytes.constData(), 1));
}

TEST_F(InterfaceCreatorTest, CallbackMayDestroyTheInterface) {
    std::unique_ptr<IInterface> pInterface;
    m_callback.onError = [&] { pInterface.reset(); };
    pInterface = Open();
    m_line.Unplug();
    EXPECT_TRUE(SpinUntil([&] { return !pInterface; }));
    EXPECT_LT(CountWakeUps(), FEW_WAKE_UPS);
    EXPECT_EQ(m_callback.errors, 1);

    PseudoTerminal line;
    Callback callback;
    callback.onOpen = [&] { pInterface.reset(); };
    pInterface.reset(CInterfaceCreator::CreateInterface(line.path, &callback, 0, false));
    ASSERT_TRUE(pInterface);
    EXPECT_TRUE(SpinUntil([&] { return !pInterface; }));

    callback.onOpen = {};
    callback.onRead = [&] { pInterface.reset(); };
    pInterface.reset(CInterfaceCreator::CreateInterface(line.path, &callback, 0, false));
    ASSERT_TRUE(pInterface);
    EXPECT_EQ(line.Write("x"), 1);
    EXPECT_TRUE(SpinUntil([&] { return !pInterface; }));
    EXPECT_EQ(callback.reads, 1);
}

TEST_F(InterfaceCreatorTest, DestroyedInterfaceCallsNobody) {
    auto pInterface = Create(m_line.path);
    ASSERT_TRUE(pInterface);
    pInterface->Write("x", 1);
    EXPECT_EQ(m_line.Write("x"), 1);
    pInterface.reset();
    m_line.Unplug();
    // When another one hears of what happens later, all that waited before is through.
    PseudoTerminal later;
    Callback laterCallback;
    const std::unique_ptr<IInterface> pLater(
        CInterfaceCreator::CreateInterface(later.path, &laterCallback, 10000, false));
    ASSERT_TRUE(pLater);
    later.Unplug();
    EXPECT_TRUE(SpinUntil([&laterCallback] { return laterCallback.errors == 1; }));
    EXPECT_EQ(m_callback.Calls(), 0);
}

TEST_F(InterfaceCreatorTest, WhatWasTakenIsSentBeforeTheInterfaceIsGone) {
    auto pInterface = Open();
    const QByteArray sentence = "$PLG,1,FRQ,145000000,CMP,1234\r\n";
    EXPECT_TRUE(pInterface->Write(sentence.constData(), static_cast<int>(sentence.size())));
    pInterface.reset();
    EXPECT_EQ(m_line.Read(sentence.size()), sentence);
}

TEST_F(InterfaceCreatorTest, LineThatStandsStillDoesNotHoldUpTheDestruction) {
    auto pInterface = Open();
    const QByteArray bytes(MAX_WAITING_BYTES, 'x');
    EXPECT_TRUE(SpinUntil([&] { // nobody reads
        pInterface->Write(bytes.constData(), MAX_WAITING_BYTES);
        return CountWakeUps() < FEW_WAKE_UPS &&
               !pInterface->IsReadyToWrite(bytes.constData(), MAX_WAITING_BYTES);
    }));
    QElapsedTimer timer;
    timer.start();
    pInterface.reset();
    EXPECT_LT(timer.elapsed(), 10000);
    EXPECT_EQ(m_callback.errors, 0);
}

TEST_F(InterfaceCreatorTest, PortIsUsedByOneAndFreeAgainWhenTheInterfaceIsDestroyed) {
    auto pInterface = Open();
    EXPECT_FALSE(Create(m_line.path));
    EXPECT_TRUE(m_trace.lines.value(m_trace.lines.size() - 1).contains(m_line.path));
    pInterface.reset();
    EXPECT_TRUE(Create(m_line.path));
}

TEST_F(InterfaceCreatorTest, PortThatFailedCanBeOpenedAgainWhenItIsBack) {
    const QString path = m_line.path;
    auto pInterface = Open();
    m_callback.onError = [&] { pInterface.reset(); };
    m_line.Unplug();
    EXPECT_TRUE(SpinUntil([&] { return !pInterface; }));
    // A port keeps its path when it comes back. A pseudo terminal gets the lowest number that is free.
    std::unique_ptr<PseudoTerminal> pBack;
    ASSERT_TRUE(SpinUntil([&] {
        pBack.reset();
        pBack = std::make_unique<PseudoTerminal>();
        return pBack->path == path;
    }));
    pInterface = Create(path);
    ASSERT_TRUE(pInterface);
    EXPECT_TRUE(SpinUntil([&] { return m_callback.opens == 2; }));
    EXPECT_TRUE(pInterface->Write("x", 1));
    EXPECT_TRUE(SpinUntil([&] { return pBack->Read() == "x"; }));
}

TEST_F(InterfaceCreatorTest, LineIsSetUpAsTheAddressSaysAndMissingPartsHaveDefaults) {
    struct Row {
        QString parts;
        speed_t baudRate;
        bool hasTwoStopBits;
    };
    const std::vector<Row> rows = {
        {u""_s, B9600, false},
        {u":"_s, B9600, false},
        {u":19200"_s, B19200, false},
        {u":,N,8,2"_s, B9600, true},
        {u":,,,"_s, B9600, false},
        {u": 115200 , n , 8 , 2 "_s, B115200, true},
        {u":4800,n,8,1"_s, B4800, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.parts.toStdString());
        const auto pInterface = Create(m_line.path + row.parts);
        ASSERT_TRUE(pInterface);
        const termios settings = m_line.Settings();
        EXPECT_EQ(cfgetospeed(&settings), row.baudRate);
        EXPECT_EQ((settings.c_cflag & CSTOPB) != 0, row.hasTwoStopBits);
        EXPECT_EQ(settings.c_cflag & CSIZE, tcflag_t{CS8});
        EXPECT_EQ(settings.c_cflag & (PARENB | CRTSCTS), 0U);
        EXPECT_EQ(settings.c_iflag & (IXON | IXOFF), 0U);
    }
}

TEST_F(InterfaceCreatorTest, RateThatTheDriverDoesNotTakeIsAFailureToOpen) {
    for (const QString& rate : {u"999999999"_s, u"250000"_s}) {
        fixedBaudRate = 9600;
        ASSERT_FALSE(Create(m_line.path + u':' + rate));
        EXPECT_TRUE(
            m_trace.lines.last().endsWith(m_line.path + u": it runs at 9600 baud, not at "_s + rate + u'.'))
            << m_trace.lines.last().toStdString();
        fixedBaudRate = 0;
        EXPECT_TRUE(Create(m_line.path + u':' + rate))
            << "it is free again, and a line that takes any rate opens";
    }
    fixedBaudRate = 116000; // as dividers of its clock give it
    EXPECT_TRUE(Create(m_line.path + u":115200"_s));
    fixedBaudRate = 0;
}

TEST_F(InterfaceCreatorTest, ParityAndStopBitsAreSet) {
    // A pseudo terminal always has 8 data bits and no parity, but it shows which parity was asked for.
    constexpr tcflag_t SHOWN = PARODD | CMSPAR | CSTOPB;
    struct Row {
        QString parts;
        tcflag_t flags;
    };
    const std::vector<Row> rows = {
        {u":9600,e,8,1"_s, 0},      {u":9600,O,8,1"_s, PARODD}, {u":9600,m,8,1"_s, CMSPAR | PARODD},
        {u":9600,s,8,1"_s, CMSPAR}, {u":9600,e,7,2"_s, CSTOPB}, {u":9600,n,5,1.5"_s, CSTOPB},
        {u":9600,n,5,1"_s, 0},
    };
    for (const Row& row : rows) {
        const auto pInterface = Create(m_line.path + row.parts);
        ASSERT_TRUE(pInterface) << row.parts.toStdString();
        EXPECT_EQ(m_line.Settings().c_cflag & SHOWN, row.flags) << row.parts.toStdString();
    }
}

TEST_F(InterfaceCreatorTest, NumberedPortIsTheSystemsSerialPort) {
    struct Row {
        QString address;
        QString port;
    };
    const std::vector<Row> rows = {{u"COM77:9600,e,8,1"_s, u"/dev/ttyS76"_s},
                                   {u"com256"_s, u"/dev/ttyS255"_s},
                                   {u"COM099:9600,s,7,2"_s, u"/dev/ttyS98"_s}};
    for (const Row& row : rows) {
        EXPECT_FALSE(Create(row.address));
        EXPECT_TRUE(m_trace.lines.value(m_trace.lines.size() - 1)
                        .contains(u"The interface \""_s + row.address + u"\" cannot be opened: "_s +
                                  row.port + u": "_s))
            << m_trace.lines.value(m_trace.lines.size() - 1).toStdString();
    }
}

TEST_F(InterfaceCreatorTest, MalformedAddressIsRefusedAndThePartIsNamed) {
    struct Row {
        QString address;
        QString reason;
    };
    const QString port = u"the port is neither \"COM1\" to \"COM256\" nor a path below \"/dev/\"."_s;
    const QString baudRate = u"the baud rate is not a positive number."_s;
    const QString parity = u"the parity is not one of n, e, o, m, s."_s;
    const QString dataBits = u"the data bits are not 5 to 8."_s;
    const QString stopBits = u"the stop bits are not one of 1, 1.5, 2."_s;
    const QString stopBitsOfData =
        u"the stop bits do not fit the data bits: 1.5 needs 5, and 2 needs 6 to 8."_s;
    const std::vector<Row> rows = {
        {u""_s, port},
        {u":"_s, port},
        {u":9600,e,8,1"_s, port},
        {u"COM:9600"_s, port},
        {u"COM0:9600"_s, port},
        {u"COM257:9600"_s, port},
        {u"COM99999999999999999999"_s, port},
        {u"COM-1:9600"_s, port},
        {u"COM 1:9600"_s, port},
        {u"COM1x:9600"_s, port},
        {u"ttyS0:9600"_s, port},
        {u"/etc/passwd:9600"_s, port},
        {u"/dev/../etc/passwd:9600"_s, port},
        {u"/dev/ttyS0"_s + QChar::Null + u":9600"_s, port},
        {u"/dev/tty\nS0:9600"_s, port},
        {u"/dev/"_s + QChar(0xD800), port},
        {u"tcp:host:80"_s, port},
        {u"COM1:fast"_s, baudRate},
        {u"COM1:0"_s, baudRate},
        {u"COM1:-9600"_s, baudRate},
        {u"COM1:+9600"_s, baudRate},
        {u"COM1:9600.5"_s, baudRate},
        {u"COM1:99999999999"_s, baudRate},
        {u"/dev/serial/by-path/pci-0000:00:14.0-port0"_s, baudRate},
        {u"COM1:9600,x"_s, parity},
        {u"COM1:9600,none"_s, parity},
        {u"COM1:9600,e,9"_s, dataBits},
        {u"COM1:9600,e,4"_s, dataBits},
        {u"COM1:9600,e,08"_s, dataBits},
        {u"COM1:9600,e,8,3"_s, stopBits},
        {u"COM1:9600,e,8,1,5"_s, u"there is text after the stop bits."_s},
        {u"COM1:9600,e,8,1,"_s, u"there is text after the stop bits."_s},
        {u"COM1:9600,e,8,1.5"_s, stopBitsOfData},
        {u"COM1:9600,e,5,2"_s, stopBitsOfData},
        {u"%1%2:%3"_s, port},
        {QString(1000000, u':'), port},
        {u"COM1:"_s + QString(1000000, u','), u"there is text after the stop bits."_s},
    };
    for (const Row& row : rows) {
        m_trace.lines.clear();
        EXPECT_FALSE(Create(row.address)) << row.address.left(80).toStdString();
        ASSERT_EQ(m_trace.lines.size(), 1);
        EXPECT_TRUE(m_trace.lines[0].endsWith(u"The interface \""_s + row.address +
                                              u"\" cannot be opened: "_s + row.reason))
            << m_trace.lines[0].left(300).toStdString();
    }
}

TEST_F(InterfaceCreatorTest, AddressIsCheckedWithoutOpeningIt) {
    EXPECT_EQ(CInterfaceCreator::CheckAddress(u"/dev/no-such-line:9600,n,8,1"_s), QString());
    EXPECT_EQ(CInterfaceCreator::CheckAddress(u"COM1"_s), QString());
    EXPECT_EQ(CInterfaceCreator::CheckAddress(u"/etc/passwd"_s),
              u"the port is neither \"COM1\" to \"COM256\" nor a path below \"/dev/\""_s);
    EXPECT_EQ(CInterfaceCreator::CheckAddress(u"COM1:fast"_s), u"the baud rate is not a positive number"_s);
}

TEST_F(InterfaceCreatorTest, DeviceThatIsNoSerialPortIsRefused) {
    for (const QString& address : {u"/dev/null:9600"_s, u"/dev/no such port"_s, u"/dev/"_s}) {
        EXPECT_FALSE(Create(address));
        EXPECT_TRUE(
            m_trace.lines.value(m_trace.lines.size() - 1).contains(address.section(u':', 0, 0) + u": "_s));
    }
}

TEST_F(InterfaceCreatorTest, InterfaceWithoutACallbackIsRefused) {
    EXPECT_EQ(CInterfaceCreator::CreateInterface(m_line.path, nullptr, 0, false), nullptr);
    EXPECT_TRUE(m_trace.lines.value(0).contains(u"there is no callback"));
}

} // namespace
