// Mark to market: a touchline that isn't due is a look-up and a copy; one that is due costs by the holders of its scrip
// and their rows, not by the clients of the house.

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <utility>

#include "entities.h"
#include "service/library.h"

namespace {

using namespace surv;
using namespace surv::bench;

constexpr std::int32_t kTicked = 2885;
constexpr std::int32_t kOthers = 100'000;  ///< tokens of what everybody else holds

/// Clients with two limit rows and a position each; the first `holders` of them hold the scrip that ticks.
class CBroadcastHouse {
 public:
    CBroadcastHouse(int holders, int clients) {
        CPtrList limits;
        CPtrList positions;
        for (int client = 0; client < clients; ++client) {
            Code code;
            ClientCode(client, code);
            for (const int mask : {3, 0x1FF}) {
                limits.AddTail(new BKSurveillanceLimitDefTag(FarLimits(code, static_cast<std::int16_t>(mask))));
            }
            const std::int32_t token = client < holders ? kTicked : kOthers + client % 500;
            positions.AddTail(new BKExposureTag(HeldRow(code, code, token)));
        }
        library_.Start({.mtmMode = 1, .positionMode = 2}, {.limits = &limits, .exposures = &positions});
    }
    void SetTicks(std::int16_t ticks, std::int32_t seconds) {
        library_.context.settings.mtmTickCount = ticks;
        library_.context.settings.mtmTimeInterval = seconds;
    }
    void Touch(std::int32_t price) {
        touchline_.exchange = kMaskNseCash;
        touchline_.token = kTicked;
        touchline_.lastTradedPrice = price;
        touchline_.closePrice = 25000;
        library_.manager->AddAndComputeMTM(touchline_, CSurveillanceManager::Marking::kWanted, nullptr);
    }

 private:
    Library library_;
    tagBcastMBOOrMBPTouchline touchline_{};
};

CBroadcastHouse& HouseOf(const benchmark::State& state) {
    static std::unique_ptr<CBroadcastHouse> house;
    static std::pair<std::int64_t, std::int64_t> sizes;
    const std::pair wanted{state.range(0), state.range(1)};
    if (!house || sizes != wanted) {
        house.reset();
        house = std::make_unique<CBroadcastHouse>(static_cast<int>(wanted.first), static_cast<int>(wanted.second));
        sizes = wanted;
    }
    return *house;
}

void Touches(benchmark::State& state, std::int32_t interval) {
    CBroadcastHouse& house = HouseOf(state);
    house.SetTicks(0, 0);
    house.Touch(24999);
    house.SetTicks(0, interval);
    std::int32_t step = 0;
    for (auto _ : state) house.Touch(24000 + ++step % 2000);
}
void TouchlineNotDue(benchmark::State& state) { Touches(state, 1'000'000); }
void TouchlineDue(benchmark::State& state) { Touches(state, 0); }

// Arguments: holders of the scrip, clients.
[[maybe_unused]] const int registered = [] {
    for (const auto& [holders, clients] : {std::pair{10, 100}, {10, 100'000}, {1000, 1000}, {1000, 100'000}}) {
        benchmark::RegisterBenchmark("TouchlineNotDue", TouchlineNotDue)->Args({holders, clients});
        benchmark::RegisterBenchmark("TouchlineDue", TouchlineDue)->Args({holders, clients});
    }
    return 0;
}();

}  // namespace
