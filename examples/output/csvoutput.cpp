#include "csvoutput.h"

#include <kwbase/tracesource.h>
#include <tolmappstartup/cfgcenter.h>
#include <tolmappstartup/cfgdefault.h>

#include <QApplication>
#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"csvoutput");

} // namespace

CsvOutput::~CsvOutput() {
    CsvOutput::SetEnabled(false);
    delete m_pConfigWidget; // null when the window that showed it has deleted it
}

void CsvOutput::SetConfigPath(const QString& path) {
    SetEnabled(false); // what was set before no longer applies
    ZANAbstractInterface::SetConfigPath(path);
    ICfg& settings = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    SetAddress(ReadOrCreateString(settings, path + u"Address"_s, {}));
    CreateConfigWidget();
    SetEnabled(ReadOrCreateBool(settings, path + u"Enabled"_s, false));
}

void CsvOutput::SetEnabled(bool on) {
    if (on == m_bEnabled) {
        return;
    }
    m_bEnabled = on;
    if (on) {
        // It may not exist yet: then it is looked up when the output is switched on again.
        m_bearing.Find(u"/ZANServer/Res/DfR/Azimuth"_s, this);
        OpenFile();
        return;
    }
    m_bearing.LetGo();
    m_file.close();
}

void CsvOutput::Update(Observable* subject, TChangeCode code) {
    if (m_bearing.LetGoIfGoing(subject, code)) {
        return;
    }
    if (code == TChangeCode::Changed && m_bearing.Is(subject) &&
        m_bearing->GetState() == TValueState::Valid) {
        Write(m_bearing->GetValue());
    }
}

void CsvOutput::OpenFile() {
    // Without a buffer a line is written when the call returns, and a failure is noticed at once.
    constexpr QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    m_file.setFileName(GetAddress());
    if (!(GetAddress().isEmpty() ? m_file.open(stdout, mode) : m_file.open(mode | QIODevice::Append))) {
        Fail(m_file.errorString());
    }
}

void CsvOutput::Write(const BearingResult& bearing) {
    if (bearing.GetQuality() <= 0) {
        return; // rejected
    }
    const auto field = [&bearing](BearingResult::Member member, const QString& text) {
        return bearing.IsValueValid(member) ? text : QString();
    };
    const QDateTime time =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(bearing.GetTimeStamp()), Qt::UTC);
    const QByteArray line =
        QStringList{field(BearingResult::TIME_STAMP, time.toString(Qt::ISODateWithMs)),
                    field(BearingResult::FREQUENCY, QString::number(bearing.GetFrequency() / 1e6, 'f', 6)),
                    field(BearingResult::AZIMUTH, QString::number(bearing.GetAzimuth() / 10.0, 'f', 1))}
            .join(u',')
            .toUtf8() +
        '\n';
    if (m_file.isOpen() && m_file.write(line) == line.size()) {
        ++m_lineCount;
        return;
    }
    ++m_dropCount;
    Fail(m_file.errorString());
}

/// Reports to the operator once, not with each bearing.
void CsvOutput::Fail(const QString& error) {
    const QString text = GetName() + u": "_s + error;
    if (text != m_lastError) {
        m_lastError = text;
        TRACE.Information([this] { return m_lastError; });
    }
}

void CsvOutput::CreateConfigWidget() {
    delete m_pConfigWidget;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        return; // a program without a display
    }
    auto* widget = new QWidget;
    m_addressEdit = new QLineEdit(GetAddress());
    auto* layout = new QHBoxLayout(widget);
    layout->addWidget(new QLabel(tr("Filename:")));
    layout->addWidget(m_addressEdit);
    AdoptConfigWidget(widget);
}

void CsvOutput::SlotUpdateConfiguration() {
    if (!m_addressEdit || m_addressEdit->text() == GetAddress()) {
        return;
    }
    SetAddress(m_addressEdit->text());
    ICfg& settings = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    settings.SetString(m_strConfigPath + u"Address"_s, GetAddress());
    settings.CommitKey(m_strConfigPath + u"Address"_s);
    if (IsEnabled()) {
        SetEnabled(false);
        SetEnabled(true);
    }
}
