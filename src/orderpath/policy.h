#pragma once

#include <optional>

#include "orderpath/intake.h"
#include "orderpath/refusal.h"

namespace surv {

class CSurveillanceManager;

/// What an order may be, before any level is asked: the tests run in their order, the first that refuses answers.
/// REQUIRES: parentCode of the order is set.
[[nodiscard]] std::optional<Refusal> TestOrderPolicy(const CSurveillanceManager& manager,
                                                     const tagSurveillanceInfo& request, const OrderIntake& intake);

}  // namespace surv
