#include "zancommon/zanabstractinterface.h"

#include "support/printing.h"
#include "support/virtualslots.h"

#include <QCoreApplication>
#include <QMetaMethod>
#include <QPointer>
#include <QTranslator>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

class TestInterface : public ZANAbstractInterface {
public:
    using ZANAbstractInterface::AdoptConfigWidget;
    using ZANAbstractInterface::GetAddress;
    using ZANAbstractInterface::SetAddress;
    using ZANAbstractInterface::ZANAbstractInterface;

    void SetEnabled(bool on) override { m_bEnabled = on; }
    void SlotUpdateConfiguration() override {}

    [[nodiscard]] QString GetConfigPath() const { return m_strConfigPath; }
};

class UppercaseTranslator : public QTranslator {
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation,
                                    int n) const override {
        return qstrcmp(context, "ZANAbstractInterface") == 0
                   ? QString::fromUtf8(sourceText).toUpper() + QString::fromUtf8(disambiguation) +
                         QString::number(n)
                   : QString();
    }
};

} // namespace

TEST(ZANAbstractInterface, IsBornWithItsNameSwitchedOffAndEmpty) {
    TestInterface output(u"Output"_s);
    EXPECT_EQ(output.GetName(), u"Output"_s);
    EXPECT_FALSE(output.IsEnabled());
    EXPECT_EQ(output.GetConfigWidget(), nullptr);
    EXPECT_EQ(output.GetAddress(), QString());
    EXPECT_EQ(output.GetConfigPath(), QString());
    EXPECT_EQ(output.parent(), nullptr);
}

TEST(ZANAbstractInterface, KeepsAddressPathAndSwitch) {
    TestInterface output(u"Output"_s);
    output.SetAddress(u"COM1:9600,e,8,1"_s);
    output.SetConfigPath(u"Outputs/0"_s);
    output.SetEnabled(true);
    EXPECT_EQ(output.GetAddress(), u"COM1:9600,e,8,1"_s);
    EXPECT_EQ(output.GetConfigPath(), u"Outputs/0"_s);
    EXPECT_TRUE(output.IsEnabled());
}

TEST(ZANAbstractInterface, NameStaysWhenTheTextItWasMadeFromChanges) {
    QString name = u"Output"_s;
    TestInterface output(name);
    name[0] = u'X';
    EXPECT_EQ(output.GetName(), u"Output"_s);
}

TEST(ZANAbstractInterface, DestroyingTheConfigWidgetSetsItToNull) {
    TestInterface output(u"Output"_s);
    auto widget = std::make_unique<QWidget>();
    output.AdoptConfigWidget(widget.get());
    EXPECT_EQ(output.GetConfigWidget(), widget.get());
    widget.reset();
    EXPECT_EQ(output.GetConfigWidget(), nullptr);
}

TEST(ZANAbstractInterface, DestroyingAnotherObjectLeavesTheConfigWidget) {
    TestInterface output(u"Output"_s);
    QWidget widget;
    output.AdoptConfigWidget(&widget);
    {
        const QObject other;
        QObject::connect(&other, &QObject::destroyed, &output, &TestInterface::SlotOnConfigWidgetDestroyed);
    }
    EXPECT_EQ(output.GetConfigWidget(), &widget);
    output.SlotOnConfigWidgetDestroyed(nullptr);
    EXPECT_EQ(output.GetConfigWidget(), &widget);
}

TEST(ZANAbstractInterface, TheEndOfAWidgetThatWasReplacedLeavesTheNewOne) {
    TestInterface output(u"Output"_s);
    QWidget widget;
    {
        QWidget before;
        output.AdoptConfigWidget(&before);
        output.AdoptConfigWidget(&widget);
        EXPECT_EQ(output.GetConfigWidget(), &widget);
    }
    EXPECT_EQ(output.GetConfigWidget(), &widget);
    output.AdoptConfigWidget(nullptr);
    EXPECT_EQ(output.GetConfigWidget(), nullptr);
}

TEST(ZANAbstractInterface, AWidgetThatIsAdoptedTwiceIsForgottenAllTheSame) {
    TestInterface output(u"Output"_s);
    auto widget = std::make_unique<QWidget>();
    output.AdoptConfigWidget(widget.get());
    output.AdoptConfigWidget(widget.get());
    widget.reset();
    EXPECT_EQ(output.GetConfigWidget(), nullptr);
}

TEST(ZANAbstractInterface, DestructorLeavesTheConfigWidgetAlive) {
    auto output = std::make_unique<TestInterface>(u"Output"_s);
    const QPointer<QWidget> widget = new QWidget;
    output->AdoptConfigWidget(widget);
    output.reset();
    EXPECT_FALSE(widget.isNull());
    delete widget;
}

TEST(ZANAbstractInterface, MetaObjectHasTheTwoSlots) {
    const QMetaObject& meta = ZANAbstractInterface::staticMetaObject;
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 2);
    EXPECT_EQ(meta.method(meta.methodOffset()).methodSignature(), "SlotOnConfigWidgetDestroyed(QObject*)");
    EXPECT_EQ(meta.method(meta.methodOffset() + 1).methodSignature(), "SlotUpdateConfiguration()");
    EXPECT_EQ(meta.method(meta.methodOffset()).methodType(), QMetaMethod::Slot);
    EXPECT_EQ(meta.method(meta.methodOffset() + 1).methodType(), QMetaMethod::Slot);
}

TEST(ZANAbstractInterface, VirtualOperationsAreInOrderRightAfterThoseOfQObject) {
    struct OpenQObject : QObject {
        using QObject::disconnectNotify;
    };
    using I = ZANAbstractInterface;
    ExpectVirtualSlotsFrom(VirtualSlot(&OpenQObject::disconnectNotify) + 1, &I::SetConfigPath, &I::SetEnabled,
                           &I::IsEnabled, &I::GetConfigWidget, &I::GetName, &I::SlotUpdateConfiguration,
                           &TestInterface::SetAddress, &TestInterface::GetAddress);
}

TEST(ZANAbstractInterface, BothTranslationFunctionsTranslateAlike) {
    UppercaseTranslator translator;
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(ZANAbstractInterface::tr("höhe", "x", 3), u"HÖHEx3"_s);
    EXPECT_EQ(ZANAbstractInterface::trUtf8("höhe", "x", 3), u"HÖHEx3"_s);
    EXPECT_EQ(ZANAbstractInterface::trUtf8("höhe"), ZANAbstractInterface::tr("höhe"));
    QCoreApplication::removeTranslator(&translator);
}
