#include "support/cataloguefiles.h"
#include "support/devicetree.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "zancommon/zancharacteristics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <span>

using namespace Qt::StringLiterals;

namespace {

using Catalogue = ZANCharacteristics;

struct BandwidthList {
    QString name;
    std::span<const double> values;
};

const std::array bandwidthLists{
    BandwidthList{u"s_aRESBWS_STD_20_2K"_s, Catalogue::s_aRESBWS_STD_20_2K},
    BandwidthList{u"s_aRESBWS_STD_50_2K"_s, Catalogue::s_aRESBWS_STD_50_2K},
    BandwidthList{u"s_aRESBWS_STD_50_20K"_s, Catalogue::s_aRESBWS_STD_50_20K},
    BandwidthList{u"s_aRESBWS_STD_100_20K"_s, Catalogue::s_aRESBWS_STD_100_20K},
    BandwidthList{u"s_aRESBWS_STD_200_20K"_s, Catalogue::s_aRESBWS_STD_200_20K},
    BandwidthList{u"s_aRESBWS_STD_500_20K"_s, Catalogue::s_aRESBWS_STD_500_20K},
    BandwidthList{u"s_aRESBWS_STD_500_100K"_s, Catalogue::s_aRESBWS_STD_500_100K},
    BandwidthList{u"s_aRESBWS_STD_500_200K"_s, Catalogue::s_aRESBWS_STD_500_200K},
    BandwidthList{u"s_aRESBWS_STD_1K_100K"_s, Catalogue::s_aRESBWS_STD_1K_100K},
    BandwidthList{u"s_aRESBWS_STD_1K_200K"_s, Catalogue::s_aRESBWS_STD_1K_200K},
    BandwidthList{u"s_aRESBWS_EXT_1K_100K"_s, Catalogue::s_aRESBWS_EXT_1K_100K},
    BandwidthList{u"s_aRESBWS_EXT_1K_200K"_s, Catalogue::s_aRESBWS_EXT_1K_200K},
    BandwidthList{u"s_aRESBWS_STD_2K_200K"_s, Catalogue::s_aRESBWS_STD_2K_200K},
    BandwidthList{u"s_aRESBWS_EXT_2K_200K"_s, Catalogue::s_aRESBWS_EXT_2K_200K},
    BandwidthList{u"s_aRESBWS_STD_200K_200K"_s, Catalogue::s_aRESBWS_STD_200K_200K},
    BandwidthList{u"s_aRESBWS_HF_0125K_25K"_s, Catalogue::s_aRESBWS_HF_0125K_25K},
    BandwidthList{u"s_aRESBWS_VUHF_1K_200K"_s, Catalogue::s_aRESBWS_VUHF_1K_200K},
    BandwidthList{u"s_aRESBWS_VUHF_5K_50K"_s, Catalogue::s_aRESBWS_VUHF_5K_50K},
    BandwidthList{u"s_aRESBWS_HF_0250K_12K"_s, Catalogue::s_aRESBWS_HF_0250K_12K},
};

/// The name of the list that is exactly this one; empty when none is.
QString NameOfBandwidthList(const double* list) {
    const auto* const found = std::ranges::find_if(
        bandwidthLists, [list](const BandwidthList& each) { return each.values.data() == list; });
    return found == bandwidthLists.end() ? QString() : found->name;
}

/// The elements of a list in front of the one that closes it.
template <class List, class Element>
std::vector<Element> UpTo(const List& list, Element end) {
    const auto* const last = std::ranges::find(list, end);
    EXPECT_NE(last, list.end()) << "not closed";
    return {list.begin(), last};
}

/// The converters of a row: the second one may be missing.
std::vector<EZANConverter> ConvertersOf(const Catalogue::SampleModeDescription& row) {
    std::vector converters{row.firstConverter};
    if (row.secondConverter != CONVERTER_NONE) {
        converters.push_back(row.secondConverter);
    }
    return converters;
}

AntennaData AntennaNamed(const QString& name) {
    AntennaData antenna;
    antenna.name = name;
    return antenna;
}

long MethodsOf(const QString& name, double frequency) {
    const AntennaData antenna = AntennaNamed(name);
    return ZANInformationCenter::Instance()
        ->GetZANCharacteristics()
        .GetDfMethodsDetailedForAntennaAndFrequency(&antenna, frequency);
}

} // namespace

// Tables

