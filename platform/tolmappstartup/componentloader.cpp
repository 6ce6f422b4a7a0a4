#include "tolmappstartup/componentloader.h"

#include "tolmappstartup/componentcheck.h"
#include "tolmappstartup/idllinstance.h"
#include "tolmappstartup/plainfilename.h"
#include "tolmappstartup/problemreport.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>

#include <algorithm>
#include <exception>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"tolmappstartup\\componentloader");

// Programs use the name "MshClient.dll" on all systems; on this one the file is named differently.
QString LocalLibraryName(const QString& fileName) {
    QString name = fileName.toLower();
    if (name.endsWith(u".dll")) {
        name.chop(4);
    }
    return u"lib"_s + name + u".so"_s;
}

// Loads a library and creates an instance. Catches what the library's code throws. Null, with a reason, on
// failure.
IDllInstance* LoadInstance(QLibrary& library, QString& reason) {
    using CreateFunction = IDllInstance* (*)();
    try {
        reason = ComponentCheck::Load(library);
        if (reason.isEmpty()) {
            reason = ComponentCheck::FindFaultOfVersion(library);
        }
        if (!reason.isEmpty()) {
            return nullptr;
        }
        reason = u"it does not make an instance"_s;
        return reinterpret_cast<CreateFunction>(library.resolve("ZanCreateComponent"))();
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
    const auto isIt = [&path](const std::shared_ptr<QLibrary>& pLibrary) {
        return pLibrary->fileName() == path;
    };
    if (const auto found = std::ranges::find_if(m_libraryOfInstance, isIt);
        found != m_libraryOfInstance.end()) {
        return *found;
    }
    if (const auto kept = std::ranges::find_if(m_kept, isIt); kept != m_kept.end()) {
        return *kept;
    }
    return std::make_shared<QLibrary>(path);
}

bool ComponentLoader::SetDirectory(const QString& directory) {
    m_directory.clear();
    if (!QDir::isAbsolutePath(directory)) {
        ReportProblem(u"The component directory \""_s + directory + u"\" is not an absolute path."_s, TRACE);
        return false;
    }
    m_directory = QDir::cleanPath(directory);
    return true;
}

IDllInstance* ComponentLoader::Create(const QString& fileName) {
    const auto refuse = [&](const QString& reason, unsigned line = __builtin_LINE()) -> IDllInstance* {
        ReportProblem(u"The component \""_s + fileName + u"\" cannot be loaded: "_s + reason + u'.', TRACE,
                      line);
        return nullptr;
    };
    if (!IsPlainFileName(fileName)) {
        return refuse(u"a component is named by a plain file name"_s);
    }
    if (m_directory.isEmpty()) {
        return refuse(u"no component directory is set"_s);
    }
    const QString path = m_directory + u'/' + LocalLibraryName(fileName);
    if (!QFileInfo(path).isFile()) {
        return refuse(u"there is no file "_s + path);
    }
    // From here on this file is used, even if a link to it changes.
    const QString canonicalPath = QFileInfo(path).canonicalFilePath();
    const std::shared_ptr<QLibrary> pLibrary = GetLibrary(canonicalPath);
    QString reason;
    if (!pLibrary->isLoaded()) {
        reason = ComponentCheck::FindFault(m_directory, canonicalPath);
        if (reason.isEmpty()) {
            reason = ComponentCheck::FindFaultInTrial(canonicalPath);
        }
        if (!reason.isEmpty()) {
            return refuse(path + u": "_s + reason);
        }
    }
    // A library that is refused from here on stays loaded: its initialisers have run, and threads that they
    // have started may still run.
    IDllInstance* const instance = LoadInstance(*pLibrary, reason);
    if (!instance) {
        return refuse(path + u": "_s + reason);
    }
    m_libraryOfInstance.insert(instance, pLibrary);
    return instance;
}

void ComponentLoader::Destroy(IDllInstance* instance) {
    const std::shared_ptr<QLibrary> pLibrary = m_libraryOfInstance.take(instance);
    if (!pLibrary) {
        ReportProblem(
            u"A component instance cannot be destroyed: it was not created here, or has already been destroyed."_s,
            TRACE);
        return;
    }
    delete instance;
    if (pLibrary.use_count() == 1) {
        pLibrary->unload();
    }
}

void ComponentLoader::Keep(IDllInstance* instance) {
    if (const std::shared_ptr<QLibrary> pLibrary = m_libraryOfInstance.value(instance)) {
        m_kept.insert(pLibrary);
    } else {
        ReportProblem(
            u"The library of a component instance cannot be kept: the instance was not created here, or has already been destroyed."_s,
            TRACE);
    }
}
