// Runs revcheck as a child process.
#pragma once

#include "support/TemporaryFolder.h"

#include <array>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <pty.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace norvane::testing {

using Arguments = std::vector<std::string>;

inline const std::string examples = PROJECT_FOLDER "/examples/";

inline std::string content_of(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The arguments that give the sample PKI for the system's stores, and those that follow.
inline Arguments with_samples(const Arguments& more) {
    Arguments all{"--root", examples + "stores/Root", "--ca", examples + "stores/CA",
                  "--cache-only"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

// To be called in a child process: becomes the program, with a home without files.
[[noreturn]] inline void become_revcheck(const Arguments& arguments, const char* home) {
    std::vector<char*> argv{const_cast<char*>(REVCHECK)};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    setenv("HOME", home, 1);
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_CACHE_HOME");
    unsetenv("NORVANE_CONFIG");
    execv(REVCHECK, argv.data());
    _exit(127);
}

inline int exit_code_of(pid_t child) {
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline std::string read_some(int descriptor) {
    std::array<char, 65'536> block{};
    const ssize_t count = read(descriptor, block.data(), block.size());
    return count > 0 ? std::string(block.data(), static_cast<std::size_t>(count)) : "";
}

// All that the program writes when it stands at a terminal.
inline std::string on_terminal(const Arguments& arguments) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        setenv("TERM", "xterm", 1);
        become_revcheck(arguments, "/nowhere");
    }
    std::string all;
    for (std::string some; !(some = read_some(terminal)).empty();) {
        all += some;
    }
    close(terminal);
    waitpid(child, nullptr, 0);
    return all;
}

struct Ending {
    int code = -1;
    std::string out;
    std::string err;

    // The verdicts of a run with --json.
    [[nodiscard]] std::vector<nlohmann::json> verdicts() const {
        std::vector<nlohmann::json> lines;
        std::istringstream stream(out);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(nlohmann::json::parse(line));
        }
        return lines;
    }
};

inline Ending run_revcheck(const Arguments& arguments, std::string_view standard_input = "") {
    const TemporaryFolder folder;
    const auto in = folder.write("in", standard_input);
    const auto out = folder.write("out", "");
    const auto err = folder.write("err", "");
    const pid_t child = fork();
    if (child == 0) {
        dup2(open(in.c_str(), O_RDONLY), STDIN_FILENO);
        dup2(open(out.c_str(), O_WRONLY), STDOUT_FILENO);
        dup2(open(err.c_str(), O_WRONLY), STDERR_FILENO);
        become_revcheck(arguments, folder.path().c_str());
    }
    const int code = exit_code_of(child);
    return {code, content_of(out), content_of(err)};
}

} // namespace norvane::testing
