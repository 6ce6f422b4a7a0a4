#include "kwbase/datetime.h"

#include <QDateTime>
#include <QTimeZone>

#include <limits>

namespace Tolm {

QString DateTime::toString(const QString& format) const {
    if (m_timeStamp > static_cast<unsigned long long>(std::numeric_limits<qint64>::max())) {
        return {};
    }
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(m_timeStamp), Qt::UTC).toString(format);
}

} // namespace Tolm
