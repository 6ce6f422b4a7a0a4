#include "connections/inputfile.h"

#include <sys/file.h>

bool InputFile::open(OpenMode mode) {
    if (!QFile::open(mode)) {
        return false;
    }
    Lock(handle());
    return true;
}

void InputFile::Lock(int descriptor) {
    ::flock(descriptor, LOCK_SH | LOCK_NB);
}
