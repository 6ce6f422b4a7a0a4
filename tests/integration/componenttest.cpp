#include "tolmappstartup/cfgcenter.h"

#include "components/countingcomponent.h"
#include "support/eventloop.h"
#include "support/printing.h"
#include "support/tracelines.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <elf.h>
#include <future>
#include <link.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString COMPONENT_DIRECTORY = QStringLiteral(ZAN_TEST_COMPONENTS);

class ComponentTest : public testing::Test {
public:
    ComponentTest() { EXPECT_TRUE(CfgCenter::SetComponentDirectory(COMPONENT_DIRECTORY)); }

protected:
    static IDllInstance* Create(const QString& fileName) {
        return CfgCenter::CreateDllInstanceByFileName(fileName, {}, false, false);
    }

    void ExpectRefusal(const QString& fileName, const QString& reason) {
        EXPECT_EQ(Create(fileName), nullptr);
        EXPECT_EQ(CfgCenter::GetLastError(),
                  u"The component \""_s + fileName + u"\" cannot be loaded: "_s + reason + u'.');
        EXPECT_TRUE(m_trace.lines.value(m_trace.lines.size() - 1).endsWith(CfgCenter::GetLastError()));
    }

    TraceLines m_trace;
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
    EXPECT_EQ(m_trace.lines, QStringList());
}

TEST_F(ComponentTest, LibraryThatIsToBeKeptStaysWithoutInstances) {
    IDllInstance* const instance = Create(u"GoodComponent.dll"_s);
    ASSERT_NE(instance, nullptr);
    CfgCenter::KeepLibraryOf(instance);
    CfgCenter::DestroyDllInstanceByPointer(instance);
    EXPECT_TRUE(IsMapped("libgoodcomponent.so"));
    IDllInstance* const another = Create(u"GoodComponent.dll"_s);
    ASSERT_NE(another, nullptr);
    CfgCenter::DestroyDllInstanceByPointer(another);
    EXPECT_TRUE(IsMapped("libgoodcomponent.so"));
    EXPECT_EQ(m_trace.lines, QStringList());
}

TEST_F(ComponentTest, LibraryOfWhatIsNotAnInstanceCannotBeKept) {
    CfgCenter::KeepLibraryOf(nullptr);
    EXPECT_EQ(m_trace.lines.size(), 1);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"cannot be kept"));
}

TEST_F(ComponentTest, NullAndUnknownInstancesAreRefused) {
    CfgCenter::DestroyDllInstanceByPointer(nullptr);
    EXPECT_EQ(m_trace.lines.size(), 1);
    IDllInstance* const instance = Create(u"GoodComponent.dll"_s);
    CfgCenter::DestroyDllInstanceByPointer(instance);
    EXPECT_EQ(m_trace.lines.size(), 1);
    CfgCenter::DestroyDllInstanceByPointer(instance);
    EXPECT_EQ(m_trace.lines.size(), 2);
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
                                                      u"/libotherversioncomponent.so: it has interface "
                                                      u"version 2, but version 1 is needed"_s);
    EXPECT_FALSE(IsMapped("libotherversioncomponent.so"));
}

TEST_F(ComponentTest, SharedObjectThatIsNoComponentIsRefused) {
    ExpectRefusal(u"NoComponent.dll"_s, COMPONENT_DIRECTORY +
                                            u"/libnocomponent.so: it is not a component: it does not export "
                                            u"ZanComponentInterfaceVersion and ZanCreateComponent"_s);
    EXPECT_FALSE(IsMapped("libnocomponent.so"));
}

TEST_F(ComponentTest, FactoryThatReturnsNullOrThrowsIsRefused) {
    const QString start = COMPONENT_DIRECTORY + u"/lib"_s;
    ExpectRefusal(u"NullComponent.dll"_s, start + u"nullcomponent.so: it does not make an instance"_s);
    ExpectRefusal(u"ThrowingComponent.dll"_s,
                  start + u"throwingcomponent.so: it threw an exception: no receiver"_s);
    ExpectRefusal(u"OddThrowingComponent.dll"_s, start + u"oddthrowingcomponent.so: it threw an exception"_s);
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
    EXPECT_TRUE(CfgCenter::GetLastError().contains(file.fileName() + u": it is not a shared object"_s));
    ExpectRefusal(u"Folder.dll"_s, u"there is no file "_s + directory.filePath(u"libfolder.so"_s));
}

