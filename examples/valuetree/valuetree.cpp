// Which changes an observer of a value is notified of, and which not.

#include <stddevicedefinition/stddevicedescriptors.h>
#include <valueframework/tree.h>
#include <valueframework/valueptr.h>

#include <QCoreApplication>

#include <cstdio>

using ZANPlatform::ValuePtr;

namespace {

class HeadingDisplay : public IObserver {
public:
    HeadingDisplay() { m_heading.Find(QStringLiteral("/ZANServer/Res/HeaR/TrueHeading"), this); }

    void Update(Observable* subject, TChangeCode code) override {
        if (m_heading.LetGoIfGoing(subject, code)) {
            std::printf("going away\n");
        } else if (m_heading->GetState() == TValueState::NotMeasured) {
            std::printf("not measured\n");
        } else {
            std::printf("%.1f degrees\n", m_heading->GetValue() / 10.0);
        }
    }

private:
    ValuePtr<ValueNumericInt> m_heading;
};

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    StdDeviceDefinition::CreateBranch(StdDeviceDefinition::EBranch::SERVER, QStringLiteral("/ZANServer"));
    Tree& tree = *Tree::Instance();

    auto* heading = tree.Find<ValueNumericInt>(QStringLiteral("/ZANServer/Res/HeaR/TrueHeading"));
    HeadingDisplay display;

    heading->SetValue(715);           // 71.5 degrees
    heading->SetValue(715);           // nothing: it is 715 already
    heading->SetValue(900, &display); // nothing: the display has caused it
    if (!heading->SetValue(3600)) {
        std::printf("3600 is refused, %d stays\n", heading->GetValue());
    }
    heading->SetState(TValueState::NotMeasured); // not measured

    tree.Remove(tree.GetNode(QStringLiteral("/ZANServer"))); // going away
    return 0;
}
