// Position screens: "ALL" costs by the rows it gives, one account by its own positions, whatever the house holds.

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <utility>

#include "entities.h"
#include "queries/net_position.h"
#include "service/library.h"

namespace {

using namespace surv;
using namespace surv::bench;

constexpr int kHeld = 10;  ///< scrips of each account
constexpr int kScrips = 2000;

/// A root that holds the positions of every client, and no other category.
class CScreenHouse {
 public:
    explicit CScreenHouse(int accounts) {
        CPtrList limits;
        CPtrList positions;
        limits.AddTail(new BKSurveillanceLimitDefTag(FarLimits("HOUSE", 3)));
        for (int account = 0; account < accounts; ++account) {
            for (int held = 0; held < kHeld; ++held) {
                Code code;
                ClientCode(account, code);
                const std::int32_t token = 1 + (account * kHeld + held) % kScrips;
                positions.AddTail(new BKExposureTag(HeldRow("HOUSE", code, token)));
            }
        }
        library_.Start({.positionMode = 2}, {.limits = &limits, .exposures = &positions});
    }
    /// Positions by scrip of an account; gives their number.
    int Ask(const char* account) {
        char group[] = "";
        char text[8] = {};
        std::memcpy(text, account, std::strlen(account));
        CPtrList rows;
        library_.manager->GetNetPositionInfoFromDll(
            {6, "HOUSE", {{group, sizeof group}, {text, sizeof text}}, kAllSecurities, 3, false, 0}, rows);
        const int count = rows.GetCount();
        while (!rows.IsEmpty()) delete static_cast<BKExposureTag*>(rows.RemoveHead());
        return count;
    }

 private:
    Library library_;
};

void Screens(benchmark::State& state, const char* account, bool all) {
    static std::unique_ptr<CScreenHouse> house;
    static std::int64_t size = 0;
    if (!house || size != state.range(0)) house = std::make_unique<CScreenHouse>(static_cast<int>(state.range(0)));
    size = state.range(0);
    int rows = 0;
    for (auto _ : state) rows = house->Ask(account);
    if (rows != (all ? state.range(0) * kHeld : kHeld)) state.SkipWithError("wrong number of rows");
    state.counters["rows"] = rows;
    state.counters["perRow"] = benchmark::Counter(static_cast<double>(rows) * static_cast<double>(state.iterations()),
                                                  benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
void ScreenOfAll(benchmark::State& state) { Screens(state, "ALL", true); }
void ScreenOfOneAccount(benchmark::State& state) { Screens(state, "C0001", false); }

// Argument: accounts.
BENCHMARK(ScreenOfAll)->Arg(100)->Arg(1000)->Arg(10'000)->Arg(100'000);
BENCHMARK(ScreenOfOneAccount)->Arg(100)->Arg(1000)->Arg(10'000)->Arg(100'000);

}  // namespace
