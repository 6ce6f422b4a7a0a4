#include "receiver.h"

using namespace Qt::StringLiterals;

void Receiver::fillScanBuffer(long /*range*/, unsigned long long& time, unsigned /*firstChannel*/,
                              unsigned count, Bearing* bearings, KvZANCommon::StatusStruct& status) {
    // Valid only during this call, so all of it is copied.
    Block block{time, status, std::vector<Bearing>(bearings, bearings + count)};
    QMetaObject::invokeMethod(
        this, [this, block = std::move(block)] { onBlock(block); }, Qt::QueuedConnection);
}

void Receiver::reportError(KvZANCommon::ErrorStruct& error) {
    const QString text = (error.fatal ? u"fatal: "_s : u"error: "_s) + error.text;
    QMetaObject::invokeMethod(
        this, [this, text] { onMessage(text); }, Qt::QueuedConnection);
}

void Receiver::SetCommandLog(QString& line) {
    QMetaObject::invokeMethod(
        this, [this, text = u"command: "_s + line] { onMessage(text); }, Qt::QueuedConnection);
}

void Receiver::CloseDataLink() {
    QMetaObject::invokeMethod(
        this, [this] { onLinkClosed(); }, Qt::QueuedConnection);
}
