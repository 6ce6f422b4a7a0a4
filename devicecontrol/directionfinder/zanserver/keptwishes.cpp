#include "zanserver/keptwishes.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/icfg.h"
#include "valueframework/valueformats.h"
#include "valueframework/valueselection.h"
#include "zancommon/stationcfg.h"
#include "zanserver/scanranges.h"
#include "zanserver/servervalue.h"

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace ZANServer::KeptWishes {

const std::array<Setting, 9> SETTINGS{{{u"Frequency", &g_vdFrequency},
                                       {u"Bandwidth", &g_vdBandwidth},
                                       {u"Demodulation", &g_vdDemodulation},
                                       {u"OperationMode", &g_vdOperationMode},
                                       {u"Squelch", &g_vdAuSquelch},
                                       {u"SquelchLevel", &g_vdAudioThreshold},
                                       {u"Volume", &g_vdAuChannelVolume},
                                       {u"Mute", &g_vdAuChannelMute},
                                       {u"ScanAveraging", &g_vdScanAveraging}}};

namespace {

QString RangeKey(qsizetype number) {
    return RANGE_KEY.toString() + QString::number(number);
}

QString Format(const ValueBase& value) {
    const auto* const selection = dynamic_cast<const ValueSelection*>(&value);
    return selection ? QString::number(selection->GetCurrentKey()) : value.GetStringValue();
}

/// Not a wish that was refused before anything was known of the device.
bool IsCarriedOut(const ValueBase& value) {
    return value.GetState() == TValueState::Valid;
}

CfgPtr OpenSection(const QString& station, bool create) {
    const CfgPtr cfg(StationCfg::GetStationCfg(station, create));
    return CfgPtr(cfg ? cfg->GetSubCfg(u"Control"_s) : nullptr);
}

} // namespace

bool Take(ValueBase& value, const QString& text, IObserver* originator) {
    auto* const selection = dynamic_cast<ValueSelection*>(&value);
    int key = 0;
    return selection ? ZANPlatform::ReadInteger(text, key) && selection->SetCurrentKey(key, originator)
                     : value.SetStringValue(text, originator);
}

void Restore(const QString& station, IObserver* originator) {
    const CfgPtr section = OpenSection(station, false);
    if (!section) {
        return;
    }
    for (const Setting& setting : SETTINGS) {
        if (const QString text = section->GetString(setting.key.toString(), {}); !text.isNull()) {
            Take(*ServerValue<ValueBase>(*setting.descriptor), text, originator);
        }
    }
    auto* const ranges = ServerValue<ValueStringList>(g_vdScanRanges);
    const auto transaction = ranges->CreateTransaction({TChangeCode::ListReplaced}, originator);
    ranges->Clear(originator);
    for (qsizetype i = 0; i < ScanRanges::MOST_RANGES; ++i) {
        const QString text = section->GetString(RangeKey(i), {});
        if (text.isEmpty()) {
            break;
        }
        if (QString fault; ScanRanges::Parse(text, fault)) {
            ranges->PushBack(text, originator);
        }
    }
}

void Keep(const QString& station) {
    const CfgPtr section = OpenSection(station, true);
    if (!section) {
        return;
    }
    for (const Setting& setting : SETTINGS) {
        if (const auto& value = *ServerValue<ValueBase>(*setting.descriptor); IsCarriedOut(value)) {
            section->SetString(setting.key.toString(), Format(value));
        }
    }
    const auto& ranges = *ServerValue<ValueStringList>(g_vdScanRanges);
    if (!IsCarriedOut(ranges)) {
        return;
    }
    qsizetype count = 0;
    for (const QString& text : ranges.GetElements()) {
        section->SetString(RangeKey(count++), text);
    }
    if (!section->GetString(RangeKey(count), {}).isEmpty()) {
        section->SetString(RangeKey(count), {});
    }
}

} // namespace ZANServer::KeptWishes
