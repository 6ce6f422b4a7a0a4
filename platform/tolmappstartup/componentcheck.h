#pragma once

#include <QString>

class QLibrary;

/// Finds reasons not to load a component library before any of its code runs in this process.
namespace ComponentCheck {

/// The reason not to load a file, as a text that follows its path; empty when there is none. The file and all
/// directories above it must belong to root or to the user of the process, and nobody else may be able to
/// write to them (a directory above the file's own may be sticky instead). The file must be complete:
/// accessing what a truncated file lacks ends the process.
/// \param place         the directory in which it was found, perhaps as a link; it must be as safe
/// \param canonicalPath the file. Load this path: other users can no longer change it
QString FindFault(const QString& place, const QString& canonicalPath);

/// Loads a library and reads its interface version in a child process first. A failure of its initialisers or
/// its version function ends only the child: in this process an exception that an initialiser throws inside
/// the loader would leave the loader's lock taken, or end the process. Takes as long as the load, at most 5
/// s. Returns the reason as above; empty on success.
QString FindFaultInTrial(const QString& canonicalPath);

/// Loads a library into this process. Returns the reason as above; throws what an initialiser throws.
QString Load(QLibrary& library);
/// Checks the interface version of a loaded library. Returns the reason as above.
QString FindFaultOfVersion(QLibrary& library);

} // namespace ComponentCheck
