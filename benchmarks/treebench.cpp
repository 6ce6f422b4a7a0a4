// The value tree. The yardsticks are what its users would write without it: a plain hash of the same keys for
// a path look-up, and a Qt signal with as many receivers for a change that observers are notified of.

#include "allocationcounter.h"

#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"

#include <QHash>
#include <QObject>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// --- finding a value by its path ---

QString Path(int number) {
    return u"/ZANServer/Res/Branch%1/Value%2"_s.arg(number % 16).arg(number);
}

/// The paths of all values in a shuffled order, as strings that share no data with the keys of the tables.
std::vector<QString> ShuffledPaths(int count) {
    std::vector<QString> paths;
    for (int i = 0; i < count; ++i) {
        paths.push_back(Path(i));
    }
    std::shuffle(paths.begin(), paths.end(),
                 std::mt19937(1)); // NOLINT(cert-msc51-cpp): the same order each time
    return paths;
}

/// A tree with the number of values that the benchmark wants.
class FilledTree {
public:
    explicit FilledTree(int count) {
        for (int i = 0; i < count; ++i) {
            const QString path = Path(i);
            const qsizetype nameBegin = path.lastIndexOf(u'/') + 1;
            auto value = std::make_unique<ValueNumericInt>();
            value->SetName(path.sliced(nameBegin), nullptr);
            m_tree.InsertValue(path.first(nameBegin), std::move(value));
        }
    }
    FilledTree(const FilledTree&) = delete;
    FilledTree& operator=(const FilledTree&) = delete;
    ~FilledTree() { m_tree.Clear(); }

    const Tree* operator->() const { return &m_tree; }

private:
    Tree& m_tree = *Tree::Instance();
};

/// Looks up the paths one after the other, repeatedly.
template <class LookUp>
void LookUpAll(benchmark::State& state, LookUp lookUp) {
    const std::vector<QString> paths = ShuffledPaths(static_cast<int>(state.range(0)));
    auto path = paths.begin();
    const AllocationCounter allocations(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookUp(*path));
        if (++path == paths.end()) {
            path = paths.begin();
        }
    }
}

void PlainHashFind(benchmark::State& state) {
    QHash<QString, void*> hash;
    for (int i = 0; i < state.range(0); ++i) {
        hash.insert(Path(i), &hash);
    }
    LookUpAll(state, [&hash](const QString& path) { return hash.find(path).value(); });
}

/// The yardstick of the typed look-up: it must access the value itself, too.
void PlainHashFindTyped(benchmark::State& state) {
    std::vector<std::unique_ptr<ValueBase>> values;
    QHash<QString, ValueBase*> hash;
    for (int i = 0; i < state.range(0); ++i) {
        hash.insert(Path(i), values.emplace_back(std::make_unique<ValueNumericInt>()).get());
    }
    LookUpAll(state, [&hash](const QString& path) {
        return dynamic_cast<ValueNumericInt*>(hash.find(path).value());
    });
}

void TreeGetValue(benchmark::State& state) {
    const FilledTree tree(static_cast<int>(state.range(0)));
    LookUpAll(state, [&tree](const QString& path) { return tree->GetValue(path); });
}

void TreeFindTyped(benchmark::State& state) {
    const FilledTree tree(static_cast<int>(state.range(0)));
    LookUpAll(state, [&tree](const QString& path) { return tree->Find<ValueNumericInt>(path); });
}

BENCHMARK(PlainHashFind)->Arg(10)->Arg(1'000)->Arg(100'000);
BENCHMARK(TreeGetValue)->Arg(10)->Arg(1'000)->Arg(100'000);
BENCHMARK(PlainHashFindTyped)->Arg(10)->Arg(1'000)->Arg(100'000);
BENCHMARK(TreeFindTyped)->Arg(10)->Arg(1'000)->Arg(100'000);

// --- notification of a change ---

/// A number that emits a signal when it changes.
class SignallingNumber : public QObject {
    Q_OBJECT

public:
    void SetValue(int value) {
        if (value != m_value) {
            m_value = value;
            Q_EMIT Changed(value);
        }
    }

Q_SIGNALS:
    void Changed(int value);

private:
    int m_value = 0;
};

class Receiver : public QObject {
    Q_OBJECT

public:
    void OnChanged(int value) { sum += value; }

    qint64 sum = 0;
};

class SummingObserver : public IObserver {
public:
    explicit SummingObserver(const ValueNumericInt& value)
        : m_value(value) {}
    void Update(Observable* /*subject*/, TChangeCode /*code*/) override { sum += m_value.GetValue(); }

    qint64 sum = 0;

private:
    const ValueNumericInt& m_value;
};

void QtSignal(benchmark::State& state) {
    SignallingNumber number;
    std::vector<std::unique_ptr<Receiver>> receivers;
    for (int i = 0; i < state.range(0); ++i) {
        Receiver* receiver = receivers.emplace_back(std::make_unique<Receiver>()).get();
        QObject::connect(&number, &SignallingNumber::Changed, receiver, &Receiver::OnChanged,
                         Qt::DirectConnection);
    }
    int content = 0;
    const AllocationCounter allocations(state);
    for (auto _ : state) {
        number.SetValue(++content & 0xFFFF);
    }
}

/// A value with the number of observers that the benchmark wants.
struct ObservedValue {
    explicit ObservedValue(std::int64_t observerCount) {
        for (std::int64_t i = 0; i < observerCount; ++i) {
            value.AddObserver(observers.emplace_back(std::make_unique<SummingObserver>(value)).get());
        }
    }

    ValueNumericInt value;
    std::vector<std::unique_ptr<IObserver>> observers;
};

void ValueSet(benchmark::State& state) {
    ObservedValue observed(state.range(0));
    int content = 0;
    const AllocationCounter allocations(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(observed.value.SetValue(++content & 0xFFFF, nullptr));
    }
}

/// The lowest cost of notifying the observers: a loop of virtual calls.
void BareVirtualCalls(benchmark::State& state) {
    const ObservedValue observed(state.range(0));
    Observable* subject = nullptr;
    const AllocationCounter allocations(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(subject);
        for (const std::unique_ptr<IObserver>& observer : observed.observers) {
            observer->Update(subject, TChangeCode::Changed);
        }
    }
}

BENCHMARK(QtSignal)->Arg(0)->Arg(1)->Arg(8);
BENCHMARK(ValueSet)->Arg(0)->Arg(1)->Arg(8);
BENCHMARK(BareVirtualCalls)->Arg(0)->Arg(1)->Arg(8);

} // namespace

BENCHMARK_MAIN();

#include "treebench.moc"
