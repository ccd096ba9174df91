#include "tests/support/scarce_memory.h"

#include <algorithm>
#include <cstdlib>

namespace {

// Not atomic: no two threads of these programs allocate at the same time.
size_t requestCount = 0;
size_t octetCount = 0;
size_t refusedRequest = kNoRequest;
Shortage shortage = Shortage::OneRequest;

void* Allocate(size_t size) {
    const size_t request = requestCount++;
    octetCount += size;
    const bool refused =
        shortage == Shortage::OneRequest ? request == refusedRequest : request >= refusedRequest;
    return refused ? nullptr : std::malloc(std::max<size_t>(size, 1));
}

void* AllocateOrThrow(size_t size) {
    void* memory = Allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

ScopedShortage::ScopedShortage(size_t request, Shortage kind) {
    requestCount = 0;
    octetCount = 0;
    shortage = kind;
    refusedRequest = request;
}

ScopedShortage::~ScopedShortage() {
    refusedRequest = kNoRequest;
}

size_t ScopedShortage::requests() {
    return requestCount;
}

size_t ScopedShortage::octets() {
    return octetCount;
}

// The runtime's other forms do not always call these, so all are replaced except the over-aligned ones, which
// nothing here uses.
void* operator new(size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
