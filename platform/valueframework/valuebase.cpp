#include "valueframework/valuebase.h"

#include "valueframework/streamformat.h"
#include "valueframework/tree.h"
#include "valueframework/valueformats.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;
using ZANPlatform::ObservablePtr;
using ZANPlatform::ReadInteger;

/// Delivers the changes of a value at intervals.
struct ValueBase::Timing {
    struct Override {
        int identifier;
        unsigned milliseconds;
    };
    struct Notice {
        TChangeCode code;
        ObserverPtr originator; // it may be destroyed before the delivery
    };

    [[nodiscard]] unsigned Interval() const {
        const auto shortest =
            std::min_element(overrides.begin(), overrides.end(), [](const Override& a, const Override& b) {
                return a.milliseconds < b.milliseconds;
            });
        return shortest == overrides.end() ? updateTime : shortest->milliseconds;
    }

    /// Starts the timer for the rest of the interval that began with the first waiting notice.
    void Start() {
        constexpr qint64 LONGEST = std::numeric_limits<int>::max();
        timer.start(static_cast<int>(std::clamp<qint64>(Interval() - waitingSince.elapsed(), 0, LONGEST)));
    }

    /// Adds a notice to the next delivery. Notices of one code are delivered once; when two originators
    /// caused them, both are notified, because neither has seen the other's change.
    void Note(TChangeCode code, IObserver* originator) {
        if (waiting.empty()) {
            waitingSince.start();
        }
        const auto same = std::find_if(waiting.begin(), waiting.end(),
                                       [code](const Notice& notice) { return notice.code == code; });
        if (same == waiting.end()) {
            waiting.push_back({code, originator});
        } else if (same->originator.get() != originator) {
            same->originator = {};
        }
    }

    unsigned updateTime = 0;
    std::vector<Override> overrides;
    int lastIdentifier = 0;
    std::vector<Notice> waiting;
    QElapsedTimer waitingSince;
    QTimer timer;
};

ValueBase::ValueBase() = default;

ValueBase::ValueBase(const ValueBase& other)
    : ITreeItem(other)
    , m_state(other.m_state) {}

ValueBase::~ValueBase() = default;

bool ValueBase::SetName(const QString& name, IObserver* originator) {
    if (name == GetName()) {
        return !name.isEmpty();
    }
    if (name.isEmpty() || name.contains(u'/')) {
        return false;
    }
    if (GetParent() && !Tree::Instance()->Rename(this, name)) {
        return false;
    }
    m_name = name;
    Changed(originator);
    return true;
}

void ValueBase::SetState(TValueState state, IObserver* originator) {
    if (m_state != state) {
        m_state = state;
        Changed(originator);
    }
}

QString ValueBase::GetTypeName() const {
    static const std::array<QString, 8> names{u"Bool"_s,      u"Int"_s,       u"Double"_s,  u"String"_s,
                                              u"TimeStamp"_s, u"Selection"_s, u"Bearing"_s, u"List"_s};
    return names.at(static_cast<std::size_t>(GetType()));
}

void ValueBase::StartTransaction(IObserver* /*originator*/) {
    ++m_transactions;
}

bool ValueBase::EndTransaction(TChangeCode code, IObserver* originator) {
    if (m_transactions == 0) {
        return false;
    }
    --m_transactions;
    HasChanged(code, originator);
    return true;
}

void ValueBase::EndTransaction(const std::vector<TChangeCode>& codes, const ObserverPtr& originator) {
    if (m_transactions == 0) {
        return; // already ended by a call without a matching start
    }
    const ObservablePtr<ValueBase> self(this);
    --m_transactions;
    for (const TChangeCode code : codes) {
        if (self) {
            HasChanged(code, originator.get());
        }
    }
    if (self && m_pTiming) {
        Schedule(); // also without a code: what waited for the end of the group is delivered
    }
}

ValueTransaction ValueBase::CreateTransaction(std::initializer_list<TChangeCode> codes,
                                              IObserver* originator) {
    return {*this, codes, originator};
}

void ValueBase::HasChanged(TChangeCode code, IObserver* originator) {
    if (m_transactions == 0) {
        Deliver(code, originator);
    }
}

