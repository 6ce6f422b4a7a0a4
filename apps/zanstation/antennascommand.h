#pragma once

#include <QString>
#include <QStringList>

/// Shows and changes the antenna setup in the settings of the station.
namespace AntennasCommand {

/// What can be done: an action, and the number of its arguments.
struct Action {
    QString name;
    int argumentCount;
};

/// The action of a name; null when there is none.
const Action* FindAction(const QString& name);

/// Carries out an action on the station that was started. Returns the exit code: failed when the setup is not
/// valid afterwards, or when nothing could be done; wrong usage for a range that is none.
int Run(const QStringList& actionAndArguments);

} // namespace AntennasCommand
