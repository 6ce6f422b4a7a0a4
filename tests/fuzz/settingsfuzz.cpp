#include "fuzz.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/antennadatalist.h"
#include "zancommon/zansetupdata.h"

#include <QFile>
#include <QHash>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

/// All texts of a configuration and below it.
void Collect(ICfg& cfg, const QString& prefix, QHash<QString, QString>& texts) {
    for (const QString& key : cfg.GetKeys()) {
        texts.insert(prefix + key, cfg.GetString(key, {}));
    }
    for (const QString& name : cfg.GetSubCfgNames()) {
        if (const CfgPtr sub{cfg.GetSubCfg(name)}) { // QSettings has names that cannot be asked for
            Collect(*sub, prefix + name + u'/', texts);
        }
    }
}

/// Opens the settings and returns all of their texts.
QHash<QString, QString> Open(const QString& directory) {
    Require(CfgCenter::SetConfigDirectory(directory));
    QHash<QString, QString> texts;
    Collect(CfgCenter::GetAppCfg(ICfg::View::Stations), {}, texts);
    return texts;
}

} // namespace

/// Settings files that somebody has edited, through the readers of antennas and setup data.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace StdDeviceDefinition;
    static const bool isPublished = (CreateBranch(EBranch::SERVER, u"/ZANServer"_s), true);
    Require(isPublished);
    const QTemporaryDir directory;
    QFile file(directory.filePath(u"Application.ini"_s));
    Require(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();

    // Whatever is read of it is there when it has been written.
    QHash<QString, QString> texts = Open(directory.path());
    CfgCenter::GetAppCfg(ICfg::View::Stations).SetString(u"Fuzz"_s, u"@a;b\\"_s);
    texts.insert(u"Fuzz"_s, u"@a;b\\"_s);
    Require(CfgCenter::Close());
    Require(Open(directory.path()) == texts);

    AntennaDataList antennas;
    Require(antennas.BuildAntennasFromCfg(u"replay"_s) <= AntennaDataList::MAX_ANTENNA_COUNT);
    antennas.ReadAntennaSetupFromCfg(u"replay"_s);
    ZANSetupData setup(u"Fuzz"_s, u"/ZANServer"_s);
    setup.ReadFromValueTree({});
    setup.ReadFromCfg(u"replay"_s);
    setup.WriteToValueTree(nullptr, {});
    antennas.WriteAntennaSetupToCfg(u"replay"_s);
    setup.WriteToCfg(u"replay"_s);
    CfgCenter::Close();
    return 0;
}
