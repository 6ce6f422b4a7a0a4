#include "zancommon/dfdatafile.h"

#include "support/eventloop.h"
#include "support/fewdescriptors.h"
#include "support/fifo.h"
#include "support/printing.h"
#include "support/standardoutput.h"
#include "support/unixsocket.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int RETRY_MS = 20;
constexpr int WATCH_MS = 10;

class DFDataFileTest : public testing::Test {
protected:
    DFDataFileTest() {
        QObject::connect(&m_file, &DFDataFile::Failed, &m_file,
                         [this](const QString& text) { m_failures.append(text); });
        QObject::connect(&m_file, &DFDataFile::Recovered, &m_file,
                         [this](const QString& text) { m_recoveries.append(text); });
        // The sanitizer needs a descriptor when it meets a type of object for the first time, which a test
        // that has none left cannot give it.
        DFDataFile(RETRY_MS, WATCH_MS).Open(m_directory.filePath(u"missing/file"_s));
    }

    [[nodiscard]] QByteArray Contents(const QString& suffix = {}) const {
        QFile file(m_name + suffix);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    void Put(const QByteArray& bytes, const QString& suffix = {}) const {
        QFile file(m_name + suffix);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    [[nodiscard]] bool IsOpenSoon() const {
        return SpinUntil([this] { return m_file.IsOpen(); });
    }
    /// Lets some attempts to open, and looks whether the file is still there, go by.
    static void WaitForAttempts() {
        int attempts = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&attempts] { ++attempts; });
        timer.start(RETRY_MS);
        EXPECT_TRUE(SpinUntil([&attempts] { return attempts > 5; }));
    }

    /// Moves the open file to the name with a suffix.
    void MoveAway(const QString& suffix) const { ASSERT_TRUE(QFile::rename(m_name, m_name + suffix)); }
    /// Puts a file in the place of the open one, without a moment between them.
    void PutInPlace(const QByteArray& bytes) const {
        Put(bytes, u".new"_s);
        ASSERT_EQ(std::rename(QFile::encodeName(m_name + u".new"_s).constData(),
                              QFile::encodeName(m_name).constData()),
                  0);
    }
    /// Lets the event loop run until so many failures were reported.
    [[nodiscard]] bool HasFailedSoon(qsizetype count) const {
        return SpinUntil([this, count] { return m_failures.size() >= count; });
    }
    [[nodiscard]] QString Gone() const {
        return u"File "_s + m_name + u" was removed, moved or replaced while sentences were written to it"_s;
    }
    [[nodiscard]] QString InUse() const {
        return u"Could not open file "_s + m_name +
               u": another output writes to it, or it is read as a recording"_s;
    }

    QTemporaryDir m_directory;
    QString m_name = m_directory.filePath(u"output.txt"_s);
    DFDataFile m_file{RETRY_MS, WATCH_MS};
    QStringList m_failures;
    QStringList m_recoveries;
};

TEST_F(DFDataFileTest, LinesAreInTheFileAtOnceOrWhenTheyAreHeldBackNoMore) {
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    EXPECT_EQ(Contents(), "$1\r\n");
    m_file.HoldBack();
    m_file.HoldBack();
    m_file.WriteLine("$2\r\n");
    m_file.Release();
    EXPECT_EQ(Contents(), "$1\r\n");
    EXPECT_EQ(m_file.GetWrittenCount(), 1U);
    m_file.Release();
    EXPECT_EQ(Contents(), "$1\r\n$2\r\n");
    EXPECT_EQ(m_file.GetWrittenCount(), 2U);
    m_file.WriteLine("\r\n"); // no sentence
    EXPECT_EQ(m_file.GetWrittenCount(), 2U);
}

TEST_F(DFDataFileTest, OpeningWhileItIsOpenDoesNothing) {
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    m_file.Open(m_name);
    m_file.Open(m_name + u"x"_s);
    m_file.OpenStandardOutput();
    m_file.WriteLine("$2\r\n");
    EXPECT_EQ(Contents(), "$1\r\n$2\r\n");
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files), QStringList(u"output.txt"_s));
}

