#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zancharacteristics.h"
#include "zancommon/zanoptions.h"
#include "zancommon/zanvaluenames.h"
#include "zanserver/frequencytext.h"
#include "zanserver/operationmodetext.h"
#include "zanserver/station.h"
#include "zanstation/antennajson.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/table.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <array>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

constexpr std::array MODES{OPMODE_FFM,    OPMODE_WIDEBAND_FFM, OPMODE_SCAN,
                           OPMODE_SEARCH, OPMODE_TDMA,         OPMODE_9};

QString YesOrNo(bool yes) {
    return yes ? u"yes"_s : u"no"_s;
}

QString OrDash(const QString& text) {
    return text.isEmpty() ? u"-"_s : text;
}

QString OptionNames(const std::vector<EZANOptions>& options) {
    QStringList names;
    for (const EZANOptions option : options) {
        names.append(ZANOptions::GetNameForOption(option));
    }
    return names.join(u" or "_s);
}

/// Why the device does not support an antenna; empty when it does support it.
QString DescribeProblem(const ZANCharacteristics& characteristics, const AntennaData& antenna) {
    using EReason = AntennaSupport::EReason;
    const AntennaSupport support = characteristics.GetAntennaSupport(antenna, OPMODE_ANY);
    const QString& converter = antenna.converterTypeName;
    switch (support.reason) {
    case EReason::UNKNOWN_CONVERTER:
        return u"unknown converter '%1'"_s.arg(converter);
    case EReason::CONVERTER:
    case EReason::DEVICE_TYPE:
    case EReason::OPERATION_MODE:
        return u"the device has no sample mode for the converter "_s + converter;
    case EReason::FREQUENCY_RANGE:
        return u"no sample mode of the converter %1 covers the range %2"_s.arg(
            converter, FrequencyText::FormatRange(antenna.minRange, antenna.maxRange));
    case EReason::OPTION_EXCLUDES:
        return u"excluded by the option "_s + OptionNames(support.options);
    case EReason::OPTION_MISSING:
        return u"needs the option "_s + OptionNames(support.options);
    case EReason::SUPPORTED:
        break;
    }
    return {};
}

void PrintLine(const QString& name, const QString& text) {
    Console::Print(name.leftJustified(16) + text);
}

void PrintAntennas(const ZANCharacteristics& characteristics) {
    Table table({u"antenna"_s, u"enabled"_s, u"range"_s, u"converter"_s, u"methods"_s, u"supported"_s});
    for (int i = 0; const AntennaData* antenna = characteristics.GetAntennaByIndex(i); ++i) {
        const QString problem = DescribeProblem(characteristics, *antenna);
        table.Add({antenna->name, YesOrNo(antenna->enabled),
                   FrequencyText::FormatRange(antenna->minRange, antenna->maxRange),
                   OrDash(antenna->converterTypeName), OrDash(antenna->dfAlgorithms.join(u", "_s)),
                   problem.isEmpty() ? u"yes"_s : u"no: "_s + problem});
    }
    table.Print();
}

void PrintLimits(const ZANCharacteristics& characteristics) {
    Table table({u"mode"_s, u"lowest"_s, u"highest"_s});
    for (const EOperationMode mode : MODES) {
        table.Add({OperationModeText::Format(mode), FrequencyText::Format(characteristics.GetMinFreq(mode)),
                   FrequencyText::Format(characteristics.GetMaxFreq(mode))});
    }
    table.Print();
}

/// The device of the station, without its antennas and modes.
struct DeviceSummary {
    explicit DeviceSummary(const ZANCharacteristics& characteristics)
        : type(Tree::Instance()
                   ->Find<ValueString>(ZANPath::Device(StdDeviceDefinition::g_vdDevType))
                   ->GetValue())
        , channelCount(characteristics.GetMaxChannelCount())
        , isSetupValid(characteristics.CheckAntennaSetupValidity(nullptr, verdict))
        , isVuhfFixed(characteristics.GetConverterSwitchFreq(vuhfStart, hfEnd)) {}

