// What revcheck decides, in one word for each certificate.
#pragma once

#include "revcheck/Program.h"

#include <gtest/gtest.h>

namespace norvane::testing {

using Decisions = std::vector<std::string>; // "good", "revoked:REASON" or "no_check"

// Runs `revcheck --json` with these arguments and the network as it is. The test fails if the
// program complains.
inline Decisions decide(Arguments arguments) {
    for (const char* name : {"http_proxy", "all_proxy", "no_proxy", "NORVANE_CACHE_DIR"})
        unsetenv(name);
    arguments.emplace_back("--json");
    const Ending ending = run_revcheck(arguments);
    EXPECT_EQ(ending.err, "");
    Decisions decisions;
    for (const nlohmann::json& verdict : ending.verdicts()) {
        const nlohmann::json& reason = verdict["reason_code"];
        decisions.push_back(verdict["status"].get<std::string>() +
                            (reason.is_null() ? "" : ":" + reason.dump()));
    }
    return decisions;
}

} // namespace norvane::testing
