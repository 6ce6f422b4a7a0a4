#pragma once

#include "valueframework/value.h"
#include "valueframework/valueformats.h"
#include "valueframework/valuelist.h"
#include "valueframework/valueselection.h"

/// \file
/// The value types in use, by short names. They are instantiated once, in the platform library, so that every
/// program and component of the process agrees on them.

using ValueBool = Value<bool, FormatBool<bool>>;
/// An integer. A `ValueNumericInt` is one as well, and is found as one.
using ValueInt = Value<int, FormatInt<int>>;
using ValueString = Value<QString, FormatString<QString>>;
/// Milliseconds since 1970-01-01 00:00:00 UTC.
using ValueTimeStamp = Value<quint64, FormatTimeStamp<quint64>>;
/// Observers are notified of every bearing that is set, also when it equals the one before.
using ValueBearing = Value<BearingResult, FormatBearingResult>;
using ValueNumericInt = ValueNumeric<int, FormatInt<int>>;
using ValueNumericDouble = ValueNumeric<double, FormatFloat<double>>;
using ValueBearingList = ValueList<BearingResult, FormatBearingResult>;
using ValueQuadFloatList = ValueList<QuadFloat, QuadFloatFormat>;
using ValueStringList = ValueList<QString, FormatString<QString>>;
using ValueTrafficControlFrequencyList = ValueList<TrafficControlFrequency, FormatTrafficControlFrequency>;

extern template class ZANPLATFORM_EXPORT Value<bool, FormatBool<bool>>;
extern template class ZANPLATFORM_EXPORT Value<int, FormatInt<int>>;
extern template class ZANPLATFORM_EXPORT Value<double, FormatFloat<double>>;
extern template class ZANPLATFORM_EXPORT Value<QString, FormatString<QString>>;
extern template class ZANPLATFORM_EXPORT Value<quint64, FormatTimeStamp<quint64>>;
extern template class ZANPLATFORM_EXPORT Value<BearingResult, FormatBearingResult>;
extern template class ZANPLATFORM_EXPORT ValueNumeric<int, FormatInt<int>>;
extern template class ZANPLATFORM_EXPORT ValueNumeric<double, FormatFloat<double>>;
extern template class ZANPLATFORM_EXPORT ValueList<BearingResult, FormatBearingResult>;
extern template class ZANPLATFORM_EXPORT ValueList<QuadFloat, QuadFloatFormat>;
extern template class ZANPLATFORM_EXPORT ValueList<QString, FormatString<QString>>;
extern template class ZANPLATFORM_EXPORT ValueList<TrafficControlFrequency, FormatTrafficControlFrequency>;
