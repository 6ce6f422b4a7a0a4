#pragma once

#include "zanserver_export.h"

#include <QString>

#include <exception>

namespace ZANServer {

/// A text of a driver as one line, no longer than this many bytes in UTF-8.
ZANSERVER_EXPORT QString Bounded(const QString& text, qsizetype bytes = 200);
/// What an exception of a driver says, bounded as well.
ZANSERVER_EXPORT QString WhatOf(const std::exception& exception);
/// The text with a blank in place of each control character, so that it cannot pass for several lines or
/// steer a terminal.
ZANSERVER_EXPORT QString WithoutControls(QString text);

} // namespace ZANServer
