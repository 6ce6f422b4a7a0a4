#include "zancommon/zanserverorb.h"

#include "kwbase/errorhandler.h"

#include <QString>

#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

void Trace(const QString& message, unsigned line) {
    TraceInformation([&message] { return message; },
                     u"devicecontrol\\directionfinder\\zancommon\\zanserverorb"_s, line);
}

void WriteLogLine(const char* line) {
    std::fputs(line, stderr);
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
        const PortableServer::POAManager_var manager = RootPoa()->the_POAManager();
        manager->activate();
    } catch (...) {
        Trace(u"ZANServerORB::ZANServerORB(): Exception caught in constructor of ZANServerORB !!!"_s,
              __LINE__);
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
    return GetPoa("RootPOA", "Could not access RootPOA");
}

PortableServer::POA_var ZANServerORB::InsPoa() {
    return GetPoa("omniINSPOA", "Could not access InsPOA");
}

PortableServer::POA_var ZANServerORB::GetPoa(const char* reference, const char* failure) {
    try {
        const CORBA::Object_var object = m_orb->resolve_initial_references(reference);
        return PortableServer::POA::_narrow(object);
    } catch (...) {
        Trace(QString::fromLatin1(failure), __LINE__);
        throw;
    }
}

void ZANServerORB::Shutdown() {
    try {
        // Asking is all that is done here: shutting the broker down would take it from its other users.
        static_cast<void>(m_pInstance && CORBA::is_nil(m_pInstance->m_orb));
    } catch (const CORBA::SystemException&) {
        Trace(u"ZANServerORB::Shutdown(): CORBA::SystemException"_s, __LINE__);
    } catch (const CORBA::Exception&) {
        Trace(u"ZANServerORB::Shutdown(): Caught CORBA::Exception."_s, __LINE__);
    } catch (const omniORB::fatalException& exception) {
        Trace(
            u"ZANServerORB::Shutdown(): Caught omniORB::fatalException: file=<%1>, line=<%2>, msg=<%3>"_s.arg(
                QString::fromLocal8Bit(exception.file()), QString::number(exception.line()),
                QString::fromLocal8Bit(exception.errmsg())),
            __LINE__);
    } catch (...) {
        Trace(u"ZANServerORB::Shutdown: Unknown execption caught during shutdown ORB."_s, __LINE__);
    }
}
