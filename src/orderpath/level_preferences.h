#pragma once

#include <cstdint>
#include <optional>

#include "orderpath/event_sweep.h"
#include "orderpath/hierarchy.h"
#include "orderpath/refusal.h"

namespace surv {

class CSurveillanceManager;

/// The preferences that stand for an order when no record does.
[[nodiscard]] RiskPreference DefaultPreferenceOf(std::int16_t exchangeMask);

/// Level by level the effective preference: the category's own, else everybody's, else the default stands.
void LoadEffectivePreference(const CSurveillanceManager& manager, const CSurveillanceCategory& category,
                             tagOrderInfoForSurv& order);

/// A level whose preferences have something against the order.
struct LevelRefusal {
    Refusal refusal;
    bool endsCall = false;  ///< the refusal is the answer as it stands; else it climbs like that of a rule
};

/// At the client and the dealer: the family's preference before the own one, the square-off settings, the product test,
/// and whether deliveries count here. Null: nothing against the order.
[[nodiscard]] std::optional<LevelRefusal> ApplyLevelPreferences(CSurveillanceManager& manager, Level level,
                                                                CSurveillanceCategory& category,
                                                                const tagSurveillanceInfo& request,
                                                                tagOrderInfoForSurv& order);

/// A level of an event: its own preference, else everybody's; where it has a map without either, the defaults.
void TakeOwnPreference(const CSurveillanceManager& manager, const CSurveillanceCategory& category, PreferenceRoad road,
                       tagOrderInfoForSurv& order);
/// The client and the dealer of an event: the family's first. A client's own goes before it, a dealer's behind.
void ApplyEventPreferences(CSurveillanceManager& manager, Level level, CSurveillanceCategory& category,
                           const tagSurveillanceInfo& request, PreferenceRoad road, tagOrderInfoForSurv& order);

/// The level at which the deliveries of an order count: the client, or a dealer that is its own. False: no level.
[[nodiscard]] bool CountsDeliveries(Level level, const tagSurveillanceInfo& request);

/// What a unit of a conversion is worth, paise: the order's price, else the average at which the source position was
/// traded; 0 when the category hasn't got the quantity.
[[nodiscard]] std::int32_t ConversionPrice(const CSurveillanceCategory& category, const tagOrderInfoForSurv& order);

}  // namespace surv