TEST_F(DFDataFileTest, FileInAMissingDirectoryIsTriedAgainUntilTheDirectoryIsThere) {
    const QString name = m_directory.filePath(u"later/output.txt"_s);
    m_file.Open(name);
    m_file.WriteLine("$1\r\n");
    WaitForAttempts();
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_failures, QStringList(u"Could not open file "_s + name + u": No such file or directory"_s));
    EXPECT_EQ(m_file.GetDroppedCount(), 1U);
    ASSERT_TRUE(QDir(m_directory.path()).mkdir(u"later"_s));
    EXPECT_TRUE(IsOpenSoon());
    EXPECT_TRUE(m_recoveries.isEmpty()); // nothing has been written yet
    m_file.WriteLine("$2\r\n");
    EXPECT_EQ(m_recoveries, QStringList(u"Writing to "_s + name + u" works again"_s));
    EXPECT_EQ(m_file.GetWrittenCount(), 1U);
}

TEST_F(DFDataFileTest, FileThatNeverFailedDoesNotRecoverFromTheFailureOfTheFileBeforeIt) {
    m_file.Open(m_directory.filePath(u"missing/output.txt"_s));
    m_file.WriteLine("$1\r\n");
    m_file.Close();
    m_file.Open(m_name);
    m_file.WriteLine("$2\r\n");
    EXPECT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_recoveries, QStringList());
}

TEST_F(DFDataFileTest, FileOfAnEarlierRunThatAppearsWithItsDirectoryIsKept) {
    ASSERT_TRUE(QDir(m_directory.path()).mkdir(u"volume"_s));
    m_file.Open(m_directory.filePath(u"mounted/output.txt"_s));
    QFile earlier(m_directory.filePath(u"volume/output.txt"_s));
    ASSERT_TRUE(earlier.open(QIODevice::WriteOnly) && earlier.write("earlier") == 7);
    earlier.close();
    ASSERT_TRUE(QDir(m_directory.path()).rename(u"volume"_s, u"mounted"_s));
    EXPECT_TRUE(IsOpenSoon());
    QFile backup(m_directory.filePath(u"mounted/output.txt.bak"_s));
    ASSERT_TRUE(backup.open(QIODevice::ReadOnly));
    EXPECT_EQ(backup.readAll(), "earlier");
}

TEST_F(DFDataFileTest, ClosedFileIsTriedNoMore) {
    m_file.Open(m_directory.filePath(u"later/output.txt"_s));
    m_file.Close();
    ASSERT_TRUE(QDir(m_directory.path()).mkdir(u"later"_s));
    WaitForAttempts();
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_TRUE(QDir(m_directory.filePath(u"later"_s)).isEmpty());
}

TEST_F(DFDataFileTest, FileOfAnotherOutputIsLeftAloneUntilThatIsDone) {
    Put("earliest", u".bak"_s);
    DFDataFile other(RETRY_MS, WATCH_MS);
    Put("earlier");
    other.Open(m_name);
    other.WriteLine("$other\r\n");
    m_file.Open(m_name);
    WaitForAttempts();
    EXPECT_EQ(m_failures, QStringList(InUse()));
    EXPECT_EQ(Contents(), "$other\r\n");
    EXPECT_EQ(Contents(u".bak"_s), "earlier");
    other.WriteLine("$other\r\n");
    EXPECT_EQ(Contents(), "$other\r\n$other\r\n");

    other.Close();
    EXPECT_TRUE(IsOpenSoon());
    m_file.WriteLine("$1\r\n");
    EXPECT_EQ(Contents(), "$1\r\n");
    EXPECT_EQ(Contents(u".bak"_s), "$other\r\n$other\r\n");
}

