// Counts what a piece of code takes from operator new. Linking norvane_allocation_counter replaces
// the operators in the whole program, in the library of C++ too; those for types with an alignment
// of their own stay as they are and are not counted.
#pragma once

#include <cstddef>

namespace norvane::testing {

// Counts on all threads from its construction on. The mark that peak() starts from is one for the
// process: with several counters alive, peak() is right for the youngest only.
class AllocationCounter {
  public:
    AllocationCounter();

    [[nodiscard]] std::size_t count() const; // calls that succeeded
    [[nodiscard]] std::size_t bytes() const; // bytes asked for
    // The most bytes alive at once above those at construction, by the size of the blocks, which
    // the allocator may round up.
    [[nodiscard]] std::size_t peak() const;

  private:
    std::size_t count_;
    std::size_t bytes_;
    std::size_t live_;
};

} // namespace norvane::testing
