#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace norvane::bench {

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <class Work>
double seconds(Work work, int repeat) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < repeat; ++i) {
        work();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / repeat;
}

/// Times `ours` and `reference` in turn, so that whatever else the machine does meets both, and
/// reports the medians and their ratio; `limit` is the ratio to stay below. Each is called
/// `repeat` times an iteration, for what is too short to time alone.
template <class Ours, class Reference>
void side_by_side(benchmark::State& state, double limit, int repeat, Ours ours,
                  Reference reference) {
    std::vector<double> our_times;
    std::vector<double> reference_times;
    for ([[maybe_unused]] auto iteration : state) {
        reference_times.push_back(seconds(reference, repeat));
        our_times.push_back(seconds(ours, repeat));
        state.SetIterationTime(our_times.back() * repeat);
    }
    constexpr double microseconds = 1e6;
    state.counters["ours_us"] = median(our_times) * microseconds;
    state.counters["reference_us"] = median(reference_times) * microseconds;
    state.counters["ratio"] = median(our_times) / median(reference_times);
    state.counters["limit"] = limit;
}

} // namespace norvane::bench
