#include "tolmappstartup/cfgcenter.h"
#include "zancommon/antennadatalist.h"
#include "zancommon/antennasetup.h"
#include "zancommon/zancharacteristics.h"
#include "zanserver/frequencytext.h"
#include "zanserver/station.h"
#include "zanstation/antennajson.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/table.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

/// An action of the command, and the number of its arguments.
struct Action {
    QString name;
    int argumentCount;
};

QString DescribeUse(const AntennaData& antenna) {
    return antenna.enabled ? FrequencyText::FormatRange(antenna.minRange, antenna.maxRange) : u"disabled"_s;
}

bool IsSameEntry(const AntennaData& a, const AntennaData& b) {
    return a.name == b.name && CoverageOf(a) == CoverageOf(b);
}

/// The antenna setup in the settings of the station.
class StoredSetup {
public:
    explicit StoredSetup(bool asJson)
        : m_asJson(asJson)
        , m_address(Station::GetDeviceAddress()) {
        m_list.BuildAntennasFromCfg(m_address);
    }

    void Print() const {
        if (m_asJson) {
            return; // the JSON document always lists them
        }
        Table table({u"antenna"_s, u"enabled"_s, u"range"_s, u"covers"_s, u"converter"_s});
        for (const auto& antenna : m_list.GetAntennas()) {
            table.Add({antenna->name, antenna->enabled ? u"yes"_s : u"no"_s,
                       FrequencyText::FormatRange(antenna->minRange, antenna->maxRange),
                       FrequencyText::FormatRange(antenna->minFreq, antenna->maxFreq),
                       antenna->converterTypeName});
        }
        table.Print();
    }

    /// Prints whether the setup is valid; returns the exit code.
    [[nodiscard]] int Check() {
        QString verdict;
        const bool isValid = Station::GetCharacteristics().CheckAntennaSetupValidity(&m_list, verdict);
        Say(verdict);
        PrintDocument(isValid, verdict);
        return isValid ? EXIT_OK : EXIT_FAILED;
    }

    /// Makes the setup valid, or only shows what would be changed; returns the exit code.
    int Repair(bool isDryRun) {
        ZANCharacteristics& characteristics = Station::GetCharacteristics();
        const AntennaSetup::Proposal proposal = characteristics.ProposeAntennaSetup();
        if (isDryRun) {
            Say(u"Nothing is changed. A repair would report:"_s);
        } else {
            QString message;
            characteristics.MakeAntennaSetupValid(message);
        }
        Say(proposal.message);
        for (const auto& antenna : proposal.antennas.GetAntennas()) {
            TakeOver(*antenna);
        }
        m_list.SortAntennasByFrequencyRanges();
        if (!isDryRun) {
            Save();
        }
        // The repaired setup may still not be valid: an antenna that is supported in its old range may not be
        // supported over its whole coverage.
        QString verdict;
        const bool isValid =
            proposal.isPossible && characteristics.CheckAntennaSetupValidity(&m_list, verdict);
        if (proposal.isPossible && !isValid) {
            Say(verdict);
        }
        PrintDocument(isValid, isValid || verdict.isEmpty() ? proposal.message : verdict);
        return isValid ? EXIT_OK : EXIT_FAILED;
    }

    /// Enables or disables all entries of an antenna. An entry without a range is used for its whole
    /// coverage.
    int SetEnabled(const QString& name, bool enabled) {
        bool isFound = false;
        for (const auto& antenna : m_list.GetAntennas()) {
            if (antenna->name == name) {
                antenna->enabled = enabled;
                if (enabled && antenna->minRange == antenna->maxRange) {
                    ::SetRange(*antenna, CoverageOf(*antenna));
                }
                isFound = true;
            }
        }
        return isFound ? SaveAndCheck() : RefuseName(name);
    }

    /// Sets the range of the entry of an antenna that covers it.
    int SetRange(const QString& name, const QString& lowText, const QString& highText) {
        const std::optional<double> low = FrequencyText::Parse(lowText);
        const std::optional<double> high = FrequencyText::Parse(highText);
        if (!low || !high || *low > *high) {
            return CommandLine::Refuse(
                u"a range is two frequencies such as 300k 30M, the lower one first, not %1 %2"_s.arg(
                    CommandLine::Quote(lowText), CommandLine::Quote(highText)));
        }
        const FrequencyRange range{*low, *high};
        QStringList coverages;
        for (const auto& antenna : m_list.GetAntennas()) {
            if (antenna->name != name) {
                continue;
            }
            if (CoverageOf(*antenna).Contains(range)) {
                ::SetRange(*antenna, range);
                return SaveAndCheck();
            }
            coverages.append(FrequencyText::FormatRange(antenna->minFreq, antenna->maxFreq));
        }
        if (coverages.isEmpty()) {
            return RefuseName(name);
        }
        Console::Error(u"%1 covers %2, not %3; nothing was changed"_s.arg(
            name, coverages.join(u" and "_s), FrequencyText::FormatRange(*low, *high)));
        return EXIT_FAILED;
    }

private:
    [[nodiscard]] int RefuseName(const QString& name) const {
        QStringList names;
        for (const auto& antenna : m_list.GetAntennas()) {
            names.append(antenna->name);
        }
        Console::Error(
            u"the station has no antenna %1, only %2"_s.arg(CommandLine::Quote(name), names.join(u", "_s)));
        return EXIT_FAILED;
    }

