#pragma once

#include "orderpath/hierarchy.h"
#include "orderpath/intake.h"
#include "orderpath/refusal.h"

namespace surv {

class CSurveillanceManager;

/// How the policy leaves an order.
enum class PolicyEnd : std::uint8_t {
    kGoesOn,        ///< into the walk
    kPassesAtOnce,  ///< no level is asked and no position moves
    kRefused,
};
struct PolicyAnswer {
    PolicyEnd end = PolicyEnd::kGoesOn;
    Refusal refusal;
};

/// What an order may be, before any level is asked: the tests run in their order, the first that refuses answers. They
/// may change the order's product (an after-market delivery is a delivery from here on), its flags and rates, the level
/// that the request names as failed, and the price of an option at market in the request.
/// REQUIRES: parentCode of the order is set.
[[nodiscard]] PolicyAnswer TestOrderPolicy(CSurveillanceManager& manager, tagSurveillanceInfo& request,
                                           OrderIntake& intake, const CHierarchy& hierarchy);

/// The order's series is delivered whatever its product.
[[nodiscard]] bool IsCompulsoryDelivery(const SurvContext& context, const tagOrderInfoForSurv& order);

/// Whose preferences tell of after-market orders: the dealer's for its own orders, else the client's. Null: it has
/// none.
[[nodiscard]] const PreferenceMap* AfterMarketPreferences(const tagSurveillanceInfo& request,
                                                          const tagOrderInfoForSurv& order,
                                                          const CHierarchy& hierarchy);

}  // namespace surv
