#include "zanserver/gpsdsettings.h"

#include "tolmappstartup/cfgcenter.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

constexpr quint16 GPSD_PORT = 2947;

} // namespace

std::optional<GpsdAddress> GpsdAddress::Read(const QString& text) {
    QUrl url;
    url.setAuthority(text, QUrl::StrictMode);
    const int port = url.port(GPSD_PORT);
    if (!url.isValid() || url.host().isEmpty() || text.contains(u'@') || text.endsWith(u':') || port == 0) {
        return {};
    }
    return GpsdAddress{url.host(), static_cast<quint16>(port)};
}

QString GpsdAddress::ToText() const {
    return (host.contains(u':') ? u"[%1]:%2"_s : u"%1:%2"_s).arg(host).arg(port);
}

GpsdSettings GpsdSettings::Read() {
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    GpsdSettings settings;
    settings.address = GpsdAddress::Read(cfg.GetString(ADDRESS.toString(), {})).value_or(settings.address);
    const qint64 maxAge = cfg.GetInt(MAX_AGE.toString(), DEFAULT_MAX_AGE_MS);
    if (maxAge >= SHORTEST_MAX_AGE_MS && maxAge <= LONGEST_MAX_AGE_MS) {
        settings.maxAge = std::chrono::milliseconds(maxAge);
    }
    settings.positionReceiver = cfg.GetString(POSITION_RECEIVER.toString(), {});
    settings.headingReceiver = cfg.GetString(HEADING_RECEIVER.toString(), {});
    settings.usePitchAndRoll = cfg.GetBool(PITCH_AND_ROLL.toString(), settings.usePitchAndRoll);
    return settings;
}

} // namespace ZANServer
