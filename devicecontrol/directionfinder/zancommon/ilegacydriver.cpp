#include "zancommon/ilegacydriver.h"

namespace KvZANCommon {

void ILegacyDriver::ReservedFirst() {}

void ILegacyDriver::ReservedSecond() {}

void ILegacyDriver::ReservedAfterSearch() {}

void ILegacyDriver::SetAudioFormat(int /*sampleRate*/, int /*sampleBits*/, int /*channelCount*/) {}

bool ILegacyDriver::StartDRData(bool /*start*/, int /*channel*/) {
    return false;
}

long ILegacyDriver::GetBufferCount() {
    return 0;
}

long ILegacyDriver::RestartMassData() {
    return 0;
}

long ILegacyDriver::GetSyncMissedCount() const {
    return -1;
}

long ILegacyDriver::SetSyncTrigger(bool /*on*/) {
    return -1;
}

} // namespace KvZANCommon
