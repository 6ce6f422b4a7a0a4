#pragma once

#include <QString>

/// The broker as this program uses it.
namespace Broker {

/// Makes the broker. Unless the environment or a configuration file of omniORB says otherwise, its endpoint
/// is bound to the loopback interface, and a connection on which nothing has come for a minute is closed.
/// What the broker logs goes to standard error, where equal lines are told once with a count.
void Make();
/// Ends what `Make` has made, and tells what is left to be told of its log.
void Release();
/// Where the broker's endpoint comes from, in words for the operator.
QString DescribeEndpoint();

} // namespace Broker
