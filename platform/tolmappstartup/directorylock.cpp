#include "tolmappstartup/directorylock.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The process that has locked the file: the number in the file, if a process with it is running.
QString DescribeHolder(QFile& file) {
    constexpr qint64 LONGEST_NUMBER = 20;
    bool isNumber = false;
    const int process = file.read(LONGEST_NUMBER).trimmed().toInt(&isNumber);
    const bool isRunning = isNumber && process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
    return isRunning ? u"process "_s + QString::number(process) : u"another process"_s;
}

} // namespace

bool DirectoryLock::Take(const QString& directory) {
    m_file.setFileName(directory + u"/station.lock"_s);
    if (!m_file.open(QIODevice::ReadWrite)) {
        m_errorText = m_file.fileName() + u": "_s + m_file.errorString();
        return false;
    }
    if (::flock(m_file.handle(), LOCK_EX | LOCK_NB) != 0) {
        m_errorText = errno == EWOULDBLOCK
                          ? u"%1 is in use by the station of %2"_s.arg(directory, DescribeHolder(m_file))
                          : m_file.fileName() + u": "_s + QString::fromLocal8Bit(std::strerror(errno));
        m_file.close();
        return false;
    }
    // For the message of a second station; the lock holds without it.
    m_file.resize(0);
    m_file.write(QByteArray::number(static_cast<qint64>(::getpid())) + '\n');
    m_file.flush();
    return true;
}
