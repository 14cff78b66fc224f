#include "Configure.h"
#include "Console.h"
#include "Options.h"
#include "Run.h"

#include <new>

int main(int argc, char** argv) {
    using norvane::ExitCode;
    norvane::Console console;
    ExitCode code = ExitCode::all_good;
    try {
        const norvane::Options options = norvane::parse_options(argc, argv);
        if (options.text.empty()) {
            norvane::configure(options);
            code = norvane::Run(options, console).run();
        } else if (!console.write(options.text)) {
            code = ExitCode::no_output;
        }
    } catch (const norvane::UsageError& error) {
        console.complain("", std::string(error.what()) + "; see revcheck --help");
        code = ExitCode::usage;
    } catch (const std::bad_alloc&) {
        console.complain("", "there is not enough memory");
        code = ExitCode::no_memory;
    }
    return static_cast<int>(code);
}
