// Runs each scenario once for each allocation, and each descriptor, that can fail:
//     sweep [--sample COUNT] [SCENARIO [allocation|descriptor NUMBER]]
#include "sweep/Faults.h"
#include "sweep/Scenario.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <sys/personality.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norvane::testing {
namespace {

constexpr int processes = 2;
// One run takes some hundredths.
constexpr unsigned limit_seconds = 20;

// Endings of revcheck and of faulty_call.
constexpr int revoked = 1, no_check = 2, bad_input = 65, no_memory = 71;
// That of the dynamic loader, which says why the program cannot begin.
constexpr int not_loaded = 127;

// One run of a scenario with one fault, in a process of its own.
class Process {
  public:
    Process(const Scenarios& scenarios, const Scenario& scenario, const char* kind, long number,
            bool traced = false)
        : number_(number), place_(scenarios.folder() / ("run-" + std::to_string(number))) {
        std::filesystem::create_directories(place_);
        child_ = fork();
        if (child_ == 0) {
            become(scenario, kind, traced);
        }
    }

    [[nodiscard]] pid_t child() const { return child_; }
    [[nodiscard]] long number() const { return number_; }
    // How the run ended, in a few words; none of them is right that begins with an exclamation.
    [[nodiscard]] std::string outcome(int status) const {
        if (WIFSIGNALED(status)) {
            const int signal = WTERMSIG(status);
            return signal == SIGALRM ? "!hangs" : std::string("!") + strsignal(signal);
        }
        const int code = WEXITSTATUS(status);
        switch (code) {
        case 0:
            return "!good";
        case revoked:
            return "revoked";
        case no_check:
            return "no check";
        case bad_input:
        case no_memory:
        case not_loaded:
            return (std::filesystem::file_size(place_ / "err") == 0 ? "!silent exit "
                                                                    : "told, exit ") +
                   std::to_string(code);
        default:
            return "!exit " + std::to_string(code);
        }
    }
    // The calls that could have failed.
    [[nodiscard]] long count(const Scenario& scenario) const {
        long calls = 0;
        std::ifstream(place_ / (scenario.arms_itself ? "out" : "count")) >> calls;
        return calls;
    }
    void print() const {
        for (const char* const name : {"out", "err"}) {
            std::printf(
                "--- %s\n%s", name,
                std::string(std::istreambuf_iterator<char>(std::ifstream(place_ / name).rdbuf()),
                            {})
                    .c_str());
        }
    }
    void forget() const { std::filesystem::remove_all(place_); }

