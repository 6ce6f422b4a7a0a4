#include "zancommon/bandwidthtext.h"

#include <QStringView>

QString BandwidthText::Format(double bandwidth, int precision, bool keepTrailingZeros) {
    double number = bandwidth;
    QStringView unit;
    if (bandwidth < 1e3) {
        unit = u" Hz";
    } else if (bandwidth < 1e6) {
        unit = u" kHz";
        number = bandwidth / 1e3;
    } else if (bandwidth < 1e9) {
        unit = u" MHz";
        number = bandwidth / 1e6;
    }
    constexpr int DEFAULT_PRECISION = 6;
    QString text = QString::number(number, 'f', precision < 0 ? DEFAULT_PRECISION : precision);
    if (!keepTrailingZeros) {
        while (text.endsWith(u'0')) {
            text.chop(1);
        }
        if (text.endsWith(u'.')) {
            text.chop(1);
        }
    }
    text += unit;
    return text;
}
