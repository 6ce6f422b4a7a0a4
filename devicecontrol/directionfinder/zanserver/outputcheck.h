#pragma once

#include "zanserver_export.h"

#include <QString>
#include <QStringList>

namespace ZANServer {

/// The files that a running station uses itself, so that no output may overwrite them.
struct StationFiles {
    QString directory;     ///< of the settings
    QString deviceAddress; ///< its command log is named after it
    QString recording;     ///< the one that is replayed, "-" for standard input; empty: none
};

/// What is checked before sentences or a recording are written to a file.
namespace OutputCheck {

/// The longest name of a file that the system takes, in bytes.
inline constexpr qsizetype LONGEST_NAME = 4095;

/// The station's own files, also those that it will create, that an output to a file would overwrite.
/// \param output as for `CheckFile`
ZANSERVER_EXPORT QStringList FindOverwritten(const QString& output, const StationFiles& files);

/// Whether a file is the recording that is replayed, whatever its name is.
ZANSERVER_EXPORT bool IsReplayed(const QString& file, const StationFiles& files);

/// Why sentences cannot go to a file beside the recorder: they would overwrite its file or a numbered one. No
/// text when they can.
/// \param record the recorder's file; empty: nothing is recorded
ZANSERVER_EXPORT QStringList CheckBesideRecorder(const QString& output, const QString& record);

/// Why sentences cannot go to a file: texts for the operator, one for each reason; none when they can. The
/// name is not that of a file, the output would overwrite the recording or a file of the station, or another
/// process writes to it. Opens and changes nothing.
/// \param output    "-": standard output
/// \param ownOutput the file that this output writes to now, which may also be named otherwise
ZANSERVER_EXPORT QStringList CheckFile(const QString& output, const StationFiles& files,
                                       const QString& ownOutput = {});

} // namespace OutputCheck
} // namespace ZANServer