void ValueBase::Deliver(TChangeCode code, IObserver* originator) {
    if (!m_pTiming) {
        NotifyObservers(code, originator);
        return;
    }
    m_pTiming->Note(code, originator);
    if (!m_pTiming->timer.isActive()) {
        Schedule();
    }
}

ValueBase::Timing& ValueBase::GetTiming() {
    if (!m_pTiming) {
        m_pTiming = std::make_unique<Timing>();
        m_pTiming->timer.setSingleShot(true);
        QObject::connect(&m_pTiming->timer, &QTimer::timeout, &m_pTiming->timer,
                         [this] { DeliverWaiting(); });
    }
    return *m_pTiming;
}

void ValueBase::DeliverWaiting() {
    if (m_transactions > 0) {
        return; // its end delivers
    }
    const ObservablePtr<ValueBase> self(this);
    for (const Timing::Notice& notice : std::exchange(m_pTiming->waiting, {})) {
        if (!self) {
            return;
        }
        NotifyObservers(notice.code, notice.originator.get());
    }
}

void ValueBase::Schedule() {
    if (m_pTiming->waiting.empty()) {
        return;
    }
    if (m_pTiming->Interval() == 0) {
        m_pTiming->timer.stop();
        DeliverWaiting();
    } else {
        m_pTiming->Start();
    }
}

void ValueBase::SetUpdateTimerTime(unsigned milliseconds) {
    GetTiming().updateTime = milliseconds;
    Schedule();
}

int ValueBase::OverrideTimer(unsigned milliseconds) {
    Timing& timing = GetTiming();
    timing.overrides.push_back({++timing.lastIdentifier, milliseconds});
    const int identifier = timing.lastIdentifier;
    Schedule();
    return identifier;
}

void ValueBase::KillOverrideTimer(int identifier) {
    std::erase_if(GetTiming().overrides,
                  [identifier](const Timing::Override& each) { return each.identifier == identifier; });
    Schedule();
}

void ValueBase::SetDeleteObserver(ITreeItem* item) {
    m_pDeleteObserver = item;
}

ITreeItem* ValueBase::GetDeleteObserver() const {
    return m_pDeleteObserver.get();
}

int ValueBase::QueryRemoval(IObserver* /*observer*/) const {
    return m_isBeingRemoved ? 1 : 0;
}

void ValueBase::AnnounceRemoval() {
    NotifyObservers(TChangeCode::GoingAway, nullptr);
}

QString ValueBase::GetCommandStringForRecording(unsigned timeMs) const {
    QString line = QString::number(timeMs) + u'\t';
    AppendEscaped(line, GetPath());
    line += u'\t';
    AppendEscaped(line, GetStringValue());
    return line;
}

QString ValueBase::GetCommandStringForTransmission(unsigned sequence) const {
    // One form for both, so that a recording can be sent to another process.
    return GetCommandStringForRecording(sequence);
}

bool ValueBase::SetCommandString(const QString& command, IObserver* originator) {
    const QList<QStringView> fields = QStringView(command).split(u'\t');
    if (fields.size() != 3) {
        return false;
    }
    unsigned timeOrSequence = 0; // for the program that replays; the value takes the content at any time
    QString path;
    QString text;
    return ReadInteger(fields[0].toString(), timeOrSequence) && TakeEscaped(path, fields[1]) &&
           TakeEscaped(text, fields[2]) && path == GetPath() && SetStringValue(text, originator);
}

ValueTransaction::ValueTransaction(ValueBase& value, std::initializer_list<TChangeCode> codes,
                                   IObserver* originator)
    : m_pValue(&value)
    , m_codes(codes)
    , m_pOriginator(originator) {
    value.StartTransaction(originator);
}

ValueTransaction::ValueTransaction(ValueTransaction&& other) noexcept
    : m_pValue(std::exchange(other.m_pValue, {}))
    , m_codes(std::move(other.m_codes))
    , m_pOriginator(std::move(other.m_pOriginator)) {}

ValueTransaction::~ValueTransaction() {
    if (ValueBase* value = m_pValue.get()) {
        value->EndTransaction(m_codes, m_pOriginator);
    }
}
