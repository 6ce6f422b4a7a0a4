#include "csvoutput.h"

#include <kwbase/errorhandler.h>
#include <tolmappstartup/cfgcenter.h>
#include <tolmappstartup/cfgdefault.h>
#include <valueframework/tree.h>

#include <QApplication>
#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>

#include <cstdio>

using namespace Qt::StringLiterals;

CsvOutput::~CsvOutput() {
    CsvOutput::SetEnabled(false);
    delete m_pConfigWidget; // null when whoever showed it has deleted it
}

void CsvOutput::SetConfigPath(const QString& path) {
    SetEnabled(false); // what was set before ends here
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
        Connect();
        OpenFile();
        return;
    }
    if (m_bearing) {
        m_bearing->DeleteObserver(this);
        m_bearing = {};
    }
    m_file.close();
}

/// The value may not be there yet: then it is looked up when the output is switched on the next time.
void CsvOutput::Connect() {
    m_bearing = Tree::Instance()->Find<ValueBearing>(u"/ZANServer/Res/DfR/Azimuth"_s);
    if (m_bearing) {
        m_bearing->AddObserver(this);
    }
}

void CsvOutput::Update(Observable* subject, TChangeCode code) {
    if (subject != m_bearing.get()) {
        return;
    }
    if (code == TChangeCode::GoingAway) {
        m_bearing->DeleteObserver(this);
        m_bearing = {};
    } else if (code == TChangeCode::Changed && m_bearing->GetState() == TValueState::Valid) {
        Write(m_bearing->GetValue());
    }
}

void CsvOutput::OpenFile() {
    // Without a buffer a line is out when the write returns, and a failure is seen at once.
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

/// Tells the operator once, not with each bearing.
void CsvOutput::Fail(const QString& error) {
    const QString text = GetName() + u": "_s + error;
    if (text != m_lastError) {
        m_lastError = text;
        TraceInformation([this] { return m_lastError; }, u"csvoutput"_s, __LINE__);
    }
}

void CsvOutput::CreateConfigWidget() {
    delete m_pConfigWidget;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        return; // a program without a display
    }
    m_pConfigWidget = new QWidget;
    m_addressEdit = new QLineEdit(GetAddress());
    auto* layout = new QHBoxLayout(m_pConfigWidget);
    layout->addWidget(new QLabel(tr("Filename:")));
    layout->addWidget(m_addressEdit);
    connect(m_pConfigWidget, &QObject::destroyed, this, &CsvOutput::SlotOnConfigWidgetDestroyed);
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
