#include "connections/interruptibleinput.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

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