    QString address = StationCfg::GetStationAddress();
    QString name = StationCfg::GetStationName();
    QString type;
    int channelCount;
    QString verdict; // result of the check of the antenna setup
    bool isSetupValid;
    double vuhfStart = 0.0;
    double hfEnd = 0.0;
    bool isVuhfFixed;
};

/// For people: type, options, antennas, limits per mode, and where the converters change.
void PrintDevice(const ZANCharacteristics& characteristics) {
    const DeviceSummary device(characteristics);
    PrintLine(u"device"_s, device.address + u" ("_s + device.name + u')');
    PrintLine(u"type"_s, device.type);
    PrintLine(u"options"_s, OrDash(ZANOptions::Instance()->GetOptionsAsString()));
    PrintLine(u"channels"_s, QString::number(device.channelCount));
    PrintLine(u"antenna setup"_s, device.verdict);
    Console::Print({});
    PrintAntennas(characteristics);
    Console::Print({});
    PrintLimits(characteristics);
    Console::Print({});
    PrintLine(u"HF up to"_s, device.hfEnd > 0.0 ? FrequencyText::Format(device.hfEnd) : u"-"_s);
    PrintLine(u"VUHF from"_s, device.isVuhfFixed ? FrequencyText::Format(device.vuhfStart) : u"-"_s);
}

QJsonArray DescribeAntennas(const ZANCharacteristics& characteristics) {
    QJsonArray antennas;
    for (int i = 0; const AntennaData* antenna = characteristics.GetAntennaByIndex(i); ++i) {
        QJsonObject object = AntennaJson::Describe(*antenna);
        object[u"methods"_s] = QJsonArray::fromStringList(antenna->dfAlgorithms);
        const QString problem = DescribeProblem(characteristics, *antenna);
        object[u"supported"_s] = problem.isEmpty();
        if (!problem.isEmpty()) {
            object[u"problem"_s] = problem;
        }
        antennas.append(object);
    }
    return antennas;
}

QJsonArray DescribeLimits(const ZANCharacteristics& characteristics) {
    QJsonArray modes;
    for (const EOperationMode mode : MODES) {
        modes.append(QJsonObject{{u"mode"_s, OperationModeText::Format(mode)},
                                 {u"lowest_hz"_s, characteristics.GetMinFreq(mode)},
                                 {u"highest_hz"_s, characteristics.GetMaxFreq(mode)}});
    }
    return modes;
}

/// The same for programs.
QJsonObject DescribeDevice(const ZANCharacteristics& characteristics) {
    const DeviceSummary device(characteristics);
    const QString options = ZANOptions::Instance()->GetOptionsAsString();
    QJsonObject object{{u"address"_s, device.address},
                       {u"name"_s, device.name},
                       {u"type"_s, device.type},
                       {u"options"_s, QJsonArray::fromStringList(options.split(u';', Qt::SkipEmptyParts))},
                       {u"channels"_s, device.channelCount},
                       {u"valid"_s, device.isSetupValid},
                       {u"verdict"_s, device.verdict},
                       {u"antennas"_s, DescribeAntennas(characteristics)},
                       {u"modes"_s, DescribeLimits(characteristics)}};
    if (device.hfEnd > 0.0) {
        object[u"hf_up_to_hz"_s] = device.hfEnd;
    }
    if (device.isVuhfFixed) {
        object[u"vuhf_from_hz"_s] = device.vuhfStart;
    }
    return object;
}

} // namespace

namespace Commands {

int Device(const QStringList& arguments) {
    CommandLine line(u"device"_s,
                     u"Prints what the station's device is: type, options, antennas and whether it supports "
                     "them, limits per mode, and where the converters change."_s,
                     {CommandLine::JsonOption()});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    return line.WithStation([&line] {
        const ZANCharacteristics& characteristics = Station::GetCharacteristics();
        if (line.AsJson()) {
            Console::PrintJson(QJsonDocument(DescribeDevice(characteristics)));
        } else {
            PrintDevice(characteristics);
        }
        return EXIT_OK;
    });
}

} // namespace Commands
