#pragma once

#include <algorithm>

#include "limits/rule_set.h"
#include "positions/position.h"

namespace surv {

/// How a margin moves in its three views. Rupees.
struct MarginChange {
    double orderSide = 0;
    double tradedSide = 0;
    double worst = 0;

    [[nodiscard]] double Largest() const { return std::max(std::max(orderSide, tradedSide), worst); }
    /// Raised by the client's add-on.
    [[nodiscard]] MarginChange Raised(const RiskPreference& preference) const {
        const double addOn = preference.marginAddOnFactor / 1000000.0;
        const auto raised = [addOn](double change) { return change + addOn * change; };
        return {raised(orderSide), raised(tradedSide), raised(worst)};
    }
};

/// Value bought minus value sold.
[[nodiscard]] MarginChange NetValueChange(const CSurvPosition& before, const CSurvPosition& after);
/// By the rate of the scrip, without the add-on.
[[nodiscard]] MarginChange CashMarginChange(const tagOrderInfoForSurv& order, const CSurvPosition& before,
                                            const CSurvPosition& after);
/// What a position is margined by where a rule set judges it: by value for deliveries, of which only a net buy counts,
/// and for two-leg orders; by the funding rate for margin funding; else by the rate of the scrip, without the add-on.
/// REQUIRES: the order's periodicity is a mask of its segment.
[[nodiscard]] MarginChange PositionMarginChange(RuleSet set, const tagOrderInfoForSurv& order,
                                                const CSurvPosition& before, const CSurvPosition& after);

}  // namespace surv