TEST_F(DFDataFileTest, BackupThatAnotherProgramIsJustMakingIsLeftAlone) {
    Put("just moved", u".bak"_s);
    OutputFile moving;
    ASSERT_TRUE(moving.OpenExisting(DFDataFile::BackupName(m_name)));
    m_file.Open(m_name);
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(Contents(u".bak"_s), "just moved");
    EXPECT_FALSE(QFileInfo::exists(m_name));
}

TEST_F(DFDataFileTest, PreviousFileIsKeptWhenTheNewOneCannotBeMadeAtTheFirstAttempt) {
    Put("earlier");
    {
        const FewDescriptors one(1); // for the previous file, and none for the new one
        m_file.Open(m_name);
    }
    EXPECT_EQ(m_failures, QStringList(u"Could not open file "_s + m_name + u": Too many open files"_s));
    EXPECT_EQ(Contents(), "earlier") << "a program that ends now leaves it where the next one finds it";
    EXPECT_TRUE(IsOpenSoon());
    EXPECT_EQ(Contents(), "");
    EXPECT_EQ(Contents(u".bak"_s), "earlier");
}

TEST_F(DFDataFileTest, FileThatSomebodyMadeBetweenTheAttemptsIsKeptLikeAnyPreviousOne) {
    Put("earlier");
    {
        const FewDescriptors one(1);
        m_file.Open(m_name);
    }
    Put("another\r\n");
    EXPECT_TRUE(IsOpenSoon());
    m_file.WriteLine("$1\r\n");
    EXPECT_EQ(Contents(), "$1\r\n");
    EXPECT_EQ(Contents(u".bak"_s), "another\r\n");
}

TEST_F(DFDataFileTest, EachOpeningKeepsThePreviousFileAgain) {
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    m_file.Close();
    m_file.Open(m_name);
    m_file.WriteLine("$2\r\n");
    m_file.Close();
    m_file.Open(m_name);
    EXPECT_EQ(Contents(), "");
    EXPECT_EQ(Contents(u".bak"_s), "$2\r\n");
}

TEST_F(DFDataFileTest, FileThatStaysInItsPlaceIsLeftOpen) {
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    WaitForAttempts();
    m_file.WriteLine("$2\r\n");
    m_file.Close();
    EXPECT_EQ(Contents(), "$1\r\n$2\r\n");
    EXPECT_EQ(m_failures, QStringList());
}

TEST_F(DFDataFileTest, FileThatIsRemovedIsReportedOnceAndBegunAgain) {
    Put("backup", u".bak"_s);
    Put("earlier");
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    ASSERT_TRUE(QFile::remove(m_name));
    EXPECT_TRUE(SpinUntil([this] { return QFileInfo::exists(m_name); }));
    WaitForAttempts();
    EXPECT_EQ(m_failures, QStringList(Gone()));
    m_file.WriteLine("$2\r\n");
    EXPECT_EQ(Contents(), "$2\r\n");
    EXPECT_EQ(Contents(u".bak"_s), "earlier") << "as when the output was switched on";
    EXPECT_EQ(m_recoveries, QStringList(u"Writing to "_s + m_name + u" works again"_s));

    ASSERT_TRUE(QFile::remove(m_name));
    EXPECT_TRUE(HasFailedSoon(2));
    EXPECT_EQ(m_failures, QStringList({Gone(), Gone()})) << "another one";
}

TEST_F(DFDataFileTest, FileThatIsMovedAwayKeepsItsLinesAndTheNextOnesGoToANewOne) {
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    MoveAway(u".1"_s);
    m_file.WriteLine("$2\r\n"); // before it was noticed
    EXPECT_TRUE(HasFailedSoon(1));
    m_file.WriteLine("$3\r\n");
    EXPECT_EQ(Contents(u".1"_s), "$1\r\n$2\r\n");
    EXPECT_EQ(Contents(), "$3\r\n");
    EXPECT_EQ(m_failures, QStringList(Gone()));
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files),
              QStringList({u"output.txt"_s, u"output.txt.1"_s}));
}

