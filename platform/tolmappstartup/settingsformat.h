#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

// The text format of settings files, UTF-8:
//
//   ; a comment, and so is a line that begins with #
//   [General]
//   Output_Interval=1000
//   [ZANStations/ZANStation0]
//   DeviceAddress=10.0.0.7:5555
//   DevOptions="WB;SR;\"HF\""
//   Note="two lines:\nthis is the second"
//
// Keys that belong to no section stand under [General], or before the first section. A line is split at its
// first "=", and blanks around key and value are cut off. In section names and keys "\" stands for "/", and
// %XX and %UXXXX for the character of that number.
//
// A value reads as the text that stands there, with its commas, semicolons and backslashes. Only a value that
// is enclosed in double quotes as a whole is unescaped: \\ \" \n \r \t, \xH.. (as many hexadecimal digits as
// there are) and \uXXXX, both a UTF-16 code unit; a backslash before any other character stands for itself.
// An "@" in front of another one at the front of it is left out.
//
// What is written is read in the same way by QSettings (QSettings::IniFormat), which sees more in a value: it
// is quoted when it holds a comma, a semicolon, a backslash, a quote or a control character, has blanks
// around it, or begins with "@", which is doubled then.
//
// QSettings itself escapes values without quoting them. So a file whose lines are all as QSettings writes
// them (section names of letters, digits and escapes; no key before the first one; no blanks around "=") has
// values with its escapes; lists in it read as their texts joined by commas.

/// The texts of settings by their whole key, in its order: what stands in a section stands together.
using SettingsTexts = QMap<QString, QString>;

/// A line of a settings file that could not be taken as it stands.
struct DamagedLine {
    int number; ///< counted from 1
    QString reason;
};

/// What a settings file holds.
struct ParsedSettings {
    SettingsTexts texts;
    QList<DamagedLine> damage;
};

/// Reads a settings file. Damaged lines are left out and named; the others are read.
[[nodiscard]] ParsedSettings ParseSettings(QByteArrayView bytes);
/// Writes a settings file that `ParseSettings` reads back as the same keys and texts.
[[nodiscard]] QByteArray FormatSettings(const SettingsTexts& texts);
/// Whether a setting can be stored under a key, or a section have that name, and every reader of the file
/// sees the same key.
[[nodiscard]] bool IsSettingsKey(QStringView key);
/// The boolean that a text stands for: "true" and "false" in any case, "1" and "0".
[[nodiscard]] std::optional<bool> ParseBoolean(QStringView text);
