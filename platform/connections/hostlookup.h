#pragma once

#include "zanplatform_export.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string>

/// Looks up the addresses of a host in the background. Neither its end nor that of the process waits for the
/// name service, which may take half a minute when no server answers. (Qt's own look-up does not block
/// either, but the process waits for it at its end.)
class ZANPLATFORM_EXPORT HostLookup {
public:
    struct Result {
        QStringList addresses; ///< as numbers, in the order in which they should be tried
        QString error;         ///< why there are none
    };
    using Resolver = std::function<Result(const std::string& host)>;

    /// Begins to look up a name or an address.
    /// \param done is called once from the event loop of the calling thread, unless this object has ended
    ///        before; it may destroy this object
    /// \param resolve is called on a thread of its own, which may outlive this object
    HostLookup(const QString& host, std::function<void(const Result&)> done, Resolver resolve = AskSystem);
    HostLookup(const HostLookup&) = delete;
    HostLookup& operator=(const HostLookup&) = delete;
    ~HostLookup();

    /// Asks the system, which may block. From any thread.
    [[nodiscard]] static Result AskSystem(const std::string& host);

private:
    class Receiver;
    struct Shared;
    std::shared_ptr<Shared> m_shared;
};
