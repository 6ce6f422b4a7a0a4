#pragma once

#include "connections/iinterfacecallback.h"

#include <QObject>
#include <QString>

#include <deque>

class IInterface;
class QTimer;

/// Sends on a serial line that may come and go: while the line cannot be opened, it is tried again
/// periodically, and data to be sent is dropped. Needs an event loop; belongs to one thread.
class SerialInterface : public QObject, public IInterfaceCallback {
    Q_OBJECT

public:
    /// The number of data blocks that `WriteToInterface` took. Blocks in neither count wait in the line's
    /// buffer.
    struct Counts {
        quint64 sent = 0; ///< completely sent from the buffer
        quint64 lost = 0; ///< not completely sent when the line failed or was closed
    };

    /// Opens at once.
    /// \param address as `CInterfaceCreator::CreateInterface` takes it, such as "COM1:9600,e,8,1"
    /// \param retryMs milliseconds between two attempts to open
    /// \param second is kept and has no effect
    SerialInterface(QString address, unsigned short retryMs, unsigned short second);
    ~SerialInterface() override;

    /// True when the line is open. False on failure; the next attempt follows automatically.
    bool Open();
    [[nodiscard]] bool IsOpen() const { return m_pInterface != nullptr; }
    /// Sends the data as a whole. False when it is dropped: the line is closed or not ready, or the write
    /// failed; only the last of these is traced.
    bool WriteToInterface(const char* data, int length);
    [[nodiscard]] Counts GetCounts();
    [[nodiscard]] const QString& GetAddress() const { return m_address; }
    /// Sends what waits, which blocks the thread for a few seconds at most, and closes the line finally.
    void Close();

    void OnOpen() override;
    void OnClose() override;
    void OnRead() override;
    void OnError() override;

private Q_SLOTS:
    void SlotOnTimer();

private:
    void StartRetryTimer();
    void StopRetryTimer();
    void CountSent();
    void CountRestAsLost();

    IInterface* m_pInterface = nullptr; // owned
    QTimer* m_pTimer;                   // owned as a child
    QString m_address;
    unsigned short m_retryMs;
    [[maybe_unused]] unsigned short m_second;
    std::deque<int> m_unsent; // lengths of the data blocks that are not completely sent
    qint64 m_unsentBytes = 0; // their sum
    Counts m_counts;
};
