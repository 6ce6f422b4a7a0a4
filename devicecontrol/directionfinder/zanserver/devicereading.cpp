#include "zanserver/devicereading.h"

#include "zancommon/idevicedescription.h"
#include "zancommon/zancharacteristics.h"
#include "zanserver/compasswatch.h"

#include <QList>

#include <array>
#include <cmath>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;

namespace ZANServer {

namespace {

constexpr qsizetype LONGEST_NAME = 64;      // bytes
constexpr qsizetype LONGEST_OPTIONS = 1000; // bytes
constexpr std::size_t MOST_SUBRANGES = 64;
constexpr double HIGHEST_FREQUENCY = 1e12; // Hz: far above every device

bool IsRange(double low, double high) {
    return std::isfinite(low) && std::isfinite(high) && low >= 0.0 && low < high && high <= HIGHEST_FREQUENCY;
}

void AddFault(DeviceReading& reading, const QString& text) {
    if (reading.faults.size() < DeviceReading::MOST_FAULTS) {
        reading.faults.append(text);
    }
}

/// The type of a converter and its name belong together: each tells the other. False when there is neither.
bool CompleteType(ConverterSetupStruct& converter) {
    for (const auto& row : ZANCharacteristics::s_aConverterTypeNames) {
        const QString name = row.name.toString();
        if (converter.type == row.converter && converter.typeName.isEmpty()) {
            converter.typeName = name;
        } else if (converter.type == CONVERTER_NONE && converter.typeName == name) {
            converter.type = row.converter;
        }
    }
    return !converter.typeName.isEmpty();
}

bool AskDescription(IDriver& driver, DeviceReading& reading, unsigned long /*number*/) {
    if (auto* const description = dynamic_cast<IDeviceDescription*>(&driver)) {
        if (const QString type = Bounded(description->GetDeviceType(), LONGEST_NAME); !type.isEmpty()) {
            reading.type = type;
        }
        if (const QString options = description->GetDeviceOptions(); !options.isNull()) {
            reading.options = Bounded(options, LONGEST_OPTIONS);
        }
    }
    return true;
}

bool AskAntenna(IDriver& driver, DeviceReading& reading, unsigned long number) {
    DeviceReading::Antenna antenna;
    int subRangeCount = 0;
    if (driver.GetAntennaProperty(number, antenna.property, antenna.subRange, subRangeCount) != 0) {
        return false;
    }
    AntennaPropertyStruct& property = antenna.property;
    property.handle = static_cast<qint32>(number);
    property.name = Bounded(property.name, LONGEST_NAME);
    if (property.name.isEmpty()) {
        AddFault(reading, u"antenna %1 has no name; it is left out"_s.arg(number));
    } else if (!IsRange(property.minFrequency, property.maxFrequency)) {
        AddFault(reading, u"antenna %1 (%2): %3 to %4 Hz is not a range; it is left out"_s.arg(
                              QString::number(number), property.name, QString::number(property.minFrequency),
                              QString::number(property.maxFrequency)));
    } else {
        reading.antennas.push_back(antenna);
    }
    return true;
}

bool AskAntennaSetup(IDriver& driver, DeviceReading& reading, unsigned long number) {
    if (number >= reading.antennas.size()) {
        return false;
    }
    DeviceReading::Antenna& antenna = reading.antennas[number];
    AntennaSetupStruct setup;
    if (driver.GetAntennaSetup(static_cast<unsigned long>(antenna.property.handle), setup) != 0) {
        return true;
    }
    setup.handle = antenna.property.handle;
    std::size_t left = MOST_SUBRANGES;
    setup.subRanges.remove_if([&left](const AntennaSubRangeStruct& each) {
        return !IsRange(each.minFrequency, each.maxFrequency) || left == 0 || left-- == 0;
    });
    if (!IsRange(setup.range.first, setup.range.second)) {
        setup.range = {antenna.property.minFrequency, antenna.property.maxFrequency};
        AddFault(reading, u"antenna %1 (%2): the range in which it is used is not a range"_s.arg(
                              QString::number(antenna.property.handle), antenna.property.name));
    }
    if (!std::isfinite(setup.mechanicalOffset)) {
        setup.mechanicalOffset = 0.0;
        AddFault(reading, u"antenna %1 (%2): the mechanical offset is not a number"_s.arg(
                              QString::number(antenna.property.handle), antenna.property.name));
    }
    antenna.setup = setup;
    return true;
}

bool AskConverter(IDriver& driver, DeviceReading& reading, unsigned long number) {
    ConverterSetupStruct converter;
    if (driver.GetConverterProperty(number, converter) != 0) {
        return false;
    }
    converter.handle = static_cast<qint32>(number);
    converter.typeName = Bounded(converter.typeName, LONGEST_NAME);
    if (CompleteType(converter)) {
        reading.converters.push_back(converter);
    } else {
        AddFault(reading, u"converter %1 has no type; it is left out"_s.arg(number));
    }
    return true;
}

/// What the operator can change of a converter.
bool AskConverterSetup(IDriver& driver, DeviceReading& reading, unsigned long number) {
    if (number >= reading.converters.size()) {
        return false;
    }
    ConverterSetupStruct& converter = reading.converters[number];
    ConverterSetupStruct setup = converter;
    if (driver.GetConverterSetup(static_cast<unsigned long>(converter.handle), setup) == 0) {
        converter.antennaHandle = setup.antennaHandle;
        converter.attenuation = setup.attenuation;
        converter.enabled = setup.enabled;
        converter.preamplifier = setup.preamplifier;
    }
    return true;
}

bool AskCompass(IDriver& driver, DeviceReading& reading, unsigned long number) {
    DeviceReading::Compass compass;
    if (driver.GetCompassProperty(number, compass.property) != 0) {
        return false;
    }
    compass.property.handle = static_cast<qint32>(number);
    compass.property.typeName = Bounded(compass.property.typeName, LONGEST_NAME);
    reading.compasses.push_back(compass);
    return true;
}

bool AskCompassValue(IDriver& driver, DeviceReading& reading, unsigned long number) {
    if (number >= reading.compasses.size()) {
        return false;
    }
    reading.compasses[number].value = ReadCompass(driver, number);
    return true;
}

bool AskComponents(IDriver& driver, DeviceReading& reading, unsigned long /*number*/) {
    QList<ComponentInfo*> list;
    const long result = driver.RequestHWStatus(&list);
    if (result == 0) {
        auto& components = reading.components.emplace();
        for (const ComponentInfo* const each : std::as_const(list)) {
            if (each && std::cmp_less(components.size(), DeviceReading::MOST_COMPONENTS)) {
                components.push_back({Bounded(each->name, LONGEST_NAME),
                                      Bounded(each->serialNumber, LONGEST_NAME),
                                      Bounded(each->version, LONGEST_NAME), each->operational});
            }
        }
        if (list.size() > DeviceReading::MOST_COMPONENTS) {
            AddFault(reading, u"the driver tells of %1 components; those after the first %2 are left out"_s
                                  .arg(list.size())
                                  .arg(DeviceReading::MOST_COMPONENTS));
        }
    }
    qDeleteAll(list);
    return true;
}

bool AskChannels(IDriver& driver, DeviceReading& reading, unsigned long /*number*/) {
    const long count = driver.GetMaxChannelCount(EMODE_SCAN);
    if (count > 0 && std::in_range<int>(count)) {
        reading.maxChannelCount = static_cast<int>(count);
    }
    return true;
}

/// Something that is asked of number 0, 1 and so on, until there are no more.
struct Question {
    unsigned long most;
    bool (*ask)(IDriver& driver, DeviceReading& reading, unsigned long number);
};

constexpr std::array<Question, 9> QUESTIONS{{
    {1, AskDescription},
    {DeviceReading::MOST_ANTENNAS, AskAntenna},
    {DeviceReading::MOST_ANTENNAS, AskAntennaSetup},
    {DeviceReading::MOST_CONVERTERS, AskConverter},
    {DeviceReading::MOST_CONVERTERS, AskConverterSetup},
    {DeviceReading::MOST_COMPASSES, AskCompass},
    {DeviceReading::MOST_COMPASSES, AskCompassValue},
    {1, AskComponents},
    {1, AskChannels},
}};

/// What is used by both threads, one after the other.
struct Progress {
    DeviceReading reading;
    std::size_t question = 0;
    unsigned long number = 0;
    bool isThereMore = false;
};

void AskNext(DriverErrands& errands, const std::shared_ptr<Progress>& progress,
             const std::function<void(const DeviceReading&)>& done) {
    if (progress->question == QUESTIONS.size()) {
        done(progress->reading);
        return;
    }
    const auto ask = [progress](IDriver& driver) {
        progress->isThereMore = false; // if it throws
        progress->isThereMore =
            QUESTIONS.at(progress->question).ask(driver, progress->reading, progress->number);
        driver.ClearLastError(); // that there is no further one is no fault
    };
    const auto goOn = [&errands, progress, done] {
        const bool isLast = ++progress->number == QUESTIONS.at(progress->question).most;
        if (isLast || !progress->isThereMore) {
            ++progress->question;
            progress->number = 0;
        }
        AskNext(errands, progress, done);
    };
    errands.Call(DriverCall::Query, ask, goOn);
}

} // namespace

void ReadDevice(DriverErrands& errands, const std::function<void(const DeviceReading&)>& done) {
    AskNext(errands, std::make_shared<Progress>(), done);
}

} // namespace ZANServer
