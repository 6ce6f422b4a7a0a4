#pragma once

#include "zancommon/zanpath.h"

#include <QStringView>

#include <array>

/// \file

/// The names of the values that the library and its applications create under the prefixes of `ZANPath`.
/// Frequencies are in Hz.
namespace ZANValueName {

inline constexpr QStringView TMPDATE = u"TMPDATE";
inline constexpr QStringView IFMAPPING = u"IFMAPPING";
inline constexpr QStringView IFSTRING = u"IFSTRING";
inline constexpr QStringView ELEVOVERAZIMAPPING = u"ELEVOVERAZIMAPPING";
inline constexpr QStringView WIDEBANDFFM = u"WIDEBANDFFM";
inline constexpr QStringView DFSETTINGS = u"DFSETTINGS";
inline constexpr QStringView V_ZAN_TYPE = u"V_ZAN_TYPE";
inline constexpr QStringView SHOWWARNINGS = u"SHOWWARNINGS";
inline constexpr QStringView AZIMUTHVARIATION = u"AZIMUTHVARIATION";
inline constexpr QStringView RECORDINGDEVICETYPE = u"RECORDINGDEVICETYPE";
inline constexpr QStringView JOBLOADED = u"JOBLOADED";
inline constexpr QStringView SYSMINFREQ = u"SYSMINFREQ"; ///< below CONTROL, a `ValueNumericDouble`
inline constexpr QStringView SYSMAXFREQ = u"SYSMAXFREQ"; ///< below CONTROL, a `ValueNumericDouble`
inline constexpr QStringView IFHALFWIDTH = u"IFHALFWIDTH";
inline constexpr QStringView LEVELOVERFLOW = u"LEVELOVERFLOW";
inline constexpr QStringView ZANDATAVALID = u"ZANDATAVALID";
inline constexpr QStringView ZANDATASTATEINFO = u"ZANDATASTATEINFO";
inline constexpr QStringView DFBANDWIDTHVLF = u"DFBANDWIDTHVLF";
inline constexpr QStringView DFBANDWIDTHHF = u"DFBANDWIDTHHF";
inline constexpr QStringView DFBANDWIDTHVUHF = u"DFBANDWIDTHVUHF";
inline constexpr QStringView EXTERNALREFERENCE = u"EXTERNALREFERENCE";
inline constexpr QStringView USEJOBSETTINGSFORFFM = u"USEJOBSETTINGSFORFFM";
inline constexpr QStringView COMMANDLOG = u"COMMANDLOG";
inline constexpr QStringView SCANLOCMODE = u"SCANLOCMODE";
inline constexpr QStringView GSMLOCMODE = u"GSMLOCMODE";
inline constexpr QStringView GSMRESULTFREQUENCY = u"GSMRESULTFREQUENCY";
inline constexpr QStringView HANDOVERFREQUENCY = u"HANDOVERFREQUENCY"; ///< below CONTROL
inline constexpr QStringView HANDOVERAUTO = u"HANDOVERAUTO";
inline constexpr QStringView HANDOVERSIGNALTIME = u"HANDOVERSIGNALTIME";
inline constexpr QStringView AUTODISCONNECTAFTERLASTCLIENT = u"AUTODISCONNECTAFTERLASTCLIENT";
inline constexpr QStringView SUPERRESPARAMETERHAVECHANGED = u"SUPERRESPARAMETERHAVECHANGED";
inline constexpr QStringView SYNFASTMODESWITCH = u"SYNFASTMODESWITCH";
inline constexpr QStringView VOLKFWVERSION = u"VOLKFWVERSION";
inline constexpr QStringView VOLKFWSUBVERSION = u"VOLKFWSUBVERSION";
inline constexpr QStringView HANDOVERPOOLFREQUENCY = u"HANDOVERPOOLFREQUENCY"; ///< below SERVER
inline constexpr QStringView AZIMUTH_FILTER_RANGE = u"AZIMUTH_FILTER_RANGE";
inline constexpr QStringView ELEVATION_FILTER_RANGE = u"ELEVATION_FILTER_RANGE";

/// All names in their order.
inline constexpr std::array ALL{TMPDATE,
                                IFMAPPING,
                                IFSTRING,
                                ELEVOVERAZIMAPPING,
                                WIDEBANDFFM,
                                DFSETTINGS,
                                V_ZAN_TYPE,
                                SHOWWARNINGS,
                                AZIMUTHVARIATION,
                                RECORDINGDEVICETYPE,
                                JOBLOADED,
                                SYSMINFREQ,
                                SYSMAXFREQ,
                                IFHALFWIDTH,
                                LEVELOVERFLOW,
                                ZANDATAVALID,
                                ZANDATASTATEINFO,
                                DFBANDWIDTHVLF,
                                DFBANDWIDTHHF,
                                DFBANDWIDTHVUHF,
                                EXTERNALREFERENCE,
                                USEJOBSETTINGSFORFFM,
                                COMMANDLOG,
                                SCANLOCMODE,
                                GSMLOCMODE,
                                GSMRESULTFREQUENCY,
                                HANDOVERFREQUENCY,
                                HANDOVERAUTO,
                                HANDOVERSIGNALTIME,
                                AUTODISCONNECTAFTERLASTCLIENT,
                                SUPERRESPARAMETERHAVECHANGED,
                                SYNFASTMODESWITCH,
                                VOLKFWVERSION,
                                VOLKFWSUBVERSION,
                                HANDOVERPOOLFREQUENCY,
                                AZIMUTH_FILTER_RANGE,
                                ELEVATION_FILTER_RANGE};

} // namespace ZANValueName
