#include "support/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

std::atomic<std::size_t> allocation_count = 0;
std::atomic<std::size_t> allocated_bytes = 0;
std::atomic<std::size_t> live_bytes = 0;
std::atomic<std::size_t> peak_bytes = 0;

void* take(std::size_t size) noexcept {
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
        return nullptr;
    ++allocation_count;
    allocated_bytes += size;
    const std::size_t live = live_bytes += malloc_usable_size(block);
    std::size_t peak = peak_bytes;
    while (peak < live && !peak_bytes.compare_exchange_weak(peak, live)) {
    }
    return block;
}

void* or_throw(void* block) {
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void give_back(void* block) noexcept {
    if (block != nullptr)
        live_bytes -= malloc_usable_size(block);
    std::free(block);
}

} // namespace

using Size = std::size_t;
using NoThrow = std::nothrow_t;

void* operator new(Size size) { return or_throw(take(size)); }
void* operator new[](Size size) { return or_throw(take(size)); }
void* operator new(Size size, const NoThrow&) noexcept { return take(size); }
void* operator new[](Size size, const NoThrow&) noexcept { return take(size); }

void operator delete(void* block) noexcept { give_back(block); }
void operator delete[](void* block) noexcept { give_back(block); }
void operator delete(void* block, Size) noexcept { give_back(block); }
void operator delete[](void* block, Size) noexcept { give_back(block); }
void operator delete(void* block, const NoThrow&) noexcept { give_back(block); }
void operator delete[](void* block, const NoThrow&) noexcept { give_back(block); }

namespace norvane::testing {

AllocationCounter::AllocationCounter()
    : count_(allocation_count), bytes_(allocated_bytes), live_(live_bytes) {
    peak_bytes = live_;
}

std::size_t AllocationCounter::count() const { return allocation_count - count_; }
std::size_t AllocationCounter::bytes() const { return allocated_bytes - bytes_; }
std::size_t AllocationCounter::peak() const { return peak_bytes - live_; }

} // namespace norvane::testing
