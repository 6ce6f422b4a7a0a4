#pragma once

#include "zanserver_export.h"

#include "valueframework/trafficcontrolfrequency.h"

#include <QIODevice>
#include <QString>
#include <QStringList>

#include <vector>

namespace ZANServer {

/// A channel from a file, with its name, which may be empty.
struct NamedChannel {
    TrafficControlFrequency channel;
    QString name;
};

/// Reads traffic-control channels from CSV with a header line.
///
/// The columns are found by their names: a frequency column ("frequency_mhz", "frequency_khz",
/// "frequency_hz", or "frequency" with texts such as "121.5 MHz"), and optionally "name" or "description",
/// "channel" or "id" for the channel number (default: the number of the row) and "alarm" (1 or true). Other
/// columns are ignored. Fields may be in double quotes, but not span lines.
class ZANSERVER_EXPORT ChannelReader {
public:
    /// Reads the file. False when it cannot be read or has no frequency column; then `GetErrorText` says why.
    bool Read(const QString& fileName);
    bool Read(QIODevice& device);

    [[nodiscard]] const std::vector<NamedChannel>& GetChannels() const { return m_channels; }
    /// The problems of the rows that were left out, each with its line number.
    [[nodiscard]] const QStringList& GetBadRows() const { return m_badRows; }
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }

private:
    struct Columns {
        qsizetype frequency = -1;
        double unit = 0.0; // Hz; 0: the text carries its unit
        qsizetype name = -1;
        qsizetype channel = -1;
        qsizetype alarm = -1;
    };

    ZANSERVER_NO_EXPORT bool ReadHeader(const QString& line);
    ZANSERVER_NO_EXPORT void ReadRow(const QString& line, qsizetype lineNumber);
    ZANSERVER_NO_EXPORT bool Fail(const QString& why);

    Columns m_columns;
    qsizetype m_columnCount = 0;
    std::vector<NamedChannel> m_channels;
    QStringList m_badRows;
    QString m_errorText;
};

} // namespace ZANServer
