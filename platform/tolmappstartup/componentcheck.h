#pragma once

#include <QString>

/// What speaks against loading a component library, told before any of its code runs in this process.
namespace ComponentCheck {

/// The reason why a file is not to be loaded, in words that follow its path; empty when nothing speaks
/// against it. It must belong to root or to the user of the process, nobody else may be able to write to it
/// or to the directory that it is in (a link counts with both of its ends), and all of it must be there: what
/// a truncated file lacks ends the process when it is touched.
QString FindFault(const QString& path);

/// Loads a library in a child process first. What its initialisers do there ends the child only: an exception
/// that leaves one inside the loader leaves the loader's lock taken, or ends the process.
/// Takes as long as the load, at most 5 s. The reason as above; empty when the load came to its end, also
/// when the library could not be had.
QString FindFaultyInitialiser(const QString& path);

} // namespace ComponentCheck
