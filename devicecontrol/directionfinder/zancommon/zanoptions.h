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
/// In texts, options stand by their names with ";" between them. One set for the process, made on first use;
/// it belongs to the application's main thread.
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

    /// The set, which is good until `Finalise`. Never null.
    static ZANOptions* Instance();
    /// Destroys the set; the next `Instance` makes an empty one.
    static void Finalise();

    ZANOptions(const ZANOptions&) = delete;
    ZANOptions& operator=(const ZANOptions&) = delete;
    virtual ~ZANOptions();

    /// Counts the option once more. OPTION_NONE is ignored.
    void AddOption(EZANOptions o);
    /// Removes the option, however often it was added.
    void RemoveOption(EZANOptions o);
    void ClearAllOptions();
    /// True for OPTION_NONE: who asks for nothing has it.
    [[nodiscard]] bool HasOption(EZANOptions o) const;
    /// How often the option was added; 0 for OPTION_NONE.
    [[nodiscard]] int GetOptionCount(EZANOptions o) const;

    /// False, with nothing added, for an unknown name.
    bool AddOptionByName(const QString& name);
    /// Adds the options of a text up to its first unknown name. An empty text, and the one behind a ";" at
    /// the end, count as an unknown name. True when all names are known.
    bool AddOptionsFromString(const QString& text);
    /// The options in ascending order of value, each as often as it was added.
    [[nodiscard]] QString GetOptionsAsString() const;

    /// Replaces the set by the options in the text value at a path, as far as they can be read. False when
    /// there is no text value (the set then stays), or when it holds an unknown name.
    bool ReadFromValueTree(const QString& path);
    /// Writes the options into the text value at a path, whose observers but the originator are told. False
    /// when there is none.
    bool WriteToValueTree(const QString& path, IObserver* originator = nullptr) const;
    /// Writes the options as "DevOptions" into the settings of the station that the application is connected
    /// to; they come into being with it, and are saved. False when there are none.
    bool WriteToCfg();

    /// The first name of an option; empty for OPTION_NONE and for what is not an option.
    static QString GetNameForOption(EZANOptions option);

private:
    ZANOptions() = default;

    static EZANOptions GetOptionForName(QStringView name);

    static ZANOptions* m_pInstance;

    std::map<EZANOptions, int> m_options;
};
