#include "zancommon/zanserverorb.h"

#include "kwbase/tracesource.h"

#include <QString>

#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/omniInterceptors.h>
#include <omniORB4/omniTransport.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <set>
#include <sys/resource.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\zanserverorb");

void WriteLogLine(const char* line) {
    std::fputs(line, stderr);
}

/// The largest number of incoming connections. At the limit of file descriptors the broker would try without
/// pause to accept the next one, and the process could open no more files; so half of the descriptors are
/// left to the process.
std::size_t GetConnectionLimit() {
    constexpr rlim_t MOST = 256;
    rlimit descriptors{};
    getrlimit(RLIMIT_NOFILE, &descriptors);
    return std::min(descriptors.rlim_cur / 2, MOST);
}

/// Called for each new connection, in the thread of the connection.
CORBA::Boolean AcceptConnection(omni::omniInterceptors::serverAcceptConnection_T::info_T& info) {
    // Includes connections that have ended since. Never destroyed, because the broker's threads outlive the
    // end of main.
    static auto& accepted = *new std::set<const omni::StrandList*>;
    const omni_tracedmutex_lock lock(*omni::omniTransportLock);
    std::set<const omni::StrandList*> open;
    const omni::StrandList& head = omni::giopStrand::passive;
    for (const omni::StrandList* strand = head.next; strand != &head; strand = strand->next) {
        if (strand != &info.strand && accepted.contains(strand)) {
            open.insert(strand);
        }
    }
    if (open.size() < GetConnectionLimit()) {
        open.insert(&info.strand);
    } else {
        info.reject = true;
        info.why = "too many connections";
    }
    accepted = std::move(open);
    return true;
}

/// Called once for each broker of the process; the interceptors end with the broker.
void InterceptConnections() {
    omni::omniInterceptors& interceptors = *omniORB::getInterceptors();
    interceptors.serverAcceptConnection.remove(AcceptConnection);
    interceptors.serverAcceptConnection.add(AcceptConnection);
}

/// Throws what it met, after a trace line.
PortableServer::POA_var GetPoa(CORBA::ORB_ptr orb, const char* reference, const char* failure) {
    try {
        const CORBA::Object_var object = orb->resolve_initial_references(reference);
        return PortableServer::POA::_narrow(object);
    } catch (...) {
        TRACE.Information([failure] { return QString::fromLatin1(failure); });
        throw;
    }
}

} // namespace

ZANServerORB* ZANServerORB::m_pInstance = nullptr;

ZANServerORB* ZANServerORB::Instance() {
    if (!m_pInstance) {
        m_pInstance = new ZANServerORB;
    }
    return m_pInstance;
}

void ZANServerORB::Finalise() {
    delete m_pInstance;
    m_pInstance = nullptr;
}

ZANServerORB::ZANServerORB() {
    constexpr CORBA::ULong CALL_TIMEOUT_MS = 10000;
    try {
        omniORB::setLogFunction(WriteLogLine);
        int argumentCount = 0;
        m_orb = CORBA::ORB_init(argumentCount, nullptr, "");
        omniORB::setClientCallTimeout(CALL_TIMEOUT_MS);
        InterceptConnections();
        const PortableServer::POAManager_var manager = RootPoa()->the_POAManager();
        manager->activate();
    } catch (...) {
        TRACE.Information([] {
            return u"ZANServerORB::ZANServerORB(): Exception caught in constructor of ZANServerORB !!!"_s;
        });
    }
}

ZANServerORB::ZANServerORB(const ZANServerORB& other)
    : m_orb(CORBA::ORB::_duplicate(other.m_orb)) {}

ZANServerORB& ZANServerORB::operator=(const ZANServerORB& other) {
    CORBA::ORB_ptr orb = CORBA::ORB::_duplicate(other.m_orb);
    CORBA::release(std::exchange(m_orb, orb));
    return *this;
}

ZANServerORB::~ZANServerORB() {
    Shutdown();
    CORBA::release(m_orb);
}

CORBA::ORB_var ZANServerORB::GetORB() const {
    return CORBA::ORB::_duplicate(m_orb);
}

PortableServer::POA_var ZANServerORB::RootPoa() {
    return GetPoa(m_orb, "RootPOA", "Could not access RootPOA");
}

PortableServer::POA_var ZANServerORB::InsPoa() {
    return GetPoa(m_orb, "omniINSPOA", "Could not access InsPOA");
}

void ZANServerORB::Shutdown() {
    try {
        // The broker is only checked, not shut down: it may have other users.
        static_cast<void>(m_pInstance && CORBA::is_nil(m_pInstance->m_orb));
    } catch (const CORBA::SystemException&) {
        TRACE.Information([] { return u"ZANServerORB::Shutdown(): CORBA::SystemException"_s; });
    } catch (const CORBA::Exception&) {
        TRACE.Information([] { return u"ZANServerORB::Shutdown(): Caught CORBA::Exception."_s; });
    } catch (const omniORB::fatalException& exception) {
        TRACE.Information([&exception] {
            return u"ZANServerORB::Shutdown(): Caught omniORB::fatalException: file=<%1>, line=<%2>, msg=<%3>"_s
                .arg(QString::fromLocal8Bit(exception.file()), QString::number(exception.line()),
                     QString::fromLocal8Bit(exception.errmsg()));
        });
    } catch (...) {
        TRACE.Information(
            [] { return u"ZANServerORB::Shutdown: Unknown execption caught during shutdown ORB."_s; });
    }
}
