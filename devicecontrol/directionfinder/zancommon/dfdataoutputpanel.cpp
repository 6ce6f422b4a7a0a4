#include "zancommon/dfdataoutputpanel.h"

#include "zancommon/dfdataoutput.h"

#include <QGridLayout>
#include <QLabel>

// The texts have the translation context of the output.
DFDataOutputPanel::DFDataOutputPanel()
    : m_serialCheck(new QCheckBox(DFDataOutput::tr("RS232")))
    , m_addressEdit(new QLineEdit)
    , m_fileCheck(new QCheckBox(DFDataOutput::tr("File")))
    , m_fileNameEdit(new QLineEdit)
    , m_intervalSpin(new QSpinBox) {
    m_intervalSpin->setRange(0, 10000);
    m_intervalSpin->setSingleStep(10);

    auto* layout = new QGridLayout(this);
    layout->addWidget(m_serialCheck, 0, 0);
    layout->addWidget(new QLabel(DFDataOutput::tr("Address:")), 0, 1);
    layout->addWidget(m_addressEdit, 0, 2);
    layout->addWidget(m_fileCheck, 1, 0);
    layout->addWidget(new QLabel(DFDataOutput::tr("Filename:")), 1, 1);
    layout->addWidget(m_fileNameEdit, 1, 2);
    layout->addWidget(new QLabel(DFDataOutput::tr("Output interval (ms):")), 2, 1);
    layout->addWidget(m_intervalSpin, 2, 2);

    connect(m_serialCheck, &QCheckBox::stateChanged, this, &DFDataOutputPanel::StateChanged);
    connect(m_fileCheck, &QCheckBox::stateChanged, this, &DFDataOutputPanel::StateChanged);
}

void DFDataOutputPanel::Show(const Settings& settings) {
    if (!IsComplete()) {
        return;
    }
    m_serialCheck->setChecked(settings.serialEnabled);
    m_addressEdit->setText(settings.address);
    m_fileCheck->setChecked(settings.fileEnabled);
    m_fileNameEdit->setText(settings.fileName);
    m_intervalSpin->setValue(settings.interval);
    EnableFields(); // also for boxes that have kept their initial state
}

std::optional<DFDataOutputPanel::Settings> DFDataOutputPanel::GetEntered() const {
    if (!IsComplete()) {
        return {};
    }
    return Settings{.serialEnabled = m_serialCheck->isChecked(),
                    .address = m_addressEdit->text(),
                    .fileEnabled = m_fileCheck->isChecked(),
                    .fileName = m_fileNameEdit->text(),
                    .interval = m_intervalSpin->value()};
}

void DFDataOutputPanel::EnableFields() {
    if (!IsComplete()) {
        return;
    }
    const bool isSerialChecked = m_serialCheck->isChecked();
    const bool isFileChecked = m_fileCheck->isChecked();
    m_addressEdit->setEnabled(isSerialChecked);
    m_fileNameEdit->setEnabled(isFileChecked);
    m_intervalSpin->setEnabled(isSerialChecked || isFileChecked);
}

bool DFDataOutputPanel::IsComplete() const {
    return m_serialCheck && m_addressEdit && m_fileCheck && m_fileNameEdit && m_intervalSpin;
}
