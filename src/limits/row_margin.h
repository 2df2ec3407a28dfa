#pragma once

// How the margin figures of a limit row move with an order. Rupees.

#include "limits/scrip_trial.h"
#include "shared/order.h"

namespace surv {

/// What a general order changes in the margin of a row: by the account's tree, or on equity rows by the position; with
/// the client's add-on, and the premium where it counts. Nothing on rows without margin.
[[nodiscard]] MarginChange GeneralMarginChange(const BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order,
                                               const ScripTrial& trial);

enum class TradedMargin : std::uint8_t { kStays, kMoves };
/// The order side and the worst case, and with kMoves the traded side.
void MoveMargin(BKSurveillanceLimitDefTag& row, const MarginChange& change, TradedMargin traded);

/// Whether a check of a general order weighs its traded margin. It is kept for corrections alone.
[[nodiscard]] bool WeighsTradedMargin(std::int16_t limitMask, const tagOrderInfoForSurv& order);

void MoveExposureMargin(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const ScripTrial& trial);

/// Exposure margin of NSE derivatives and NCDEX is part of what the row's margin limit holds, if the client or the row
/// has it so.
void TakeExposureOption(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order);

}  // namespace surv
