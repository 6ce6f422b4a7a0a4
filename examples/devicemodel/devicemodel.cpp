// What a device can do: it is published in the value tree, its antenna setup is judged and repaired, wanted
// frequencies are moved to valid ones, and the answers follow the tree.

#include <stddevicedefinition/stddevicedescriptors.h>
#include <valueframework/tree.h>
#include <zancommon/antennadatalist.h>
#include <zancommon/zaninformationcenter.h>
#include <zancommon/zanoptions.h>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

const QString SERVER = u"/ZANServer"_s;
const QString DEVICE = u"/DEVICES/ZANServer"_s;

/// An antenna that covers the range between two frequencies (Hz) and is used from a third one on.
AntennaData MakeAntenna(const QString& name, const QString& converter, EZANMethod method, double low,
                        double high, double usedFrom) {
    AntennaData antenna;
    antenna.name = name;
    antenna.converterTypeName = converter;
    antenna.dfMethods = {static_cast<quint32>(method)};
    antenna.minFreq = low;
    antenna.maxFreq = high;
    antenna.minRange = usedFrom;
    antenna.maxRange = high;
    antenna.polarizationMode = POLARISATION_VERTICAL;
    return antenna;
}

/// What a device connection does once it knows its device.
void PublishDevice() {
    using namespace StdDeviceDefinition;
    CreateBranch(EBranch::SERVER, SERVER);
    CreateBranch(EBranch::DEVICE, DEVICE);
    const Tree& tree = *Tree::Instance();
    tree.Find<ValueString>(DEVICE + g_vdDevType.PathName())->SetValue(u"ZANTIDE"_s);
    tree.Find<ValueString>(DEVICE + g_vdDevOptions.PathName())->SetValue(u"ZAN-HFR"_s);
    AntennaDataList antennas(DEVICE, {});
    antennas.AddAntenna(MakeAntenna(u"PX110"_s, u"RCV01"_s, METHOD_WAT, 300e3, 30e6, 300e3));
    antennas.AddAntenna(MakeAntenna(u"PX106"_s, u"RCV03"_s, METHOD_COR, 20e6, 1300e6, 30e6));
    antennas.AddAntenna(MakeAntenna(u"PX109"_s, u"RCV03"_s, METHOD_VEC, 1300e6, 3000e6, 1400e6));
    antennas.WriteAntennasToValueTree({}); // below the path that the list was made with
}

void PrintSetup(const ZANCharacteristics& device) {
    QString verdict;
    const bool isValid = device.CheckAntennaSetupValidity(nullptr, verdict);
    std::printf("%s: %s\n", isValid ? "valid" : "not valid", qUtf8Printable(verdict));
    for (int i = 0; const AntennaData* antenna = device.GetAntennaByIndex(i); ++i) {
        std::printf("  %s from %.6f MHz to %.6f MHz\n", qUtf8Printable(antenna->name),
                    antenna->minRange / 1e6, antenna->maxRange / 1e6);
    }
}

/// Why the device does not support an antenna.
void PrintSupport(const ZANCharacteristics& device, const AntennaData& antenna) {
    const AntennaSupport support = device.GetAntennaSupport(antenna, OPMODE_ANY);
    std::printf("%s is %s", qUtf8Printable(antenna.name),
                support.IsSupported() ? "supported" : "not supported");
    if (support.reason == AntennaSupport::EReason::OPTION_MISSING) {
        for (const EZANOptions option : support.options) {
            std::printf(", %s would help", qUtf8Printable(ZANOptions::GetNameForOption(option)));
        }
    }
    std::printf("\n");
}

/// What a repair of the setup would make of it.
void PrintProposal(const ZANCharacteristics& device) {
    const AntennaSetup::Proposal proposal = device.ProposeAntennaSetup();
    for (const auto& antenna : proposal.antennas.GetAntennas()) {
        std::printf("  proposed: %s from %.6f MHz\n", qUtf8Printable(antenna->name), antenna->minRange / 1e6);
    }
}

void PrintServing(ZANCharacteristics& device, double frequency, bool preferRangeStart) {
    const AntennaData* antenna = device.GetAntennaForFrequency(frequency, preferRangeStart);
    std::printf("%.6f MHz: %s\n", frequency / 1e6, antenna ? qUtf8Printable(antenna->name) : "no antenna");
}