    /// Takes over range and enabling of a repaired antenna, and prints the change.
    void TakeOver(const AntennaData& repaired) {
        for (const auto& antenna : m_list.GetAntennas()) {
            if (!IsSameEntry(*antenna, repaired)) {
                continue;
            }
            const QString before = DescribeUse(*antenna);
            antenna->enabled = repaired.enabled;
            ::SetRange(*antenna, RangeOf(repaired));
            if (const QString after = DescribeUse(*antenna); after != before) {
                Say(antenna->name + u": "_s + before + u" -> "_s + after);
                m_changes.append(AntennaJson::Describe(*antenna));
            }
        }
    }

    void Say(const QString& text) const {
        if (!m_asJson) {
            Console::Print(text);
        }
    }

    /// For programs: the current setup, the result of its check, and the antennas that a repair has changed.
    void PrintDocument(bool isValid, const QString& verdict) const {
        if (!m_asJson) {
            return;
        }
        QJsonArray antennas;
        for (const auto& antenna : m_list.GetAntennas()) {
            QJsonObject object = AntennaJson::Describe(*antenna);
            object[u"covers_from_hz"_s] = antenna->minFreq;
            object[u"covers_to_hz"_s] = antenna->maxFreq;
            antennas.append(object);
        }
        Console::PrintJson(QJsonDocument(QJsonObject{{u"valid"_s, isValid},
                                                     {u"verdict"_s, verdict},
                                                     {u"antennas"_s, antennas},
                                                     {u"repaired"_s, m_changes}}));
    }

    /// Writes the whole setup; changes by other programs since it was read are kept.
    void Save() {
        const CfgWriteBack writeBack = CfgCenter::GetAppCfg(ICfg::View::Stations).BeginWriteBack();
        m_list.WriteAntennaSetupToCfg(m_address);
    }

    [[nodiscard]] int SaveAndCheck() {
        m_list.SortAntennasByFrequencyRanges();
        Save();
        return Check();
    }

    bool m_asJson;
    QString m_address;
    AntennaDataList m_list;
    QJsonArray m_changes; // made by a repair
};

/// The action with this name; null when there is none.
const Action* FindAction(const QString& name) {
    static const std::array<Action, 6> actions{{
        {u"list"_s, 0},
        {u"check"_s, 0},
        {u"repair"_s, 0},
        {u"enable"_s, 1},
        {u"disable"_s, 1},
        {u"range"_s, 3},
    }};
    const auto* const action = std::ranges::find(actions, name, &Action::name);
    return action == actions.end() ? nullptr : action;
}

/// Carries out an action on the running station. Returns the exit code: failed when the setup is not valid
/// afterwards, or when nothing could be done; wrong usage for an invalid range.
int CarryOut(const QStringList& actionAndArguments, bool isDryRun, bool asJson) {
    const QString& action = actionAndArguments.at(0);
    StoredSetup setup(asJson);
    if (action == u"list") {
        setup.Print();
        return setup.Check();
    }
    if (action == u"check") {
        return setup.Check();
    }
    if (action == u"repair") {
        return setup.Repair(isDryRun);
    }
    const QString& name = actionAndArguments.at(1);
    if (action == u"range") {
        return setup.SetRange(name, actionAndArguments.at(2), actionAndArguments.at(3));
    }
    return setup.SetEnabled(name, action == u"enable");
}

} // namespace

namespace Commands {

int Antennas(const QStringList& arguments) {
    const QString actions = u"list|check|repair|enable NAME|disable NAME|range NAME LOW HIGH"_s;
    CommandLine line(u"antennas"_s,
                     u"Works on the antenna setup in the station's settings. Fails when the setup is not "
                     "valid."_s,
                     {{u"dry-run"_s, u"Show what a repair would change, and change nothing."_s},
                      CommandLine::JsonOption()},
                     actions);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const auto* const action = FindAction(line.Positional().value(0));
    if (!action || line.Positional().size() != 1 + action->argumentCount) {
        return CommandLine::Refuse(u"name one of these actions: "_s + actions);
    }
    const bool isDryRun = line.IsSet(u"dry-run"_s);
    if (isDryRun && action->name != u"repair") {
        return CommandLine::Refuse(u"--dry-run is only for repair"_s);
    }
    return line.WithStation(
        [&line, isDryRun] { return CarryOut(line.Positional(), isDryRun, line.AsJson()); });
}

} // namespace Commands