TEST(ZANCatalogue, ConstantsHaveTheirValues) {
    EXPECT_EQ(Catalogue::MAX_CHANNEL_COUNT_DEFAULT, 60000);
    EXPECT_EQ(Catalogue::fBANDWIDTH_ANY, -1.7976931348623157e308);
    EXPECT_EQ(Catalogue::fFREQUENCY_ANY, -1.7976931348623157e308);
}

TEST(ZANCatalogue, AntennaLibraryHoldsItsModelsInOrderAndEndsWithARowWithoutName) {
    const auto expected = ReadCatalogue("antennas.csv");
    const auto& library = Catalogue::s_aAntennaLibrary;
    ASSERT_EQ(expected.size(), 48U);
    ASSERT_EQ(library.size(), expected.size() + 1);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(library[i].name.toString(), expected[i].Text(u"name"_s));
        EXPECT_EQ(library[i].minFrequency, expected[i].Value<double>(u"minimum frequency"_s));
        EXPECT_EQ(library[i].maxFrequency, expected[i].Value<double>(u"maximum frequency"_s));
        EXPECT_EQ(library[i].dfMethods, expected[i].Value<qint32>(u"methods"_s));
    }
    EXPECT_TRUE(library.back().name.isEmpty());
    EXPECT_EQ(library.back().minFrequency, 0.0);
    EXPECT_EQ(library.back().maxFrequency, 0.0);
    EXPECT_EQ(library.back().dfMethods, 0);
}

TEST(ZANCatalogue, SampleModeTableHoldsItsRowsInOrderAndEndsWithTheSampleModeMinusOne) {
    const auto expected = ReadCatalogue("samplemodes.csv");
    const auto& table = Catalogue::s_aSampleModeDescription;
    ASSERT_EQ(expected.size(), 29U);
    ASSERT_EQ(table.size(), expected.size() + 1);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        const auto& row = table[i];
        EXPECT_EQ(row.sampleMode, expected[i].Value<EZANSampleMode>(u"sample mode"_s));
        EXPECT_EQ(UpTo(row.deviceTypes, ZANTYPE_END), expected[i].Values<EZANType>(u"device types"_s));
        EXPECT_EQ(row.requiredOption, expected[i].Value<EZANOptions>(u"required option"_s));
        EXPECT_EQ(row.excludedOption, expected[i].Value<EZANOptions>(u"excluded option"_s));
        EXPECT_EQ(ConvertersOf(row), expected[i].Values<EZANConverter>(u"converters"_s));
        EXPECT_EQ(row.realtimeBandwidth, expected[i].Value<double>(u"realtime bandwidth"_s));
        EXPECT_EQ(row.minFrequency, expected[i].Value<double>(u"minimum frequency"_s));
        EXPECT_EQ(row.maxFrequency, expected[i].Value<double>(u"maximum frequency"_s));
        EXPECT_EQ(UpTo(row.operationModes, OPMODE_END),
                  expected[i].Values<EOperationMode>(u"operation modes"_s));
        EXPECT_EQ(row.priority, expected[i].Value<int>(u"priority"_s));
        EXPECT_EQ(NameOfBandwidthList(row.resolutionBandwidths),
                  expected[i].Text(u"resolution bandwidths"_s));
        EXPECT_EQ(row.preamplifierAvailable, expected[i].Value<qint32>(u"preamplifier"_s));
        EXPECT_EQ(row.range, expected[i].Value<EFreqRange>(u"range"_s));
    }
    EXPECT_EQ(table.back().sampleMode, -1);
}

TEST(ZANCatalogue, ResolutionBandwidthListsHoldTheirValuesAndEndWithMinusOne) {
    const auto expected = ReadCatalogue("resolutionbandwidths.csv");
    ASSERT_EQ(expected.size(), bandwidthLists.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(bandwidthLists[i].name.toStdString());
        EXPECT_EQ(bandwidthLists[i].name, expected[i].Text(u"array"_s));
        auto values = expected[i].Values<double>(u"values"_s);
        values.push_back(-1.0);
        EXPECT_TRUE(std::ranges::equal(bandwidthLists[i].values, values));
    }
}

TEST(ZANCatalogue, ConverterGroupsHoldTheirConvertersAndEndWithNone) {
    const auto expected = ReadCatalogue("converters.csv");
    ASSERT_EQ(expected.size(), 2U);
    EXPECT_EQ(expected[0].Text(u"group"_s), u"s_aHF_CONVERTERS"_s);
    EXPECT_EQ(UpTo(Catalogue::s_aHF_CONVERTERS, CONVERTER_NONE),
              expected[0].Values<EZANConverter>(u"values"_s));
    EXPECT_EQ(expected[1].Text(u"group"_s), u"s_aVUHF_CONVERTERS"_s);
    EXPECT_EQ(UpTo(Catalogue::s_aVUHF_CONVERTERS, CONVERTER_NONE),
              expected[1].Values<EZANConverter>(u"values"_s));
}

