#include "zanstation/broker.h"

#include <QByteArray>

using namespace Qt::StringLiterals;

namespace {

const char* const ENDPOINT = "ORBendPoint";
const char* const CONFIGURATION_FILE = "OMNIORB_CONFIG";

} // namespace

namespace Broker {

void ListenOnLoopback() {
    if (!qEnvironmentVariableIsSet(ENDPOINT) && !qEnvironmentVariableIsSet(CONFIGURATION_FILE)) {
        qputenv(ENDPOINT, "giop:tcp:127.0.0.1:");
    }
}

QString DescribeEndpoint() {
    return qEnvironmentVariableIsSet(ENDPOINT) ? qEnvironmentVariable(ENDPOINT)
                                               : u"as in "_s + qEnvironmentVariable(CONFIGURATION_FILE);
}

} // namespace Broker
