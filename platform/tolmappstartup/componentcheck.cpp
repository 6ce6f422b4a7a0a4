#include "tolmappstartup/componentcheck.h"

#include "tolmappstartup/idllinstance.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <elf.h>
#include <exception>
#include <fcntl.h>
#include <link.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Why others could have put something of theirs into a file or a directory; empty when they could not. The
/// bits of the group cover what an access control list grants.
QString FindOtherWriter(const struct stat& status) {
    if (status.st_uid != 0 && status.st_uid != geteuid()) {
        return u"belongs to the user "_s + QString::number(status.st_uid);
    }
    return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 ? u"can be written to by others"_s : QString();
}

/// Examines a directory and all above it, from the root downwards: nobody else can change what is below one
/// that has passed. In a sticky one nobody else can move away what is below it and passes, too; the directory
/// itself may not be such a one, for another file could come into it.
QString FindOtherWriterOfDirectories(const QString& canonicalDirectory) {
    QString directory = u"/"_s;
    const auto examine = [&]() -> QString {
        struct stat status {};
        if (lstat(QFile::encodeName(directory).constData(), &status) != 0) {
            return u"cannot be examined ("_s + QString::fromLocal8Bit(std::strerror(errno)) + u')';
        }
        if (directory != canonicalDirectory && (status.st_mode & S_ISVTX) != 0) {
            status.st_mode &= ~mode_t{S_IWGRP | S_IWOTH};
        }
        return S_ISDIR(status.st_mode) ? FindOtherWriter(status) : u"is none"_s;
    };
    QString fault = examine();
    for (const QString& part : canonicalDirectory.split(u'/', Qt::SkipEmptyParts)) {
        if (!fault.isEmpty()) {
            break;
        }
        directory = QDir(directory).filePath(part);
        fault = examine();
    }
    return fault.isEmpty() ? QString() : u"its directory "_s + directory + u' ' + fault;
}

/// Whether a range of bytes ends within a file, whatever numbers stand for it.
bool IsWithin(quint64 fileSize, quint64 offset, quint64 count, quint64 size) {
    return offset <= fileSize && (size == 0 || count <= (fileSize - offset) / size);
}

/// Whether a file lacks something of what its tables say that it holds. What is no shared object of this
/// machine is left to the loader.
bool IsTruncated(QFile& file) {
    ElfW(Ehdr) header{};
    const auto fileSize = static_cast<quint64>(file.size());
    const qint64 read = file.read(reinterpret_cast<char*>(&header), sizeof header);
    if (read < SELFMAG || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        return false;
    }
    if (read < qint64{sizeof header}) {
        return true;
    }
    constexpr unsigned char CLASS = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    if (header.e_ident[EI_CLASS] != CLASS || header.e_phentsize != sizeof(ElfW(Phdr))) {
        return false;
    }
    if (!IsWithin(fileSize, header.e_shoff, header.e_shnum, header.e_shentsize) ||
        !IsWithin(fileSize, header.e_phoff, header.e_phnum, header.e_phentsize)) {
        return true;
    }
    file.seek(static_cast<qint64>(header.e_phoff));
    for (int i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment{};
        if (file.read(reinterpret_cast<char*>(&segment), sizeof segment) != qint64{sizeof segment} ||
            !IsWithin(fileSize, segment.p_offset, segment.p_filesz, 1)) {
            return true;
        }
    }
    return false;
}

/// Loads a library, and says in a pipe how that went: one line for the initialisers, one for the version
/// function, each with the reason that speaks against the library, or empty. Never returns, and leaves out
/// what the process, whose copy this is, has prepared for its end.
[[noreturn]] void LoadAndTell(const QString& path, int pipe) {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    // What the library prints is printed when it runs in earnest.
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    qInstallMessageHandler(nullptr); // the program's own may write elsewhere
    const auto tell = [pipe](const QString& reason) {
        const QByteArray line = reason.toUtf8().left(PIPE_BUF - 1).replace('\n', ' ') + '\n';
        static_cast<void>(!write(pipe, line.constData(), static_cast<std::size_t>(line.size())));
    };
    QLibrary library(path);
    QString reason;
    try {
        reason = ComponentCheck::Load(library);
    } catch (const std::exception& exception) {
        reason = u"its initialiser threw an exception: "_s + QString::fromLocal8Bit(exception.what());
    } catch (...) {
        reason = u"its initialiser threw an exception"_s;
    }
    tell(reason);
    if (reason.isEmpty()) {
        tell(ComponentCheck::FindFaultOfVersion(library));
    }
    _exit(0);
}

