#include "tolmappstartup/settingsfile.h"

#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/problemreport.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr TraceSource TRACE(u"tolmappstartup\\settingsfile");

constexpr qsizetype MAX_LINES_NAMED = 10; // of a damaged file, which may be damaged in every line
constexpr qsizetype MAX_KEYS_NAMED = 10;
constexpr qsizetype MAX_TEXT_SHOWN = 80; // of a value that cannot be read
constexpr QStringView TOO_LARGE = u"it is larger than 8 MiB";
constexpr auto PATIENCE = 1s;   // the longest time that the main thread waits
constexpr auto ABSENCE = 250ms; // how long a file may be missing while an editor replaces it
constexpr unsigned long POLL_MS = 2;
constexpr mode_t ALL_PERMISSIONS = 07777;
constexpr QStringView MOUNTED = u"it is mounted by itself; mount its folder";
constexpr QStringView BEING_WRITTEN = u"other programs go on writing it";
constexpr int RETRY_MS = 1000;
constexpr QChar BEHIND_SLASH(u'/' + 1); // the next character after "/" in the order of the keys

constexpr QStringView CANNOT_WRITE =
    u"the file or its folder cannot be written (read-only, or the disk is full)";

// The files that are open, so that all callers that open one share it.
QHash<QString, SettingsFile*> openFiles;

// Whether a process has a file open for writing. Not known, and so false, for a file of another user.
bool IsBeingWritten(int handle) {
    // When another process opens the file while this one has the lease, the kernel sends a signal; the
    // default one would end this process.
    fcntl(handle, F_SETSIG, SIGURG);
    if (fcntl(handle, F_SETLEASE, F_RDLCK) != 0) {
        return errno == EAGAIN;
    }
    fcntl(handle, F_SETLEASE, F_UNLCK);
    return false;
}

bool IsBeingWritten(const QString& path) {
    const int handle = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    const bool isBeingWritten = handle >= 0 && IsBeingWritten(handle);
    if (handle >= 0) {
        close(handle);
    }
    return isBeingWritten;
}

