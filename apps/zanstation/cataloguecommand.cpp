#include "zancommon/closedtable.h"
#include "zancommon/zancharacteristics.h"
#include "zancommon/zanoptions.h"
#include "zanserver/frequencytext.h"
#include "zanserver/operationmodetext.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/table.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

// The texts of cells for people.

QString AsText(const QJsonValue& cell) {
    return cell.isNull() ? u"-"_s : cell.toVariant().toString();
}

QString AsFrequency(const QJsonValue& cell) {
    return FrequencyText::Format(cell.toDouble());
}

QString AsYesOrNo(const QJsonValue& cell) {
    return cell.toBool() ? u"yes"_s : u"no"_s;
}

template <QString (*Format)(const QJsonValue&)>
QString AsList(const QJsonValue& cell) {
    QStringList texts;
    for (const auto element : cell.toArray()) {
        texts.append(Format(element));
    }
    return texts.isEmpty() ? u"-"_s : texts.join(u", "_s);
}

struct Column {
    QString key; // in JSON; the title for people is the key with blanks instead of "_" and without the unit
    QString (*format)(const QJsonValue& cell);
};

struct Catalogue {
    QString name;
    std::vector<Column> columns;
    QJsonArray (*rows)();
};

QJsonArray MethodNames(qint32 mask) {
    constexpr std::array<std::pair<EZANMethodDetailed, QStringView>, 4> NAMES{{
        {METHODDETAILED_WAT, u"WAT"},
        {METHODDETAILED_COR, u"COR"},
        {METHODDETAILED_VEC, u"VEC"},
        {METHODDETAILED_SUPR, u"SUPR"},
    }};
    QJsonArray names;
    for (const auto& [bit, name] : NAMES) {
        if (mask & bit) {
            names.append(name.toString());
        }
    }
    return names;
}

QJsonArray AntennaRows() {
    QJsonArray rows;
    for (const auto& antenna : Rows(ZANCharacteristics::s_aAntennaLibrary)) {
        rows.append(QJsonObject{{u"name"_s, antenna.name.toString()},
                                {u"lowest_hz"_s, antenna.minFrequency},
                                {u"highest_hz"_s, antenna.maxFrequency},
                                {u"methods"_s, MethodNames(antenna.dfMethods)}});
    }
    return rows;
}

QString DeviceTypeName(EZANType type) {
    const auto& names = ZANCharacteristics::s_aDeviceTypeNames;
    const auto* const named = std::ranges::find(names, type, &ZANCharacteristics::DeviceTypeName::type);
    return named == names.end() ? QString::number(type) : named->name.toString();
}

QString ConverterName(EZANConverter converter) {
    const auto& names = ZANCharacteristics::s_aConverterTypeNames;
    return std::ranges::find(names, converter, &ZANCharacteristics::ConverterTypeName::converter)
        ->name.toString();
}

QString RangeName(EFreqRange range) {
    switch (range) {
    case FREQRANGE_HF:
        return u"HF"_s;
    case FREQRANGE_VUHF:
        return u"VUHF"_s;
    default:
        return u"VLF"_s;
    }
}

QJsonValue OptionName(EZANOptions option) {
    return option == OPTION_NONE
               ? QJsonValue()
               : std::ranges::find(ZANOptions::s_aOptionEntries, option, &ZANOptions::OptionEntry::option)
                     ->name.toString();
}

/// The elements of a list up to its closing one, converted by `toText`.
template <class List, class End, class ToText>
QJsonArray Elements(const List& list, End end, ToText toText) {
    QJsonArray elements;
    for (auto element = list.begin(); *element != end; ++element) {
        elements.append(toText(*element));
    }
    return elements;
}

QJsonArray Bandwidths(const double* bandwidths) {
    QJsonArray values;
    for (; *bandwidths > 0.0; ++bandwidths) {
        values.append(*bandwidths);
    }
    return values;
}

