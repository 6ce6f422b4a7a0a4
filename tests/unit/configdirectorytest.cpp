#include "tolmappstartup/configdirectory.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <QDir>

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

class ConfigDirectoryTest : public testing::Test {
protected:
    void SetUp() override {
        for (const char* const variable :
             {"STATE_DIRECTORY", "CONFIGURATION_DIRECTORY", "XDG_CONFIG_HOME", "HOME"}) {
            ASSERT_TRUE(qunsetenv(variable));
        }
    }
};

} // namespace

TEST_F(ConfigDirectoryTest, WithoutAnEnvironmentTheHomeOfTheUserDatabaseCounts) {
    const passwd* const user = ::getpwuid(::geteuid());
    const QString home = user ? QString::fromLocal8Bit(user->pw_dir) : QString();
    EXPECT_EQ(GetDefaultConfigDirectory(),
              QDir(home).isRoot() || home.isEmpty() ? QString() : home + u"/.config/zanstation"_s);
}

TEST_F(ConfigDirectoryTest, HomeOfTheEnvironmentComesBeforeThatOfTheUserDatabase) {
    qputenv("HOME", "/somewhere/else/");
    EXPECT_EQ(GetDefaultConfigDirectory(), u"/somewhere/else/.config/zanstation"_s);
}
