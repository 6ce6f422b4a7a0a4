#include "zancommon/samplemodequery.h"

#include "support/devicetree.h"
#include "support/tracelines.h"
#include "zancommon/zanoptions.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;
using EReason = AntennaSupport::EReason;

namespace {

/// A question that the row below answers.
SampleModeQuery Query() {
    SampleModeQuery query;
    query.deviceType = ZANTYPE_ZANREEF;
    query.mode = OPMODE_SCAN;
    query.converter = CONVERTER_RCV03;
    query.start = 30e6;
    query.stop = 1300e6;
    query.realtimeBandwidth = 5e6;
    return query;
}

SampleModeQuery::Row TestRow() {
    SampleModeQuery::Row row;
    row.deviceTypes = {ZANTYPE_ZANTIDE, ZANTYPE_ZANREEF, ZANTYPE_END};
    row.requiredOption = OPTION_ZAN_HFR;
    row.excludedOption = OPTION_ZAN_LF;
    row.firstConverter = CONVERTER_RCV01;
    row.secondConverter = CONVERTER_RCV03;
    row.realtimeBandwidth = 5e6;
    row.minFrequency = 30e6;
    row.maxFrequency = 1300e6;
    row.operationModes = {OPMODE_FFM, OPMODE_SCAN, OPMODE_END};
    return row;
}

class SampleModeQueryTest : public testing::Test {
protected:
    SampleModeQueryTest() { ZANOptions::Instance()->AddOption(OPTION_ZAN_HFR); }
    ~SampleModeQueryTest() override { ZANOptions::Finalise(); }

    TraceLines m_traces; // keeps the output of the test readable
};

} // namespace

TEST_F(SampleModeQueryTest, ARowThatPassesAllTestsFits) {
    EXPECT_EQ(Query().Test(TestRow()), EReason::SUPPORTED);
    EXPECT_TRUE(Query().Fits(TestRow()));
}

TEST_F(SampleModeQueryTest, EachTestThatFailsIsReported) {
    SampleModeQuery query = Query();
    query.converter = CONVERTER_NONE;
    EXPECT_EQ(query.Test(TestRow()), EReason::UNKNOWN_CONVERTER);
    query.converter = CONVERTER_RCV02;
    EXPECT_EQ(query.Test(TestRow()), EReason::CONVERTER);
    query = Query();
    query.deviceType = ZANTYPE_ZANFERN;
    EXPECT_EQ(query.Test(TestRow()), EReason::DEVICE_TYPE);
    query = Query();
    query.mode = OPMODE_TDMA;
    EXPECT_EQ(query.Test(TestRow()), EReason::OPERATION_MODE);
    query = Query();
    query.start = 29999999.0;
    EXPECT_EQ(query.Test(TestRow()), EReason::FREQUENCY_RANGE);
    query = Query();
    query.stop = 1300000001.0;
    EXPECT_EQ(query.Test(TestRow()), EReason::FREQUENCY_RANGE);
    ZANOptions::Instance()->AddOption(OPTION_ZAN_LF);
    EXPECT_EQ(Query().Test(TestRow()), EReason::OPTION_EXCLUDES);
    ZANOptions::Instance()->RemoveOption(OPTION_ZAN_HFR);
    EXPECT_EQ(Query().Test(TestRow()), EReason::OPTION_MISSING);
    EXPECT_FALSE(Query().Fits(TestRow()));
}

TEST_F(SampleModeQueryTest, TheBandwidthIsAWishAndNoTestOfTheRow) {
    SampleModeQuery query = Query();
    query.realtimeBandwidth = 2e6;
    EXPECT_EQ(query.Test(TestRow()), EReason::SUPPORTED);
    EXPECT_FALSE(query.Fits(TestRow()));
    query.realtimeBandwidth = ZANCharacteristics::fBANDWIDTH_ANY;
    EXPECT_TRUE(query.Fits(TestRow()));
}

TEST_F(SampleModeQueryTest, ARowWithoutOptionsFitsWithAnyOptions) {
    SampleModeQuery::Row row = TestRow();
    row.requiredOption = OPTION_NONE;
    row.excludedOption = OPTION_NONE;
    EXPECT_TRUE(Query().Fits(row));
    ZANOptions::Instance()->ClearAllOptions();
    EXPECT_TRUE(Query().Fits(row));
}

