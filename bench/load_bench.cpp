// The start of a day: a limit row and a position row for each client, one client after the other.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstring>
#include <memory>

#include "entities.h"
#include "service/library.h"

namespace {

using namespace surv;
using namespace surv::bench;

constexpr int kScrips = 2000;

/// The rows of a house, as a host hands them in.
struct StartRows {
    CPtrList limits;
    CPtrList positions;

    explicit StartRows(int clients) {
        for (int client = 0; client < clients; ++client) {
            Code code;
            ClientCode(client, code);
            limits.AddTail(new BKSurveillanceLimitDefTag(FarLimits(code, 3)));
            positions.AddTail(new BKExposureTag(HeldRow(code, code, 1 + client % kScrips)));
        }
    }
};

/// Memory in use, less what is free in the heap.
double BytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void StartOfDay(benchmark::State& state) {
    const auto clients = static_cast<int>(state.range(0));
    double bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        StartRows rows(clients);
        auto library = std::make_unique<Library>();
        const double before = BytesInUse();
        state.ResumeTiming();
        const std::int16_t result =
            library->Start({.positionMode = 2}, {.limits = &rows.limits, .exposures = &rows.positions});
        state.PauseTiming();
        if (result != kDone) state.SkipWithError("the start failed");
        bytes = BytesInUse() - before;
        library.reset();
        state.ResumeTiming();
    }
    using benchmark::Counter;
    state.counters["row_pair"] = Counter(clients, Counter::kIsIterationInvariantRate | Counter::kInvert);
    state.counters["bytes_a_client"] = bytes / clients;
}
BENCHMARK(StartOfDay)
    ->Arg(100)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

}  // namespace
