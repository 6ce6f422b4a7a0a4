#include "connections/outputfile.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

constexpr int PATIENCE_MS = 1000;
constexpr int FLAGS = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr mode_t MODE = 0666; // reduced by the process's umask

/// The name in the system's encoding; empty when it is not a valid name.
QByteArray SystemName(const QString& name) {
    return name.contains(QChar::Null) ? QByteArray() : QFile::encodeName(name);
}

/// The file is created without a name and gets its name when it is locked, so that a second program that
/// starts at the same moment does not take it for an older file.
int CreateLocked(const QByteArray& name) {
    const QByteArray directory = QFile::encodeName(QFileInfo(QFile::decodeName(name)).path());
    const int descriptor = open(directory.constData(), O_TMPFILE | FLAGS, MODE);
    if (descriptor < 0) {
        return -1;
    }
    const QByteArray nameless = "/proc/self/fd/" + QByteArray::number(descriptor);
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 &&
        linkat(AT_FDCWD, nameless.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0) {
        return descriptor;
    }
    close(descriptor);
    return -1;
}

/// The process that has locked a file, from the system's list of locks; 0 when it is not in the list, as for
/// a process of another container.
int FindLocker(const struct stat& file) {
    constexpr qint64 MOST_READ = qint64{1} << 20;
    const QByteArray place = QString::asprintf("%02x:%02x:%llu", major(file.st_dev), minor(file.st_dev),
                                               static_cast<unsigned long long>(file.st_ino))
                                 .toLatin1();
    QFile locks(QStringLiteral("/proc/locks"));
    int process = 0;
    if (locks.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : locks.read(MOST_READ).split('\n')) {
            // 1: FLOCK  ADVISORY  WRITE 1234 fd:01:5678 0 EOF
            const QList<QByteArray> words = line.simplified().split(' ');
            if (words.size() > 5 && words[1] == "FLOCK" && words[5] == place) {
                process = words[4].toInt();
            }
        }
    }
    return process;
}

std::optional<struct stat> Status(const QByteArray& name) {
    struct stat status {};
    return stat(name.constData(), &status) == 0 ? std::optional(status) : std::nullopt;
}

