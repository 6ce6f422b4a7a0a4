#pragma once

#include "zancommon/dfdataoutput.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPointer>
#include <QSpinBox>
#include <QString>
#include <QWidget>

#include <optional>

/// The configuration widget of the DF data output: where the sentences go, and how often.
///
/// The window that shows it may take it over, and may even delete parts of it. Belongs to the main thread of
/// a program with a display.
class DFDataOutputPanel : public QWidget {
    Q_OBJECT

public:
    using Settings = DFDataOutput::Settings;

    DFDataOutputPanel();

    void Show(const Settings& settings);
    /// What the user has entered; nothing when a part of the panel is gone.
    [[nodiscard]] std::optional<Settings> GetEntered() const;
    /// Disables the fields of sinks that are not checked. Does nothing when a part of the panel is gone.
    void EnableFields();

Q_SIGNALS:
    /// Emitted when one of the boxes was checked or unchecked.
    void StateChanged();

private:
    [[nodiscard]] bool IsComplete() const;

    QPointer<QCheckBox> m_serialCheck;
    QPointer<QLineEdit> m_addressEdit;
    QPointer<QCheckBox> m_fileCheck;
    QPointer<QLineEdit> m_fileNameEdit;
    QPointer<QSpinBox> m_intervalSpin;
};
