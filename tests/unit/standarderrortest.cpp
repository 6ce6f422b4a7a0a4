#include "kwbase/standarderror.h"

#include "support/tinypipe.h"

#include <gtest/gtest.h>

TEST(StandardError, LinesThatNobodyTakesAreLostAndCountedInFrontOfTheNext) {
    const TinyPipe pipe;
    const int before = ::dup(STDERR_FILENO);
    ::dup2(pipe.WriteEnd(), STDERR_FILENO);
    StandardError::Write("first\n");
    EXPECT_EQ(pipe.Read(), "first\n");
    pipe.Fill();
    StandardError::Write("one is lost\n");
    EXPECT_EQ(pipe.Read().size(), 4096);
    StandardError::Write("second\n");
    EXPECT_EQ(pipe.Read(), "1 line of messages was lost\nsecond\n");
    pipe.Fill();
    StandardError::Write("two\nare lost\n");
    StandardError::Write("and three\n");
    StandardError::Draw("what is drawn does not count\n");
    EXPECT_EQ(pipe.Read().size(), 4096);
    StandardError::Draw("drawn");
    EXPECT_EQ(pipe.Read(), "drawn");
    StandardError::TellLoss();
    EXPECT_EQ(pipe.Read(), "3 lines of messages were lost\n");
    StandardError::TellLoss();
    EXPECT_EQ(pipe.Read(), "");
    ::dup2(before, STDERR_FILENO);
    ::close(before);
}
