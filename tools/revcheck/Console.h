#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace norvane {

/// Thrown where there is nobody to tell verdicts to any more.
struct OutputClosed {};

/// Standard output and standard error, and on the latter, if that is a terminal, a line of progress
/// that disappears before anything else is written.
class Console {
  public:
    Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    ~Console();

    /// Writes to standard output at once. False if that failed, now or before.
    bool write(std::string_view text);

    /// One line "revcheck: SUBJECT: TEXT" on standard error; an empty subject is left out. Both may
    /// be text from outside.
    void complain(std::string_view subject, std::string_view text);

    /// Something has begun that may take its time. Once a second the terminal shows what is going
    /// on then, and since when; so work that is quickly done shows nothing.
    void begin(std::string_view text);
    /// It has ended.
    void end();

    [[nodiscard]] static bool output_has_colour();
    /// Columns of the terminal at standard output, or of one that is usual.
    [[nodiscard]] static std::size_t output_width();

  private:
    using Clock = std::chrono::steady_clock;

    void tick(const std::stop_token& stop);
    void show();
    void clear();

    const bool on_terminal_;
    std::mutex mutex_;
    std::condition_variable_any stopping_;
    std::string text_; ///< Empty: nothing is going on.
    Clock::time_point begun_;
    bool visible_ = false;
    std::jthread ticker_; ///< Runs from the first use on.
};

} // namespace norvane
