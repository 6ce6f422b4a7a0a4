#pragma once

#include "support/printing.h"
#include "zancommon/antennadatalist.h"

#include <gtest/gtest.h>

#include <QStringList>

/// A record in which no field has its default.
inline AntennaData MakeUnusualAntenna() {
    AntennaData antenna;
    antenna.name = QStringLiteral("PX122 (A/P)");
    antenna.handle = 7;
    antenna.minFreq = 1e6;
    antenna.maxFreq = 30e6;
    antenna.minRange = 1.5e6;
    antenna.maxRange = 25e6;
    antenna.enabled = false;
    antenna.dfMethods = {2, 1, 3};
    antenna.dfAlgorithms = {QStringLiteral("SUPR"), QStringLiteral("COR"), QStringLiteral("VEC")};
    antenna.compassSupport = true;
    antenna.compassEnabled = true;
    antenna.compassValue = 12.5F;
    antenna.mechOffset = -3.5F;
    antenna.polarizationSupport = true;
    antenna.activePassiveSupport = true;
    antenna.furtherFlag = true;
    antenna.polarizationMode = POLARISATION_HORIZONTAL;
    antenna.reservedHandle = 8;
    antenna.compassHandle = 9;
    antenna.auxiliaryValue1 = 1ULL << 40U;
    antenna.converterHandle = 10;
    antenna.converterTypeName = QStringLiteral("RCV01");
    antenna.auxiliaryValue2 = 1ULL << 41U;
    antenna.auxiliaryValue3 = 1ULL << 42U;
    return antenna;
}

/// Compares all fields. A frequency that is not a number equals itself.
inline void ExpectSame(const AntennaData& actual, const AntennaData& expected) {
    const auto expectNumber = [](double number, double wanted, const char* field) {
        EXPECT_TRUE(number == wanted || (number != number && wanted != wanted))
            << field << " is " << number << " and not " << wanted;
    };
    EXPECT_EQ(actual.name, expected.name);
    EXPECT_EQ(actual.handle, expected.handle);
    expectNumber(actual.minFreq, expected.minFreq, "minFreq");
    expectNumber(actual.maxFreq, expected.maxFreq, "maxFreq");
    expectNumber(actual.minRange, expected.minRange, "minRange");
    expectNumber(actual.maxRange, expected.maxRange, "maxRange");
    EXPECT_EQ(actual.enabled, expected.enabled);
    EXPECT_EQ(actual.dfMethods, expected.dfMethods);
    EXPECT_EQ(actual.dfAlgorithms, expected.dfAlgorithms);
    EXPECT_EQ(actual.compassSupport, expected.compassSupport);
    EXPECT_EQ(actual.compassEnabled, expected.compassEnabled);
    expectNumber(actual.compassValue, expected.compassValue, "compassValue");
    expectNumber(actual.mechOffset, expected.mechOffset, "mechOffset");
    EXPECT_EQ(actual.polarizationSupport, expected.polarizationSupport);
    EXPECT_EQ(actual.activePassiveSupport, expected.activePassiveSupport);
    EXPECT_EQ(actual.furtherFlag, expected.furtherFlag);
    EXPECT_EQ(actual.polarizationMode, expected.polarizationMode);
    EXPECT_EQ(actual.reservedHandle, expected.reservedHandle);
    EXPECT_EQ(actual.compassHandle, expected.compassHandle);
    EXPECT_EQ(actual.auxiliaryValue1, expected.auxiliaryValue1);
    EXPECT_EQ(actual.converterHandle, expected.converterHandle);
    EXPECT_EQ(actual.converterTypeName, expected.converterTypeName);
    EXPECT_EQ(actual.auxiliaryValue2, expected.auxiliaryValue2);
    EXPECT_EQ(actual.auxiliaryValue3, expected.auxiliaryValue3);
}

/// Appends a copy and returns it.
inline AntennaData* Append(AntennaDataList& list, const AntennaData& antenna) {
    auto* const copy = new AntennaData(antenna);
    list.AddAntenna(copy);
    return copy;
}

inline QStringList NamesOf(const AntennaDataList& list) {
    QStringList names;
    for (const auto& antenna : list.GetAntennas()) {
        names.append(antenna->name);
    }
    return names;
}
