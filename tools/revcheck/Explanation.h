#pragma once

#include "DecisionRecord.h"

#include <cstddef>
#include <string>

namespace norvane {

/// The record as an indented tree, printable. Lines are folded at the width, in columns. A branch
/// that came to what it was for is closed: only its outcome is shown, and how many lines there are
/// within.
[[nodiscard]] std::string explanation(const DecisionRecord& record, std::size_t width);

/// Whether a branch came to what it was for, so that people need not look into it.
[[nodiscard]] bool is_quiet(const RecordedNode& node);

} // namespace norvane
