#include "zancommon/zaninformationcenter.h"

#include <utility>

ZANInformationCenter* ZANInformationCenter::m_pInstance = nullptr;

ZANInformationCenter* ZANInformationCenter::Instance() {
    if (!m_pInstance) {
        m_pInstance = new ZANInformationCenter;
    }
    return m_pInstance;
}

void ZANInformationCenter::Finalise() {
    delete std::exchange(m_pInstance, nullptr);
}

ZANInformationCenter::~ZANInformationCenter() = default;
