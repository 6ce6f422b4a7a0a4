#include "zanserver/driverthread.h"

#include "zanserver/drivertext.h"

#include <QAbstractEventDispatcher>
#include <QThread>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ZANServer {

namespace {

/// How often the main thread looks whether a call takes too long.
constexpr std::chrono::milliseconds WATCH_INTERVAL = 100ms;

/// Carries something out; returns why that has failed, or nothing.
template <class Function>
QString Try(Function& function) {
    try {
        function();
        return {};
    } catch (const std::exception& exception) {
        return u"it threw an exception: "_s + WhatOf(exception);
    } catch (...) {
        return u"it threw an exception"_s;
    }
}

} // namespace

/// What the two threads share.
struct DriverThread::Shared {
    struct Task {
        DriverCall kind;
        Call call;
        std::function<void()> answer;
    };
    struct Running {
        DriverCall kind;
        quint64 number; // of the calls so far
    };

    Factory factory;
    std::shared_ptr<DriverReceiver> receiver;
    std::unique_ptr<KvZANCommon::IDriver> driver; // touched on the driver's thread only

    std::mutex mutex; // guards what follows
    std::condition_variable changed;
    DriverThread* owner = nullptr; // null once the driver is given up
    std::vector<Task> tasks;
    std::vector<std::function<void()>> answers;
    std::optional<Running> running;
    QString uncaught; // why the running call will never return; empty while it may
    quint64 callCount = 0;
    bool isIdle = false;
    bool isEnding = false;
    bool hasEnded = false;

    /// The process's given-up drivers. Never destroyed: they are used where they hang, to the very end.
    static std::vector<std::shared_ptr<Shared>>& GivenUp() {
        static auto& drivers = *new std::vector<std::shared_ptr<Shared>>;
        return drivers;
    }

    /// The one whose driver is being called on this thread; null on all others.
    static Shared*& OfThisThread() {
        static thread_local Shared* shared = nullptr;
        return shared;
    }

    /// In place of the end of the process. The thread cannot return from here, so the driver stays in its
    /// call like one that hangs.
    [[noreturn]] void StayForEver(const QString& reason) {
        {
            const std::lock_guard lock(mutex);
            uncaught = reason;
        }
        for (;;) {
            std::this_thread::sleep_for(1h);
        }
    }

    /// Carries out one call on the driver's thread. False when the driver is given up.
    template <class Function>
    bool CarryOut(DriverCall kind, Function function, const std::function<void()>& answer = {}) {
        {
            const std::lock_guard lock(mutex);
            if (!owner) {
                return false;
            }
            running = Running{kind, ++callCount};
        }
        OfThisThread() = this;
        const QString failure = Try(function);
        OfThisThread() = nullptr;
        const std::lock_guard lock(mutex);
        running.reset();
        if (owner && !failure.isEmpty()) {
            const QString reason = GetName(kind) + u" has failed: "_s + failure;
            Tell([thread = owner, kind, reason] { Q_EMIT thread->Failed(kind, reason); });
        } else if (owner && answer) {
            Tell(answer);
        }
        return owner != nullptr;
    }

    /// Has something carried out on the main thread. With the mutex locked.
    void Tell(std::function<void()> answer) {
        answers.push_back(std::move(answer));
        if (answers.size() == 1) {
            QMetaObject::invokeMethod(owner, &DriverThread::TakeAnswers, Qt::QueuedConnection);
        }
    }

    /// Takes over what was posted, after waiting for it. False when there is nothing more to come.
    bool TakeTasks(std::vector<Task>& taken) {
        std::unique_lock lock(mutex);
        isIdle = tasks.empty();
        changed.notify_all();
        changed.wait(lock, [this] { return !tasks.empty() || isEnding || !owner; });
        isIdle = false;
        taken.clear();
        taken.swap(tasks);
        return owner && !taken.empty();
    }

    /// False when the driver is given up.
    bool Create() {
        return CarryOut(DriverCall::Create, [this] {
            std::unique_ptr<KvZANCommon::IDriver> created = factory();
            created->SetCallback(receiver.get());
            driver = std::move(created);
        });
    }

    /// Without a driver the call is left out: that there is none has been told. False when the driver is
    /// given up.
    bool CarryOut(const Task& task) {
        return (driver || Create()) && (!driver || CarryOut(
                                                       task.kind, [&] { task.call(*driver); }, task.answer));
    }

    void Work() {
        bool goesOn = true;
        std::vector<Task> taken;
        while (goesOn && TakeTasks(taken)) {
            for (const Task& task : taken) {
                goesOn = goesOn && CarryOut(task);
            }
        }
        CarryOut(DriverCall::Destroy, [this] { driver.reset(); });
        const std::lock_guard lock(mutex);
        isIdle = true;
        hasEnded = true;
        changed.notify_all();
    }

    /// Gives up the driver out of whose call an exception comes that nobody can catch, in place of the
    /// process.
    [[noreturn]] static void OnTerminate() {
        Shared* const shared = OfThisThread();
        if (!shared) {
            SetTerminateHandler()();
            std::abort(); // that handler does not return
        }
        const auto rethrow = [] {
            if (const std::exception_ptr exception = std::current_exception()) {
                std::rethrow_exception(exception);
            }
        };
        const QString failure = Try(rethrow);
        shared->StayForEver(failure.isEmpty() ? u"it has called std::terminate"_s : failure);
    }

