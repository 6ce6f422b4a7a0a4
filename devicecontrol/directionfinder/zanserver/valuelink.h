#pragma once

#include "kwbase/observable.h"
#include "valueframework/valuebase.h"

namespace ZANServer {

/// Keeps two values of one type equal: what is set in one of them is copied to the other. For a value that is
/// needed at two paths of the tree. The values must outlive the link; belongs to the thread of the tree.
class ValueLink final : public IObserver {
public:
    ValueLink(ValueBase& first, ValueBase& second);
    ValueLink(const ValueLink&) = delete;
    ValueLink& operator=(const ValueLink&) = delete;
    ~ValueLink() override = default;

    void Update(Observable* subject, TChangeCode code) override;

private:
    ValueBase& m_first;
    ValueBase& m_second;
};

} // namespace ZANServer