TEST(ZANCatalogue, DeviceTypeNamesAreInOrder) {
    const auto expected = ReadCatalogue("devicetypes.csv");
    ASSERT_EQ(Catalogue::s_aDeviceTypeNames.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(Catalogue::s_aDeviceTypeNames[i].name.toString(), expected[i].Text(u"name"_s));
        EXPECT_EQ(Catalogue::s_aDeviceTypeNames[i].type, expected[i].Value<EZANType>(u"type"_s));
    }
}

TEST(ZANCatalogue, ConverterTypeNamesAreInOrder) {
    const auto expected = ReadCatalogue("convertertypes.csv");
    ASSERT_EQ(Catalogue::s_aConverterTypeNames.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(Catalogue::s_aConverterTypeNames[i].name.toString(), expected[i].Text(u"name"_s));
        EXPECT_EQ(Catalogue::s_aConverterTypeNames[i].converter,
                  expected[i].Value<EZANConverter>(u"converter"_s));
    }
}

TEST(ZANCatalogue, SampleModes4And13And14AreInTwoRowsThatDifferOnlyInDeviceTypesAndRequiredOption) {
    using Row = Catalogue::SampleModeDescription;
    for (const int sampleMode : {4, 13, 14}) {
        SCOPED_TRACE(sampleMode);
        std::vector<Row> rows;
        std::ranges::copy_if(Catalogue::s_aSampleModeDescription, std::back_inserter(rows),
                             [sampleMode](const Row& row) { return row.sampleMode == sampleMode; });
        ASSERT_EQ(rows.size(), 2U);
        const Row& first = rows[0];
        const Row& second = rows[1];
        EXPECT_NE(first.deviceTypes, second.deviceTypes);
        EXPECT_NE(first.requiredOption, second.requiredOption);
        EXPECT_EQ(first.excludedOption, second.excludedOption);
        EXPECT_EQ(first.firstConverter, second.firstConverter);
        EXPECT_EQ(first.secondConverter, second.secondConverter);
        EXPECT_EQ(first.realtimeBandwidth, second.realtimeBandwidth);
        EXPECT_EQ(first.minFrequency, second.minFrequency);
        EXPECT_EQ(first.maxFrequency, second.maxFrequency);
        EXPECT_EQ(first.operationModes, second.operationModes);
        EXPECT_EQ(first.priority, second.priority);
        EXPECT_EQ(first.resolutionBandwidths, second.resolutionBandwidths);
        EXPECT_EQ(first.preamplifierAvailable, second.preamplifierAvailable);
        EXPECT_EQ(first.range, second.range);
    }
}

// Limits

TEST(ZANCatalogue, LimitsAreInclusiveAndAnyFrequencyIsNotComparedWithThem) {
    constexpr double ANY = Catalogue::fFREQUENCY_ANY;
    struct Case {
        double start;
        double stop;
        bool hold;
    };
    const auto cases = std::to_array<Case>({
        {300000.0, 30000000.0, true},
        {299999.5, 30000000.0, false},
        {300000.0, 30000000.5, false},
        {ANY, 30000000.0, true},
        {300000.0, ANY, true},
        {ANY, ANY, true},
        {ANY, 30000001.0, false},
        {299999.0, ANY, false},
        {-1.0, 30000000.0, false}, // a frequency like any other
        {300000.0, -1.0, true},
        {std::nextafter(ANY, 0.0), 30000000.0, false},
        {std::numeric_limits<double>::quiet_NaN(), 30000000.0, false},
        {300000.0, std::numeric_limits<double>::quiet_NaN(), false},
    });
    for (const auto& each : cases) {
        EXPECT_EQ(Catalogue::LimitsHold(300000.0, 30000000.0, each.start, each.stop), each.hold)
            << each.start << " to " << each.stop;
    }
}

// What the queries make of the tables

