#pragma once

#include <QStringView>

/// Whether a name stands for a file of the directory that it is put behind, and for no other place.
[[nodiscard]] bool IsPlainFileName(QStringView name);
