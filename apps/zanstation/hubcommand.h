#pragma once

#include <QString>

/// Joins the message hub as a receiver or a sender, until the program is interrupted. Returns the exit code:
/// failed when there is no client component; the message says where it was looked for.
int JoinHub(bool asReceiver, const QString& name);
