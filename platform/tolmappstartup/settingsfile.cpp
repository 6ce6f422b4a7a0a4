#include "tolmappstartup/settingsfile.h"

#include "tolmappstartup/problemreport.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QThread>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MAX_LINES_NAMED = 10; // of a damaged file, which may be damaged in every line
constexpr qsizetype MAX_TEXT_SHOWN = 80;  // of a value that cannot be read

// Qt hands a file format nothing but the open device, so the object is found by the file's name.
QHash<QString, SettingsFile*> openFiles;

SettingsFile* FindOpenFile(const QIODevice& device) {
    const auto* file = qobject_cast<const QFileDevice*>(&device);
    return file ? openFiles.value(file->fileName()) : nullptr;
}

void Report(const QString& problem, unsigned line) {
    ReportProblem(problem, u"tolmappstartup\\settingsfile"_s, line);
}

// A process that dies between making its lock file and writing its name into it leaves an empty one, which
// would hold up the next write for half a minute. A living process fills it at once.
void RemoveAbandonedLock(const QString& lockPath) {
    constexpr int GRACE_MS = 1000;
    constexpr int STEP_MS = 20;
    for (int waitedMs = 0; QFile::exists(lockPath) && QFileInfo(lockPath).size() == 0; waitedMs += STEP_MS) {
        if (waitedMs >= GRACE_MS) {
            QFile::remove(lockPath);
            return;
        }
        QThread::msleep(STEP_MS);
    }
}

} // namespace

std::shared_ptr<SettingsFile> SettingsFile::Open(const QString& path) {
    if (path.isEmpty()) {
        return std::make_shared<SettingsFile>(path);
    }
    // Qt knows the file by this form of its name.
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    SettingsFile* const openFile = openFiles.value(absolutePath);
    return openFile ? openFile->shared_from_this() : std::make_shared<SettingsFile>(absolutePath);
}

SettingsFile::SettingsFile(QString path)
    : m_path(std::move(path)) {
    if (m_path.isEmpty()) {
        return;
    }
    RemoveAbandonedLock(m_path + u".lock"_s);
    openFiles.insert(m_path, this);
    m_pSettings = std::make_unique<QSettings>(m_path, Format());
    m_isStale = true;
    if (m_pSettings->status() != QSettings::NoError) {
        Report(u"The settings file "_s + m_path + u" cannot be read."_s, __LINE__);
    }
}

SettingsFile::~SettingsFile() {
    m_pSettings.reset(); // writes what is still unsaved, and needs this object for it
    if (!m_path.isEmpty()) {
        openFiles.remove(m_path);
    }
}

QSettings::Format SettingsFile::Format() {
    static const QSettings::Format format =
        QSettings::registerFormat(u"ini"_s, ReadFile, WriteFile, Qt::CaseSensitive);
    return format;
}

const QString* SettingsFile::Find(const QString& key) {
    if (m_isStale) {
        m_isStale = false;
        m_texts.clear();
        m_reported.clear();
        const QStringList keys = m_pSettings->allKeys();
        m_texts.reserve(keys.size());
        for (const QString& storedKey : keys) {
            m_texts.insert(storedKey, m_pSettings->value(storedKey).toString());
        }
    }
    const auto text = m_texts.constFind(key);
    return text == m_texts.constEnd() ? nullptr : &*text;
}

void SettingsFile::SetText(const QString& key, const QString& text) {
    if (!IsSettingsKey(key)) {
        Report(u"The setting \""_s + key + u"\" cannot be stored: that is no key for a settings file."_s,
               __LINE__);
        return;
    }
    const QString* const oldText = Find(key);
    if (oldText && *oldText == text) {
        return;
    }
    m_texts.insert(key, text);
    m_reported.remove(key);
    const bool wasUnsaved = std::exchange(m_isUnsaved, true);
    if (m_pSettings) {
        m_pSettings->setValue(key, text);
        PostSave();
    } else if (!wasUnsaved) {
        Report(u"No configuration directory is set: settings are kept in memory only."_s, __LINE__);
    }
}

void SettingsFile::ReportUnreadable(const QString& key, const QString& wanted) {
    if (m_reported.contains(key)) {
        return;
    }
    m_reported.insert(key);
    m_isCopyDue = true;
    Report(u"The settings file "_s + m_path + u" holds \""_s + Find(key)->left(MAX_TEXT_SHOWN) +
               u"\" under the key \""_s + key + u"\", which is no "_s + wanted + u"; the default is used."_s,
           __LINE__);
}

