#include "zancommon/commandprotocol.h"

#include "kwbase/tolmos.h"
#include "support/fulldisk.h"
#include "support/printing.h"
#include "support/tracelines.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

const char* const BANNER = " >>>>>>>>>> PROTOCOL FILE REACHED MAXIMUM SIZE - THIS IS A CONTINUATION FILE\n\n";

/// A clock that goes on when the test says so.
class DrivenClock : public ITolmOS {
public:
    DrivenClock() { TolmOS::Replace(this); }
    DrivenClock(const DrivenClock&) = delete;
    DrivenClock& operator=(const DrivenClock&) = delete;
    ~DrivenClock() override { TolmOS::Replace(nullptr); }

    [[nodiscard]] unsigned long long GetCurrentTime() const override { return now; }
    bool TranslateHostName(const QString&, QString&) const override { return false; }

    // 2026-11-15 22:17:51.007 UTC
    unsigned long long now = 1794781071007;
};

/// Runs in a directory of its own, where the log is kept.
class CommandProtocolTest : public testing::Test {
protected:
    void SetUp() override {
        qputenv("TZ", "UTC-1"); // an hour ahead, so that local time and UTC differ
        ASSERT_TRUE(m_directory.isValid());
        ASSERT_TRUE(QDir::setCurrent(m_directory.path()));
    }
    void TearDown() override { QDir::setCurrent(QDir::rootPath()); }

    static QByteArray Read(const QString& name) {
        QFile file(u"ZANControl/"_s + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
    }
    static void Write(const QString& name, const QByteArray& content) {
        QDir().mkpath(u"ZANControl"_s);
        QFile file(u"ZANControl/"_s + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    static QStringList Backups() {
        return QDir(u"ZANControl"_s).entryList({u"*.bak"_s}, QDir::Files, QDir::Name);
    }

    QTemporaryDir m_directory;
    DrivenClock m_clock;
};

const QString LOG = u"commandlog-10.0.0.1_5555.txt"_s;
const QByteArray HEADER = "23:17:51:007:\tDF-Address: 10.0.0.1:5555\tStation 7\n\n";

CommandProtocol MakeLog() {
    return {u"10.0.0.1:5555"_s, u"Station 7"_s};
}

} // namespace

TEST_F(CommandProtocolTest, NothingIsOpenedBeforeItIsInitialised) {
    CommandProtocol log = MakeLog();
    EXPECT_FALSE(log.Add(u"early"_s));
    EXPECT_EQ(log.GetLastError(), u"CommandProtocol::Add: m_pCurrentFile == NULL"_s);
    EXPECT_TRUE(QDir(m_directory.path()).isEmpty());
}

TEST_F(CommandProtocolTest, StartMovesThePreviousLogIntoABackupAndWritesAHeader) {
    Write(LOG, "from the last run\n");
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init()) << log.GetLastError().toStdString();
    EXPECT_EQ(log.GetLastError(), QString());
    EXPECT_EQ(Read(LOG), HEADER);
    EXPECT_EQ(Backups(), QStringList{LOG + u"-2026-11-15_22-17-51-7.bak"_s});
    EXPECT_EQ(Read(Backups().constFirst()), QByteArray("from the last run\n"));
}

TEST_F(CommandProtocolTest, FirstStartMovesAnEmptyLogIntoABackupToo) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    ASSERT_EQ(Backups().size(), 1);
    EXPECT_EQ(Read(Backups().constFirst()), QByteArray());
}

TEST_F(CommandProtocolTest, LinesCarryTheLocalTimeOfDayAndAreOnDiskAtOnce) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    m_clock.now += 3600000 - 7;
    EXPECT_TRUE(log.Add(u"SetFrequency 145500000"_s));
    EXPECT_EQ(Read(LOG), HEADER + "00:17:51:000:\tSetFrequency 145500000\n");
    EXPECT_TRUE(log.Add({}));
    EXPECT_TRUE(log.Add(u"a %1 %2 b"_s));
    EXPECT_TRUE(Read(LOG).endsWith("00:17:51:000:\t\n00:17:51:000:\ta %1 %2 b\n"));
}

