#include "zancommon/commandprotocol.h"

#include "kwbase/datetime.h"
#include "kwbase/errorhandler.h"
#include "kwbase/tolmos.h"

#include <QDateTime>
#include <QDir>
#include <QDomDocument>
#include <QFile>

#include <algorithm>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Date and time of day, with the milliseconds as a plain number (Qt's own format pads them).
QString GetBackupDate() {
    constexpr unsigned MS_PER_SECOND = 1000;
    const unsigned long long now = TolmOS::Create().GetCurrentTime();
    return Tolm::DateTime(now).toString(u"yyyy-MM-dd_hh-mm-ss-"_s) + QString::number(now % MS_PER_SECOND);
}

/// An entry as it is written: XML with four blanks a level; everything else, and XML that cannot be read, as
/// it is.
QByteArray ToEightBitText(const QString& entry) {
    QByteArray text = entry.toLatin1();
    if (text.contains('?') && text.contains("?xml version=")) {
        QDomDocument document;
        if (document.setContent(text)) {
            constexpr int INDENTATION = 4;
            if (const QString readable = document.toString(INDENTATION); !readable.isEmpty()) {
                text = readable.toLatin1();
            }
        }
    }
    return text;
}

} // namespace

IMessageStore::~IMessageStore() = default;

// NOLINTNEXTLINE(modernize-pass-by-value): the signature is part of the interface
CommandProtocol::CommandProtocol(const QString& deviceAddress, QString deviceLabel)
    : m_strDeviceAddress(deviceAddress)
    , m_strDeviceLabel(std::move(deviceLabel)) {}

CommandProtocol::~CommandProtocol() {
    Close();
}

bool CommandProtocol::Init() {
    return Open() && PerformBackup() && WriteHeader();
}

bool CommandProtocol::Add(const QString& text) {
    if (!m_pCurrentFile) {
        m_strLastError = u"CommandProtocol::Add: m_pCurrentFile == NULL"_s;
        return false;
    }
    // What the file holds on disk: another program may have cut it short.
    if (m_pCurrentFile->size() > m_nMaxBytes) {
        const bool isContinued =
            PerformBackup() &&
            Write(u" >>>>>>>>>> PROTOCOL FILE REACHED MAXIMUM SIZE - THIS IS A CONTINUATION FILE\n\n"_s) &&
            WriteHeader();
        if (!isContinued) {
            return false;
        }
    }
    return Write(text);
}

void CommandProtocol::SetMaxBytes(unsigned long bytes) {
    m_nMaxBytes = static_cast<quint32>(bytes);
}

void CommandProtocol::SetDeviceAddress(const QString& address) {
    m_strDeviceAddress = address;
}

bool CommandProtocol::Open() {
    if (!QDir::current().exists(LOG_DIRECTORY)) {
        QDir::current().mkdir(LOG_DIRECTORY);
    }
    m_strFileName = ToValidFileName(LOG_DIRECTORY + u"/commandlog-"_s + m_strDeviceAddress + u".txt"_s);
    m_pCurrentFile = std::make_shared<QFile>(m_strFileName);
    // Unbuffered: a line is one system call, and has reached the file when it returns.
    if (!m_pCurrentFile->open(QIODevice::Append | QIODevice::Text | QIODevice::Unbuffered)) {
        m_strLastError = u"CommandProtocol: Could not open file "_s + m_strFileName + u'.';
        return false;
    }
    m_strLastError.clear();
    return true;
}

void CommandProtocol::Close() {
    if (m_pCurrentFile && m_pCurrentFile->isOpen()) {
        m_pCurrentFile->close();
        m_pCurrentFile.reset();
    }
}

bool CommandProtocol::PerformBackup() {
    Close();
    return BackupFile() && Open();
}

bool CommandProtocol::BackupFile() {
    EnsureConstantNumberOfBackups();
    const QString backupName = ToValidFileName(m_strFileName + u'-' + GetBackupDate() + u".bak"_s);
    QFile::remove(backupName);
    if (!QFile::exists(m_strFileName)) {
        m_strLastError = u"CommandProtocol::BackupFile: file <"_s + m_strFileName + u"> does not exist."_s;
        return false;
    }
    if (!QDir::current().rename(m_strFileName, backupName)) {
        m_strLastError = u"CommandProtocol::BackupFile: renaming <"_s + m_strFileName + u"> to <"_s +
                         backupName + u"> failed."_s;
        return false;
    }
    return true;
}

void CommandProtocol::EnsureConstantNumberOfBackups() {
    constexpr qsizetype MOST_BEFORE_A_BACKUP = 19;
    const QFileInfoList backups = QDir(LOG_DIRECTORY).entryInfoList({u"*.bak"_s}, QDir::Files, QDir::NoSort);
    if (backups.size() <= MOST_BEFORE_A_BACKUP) {
        return;
    }
    // Backups of one moment are as old as the date in their names.
    const auto oldest =
        std::min_element(backups.begin(), backups.end(), [](const QFileInfo& a, const QFileInfo& b) {
            return std::make_tuple(a.lastModified(), a.fileName()) <
                   std::make_tuple(b.lastModified(), b.fileName());
        });
    TraceInformation([] { return u"CommandProtocol: Going to delete the oldest backup file."_s; },
                     u"devicecontrol\\directionfinder\\zancommon\\commandprotocol"_s, 263);
    QFile::remove(LOG_DIRECTORY + u'/' + oldest->fileName());
}

bool CommandProtocol::Write(const QString& text) {
    if (m_pCurrentFile && m_pCurrentFile->isOpen()) {
        const QByteArray entry = ToEightBitText(text);
        const QByteArrayView time = GetTimeOfDay();
        QByteArray line;
        line.reserve(time.size() + entry.size() + 1);
        line.append(time).append(entry).append('\n');
        const qint64 written = m_pCurrentFile->write(line);
        if (written == line.size()) {
            return true;
        }
        if (written > 0) { // no half a line where the disk is full
            m_pCurrentFile->resize(m_pCurrentFile->size() - written);
        }
    }
    m_strLastError = u"CommandProtocol: Writing commandfile "_s + m_strFileName + u" failed."_s;
    return false;
}

QByteArrayView CommandProtocol::GetTimeOfDay() {
    constexpr qint64 MS_PER_SECOND = 1000;
    const auto now = static_cast<qint64>(TolmOS::Create().GetCurrentTime());
    if (const qint64 second = now / MS_PER_SECOND; second != m_second || m_timeOfDay.isEmpty()) {
        // Turning a time into a local one takes longer than writing a line.
        m_second = second;
        m_timeOfDay = QDateTime::fromSecsSinceEpoch(second).toString(u"hh:mm:ss:zzz:\t"_s).toLatin1();
    }
    constexpr qsizetype LAST_DIGIT = 11; // of the milliseconds
    qint64 milliseconds = now % MS_PER_SECOND;
    for (qsizetype digit = LAST_DIGIT; digit > LAST_DIGIT - 3; --digit) {
        m_timeOfDay[digit] = static_cast<char>('0' + milliseconds % 10);
        milliseconds /= 10;
    }
    return m_timeOfDay;
}

bool CommandProtocol::WriteHeader() {
    return Write(u"DF-Address: "_s + m_strDeviceAddress + u'\t' + m_strDeviceLabel + u'\n');
}

QString CommandProtocol::ToValidFileName(const QString& name) {
    QString valid = name;
    for (const QChar forbidden : {u':', u'*', u'"'}) {
        valid.replace(forbidden, u'_');
    }
    return valid;
}
