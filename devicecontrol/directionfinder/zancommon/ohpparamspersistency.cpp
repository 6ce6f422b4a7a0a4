#include "zancommon/ohpparamspersistency.h"

#include "kwbase/tracesource.h"
#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/cfgdefault.h"
#include "zancommon/overheadpassparams.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\ohpparamspersistency");

const QString& ThresholdKey() {
    static const QString key = u"Threshold"_s;
    return key;
}

const QString& ValidKey() {
    static const QString key = u"Valid"_s;
    return key;
}

/// Null when the sub-configuration cannot be opened.
CfgPtr OpenCfg() {
    return CfgPtr(CfgCenter::GetAppCfg(ICfg::View::OverheadPass).GetSubCfg(u"OverheadPass"_s));
}

int ReadThreshold(ICfg& cfg) {
    const qint64 threshold = ReadOrCreateInt(cfg, ThresholdKey(), OverheadPassParams::DEFAULT_THRESHOLD);
    if (std::in_range<int>(threshold)) {
        return static_cast<int>(threshold);
    }
    TRACE.Information([threshold] {
        return u"The overhead-pass threshold %1 of the settings is out of range; %2 is used."_s.arg(
            QString::number(threshold), QString::number(OverheadPassParams::DEFAULT_THRESHOLD));
    });
    return OverheadPassParams::DEFAULT_THRESHOLD;
}

} // namespace

OHPParamsPersistency::OHPParamsPersistency(OverheadPassParams& params)
    : m_params(params) {}

void OHPParamsPersistency::MakePersistent() {
    if (const CfgPtr cfg = OpenCfg()) {
        cfg->SetInt(ThresholdKey(), m_params.GetThreshold());
        cfg->SetBool(ValidKey(), m_params.IsValid());
        cfg->CommitKey(ValidKey());
    }
}

void OHPParamsPersistency::Restore() {
    if (const CfgPtr cfg = OpenCfg()) {
        m_params.SetThreshold(ReadThreshold(*cfg), nullptr);
        m_params.SetValid(ReadOrCreateBool(*cfg, ValidKey(), OverheadPassParams::DEFAULT_VALID), nullptr);
    }
}

} // namespace KvZANCommon
