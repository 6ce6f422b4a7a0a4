#include "zanserver/gpsdreport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

#include <gps.h>

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

using Kind = GpsdReport::Kind;

Kind KindOf(const QString& className) {
    if (className == "VERSION"_L1) {
        return Kind::Version;
    }
    if (className == "TPV"_L1) {
        return Kind::Fix;
    }
    if (className == "ATT"_L1) {
        return Kind::Attitude;
    }
    return className == "SKY"_L1 ? Kind::Satellites : Kind::Other;
}

/// A number of gpsd, which marks a missing one as NaN.
std::optional<double> Within(double minimum, double number, double maximum) {
    return number >= minimum && number <= maximum ? std::optional(number) : std::nullopt;
}

std::optional<quint64> ToMilliseconds(const timespec_t& time) {
    constexpr qint64 END_OF_YEAR_9999 = 253402300799;
    if (time.tv_sec <= 0 || time.tv_sec > END_OF_YEAR_9999) {
        return {};
    }
    return static_cast<quint64>(time.tv_sec) * 1000U + static_cast<quint64>(time.tv_nsec) / 1000000U;
}

void TakeFix(const gps_fix_t& fix, GpsdReport& report) {
    report.time = ToMilliseconds(fix.time);
    report.mode = fix.mode >= MODE_NOT_SEEN && fix.mode <= MODE_3D ? fix.mode : MODE_NOT_SEEN;
    if (report.HasFix()) {
        report.latitude = Within(-90.0, fix.latitude, 90.0);
        report.longitude = Within(-180.0, fix.longitude, 180.0);
    }
    if (report.mode == MODE_3D && std::isfinite(fix.altMSL)) {
        report.altitude = fix.altMSL;
    }
}

void TakeAttitude(const attitude_t& attitude, GpsdReport& report) {
    report.time = ToMilliseconds(attitude.mtime);
    report.heading = Within(0.0, attitude.heading, 360.0);
    report.pitch = Within(-90.0, attitude.pitch, 90.0);
    report.roll = Within(-180.0, attitude.roll, 180.0);
}

void TakeSatellites(const QJsonArray& satellites, GpsdReport& report) {
    report.satellitesSeen = static_cast<int>(satellites.size());
    report.satellitesUsed = static_cast<int>(std::ranges::count_if(
        satellites, [](const QJsonValue& satellite) { return satellite["used"_L1].toBool(); }));
}

/// Reads the members that the station uses with gpsd's own library. It gets a line with nothing but these,
/// and their types are right: of a line that is cut or damaged gps_unpack keeps what it has understood, such
/// as the first digits of a longitude, and from some lines it never comes back (an unknown list whose objects
/// have a class).
gps_data_t Unpack(const char* className, const QJsonObject& object) {
    static const QRegularExpression timeStamp(u"^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:.]{8,20}Z$"_s);
    QByteArray line = R"({"class":")" + QByteArray(className) + '"';
    if (const QString time = object["time"_L1].toString(); timeStamp.match(time).hasMatch()) {
        line += R"(,"time":")" + time.toLatin1() + '"';
    }
    line += R"(,"mode":)" + QByteArray::number(object["mode"_L1].toInt());
    for (const char* name : {"lat", "lon", "altMSL", "heading", "pitch", "roll"}) {
        if (const QJsonValue number = object[QLatin1StringView(name)]; number.isDouble()) {
            line += ",\"" + QByteArray(name) + "\":" + QByteArray::number(number.toDouble(), 'g', 17);
        }
    }
    line += '}';
    gps_data_t data{};
    gps_clear_fix(&data.fix); // what is not in the line is missing, not 0
    gps_clear_att(&data.attitude);
    gps_unpack(line.data(), &data);
    return data;
}

} // namespace

std::optional<GpsdReport> GpsdReport::Read(const QByteArray& line) {
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    const QString className = object["class"_L1].toString();
    if (className.isEmpty()) {
        return {};
    }
    GpsdReport report;
    report.kind = KindOf(className);
    report.receiver = object["device"_L1].toString();
    if (report.kind == Kind::Fix) {
        TakeFix(Unpack("TPV", object).fix, report);
    } else if (report.kind == Kind::Attitude) {
        TakeAttitude(Unpack("ATT", object).attitude, report);
    } else if (report.kind == Kind::Satellites) {
        TakeSatellites(object["satellites"_L1].toArray(), report);
    }
    return report;
}

} // namespace ZANServer