TEST(ZANCatalogue, EachNameOfTheLibraryHasTheMethodsOfTheRowThatHoldsTheFrequency) {
    const DeviceTree device;
    const auto library = ReadCatalogue("antennas.csv");
    for (const CatalogueRow& antenna : library) {
        const QString name = antenna.Text(u"name"_s);
        for (const QString& bound : {u"minimum frequency"_s, u"maximum frequency"_s}) {
            for (const double offset : {-1.0, -0.5, 0.0, 0.5, 1.0}) {
                const double frequency = antenna.Value<double>(bound) + offset;
                const auto row = std::ranges::find_if(library, [&](const CatalogueRow& each) {
                    return each.Text(u"name"_s) == name &&
                           each.Value<double>(u"minimum frequency"_s) <= frequency &&
                           each.Value<double>(u"maximum frequency"_s) >= frequency;
                });
                const long usual = name.contains(u"SR"_s) ? 10 : 2;
                EXPECT_EQ(MethodsOf(name, frequency),
                          row == library.end() ? usual : row->Value<long>(u"methods"_s))
                    << name.toStdString() << " at " << frequency;
            }
        }
    }
}

TEST(ZANCatalogue, FrequencyBetweenTwoRowsOfAnAntennaHasTheUsualMethods) {
    const DeviceTree device;
    EXPECT_EQ(MethodsOf(u"PX116"_s, 30000000.0), 1);
    EXPECT_EQ(MethodsOf(u"PX116"_s, 30000000.5), 2);
    EXPECT_EQ(MethodsOf(u"PX116"_s, 30000001.0), 2);
    EXPECT_EQ(MethodsOf(u"PX117"_s, 105000000.0), 1);
    EXPECT_EQ(MethodsOf(u"PX117"_s, 105000000.5), 2);
    EXPECT_EQ(MethodsOf(u"PX117"_s, 105000001.0), 4);
}

TEST(ZANCatalogue, AntennaWithSwitchHasRowsOfItsOwn) {
    const DeviceTree device;
    const auto& library = Catalogue::s_aAntennaLibrary;
    for (const QString& name : {u"PX122"_s, u"PX122 (A/P)"_s}) {
        EXPECT_EQ(std::ranges::count(library, name, &Catalogue::AntennaDescription::name), 2);
        EXPECT_EQ(MethodsOf(name, 1300000000.0), 2);
        EXPECT_EQ(MethodsOf(name, 1300000001.0), 4);
    }
    EXPECT_EQ(MethodsOf(u"PX122 (P)"_s, 1300000001.0), 2) << "another name";
}

TEST(ZANCatalogue, UnknownAntennaHasSuperResolutionWhenItsNameContainsSR) {
    const DeviceTree device;
    struct Case {
        QString name;
        long methods;
    };
    const auto cases = std::to_array<Case>({
        {u"PX999SR"_s, 10},
        {u"SR"_s, 10},
        {u"xSRx"_s, 10},
        {u"PX999"_s, 2},
        {u"PX999sr"_s, 2},
        {u"PX999Sr"_s, 2},
        {u"S R"_s, 2},
        {u"px115SR_L"_s, 10},
        {u"px101"_s, 2}, // names are compared with
                         // case
        {u"PX101 "_s, 2},
        {u""_s, 2},
    });
    for (const auto& each : cases) {
        EXPECT_EQ(MethodsOf(each.name, 1e6), each.methods) << each.name.toStdString();
    }
}

TEST(ZANCatalogue, AntennaWithoutNameIsNotTheEndOfTheLibrary) {
    const DeviceTree device;
    EXPECT_EQ(MethodsOf({}, 0.0), 2);
    EXPECT_EQ(MethodsOf(u""_s, 0.0), 2);
}