TEST_F(SampleModeQueryTest, AnAntennaIsExplainedByTheRowsThatComeFurthest) {
    ZANOptions::Instance()->ClearAllOptions();
    const DeviceTree device;
    struct Row {
        QString deviceType;
        QString converter;
        double low;
        double high;
        EOperationMode mode;
        EReason reason;
        std::vector<EZANOptions> options;
    };
    const std::vector<Row> rows{
        {u"ZANTIDE"_s, u"RCV99"_s, 1e6, 30e6, OPMODE_ANY, EReason::UNKNOWN_CONVERTER, {}},
        {u"ZANTIDE"_s, {}, 1e6, 30e6, OPMODE_ANY, EReason::UNKNOWN_CONVERTER, {}},
        {u"ZANTIDE"_s, u"RCV05"_s, 1e6, 30e6, OPMODE_ANY, EReason::CONVERTER, {}},
        {u"ZANTIDE"_s, u"RCV02"_s, 1e6, 30e6, OPMODE_ANY, EReason::DEVICE_TYPE, {}},
        {u"ZANTIDE"_s, u"RCV02"_s, 1.0, 30e9, OPMODE_ANY, EReason::DEVICE_TYPE, {}},
        {u"ZANMOSS"_s, u"RCV02"_s, 1e6, 30e6, OPMODE_TDMA, EReason::OPERATION_MODE, {}},
        {u"ZANTIDE"_s, u"RCV01"_s, 100e3, 25e6, OPMODE_ANY, EReason::FREQUENCY_RANGE, {}},
        {u"ZANTIDE"_s, u"RCV07"_s, 9e3, 1e6, OPMODE_ANY, EReason::OPTION_MISSING, {OPTION_ZAN_LF}},
        {u"ZANTIDE"_s, u"RCV03"_s, 1e6, 30e6, OPMODE_SCAN, EReason::OPTION_MISSING, {OPTION_ZANTIDE_WB}},
        {u"ZANTIDE"_s, u"RCV03"_s, 1e6, 30e6, OPMODE_TDMA, EReason::FREQUENCY_RANGE, {}},
        {u"ZANTIDE"_s, u"RCV01"_s, 1e6, 30e6, OPMODE_SCAN, EReason::SUPPORTED, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE((row.deviceType + u' ' + row.converter).toStdString());
        DeviceTree::SetType(row.deviceType);
        ZANCharacteristics& characteristics = DeviceTree::Connect();
        const AntennaData antenna = MakeAntenna(u"PX106"_s, row.converter, row.low, row.high);
        const AntennaSupport support = characteristics.GetAntennaSupport(antenna, row.mode);
        EXPECT_EQ(support.reason, row.reason);
        EXPECT_EQ(support.options, row.options);
        EXPECT_EQ(support.IsSupported(), row.reason == EReason::SUPPORTED);
        EXPECT_EQ(support.IsSupported(), characteristics.IsAntennaSupportedByDevice(&antenna, row.mode));
    }
}

TEST_F(SampleModeQueryTest, EachOptionThatWouldDoIsNamedOnce) {
    ZANOptions::Instance()->ClearAllOptions();
    const DeviceTree device;
    DeviceTree::SetType(u"ZANREEF"_s);
    ZANCharacteristics& characteristics = DeviceTree::Connect();
    // On this converter HF needs one option, for all modes that a row has.
    const AntennaSupport support =
        characteristics.GetAntennaSupport(MakeAntenna(u"PX101"_s, u"RCV03"_s, 300e3, 30e6), OPMODE_ANY);
    EXPECT_EQ(support.reason, EReason::OPTION_MISSING);
    EXPECT_EQ(support.options, std::vector{OPTION_ZANREEF_HF});
    EXPECT_EQ(ZANOptions::GetNameForOption(OPTION_ZANREEF_HF), u"ZANREEF-HF"_s);
    EXPECT_TRUE(ZANOptions::GetNameForOption(OPTION_NONE).isEmpty());
}
