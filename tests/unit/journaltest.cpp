#include "zanstation/journal.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using Journal::Priority;

namespace {

/// Says to the program that standard error leads to the journal, or to one of another inode.
void NameJournal(ino_t offset = 0) {
    struct stat status {};
    ASSERT_EQ(fstat(STDERR_FILENO, &status), 0);
    qputenv("JOURNAL_STREAM", QByteArray::number(quint64{status.st_dev}) + ':' +
                                  QByteArray::number(quint64{status.st_ino + offset}));
}

} // namespace

TEST(Journal, EachLineHasItsPriorityInFront) {
    NameJournal();
    EXPECT_EQ(Journal::Mark(Priority::Error, "broken\n"), "<3>broken\n");
    EXPECT_EQ(Journal::Mark(Priority::Warning, "odd\nand more\n"), "<4>odd\n<4>and more\n");
    EXPECT_EQ(Journal::Mark(Priority::Info, "<0>no emergency\n"), "<6><0>no emergency\n");
}

TEST(Journal, LinesAreLeftAsTheyAreWithoutAJournal) {
    qunsetenv("JOURNAL_STREAM");
    EXPECT_EQ(Journal::Mark(Priority::Error, "broken\n"), "broken\n");
}

TEST(Journal, LinesAreLeftAsTheyAreWhenStandardErrorLeadsElsewhere) {
    NameJournal(1);
    EXPECT_EQ(Journal::Mark(Priority::Error, "broken\n"), "broken\n");
}

TEST(Journal, QtsMessagesHaveThePriorityOfTheirType) {
    EXPECT_EQ(Journal::PriorityOf(QtFatalMsg), Priority::Error);
    EXPECT_EQ(Journal::PriorityOf(QtCriticalMsg), Priority::Error);
    EXPECT_EQ(Journal::PriorityOf(QtWarningMsg), Priority::Warning);
    EXPECT_EQ(Journal::PriorityOf(QtInfoMsg), Priority::Info);
    EXPECT_EQ(Journal::PriorityOf(QtDebugMsg), Priority::Info);
}
