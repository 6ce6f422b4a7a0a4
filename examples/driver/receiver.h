#pragma once

#include <zancommon/nulldrivercallback.h>

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

/// One block of bearings with the state of the device while it was measured.
struct Block {
    quint64 time = 0; ///< ms since 1970-01-01 00:00:00 UTC
    KvZANCommon::StatusStruct status;
    std::vector<Bearing> bearings;
};

/// The application's callback: takes what the driver delivers, on whatever thread, and hands it to the
/// functions below on the thread that this object lives on, in the same order.
class Receiver final : public QObject, public KvZANCommon::NullDriverCallback {
public:
    // Set all of them before the driver is started.
    std::function<void(const Block&)> onBlock;
    std::function<void(const QString&)> onMessage;
    std::function<void()> onLinkClosed;

    void fillScanBuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                        Bearing* bearings, KvZANCommon::StatusStruct& status) override;
    void reportError(KvZANCommon::ErrorStruct& error) override;
    void SetCommandLog(QString& line) override;
    void CloseDataLink() override;
    void getOperateMode(EMode& mode) override { mode = EMODE_SCAN; }
    QString GetDevAddress() override { return QStringLiteral("demo"); }
};
