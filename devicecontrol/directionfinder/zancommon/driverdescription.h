#pragma once

#include "zancommon/driverrecords.h"

#include <QList>
#include <QString>

namespace KvZANCommon {

/// What a driver says of itself before it is given a device.
struct DriverDescription {
    QString name;           ///< as operators name it: lower-case letters, digits and hyphens
    QString summary;        ///< one line
    QString addressForm;    ///< such as "FILE" or "tcp://HOST:PORT"; empty: it takes no address
    QString addressExample; ///< a whole address of that form
    QList<EMode> modes;     ///< in which it measures
};

} // namespace KvZANCommon
