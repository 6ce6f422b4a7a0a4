#include "zancommon/ohpparamsvtsynchronizer.h"

#include "kwbase/tracesource.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using ZANPlatform::GetOrCreateValue;
using ZANPlatform::ValuePtr;

namespace KvZANCommon {

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\ohpparamsvtsynchronizer");

constexpr int MIN_THRESHOLD = 0;
constexpr int MAX_THRESHOLD = 900;
constexpr int THRESHOLD_STEP = 1;

/// Lets go of a value that announces its removal, if it is really being removed.
template <class T>
void LetGoIfRemoved(ValuePtr<T>& value, const Observable* subject, IObserver* observer) {
    if (value.Is(subject) && value->QueryRemoval(observer) == 1) {
        value.LetGo();
    }
}

} // namespace

OHPParamsVtSynchronizer::OHPParamsVtSynchronizer(OverheadPassParams& params, QString basePath)
    : m_pParams(&params) {
    if (basePath.isEmpty()) {
        basePath = u"/ZANServer"_s;
    }
    BindThreshold(Tree::PathBelow(basePath, u"/OverheadPass/Threshold"_s));
    BindValid(Tree::PathBelow(basePath, u"/OverheadPass/Valid"_s));
    params.AddObserver(this);
}

// The base class removes the synchroniser from the observers of all its subjects.
OHPParamsVtSynchronizer::~OHPParamsVtSynchronizer() = default;

void OHPParamsVtSynchronizer::BindThreshold(const QString& path) {
    const bool isThere = Tree::Instance()->Find<ValueNumericInt>(path);
    m_pThreshold.Hold(GetOrCreateValue<ValueNumericInt>(path));
    if (isThere) {
        m_pParams->SetThreshold(m_pThreshold->GetValue(), this);
    } else if (m_pThreshold) {
        m_pThreshold->SetMinMax(MIN_THRESHOLD, MAX_THRESHOLD, THRESHOLD_STEP, nullptr);
        WriteThreshold();
    }
    // An observer of the parameters may have removed the value meanwhile.
    m_pThreshold.Hold(m_pThreshold.get(), this);
}

void OHPParamsVtSynchronizer::BindValid(const QString& path) {
    const bool isThere = Tree::Instance()->Find<ValueBool>(path);
    m_pValid.Hold(GetOrCreateValue<ValueBool>(path));
    if (isThere) {
        m_pParams->SetValid(m_pValid->GetValue(), this);
    } else if (m_pValid) {
        m_pValid->SetValue(m_pParams->IsValid(), this);
    }
    m_pValid.Hold(m_pValid.get(), this);
}

void OHPParamsVtSynchronizer::Update(Observable* subject, TChangeCode code) {
    if (code == TChangeCode::GoingAway) {
        LetGoIfRemoved(m_pThreshold, subject, this);
        LetGoIfRemoved(m_pValid, subject, this);
    } else if (code == TChangeCode::Changed) {
        if (subject && subject == m_pParams.get()) {
            WriteToTree();
        } else {
            ReadFromTree(subject);
        }
    }
}

void OHPParamsVtSynchronizer::ReadFromTree(const Observable* value) {
    if (!m_pParams) {
        return;
    }
    if (m_pThreshold.Is(value)) {
        m_pParams->SetThreshold(m_pThreshold->GetValue(), this);
    } else if (m_pValid.Is(value)) {
        m_pParams->SetValid(m_pValid->GetValue(), this);
    }
}

void OHPParamsVtSynchronizer::WriteThreshold() {
    const int threshold = m_pParams->GetThreshold();
    const int lowest = m_pThreshold->GetMin();
    const int highest = m_pThreshold->GetMax();
    const int nearest = std::clamp(threshold, lowest, highest);
    if (nearest != threshold) {
        TRACE.Information([&] {
            return u"WARNING: the overhead-pass threshold %1 is outside %2 to %3; the value tree takes %4"_s
                .arg(threshold)
                .arg(lowest)
                .arg(highest)
                .arg(nearest);
        });
    }
    m_pThreshold->SetValue(nearest, this);
}

void OHPParamsVtSynchronizer::WriteToTree() {
    // Copies: an observer of the first value may destroy the parameters, the second value or this object.
    const auto params = m_pParams;
    const auto valid = m_pValid;
    if (m_pThreshold) {
        WriteThreshold();
    }
    if (params && valid) {
        valid->SetValue(params->IsValid(), this);
    }
}

} // namespace KvZANCommon
