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

/// Which file it was that was read, and in which state; all 0 for none.
struct FileStamp {
    quint64 device = 0;
    quint64 number = 0;
    qint64 size = 0;
    qint64 seconds = 0; ///< of the last change, which no program can set
    qint64 nanoseconds = 0;

    bool operator==(const FileStamp&) const = default;
};

/// One settings file, held in memory for reading. A save takes the lock, reads the file again, changes the
/// keys that were set in what really stands there, and replaces it as a whole.
///
/// A file with something in it that a later write would lose, damaged lines or values that could not be read
/// as the type wanted, is first kept beside as "<file>.damaged-<n>". Comments are not kept by a write.
class SettingsFile : public QObject, public std::enable_shared_from_this<SettingsFile> {
public:
    /// The file at an absolute path; it comes into being with its first save. With an empty path a file that
    /// lives in memory only.
    static std::shared_ptr<SettingsFile> Open(const QString& path);

    /// Use `Open`, which gives one object to all users of a file.
    explicit SettingsFile(QString path);
    ~SettingsFile() override;

    /// The text under a whole key; null when there is none. Good until the next call.
    [[nodiscard]] const QString* Find(const QString& key) const;
    /// The keys whose names begin with a prefix, without it, each up to its next slash: those that end there
    /// (the keys of a section), or those that go on (its sections). In order, each once.
    [[nodiscard]] QStringList GetNames(const QString& prefix, bool areSections) const;
    /// Keeps in mind which text this process has been given for a key (see `BeginWriteBack`).
    void SetKnown(const QString& key, const QString& text) { m_known.insert(key, text); }
    void SetText(const QString& key, const QString& text);
    /// Says once for each value that the text under a key is not what was wanted ("integer").
    void ReportUnreadable(const QString& key, const QString& wanted);

    /// Saves what has been set. False when something could not be saved; it is kept and tried again. Waits
    /// for the file's lock, but not again while another process goes on holding it.
    bool Save();
    /// Saves at the end of the program, and waits for the lock so long. What is lost is reported, by its
    /// keys.
    bool SaveFinally(QDeadlineTimer deadline);

    /// Locks the file and reads it again; `EndWriteBack` saves and unlocks it. A text that is set meanwhile
    /// counts only when it is another one than this process knew, or the key is gone: else it is not this
    /// process that changed it.
    void BeginWriteBack();
    void EndWriteBack();

private:
    struct Pending {
        QString text;
        std::optional<QString> known; ///< set while writing back: what this process knew of the key
        bool givesWay = false;        ///< to what another program was writing when it was set
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

    QString m_name; // as it was opened; perhaps of a link
    QString m_path; // where it is
    std::optional<SettingsLock> m_lock;
    QByteArray m_bytes;                   // what the file held when it was last read or written
    SettingsTexts m_texts;                // the same
    SettingsTexts m_textsBefore;          // the same when the writing back began
    QMap<QString, Pending> m_pending;     // what was set and is not known to be in the file
    QHash<QString, QString> m_known;      // what this process has been given, or has set
    QHash<QString, QString> m_unreadable; // the texts that were reported
    FileStamp m_stamp;                    // of the file that was read last
    QString m_busyReason;                 // why others hold it up; empty while they do not
    QString m_copyPath;                   // the copy that was kept last
    QString m_reportedReason;             // why it cannot be saved, as was reported; empty while it can
    int m_writeBacks = 0;
    bool m_isCopyDue = false; // a copy has to be kept before the file is overwritten
    bool m_isOpen = false;    // the first reading is over
    bool m_isHalf = false;    // what was read last may be half a file
    bool m_isSavePosted = false;
    QBasicTimer m_retry;
};