TEST(ZANCatalogue, SampleModesInTwoRowsAreThereForTheDevicesOfEither) {
    const DeviceTree device;
    struct Case {
        QString type;
        QString option;
        EOperationMode mode;
        EZANSampleMode sampleMode;
        double low;
        double high;
        double realtimeBandwidth;
    };
    const auto cases = std::to_array<Case>({
        {u"ZANTIDE"_s, u"ZANTIDE-WB"_s, OPMODE_FFM, SAMPLEMODE_HF_WIDEBAND_1M, 300000.0, 30000000.0, 1e6},
        {u"ZANTIDE"_s, u"ZANREEF-HF"_s, OPMODE_FFM, SAMPLEMODE_END, 300000.0, 30000000.0, 1e6},
        {u"ZANREEF"_s, u"ZANREEF-HF"_s, OPMODE_FFM, SAMPLEMODE_HF_WIDEBAND_1M, 300000.0, 30000000.0, 1e6},
        {u"ZANREEF"_s, u"ZANTIDE-WB"_s, OPMODE_FFM, SAMPLEMODE_END, 300000.0, 30000000.0, 1e6},
        {u"ZANTIDE"_s, u""_s, OPMODE_SCAN, SAMPLEMODE_VUHF_5M, 20000000.0, 3600000000.0, 5e6},
        {u"ZANREEF"_s, u""_s, OPMODE_SCAN, SAMPLEMODE_END, 20000000.0, 3600000000.0, 5e6},
        {u"ZANREEF"_s, u"ZANREEF-HBW"_s, OPMODE_SCAN, SAMPLEMODE_VUHF_5M, 20000000.0, 3600000000.0, 5e6},
        {u"ZANFERN"_s, u""_s, OPMODE_SCAN, SAMPLEMODE_END, 20000000.0, 3600000000.0, 5e6},
        {u"ZANFERN"_s, u"ZANREEF-HBW"_s, OPMODE_SCAN, SAMPLEMODE_VUHF_5M, 20000000.0, 3600000000.0, 5e6},
        {u"ZANDUNE"_s, u"ZANDUNE-HBW"_s, OPMODE_SCAN, SAMPLEMODE_END, 20000000.0, 3600000000.0, 5e6},
        {u"ZANTIDE"_s, u""_s, OPMODE_SCAN, SAMPLEMODE_VUHF_10M, 20000000.0, 3600000000.0, 1e7},
        {u"ZANREEF"_s, u""_s, OPMODE_SCAN, SAMPLEMODE_END, 20000000.0, 3600000000.0, 1e7},
        {u"ZANREEF"_s, u"ZANREEF-HBW"_s, OPMODE_SCAN, SAMPLEMODE_VUHF_10M, 20000000.0, 3600000000.0, 1e7},
        {u"ZANFERN"_s, u""_s, OPMODE_SCAN, SAMPLEMODE_VUHF_10M, 20000000.0, 3600000000.0, 1e7},
    });
    TraceLines traces;
    for (const auto& each : cases) {
        DeviceTree::SetType(each.type);
        DeviceTree::SetAntennas({MakeAntenna(u"PX108"_s, u"RCV03"_s, each.low, each.high)});
        ZANOptions::Instance()->ClearAllOptions();
        ZANOptions::Instance()->AddOptionByName(each.option);
        EXPECT_EQ(
            DeviceTree::Connect().GetBestSampleMode(each.mode, each.low, each.high, each.realtimeBandwidth),
            each.sampleMode)
            << each.type.toStdString() << " with " << each.option.toStdString();
    }
}

TEST(ZANCatalogue, DeviceTypeIsFoundByItsName) {
    const DeviceTree device;
    const ZANCharacteristics& characteristics = DeviceTree::Connect();
    TraceLines traces;
    for (const CatalogueRow& row : ReadCatalogue("devicetypes.csv")) {
        DeviceTree::SetType(u"?"_s);
        traces.lines.clear();
        DeviceTree::SetType(row.Text(u"name"_s));
        EXPECT_EQ(characteristics.GetZANType(), row.Value<EZANType>(u"type"_s));
        EXPECT_TRUE(traces.lines.isEmpty());
    }
    for (const QString& name : {u"ZANSAND"_s, u"zanmoss"_s, u"ZANMOSS "_s, u""_s, u"%s %1"_s}) {
        DeviceTree::SetType(u"ZANMOSS"_s);
        traces.lines.clear();
        DeviceTree::SetType(name);
        EXPECT_EQ(characteristics.GetZANType(), ZANTYPE_ZANTIDE);
        ASSERT_EQ(traces.lines.size(), 1);
        EXPECT_TRUE(
            traces.lines[0].endsWith(u"): WARNING: device type "_s + name + u" not fully supported"_s))
            << traces.lines[0].toStdString();
    }
}

TEST(ZANCatalogue, ConverterIsFoundByItsTypeName) {
    const DeviceTree device;
    const TraceLines traces; // of antennas without converter
    const auto converterOf = [](const QString& typeName) {
        DeviceTree::SetAntennas({MakeAntenna(u"PX101"_s, typeName, 3e5, 3e7)});
        return DeviceTree::Connect().GetConverterForFrequencyRange(1e6, 2e6);
    };
    for (const CatalogueRow& row : ReadCatalogue("convertertypes.csv")) {
        EXPECT_EQ(converterOf(row.Text(u"name"_s)), row.Value<EZANConverter>(u"converter"_s));
    }
    for (const QString& name : {u""_s, u"RCV11"_s, u"rcv01"_s, u"RCV01 "_s, u"RCV0"_s, u"RCV"_s}) {
        EXPECT_EQ(converterOf(name), CONVERTER_NONE) << name.toStdString();
    }
}
