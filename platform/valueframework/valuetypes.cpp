#include "valueframework/valuetypes.h"

template class Value<bool, FormatBool<bool>>;
template class Value<int, FormatInt<int>>;
template class Value<double, FormatFloat<double>>;
template class Value<QString, FormatString<QString>>;
template class Value<quint64, FormatTimeStamp<quint64>>;
template class Value<BearingResult, FormatBearingResult>;
template class ValueNumeric<int, FormatInt<int>>;
template class ValueNumeric<double, FormatFloat<double>>;
template class ValueList<BearingResult, FormatBearingResult>;
template class ValueList<QuadFloat, QuadFloatFormat>;
template class ValueList<QString, FormatString<QString>>;
template class ValueList<TrafficControlFrequency, FormatTrafficControlFrequency>;