QJsonArray SampleModeRows() {
    QJsonArray rows;
    for (const auto& row : Rows(ZANCharacteristics::s_aSampleModeDescription)) {
        const std::array converters{row.firstConverter, row.secondConverter, CONVERTER_NONE};
        rows.append(
            QJsonObject{{u"sample_mode"_s, row.sampleMode},
                        {u"devices"_s, Elements(row.deviceTypes, ZANTYPE_END, DeviceTypeName)},
                        {u"option"_s, OptionName(row.requiredOption)},
                        {u"converters"_s, Elements(converters, CONVERTER_NONE, ConverterName)},
                        {u"realtime_bandwidth_hz"_s, row.realtimeBandwidth},
                        {u"lowest_hz"_s, row.minFrequency},
                        {u"highest_hz"_s, row.maxFrequency},
                        {u"modes"_s, Elements(row.operationModes, OPMODE_END, OperationModeText::Format)},
                        {u"priority"_s, row.priority},
                        {u"resolution_bandwidths_hz"_s, Bandwidths(row.resolutionBandwidths)},
                        {u"preamplifier"_s, row.preamplifierAvailable != 0},
                        {u"range"_s, RangeName(row.range)}});
    }
    return rows;
}

QJsonArray BandwidthRows() {
    using C = ZANCharacteristics;
    const std::array<std::pair<QStringView, const double*>, 19> lists{{
        {u"STD_20_2K", C::s_aRESBWS_STD_20_2K.data()},
        {u"STD_50_2K", C::s_aRESBWS_STD_50_2K.data()},
        {u"STD_50_20K", C::s_aRESBWS_STD_50_20K.data()},
        {u"STD_100_20K", C::s_aRESBWS_STD_100_20K.data()},
        {u"STD_200_20K", C::s_aRESBWS_STD_200_20K.data()},
        {u"STD_500_20K", C::s_aRESBWS_STD_500_20K.data()},
        {u"STD_500_100K", C::s_aRESBWS_STD_500_100K.data()},
        {u"STD_500_200K", C::s_aRESBWS_STD_500_200K.data()},
        {u"STD_1K_100K", C::s_aRESBWS_STD_1K_100K.data()},
        {u"STD_1K_200K", C::s_aRESBWS_STD_1K_200K.data()},
        {u"EXT_1K_100K", C::s_aRESBWS_EXT_1K_100K.data()},
        {u"EXT_1K_200K", C::s_aRESBWS_EXT_1K_200K.data()},
        {u"STD_2K_200K", C::s_aRESBWS_STD_2K_200K.data()},
        {u"EXT_2K_200K", C::s_aRESBWS_EXT_2K_200K.data()},
        {u"STD_200K_200K", C::s_aRESBWS_STD_200K_200K.data()},
        {u"HF_0125K_25K", C::s_aRESBWS_HF_0125K_25K.data()},
        {u"VUHF_1K_200K", C::s_aRESBWS_VUHF_1K_200K.data()},
        {u"VUHF_5K_50K", C::s_aRESBWS_VUHF_5K_50K.data()},
        {u"HF_0250K_12K", C::s_aRESBWS_HF_0250K_12K.data()},
    }};
    QJsonArray rows;
    for (const auto& [name, bandwidths] : lists) {
        rows.append(QJsonObject{{u"name"_s, name.toString()}, {u"bandwidths_hz"_s, Bandwidths(bandwidths)}});
    }
    return rows;
}

QJsonArray ConverterRows() {
    QJsonArray rows;
    for (const auto& [name, converter] : ZANCharacteristics::s_aConverterTypeNames) {
        QJsonValue group;
        if (ZANCharacteristics::IsInGroup(ZANCharacteristics::s_aHF_CONVERTERS, converter)) {
            group = RangeName(FREQRANGE_HF);
        } else if (ZANCharacteristics::IsInGroup(ZANCharacteristics::s_aVUHF_CONVERTERS, converter)) {
            group = RangeName(FREQRANGE_VUHF);
        }
        rows.append(QJsonObject{{u"name"_s, name.toString()}, {u"number"_s, converter}, {u"group"_s, group}});
    }
    return rows;
}