TEST_F(DFDataFileTest, FileThatSomebodyPutInItsPlaceIsAppendedTo) {
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    PutInPlace("theirs\r\n");
    EXPECT_TRUE(HasFailedSoon(1));
    m_file.WriteLine("$2\r\n");
    EXPECT_EQ(Contents(), "theirs\r\n$2\r\n");
    EXPECT_EQ(m_failures, QStringList(Gone()));
    EXPECT_FALSE(QFileInfo::exists(DFDataFile::BackupName(m_name)));
}

TEST_F(DFDataFileTest, LinkThatIsPutInItsPlaceIsLeftAloneForItMayLeadToAnything) {
    m_file.Open(m_name);
    Put("precious\r\n", u".precious"_s);
    ASSERT_TRUE(QFile::link(m_name + u".precious"_s, m_name + u".link"_s));
    MoveAway(u".first"_s);
    ASSERT_TRUE(QFile::rename(m_name + u".link"_s, m_name));
    EXPECT_TRUE(HasFailedSoon(2));
    WaitForAttempts();
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(Contents(u".precious"_s), "precious\r\n");

    ASSERT_TRUE(QFile::remove(m_name));
    EXPECT_TRUE(IsOpenSoon());
}

TEST_F(DFDataFileTest, FileOfTwoNamesThatIsPutInItsPlaceIsLeftAlone) {
    m_file.Open(m_name);
    Put("precious\r\n", u".precious"_s);
    MoveAway(u".first"_s);
    ASSERT_EQ(
        ::link(QFile::encodeName(m_name + u".precious"_s).constData(), QFile::encodeName(m_name).constData()),
        0);
    EXPECT_TRUE(HasFailedSoon(2));
    WaitForAttempts();
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(Contents(u".precious"_s), "precious\r\n");
}

TEST_F(DFDataFileTest, FileInItsPlaceThatAnotherOutputHasOpenIsLeftAloneAndThenAppendedTo) {
    m_file.Open(m_name);
    DFDataFile other(RETRY_MS, WATCH_MS);
    other.Open(m_name + u".other"_s);
    other.WriteLine("$other\r\n");
    ASSERT_TRUE(QFile::remove(m_name) && QFile::rename(m_name + u".other"_s, m_name));
    EXPECT_TRUE(HasFailedSoon(2));
    m_file.WriteLine("$1\r\n");
    WaitForAttempts();
    EXPECT_EQ(m_failures, QStringList({Gone(), InUse()}));
    EXPECT_EQ(Contents(), "$other\r\n");
    EXPECT_EQ(m_file.GetDroppedCount(), 1U);

    other.Close();
    EXPECT_TRUE(IsOpenSoon());
    m_file.WriteLine("$2\r\n");
    EXPECT_EQ(Contents(), "$other\r\n$2\r\n");
    EXPECT_FALSE(QFileInfo::exists(DFDataFile::BackupName(m_name)));
}

TEST_F(DFDataFileTest, RecordingInItsPlaceIsLeftAlone) {
    m_file.Open(m_name);
    Put("recording", u".new"_s);
    QFile recording(m_name + u".new"_s);
    ASSERT_TRUE(recording.open(QIODevice::ReadOnly));
    ASSERT_EQ(flock(recording.handle(), LOCK_SH), 0); // as its reader does
    ASSERT_TRUE(QFile::remove(m_name) && QFile::rename(m_name + u".new"_s, m_name));
    EXPECT_TRUE(HasFailedSoon(2));
    WaitForAttempts();
    m_file.WriteLine("$1\r\n");
    EXPECT_EQ(m_failures, QStringList({Gone(), InUse()}));
    EXPECT_EQ(Contents(), "recording");
}

