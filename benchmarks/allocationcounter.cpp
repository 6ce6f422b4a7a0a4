#include "allocationcounter.h"

#include <atomic>

// The functions of the C library that both operator new and Qt's containers use.
extern "C" {
void* __libc_malloc(std::size_t size);                // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t n, std::size_t size); // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* memory, std::size_t size); // NOLINT(bugprone-reserved-identifier)
}

namespace {

std::atomic<std::size_t> allocationCount{0};

} // namespace

std::size_t GetAllocationCount() {
    return allocationCount.load(std::memory_order_relaxed);
}

extern "C" {

void* malloc(std::size_t size) {
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

void* calloc(std::size_t n, std::size_t size) {
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(n, size);
}

void* realloc(void* memory, std::size_t size) {
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(memory, size);
}
}
