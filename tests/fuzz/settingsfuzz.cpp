#include "fuzz.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/antennadatalist.h"
#include "zancommon/zansetupdata.h"

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

/// Settings files that somebody has edited, through the readers of antennas and setup data.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace StdDeviceDefinition;
    static const bool isPublished = (CreateBranch(EBranch::SERVER, u"/ZANServer"_s), true);
    Require(isPublished);
    const QTemporaryDir directory; // a new one each time: a file is known by its name and time
    QFile file(directory.filePath(u"Application.ini"_s));
    Require(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();
    Require(CfgCenter::SetConfigDirectory(directory.path()));

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
