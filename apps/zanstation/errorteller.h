#pragma once

#include "zanserver/repeatedlines.h"

#include <QString>

/// Tells the person at the terminal which errors a driver reports. A driver may report one for each of its
/// measurements: equal ones are told once a minute with their number, and of different ones as many as
/// `RepeatedLines` passes on.
class ErrorTeller {
public:
    void Tell(QString error);
    /// Tells how many errors have not been told yet.
    void TellRest();

private:
    ZANServer::RepeatedLines m_errors{ZANServer::RepeatedLines::Numbers::Compared};
};
