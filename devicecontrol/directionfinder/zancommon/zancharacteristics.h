#pragma once

#include "kwbase/observable.h"
#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"
#include "zancommon/antennadatalist.h"
#include "zancommon/antennasetup.h"
#include "zancommon/antennasupport.h"
#include "zancommon/constanttext.h"
#include "zancommon/frequencyadjustment.h"
#include "zancommon/frequencyrange.h"
#include "zancommon/modelimits.h"
#include "zancommon/rangeadjustment.h"
#include "zancommon/zandomain.h"
#include "zancommon_export.h"

#include <QString>

#include <array>
#include <cstddef>
#include <limits>
#include <list>
#include <optional>
#include <set>
#include <span>
#include <vector>

class Node;
struct SampleModeQuery;

/// What the attached DF device can do: its antennas, frequency limits, sample modes, bandwidths and methods.
///
/// The application has one object for its device (`ZANInformationCenter`). `SetBase_ValuePath` connects it to
/// the device's node in the value tree; from then on it follows the device type, the channel count, the
/// modify time of the configuration (a change of which makes it read everything again) and the polarisation,
/// and notifies its own observers of each change with code 3.
///
/// Frequencies and bandwidths are in Hz. The arguments OPMODE_ANY, fFREQUENCY_ANY and fBANDWIDTH_ANY restrict
/// nothing. No query throws; one without an answer returns null, an empty container, 0.0, CONVERTER_NONE or
/// -1. Antennas that are returned belong to this object, and are valid until its antennas are read again.
/// Everything belongs to the application's main thread.
class ZANCOMMON_EXPORT ZANCharacteristics : public IObserver, public Observable {
public:
    /// How a frequency range that straddles two antennas is moved. With any other value it is not moved.
    enum EAdjustMode : qint32 {
        ADJUST_DOWN = 0, ///< the range ends where the antenna of its start frequency ends
        ADJUST_UP = 1    ///< the range starts where the antenna of its stop frequency starts
    };

    /// Row of the antenna library. A model has one row for each frequency range with different methods. The
    /// library ends with a row without a name.
    struct AntennaDescription {
        ConstantText name;                      ///< model name, compared case-sensitively
        double minFrequency = 0.0;              ///< Hz, inclusive
        double maxFrequency = 0.0;              ///< Hz, inclusive
        qint32 dfMethods = METHODDETAILED_NONE; ///< mask of EZANMethodDetailed
    };

    /// Row of the sample-mode table, which ends with a row of the sample mode SAMPLEMODE_END.
    struct SampleModeDescription {
        static constexpr std::size_t MAX_LIST_LENGTH = 10;

        EZANSampleMode sampleMode = SAMPLEMODE_END;
        std::array<EZANType, MAX_LIST_LENGTH + 1> deviceTypes{ZANTYPE_END}; ///< closed by ZANTYPE_END
        EZANOptions requiredOption = OPTION_NONE;
        EZANOptions excludedOption = OPTION_NONE; ///< OPTION_NONE: no option excludes the row
        EZANConverter firstConverter = CONVERTER_NONE;
        EZANConverter secondConverter = CONVERTER_NONE; ///< CONVERTER_NONE: the row has one converter only
        double realtimeBandwidth = 0.0;                 ///< Hz
        double minFrequency = 0.0;                      ///< Hz, inclusive
        double maxFrequency = 0.0;                      ///< Hz, inclusive
        /// Closed by OPMODE_END; OPMODE_ANY in the list makes the row valid for every mode.
        std::array<EOperationMode, MAX_LIST_LENGTH + 1> operationModes{OPMODE_END};
        int priority = 0;                             ///< of several rows that fit, the highest wins
        const double* resolutionBandwidths = nullptr; ///< Hz, ascending, closed by -1.0; static data
        qint32 preamplifierAvailable = 0; ///< 0 or 1: the receiver path has a switchable preamplifier
        EFreqRange range = FREQRANGE_HF;
    };

    /// The name of a device model in the value tree.
    struct DeviceTypeName {
        ConstantText name; ///< compared case-sensitively
        EZANType type = ZANTYPE_ZANTIDE;
    };

    /// The name of a converter in the value tree and in the settings.
    struct ConverterTypeName {
        ConstantText name; ///< compared case-sensitively
        EZANConverter converter = CONVERTER_NONE;
    };

