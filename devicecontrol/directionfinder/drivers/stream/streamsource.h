#pragma once

#include "zancommon/linereader.h"

#include <QString>

#include <optional>

namespace Stream {

/// Opens the sources of a stream of bearings by their addresses.
class StreamSource {
public:
    /// How long connecting to a host takes at most: a second attempt when the first one was lost, and a
    /// third.
    static constexpr int CONNECT_MS = 4000;
    /// Standard input.
    static constexpr QStringView STANDARD_INPUT = u"-";
    /// For the operator.
    static constexpr QStringView FORM = u"tcp://HOST:PORT, udp://[HOST]:PORT, unix:PATH, "
                                        u"/dev/LINE:BAUD,PARITY,DATABITS,STOPBITS, a FIFO, or -";

    /// False, with the reason, when the source cannot be opened, or not within `CONNECT_MS`.
    ///
    /// - "tcp://HOST:PORT" connects; a connection whose other end is gone without a word is noticed within
    /// half a
    ///   minute.
    /// - "udp://ADDRESS:PORT" receives what is sent to an address of this machine; without the address, what
    ///   programs on this machine send.
    /// - "unix:PATH" connects to a socket in the file system.
    /// - "COM1", or a path below "/dev/" that is not that of something else, is a serial line, in the
    /// notation of
    ///   the outputs.
    /// - Any other path is that of a FIFO or a device.
    static bool Open(KvZANCommon::LineReader& lines, const QString& address, QString& reason);

    /// Which FIFO an address names.
    struct Fifo {
        quint64 device = 0;
        quint64 inode = 0;
        bool operator==(const Fifo&) const = default;
    };
    /// Nothing when it is not that of a FIFO.
    [[nodiscard]] static std::optional<Fifo> FindFifo(const QString& address);
};

} // namespace Stream
