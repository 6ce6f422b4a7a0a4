#include "zancommon/idriver.h"

namespace KvZANCommon {

IDriver::~IDriver() = default;

void IDriver::ReservedAfterSearch() {}

void IDriver::SetAudioFormat(int /*sampleRate*/, int /*sampleBits*/, int /*channelCount*/) {}

bool IDriver::StartDRData(bool /*start*/, int /*channel*/) {
    return false;
}

long IDriver::GetBufferCount() {
    return 0;
}

long IDriver::RestartMassData() {
    return 0;
}

long IDriver::SetSyncTrigger(bool /*on*/) {
    return -1;
}

long IDriver::GetSyncMissedCount() const {
    return -1;
}

void IDriver::ReservedAtEnd() {}

} // namespace KvZANCommon
