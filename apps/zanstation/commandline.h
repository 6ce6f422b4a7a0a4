#pragma once

#include "zanstation/console.h"

#include <QCommandLineParser>
#include <QString>

#include <cmath>
#include <functional>
#include <optional>
#include <type_traits>

/// Reads the options and arguments of one command. Ends the program's work for a wrong command line, and for
/// --help.
class CommandLine {
public:
    /// \param positional the arguments that are no options, for the usage line, such as "TABLE"
    CommandLine(const QString& command, const QString& description, const QList<QCommandLineOption>& options,
                const QString& positional = {});

    /// The exit code when there is nothing more to do.
    std::optional<int> Parse(const QStringList& arguments);

    /// Says why the command line is wrong; returns the exit code for it.
    static int Refuse(const QString& why);
    /// An argument as a message quotes it: in quotes, and of a long one the beginning.
    static QString Quote(const QString& argument);

    [[nodiscard]] bool IsSet(const QString& name) const { return m_parser.isSet(name); }
    /// The text of an option: the one given, its default, or nothing.
    [[nodiscard]] std::optional<QString> Text(const QString& name) const;
    [[nodiscard]] QStringList Positional() const { return m_parser.positionalArguments(); }

    /// Reads a number into a variable when the option is given. False, with a message, when it is none, or
    /// not between the bounds.
    template <class T>
    bool Number(const QString& name, T minimum, T maximum, std::optional<T>& number) const;
    /// Reads a frequency in Hz ("145.5M") into a variable when the option is given. False, with a message,
    /// when it is none.
    bool Frequency(const QString& name, std::optional<double>& frequency) const;

    /// The directory of the settings: an absolute path, or empty when there is none.
    [[nodiscard]] QString GetConfigDirectory() const;
    /// Opens the settings. False, with a message, when they cannot be had.
    [[nodiscard]] bool OpenStore() const;
    /// Does something with the station that the settings describe. Returns the exit code.
    [[nodiscard]] int WithStation(const std::function<int()>& work) const;

    /// For the commands that have something for programs.
    static QCommandLineOption JsonOption();
    /// Whether that option is given.
    [[nodiscard]] bool AsJson() const;

    /// For the commands that load components.
    static QCommandLineOption ComponentsOption();
    /// Has components loaded from where that option says.
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
