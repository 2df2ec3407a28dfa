#include "mtm/broadcast_scrip.h"

#include <array>

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

}  // namespace

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
