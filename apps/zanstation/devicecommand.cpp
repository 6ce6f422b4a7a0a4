#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zancharacteristics.h"
#include "zancommon/zanoptions.h"
#include "zancommon/zanvaluenames.h"
#include "zanstation/commandline.h"
#include "zanstation/commands.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/frequencytext.h"
#include "zanstation/operationmodetext.h"
#include "zanstation/station.h"
#include "zanstation/supportreason.h"
#include "zanstation/table.h"

using namespace Qt::StringLiterals;

namespace {

QString YesOrNo(bool yes) {
    return yes ? u"yes"_s : u"no"_s;
}

QString OrDash(const QString& text) {
    return text.isEmpty() ? u"-"_s : text;
}

void PrintLine(const QString& name, const QString& text) {
    Console::Print(name.leftJustified(16) + text);
}

void PrintAntennas(const ZANCharacteristics& characteristics) {
    Table table({u"antenna"_s, u"enabled"_s, u"range"_s, u"converter"_s, u"methods"_s, u"supported"_s});
    for (int i = 0; const AntennaData* antenna = characteristics.GetAntennaByIndex(i); ++i) {
        const QString problem = GetSupportProblem(characteristics, *antenna);
        table.Add({antenna->name, YesOrNo(antenna->enabled),
                   FrequencyText::FormatRange(antenna->minRange, antenna->maxRange),
                   OrDash(antenna->converterTypeName), OrDash(antenna->dfAlgorithms.join(u", "_s)),
                   problem.isEmpty() ? u"yes"_s : u"no: "_s + problem});
    }
    table.Print();
}

void PrintLimits(const ZANCharacteristics& characteristics) {
    Table table({u"mode"_s, u"lowest"_s, u"highest"_s});
    for (const EOperationMode mode :
         {OPMODE_FFM, OPMODE_WIDEBAND_FFM, OPMODE_SCAN, OPMODE_SEARCH, OPMODE_TDMA, OPMODE_9}) {
        table.Add({OperationModeText::Format(mode), FrequencyText::Format(characteristics.GetMinFreq(mode)),
                   FrequencyText::Format(characteristics.GetMaxFreq(mode))});
    }
    table.Print();
}

/// Prints what the device of the station is: type, options, antennas, limits per mode, and where the
/// converters change.
void PrintDevice(const ZANCharacteristics& characteristics) {
    const auto* const type = Tree::Instance()->Find<ValueString>(ZANPath::DEVICE_NODE.toString() +
                                                                 StdDeviceDefinition::g_vdDevType.PathName());
    PrintLine(u"device"_s, StationCfg::GetStationAddress() + u" ("_s + StationCfg::GetStationName() + u')');
    PrintLine(u"type"_s, type->GetValue());
    PrintLine(u"options"_s, OrDash(ZANOptions::Instance()->GetOptionsAsString()));
    PrintLine(u"channels"_s, QString::number(characteristics.GetMaxChannelCount()));
    QString verdict;
    static_cast<void>(characteristics.CheckAntennaSetupValidity(nullptr, verdict));
    PrintLine(u"antenna setup"_s, verdict);
    Console::Print({});
    PrintAntennas(characteristics);
    Console::Print({});
    PrintLimits(characteristics);
    Console::Print({});
    double vuhfStart = 0.0;
    double hfEnd = 0.0;
    const bool isFixed = characteristics.GetConverterSwitchFreq(vuhfStart, hfEnd);
    PrintLine(u"HF up to"_s, hfEnd > 0.0 ? FrequencyText::Format(hfEnd) : u"-"_s);
    PrintLine(u"VUHF from"_s, isFixed ? FrequencyText::Format(vuhfStart) : u"-"_s);
}

} // namespace

int Commands::Device(const QStringList& arguments) {
    CommandLine line(u"device"_s,
                     u"Prints what the station's device is: type, options, antennas and whether it supports "
                     "them, limits per mode, and where the converters change."_s,
                     {});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    return line.WithStation([] {
        PrintDevice(Station::GetCharacteristics());
        return EXIT_OK;
    });
}
