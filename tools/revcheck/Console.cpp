#include "Console.h"

#include "Text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace norvane {
namespace {

constexpr std::chrono::seconds tick_length{1};
constexpr std::size_t default_columns = 80;

std::size_t terminal_columns(int descriptor) {
    struct winsize size {};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                        : default_columns;
}

bool is_dumb_terminal() {
    const char* const type = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    return type == nullptr || std::string_view(type) == "dumb";
}

} // namespace

Console::Console() : on_terminal_(isatty(STDERR_FILENO) == 1 && !is_dumb_terminal()) {}

Console::~Console() { end(); }

bool Console::write(std::string_view text) {
    const std::lock_guard lock(mutex_);
    clear();
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return std::fflush(stdout) == 0 && written && std::ferror(stdout) == 0;
}

void Console::complain(std::string_view subject, std::string_view text) {
    const std::string line =
        "revcheck: " + printable(subject) + (subject.empty() ? "" : ": ") + printable(text) + "\n";
    const std::lock_guard lock(mutex_);
    clear();
    std::fputs(line.c_str(), stderr);
}

void Console::begin(std::string_view text) {
    if (!on_terminal_) {
        return;
    }
    const std::lock_guard lock(mutex_);
    text_ = printable(text);
    begun_ = Clock::now();
    if (!ticker_.joinable()) {
        ticker_ = std::jthread([this](const std::stop_token& stop) { tick(stop); });
    }
}

void Console::end() {
    const std::lock_guard lock(mutex_);
    text_.clear();
    clear();
}

void Console::tick(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
        stopping_.wait_for(lock, stop, tick_length, [] { return false; });
        if (!text_.empty() && !stop.stop_requested()) {
            show();
        }
    }
}

void Console::show() {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(Clock::now() - begun_).count();
    std::string line = text_;
    if (seconds > 0) {
        line += " (" + std::to_string(seconds) + " s)";
    }
    line.resize(std::min(line.size(), terminal_columns(STDERR_FILENO) - 1));
    std::fprintf(stderr, "\r\033[K%s", line.c_str());
    std::fflush(stderr);
    visible_ = true;
}

void Console::clear() {
    if (visible_) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        visible_ = false;
    }
}

bool Console::output_has_colour() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets it
    const char* const refused = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == '\0') &&
           !is_dumb_terminal();
}

std::size_t Console::output_width() { return terminal_columns(STDOUT_FILENO); }

} // namespace norvane