/// What a child tells that loads a library, until it has told all, has ended, or has taken too long. It is
/// gone then. Copies that it has made of itself may hold the pipe longer.
QByteArray WaitForLines(pid_t child, int pipe, bool& isInTime) {
    constexpr int PATIENCE_MS = 5000;
    const QDeadlineTimer deadline(PATIENCE_MS);
    QByteArray lines;
    const auto isAll = [&lines] {
        return lines.count('\n') == 2 || (lines.size() > 1 && lines.endsWith('\n'));
    };
    isInTime = true;
    while (!isAll()) {
        pollfd answerOrEnd{pipe, POLLIN, 0};
        const int count = poll(&answerOrEnd, 1, static_cast<int>(deadline.remainingTime()));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        std::array<char, PIPE_BUF> part{};
        const ssize_t size = count > 0 ? read(pipe, part.data(), part.size()) : 0;
        if (size <= 0) {
            isInTime = count > 0;
            break;
        }
        lines.append(part.data(), size);
    }
    kill(child, SIGKILL);
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    return lines;
}

} // namespace

namespace ComponentCheck {

QString FindFault(const QString& place, const QString& canonicalPath) {
    for (const QString& directory : {QFileInfo(place).canonicalFilePath(), QFileInfo(canonicalPath).path()}) {
        if (QString fault = FindOtherWriterOfDirectories(directory); !fault.isEmpty()) {
            return fault;
        }
    }
    // Nobody but those who are trusted can put another file into its place from here on.
    QFile file(canonicalPath);
    struct stat status {};
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || fstat(file.handle(), &status) != 0) {
        return u"it cannot be read ("_s + file.errorString() + u')';
    }
    if (const QString writer = FindOtherWriter(status); !writer.isEmpty()) {
        return u"it "_s + writer;
    }
    return IsTruncated(file) ? u"it is truncated"_s : QString();
}

QString FindFaultInTrial(const QString& canonicalPath) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return u"it cannot be tried ("_s + QString::fromLocal8Bit(std::strerror(errno)) + u')';
    }
    const pid_t child = fork();
    if (child == 0) {
        LoadAndTell(canonicalPath, ends[1]);
    }
    close(ends[1]);
    QString reason;
    if (child < 0) {
        reason = u"it cannot be tried ("_s + QString::fromLocal8Bit(std::strerror(errno)) + u')';
    } else {
        bool isInTime = false;
        const QByteArray lines = WaitForLines(child, ends[0], isInTime);
        const QList<QByteArray> reasons = lines.split('\n'); // behind the last line nothing
        if (reasons.size() > 2 || !reasons.constFirst().isEmpty()) {
            reason = QString::fromUtf8(reasons.at(reasons.size() > 2 ? 1 : 0));
        } else {
            reason = (reasons.size() == 1 ? u"its initialiser "_s : u"its version function "_s) +
                     (isInTime ? u"ends the process"_s : u"does not come to an end"_s);
        }
    }
    close(ends[0]);
    return reason;
}

QString Load(QLibrary& library) {
    // A function that is missing shall show now, and not end the program when it is first called.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    const pid_t process = getpid();
    const bool isLoaded = library.load();
    if (getpid() != process) {
        _exit(0); // an initialiser has made a copy of the program, and there shall be one
    }
    return isLoaded ? QString()
                    : u"it is no shared object that can be loaded here ("_s + library.errorString() + u')';
}

QString FindFaultOfVersion(QLibrary& library) {
    using InterfaceVersionFunction = quint32 (*)();
    const auto getVersion =
        reinterpret_cast<InterfaceVersionFunction>(library.resolve("ZanComponentInterfaceVersion"));
    if (!getVersion || !library.resolve("ZanCreateComponent")) {
        return u"it is no component: it does not export ZanComponentInterfaceVersion and "
               "ZanCreateComponent"_s;
    }
    try {
        const quint32 version = getVersion();
        return version == IDllInstance::INTERFACE_VERSION
                   ? QString()
                   : u"it has the interface version "_s + QString::number(version) + u", and "_s +
                         QString::number(IDllInstance::INTERFACE_VERSION) + u" is wanted"_s;
    } catch (const std::exception& exception) {
        return u"it threw an exception: "_s + QString::fromLocal8Bit(exception.what());
    } catch (...) {
        return u"it threw an exception"_s;
    }
}

} // namespace ComponentCheck
