#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

/// The number of allocations of the process so far, by any function.
std::size_t GetAllocationCount();

/// Reports the allocations since its construction, per iteration.
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