TEST_F(CommandProtocolTest, FileNamesAreCleanedOfWhatTheyMustNotHold) {
    CommandProtocol log(u"a:b*c\"d?e<f"_s, {});
    ASSERT_TRUE(log.Init());
    EXPECT_EQ(Read(u"commandlog-a_b_c_d?e<f.txt"_s),
              QByteArray("23:17:51:007:\tDF-Address: a:b*c\"d?e<f\t\n\n"));
    EXPECT_EQ(Backups(), QStringList{u"commandlog-a_b_c_d?e<f.txt-2026-11-15_22-17-51-7.bak"_s});
}

TEST_F(CommandProtocolTest, SlashesOfTheAddressAreReplacedInTheNameOnlyWhereTheLogKeepsOutOfSubdirectories) {
    CommandProtocol log(u"http://kraken:8081/a"_s, u"Kraken"_s);
    log.KeepOutOfSubdirectories();
    log.SetMaxBytes(0);
    const QByteArray header = "23:17:51:007:\tDF-Address: http://kraken:8081/a\tKraken\n\n";
    ASSERT_TRUE(log.Init()) << log.GetLastError().toStdString();
    EXPECT_EQ(Read(u"commandlog-http___kraken_8081_a.txt"_s), header);
    ++m_clock.now;
    EXPECT_TRUE(log.Add(u"rolled over"_s));
    EXPECT_EQ(Backups().size(), 2);
    EXPECT_TRUE(Read(u"commandlog-http___kraken_8081_a.txt"_s)
                    .contains("DF-Address: http://kraken:8081/a\tKraken\n\n"));
}

TEST_F(CommandProtocolTest, NewAddressCountsForTheFileFromTheNextStartOn) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    log.SetDeviceAddress(u"10.0.0.2"_s);
    ASSERT_TRUE(log.Add(u"still here"_s));
    EXPECT_TRUE(Read(LOG).endsWith("still here\n"));
    ++m_clock.now;
    ASSERT_TRUE(log.Init());
    EXPECT_EQ(Read(u"commandlog-10.0.0.2.txt"_s),
              QByteArray("23:17:51:008:\tDF-Address: 10.0.0.2\tStation 7\n\n"));
}

TEST_F(CommandProtocolTest, LogIsRolledOverWhenItIsLargerThanItsLimitAndNotBefore) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    log.SetMaxBytes(static_cast<unsigned long>(HEADER.size()));
    EXPECT_TRUE(log.Add(u"exactly at the limit"_s));
    EXPECT_EQ(Backups().size(), 1);
    const QByteArray full = Read(LOG);

    m_clock.now += 1;
    EXPECT_TRUE(log.Add(u"beyond it"_s));
    ASSERT_EQ(Backups().size(), 2);
    EXPECT_EQ(Read(Backups().at(1)), full);
    EXPECT_EQ(Read(LOG), QByteArray("23:17:51:008:\t") + BANNER +
                             "\n23:17:51:008:\tDF-Address: 10.0.0.1:5555\tStation 7\n\n" +
                             "23:17:51:008:\tbeyond it\n");
}

TEST_F(CommandProtocolTest, LogThatAnotherProgramCutShortIsNotRolledOver) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    log.SetMaxBytes(200);
    ASSERT_TRUE(log.Add(QString(300, u'x')));
    ASSERT_TRUE(QFile::resize(u"ZANControl/"_s + LOG, 0));
    m_clock.now += 1;
    ASSERT_TRUE(log.Add(u"first again"_s));
    EXPECT_EQ(Read(LOG), "23:17:51:008:\tfirst again\n");
    EXPECT_EQ(Backups().size(), 1) << "the one of the start";
}

