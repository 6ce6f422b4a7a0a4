#include "zanserver/valuelink.h"

namespace ZANServer {

ValueLink::ValueLink(ValueBase& first, ValueBase& second)
    : m_first(first)
    , m_second(second) {
    first.AddObserver(this);
    second.AddObserver(this);
}

void ValueLink::Update(Observable* subject, TChangeCode code) {
    if (code == TChangeCode::Changed) {
        const ValueBase& changed = subject == &m_first ? m_first : m_second;
        ValueBase& other = subject == &m_first ? m_second : m_first;
        other.SetStringValue(changed.GetStringValue(), this);
    }
}

} // namespace ZANServer
