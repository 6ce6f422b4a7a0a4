#include "support/fixedbaudrate.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cstdarg>
#include <sys/syscall.h>
#include <unistd.h>

// NOLINTNEXTLINE(cert-dcl50-cpp): as the system declares it
extern "C" [[gnu::visibility("default")]] int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const auto result = static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    if (request == TCGETS2 && result == 0 && fixedBaudRate != 0) {
        static_cast<termios2*>(argument)->c_ospeed = fixedBaudRate;
    }
    return result;
}
