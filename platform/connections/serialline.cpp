#include "connections/serialline.h"

#include "connections/baudrate.h"

#include <QSerialPort>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <limits>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

template <class T>
struct Notation {
    QStringView text;
    T value;
};

constexpr auto PARITIES = std::to_array<Notation<QSerialPort::Parity>>({{u"n", QSerialPort::NoParity},
                                                                        {u"e", QSerialPort::EvenParity},
                                                                        {u"o", QSerialPort::OddParity},
                                                                        {u"m", QSerialPort::MarkParity},
                                                                        {u"s", QSerialPort::SpaceParity}});

constexpr auto DATA_BITS = std::to_array<Notation<QSerialPort::DataBits>>({{u"5", QSerialPort::Data5},
                                                                           {u"6", QSerialPort::Data6},
                                                                           {u"7", QSerialPort::Data7},
                                                                           {u"8", QSerialPort::Data8}});

constexpr auto STOP_BITS = std::to_array<Notation<QSerialPort::StopBits>>(
    {{u"1", QSerialPort::OneStop}, {u"1.5", QSerialPort::OneAndHalfStop}, {u"2", QSerialPort::TwoStop}});

constexpr qint32 DEFAULT_BAUD_RATE = 9600;
constexpr int MAX_COM_NUMBER = 256;
constexpr qsizetype MAX_PARTS = 4;

struct SerialAddress {
    QString port;
    qint32 baudRate = DEFAULT_BAUD_RATE;
    QSerialPort::Parity parity = QSerialPort::NoParity;
    QSerialPort::DataBits dataBits = QSerialPort::Data8;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;
};

// Reads a number from 1 to a limit; nothing when the text has other characters than decimal digits or the
// number is out of range.
std::optional<qint32> ParseNumber(QStringView text, qint32 limit) {
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    bool isNumber = false;
    const qint32 number = text.toInt(&isNumber);
    if (!isNumber || number < 1 || number > limit || !std::all_of(text.begin(), text.end(), isDigit)) {
        return std::nullopt;
    }
    return number;
}

std::optional<QString> ParsePort(QStringView text) {
    if (text.startsWith(u"COM", Qt::CaseInsensitive)) {
        const std::optional<qint32> number = ParseNumber(text.sliced(3), MAX_COM_NUMBER);
        return number ? std::optional(u"/dev/ttyS"_s + QString::number(*number - 1)) : std::nullopt;
    }
    const auto isControl = [](QChar c) { return c.category() == QChar::Other_Control; };
    if (!text.startsWith(u"/dev/") || text.contains(u"..") || !text.isValidUtf16() ||
        std::any_of(text.begin(), text.end(), isControl)) {
        return std::nullopt;
    }
    return text.toString();
}

// Leaves the value as it is when the text is empty. False when the text is not one of the notations.
template <class T, std::size_t N>
bool ParsePart(QStringView text, const std::array<Notation<T>, N>& notations, T& value) {
    if (text.isEmpty()) {
        return true;
    }
    const auto* const notation = std::find_if(notations.begin(), notations.end(), [&](const auto& n) {
        return text.compare(n.text, Qt::CaseInsensitive) == 0;
    });
    if (notation == notations.end()) {
        return false;
    }
    value = notation->value;
    return true;
}

