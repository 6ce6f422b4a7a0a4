#pragma once

#include "zancommon/freqrangedefinition.h"
#include "zancommon/idriver.h"
#include "zancommon/idrivercallback.h"
#include "zancommon/ilegacydriver.h"
#include "zancommon/ilegacydrivercallback.h"

#include <array>
#include <tuple>

// The operations of the driver interfaces, each interface in its order. A row is
//     KIND(identifier, result, name, (parameters), (arguments), const)
// where the identifier tells overloads apart and KIND is the macro to put the row through: one for operations
// without a body and one for operations with a default.

#define ZAN_OPERATIONS_UNTIL_SEARCH_CONTINUE(ABSTRACT, DEFAULTED)                                            \
    ABSTRACT(Initialize, int, Initialize, (std::string & address, bool simulation), (address, simulation), ) \
    ABSTRACT(GetGPSBuffer, void, GetGPSBuffer, (GPSStruct & buffer), (buffer), )                             \
    ABSTRACT(GetLastError, QString, GetLastError, (), (), )                                                  \
    ABSTRACT(ClearLastError, void, ClearLastError, (), (), )                                                 \
    ABSTRACT(SetMode, long, SetMode, (EMode mode), (mode), )                                                 \
    ABSTRACT(Reset, long, Reset, (), (), )                                                                   \
    ABSTRACT(Calibrate, long, Calibrate, (unsigned long converter), (converter), )                           \
    ABSTRACT(BIT, long, BIT, (long& result, bool full, bool repeat), (result, full, repeat), )               \
    ABSTRACT(SetTest, long, SetTest, (QString command), (command), )                                         \
    ABSTRACT(SetRfAttenuator, long, SetRfAttenuator, (unsigned long converter, long attenuation),            \
             (converter, attenuation), )                                                                     \
    ABSTRACT(SetFrequency, long, SetFrequency, (double frequency), (frequency), )                            \
    ABSTRACT(SetGainControl, long, SetGainControl, (GainControlStruct settings), (settings), )               \
    ABSTRACT(SetFilterSettings, long, SetFilterSettings, (FilterSettingsStruct settings), (settings), )      \
    ABSTRACT(SetFilterSettingsOfRange, long, SetFilterSettings, (FreqRangeDefinition * range), (range), )    \
    ABSTRACT(SetAverageTime, long, SetAverageTime, (double time), (time), )                                  \
    ABSTRACT(ResetAverage, long, ResetAverage, (), (), )                                                     \
    ABSTRACT(AddFreqRange, long, AddFreqRange, (FreqRangeDefinition * range), (range), )                     \
    ABSTRACT(SetGPSTimeUsage, long, SetGPSTimeUsage, (bool use), (use), )                                    \
    ABSTRACT(GetGPSTimeUsage, long, GetGPSTimeUsage, (bool& use), (use), )                                   \
    ABSTRACT(SetAntennaSetup, long, SetAntennaSetup, (AntennaSetupStruct setup), (setup), )                  \
    ABSTRACT(SetConverterSetup, long, SetConverterSetup, (ConverterSetupStruct setup), (setup), )            \
    ABSTRACT(ReadCompass, long, ReadCompass, (unsigned long compass, unsigned long& value),                  \
             (compass, value), )                                                                             \
    ABSTRACT(SetAudioVolume, long, SetAudioVolume, (int volume), (volume), )                                 \
    ABSTRACT(SetExternalReference, long, SetExternalReference, (bool use), (use), )                          \
    ABSTRACT(SetHoldTime, long, SetHoldTime, (int holdTime, int signalTime, int pauseTime),                  \
             (holdTime, signalTime, pauseTime), )                                                            \
    ABSTRACT(SearchHold, long, SearchHold, (), (), )                                                         \
    ABSTRACT(SearchContinue, long, SearchContinue, (unsigned long channel), (channel), )

