#include "krakensdr/receiveraddress.h"

#include <QUrlQuery>

#include <array>

using namespace Qt::StringLiterals;

namespace KrakenSdr {

namespace {

/// A setting behind "?" and what it may be.
struct Setting {
    QStringView name;
    double minimum = 0.0;
    double maximum = 0.0;
    void (*assign)(ReceiverAddress& address, double value) = nullptr;
};

std::chrono::milliseconds ToMilliseconds(double value) {
    return std::chrono::milliseconds(static_cast<qint64>(value));
}

constexpr std::array<Setting, 4> SETTINGS{{
    {u"interval", 10.0, 60000.0,
     [](ReceiverAddress& address, double value) { address.interval = ToMilliseconds(value); }},
    {u"timeout", 10.0, 10000.0,
     [](ReceiverAddress& address, double value) { address.timeout = ToMilliseconds(value); }},
    {u"quality", 0.001, 100.0, [](ReceiverAddress& address, double value) { address.qualityFactor = value; }},
    {u"level", -200.0, 200.0, [](ReceiverAddress& address, double value) { address.levelOffset = value; }},
}};

/// What is wrong with a setting; empty when it was taken.
QString Take(ReceiverAddress& address, const QString& name, const QString& text) {
    for (const Setting& setting : SETTINGS) {
        if (name == setting.name) {
            bool isNumber = false;
            const double value = text.toDouble(&isNumber);
            if (!isNumber || !(value >= setting.minimum && value <= setting.maximum)) {
                return u"%1 is not a number from %2 to %3: \"%4\""_s.arg(name)
                    .arg(setting.minimum)
                    .arg(setting.maximum)
                    .arg(text);
            }
            setting.assign(address, value);
            return {};
        }
    }
    return u"there is no setting \"%1\", only interval, timeout, quality and level"_s.arg(name);
}

} // namespace

std::optional<ReceiverAddress> ReceiverAddress::Parse(const QString& text, QString& reason) {
    ReceiverAddress address;
    address.url = QUrl(text, QUrl::StrictMode);
    if (!address.url.isValid() || address.url.scheme() != u"http" || address.url.host().isEmpty()) {
        reason = u"the address is not of the form http://HOST:8081"_s;
        return std::nullopt;
    }
    if (!address.url.userInfo().isEmpty() || address.url.hasFragment()) {
        reason = u"the address has a user or a fragment"_s;
        return std::nullopt;
    }
    const QUrlQuery query(address.url);
    for (const auto& [name, value] : query.queryItems()) {
        reason = Take(address, name, value);
        if (!reason.isEmpty()) {
            return std::nullopt;
        }
    }
    address.url.setQuery(QString());
    address.url.setPort(address.url.port(DEFAULT_PORT));
    if (address.url.path().isEmpty() || address.url.path() == u"/") {
        address.url.setPath(u"/DOA_value.html"_s);
    }
    return address;
}

} // namespace KrakenSdr
