#pragma once

#include "kwbase/observable.h"
#include "zancommon/zanabstractinterface.h"
#include "zancommon_export.h"

#include <QString>
#include <QStringList>

#include <memory>

/// Writes the DF results of the value tree as sentences, one line of text per bearing, to a serial line
/// and/or a file: with each new bearing or, with an output interval, periodically.
///
/// A line begins "$PLG" and carries azimuth, frequency, heading, quality, level and time. While the file is
/// open, lines to both sinks continue with elevation, attitude and position. In super-resolution mode the
/// file gets one line per emitter, with its number, and an empty line after the last; the serial line gets
/// none.
///
/// The settings are read from the configuration store (`ICfg::View::Outputs`) by the constructor, which
/// switches the output on when one of the sinks is on, and are saved by the destructor. When the output is
/// switched on, an existing file is renamed to "<name>.bak", which replaces an earlier one, and a new file is
/// begun. While it is open it is locked (`flock`): a second output to it, in this program or another, fails
/// and changes nothing. The name may be that of a FIFO, which is opened without waiting for a reader, or of a
/// device. A program that is killed between renaming the previous file and beginning the new one leaves only
/// "<name>.bak", which is replaced when the output is next switched on with a file.
///
/// Once a second the output checks whether its name is still that of the open file. A file that was removed,
/// moved or replaced counts as a failure; further sentences go to the file that has the name now, which is
/// created or appended to. Earlier sentences stay in the old file.
///
/// A sink that fails does not stop the other one. The first of a run of equal failures is traced, and so is
/// the end of the run; see also `GetLastError` and `GetCounters`. A sink that cannot be opened, or a FIFO
/// whose reader goes away, is tried again every 5 s. A reader that takes nothing blocks the thread once, for
/// 1 s; then sentences are dropped until it takes some again.
///
/// The interval is that of a coarse Qt timer: milliseconds of real time, to within 5 %, independent of the
/// times of the bearings. A recording that is replayed in less than an interval gives no sentence, or few
/// (see `Counters::leftToInterval`).
///
/// The configuration widget exists only in programs with a QApplication, which must outlive the output;
/// everything else works without it. Values are looked up when the output is switched on: a value that is
/// created or replaced later is used from the next time on. Needs an event loop; belongs to the main thread.
class ZANCOMMON_EXPORT DFDataOutput : public ZANAbstractInterface, public IObserver {
    Q_OBJECT

public:
    /// What has happened to the sentences since the output was created, and what caused no sentence.
    /// Sentences that are neither written nor dropped wait for the end of a burst or in the serial line's
    /// buffer; when the output has been switched off, none are left.
    struct Counters {
        quint64 fileSentences = 0;   ///< written to the file
        quint64 fileDropped = 0;     ///< that could not be written, or while no file was open
        quint64 serialSentences = 0; ///< that have left the serial line's buffer
        quint64 serialDropped =
            0; ///< that the serial line did not take, or that were still in its buffer when it was closed

        quint64 withoutQuality = 0; ///< bearings without a sentence because their quality is not above 0
        quint64 leftToInterval = 0; ///< bearings without a sentence because there is an output interval
        quint64 inStandby = 0;      ///< ends of the interval in mode Standby, or while the mode is not known
        quint64 withoutEmitter =
            0; ///< bearings or ends of the interval in super-resolution mode without an emitter
        quint64 withoutSink = 0; ///< bearings or ends of the interval while file and serial line are off

        bool operator==(const Counters&) const = default;
    };

    /// Where the sentences go, and how often.
    struct Settings {
        bool serialEnabled = false;
        QString address; ///< of the serial line
        bool fileEnabled = false;
        QString fileName;
        int interval = 0; ///< milliseconds; 0: a sentence with each bearing

        bool operator==(const Settings&) const = default;
    };

    enum class SinkState : int {
        Off = 0,
        Open = 1,   ///< takes sentences
        Failed = 2, ///< has not taken the last one, or could not be opened; it is tried again
    };
    /// What a sink gets at the moment.
    enum class Content : int {
        Nothing = 0,
        Short = 1,    ///< sentences that end with the time of the bearing
        Full = 2,     ///< sentences with elevation, attitude and position
        Emitters = 3, ///< full sentences, one for each emitter of super resolution
    };
    /// How a sink is, and what has failed last.
    struct SinkStatus {
        SinkState state = SinkState::Off;
        Content content = Content::Nothing;
        QString lastFailure;     ///< text for the operator; empty: there was none
        quint64 failureTime = 0; ///< its time: milliseconds since 1970-01-01 00:00:00 UTC
    };