TEST_F(CommandProtocolTest, LogThatAnotherProgramMadeLongerIsRolledOver) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    log.SetMaxBytes(200);
    ASSERT_TRUE(QFile::resize(u"ZANControl/"_s + LOG, 201));
    m_clock.now += 1;
    ASSERT_TRUE(log.Add(u"next file"_s));
    EXPECT_EQ(Backups().size(), 2);
}

TEST_F(CommandProtocolTest, DirectoryAndArchiveOfTheLogsHavePublicNames) {
    const QString directory = CommandProtocol::LOG_DIRECTORY;
    const QString archive = CommandProtocol::ARCHIVE_NAME;
    EXPECT_EQ(directory, u"ZANControl"_s);
    EXPECT_EQ(archive, u"commandlogs.7z"_s);
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    EXPECT_TRUE(QFile::exists(directory + u'/' + LOG));
}

TEST_F(CommandProtocolTest, LimitIsTwentyMillionBytesUnlessSetOtherwise) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    const qsizetype frame = HEADER.size() + qsizetype(sizeof("23:17:51:007:\t\n") - 1);
    ASSERT_TRUE(log.Add(QString(20000000 - frame, u'x')));
    EXPECT_EQ(QFile(u"ZANControl/"_s + LOG).size(), 20000000);
    m_clock.now += 1;
    EXPECT_TRUE(log.Add(u"at the limit"_s));
    EXPECT_EQ(Backups().size(), 1);
    EXPECT_TRUE(log.Add(u"beyond"_s));
    EXPECT_EQ(Backups().size(), 2);
}

TEST_F(CommandProtocolTest, NoAcceptedLineIsLostOverThirtyRollOvers) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    log.SetMaxBytes(2000);
    QStringList written;
    // Backups are collected as they appear: the oldest ones are removed meanwhile.
    QMap<QString, QByteArray> files;
    int rollOvers = 0;
    for (int i = 0; rollOvers < 31; ++i) {
        m_clock.now += 1;
        const QString line = u"command %1 "_s.arg(i) + QString(i % 40, u'x');
        const qint64 sizeBefore = QFile(u"ZANControl/"_s + LOG).size();
        ASSERT_TRUE(log.Add(line));
        written.append(line);
        if (QFile(u"ZANControl/"_s + LOG).size() < sizeBefore) {
            ++rollOvers;
            for (const QString& name : Backups()) {
                files.insert(name, Read(name));
            }
        }
        ASSERT_LE(Backups().size(), 20);
    }
    files.insert(LOG + u"~"_s, Read(LOG)); // the last one, behind the dated names
    QStringList read;
    for (const QByteArray& content : std::as_const(files)) {
        for (const QByteArray& line : content.split('\n')) {
            const qsizetype tab = line.indexOf('\t');
            if (tab >= 0 && line.mid(tab + 1).startsWith("command ")) {
                read.append(QString::fromLatin1(line.mid(tab + 1)));
            }
        }
    }
    read.sort();
    written.sort();
    EXPECT_EQ(read, written);
}

TEST_F(CommandProtocolTest, OneBackupIsRemovedForEachOneMadeHoweverManyThereAre) {
    for (int i = 0; i < 25; ++i) {
        Write(u"old%1.bak"_s.arg(i, 2, 10, QChar(u'0')), "x");
        QFile file(u"ZANControl/old%1.bak"_s.arg(i, 2, 10, QChar(u'0')));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        // In the opposite order of their names.
        ASSERT_TRUE(
            file.setFileTime(QDateTime::fromSecsSinceEpoch(2000000 - i), QFileDevice::FileModificationTime));
    }
    TraceLines trace;
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    EXPECT_EQ(Backups().size(), 25);
    EXPECT_FALSE(Backups().contains(u"old24.bak"_s)) << "the oldest by its time";
    EXPECT_EQ(trace.lines, QStringList{u"devicecontrol\\directionfinder\\zancommon\\commandprotocol(263): "
                                       "CommandProtocol: Going to delete the oldest backup file."_s});
}

