#pragma once

#include "zancommon/freqrangedefinition.h"
#include "zancommon/idriver.h"
#include "zanserver/controloperation.h"
#include "zanserver/controlvalues.h"

#include <QStringList>

#include <array>
#include <utility>
#include <vector>

/// How each wish becomes a call of the driver (`OperationOf` says what a policy is made of).
namespace ZANServer::ControlPolicies {

using KvZANCommon::IDriver;

/// What most of them have in common: one call, and nothing is left when it is refused.
template <DriverCall CALL>
struct SingleOf {
    static constexpr DriverCall KIND = CALL;
    static constexpr bool IS_PARTLY_DONE = false;
    template <class Arguments>
    static std::size_t CountCalls(const Arguments&) {
        return 1;
    }
    template <class Arguments>
    static std::size_t CountQuestions(const Arguments&) {
        return 1;
    }

    ControlValues* values;
};
using Single = SingleOf<DriverCall::Setting>;

/// Those with several calls.
struct Several {
    static constexpr DriverCall KIND = DriverCall::Setting;
    static constexpr bool IS_PARTLY_DONE = true;

    ControlValues* values;
};

struct GpsTime : Single {
    static constexpr QStringView NAME = u"GpsTime";
    using Arguments = bool;
    EWish Read(bool& use, WishChange& change) const;
    void Show(bool use) const;
    static QString Describe(bool use);
    static long Call(IDriver& driver, bool use, std::size_t) { return driver.SetGPSTimeUsage(use); }
    static bool Ask(IDriver& driver, bool& use, std::size_t) { return driver.GetGPSTimeUsage(use) == 0; }
};

/// Of each converter that the device has told of: its preamplifier.
struct Converters : Several {
    static constexpr QStringView NAME = u"Converters";
    struct Arguments {
        std::vector<KvZANCommon::ConverterSetupStruct> setups;
        /// The attenuation has an operation of its own.
        bool operator==(const Arguments& other) const;
    };
    EWish Read(Arguments& wanted, WishChange& change) const;
    void Show(const Arguments& arguments) const;
    static QString Describe(const Arguments& arguments);
    static std::size_t CountCalls(const Arguments& wanted) { return wanted.setups.size(); }
    static long Call(IDriver& driver, const Arguments& arguments, std::size_t number) {
        return driver.SetConverterSetup(arguments.setups[number]);
    }
    static std::size_t CountQuestions(const Arguments& arguments) { return arguments.setups.size(); }
    static bool Ask(IDriver& driver, Arguments& arguments, std::size_t number);
};

/// The setup of the antennas that both the device and the tree have.
struct Antennas : Several {
    static constexpr QStringView NAME = u"Antennas";
    struct Arguments {
        std::vector<KvZANCommon::AntennaSetupStruct> setups;
        std::vector<AntennaData> entries; ///< of the tree

