#include "tolmappstartup/cfgcenter.h"

#include "kwbase/errorhandler.h"
#include "tolmappstartup/componentloader.h"
#include "tolmappstartup/plainfilename.h"
#include "tolmappstartup/problemreport.h"
#include "tolmappstartup/settingsfile.h"

#include <QDir>
#include <QFileInfo>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"tolmappstartup\\cfgcenter");

// How numbers and booleans are written in a settings file.
QString TextOf(qint64 value) {
    return QString::number(value);
}

QString TextOf(bool value) {
    return value ? u"true"_s : u"false"_s;
}

// A settings file, or a sub-configuration of one.
class Cfg final : public ICfg {
public:
    Cfg(std::shared_ptr<SettingsFile> pFile, QString prefix)
        : m_pFile(std::move(pFile))
        , m_prefix(std::move(prefix)) {}
    virtual ~Cfg() = default;

    void SetFile(std::shared_ptr<SettingsFile> pFile) { m_pFile = std::move(pFile); }

    [[nodiscard]] QString GetString(const QString& key, const QString& defaultValue) const override;
    [[nodiscard]] qint64 GetInt(const QString& key, qint64 defaultValue) const override;
    [[nodiscard]] bool GetBool(const QString& key, bool defaultValue) const override;
    void CommitKey(const QString& key) override;
    void SetString(const QString& key, const QString& value) override;
    void SetInt(const QString& key, qint64 value) override;
    void SetBool(const QString& key, bool value) override;
    [[nodiscard]] ICfg* GetSubCfg(const QString& name) override;
    void Release() override;
    [[nodiscard]] QStringList GetKeys() const override;
    [[nodiscard]] QStringList GetSubCfgNames() const override;
    [[nodiscard]] CfgWriteBack BeginWriteBack() override;

private:
    [[nodiscard]] QString WholeKey(const QString& key) const {
        return m_prefix.isEmpty() ? key : m_prefix + key;
    }

    std::shared_ptr<SettingsFile> m_pFile;
    QString m_prefix; // with the "/" at its end; empty for a whole file
};

constexpr std::chrono::seconds CLOSE_PATIENCE(10); // for a settings file that another process has locked

struct State {
    // Created before the files and so destroyed after them: they may report problems to the very end.
    ErrorHandler& errorHandler = ErrorHandler::Instance();
    QString configDirectory;
    Cfg appCfg{SettingsFile::Open({}), {}};
    // Keeps files open that nobody holds at the moment, so that what could not be saved is not lost.
    QHash<QString, std::shared_ptr<SettingsFile>> files;

    ComponentLoader components;
};

State& GetState() {
    static State state;
    return state;
}

std::shared_ptr<SettingsFile> OpenFile(const QString& name) {
    const QString path = GetState().configDirectory + u'/' + name + u".ini"_s;
    std::shared_ptr<SettingsFile>& pFile = GetState().files[path];
    if (!pFile) {
        pFile = SettingsFile::Open(path);
    }
    return pFile;
}

QString Cfg::GetString(const QString& key, const QString& defaultValue) const {
    const QString wholeKey = WholeKey(key);
    const QString* const text = m_pFile->Find(wholeKey);
    QString value = text ? *text : defaultValue;
    m_pFile->SetKnown(wholeKey, value);
    return value;
}

qint64 Cfg::GetInt(const QString& key, qint64 defaultValue) const {
    const QString wholeKey = WholeKey(key);
    const QString* const text = m_pFile->Find(wholeKey);
    bool isNumber = false;
    const qint64 number = text ? text->toLongLong(&isNumber) : defaultValue;
    if (text && !isNumber) {
        m_pFile->ReportUnreadable(wholeKey, u"an integer"_s);
    }
    const qint64 value = isNumber ? number : defaultValue;
    m_pFile->SetKnown(wholeKey, TextOf(value));
    return value;
}

bool Cfg::GetBool(const QString& key, bool defaultValue) const {
    const QString wholeKey = WholeKey(key);
    const QString* const text = m_pFile->Find(wholeKey);
    const std::optional<bool> stored = text ? ParseBoolean(*text) : std::nullopt;
    if (text && !stored) {
        m_pFile->ReportUnreadable(wholeKey, u"a boolean"_s);
    }
    const bool value = stored.value_or(defaultValue);
    m_pFile->SetKnown(wholeKey, TextOf(value));
    return value;
}

