#pragma once

#include "SideBySide.h"

#include <thread>
#include <vector>

namespace norvane::bench {

/// How many times the work of one thread two threads do in the same time.
class Rate {
  public:
    explicit Rate(int repeat) : repeat_(repeat) {}

    /// Each thread calls a function that `make_work` gives it. Returns the seconds that it took.
    template <class MakeWork>
    double measure(MakeWork make_work) {
        const auto run = [&, repeat = repeat_] {
            auto work = make_work();
            for (int i = 0; i < repeat; ++i) {
                work();
            }
        };
        one_.push_back(seconds(run, 1));
        two_.push_back(seconds(
            [&] {
                std::thread other(run);
                run();
                other.join();
            },
            1));
        return one_.back() + two_.back();
    }
    [[nodiscard]] double rate() const { return 2 * median(one_) / median(two_); }

  private:
    int repeat_;
    std::vector<double> one_;
    std::vector<double> two_;
};

} // namespace norvane::bench
