#include "zanserver/dfsettings.h"

#include "zancommon/dfsettingsparamspersistency.h"

using namespace Qt::StringLiterals;
using KvZANCommon::DFSettingsParamsPersistency;

namespace ZANServer {

namespace {

DFSettingsParamsPersistency OpenPersistency(KvZANCommon::DFSettingsParams& params) {
    return {params, u"DFSettings"_s, ICfg::View::Stations};
}

} // namespace

DfSettings::DfSettings(ControlValues& values)
    : m_values(values) {
    OpenPersistency(m_params).Restore();
    m_values.updateInterval->SetCurrentKey(m_params.GetUpdateIntervalKey(), m_values.owner);
    m_values.levelThreshold->SetValue(m_params.GetLevelThreshold(), m_values.owner);
}

bool DfSettings::Follow() {
    const AntennaData* const antenna = m_values.GetAntenna();
    const EOperationMode mode = m_values.GetMode();
    if (m_antenna == antenna && m_mode == mode) {
        return false;
    }
    m_antenna = antenna;
    m_mode = mode;
    const double frequency = m_values.frequency->GetValue();
    FillBandwidths(mode, frequency);
    FillModes(frequency);
    return true;
}

void DfSettings::FillBandwidths(EOperationMode mode, double frequency) {
    constexpr double ANY = ZANCharacteristics::fBANDWIDTH_ANY;
    const ZANCharacteristics& device = m_values.characteristics;
    ValueSelection& selection = *m_values.dfBandwidth;
    if (device.GetResolutionBandwidths(mode, frequency, frequency, ANY).empty()) {
        return;
    }
    const auto transaction = selection.CreateTransaction({TChangeCode::Changed}, m_values.owner);
    device.UpdateResolutionBandwidthSelection(&selection, mode, frequency, frequency, ANY, m_values.owner);
    if (m_bandwidth == 0.0 && !selection.SetCurrentKey(m_params.GetDFBandwidthKey(), m_values.owner)) {
        m_bandwidth = device.GetDefaultResolutionBandwidth(mode, frequency, frequency, ANY);
    }
    if (m_bandwidth > 0.0) {
        const double valid =
            device.ToNextValidResolutionBandwidth(mode, frequency, frequency, ANY, m_bandwidth);
        for (const SelectionItem& item : selection.GetItems()) {
            if (item.GetValue() == valid) {
                selection.SetCurrentKey(item.GetKey(), m_values.owner);
                break;
            }
        }
    } else {
        m_bandwidth = selection.GetItems()[static_cast<std::size_t>(selection.GetCurrentIndex())].GetValue();
    }
}

void DfSettings::FillModes(double frequency) {
    ValueSelection& selection = *m_values.dfMode;
    const std::list<EZANMethod> methods =
        m_values.characteristics.GetAvailableDfMethodsForFreq(frequency, 0.0);
    if (methods.empty()) {
        return;
    }
    const auto transaction = selection.CreateTransaction({TChangeCode::Changed}, m_values.owner);
    ZANCharacteristics::FillSelectionWithDfMethods(selection, methods, m_values.owner);
    if (m_dfMode.isEmpty()) {
        selection.SetCurrentKey(m_params.GetDFModeKey(), m_values.owner);
        m_dfMode = selection.GetStringValue();
    } else {
        selection.SetStringValue(m_dfMode, m_values.owner);
    }
}

void DfSettings::TakeChoice() {
    const ValueSelection& bandwidths = *m_values.dfBandwidth;
    if (const long index = bandwidths.GetCurrentIndex(); index >= 0) {
        m_bandwidth = bandwidths.GetItems()[static_cast<std::size_t>(index)].GetValue();
    }
    if (m_values.dfMode->GetCurrentIndex() >= 0) {
        m_dfMode = m_values.dfMode->GetStringValue();
    }
}

void DfSettings::MakePersistent() {
    // Keys of selections that nothing has filled stay as they were restored.
    if (m_values.dfBandwidth->GetCurrentIndex() >= 0) {
        m_params.SetDFBandwidthKey(static_cast<unsigned long>(m_values.dfBandwidth->GetCurrentKey()));
    }
    if (m_values.dfMode->GetCurrentIndex() >= 0) {
        m_params.SetDFModeKey(static_cast<unsigned long>(m_values.dfMode->GetCurrentKey()));
    }
    m_params.SetUpdateIntervalKey(static_cast<unsigned long>(m_values.updateInterval->GetCurrentKey()));
    m_params.SetLevelThreshold(m_values.levelThreshold->GetValue());
    OpenPersistency(m_params).MakePersistent();
}

} // namespace ZANServer
