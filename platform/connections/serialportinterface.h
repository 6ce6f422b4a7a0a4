#pragma once

#include "connections/iinterface.h"

#include <QObject>
#include <QSerialPort>

class IInterfaceCallback;

/// A serial line that is set up but not yet open, and then an interface that sends on it.
class SerialPortInterface : public QObject, public IInterface {
public:
    /// At most this many bytes wait to be sent.
    static constexpr qint64 MAX_WAITING_BYTES = 4096;

    explicit SerialPortInterface(IInterfaceCallback& callback);
    /// Sends what still waits, for 5 s at most and only as long as the line goes on taking it.
    ~SerialPortInterface() override;

    /// The port, for setting it up before it is opened.
    QSerialPort& Port() { return m_port; }
    /// False when the port cannot be opened with its settings; `Port().errorString()` says why.
    bool Open();

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
    qint64 m_lost = 0; // bytes that still waited when the port was closed
};
