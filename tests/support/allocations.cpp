#include "support/allocations.h"

#include <cstddef>

// Counts what is allocated anywhere in the process, by thread. Strings of Qt come from malloc and not from
// operator new, which itself calls malloc.
namespace {

thread_local long allocationCount = 0;

} // namespace

#ifdef ZAN_SANITIZED

// malloc is the sanitizer's own, which has this hook; g++ comes without a header for it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));

namespace {

[[maybe_unused]] const int hookCount = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void* /*memory*/, std::size_t /*size*/) { ++allocationCount; },
    [](const volatile void* /*memory*/) {});

} // namespace

#else

extern "C" void* __libc_malloc(std::size_t size);

extern "C" [[gnu::visibility("default")]] void* malloc(std::size_t size) {
    ++allocationCount;
    return __libc_malloc(size);
}

#endif

long AllocationsOf(const std::function<void()>& action) {
    const long before = allocationCount;
    action();
    return allocationCount - before;
}
