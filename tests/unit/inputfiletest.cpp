#include "connections/inputfile.h"

#include "connections/outputfile.h"
#include "support/printing.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

class InputFileTest : public testing::Test {
protected:
    void SetUp() override {
        QFile file(m_name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("text\n") == 5);
    }

    QTemporaryDir m_directory;
    QString m_name = m_directory.filePath(u"file"_s);
};

TEST_F(InputFileTest, NoOutputTakesItWhileItIsOpen) {
    InputFile input(m_name);
    ASSERT_TRUE(input.open(QIODevice::ReadOnly));
    OutputFile output;
    EXPECT_FALSE(output.OpenExisting(m_name));
    EXPECT_EQ(output.GetError(), EWOULDBLOCK);
    EXPECT_EQ(input.readAll(), "text\n");
    input.close();
    EXPECT_TRUE(output.OpenExisting(m_name));
}

TEST_F(InputFileTest, SeveralMayReadIt) {
    InputFile first(m_name);
    InputFile second(m_name);
    EXPECT_TRUE(first.open(QIODevice::ReadOnly));
    EXPECT_TRUE(second.open(QIODevice::ReadOnly));
    first.close();
    EXPECT_FALSE(OutputFile().OpenExisting(m_name));
}

TEST_F(InputFileTest, WhatAnOutputWritesToIsReadAtOnce) {
    OutputFile output;
    ASSERT_TRUE(output.OpenExisting(m_name));
    InputFile input(m_name);
    ASSERT_TRUE(input.open(QIODevice::ReadOnly));
    EXPECT_EQ(input.readAll(), "text\n");
}

TEST_F(InputFileTest, AFileThatIsNotThereSaysWhy) {
    InputFile input(m_directory.filePath(u"missing"_s));
    EXPECT_FALSE(input.open(QIODevice::ReadOnly));
    EXPECT_EQ(input.error(), QFileDevice::OpenError);
}

TEST_F(InputFileTest, ADescriptorIsLockedUntilItIsClosed) {
    const int descriptor = ::open(QFile::encodeName(m_name).constData(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    InputFile::Lock(descriptor);
    OutputFile output;
    EXPECT_FALSE(output.OpenExisting(m_name));
    ::close(descriptor);
    EXPECT_TRUE(output.OpenExisting(m_name));
}

} // namespace
