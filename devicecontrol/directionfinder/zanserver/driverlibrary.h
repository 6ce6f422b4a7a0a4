#pragma once

#include "zanserver_export.h"

#include "zancommon/idrivercomponent.h"

#include <QList>
#include <QString>

#include <memory>

namespace ZANServer {

/// Gives a driver's component back to where it came from.
struct ZANSERVER_EXPORT DriverComponentDeleter {
    void operator()(KvZANCommon::IDriverComponent* component) const;
};
using DriverComponentPtr = std::unique_ptr<KvZANCommon::IDriverComponent, DriverComponentDeleter>;

/// The drivers in the component directory (`CfgCenter::SetComponentDirectory`), each in a library
/// "libzandriver-NAME.so". Main thread.
namespace DriverLibrary {

/// A library that was found.
struct Entry {
    QString file;                               ///< with its path
    KvZANCommon::DriverDescription description; ///< empty when it is refused
    QString fault;                              ///< why it is refused; empty when it is not
};

/// All that have the name of a driver's library, by that name. Each is loaded to be asked.
ZANSERVER_EXPORT QList<Entry> List();

/// Loads a driver. Its library stays loaded to the end of the process: texts that the driver has delivered
/// may be its literals.
/// \param fault why there is none, and where it was looked for; empty when there is one
/// \return null when there is none
ZANSERVER_EXPORT DriverComponentPtr Load(const QString& name, QString& fault);

} // namespace DriverLibrary

} // namespace ZANServer
