#pragma once

#include "zancommon/constanttext.h"
#include "zancommon/zandomain.h"
#include "zancommon_export.h"

#include <QString>
#include <QStringView>

#include <array>
#include <map>

class IObserver;

/// The options that the DF device reports as installed, each with the number of times that it is reported.
///
/// In texts, options are written as names separated by ";". There is one set in the process, created on first
/// use; it belongs to the application's main thread.
class ZANCOMMON_EXPORT ZANOptions {
public:
    /// Row of the table of names.
    struct OptionEntry {
        ConstantText name; ///< compared case-sensitively
        EZANOptions option = OPTION_NONE;
    };

    /// All names, closed by an empty one. Where an option has several names, it is written with the first.
    static constexpr std::array<OptionEntry, 23> s_aOptionEntries{{
        {u"ZAN-CL", OPTION_ZAN_CL},
        {u"ZAN-DR", OPTION_ZAN_DR},
        {u"ZAN-GSM", OPTION_ZAN_GSM},
        {u"ZAN-HFR", OPTION_ZAN_HFR},
        {u"ZAN-LF", OPTION_ZAN_LF},
        {u"ZAN-TS", OPTION_ZAN_TS},
        {u"ZANTIDE-WB", OPTION_ZANTIDE_WB},
        {u"ZANTIDE-SR", OPTION_ZANTIDE_SR},
        {u"ZANREEF-HF", OPTION_ZANREEF_HF},
        {u"ZANREEF-HBW", OPTION_ZANREEF_HBW},
        {u"ZANREEF-SR", OPTION_ZANREEF_SR},
        {u"ZANREEF-WB", OPTION_ZANREEF_WB},
        {u"ZANDUNE-HFR", OPTION_ZAN_HFR},
        {u"ZANDUNE-HF", OPTION_ZANREEF_HF},
        {u"ZANDUNE-HBW", OPTION_ZANREEF_HBW},
        {u"ZANFERN-4C", OPTION_ZANFERN_4C},
        {u"ZAN-TRA", OPTION_ZAN_TRA},
        {u"ZAN-SSL", OPTION_ZAN_SSL},
        {u"ZANTIDE-MC", OPTION_ZANTIDE_MC},
        {u"ZANTIDE-REM", OPTION_ZANTIDE_REM},
        {u"ZANREEF-MC", OPTION_ZANREEF_MC},
        {u"ZANREEF-REM", OPTION_ZANREEF_REM},
        {u"", OPTION_NONE},
    }};

    /// The set, which is valid until `Finalise`. Never null.
    static ZANOptions* Instance();
    /// Destroys the set; the next `Instance` creates an empty one.
    static void Finalise();

    ZANOptions(const ZANOptions&) = delete;
    ZANOptions& operator=(const ZANOptions&) = delete;
    virtual ~ZANOptions();

    /// Counts the option once more. OPTION_NONE is ignored.
    void AddOption(EZANOptions o);
    /// Removes the option, however often it was added.
    void RemoveOption(EZANOptions o);
    void ClearAllOptions();
    /// True for OPTION_NONE, which requires nothing.
    [[nodiscard]] bool HasOption(EZANOptions o) const;
    /// How often the option was added; 0 for OPTION_NONE.
    [[nodiscard]] int GetOptionCount(EZANOptions o) const;

    /// False, with nothing added, for an unknown name.
    bool AddOptionByName(const QString& name);
    /// Adds the options of a text up to its first unknown name. An empty name, also the one after a ";" at
    /// the end, is unknown. True when all names are known.
    bool AddOptionsFromString(const QString& text);
    /// The options in ascending order of value, each as often as it was added.
    [[nodiscard]] QString GetOptionsAsString() const;

    /// Replaces the set by the options in the text value at a path, up to the first unknown name. False when
    /// there is no text value (the set is then not changed), or when it holds an unknown name.
    bool ReadFromValueTree(const QString& path);
    /// Writes the options into the text value at a path; its observers except the originator are notified.
    /// False when there is no such value.
    bool WriteToValueTree(const QString& path, IObserver* originator = nullptr) const;
    /// Writes the options as "DevOptions" into the settings of the station that the application is connected
    /// to; the settings are created if needed, and saved. False when that is not possible.
    bool WriteToCfg();

    /// The first name of an option; empty for OPTION_NONE and for other values that are not options.
    static QString GetNameForOption(EZANOptions option);

private:
    ZANOptions() = default;

    ZANCOMMON_NO_EXPORT static EZANOptions GetOptionForName(QStringView name);

    static ZANOptions* m_pInstance;

    std::map<EZANOptions, int> m_options;
};
