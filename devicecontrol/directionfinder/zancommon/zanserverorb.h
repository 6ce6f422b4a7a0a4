#pragma once

#include "zancommon_export.h"

#include <omniORB4/CORBA.h>

/// The process-wide CORBA broker (omniORB) of the DF server. Programs that include this header are linked
/// with `ZANCommon::broker`.
///
/// Made on first use, which must be on one thread before others use it. The broker takes no command line; all
/// of its configuration comes from omniORB's own sources, the environment and the configuration file. Its
/// first use opens the endpoint: `ORBendPoint=giop:tcp:127.0.0.1:` in the environment (or `endPoint =
/// giop:tcp:127.0.0.1:` in the file that `OMNIORB_CONFIG` names) binds it to the loopback interface, an
/// address in place of 127.0.0.1 to another one, a number behind it to a port, and `giop:unix:/run/df.sock`
/// to a Unix socket. By default it listens on all interfaces, on a free port.
///
/// Calls of this process to other servers time out after 10 s. Lines of omniORB's log go to standard error.
///
/// The references that it gives are the caller's own, and good on any thread. `Finalise` is called when no
/// other thread uses the instance.
class ZANCOMMON_EXPORT ZANServerORB {
public:
    /// The instance, which is good until `Finalise`. Never null, also when the broker could not be
    /// initialised (which is traced).
    static ZANServerORB* Instance();

    /// A copy refers to the same broker.
    ZANServerORB(const ZANServerORB& other);
    ZANServerORB& operator=(const ZANServerORB& other);
    virtual ~ZANServerORB();

    /// A reference of its own to the broker; nil when it could not be initialised.
    [[nodiscard]] CORBA::ORB_var GetORB() const;
    /// The root object adapter, whose manager is active: servants are reachable at once. Throws the CORBA
    /// exception that it met, after a trace line.
    [[nodiscard]] PortableServer::POA_var RootPoa();
    /// The adapter for objects with readable keys, as "corbaloc::host:port/Key" names them. Its manager is
    /// one of its own, to be activated by whoever registers an object. Throws as `RootPoa`.
    [[nodiscard]] PortableServer::POA_var InsPoa();
    /// Leaves the broker usable: it is the process's, and others may hold it.
    void Shutdown();
    /// Destroys the instance; the next `Instance` makes a fresh one.
    void Finalise();

private:
    ZANServerORB();

    PortableServer::POA_var GetPoa(const char* reference, const char* failure);

    static ZANServerORB* m_pInstance;

    CORBA::ORB_ptr m_orb = CORBA::ORB::_nil();
};
