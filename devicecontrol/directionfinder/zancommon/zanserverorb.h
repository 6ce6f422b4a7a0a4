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
/// Whoever reaches the endpoint reaches every object that this process serves: it asks for no name and, but
/// for a `giop:ssl:` endpoint, for no certificate. `giop:tcp:` serves all users of the machines that reach
/// the address, 127.0.0.1 those of this machine, and `giop:unix:` those that may write to the socket
/// (`unixTransportPermission`, 0777 by default, and the directory that it is in). A process that only calls
/// others listens as well. Beyond 256 connections of others, and beyond half of what the process may have
/// open of files, further ones are refused. The limit holds for connections that are served: each is taken
/// before it is refused, so thousands in one second may take all files for moments. omniORB closes those on
/// which nothing has come for 180 s (`inConScanPeriod`).
///
/// A malformed request can still end the process in omniORB: bind the endpoint to where none is to be
/// expected. One that does so surely needs several threads on a connection: with
/// `ORBmaxServerThreadPerConnection=1` in the environment (or in the file) the requests of a connection are
/// carried out one after the other, and a caller that reads no answers does not fill the memory. Programs
/// that serve others should set it; random input that has found no other such request is no proof that there
/// is none.
///
/// Calls of this process to other servers time out after 10 s. Lines of omniORB's log go to standard error,
/// as they come; `omniORB::setLogFunction` after the first `Instance` puts another sink in its place.
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
    /// Leaves the broker usable: it is the process's, and others may hold it. Without an instance it does
    /// nothing.
    static void Shutdown();
    /// Destroys the instance, if there is one; the next `Instance` makes a fresh one.
    static void Finalise();

private:
    ZANServerORB();

    PortableServer::POA_var GetPoa(const char* reference, const char* failure);

    static ZANServerORB* m_pInstance;

    CORBA::ORB_ptr m_orb = CORBA::ORB::_nil();
};
