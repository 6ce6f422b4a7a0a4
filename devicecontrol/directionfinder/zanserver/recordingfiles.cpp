#include "zanserver/recordingfiles.h"

#include "connections/outputfile.h"
#include "zancommon/dfdataoutput.h"
#include "zancommon/recordingline.h"
#include "zancommon/recordingreader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ZANServer::RecordingFiles {

namespace {

constexpr int DIGITS = 6;
constexpr int LARGEST_NUMBER = 999'999;

/// flight.csv with "damaged": flight.damaged.csv.
QString WithAddition(const QString& name, const QString& addition) {
    const QFileInfo file(name);
    const QString suffix = file.suffix().isEmpty() ? QString() : u'.' + file.suffix();
    return file.dir().filePath(file.completeBaseName() + u'.' + addition + suffix);
}

/// What the names of the numbered files of a file look like.
QRegularExpression NumberedPattern(const QString& name) {
    const QFileInfo file(name);
    const QString suffix = file.suffix().isEmpty() ? QString() : u'.' + file.suffix();
    return QRegularExpression(QRegularExpression::anchoredPattern(
        u"%1\\.([0-9]{%2})%3"_s.arg(QRegularExpression::escape(file.completeBaseName()))
            .arg(DIGITS)
            .arg(QRegularExpression::escape(suffix))));
}

bool IsNumbered(const QString& file, const QString& name) {
    const QFileInfo place(OutputFile::FindPlace(file));
    const QFileInfo recording(OutputFile::FindPlace(name));
    return place.path() == recording.path() &&
           NumberedPattern(recording.filePath()).match(place.fileName()).hasMatch();
}

/// A recording whose header line was not written to the disk as a whole: its beginning, and zero bytes.
bool IsDamaged(QFile& file) {
    constexpr qint64 MOST_READ = qint64{1} << 20;
    file.seek(0);
    QByteArray beginning = file.read(MOST_READ);
    const qsizetype zeros = beginning.indexOf('\0');
    if (zeros >= 0) {
        if (std::any_of(beginning.cbegin() + zeros, beginning.cend(),
                        [](char each) { return each != '\0'; })) {
            return false;
        }
        beginning.truncate(zeros);
    }
    return Header().startsWith(beginning);
}

} // namespace

const QByteArray& Header() {
    static const QByteArray header = [] {
        QByteArray line;
        KvZANCommon::RecordingLine::AppendHeader(line, KvZANCommon::RECORDING_COLUMNS,
                                                 KvZANCommon::FURTHER_RECORDING_COLUMNS);
        return line;
    }();
    return header;
}

Content Examine(const QString& name) {
    QFile file(name);
    if (!QFileInfo(name).isFile() || !file.open(QFile::ReadOnly)) {
        return Content::Other;
    }
    if (file.size() == 0) {
        return Content::NoRows;
    }
    KvZANCommon::RecordingReader reader;
    if (!reader.Open(file, name)) {
        return IsDamaged(file) ? Content::Damaged : Content::Other;
    }
    file.seek(0);
    const qint64 headerSize = file.readLine(KvZANCommon::RecordingReader::MAX_LINE_LENGTH).size();
    return headerSize == file.size() ? Content::NoRows : Content::Rows;
}

std::map<int, QString> FindNumbered(const QString& name) {
    const QRegularExpression pattern = NumberedPattern(name);
    const QDir directory = QFileInfo(name).dir();
    std::map<int, QString> found;
    for (const QString& each : directory.entryList(QDir::AllEntries | QDir::Hidden | QDir::System)) {
        if (const QRegularExpressionMatch match = pattern.match(each); match.hasMatch()) {
            found[match.captured(1).toInt()] = directory.filePath(each);
        }
    }
    return found;
}

QString NextNumbered(const QString& name) {
    const std::map<int, QString> numbered = FindNumbered(name);
    const auto newest = std::find_if(numbered.rbegin(), numbered.rend(),
                                     [](const auto& each) { return Examine(each.second) == Content::Rows; });
    int number = newest == numbered.rend() ? 1 : newest->first + 1;
    while (numbered.contains(number)) { // what is there and is no recording stays
        ++number;
    }
    return number > LARGEST_NUMBER ? QString()
                                   : WithAddition(name, QString::number(number).rightJustified(DIGITS, u'0'));
}

QString NextDamaged(const QString& name) {
    return NextNumbered(WithAddition(name, u"damaged"_s));
}

QString FindTouched(const QString& output, const QString& name) {
    if (DFDataOutput::TouchesFile(output, name)) {
        return name;
    }
    if (IsNumbered(output, name)) {
        return output;
    }
    for (const auto& [number, file] : FindNumbered(OutputFile::FindPlace(name))) {
        if (DFDataOutput::TouchesFile(output, file)) {
            return file;
        }
    }
    return {};
}

} // namespace ZANServer::RecordingFiles