bool IsSame(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Where a file that does not exist yet would be created under a name, with links resolved.
std::filesystem::path PlaceOf(const QString& name) {
    constexpr int MOST_LINKS = 40;
    QFileInfo file(name);
    for (int i = 0; i < MOST_LINKS && file.isSymLink(); ++i) {
        file.setFile(file.symLinkTarget());
    }
    const std::filesystem::path path(QFile::encodeName(file.absoluteFilePath()).toStdString());
    std::error_code error;
    const std::filesystem::path place = std::filesystem::weakly_canonical(path, error);
    return error ? path.lexically_normal() : place;
}

bool IsNameOf(const struct stat& file, const QByteArray& name) {
    const std::optional<struct stat> named = Status(name);
    return named && IsSame(file, *named);
}

/// Renames a file, and never replaces another one. Returns an `errno`, 0 when it is done.
int RenameWithoutReplacing(const QByteArray& name, const QByteArray& newName) {
    if (renameat2(AT_FDCWD, name.constData(), AT_FDCWD, newName.constData(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // Some file systems of a network do not have that; a second name does not replace a file either.
    return link(name.constData(), newName.constData()) == 0 && unlink(name.constData()) == 0 ? 0 : errno;
}

/// As many whole lines as a pipe takes in one piece, or a part of a longer line.
std::string_view WholeLines(std::string_view lines) {
    const std::string_view most = lines.substr(0, PIPE_BUF);
    const std::size_t end = most.rfind('\n');
    return end == std::string_view::npos ? most : most.substr(0, end + 1);
}

/// Writes as `write` does, but a reader that is gone does not end the program: SIGPIPE is blocked and
/// removed, unless one was pending before.
ssize_t WriteWithoutSignal(int descriptor, std::string_view bytes) {
    sigset_t pipe{};
    sigset_t before{};
    sigset_t pending{};
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
    sigpending(&pending);

    const ssize_t taken = write(descriptor, bytes.data(), bytes.size());
    const int error = errno;
    if (taken < 0 && error == EPIPE && sigismember(&pending, SIGPIPE) == 0) {
        const timespec now{};
        sigtimedwait(&pipe, nullptr, &now);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return taken;
}

} // namespace

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_error(other.m_error)
    , m_isRegular(other.m_isRegular)
    , m_isStalled(other.m_isStalled) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    if (this != &other) {
        Close();
        m_descriptor = std::exchange(other.m_descriptor, -1);
        m_error = other.m_error;
        m_isRegular = other.m_isRegular;
        m_isStalled = other.m_isStalled;
    }
    return *this;
}

OutputFile::~OutputFile() {
    Close();
}

bool OutputFile::OpenExisting(const QString& name) {
    const QByteArray systemName = SystemName(name);
    if (systemName.isEmpty()) {
        return FailAndClose(EINVAL);
    }
    int descriptor = open(systemName.constData(), FLAGS);
    if (descriptor < 0 && errno == EACCES && QFileInfo(name).isFile()) {
        descriptor = open(systemName.constData(), O_RDONLY | O_CLOEXEC);
    }
    return Take(descriptor) && Lock(systemName);
}

bool OutputFile::OpenOrCreate(const QString& name) {
    const QByteArray systemName = SystemName(name);
    if (systemName.isEmpty()) {
        return FailAndClose(EINVAL);
    }
    int descriptor = CreateLocked(systemName);
    if (descriptor < 0) {
        descriptor = open(systemName.constData(), FLAGS | O_CREAT, MODE);
    }
    return Take(descriptor) && Lock(systemName);
}

bool OutputFile::OpenStandardOutput() {
    // A terminal is opened again, so that O_NONBLOCK does not apply to other programs that use it.
    const int terminal = isatty(STDOUT_FILENO) != 0 ? open("/proc/self/fd/1", FLAGS) : -1;
    return Take(terminal >= 0 ? terminal : fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

void OutputFile::Close() {
    if (IsOpen()) {
        close(std::exchange(m_descriptor, -1));
    }
}

bool OutputFile::Take(int descriptor) {
    if (descriptor < 0) {
        return FailAndClose(errno);
    }
    Close();
    m_descriptor = descriptor;
    struct stat status {};
    fstat(m_descriptor, &status);
    m_isRegular = S_ISREG(status.st_mode);
    m_isStalled = false;
    return true;
}

bool OutputFile::Lock(const QByteArray& name) {
    struct stat opened {};
    fstat(m_descriptor, &opened);
    // The program that held the lock until now may have given the name to another file.
    if ((m_isRegular || S_ISFIFO(opened.st_mode)) &&
        ((flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) || !IsNameOf(opened, name))) {
        return FailAndClose(EWOULDBLOCK);
    }
    // O_NONBLOCK was for opening only: before each write `WaitForRoom` asks whether there is room. For a
    // terminal that answer is not reliable.
    fcntl(m_descriptor, F_SETFL, isatty(m_descriptor) != 0 ? O_APPEND | O_NONBLOCK : O_APPEND);
    return true;
}

bool OutputFile::FailAndClose(int error) {
    Close();
    m_error = error;
    return false;
}

std::size_t OutputFile::Write(std::string_view lines) {
    std::size_t written = 0;
    while (written < lines.size()) {
        std::string_view next = lines.substr(written);
        if (!m_isRegular) {
            if (!WaitForRoom()) {
                break;
            }
            next = WholeLines(next);
        }
        errno = EIO; // for a device that takes nothing without an error
        const ssize_t taken = m_isRegular ? write(m_descriptor, next.data(), next.size())
                                          : WriteWithoutSignal(m_descriptor, next);
        if (taken > 0) {
            written += static_cast<std::size_t>(taken);
        } else if (errno != EINTR) {
            m_isStalled = errno == EAGAIN;
            m_error = errno;
            break;
        }
    }
    return written;
}

bool OutputFile::WaitForRoom() {
    const QDeadlineTimer deadline(m_isStalled ? 0 : PATIENCE_MS);
    pollfd file{m_descriptor, POLLOUT, 0};
    int ready = 0;
    do {
        ready = poll(&file, 1, static_cast<int>(deadline.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    m_isStalled = ready <= 0;
    if (m_isStalled) {
        m_error = EWOULDBLOCK;
    }
    return !m_isStalled;
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the file
bool OutputFile::TakeBack(std::size_t count) {
    struct stat status {};
    const off_t position = lseek(m_descriptor, 0, SEEK_CUR);
    const off_t end = position - static_cast<off_t>(count);
    // Standard output may be shared, and other programs' bytes may follow ours.
    return m_isRegular && end >= 0 && fstat(m_descriptor, &status) == 0 && status.st_size == position &&
           ftruncate(m_descriptor, end) == 0 && lseek(m_descriptor, end, SEEK_SET) == end;
}

bool OutputFile::HasName(const QString& name) const {
    struct stat opened {};
    struct stat named {};
    if (stat(SystemName(name).constData(), &named) != 0) {
        return errno != ENOENT && errno != ENOTDIR;
    }
    return fstat(m_descriptor, &opened) == 0 && IsSame(opened, named);
}

bool OutputFile::Rename(const QString& name, const QString& newName) {
    m_error = HasName(name) ? RenameWithoutReplacing(SystemName(name), SystemName(newName)) : ENOENT;
    return m_error == 0;
}

qint64 OutputFile::GetSize() const {
    struct stat status {};
    return fstat(m_descriptor, &status) == 0 ? status.st_size : 0;
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the file
bool OutputFile::Empty() {
    if (ftruncate(m_descriptor, 0) != 0) {
        m_error = errno == EINVAL ? EACCES : errno; // EINVAL: it is open for reading
        return false;
    }
    return true;
}

bool OutputFile::HasOtherNames(const QString& name) {
    struct stat status {};
    return lstat(SystemName(name).constData(), &status) == 0 &&
           (S_ISLNK(status.st_mode) || (S_ISREG(status.st_mode) && status.st_nlink > 1));
}

bool OutputFile::IsFifo(const QString& name) {
    const std::optional<struct stat> status = Status(SystemName(name));
    return status && S_ISFIFO(status->st_mode);
}

QString OutputFile::FindPlace(const QString& name) {
    return SystemName(name).isEmpty() ? QString()
                                      : QFile::decodeName(QByteArray::fromStdString(PlaceOf(name).string()));
}

bool OutputFile::IsSameFile(const QString& name, const QString& other) {
    const std::optional<struct stat> one = Status(SystemName(name));
    const std::optional<struct stat> two = Status(SystemName(other));
    if (!one && !two) {
        return !SystemName(name).isEmpty() && PlaceOf(name) == PlaceOf(other);
    }
    return one && two && IsSame(*one, *two) && (S_ISREG(one->st_mode) || S_ISFIFO(one->st_mode));
}

QString OutputFile::FindUser(const QString& name) {
    const QByteArray systemName = SystemName(name);
    const std::optional<struct stat> status = Status(systemName);
    if (!status || !(S_ISREG(status->st_mode) || S_ISFIFO(status->st_mode))) {
        return {};
    }
    // For reading: a reader of the FIFO would take a writer that opens and closes it for the end.
    const int descriptor = open(systemName.constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0) {
        return {};
    }
    // A FIFO that is read may be written to.
    const int excluding = S_ISREG(status->st_mode) ? LOCK_EX : LOCK_SH;
    const bool isLocked = flock(descriptor, excluding | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(descriptor);
    if (!isLocked) {
        return {};
    }
    const int process = FindLocker(*status);
    return process > 0 ? QStringLiteral("process %1").arg(process) : QStringLiteral("another process");
}
