#include "kwbase/tracesource.h"

#include "support/printing.h"
#include "support/tracelines.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"platform\\somewhere");

QString WithoutText() {
    ADD_FAILURE() << "the message of a line that nobody reads was made";
    return {};
}

} // namespace

TEST(TraceSource, ALineNamesTheSourceAndTheLineOfTheCall) {
    const TraceLines trace;
    TRACE.Information([] { return u"message"_s; });
    const int line = __LINE__ - 1;
    EXPECT_EQ(trace.lines, QStringList{u"platform\\somewhere(%1): message"_s.arg(line)});
}

TEST(TraceSource, ALineOfItsOwnIsKept) {
    const TraceLines trace;
    TRACE.Information([] { return u"message"_s; }, 81);
    EXPECT_EQ(trace.lines, QStringList{u"platform\\somewhere(81): message"_s});
}

TEST(TraceSource, NothingIsFormattedWhenTheBitIsOff) {
    const TraceLines trace;
    for (const unsigned mask : {0U, TraceBit::ASSERTION, ~TraceBit::INFORMATION}) {
        ErrorHandler::Instance().SetTraceMask(mask);
        TRACE.Information(WithoutText);
    }
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST(TraceSource, TheMaskIsReadAgainForEachMessage) {
    const TraceLines trace;
    const auto traceOne = [](int number) {
        TRACE.Information([number] { return QString::number(number); }, 1);
    };
    traceOne(1);
    ErrorHandler::Instance().SetTraceMask(0);
    traceOne(2);
    ErrorHandler::Instance().SetTraceMask(TraceBit::INFORMATION);
    traceOne(3);
    EXPECT_EQ(trace.lines, (QStringList{u"platform\\somewhere(1): 1"_s, u"platform\\somewhere(1): 3"_s}));
}

TEST(TraceSource, AFailedAssertionNamesTheSourceToo) {
    const TraceLines trace;
    TRACE.Assertion(L"pSubCfg");
    const int line = __LINE__ - 1;
    TRACE.Assertion(L"pMshClientDll != NULL", 154);
    EXPECT_EQ(trace.lines,
              (QStringList{u"platform\\somewhere(%1): Assertion failed: pSubCfg"_s.arg(line),
                           u"platform\\somewhere(154): Assertion failed: pMshClientDll != NULL"_s}));
    ErrorHandler::Instance().SetTraceMask(TraceBit::INFORMATION);
    TRACE.Assertion(L"off");
    EXPECT_EQ(trace.lines.size(), 2);
}
