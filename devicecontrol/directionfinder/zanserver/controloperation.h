#pragma once

#include "zancommon/idriver.h"
#include "zancommon/nulldriver.h"
#include "zanserver/controlclock.h"
#include "zanserver/drivererrands.h"
#include "zanserver/wishreport.h"

#include <QString>

#include <chrono>
#include <cstddef>
#include <optional>
#include <utility>

namespace ZANServer {

class ControlOperation;

/// What the operations of a device have in common: the way to its driver, the time, and who is told.
struct ControlHost {
    virtual ~ControlHost() = default;

    /// An operation has been carried out as it was wished last.
    virtual void OnCarriedOut(ControlOperation& operation) = 0;
    /// One of the calls of an operation has returned: the device no longer has what was carried out before,
    /// and has what is wished when all calls are done.
    virtual void OnPartlyDone(ControlOperation& operation) = 0;
    /// An operation is no longer under way.
    virtual void OnSettled(ControlOperation& operation) = 0;
    /// It is known now, or no longer, whether the values of an operation show what the device has
    /// (`ControlOperation::IsKnown`).
    virtual void MarkValues(const ControlOperation& operation) = 0;
    /// Calls `ControlOperation::WishAgain` at this time.
    virtual void WakeAt(std::chrono::steady_clock::time_point time) = 0;
    /// Whether an operation has to wait for others.
    [[nodiscard]] virtual bool HasToWait(const ControlOperation& operation) const = 0;

    ControlClock now;
    std::chrono::milliseconds pace{};
    DriverErrands* errands = nullptr;
    bool isConnected = false;
};

/// A wish, made valid.
enum class EWish {
    SEND,    ///< may be sent to the driver
    REFUSED, ///< the device cannot do it
    NOTHING  ///< the device has nothing of the kind, or nothing is wished
};

/// How a wish was made valid, for the operator; empty: it is as it was asked.
struct WishChange {
    QString asked;
    QString reason;
};

/// One operation of the driver, through which a wish is carried out: when it is called, with what, and what
/// becomes of the answer.
///
/// At most one call is under way. It carries what was wished last; what is wished meanwhile, or sooner than
/// the pace allows, is sent afterwards, and only the last of it. Main thread.
class ControlOperation : public DriverErrand {
public:
    ControlOperation(QStringView name, DriverCall kind, ControlHost& host)
        : m_host(host)
        , m_kind(kind)
        , m_report(name) {}

    /// The operator has changed the wish.
    void WishAnew() {
        m_report.Clear();
        ForgetRefused();
        WishAgain();
    }
    /// The wish is to be carried out as it is now, unless it is already.
    virtual void WishAgain() = 0;
    /// The same, if something of it waits.
    void WishWaiting() {
        if (std::exchange(m_isWaiting, false)) {
            WishAgain();
        }
    }
    /// The device is gone, or another one, and has nothing of what was wished before.
    virtual void Forget() {
        ++m_generation;
        m_isWaiting = false;
        m_notBefore = {};
        m_isUnsupported = false;
        ForgetRefused();
        SetKnown(true);
    }

    /// Whether the driver has refused the last wish because it does not support the operation.
    [[nodiscard]] bool IsUnsupported() const { return m_isUnsupported; }
    /// False: the values hold a wish that was refused, and what the device has is not known.
    [[nodiscard]] bool IsKnown() const { return m_isKnown; }
    [[nodiscard]] bool IsUnderWay() const { return m_isUnderWay; }
    [[nodiscard]] bool IsWaiting() const { return m_isWaiting; }

protected:
    virtual void ForgetRefused() = 0;

    /// Whether it may be called now; otherwise it waits.
    bool MayCall() {
        m_isWaiting = true;
        if (!m_host.isConnected || m_isUnderWay || m_host.HasToWait(*this)) {
            return false;
        }
        const auto now = m_host.now();
        if (now < m_notBefore) {
            m_host.WakeAt(m_notBefore);
            return false;
        }
        m_notBefore = now + m_host.pace;
        m_isWaiting = false;
        return true;
    }
    void Send(DriverCall kind) {
        m_isUnderWay = true;
        m_sentIn = m_generation;
        m_host.errands->Send(kind, *this);
    }
    void SetKnown(bool isKnown) {
        m_isKnown = isKnown;
        m_host.MarkValues(*this);
    }
    /// Whether what is under way was meant for a device that is gone.
    [[nodiscard]] bool IsForOtherDevice() const { return m_sentIn != m_generation; }
    /// Whether the answer is from the device that is connected now.
    bool Return() {
        m_isUnderWay = false;
        return m_host.isConnected && !IsForOtherDevice();
    }

