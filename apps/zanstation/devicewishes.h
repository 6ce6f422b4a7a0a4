#pragma once

#include "zancommon/zandomain.h"

#include <QCommandLineOption>
#include <QList>
#include <QStringList>

#include <optional>

class CommandLine;

/// What the command line wishes a device to measure.
struct DeviceWishes {
    std::optional<EOperationMode> mode;
    std::optional<double> frequency; ///< Hz
    QStringList ranges;              ///< to scan, as the tree has them; empty: as they are

    /// The options that `Read` takes them from.
    [[nodiscard]] static QList<QCommandLineOption> GetOptions();
    /// Nothing, with a message, when one is none.
    [[nodiscard]] static std::optional<DeviceWishes> Read(const CommandLine& line);
};
