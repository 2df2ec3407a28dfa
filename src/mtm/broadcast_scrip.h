#pragma once

#include <cstdint>

#include "platform/clock.h"
#include "platform/hash_map.h"
#include "platform/hash_set.h"
#include "shared/order.h"
#include "shared/settings.h"

namespace surv {

class CSurveillanceCategory;

/// The market of one scrip, as the broadcast last told it, and who is marked by it. Prices are paise, 0 when there is
/// none. What a touchline that isn't due touches comes first, in one line of the cache.
struct alignas(64) CBroadcastScrip {
    std::int16_t exchange = 0;        ///< exchange mask
    std::int32_t broadcastToken = 0;  ///< 0: made by a trade, and no touchline has come yet
    std::int32_t lastTradedPrice = 0;
    std::int32_t bestBuyPrice = 0;
    std::int32_t bestSellPrice = 0;
    std::int32_t closePrice = 0;
    std::int32_t priceA = 0;  ///< kept as the broadcast tells them
    std::int32_t priceB = 0;
    std::int32_t priceC = 0;

    // When it was last marked.
    std::int32_t lastComputedPrice = 0;  ///< lastTradedPrice at that time
    std::int64_t lastComputeTime = 0;    ///< calendar seconds
    std::int64_t tickCount = 0;          ///< touchlines since then

    tagContractDescriptor security{};  ///< with underlyingToken, from whoever names the scrip first
    std::int32_t underlyingToken = 0;
    std::int32_t scripToken = -1;          ///< -1: the security isn't set
    std::int32_t priceMultiplier = 10000;  ///< 10000 = 1.0

    HashSet<CSurveillanceCategory*> categories;  ///< that hold the scrip; not owned
    /// The same by PeriodGroupKey of their levels, for the screens of houses that hold positions by client.
    HashMap<std::int16_t, HashSet<CSurveillanceCategory*>> categoriesByLevel{13};

    /// A category stands once; null is ignored. It is filed under the levels that it has now.
    void AddCategory(CSurveillanceCategory* category);
    /// Tells which contract this is, once. exchangeMask: 0 when it isn't known; NCDEX alone has a multiplier.
    void SetSecurity(std::int16_t exchangeMask, std::int32_t token, std::int32_t tokenOfUnderlying,
                     const tagContractDescriptor& contract, std::int32_t multiplier);
    /// Takes a touchline of the scrip. True when the scrip is to be marked: enough touchlines or time have passed, and
    /// the price is another one than then.
    [[nodiscard]] bool Tick(const tagBcastMBOOrMBPTouchline& touchline, const Settings& settings, const CClock& clock);
    /// After a marking that was cut short: the next check finds the price changed, whatever it is.
    void ForgetComputedPrice();
};

/// Which multiplier scales the prices of an NCDEX scrip.
enum class PriceScale : std::uint8_t { kOrder, kScrip };

/// Takes the three market prices of an order from its scrip, each cut to whole paise.
void FillPrices(tagOrderInfoForSurv& order, const CBroadcastScrip& scrip, PriceScale scale);

/// What an order at market is valued at: the market side, the last trade, the close; 0 when there is no market.
[[nodiscard]] std::int32_t MarketPrice(const tagOrderInfoForSurv& order);

}  // namespace surv