TEST_F(CommandProtocolTest, TwentyBackupsStayAndNineteenAreLeftAlone) {
    for (int i = 0; i < 19; ++i) {
        Write(u"old%1.bak"_s.arg(i), "x");
    }
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    EXPECT_EQ(Backups().size(), 20);
    ++m_clock.now;
    ASSERT_TRUE(log.Init());
    EXPECT_EQ(Backups().size(), 20);
}

TEST_F(CommandProtocolTest, OfBackupsOfTheSameTimeTheFirstByNameIsTheOldest) {
    for (int i = 0; i < 20; ++i) {
        const QString name = u"%1.bak"_s.arg(QChar(u'a' + (i * 7) % 20));
        Write(name, "x");
        QFile file(u"ZANControl/"_s + name);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(
            file.setFileTime(QDateTime::fromSecsSinceEpoch(1000000), QFileDevice::FileModificationTime));
    }
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    EXPECT_FALSE(Backups().contains(u"a.bak"_s));
    EXPECT_TRUE(Backups().contains(u"t.bak"_s));
}

TEST_F(CommandProtocolTest, TwoDevicesShareTheDirectoryAndItsBackups) {
    CommandProtocol first(u"one"_s, {});
    CommandProtocol second(u"two"_s, {});
    ASSERT_TRUE(first.Init() && second.Init());
    for (int i = 0; i < 30; ++i) {
        m_clock.now += 1;
        CommandProtocol& log = i % 2 == 0 ? first : second;
        log.SetMaxBytes(0);
        ASSERT_TRUE(log.Add(u"%1"_s.arg(i)));
    }
    EXPECT_EQ(Backups().size(), 20);
    EXPECT_TRUE(Read(u"commandlog-one.txt"_s).endsWith("\t28\n"));
    EXPECT_TRUE(Read(u"commandlog-two.txt"_s).endsWith("\t29\n"));
}

TEST_F(CommandProtocolTest, BackupOfTheSameNameIsReplaced) {
    Write(LOG + u"-2026-11-15_22-17-51-7.bak"_s, "earlier");
    Write(LOG, "later");
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    EXPECT_EQ(Read(LOG + u"-2026-11-15_22-17-51-7.bak"_s), QByteArray("later"));
}

TEST_F(CommandProtocolTest, XmlIsIndentedByFourBlanksALevel) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    EXPECT_TRUE(log.Add(u"<?xml version=\"1.0\"?><Command><Set Id=\"1\"><Value>5</Value></Set></Command>"_s));
    EXPECT_EQ(QString::fromLatin1(Read(LOG)),
              QString::fromLatin1(HEADER + "23:17:51:007:\t<?xml version='1.0'?>\n"
                                           "<Command>\n"
                                           "    <Set Id=\"1\">\n"
                                           "        <Value>5</Value>\n"
                                           "    </Set>\n"
                                           "</Command>\n\n"));
}

TEST_F(CommandProtocolTest, WhatIsNoXmlIsWrittenAsItIs) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    const QString texts[] = {
        u"<?xml version=\"1.0\"?><Command><Set></Command>"_s,
        u"<?xml version="_s,
        u"the text ?xml version= alone"_s,
        u"<Command><Set/></Command>"_s,
        u"<?XML version=\"1.0\"?><Command><Set/></Command>"_s,
        // An entity that would grow to gigabytes.
        u"<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY b \"bbbbbbbbbb\"><!ENTITY c "
        u"\"&b;&b;&b;&b;&b;&b;&b;&b;\">"
        "<!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;\">"
        "<!ENTITY f \"&e;&e;&e;&e;&e;&e;&e;&e;\">]><a>&f;</a>"_s,
    };
    for (const QString& text : texts) {
        EXPECT_TRUE(log.Add(text));
        EXPECT_TRUE(Read(LOG).endsWith("\t" + text.toLatin1() + "\n")) << text.toStdString();
    }
}

