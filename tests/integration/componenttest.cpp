#include "tolmappstartup/cfgcenter.h"

#include "components/countingcomponent.h"
#include "kwbase/errorhandler.h"
#include "support/printing.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QString COMPONENT_DIRECTORY = QStringLiteral(ZAN_TEST_COMPONENTS);

class ComponentTest : public testing::Test {
public:
    ComponentTest() {
        ErrorHandler::Instance().SetSink([this](const QString& line) { m_trace.append(line); });
        EXPECT_TRUE(CfgCenter::SetComponentDirectory(COMPONENT_DIRECTORY));
    }
    ~ComponentTest() override { ErrorHandler::Instance().SetSink({}); }

protected:
    static IDllInstance* Create(const QString& fileName) {
        return CfgCenter::CreateDllInstanceByFileName(fileName, {}, false, false);
    }

    void ExpectRefusal(const QString& fileName, const QString& reason) {
        EXPECT_EQ(Create(fileName), nullptr);
        EXPECT_EQ(CfgCenter::GetLastError(),
                  u"The component \""_s + fileName + u"\" cannot be loaded: "_s + reason + u'.');
        EXPECT_TRUE(m_trace.value(m_trace.size() - 1).endsWith(CfgCenter::GetLastError()));
    }

    QStringList m_trace;
};

bool IsMapped(const QByteArray& libraryName) {
    QFile maps(u"/proc/self/maps"_s);
    EXPECT_TRUE(maps.open(QFile::ReadOnly));
    return maps.readAll().contains(libraryName);
}

TEST_F(ComponentTest, ComponentIsLoadedByItsSystemIndependentNameAndUnloadedWithItsLastInstance) {
    IDllInstance* const first = Create(u"GoodComponent.dll"_s);
    ASSERT_NE(first, nullptr);
    auto* const counting = dynamic_cast<CountingComponent*>(first);
    ASSERT_NE(counting, nullptr);
    EXPECT_EQ(counting->GetCount(), 1);
    IDllInstance* const second = Create(u"goodcomponent.DLL"_s);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(counting->GetCount(), 2);
    CfgCenter::DestroyDllInstanceByPointer(second);
    EXPECT_EQ(counting->GetCount(), 1);
    EXPECT_TRUE(IsMapped("libgoodcomponent.so"));
    CfgCenter::DestroyDllInstanceByPointer(first);
    EXPECT_FALSE(IsMapped("libgoodcomponent.so"));
    EXPECT_EQ(m_trace, QStringList());
}

TEST_F(ComponentTest, NullAndUnknownInstancesAreRefused) {
    CfgCenter::DestroyDllInstanceByPointer(nullptr);
    EXPECT_EQ(m_trace.size(), 1);
    IDllInstance* const instance = Create(u"GoodComponent.dll"_s);
    CfgCenter::DestroyDllInstanceByPointer(instance);
    EXPECT_EQ(m_trace.size(), 1);
    CfgCenter::DestroyDllInstanceByPointer(instance);
    EXPECT_EQ(m_trace.size(), 2);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"cannot be destroyed"));
}

TEST_F(ComponentTest, MissingFileIsRefusedAndThePlaceIsNamed) {
    ExpectRefusal(u"MshClient.dll"_s, u"there is no file "_s + COMPONENT_DIRECTORY + u"/libmshclient.so"_s);
}

TEST_F(ComponentTest, NameThatLeavesTheDirectoryIsRefused) {
    const QString reason = u"a component is named by a plain file name"_s;
    for (const QString& name :
         {u""_s, u"../GoodComponent.dll"_s, COMPONENT_DIRECTORY + u"/libgoodcomponent.so"_s,
          u"sub\\GoodComponent.dll"_s, u"..GoodComponent.dll"_s, u"GoodComponent.dll"_s + QChar::Null}) {
        ExpectRefusal(name, reason);
    }
}

TEST_F(ComponentTest, ComponentOfAnotherInterfaceVersionIsRefusedAndItsFactoryNotCalled) {
    ExpectRefusal(u"OtherVersionComponent.dll"_s, COMPONENT_DIRECTORY +
                                                      u"/libotherversioncomponent.so: it has the interface "
                                                      u"version 2, and 1 is wanted"_s);
    EXPECT_FALSE(IsMapped("libotherversioncomponent.so"));
}

TEST_F(ComponentTest, SharedObjectThatIsNoComponentIsRefused) {
    ExpectRefusal(u"NoComponent.dll"_s, COMPONENT_DIRECTORY +
                                            u"/libnocomponent.so: it is no component: it does not export "
                                            u"ZanComponentInterfaceVersion and ZanCreateComponent"_s);
    EXPECT_FALSE(IsMapped("libnocomponent.so"));
}

TEST_F(ComponentTest, FactoryThatReturnsNullOrThrowsIsRefused) {
    const QString start = COMPONENT_DIRECTORY + u"/lib"_s;
    ExpectRefusal(u"NullComponent.dll"_s, start + u"nullcomponent.so: it does not make an instance"_s);
    ExpectRefusal(u"ThrowingComponent.dll"_s,
                  start + u"throwingcomponent.so: it does not make an instance: no receiver"_s);
    ExpectRefusal(u"OddThrowingComponent.dll"_s,
                  start + u"oddthrowingcomponent.so: it does not make an instance: it threw an exception"_s);
    EXPECT_FALSE(IsMapped("throwingcomponent.so"));
    EXPECT_FALSE(IsMapped("libnullcomponent.so"));
}

TEST_F(ComponentTest, FileThatIsNoSharedObjectIsRefused) {
    const QTemporaryDir directory;
    QFile file(directory.filePath(u"libtext.so"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("this is a text");
    file.close();
    ASSERT_TRUE(QDir(directory.path()).mkdir(u"libfolder.so"_s));
    ASSERT_TRUE(CfgCenter::SetComponentDirectory(directory.path()));
    EXPECT_EQ(Create(u"Text.dll"_s), nullptr);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(file.fileName() + u" is no shared object"_s));
    ExpectRefusal(u"Folder.dll"_s, u"there is no file "_s + directory.filePath(u"libfolder.so"_s));
}

TEST_F(ComponentTest, ComponentThatNeedsWhatIsNotThereIsRefusedWhenItIsLoaded) {
    EXPECT_EQ(Create(u"UnresolvedComponent.dll"_s), nullptr);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"FunctionThatIsNowhere"));
}

TEST_F(ComponentTest, OnlyAnAbsoluteDirectoryIsSearched) {
    const QString oldDirectory = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(COMPONENT_DIRECTORY));
    for (const QString& directory : {u""_s, u"."_s, u"relative"_s}) {
        EXPECT_FALSE(CfgCenter::SetComponentDirectory(directory));
        EXPECT_TRUE(CfgCenter::GetLastError().contains(u"is no absolute path"));
        ExpectRefusal(u"GoodComponent.dll"_s, u"no component directory is set"_s);
    }
    const QTemporaryDir empty;
    ASSERT_TRUE(CfgCenter::SetComponentDirectory(empty.path()));
    ExpectRefusal(u"GoodComponent.dll"_s, u"there is no file "_s + empty.filePath(u"libgoodcomponent.so"_s));
    QDir::setCurrent(oldDirectory);
}

} // namespace