FileStamp Stamp(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

// The stamp of the file that has this name now; all 0 when there is none.
FileStamp Stamp(const QString& path) {
    struct stat status {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 ? Stamp(status) : FileStamp();
}

struct Content {
    QByteArray bytes;
    QString problem = {}; // why it cannot be read
    FileStamp stamp = {};
    bool isBeingWritten = false;

    [[nodiscard]] bool IsAbsent() const { return problem.isEmpty() && stamp == FileStamp(); }
};

// What a file holds; nothing when there is none. Anything but a regular file is refused without waiting for
// it.
Content ReadFile(const QString& path) {
    const int handle = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (handle < 0) {
        return {{}, errno == ENOENT ? QString() : qt_error_string(errno)};
    }
    QFile file;
    struct stat status {};
    if (!file.open(handle, QFile::ReadOnly, QFile::AutoCloseHandle) || fstat(handle, &status) != 0 ||
        !S_ISREG(status.st_mode)) {
        return {{}, u"it is not a regular file"_s};
    }
    // It may grow while it is read.
    const QByteArray bytes = file.read(CfgCenter::MAX_FILE_SIZE + 1);
    if (file.error() != QFile::NoError) {
        return {{}, file.errorString()};
    }
    if (bytes.size() > CfgCenter::MAX_FILE_SIZE) {
        return {{}, TOO_LARGE.toString()};
    }
    return {bytes, {}, Stamp(status), IsBeingWritten(handle) || Stamp(path) != Stamp(status)};
}

// The file that a chain of links leads to.
QString FollowLinks(QString path) {
    constexpr int MAX_LINKS = 40;
    for (int i = 0; i < MAX_LINKS && QFileInfo(path).isSymLink(); ++i) {
        path = QFileInfo(path).symLinkTarget();
    }
    return path;
}

// Where the new file is written before it takes the place of the old one.
QString SavingName(const QString& path) {
    return path + u".saving"_s;
}

// Writes the new file beside the old one, which it is to replace; the caller has the lock. Its name is always
// the same, so that the next save removes what a killed process left behind. Returns the reason on failure;
// nothing is left of the new file then.
QString WriteBeside(const QString& path, const QByteArray& bytes) {
    QFile file(SavingName(path));
    struct stat old {};
    const bool isThere = stat(QFile::encodeName(path).constData(), &old) == 0;
    if ((isThere && !QFileInfo(path).isWritable()) ||
        !file.open(QFile::WriteOnly | QFile::NewOnly | QFile::Unbuffered)) {
        return CANNOT_WRITE.toString();
    }
    if (isThere) {
        // The file keeps its owner, also when root or a member of the owner's group saves it.
        if (fchown(file.handle(), old.st_uid, old.st_gid) != 0) {
            static_cast<void>(fchown(file.handle(), static_cast<uid_t>(-1), old.st_gid) == 0);
        }
        fchmod(file.handle(), old.st_mode & ALL_PERMISSIONS);
    }
    if (file.write(bytes) == bytes.size() && fsync(file.handle()) == 0) {
        return {};
    }
    QString reason = u"the disk did not take all of it ("_s + file.errorString() + u')';
    file.remove();
    return reason;
}

// Replaces the old file by the one that was written beside it. Returns the reason on failure; the old file is
// unchanged then.
QString PutInPlace(const QString& path) {
    const QString name = SavingName(path);
    if (std::rename(QFile::encodeName(name).constData(), QFile::encodeName(path).constData()) == 0) {
        return {};
    }
    const QString problem = errno == EBUSY ? MOUNTED.toString() : qt_error_string(errno);
    QFile::remove(name);
    return u"the new file cannot take the place of the old one ("_s + problem + u')';
}

// Whether the texts are the same number in different notations.
bool AreSameNumber(const QString& a, const QString& b) {
    bool isNumberA = false;
    bool isNumberB = false;
    const double numberA = a.toDouble(&isNumberA);
    const double numberB = b.toDouble(&isNumberB);
    return isNumberA && isNumberB && numberA == numberB;
}

} // namespace

std::shared_ptr<SettingsFile> SettingsFile::Open(const QString& path) {
    // A file with several names is locked and replaced where it really is, by other processes as well.
    const QString place = FollowLinks(path);
    SettingsFile* const openFile = openFiles.value(place);
    return openFile ? openFile->shared_from_this() : std::make_shared<SettingsFile>(path);
}

SettingsFile::SettingsFile(QString path)
    : m_name(std::move(path)) {
    if (m_name.isEmpty()) {
        return;
    }
    FindPlace();
    if (const QString problem = Read(QDeadlineTimer(PATIENCE)); !problem.isEmpty()) {
        ReportProblem(u"The settings file "_s + m_path + u" cannot be read ("_s + problem + u")."_s, TRACE);
    }
    m_isOpen = true;
}

SettingsFile::~SettingsFile() {
    if (!m_path.isEmpty()) {
        SaveFinally(QDeadlineTimer(PATIENCE));
        openFiles.removeIf([this](const auto& file) { return *file == this; });
    }
}

// Finds where the file really is. That changes when an editor replaces a link by a file.
void SettingsFile::FindPlace() {
    const QString place = FollowLinks(m_name);
    if (place != m_path) {
        openFiles.remove(m_path);
        openFiles.insert(place, this);
        m_path = place;
        m_lock.emplace(place);
    }
}

const QString* SettingsFile::Find(const QString& key) const {
    if (!m_pending.isEmpty()) {
        const auto pending = m_pending.constFind(key);
        if (pending != m_pending.constEnd()) {
            return &pending->text;
        }
    }
    const auto text = m_texts.constFind(key);
    return text == m_texts.constEnd() ? nullptr : &*text;
}

QStringList SettingsFile::GetNames(const QString& prefix, bool areSections) const {
    QStringList names;
    const auto addNames = [&](const auto& texts) {
        auto text = texts.lowerBound(prefix);
        while (text != texts.constEnd() && text.key().startsWith(prefix)) {
            const QString& key = text.key();
            const qsizetype slash = key.indexOf(u'/', prefix.size());
            if ((slash >= 0) == areSections) {
                names += key.sliced(prefix.size(), (slash < 0 ? key.size() : slash) - prefix.size());
            }
            // A whole section is skipped in one step.
            text = slash < 0 ? std::next(text) : texts.lowerBound(key.first(slash) + BEHIND_SLASH);
        }
    };
    addNames(m_texts);
    addNames(m_pending);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

void SettingsFile::SetText(const QString& key, const QString& text) {
    if (!IsSettingsKey(key)) {
        ReportProblem(u"The setting \""_s + key + u"\" cannot be stored: that is not a valid key."_s, TRACE);
        return;
    }
    if (m_path.isEmpty() && m_pending.isEmpty()) {
        ReportProblem(u"No configuration directory is set: settings are kept in memory only."_s, TRACE);
    }
    const auto pending = m_pending.find(key);
    if (m_writeBacks == 0) {
        // In a file that is half written the key may be missing only for now, and what is set here is a
        // default for it.
        m_pending.insert(key, {text, std::nullopt, m_isHalf && !m_texts.contains(key)});
    } else if (pending != m_pending.end()) {
        pending->text = text;
    } else {
        m_pending.insert(key, {text, GetKnown(key), m_isHalf && !m_texts.contains(key)});
    }
    SetKnown(key, text);
    PostSave();
}

void SettingsFile::ReportUnreadable(const QString& key, const QString& wanted) {
    const QString text = *Find(key);
    const auto reported = m_unreadable.constFind(key);
    if (reported != m_unreadable.constEnd() && *reported == text) {
        return;
    }
    m_unreadable.insert(key, text);
    m_isCopyDue = true;
    ReportProblem(u"The settings file "_s + m_path + u" holds \""_s + text.left(MAX_TEXT_SHOWN) +
                      u"\" under the key \""_s + key + u"\", which is not "_s + wanted +
                      u"; the default is used."_s,
                  TRACE);
}

bool SettingsFile::Save() {
    return Save(GetDeadline());
}

bool SettingsFile::SaveFinally(QDeadlineTimer deadline) {
    if (Save(deadline)) {
        return true;
    }
    if (IsBusy()) {
        Report(m_busyReason, u"are lost"_s);
    }
    return false;
}

bool SettingsFile::Save(QDeadlineTimer deadline) {
    if (m_pending.isEmpty()) {
        return true;
    }
    if (m_path.isEmpty() || m_writeBacks > 0) {
        return false;
    }
    FindPlace();
    const SettingsLock::Result lock = Lock(deadline);
    QString reason;
    if (lock == SettingsLock::Result::Locked) {
        reason = WriteUnderLock(deadline);
        m_lock->Unlock();
    } else {
        reason = ReadForSave(deadline);
        if (reason.isEmpty() && !GetChanges().isEmpty()) {
            reason = CANNOT_WRITE.toString();
        }
    }
    if (reason.isEmpty()) {
        ReportWhatGaveWay();
        m_pending.clear();
        m_reportedReason.clear();
        return true;
    }
    if (!IsBusy()) {
        Report(reason, u"stay in memory, and the next commit tries again"_s);
    }
    if (QCoreApplication::instance()) {
        m_retry.start(RETRY_MS, this);
    }
    return false;
}

// While another program keeps the file busy, only the first save waits.
QDeadlineTimer SettingsFile::GetDeadline() const {
    return {IsBusy() ? 0ms : PATIENCE};
}

SettingsLock::Result SettingsFile::Lock(QDeadlineTimer deadline) {
    const SettingsLock::Result result =
        m_lock->Lock(std::chrono::ceil<std::chrono::milliseconds>(deadline.remainingTimeAsDuration()));
    m_busyReason =
        result == SettingsLock::Result::Busy ? u"it is locked by "_s + m_lock->GetHolder() : QString();
    return result;
}

// Returns the reason when the file cannot be written.
QString SettingsFile::WriteUnderLock(QDeadlineTimer deadline) {
    QFile::remove(SavingName(m_path)); // left by a process that was killed while it saved
    // Programs that do not use the lock may write the file meanwhile; then it is read again.
    do {
        QString reason = ReadForSave(deadline);
        const SettingsTexts changes = GetChanges();
        if (!reason.isEmpty() || changes.isEmpty()) {
            return reason;
        }
        if (m_isCopyDue) {
            reason = KeepCopy();
            if (!reason.isEmpty()) {
                return reason;
            }
        }
        SettingsTexts texts = m_texts;
        for (auto change = changes.constBegin(); change != changes.constEnd(); ++change) {
            texts.insert(change.key(), *change);
        }
        const QByteArray bytes = FormatSettings(texts);
        reason = bytes.size() > CfgCenter::MAX_FILE_SIZE ? u"it would be larger than 8 MiB"_s
                                                         : WriteBeside(m_path, bytes);
        if (!reason.isEmpty()) {
            return reason;
        }
        if (Stamp(m_path) == m_stamp && !IsBeingWritten(m_path)) {
            reason = PutInPlace(m_path);
            if (reason.isEmpty()) {
                m_bytes = bytes;
                m_texts = std::move(texts);
            }
            return reason;
        }
        QFile::remove(SavingName(m_path));
    } while (!deadline.hasExpired());
    m_busyReason = BEING_WRITTEN.toString();
    return m_busyReason;
}

// Returns the reason when the file cannot be saved because it cannot be read.
QString SettingsFile::ReadForSave(QDeadlineTimer deadline) {
    const QString problem = Read(deadline);
    return problem.isEmpty() ? QString() : u"it cannot be read ("_s + problem + u')';
}

// Reads the file again. Returns the reason when that is not possible.
QString SettingsFile::Read(QDeadlineTimer deadline) {
    const QDeadlineTimer absence = std::min(deadline, QDeadlineTimer(ABSENCE));
    Content content = ReadFile(m_path);
    // A file that is half written, or that an editor has moved away to save a new one, is waited for.
    while ((content.isBeingWritten && !deadline.hasExpired()) ||
           (content.IsAbsent() && !m_bytes.isEmpty() && !absence.hasExpired())) {
        QThread::msleep(POLL_MS);
        content = ReadFile(m_path);
    }
    if (!content.problem.isEmpty()) {
        return content.problem;
    }
    if (content.isBeingWritten && m_isOpen) {
        m_busyReason = BEING_WRITTEN.toString();
        return m_busyReason;
    }
    m_isHalf = content.isBeingWritten; // when the program starts, half a file is better than nothing
    m_stamp = content.stamp;
    if (content.bytes != m_bytes) {
        m_bytes = std::move(content.bytes);
        ParsedSettings parsed = ParseSettings(m_bytes);
        m_texts = std::move(parsed.texts);
        TakeDamage(parsed.damage);
    }
    return {};
}

// What a save changes in the file.
SettingsTexts SettingsFile::GetChanges() const {
    SettingsTexts changes;
    for (auto pending = m_pending.constBegin(); pending != m_pending.constEnd(); ++pending) {
        const auto theirs = m_texts.constFind(pending.key());
        if (theirs == m_texts.constEnd() || (*theirs != pending->text && IsChange(*pending, *theirs))) {
            changes.insert(pending.key(), pending->text);
        }
    }
    return changes;
}

// Whether a text that was set replaces the one that is in the file.
bool SettingsFile::IsChange(const Pending& pending, const QString& theirs) {
    if (pending.givesWay) {
        return false;
    }
    if (!pending.known) {
        return true;
    }
    // The same number in another notation is not a change.
    return pending.text != *pending.known &&
           (theirs == *pending.known || !AreSameNumber(pending.text, *pending.known));
}

void SettingsFile::BeginWriteBack() {
    if (m_path.isEmpty() || m_writeBacks++ > 0) {
        return;
    }
    m_textsBefore = m_texts;
    const QDeadlineTimer deadline = GetDeadline();
    FindPlace();
    Lock(deadline);
    Read(deadline); // a file that cannot be read is reported when it is saved
}

void SettingsFile::EndWriteBack() {
    if (m_path.isEmpty() || --m_writeBacks > 0) {
        return;
    }
    Save();
    m_lock->Unlock();
    m_textsBefore.clear();
}

// The value that this process last read or set for a key, else the one that was in the file before the
// write-back.
std::optional<QString> SettingsFile::GetKnown(const QString& key) const {
    const auto known = m_known.constFind(key);
    if (known != m_known.constEnd()) {
        return *known;
    }
    const auto before = m_textsBefore.constFind(key);
    return before == m_textsBefore.constEnd() ? std::nullopt : std::optional(*before);
}

// Reports the keys that were set while another program was writing the file, and to which that program gave
// another value.
void SettingsFile::ReportWhatGaveWay() {
    QStringList keys;
    for (auto pending = m_pending.constBegin(); pending != m_pending.constEnd(); ++pending) {
        if (pending->givesWay && m_texts.value(pending.key()) != pending->text) {
            keys.append(pending.key());
        }
    }
    if (!keys.isEmpty()) {
        ReportProblem(u"Another program was writing the settings file "_s + m_path +
                          u" when it was read; its values are kept for "_s +
                          keys.first(std::min(keys.size(), MAX_KEYS_NAMED)).join(u", ") + u'.',
                      TRACE);
    }
}

// Reports once why the file cannot be saved, and what happens to the values that were set.
void SettingsFile::Report(const QString& reason, const QString& fate) {
    if (reason == m_reportedReason) {
        return;
    }
    m_reportedReason = reason;
    const QStringList keys = m_pending.keys();
    const qsizetype unnamed = keys.size() - MAX_KEYS_NAMED;
    QString names = keys.first(std::min(keys.size(), MAX_KEYS_NAMED)).join(u", ");
    if (unnamed > 0) {
        names += u" and %1 more"_s.arg(unnamed);
    }
    ReportProblem(u"The settings file "_s + m_path + u" could not be saved: "_s + reason +
                      u". The old file is unchanged; the new values of "_s + names + u' ' + fate + u'.',
                  TRACE);
}

// Has the event loop save the file when nobody commits.
void SettingsFile::PostSave() {
    if (!m_path.isEmpty() && !m_isSavePosted) {
        m_isSavePosted = true;
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
}

void SettingsFile::customEvent(QEvent*) {
    m_isSavePosted = false;
    Save();
}

void SettingsFile::timerEvent(QTimerEvent*) {
    m_retry.stop();
    Save(QDeadlineTimer(0));
}

void SettingsFile::TakeDamage(const QList<DamagedLine>& damage) {
    if (damage.isEmpty()) {
        return;
    }
    QString problem = u"The settings file "_s + m_path + u" is damaged:"_s;
    for (const DamagedLine& line : damage.first(std::min(damage.size(), MAX_LINES_NAMED))) {
        problem += u" line "_s + QString::number(line.number) + u' ' + line.reason + u';';
    }
    if (damage.size() > MAX_LINES_NAMED) {
        problem += u" and "_s + QString::number(damage.size() - MAX_LINES_NAMED) + u" more lines;"_s;
    }
    const QString reason = KeepCopy();
    problem += reason.isEmpty() ? u" it is kept as "_s + m_copyPath : u' ' + reason;
    ReportProblem(problem + u". The other lines are used."_s, TRACE);
}

// Copies the file to another name beside it, unless there is an equal copy already. Returns the reason on
// failure; the copy is still due then.
QString SettingsFile::KeepCopy() {
    m_isCopyDue = true;
    bool isKept = false;
    for (int number = 1; !isKept; ++number) {
        m_copyPath = m_path + u".damaged-"_s + QString::number(number);
        if (!QFileInfo::exists(m_copyPath)) {
            break;
        }
        const Content earlier = ReadFile(m_copyPath);
        isKept = earlier.problem.isEmpty() && earlier.bytes == m_bytes;
    }
    if (!isKept) {
        QSaveFile copy(m_copyPath);
        // `commit` does not report data that could not be flushed.
        if (!copy.open(QFile::WriteOnly) || copy.write(m_bytes) != m_bytes.size() || !copy.flush() ||
            !copy.commit()) {
            return u"a copy of it cannot be kept as "_s + m_copyPath + u" ("_s + copy.errorString() + u')';
        }
    }
    m_isCopyDue = false;
    return {};
}
