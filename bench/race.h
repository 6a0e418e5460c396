// SPDX-License-Identifier: MIT
// Our code and its peers take turns within one benchmark, so that whatever slows the machine down
// slows all of them alike.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <numeric>
#include <random>
#include <string>
#include <vector>

struct Racer
{
    std::string name;
    std::function<void()> run;
};

/// Times `ours`. The counter "/name" is how many times as fast as that peer it was, by the
/// median of each. `count` is the work done by one run, in characters.
inline void race(benchmark::State& state, std::int64_t count, const std::function<void()>& ours,
                 const std::vector<Racer>& peers)
{
    using Clock = std::chrono::steady_clock;
    std::vector<Racer> racers{{"ours", ours}};
    racers.insert(racers.end(), peers.begin(), peers.end());
    std::vector<std::vector<double>> times(racers.size());
    std::vector<std::size_t> order(racers.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::minstd_rand random;
    for (auto _ : state) {
        // In another order each time, since everybody profits from what the one before left in the
        // caches.
        std::shuffle(order.begin(), order.end(), random);
        for (const std::size_t racer : order) {
            const auto start = Clock::now();
            racers[racer].run();
            const std::chrono::duration<double> taken = Clock::now() - start;
            times[racer].push_back(taken.count());
        }
        state.SetIterationTime(times[0].back());
    }
    const auto median = [](std::vector<double>& values) {
        const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    };
    const double ourTime = median(times[0]);
    state.counters["per_second"] = double(count) / ourTime;
    for (std::size_t i = 1; i < racers.size(); ++i)
        state.counters["/" + racers[i].name] = median(times[i]) / ourTime;
}
