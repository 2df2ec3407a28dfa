#pragma once

#include "shared/order.h"

namespace surv {

class CSurveillanceManager;

/// Takes the scrip's market prices into the order, if it has a market. Deliveries are looked up under a key of their
/// own.
void TakeMarketPrices(const CSurveillanceManager& manager, tagOrderInfoForSurv& order);

}  // namespace surv
