// A program that links this has an operator new that fails on demand, in shared libraries too.
#pragma once

namespace norvane::testing {

// How many allocations the calling thread may yet make; any number if below 0, as at first.
void set_allocations_left(long count);

} // namespace norvane::testing
