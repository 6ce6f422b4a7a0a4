#include "zancommon/zanabstractinterface.h"

#include <QWidget>

#include <utility>

ZANAbstractInterface::ZANAbstractInterface(QString name)
    : m_strName(std::move(name)) {}

ZANAbstractInterface::~ZANAbstractInterface() = default;

void ZANAbstractInterface::SetConfigPath(const QString& path) {
    m_strConfigPath = path;
}

bool ZANAbstractInterface::IsEnabled() {
    return m_bEnabled;
}

QWidget* ZANAbstractInterface::GetConfigWidget() {
    return m_pConfigWidget;
}

void ZANAbstractInterface::AdoptConfigWidget(QWidget* widget) {
    m_pConfigWidget = widget;
    if (widget) {
        connect(widget, &QObject::destroyed, this, &ZANAbstractInterface::SlotOnConfigWidgetDestroyed,
                Qt::UniqueConnection);
    }
}

// NOLINTNEXTLINE(readability-const-return-type): the type is part of the interface
const QString ZANAbstractInterface::GetName() {
    return m_strName;
}

void ZANAbstractInterface::SlotOnConfigWidgetDestroyed(QObject* pObj) {
    if (pObj == m_pConfigWidget) {
        m_pConfigWidget = nullptr;
    }
}

void ZANAbstractInterface::SetAddress(const QString& address) {
    m_strAddress = address;
}

// NOLINTNEXTLINE(readability-const-return-type): the type is part of the interface
const QString ZANAbstractInterface::GetAddress() {
    return m_strAddress;
}
