#include "zanserver/channelreader.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <QBuffer>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

/// Reads a file of this content.
ChannelReader Read(const QByteArray& content) {
    QByteArray bytes = content;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(buffer.open(QBuffer::ReadOnly));
    ChannelReader reader;
    EXPECT_TRUE(reader.Read(buffer)) << reader.GetErrorText().toStdString();
    return reader;
}

} // namespace

TEST(ChannelReader, LineOfAnyLengthIsOneRow) {
    for (const qsizetype length : {60000, 65535, 65536, 65537, 131072, 10'000'000}) {
        // Whoever cut the second line would find further rows in it.
        const ChannelReader reader =
            Read("name,frequency_mhz\n" + QByteArray(length, 'x') + ",118.5\nTower,121.5\n");
        const bool isWhole = reader.GetBadRows().isEmpty();
        EXPECT_EQ(reader.GetChannels().size(), isWhole ? 2U : 1U) << length;
        EXPECT_EQ(reader.GetBadRows(), isWhole ? QStringList() : QStringList{u"line 2: too long"_s})
            << length;
        EXPECT_EQ(reader.GetChannels().back().name, u"Tower"_s);
        EXPECT_EQ(reader.GetChannels().back().channel.GetChannelID(), 2);
        EXPECT_EQ(isWhole, length == 60000) << length;
    }
}

TEST(ChannelReader, ByteOrderMarkIsNoPartOfTheHeader) {
    const ChannelReader reader = Read("\xEF\xBB\xBFname,frequency_mhz\nTower,121.5\n");
    ASSERT_EQ(reader.GetChannels().size(), 1U);
    EXPECT_EQ(reader.GetChannels().front().name, u"Tower"_s);
}

TEST(ChannelReader, LastLineThatIsTooLongIsOneBadRow) {
    const ChannelReader reader = Read("name,frequency_mhz\n" + QByteArray(200000, 'x'));
    EXPECT_TRUE(reader.GetChannels().empty());
    EXPECT_EQ(reader.GetBadRows(), QStringList{u"line 2: too long"_s});
}

TEST(ChannelReader, HeaderLineThatIsTooLongIsNone) {
    QByteArray bytes = "name,frequency_mhz," + QByteArray(200000, 'x') + "\nTower,118.5,\n";
    QBuffer buffer(&bytes);
    ASSERT_TRUE(buffer.open(QBuffer::ReadOnly));
    ChannelReader reader;
    EXPECT_FALSE(reader.Read(buffer));
}
