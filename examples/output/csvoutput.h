#pragma once

#include <valueframework/valueptr.h>
#include <valueframework/valuetypes.h>
#include <zancommon/zanabstractinterface.h>

#include <QFile>
#include <QLineEdit>
#include <QPointer>

/// Writes one line per bearing, "time,MHz,degrees", to a file or, without a file name, to standard output.
///
/// `SetConfigPath` reads the settings "<path>Enabled" and "<path>Address" from the configuration store;
/// outputs with different paths have separate settings. No line is written for a rejected bearing.
class CsvOutput final : public ZANAbstractInterface, public IObserver {
    Q_OBJECT

public:
    explicit CsvOutput(const QString& name)
        : ZANAbstractInterface(name) {}
    ~CsvOutput() override;

    void SetConfigPath(const QString& path) override;
    void SetEnabled(bool on) override;
    void Update(Observable* subject, TChangeCode code) override;

    [[nodiscard]] quint64 GetLineCount() const { return m_lineCount; }
    /// Lines that could not be written.
    [[nodiscard]] quint64 GetDropCount() const { return m_dropCount; }
    /// The latest failure, as a text for the operator; empty when there was none.
    [[nodiscard]] QString GetLastError() const { return m_lastError; }

public Q_SLOTS:
    void SlotUpdateConfiguration() override;

private:
    void CreateConfigWidget();
    void OpenFile();
    void Write(const BearingResult& bearing);
    void Fail(const QString& error);

    ZANPlatform::ValuePtr<ValueBearing> m_bearing;
    QFile m_file;
    QPointer<QLineEdit> m_addressEdit;
    quint64 m_lineCount = 0;
    quint64 m_dropCount = 0;
    QString m_lastError;
};
