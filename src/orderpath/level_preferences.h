#pragma once

#include "orderpath/hierarchy.h"
#include "orderpath/refusal.h"

namespace surv {

class CSurveillanceManager;

/// The preferences that stand for an order when no record does.
[[nodiscard]] RiskPreference DefaultPreferenceOf(std::int16_t exchangeMask);

/// Level by level the effective preference: the category's own, else everybody's, else the default stands.
void LoadEffectivePreference(const CSurveillanceManager& manager, const CSurveillanceCategory& category,
                             tagOrderInfoForSurv& order);

/// At the client and the dealer: the family's preference before the own one, the square-off settings and the product
/// test. True when the product is allowed; else `refusal` tells why.
[[nodiscard]] bool ApplyLevelPreferences(CSurveillanceManager& manager, Level level, CSurveillanceCategory& category,
                                         const tagSurveillanceInfo& request, tagOrderInfoForSurv& order,
                                         Refusal& refusal);

}  // namespace surv
