#include "tests/fuzz/MemoryBudget.h"

#include "tests/fuzz/FuzzInput.h"

#if defined(__SANITIZE_ADDRESS__)
#define VELK_COUNTS_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELK_COUNTS_MEMORY
#endif
#endif

#ifdef VELK_COUNTS_MEMORY

// From <sanitizer/allocator_interface.h>, which not every cross compiler has.
extern "C" {
int __sanitizer_install_malloc_and_free_hooks(void (*onAllocation)(void const volatile*, std::size_t),
                                              void (*onRelease)(void const volatile*));
std::size_t __sanitizer_get_allocated_size(void const volatile* memory);
}

namespace {

bool open = false;
std::size_t budget = 0;
std::size_t used = 0;

void OnAllocation(void const volatile* /*memory*/, std::size_t size) {
    if (open) {
        used += size;
        velktest::Require(used <= budget, "the memory in use stays within its budget");
    }
}

void OnRelease(void const volatile* memory) {
    if (open && memory != nullptr) {
        used -= std::min(used, __sanitizer_get_allocated_size(memory));
    }
}

} // namespace

velktest::MemoryBudget::MemoryBudget(std::size_t bytes) {
    static bool const installed = __sanitizer_install_malloc_and_free_hooks(OnAllocation, OnRelease) != 0;
    Require(installed, "the sanitizer takes the hooks");
    budget = bytes;
    used = 0;
    open = true;
}

velktest::MemoryBudget::~MemoryBudget() {
    open = false;
}

#else

velktest::MemoryBudget::MemoryBudget(std::size_t /*bytes*/) {}
velktest::MemoryBudget::~MemoryBudget() = default;

#endif
