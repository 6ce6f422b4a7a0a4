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

#include <vector>

namespace ZANServer {

/// Records what the device delivers, with the attitude and position that the station has used for it, so that
/// a replay gives the same sentences.
///
/// The recording is written to the file that the settings name. When it has reached its size, or a row is
/// too early for the order of time of a recording (`IsTooEarly`), the file gets the next free number
/// (flight.csv becomes flight.000001.csv) and a new one begins. At the start and when a file is full, so many
/// of the numbered files are kept as the settings say, the newest. A file that is
/// there at the start gets a number, too, if it is a recording; any other file is left alone.
///
/// A clock is set back now and then, not with each row: within a minute of a file that has begun because of
/// that, further rows that are too early are left out, and counted as dropped.
///
/// A file holds whole rows. A row that cannot be written is dropped and counted, and the first of a run of
/// equal failures is told by `Failed`; a file that cannot be opened or was removed is tried again. The file
/// is locked while it is written to (`OutputFile`), so that no two stations write to one. Bearings that the
/// driver has marked as unusable, and values that a recording cannot hold, are left out; the latter are
/// counted as dropped.
///
/// What is set is in the tree below `/ZANServer/Out/Rec`, where a change takes effect at once, and is kept in
/// the settings (`Recorder/Enabled`, `File`, `FileSize` in MB, `FileCount`); counters and last failure are
/// published there once a second. Uses the values below "/ZANServer", which must outlive it, and needs an
/// event loop; main thread.
class ZANSERVER_EXPORT Recorder final : public QObject, public IObserver {
    Q_OBJECT

public:
    static constexpr int RETRY_MS = 5000; ///< between two attempts to open the file
    static constexpr int WATCH_MS = 1000; ///< between two looks at the name of the file
    /// Between two files that begin because the time steps back.
    static constexpr int STEP_BACK_MS = 60'000;

    /// Reads the settings, and opens the file when recording is on.
    /// \param files            what no recording may overwrite
    /// \param bytesPerMegabyte the unit of the size, which tests make small
    explicit Recorder(StationFiles files, qint64 bytesPerMegabyte = 1'000'000, int retryMs = RETRY_MS,
                      int watchMs = WATCH_MS, int stepBackMs = STEP_BACK_MS);
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

    /// Why a recording cannot be written to a file: it belongs to the station, exists and is not a
    /// recording, or another program writes to it or reads it. Empty when it can, as far as can be seen
    /// without changing anything.
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
    ZANSERVER_NO_EXPORT void ReadSettings();
    ZANSERVER_NO_EXPORT void StoreSettings() const;
    ZANSERVER_NO_EXPORT void Restart();
    ZANSERVER_NO_EXPORT void OnTimer();
    ZANSERVER_NO_EXPORT bool Open();
    ZANSERVER_NO_EXPORT void OpenOrRetry();
    ZANSERVER_NO_EXPORT bool MoveToNumber();
    ZANSERVER_NO_EXPORT void RemoveOldest() const;
    ZANSERVER_NO_EXPORT bool BeginFile();
    [[nodiscard]] ZANSERVER_NO_EXPORT KvZANCommon::RecordedBearing MakeRow(const BearingBlock& block) const;
    ZANSERVER_NO_EXPORT void TakeRow(const KvZANCommon::RecordedBearing& row);
    ZANSERVER_NO_EXPORT bool Write(const QByteArray& line);
    ZANSERVER_NO_EXPORT bool Fail(const QString& problem);
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
    ValueString* m_pLastError;
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
    QString m_name; // of the open file
    qint64 m_size = 0;
    quint64 m_latestTime = 0;
    QDeadlineTimer m_nextStepBack; // before it no file begins because of one
    QByteArray m_line;
    bool m_hasRows = false; // the open file
    QString m_problem;
    QString m_lastError;
    quint64 m_rowCount = 0;
    quint64 m_droppedCount = 0;
    QTimer m_timer; // for the next look at the file's name, or the next attempt to open it
    QTimer m_publishTimer;
};

} // namespace ZANServer
