#pragma once

#include "zanserver_export.h"

#include "zanserver/finding.h"

/// The CORBA broker with the defaults of this program.
namespace ZANServer::Broker {

/// Creates the broker. Unless the environment or a configuration file of omniORB says otherwise, its endpoint
/// is bound to the loopback interface, a connection without traffic for a minute is closed, and the requests
/// of one connection are carried out one after the other: with several threads per connection a request with
/// an extra fragment crashes the process in omniORB. The broker's log goes to standard error; equal lines are
/// written once with a count. A reader that takes nothing does not block the broker.
ZANSERVER_EXPORT void Make();
/// Ends the use of the broker, and writes the counts that remain of its log.
ZANSERVER_EXPORT void Release();
/// Whether the broker can be created on this machine. Creates and releases it.
ZANSERVER_EXPORT Finding Check();

} // namespace ZANServer::Broker
