// Mark to market: a touchline that isn't due is a look-up and a copy; one that is due costs by the holders of its scrip
// and their rows, not by the clients of the house. Beside each its floor: the scrip's look-up alone, and the look-up,
// read and write of the rows alone that cover it.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <utility>

#include "entities.h"
#include "limits/row_masks.h"
#include "service/library.h"

namespace {

using namespace surv;
using namespace surv::bench;

constexpr std::int32_t kTicked = 2885;
constexpr std::int32_t kOthers = 100'000;  ///< first token of what everybody else holds
constexpr std::int32_t kOtherCount = 5000;

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
            const std::int32_t token = client < holders ? kTicked : kOthers + (client - holders) % kOtherCount;
            positions.AddTail(new BKExposureTag(HeldRow(code, code, token)));
        }
        library_.Start({.mtmMode = 1, .positionMode = 2}, {.limits = &limits, .exposures = &positions});
    }
    void SetTicks(std::int16_t ticks, std::int32_t seconds) {
        library_.context.settings.mtmTickCount = ticks;
        library_.context.settings.mtmTimeInterval = seconds;
    }
    void Touch(std::int32_t token, std::int32_t price) {
        touchline_.exchange = kMaskNseCash;
        touchline_.token = token;
        touchline_.lastTradedPrice = price;
        touchline_.closePrice = 25000;
        library_.manager->AddAndComputeMTM(touchline_, CSurveillanceManager::Marking::kWanted, nullptr);
    }
    CBroadcastScrip* FindScrip(std::int32_t token) {
        return library_.manager->broadcastHash.Find(PlainKey(kMaskNseCash, token));
    }
    /// Takes out and puts back each row of each holder that covers the scrip.
    double TouchRows() {
        double sum = 0;
        for (CSurveillanceCategory* category : FindScrip(kTicked)->categories) {
            for (const Period period : kPeriods) {
                for (const std::int16_t mask :
                     MasksOfScope(static_cast<std::int16_t>(Segment::kNseEquity)).Of(period)) {
                    CSurvLimitEntry* entry = category->FindRow(mask, kAllSecurities);
                    if (!entry) continue;
                    BKSurveillanceLimitDefTag row = entry->Row();
                    sum += row.usedMtm;
                    row.usedMtm += 1;
                    entry->Row() = row;
                }
            }
        }
        return sum;
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

/// The broadcast of a day: touchlines of all scrips that the house holds, none twice in a row.
class CBroadcast {
 public:
    explicit CBroadcast(const benchmark::State& state)
        : scrips_(static_cast<std::int32_t>(std::min<std::int64_t>(state.range(1) - state.range(0), kOtherCount))) {}
    /// Touchlines come one at a time: the next isn't looked up before the last is done with.
    std::int32_t NextToken() {
        std::atomic_thread_fence(std::memory_order_seq_cst);
        at_ += 1237;
        if (at_ >= scrips_) at_ %= scrips_;
        return kOthers + at_;
    }

 private:
    std::int32_t scrips_;
    std::int32_t at_ = 0;
};

void FloorOfTouchline(benchmark::State& state) {
    CBroadcastHouse& house = HouseOf(state);
    CBroadcast broadcast(state);
    for (auto _ : state) benchmark::DoNotOptimize(house.FindScrip(broadcast.NextToken())->lastTradedPrice);
}
void TouchlineNotDue(benchmark::State& state) {
    CBroadcastHouse& house = HouseOf(state);
    CBroadcast broadcast(state);
    house.SetTicks(0, 0);
    for (std::int32_t scrip = 0; scrip < kOtherCount; ++scrip) house.Touch(kOthers + scrip, 24999);
    house.SetTicks(0, 1'000'000);
    std::int32_t step = 0;
    for (auto _ : state) house.Touch(broadcast.NextToken(), 24000 + ++step % 2000);
}
void TouchlineDue(benchmark::State& state) {
    CBroadcastHouse& house = HouseOf(state);
    house.SetTicks(0, 0);
    std::int32_t step = 0;
    for (auto _ : state) house.Touch(kTicked, 24000 + ++step % 2000);
}
void FloorOfDueTouchline(benchmark::State& state) {
    CBroadcastHouse& house = HouseOf(state);
    for (auto _ : state) benchmark::DoNotOptimize(house.TouchRows());
}

// Arguments: holders of the scrip, clients.
[[maybe_unused]] const int registered = [] {
    for (const auto& [holders, clients] : {std::pair{10, 100}, {10, 100'000}}) {
        benchmark::RegisterBenchmark("FloorOfTouchline", FloorOfTouchline)->Args({holders, clients});
        benchmark::RegisterBenchmark("TouchlineNotDue", TouchlineNotDue)->Args({holders, clients});
    }
    for (const auto& [holders, clients] : {std::pair{10, 100'000}, {1000, 100'000}, {1'000'000, 1'000'000}}) {
        benchmark::RegisterBenchmark("FloorOfDueTouchline", FloorOfDueTouchline)->Args({holders, clients});
        benchmark::RegisterBenchmark("TouchlineDue", TouchlineDue)->Args({holders, clients});
    }
    return 0;
}();

}  // namespace