    ControlHost& m_host;
    const DriverCall m_kind;
    WishReport m_report;
    bool m_isWaiting = false;
    bool m_isUnsupported = false;

private:
    bool m_isUnderWay = false;
    bool m_isKnown = true;
    quint64 m_generation = 0;
    quint64 m_sentIn = 0;
    std::chrono::steady_clock::time_point m_notBefore;
};

/// The operation that a policy describes:
///
///     static constexpr QStringView NAME;   // of its report
///     static constexpr DriverCall KIND;
///     using Arguments = ...;               // with ==
///     EWish Read(Arguments&, WishChange&); // the wish as the tree has it, made valid, also in the tree
///     void Show(const Arguments&);         // into the tree
///     static QString Describe(const Arguments&);
///     static std::size_t CountCalls(const Arguments& wanted); // at least 1
///     static long Call(IDriver&, const Arguments&, std::size_t number); // on the driver's thread, from 0
///     static std::size_t CountQuestions(const Arguments&);
///     static bool Ask(IDriver&, Arguments&, std::size_t number); // likewise: what the device says it has
///     static constexpr bool IS_PARTLY_DONE;  // a refusal leaves the device with part of it
///
/// `Show` marks a value that cannot hold what the device has as not measured. Without an `Ask` nothing but
/// what was carried out last is known of the device. It is asked what it has made of a wish, unless that took
/// several calls, and what it has when it refuses one.
template <class Policy>
class OperationOf final : public ControlOperation {
public:
    using Arguments = typename Policy::Arguments;
    using IDriver = KvZANCommon::IDriver;

    OperationOf(ControlHost& host, Policy policy)
        : ControlOperation(Policy::NAME, Policy::KIND, host)
        , m_policy(std::move(policy)) {}

    /// What the device has; nothing while that is not known.
    [[nodiscard]] const std::optional<Arguments>& GetCarriedOut() const { return m_carriedOut; }
    /// What the device is getting, until it has confirmed it; null while it gets nothing.
    [[nodiscard]] const Arguments* GetBeingSent() const {
        return IsUnderWay() && (m_phase == EPhase::SET || m_phase == EPhase::CONFIRM) ? &m_wanted : nullptr;
    }
    void SetCarriedOut(const Arguments& arguments) { m_carriedOut = arguments; }
    /// The device has something else now.
    void ForgetCarriedOut() { m_carriedOut.reset(); }

    void WishAgain() override {
        m_isWaiting = !m_host.isConnected;
        if (!m_host.isConnected) {
            return;
        }
        Arguments wanted{};
        WishChange change;
        const EWish wish = m_policy.Read(wanted, change);
        if (wish == EWish::REFUSED) {
            RefuseUnsent(wanted, change);
        } else if (wish == EWish::SEND) {
            if (!change.reason.isEmpty()) {
                m_report.Tell(change.asked, Policy::Describe(wanted), change.reason);
            }
            if (IsUnderWay()) {
                m_isWaiting = IsForOtherDevice() || m_phase == EPhase::ASK || wanted != m_wanted;
            } else if (wanted != m_carriedOut && wanted != m_refused && MayCall()) {
                Begin(std::move(wanted));
            }
        }
    }

    void Forget() override {
        ControlOperation::Forget();
        m_carriedOut.reset();
    }

    void CarryOut(IDriver& driver) override {
        if (m_phase == EPhase::SET) {
            m_result = Policy::Call(driver, m_wanted, m_callNumber);
            m_error = m_result == 0 ? QString() : TakeLastError(driver, m_result);
        } else if constexpr (CAN_ASK) {
            m_isAnswered = Policy::Ask(driver, m_answer, m_callNumber);
            if (!m_isAnswered) {
                driver.ClearLastError();
            }
        }
        m_hasReturned = true;
    }

    void TakeAnswer() override {
        if (!Return()) {
            m_host.OnSettled(*this);
            return;
        }
        if (m_phase == EPhase::SET) {
            TakeResult();
        } else {
            TakeState();
        }
    }

private:
    enum class EPhase {
        SET,     ///< sends the wish
        CONFIRM, ///< asks what the device has made of it
        RECOVER, ///< asks what it has, because it has refused it
        ASK      ///< the same, because the wish could not even be sent
    };
    static constexpr bool CAN_ASK = requires(IDriver & driver, Arguments& arguments) {
        Policy::Ask(driver, arguments, std::size_t());
    };

    void ForgetRefused() override { m_refused.reset(); }

