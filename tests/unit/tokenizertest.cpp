#include "kwbase/tokenizer.h"

#include "support/printing.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

QStringList Tokens(Tolm::Tokenizer& next, const QString& text) {
    QStringList tokens;
    for (QString token = next(text); !token.isNull(); token = next(text)) {
        tokens.append(token);
    }
    return tokens;
}

TEST(Tokenizer, CutsAtAnyOfTheSeparators) {
    struct Row {
        QString separators;
        QString text;
        QStringList tokens;
    };
    const std::vector<Row> rows = {
        {u","_s, u"a,b,c"_s, {u"a"_s, u"b"_s, u"c"_s}},
        {u",;"_s, u"a,b;c"_s, {u"a"_s, u"b"_s, u"c"_s}},
        {u","_s, u"abc"_s, {u"abc"_s}},
        {u","_s, u"a,,b"_s, {u"a"_s, u""_s, u"b"_s}},
        {u","_s, u",a,"_s, {u""_s, u"a"_s, u""_s}},
        {u","_s, u","_s, {u""_s, u""_s}},
        {u","_s, u""_s, {u""_s}},
        {u","_s, QString(), {u""_s}},
        {u""_s, u"a,b"_s, {u"a,b"_s}},
        {u","_s, u" a , b "_s, {u" a "_s, u" b "_s}},
        {u"\0"_s, u"a\0b"_s, {u"a"_s, u"b"_s}},
    };
    for (const Row& row : rows) {
        Tolm::Tokenizer next(row.separators);
        EXPECT_EQ(Tokens(next, row.text), row.tokens) << row.text.toStdString();
    }
}

TEST(Tokenizer, AnEmptyTokenIsNotNull) {
    for (const QString& text : {u","_s, u""_s, QString()}) {
        Tolm::Tokenizer next(u","_s);
        const QString token = next(text);
        EXPECT_TRUE(token.isEmpty());
        EXPECT_FALSE(token.isNull());
    }
}

TEST(Tokenizer, BeginsAgainAfterTheLastToken) {
    Tolm::Tokenizer next(u","_s);
    const QStringList tokens{u"a"_s, u"b"_s};
    EXPECT_EQ(Tokens(next, u"a,b"_s), tokens);
    EXPECT_EQ(Tokens(next, u"a,b"_s), tokens);
}

TEST(Tokenizer, AnotherTextBeginsFromTheFront) {
    Tolm::Tokenizer next(u","_s);
    EXPECT_EQ(next(u"a,b"_s), u"a"_s);
    EXPECT_EQ(next(u"c,d"_s), u"c"_s);
    EXPECT_EQ(next(u"c,d"_s), u"d"_s);
    EXPECT_EQ(next(u"a,b"_s), u"a"_s);
}

TEST(Tokenizer, TheSameTextInAnotherStringGoesOn) {
    Tolm::Tokenizer next(u","_s);
    EXPECT_EQ(next(u"a,b"_s), u"a"_s);
    EXPECT_EQ(next(QString::fromLatin1("a,b")), u"b"_s);
}

TEST(Tokenizer, AMillionTokensAreCutQuickly) {
    const QString text(1'000'000, u',');
    Tolm::Tokenizer next(u","_s);
    EXPECT_EQ(Tokens(next, text).size(), 1'000'001);
}

} // namespace
