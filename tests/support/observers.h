#pragma once

#include "kwbase/observable.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Notes the subject and the code of every notice.
class CodeObserver : public IObserver {
public:
    void Update(Observable* subject, TChangeCode code) override {
        subjects.push_back(subject);
        codes.push_back(code);
    }

    std::vector<const Observable*> subjects;
    std::vector<TChangeCode> codes;
};

/// Carries out a function on every notice.
class FunctionObserver : public IObserver {
public:
    using Function = std::function<void(Observable* subject, TChangeCode code)>;

    FunctionObserver() = default;
    explicit FunctionObserver(Function function)
        : onUpdate(std::move(function)) {}

    void Update(Observable* subject, TChangeCode code) override {
        const Function function = onUpdate; // the function may destroy this observer
        function(subject, code);
    }

    Function onUpdate;
};

/// Notes its name in a log that several observers share, and then carries out what it was given.
class NamedObserver : public IObserver {
public:
    NamedObserver(std::string name, std::vector<std::string>& log)
        : m_name(std::move(name))
        , m_log(log) {}

    void Update(Observable* /*subject*/, TChangeCode /*code*/) override {
        m_log.push_back(m_name);
        if (onUpdate) {
            const auto function = onUpdate; // the function may destroy this observer
            function();
        }
    }

    std::function<void()> onUpdate;

private:
    std::string m_name;
    std::vector<std::string>& m_log;
};
