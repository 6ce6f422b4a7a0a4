#pragma once

/// A channel of traffic control that the operator watches. The setters check nothing.
class TrafficControlFrequency {
public:
    [[nodiscard]] int GetChannelID() const { return m_channelID; }
    void SetChannelID(int channelID) { m_channelID = channelID; }
    /// Hz.
    [[nodiscard]] double GetFrequency() const { return m_frequency; }
    void SetFrequency(double frequency) { m_frequency = frequency; }
    [[nodiscard]] bool IsAlarmChannel() const { return m_isAlarmChannel; }
    void SetIsAlarmChannel(bool isAlarmChannel) { m_isAlarmChannel = isAlarmChannel; }

    bool operator==(const TrafficControlFrequency&) const = default;

private:
    int m_channelID = 0;
    double m_frequency = 0.0;
    bool m_isAlarmChannel = false;
};
