#pragma once

#include <QtGlobal>

/// One processed bearing as the value tree carries it. Azimuths count clockwise, as the driver delivers them:
/// from the platform's bow while there is a heading, else from true north.
///
/// A member holds a value only after it has been set; until then it reads as 0 and `IsValueValid` is false.
/// The setters check nothing; the ranges stated here are those that the users of a bearing rely on.
class BearingResult {
public:
    /// The members by index, as `IsValueValid` takes them.
    enum Member : unsigned {
        FREQUENCY = 0,
        LEVEL = 1,
        AZIMUTH = 2,
        ELEVATION = 3,
        QUALITY = 4,
        TIME_STAMP = 5
    };
    static constexpr unsigned MEMBER_COUNT = 6;

    /// Whether a member holds a value; false for an index that names no member.
    [[nodiscard]] bool IsValueValid(unsigned index) const {
        return index < MEMBER_COUNT && (m_valid >> index & 1U) != 0;
    }

    /// Hz.
    [[nodiscard]] double GetFrequency() const { return m_frequency; }
    void SetFrequency(double frequency) { Set(m_frequency, frequency, FREQUENCY); }
    /// Hundredths of a dB.
    [[nodiscard]] qint16 GetLevel() const { return m_level; }
    void SetLevel(qint16 level) { Set(m_level, level, LEVEL); }
    /// Tenths of a degree, 0 to 3599.
    [[nodiscard]] quint16 GetAzimuth() const { return m_azimuth; }
    void SetAzimuth(quint16 azimuth) { Set(m_azimuth, azimuth, AZIMUTH); }
    /// Tenths of a degree above the horizon.
    [[nodiscard]] qint16 GetElevation() const { return m_elevation; }
    void SetElevation(qint16 elevation) { Set(m_elevation, elevation, ELEVATION); }
    /// 1 to 100; 0 and below: the bearing is rejected.
    [[nodiscard]] qint16 GetQuality() const { return m_quality; }
    void SetQuality(qint16 quality) { Set(m_quality, quality, QUALITY); }
    /// Milliseconds since 1970-01-01 00:00:00 UTC, as `Tolm::DateTime` takes them.
    [[nodiscard]] quint64 GetTimeStamp() const { return m_timeStamp; }
    void SetTimeStamp(quint64 timeStamp) { Set(m_timeStamp, timeStamp, TIME_STAMP); }

    bool operator==(const BearingResult&) const = default;

private:
    template <class T>
    void Set(T& member, T value, Member index) {
        member = value;
        m_valid |= 1U << index;
    }

    double m_frequency = 0.0;
    quint64 m_timeStamp = 0;
    unsigned m_valid = 0;
    qint16 m_level = 0;
    quint16 m_azimuth = 0;
    qint16 m_elevation = 0;
    qint16 m_quality = 0;
};
