#include "zanserver/commandlogvalues.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "zanserver/servervalue.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ZANServer {

CommandLogValues::CommandLogValues()
    : m_lines(DeviceValue<ValueStringList>(StdDeviceDefinition::g_vdCommandLog)) {
    m_lines->Clear();
    // A display is not shown each of a thousand lines in a second by itself.
    constexpr unsigned NOTICE_INTERVAL = 100; // ms
    m_lines->SetUpdateTimerTime(NOTICE_INTERVAL);
}

void CommandLogValues::OnCommandReported(const QString& line, quint64 time) {
    const QDateTime at = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(time), Qt::UTC);
    const QString text =
        at.toString(u"hh:mm:ss.zzz"_s) + u' ' + line.first(std::min(line.size(), LONGEST_LINE));
    const auto transaction = m_lines->CreateTransaction({TChangeCode::Changed});
    m_lines->PushBack(text);
    m_characters += static_cast<std::size_t>(text.size());
    std::size_t surplus = 0;
    while (m_lines->GetCount() - surplus > MOST_LINES || m_characters > MOST_CHARACTERS) {
        m_characters -= static_cast<std::size_t>(m_lines->GetElements()[surplus++].size());
    }
    m_lines->RemoveFirst(surplus);
}

} // namespace ZANServer
