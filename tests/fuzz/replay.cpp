// Runs a fuzzing target on files: what was found once must stay mended, whichever compiler built it.

#include "fuzz.h"

#include <QDir>
#include <QFile>

#include <cstdio>

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const QDir directory(QString::fromLocal8Bit(argv[i]));
        for (const QFileInfo& info : directory.entryInfoList(QDir::Files, QDir::Name)) {
            QFile file(info.filePath());
            if (!file.open(QIODevice::ReadOnly)) {
                return 1;
            }
            const QByteArray input = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                                   static_cast<std::size_t>(input.size()));
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
