#include "fuzz.h"
#include "zancommon/commandprotocol.h"

#include <QDir>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

/// Command texts as drivers report them, XML among them.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QTemporaryDir directory;
    static CommandProtocol log = [] {
        QDir::setCurrent(directory.path());
        return CommandProtocol(u"fuzz"_s, {});
    }();
    static const bool isOpen = log.Init();
    Require(isOpen);
    log.SetMaxBytes(1000000);
    Require(log.Add(TextOf(data, size)));
    return 0;
}
