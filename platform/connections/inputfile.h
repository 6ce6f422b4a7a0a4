#pragma once

#include "zanplatform_export.h"

#include <QFile>

/// A file that is read, and that no output (`OutputFile`) writes to meanwhile: it is locked for readers
/// (`flock`) while it is open. Other readers may have it as well. One that an output writes to already, and
/// one of a file system without locks, is read without a lock. For one thread.
class ZANPLATFORM_EXPORT InputFile final : public QFile {
public:
    using QFile::QFile;

    bool open(OpenMode mode) override;

    /// Does the same for what is open under a descriptor. The lock ends when the descriptor is closed.
    static void Lock(int descriptor);
};
