#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace zk::bench {

// A figure and what it is compared with, both by the names that the table prints (no commas:
// they are columns of a CSV file).
struct Measurement {
    std::string name;
    std::function<void(benchmark::State&)> run;
    int threads = 1;
};
struct Row {
    Measurement subject;
    Measurement baseline;  // rows that share one name it alike
    double atMost = 0;     // of subject / baseline; 0: nothing is promised
};

// Runs `op(0)` to `op(count - 1)` in one stretch of measured time, again and again, with
// `prepare()` before each stretch, unmeasured. One op is one iteration.
template <typename Prepare, typename Op>
void measure(benchmark::State& state, int64_t count, Prepare prepare, Op op) {
    using Clock = std::chrono::steady_clock;
    while (state.KeepRunningBatch(count)) {
        prepare();
        const Clock::time_point start = Clock::now();
        for (int64_t i = 0; i < count; ++i) {
            op(i);
        }
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
}

template <typename Op>
void measure(benchmark::State& state, Op op) {
    constexpr int64_t kLongEnoughForTheClock = 1024;
    measure(
            state, kLongEnoughForTheClock, [] {}, op);
}

}  // namespace zk::bench
