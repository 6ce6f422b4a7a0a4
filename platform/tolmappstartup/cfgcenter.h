#pragma once

#include "tolmappstartup/icfg.h"
#include "tolmappstartup/idllinstance.h"
#include "zanplatform_export.h"

#include <QString>

/// The configuration centre: the process's settings files and component libraries.
///
/// Settings files are readable text in the manner of INI files, in one directory: `[section/subsection]`
/// headers, `[General]` for keys without a section, `key=value` lines, UTF-8. A value is read as it is
/// written, with any commas, semicolons or backslashes; only a value enclosed in double quotes is unescaped.
/// One exception: a file in which every line has the form that QSettings writes is read as QSettings reads
/// it, also when a person wrote it; then "C:\temp" without quotes holds a tab. Lines that begin with ";" or
/// "#" are comments; they are not kept when the program writes the file. QSettings reads exactly what was
/// stored here, and what it writes can be read here; the same is true of Python's configparser
/// (docs/configuration.md).
///
/// A file is replaced as a whole or not at all, and several processes may write one at the same time: each
/// reads the file again and changes only the keys that it has set. A damaged file is copied to
/// "FILE.damaged-N" and reported; the lines of it that can be read are used. Before a value that could not be
/// read as the wanted type is overwritten, the file is copied in the same way.
///
/// While a program that does not use the lock (an editor) has the file open for writing, a save waits; what
/// that program wrote is kept. A file keeps its owner, and a link to it stays a link.
///
/// Everything belongs to the application's main thread.
class ZANPLATFORM_EXPORT CfgCenter {
public:
    /// The largest size of a settings file in bytes; a larger one is neither read nor written, and reported.
    /// Each save reads and writes the whole file. This size is enough for 80,000 channels of traffic control,
    /// far more than there are; the settings of a station take some kilobytes.
    static constexpr qint64 MAX_FILE_SIZE = qint64{8} << 20;

    /// Sets the directory of the settings files, and creates it when it is missing. Files that were open
    /// before are closed, as by `Close`. A relative path is relative to the current directory. False when the
    /// directory cannot be created; then none is set.
    static bool SetConfigDirectory(const QString& directory);
    /// The application's settings, in the file "Application.ini"; every view shows the same. Must not be
    /// released; valid for the whole run. Without a directory the settings live in memory only.
    static ICfg& GetAppCfg(ICfg::View view);
    /// The settings of the further file "<name>.ini" in the same directory; the caller releases it. All
    /// callers that open a name share its file, which stays open until `Close`. Null when no directory is
    /// set, and for a name that is empty or holds a separator, ".." or control characters. The third argument
    /// and the view have no effect; callers pass an empty text.
    static ICfg* CreateCfg(const QString& name, ICfg::View view, const QString& unused);
    /// Saves every settings file. Call it at the end of the program: what is set in `GetAppCfg` between
    /// `Close` and the next `SetConfigDirectory` lives in memory only. Objects of `CreateCfg` and `GetSubCfg`
    /// that have not been released keep their file. Waits at most 10 seconds for files that other processes
    /// have locked. False when something could not be saved; the keys are reported.
    static bool Close();

    /// Sets the only directory in which components are looked for; it need not exist yet. False for a path
    /// that is not absolute; then none is set.
    static bool SetComponentDirectory(const QString& directory);
    /// That directory; empty while none is set.
    static QString GetComponentDirectory();
    /// Loads a component library and returns a new instance; it is destroyed with
    /// `DestroyDllInstanceByPointer`. "MshClient.dll" means "libmshclient.so" in the component directory. The
    /// other arguments have no effect; callers pass an empty text and false. Null when there is no such
    /// library, when it is not a component or has another interface version, when it does not create an
    /// instance or throws, when its initialisers fail in the child process in which they are tested first,
    /// when it is truncated, and when it or its directory does not belong to root or the user of the process,
    /// or others can write to them. `GetLastError` says which, and where the library was looked for.
    static IDllInstance* CreateDllInstanceByFileName(const QString& fileName, const QString& unused,
                                                     bool unusedFlag, bool unusedFlag2);
    /// Destroys an instance, and unloads the library with its last instance. Null and pointers that
    /// `CreateDllInstanceByFileName` did not return are refused and reported.
    static void DestroyDllInstanceByPointer(IDllInstance* instance);
    /// Keeps the library of an instance loaded to the end of the process: for components whose texts, threads
    /// and code others may use after the last instance. What is not an instance is refused and reported.
    static void KeepLibraryOf(IDllInstance* instance);

    /// The latest problem with a settings file or a component, as a text for the operator; empty when there
    /// was none. Each problem is traced as well. A success does not clear it.
    static QString GetLastError();
};
