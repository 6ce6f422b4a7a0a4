#include "connections/baudrate.h"

#include <asm/ioctls.h>
#include <asm/termbits.h> // has the rate as a number; cannot be included together with <termios.h>
#include <sys/ioctl.h>

quint32 GetBaudRate(int descriptor) {
    termios2 settings{};
    return ioctl(descriptor, TCGETS2, &settings) == 0 ? settings.c_ospeed : 0;
}
