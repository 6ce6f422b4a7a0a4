#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

/// The number of times that the process has taken memory so far, by whichever function.
std::size_t GetAllocationCount();

/// Reports the allocations since it was made, per iteration.
class AllocationCounter {
public:
    explicit AllocationCounter(benchmark::State& state)
        : m_state(state) {}
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;
    ~AllocationCounter() {
        const std::size_t count = GetAllocationCount() - m_before;
        m_state.counters["allocations"] =
            static_cast<double>(count) / static_cast<double>(m_state.iterations());
    }

private:
    benchmark::State& m_state;
    std::size_t m_before = GetAllocationCount();
};
