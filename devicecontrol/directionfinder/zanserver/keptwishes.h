#pragma once

#include "kwbase/observable.h"
#include "valueframework/valuedescriptor.h"

#include <QString>
#include <QStringList>

#include <array>

/// What a device was doing last, in the section "Control" of its station's settings: frequency, bandwidth,
/// demodulation, operation mode, ranges, squelch and volume. The antenna and its polarisation are in the
/// settings of the setup (`ZANSetupData`). Main thread.
namespace ZANServer::KeptWishes {

/// A key of the section, and the value that it is for. Selections are kept by their keys.
struct Setting {
    QStringView key;
    const ValueDescriptor* descriptor = nullptr;
};
extern const std::array<Setting, 9> SETTINGS;
/// The keys of the ranges begin with this text, which a number from 0 on follows. The first one that is
/// missing or empty ends them.
inline constexpr QStringView RANGE_KEY = u"ScanRange";

/// Whether a value takes the text of a setting; it has it then.
bool Take(ValueBase& value, const QString& text, IObserver* originator);

/// Sets the values of the server from the settings of a station. What is missing or not allowed leaves its
/// value as it is; of the ranges, it leaves out that one.
void Restore(const QString& station, IObserver* originator);
/// Keeps the values as they are, apart from those that are not measured. They are saved with the other
/// settings.
void Keep(const QString& station);

} // namespace ZANServer::KeptWishes
