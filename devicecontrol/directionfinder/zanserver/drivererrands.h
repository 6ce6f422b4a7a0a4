#pragma once

#include "zanserver_export.h"

#include "zancommon/idriver.h"
#include "zanserver/drivertext.h"
#include "zanserver/driverthread.h"

#include <QObject>
#include <QString>

#include <cstddef>
#include <functional>
#include <memory>

namespace ZANServer {

/// Something that the driver is called for, again and again: carried out on the driver's thread, answered on
/// the main thread. What both use belongs to the driver's thread from `DriverErrands::Send` to `TakeAnswer`.
class ZANSERVER_EXPORT DriverErrand {
public:
    DriverErrand() = default;
    DriverErrand(const DriverErrand&) = delete;
    DriverErrand& operator=(const DriverErrand&) = delete;
    virtual ~DriverErrand() = default;

    /// On the driver's thread. One call of the driver, so that each has its time-out. May throw.
    virtual void CarryOut(KvZANCommon::IDriver& driver) = 0;
    /// On the main thread, after `CarryOut`, even when that has thrown.
    virtual void TakeAnswer() = 0;
};

/// Sends errands to a driver's thread, and brings their answers back.
///
/// Belongs to the main thread. It may go before the answers have come, and the driver may be given up: no
/// answer comes then, and the errands that the driver may still use stay as long as it does. The thread must
/// outlive this object.
class ZANSERVER_EXPORT DriverErrands final : public QObject {
public:
    explicit DriverErrands(DriverThread& thread);
    DriverErrands(const DriverErrands&) = delete;
    DriverErrands& operator=(const DriverErrands&) = delete;
    ~DriverErrands() override;

    /// Takes an errand over, to be sent any number of times.
    void Keep(std::unique_ptr<DriverErrand> errand);
    /// Sends a kept errand, which must not be under way. Allocates nothing.
    void Send(DriverCall kind, DriverErrand& errand);
    /// Calls the driver once.
    /// \param call   on the driver's thread; what it uses must last as long as the call itself
    /// \param answer on the main thread, afterwards; not when this object is gone by then
    void Call(DriverCall kind, std::function<void(KvZANCommon::IDriver&)> call, std::function<void()> answer);

private:
    struct Shared;

    ZANSERVER_NO_EXPORT void TakeAnswers();

    DriverThread& m_thread;
    std::size_t m_underWay = 0;
    Shared* m_shared; // belongs to this object, or, when that is gone, to the last errand
};

/// What `TakeLastError` says of a driver that has no such operation.
inline constexpr QStringView DRIVER_DOES_NOT_SUPPORT = u"the driver does not support it";

/// What a driver tells of its last failure: one line of bounded length, never empty.
/// \param result the code of the call that has failed
ZANSERVER_EXPORT QString TakeLastError(KvZANCommon::IDriver& driver, long result);

} // namespace ZANServer