#define ZAN_OPERATIONS_FROM_GET_FREQUENCY(ABSTRACT, DEFAULTED)                                               \
    ABSTRACT(GetFrequency, long, GetFrequency, (double& frequency), (frequency), )                           \
    ABSTRACT(GetGainControl, long, GetGainControl, (GainControlStruct & settings), (settings), )             \
    ABSTRACT(GetMeasureSettings, long, GetMeasureSettings,                                                   \
             (double& frequency, DFSettingsStruct& dfSettings, DEMSettingsStruct& demSettings),              \
             (frequency, dfSettings, demSettings), )                                                         \
    ABSTRACT(GetFilterSettings, long, GetFilterSettings, (FilterSettingsStruct & settings), (settings), )    \
    ABSTRACT(GetAverageTime, long, GetAverageTime, (double& time), (time), )                                 \
    ABSTRACT(GetAntennaProperty, long, GetAntennaProperty,                                                   \
             (unsigned long antenna, AntennaPropertyStruct& property, AntennaSubRangeStruct& subRange,       \
              int& subRangeCount),                                                                           \
             (antenna, property, subRange, subRangeCount), )                                                 \
    ABSTRACT(GetAntennaSetup, long, GetAntennaSetup, (unsigned long antenna, AntennaSetupStruct& setup),     \
             (antenna, setup), )                                                                             \
    ABSTRACT(GetConverterProperty, long, GetConverterProperty,                                               \
             (unsigned long converter, ConverterSetupStruct& property), (converter, property), )             \
    ABSTRACT(GetConverterSetup, long, GetConverterSetup,                                                     \
             (unsigned long converter, ConverterSetupStruct& setup), (converter, setup), )                   \
    ABSTRACT(GetCompassProperty, long, GetCompassProperty,                                                   \
             (unsigned long compass, CompassPropertyStruct& property), (compass, property), )                \
    ABSTRACT(AlterMeasureSetting, long, AlterMeasureSetting,                                                 \
             (double frequency, DFSettingsStruct dfSettings, DEMSettingsStruct demSettings),                 \
             (frequency, dfSettings, demSettings), )                                                         \
    ABSTRACT(AlterMeasureSettingOfRange, long, AlterMeasureSetting, (FreqRangeDefinition * range),           \
             (range), )                                                                                      \
    ABSTRACT(DeleteAllChannels, long, DeleteAllChannels, (), (), )                                           \
    ABSTRACT(SetSkip, long, SetSkip, (long firstChannel, long lastChannel, bool skip),                       \
             (firstChannel, lastChannel, skip), )                                                            \
    ABSTRACT(SetSimulationScan, void, SetSimulationScan,                                                     \
             (unsigned range, unsigned firstChannel, unsigned lastChannel, int azimuth, int level,           \
              unsigned rangeCount, ChannelRangeStruct* ranges),                                              \
             (range, firstChannel, lastChannel, azimuth, level, rangeCount, ranges), )                       \
    DEFAULTED(SetAudioFormat, void, SetAudioFormat, (int sampleRate, int sampleBits, int channelCount),      \
              (sampleRate, sampleBits, channelCount), )                                                      \
    ABSTRACT(GetMaxChannelCount, long, GetMaxChannelCount, (EMode mode), (mode), )                           \
    DEFAULTED(StartDRData, bool, StartDRData, (bool start, int channel), (start, channel), )                 \
    ABSTRACT(SetSRNumOfEmitters, long, SetSRNumOfEmitters, (bool automatic, long count),                     \
             (automatic, count), )                                                                           \
    ABSTRACT(SetScanAveraging, long, SetScanAveraging, (unsigned long count), (count), )                     \
    ABSTRACT(GetReadCount, long, GetReadCount, (), (), )                                                     \
    DEFAULTED(GetBufferCount, long, GetBufferCount, (), (), )                                                \
    DEFAULTED(RestartMassData, long, RestartMassData, (), (), )                                              \
    ABSTRACT(RequestHWStatus, long, RequestHWStatus, (QList<ComponentInfo*> * components), (components), )   \
    ABSTRACT(GetSweepTime, long, GetSweepTime, (long& time), (time), )                                       \
    ABSTRACT(SetSyncTimes, long, SetSyncTimes, (unsigned long long& start, long interval),                   \
             (start, interval), )                                                                            \
    ABSTRACT(GetZANTime, long, GetZANTime, (unsigned long long& time), (time), )                             \
    ABSTRACT(SetGSMSetting, long, SetGSMSetting,                                                             \
             (double frequency, FreqRangeDefinition* range, GSMSettingsStruct& settings),                    \
             (frequency, range, settings), )                                                                 \
    ABSTRACT(FcbSynch, long, FcbSynch, (), (), )                                                             \
    ABSTRACT(EnableTimeSync, void, EnableTimeSync, (bool enable), (enable), )                                \
    ABSTRACT(SendCompassCommand, long, SendCompassCommand,                                                   \
             (unsigned long compass, const QString& command, QString& answer), (compass, command, answer), )

