#pragma once

#include "zancommon_export.h"

#include "zancommon/recordedbearing.h"

#include <QByteArray>
#include <QSaveFile>
#include <QString>

#include <optional>
#include <span>

namespace KvZANCommon {

/// Writes a bearing recording that `RecordingReader` reads back.
///
/// Each column has its precision: positions 7 decimals, the level 2, azimuth, elevation, attitude and
/// altitude 1, the quality 0; time and frequency are written in full.
///
/// The file gets its name only with `Commit`; until then, and on any failure, an existing file stays.
class ZANCOMMON_EXPORT RecordingWriter {
public:
    /// Begins a recording and writes its header line. False with an error text when the file cannot be
    /// written, or the name is that of a directory or device.
    /// \param further columns behind `RECORDING_COLUMNS`, which outlive the recording: some of
    ///                `FURTHER_RECORDING_COLUMNS`, in their order
    bool Open(const QString& fileName, std::span<const RecordingColumn> further = {});

    /// Appends one row. False with an error text when it cannot be written, and for a row that is not valid:
    /// with a value out of range or not finite, or too early after the rows before (`IsTooEarly`). A row that
    /// is not valid does not change the recording.
    bool Write(const RecordedBearing& bearing);

    /// Completes the file. False with an error text when not all of it could be written.
    bool Commit();

    /// The reason of the last failed call; empty when none has failed.
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }

private:
    ZANCOMMON_NO_EXPORT bool Fail(const QString& text);
    ZANCOMMON_NO_EXPORT bool WriteLine();

    QString m_fileName;
    std::span<const RecordingColumn> m_further;
    std::optional<QSaveFile> m_file; // has a value while a recording is written
    QByteArray m_line;
    quint64 m_latestTimeMs = 0;
    QString m_errorText;
};

} // namespace KvZANCommon
