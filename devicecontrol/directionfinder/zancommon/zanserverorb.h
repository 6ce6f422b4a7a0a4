#pragma once

#include "zancommon_export.h"

#include <omniORB4/CORBA.h>

/// The process-wide CORBA broker (omniORB) of the DF server. Programs that include this header link with
/// `ZANCommon::broker`.
///
/// Created on first use, which must be in one thread before others use it. The broker takes no command line;
/// its whole configuration comes from omniORB's own sources, the environment and the configuration file. Its
/// first use opens the endpoint: `ORBendPoint=giop:tcp:127.0.0.1:` in the environment (or `endPoint =
/// giop:tcp:127.0.0.1:` in the file that `OMNIORB_CONFIG` names) binds it to the loopback interface, another
/// address to another interface, a number after the colon to a port, and `giop:unix:/run/df.sock` to a Unix
/// socket. By default it listens on all interfaces, on a free port.
///
/// Every program that can connect to the endpoint can call every object that this process serves: there is no
/// user name and, except at a `giop:ssl:` endpoint, no certificate. `giop:tcp:` serves all users of the
/// machines that can reach the address, 127.0.0.1 those of this machine, and `giop:unix:` those that may
/// write to the socket (`unixTransportPermission`, 0777 by default, and the permissions of its directory). A
/// process that only calls other servers listens as well. Connections beyond 256, or beyond half of the files
/// that the process may open, are refused. This limits the connections that are served: each is accepted
/// before it is refused, so thousands in one second may use up all files for moments. omniORB closes
/// connections without traffic for 180 s (`inConScanPeriod`).
///
/// A malformed request can still crash the process in omniORB: bind the endpoint to an address where none is
/// to be expected. The known request of this kind needs several threads per connection. With
/// `ORBmaxServerThreadPerConnection=1` in the environment (or in the file) the requests of a connection are
/// carried out one after the other, and a caller that does not read its answers does not fill the memory.
/// Servers should set it. Tests with random input have found no other such request, which does not prove that
/// there is none.
///
/// Calls of this process to other servers time out after 10 s. Lines of omniORB's log go to standard error
/// unchanged; `omniORB::setLogFunction` after the first `Instance` sets another sink.
///
/// The caller owns the references that it gets, and may use them in any thread. Call `Finalise` when no other
/// thread uses the instance.
class ZANCOMMON_EXPORT ZANServerORB {
public:
    /// The instance, which is valid until `Finalise`. Never null, not even when the broker could not be
    /// initialised (which is traced).
    static ZANServerORB* Instance();

    /// A copy uses the same broker.
    ZANServerORB(const ZANServerORB& other);
    ZANServerORB& operator=(const ZANServerORB& other);
    virtual ~ZANServerORB();

    /// A new reference to the broker; nil when it could not be initialised.
    [[nodiscard]] CORBA::ORB_var GetORB() const;
    /// The root object adapter, whose manager is active: servants can be called at once. Throws the CORBA
    /// exception of a failure, after a trace line.
    [[nodiscard]] PortableServer::POA_var RootPoa();
    /// The adapter for objects with readable keys, as "corbaloc::host:port/Key" names them. It has its own
    /// manager, which the code that registers an object activates. Throws as `RootPoa`.
    [[nodiscard]] PortableServer::POA_var InsPoa();
    /// Does not shut the broker down, because it belongs to the process and may have other users. Does
    /// nothing without an instance.
    static void Shutdown();
    /// Destroys the instance, if there is one; the next `Instance` creates a new one.
    static void Finalise();

private:
    ZANCOMMON_NO_EXPORT ZANServerORB();

    static ZANServerORB* m_pInstance;

    CORBA::ORB_ptr m_orb = CORBA::ORB::_nil();
};