// The application's driver interface, 64 operations.
#define ZAN_DRIVER_OPERATIONS(ABSTRACT, DEFAULTED)                                                           \
    ABSTRACT(SetCallback, void, SetCallback, (IDriverCallback * callback), (callback), )                     \
    ZAN_OPERATIONS_UNTIL_SEARCH_CONTINUE(ABSTRACT, DEFAULTED)                                                \
    DEFAULTED(ReservedAfterSearch, void, ReservedAfterSearch, (), (), )                                      \
    ZAN_OPERATIONS_FROM_GET_FREQUENCY(ABSTRACT, DEFAULTED)                                                   \
    DEFAULTED(SetSyncTrigger, long, SetSyncTrigger, (bool on), (on), )                                       \
    ABSTRACT(SetCompassValue, long, SetCompassValue, (unsigned long value), (value), )                       \
    DEFAULTED(GetSyncMissedCount, long, GetSyncMissedCount, (), (), const)                                   \
    DEFAULTED(ReservedAtEnd, void, ReservedAtEnd, (), (), )

// The legacy driver interface, 64 operations.
#define ZAN_LEGACY_DRIVER_OPERATIONS(ABSTRACT, DEFAULTED)                                                    \
    DEFAULTED(ReservedFirst, void, ReservedFirst, (), (), )                                                  \
    DEFAULTED(ReservedSecond, void, ReservedSecond, (), (), )                                                \
    ZAN_OPERATIONS_UNTIL_SEARCH_CONTINUE(ABSTRACT, DEFAULTED)                                                \
    DEFAULTED(ReservedAfterSearch, void, ReservedAfterSearch, (), (), )                                      \
    ZAN_OPERATIONS_FROM_GET_FREQUENCY(ABSTRACT, DEFAULTED)                                                   \
    ABSTRACT(SetCompassValue, long, SetCompassValue, (unsigned long value), (value), )                       \
    DEFAULTED(GetSyncMissedCount, long, GetSyncMissedCount, (), (), const)                                   \
    DEFAULTED(SetSyncTrigger, long, SetSyncTrigger, (bool on), (on), )

// Both callback interfaces, 22 operations.
#define ZAN_CALLBACK_OPERATIONS(OPERATION)                                                                   \
    OPERATION(fillTDMABuffer, void, fillTDMABuffer,                                                          \
              (long range, unsigned long long& time, unsigned firstChannel, unsigned count,                  \
               Bearing* bearings, StatusStruct& status),                                                     \
              (range, time, firstChannel, count, bearings, status), )                                        \
    OPERATION(fillScanBuffer, void, fillScanBuffer,                                                          \
              (long range, unsigned long long& time, unsigned firstChannel, unsigned count,                  \
               Bearing* bearings, StatusStruct& status),                                                     \
              (range, time, firstChannel, count, bearings, status), )                                        \
    OPERATION(fillFFMBuffer, void, fillFFMBuffer,                                                            \
              (const FFMData& data, StatusStruct& status, bool averaged), (data, status, averaged), )        \
    OPERATION(fillFFMSRBuffer, void, fillFFMSRBuffer, (SuperResolutionStruct & data, StatusStruct & status), \
              (data, status), )                                                                              \
    OPERATION(fillSpectrumBuffer, void, fillSpectrumBuffer, (const short* values, int count),                \
              (values, count), )                                                                             \
    OPERATION(fillSRSpectrumBuffer, void, fillSRSpectrumBuffer,                                              \
              (short* values, int count, unsigned long long& time), (values, count, time), )                 \
    OPERATION(fillTestValuesBuffer, void, fillTestValuesBuffer, (double* values, unsigned short count),      \
              (values, count), )                                                                             \
    OPERATION(fillAudioBuffer, void, fillAudioBuffer, (void* samples, unsigned byteCount),                   \
              (samples, byteCount), )                                                                        \
    OPERATION(fillAudioBufferTime, void, fillAudioBufferTime, (void* times, unsigned byteCount),             \
              (times, byteCount), )                                                                          \
    OPERATION(fillAudioFormat, void, fillAudioFormat, (void* format, unsigned byteCount),                    \
              (format, byteCount), )                                                                         \
    OPERATION(fillAudioLevel, void, fillAudioLevel, (double level), (level), )                               \
    OPERATION(fillGPSData, void, fillGPSData,                                                                \
              (double latitude, double longitude, unsigned long long time, bool valid, int satelliteCount,   \
               int quality),                                                                                 \
              (latitude, longitude, time, valid, satelliteCount, quality), )                                 \
    OPERATION(reportError, void, reportError, (ErrorStruct & error), (error), )                              \
    OPERATION(InitSimulation, void, InitSimulation,                                                          \
              (INITStruct & setup, unsigned rangeCount, ChannelRangeStruct* ranges),                         \
              (setup, rangeCount, ranges), )                                                                 \
    OPERATION(setSearchFrequency, void, setSearchFrequency, (double frequency), (frequency), )               \
    OPERATION(getOperateMode, void, getOperateMode, (EMode & mode), (mode), )                                \
    OPERATION(ReportBITResult, void, ReportBITResult, (ErrorStruct & result), (result), )                    \
    OPERATION(SetCommandLog, void, SetCommandLog, (QString & line), (line), )                                \
    OPERATION(GetDevAddress, QString, GetDevAddress, (), (), )                                               \
    OPERATION(CloseDataLink, void, CloseDataLink, (), (), )                                                  \
    OPERATION(SetEndOfScan, void, SetEndOfScan, (bool end), (end), )                                         \
    OPERATION(fillSyncTimestamp, void, fillSyncTimestamp, (long long time), (time), )

