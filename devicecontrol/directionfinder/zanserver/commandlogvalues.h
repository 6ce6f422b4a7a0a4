#pragma once

#include "zanserver_export.h"

#include "valueframework/valuetypes.h"

#include <QString>

#include <cstddef>

namespace ZANServer {

/// The last lines of the command log as a list of texts in the tree ("/Res/LogR/CommandLog" of the device),
/// each with the time of day (UTC) in front. Belongs to the thread of the tree.
class ZANSERVER_EXPORT CommandLogValues {
public:
    static constexpr std::size_t MOST_LINES = 1000;
    /// Of all lines together, in UTF-16 code units.
    static constexpr std::size_t MOST_CHARACTERS = 256UL * 1024;
    /// A longer line is cut off.
    static constexpr qsizetype LONGEST_LINE = 4096;

    CommandLogValues();

    /// Adds a line that the driver has reported; the oldest ones go.
    /// \param time milliseconds since 1970-01-01 00:00:00 UTC
    void OnCommandReported(const QString& line, quint64 time);

private:
    ValueStringList* m_lines;
    std::size_t m_characters = 0;
};

} // namespace ZANServer