    /// Once in the process. Returns the handler that was there before.
    static std::terminate_handler SetTerminateHandler() {
        static const std::terminate_handler before = std::set_terminate(OnTerminate);
        return before;
    }
};

DriverThread::DriverThread(Factory factory, std::shared_ptr<DriverReceiver> receiver, Timeout timeout)
    : m_timeout(std::move(timeout))
    , m_shared(std::make_shared<Shared>()) {
    Shared::SetTerminateHandler();
    m_shared->factory = std::move(factory);
    m_shared->receiver = std::move(receiver);
    m_shared->owner = this;
    m_watch.callOnTimeout(this, [this] { GiveUpIfOverdue(); });
    m_watch.start(WATCH_INTERVAL);
    // At every turn of the loop: before it sleeps, and also when it has no time to sleep.
    const QAbstractEventDispatcher* const loop = QAbstractEventDispatcher::instance();
    connect(loop, &QAbstractEventDispatcher::awake, this, &DriverThread::WakeUp);
    connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, &DriverThread::WakeUp);
    m_thread = std::thread([shared = m_shared] { shared->Work(); });
}

DriverThread::~DriverThread() {
    End();
}

void DriverThread::BeginEnd() {
    if (!m_end) {
        m_end = std::chrono::steady_clock::now() + LONGEST_END;
    }
}

void DriverThread::Post(DriverCall kind, Call call, std::function<void()> answer) {
    {
        const std::lock_guard lock(m_shared->mutex);
        if (!m_shared->owner || m_shared->hasEnded) {
            return;
        }
        m_shared->tasks.push_back({kind, std::move(call), std::move(answer)});
    }
    // To wake a thread that sleeps takes many times as long as all the rest of a wish.
    if (QThread::currentThread() == thread() && thread()->loopLevel() > 0) {
        m_hasToWakeUp = true;
    } else {
        m_shared->changed.notify_all();
    }
}

void DriverThread::WakeUp() {
    if (std::exchange(m_hasToWakeUp, false)) {
        m_shared->changed.notify_all();
    }
}

bool DriverThread::Wait() {
    return WaitUntil([this] { return m_shared->isIdle && m_shared->tasks.empty(); });
}

bool DriverThread::End() {
    m_shared->receiver->StopHoldingUp();
    BeginEnd();
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->isEnding = true;
        m_shared->changed.notify_all();
    }
    const bool hasEnded = WaitUntil([this] { return m_shared->hasEnded; });
    if (hasEnded && m_thread.joinable()) {
        m_thread.join();
    }
    return hasEnded;
}

void DriverThread::TakeAnswers() {
    std::vector<std::function<void()>> answers;
    {
        const std::lock_guard lock(m_shared->mutex);
        answers.swap(m_shared->answers);
    }
    for (const auto& answer : answers) {
        answer();
    }
}

bool DriverThread::IsGivenUp() const {
    const std::lock_guard lock(m_shared->mutex);
    return !m_shared->owner;
}

bool DriverThread::HasEnded() const {
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->hasEnded;
}

bool DriverThread::HasGivenUpAny() {
    return !Shared::GivenUp().empty();
}

/// Waits for something that the driver's thread does. False when the driver is given up.
template <class Condition>
bool DriverThread::WaitUntil(Condition condition) {
    WakeUp();
    while (!GiveUpIfOverdue()) {
        std::unique_lock lock(m_shared->mutex);
        if (m_shared->changed.wait_for(lock, WATCH_INTERVAL, condition)) {
            return true;
        }
    }
    return false;
}

/// Gives up a driver whose call takes too long, or will never return. Whether it is given up now, or was
/// before.
bool DriverThread::GiveUpIfOverdue() {
    // While this thread cannot look, it may be that the whole process was stopped: that time does not count.
    const auto now = std::chrono::steady_clock::now();
    const auto sinceLastLook =
        std::min<std::chrono::steady_clock::duration>(now - m_lastLook, 2 * WATCH_INTERVAL);
    m_lastLook = now;
    QString reason;
    {
        const std::lock_guard lock(m_shared->mutex);
        const auto& running = m_shared->running;
        if (!m_shared->owner) {
            return true;
        }
        const quint64 number = running ? running->number : 0;
        m_watchedFor =
            number == m_watchedCall ? m_watchedFor + sinceLastLook : std::chrono::steady_clock::duration();
        m_watchedCall = number;
        const bool isAtEnd = m_end && now > *m_end;
        const bool isUncaught = !m_shared->uncaught.isEmpty();
        if (!running || (m_watchedFor <= m_timeout(running->kind) && !isAtEnd && !isUncaught)) {
            return false;
        }
        const std::chrono::duration<double> limit =
            isAtEnd ? std::chrono::milliseconds(LONGEST_END) : m_timeout(running->kind);
        const QString fault = isUncaught ? u"failed: "_s + m_shared->uncaught
                                         : u"not returned within %1 s"_s.arg(limit.count());
        reason = GetName(running->kind) + u" has "_s + fault + u"; the driver is given up"_s;
        m_shared->owner = nullptr;
        m_shared->tasks.clear();
        m_shared->changed.notify_all();
    }
    m_shared->receiver->CutOff();
    Shared::GivenUp().push_back(m_shared);
    m_thread.detach();
    m_watch.stop();
    Q_EMIT GivenUp(reason);
    return true;
}

} // namespace ZANServer
