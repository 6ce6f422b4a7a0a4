#include "kwbase/errorhandler.h"

#include "support/printing.h"
#include "support/tracelines.h"

#include <QLoggingCategory>

#include <gtest/gtest.h>

#include <thread>

using namespace Qt::StringLiterals;

namespace {

/// What Qt's logging was handed while a default sink is in force.
struct LoggedLine {
    QtMsgType type;
    QByteArray category;
    QString text;
};
QList<LoggedLine> logged;

void NoteLogged(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    logged.append({type, context.category, text});
}

TEST(ErrorHandler, AtStartBothBitsAreSet) {
    EXPECT_EQ(ErrorHandler::Instance().GetTraceMask(), 0x22U);
    EXPECT_EQ(TraceBit::ASSERTION, 0x02U);
    EXPECT_EQ(TraceBit::INFORMATION, 0x20U);
}

TEST(ErrorHandler, TheInstanceIsAlwaysTheSame) {
    EXPECT_EQ(&ErrorHandler::Instance(), &ErrorHandler::Instance());
}

TEST(ErrorHandler, ATraceLineNamesItsOrigin) {
    const TraceLines trace;
    _Q_Trace(u"the message"_s, u"platform\\somewhere"_s, 297);
    EXPECT_EQ(trace.lines, QStringList{u"platform\\somewhere(297): the message"_s});
}

TEST(ErrorHandler, TextsThatLookLikePlacesStayAsTheyAre) {
    const TraceLines trace;
    _Q_Trace(u"100%1 %2"_s, u"%1\\%2"_s, 65535);
    EXPECT_EQ(trace.lines, QStringList{u"%1\\%2(65535): 100%1 %2"_s});
}

TEST(ErrorHandler, AFinishedLineIsWrittenAsItIs) {
    const TraceLines trace;
    _Q_TraceOld(u"  a line\twith\nall sorts "_s);
    _Q_TraceOld({});
    EXPECT_EQ(trace.lines, (QStringList{u"  a line\twith\nall sorts "_s, QString()}));
}

TEST(ErrorHandler, TheSinkIsReplaceable) {
    QStringList first;
    QStringList second;
    ErrorHandler& handler = ErrorHandler::Instance();
    handler.SetSink([&](const QString& line) { first.append(line); });
    handler.Write(u"one"_s);
    handler.SetSink([&](const QString& line) { second.append(line); });
    handler.Write(u"two"_s);
    handler.SetSink({});
    EXPECT_EQ(first, QStringList{u"one"_s});
    EXPECT_EQ(second, QStringList{u"two"_s});
}

TEST(ErrorHandler, WithoutASinkLinesGoToQtsLoggingInACategoryOfTheirOwn) {
    logged.clear();
    ErrorHandler::Instance().SetSink({});
    const QtMessageHandler before = qInstallMessageHandler(NoteLogged);
    ErrorHandler::Instance().Write(u"a \"line\" with %1"_s);
    qInstallMessageHandler(before);
    ASSERT_EQ(logged.size(), 1);
    EXPECT_EQ(logged[0].type, QtInfoMsg);
    EXPECT_EQ(logged[0].category, "zan.trace");
    EXPECT_EQ(logged[0].text, u"a \"line\" with %1"_s);
}

TEST(ErrorHandler, AFailedAssertionIsReportedAndTheProgramGoesOn) {
    const TraceLines trace;
    _Q_assert(L"pSubCfg", L"devicecontrol\\stationcfg", 42);
    EXPECT_EQ(trace.lines, QStringList{u"devicecontrol\\stationcfg(42): Assertion failed: pSubCfg"_s});
}

TEST(ErrorHandler, AssertionsHaveABitOfTheirOwn) {
    const TraceLines trace;
    ErrorHandler::Instance().SetTraceMask(TraceBit::INFORMATION);
    _Q_assert(L"off", L"file", 1);
    ErrorHandler::Instance().SetTraceMask(TraceBit::ASSERTION);
    _Q_assert(L"on", L"file", 2);
    EXPECT_EQ(trace.lines, QStringList{u"file(2): Assertion failed: on"_s});
}

TEST(ErrorHandler, ALineIsHandedOverOnTheThreadThatTraces) {
    std::thread::id sinkThread;
    ErrorHandler::Instance().SetSink([&](const QString&) { sinkThread = std::this_thread::get_id(); });
    std::thread::id traceThread;
    std::thread([&] {
        traceThread = std::this_thread::get_id();
        _Q_TraceOld(u"line"_s);
    }).join();
    ErrorHandler::Instance().SetSink({});
    EXPECT_EQ(sinkThread, traceThread);
}

TEST(ErrorHandler, TheMaskMayBeChangedWhileAnotherThreadReadsIt) {
    const TraceLines trace;
    ErrorHandler& handler = ErrorHandler::Instance();
    std::thread writer([&] {
        for (int i = 0; i < 1000; ++i) {
            handler.SetTraceMask(i % 2 == 0 ? 0U : TraceBit::INFORMATION);
        }
    });
    for (int i = 0; i < 1000; ++i) {
        const unsigned mask = handler.GetTraceMask();
        EXPECT_TRUE(mask == 0U || mask == TraceBit::INFORMATION || mask == 0x22U);
    }
    writer.join();
}

} // namespace
