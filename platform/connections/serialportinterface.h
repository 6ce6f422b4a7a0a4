#pragma once

#include "connections/iinterface.h"

#include <QObject>
#include <QSerialPort>

class IInterfaceCallback;

/// A serial line: first its port is opened, then it is started and sends.
class SerialPortInterface : public QObject, public IInterface {
public:
    /// At most this many bytes wait to be sent.
    static constexpr qint64 MAX_WAITING_BYTES = 4096;

    explicit SerialPortInterface(IInterfaceCallback& callback);
    /// Sends what still waits, for 5 s at most and only while the line takes it.
    ~SerialPortInterface() override;

    /// The port, for opening it (`SerialLine::Open`).
    QSerialPort& Port() { return m_port; }
    /// Begins to notify the callback of the open port.
    void Start();

    [[nodiscard]] bool IsReadyToWrite(const char* data, int length) const override;
    bool Write(const char* data, int length) override;
    [[nodiscard]] qint64 GetUnsentCount() const override;
    void Finish() override;

private:
    void DiscardInput();
    void TellWritten();
    void Fail();
    void Close();

    IInterfaceCallback& m_callback;
    QSerialPort m_port;
    qint64 m_lost = 0; // bytes that were waiting when the port was closed
};
