#pragma once

#include "tolmappstartup/settingsformat.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QSettings>
#include <QString>

#include <memory>

/// One settings file, held in memory for reading, and kept by QSettings on disk: merged under a lock with
/// what others wrote meanwhile, and replaced as a whole.
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
    const QString* Find(const QString& key);
    void SetText(const QString& key, const QString& text);
    /// Says once for each value that the text under a key is not what was wanted ("integer").
    void ReportUnreadable(const QString& key, const QString& wanted);
    /// False when something could not be saved; that is reported, kept in memory and tried again next time.
    bool Save();

private:
    static QSettings::Format Format();
    static bool ReadFile(QIODevice& device, QSettings::SettingsMap& values);
    static bool WriteFile(QIODevice& device, const QSettings::SettingsMap& values);

    void TakeDamage(const QList<DamagedLine>& damage);
    bool KeepCopy();
    void PostSave();
    void customEvent(QEvent*) override;

    QString m_path;
    std::unique_ptr<QSettings> m_pSettings; // none: the file lives in memory only
    QHash<QString, QString> m_texts;
    bool m_isStale = false;   // the file has been read since m_texts was filled
    bool m_isUnsaved = false; // something was set that is not known to be on disk
    bool m_isCopyDue = false; // a copy has to be kept before the file is overwritten
    QString m_copyPath;       // the copy that was kept last
    QString m_writeProblem;   // why the last write failed; empty when it did not get that far
    QSet<QString> m_reported; // the keys whose text was reported as unreadable
    bool m_isSavePosted = false;
};
