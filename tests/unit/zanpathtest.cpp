#include "zancommon/zanpath.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/printing.h"
#include "zancommon/zanvaluenames.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

TEST(ZANPath, OfAStandardValueIsBelowTheServerOrTheDevice) {
    EXPECT_EQ(ZANPath::Server(g_vdPitch), u"/ZANServer/Res/PosR/Pitch"_s);
    EXPECT_EQ(ZANPath::Device(g_vdDevType), u"/DEVICES/ZANServer/DevAttr/DevType"_s);
    EXPECT_EQ(ZANPath::Device(g_vdNodeCfg), u"/DEVICES/ZANServer/Cfg"_s);
}

TEST(ZANPath, OfANameIsBelowTheServerOrTheControlApplication) {
    EXPECT_EQ(ZANPath::Server(ZANValueName::ZANDATAVALID), u"/ZANServer/ZANDATAVALID"_s);
    EXPECT_EQ(ZANPath::Control(ZANValueName::SYSMINFREQ), u"/ZANCONTROL/SYSMINFREQ"_s);
    EXPECT_EQ(ZANPath::Control(u"Own"), u"/ZANCONTROL/Own"_s);
}

TEST(ZANPath, DependsOnNoBasePathOfTheProcess) {
    ValueDescriptor::SetBasePath(u"/Elsewhere"_s);
    EXPECT_EQ(ZANPath::Server(g_vdPitch), u"/ZANServer/Res/PosR/Pitch"_s);
    EXPECT_EQ(ZANPath::Device(g_vdDevType), u"/DEVICES/ZANServer/DevAttr/DevType"_s);
}