  private:
    [[noreturn]] void become(const Scenario& scenario, const char* kind, bool traced) const {
        dup2(open((place_ / "out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDOUT_FILENO);
        dup2(open((place_ / "err").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDERR_FILENO);
        std::vector<std::string> words{scenario.program};
        const std::string number = std::to_string(number_);
        if (scenario.arms_itself) {
            words.insert(words.end(), {kind, number});
        } else {
            setenv(fault_kind_variable, kind, 1);
            setenv(fault_number_variable, number.c_str(), 1);
            setenv(fault_count_variable, (place_ / "count").c_str(), 1);
            setenv("LD_PRELOAD", FAULTS, 1);
        }
        if (traced) {
            setenv(fault_trace_variable, "1", 1);
        }
        words.insert(words.end(), scenario.arguments.begin(), scenario.arguments.end());
        if (scenario.wants_cache_folder) {
            words.insert(words.end(), {"--cache-dir", (place_ / "cache").string()});
        }
        std::vector<char*> argv;
        for (std::string& word : words) {
            argv.push_back(word.data());
        }
        argv.push_back(nullptr);
        setenv("HOME", "/nowhere", 1);
        for (const char* const name : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "NORVANE_CONFIG"}) {
            unsetenv(name);
        }
        // The same addresses in each run, so that nothing hangs on them.
        personality(ADDR_NO_RANDOMIZE);
        alarm(limit_seconds);
        execv(argv[0], argv.data());
        _exit(127);
    }

    long number_;
    std::filesystem::path place_;
    pid_t child_;
};

// Counts outcomes, and tells of those that are wrong at once.
class Tally {
  public:
    void note(const std::string& name, const char* kind, long number, const std::string& outcome) {
        ++outcomes_[outcome];
        if (outcome.front() == '!') {
            std::printf("  %s; again: ./dev sweep %s %s %ld\n", outcome.c_str() + 1, name.c_str(),
                        kind, number);
            sound_ = false;
        }
    }
    void print(const std::string& name, const char* kind, long runs, long calls) const {
        std::printf("%s: %ld of %ld faults (%s):", name.c_str(), runs, calls, kind);
        for (const auto& [outcome, count] : outcomes_) {
            std::printf(" %s %ld;", outcome.c_str(), count);
        }
        std::printf("\n");
    }
    [[nodiscard]] bool sound() const { return sound_; }

  private:
    std::map<std::string, long> outcomes_;
    bool sound_ = true;
};

int wait_for(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

// The number of a scenario's calls, by a run in which none fails.
long count_calls(const Scenarios& scenarios, const Scenario& scenario, const char* kind) {
    const Process process(scenarios, scenario, kind, 0);
    const int status = wait_for(process.child());
    const long calls = process.count(scenario);
    if (process.outcome(status) != "revoked") {
        std::printf("%s without a fault: %s\n", scenario.name.c_str(),
                    process.outcome(status).c_str());
        process.print();
        std::exit(EXIT_FAILURE);
    }
    process.forget();
    return calls;
}

bool sweep(const Scenarios& scenarios, const Scenario& scenario, const char* kind, long sample) {
    const long calls = count_calls(scenarios, scenario, kind);
    const long step = sample == 0 ? 1 : std::max(1L, calls / sample);
    const bool shown = isatty(STDOUT_FILENO) != 0;
    std::map<pid_t, Process> running;
    Tally tally;
    long runs = 0;
    for (long number = 1; number <= calls || !running.empty();) {
        if (number <= calls && running.size() < processes) {
            Process process(scenarios, scenario, kind, number);
            running.emplace(process.child(), std::move(process));
            number += step;
            continue;
        }
        int status = 0;
        const auto ended = running.find(waitpid(-1, &status, 0));
        if (ended != running.end()) {
            const Process& process = ended->second;
            tally.note(scenario.name, kind, process.number(), process.outcome(status));
            process.forget();
            running.erase(ended);
            if (++runs % 100 == 0 && shown) {
                std::printf("%s %s: %ld of %ld\r", scenario.name.c_str(), kind, number, calls);
            }
            std::fflush(stdout);
        }
    }
    tally.print(scenario.name, kind, runs, calls);
    return tally.sound();
}

int run_one(const Scenarios& scenarios, const Scenario& scenario, const char* kind, long number) {
    const Process process(scenarios, scenario, kind, number, true);
    const std::string outcome = process.outcome(wait_for(process.child()));
    process.print();
    std::printf("--- %s\n", outcome.c_str());
    return outcome.front() == '!' ? EXIT_FAILURE : EXIT_SUCCESS;
}

int run(std::vector<std::string> words) {
    long sample = 0;
    if (words.size() >= 2 && words.front() == "--sample") {
        sample = std::stol(words[1]);
        words.erase(words.begin(), words.begin() + 2);
    }
    const Scenarios scenarios;
    bool found = false;
    bool sound = true;
    for (const Scenario& scenario : scenarios.all()) {
        if (!words.empty() && words.front() != scenario.name) {
            continue;
        }
        found = true;
        if (words.size() == 3) {
            return run_one(scenarios, scenario, words[1].c_str(), std::stol(words[2]));
        }
        for (const char* const kind : {"allocation", "descriptor"}) {
            sound = sweep(scenarios, scenario, kind, sample) && sound;
        }
    }
    if (!found) {
        std::printf("there is no such scenario\n");
    }
    return found && sound ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace
} // namespace norvane::testing

int main(int argc, char** argv) { return norvane::testing::run({argv + 1, argv + argc}); }
