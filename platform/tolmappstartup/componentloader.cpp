#include "tolmappstartup/componentloader.h"

#include "tolmappstartup/componentcheck.h"
#include "tolmappstartup/idllinstance.h"
#include "tolmappstartup/plainfilename.h"
#include "tolmappstartup/problemreport.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>

#include <exception>

using namespace Qt::StringLiterals;

namespace {

void Report(const QString& problem, unsigned line) {
    ReportProblem(problem, u"tolmappstartup\\componentloader"_s, line);
}

using InterfaceVersionFunction = quint32 (*)();
using CreateFunction = IDllInstance* (*)();

// "MshClient.dll" is the name that all systems share; this is what the file is called on this one.
QString LocalLibraryName(const QString& fileName) {
    QString name = fileName.toLower();
    if (name.endsWith(u".dll")) {
        name.chop(4);
    }
    return u"lib"_s + name + u".so"_s;
}

void UnloadWhenUnused(const std::shared_ptr<QLibrary>& pLibrary) {
    if (pLibrary.use_count() == 1) {
        pLibrary->unload();
    }
}

// Makes an instance with the functions that a library exports. On failure null, and a reason.
IDllInstance* MakeInstance(QLibrary& library, QString& reason) {
    const auto getVersion =
        reinterpret_cast<InterfaceVersionFunction>(library.resolve("ZanComponentInterfaceVersion"));
    const auto create = reinterpret_cast<CreateFunction>(library.resolve("ZanCreateComponent"));
    if (!getVersion || !create) {
        reason =
            u"it is no component: it does not export ZanComponentInterfaceVersion and ZanCreateComponent"_s;
        return nullptr;
    }
    const quint32 version = getVersion();
    if (version != IDllInstance::INTERFACE_VERSION) {
        reason = u"it has the interface version "_s + QString::number(version) + u", and "_s +
                 QString::number(IDllInstance::INTERFACE_VERSION) + u" is wanted"_s;
        return nullptr;
    }
    reason = u"it does not make an instance"_s;
    return create();
}

// Loads a library and makes an instance. Whatever code of the library is run throws in here. On failure null,
// and a reason.
IDllInstance* LoadInstance(QLibrary& library, QString& reason) {
    try {
        if (!library.load()) {
            reason = u"it is no shared object that can be loaded here ("_s + library.errorString() + u')';
            return nullptr;
        }
        return MakeInstance(library, reason);
    } catch (const std::exception& exception) {
        reason = u"it threw an exception: "_s + QString::fromLocal8Bit(exception.what());
    } catch (...) {
        reason = u"it threw an exception"_s;
    }
    return nullptr;
}

} // namespace

IDllInstance::~IDllInstance() = default;

std::shared_ptr<QLibrary> ComponentLoader::GetLibrary(const QString& path) const {
    for (const std::shared_ptr<QLibrary>& pLibrary : m_libraryOfInstance) {
        if (pLibrary->fileName() == path) {
            return pLibrary;
        }
    }
    return std::make_shared<QLibrary>(path);
}

bool ComponentLoader::SetDirectory(const QString& directory) {
    m_directory.clear();
    if (!QDir::isAbsolutePath(directory)) {
        Report(u"The component directory \""_s + directory + u"\" is no absolute path."_s, __LINE__);
        return false;
    }
    m_directory = QDir::cleanPath(directory);
    return true;
}

IDllInstance* ComponentLoader::Create(const QString& fileName) {
    const auto refuse = [&](const QString& reason, unsigned line) -> IDllInstance* {
        Report(u"The component \""_s + fileName + u"\" cannot be loaded: "_s + reason + u'.', line);
        return nullptr;
    };
    if (!IsPlainFileName(fileName)) {
        return refuse(u"a component is named by a plain file name"_s, __LINE__);
    }
    if (m_directory.isEmpty()) {
        return refuse(u"no component directory is set"_s, __LINE__);
    }
    const QString path = m_directory + u'/' + LocalLibraryName(fileName);
    if (!QFileInfo(path).isFile()) {
        return refuse(u"there is no file "_s + path, __LINE__);
    }
    const std::shared_ptr<QLibrary> pLibrary = GetLibrary(path);
    // A function that is missing shall show now, and not end the program when it is first called.
    pLibrary->setLoadHints(QLibrary::ResolveAllSymbolsHint);
    QString reason;
    if (!pLibrary->isLoaded()) {
        reason = ComponentCheck::FindFault(path);
        if (reason.isEmpty()) {
            reason = ComponentCheck::FindFaultyInitialiser(path);
        }
        if (!reason.isEmpty()) {
            return refuse(path + u": "_s + reason, __LINE__);
        }
    }
    IDllInstance* const instance = LoadInstance(*pLibrary, reason);
    if (!instance) {
        UnloadWhenUnused(pLibrary);
        return refuse(path + u": "_s + reason, __LINE__);
    }
    m_libraryOfInstance.insert(instance, pLibrary);
    return instance;
}

void ComponentLoader::Destroy(IDllInstance* instance) {
    const std::shared_ptr<QLibrary> pLibrary = m_libraryOfInstance.take(instance);
    if (!pLibrary) {
        Report(
            u"A component instance cannot be destroyed: it is none that was created, or is gone already."_s,
            __LINE__);
        return;
    }
    delete instance;
    UnloadWhenUnused(pLibrary);
}
