#include "zanserver/broker.h"

#include "kwbase/standarderror.h"
#include "zancommon/zanserverorb.h"
#include "zanserver/repeatedlines.h"

#include <QByteArray>

#include <mutex>

using namespace Qt::StringLiterals;

namespace ZANServer::Broker {

namespace {

const char* const ENDPOINT = "ORBendPoint";
const char* const IDLE_SECONDS = "ORBinConScanPeriod";
const char* const THREADS_PER_CONNECTION = "ORBmaxServerThreadPerConnection";
const char* const CONFIGURATION_FILE = "OMNIORB_CONFIG";

void SetDefault(const char* option, const char* value) {
    if (!qEnvironmentVariableIsSet(option) && !qEnvironmentVariableIsSet(CONFIGURATION_FILE)) {
        qputenv(option, value);
    }
}

/// The source of the broker's endpoint, as a text for the operator.
QString DescribeEndpoint() {
    return qEnvironmentVariableIsSet(ENDPOINT) ? qEnvironmentVariable(ENDPOINT)
                                               : u"as in "_s + qEnvironmentVariable(CONFIGURATION_FILE);
}

// The broker logs from all of its threads.
std::mutex logMutex;
RepeatedLines logLines;

void WriteLogLine(const char* line) {
    const std::lock_guard lock(logMutex);
    StandardError::Write(logLines.Add(line, std::chrono::steady_clock::now()));
}

} // namespace

void Make() {
    SetDefault(ENDPOINT, "giop:tcp:127.0.0.1:");
    SetDefault(IDLE_SECONDS, "60");
    // With several threads on one connection, one may answer a request while another still receives a
    // fragment of it, which crashes the process. They would also keep the answers of all requests of a caller
    // that does not read them.
    SetDefault(THREADS_PER_CONNECTION, "1");
    ZANServerORB::Instance();
    omniORB::setLogFunction(WriteLogLine); // replaces the broker's own function, which writes every line
}

void Release() {
    ZANServerORB::Shutdown();
    ZANServerORB::Finalise();
    const std::lock_guard lock(logMutex);
    StandardError::Write(logLines.TakeCounts());
}

Finding Check() {
    Make();
    ZANServerORB& broker = *ZANServerORB::Instance();
    Finding finding{Finding::Severity::Ok, u"listens on "_s + DescribeEndpoint()};
    try {
        static_cast<void>(broker.RootPoa());
        static_cast<void>(broker.InsPoa());
    } catch (const CORBA::Exception& exception) {
        finding = {Finding::Severity::Error,
                   QString::fromLatin1(exception._name()) + u" for the endpoint "_s + DescribeEndpoint()};
    }
    Release();
    return finding;
}

} // namespace ZANServer::Broker
