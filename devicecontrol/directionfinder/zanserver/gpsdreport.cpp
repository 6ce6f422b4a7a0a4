#include "zanserver/gpsdreport.h"

#include <QJsonDocument>
#include <QJsonObject>

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

} // namespace

std::optional<GpsdReport> GpsdReport::Read(const QByteArray& line) {
    // gps_unpack keeps what it has understood of a line that is cut or damaged, such as the first digits of a
    // longitude, and does not say so. Only whole objects are given to it.
    const QString className = QJsonDocument::fromJson(line).object()["class"_L1].toString();
    if (className.isEmpty()) {
        return {};
    }
    GpsdReport report;
    report.kind = KindOf(className);
    if (report.kind == Kind::Version || report.kind == Kind::Other) {
        return report;
    }
    gps_data_t data{};
    QByteArray text = line;
    gps_unpack(text.data(), &data);
    report.receiver = QString::fromUtf8(data.dev.path);
    if (report.kind == Kind::Fix) {
        TakeFix(data.fix, report);
    } else if (report.kind == Kind::Attitude && (data.set & ATTITUDE_SET) != 0) {
        TakeAttitude(data.attitude, report);
    } else if (report.kind == Kind::Satellites) {
        report.satellitesUsed = data.satellites_used;
        report.satellitesSeen = data.satellites_visible;
    }
    return report;
}

} // namespace ZANServer
