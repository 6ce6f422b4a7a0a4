#include "zanserver/outputcheck.h"

#include "connections/interruptibleinput.h"
#include "connections/outputfile.h"
#include "zancommon/dfdataoutput.h"
#include "zanserver/recordingfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace ZANServer::OutputCheck {

namespace {

/// The name of standard input and standard output.
constexpr QStringView STANDARD_STREAM = InterruptibleInput::STANDARD_INPUT;

/// The name of a file; for "-" the system's name of the standard stream.
QString StreamFile(const QString& name, const QString& stream) {
    return name == STANDARD_STREAM ? stream : name;
}

bool WouldOverwriteRecording(const QString& output, const QString& recording) {
    const QString file = StreamFile(recording, u"/dev/stdin"_s);
    // A terminal may be both.
    const bool canBeSame = recording != STANDARD_STREAM || QFileInfo(file).isFile();
    return canBeSame && DFDataOutput::TouchesFile(StreamFile(output, u"/dev/stdout"_s), file);
}

/// The station's files in the directory of its settings, also those that it will create.
QStringList FindOwnFiles(const QString& directory, const QString& deviceAddress) {
    static const QRegularExpression notInFileNames(u"[/:*\"]"_s); // of the log's name
    QStringList files{directory + u"/ZANControl/commandlog-%1.txt"_s.arg(
                                      QString(deviceAddress).replace(notInFileNames, u"_"_s))};
    for (const QString& name : {u"/Application.ini"_s, u"/TrafficControl.ini"_s, u"/DFSettings.ini"_s}) {
        // A settings file that is a link is saved where the link leads to.
        const QString place = QFileInfo(directory + name).canonicalFilePath();
        for (const QString& settings : {directory + name, place.isEmpty() ? directory + name : place}) {
            files += {settings, settings + u".lock"_s, settings + u".saving"_s};
        }
    }
    for (const QString& place : {directory, directory + u"/ZANControl"_s}) {
        for (const QFileInfo& file :
             QDir(place).entryInfoList({u"*.ini*"_s, u"station.lock"_s, u"commandlog-*"_s}, QDir::Files)) {
            files.append(file.filePath());
        }
    }
    files.removeDuplicates();
    return files;
}

/// Why a text cannot be the name of a file; empty when it can.
QString CheckName(const QString& name) {
    if (name.isEmpty()) {
        return u"the output has no name of a file"_s;
    }
    if (name.contains(QChar::Null) || !name.isValidUtf16()) {
        return u"the output has a name with characters that no file has"_s;
    }
    return QFile::encodeName(name).size() > LONGEST_NAME
               ? u"the output has a name of more than %1 bytes"_s.arg(LONGEST_NAME)
               : QString();
}

} // namespace

bool IsReplayed(const QString& file, const StationFiles& files) {
    return !files.recording.isEmpty() &&
           OutputFile::IsSameFile(file, StreamFile(files.recording, u"/dev/stdin"_s));
}

QStringList CheckBesideRecorder(const QString& output, const QString& record) {
    const QString touched = record.isEmpty() ? QString() : RecordingFiles::FindTouched(output, record);
    if (touched.isEmpty()) {
        return {};
    }
    return {
        touched == record
            ? u"the output %1 would overwrite %2, which the recorder writes"_s.arg(output, record)
            : u"the output %1 would overwrite %2, a numbered file of the recorder"_s.arg(output, touched)};
}

QStringList FindOverwritten(const QString& output, const StationFiles& files) {
    QStringList found = FindOwnFiles(files.directory, files.deviceAddress);
    found.removeIf([&output](const QString& file) { return !DFDataOutput::TouchesFile(output, file); });
    return found;
}

QStringList CheckFile(const QString& output, const StationFiles& files, const QString& ownOutput) {
    if (const QString reason = CheckName(output); !reason.isEmpty()) {
        return {reason};
    }
    if (QFileInfo(output).isDir()) {
        return {u"the output %1 is a directory"_s.arg(output)};
    }
    QStringList reasons;
    if (!files.recording.isEmpty() && WouldOverwriteRecording(output, files.recording)) {
        reasons += u"the output %1 would overwrite the recording %2"_s.arg(output, files.recording);
    }
    for (const QString& file : FindOverwritten(output, files)) {
        reasons += u"the output %1 would overwrite %2, which belongs to the station"_s.arg(output, file);
    }
    const bool isOwn =
        output == STANDARD_STREAM || (!ownOutput.isEmpty() && OutputFile::IsSameFile(output, ownOutput));
    if (const QString user = isOwn ? QString() : OutputFile::FindUser(output); !user.isEmpty()) {
        reasons += u"the output %1 is in use by %2"_s.arg(output, user);
    }
    return reasons;
}

} // namespace ZANServer::OutputCheck
