#pragma once

#include <QByteArray>
#include <QList>

/// A record as a KrakenSDR serves it, with its line end: a lobe of 6 around the bearing as the spectrum.
struct ReceiverRecord {
    QByteArray time = "1700000000000";
    QByteArray bearing = "92";
    QByteArray confidence = "3.61";
    QByteArray level = "-25.5";
    QByteArray frequency = "434500000";
    QByteArray station = "R";
    QByteArray latitude = "R";
    QByteArray longitude = "R";
    QByteArray heading = "R";
    QByteArray compass = "R";
    QByteArray mainHeading = "R";
    QByteArray firstValue = "0.25"; ///< of the spectrum, to the north

    [[nodiscard]] QByteArray Line() const {
        QList<QByteArray> fields{time,        bearing, confidence, level,     frequency, "UCA",
                                 "100",       station, latitude,   longitude, heading,   compass,
                                 mainHeading, "R",     "R",        "R",       "R",       firstValue};
        for (int direction = 1; direction < 360; ++direction) {
            fields.append(direction == bearing.toInt() ? "6.00" : "0.50");
        }
        return fields.join(", ") + '\n';
    }
};
