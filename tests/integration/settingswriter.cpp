// Writes settings beside other processes that write the same file: each round has a key of its own, and
// changes one that all rounds have.
//
//   settingswriter DIR NAME ROUNDS

#include "tolmappstartup/cfgcenter.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (argc != 4 || !CfgCenter::SetConfigDirectory(arguments[1])) {
        return 2;
    }
    const QString& name = arguments[2];
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Stations);
    constexpr int FIRST = 1000; // all numbers are of the same length
    for (int round = 0; round < arguments[3].toInt(); ++round) {
        cfg.SetInt(u"Shared/"_s + name, FIRST + round);
        cfg.SetInt(u"%1/Round%2"_s.arg(name).arg(round), round);
        cfg.CommitKey({});
    }
    return CfgCenter::Close() ? 0 : 1;
}
