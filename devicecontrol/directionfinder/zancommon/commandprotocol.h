#pragma once

#include "zancommon/constanttext.h"
#include "zancommon_export.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QtGlobal>

#include <memory>

class QFile;

/// The base of classes that store messages; it requires no operations.
class ZANCOMMON_EXPORT IMessageStore {
public:
    IMessageStore() = default;
    IMessageStore(const IMessageStore&) = default;
    IMessageStore& operator=(const IMessageStore&) = default;
    virtual ~IMessageStore();
};

/// The log of the commands that the application exchanges with one DF device: a text file
/// "ZANControl/commandlog-ADDRESS.txt" below the current directory.
///
/// Lines begin with the local time of day. At a start, and when the file has grown beyond its limit, the log
/// becomes a backup in the same directory. Backups are named after date and time in UTC, with milliseconds
/// without leading zeros; to get them in their order, sort them by modification time, not by name. Of all
/// backups in the directory, of any device, the oldest is removed when there are 20. XML is indented by four
/// blanks per level. It is written unchanged when it is nested more than 100 levels deep, is larger than 256
/// KiB (1 KiB with a document type) or 1 MiB when indented, has a tag with more than 256 attributes, or
/// declares an encoding that is not compatible with ASCII. The file is in ISO 8859-1; other characters become
/// "?". An entry is in the file when the operation returns. No operation throws; a failure returns false and
/// leaves its text in `GetLastError`. One thread.
class ZANCOMMON_EXPORT CommandProtocol : public IMessageStore {
public:
    /// The directory of the logs, relative to the current directory of the process.
    static constexpr ConstantText LOG_DIRECTORY{u"ZANControl"};
    /// The name that tools which collect the logs give their archive.
    static constexpr ConstantText ARCHIVE_NAME{u"commandlogs.7z"};
    /// The limit of a log at first.
    static constexpr quint32 DEFAULT_MAX_BYTES = 20000000;

    /// Opens nothing.
    /// \param deviceAddress part of the file name, where ':', '*' and '"' become '_', and of the header
    /// \param deviceLabel   follows the address in the header
    CommandProtocol(const QString& deviceAddress, QString deviceLabel);
    /// A copy writes into the same open file as its source; the first of the two that is destroyed closes it.
    CommandProtocol(const CommandProtocol&) = default;
    CommandProtocol& operator=(const CommandProtocol&) = default;
    ~CommandProtocol() override;

    /// Moves the log of the previous start into a backup (an empty one when there was none) and begins a new
    /// one. False when the directory cannot be created, a file cannot be opened or written, or the log cannot
    /// be moved.
    bool Init();
    /// Appends an entry, as a whole or not at all; before that, moves a log that has grown beyond its limit
    /// into a backup. False before `Init`, after a backup that failed, and when the disk does not take the
    /// entry.
    bool Add(const QString& text);
    /// The limit in bytes on disk, used from the next entry on. A log exceeds it by one entry at most. Only
    /// the lowest 32 bits count.
    void SetMaxBytes(unsigned long bytes);
    /// The file name follows from the next start or backup on.
    void SetDeviceAddress(const QString& address);
    /// From the next start or backup on, "/" becomes "_" in the address of the file name, too; the header has
    /// the address as it is. Without it, a "/" leads into a directory, which must exist.
    void KeepOutOfSubdirectories() { m_isFlat = true; }
    /// The text of the last failure; empty after the file was opened. A success does not clear it.
    [[nodiscard]] const QString& GetLastError() const { return m_strLastError; }

private:
    ZANCOMMON_NO_EXPORT bool Open();
    ZANCOMMON_NO_EXPORT void Close();
    ZANCOMMON_NO_EXPORT bool PerformBackup();
    ZANCOMMON_NO_EXPORT bool BackupFile();
    ZANCOMMON_NO_EXPORT void EnsureConstantNumberOfBackups();
    ZANCOMMON_NO_EXPORT bool Write(const QString& text);
    ZANCOMMON_NO_EXPORT bool WriteHeader();
    /// The beginning of a line: the local time of day with milliseconds, and a tab.
    ZANCOMMON_NO_EXPORT QByteArrayView GetTimeOfDay();
    ZANCOMMON_NO_EXPORT static QString ToValidFileName(const QString& name);

    QString m_strLastError;
    QString m_strFileName;
    QString m_strDeviceAddress;
    QString m_strDeviceLabel;
    std::shared_ptr<QFile> m_pCurrentFile;
    quint32 m_nMaxBytes = DEFAULT_MAX_BYTES;
    bool m_isFlat = false; // no directory is part of the file name
    qint64 m_second = 0;   // since 1970; the second that m_timeOfDay shows
    QByteArray m_timeOfDay;
};
