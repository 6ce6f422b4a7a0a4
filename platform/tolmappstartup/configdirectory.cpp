#include "tolmappstartup/configdirectory.h"

#include <QDir>
#include <QFile>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The path when it can be used (absolute, and not the root directory), else empty.
QString Usable(const QString& path) {
    const QString clean = QDir::cleanPath(path);
    return QDir::isAbsolutePath(clean) && !QDir(clean).isRoot() ? clean : QString();
}

QString FromEnvironment(const char* variable) {
    return Usable(QFile::decodeName(qgetenv(variable)));
}

/// A service manager may name several directories, separated by ":"; the first one is used.
QString FromServiceManager(const char* variable) {
    return Usable(QFile::decodeName(qgetenv(variable)).section(u':', 0, 0));
}

QString GetHome() {
    if (QString home = FromEnvironment("HOME"); !home.isEmpty()) {
        return home;
    }
    const passwd* const user = ::getpwuid(::geteuid());
    return user ? Usable(QFile::decodeName(user->pw_dir)) : QString();
}

} // namespace

QString GetDefaultConfigDirectory() {
    for (const char* const variable : {"STATE_DIRECTORY", "CONFIGURATION_DIRECTORY"}) {
        if (QString directory = FromServiceManager(variable); !directory.isEmpty()) {
            return directory;
        }
    }
    if (const QString directory = FromEnvironment("XDG_CONFIG_HOME"); !directory.isEmpty()) {
        return directory + u"/zanstation"_s;
    }
    const QString home = GetHome();
    return home.isEmpty() ? QString() : home + u"/.config/zanstation"_s;
}
