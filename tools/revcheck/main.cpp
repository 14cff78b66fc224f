#include "Configure.h"
#include "Console.h"
#include "Options.h"
#include "Replay.h"
#include "Run.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <unistd.h>

namespace {

constexpr std::string_view no_memory_text = "there is not enough memory";

bool is_for_want_of_memory(const std::exception_ptr& thrown) noexcept {
    try {
        if (thrown != nullptr) {
            std::rethrow_exception(thrown);
        }
    } catch (const std::bad_alloc&) {
        return true;
    } catch (...) {
        return false;
    }
    return false;
}

/// Where an exception can go no further, as in what is made before main: a want of memory still
/// ends the program as one.
[[noreturn]] void end_program() {
    if (!is_for_want_of_memory(std::current_exception())) {
        std::abort();
    }
    std::fprintf(stderr, "revcheck: %s\n", no_memory_text.data());
    _exit(static_cast<int>(norvane::ExitCode::no_memory));
}

/// Before the static objects of the program and of its libraries' headers.
[[gnu::constructor(101)]] void watch_over_all() { std::set_terminate(end_program); }

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what nobody catches ends in end_program
int main(int argc, char** argv) {
    using norvane::ExitCode;
    norvane::Console console;
    ExitCode code = ExitCode::all_good;
    try {
        const norvane::Options options = norvane::parse_options(argc, argv);
        if (!options.replay.empty()) {
            code = norvane::replay(options, console);
        } else if (options.text.empty()) {
            norvane::configure(options);
            code = norvane::Run(options, console).run();
        } else if (!console.write(options.text)) {
            code = ExitCode::no_output;
        }
    } catch (const norvane::UsageError& error) {
        console.complain("", std::string(error.what()) + "; see revcheck --help");
        code = ExitCode::usage;
    } catch (const std::bad_alloc&) {
        console.complain("", no_memory_text);
        code = ExitCode::no_memory;
    }
    return static_cast<int>(code);
}
