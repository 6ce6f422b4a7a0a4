#pragma once

#include "zanserver_export.h"

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"
#include "zancommon/driverrecords.h"
#include "zanserver/drivererrands.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace ZANServer {

/// Carries out commands to the device that are written to "/Cmd/CmdCommand" of the device node:
///
///     reset | calibrate CONVERTER | bit | bit full | test TEXT | hold | continue CHANNEL
///
/// A command is taken at once: the value is empty again, and "CmdTaken" has it; so the same one can follow.
/// Each is carried out once, one after the other. "CmdResult" is "busy" meanwhile, then "ok" or "failed", and
/// "CmdError" has the reason. Results of built-in tests are lines of "/Res/BitR/BitMessages", which a test
/// begins anew. Belongs to the thread of the tree.
class ZANSERVER_EXPORT DeviceCommands final : public IObserver {
public:
    /// Commands that wait for the one that is carried out; more are refused.
    static constexpr qsizetype MOST_WAITING = 10;
    /// Of the messages of a built-in test, in UTF-16 code units; the first ones go.
    static constexpr qsizetype MOST_CHARACTERS = 64L * 1024;

    explicit DeviceCommands(DriverErrands& errands);
    DeviceCommands(const DeviceCommands&) = delete;
    DeviceCommands& operator=(const DeviceCommands&) = delete;
    ~DeviceCommands() override = default;

    /// Whether there is a device. Without one, commands are refused, those that wait as well.
    void SetConnected(bool isConnected);
    /// Calls this after a reset, which has made the device forget its settings.
    void SetOnReset(std::function<void()> function) { m_onReset = std::move(function); }
    /// A result of a built-in test (`IDriverCallback::ReportBITResult`).
    void OnTestResult(const KvZANCommon::ErrorStruct& result);

    void Update(Observable* subject, TChangeCode code) override;

private:
    ZANSERVER_NO_EXPORT void CarryOutNext();
    ZANSERVER_NO_EXPORT void Send(DriverCall kind, std::function<long(KvZANCommon::IDriver&)> call);
    ZANSERVER_NO_EXPORT void Finish(const QString& error);

    DriverErrands& m_errands;
    ValueString* m_command;
    ValueString* m_taken;
    ValueString* m_result;
    ValueString* m_error;
    ValueString* m_messages;
    QStringList m_waiting;
    QString m_running;    ///< empty: none
    quint64 m_number = 0; ///< of the one that is running
    bool m_isConnected = false;
    std::function<void()> m_onReset;
};

} // namespace ZANServer
