#pragma once

#include <QStringView>

/// Whether a name, appended to a directory, always names a file in that directory.
[[nodiscard]] bool IsPlainFileName(QStringView name);
