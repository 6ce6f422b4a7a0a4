#pragma once

#include "zanserver_export.h"

#include "zancommon/idriver.h"
#include "zanserver/drivercall.h"
#include "zanserver/driverreceiver.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace ZANServer {

/// The one thread on which a driver is created, called and destroyed.
///
/// Calls are carried out in the order in which they were posted; the main thread never waits for one, unless
/// it says so. What a call throws is its failure (`Failed`), and the next one follows. A call that does not
/// return within its time-out (`GetTimeout`) gives the driver up: no call follows, nothing that it delivers
/// arrives any more, and it stays where it hangs, with its thread, its component and its receiver, until the
/// process ends; that must then be done without destructors (`HasGivenUpAny`).
///
/// So does a call out of which an exception comes that nobody can catch: that of a destructor, such as the
/// driver's own, or of a function that is `noexcept`. To keep the process alive then, the first object of
/// this class sets the process's terminate handler; it calls the one before on all other threads, also on
/// those that a driver has started.
///
/// Belongs to the main thread, as does everything that is called of it except `Post`. Needs the application
/// object.
class ZANSERVER_EXPORT DriverThread final : public QObject {
    Q_OBJECT

public:
    using Call = std::function<void(KvZANCommon::IDriver& driver)>;
    using Factory = std::function<std::unique_ptr<KvZANCommon::IDriver>()>;
    using Timeout = std::function<std::chrono::milliseconds(DriverCall kind)>;

    /// A built-in test, for one, may go on for minutes; the end of the program does not wait for it. A driver
    /// that does not hang needs no more than one of its time-outs to stop.
    static constexpr std::chrono::seconds LONGEST_END{10};

    /// The driver is created for the first call, and gets the receiver as its callback.
    /// \param factory makes the driver on its thread; kept as long as the driver, with all that it holds (the
    ///        driver's component)
    DriverThread(Factory factory, std::shared_ptr<DriverReceiver> receiver, Timeout timeout = GetTimeout);
    /// Has the thread ended (`End`). What connects to `GivenUp` calls `End` before, while it can still be
    /// notified.
    ~DriverThread() override;

    /// Has a call carried out on the driver's thread. Without effect when the driver is given up or the
    /// thread has ended. From any thread. That of the driver is woken at once; out of the main thread's event
    /// loop, once for all that is posted until the loop goes on, or until `Wait` or the end.
    /// \param answer carried out on the main thread when the call has returned; not when it has thrown, when
    ///        the driver is given up, or when this object is gone
    void Post(DriverCall kind, Call call, std::function<void()> answer = {});
    /// The end begins: from now on the driver has `LONGEST_END` for all that it still has to do.
    void BeginEnd();
    /// Waits until all that was posted is done, no longer than the time-outs. False when the driver is given
    /// up.
    bool Wait();
    /// Carries out what was posted, and destroys the driver. Waits for that, no longer than the time-outs,
    /// and no longer than `LONGEST_END` for all. False when the driver is given up.
    bool End();

    [[nodiscard]] bool IsGivenUp() const;
    /// Whether `End` has ended it: it uses nothing any more that was posted.
    [[nodiscard]] bool HasEnded() const;
    /// Whether the process has given up a driver. It has to end by `std::_Exit` then: destructors of what the
    /// driver still uses would have it crash.
    [[nodiscard]] static bool HasGivenUpAny();

Q_SIGNALS:
    /// A call has thrown. Of kind `Create`: the driver could not be created; that is tried again for the next
    /// call.
    void Failed(DriverCall kind, const QString& reason);
    /// Once.
    void GivenUp(const QString& reason);

private:
    struct Shared;

    template <class Condition>
    bool WaitUntil(Condition condition);
    ZANSERVER_NO_EXPORT bool GiveUpIfOverdue();
    ZANSERVER_NO_EXPORT void TakeAnswers();
    ZANSERVER_NO_EXPORT void WakeUp();

    const Timeout m_timeout;
    std::shared_ptr<Shared> m_shared;
    bool m_hasToWakeUp = false; // the driver's thread, for what was posted
    QTimer m_watch;
    // The call that was running at the last look, and for how long it has been seen to.
    quint64 m_watchedCall = 0;
    std::chrono::steady_clock::duration m_watchedFor{};
    std::chrono::steady_clock::time_point m_lastLook;
    std::optional<std::chrono::steady_clock::time_point> m_end; // the latest, once the end has begun
    std::thread m_thread;
};

} // namespace ZANServer
