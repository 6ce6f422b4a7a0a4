#include "kwbase/standardstream.h"

#include "support/sleepingthread.h"
#include "support/tinypipe.h"

#include <gtest/gtest.h>

#include <QTemporaryFile>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

TEST(StandardStream, TextIsThereWhenTheWriteReturns) {
    const TinyPipe pipe;
    StandardStream stream(pipe.WriteEnd());
    EXPECT_EQ(stream.Write("one\n", 0ms), 4U);
    EXPECT_EQ(pipe.Read(), "one\n");
    EXPECT_EQ(stream.Write("two\n", 0ms), 4U);
    EXPECT_EQ(pipe.Read(), "two\n");
    EXPECT_EQ(stream.Write({}, 0ms), 0U);
}

TEST(StandardStream, FullPipeIsWaitedForAsLongAsTheCallerWants) {
    const TinyPipe pipe;
    StandardStream stream(pipe.WriteEnd());
    pipe.Fill();
    EXPECT_EQ(stream.Write("lost\n", 0ms), 0U);
    EXPECT_EQ(stream.GetError(), EWOULDBLOCK);
    EXPECT_EQ(stream.Write("lost\n", 20ms), 0U);
    EXPECT_EQ(stream.GetError(), EWOULDBLOCK);
    std::thread reader([&pipe, writer = gettid()] {
        EXPECT_TRUE(AwaitSleep(writer));
        EXPECT_EQ(pipe.Read().size(), 4096);
    });
    EXPECT_EQ(stream.Write("kept\n", StandardStream::FOREVER), 5U);
    reader.join();
    EXPECT_EQ(pipe.Read(), "kept\n");
}

TEST(StandardStream, OfALongTextThatIsTakenWhichHasRoom) {
    const TinyPipe pipe;
    StandardStream stream(pipe.WriteEnd());
    EXPECT_EQ(stream.Write(std::string(10000, 'a'), 0ms), 4096U);
    EXPECT_EQ(stream.GetError(), EWOULDBLOCK);
    EXPECT_EQ(pipe.Read().size(), 4096);
}

TEST(StandardStream, ReaderThatIsGoneIsAnError) {
    std::signal(SIGPIPE, SIG_IGN);
    const TinyPipe pipe;
    StandardStream stream(pipe.WriteEnd());
    pipe.StopReading();
    EXPECT_EQ(stream.Write("text\n", StandardStream::FOREVER), 0U);
    EXPECT_EQ(stream.GetError(), EPIPE);
}

TEST(StandardStream, FileIsWrittenToWhereTheProcessIsInIt) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("before, ");
    file.flush();
    StandardStream stream(file.handle());
    EXPECT_EQ(stream.Write("behind\n", 0ms), 7U);
    file.seek(0);
    EXPECT_EQ(file.readAll(), "before, behind\n");
}

TEST(StandardStream, FullDeviceIsAnError) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    StandardStream stream(full);
    EXPECT_EQ(stream.Write("text\n", StandardStream::FOREVER), 0U);
    EXPECT_EQ(stream.GetError(), ENOSPC);
    ::close(full);
}
