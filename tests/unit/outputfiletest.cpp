#include "connections/outputfile.h"

#include "connections/inputfile.h"
#include "support/fewdescriptors.h"
#include "support/fifo.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "support/standardoutput.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

class OutputFileTest : public testing::Test {
protected:
    [[nodiscard]] QString Name(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] QByteArray Contents(const QString& name) const {
        QFile file(Name(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    void Put(const QString& name, const QByteArray& bytes) const {
        QFile file(Name(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    /// Writes to a FIFO whose reader has gone, which fails.
    void WriteWithoutAReader() const {
        Fifo fifo(Name(u"fifo"_s));
        fifo.StartReading();
        OutputFile file;
        ASSERT_TRUE(file.OpenExisting(Name(u"fifo"_s)));
        fifo.StopReading();
        EXPECT_EQ(file.Write("line\n"), 0U);
        EXPECT_EQ(file.GetError(), EPIPE);
    }

    QTemporaryDir m_directory;
};

bool IsPipeSignalPending() {
    sigset_t pending{};
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

TEST_F(OutputFileTest, WhatIsThereIsAppendedTo) {
    Put(u"file"_s, "old\n");
    OutputFile file;
    EXPECT_TRUE(file.OpenExisting(Name(u"file"_s)));
    EXPECT_TRUE(file.IsRegular());
    EXPECT_EQ(file.Write("one\ntwo\n"), 8U);
    EXPECT_EQ(Contents(u"file"_s), "old\none\ntwo\n"); // while it is open
    EXPECT_TRUE(file.OpenOrCreate(Name(u"file"_s)));
    EXPECT_EQ(file.Write("three\n"), 6U);
    EXPECT_EQ(Contents(u"file"_s), "old\none\ntwo\nthree\n");
}

TEST_F(OutputFileTest, WhatIsNotThereIsCreatedOnlyWhenThatIsWanted) {
    OutputFile file;
    EXPECT_FALSE(file.OpenExisting(Name(u"file"_s)));
    EXPECT_EQ(file.GetError(), ENOENT);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(QFileInfo::exists(Name(u"file"_s)));

    const mode_t mask = umask(027);
    EXPECT_TRUE(file.OpenOrCreate(Name(u"file"_s)));
    umask(mask);
    struct stat status {};
    EXPECT_EQ(stat(QFile::encodeName(Name(u"file"_s)).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files), QStringList(u"file"_s));
}

TEST_F(OutputFileTest, LinkToAFileThatIsNotThereYetIsFollowed) {
    ASSERT_TRUE(QFile::link(Name(u"target"_s), Name(u"link"_s)));
    OutputFile file;
    EXPECT_FALSE(file.OpenExisting(Name(u"link"_s)));
    EXPECT_TRUE(file.OpenOrCreate(Name(u"link"_s)));
    EXPECT_EQ(file.Write("line\n"), 5U);
    EXPECT_EQ(Contents(u"target"_s), "line\n");
    OutputFile other;
    EXPECT_FALSE(other.OpenExisting(Name(u"target"_s)));
    EXPECT_EQ(other.GetError(), EWOULDBLOCK);
}

TEST_F(OutputFileTest, NamesThatAreNoneAreRefused) {
    OutputFile file;
    for (const QString& name : {QString(), Name(u"file"_s) + QChar::Null + u"rest"_s}) {
        EXPECT_FALSE(file.OpenExisting(name));
        EXPECT_EQ(file.GetError(), EINVAL);
        EXPECT_FALSE(file.OpenOrCreate(name));
        EXPECT_EQ(file.GetError(), EINVAL);
    }
    EXPECT_FALSE(file.OpenExisting(m_directory.path()));
    EXPECT_EQ(file.GetError(), EISDIR);
    EXPECT_FALSE(file.OpenOrCreate(Name(u"missing/file"_s)));
    EXPECT_EQ(file.GetError(), ENOENT);
    EXPECT_TRUE(QDir(m_directory.path()).isEmpty());
}

TEST_F(OutputFileTest, TooManyOpenFilesAreCalledSo) {
    Put(u"file"_s, "");
    const FewDescriptors none(0);
    OutputFile file;
    EXPECT_FALSE(file.OpenExisting(Name(u"file"_s)));
    EXPECT_EQ(file.GetError(), EMFILE);
    EXPECT_FALSE(file.OpenOrCreate(Name(u"new"_s)));
    EXPECT_EQ(file.GetError(), EMFILE);
    EXPECT_FALSE(file.OpenStandardOutput());
    EXPECT_EQ(file.GetError(), EMFILE);
}

TEST_F(OutputFileTest, FileAndFifoBelongToOneUntilItIsClosed) {
    Put(u"file"_s, "");
    Fifo fifo(Name(u"fifo"_s));
    fifo.StartReading();
    for (const QString& name : {Name(u"file"_s), Name(u"fifo"_s), Name(u"new"_s)}) {
        OutputFile first;
        OutputFile second;
        EXPECT_TRUE(first.OpenOrCreate(name));
        EXPECT_FALSE(second.OpenExisting(name));
        EXPECT_EQ(second.GetError(), EWOULDBLOCK);
        EXPECT_FALSE(second.OpenOrCreate(name));
        EXPECT_EQ(second.GetError(), EWOULDBLOCK);
        first.Close();
        EXPECT_TRUE(second.OpenExisting(name));
    }
}

TEST_F(OutputFileTest, DevicesBelongToAll) {
    OutputFile first;
    OutputFile second;
    EXPECT_TRUE(first.OpenExisting(u"/dev/null"_s));
    EXPECT_TRUE(second.OpenExisting(u"/dev/null"_s));
    EXPECT_FALSE(second.IsRegular());
    EXPECT_EQ(first.Write("line\n"), 5U);
    EXPECT_EQ(second.Write("line\n"), 5U);
}

TEST_F(OutputFileTest, LockGoesWithAKilledProcess) {
    std::array<int, 2> ready{};
    ASSERT_EQ(pipe2(ready.data(), O_CLOEXEC), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        OutputFile file;
        const char isOpen = file.OpenOrCreate(Name(u"file"_s)) ? 'y' : 'n';
        (void)!write(ready[1], &isOpen, 1);
        while (true) {
            pause();
        }
    }
    char isOpen = 0;
    EXPECT_EQ(read(ready[0], &isOpen, 1), 1);
    EXPECT_EQ(isOpen, 'y');
    OutputFile file;
    EXPECT_FALSE(file.OpenExisting(Name(u"file"_s)));
    EXPECT_EQ(file.GetError(), EWOULDBLOCK);
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(file.OpenExisting(Name(u"file"_s)));
    close(ready[0]);
    close(ready[1]);
}

TEST_F(OutputFileTest, FileThatMayOnlyBeReadIsLockedAndTakesNothing) {
    Put(u"file"_s, "old");
    ASSERT_TRUE(
        QFile::setPermissions(Name(u"file"_s), QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    ASSERT_EQ(chmod(QFile::encodeName(m_directory.path()).constData(), 0777), 0);
    const bool isRoot = geteuid() == 0;
    if (isRoot) { // who may write to all files
        ASSERT_EQ(seteuid(65534), 0);
    }
    OutputFile file;
    OutputFile other;
    EXPECT_TRUE(file.OpenExisting(Name(u"file"_s)));
    EXPECT_FALSE(other.OpenExisting(Name(u"file"_s)));
    EXPECT_EQ(other.GetError(), EWOULDBLOCK);
    EXPECT_EQ(file.Write("line\n"), 0U);
    EXPECT_EQ(file.GetError(), EBADF);
    EXPECT_FALSE(file.Empty());
    EXPECT_EQ(file.GetError(), EACCES);
    file.Close();
    EXPECT_FALSE(file.OpenOrCreate(Name(u"file"_s)));
    EXPECT_EQ(file.GetError(), EACCES);
    if (isRoot) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_EQ(Contents(u"file"_s), "old");
}

TEST_F(OutputFileTest, FifoIsOpenedWithoutWaitingForAReader) {
    Fifo fifo(Name(u"fifo"_s));
    OutputFile file;
    EXPECT_FALSE(file.OpenExisting(Name(u"fifo"_s)));
    EXPECT_EQ(file.GetError(), ENXIO);
    EXPECT_FALSE(file.OpenOrCreate(Name(u"fifo"_s)));
    EXPECT_EQ(file.GetError(), ENXIO);
    fifo.StartReading();
    EXPECT_TRUE(file.OpenExisting(Name(u"fifo"_s)));
    EXPECT_FALSE(file.IsRegular());
    EXPECT_EQ(file.Write("line\n"), 5U);
    EXPECT_EQ(fifo.Read(), "line\n");
}

TEST_F(OutputFileTest, ReaderThatIsGoneIsAnErrorAndNoSignal) {
    ASSERT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL); // which would end the program
    WriteWithoutAReader();
    EXPECT_FALSE(IsPipeSignalPending());
    sigset_t blocked{};
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0);
}

TEST_F(OutputFileTest, SignalThatWasOnItsWayStaysSo) {
    sigset_t pipe{};
    sigset_t before{};
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
    raise(SIGPIPE);
    WriteWithoutAReader();
    EXPECT_TRUE(IsPipeSignalPending());
    const timespec now{};
    EXPECT_EQ(sigtimedwait(&pipe, nullptr, &now), SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(OutputFileTest, ReaderThatTakesNothingIsWaitedForOnceAndGetsWholeLinesOnly) {
    Fifo fifo(Name(u"fifo"_s));
    fifo.StartReading();
    OutputFile file;
    ASSERT_TRUE(file.OpenExisting(Name(u"fifo"_s)));
    std::string lines;
    while (lines.size() < 300000) { // more than a pipe holds
        lines += "a line of text\n";
    }
    QElapsedTimer timer;
    timer.start();
    const std::size_t written = file.Write(lines);
    EXPECT_GE(timer.elapsed(), 900);
    EXPECT_EQ(file.GetError(), EWOULDBLOCK);
    EXPECT_GT(written, 60000U);
    EXPECT_EQ(written % 15, 0U);

    timer.restart();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(file.Write("dropped\n"), 0U);
    }
    EXPECT_LT(timer.elapsed(), 900); // where waiting would take 20 s

    EXPECT_EQ(fifo.Read().toStdString(), lines.substr(0, written));
    EXPECT_EQ(file.Write("next\n"), 5U);
    EXPECT_EQ(fifo.Read(), "next\n");
}

TEST_F(OutputFileTest, TerminalThatTakesNothingHoldsNobodyUp) {
    const PseudoTerminal terminal;
    OutputFile file;
    ASSERT_TRUE(file.OpenExisting(terminal.path));
    std::string lines;
    while (lines.size() < 300000) { // more than a terminal holds
        lines += "a line of text\n";
    }
    EXPECT_LT(file.Write(lines), lines.size()); // would wait for ever
    EXPECT_TRUE(file.GetError() == EWOULDBLOCK || file.GetError() == EAGAIN);
}

TEST_F(OutputFileTest, LongLineForAPipeComesThroughInParts) {
    Fifo fifo(Name(u"fifo"_s));
    fifo.StartReading();
    OutputFile file;
    ASSERT_TRUE(file.OpenExisting(Name(u"fifo"_s)));
    const std::string line = std::string(10000, 'x') + '\n';
    EXPECT_EQ(file.Write(line), line.size());
    EXPECT_EQ(fifo.Read().toStdString(), line);
}

TEST_F(OutputFileTest, FullDeviceIsCalledSo) {
    OutputFile file;
    ASSERT_TRUE(file.OpenExisting(u"/dev/full"_s));
    EXPECT_EQ(file.Write("line\n"), 0U);
    EXPECT_EQ(file.GetError(), ENOSPC);
}

TEST_F(OutputFileTest, NameIsThatOfTheFileUntilItIsGoneOrAnotherFile) {
    OutputFile file;
    ASSERT_TRUE(file.OpenOrCreate(Name(u"file"_s)));
    ASSERT_TRUE(QFile::link(Name(u"file"_s), Name(u"link"_s)));
    EXPECT_TRUE(file.HasName(Name(u"file"_s)));
    EXPECT_TRUE(file.HasName(Name(u"link"_s)));
    EXPECT_FALSE(file.HasName(Name(u"missing"_s)));
    EXPECT_FALSE(file.HasName(Name(u"file/below"_s)));
    EXPECT_TRUE(file.HasName(Name(QString(300, u'x')))) << "no name that could be looked up";
    ASSERT_TRUE(QFile::rename(Name(u"file"_s), Name(u"moved"_s)));
    EXPECT_FALSE(file.HasName(Name(u"file"_s)));
    EXPECT_TRUE(file.HasName(Name(u"moved"_s)));
    Put(u"file"_s, "");
    EXPECT_FALSE(file.HasName(Name(u"file"_s)));
}

TEST_F(OutputFileTest, LastBytesOfAFileCanBeTakenBack) {
    OutputFile file;
    ASSERT_TRUE(file.OpenOrCreate(Name(u"file"_s)));
    EXPECT_EQ(file.Write("line\nbegun"), 10U);
    EXPECT_TRUE(file.TakeBack(5));
    EXPECT_EQ(Contents(u"file"_s), "line\n");
    EXPECT_EQ(file.Write("next\n"), 5U);
    EXPECT_EQ(Contents(u"file"_s), "line\nnext\n");
    EXPECT_FALSE(file.TakeBack(11));
    EXPECT_EQ(Contents(u"file"_s), "line\nnext\n");
    ASSERT_TRUE(file.OpenExisting(u"/dev/null"_s));
    EXPECT_FALSE(file.TakeBack(0));
}

TEST_F(OutputFileTest, FileGetsANameThatNoOtherFileHas) {
    OutputFile file;
    ASSERT_TRUE(file.OpenOrCreate(Name(u"file"_s)));
    ASSERT_EQ(file.Write("line\n"), 5U);
    Put(u"taken"_s, "another one");
    EXPECT_FALSE(file.Rename(Name(u"file"_s), Name(u"taken"_s)));
    EXPECT_EQ(file.GetError(), EEXIST);
    EXPECT_EQ(Contents(u"taken"_s), "another one");
    EXPECT_FALSE(file.Rename(Name(u"taken"_s), Name(u"free"_s))) << "it is not the open file";
    EXPECT_EQ(file.GetError(), ENOENT);
    EXPECT_EQ(Contents(u"taken"_s), "another one");
    ASSERT_TRUE(file.Rename(Name(u"file"_s), Name(u"free"_s)));
    EXPECT_EQ(Contents(u"free"_s), "line\n");
    EXPECT_EQ(Contents(u"file"_s), "(no file)");
    EXPECT_TRUE(file.HasName(Name(u"free"_s)));
    EXPECT_FALSE(file.Rename(Name(u"free"_s), Name(u"nowhere/free"_s)));
    EXPECT_EQ(file.GetError(), ENOENT);
}

TEST_F(OutputFileTest, FileKnowsItsSizeAndCanBeEmptied) {
    OutputFile file;
    ASSERT_TRUE(file.OpenOrCreate(Name(u"file"_s)));
    ASSERT_EQ(file.Write("line\n"), 5U);
    EXPECT_EQ(file.GetSize(), 5);
    Put(u"file"_s, "a longer content");
    EXPECT_EQ(file.GetSize(), 16);
    ASSERT_TRUE(file.Empty());
    EXPECT_EQ(file.GetSize(), 0);
    ASSERT_EQ(file.Write("end\n"), 4U);
    EXPECT_EQ(Contents(u"file"_s), "end\n");
}

TEST_F(OutputFileTest, PlaceOfAFileIsWhereItsLinksLeadTo) {
    ASSERT_TRUE(QDir().mkpath(Name(u"disk"_s)));
    ASSERT_TRUE(QFile::link(Name(u"disk"_s), Name(u"mounted"_s)));
    ASSERT_TRUE(QFile::link(Name(u"mounted/file"_s), Name(u"link"_s)));
    EXPECT_EQ(OutputFile::FindPlace(Name(u"link"_s)), Name(u"disk/file"_s)) << "not there yet";
    Put(u"disk/file"_s, "content");
    EXPECT_EQ(OutputFile::FindPlace(Name(u"link"_s)), Name(u"disk/file"_s));
    EXPECT_EQ(OutputFile::FindPlace(Name(u"mounted/other"_s)), Name(u"disk/other"_s));
}

TEST_F(OutputFileTest, StandardOutputStaysOpenAndItsOffsetIsThatOfTheProgram) {
    const int target =
        open(QFile::encodeName(Name(u"file"_s)).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(target, 0);
    bool isTakenBack = false;
    bool isOthersTakenBack = true;
    {
        const StandardOutput output(target);
        OutputFile file;
        OutputFile second;
        if (file.OpenStandardOutput() && second.OpenStandardOutput()) { // it belongs to all
            file.Write("line\nbegun");
            isTakenBack = file.TakeBack(5);
            second.Write("next\n");
            (void)!pwrite(target, "x", 1, 10); // behind ours
            isOthersTakenBack = file.TakeBack(5);
        }
        file.Close();
        (void)!write(STDOUT_FILENO, "own\n", 4);
    }
    close(target);
    EXPECT_TRUE(isTakenBack);
    EXPECT_FALSE(isOthersTakenBack);
    EXPECT_EQ(Contents(u"file"_s), "line\nnext\nown\n");
}

TEST_F(OutputFileTest, StandardOutputThatIsClosedIsAnError) {
    bool isOpen = true;
    OutputFile file;
    {
        const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
        const StandardOutput output(null);
        close(null);
        close(STDOUT_FILENO);
        isOpen = file.OpenStandardOutput();
    }
    EXPECT_FALSE(isOpen);
    EXPECT_EQ(file.GetError(), EBADF);
}

TEST_F(OutputFileTest, OpenFileCanBePassedOn) {
    OutputFile first;
    ASSERT_TRUE(first.OpenOrCreate(Name(u"file"_s)));
    OutputFile second(std::move(first));
    EXPECT_EQ(second.Write("one\n"), 4U);
    OutputFile third;
    third = std::move(second);
    EXPECT_EQ(third.Write("two\n"), 4U);
    OutputFile& same = third;
    third = std::move(same);
    EXPECT_TRUE(third.IsRegular());
    EXPECT_EQ(third.Write("three\n"), 6U);
    EXPECT_EQ(Contents(u"file"_s), "one\ntwo\nthree\n");
}

TEST_F(OutputFileTest, SameFileIsKnownUnderAllItsNames) {
    Put(u"file"_s, "x");
    Put(u"equal"_s, "x");
    ASSERT_TRUE(QFile::link(Name(u"file"_s), Name(u"symbolic"_s)));
    ASSERT_EQ(
        link(QFile::encodeName(Name(u"file"_s)).constData(), QFile::encodeName(Name(u"hard"_s)).constData()),
        0);
    ASSERT_TRUE(QDir(m_directory.path()).mkdir(u"folder"_s));
    const Fifo fifo(Name(u"fifo"_s));
    const QString file = Name(u"file"_s);
    EXPECT_TRUE(OutputFile::IsSameFile(file, file));
    EXPECT_TRUE(OutputFile::IsSameFile(file, Name(u"folder/.././file"_s)));
    EXPECT_TRUE(OutputFile::IsSameFile(Name(u"symbolic"_s), file));
    EXPECT_TRUE(OutputFile::IsSameFile(Name(u"hard"_s), Name(u"symbolic"_s)));
    EXPECT_TRUE(OutputFile::IsSameFile(Name(u"fifo"_s), Name(u"fifo"_s)));
    EXPECT_FALSE(OutputFile::IsSameFile(file, Name(u"equal"_s)));
    EXPECT_FALSE(OutputFile::IsSameFile(file, Name(u"missing"_s)));
    EXPECT_FALSE(OutputFile::IsSameFile(QString(), QString()));
    EXPECT_FALSE(OutputFile::IsSameFile(u"/dev/null"_s, u"/dev/null"_s)); // nothing to destroy
}

TEST_F(OutputFileTest, FilesThatAreNotThereYetAreTheSameWhenTheyWouldBeMadeAtOnePlace) {
    ASSERT_TRUE(QDir(m_directory.path()).mkdir(u"folder"_s));
    ASSERT_TRUE(QFile::link(Name(u"folder"_s), Name(u"way"_s)));
    ASSERT_TRUE(QFile::link(u"folder/file"_s, Name(u"dangling"_s)));
    const QString file = Name(u"folder/file"_s);
    for (const QString& name :
         {u"folder/file"_s, u"way/file"_s, u"dangling"_s, u"folder/../folder//file"_s}) {
        EXPECT_TRUE(OutputFile::IsSameFile(Name(name), file)) << name.toStdString();
        EXPECT_TRUE(OutputFile::IsSameFile(file, Name(name))) << name.toStdString();
    }
    EXPECT_TRUE(OutputFile::IsSameFile(Name(u"way/new/file"_s), Name(u"folder/new/file"_s)));
    for (const QString& name : {u"folder/File"_s, u"file"_s, u"folder/file/file"_s, u"folder"_s}) {
        EXPECT_FALSE(OutputFile::IsSameFile(Name(name), file)) << name.toStdString();
    }
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(Name(u"folder"_s)));
    EXPECT_TRUE(OutputFile::IsSameFile(u"file"_s, file));
    ASSERT_TRUE(QDir::setCurrent(before));
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(OutputFileTest, WhoWritesToAFileOrAFifoIsKnownBeforeItIsOpened) {
    Put(u"file"_s, "x");
    Fifo fifo(Name(u"fifo"_s));
    fifo.StartReading();
    const QString self = u"process %1"_s.arg(getpid());
    for (const QString& name : {Name(u"file"_s), Name(u"fifo"_s)}) {
        EXPECT_EQ(OutputFile::FindUser(name), QString());
        OutputFile output;
        ASSERT_TRUE(output.OpenExisting(name));
        // The system's list does not name the files of every file system.
        const QString writer = OutputFile::FindUser(name);
        EXPECT_TRUE(writer == self || writer == u"another process") << writer.toStdString();
        output.Close();
        EXPECT_EQ(OutputFile::FindUser(name), QString());
    }
    OutputFile file;
    ASSERT_TRUE(file.OpenExisting(Name(u"file"_s)));
    {
        const FewDescriptors none(0);
        EXPECT_EQ(OutputFile::FindUser(Name(u"file"_s)), QString()) << "it cannot be seen";
    }
    EXPECT_EQ(OutputFile::FindUser(Name(u"missing"_s)), QString());
    EXPECT_EQ(OutputFile::FindUser(QString()), QString());
    EXPECT_EQ(OutputFile::FindUser(m_directory.path()), QString());
    EXPECT_EQ(OutputFile::FindUser(u"/dev/null"_s), QString());
}

TEST_F(OutputFileTest, WhoReadsAFileAsARecordingIsKnownBeforeItIsOpened) {
    Put(u"file"_s, "x");
    const QString name = Name(u"file"_s);
    InputFile input(name);
    ASSERT_TRUE(input.open(QFile::ReadOnly));
    const QString reader = OutputFile::FindUser(name);
    EXPECT_TRUE(reader == u"process %1"_s.arg(getpid()) || reader == u"another process")
        << reader.toStdString();
    input.close();
    EXPECT_EQ(OutputFile::FindUser(name), QString());
}

TEST_F(OutputFileTest, ReaderOfAFifoDoesNotNoticeThatSomebodyAsksForItsWriter) {
    const Fifo fifo(Name(u"fifo"_s));
    const int reader = open(QFile::encodeName(Name(u"fifo"_s)).constData(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(OutputFile::FindUser(Name(u"fifo"_s)), QString());
    pollfd end{reader, POLLIN, 0};
    EXPECT_EQ(poll(&end, 1, 0), 0) << "a writer that comes and goes is an end";
    close(reader);
}

} // namespace
