#include "mtm/broadcast_scrip.h"

#include <array>
#include <limits>

#include "categories/groupings.h"
#include "platform/numeric.h"

namespace surv {
namespace {

constexpr std::int16_t kNcdexFutures = 8;
constexpr double kMultiplierOne = 10000.0;

template <std::size_t Count>
std::int32_t FirstAboveZero(const std::array<std::int32_t, Count>& prices) {
    for (const std::int32_t price : prices) {
        if (price > 0) return price;
    }
    return 0;
}

/// Wraps round where a host's clock jumps from one end of time to the other.
std::int64_t SecondsBetween(std::int64_t from, std::int64_t to) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from));
}

}  // namespace

void CBroadcastScrip::AddCategory(CSurveillanceCategory* category) {
    if (!category) return;
    categories.Insert(category);
    if (!category->Context().settings.HoldsClientPositions()) return;
    categoriesByLevel.FindOrMake(PeriodGroupKey(category->lastLevel, category->secondLevel)).Insert(category);
}

void CBroadcastScrip::SetSecurity(std::int16_t exchangeMask, std::int32_t token, std::int32_t tokenOfUnderlying,
                                  const tagContractDescriptor& contract, std::int32_t multiplier) {
    if (scripToken >= 1) return;
    security = contract;
    scripToken = token;
    underlyingToken = tokenOfUnderlying;
    if (exchangeMask == kMaskNcdex && multiplier > 0) priceMultiplier = multiplier;
}

bool CBroadcastScrip::Tick(const tagBcastMBOOrMBPTouchline& touchline, const Settings& settings, const CClock& clock) {
    exchange = touchline.exchange;
    broadcastToken = touchline.token;
    lastTradedPrice = touchline.lastTradedPrice;
    bestBuyPrice = touchline.bestBuyPrice;
    bestSellPrice = touchline.bestSellPrice;
    closePrice = touchline.closePrice;
    priceA = touchline.priceA;
    priceB = touchline.priceB;
    priceC = touchline.priceC;

    const std::int64_t now = clock.Now();
    const bool byTicks = ++tickCount == settings.mtmTickCount;
    if (!byTicks && SecondsBetween(lastComputeTime, now) < settings.mtmTimeInterval) return false;
    tickCount = 0;
    lastComputeTime = now;
    if (lastTradedPrice == lastComputedPrice) return false;
    lastComputedPrice = lastTradedPrice;
    return true;
}

void CBroadcastScrip::ForgetComputedPrice() {
    constexpr std::int32_t kNoPrice = std::numeric_limits<std::int32_t>::min();
    lastComputedPrice = kNoPrice;
}

void FillPrices(tagOrderInfoForSurv& order, const CBroadcastScrip& scrip, PriceScale scale) {
    double factor = 1.0;
    if (order.marketSegment == kNcdexFutures) {
        factor = (scale == PriceScale::kScrip ? scrip.priceMultiplier : order.priceMultiplier) / kMultiplierOne;
    }
    const auto scaled = [factor](std::int32_t price) { return ClampToInt32(price * factor); };
    order.closePrice = scaled(scrip.closePrice);
    order.lastTradedPrice = scaled(scrip.lastTradedPrice > 0 ? scrip.lastTradedPrice : scrip.closePrice);
    if (order.buySell == kBuy) {
        order.marketSidePrice = scaled(
            FirstAboveZero<4>({scrip.bestSellPrice, scrip.bestBuyPrice, scrip.lastTradedPrice, scrip.closePrice}));
    } else if (order.buySell == kSell) {
        order.marketSidePrice = scaled(
            FirstAboveZero<4>({scrip.bestBuyPrice, scrip.bestSellPrice, scrip.lastTradedPrice, scrip.closePrice}));
    }
}

std::int32_t MarketPrice(const tagOrderInfoForSurv& order) {
    if (order.marketSidePrice != 0) return order.marketSidePrice;
    return order.lastTradedPrice != 0 ? order.lastTradedPrice : order.closePrice;
}

}  // namespace surv
