#pragma once

#include "zancommon_export.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QtGlobal>

#include <memory>

class QFile;

/// Takes messages to store.
class ZANCOMMON_EXPORT IMessageStore {
public:
    IMessageStore() = default;
    IMessageStore(const IMessageStore&) = default;
    IMessageStore& operator=(const IMessageStore&) = default;
    virtual ~IMessageStore();
};

/// The log of the commands that the application exchanges with one DF device: a text file
/// "ZANControl/commandlog-<address>.txt" below the current directory, each line with the time of day.
///
/// A start, and a file that has grown beyond its limit, move the log into a backup beside it that is named
/// after the date and time; of all backups in the directory the oldest is removed when there are 20. XML is
/// written indented. Lines are 8-bit text, and are flushed one by one. No operation throws; a failure returns
/// false and leaves its text in `GetLastError`. One thread.
class ZANCOMMON_EXPORT CommandProtocol : public IMessageStore {
public:
    static constexpr quint32 DEFAULT_MAX_BYTES = 20000000;

    /// Opens nothing.
    /// \param deviceAddress part of the file name, where ':', '*' and '"' become '_', and of the header
    /// \param deviceLabel   stands behind the address in the header
    CommandProtocol(const QString& deviceAddress, QString deviceLabel);
    /// A copy writes into the same open file as its source.
    CommandProtocol(const CommandProtocol&) = default;
    CommandProtocol& operator=(const CommandProtocol&) = default;
    ~CommandProtocol() override;

    /// Moves the log of the previous start into a backup and begins a new one.
    bool Init();
    /// Appends an entry; before that, moves a log that has grown beyond its limit into a backup.
    bool Add(const QString& text);
    /// The limit in bytes on disk, in force from the next entry on. A log exceeds it by one entry at most.
    void SetMaxBytes(unsigned long bytes);
    /// In force for the file name from the next start or backup on.
    void SetDeviceAddress(const QString& address);
    /// The text of the last failure; empty after the file was opened.
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
