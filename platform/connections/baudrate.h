#pragma once

#include <QtGlobal>

/// The baud rate of a serial line as its driver reports it: a driver that cannot set the requested rate keeps
/// the old one, or takes the nearest, without an error. 0 when it does not report one.
/// \param descriptor of the open line
quint32 GetBaudRate(int descriptor);
