#include "tests/support/AllocationGate.h"

#include <cstdlib>
#include <new>

namespace {

void* Allocate(std::size_t size) noexcept {
    auto& state = velktest::Allocations();
    if (state.open && state.pauses == 0) {
        ++state.seen;
        if (state.refuseAt != 0 &&
            (state.seen == state.refuseAt || (state.refuseAllAfter && state.seen > state.refuseAt))) {
            state.refused = true;
            return nullptr;
        }
    }
    return std::malloc(size == 0 ? 1 : size); // NOLINT(cppcoreguidelines-no-malloc)
}

void Release(void* memory) noexcept {
    auto& state = velktest::Allocations();
    if (state.open && state.pauses == 0 && memory != nullptr) {
        ++state.freed;
    }
    std::free(memory); // NOLINT(cppcoreguidelines-no-malloc)
}

void* AllocateOrThrow(std::size_t size) {
    void* const memory = Allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
    return Allocate(size);
}
void operator delete(void* memory) noexcept {
    Release(memory);
}
void operator delete[](void* memory) noexcept {
    Release(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    Release(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    Release(memory);
}
void operator delete(void* memory, std::nothrow_t const& /*tag*/) noexcept {
    Release(memory);
}
void operator delete[](void* memory, std::nothrow_t const& /*tag*/) noexcept {
    Release(memory);
}
