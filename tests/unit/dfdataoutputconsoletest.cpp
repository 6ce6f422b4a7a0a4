// The DF data output in a program that has no display.

#include "zancommon/dfdataoutput.h"

#include "tolmappstartup/cfgcenter.h"
#include "valueframework/valueaccess.h"
#include "valueframework/valuetypes.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using ZANPlatform::GetOrCreateValue;

TEST(DFDataOutputConsole, WithoutAQApplicationThereIsNoPanelAndTheOutputWorks) {
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(u"output.txt"_s);
    ASSERT_TRUE(CfgCenter::SetConfigDirectory(directory.path()));
    ICfg& store = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    store.SetBool(u"FileOutput_Enabled"_s, true);
    store.SetString(u"FileOutput_Address"_s, fileName);
    auto* bearing = GetOrCreateValue<ValueBearing>(u"/ZANServer/Res/DfR/Azimuth"_s);
    {
        DFDataOutput output(u"DF data"_s);
        EXPECT_EQ(output.GetConfigWidget(), nullptr);
        output.SlotUpdateConfiguration();
        QMetaObject::invokeMethod(&output, "SlotStateChanged", Qt::DirectConnection);
        EXPECT_TRUE(output.IsEnabled());
        BearingResult result;
        result.SetQuality(90);
        bearing->SetValue(result, nullptr);
    }
    EXPECT_TRUE(store.GetBool(u"FileOutput_Enabled"_s, false));
    EXPECT_EQ(store.GetString(u"FileOutput_Address"_s, {}), fileName);
    QFile file(fileName);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(
        file.readAll().startsWith("$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA, 90.0,LEV, -0.5,TIM,,ELV,"));
    CfgCenter::Close();
}
