#pragma once

#include "zancommon/constanttext.h"
#include "zancommon_export.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QtGlobal>

#include <memory>

class QFile;

/// The base of what takes messages to store; it asks for nothing.
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
/// Lines begin with the local time of day. A start, and a file that has grown beyond its limit, move the log
/// into a backup beside it that is named after date and time in UTC, with milliseconds without leading zeros:
/// who wants backups in their order sorts them by the time of their modification, not by name. Of all backups
/// in the directory, of any device, the oldest is removed when there are 20. XML is written indented by four
/// blanks a level; where it is nested more than 100 levels deep, larger than 256 KiB (1 KiB with a document
/// type) or 1 MiB when indented, has a tag of more than 256 attributes, or declares an encoding in which a
/// character of ASCII is not its own byte, it is written as it came. The file is in ISO 8859-1, where other
/// characters become "?", and an entry is in it when the operation returns. No operation throws; a failure
/// returns false and leaves its text in `GetLastError`. One thread.
class ZANCOMMON_EXPORT CommandProtocol : public IMessageStore {
public:
    /// The directory of the logs, relative to the current directory of the process.
    static constexpr ConstantText LOG_DIRECTORY{u"ZANControl"};
    /// What tools that collect the logs call their archive.
    static constexpr ConstantText ARCHIVE_NAME{u"commandlogs.7z"};
    /// The limit of a log at first.
    static constexpr quint32 DEFAULT_MAX_BYTES = 20000000;

    /// Opens nothing.
    /// \param deviceAddress part of the file name, where ':', '*' and '"' become '_', and of the header
    /// \param deviceLabel   stands behind the address in the header
    CommandProtocol(const QString& deviceAddress, QString deviceLabel);
    /// A copy writes into the same open file as its source, and whichever of the two ends first closes it.
    CommandProtocol(const CommandProtocol&) = default;
    CommandProtocol& operator=(const CommandProtocol&) = default;
    ~CommandProtocol() override;

    /// Moves the log of the previous start into a backup (an empty one when there was none) and begins a new
    /// one. False when the directory or a file cannot be had or written, and when the log cannot be moved.
    bool Init();
    /// Appends an entry, as a whole or not at all; before that, moves a log that has grown beyond its limit
    /// into a backup. False before `Init`, after a backup that failed, and when the disk does not take the
    /// entry.
    bool Add(const QString& text);
    /// The limit in bytes on disk, in force from the next entry on. A log exceeds it by one entry at most. It
    /// is 32 bits wide and wraps.
    void SetMaxBytes(unsigned long bytes);
    /// In force for the file name from the next start or backup on.
    void SetDeviceAddress(const QString& address);
    /// The text of the last failure; empty after the file was opened. A success does not clear it.
    [[nodiscard]] const QString& GetLastError() const { return m_strLastError; }

private:
    bool Open();
    void Close();
    bool PerformBackup();
    bool BackupFile();
    void EnsureConstantNumberOfBackups();
    bool Write(const QString& text);
    bool WriteHeader();
    /// What a line begins with: the local time of day with milliseconds, and the tab behind it.
    QByteArrayView GetTimeOfDay();
    static QString ToValidFileName(const QString& name);

    QString m_strLastError;
    QString m_strFileName;
    QString m_strDeviceAddress;
    QString m_strDeviceLabel;
    std::shared_ptr<QFile> m_pCurrentFile;
    quint32 m_nMaxBytes = DEFAULT_MAX_BYTES;
    qint64 m_second = 0; // since 1970; the one in m_timeOfDay
    QByteArray m_timeOfDay;
};
