#pragma once

#include <QtGlobal>

/// The rate of a serial driver that cannot do another one, whatever it is asked for; 0: it takes each.
/// The test is linked with fixedbaudrate.cpp, which takes the place of the system's `ioctl`.
inline quint32 fixedBaudRate = 0;
