#pragma once

#include "categories/category.h"

namespace surv {

/// A delivery order in the holding of its ISIN: what may be sold, and how collateral and sale credit move. Fills
/// dpSetQty, dpPrevBlockedQty, dpTodayFreeQty, collateralDelta and saleCreditDelta of the order; the holding stays as
/// it is. before, after: the expiry position of the scrip. Nothing but zeroes where deliveries don't count.
void TryHolding(const CSurveillanceCategory& category, tagOrderInfoForSurv& order, const CSurvPosition& before,
                const CSurvPosition& after);

/// The holding takes the order; a missing one is made. For an order that stands.
void CommitHolding(CSurveillanceCategory& category, const tagOrderInfoForSurv& order, const CSurvPosition& before,
                   const CSurvPosition& after);

}  // namespace surv
