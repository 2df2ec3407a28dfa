#pragma once

#include <cstddef>
#include <cstdint>

#include "shared/order.h"

namespace surv {

/// The rules that judge an order at a row.
enum class RuleSet : std::uint8_t { kGeneral, kReport, kDelivery, kMarginPlus, kMtf };
inline constexpr std::size_t kRuleSetCount = 5;

/// kProbe: an enquiry; every rule of every row is tried, and nothing is kept.
enum class CheckMode : std::uint8_t { kReal, kProbe };

/// Products with rules of their own have them where deliveries count; two-leg orders everywhere.
[[nodiscard]] inline RuleSet RuleSetOf(const tagOrderInfoForSurv& order, CheckMode mode) {
    if (order.productType == product::kMarginPlus) return RuleSet::kMarginPlus;
    if (order.deliveryLevel && order.IsDelivery()) return RuleSet::kDelivery;
    if (order.deliveryLevel && order.productType == product::kMtf) return RuleSet::kMtf;
    return mode == CheckMode::kProbe ? RuleSet::kReport : RuleSet::kGeneral;
}

}  // namespace surv
