#pragma once

#include "Checker.h"

#include <string>
#include <vector>

namespace norvane {

/// What may have stood in the way of a check, found by looking at the stores and the cache once
/// more after the check: each line is a fact, and where it is only likely that it is the cause, the
/// line says so. Never empty. Nothing is retrieved from the network.
[[nodiscard]] std::vector<std::string> diagnose(PCCERT_CONTEXT certificate, const Verdict& verdict,
                                                const Options& options, const Stores& stores);

} // namespace norvane
