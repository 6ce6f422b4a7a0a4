#include "tolmappstartup/componentcheck.h"

#include <QFile>
#include <QFileInfo>
#include <QLibrary>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <elf.h>
#include <exception>
#include <fcntl.h>
#include <link.h>
#include <optional>
#include <poll.h>
#include <string_view>
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

QString FindOtherWriterOfDirectory(const QString& directory) {
    struct stat status {};
    if (stat(QFile::encodeName(directory).constData(), &status) != 0) {
        return u"its directory cannot be examined ("_s + QString::fromLocal8Bit(std::strerror(errno)) + u')';
    }
    const QString writer = FindOtherWriter(status);
    return writer.isEmpty() ? QString() : u"its directory "_s + directory + u' ' + writer;
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

constexpr std::string_view LOADED = "loaded";

/// Loads a library, and says in a pipe how that ended. Never returns, and leaves out what the process, whose
/// copy this is, has prepared for its end.
[[noreturn]] void LoadAndTell(const QString& path, int pipe) {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    // What the initialisers print is printed when they run in earnest.
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    QByteArray answer(LOADED.data(), LOADED.size());
    try {
        QLibrary library(path);
        library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
        library.load();
    } catch (const std::exception& exception) {
        answer = QByteArray("its initialiser threw an exception: ") + exception.what();
    } catch (...) {
        answer = "its initialiser threw an exception";
    }
    const auto size = static_cast<std::size_t>(std::min<qsizetype>(answer.size(), PIPE_BUF));
    static_cast<void>(!write(pipe, answer.constData(), size));
    _exit(0);
}

/// What a child tells before it ends; empty when it ends without a word, nothing when it takes too long. It
/// is gone then.
std::optional<QByteArray> WaitForAnswer(pid_t child, int pipe) {
    constexpr int PATIENCE_MS = 5000;
    pollfd answerOrEnd{pipe, POLLIN, 0};
    int count = 0;
    do {
        count = poll(&answerOrEnd, 1, PATIENCE_MS);
    } while (count < 0 && errno == EINTR);
    kill(child, SIGKILL);
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    if (count <= 0) {
        return std::nullopt;
    }
    std::array<char, PIPE_BUF> answer{};
    return QByteArray(answer.data(), std::max<ssize_t>(read(pipe, answer.data(), answer.size()), 0));
}

} // namespace

namespace ComponentCheck {

QString FindFault(const QString& path) {
    const QString canonicalPath = QFileInfo(path).canonicalFilePath();
    for (const QString& end : {path, canonicalPath}) {
        if (QString fault = FindOtherWriterOfDirectory(QFileInfo(end).path()); !fault.isEmpty()) {
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

QString FindFaultyInitialiser(const QString& path) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return u"it cannot be tried ("_s + QString::fromLocal8Bit(std::strerror(errno)) + u')';
    }
    const pid_t child = fork();
    if (child == 0) {
        LoadAndTell(path, ends[1]);
    }
    close(ends[1]);
    QString reason;
    if (child < 0) {
        reason = u"it cannot be tried ("_s + QString::fromLocal8Bit(std::strerror(errno)) + u')';
    } else if (const std::optional<QByteArray> answer = WaitForAnswer(child, ends[0]); !answer) {
        reason = u"its initialiser does not come to an end"_s;
    } else if (answer->isEmpty()) {
        reason = u"its initialiser ends the process"_s;
    } else if (*answer != QByteArrayView(LOADED.data(), LOADED.size())) {
        reason = QString::fromLocal8Bit(*answer);
    }
    close(ends[0]);
    return reason;
}

} // namespace ComponentCheck
