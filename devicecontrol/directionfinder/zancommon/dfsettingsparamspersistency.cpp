#include "zancommon/dfsettingsparamspersistency.h"

#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/cfgdefault.h"
#include "zancommon/dfsettingsparams.h"
#include "zancommon/truncation.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

namespace {

/// The sub-configuration of the settings in a file; null when it cannot be opened.
CfgPtr OpenSettings(const QString& name, ICfg::View view) {
    const CfgPtr store(CfgCenter::CreateCfg(name, view, {}));
    return CfgPtr(store ? store->GetSubCfg(u"DFSettings"_s) : nullptr);
}

} // namespace

DFSettingsParamsPersistency::DFSettingsParamsPersistency(DFSettingsParams& params, QString name,
                                                         ICfg::View view)
    : m_params(params)
    , m_name(std::move(name))
    , m_view(view) {}

void DFSettingsParamsPersistency::MakePersistent() {
    if (const CfgPtr cfg = OpenSettings(m_name, m_view)) {
        cfg->SetInt(u"DFBandwidthKey"_s, m_params.GetDFBandwidthKey());
        cfg->SetInt(u"DFModeKey"_s, m_params.GetDFModeKey());
        cfg->SetInt(u"UpdateIntervalKey"_s, m_params.GetUpdateIntervalKey());
        cfg->SetInt(u"LevelThreshold"_s, Truncate<qint64>(m_params.GetLevelThreshold()));
        cfg->CommitKey(u"LevelThreshold"_s);
    }
}

void DFSettingsParamsPersistency::Restore() {
    if (const CfgPtr cfg = OpenSettings(m_name, m_view)) {
        const auto readKey = [&cfg](const QString& key, unsigned long defaultKey) {
            return static_cast<unsigned long>(ReadOrCreateInt(*cfg, key, static_cast<qint64>(defaultKey)));
        };
        m_params.SetDFBandwidthKey(readKey(u"DFBandwidthKey"_s, DFSettingsParams::DEFAULT_DF_BANDWIDTH_KEY));
        m_params.SetDFModeKey(readKey(u"DFModeKey"_s, DFSettingsParams::DEFAULT_DF_MODE_KEY));
        m_params.SetUpdateIntervalKey(
            readKey(u"UpdateIntervalKey"_s, DFSettingsParams::DEFAULT_UPDATE_INTERVAL_KEY));
        m_params.SetLevelThreshold(static_cast<double>(ReadOrCreateInt(*cfg, u"LevelThreshold"_s, 0)));
    }
}

} // namespace KvZANCommon
