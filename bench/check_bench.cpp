// The order path of a passing cash order: the check of client, dealer, group and root, and its commit. Beside it a
// floor on the same house: the look-ups and the limit row reads and writes alone.
// Arguments: of preferred orders what is in force (see Preferences); covering limit rows a level, clients of the house.

#include <benchmark/benchmark.h>

#include <random>

#include "house.h"

namespace {

using surv::bench::CHouse;
using surv::bench::HouseOf;

int NextClient(std::minstd_rand& random, const CHouse& house) {
    return static_cast<int>(random() % static_cast<unsigned>(house.Clients()));
}

void CheckCashOrder(benchmark::State& state) {
    CHouse& house = HouseOf(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    std::minstd_rand random(7);
    for (auto _ : state) {
        if (!house.CheckAndCommit(NextClient(random, house))) state.SkipWithError("an order was refused");
    }
}

void CheckPreferredOrder(benchmark::State& state) {
    CHouse& house = HouseOf(static_cast<int>(state.range(1)), static_cast<int>(state.range(2)),
                            static_cast<surv::bench::Preferences>(state.range(0)));
    std::minstd_rand random(7);
    for (auto _ : state) {
        if (!house.CheckAndCommit(NextClient(random, house))) state.SkipWithError("an order was refused");
    }
}

void FloorOfCashOrder(benchmark::State& state) {
    CHouse& house = HouseOf(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    std::minstd_rand random(7);
    for (auto _ : state) benchmark::DoNotOptimize(house.Floor(NextClient(random, house)));
}

// Both of one size stand together, so that they share a house.
[[maybe_unused]] const int registered = [] {
    for (const int rows : {2, 8}) {
        for (const int clients : {100, 10'000, 1'000'000}) {
            benchmark::RegisterBenchmark("CheckCashOrder", CheckCashOrder)->Args({rows, clients});
            benchmark::RegisterBenchmark("FloorOfCashOrder", FloorOfCashOrder)->Args({rows, clients});
        }
    }
    for (const int preferences : {0, 1, 2, 3}) {
        for (const int clients : {100, 10'000}) {
            benchmark::RegisterBenchmark("CheckPreferredOrder", CheckPreferredOrder)->Args({preferences, 8, clients});
        }
    }
    return 0;
}();

}  // namespace
