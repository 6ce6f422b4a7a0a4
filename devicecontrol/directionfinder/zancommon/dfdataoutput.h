#pragma once

#include "kwbase/observable.h"
#include "zancommon/zanabstractinterface.h"
#include "zancommon_export.h"

#include <memory>

/// Writes the DF results of the value tree as lines of text, one a bearing, to a serial line and/or a file:
/// with each new bearing, or, with an output interval, periodically.
///
/// A line begins "$PLG" and carries azimuth, frequency, heading, quality, level and time. While the file is
/// open, lines to both sinks go on with elevation, attitude and position. In super-resolution mode the file
/// takes one line an emitter, with its number, and an empty line behind the last; the serial line takes none.
///
/// The settings are read from the configuration store (`ICfg::View::Outputs`) by the constructor, which
/// switches the output on when one of the sinks is on, and are saved by the destructor. A file that is there
/// when the output is switched on is kept as "<name>.bak" in place of an earlier one, and a new file begun.
/// While it is open it is locked (`flock`): a second output to it fails, in this program or another, and
/// touches nothing. The name may be that of a FIFO, which is opened without waiting for a reader, or of a
/// device. A program that is killed between moving the previous file and beginning the new one leaves the
/// previous one as "<name>.bak" only, which goes when the output is switched on the next time.
///
/// Once a second it is looked whether the file is still the one of its name. One that was removed, moved or
/// replaced counts as a failure; the sentences go on to the file of that name, which is created or appended
/// to. What was written before is where the old file is.
///
/// A sink that fails does not stop the other one. The first of a run of equal failures is traced, and so is
/// its end; `GetLastError` and `GetCounters` tell more. A sink that cannot be opened, or a FIFO whose reader
/// goes away, is tried again every 5 s. A reader that takes nothing holds up the thread for 1 s, once; then
/// sentences are dropped until it takes some again.
///
/// The interval is that of a coarse Qt timer: milliseconds of the machine's running time, to within 5 %,
/// whatever the times of the bearings are. A recording that is replayed faster than that gives no sentence,
/// or few; `Counters::leftToInterval` tells.
///
/// The configuration widget exists in programs with a QApplication only, and the output is then destroyed
/// before that; without it everything else works. Values are looked up when the output is switched on: one
/// that comes into the tree later, or that is replaced there, is seen from the next time on. Needs an event
/// loop; belongs to the main thread.
class ZANCOMMON_EXPORT DFDataOutput : public ZANAbstractInterface, public IObserver {
    Q_OBJECT

public:
    /// What has become of the sentences since the output was made, and of what set off none. What is neither
    /// written nor dropped waits for a burst's end or in the serial line's buffer; it is one of both when the
    /// output has been switched off.
    struct Counters {
        quint64 fileSentences = 0;   ///< written to the file
        quint64 fileDropped = 0;     ///< that the file did not take, or that found no open file
        quint64 serialSentences = 0; ///< that have left the serial line's buffer
        quint64 serialDropped = 0;   ///< that the serial line did not take, or were in its buffer at its end

        quint64 withoutQuality = 0; ///< bearings that set off none because their quality is not above 0
        quint64 leftToInterval = 0; ///< bearings that set off none because the end of the interval does
        quint64 inStandby = 0;      ///< ends of the interval in the mode Standby, or without a mode
        quint64 withoutEmitter = 0; ///< bearings or ends of the interval with nothing resolved, in that mode
        quint64 withoutSink = 0;    ///< bearings or ends of the interval with file and serial line off

        bool operator==(const Counters&) const = default;
    };

    /// While one lives, the file takes its sentences together: when the last one ends, or earlier when 64 KiB
    /// wait. For who publishes bearings that arrived together; without it each sentence is written, by a
    /// system call of its own, when its bearing is published. `GetCounters` counts a sentence once it is
    /// written. The serial line is not held up. The output outlives the burst.
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
    /// An output that writes to a file that is not in the settings, instead of the one that is. It is on,
    /// whatever the settings say, which keep what they have. Empty is none.
    /// \param fileOfThisRun a name, or "-" for the program's standard output
    DFDataOutput(QString name, QString fileOfThisRun);
    ~DFDataOutput() override;

    void SetEnabled(bool on) override;
    /// A tree value has changed or goes away.
    void Update(Observable* subject, TChangeCode code) override;

    /// Whether an output to a file of the first name would write to the file of the second name, or replace
    /// it with its previous one: both are the same, also through links, or the second is the first's backup.
    /// Neither need be there yet: of two that are missing the places are compared at which they would be
    /// made. Opens nothing.
    [[nodiscard]] static bool TouchesFile(const QString& outputFile, const QString& file);

    [[nodiscard]] Counters GetCounters() const;
    /// The first of the latest run of equal failures of a sink, in words for the operator; empty when there
    /// was none. A success does not clear it.
    [[nodiscard]] QString GetLastError() const;

public Q_SLOTS:
    /// Takes over what stands in the configuration widget; the output starts anew when something differs.
    /// Nothing without a widget.
    void SlotUpdateConfiguration() override;

protected:
    void timerEvent(QTimerEvent* event) override;

private Q_SLOTS:
    void SlotStateChanged();

private:
    struct Private;

    bool ConnectToTree();
    void DisconnectFromTree();
    void OpenFile();
    void CloseFile();
    void OpenSerialInterface();
    void CloseSerialInterface();
    void StartOutputTimer();
    void KillOutputTimer();
    void CreateConfigWidget();
    void ReadConfigurationFromFile();
    void SaveConfigurationToFile();
    void UpdateConfigurationFromConfigWidget();
    void SendData();

    std::unique_ptr<Private> m_p;
};
