#pragma once

#include <QString>

class QLibrary;

/// What speaks against loading a component library, told before any of its code runs in this process.
namespace ComponentCheck {

/// The reason why a file is not to be loaded, in words that follow its path; empty when nothing speaks
/// against it. It must belong to root or to the user of the process, and so must all directories above it;
/// nobody else may be able to write to it or to them (above the directory that it is in a sticky one will
/// do). All of it must be there: what a truncated file lacks ends the process when it is touched.
/// \param place         the directory in which it was found, perhaps as a link: it must be as safe
/// \param canonicalPath the file; what is to be loaded is this path, which nobody else can change any more
QString FindFault(const QString& place, const QString& canonicalPath);

/// Loads a library and asks for its interface version in a child process first. What its initialisers and its
/// version function do there ends the child only: in this process an exception that leaves an initialiser
/// inside the loader would leave the loader's lock taken, or end the process.
/// Takes as long as the load, at most 5 s. The reason as above; empty when all went well.
QString FindFaultInTrial(const QString& canonicalPath);

/// Loads a library into this process. The reason as above; throws what an initialiser throws.
QString Load(QLibrary& library);
/// Asks a library that is loaded for its interface version. The reason as above.
QString FindFaultOfVersion(QLibrary& library);

} // namespace ComponentCheck