TEST_F(ComponentTest, ComponentThatNeedsWhatIsNotThereIsRefusedWhenItIsLoaded) {
    EXPECT_EQ(Create(u"UnresolvedComponent.dll"_s), nullptr);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"FunctionThatIsNowhere"));
}

TEST_F(ComponentTest, VersionFunctionThatThrowsIsRefused) {
    ExpectRefusal(u"VersionThrowingComponent.dll"_s,
                  COMPONENT_DIRECTORY +
                      u"/libversionthrowingcomponent.so: it threw an exception: which version"_s);
    EXPECT_FALSE(IsMapped("libversionthrowingcomponent.so"));
}

TEST_F(ComponentTest, InitialiserThatThrowsIsRefusedAndTheLoaderStaysUsable) {
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(Create(u"StaticThrowingComponent.dll"_s), nullptr);
        EXPECT_TRUE(CfgCenter::GetLastError().contains(u"libstaticthrowingcomponent.so: its initialiser "))
            << CfgCenter::GetLastError().toStdString();
        EXPECT_FALSE(IsMapped("libstaticthrowingcomponent.so"));
    }
    // another thread, because the loader's lock would be this one's
    std::future<bool> isLoaded = std::async(
        std::launch::async, [] { return QLibrary(COMPONENT_DIRECTORY + u"/libnocomponent.so"_s).load(); });
    ASSERT_EQ(isLoaded.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_TRUE(isLoaded.get());
    EXPECT_TRUE(QLibrary(COMPONENT_DIRECTORY + u"/libnocomponent.so"_s).unload());
}

TEST_F(ComponentTest, InitialiserThatEndsTheProcessIsRefused) {
    ExpectRefusal(u"AbortingComponent.dll"_s,
                  COMPONENT_DIRECTORY + u"/libabortingcomponent.so: its initialiser ends the process"_s);
}

TEST_F(ComponentTest, InitialiserWithoutAnEndIsRefused) {
    ExpectRefusal(u"HangingComponent.dll"_s,
                  COMPONENT_DIRECTORY + u"/libhangingcomponent.so: its initialiser does not end"_s);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left behind";
}

TEST_F(ComponentTest, VersionFunctionThatEndsTheProcessOrHasNoEndIsRefused) {
    const QString start = COMPONENT_DIRECTORY + u"/libversion"_s;
    ExpectRefusal(u"VersionExitingComponent.dll"_s,
                  start + u"exitingcomponent.so: its version function ends the process"_s);
    ExpectRefusal(u"VersionCrashingComponent.dll"_s,
                  start + u"crashingcomponent.so: its version function ends the process"_s);
    ExpectRefusal(u"VersionHangingComponent.dll"_s,
                  start + u"hangingcomponent.so: its version function does not end"_s);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left behind";
}

TEST_F(ComponentTest, RefusedComponentWhoseThreadRunsOnEndsNothing) {
    ExpectRefusal(u"ThreadComponent.dll"_s,
                  COMPONENT_DIRECTORY + u"/libthreadcomponent.so: it does not make an instance"_s);
    ASSERT_TRUE(IsMapped("libthreadcomponent.so"));
    QLibrary left(COMPONENT_DIRECTORY + u"/libthreadcomponent.so"_s);
    const auto getRounds = reinterpret_cast<int (*)()>(left.resolve("GetRounds"));
    ASSERT_TRUE(getRounds);
    const int before = getRounds();
    EXPECT_TRUE(SpinUntil([&] { return getRounds() > before + 1; })) << "the thread runs in what is left";
}

TEST_F(ComponentTest, InitialiserThatForksLeavesOneProgramWithTheComponent) {
    const pid_t self = getpid();
    IDllInstance* const instance = Create(u"ForkingComponent.dll"_s);
    if (getpid() != self) {
        kill(self, SIGKILL); // this copy must not be here
    }
    EXPECT_NE(instance, nullptr) << CfgCenter::GetLastError().toStdString();
    CfgCenter::DestroyDllInstanceByPointer(instance);
}

