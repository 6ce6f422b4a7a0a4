#include "connections/interruptibleinput.h"

#include "connections/outputfile.h"
#include "support/printing.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <unistd.h>

using namespace Qt::StringLiterals;

TEST(InterruptibleInput, WhatCannotBeReadIsAnErrorWithItsReason) {
    const QTemporaryDir directory; // standard input may be one
    InterruptibleInput input;
    ASSERT_TRUE(input.Open(directory.path()));
    EXPECT_EQ(input.read(10), QByteArray());
    EXPECT_EQ(input.errorString(), u"Is a directory"_s);
}

TEST(InterruptibleInput, WhatIsNotThereCannotBeOpened) {
    InterruptibleInput input;
    EXPECT_FALSE(input.Open(u"/nowhere/at/all"_s));
    EXPECT_EQ(input.errorString(), u"No such file or directory"_s);
    EXPECT_FALSE(input.isOpen());
}

TEST(InterruptibleInput, LockOfStandardInputEndsWithTheReaderAlsoWhileOtherProgramsHoldIt) {
    const QTemporaryDir directory;
    QFile file(directory.filePath(u"recording.csv"_s));
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    const int before = dup(STDIN_FILENO);
    ASSERT_EQ(dup2(file.handle(), STDIN_FILENO), STDIN_FILENO);
    {
        InterruptibleInput input;
        ASSERT_TRUE(input.Open(InterruptibleInput::STANDARD_INPUT.toString()));
        EXPECT_NE(OutputFile::FindUser(file.fileName()), QString());
    }
    EXPECT_EQ(OutputFile::FindUser(file.fileName()), QString()) << "file and standard input are still open";
    dup2(before, STDIN_FILENO);
    close(before);
}
