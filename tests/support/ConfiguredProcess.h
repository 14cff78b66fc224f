// Checks in a process of their own, for what is set once in the life of a process.
#pragma once

#include "support/TemporaryFolder.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace norvane::testing {

// Runs `checks` in a child process with this text for its configuration and a home without files.
// The calling process must not have asked for its own configuration, which the child would have
// too. Failures of the child's expectations are printed by the child.
[[nodiscard]] inline ::testing::AssertionResult
passes_when_configured(std::string_view configuration, const std::function<void()>& checks) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.write("norvane.conf", configuration);
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        setenv("NORVANE_CONFIG", file.c_str(), 1);
        setenv("HOME", folder.path().c_str(), 1);
        unsetenv("XDG_CONFIG_HOME");
        checks();
        std::fflush(nullptr);
        _exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child) {
        return ::testing::AssertionFailure() << "no child process";
    }
    return status == 0 ? ::testing::AssertionSuccess()
                       : ::testing::AssertionFailure() << "the child ended with " << status;
}

} // namespace norvane::testing
