#pragma once

#include <cstdint>

#include "platform/hash_set.h"
#include "shared/order.h"

namespace surv {

class CSurveillanceCategory;

/// The market of one scrip, as the broadcast last told it. Prices are paise, 0 when there is none.
struct CBroadcastScrip {
    std::int16_t exchange = 0;
    std::int32_t broadcastToken = 0;
    std::int32_t lastTradedPrice = 0;
    std::int32_t bestBuyPrice = 0;
    std::int32_t bestSellPrice = 0;
    std::int32_t closePrice = 0;
    std::int32_t priceMultiplier = 10000;        ///< 10000 = 1.0
    HashSet<CSurveillanceCategory*> categories;  ///< that have traded in the scrip; not owned

    /// A category stands once; null is ignored.
    void AddCategory(CSurveillanceCategory* category) {
        if (category) categories.Insert(category);
    }
};

/// Which multiplier scales the prices of an NCDEX scrip.
enum class PriceScale : std::uint8_t { kOrder, kScrip };

/// Takes the three market prices of an order from its scrip, each cut to whole paise.
void FillPrices(tagOrderInfoForSurv& order, const CBroadcastScrip& scrip, PriceScale scale);

/// What an order at market is valued at: the market side, the last trade, the close; 0 when there is no market.
[[nodiscard]] std::int32_t MarketPrice(const tagOrderInfoForSurv& order);

}  // namespace surv