/// A directory with a copy of the good component.
class CopiedComponentTest : public ComponentTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(QFile::copy(COMPONENT_DIRECTORY + u"/libgoodcomponent.so"_s, path));
        ASSERT_TRUE(CfgCenter::SetComponentDirectory(directory.path()));
        SetMode(path, 0644);
    }
    static void SetMode(const QString& name, mode_t mode) {
        ASSERT_EQ(chmod(QFile::encodeName(name).constData(), mode), 0);
    }
    static void ExpectLoads() {
        IDllInstance* const instance = Create(u"GoodComponent.dll"_s);
        ASSERT_NE(instance, nullptr) << CfgCenter::GetLastError().toStdString();
        CfgCenter::DestroyDllInstanceByPointer(instance);
    }

    const QTemporaryDir directory;
    const QString path = directory.filePath(u"libgoodcomponent.so"_s);
};

TEST_F(CopiedComponentTest, FileThatOthersCanWriteToIsRefused) {
    ExpectLoads();
    for (const mode_t mode : {0664U, 0646U, 0666U}) {
        SetMode(path, mode);
        ExpectRefusal(u"GoodComponent.dll"_s, path + u": it can be written to by others"_s);
    }
    SetMode(path, 0600);
    ExpectLoads();
}

TEST_F(CopiedComponentTest, FileInADirectoryThatOthersCanWriteToIsRefused) {
    for (const mode_t mode : {0770U, 0707U, 01777U}) {
        SetMode(directory.path(), mode);
        ExpectRefusal(u"GoodComponent.dll"_s,
                      path + u": its directory "_s + directory.path() + u" can be written to by others"_s);
    }
    SetMode(directory.path(), 0755);
    ExpectLoads();
}

TEST_F(CopiedComponentTest, LinkCountsWithTheDirectoryThatItLeadsTo) {
    const QTemporaryDir other;
    const QString target = other.filePath(u"target.so"_s);
    ASSERT_TRUE(QFile::rename(path, target));
    ASSERT_TRUE(QFile::link(target, path));
    ExpectLoads();
    SetMode(other.path(), 0777);
    ExpectRefusal(u"GoodComponent.dll"_s,
                  path + u": its directory "_s + other.path() + u" can be written to by others"_s);
}

TEST_F(CopiedComponentTest, DirectoryAboveThatOthersCanWriteToIsRefusedUnlessItIsSticky) {
    const QTemporaryDir other;
    const QString middle = other.filePath(u"middle"_s);
    ASSERT_TRUE(QDir().mkpath(middle + u"/lower"_s));
    const QString copy = middle + u"/lower/libgoodcomponent.so"_s;
    ASSERT_TRUE(QFile::rename(path, copy));
    SetMode(middle, 0777);
    for (const QString& place :
         {middle + u"/lower"_s, directory.path()}) { // the directory itself, and a link
        ASSERT_TRUE(CfgCenter::SetComponentDirectory(place));
        ExpectRefusal(u"GoodComponent.dll"_s, place + u"/libgoodcomponent.so: its directory "_s + middle +
                                                  u" can be written to by others"_s);
        ASSERT_TRUE(QFile::exists(path) || QFile::link(copy, path));
    }
    SetMode(middle, 01777);
    ExpectLoads();
    SetMode(middle, 0755);
    ExpectLoads();
}

TEST_F(CopiedComponentTest, LinkInADirectoryThatOthersCanWriteToIsRefused) {
    const QTemporaryDir other;
    ASSERT_TRUE(QFile::rename(path, other.filePath(u"target.so"_s)));
    ASSERT_TRUE(QFile::link(other.filePath(u"target.so"_s), path));
    SetMode(directory.path(), 0777);
    ExpectRefusal(u"GoodComponent.dll"_s,
                  path + u": its directory "_s + directory.path() + u" can be written to by others"_s);
}

TEST_F(CopiedComponentTest, LinkThatChangesAfterItWasFollowedChangesNothing) {
    const QTemporaryDir other;
    const QString target = other.filePath(u"target.so"_s);
    ASSERT_TRUE(QFile::rename(path, target));
    ASSERT_TRUE(QFile::link(target, path));
    IDllInstance* const first = Create(u"GoodComponent.dll"_s);
    ASSERT_NE(first, nullptr) << CfgCenter::GetLastError().toStdString();
    EXPECT_TRUE(IsMapped("/target.so")) << "what was examined is what is loaded";
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QFile::copy(target, path));
    IDllInstance* const second = Create(u"GoodComponent.dll"_s);
    ASSERT_NE(second, nullptr);
    CfgCenter::DestroyDllInstanceByPointer(first);
    CfgCenter::DestroyDllInstanceByPointer(second);
    EXPECT_FALSE(IsMapped("/target.so"));
}

