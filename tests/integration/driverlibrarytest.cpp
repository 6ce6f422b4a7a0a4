#include "zanserver/driverlibrary.h"

#include "support/printing.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/nulldrivercallback.h"

#include <gtest/gtest.h>

#include <QMap>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

const QString DRIVERS = QStringLiteral(ZAN_TEST_DRIVERS);

class DriverLibraryTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(CfgCenter::SetComponentDirectory(DRIVERS)); }

    /// Why a driver is refused, behind the words that name it and its place.
    static QString FindFault(const QString& name) {
        QString fault;
        EXPECT_EQ(DriverLibrary::Load(name, fault), nullptr);
        const QString begin = u"The component \"zandriver-%1\" in %2 cannot be used: "_s.arg(name, DRIVERS);
        EXPECT_TRUE(fault.startsWith(begin)) << fault.toStdString();
        return fault.mid(begin.size());
    }
};

/// Notes the commands that a driver reports.
class CommandNote final : public KvZANCommon::NullDriverCallback {
public:
    void SetCommandLog(QString& line) override { lines.append(line); }

    QStringList lines;
};

} // namespace

TEST_F(DriverLibraryTest, DriverSaysWhoItIs) {
    QString fault = u"from before"_s;
    const DriverComponentPtr component = DriverLibrary::Load(u"current"_s, fault);
    ASSERT_NE(component, nullptr);
    EXPECT_EQ(fault, QString());
    const KvZANCommon::DriverDescription description = component->Describe();
    EXPECT_EQ(description.name, u"current"_s);
    EXPECT_EQ(description.summary, u"a driver of the current kind"_s);
    EXPECT_EQ(description.addressForm, u"tcp://HOST:PORT"_s);
    EXPECT_EQ(description.addressExample, u"tcp://127.0.0.1:4000"_s);
    EXPECT_EQ(description.modes, (QList<EMode>{EMODE_FFM, EMODE_SCAN}));
}

TEST_F(DriverLibraryTest, DriverOfTheOlderKindComesWithItsAdapter) {
    QString fault;
    const DriverComponentPtr component = DriverLibrary::Load(u"legacy"_s, fault);
    ASSERT_NE(component, nullptr) << fault.toStdString();
    CommandNote callback;
    const std::unique_ptr<KvZANCommon::IDriver> driver = component->CreateDriver();
    driver->SetCallback(&callback);
    EXPECT_EQ(driver->SetMode(EMODE_SCAN), 0);
    EXPECT_EQ(callback.lines, QStringList{u"mode 3"_s});
}

TEST_F(DriverLibraryTest, DriverOfAnotherInterfaceVersionIsRefusedBeforeItIsAskedAnythingElse) {
    EXPECT_EQ(FindFault(u"outdated"_s), u"it has the driver interface version 2, and 1 is wanted."_s);
}

TEST_F(DriverLibraryTest, ComponentThatIsNotADriverIsRefused) {
    EXPECT_EQ(FindFault(u"stranger"_s), u"it is not a driver."_s);
}

TEST_F(DriverLibraryTest, DriverThatCallsItselfOtherwiseThanItsFileIsRefused) {
    EXPECT_EQ(FindFault(u"misnamed"_s), u"it calls itself \"renamed\"."_s);
}

TEST_F(DriverLibraryTest, DriverThatThrowsWhenItIsAskedIsRefused) {
    EXPECT_EQ(FindFault(u"silent"_s), u"it threw an exception: no comment."_s);
}

TEST_F(DriverLibraryTest, DriverThatThrowsWhatIsNoExceptionIsRefused) {
    EXPECT_EQ(FindFault(u"wordless"_s), u"it threw an exception."_s);
}

TEST_F(DriverLibraryTest, DriverThatIsNotThereIsReportedWithThePlaceThatWasSearched) {
    QString fault;
    EXPECT_EQ(DriverLibrary::Load(u"absent"_s, fault), nullptr);
    EXPECT_EQ(fault, u"The component \"zandriver-absent\" cannot be loaded: there is no file %1/"
                     "libzandriver-absent.so."_s.arg(DRIVERS));
}

TEST_F(DriverLibraryTest, NameThatLeavesTheDirectoryIsRefused) {
    for (const QString& name : {u"../current"_s, u"/current"_s, u"a/../current"_s}) {
        QString fault;
        EXPECT_EQ(DriverLibrary::Load(name, fault), nullptr) << name.toStdString();
        EXPECT_TRUE(fault.contains(u"plain file name"_s)) << fault.toStdString();
    }
}

TEST_F(DriverLibraryTest, ListHasEachLibraryWithItsDescriptionOrItsFault) {
    QMap<QString, DriverLibrary::Entry> byFile;
    for (const DriverLibrary::Entry& entry : DriverLibrary::List()) {
        byFile[entry.file] = entry;
    }
    QStringList files;
    for (const QString& name : {u"current"_s, u"legacy"_s, u"misnamed"_s, u"outdated"_s, u"silent"_s,
                                u"stranger"_s, u"wordless"_s}) {
        files.append(DRIVERS + u"/libzandriver-"_s + name + u".so"_s);
    }
    EXPECT_EQ(byFile.keys(), files);
    EXPECT_EQ(byFile[files[0]].description.name, u"current"_s);
    EXPECT_EQ(byFile[files[0]].fault, QString());
    EXPECT_EQ(byFile[files[1]].description.name, u"legacy"_s);
    for (const QString& refused : files.sliced(2)) {
        EXPECT_EQ(byFile[refused].description.name, QString()) << refused.toStdString();
        EXPECT_FALSE(byFile[refused].fault.isEmpty()) << refused.toStdString();
    }
}

TEST_F(DriverLibraryTest, ListOfADirectoryWithoutDriversIsEmpty) {
    const QTemporaryDir empty;
    ASSERT_TRUE(CfgCenter::SetComponentDirectory(empty.path()));
    EXPECT_TRUE(DriverLibrary::List().isEmpty());
    ASSERT_TRUE(CfgCenter::SetComponentDirectory(empty.filePath(u"absent"_s)));
    EXPECT_TRUE(DriverLibrary::List().isEmpty());
}

TEST_F(DriverLibraryTest, WithoutADirectoryThereIsNone) {
    ASSERT_FALSE(CfgCenter::SetComponentDirectory(u"drivers"_s)) << "it is not absolute";
    EXPECT_TRUE(DriverLibrary::List().isEmpty());
}