    /// As an argument: the frequency restricts nothing.
    static constexpr double fFREQUENCY_ANY = std::numeric_limits<double>::lowest();
    /// As an argument: the bandwidth restricts nothing.
    static constexpr double fBANDWIDTH_ANY = std::numeric_limits<double>::lowest();
    /// The number of channels of a device that does not report it.
    static constexpr int MAX_CHANNEL_COUNT_DEFAULT = 60000;

    /// \name The groups of converters
    /// Each is closed by CONVERTER_NONE.
    /// @{
    static constexpr std::array s_aHF_CONVERTERS{CONVERTER_RCV01, CONVERTER_RCV02, CONVERTER_RCV09,
                                                 CONVERTER_RCV07, CONVERTER_NONE};
    static constexpr std::array s_aVUHF_CONVERTERS{CONVERTER_RCV03, CONVERTER_RCV04, CONVERTER_RCV06,
                                                   CONVERTER_RCV08, CONVERTER_RCV10, CONVERTER_NONE};
    /// @}

    /// \name The catalogue of what devices, receivers and antennas can do
    /// Antenna library and sample-mode table end with a closing row (`Rows` leaves it out).
    /// @{
    static const std::array<AntennaDescription, 49> s_aAntennaLibrary;
    static const std::array<SampleModeDescription, 30> s_aSampleModeDescription;
    static const std::array<DeviceTypeName, 5> s_aDeviceTypeNames;
    static const std::array<ConverterTypeName, 10> s_aConverterTypeNames;
    /// @}

    /// \name Resolution bandwidths
    /// In Hz, ascending, named after family, first and last value; each list is closed by -1.0.
    /// @{
    static const std::array<double, 8> s_aRESBWS_STD_20_2K;
    static const std::array<double, 7> s_aRESBWS_STD_50_2K;
    static const std::array<double, 10> s_aRESBWS_STD_50_20K;
    static const std::array<double, 9> s_aRESBWS_STD_100_20K;
    static const std::array<double, 8> s_aRESBWS_STD_200_20K;
    static const std::array<double, 7> s_aRESBWS_STD_500_20K;
    static const std::array<double, 9> s_aRESBWS_STD_500_100K;
    static const std::array<double, 10> s_aRESBWS_STD_500_200K;
    static const std::array<double, 8> s_aRESBWS_STD_1K_100K;
    static const std::array<double, 9> s_aRESBWS_STD_1K_200K;
    static const std::array<double, 11> s_aRESBWS_EXT_1K_100K;
    static const std::array<double, 12> s_aRESBWS_EXT_1K_200K;
    static const std::array<double, 8> s_aRESBWS_STD_2K_200K;
    static const std::array<double, 11> s_aRESBWS_EXT_2K_200K;
    static const std::array<double, 2> s_aRESBWS_STD_200K_200K;
    static const std::array<double, 8> s_aRESBWS_HF_0125K_25K;
    static const std::array<double, 12> s_aRESBWS_VUHF_1K_200K;
    static const std::array<double, 6> s_aRESBWS_VUHF_5K_50K;
    static const std::array<double, 7> s_aRESBWS_HF_0250K_12K;
    /// @}

    ZANCharacteristics() = default;
    /// A copy has the content of its source, with copies of the antennas, and follows the same device
    /// independently.
    ZANCharacteristics(const ZANCharacteristics& other);
    ZANCharacteristics& operator=(const ZANCharacteristics& other);
    ~ZANCharacteristics() override;

    // The order of the virtual operations is part of the interface.