QJsonArray OptionRows() {
    QJsonArray rows;
    for (const auto& [name, option] : Rows(ZANOptions::s_aOptionEntries)) {
        rows.append(QJsonObject{{u"name"_s, name.toString()}, {u"number"_s, option}});
    }
    return rows;
}

const std::array<Catalogue, 5>& GetCatalogues() {
    static const std::array<Catalogue, 5> catalogues{{
        {u"antennas"_s,
         {{u"name"_s, AsText},
          {u"lowest_hz"_s, AsFrequency},
          {u"highest_hz"_s, AsFrequency},
          {u"methods"_s, AsList<AsText>}},
         AntennaRows},
        {u"sample-modes"_s,
         {{u"sample_mode"_s, AsText},
          {u"devices"_s, AsList<AsText>},
          {u"option"_s, AsText},
          {u"converters"_s, AsList<AsText>},
          {u"realtime_bandwidth_hz"_s, AsFrequency},
          {u"lowest_hz"_s, AsFrequency},
          {u"highest_hz"_s, AsFrequency},
          {u"modes"_s, AsList<AsText>},
          {u"priority"_s, AsText},
          {u"preamplifier"_s, AsYesOrNo},
          {u"range"_s, AsText},
          {u"resolution_bandwidths_hz"_s, AsList<AsFrequency>}},
         SampleModeRows},
        {u"bandwidths"_s, {{u"name"_s, AsText}, {u"bandwidths_hz"_s, AsList<AsFrequency>}}, BandwidthRows},
        {u"converters"_s, {{u"name"_s, AsText}, {u"number"_s, AsText}, {u"group"_s, AsText}}, ConverterRows},
        {u"options"_s, {{u"name"_s, AsText}, {u"number"_s, AsText}}, OptionRows},
    }};
    return catalogues;
}

QString Title(QString key) {
    if (key.endsWith("_hz"_L1)) {
        key.chop(3);
    }
    return key.replace(u'_', u' ');
}

void PrintTable(const Catalogue& catalogue) {
    QStringList titles;
    for (const Column& column : catalogue.columns) {
        titles.append(Title(column.key));
    }
    Table table(titles);
    for (const auto row : catalogue.rows()) {
        QStringList cells;
        for (const Column& column : catalogue.columns) {
            cells.append(column.format(row[column.key]));
        }
        table.Add(cells);
    }
    table.Print();
}

/// The names of the tables.
QStringList GetTableNames() {
    QStringList names;
    for (const Catalogue& catalogue : GetCatalogues()) {
        names.append(catalogue.name);
    }
    return names;
}

/// Prints a table for people, or as an array of JSON objects for programs (frequencies and bandwidths in Hz).
/// False when there is no table of this name.
bool Print(const QString& tableName, bool asJson) {
    const auto& catalogues = GetCatalogues();
    const auto* const catalogue = std::ranges::find(catalogues, tableName, &Catalogue::name);
    if (catalogue == catalogues.end()) {
        return false;
    }
    if (asJson) {
        Console::PrintJson(QJsonDocument(catalogue->rows()));
    } else {
        PrintTable(*catalogue);
    }
    return true;
}

} // namespace

namespace Commands {

int Catalogue(const QStringList& arguments) {
    const QString tables = GetTableNames().join(u'|');
    CommandLine line(u"catalogue"_s, u"Prints a table of the device catalogue."_s,
                     {CommandLine::JsonOption()}, tables);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    if (line.Positional().size() != 1 || !Print(line.Positional().constFirst(), line.AsJson())) {
        return CommandLine::Refuse(u"name one of these tables: "_s + tables);
    }
    return EXIT_OK;
}

} // namespace Commands
