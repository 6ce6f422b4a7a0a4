#pragma once

#include "zanstation/console.h"

#include <QCommandLineParser>
#include <QString>

#include <cmath>
#include <functional>
#include <optional>
#include <type_traits>

/// Reads the options and arguments of one command. Handles wrong command lines and --help.
class CommandLine {
public:
    /// \param positional the arguments that are not options, for the usage line, such as "TABLE"
    CommandLine(const QString& command, const QString& description, const QList<QCommandLineOption>& options,
                const QString& positional = {});

    /// Parses the arguments. Returns the exit code when the command must not go on.
    std::optional<int> Parse(const QStringList& arguments);

    /// Prints why the command line is wrong; returns the exit code for that.
    static int Refuse(const QString& why);
    /// An argument for a message: in quotes; a long one is shortened.
    static QString Quote(const QString& argument);

    [[nodiscard]] bool IsSet(const QString& name) const { return m_parser.isSet(name); }
    /// The text of an option: the given one, its default, or nothing.
    [[nodiscard]] std::optional<QString> Text(const QString& name) const;
    [[nodiscard]] QStringList Positional() const { return m_parser.positionalArguments(); }

    /// Reads a number into a variable when the option is given. False, with a message, when it is not a
    /// number or out of bounds.
    template <class T>
    bool Number(const QString& name, T minimum, T maximum, std::optional<T>& number) const;
    /// Reads a frequency in Hz ("145.5M") into a variable when the option is given. False, with a message,
    /// when it is not a frequency.
    bool Frequency(const QString& name, std::optional<double>& frequency) const;

    /// The directory of the settings: an absolute path, or empty when there is none.
    [[nodiscard]] QString GetConfigDirectory() const;
    /// Opens the settings. False, with a message, when they cannot be opened.
    [[nodiscard]] bool OpenStore() const;
    /// Runs a function while the station of the settings exists. Returns the exit code.
    [[nodiscard]] int WithStation(const std::function<int()>& work) const;

    /// The option of commands that can print JSON.
    static QCommandLineOption JsonOption();
    /// Whether the option for JSON is given.
    [[nodiscard]] bool AsJson() const;

    /// The option of commands that load components.
    static QCommandLineOption ComponentsOption();
    /// Sets the directory of components from that option.
    void TakeComponentDirectory() const;

private:
    [[nodiscard]] bool RefuseNumber(const QString& name, const QString& kind, const QString& minimum,
                                    const QString& maximum) const;

    const QString m_usage;
    const bool m_takesArguments;
    QCommandLineParser m_parser;
};

template <class T>
bool CommandLine::Number(const QString& name, T minimum, T maximum, std::optional<T>& number) const {
    if (!m_parser.isSet(name)) {
        return true;
    }
    bool isNumber = false;
    const double value = m_parser.value(name).toDouble(&isNumber);
    if (!isNumber || !(value >= static_cast<double>(minimum) && value <= static_cast<double>(maximum)) ||
        (std::is_integral_v<T> && value != std::floor(value))) {
        return RefuseNumber(name, std::is_integral_v<T> ? QStringLiteral(" whole") : QString(),
                            QString::number(minimum), QString::number(maximum));
    }
    number = static_cast<T>(value);
    return true;
}
