#pragma once

#include "zanserver_export.h"

#include "zanserver/finding.h"

/// The broker as this program uses it.
namespace ZANServer::Broker {

/// Makes the broker. Unless the environment or a configuration file of omniORB says otherwise, its endpoint
/// is bound to the loopback interface, a connection on which nothing has come for a minute is closed, and the
/// requests of one connection are carried out one after the other: with several threads for a connection a
/// request with a fragment too many ends the process in omniORB.
/// What the broker logs goes to standard error, where equal lines are told once with a count; a reader
/// that takes nothing does not hold it up.
ZANSERVER_EXPORT void Make();
/// Ends what `Make` has made, and tells what is left to be told of its log.
ZANSERVER_EXPORT void Release();
/// Whether the broker can be made here. Makes it and releases it again.
ZANSERVER_EXPORT Finding Check();

} // namespace ZANServer::Broker