/// Moves a frequency (Hz) to the next valid one.
void Tune(ZANCharacteristics& device, EOperationMode mode, double frequency, double bandwidth) {
    std::printf("%.6f MHz", frequency / 1e6);
    if (const AntennaData* antenna = device.ToNextValidFrequency(mode, frequency, bandwidth)) {
        std::printf(" -> %.6f MHz with %s\n", frequency / 1e6, qUtf8Printable(antenna->name));
    } else {
        std::printf(": nothing serves it\n");
    }
}

/// Moves a range (Hz) as a whole to the next valid one.
void TuneRange(ZANCharacteristics& device, double start, double stop,
               ZANCharacteristics::EAdjustMode adjust) {
    std::printf("%.6f MHz to %.6f MHz", start / 1e6, stop / 1e6);
    const RangeAdjustment adjustment =
        device.AdjustFrequencyRange(OPMODE_SCAN, {start, stop}, ZANCharacteristics::fBANDWIDTH_ANY, adjust);
    if (adjustment.IsServed()) {
        std::printf(" -> %.6f MHz to %.6f MHz with %s", adjustment.range.low / 1e6,
                    adjustment.range.high / 1e6, qUtf8Printable(adjustment.antenna->name));
        if (adjustment.border) {
            std::printf(", off the border of %s and %s", qUtf8Printable(adjustment.border->below->name),
                        qUtf8Printable(adjustment.border->above->name));
        }
        std::printf("\n");
    } else {
        std::printf(": nothing serves it\n");
    }
}

void PrintBandwidths(const ZANCharacteristics& device, double frequency) {
    const double any = ZANCharacteristics::fBANDWIDTH_ANY;
    std::printf("sample mode %d, resolution %.0f Hz; realtime bandwidths in kHz:",
                static_cast<int>(device.GetBestSampleMode(OPMODE_SCAN, frequency, frequency, any)),
                device.ToNextValidResolutionBandwidth(OPMODE_SCAN, frequency, frequency, any, 150.0));
    for (const double bandwidth : device.GetRealtimeBandwidths(OPMODE_SCAN, frequency, frequency)) {
        std::printf(" %.0f", bandwidth / 1e3);
    }
    std::printf("\n");
}

/// Notified when the answers change.
class Watcher final : public IObserver {
public:
    explicit Watcher(ZANCharacteristics& device)
        : m_device(device) {
        m_device.AddObserver(this);
    }
    void Update(Observable* /*subject*/, TChangeCode /*code*/) override {
        std::printf("changed: type %d, scan up to %.0f MHz\n", static_cast<int>(m_device.GetZANType()),
                    m_device.GetMaxFreq(OPMODE_SCAN) / 1e6);
    }

private:
    ZANCharacteristics& m_device;
};

} // namespace

int main() {
    PublishDevice();
    ZANOptions::Instance()->ReadFromValueTree(DEVICE + u"/DevAttr/DevOptions"_s);
    ZANCharacteristics& device = ZANInformationCenter::Instance()->GetZANCharacteristics();
    device.SetBase_ValuePath(DEVICE, true);

    PrintSetup(device);
    PrintServing(device, 30e6, false);
    PrintServing(device, 30e6, true);
    PrintServing(device, 1350e6, false);
    PrintProposal(device);
    QString message;
    device.MakeAntennaSetupValid(message);
    std::printf("%s\n", qUtf8Printable(message));
    PrintSetup(device);

    Tune(device, OPMODE_FFM, 100e3, 0.0);
    Tune(device, OPMODE_WIDEBAND_FFM, 30.1e6, 2e6);
    TuneRange(device, 25e6, 35e6, ZANCharacteristics::ADJUST_DOWN);
    TuneRange(device, 25e6, 35e6, ZANCharacteristics::ADJUST_UP);
    TuneRange(device, 2990e6, 3010e6, ZANCharacteristics::ADJUST_DOWN);
    PrintBandwidths(device, 100e6);
    PrintSupport(device, MakeAntenna(u"PX120"_s, u"RCV07"_s, METHOD_WAT, 9e3, 1e6, 9e3));

    const Watcher watcher(device);
    ZANOptions::Instance()->RemoveOption(OPTION_ZAN_HFR); // notifies nobody; the next query uses it
    PrintBandwidths(device, 100e6);
    const Tree& tree = *Tree::Instance();
    tree.Find<ValueString>(DEVICE + u"/DevAttr/DevType"_s)->SetValue(u"ZANMOSS"_s);
    tree.Find<ValueString>(DEVICE + u"/Cfg/CfgModifyTime"_s)->SetValue(u"200126093000"_s);

    ZANInformationCenter::Finalise();
    ZANOptions::Finalise();
}