    /// While a burst lives, sentences for the file are collected; they are written together when the last
    /// burst ends, or earlier when 64 KiB wait. For callers that publish bearings which arrived together;
    /// without a burst each sentence is written with its own system call when its bearing is published.
    /// `GetCounters` counts a sentence when it is written. The serial line is not affected. The output must
    /// outlive the burst.
    class ZANCOMMON_EXPORT Burst {
    public:
        explicit Burst(DFDataOutput& output);
        Burst(const Burst&) = delete;
        Burst& operator=(const Burst&) = delete;
        ~Burst();

    private:
        DFDataOutput& m_output;
    };

    explicit DFDataOutput(QString name);
    /// An output to another file than that of the settings. The file output is on, whatever the settings say;
    /// the settings are not changed. An empty name means no such file.
    /// \param fileOfThisRun a name, or "-" for the program's standard output
    DFDataOutput(QString name, QString fileOfThisRun);
    ~DFDataOutput() override;

    void SetEnabled(bool on) override;
    /// Called when a tree value has changed or goes away.
    void Update(Observable* subject, TChangeCode code) override;

    /// The settings. An output to a file of this run only has another file.
    [[nodiscard]] Settings GetSettings() const;
    /// The file of this run; empty: that of the settings is used.
    [[nodiscard]] QString GetFileOfThisRun() const;
    // What these three change takes effect at once, and is stored. The rest of the output goes on: a file
    // that stays the same is not begun again. Without a change they do nothing.
    /// Switches the file output and names its file. Ends the output to a file of this run.
    void SetFileOutput(bool on, const QString& name);
    /// Switches the serial line and names its address. A line that is closed may block for a few seconds.
    void SetSerialOutput(bool on, const QString& address);
    /// \param milliseconds 0: a sentence with each bearing
    void SetInterval(int milliseconds);

    /// Whether an output to a file of the first name would write to the file of the second name, or replace
    /// it with its previous one: both are the same, also through links, or the second is the first's backup.
    /// The files need not exist: of two missing files, the places where they would be created are compared.
    /// Opens nothing.
    [[nodiscard]] static bool TouchesFile(const QString& outputFile, const QString& file);

    [[nodiscard]] Counters GetCounters() const;
    /// The first of the latest run of equal failures of a sink, as a text for the operator; empty when there
    /// was none. A success does not clear it.
    [[nodiscard]] QString GetLastError() const;
    /// The failures of the sinks that last at the moment, as texts for the operator: each until a sentence is
    /// written to its sink again, or the sink is switched off.
    [[nodiscard]] QStringList GetProblems() const;
    [[nodiscard]] SinkStatus GetFileStatus() const;
    [[nodiscard]] SinkStatus GetSerialStatus() const;

public Q_SLOTS:
    /// Takes over what was entered in the configuration widget; the output starts again when something
    /// differs. Does nothing without a widget.
    void SlotUpdateConfiguration() override;

protected:
    void timerEvent(QTimerEvent* event) override;

private Q_SLOTS:
    ZANCOMMON_NO_EXPORT void SlotStateChanged();

private:
    struct Private;

    ZANCOMMON_NO_EXPORT bool ConnectToTree();
    ZANCOMMON_NO_EXPORT void DisconnectFromTree();
    ZANCOMMON_NO_EXPORT void OpenFile();
    ZANCOMMON_NO_EXPORT void CloseFile();
    ZANCOMMON_NO_EXPORT void OpenSerialInterface();
    ZANCOMMON_NO_EXPORT void CloseSerialInterface();
    ZANCOMMON_NO_EXPORT void StartOutputTimer();
    ZANCOMMON_NO_EXPORT void KillOutputTimer();
    ZANCOMMON_NO_EXPORT void CreateConfigWidget();
    ZANCOMMON_NO_EXPORT void ReadConfigurationFromFile();
    ZANCOMMON_NO_EXPORT void SaveConfigurationToFile();
    ZANCOMMON_NO_EXPORT void UpdateConfigurationFromConfigWidget();
    ZANCOMMON_NO_EXPORT void ShowSettings();
    ZANCOMMON_NO_EXPORT void SendData();

    std::unique_ptr<Private> m_p;
};
