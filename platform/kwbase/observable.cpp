#include "kwbase/observable.h"

#include <algorithm>
#include <utility>

IObserver::~IObserver() {
    const auto subjects = std::exchange(m_subjects, {});
    for (Observable* subject : subjects) {
        subject->Forget(this);
    }
}

ObserverPtr::ObserverPtr(IObserver* observer)
    : m_pObserver(observer) {
    if (observer) {
        if (!observer->m_life) {
            observer->m_life = std::make_shared<char>();
        }
        m_life = observer->m_life;
    }
}

// One running notification. It lives on the stack of NotifyAll, so that the subject can be destroyed
// meanwhile.
struct Observable::Pass {
    explicit Pass(Observable& observable)
        : subject(observable)
        , pOuter(observable.m_pPass) {
        subject.m_pPass = this;
    }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    ~Pass() {
        if (!subjectGone) {
            subject.EndPass(*this);
        }
    }

    Observable& subject;
    Pass* pOuter;
    bool subjectGone = false;
    std::vector<IObserver*> toFront; // observers that MakeFirstObserver was called with while it ran
};

Observable::Observable(const Observable& other) {
    for (IObserver* observer : other.m_observers) {
        AddObserver(observer);
    }
}

Observable& Observable::operator=(const Observable& other) {
    if (this != &other) {
        DeleteObservers();
        for (IObserver* observer : other.m_observers) {
            AddObserver(observer);
        }
    }
    return *this;
}

Observable::~Observable() {
    for (Pass* pass = m_pPass; pass; pass = pass->pOuter) {
        pass->subjectGone = true;
    }
    if (m_pSelf) {
        *m_pSelf = nullptr;
    }
    DeleteObservers();
}

bool Observable::AddObserver(IObserver* observer) {
    if (!observer || observer->m_subjects.contains(this)) {
        return false;
    }
    observer->m_subjects.insert(this);
    m_observers.push_back(observer);
    return true;
}

bool Observable::DeleteObserver(IObserver* observer) {
    if (!observer || !observer->m_subjects.remove(this)) {
        return false;
    }
    Forget(observer);
    return true;
}

void Observable::DeleteObservers() {
    for (IObserver*& observer : m_observers) {
        if (observer) {
            observer->m_subjects.remove(this);
            observer = nullptr;
        }
    }
    if (!m_pPass) {
        m_observers.clear();
    }
    for (Pass* pass = m_pPass; pass; pass = pass->pOuter) {
        pass->toFront.clear();
    }
}

bool Observable::MakeFirstObserver(IObserver* observer) {
    if (!observer || !observer->m_subjects.contains(this)) {
        return false;
    }
    if (m_pPass) {
        // Moving entries now would make the running notifications skip or repeat some of them.
        m_pPass->toFront.push_back(observer);
    } else {
        MoveToFront(observer);
    }
    return true;
}

std::size_t Observable::GetObserverCount() const {
    return m_observers.size() -
           static_cast<std::size_t>(std::count(m_observers.begin(), m_observers.end(), nullptr));
}

void Observable::NotifyAll(TChangeCode code, IObserver* originator) {
    Pass pass(*this);
    const std::size_t count = m_observers.size();
    for (std::size_t i = 0; i < count && !pass.subjectGone; ++i) {
        IObserver* observer = m_observers[i];
        if (observer && observer != originator) {
            observer->Update(this, code);
        }
    }
}

void Observable::EndPass(const Pass& pass) {
    m_pPass = pass.pOuter;
    if (m_pPass) {
        m_pPass->toFront.insert(m_pPass->toFront.end(), pass.toFront.begin(), pass.toFront.end());
        return;
    }
    std::erase(m_observers, nullptr);
    for (IObserver* observer : pass.toFront) {
        MoveToFront(observer);
    }
}

void Observable::Forget(IObserver* observer) {
    const auto entry = std::find(m_observers.begin(), m_observers.end(), observer);
    if (m_pPass) {
        *entry = nullptr;
        for (Pass* pass = m_pPass; pass; pass = pass->pOuter) {
            std::erase(pass->toFront, observer);
        }
    } else {
        m_observers.erase(entry);
    }
}

void Observable::MoveToFront(IObserver* observer) {
    const auto entry = std::find(m_observers.begin(), m_observers.end(), observer);
    std::rotate(m_observers.begin(), entry, entry + 1);
}

std::shared_ptr<Observable*> Observable::Self() const {
    if (!m_pSelf) {
        m_pSelf = std::make_shared<Observable*>(const_cast<Observable*>(this));
    }
    return m_pSelf;
}