namespace {

const QByteArray XML = "<?xml version='1.0'?>\n";

/// A document of nested elements.
QByteArray Nested(int levels) {
    return XML + QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels);
}

/// A document whose element holds the same text so often that it has a size.
QByteArray OfSize(qsizetype bytes, const QByteArray& start, const QByteArray& part, const QByteArray& end) {
    QByteArray text = XML + start;
    text += part.repeated((bytes - text.size() - end.size()) / part.size());
    text += QByteArray(bytes - text.size() - end.size(), ' ');
    return text + end;
}

} // namespace

TEST_F(CommandProtocolTest, XmlIsIndentedUpToAHundredLevelsAndWrittenAsItCameBeyondThem) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    EXPECT_TRUE(log.Add(QString::fromLatin1(Nested(100))));
    EXPECT_TRUE(
        Read(LOG).contains("\n" + QByteArray(4 * 99, ' ') + "<a/>\n" + QByteArray(4 * 98, ' ') + "</a>\n"));
    for (const int levels : {101, 4000, 4500, 200000}) {
        const QByteArray text = Nested(levels);
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(log.Add(QString::fromLatin1(text)));
        EXPECT_LT(timer.elapsed(), 5000) << levels;
        EXPECT_TRUE(Read(LOG).endsWith("\t" + text + "\n")) << levels;
    }
}

TEST_F(CommandProtocolTest, XmlIsIndentedUpToASizeAndWrittenAsItCameBeyondIt) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    log.SetMaxBytes(4000000000UL);
    const QByteArray largest = OfSize(qsizetype{256} * 1024, "<r>", "<a/>", "</r>");
    EXPECT_TRUE(log.Add(QString::fromLatin1(largest)));
    EXPECT_TRUE(Read(LOG).endsWith("\n    <a/>\n</r>\n\n"));
    for (const QByteArray& text : {
             OfSize(qsizetype{256} * 1024 + 1, "<r>", "<a/>", "</r>"),
             OfSize(1000000, "<r>", "<a/>", "</r>"),
             // within the bounds as it came, but not when it is indented
             OfSize(20000, QByteArray("<a>").repeated(99), "<b/>", QByteArray("</a>").repeated(99)),
             XML + "<r a='" + QByteArray(200000, '"') + "'/>",
         }) {
        EXPECT_TRUE(log.Add(QString::fromLatin1(text)));
        EXPECT_TRUE(Read(LOG).endsWith("\t" + text + "\n")) << text.left(100).toStdString();
    }
}

TEST_F(CommandProtocolTest, XmlThatTakesLongToReadIsWrittenAsItCame) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    const auto withAttributes = [](int count) {
        QByteArray text = XML + "<r";
        for (int i = 0; i < count; ++i) {
            text += " a" + QByteArray::number(i) + "=\"\"";
        }
        return text + "/>";
    };
    // what a document type declares: each entity holds the one before many times
    const auto withEntities = [](const QByteArray& references) {
        QByteArray text = XML + "<!DOCTYPE r [<!ENTITY e '" + QByteArray(300, 'x') + "'>]>\n<r>";
        return text + references + "</r>";
    };
    EXPECT_TRUE(log.Add(QString::fromLatin1(withEntities("&e;"))));
    EXPECT_TRUE(Read(LOG).endsWith("<r>" + QByteArray(300, 'x') + "</r>\n\n")) << Read(LOG).toStdString();
    EXPECT_TRUE(log.Add(QString::fromLatin1(withAttributes(255))));
    EXPECT_TRUE(Read(LOG).endsWith("/>\n\n")) << "rendered, which ends the line";
    for (const QByteArray& text :
         {withAttributes(257), withAttributes(20000), withEntities(QByteArray("&e;").repeated(250))}) {
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(log.Add(QString::fromLatin1(text)));
        EXPECT_LT(timer.elapsed(), 5000);
        EXPECT_TRUE(Read(LOG).endsWith("\t" + text + "\n")) << text.left(100).toStdString();
    }
}

