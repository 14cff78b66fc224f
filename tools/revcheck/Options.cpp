#include "Options.h"

#include "HelpText.h"
#include "Times.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <utility>

namespace norvane {
namespace {

/// From 0x7FFFFFFF ms on, which is 24 days, the check does not take a time-out.
constexpr DWORD max_timeout_ms = 0x7FFF'FFFE;

std::string fault_of_path(const std::string& path) { return path.empty() ? "an empty path" : ""; }

void add_paths(CLI::App& app, const char* name, std::vector<std::string>& paths) {
    app.add_option(name, paths)->allow_extra_args(false)->check(fault_of_path);
}

std::optional<FILETIME> time_option(const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const auto time = parse_time(text);
    if (!time) {
        throw UsageError(
            "--time: \"" + text +
            "\" is not a time such as 2026-01-31T09:30:00Z, 2026-01-31 or @1769851800");
    }
    return time;
}

/// How verdicts are to be presented, on any command line.
struct PresentationFlags {
    void add_to(CLI::App& app, Options& options) {
        CLI::Option* const quiet_flag = app.add_flag("--quiet,-q", quiet);
        app.add_flag("--json", json)->excludes(quiet_flag);
        app.add_flag("--explain", options.explain)->excludes(quiet_flag);
    }
    [[nodiscard]] Presentation chosen() const {
        return quiet ? Presentation::none : json ? Presentation::json : Presentation::for_people;
    }

    bool quiet = false;
    bool json = false;
};

/// How many letters have to be put in, left out or changed to make one word of the other.
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string unknown_argument(const CLI::App& app, const std::string& argument) {
    constexpr std::size_t typing_errors = 3;
    std::string nearest;
    std::size_t least = typing_errors;
    for (const CLI::Option* const option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            const std::size_t count = edit_distance(argument, "--" + name);
            if (count < least) {
                least = count;
                nearest = "--" + name;
            }
        }
    }
    return "there is no " + argument + (nearest.empty() ? "" : "; did you mean " + nearest + "?");
}

void parse(CLI::App& app, int argc, const char* const* argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::ExtrasError& error) {
        const auto unknown = app.remaining();
        throw UsageError(unknown.empty() ? error.what() : unknown_argument(app, unknown.front()));
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
}

constexpr std::string_view replay_command = "replay";

/// The command line behind the name of the command.
Options parse_replay(int argc, const char* const* argv) {
    Options options;
    PresentationFlags presentation;
    CLI::App app;
    app.set_help_flag();
    app.add_option("FILE", options.replay)->required();
    presentation.add_to(app, options);
    parse(app, argc, argv);
    options.presentation = presentation.chosen();
    return options;
}

} // namespace

Options parse_options(int argc, const char* const* argv) {
    if (argc > 1 && argv[1] == replay_command) {
        return parse_replay(argc - 1, argv + 1);
    }
    Options options;
    PresentationFlags presentation;
    std::string time;
    DWORD timeout_ms = 0;
    bool help = false;
    bool version = false;
    bool list = false;

    CLI::App app;
    app.set_help_flag();
    app.add_option("CERT", options.certificates);
    app.add_flag("--recursive,-r", options.recursive);
    add_paths(app, "--root", options.root);
    add_paths(app, "--ca", options.ca);
    add_paths(app, "--certs", options.certs);
    add_paths(app, "--crls", options.crls);
    app.add_option("--issuer", options.issuer);
    app.add_option("--time", time);
    CLI::Option* const timeout =
        app.add_option("--timeout", timeout_ms)->check(CLI::Range(0U, max_timeout_ms));
    app.add_flag("--accumulative", options.accumulative);
    app.add_flag("--cache-only", options.cache_only);
    app.add_option("--cache-dir", options.cache_folder);
    app.add_flag("--strict-pkup", options.strict_pkup);
    app.add_option("--config", options.configuration_file);
    app.add_flag("--list", list);
    presentation.add_to(app, options);
    app.add_option("--evidence", options.evidence);
    app.add_option("--report", options.report)->check(fault_of_path);
    app.add_flag("--help,-h", help);
    app.add_flag("--version", version);
    parse(app, argc, argv);
    if (help || version) {
        options.text = help ? help_text : version_text;
        return options;
    }
    if (options.certificates.empty()) {
        throw UsageError("no certificate is named");
    }
    options.time = time_option(time);
    if (timeout->count() != 0) {
        options.timeout_ms = timeout_ms;
    }
    options.grouping = list ? Grouping::list : Grouping::single;
    options.presentation = presentation.chosen();
    return options;
}

} // namespace norvane
