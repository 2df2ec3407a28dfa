#pragma once

// The single tests of the policy. Each sees the order as the tests before it have left it.

#include <optional>
#include <string>

#include "orderpath/policy.h"

namespace surv {

struct PolicyInput {
    CSurveillanceManager& manager;
    tagSurveillanceInfo& request;
    OrderIntake& intake;
    tagOrderInfoForSurv& order;
    const CHierarchy& hierarchy;

    [[nodiscard]] bool IsOwnAccount() const { return order.proClient == kProClientOwn; }
};

/// Empty: the test has nothing against the order.
using PolicyVerdict = std::optional<PolicyAnswer>;

[[nodiscard]] inline PolicyVerdict RefusePolicy(const RefusalRow& row, std::string text) {
    return PolicyAnswer{PolicyEnd::kRefused, MakeRefusal(row, std::move(text))};
}
[[nodiscard]] inline PolicyVerdict RefusePolicy(const RefusalRow& row) { return RefusePolicy(row, row.text); }

/// Whether the order only reduces what its account holds at the root.
[[nodiscard]] bool IsSquareOffAtRoot(const PolicyInput& in);

// By product (product_policy.cpp)
/// May this holder trade the product, and is it open on the scrip?
PolicyVerdict TestProduct(PolicyInput& in);
/// Prices of the two legs of a bracket order against each other and against the bands of the scrip.
PolicyVerdict TestMarginPlusShape(PolicyInput& in);
/// Does an after-market order go through the checks at all?
PolicyVerdict TestAfterMarket(PolicyInput& in);

// Option prices (option_price_policy.cpp)
/// Against what the option is worth at the price of its underlying; an order at market gets that price.
PolicyVerdict TestSellPrice(PolicyInput& in);
PolicyVerdict TestBuyPrice(PolicyInput& in);

}  // namespace surv
