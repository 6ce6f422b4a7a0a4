#include "zancommon/antennasection.h"

#include "kwbase/tracesource.h"
#include "zancommon/constanttext.h"

#include <array>

using namespace Qt::StringLiterals;

namespace {

// The lines of the list and of its records have one origin.
constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\antennadata");

void ReadValue(const ICfg& section, const QString& key, bool& value) {
    value = section.GetBool(key, false);
}
void ReadValue(const ICfg& section, const QString& key, QString& value) {
    value = section.GetString(key, {});
}
void ReadValue(const ICfg& section, const QString& key, QStringList& value) {
    const QString joined = section.GetString(key, {});
    value = joined.isEmpty() ? QStringList() : joined.split(u',');
}
void ReadValue(const ICfg& section, const QString& key, double& value) {
    value = section.GetString(key, {}).toDouble();
}
void ReadValue(const ICfg& section, const QString& key, float& value) {
    value = static_cast<float>(section.GetString(key, {}).toDouble());
}

void WriteValue(ICfg& section, const QString& key, bool value, int /*decimals*/) {
    section.SetBool(key, value);
}
void WriteValue(ICfg& section, const QString& key, const QString& value, int /*decimals*/) {
    section.SetString(key, value);
}
void WriteValue(ICfg& section, const QString& key, const QStringList& value, int /*decimals*/) {
    section.SetString(key, value.join(u','));
}
void WriteValue(ICfg& section, const QString& key, double value, int decimals) {
    section.SetString(key, QString::number(value, 'f', decimals));
}
void WriteValue(ICfg& section, const QString& key, EZANPolarisation value, int /*decimals*/) {
    section.SetInt(key, value);
}

/// Who reads a key.
enum class EReader { NOBODY, ALL, ALL_AND_CHOICE };

struct Key {
    ConstantText name;
    EReader reader = EReader::NOBODY;
    int decimals = 0; // of a number
    void (*read)(const ICfg& section, const QString& key, AntennaData& antenna) = nullptr;
    void (*write)(ICfg& section, const QString& key, const AntennaData& antenna, int decimals) = nullptr;
};

template <auto MEMBER>
void WriteMember(ICfg& section, const QString& key, const AntennaData& antenna, int decimals) {
    WriteValue(section, key, antenna.*MEMBER, decimals);
}

template <auto MEMBER>
constexpr Key MakeKey(ConstantText name, EReader reader, int decimals = 0) {
    return {name, reader, decimals,
            [](const ICfg& section, const QString& key, AntennaData& antenna) {
                ReadValue(section, key, antenna.*MEMBER);
            },
            &WriteMember<MEMBER>};
}

template <auto MEMBER>
constexpr Key MakeKeyToWrite(ConstantText name) {
    return {name, EReader::NOBODY, 0, nullptr, &WriteMember<MEMBER>};
}

constexpr std::array KEYS{
    MakeKey<&AntennaData::name>(u"Name", EReader::ALL),
    MakeKey<&AntennaData::enabled>(u"Enabled", EReader::ALL_AND_CHOICE),
    MakeKey<&AntennaData::minRange>(u"MinRange", EReader::ALL_AND_CHOICE, 3),
    MakeKey<&AntennaData::maxRange>(u"MaxRange", EReader::ALL_AND_CHOICE, 3),
    MakeKey<&AntennaData::compassEnabled>(u"CompassEnabled", EReader::ALL_AND_CHOICE),
    MakeKey<&AntennaData::mechOffset>(u"MechOffset", EReader::ALL_AND_CHOICE, 1),
    MakeKey<&AntennaData::compassSupport>(u"CompassSupport", EReader::ALL),
    MakeKey<&AntennaData::dfAlgorithms>(u"DFAlgorithm", EReader::ALL),
    MakeKey<&AntennaData::minFreq>(u"MinFreq", EReader::ALL, 3),
    MakeKey<&AntennaData::maxFreq>(u"MaxFreq", EReader::ALL, 3),
    MakeKey<&AntennaData::polarizationSupport>(u"PolarizationSupport", EReader::ALL),
    MakeKeyToWrite<&AntennaData::polarizationMode>(u"PolarizationMode"),
    MakeKey<&AntennaData::activePassiveSupport>(u"ActivePassiveSupport", EReader::ALL),
    MakeKey<&AntennaData::compassValue>(u"CompassValue", EReader::ALL, 3),
    MakeKey<&AntennaData::converterTypeName>(u"ConverterTypeName", EReader::ALL),
};

} // namespace

CfgPtr AntennaSection::Open(ICfg& station, int index) {
    CfgPtr pSubCfg(station.GetSubCfg(u"SystemConfiguration/Antenna"_s + QString::number(index)));
    if (!pSubCfg) {
        TRACE.Assertion(L"pSubCfg");
    }
    return pSubCfg;
}

QString AntennaSection::ReadName(const ICfg& section) {
    return section.GetString(u"Name"_s, {});
}

void AntennaSection::Read(const ICfg& section, EKeys keys, AntennaData& antenna) {
    const EReader least = keys == EKeys::ALL ? EReader::ALL : EReader::ALL_AND_CHOICE;
    for (const Key& key : KEYS) {
        if (key.reader >= least) {
            key.read(section, key.name, antenna);
        }
    }
    const FrequencyRange coverage = CoverageOf(antenna);
    if (!coverage.Contains(antenna.minRange)) {
        antenna.minRange = antenna.minFreq;
    }
    if (!coverage.Contains(antenna.maxRange)) {
        antenna.maxRange = antenna.maxFreq;
    }
}

void AntennaSection::Write(ICfg& section, const AntennaData& antenna) {
    for (const Key& key : KEYS) {
        key.write(section, key.name, antenna, key.decimals);
    }
}