        bool operator==(const Arguments& other) const { return setups == other.setups; }
    };
    EWish Read(Arguments& wanted, WishChange& change) const;
    void Show(const Arguments& arguments) const;
    static QString Describe(const Arguments& arguments);
    static std::size_t CountCalls(const Arguments& wanted) { return wanted.setups.size(); }
    static long Call(IDriver& driver, const Arguments& arguments, std::size_t number) {
        return driver.SetAntennaSetup(arguments.setups[number]);
    }
    static std::size_t CountQuestions(const Arguments& arguments) { return arguments.setups.size(); }
    static bool Ask(IDriver& driver, Arguments& arguments, std::size_t number);
};

struct Attenuation : Several {
    static constexpr QStringView NAME = u"Attenuation";
    struct Of {
        unsigned long converter = 0;
        bool isHf = false;
        long attenuation = 0; ///< dB
        bool operator==(const Of&) const = default;
    };
    using Arguments = std::vector<Of>;
    EWish Read(Arguments& wanted, WishChange& change) const;
    void Show(const Arguments& arguments) const;
    static QString Describe(const Arguments& arguments);
    static std::size_t CountCalls(const Arguments& wanted) { return wanted.size(); }
    static long Call(IDriver& driver, const Arguments& arguments, std::size_t number) {
        return driver.SetRfAttenuator(arguments[number].converter, arguments[number].attenuation);
    }
    static std::size_t CountQuestions(const Arguments& arguments) { return arguments.size(); }
    static bool Ask(IDriver& driver, Arguments& arguments, std::size_t number);
};

struct GainControl : Single {
    static constexpr QStringView NAME = u"GainControl";
    using Arguments = KvZANCommon::GainControlStruct;
    EWish Read(Arguments& wanted, WishChange& change) const;
    void Show(const Arguments& arguments) const;
    static QString Describe(const Arguments& arguments);
    static long Call(IDriver& driver, const Arguments& arguments, std::size_t) {
        return driver.SetGainControl(arguments);
    }
    static bool Ask(IDriver& driver, Arguments& arguments, std::size_t);
};

struct Frequency : Single {
    static constexpr QStringView NAME = u"Frequency";
    using Arguments = double;
    EWish Read(double& frequency, WishChange& change) const;
    void Show(double frequency) const;
    static QString Describe(double frequency);
    static long Call(IDriver& driver, double frequency, std::size_t) {
        return driver.SetFrequency(frequency);
    }
    static bool Ask(IDriver& driver, double& frequency, std::size_t);
};

/// The update interval: the device averages over it.
struct AverageTime : Single {
    static constexpr QStringView NAME = u"AverageTime";
    using Arguments = double; ///< seconds
    EWish Read(double& seconds, WishChange& change) const;
    void Show(double seconds) const;
    static QString Describe(double seconds);
    static long Call(IDriver& driver, double seconds, std::size_t) { return driver.SetAverageTime(seconds); }
    static bool Ask(IDriver& driver, double& seconds, std::size_t);
};

struct ScanAveraging : Single {
    static constexpr QStringView NAME = u"ScanAveraging";
    using Arguments = unsigned long;
    EWish Read(unsigned long& count, WishChange& change) const;
    void Show(unsigned long count) const;
    static QString Describe(unsigned long count);
    static long Call(IDriver& driver, unsigned long count, std::size_t) {
        return driver.SetScanAveraging(count);
    }
};

/// Milliseconds: at a signal, of a signal, after a signal.
struct HoldTimes : Single {
    static constexpr QStringView NAME = u"HoldTimes";
    using Arguments = std::array<int, 3>;
    EWish Read(Arguments& wanted, WishChange& change) const;
    void Show(const Arguments& arguments) const;
    static QString Describe(const Arguments& arguments);
    static long Call(IDriver& driver, const Arguments& times, std::size_t) {
        return driver.SetHoldTime(times[0], times[1], times[2]);
    }
};

/// Number of emitters for super resolution; 0: the driver finds it.
struct Emitters : Single {
    static constexpr QStringView NAME = u"SRNumEmitters";
    using Arguments = int;
    EWish Read(int& count, WishChange& change) const;
    void Show(int count) const;
    static QString Describe(int count);
    static long Call(IDriver& driver, int count, std::size_t) {
        return driver.SetSRNumOfEmitters(count == 0, count);
    }
};

/// The DF and demodulation settings of the tuned frequency.
struct Measure : Single {
    static constexpr QStringView NAME = u"MeasureSettings";
    struct Arguments {
        double frequency = 0.0; ///< of the antenna that the settings are for
        KvZANCommon::DFSettingsStruct df;
        KvZANCommon::DEMSettingsStruct dem;
        bool isHf = false; ///< whose preamplifier is meant
        /// Settings stay when the device is tuned.
        bool operator==(const Arguments& other) const { return df == other.df && dem == other.dem; }
    };
    EWish Read(Arguments& wanted, WishChange& change) const;
    void Show(const Arguments& arguments) const;
    static QString Describe(const Arguments& arguments);
    static long Call(IDriver& driver, const Arguments& arguments, std::size_t) {
        return driver.AlterMeasureSetting(arguments.frequency, arguments.df, arguments.dem);
    }
    static bool Ask(IDriver& driver, Arguments& arguments, std::size_t);
};

/// A device that scans is in standby while they change: with a channel number alone, nobody could tell of
/// which ranges a result is.
struct Ranges : Several {
    static constexpr QStringView NAME = u"ScanRanges";
    struct Arguments {
        std::vector<KvZANCommon::FreqRangeDefinition> ranges;
        bool isScanning = false; ///< meanwhile
        bool operator==(const Arguments& other) const;
    };
    EWish Read(Arguments& wanted, WishChange& change) const;
    void Show(const Arguments& arguments) const;
    static QString Describe(const Arguments& arguments);
    static std::size_t CountCalls(const Arguments& wanted) {
        return (wanted.isScanning ? 2 : 1) + wanted.ranges.size();
    }
    static long Call(IDriver& driver, const Arguments& arguments, std::size_t number);
};

struct Volume : Single {
    static constexpr QStringView NAME = u"AuChannelVolume";
    struct Arguments {
        int volume = 0;
        bool isMuted = false;
        bool operator==(const Arguments&) const = default;
    };
    EWish Read(Arguments& wanted, WishChange& change) const;
    void Show(const Arguments& arguments) const;
    static QString Describe(const Arguments& arguments);
    static long Call(IDriver& driver, const Arguments& arguments, std::size_t) {
        return driver.SetAudioVolume(arguments.isMuted ? 0 : arguments.volume);
    }
};

/// What the compass is to show now, in tenths of a degree: done once, not a state.
struct Compass : Single {
    static constexpr QStringView NAME = u"CompassValue";
    using Arguments = int;
    EWish Read(int& value, WishChange& change) const;
    void Show(int value) const;
    static QString Describe(int value);
    static long Call(IDriver& driver, int value, std::size_t) {
        return driver.SetCompassValue(static_cast<unsigned long>(value));
    }
};

struct Mode : SingleOf<DriverCall::SetMode> {
    static constexpr QStringView NAME = u"OperationMode";
    using Arguments = EMode;
    EWish Read(EMode& mode, WishChange& change) const;
    void Show(EMode mode) const;
    static QString Describe(EMode mode);
    static long Call(IDriver& driver, EMode mode, std::size_t) { return driver.SetMode(mode); }
};

} // namespace ZANServer::ControlPolicies