// Nothing when the address is malformed; the reason then names the part.
std::optional<SerialAddress> ParseAddress(const QString& text, QString& reason) {
    const qsizetype colon = text.lastIndexOf(u':');
    const QStringView whole(text);
    const std::optional<QString> port = ParsePort((colon < 0 ? whole : whole.first(colon)).trimmed());
    if (!port) {
        reason = u"the port is neither \"COM1\" to \"COM256\" nor a path below \"/dev/\""_s;
        return std::nullopt;
    }
    SerialAddress address;
    address.port = *port;

    QList<QStringView> parts = colon < 0 ? QList<QStringView>() : whole.sliced(colon + 1).split(u',');
    if (parts.size() > MAX_PARTS) {
        reason = u"there is text after the stop bits"_s;
        return std::nullopt;
    }
    parts.resize(MAX_PARTS);
    std::transform(parts.begin(), parts.end(), parts.begin(),
                   [](QStringView part) { return part.trimmed(); });
    if (!parts[0].isEmpty()) {
        const std::optional<qint32> baudRate = ParseNumber(parts[0], std::numeric_limits<qint32>::max());
        if (!baudRate) {
            reason = u"the baud rate is not a positive number"_s;
            return std::nullopt;
        }
        address.baudRate = *baudRate;
    }
    if (!ParsePart(parts[1], PARITIES, address.parity)) {
        reason = u"the parity is not one of n, e, o, m, s"_s;
        return std::nullopt;
    }
    if (!ParsePart(parts[2], DATA_BITS, address.dataBits)) {
        reason = u"the data bits are not 5 to 8"_s;
        return std::nullopt;
    }
    if (!ParsePart(parts[3], STOP_BITS, address.stopBits)) {
        reason = u"the stop bits are not one of 1, 1.5, 2"_s;
        return std::nullopt;
    }
    // The hardware sends 1.5 stop bits instead of 2 when a character has 5 bits.
    const bool hasFiveBits = address.dataBits == QSerialPort::Data5;
    if (address.stopBits == (hasFiveBits ? QSerialPort::TwoStop : QSerialPort::OneAndHalfStop)) {
        reason = u"the stop bits do not fit the data bits: 1.5 needs 5, and 2 needs 6 to 8"_s;
        return std::nullopt;
    }
    return address;
}

/// Whether a rate is the requested one within the precision of the clock dividers of serial lines.
bool IsNear(quint32 rate, qint32 wished) {
    constexpr double TOLERANCE = 0.03;
    return std::abs(rate - static_cast<double>(wished)) <= TOLERANCE * wished;
}

/// Why a port could not be opened. Qt first creates a lock file, and reports a missing permission when in
/// fact there is no file descriptor or no disk space left for it.
QString OpeningProblem(const QSerialPort& port) {
    constexpr std::array SHORTAGES{EMFILE, ENFILE, ENOSPC, EDQUOT, EFBIG};
    if (port.error() == QSerialPort::PermissionError) {
        const int handle = open("/var/lock", O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
        const int error = handle >= 0 && write(handle, "1", 1) == 1 ? 0 : errno;
        if (handle >= 0) {
            close(handle);
        }
        if (std::ranges::count(SHORTAGES, error) > 0) {
            return qt_error_string(error);
        }
    }
    return port.errorString();
}

} // namespace

QString SerialLine::CheckAddress(const QString& address) {
    QString reason;
    return ParseAddress(address, reason) ? QString() : reason;
}

bool SerialLine::Open(QSerialPort& port, const QString& address, QString& reason) {
    const std::optional<SerialAddress> serial = ParseAddress(address, reason);
    if (!serial) {
        return false;
    }
    port.setPortName(serial->port);
    port.setBaudRate(serial->baudRate);
    port.setParity(serial->parity);
    port.setDataBits(serial->dataBits);
    // Qt would send one stop bit instead of 1.5; with 5 data bits the flag for two sends 1.5.
    port.setStopBits(serial->stopBits == QSerialPort::OneStop ? QSerialPort::OneStop : QSerialPort::TwoStop);
    // Opened for reading, too: otherwise it would go unnoticed that the port is unplugged while nothing is
    // sent.
    if (!port.open(QIODevice::ReadWrite)) {
        reason = serial->port + u": "_s + OpeningProblem(port);
        return false;
    }
    const quint32 rate = GetBaudRate(port.handle());
    if (rate != 0 && !IsNear(rate, serial->baudRate)) {
        port.close();
        reason = serial->port + u": it runs at %1 baud, not at %2"_s.arg(rate).arg(serial->baudRate);
        return false;
    }
    return true;
}
