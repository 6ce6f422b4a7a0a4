#include "zanserver/driverlibrary.h"

#include "tolmappstartup/cfgcenter.h"
#include "zanserver/drivertext.h"

#include <QDir>

#include <exception>
#include <utility>

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

constexpr QStringView PREFIX = u"zandriver-";

struct Loaded {
    DriverComponentPtr component;
    KvZANCommon::DriverDescription description;
    QString fault;
};

/// A copy that outlives the library in which the literals of the original are.
KvZANCommon::DriverDescription Detach(const KvZANCommon::DriverDescription& description) {
    const auto copy = [](const QString& text) { return QString(text.constData(), text.size()); };
    return {copy(description.name), copy(description.summary), copy(description.addressForm),
            copy(description.addressExample),
            QList<EMode>(description.modes.constBegin(), description.modes.constEnd())};
}

/// Asks a component what driver it is; throws what the component throws.
Loaded Question(DriverComponentPtr component, const QString& name) {
    using KvZANCommon::IDriverComponent;
    if (const quint32 version = component->GetDriverInterfaceVersion();
        version != IDriverComponent::DRIVER_INTERFACE_VERSION) {
        return {{},
                {},
                u"it has the driver interface version %1, and %2 is wanted"_s.arg(
                    QString::number(version), QString::number(IDriverComponent::DRIVER_INTERFACE_VERSION))};
    }
    KvZANCommon::DriverDescription description = Detach(component->Describe());
    if (description.name != name) {
        return {{}, {}, u"it calls itself \"%1\""_s.arg(description.name)};
    }
    return {std::move(component), std::move(description), {}};
}

Loaded Question(IDllInstance* instance, const QString& name) {
    auto* const driver = dynamic_cast<KvZANCommon::IDriverComponent*>(instance);
    if (!driver) {
        CfgCenter::DestroyDllInstanceByPointer(instance);
        return {{}, {}, u"it is not a driver"_s};
    }
    try {
        return Question(DriverComponentPtr(driver), name);
    } catch (const std::exception& exception) {
        return {{}, {}, u"it threw an exception: "_s + WhatOf(exception)};
    } catch (...) {
        return {{}, {}, u"it threw an exception"_s};
    }
}

Loaded LoadAndQuestion(const QString& name) {
    const QString fileName = PREFIX.toString() + name;
    IDllInstance* const instance = CfgCenter::CreateDllInstanceByFileName(fileName, {}, false, false);
    if (!instance) {
        return {{}, {}, CfgCenter::GetLastError()};
    }
    Loaded loaded = Question(instance, name);
    if (!loaded.component) {
        loaded.fault = u"The component \"%1\" in %2 cannot be used: %3."_s.arg(
            fileName, CfgCenter::GetComponentDirectory(), loaded.fault);
    }
    return loaded;
}

} // namespace

void DriverComponentDeleter::operator()(KvZANCommon::IDriverComponent* component) const {
    CfgCenter::DestroyDllInstanceByPointer(component);
}

QList<DriverLibrary::Entry> DriverLibrary::List() {
    const QString place = CfgCenter::GetComponentDirectory();
    if (place.isEmpty()) {
        return {};
    }
    const QString before = u"lib"_s + PREFIX.toString();
    const QString after = u".so"_s;
    QList<Entry> entries;
    for (const QString& file : QDir(place).entryList({before + u'*' + after}, QDir::Files, QDir::Name)) {
        const Loaded loaded =
            LoadAndQuestion(file.sliced(before.size(), file.size() - before.size() - after.size()));
        entries.append({place + u'/' + file, loaded.description, loaded.fault});
    }
    return entries;
}

DriverComponentPtr DriverLibrary::Load(const QString& name, QString& fault) {
    Loaded loaded = LoadAndQuestion(name);
    if (loaded.component) {
        CfgCenter::KeepLibraryOf(loaded.component.get());
    }
    fault = loaded.fault;
    return std::move(loaded.component);
}

} // namespace ZANServer
