#pragma once

#include "orderpath/hierarchy.h"

namespace surv {

/// Derivatives that are margined by scan: the order needs the risk parameters of its contract.
[[nodiscard]] bool NeedsRiskParameters(const tagOrderInfoForSurv& order);

/// Takes the order's risk parameters from the live table, and enters its categories among those that the contract
/// reaches. False: the table hasn't got the underlying or the contract. REQUIRES: NeedsRiskParameters.
[[nodiscard]] bool TakeRiskParameters(CSurveillanceManager& manager, const CHierarchy& hierarchy,
                                      tagOrderInfoForSurv& order);

}  // namespace surv
