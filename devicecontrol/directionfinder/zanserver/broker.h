#pragma once

#include "zanserver_export.h"

#include "zanserver/finding.h"

/// The broker as this program uses it.
namespace ZANServer::Broker {

/// Makes the broker. Unless the environment or a configuration file of omniORB says otherwise, its endpoint
/// is bound to the loopback interface, and a connection on which nothing has come for a minute is closed.
/// What the broker logs goes to standard error, where equal lines are told once with a count.
ZANSERVER_EXPORT void Make();
/// Ends what `Make` has made, and tells what is left to be told of its log.
ZANSERVER_EXPORT void Release();
/// Whether the broker can be made here. Makes it and releases it again.
ZANSERVER_EXPORT Finding Check();

} // namespace ZANServer::Broker
