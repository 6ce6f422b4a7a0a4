#pragma once

#include "simulator/scenario.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace Simulator {

class JsonMembers;

/// Reads a scenario, a JSON document, as docs/simulator.md describes it.
///
/// Nothing is read past: an unknown member, one of another type or outside its range, an antenna that the
/// catalogue does not have, a document of more than `LARGEST` bytes is refused, with the path of the member
/// or the line in the text.
class ScenarioReader {
public:
    static constexpr qsizetype LARGEST = 1'000'000; ///< bytes

    /// Reads a file, or one of the scenarios that are built in: "ship", which is that of an empty name as
    /// well, and "airfield".
    std::optional<Scenario> ReadFile(const QString& name);
    std::optional<Scenario> Read(const QByteArray& document);
    /// Why there is no scenario.
    [[nodiscard]] const QString& GetErrorText() const { return m_error; }

private:
    Scenario ReadScenario(JsonMembers& members);
    Platform ReadPlatform(JsonMembers members);
    Device ReadDevice(JsonMembers members, std::size_t compassCount);
    Antenna ReadAntenna(JsonMembers& members, const Device& device, std::size_t compassCount);
    Emitter ReadEmitter(JsonMembers& members);
    Wish ReadWish(JsonMembers& members, const Device& device);

    QString m_error;
};

} // namespace Simulator
