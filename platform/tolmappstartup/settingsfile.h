#pragma once

#include "tolmappstartup/settingsformat.h"
#include "tolmappstartup/settingslock.h"

#include <QBasicTimer>
#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

/// Identifies a file and its state when it was read; all 0 for no file.
struct FileStamp {
    quint64 device = 0;
    quint64 number = 0;
    qint64 size = 0;
    qint64 seconds = 0; ///< time of the last status change, which no program can set
    qint64 nanoseconds = 0;

    bool operator==(const FileStamp&) const = default;
};

/// One settings file, held in memory for reading. A save takes the lock, reads the file again, changes the
/// keys that were set, and replaces the file as a whole.
///
/// Before a file is overwritten that has damaged lines, or values that could not be read as the wanted type,
/// it is copied to "<file>.damaged-<n>". Comments are not kept.
class SettingsFile : public QObject, public std::enable_shared_from_this<SettingsFile> {
public:
    /// The file at an absolute path; it is created with its first save. With an empty path the settings live
    /// in memory only.
    static std::shared_ptr<SettingsFile> Open(const QString& path);

    /// Use `Open`, which gives one object to all users of a file.
    explicit SettingsFile(QString path);
    ~SettingsFile() override;

    /// The text under a full key; null when there is none. Valid until the next call.
    [[nodiscard]] const QString* Find(const QString& key) const;
    /// The names directly below a prefix, without it: the keys of a section, or its sections (keys with a
    /// further slash, up to that). In order, each once.
    [[nodiscard]] QStringList GetNames(const QString& prefix, bool areSections) const;
    /// Remembers which text this process has read for a key (see `BeginWriteBack`).
    void SetKnown(const QString& key, const QString& text) { m_known.insert(key, text); }
    void SetText(const QString& key, const QString& text);
    /// Reports, once per value, that the text under a key is not what was wanted ("an integer").
    void ReportUnreadable(const QString& key, const QString& wanted);

    /// Saves what has been set. False when something could not be saved; it is kept and tried again. Waits
    /// for the file's lock, but only once while another process keeps it.
    bool Save();
    /// Saves at the end of the program, and waits for the lock until the deadline. The keys of values that
    /// are lost are reported.
    bool SaveFinally(QDeadlineTimer deadline);

    /// Locks the file and reads it again; `EndWriteBack` saves and unlocks it. A text that is set meanwhile
    /// is written only when it differs from what this process knew, or when the key is missing in the file:
    /// else this process has not changed it.
    void BeginWriteBack();
    void EndWriteBack();

private:
    struct Pending {
        QString text;
        std::optional<QString> known; ///< during a write-back: the value that this process knew for the key
        bool givesWay = false;        ///< to a value that another program was writing when this one was set
    };

    [[nodiscard]] bool IsBusy() const { return !m_busyReason.isEmpty(); }
    [[nodiscard]] QDeadlineTimer GetDeadline() const;
    void FindPlace();
    SettingsLock::Result Lock(QDeadlineTimer deadline);
    bool Save(QDeadlineTimer deadline);
    QString WriteUnderLock(QDeadlineTimer deadline);
    QString ReadForSave(QDeadlineTimer deadline);
    QString Read(QDeadlineTimer deadline);
    [[nodiscard]] SettingsTexts GetChanges() const;
    [[nodiscard]] std::optional<QString> GetKnown(const QString& key) const;
    static bool IsChange(const Pending& pending, const QString& theirs);
    void ReportWhatGaveWay();
    void Report(const QString& reason, const QString& fate);
    void TakeDamage(const QList<DamagedLine>& damage);
    QString KeepCopy();
    void PostSave();
    void customEvent(QEvent*) override;
    void timerEvent(QTimerEvent*) override;

    QString m_name; // the name it was opened by; perhaps that of a link
    QString m_path; // where it is
    std::optional<SettingsLock> m_lock;
    QByteArray m_bytes;                   // what the file held when it was last read or written
    SettingsTexts m_texts;                // the same
    SettingsTexts m_textsBefore;          // m_texts when the write-back began
    QMap<QString, Pending> m_pending;     // what was set and has not been saved
    QHash<QString, QString> m_known;      // what this process has read or set
    QHash<QString, QString> m_unreadable; // the texts that were reported
    FileStamp m_stamp;                    // of the file that was read last
    QString m_busyReason;                 // why the file is busy; empty while it is not
    QString m_copyPath;                   // the copy that was kept last
    QString m_reportedReason;             // the reported reason why it cannot be saved; empty while it can
    int m_writeBacks = 0;
    bool m_isCopyDue = false; // a copy has to be kept before the file is overwritten
    bool m_isOpen = false;    // the file has been read for the first time
    bool m_isHalf = false;    // the file was being written when it was read last
    bool m_isSavePosted = false;
    QBasicTimer m_retry;
};