    /// Called when a value of the tree has changed or goes away.
    void Update(Observable* subject, TChangeCode code) override;
    /// Connects to the device's node, and reads everything that is cached.
    /// \param path       of the node, such as "/DEVICES/ZANServer"
    /// \param autoUpdate whether changes of the tree's values are followed
    /// \return whether the node and all values of the device were found (the polarisation may be missing).
    ///         Without a node at the path the object is no longer connected; cached data stays.
    virtual bool SetBase_ValuePath(const QString& path, bool autoUpdate);
    /// Reads the antennas and everything else that is cached from the tree. Does nothing while not connected.
    virtual void UpdateCachedDataFromValueTree();
    /// ZANTYPE_ZANTIDE for a device whose type is missing or unknown.
    [[nodiscard]] virtual EZANType GetZANType() const;
    /// Null when no antenna has the handle.
    [[nodiscard]] virtual AntennaData* GetAntennaByHandle(long handle) const;
    /// Null outside the list of antennas.
    [[nodiscard]] virtual AntennaData* GetAntennaByIndex(int index) const;
    /// Handles of all antennas, or of the enabled ones, ascending.
    [[nodiscard]] virtual std::set<long> GetAntennaHandles(bool onlyEnabled) const;
    /// The enabled antenna that serves a frequency, preferably one of the current polarisation, which is read
    /// again; null when there is none. fFREQUENCY_ANY has no special meaning here.
    /// \param preferRangeStart an antenna whose range begins at exactly this frequency comes first
    [[nodiscard]] virtual AntennaData* GetAntennaForFrequency(double frequency, bool preferRangeStart);
    /// The name without the ending for polarisation or side; empty for null.
    [[nodiscard]] virtual QString GetAntennaDisplayName(const AntennaData* antenna) const;
    /// Whether the device has a sample mode for the antenna's whole range. False for null.
    [[nodiscard]] virtual bool IsAntennaSupportedByDevice(const AntennaData* antenna,
                                                          EOperationMode mode) const;
    /// The same for the antenna at a position; false outside the list.
    [[nodiscard]] virtual bool IsAntennaSupportedByDevice(int index, EOperationMode mode) const;
    /// False when no antenna has the handle.
    [[nodiscard]] virtual bool DoesAntennaSupportPolarization(long handle) const;
    /// False when no antenna has the handle, and for the family PX120, which never switches.
    [[nodiscard]] virtual bool DoesAntennaSupportActivePassive(long handle) const;
    /// Range class of the antenna's best sample mode; without one, by its lowest frequency: VUHF from 10 MHz
    /// on, else HF. FREQRANGE_UNKNOWN for null.
    [[nodiscard]] virtual EFreqRange GetRangeTypeOfAntenna(const AntennaData* antenna,
                                                           EOperationMode mode) const;
    /// Checks an antenna setup: every enabled antenna must be supported, and the ranges in the order of the
    /// list must form one span without gaps and overlaps. Antennas whose names end in "_H", "_V", "_L" or
    /// "_R" may share a range.
    /// \param list    null: the device's own antennas
    /// \param message the result as one translated sentence
    [[nodiscard]] virtual bool CheckAntennaSetupValidity(const AntennaDataList* list, QString& message) const;
    /// Repairs the device's own setup when it is not valid: enables the antennas that are supported in their
    /// range of use, extends their ranges to the coverage, and then cuts or disables those that overlap or
    /// leave a gap. The repaired antennas replace those in the tree, and the modify time of the configuration
    /// is set (local time as ddMMyyhhmmss), so that its observers read them. Nothing is changed when no
    /// antenna is supported.
    /// \param message what was done, as one translated sentence
    /// \return false when no antenna is supported
    virtual bool MakeAntennaSetupValid(QString& message);
    /// Polarisations that the enabled switchable antennas have at a frequency, each once, in list order.
    /// \param secondFrequency above 0: the antennas must reach it too
    [[nodiscard]] virtual std::list<EZANPolarisation>
    GetAvailablePolarisationModesForFreq(double frequency, double secondFrequency) const;
    /// Methods that the enabled antennas have at a frequency, each once, in the order in which they first
    /// appear. When super resolution is among them, `IsSuperResolutionAvailable` becomes true. The second
    /// argument has no effect.
    [[nodiscard]] virtual std::list<EZANMethod> GetAvailableDfMethodsForFreq(double frequency, double unused);
    /// Mask of EZANMethodDetailed from the antenna library; for a model that is not in the library at this
    /// frequency, 10 for a super-resolution antenna ("SR" in its name), else 2. 0 for null.
    [[nodiscard]] virtual long GetDfMethodsDetailedForAntennaAndFrequency(const AntennaData* antenna,
                                                                          double frequency) const;
    /// Whether the antenna has all bits of `method` at the frequency.
    [[nodiscard]] virtual bool HasAntennaDFMethod(const AntennaData* antenna, double frequency,
                                                  EZANMethodDetailed method) const;
    /// Converters of all antennas, enabled or not.
    [[nodiscard]] virtual std::set<EZANConverter> GetAvailableConverters() const;
    /// Converter of the first enabled antenna whose range holds both frequencies.
    [[nodiscard]] virtual EZANConverter GetConverterForFrequencyRange(double start, double stop) const;
    /// Whether the converter belongs to the group; CONVERTER_NONE and CONVERTER_RCV05 belong to neither.
    [[nodiscard]] virtual bool IsHfConverter(EZANConverter converter) const;
    /// Whether the converter belongs to the group; CONVERTER_NONE and CONVERTER_RCV05 belong to neither.
    [[nodiscard]] virtual bool IsVuhfConverter(EZANConverter converter) const;
    /// Whether the device has a sample mode with preamplifier on the HF converter of an enabled antenna.
    [[nodiscard]] virtual bool IsHfPreampAvailable() const;
    /// The same for the VUHF converter.
    [[nodiscard]] virtual bool IsVuhfPreampAvailable() const;
    /// Lowest and highest frequency of an operation mode, over the enabled antennas that the device supports
    /// in it. For a ZANFERN device they are within 100 MHz to 450 MHz; for other devices a limit that is
    /// missing or outside 9 kHz to 3.6 GHz becomes 25 MHz.
    [[nodiscard]] virtual double GetMinFreq(EOperationMode mode) const;
    /// See `GetMinFreq`.
    [[nodiscard]] virtual double GetMaxFreq(EOperationMode mode) const;
    /// As `AdjustFrequency`, which also returns the reasons. Moves a frequency into the limits of its mode,
    /// and in wideband FFM so that the whole band lies in the antenna's range (one end of a wider band is
    /// moved to an end of the range). Returns the serving antenna; null when there is none, and in the modes
    /// that serve no frequency. The bandwidth is not changed.
    virtual const AntennaData* ToNextValidFrequency(EOperationMode mode, double& frequency,
                                                    double& bandwidth);
    /// As `AdjustFrequencyRange`, which also returns the reasons. Moves a frequency range as a whole: into
    /// the limits of its mode (of a wider range the stop is moved to the upper limit), and off the border of
    /// two antennas according to `adjustMode`. Returns the antenna that served the start before the second
    /// move; start and stop are changed only when a sample mode fits the moved range, else null is returned.
    /// The other arguments are not changed.
    virtual const AntennaData* ToNextValidFrequencyRange(EOperationMode mode, double& start, double& stop,
                                                         double& realtimeBandwidth, double& unused,
                                                         EAdjustMode adjustMode);
    /// The next resolution bandwidth that is at least the wanted one; the largest when all are smaller; 0.0
    /// without a sample mode. A realtime bandwidth below 1 Hz restricts nothing, here and below.
    [[nodiscard]] virtual double ToNextValidResolutionBandwidth(EOperationMode mode, double start,
                                                                double stop, double realtimeBandwidth,
                                                                double wanted) const;
    /// Realtime bandwidths of all sample modes for the range of the antenna that serves both frequencies.
    [[nodiscard]] virtual std::set<double> GetRealtimeBandwidths(EOperationMode mode, double start,
                                                                 double stop) const;
    /// Realtime bandwidth of the best sample mode; 0.0 without one.
    [[nodiscard]] virtual double GetDefaultRealtimeBandwidth(EOperationMode mode, double start,
                                                             double stop) const;
    /// 20 kHz, or the next resolution bandwidth (see `ToNextValidResolutionBandwidth`).
    [[nodiscard]] virtual double GetDefaultResolutionBandwidth(EOperationMode mode, double start, double stop,
                                                               double realtimeBandwidth) const;
    /// Resolution bandwidths of the best sample mode.
    [[nodiscard]] virtual std::set<double>
    GetResolutionBandwidths(EOperationMode mode, double start, double stop, double realtimeBandwidth) const;
    /// Where the converters change: the start of VUHF and the end of HF, each 0 when no enabled antenna
    /// determines it. False when the start of VUHF is 0.
    [[nodiscard]] virtual bool GetConverterSwitchFreq(double& vuhfStart, double& hfEnd) const;
    /// Range class of the antenna that serves the frequency.
    [[nodiscard]] virtual EFreqRange GetRangeTypeForFrequency(double frequency);
    /// The sample mode of the highest priority for the whole range of the antenna that serves both
    /// frequencies. SAMPLEMODE_END, with a trace line, when there is none.
    [[nodiscard]] virtual EZANSampleMode GetBestSampleMode(EOperationMode mode, double start, double stop,
                                                           double realtimeBandwidth) const;
    /// 60000 unless the device says otherwise.
    [[nodiscard]] virtual int GetMaxChannelCount() const;