void Cfg::CommitKey(const QString&) {
    m_pFile->Save();
}

void Cfg::SetString(const QString& key, const QString& value) {
    m_pFile->SetText(WholeKey(key), value);
}

void Cfg::SetInt(const QString& key, qint64 value) {
    SetString(key, TextOf(value));
}

void Cfg::SetBool(const QString& key, bool value) {
    SetString(key, TextOf(value));
}

ICfg* Cfg::GetSubCfg(const QString& name) {
    const QString prefix = m_prefix + name + u'/';
    if (!IsSettingsKey(prefix + u"Key"_s)) {
        ReportProblem(u"\""_s + name + u"\" cannot be the name of a sub-configuration."_s, TRACE);
        return nullptr;
    }
    return new Cfg(m_pFile, prefix);
}

void Cfg::Release() {
    if (this != &GetState().appCfg) {
        delete this;
    }
}

QStringList Cfg::GetKeys() const {
    return m_pFile->GetNames(m_prefix, false);
}

QStringList Cfg::GetSubCfgNames() const {
    return m_pFile->GetNames(m_prefix, true);
}

CfgWriteBack Cfg::BeginWriteBack() {
    m_pFile->BeginWriteBack();
    return {m_pFile.get(), [pFile = m_pFile](SettingsFile*) { pFile->EndWriteBack(); }};
}

} // namespace

bool CfgCenter::SetConfigDirectory(const QString& directory) {
    Close();
    QString reason;
    const QString path = directory.contains(QChar::Null) ? QString() : QDir(directory).absolutePath();
    if (directory.isEmpty() || path.isEmpty()) {
        reason = u"that is not the name of a directory"_s;
    } else if (!QDir().mkpath(path)) {
        reason = QFileInfo::exists(path) ? u"a file has that name"_s
                                         : u"it does not exist and cannot be created"_s;
    }
    if (!reason.isEmpty()) {
        ReportProblem(u"The configuration directory \""_s + directory + u"\" cannot be opened: "_s + reason +
                          u'.',
                      TRACE);
        return false;
    }
    GetState().configDirectory = path;
    GetState().appCfg.SetFile(OpenFile(u"Application"_s));
    return true;
}

ICfg& CfgCenter::GetAppCfg(ICfg::View) {
    return GetState().appCfg;
}

ICfg* CfgCenter::CreateCfg(const QString& name, ICfg::View, const QString&) {
    if (!IsPlainFileName(name)) {
        ReportProblem(u"\""_s + name + u"\" cannot be the name of a settings file."_s, TRACE);
        return nullptr;
    }
    if (GetState().configDirectory.isEmpty()) {
        ReportProblem(u"The settings \""_s + name +
                          u"\" cannot be opened: no configuration directory is set."_s,
                      TRACE);
        return nullptr;
    }
    return new Cfg(OpenFile(name), {});
}

bool CfgCenter::Close() {
    State& state = GetState();
    const QDeadlineTimer deadline(CLOSE_PATIENCE);
    bool isSaved = true;
    for (const std::shared_ptr<SettingsFile>& pFile : std::as_const(state.files)) {
        isSaved = pFile->SaveFinally(deadline) && isSaved;
    }
    state.appCfg.SetFile(SettingsFile::Open({}));
    state.files.clear();
    state.configDirectory.clear();
    return isSaved;
}

bool CfgCenter::SetComponentDirectory(const QString& directory) {
    return GetState().components.SetDirectory(directory);
}

QString CfgCenter::GetComponentDirectory() {
    return GetState().components.GetDirectory();
}

IDllInstance* CfgCenter::CreateDllInstanceByFileName(const QString& fileName, const QString&, bool, bool) {
    return GetState().components.Create(fileName);
}

void CfgCenter::DestroyDllInstanceByPointer(IDllInstance* instance) {
    GetState().components.Destroy(instance);
}

void CfgCenter::KeepLibraryOf(IDllInstance* instance) {
    GetState().components.Keep(instance);
}

QString CfgCenter::GetLastError() {
    return GetLastProblem();
}
