#pragma once

#include "Console.h"
#include "ExitCode.h"
#include "Options.h"

namespace norvane {

/// Decides again what an evidence tells of, from nothing but that, and tells what comes out
/// otherwise than it did. It must be what a process begins with: the configuration is laid down
/// from the evidence. Throws std::bad_alloc.
[[nodiscard]] ExitCode replay(const Options& options, Console& console);

} // namespace norvane