TEST_F(DFDataFileTest, FileThatGoesWithItsDirectoryIsTriedAgainUntilTheDirectoryIsBack) {
    const QString place = m_directory.filePath(u"place"_s);
    ASSERT_TRUE(QDir().mkdir(place));
    m_name = place + u"/output.txt"_s;
    m_file.Open(m_name);
    ASSERT_TRUE(QDir().rename(place, place + u".away"_s));
    EXPECT_TRUE(HasFailedSoon(2));
    EXPECT_EQ(m_failures,
              QStringList({Gone(), u"Could not open file "_s + m_name + u": No such file or directory"_s}));
    ASSERT_TRUE(QDir().mkdir(place));
    EXPECT_TRUE(IsOpenSoon());
    m_file.WriteLine("$1\r\n");
    EXPECT_EQ(Contents(), "$1\r\n");
}

TEST_F(DFDataFileTest, FileThatIsGoneIsReportedWhenItIsClosedAndNotBegunAgain) {
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    ASSERT_TRUE(QFile::remove(m_name));
    m_file.Close();
    EXPECT_EQ(m_failures, QStringList(Gone()));
    WaitForAttempts();
    EXPECT_FALSE(QFileInfo::exists(m_name));
}

TEST_F(DFDataFileTest, LinesThatAreHeldBackAreInTheFileThatWasMovedAway) {
    m_file.Open(m_name);
    m_file.HoldBack();
    m_file.WriteLine("$1\r\n");
    MoveAway(u".1"_s);
    EXPECT_TRUE(HasFailedSoon(1));
    EXPECT_EQ(Contents(u".1"_s), "$1\r\n");
    m_file.Release();
    EXPECT_EQ(Contents(), "");
}

TEST_F(DFDataFileTest, FifoThatIsReplacedByAFileIsReportedAndTheFileIsWritten) {
    {
        Fifo fifo(m_name);
        fifo.StartReading();
        m_file.Open(m_name);
        PutInPlace("");
        EXPECT_TRUE(HasFailedSoon(1));
    }
    m_file.WriteLine("$1\r\n");
    EXPECT_EQ(Contents(), "$1\r\n");
    EXPECT_EQ(m_failures, QStringList(Gone()));
}

TEST_F(DFDataFileTest, TooManyOpenFilesAreCalledSoAndTheFileIsTriedAgain) {
    Put("earlier");
    {
        const FewDescriptors none(0);
        m_file.Open(m_name);
    }
    EXPECT_EQ(m_failures, QStringList(u"Could not open file "_s + m_name + u": Too many open files"_s));
    EXPECT_EQ(Contents(), "earlier"); // untouched
    EXPECT_TRUE(IsOpenSoon());
    EXPECT_EQ(Contents(u".bak"_s), "earlier");
}

TEST_F(DFDataFileTest, FullDeviceIsCalledSoAndStaysOpen) {
    m_file.Open(u"/dev/full"_s);
    m_file.WriteLine("$1\r\n");
    m_file.WriteLine("$2\r\n");
    EXPECT_EQ(m_failures, QStringList(u"Writing to /dev/full failed: No space left on device"_s));
    EXPECT_EQ(m_file.GetDroppedCount(), 2U);
    EXPECT_TRUE(m_file.IsOpen());
    EXPECT_FALSE(QFileInfo::exists(u"/dev/full.bak"_s));
}

TEST_F(DFDataFileTest, FifoWithoutAReaderIsTriedAgainUntilThereIsOne) {
    Put("backup", u".bak"_s);
    Fifo fifo(m_name);
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    WaitForAttempts();
    EXPECT_EQ(m_failures, QStringList(u"Could not open file "_s + m_name + u": no program reads from it"_s));
    fifo.StartReading();
    EXPECT_TRUE(IsOpenSoon());
    m_file.WriteLine("$2\r\n");
    EXPECT_EQ(fifo.Read(), "$2\r\n");
    EXPECT_EQ(m_file.GetDroppedCount(), 1U);
    EXPECT_EQ(m_file.GetWrittenCount(), 1U);
    EXPECT_EQ(Contents(u".bak"_s), "backup"); // a FIFO holds nothing to be kept
}

