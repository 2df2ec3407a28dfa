#pragma once

// How the margin figures of a limit row move with an order. Rupees.

#include "limits/scrip_trial.h"
#include "shared/order.h"

namespace surv {

/// As a check leaves the row if it passes: the order side and the worst case, and the traded side for a correction.
void MoveMarginForCheck(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const ScripTrial& trial);

/// As an update does: all three for every event. May set exposureMarginInLimit.
void MoveMarginForUpdate(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const ScripTrial& trial);

}  // namespace surv
