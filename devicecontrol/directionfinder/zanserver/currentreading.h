#pragma once

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <chrono>
#include <optional>
#include <vector>

namespace ZANServer {

/// The current reading of one quantity that several receivers may report: nothing once the last one is older
/// than its age limit.
///
/// Age counts from the arrival, on the monotonic clock that the caller reads: the receivers' own times decide
/// only whether a reading is a new one. Of several receivers the first one with a reading is kept until its
/// last one has aged out, so that two of them never take turns.
template <class T>
class CurrentReading {
public:
    using Milliseconds = std::chrono::milliseconds;

    /// \param receiver the only one whose readings count; empty: any
    explicit CurrentReading(Milliseconds maxAge, QString receiver = {})
        : m_maxAge(maxAge)
        , m_only(std::move(receiver)) {}

    /// Takes a reading that has arrived now, if it is a new one of the receiver in use.
    /// \param time the receiver's own, milliseconds since 1970; nothing: each reading is a new one
    void Take(const QString& receiver, const std::optional<quint64>& time, const T& reading,
              Milliseconds now) {
        // The times of the others are noted, too: one that stands still must not count once its turn comes.
        if (IsWanted(receiver) && IsNew(receiver, time, now) && Listens(receiver, now)) {
            m_receiver = receiver;
            m_reading = reading;
            m_arrival = now;
        }
    }

    /// The receiver reports that it has no reading. It stays the one in use until its last one has aged out.
    void Lose(const QString& receiver) {
        if (receiver == m_receiver) {
            m_reading.reset();
        }
    }

    /// The reading, unless it is too old now.
    [[nodiscard]] std::optional<T> Get(Milliseconds now) const {
        return IsKept(now) ? m_reading : std::nullopt;
    }
    /// The age of what `Get` returns.
    [[nodiscard]] std::optional<Milliseconds> GetAge(Milliseconds now) const {
        return Get(now) ? std::optional(now - *m_arrival) : std::nullopt;
    }
    /// How long what `Get` returns now will do so without a further reading.
    [[nodiscard]] std::optional<Milliseconds> GetRest(Milliseconds now) const {
        return Get(now) ? std::optional(*m_arrival + m_maxAge - now) : std::nullopt;
    }
    /// Whether a report of this receiver would count now.
    [[nodiscard]] bool Listens(const QString& receiver, Milliseconds now) const {
        return IsWanted(receiver) && (receiver == m_receiver || !IsKept(now));
    }
    /// The receiver whose readings are taken; empty before the first one.
    [[nodiscard]] const QString& GetReceiver() const { return m_receiver; }

private:
    struct LastTime {
        QString receiver;
        quint64 time = 0;
        Milliseconds arrival{};
    };

    [[nodiscard]] bool IsWanted(const QString& receiver) const {
        return m_only.isEmpty() || receiver == m_only;
    }
    [[nodiscard]] bool IsKept(Milliseconds now) const { return m_arrival && now - *m_arrival <= m_maxAge; }

    /// A time that stands still makes no new reading, however long it does. One that goes back is that of a
    /// late report until the reading has aged out; after that the receiver has corrected its clock.
    bool IsNew(const QString& receiver, const std::optional<quint64>& time, Milliseconds now) {
        constexpr std::size_t MOST_RECEIVERS = 16; // gpsd itself has fewer
        if (!time) {
            return true;
        }
        const auto last = std::ranges::find(m_lastTimes, receiver, &LastTime::receiver);
        if (last == m_lastTimes.end()) {
            if (m_lastTimes.size() == MOST_RECEIVERS) {
                m_lastTimes.erase(m_lastTimes.begin());
            }
            m_lastTimes.push_back({receiver, *time, now});
            return true;
        }
        if (*time == last->time || (*time < last->time && now - last->arrival <= m_maxAge)) {
            return false;
        }
        *last = {receiver, *time, now};
        return true;
    }

    Milliseconds m_maxAge;
    QString m_only;
    QString m_receiver;
    std::optional<T> m_reading;
    std::optional<Milliseconds> m_arrival; // of the receiver's last reading
    std::vector<LastTime> m_lastTimes;
};

} // namespace ZANServer