    /// How a requested frequency is adjusted, and why. Changes nothing.
    /// \param bandwidth of the band in wideband FFM; without it, that of the best sample mode is used
    [[nodiscard]] FrequencyAdjustment AdjustFrequency(EOperationMode mode, double frequency,
                                                      std::optional<double> bandwidth = std::nullopt);
    /// How a requested frequency range is adjusted, and why. Changes nothing. The caller checks that the low
    /// end of the range is not above its high end.
    /// \param realtimeBandwidth that the sample mode must have; below 1 Hz it restricts nothing
    [[nodiscard]] RangeAdjustment AdjustFrequencyRange(EOperationMode mode, const FrequencyRange& asked,
                                                       double realtimeBandwidth, EAdjustMode adjustMode);
    /// Whether the device supports an antenna over the range in which it is used, and if not, why. Uses the
    /// same test as `IsAntennaSupportedByDevice`, without its trace line.
    [[nodiscard]] AntennaSupport GetAntennaSupport(const AntennaData& antenna, EOperationMode mode) const;
    /// What `MakeAntennaSetupValid` would do. Changes nothing.
    [[nodiscard]] AntennaSetup::Proposal ProposeAntennaSetup() const;

    /// Whether `GetAvailableDfMethodsForFreq` has ever found super resolution.
    [[nodiscard]] bool IsSuperResolutionAvailable() const { return m_isSuperResolutionAvailable; }
    /// Converts an azimuth (tenths of a degree, clockwise from north) into the one to display, from 0 to
    /// 3599.
    /// \param displayMode 0: as it is, 1: declination (tenths of a degree, from the tree) taken off,
    ///                    2: opposite, 3: both
    /// \return false, with the azimuth unchanged, for another mode, and when the tree has no declination or
    ///         no heading source
    bool AdjustAzimuthToDisplayMode(unsigned short& azimuth, int displayMode) const;

