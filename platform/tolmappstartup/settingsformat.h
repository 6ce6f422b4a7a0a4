#pragma once

#include <QByteArray>
#include <QList>
#include <QSettings>
#include <QString>

#include <optional>

// The text format of settings files, UTF-8:
//
//   ; a comment, and so is a line that begins with #
//   Output_Interval=1000
//   [ZANStations/ZANStation0]
//   DeviceAddress=10.0.0.7:5555
//   DevOptions=WB;SR;"HF"
//   Note="two lines:\nthis is the second"
//
// A line is split at its first "=", and blanks around key and value are cut off. A value reads as the text
// that stands there, with its commas, semicolons and backslashes. Only a value that is enclosed in double
// quotes as a whole is unescaped: \\ \" \n \r \t and \uXXXX (a UTF-16 code unit); a backslash before any
// other character stands for itself.

/// A line of a settings file that could not be taken as it stands.
struct DamagedLine {
    int number; ///< counted from 1
    QString reason;
};

/// What a settings file holds.
struct ParsedSettings {
    QSettings::SettingsMap values; ///< texts by their whole key
    QList<DamagedLine> damage;
};

/// Reads a settings file. Damaged lines are left out and named; the others are read.
[[nodiscard]] ParsedSettings ParseSettings(QByteArrayView bytes);
/// Writes a settings file that `ParseSettings` reads back as the same keys and texts.
[[nodiscard]] QByteArray FormatSettings(const QSettings::SettingsMap& values);
/// Whether a key, or the name of a section, can stand in a settings file.
[[nodiscard]] bool IsSettingsKey(QStringView key);
/// The boolean that a text stands for: "true" and "false" in any case, "1" and "0".
[[nodiscard]] std::optional<bool> ParseBoolean(QStringView text);
