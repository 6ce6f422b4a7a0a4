// A second process that serves an object with a readable key through the station's broker. It listens
// where omniORB's configuration tells it to, says "ready" when it does, and ends with its standard input.

#include "echo.hh"
#include "zancommon/zanserverorb.h"
#include "zanserver/broker.h"

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

using namespace ZANServer;

namespace {

class EchoServant : public POA_ZANTest::Echo, public PortableServer::RefCountServantBase {
public:
    char* Repeat(const char* text) override { return CORBA::string_dup(text); }
    /// The time itself is what the caller's time-out is tried out with.
    void Wait(CORBA::ULong milliseconds) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
};

} // namespace

int main() {
    Broker::Make();
    try {
        const PortableServer::POA_var poa = ZANServerORB::Instance()->InsPoa();
        const PortableServer::ObjectId_var key = PortableServer::string_to_ObjectId("Echo");
        PortableServer::Servant_var<EchoServant> servant(new EchoServant);
        poa->activate_object_with_id(key, servant.in());
        const PortableServer::POAManager_var manager = poa->the_POAManager();
        manager->activate();
    } catch (const CORBA::Exception& exception) {
        std::cerr << exception._name() << '\n';
        return 1;
    }
    std::cout << "ready" << std::endl;
    std::string line;
    std::getline(std::cin, line);
    Broker::Release();
    std::cout.flush();
    std::_Exit(0); // a call that still waits does not hold the process up
}