    /// A bandwidth as a text for displays, such as "12.5 kHz". From 1 GHz on it is in Hz and without a unit.
    /// \param precision digits after the decimal point; 6 when negative
    /// \param keepTrailingZeros otherwise all zeros at the end go, also those of a whole number (100 kHz with
    ///                          precision 0 becomes "1 kHz")
    [[nodiscard]] static QString FormatBandwidth(double bandwidth, int precision, bool keepTrailingZeros);

    /// \name Filling selections
    /// These replace the items of a selection; its observers are notified once, except the given one. The
    /// selection is not kept; null is ignored.
    /// @{

    /// An item for each method: its name, 0.0, and as key its position from 0.
    static void FillSelectionWithDfMethods(ValueSelection& selection, const std::list<EZANMethod>& methods,
                                           IObserver* observer);
    /// An item for each polarisation: its name, 0.0, and as key its position from 0.
    static void FillSelectionWithPolarisationModes(ValueSelection& selection,
                                                   const std::list<EZANPolarisation>& modes,
                                                   IObserver* observer);
    /// The resolution bandwidths, ascending: text, Hz, and as key the position from 0. The selection is not
    /// changed when there are none.
    void UpdateResolutionBandwidthSelection(ValueSelection* selection, EOperationMode mode, double start,
                                            double stop, double realtimeBandwidth, IObserver* observer) const;
    /// The same with the bandwidths of hops, which are the realtime bandwidths.
    void UpdateHopBandwidthSelection(ValueSelection* selection, EOperationMode mode, double start,
                                     double stop, IObserver* observer) const;
    /// The attenuations: 0 and 12 dB for a `count` of 0 or 2, else 24 and 30 dB as well. Number and key are
    /// the attenuation in dB.
    static void UpdateRfAttenuatorValuesAtVT(ValueSelection* selection, int count, IObserver* observer);
    /// @}

    /// True when the converter is in the group before its closing CONVERTER_NONE.
    [[nodiscard]] static constexpr bool IsInGroup(std::span<const EZANConverter> group,
                                                  EZANConverter converter);

