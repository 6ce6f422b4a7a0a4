#pragma once

#include <QStringList>

/// The commands of the program, each in the source of its name: its options, its help text and its work. A
/// command takes the program's name and its own as the first argument, and returns the exit code.
namespace Commands {

int Antennas(const QStringList& arguments);
int Catalogue(const QStringList& arguments);
int Device(const QStringList& arguments);
int Doctor(const QStringList& arguments);
int Frequencies(const QStringList& arguments);
int Hardware(const QStringList& arguments);
int Hub(const QStringList& arguments);
int PrintTree(const QStringList& arguments);
int Run(const QStringList& arguments);
int Simulate(const QStringList& arguments);
int Tune(const QStringList& arguments);

} // namespace Commands
