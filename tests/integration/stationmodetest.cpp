#include "zanserver/station.h"

#include "support/printing.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"
#include "zancommon/zandomain.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using ZANPlatform::GetOrCreateValue;

TEST(StationMode, IsScanWhereverThatIsInTheList) {
    const QTemporaryDir directory;
    ASSERT_TRUE(CfgCenter::SetConfigDirectory(directory.path()));
    auto& mode = *GetOrCreateValue<ValueSelection>(u"/ZANServer/DevAttr/OperationMode"_s);
    mode.AddItem({u"Standby"_s, 0.0, OPMODE_0}, nullptr);
    mode.AddItem({u"Scan"_s, 0.0, OPMODE_SCAN}, nullptr);
    for (const char16_t* name : {u"FFM", u"Search"}) {
        mode.AddItem({QString::fromUtf16(name), 0.0, OPMODE_FFM}, nullptr);
    }
    {
        const Station station;
        EXPECT_EQ(mode.GetCurrentKey(), OPMODE_SCAN);
        EXPECT_EQ(mode.GetStringValue(), u"Scan"_s);
    }
    CfgCenter::Close();
}
