#pragma once

#include <QByteArray>
#include <QString>

#include <map>

/// The files of a recorder: the one that it writes, and those that got a number when they were full
/// (flight.csv: flight.000001.csv).
namespace ZANServer::RecordingFiles {

/// What is found in a file.
enum class Content {
    NoRows,  ///< nothing, or only the header line of a recording: nothing is lost when it is emptied
    Rows,    ///< a recording: its header line, and more
    Damaged, ///< what a loss of power leaves of a new recording: a part of its header line, zero bytes
    Other    ///< no recording, or not readable
};

/// The header line that the recorder writes.
const QByteArray& Header();

Content Examine(const QString& name);

/// The numbered files of a recorder's file, by their numbers. Exactly six digits are a number: others, such
/// as those of a date, are no files of the recorder.
std::map<int, QString> FindNumbered(const QString& name);
/// The name with the next number, behind the newest numbered recording; empty when there is no number left.
QString NextNumbered(const QString& name);
/// The name under which a damaged file is kept (flight.damaged.000001.csv); empty when there is none left.
QString NextDamaged(const QString& name);

/// The file of a recorder that an output would overwrite: its file, or a numbered one, also one that is not
/// there yet; empty when there is none.
QString FindTouched(const QString& output, const QString& name);

} // namespace ZANServer::RecordingFiles
