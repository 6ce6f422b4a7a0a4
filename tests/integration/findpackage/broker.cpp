#include <zancommon/zanserverorb.h>

int main() {
    const CORBA::ORB_var orb = ZANServerORB::Instance()->GetORB();
    return CORBA::is_nil(orb) ? 1 : 0;
}