// The operations that the adapter passes down.
#define ZAN_FORWARDED_OPERATIONS(OPERATION)                                                                  \
    ZAN_OPERATIONS_UNTIL_SEARCH_CONTINUE(OPERATION, OPERATION)                                               \
    ZAN_OPERATIONS_FROM_GET_FREQUENCY(OPERATION, OPERATION)                                                  \
    OPERATION(SetSyncTrigger, long, SetSyncTrigger, (bool on), (on), )                                       \
    OPERATION(SetCompassValue, long, SetCompassValue, (unsigned long value), (value), )                      \
    OPERATION(GetSyncMissedCount, long, GetSyncMissedCount, (), (), const)

// Places in the order, counted from 0: DriverOperation::Initialize is 1, LegacyOperation::Initialize is 2.
#define ZAN_IDENTIFIER(identifier, ...) identifier,
enum class DriverOperation { ZAN_DRIVER_OPERATIONS(ZAN_IDENTIFIER, ZAN_IDENTIFIER) };
enum class LegacyOperation { ZAN_LEGACY_DRIVER_OPERATIONS(ZAN_IDENTIFIER, ZAN_IDENTIFIER) };
enum class CallbackOperation { ZAN_CALLBACK_OPERATIONS(ZAN_IDENTIFIER) };
#undef ZAN_IDENTIFIER

namespace KvZANCommon {

// A pointer to each operation, in the order of its interface.
#define ZAN_MEMBER(identifier, result, name, parameters, arguments, constness)                               \
    static_cast<result(Interface::*) parameters constness>(&Interface::name),
template <class Interface>
inline constexpr std::tuple driverMembers{ZAN_DRIVER_OPERATIONS(ZAN_MEMBER, ZAN_MEMBER)};
template <class Interface>
inline constexpr std::tuple legacyDriverMembers{ZAN_LEGACY_DRIVER_OPERATIONS(ZAN_MEMBER, ZAN_MEMBER)};
template <class Interface>
inline constexpr std::tuple callbackMembers{ZAN_CALLBACK_OPERATIONS(ZAN_MEMBER)};
#undef ZAN_MEMBER

// Whether each operation has a default, in the order of its interface.
#define ZAN_NO(...) false,
#define ZAN_YES(...) true,
inline constexpr std::array driverDefaults{ZAN_DRIVER_OPERATIONS(ZAN_NO, ZAN_YES)};
inline constexpr std::array legacyDriverDefaults{ZAN_LEGACY_DRIVER_OPERATIONS(ZAN_NO, ZAN_YES)};
#undef ZAN_NO
#undef ZAN_YES

} // namespace KvZANCommon
