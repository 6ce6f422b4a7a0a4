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

/// Why other users could have changed a file or a directory; empty when they could not. The bits of the group
/// cover what an access control list grants.
QString FindOtherWriter(const struct stat& status) {
    if (status.st_uid != 0 && status.st_uid != geteuid()) {
        return u"belongs to the user "_s + QString::number(status.st_uid);
    }
    return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 ? u"can be written to by others"_s : QString();
}

/// Examines a directory and all above it, from the root downwards: in a directory that has passed, other
/// users can replace nothing. One above it may be sticky instead: other users then cannot move away its
/// entries, which are examined in turn. The directory itself may not be sticky, because others could add
/// files to it.
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
        return S_ISDIR(status.st_mode) ? FindOtherWriter(status) : u"is not a directory"_s;
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

/// Whether a table of bytes ends within a file; takes any numbers, also those that would overflow.
bool IsWithin(quint64 fileSize, quint64 offset, quint64 count, quint64 size) {
    return offset <= fileSize && (size == 0 || count <= (fileSize - offset) / size);
}

/// Whether a file lacks parts that its tables name. A file that is not a shared object of this machine is
/// left to the loader.
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

/// Loads a library and writes the results to a pipe: one line for the initialisers, one for the version
/// function, each with the reason not to use the library, or empty. Never returns; runs none of the handlers
/// that the parent process has registered for its end.
[[noreturn]] void LoadAndReport(const QString& path, int pipe) {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    // What the library prints is shown when it is really loaded.
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    qInstallMessageHandler(nullptr); // the program's own handler may write elsewhere
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

/// Reads the lines of a child that loads a library until it has written all, has ended, or has taken too
/// long. The child has ended then; processes that it has forked may hold the pipe longer.
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
        const auto count =
            TEMP_FAILURE_RETRY(poll(&answerOrEnd, 1, static_cast<int>(deadline.remainingTime())));
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
    // From here on only trusted users can replace the file.
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
        return u"it cannot be tested ("_s + QString::fromLocal8Bit(std::strerror(errno)) + u')';
    }
    const pid_t child = fork();
    if (child == 0) {
        LoadAndReport(canonicalPath, ends[1]);
    }
    close(ends[1]);
    QString reason;
    if (child < 0) {
        reason = u"it cannot be tested ("_s + QString::fromLocal8Bit(std::strerror(errno)) + u')';
    } else {
        bool isInTime = false;
        const QByteArray lines = WaitForLines(child, ends[0], isInTime);
        const QList<QByteArray> reasons = lines.split('\n'); // the part after the last line is empty
        if (reasons.size() > 2 || !reasons.constFirst().isEmpty()) {
            reason = QString::fromUtf8(reasons.at(reasons.size() > 2 ? 1 : 0));
        } else {
            reason = (reasons.size() == 1 ? u"its initialiser "_s : u"its version function "_s) +
                     (isInTime ? u"ends the process"_s : u"does not end"_s);
        }
    }
    close(ends[0]);
    return reason;
}

QString Load(QLibrary& library) {
    // A missing function must be found now; otherwise it would end the program when it is first called.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    const pid_t process = getpid();
    const bool isLoaded = library.load();
    if (getpid() != process) {
        _exit(0); // an initialiser has forked: this is the child, which must not go on
    }
    return isLoaded ? QString()
                    : u"it is not a shared object that can be loaded here ("_s + library.errorString() + u')';
}

QString FindFaultOfVersion(QLibrary& library) {
    using InterfaceVersionFunction = quint32 (*)();
    const auto getVersion =
        reinterpret_cast<InterfaceVersionFunction>(library.resolve("ZanComponentInterfaceVersion"));
    if (!getVersion || !library.resolve("ZanCreateComponent")) {
        return u"it is not a component: it does not export ZanComponentInterfaceVersion and "
               "ZanCreateComponent"_s;
    }
    try {
        const quint32 version = getVersion();
        return version == IDllInstance::INTERFACE_VERSION
                   ? QString()
                   : u"it has interface version "_s + QString::number(version) + u", but version "_s +
                         QString::number(IDllInstance::INTERFACE_VERSION) + u" is needed"_s;
    } catch (const std::exception& exception) {
        return u"it threw an exception: "_s + QString::fromLocal8Bit(exception.what());
    } catch (...) {
        return u"it threw an exception"_s;
    }
}

} // namespace ComponentCheck