TEST_F(DFDataFileTest, SocketIsNoFifoThatLacksAReader) {
    const UnixSocket socket(m_name);
    m_file.Open(m_name);
    EXPECT_EQ(m_failures, QStringList(u"Could not open file "_s + m_name + u": No such device or address"_s));
}

TEST_F(DFDataFileTest, FifoWhoseReaderGoesAwayHasFailedAndIsTriedAgain) {
    Fifo fifo(m_name);
    fifo.StartReading();
    m_file.Open(m_name);
    m_file.WriteLine("$1\r\n");
    fifo.StopReading();
    m_file.HoldBack();
    m_file.WriteLine("$2\r\n");
    m_file.WriteLine("$3\r\n");
    m_file.Release();
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_failures, QStringList(u"Writing to "_s + m_name + u" failed: Broken pipe"_s));
    EXPECT_EQ(m_file.GetDroppedCount(), 2U);

    fifo.StartReading();
    EXPECT_TRUE(IsOpenSoon());
    m_file.WriteLine("$4\r\n");
    EXPECT_EQ(fifo.Read(), "$4\r\n");
    EXPECT_EQ(m_recoveries.size(), 1);
}

TEST_F(DFDataFileTest, ReaderThatTakesNothingLosesWholeLinesUntilItTakesSomeAgain) {
    Fifo fifo(m_name);
    fifo.StartReading();
    m_file.Open(m_name);
    while (m_file.GetDroppedCount() < 3) {
        m_file.WriteLine("$a sentence of some length\r\n");
    }
    EXPECT_EQ(m_failures, QStringList(u"Writing to "_s + m_name + u" failed: its reader takes nothing"_s));
    EXPECT_TRUE(m_file.IsOpen());
    const QByteArray received = fifo.Read();
    EXPECT_EQ(static_cast<quint64>(received.count('\n')), m_file.GetWrittenCount());
    EXPECT_TRUE(received.endsWith("length\r\n"));
    m_file.WriteLine("$next\r\n");
    EXPECT_EQ(fifo.Read(), "$next\r\n");
    EXPECT_EQ(m_recoveries.size(), 1);
}

TEST_F(DFDataFileTest, StandardOutputTakesTheLinesAndIsNotTriedAgainWhenItsReaderIsGone) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    std::array<char, 64> received{};
    ssize_t count = 0;
    bool isOpen = true;
    {
        const StandardOutput output(ends[1]);
        m_file.OpenStandardOutput();
        m_file.WriteLine("$1\r\n");
        count = read(ends[0], received.data(), received.size());
        close(ends[0]);
        m_file.WriteLine("$2\r\n");
        WaitForAttempts();
        isOpen = m_file.IsOpen();
    }
    close(ends[1]);
    EXPECT_EQ(QByteArray(received.data(), count), "$1\r\n");
    EXPECT_FALSE(isOpen);
    EXPECT_EQ(m_failures, QStringList(u"Writing to standard output failed: Broken pipe"_s));
    EXPECT_EQ(m_file.GetWrittenCount(), 1U);
    EXPECT_EQ(m_file.GetDroppedCount(), 1U);
}

TEST_F(DFDataFileTest, StandardOutputHasNoNameThatItCouldLose) {
    Put("");
    const int file = open(QFile::encodeName(m_name).constData(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    {
        const StandardOutput output(file);
        m_file.OpenStandardOutput();
        WaitForAttempts();
        m_file.Close();
    }
    close(file);
    EXPECT_EQ(m_failures, QStringList());
}

TEST_F(DFDataFileTest, StandardOutputThatCannotBeOpenedIsReported) {
    ASSERT_FALSE(m_file.IsOpen());
    {
        const FewDescriptors none(0);
        m_file.OpenStandardOutput();
    }
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_failures, QStringList(u"Could not open file standard output: Too many open files"_s));
}

} // namespace
