#include "platform/FailingNew.h"

#include <cstdlib>
#include <new>

namespace {

thread_local long allocations_left = -1;

} // namespace

namespace norvane::testing {

void set_allocations_left(long count) { allocations_left = count; }

} // namespace norvane::testing

void* operator new(std::size_t size) {
    void* const block = allocations_left == 0 ? nullptr : std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    if (allocations_left > 0)
        --allocations_left;
    return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }
