// Writes settings again and again until it is killed: in each round all keys of two files have the number of
// the round.

#include "tolmappstartup/cfgcenter.h"

#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 3 || !CfgCenter::SetConfigDirectory(QString::fromLocal8Bit(argv[1]))) {
        return 1;
    }
    const qint64 first = QByteArray(argv[2]).toLongLong();
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Stations);
    constexpr int KEY_COUNT = 200;
    for (qint64 round = first;; ++round) {
        for (int key = 0; key < KEY_COUNT; ++key) {
            cfg.SetInt(u"Section%1/Key%2"_s.arg(key % 10).arg(key), round);
        }
        cfg.CommitKey(u"Section0/Key0"_s);
        std::puts("written");
        std::fflush(stdout);
    }
}
