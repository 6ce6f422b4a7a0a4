#pragma once

#include "zanserver_export.h"

#include "connections/outputfile.h"
#include "kwbase/observable.h"
#include "valueframework/bearingresult.h"
#include "valueframework/valuetypes.h"
#include "zancommon/recordedbearing.h"
#include "zanserver/driverreceiver.h"
#include "zanserver/outputcheck.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>
#include <vector>

namespace ZANServer {

/// Records what the device delivers, with the attitude and position that the station has used for it, so that
/// a replay gives the same sentences.
///
/// The recording is written to the file that the settings name; where that is a link, to the file that it
/// leads to. When it has reached its size, or a row is too early for the order of time of a recording
/// (`IsTooEarly`), the file gets the next number (flight.csv becomes flight.000001.csv) and a new one begins.
/// A recording that is there at the start gets a number, too. When a file is full, and at the start, so many
/// of the numbered files are kept as the settings say, the newest. A file without rows gets no number and is
/// used again, so that switching on and off, or a device that is never there, costs no recording.
///
/// Nothing else is lost: a file with a new number never replaces another one; files that are no recordings,
/// the recording that is replayed and files that some station has open are not removed. A file that is there
/// and is no recording is left alone; only what a loss of power leaves of a new recording (a part of the
/// header line, zero bytes) gives way, as flight.damaged.000001.csv, so that an unattended station records
/// again.
///
/// A clock is set back now and then, not with each row: within a minute of a file that has begun because of
/// that, further rows that are too early are left out, and counted as dropped.
///
/// A file holds whole rows. A row that cannot be written is dropped and counted, and the first of a run of
/// equal failures is told by `Failed`; a file that cannot be opened, was removed, or was changed by another
/// program is tried again. The file is locked while it is written to (`OutputFile`), so that no two stations
/// write to one. Bearings that the driver has marked as unusable, and values that a recording cannot hold,
/// are left out; the latter are counted as dropped.
///
/// What is set is in the tree below `/ZANServer/Out/Rec`, where a change takes effect at once, and is kept in
/// the settings (`Recorder/Enabled`, `File`, `FileSize` in MB, `FileCount`). A file that cannot be recorded
/// to
/// (`CheckFile`) is refused: the values go back, and the reason is there. State, counters and last failure
/// are published there once a second. Uses the values below "/ZANServer", which must outlive it, and needs an
/// event loop; main thread.
class ZANSERVER_EXPORT Recorder final : public QObject, public IObserver {
    Q_OBJECT

public:
    /// Whether it records from its start on.
    enum class Start {
        AsKept, ///< when the settings say so
        Off     ///< not before the tree switches it on; the settings stay as they are
    };

    static constexpr int RETRY_MS = 5000; ///< between two attempts to open the file
    static constexpr int WATCH_MS = 1000; ///< between two looks at name and size of the file
    /// Between two files that begin because the time steps back.
    static constexpr int STEP_BACK_MS = 60'000;

    /// Reads the settings, and opens the file when recording is on.
    /// \param files            what no recording may overwrite
    /// \param bytesPerMegabyte the unit of the size, which tests make small
    explicit Recorder(StationFiles files, Start start = Start::AsKept, qint64 bytesPerMegabyte = 1'000'000,
                      int retryMs = RETRY_MS, int watchMs = WATCH_MS, int stepBackMs = STEP_BACK_MS);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    /// Closes the file.
    ~Recorder() override;

    /// Records a block (`Station::BlockObserver`): the tree has the attitude and position that were used.
    void Take(const BearingBlock& block, const std::vector<BearingResult>& bearings);

    /// Whether it is switched on, and takes blocks.
    [[nodiscard]] bool IsOn() const { return m_pEnabled->GetValue(); }
    /// The failure that lasts; empty when there is none.
    [[nodiscard]] const QString& GetProblem() const { return m_problem; }
    [[nodiscard]] bool IsOpen() const { return m_file.IsOpen(); }
    [[nodiscard]] quint64 GetRowCount() const { return m_rowCount; }
    [[nodiscard]] quint64 GetDroppedCount() const { return m_droppedCount; }

