#include "kwbase/kwexception.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace Qt::StringLiterals;

namespace {

KWException Sample() {
    return {u"Wrong type assumed for %1. \u00b0"_s,
            u"source\\file"_s,
            u"detail"_s,
            u"CreateValue"_s,
            175,
            KWException::NO_CODE};
}

void ExpectSample(const KWException& exception) {
    EXPECT_EQ(exception.GetMessage(), u"Wrong type assumed for %1. \u00b0"_s);
    EXPECT_EQ(exception.GetSourceFile(), u"source\\file"_s);
    EXPECT_EQ(exception.GetDetail(), u"detail"_s);
    EXPECT_EQ(exception.GetFunctionName(), u"CreateValue"_s);
    EXPECT_EQ(exception.GetSourceLine(), 175U);
    EXPECT_EQ(exception.GetCode(), 0xFFFFFFFFU);
    EXPECT_EQ(std::string(exception.what()), "Wrong type assumed for %1. \xc2\xb0");
}

TEST(KWException, KeepsWhatItWasBuiltFrom) {
    ExpectSample(Sample());
}

TEST(KWException, ACopyOutlivesItsSource) {
    auto source = std::make_unique<KWException>(Sample());
    const KWException copy = *source;
    source.reset();
    ExpectSample(copy);
}

TEST(KWException, IsCaughtAsAStandardException) {
    try {
        throw Sample();
    } catch (const std::exception& exception) {
        EXPECT_EQ(std::string(exception.what()), "Wrong type assumed for %1. \xc2\xb0");
    }
}

TEST(KWException, IsCaughtByItsOwnType) {
    try {
        throw Sample();
    } catch (const KWException& exception) {
        ExpectSample(exception);
    }
}

} // namespace
