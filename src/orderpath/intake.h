#pragma once

#include <cstdint>

#include "margin/margin_part.h"
#include "orderpath/request_view.h"
#include "reference/context.h"
#include "shared/order.h"

namespace surv {

/// What the intake of a request makes of it.
struct OrderIntake {
    RequestView view;
    tagOrderInfoForSurv order;
    FixedText<16> clientText;     ///< heads the texts of refusals
    bool updateAllLevels = true;  ///< false: only levels of type 3, 5 and 8 take the order
};

/// Reads the records of a request into the order. False when no exchange mask could be read. May clear bits of
/// levelCheckFlags in the request. The event's quantities and prices come later (FillCheckEvent, FillUpdateEvent).
[[nodiscard]] bool ReadRequest(tagSurveillanceInfo& request, const SurvContext& context, OrderRoad road,
                               OrderIntake& intake);

/// Quantities and prices of a check: the order before and after the event.
void FillCheckEvent(OrderIntake& intake);

/// Prices that the stored order gives to an event. Where it was at market, they are those that its check took.
struct StoredPrices {
    bool leaves = false;  ///< prevPrice
    bool enters = false;  ///< price
};
/// Quantities and prices of an update (event_table.cpp).
[[nodiscard]] StoredPrices FillUpdateEvent(OrderIntake& intake, const Settings& settings);

/// parentCode of every level but the sub client's: the group code, empty for a client without a group.
[[nodiscard]] CodeText ParentCodeOf(const tagOrderInfoForSurv& order, const tagSurveillanceInfo& request);

/// NCDEX prices count in units of priceMultiplier / 10000; a part of half a paisa or more rounds up.
void ScaleNcdexPrices(tagOrderInfoForSurv& order);

}  // namespace surv
