// Margin of derivatives: a check must not cost by the size of the account's book, and a new parameter file must cost by
// what is held, not by contracts times accounts.

#include <benchmark/benchmark.h>

#include <memory>
#include <tuple>

#include "derivative_house.h"

namespace {

using surv::bench::CDerivativeHouse;

CDerivativeHouse& HouseOf(int clients, int held, int contracts) {
    static std::unique_ptr<CDerivativeHouse> house;
    static std::tuple<int, int, int> sizes;
    if (!house || sizes != std::tuple{clients, held, contracts}) {
        house.reset();
        house = std::make_unique<CDerivativeHouse>(clients, held, contracts);
        sizes = {clients, held, contracts};
    }
    return *house;
}

/// Orders of one client in 8 of its contracts. Argument: contracts that the client holds.
void CheckDerivativeOrder(benchmark::State& state) {
    CDerivativeHouse& house = HouseOf(1, static_cast<int>(state.range(0)), 3000);
    int order = 0;
    for (auto _ : state) {
        if (!house.CheckAndCommit(0, order++ % 8)) state.SkipWithError("an order was refused");
    }
}
BENCHMARK(CheckDerivativeOrder)->Arg(8)->Arg(400);

// Argument: clients with 10 contracts each, out of 60,000.
constexpr int kHeld = 10;
constexpr int kContracts = 60'000;

void SwapRiskFile(benchmark::State& state) {
    CDerivativeHouse& house = HouseOf(static_cast<int>(state.range(0)), kHeld, kContracts);
    for (auto _ : state) {
        state.PauseTiming();
        house.StageFile();
        state.ResumeTiming();
        house.Swap();
    }
}
void PlainLoopOverHeld(benchmark::State& state) {
    CDerivativeHouse& house = HouseOf(static_cast<int>(state.range(0)), kHeld, kContracts);
    for (auto _ : state) benchmark::DoNotOptimize(house.PlainLoop());
}
[[maybe_unused]] const int registered = [] {
    for (const int clients : {100, 25'000, 50'000}) {
        benchmark::RegisterBenchmark("PlainLoopOverHeld", PlainLoopOverHeld)
            ->Arg(clients)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("SwapRiskFile", SwapRiskFile)->Arg(clients)->Unit(benchmark::kMillisecond);
    }
    return 0;
}();

}  // namespace
