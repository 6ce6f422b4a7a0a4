#pragma once

#include <QtGlobal>

/// At how many baud a serial line sends, as its driver says: one that cannot do what it was asked for keeps
/// its rate, or takes the nearest, without an error. 0 when it does not say. \param descriptor of the open
/// line
quint32 GetBaudRate(int descriptor);
