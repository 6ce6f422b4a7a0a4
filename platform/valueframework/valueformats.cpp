#include "valueframework/valueformats.h"

#include <QStringList>

using ZANPlatform::ReadInteger;

namespace {

QString Number(double number) {
    return FormatFloat<double>::ToString(number);
}

/// Reads a number of the member's type into one member of a bearing; an empty text leaves the member without
/// a value.
template <class T>
bool ReadMember(const QString& text, BearingResult& bearing, void (BearingResult::*set)(T)) {
    if (text.isEmpty()) {
        return true;
    }
    T number{};
    if (!ReadInteger(text, number)) {
        return false;
    }
    (bearing.*set)(number);
    return true;
}

} // namespace

QString FormatBearingResult::ToString(const BearingResult& content) {
    const auto text = [&content](BearingResult::Member member, const QString& number) {
        return content.IsValueValid(member) ? number : QString();
    };
    return QStringList{text(BearingResult::FREQUENCY, Number(content.GetFrequency())),
                       text(BearingResult::LEVEL, QString::number(content.GetLevel())),
                       text(BearingResult::AZIMUTH, QString::number(content.GetAzimuth())),
                       text(BearingResult::ELEVATION, QString::number(content.GetElevation())),
                       text(BearingResult::QUALITY, QString::number(content.GetQuality())),
                       text(BearingResult::TIME_STAMP, QString::number(content.GetTimeStamp()))}
        .join(u',');
}

bool FormatBearingResult::FromString(const QString& text, BearingResult& content) {
    const QStringList fields = text.split(u',');
    if (fields.size() != BearingResult::MEMBER_COUNT) {
        return false;
    }
    BearingResult bearing;
    if (double frequency = 0.0; !fields[0].isEmpty()) {
        if (!FormatFloat<double>::FromString(fields[0], frequency)) {
            return false;
        }
        bearing.SetFrequency(frequency);
    }
    if (!ReadMember(fields[1], bearing, &BearingResult::SetLevel) ||
        !ReadMember(fields[2], bearing, &BearingResult::SetAzimuth) ||
        !ReadMember(fields[3], bearing, &BearingResult::SetElevation) ||
        !ReadMember(fields[4], bearing, &BearingResult::SetQuality) ||
        !ReadMember(fields[5], bearing, &BearingResult::SetTimeStamp)) {
        return false;
    }
    content = bearing;
    return true;
}

QString QuadFloatFormat::ToString(const QuadFloat& content) {
    return QStringList{Number(content.first), Number(content.second), Number(content.third),
                       Number(content.fourth)}
        .join(u',');
}

bool QuadFloatFormat::FromString(const QString& text, QuadFloat& content) {
    using Format = FormatFloat<double>;
    const QStringList fields = text.split(u',');
    QuadFloat numbers;
    if (fields.size() != 4 || !Format::FromString(fields[0], numbers.first) ||
        !Format::FromString(fields[1], numbers.second) || !Format::FromString(fields[2], numbers.third) ||
        !Format::FromString(fields[3], numbers.fourth)) {
        return false;
    }
    content = numbers;
    return true;
}

QString FormatTrafficControlFrequency::ToString(const TrafficControlFrequency& content) {
    return QStringList{QString::number(content.GetChannelID()), Number(content.GetFrequency()),
                       FormatBool<bool>::ToString(content.IsAlarmChannel())}
        .join(u',');
}

bool FormatTrafficControlFrequency::FromString(const QString& text, TrafficControlFrequency& content) {
    const QStringList fields = text.split(u',');
    int channelID = 0;
    double frequency = 0.0;
    bool isAlarmChannel = false;
    if (fields.size() != 3 || !FormatInt<int>::FromString(fields[0], channelID) ||
        !FormatFloat<double>::FromString(fields[1], frequency) ||
        !FormatBool<bool>::FromString(fields[2], isAlarmChannel)) {
        return false;
    }
    content.SetChannelID(channelID);
    content.SetFrequency(frequency);
    content.SetIsAlarmChannel(isAlarmChannel);
    return true;
}