TEST_F(CommandProtocolTest, EqualsSignsCountAsAttributesOnlyWhereAttributesAre) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    const QByteArray signs = QByteArray("a=1;").repeated(300);
    const QByteArray manyTags = QByteArray("<s a='1'/>").repeated(300);
    for (const QByteArray& inside :
         {"<r>" + signs + "</r>", "<r><![CDATA[<a '" + signs + "]]></r>",
          "<r><!-- <a \"" + signs + " --></r>", "<r><?p <a it's " + signs + "?></r>",
          "<r a=\"'" + signs + "\" b='\"" + signs + "'/>", "<r>" + manyTags + "</r>"}) {
        EXPECT_TRUE(log.Add(QString::fromLatin1(XML + inside)));
        EXPECT_TRUE(Read(LOG).endsWith(">\n\n"))
            << "rendered, which ends the line: " << inside.left(20).data();
    }
    // Nothing before the tag hides its attributes.
    QByteArray tag = "<r";
    for (int i = 0; i < 300; ++i) {
        tag += " a" + QByteArray::number(i) + "='>'";
    }
    tag += "/>";
    for (const QByteArray& text :
         {XML + tag, XML + "<!-- \"' -->" + tag, XML + "<?p \"' ?>" + tag, XML + "<o>\"'" + tag + "</o>",
          XML + "<o><![CDATA[\"'<!--]]>" + tag + "</o>", XML + "<!--" + tag}) {
        EXPECT_TRUE(log.Add(QString::fromLatin1(text)));
        EXPECT_TRUE(Read(LOG).endsWith("\t" + text + "\n")) << text.left(60).toStdString();
    }
}

TEST_F(CommandProtocolTest, XmlInAnEncodingThatIsNotLikeAsciiIsWrittenAsItCame) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    const auto declared = [](const QByteArray& encoding) {
        return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><r><s/></r>";
    };
    for (const QByteArray encoding : {"UTF-8", "iso-8859-1", "US-ASCII"}) {
        EXPECT_TRUE(log.Add(QString::fromLatin1(declared(encoding))));
        EXPECT_TRUE(Read(LOG).endsWith("\n    <s/>\n</r>\n\n")) << encoding.data();
    }
    // Bytes of theirs that look like quotes or an equals sign are none, and the other way round.
    for (const QByteArray encoding : {"UTF-7", "ISO-2022-JP"}) {
        const QByteArray text = declared(encoding);
        EXPECT_TRUE(log.Add(QString::fromLatin1(text)));
        EXPECT_TRUE(Read(LOG).endsWith("\t" + text + "\n")) << encoding.data();
    }
}

TEST_F(CommandProtocolTest, TextIsWrittenWithEightBitsACharacter) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    EXPECT_TRUE(log.Add(u"Gerät \u20AC\tEnde\nneue Zeile"_s));
    EXPECT_TRUE(Read(LOG).endsWith("\tGer\xE4t ?\tEnde\nneue Zeile\n"));
}

TEST_F(CommandProtocolTest, DirectoryThatCannotBeMadeIsReported) {
    QFile file(u"ZANControl"_s); // a file has its name
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    CommandProtocol log = MakeLog();
    EXPECT_FALSE(log.Init());
    EXPECT_EQ(log.GetLastError(),
              u"CommandProtocol: Could not open file ZANControl/commandlog-10.0.0.1_5555.txt."_s);
    EXPECT_FALSE(log.Add(u"x"_s));
    EXPECT_EQ(log.GetLastError(),
              u"CommandProtocol: Writing commandfile ZANControl/commandlog-10.0.0.1_5555.txt failed."_s);
}

TEST_F(CommandProtocolTest, AddressThatLeadsOutOfTheDirectoryOpensNothing) {
    CommandProtocol log(u"../../outside"_s, {});
    EXPECT_FALSE(log.Init());
    EXPECT_FALSE(QFile::exists(m_directory.path() + u"/../outside.txt"_s));
}

