// Makes one allocation or one opening of a descriptor fail. The library of this is preloaded into
// a program or linked into it before all others.
#pragma once

namespace norvane::testing {

enum class FaultKind { allocation, descriptor };

// What a program is told by its environment: the kind as "allocation" or "descriptor", the number
// (from 1; 0 for none) of the call to fail since the start, and a file that receives at the end how
// many there were. With the last one set the fault prints where it came from.
inline constexpr const char* fault_kind_variable = "FAULT_KIND";
inline constexpr const char* fault_number_variable = "FAULT_NUMBER";
inline constexpr const char* fault_count_variable = "FAULT_COUNT_FILE";
inline constexpr const char* fault_trace_variable = "FAULT_TRACE";

} // namespace norvane::testing

extern "C" {
// Counts calls from now on, and fails the one with this number; 0: none.
void arm_fault(norvane::testing::FaultKind kind, long number);
// Fails nothing any more. Returns how many calls were counted.
long disarm_fault();
// The blocks that are allocated and not freed.
long live_blocks();
}