    /// Why a recording cannot be written to a file: it belongs to the station, is the recording that is
    /// replayed, exists and is not a recording, or another program writes to it or reads it. Empty when it
    /// can, as far as can be seen without changing anything.
    [[nodiscard]] static QString CheckFile(const QString& name, const StationFiles& files);

    void Update(Observable* subject, TChangeCode code) override;

Q_SIGNALS:
    /// `IsOn` may have changed.
    void Switched();
    /// Emitted for the first of a run of equal failures, with a text for the operator.
    void Failed(const QString& problem);
    /// Emitted when recording works again after failures.
    void Recovered();

private:
    ZANSERVER_NO_EXPORT void ReadSettings(Start start);
    ZANSERVER_NO_EXPORT void Store(const Observable* changed) const;
    ZANSERVER_NO_EXPORT void Restart();
    ZANSERVER_NO_EXPORT void OnTimer();
    ZANSERVER_NO_EXPORT void CheckSize();
    ZANSERVER_NO_EXPORT bool Open();
    ZANSERVER_NO_EXPORT void OpenOrRetry();
    ZANSERVER_NO_EXPORT bool MakeRoom(OutputFile& previous);
    ZANSERVER_NO_EXPORT bool Move(OutputFile& file, const QString& newName);
    ZANSERVER_NO_EXPORT bool MoveToNumber(OutputFile& file);
    ZANSERVER_NO_EXPORT void RemoveOldest() const;
    [[nodiscard]] ZANSERVER_NO_EXPORT bool IsNeeded(const QString& file) const;
    ZANSERVER_NO_EXPORT bool BeginFile();
    ZANSERVER_NO_EXPORT void BeginAgain(const QString& problem);
    [[nodiscard]] ZANSERVER_NO_EXPORT KvZANCommon::RecordedBearing MakeRow(const BearingBlock& block) const;
    ZANSERVER_NO_EXPORT void TakeRow(const KvZANCommon::RecordedBearing& row);
    ZANSERVER_NO_EXPORT bool Write(const QByteArray& lines);
    ZANSERVER_NO_EXPORT bool Fail(const QString& problem);
    [[nodiscard]] ZANSERVER_NO_EXPORT QString CheckWish() const;
    ZANSERVER_NO_EXPORT void NoteError(const QString& error);
    ZANSERVER_NO_EXPORT void Publish();

    const StationFiles m_files;
    const qint64 m_bytesPerMegabyte;
    const int m_retryMs;
    const int m_watchMs;
    const int m_stepBackMs;

    ValueBool* m_pEnabled;
    ValueString* m_pFile;
    ValueNumericInt* m_pFileSize;
    ValueNumericInt* m_pFileCount;
    ValueNumericDouble* m_pRows;
    ValueNumericDouble* m_pDropped;
    ValueString* m_pRefused;
    ValueSelection* m_pState;
    ValueString* m_pLastError;
    ValueTimeStamp* m_pLastErrorTime;
    ValueBool* m_pOutputEnabled;
    ValueString* m_pOutputFile;
    // What was used.
    ValueNumericInt* m_pHeading;
    ValueNumericDouble* m_pPitch;
    ValueNumericDouble* m_pRoll;
    ValueNumericDouble* m_pAltitude;
    ValueNumericDouble* m_pLatitude;
    ValueNumericDouble* m_pLongitude;
    ValueTimeStamp* m_pPositionTime;

    OutputFile m_file;
    QString m_name;        // as it is set
    QString m_place;       // where that leads to
    qint64 m_size = 0;     // of the open file, with what was written
    qint64 m_keptSize = 0; // that it had when it could not get a number
    quint64 m_latestTime = 0;
    QDeadlineTimer m_nextStepBack; // before it no file begins because of one
    QByteArray m_line;
    QString m_problem;
    QString m_lastError;
    std::optional<quint64> m_lastErrorTime; // ms since 1970
    QString m_wished;                       // the file that was accepted last
    quint64 m_rowCount = 0;
    quint64 m_droppedCount = 0;
    QTimer m_timer; // for the next look at the file, or the next attempt to open it
    QTimer m_publishTimer;
};

} // namespace ZANServer
