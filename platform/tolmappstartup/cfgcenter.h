#pragma once

#include "tolmappstartup/icfg.h"
#include "tolmappstartup/idllinstance.h"
#include "zanplatform_export.h"

#include <QString>

/// The configuration centre: the process's settings files and component libraries.
///
/// Settings files are readable text in the manner of INI files, in one directory: `[section/subsection]`
/// headers, `[General]` for keys without a section, `key=value` lines, UTF-8. A value reads as the text that
/// stands there, whatever commas, semicolons or backslashes it holds; only a value enclosed in double quotes
/// is unescaped. One exception: a file in which every line is as QSettings writes it is read as QSettings
/// reads it, also when a person wrote it; then "C:\temp" without quotes holds a tab. Lines that begin with
/// ";" or "#" are comments; they are not kept when the program writes the file. QSettings reads what is
/// written to the letter, and what it writes is read; so it is with Python's configparser
/// (docs/configuration.md).
///
/// A file is replaced as a whole or not at all, and several processes may write one at the same time: each
/// changes the keys that it has set in what stands in the file by then. A damaged file is kept beside as
/// "FILE.damaged-N" and reported; what is readable of it stays in force. Before a value that could not be
/// read as the type wanted is overwritten, the file is kept in the same way.
///
/// A program that does not know the lock of a file (an editor) is waited for while it has the file open for
/// writing, and what it wrote counts. A file stays its owner's, and a link to it a link.
///
/// Everything belongs to the application's main thread.
class ZANPLATFORM_EXPORT CfgCenter {
public:
    /// The bytes of the largest settings file; a larger one is neither read nor written, and reported. Each
    /// save reads and writes all of a file. This is the room for 80,000 channels of traffic control, far more
    /// than there are; the settings of a station take some kilobytes.
    static constexpr qint64 MAX_FILE_SIZE = qint64{8} << 20;

    /// Chooses the directory of the settings files, and makes it when it is missing. What was open before is
    /// closed, as by `Close`. A relative path counts from the current directory. False when the directory
    /// cannot be had; then none is set.
    static bool SetConfigDirectory(const QString& directory);
    /// The application's settings, in the file "Application.ini"; every view shows the same. Never to be
    /// released, and good for the whole run. Without a directory the settings live in memory only.
    static ICfg& GetAppCfg(ICfg::View view);
    /// The settings of the further file "<name>.ini" in the same directory; the caller releases it. All who
    /// open a name share its file, which stays open until `Close`. Null when no directory is set, and for a
    /// name that is empty or holds a separator, ".." or control characters.
    /// The third argument is empty in every use and has no effect; nor has the view.
    static ICfg* CreateCfg(const QString& name, ICfg::View view, const QString& unused);
    /// Saves every settings file. To be called at the end of the program; what is set in `GetAppCfg` later,
    /// or before the next `SetConfigDirectory`, lives in memory only. Objects of `CreateCfg` and `GetSubCfg`
    /// that have not been released go on with their file. Waits at most 10 seconds for files that other
    /// processes have locked. False when something could not be saved; the keys are reported.
    static bool Close();

    /// Chooses the one directory in which components are looked for; it need not be there yet. False for a
    /// path that is not absolute; then none is set.
    static bool SetComponentDirectory(const QString& directory);
    /// Loads a component library and returns a new instance; it is destroyed with
    /// `DestroyDllInstanceByPointer`. "MshClient.dll" stands for "libmshclient.so" in the component
    /// directory. The other arguments are empty and false in every use and have no effect. Null when there is
    /// no such library, when it is no component or one of another interface version, when it does not make an
    /// instance or throws, when its initialisers fail in the child process in which they are tried first,
    /// when it is truncated, and unless it belongs to root or to the user of the process and nobody else can
    /// write to it or to its directory; `GetLastError` says which, and where it was looked for.
    static IDllInstance* CreateDllInstanceByFileName(const QString& fileName, const QString& unused,
                                                     bool unusedFlag, bool unusedFlag2);
    /// Destroys an instance, and unloads its library when it was the last one. Null and pointers that
    /// `CreateDllInstanceByFileName` did not return are refused and reported.
    static void DestroyDllInstanceByPointer(IDllInstance* instance);

    /// The latest problem with a settings file or a component, in words for the operator; empty when there
    /// was none. Each is traced as well. A success does not clear it.
    static QString GetLastError();
};
