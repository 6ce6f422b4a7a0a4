#include "zanserver/channelreader.h"

#include "zanserver/frequencytext.h"
#include "zanserver/plural.h"

#include <QFile>

#include <array>
#include <cmath>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

/// The fields of a line; nothing when its quotes do not match. Two quotes within quotes mean one quote.
std::optional<QStringList> SplitLine(const QString& line) {
    QStringList fields;
    QString field;
    bool isQuoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (isQuoted && c == u'"' && i + 1 < line.size() && line.at(i + 1) == u'"') {
            field += c;
            ++i;
        } else if (c == u'"') {
            isQuoted = !isQuoted;
        } else if (c == u',' && !isQuoted) {
            fields.append(field.trimmed());
            field.clear();
        } else {
            field += c;
        }
    }
    fields.append(field.trimmed());
    return isQuoted ? std::nullopt : std::optional(fields);
}

/// The next line, trimmed; nothing when it is longer than any row can be. It is read to its end in any case.
std::optional<QString> ReadLine(QIODevice& device) {
    constexpr qint64 LONGEST = 65536;
    const QByteArray line = device.readLine(LONGEST);
    bool isWhole = line.endsWith('\n') || device.atEnd();
    if (isWhole) {
        return QString::fromUtf8(line).trimmed();
    }
    while (!isWhole) {
        isWhole = device.readLine(LONGEST).endsWith('\n') || device.atEnd();
    }
    return {};
}

/// The column of the first of several names that the header has; -1 when it has none.
qsizetype Find(const QStringList& header, const QStringList& names) {
    for (const QString& name : names) {
        if (const qsizetype column = header.indexOf(name); column >= 0) {
            return column;
        }
    }
    return -1;
}

} // namespace

bool ChannelReader::Read(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return Fail(fileName + u": "_s + file.errorString());
    }
    return Read(file) || Fail(fileName + u": "_s + m_errorText);
}

bool ChannelReader::Read(QIODevice& device) {
    m_channels.clear();
    m_badRows.clear();
    if (!ReadHeader(ReadLine(device).value_or(QString()))) {
        return false;
    }
    for (qsizetype lineNumber = 2; !device.atEnd(); ++lineNumber) {
        const std::optional<QString> line = ReadLine(device);
        if (!line) {
            m_badRows.append(u"line %1: too long"_s.arg(lineNumber));
        } else if (!line->isEmpty()) {
            ReadRow(*line, lineNumber);
        }
    }
    return true;
}

bool ChannelReader::ReadHeader(const QString& line) {
    const QStringList header = SplitLine(line.toLower()).value_or(QStringList());
    m_columns = {};
    m_columnCount = header.size();
    constexpr std::array<std::pair<QStringView, double>, 4> FREQUENCY_COLUMNS{
        {{u"frequency_mhz", 1e6}, {u"frequency_khz", 1e3}, {u"frequency_hz", 1.0}, {u"frequency", 0.0}}};
    for (const auto& [name, unit] : FREQUENCY_COLUMNS) {
        const qsizetype column = header.indexOf(name);
        if (column >= 0 && m_columns.frequency < 0) {
            m_columns.frequency = column;
            m_columns.unit = unit;
        }
    }
    m_columns.name = Find(header, {u"name"_s, u"description"_s});
    m_columns.channel = Find(header, {u"channel"_s, u"id"_s});
    m_columns.alarm = Find(header, {u"alarm"_s});
    if (m_columns.frequency < 0) {
        return Fail(u"the header has no frequency column (frequency_mhz, _khz, _hz, or frequency)"_s);
    }
    return true;
}

void ChannelReader::ReadRow(const QString& line, qsizetype lineNumber) {
    const auto refuse = [&](const QString& why) { m_badRows.append(u"line %1: "_s.arg(lineNumber) + why); };
    const std::optional<QStringList> fields = SplitLine(line);
    if (!fields || fields->size() != m_columnCount) {
        refuse(fields ? Plural(static_cast<quint64>(fields->size()), u"field"_s) +
                            u" instead of %1"_s.arg(m_columnCount)
                      : u"a quote is not closed"_s);
        return;
    }
    const QString& frequencyText = fields->at(m_columns.frequency);
    bool isNumber = false;
    const double frequency = m_columns.unit == 0.0 ? FrequencyText::Parse(frequencyText).value_or(0.0)
                                                   : frequencyText.toDouble(&isNumber) * m_columns.unit;
    if (!(frequency > 0.0) || !std::isfinite(frequency)) {
        refuse(u"'"_s + frequencyText + u"' is not a frequency"_s);
        return;
    }
    NamedChannel entry;
    if (m_columns.name >= 0) {
        entry.name = fields->at(m_columns.name);
    }
    entry.channel.SetFrequency(std::round(frequency));
    entry.channel.SetChannelID(static_cast<int>(lineNumber - 1));
    if (m_columns.channel >= 0) {
        const QString& channelText = fields->at(m_columns.channel);
        const int channel = channelText.toInt(&isNumber);
        if (!isNumber) {
            refuse(u"'"_s + channelText + u"' is not a channel number"_s);
            return;
        }
        entry.channel.SetChannelID(channel);
    }
    if (m_columns.alarm >= 0) {
        const QString alarm = fields->at(m_columns.alarm).toLower();
        entry.channel.SetIsAlarmChannel(alarm == u"1" || alarm == u"true");
    }
    m_channels.push_back(std::move(entry));
}

bool ChannelReader::Fail(const QString& why) {
    m_errorText = why;
    return false;
}

} // namespace ZANServer
