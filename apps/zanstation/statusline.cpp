#include "zanstation/statusline.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/zanpath.h"
#include "zanserver/frequencytext.h"
#include "zanserver/operationmodetext.h"

using namespace Qt::StringLiterals;

StatusLine::State StatusLine::GetState(const ZANServer::Station& station) {
    using namespace StdDeviceDefinition;
    State state;
    const auto* const mode = Tree::Instance()->Find<ValueSelection>(ZANPath::Server(g_vdOperationMode));
    state.mode =
        mode && mode->GetState() == TValueState::Valid
            ? ZANServer::OperationModeText::Format(static_cast<EOperationMode>(mode->GetCurrentKey()))
            : u"mode unknown"_s;
    state.bearings = station.GetCounts().published;
    const auto* const bearing = Tree::Instance()->Find<ValueBearing>(ZANPath::Server(g_vdAzimuth));
    const double frequency = bearing ? bearing->GetValue().GetFrequency() : 0.0;
    if (frequency > 0.0 && bearing->GetValue().GetQuality() > 0) { // a channel of a scan may hear nothing
        state.frequency = frequency;
    }
    return state;
}

QString StatusLine::Describe(const State& state, Clock::time_point now) {
    QStringList parts;
    if (state.isSimulated) {
        parts += u"simulated device"_s;
    }
    parts += state.mode;
    if (state.frequency) {
        parts += ZANServer::FrequencyText::Format(*state.frequency);
    }
    const auto newBearings = static_cast<double>(state.bearings - m_lastBearings);
    const double seconds = m_lastTime ? std::chrono::duration<double>(now - *m_lastTime).count() : 0.0;
    if (newBearings == 0.0) {
        parts += state.bearings == 0 ? u"no bearing yet"_s : u"no bearings"_s;
    } else if (seconds > 0.0) {
        parts += QString::number(newBearings / seconds, 'f', 1) + u" bearings/s"_s;
    }
    m_lastTime = now;
    m_lastBearings = state.bearings;

    QStringList line{parts.join(u", "_s)};
    for (const QString& problem : state.problems) {
        if (!problem.isEmpty()) {
            line += problem;
        }
    }
    return line.join(u"; "_s);
}
