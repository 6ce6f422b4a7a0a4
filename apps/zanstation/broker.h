#pragma once

#include <QString>

/// The broker as this program uses it.
namespace Broker {

/// Binds the endpoint of the broker to the loopback interface, unless the environment or a configuration file
/// of omniORB says otherwise. Before the broker is made.
void ListenOnLoopback();
/// Where the broker's endpoint comes from, in words for the operator.
QString DescribeEndpoint();

} // namespace Broker
