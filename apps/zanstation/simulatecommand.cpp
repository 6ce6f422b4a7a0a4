#include "zancommon/recordingwriter.h"
#include "zanserver/passsimulator.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"

#include <QFileInfo>

#include <optional>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::RecordedBearing;
using KvZANCommon::RecordingWriter;

namespace {

bool WriteSimulation(quint64 seed, quint64 rowCount, const QString& fileName) {
    PassSimulator simulator(seed, rowCount);
    RecordingWriter writer;
    bool isWritten = writer.Open(fileName);
    while (isWritten) {
        const std::optional<RecordedBearing> bearing = simulator.Next();
        if (!bearing) {
            isWritten = writer.Commit();
            break;
        }
        isWritten = writer.Write(*bearing);
    }
    if (!isWritten) {
        Console::Error(writer.GetErrorText());
    }
    return isWritten;
}

} // namespace

namespace Commands {

int Simulate(const QStringList& arguments) {
    CommandLine line(
        u"simulate"_s, u"Writes the recording of an emitter that passes the station: one row per second."_s,
        {{u"seed"_s, u"Seed of the random noise."_s, u"N"_s},
         {u"rows"_s, u"Number of rows (default: %1)."_s.arg(PassSimulator::DEFAULT_ROW_COUNT), u"N"_s},
         {u"out"_s, u"File to write."_s, u"FILE"_s},
         {u"force"_s, u"Overwrites an existing file."_s}});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    constexpr qint64 LARGEST = 1'000'000'000'000;
    std::optional<qint64> seed = 1;
    std::optional<qint64> rows = static_cast<qint64>(PassSimulator::DEFAULT_ROW_COUNT);
    if (!line.Number(u"seed"_s, qint64{0}, LARGEST, seed) ||
        !line.Number(u"rows"_s, qint64{1}, LARGEST, rows)) {
        return EXIT_USAGE;
    }
    const std::optional<QString> fileName = line.Text(u"out"_s);
    if (!fileName) {
        return CommandLine::Refuse(u"--out is missing: name the file for the recording"_s);
    }
    if (!line.IsSet(u"force"_s) && QFileInfo(*fileName).isFile()) {
        Console::Error(*fileName + u" exists already; --force overwrites it"_s);
        return EXIT_FAILED;
    }
    return WriteSimulation(static_cast<quint64>(*seed), static_cast<quint64>(*rows), *fileName) ? EXIT_OK
                                                                                                : EXIT_FAILED;
}

} // namespace Commands
