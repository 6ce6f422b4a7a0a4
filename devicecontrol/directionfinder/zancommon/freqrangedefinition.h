#pragma once

#include "zancommon/alarmsettings.h"
#include "zancommon/driverrecords.h"
#include "zancommon_export.h"

#include <QString>

namespace KvZANCommon {

/// One frequency range (scan or channel range) of a measurement with the settings that apply inside it.
///
/// A plain record: the application fills it and passes a pointer to the driver; the application keeps it.
/// Nothing is checked or locked here.
class ZANCOMMON_EXPORT FreqRangeDefinition {
public:
    FreqRangeDefinition() = default;
    /// A range with the frequencies, channels and settings of the source, but without its name and its alarm
    /// settings: those belong only to the range that the user has created. Null gives a default range.
    explicit FreqRangeDefinition(const FreqRangeDefinition* source);

    /// Position in the list of ranges; -1: in no list.
    [[nodiscard]] int GetIndex() const { return m_index; }
    void SetIndex(int index) { m_index = index; }

    /// Frequencies in Hz.
    [[nodiscard]] double GetStartFreq() const { return m_startFreq; }
    void SetStartFreq(double frequency) { m_startFreq = frequency; }
    [[nodiscard]] double GetStepFreq() const { return m_stepFreq; }
    void SetStepFreq(double frequency) { m_stepFreq = frequency; }
    [[nodiscard]] double GetStopFreq() const { return m_stopFreq; }
    void SetStopFreq(double frequency) { m_stopFreq = frequency; }

    [[nodiscard]] QString GetName() const { return m_name; }
    void SetName(const QString& name) { m_name = name; }

    /// Channel numbers, as the device counts.
    [[nodiscard]] unsigned long GetFirstChannel() const { return m_firstChannel; }
    void SetFirstChannel(unsigned long channel) { m_firstChannel = channel; }
    [[nodiscard]] unsigned long GetLastChannel() const { return m_lastChannel; }
    void SetLastChannel(unsigned long channel) { m_lastChannel = channel; }

    /// \name Settings
    /// The setters copy; the references stay valid as long as the range.
    /// @{
    [[nodiscard]] DFSettingsStruct& GetDFSettings() { return m_dfSettings; }
    [[nodiscard]] const DFSettingsStruct& GetDFSettings() const { return m_dfSettings; }
    void SetDFSettings(const DFSettingsStruct& settings) { m_dfSettings = settings; }

    [[nodiscard]] DEMSettingsStruct& GetDEMSettings() { return m_demSettings; }
    [[nodiscard]] const DEMSettingsStruct& GetDEMSettings() const { return m_demSettings; }
    void SetDEMSettings(const DEMSettingsStruct& settings) { m_demSettings = settings; }

    [[nodiscard]] FilterSettingsStruct& GetFilterSettings() { return m_filterSettings; }
    [[nodiscard]] const FilterSettingsStruct& GetFilterSettings() const { return m_filterSettings; }
    void SetFilterSettings(const FilterSettingsStruct& settings) { m_filterSettings = settings; }

    [[nodiscard]] AlarmSettings& GetAlarmSettings() { return m_alarmSettings; }
    [[nodiscard]] const AlarmSettings& GetAlarmSettings() const { return m_alarmSettings; }
    void SetAlarmSettings(const AlarmSettings& settings) { m_alarmSettings = settings; }

    [[nodiscard]] GainControlStruct& GetGainSettings() { return m_gainSettings; }
    [[nodiscard]] const GainControlStruct& GetGainSettings() const { return m_gainSettings; }
    void SetGainSettings(const GainControlStruct& settings) { m_gainSettings = settings; }
    /// @}

    /// Average time in milliseconds; 0 at first. Not that of the DF settings, which is in seconds.
    [[nodiscard]] long GetAverageTime() const { return m_averageTime; }
    void SetAverageTime(int time) { m_averageTime = time; }

    /// The level threshold of the DF settings (dB; -1: not set): one value with two names. Only the lowest 32
    /// bits are kept.
    [[nodiscard]] long GetThreshold() const { return m_dfSettings.levelThreshold; }
    void SetThreshold(long threshold) { m_dfSettings.levelThreshold = static_cast<qint32>(threshold); }

private:
    int m_index = -1;
    double m_startFreq = 0.0;
    double m_stepFreq = 0.0;
    double m_stopFreq = 0.0;
    QString m_name;
    unsigned long m_firstChannel = 0;
    unsigned long m_lastChannel = 0;
    DFSettingsStruct m_dfSettings;
    DEMSettingsStruct m_demSettings;
    FilterSettingsStruct m_filterSettings;
    AlarmSettings m_alarmSettings;
    GainControlStruct m_gainSettings;
    qint32 m_averageTime = 0;
};

} // namespace KvZANCommon
