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
// Keys without a section are under [General], or before the first section. A line is split at its first "=",
// and blanks around key and value are removed. In section names and keys "\" means "/", and %XX and %UXXXX
// mean the character of that number.
//
// A value is read as it is written, with its commas, semicolons and backslashes. Only a value that is
// enclosed in double quotes as a whole is unescaped: \\ \" \n \r \t, \xH.. (as many hexadecimal digits as
// there are) and \uXXXX, both a UTF-16 code unit; a backslash before any other character is kept. Of two "@"
// at the beginning the first is removed.
//
// Files are written so that QSettings (QSettings::IniFormat), which interprets more characters, reads the
// same values: a value is quoted when it holds a comma, a semicolon, a backslash, a quote or a control
// character, has blanks around it, or begins with "@", which is doubled then.
//
// QSettings itself escapes values without quoting them. Therefore a file in which all lines are as QSettings
// writes them (section names of letters, digits and escapes; no key before the first section; no blanks
// around "=") is read with the escapes of QSettings; a list is read as its texts joined by commas.

/// The texts of settings by their full keys, in the order of the keys, so that those of a section follow one
/// another.
using SettingsTexts = QMap<QString, QString>;

/// A line of a settings file that could not be read, or not completely.
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
/// The bytes of a settings file that `ParseSettings` reads back as the same keys and texts.
[[nodiscard]] QByteArray FormatSettings(const SettingsTexts& texts);
/// Whether a text can be a key, or the name of a section, that every reader of the file reads in the same
/// way.
[[nodiscard]] bool IsSettingsKey(QStringView key);
/// Reads a boolean: "true" and "false" in any case, "1" and "0".
[[nodiscard]] std::optional<bool> ParseBoolean(QStringView text);
