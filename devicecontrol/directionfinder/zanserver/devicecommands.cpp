#include "zanserver/devicecommands.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/valueformats.h"
#include "zanserver/servervalue.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using KvZANCommon::IDriver;

namespace ZANServer {

namespace {

constexpr qsizetype LONGEST_COMMAND = 1000; // bytes

/// The number behind a word, from 0 on; nothing when there is none.
std::optional<unsigned long> NumberBehind(const QString& command, QStringView word) {
    unsigned long number = 0;
    return command.startsWith(word) && ZANPlatform::ReadInteger(command.sliced(word.size()), number)
               ? std::optional(number)
               : std::nullopt;
}

/// Why a command is none.
QString FaultOf(const QString& command) {
    const QString name = command.section(u' ', 0, 0);
    const QString argument = Bounded(command.section(u' ', 1), 40);
    if (name == u"calibrate" || name == u"continue") {
        const QString object = name == u"calibrate" ? u"converter"_s : u"channel"_s;
        return argument.isEmpty() ? u"%1: there is no number of a %2"_s.arg(name, object)
                                  : u"%1: \"%2\" is not the number of a %3"_s.arg(name, argument, object);
    }
    if (name == u"reset" || name == u"hold") {
        return name + u" takes no argument"_s;
    }
    if (name == u"bit") {
        return u"bit: there is only \"full\""_s;
    }
    if (name == u"test") {
        return u"test: there is no text"_s;
    }
    return u"it is not known; there are: reset, calibrate CONVERTER, bit, bit full, test TEXT, hold, "
           "continue CHANNEL"_s;
}

} // namespace

DeviceCommands::DeviceCommands(DriverErrands& errands)
    : m_errands(errands)
    , m_command(DeviceValue<ValueString>(g_vdCmdCommand))
    , m_taken(DeviceValue<ValueString>(g_vdCmdTaken))
    , m_result(DeviceValue<ValueString>(g_vdCmdResult))
    , m_error(DeviceValue<ValueString>(g_vdCmdError))
    , m_messages(DeviceValue<ValueString>(g_vdBitMessages)) {
    m_command->SetValue({}); // whoever wrote it did not mean this device
    m_command->AddObserver(this);
}

void DeviceCommands::SetConnected(bool isConnected) {
    m_isConnected = isConnected;
    if (!isConnected) {
        m_waiting.clear();
        if (!m_running.isEmpty()) {
            Finish(u"the device was lost"_s);
        }
    }
}

void DeviceCommands::Update(Observable* /*subject*/, TChangeCode code) {
    const QString command = Bounded(m_command->GetValue(), LONGEST_COMMAND);
    if (code != TChangeCode::Changed || command.isEmpty()) {
        return;
    }
    m_command->SetValue({}, this);
    if (m_waiting.size() >= MOST_WAITING) {
        m_error->SetValue(u"too many commands; \"%1\" is not carried out"_s.arg(Bounded(command, 40)));
        return;
    }
    m_waiting.append(command);
    if (m_running.isEmpty()) {
        CarryOutNext();
    }
}

void DeviceCommands::CarryOutNext() {
    if (m_waiting.isEmpty()) {
        return;
    }
    m_running = m_waiting.takeFirst();
    ++m_number;
    m_error->SetValue({});
    m_result->SetValue(u"busy"_s);
    m_taken->SetValue(m_running);
    if (!m_isConnected) {
        Finish(u"there is no device"_s);
    } else if (m_running == u"reset") {
        Send(DriverCall::Reset, [](IDriver& driver) { return driver.Reset(); });
    } else if (const auto converter = NumberBehind(m_running, u"calibrate ")) {
        Send(DriverCall::Calibrate,
             [number = *converter](IDriver& driver) { return driver.Calibrate(number); });
    } else if (m_running == u"bit" || m_running == u"bit full") {
        m_messages->SetValue({});
        Send(DriverCall::BuiltInTest, [isFull = m_running == u"bit full"](IDriver& driver) {
            long faults = 0;
            return driver.BIT(faults, isFull, false);
        });
    } else if (m_running.startsWith(u"test ")) {
        Send(DriverCall::Setting,
             [text = m_running.sliced(5)](IDriver& driver) { return driver.SetTest(text); });
    } else if (m_running == u"hold") {
        Send(DriverCall::Setting, [](IDriver& driver) { return driver.SearchHold(); });
    } else if (const auto channel = NumberBehind(m_running, u"continue ")) {
        Send(DriverCall::Setting,
             [number = *channel](IDriver& driver) { return driver.SearchContinue(number); });
    } else {
        Finish(FaultOf(m_running));
    }
}

void DeviceCommands::Send(DriverCall kind, std::function<long(IDriver&)> call) {
    const auto error = std::make_shared<QString>(u"the driver threw an exception"_s);
    m_errands.Call(
        kind,
        [call = std::move(call), error](IDriver& driver) {
            try {
                const long result = call(driver);
                *error = result == 0 ? QString() : TakeLastError(driver, result);
            } catch (const std::exception& exception) {
                *error += u": "_s + WhatOf(exception);
                throw;
            }
        },
        [this, error, number = m_number] {
            if (m_number == number && !m_running.isEmpty()) {
                Finish(*error);
            }
        });
}

void DeviceCommands::Finish(const QString& error) {
    const bool isReset = m_running == u"reset" && error.isEmpty();
    m_error->SetValue(error);
    m_result->SetValue(error.isEmpty() ? u"ok"_s : u"failed"_s);
    m_running.clear();
    if (isReset && m_onReset) {
        m_onReset();
    }
    CarryOutNext();
}

void DeviceCommands::OnTestResult(const KvZANCommon::ErrorStruct& result) {
    const QString line = result.code == 0
                             ? Bounded(result.text)
                             : u"%1 (code %2)"_s.arg(Bounded(result.text), QString::number(result.code));
    QString messages = m_messages->GetValue();
    messages += messages.isEmpty() ? line : u'\n' + line;
    m_messages->SetValue(messages.last(std::min(messages.size(), MOST_CHARACTERS)));
}

} // namespace ZANServer