    /// True when a row from `minimum` to `maximum` (Hz, inclusive) contains a range: start not below the
    /// minimum, stop not above the maximum. fFREQUENCY_ANY is not compared; any other value is, also a
    /// negative one. Pass a single frequency as start and stop.
    [[nodiscard]] static constexpr bool LimitsHold(double minimum, double maximum, double start, double stop);

private:
    friend class FrequencyAdjuster;

    ZANCOMMON_NO_EXPORT bool ConnectToValues();
    ZANCOMMON_NO_EXPORT void DisconnectFromValues();

    ZANCOMMON_NO_EXPORT void UpdateZANType();
    ZANCOMMON_NO_EXPORT void UpdateMaxChannelCount();
    ZANCOMMON_NO_EXPORT void UpdatePolarisationMode();
    ZANCOMMON_NO_EXPORT void UpdateConverterSwitchFreqs();
    ZANCOMMON_NO_EXPORT void UpdateAntennaMinMaxFreqs();
    ZANCOMMON_NO_EXPORT void ConsiderAntennaForMinMaxFreqs(const AntennaData& antenna);
    ZANCOMMON_NO_EXPORT void Publish(const AntennaDataList& antennas);

    [[nodiscard]] ZANCOMMON_NO_EXPORT AntennaSetup::IsSupported GetSupportTest() const;
    [[nodiscard]] ZANCOMMON_NO_EXPORT static EZANConverter GetConverterForTypeName(const QString& typeName);
    [[nodiscard]] ZANCOMMON_NO_EXPORT bool IsPreampAvailable(std::span<const EZANConverter> converters) const;
    [[nodiscard]] ZANCOMMON_NO_EXPORT SampleModeQuery MakeQuery(EOperationMode mode, EZANConverter converter,
                                                                double start, double stop,
                                                                double realtimeBandwidth) const;
    [[nodiscard]] ZANCOMMON_NO_EXPORT bool DoesSampleModeMatch(const SampleModeDescription* row,
                                                               EOperationMode mode, EZANConverter converter,
                                                               double start, double stop,
                                                               double realtimeBandwidth) const;
    [[nodiscard]] ZANCOMMON_NO_EXPORT std::vector<const SampleModeDescription*>
    GetAllMatchingSampleModeDescriptions(EOperationMode mode, EZANConverter converter, double start,
                                         double stop, double realtimeBandwidth) const;
    [[nodiscard]] ZANCOMMON_NO_EXPORT const SampleModeDescription*
    GetBestSampleModeDescription(EOperationMode mode, EZANConverter converter, double start, double stop,
                                 double realtimeBandwidth) const;
    [[nodiscard]] ZANCOMMON_NO_EXPORT const SampleModeDescription*
    GetBestSampleModeDescription(EOperationMode mode, double start, double stop,
                                 double realtimeBandwidth) const;

    QString m_baseValuePath; // empty: not connected
    bool m_autoUpdate = false;
    // Observed; the tree owns them. Null while not connected, and after they have gone away.
    ZANPlatform::ValuePtr<Node> m_pCfgNode;
    ZANPlatform::ValuePtr<ValueString> m_pCfgModifyTime;
    ZANPlatform::ValuePtr<ValueString> m_pDevType;
    ZANPlatform::ValuePtr<ValueNumericInt> m_pDevMaxChannelCount;
    ZANPlatform::ValuePtr<ValueString> m_pPolarisation;
    // What is known about the device
    EZANType m_zanType = ZANTYPE_ZANTIDE;
    int m_maxChannelCount = MAX_CHANNEL_COUNT_DEFAULT;
    AntennaDataList m_antennas;
    EZANPolarisation m_polarisationMode = POLARISATION_LEFT;
    ModeLimits m_limits;
    double m_vuhfStart = 0.0; // Hz; 0: no antenna fixes it
    double m_hfEnd = 0.0;     // Hz; 0: no antenna fixes it
    bool m_isSuperResolutionAvailable = false;
};

constexpr bool ZANCharacteristics::IsInGroup(std::span<const EZANConverter> group, EZANConverter converter) {
    for (const EZANConverter member : group) {
        if (member == CONVERTER_NONE) {
            return false;
        }
        if (member == converter) {
            return true;
        }
    }
    return false;
}

constexpr bool ZANCharacteristics::LimitsHold(double minimum, double maximum, double start, double stop) {
    return (start == fFREQUENCY_ANY || start >= minimum) && (stop == fFREQUENCY_ANY || stop <= maximum);
}
