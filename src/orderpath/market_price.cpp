#include "orderpath/market_price.h"

#include "service/manager.h"

namespace surv {

void TakeMarketPrices(const CSurveillanceManager& manager, tagOrderInfoForSurv& order) {
    const int delivery = order.IsDelivery() ? 5 : 0;
    const std::int64_t key = PlainKey(static_cast<std::int16_t>(order.ExchangeMask() + delivery), order.token);
    if (const CBroadcastScrip* scrip = manager.broadcastHash.Find(key)) FillPrices(order, *scrip, PriceScale::kOrder);
}

}  // namespace surv
