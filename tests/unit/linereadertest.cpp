#include "zancommon/linereader.h"
#include "support/fifo.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <sys/socket.h>

#include <array>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using KvZANCommon::LineReader;

namespace {

/// The lines up to the end, "TOO LONG" for one that is too long.
QStringList ReadAll(LineReader& reader) {
    QStringList lines;
    std::string_view line;
    for (;;) {
        switch (reader.Next(line)) {
        case LineReader::Result::Complete:
            lines.append(QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())));
            break;
        case LineReader::Result::TooLong:
            lines.append(u"TOO LONG"_s);
            break;
        case LineReader::Result::End:
            return lines;
        }
    }
}

/// Two connected sockets: one for the reader, one for the test.
class SocketPair {
public:
    explicit SocketPair(int type) {
        EXPECT_EQ(socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, m_ends.data()), 0);
    }
    SocketPair(const SocketPair&) = delete;
    SocketPair& operator=(const SocketPair&) = delete;
    ~SocketPair() { CloseFarEnd(); }

    /// The reader takes possession of it.
    [[nodiscard]] int NearEnd() const { return m_ends[0]; }
    void Send(const QByteArray& bytes) const {
        EXPECT_EQ(send(m_ends[1], bytes.constData(), static_cast<std::size_t>(bytes.size()), 0),
                  bytes.size());
    }
    void CloseFarEnd() {
        if (m_ends[1] >= 0) {
            close(std::exchange(m_ends[1], -1));
        }
    }

private:
    std::array<int, 2> m_ends{-1, -1};
};

} // namespace

TEST(LineReader, LinesOfASocketComeUntilTheOtherEndClosesIt) {
    SocketPair sockets(SOCK_STREAM);
    LineReader reader;
    ASSERT_TRUE(reader.Adopt(sockets.NearEnd()));
    sockets.Send("one\r\ntwo\n");
    sockets.Send("three");
    sockets.CloseFarEnd();
    EXPECT_EQ(ReadAll(reader), (QStringList{u"one"_s, u"two"_s, u"three"_s}));
    EXPECT_EQ(reader.GetErrorText(), QString());
    EXPECT_EQ(reader.GetLineNumber(), 3U);
}

TEST(LineReader, LastLineTellsThatItHasNoEnd) {
    SocketPair sockets(SOCK_STREAM);
    LineReader reader;
    ASSERT_TRUE(reader.Adopt(sockets.NearEnd()));
    sockets.Send(QByteArray(9000, 'a') + "\none\r\ntwo");
    sockets.CloseFarEnd();
    std::string_view line;
    ASSERT_EQ(reader.Next(line), LineReader::Result::TooLong);
    EXPECT_FALSE(reader.HasLineEnd());
    ASSERT_EQ(reader.Next(line), LineReader::Result::Complete);
    EXPECT_TRUE(reader.HasLineEnd());
    ASSERT_EQ(reader.Next(line), LineReader::Result::Complete);
    EXPECT_EQ(line, "two");
    EXPECT_FALSE(reader.HasLineEnd());
}

TEST(LineReader, DatagramsAreWholeLines) {
    SocketPair sockets(SOCK_DGRAM);
    LineReader reader;
    ASSERT_TRUE(reader.Adopt(sockets.NearEnd()));
    sockets.Send("one\ntwo");
    sockets.Send("three\n");
    sockets.Send("");
    sockets.Send("four");
    std::string_view line;
    QStringList lines;
    while (reader.IsHere() && reader.Next(line) == LineReader::Result::Complete) {
        lines.append(QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())));
    }
    EXPECT_EQ(lines, (QStringList{u"one"_s, u"two"_s, u"three"_s, QString(u""_s), u"four"_s}));
}

TEST(LineReader, LineThatIsTooLongIsSkippedToItsEnd) {
    SocketPair sockets(SOCK_STREAM);
    LineReader reader;
    ASSERT_TRUE(reader.Adopt(sockets.NearEnd()));
    sockets.Send(QByteArray(LineReader::MAX_LENGTH, 'a') + '\n' + QByteArray(9000, 'b') + "\nshort\n");
    sockets.CloseFarEnd();
    const QStringList lines = ReadAll(reader);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0].size(), static_cast<qsizetype>(LineReader::MAX_LENGTH));
    EXPECT_EQ(lines[1], u"TOO LONG"_s);
    EXPECT_EQ(lines[2], u"short"_s);
}

TEST(LineReader, SerialLineIsReadFromTheFirstWholeLineOn) {
    const PseudoTerminal terminal;
    LineReader reader;
    ASSERT_TRUE(reader.OpenSerialLine(terminal.path + u":115200,n,8,1"_s))
        << reader.GetErrorText().toStdString();
    EXPECT_GT(terminal.Write("5678,broken\nwhole\n"), 0);
    std::string_view line;
    ASSERT_EQ(reader.Next(line), LineReader::Result::Complete);
    EXPECT_EQ(line, "whole");
    EXPECT_EQ(cfgetispeed(std::array{terminal.Settings()}.data()), static_cast<speed_t>(B115200));
}

TEST(LineReader, SerialLineThatIsUnpluggedEnds) {
    PseudoTerminal terminal;
    LineReader reader;
    ASSERT_TRUE(reader.OpenSerialLine(terminal.path));
    terminal.Unplug();
    EXPECT_EQ(ReadAll(reader), QStringList());
}

TEST(LineReader, SerialAddressThatIsMalformedIsRefusedWithTheReason) {
    LineReader reader;
    EXPECT_FALSE(reader.OpenSerialLine(u"/dev/ttyS0:fast"_s));
    EXPECT_EQ(reader.GetErrorText(), u"cannot be opened: the baud rate is not a positive number"_s);
    EXPECT_FALSE(reader.IsOpen());
}

TEST(LineReader, InterruptionEndsWaitingForALine) {
    SocketPair sockets(SOCK_STREAM);
    LineReader reader;
    ASSERT_TRUE(reader.Adopt(sockets.NearEnd()));
    sockets.Send("half a l");
    std::thread other([&reader] { reader.Interrupt(); });
    EXPECT_EQ(ReadAll(reader), QStringList());
    other.join();
    reader.Resume();
    sockets.Send("ine\n");
    std::string_view line;
    ASSERT_EQ(reader.Next(line), LineReader::Result::Complete);
    EXPECT_EQ(line, "half a line");
}

TEST(LineReader, FileBeginsAnewWhenItIsOpenedAgain) {
    const QTemporaryDir directory;
    QFile file(directory.filePath(u"lines"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("one\ntwo\n");
    file.close();
    LineReader reader;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(reader.OpenFile(file.fileName()));
        EXPECT_EQ(reader.GetProgress(), 0.0);
        EXPECT_EQ(ReadAll(reader), (QStringList{u"one"_s, u"two"_s}));
        EXPECT_EQ(reader.GetProgress(), 1.0);
        EXPECT_EQ(reader.GetLineNumber(), 2U);
    }
    reader.Close();
    EXPECT_FALSE(reader.IsOpen());
    std::string_view line;
    EXPECT_EQ(reader.Next(line), LineReader::Result::End);
}