    void Begin(Arguments wanted) {
        m_wanted = std::move(wanted);
        m_phase = EPhase::SET;
        m_callNumber = 0;
        m_callCount = Policy::CountCalls(m_wanted);
        SendCall(m_kind);
    }

    /// A wish that the device cannot do goes back to what it has, about which it is asked unless that is
    /// known.
    void RefuseUnsent(const Arguments& wanted, const WishChange& change) {
        const bool isBeingSent = IsUnderWay() && (m_phase == EPhase::SET || m_phase == EPhase::CONFIRM);
        const std::optional<Arguments> has = isBeingSent ? std::optional(m_wanted) : m_carriedOut;
        if (CAN_ASK && has && Policy::Describe(*has) == change.asked) {
            return; // the device has it all the same, as it has told
        }
        Show(has, change.asked, change.reason);
        if (CAN_ASK && !has && MayCall()) {
            m_asked = change.asked;
            m_error = change.reason;
            Query(EPhase::ASK, wanted);
        }
    }

    void SendCall(DriverCall kind) {
        m_hasReturned = false;
        m_isAnswered = false;
        Send(kind);
    }

    void TakeResult() {
        if constexpr (Policy::IS_PARTLY_DONE) {
            m_host.OnPartlyDone(*this);
        }
        if (!m_hasReturned) {
            m_result = -1;
            m_error = QStringLiteral("the driver threw an exception");
        }
        m_isUnsupported = m_result == KvZANCommon::NullDriver::NOT_SUPPORTED;
        if (m_result == 0 && ++m_callNumber < m_callCount) {
            SendCall(m_kind);
        } else if (m_result == 0) {
            m_carriedOut = m_wanted;
            m_refused.reset();
            SetKnown(true);
            if (CAN_ASK && !Policy::IS_PARTLY_DONE && !m_isWaiting) {
                Query(EPhase::CONFIRM, m_wanted);
            } else {
                Settle(true);
            }
        } else {
            m_refused = m_wanted;
            m_asked = Policy::Describe(m_wanted);
            if (CAN_ASK) {
                Query(EPhase::RECOVER, m_carriedOut.value_or(m_wanted));
            } else {
                GoBack();
                Settle(false);
            }
        }
    }

    /// \param base for what the device does not say
    void Query(EPhase phase, const Arguments& base) {
        m_phase = phase;
        m_answer = base;
        m_callNumber = 0;
        if constexpr (CAN_ASK) {
            m_callCount = Policy::CountQuestions(base);
        }
        SendCall(DriverCall::Query);
    }

    void TakeState() {
        if (m_isAnswered && ++m_callNumber < m_callCount) {
            SendCall(DriverCall::Query);
            return;
        }
        if (m_phase != EPhase::CONFIRM) {
            if (m_isAnswered) {
                m_carriedOut = m_answer;
                Show(m_carriedOut, m_asked, m_error);
            } else {
                GoBack();
            }
        } else if (m_isAnswered && m_answer != m_wanted) {
            m_carriedOut = m_answer;
            Show(m_carriedOut, Policy::Describe(m_wanted), QStringLiteral("the device has made this of it"));
        }
        Settle(m_phase == EPhase::CONFIRM);
    }

    /// After a refusal: to what was carried out last.
    void GoBack() {
        if constexpr (Policy::IS_PARTLY_DONE) {
            Show(m_carriedOut ? m_carriedOut : Arguments{}, m_asked, m_error);
            SetKnown(false); // until all of that is carried out again
            m_carriedOut.reset();
            m_isWaiting = true;
        } else {
            Show(m_carriedOut, m_asked, m_error);
        }
    }

    /// Shows what the device has, unless something else is wished meanwhile.
    void Show(const std::optional<Arguments>& has, const QString& asked, const QString& reason) {
        m_report.Tell(asked, has ? Policy::Describe(*has) : QString(), reason);
        SetKnown(has.has_value());
        if (has && !m_isWaiting) {
            m_policy.Show(*has);
        }
    }

    void Settle(bool isCarriedOut) {
        if (isCarriedOut) {
            m_host.OnCarriedOut(*this);
        }
        m_host.OnSettled(*this);
    }

    Policy m_policy;
    std::optional<Arguments> m_carriedOut;
    std::optional<Arguments> m_refused;
    QString m_asked; // what was refused last
    // Used by the driver's thread while it is under way.
    EPhase m_phase = EPhase::SET;
    Arguments m_wanted{};
    Arguments m_answer{};
    std::size_t m_callNumber = 0;
    std::size_t m_callCount = 1;
    long m_result = 0;
    QString m_error;
    bool m_hasReturned = false;
    bool m_isAnswered = false;
};

} // namespace ZANServer
