// A changed preference re-margins its own entity: it must cost by the positions of that entity, and not by the house.

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>

#include "entities.h"
#include "service/library.h"

namespace {

using surv::Library;

constexpr std::int32_t kFarAway = 2'000'000'000;

/// A position across two exchanges in turn: equity, or a future of MCX.
BKExposureTag PositionOf(const char* client, int number, bool commodity) {
    BKExposureTag row{};
    std::memcpy(row.levelCode, client, sizeof row.levelCode);
    std::memcpy(row.accountCode, client, sizeof row.levelCode);
    row.marketSegment = commodity ? 7 : 1;
    row.limitMask = commodity ? 0x81 : 3;
    row.token = 1 + number;
    row.underlyingToken = 1 + number / 3;
    row.contract.strikePrice = -1;
    row.contract.expiryDate = kFarAway + number % 3;
    row.clientLevelType = 2;
    row.orderBuyQty = row.tradedBuyQty = 10 + number;
    row.orderBuyValue = row.tradedBuyValue = row.orderBuyQty * 25000.0;
    row.scripRates = {0, 1, 1475.0};
    return row;
}

/// One client with `held` positions in equity and as many in MCX, among others with 10 of each.
std::unique_ptr<Library> MakeHouse(int held, int others) {
    auto library = std::make_unique<Library>();
    CPtrList limits, exposures;
    surv::bench::Code code;
    for (int client = 0; client <= others; ++client) {
        surv::bench::ClientCode(client, code);
        for (const int mask : {3, 0xF, 0x7F, 0x81, 0x181, 0x1FF}) {
            limits.AddTail(
                new BKSurveillanceLimitDefTag(surv::bench::FarLimits(code, static_cast<std::int16_t>(mask))));
        }
        constexpr int kOfOthers = 10;
        for (int i = 0; i < (client == 0 ? held : kOfOthers); ++i) {
            for (const bool commodity : {false, true}) {
                exposures.AddTail(new BKExposureTag(PositionOf(code, i, commodity)));
            }
        }
    }
    tagAdditionalMarginInfo rates{};
    rates.exchange = surv::kMaskMcx;
    rates.longMarginRate = 89300;
    for (rates.token = 1; rates.token <= held; ++rates.token) library->context.stores.AddAdditionalMargin(rates);
    library->Start({.rpfMarginMode = 1}, {.limits = &limits, .exposures = &exposures});
    return library;
}

/// Arguments: positions of the client, other clients.
template <std::int16_t Exchange>
void ChangePreference(benchmark::State& state) {
    const auto library = MakeHouse(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    surv::bench::Code code;
    surv::bench::ClientCode(0, code);
    tagClientRiskPreferenceInfoForSurv record{};
    std::memcpy(record.preferenceCode, code, sizeof record.preferenceCode);
    record.exchange = Exchange;
    library->AddUpdatePreference(record);
    const BKSurveillanceLimitDefTag& row =
        library->manager->FindCategory(std::string_view(code))->FindRow(0x1FF, surv::kAllSecurities)->Row();
    double before = row.usedMarginMax;
    for (auto _ : state) {
        record.prefMarginMode = 1;
        record.prefMarginRate = record.prefMarginRate == 100000 ? 200000 : 100000;
        library->AddUpdatePreference(record);
        if (row.usedMarginMax == before) state.SkipWithError("nothing was margined");
        before = row.usedMarginMax;
    }
}
BENCHMARK(ChangePreference<surv::kMaskNseCash>)->Args({100, 100})->Args({400, 100})->Args({400, 10'000});
BENCHMARK(ChangePreference<surv::kMaskMcx>)->Args({100, 100})->Args({400, 100})->Args({400, 10'000});

}  // namespace