TEST_F(CommandProtocolTest, RenameThatFailsLeavesTheLogClosed) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    log.SetMaxBytes(1);
    m_clock.now += 1;
    // A directory has the name of the backup.
    const QString backup = u"ZANControl/"_s + LOG + u"-2026-11-15_22-17-51-8.bak"_s;
    ASSERT_TRUE(QDir().mkpath(backup));
    const QByteArray before = Read(LOG);
    EXPECT_FALSE(log.Add(u"x"_s));
    EXPECT_EQ(log.GetLastError(), u"CommandProtocol::BackupFile: renaming <ZANControl/"_s + LOG +
                                      u"> to <"_s + backup + u"> failed."_s);
    EXPECT_EQ(Read(LOG), before);
    EXPECT_FALSE(log.Add(u"y"_s));
    EXPECT_EQ(log.GetLastError(), u"CommandProtocol::Add: m_pCurrentFile == NULL"_s);
    m_clock.now += 1;
    EXPECT_TRUE(log.Init()) << "a new start works where the name is free";
}

TEST_F(CommandProtocolTest, LogThatSomebodyRemovedCannotBecomeABackup) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    log.SetMaxBytes(1);
    ASSERT_TRUE(QFile::remove(u"ZANControl/"_s + LOG));
    EXPECT_FALSE(log.Add(u"x"_s));
    EXPECT_EQ(log.GetLastError(),
              u"CommandProtocol::BackupFile: file <ZANControl/"_s + LOG + u"> does not exist."_s);
}

TEST_F(CommandProtocolTest, EachLineHasItsTimeToTheMillisecond) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    m_clock.now += 980; // 51.987
    ASSERT_TRUE(log.Add(u"in the same second"_s));
    m_clock.now += 13; // 52.000
    ASSERT_TRUE(log.Add(u"in the next"_s));
    EXPECT_EQ(Read(LOG), HEADER + "23:17:51:987:\tin the same second\n23:17:52:000:\tin the next\n");
}

TEST_F(CommandProtocolTest, LineThatDoesNotFitOnTheDiskIsRefusedWhole) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    ASSERT_TRUE(log.Add(u"fits"_s));
    const QByteArray before = Read(LOG);
    {
        const FullDisk disk(before.size() + 5); // in the middle of the line
        EXPECT_FALSE(log.Add(u"does not fit"_s));
    }
    EXPECT_EQ(log.GetLastError(),
              u"CommandProtocol: Writing commandfile ZANControl/commandlog-10.0.0.1_5555.txt failed."_s);
    EXPECT_EQ(Read(LOG), before);
    EXPECT_TRUE(log.Add(u"fits again"_s));
    EXPECT_EQ(Read(LOG), before + "23:17:51:007:\tfits again\n");
}

TEST_F(CommandProtocolTest, HalfALineIsTakenBackFromALogThatAnotherProgramCutShort) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    ASSERT_TRUE(QFile::resize(u"ZANControl/"_s + LOG, 10));
    {
        const FullDisk disk(15);
        EXPECT_FALSE(log.Add(u"does not fit"_s));
    }
    EXPECT_EQ(Read(LOG), HEADER.first(10));
}

TEST_F(CommandProtocolTest, CopyWritesIntoTheSameFile) {
    CommandProtocol log = MakeLog();
    ASSERT_TRUE(log.Init());
    {
        CommandProtocol copy(log);
        EXPECT_TRUE(copy.Add(u"from the copy"_s));
    }
    EXPECT_FALSE(log.Add(u"from the source"_s)) << "the copy has closed the file at its end";
    EXPECT_EQ(Read(LOG), HEADER + "23:17:51:007:\tfrom the copy\n");
}

TEST_F(CommandProtocolTest, IsAMessageStore) {
    const std::unique_ptr<IMessageStore> store = std::make_unique<CommandProtocol>(u"x"_s, QString());
    EXPECT_NE(dynamic_cast<CommandProtocol*>(store.get()), nullptr);
}