TEST_F(CopiedComponentTest, FileOfAnotherUserIsRefused) {
    constexpr uid_t SOMEBODY = 12345;
    if (geteuid() == 0) { // nobody else can give a file away
        ASSERT_EQ(chown(QFile::encodeName(path).constData(), SOMEBODY, 0), 0);
        ExpectRefusal(u"GoodComponent.dll"_s, path + u": it belongs to the user 12345"_s);
        ASSERT_EQ(chown(QFile::encodeName(path).constData(), 0, 0), 0);
        ASSERT_EQ(chown(QFile::encodeName(directory.path()).constData(), SOMEBODY, 0), 0);
        ExpectRefusal(u"GoodComponent.dll"_s,
                      path + u": its directory "_s + directory.path() + u" belongs to the user 12345"_s);
    }
}

TEST_F(CopiedComponentTest, TruncatedLibraryIsRefusedWhereverItIsCut) {
    const qint64 whole = QFileInfo(path).size();
    for (qint64 part = 1; part < 64; ++part) {
        ASSERT_TRUE(QFile::remove(path) &&
                    QFile::copy(COMPONENT_DIRECTORY + u"/libgoodcomponent.so"_s, path));
        ASSERT_TRUE(QFile::resize(path, whole * part / 64));
        ExpectRefusal(u"GoodComponent.dll"_s, path + u": it is truncated"_s);
    }
    for (const qint64 size : {qint64{4}, qint64{63}, qint64{64}, whole - 1}) {
        ASSERT_TRUE(QFile::remove(path) &&
                    QFile::copy(COMPONENT_DIRECTORY + u"/libgoodcomponent.so"_s, path));
        ASSERT_TRUE(QFile::resize(path, size));
        ExpectRefusal(u"GoodComponent.dll"_s, path + u": it is truncated"_s);
    }
}

TEST_F(CopiedComponentTest, TruncatedLibraryWithoutASectionTableIsRefusedToo) {
    const auto loseSections = [this] {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.seek(offsetof(ElfW(Ehdr), e_shoff));
        file.write(QByteArray(sizeof(ElfW(Off)), 0));
        file.seek(offsetof(ElfW(Ehdr), e_shnum));
        file.write(QByteArray(sizeof(ElfW(Half)), 0));
    };
    loseSections();
    ExpectLoads();
    ASSERT_TRUE(QFile::resize(path, 4096));
    ExpectRefusal(u"GoodComponent.dll"_s, path + u": it is truncated"_s);
}

TEST_F(CopiedComponentTest, LibraryOfAnotherKindOfMachineIsRefused) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.seek(EI_CLASS);
    file.write(QByteArray(1, sizeof(void*) == 8 ? ELFCLASS32 : ELFCLASS64));
    file.close();
    EXPECT_EQ(Create(u"GoodComponent.dll"_s), nullptr);
    EXPECT_TRUE(CfgCenter::GetLastError().contains(path + u": it is not a shared object"_s));
}

TEST_F(ComponentTest, OnlyAnAbsoluteDirectoryIsSearched) {
    const QString oldDirectory = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(COMPONENT_DIRECTORY));
    for (const QString& directory : {u""_s, u"."_s, u"relative"_s}) {
        EXPECT_FALSE(CfgCenter::SetComponentDirectory(directory));
        EXPECT_TRUE(CfgCenter::GetLastError().contains(u"is not an absolute path"));
        ExpectRefusal(u"GoodComponent.dll"_s, u"no component directory is set"_s);
    }
    const QTemporaryDir empty;
    ASSERT_TRUE(CfgCenter::SetComponentDirectory(empty.path()));
    ExpectRefusal(u"GoodComponent.dll"_s, u"there is no file "_s + empty.filePath(u"libgoodcomponent.so"_s));
    QDir::setCurrent(oldDirectory);
}

} // namespace
