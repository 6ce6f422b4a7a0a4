#include "zancommon/freqrangedefinition.h"

namespace KvZANCommon {

FreqRangeDefinition::FreqRangeDefinition(const FreqRangeDefinition* source) {
    if (source) {
        *this = *source;
        m_name.clear();
        m_alarmSettings = AlarmSettings();
    }
}

} // namespace KvZANCommon
