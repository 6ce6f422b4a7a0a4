// A station on the simulated device, without the shell: a wish is set in the tree, what became of it is read
// there, and so are the bearings.

#include <stddevicedefinition/stddevicedescriptors.h>
#include <tolmappstartup/cfgcenter.h>
#include <valueframework/tree.h>
#include <valueframework/valueptr.h>
#include <zanserver/driverlibrary.h>
#include <zanserver/station.h>
#include <zanserver/stationdevice.h>

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using ZANPlatform::ValuePtr;

namespace {

constexpr auto MEASURED = std::chrono::seconds(10); // of the device's clock

QString ServerPath(const ValueDescriptor& descriptor) {
    return u"/ZANServer"_s + descriptor.PathName();
}

/// Prints what becomes of the wish for a frequency, and counts the bearings.
class Operator : public IObserver {
public:
    Operator() {
        m_carriedOut.Find(u"/ZANServer/Res/CtlR/Frequency/CarriedOut"_s);
        m_reason.Find(u"/ZANServer/Res/CtlR/Frequency/Reason"_s, this);
        m_bearing.Find(ServerPath(StdDeviceDefinition::g_vdAzimuth), this);
    }

    void Update(Observable* subject, TChangeCode code) override {
        if (m_reason.LetGoIfGoing(subject, code) || m_bearing.LetGoIfGoing(subject, code)) {
            return;
        }
        if (m_reason.Is(subject) && !m_reason->GetValue().isEmpty()) {
            std::printf("carried out as %s: %s\n", qPrintable(m_carriedOut->GetValue()),
                        qPrintable(m_reason->GetValue()));
        } else if (m_bearing.Is(subject) && m_bearing->GetValue().GetQuality() > 0) {
            m_last = m_bearing->GetValue();
            ++m_count;
        }
    }

    void PrintBearings() const {
        std::printf("%d bearings with a signal, the last one at %.1f MHz from %.0f degrees\n", m_count,
                    m_last.GetFrequency() / 1e6, m_last.GetAzimuth() / 10.0);
    }

private:
    ValuePtr<ValueString> m_carriedOut;
    ValuePtr<ValueString> m_reason;
    ValuePtr<ValueBearing> m_bearing;
    BearingResult m_last;
    int m_count = 0;
};

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir settings;      // those of a real station stay
    QDir::setCurrent(settings.path()); // the log of the commands is written below it
    CfgCenter::SetConfigDirectory(settings.path());
    CfgCenter::SetComponentDirectory(QStringLiteral(DRIVERS));
    const DriverChoice choice{u"simulator"_s, u"overflight"_s};
    QString fault;
    DriverComponentPtr driver = DriverLibrary::Load(choice.name, fault);
    if (!driver) {
        std::fprintf(stderr, "%s\n", qPrintable(fault));
        return 1;
    }
    {
        Station station(choice);
        station.StartOutput();
        StationDevice device(station, choice, std::move(driver));
        device.SetFirstCommand(u"speed max"_s);
        device.MeasureFor(MEASURED);
        QObject::connect(&device, &StationDevice::DurationIsOver, &application, &QCoreApplication::quit);

        Operator person;
        Tree& tree = *Tree::Instance();
        tree.Find<ValueSelection>(ServerPath(StdDeviceDefinition::g_vdOperationMode))
            ->SetCurrentKey(EMODE_SCAN);
        tree.Find<ValueNumericDouble>(ServerPath(StdDeviceDefinition::g_vdFrequency))->SetValue(20e6); // Hz
        device.Open();
        QCoreApplication::exec();
        device.Close();
        person.PrintBearings();
    }
    return CfgCenter::Close() ? 0 : 1;
}
