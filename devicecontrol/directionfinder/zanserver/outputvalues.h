#pragma once

#include "zanserver_export.h"

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"
#include "zancommon/dfdataoutput.h"
#include "zanserver/outputcheck.h"

#include <QObject>
#include <QString>
#include <QTimer>

namespace ZANServer {

/// The output of sentences as values of the tree below `/ZANServer/Out`: what is set, what goes to its file
/// (`/File`) and its serial line (`/Ser`), how they are, and what has failed.
///
/// Switches, addresses and interval can be set there. A change takes effect at once and is kept in the
/// settings. What the command line refuses (`OutputCheck`) and addresses that are none go back, and then the
/// reason is in `FileRefused` or `SerRefused`, until the next change. An output to standard output is shown
/// as "-", and is for the run that was started with it. What the output counts and what fails is published
/// once a second. Texts are at most `LONGEST_TEXT` bytes long. Uses the values below "/ZANServer", which must
/// outlive it, and needs an event loop; main thread.
class ZANSERVER_EXPORT OutputValues final : public QObject, public IObserver {
public:
    static constexpr int PUBLISH_MS = 1000;
    /// Of a reason or failure, in bytes.
    static constexpr qsizetype LONGEST_TEXT = 1000;
    /// Of the address of a serial line, in bytes.
    static constexpr qsizetype LONGEST_ADDRESS = 1000;

    /// \param output must outlive this
    /// \param files  what the output must not overwrite
    OutputValues(DFDataOutput& output, StationFiles files, int publishMs = PUBLISH_MS);
    OutputValues(const OutputValues&) = delete;
    OutputValues& operator=(const OutputValues&) = delete;
    ~OutputValues() override = default;

    void Update(Observable* subject, TChangeCode code) override;

private:
    /// The values of the file or of the serial line.
    struct Sink {
        ValueBool* enabled;
        ValueString* address;
        ValueString* refused;
        ValueSelection* state;
        ValueSelection* content;
        ValueNumericDouble* sentences;
        ValueNumericDouble* dropped;
        ValueString* lastError;
        ValueTimeStamp* lastErrorTime;
    };
    /// What is set of one of them.
    struct Choice {
        bool on = false;
        QString address;

        bool operator==(const Choice&) const = default;
    };

    [[nodiscard]] ZANSERVER_NO_EXPORT Choice GetFile() const;
    [[nodiscard]] ZANSERVER_NO_EXPORT Choice GetSerialLine() const;
    [[nodiscard]] ZANSERVER_NO_EXPORT QString CheckFile(const QString& name) const;
    ZANSERVER_NO_EXPORT void SetFile();
    ZANSERVER_NO_EXPORT void SetSerialLine();
    ZANSERVER_NO_EXPORT void FollowBearings();
    ZANSERVER_NO_EXPORT void Publish();
    ZANSERVER_NO_EXPORT void Show(const Sink& sink, const Choice& choice);
    ZANSERVER_NO_EXPORT void Tell(const Sink& sink, const DFDataOutput::SinkStatus& status, quint64 sentences,
                                  quint64 dropped);

    DFDataOutput& m_output;
    const StationFiles m_files;
    const Sink m_file;
    const Sink m_serial;
    ValueNumericInt* const m_interval;
    ValueBearing* const m_azimuth;
    ValueBool* const m_isRecording;
    ValueString* const m_recordFile;
    ValueNumericDouble* const m_withoutQuality;
    ValueNumericDouble* const m_leftToInterval;
    ValueNumericDouble* const m_inStandby;
    ValueNumericDouble* const m_withoutEmitter;
    ValueNumericDouble* const m_withoutSink;
    quint64 m_whileOff = 0; // bearings while file and serial line were off
    QTimer m_timer;
};

} // namespace ZANServer