bool SettingsFile::Save() {
    if (!m_isUnsaved) {
        return true;
    }
    if (!m_pSettings) {
        return false;
    }
    m_writeProblem.clear();
    if (m_pSettings->status() == QSettings::NoError) {
        m_pSettings->sync();
    } else {
        // The status of a QSettings object never turns good again. A new one writes what its predecessor
        // could not, and has a status of its own.
        m_pSettings = std::make_unique<QSettings>(m_path, Format());
    }
    m_isUnsaved = m_pSettings->status() != QSettings::NoError;
    if (m_isUnsaved) {
        const QString reason =
            m_writeProblem.isEmpty()
                ? u"the file or its folder cannot be written (read-only, or the disk is full)"_s
                : m_writeProblem;
        Report(u"The settings file "_s + m_path + u" could not be saved: "_s + reason +
                   u". The old file is unchanged; the new values stay in memory, and the next commit tries "
                   u"again."_s,
               __LINE__);
    }
    return !m_isUnsaved;
}

// QSettings saves from the event loop by itself, but tells nobody when that fails. This comes behind it.
void SettingsFile::PostSave() {
    if (!m_isSavePosted) {
        m_isSavePosted = true;
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
}

void SettingsFile::customEvent(QEvent*) {
    m_isSavePosted = false;
    Save();
}

bool SettingsFile::ReadFile(QIODevice& device, QSettings::SettingsMap& values) {
    ParsedSettings parsed = ParseSettings(device.readAll());
    values = std::move(parsed.values);
    if (SettingsFile* const file = FindOpenFile(device)) {
        file->m_isStale = true;
        file->TakeDamage(parsed.damage);
    }
    return true; // false would make Qt drop what could be read
}

bool SettingsFile::WriteFile(QIODevice& device, const QSettings::SettingsMap& values) {
    SettingsFile* const file = FindOpenFile(device);
    if (file && file->m_isCopyDue && !file->KeepCopy()) {
        return false;
    }
    const QByteArray bytes = FormatSettings(values);
    const bool isWritten = device.write(bytes) == bytes.size() && static_cast<QFileDevice&>(device).flush();
    if (file && !isWritten) {
        file->m_writeProblem = u"the disk did not take all of it ("_s + device.errorString() + u')';
    }
    return isWritten;
}

void SettingsFile::TakeDamage(const QList<DamagedLine>& damage) {
    if (damage.isEmpty()) {
        return;
    }
    m_isCopyDue = true;
    QString problem = u"The settings file "_s + m_path + u" is damaged:"_s;
    for (const DamagedLine& line : damage.first(std::min(damage.size(), MAX_LINES_NAMED))) {
        problem += u" line "_s + QString::number(line.number) + u' ' + line.reason + u';';
    }
    if (damage.size() > MAX_LINES_NAMED) {
        problem += u" and "_s + QString::number(damage.size() - MAX_LINES_NAMED) + u" lines more;"_s;
    }
    problem += KeepCopy() ? u" it is kept as "_s + m_copyPath : u' ' + m_writeProblem;
    Report(problem + u". The other lines stay in force."_s, __LINE__);
}

// True when the file on disk is kept beside under another name. A copy that was made before is not repeated.
bool SettingsFile::KeepCopy() {
    QFile original(m_path);
    if (!original.open(QFile::ReadOnly)) {
        return !original.exists();
    }
    const QByteArray bytes = original.readAll();
    for (int number = 1;; ++number) {
        m_copyPath = m_path + u".damaged-"_s + QString::number(number);
        QFile earlierCopy(m_copyPath);
        if (!earlierCopy.exists()) {
            break;
        }
        if (earlierCopy.open(QFile::ReadOnly) && earlierCopy.readAll() == bytes) {
            m_isCopyDue = false;
            return true;
        }
    }
    QSaveFile copy(m_copyPath);
    if (!copy.open(QFile::WriteOnly) || copy.write(bytes) != bytes.size() || !copy.commit()) {
        m_writeProblem =
            u"a copy of it cannot be kept as "_s + m_copyPath + u" ("_s + copy.errorString() + u')';
        return false;
    }
    m_isCopyDue = false;
    return true;
}
