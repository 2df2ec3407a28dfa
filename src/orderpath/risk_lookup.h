#pragma once

#include "orderpath/hierarchy.h"

namespace surv {

/// Derivatives that are margined by scan: the order needs the risk parameters of its contract.
[[nodiscard]] bool NeedsRiskParameters(const tagOrderInfoForSurv& order);

/// Takes the order's risk parameters from the live table; an underlying stays also where its contract is missing.
/// False: the table hasn't got the underlying or the contract. REQUIRES: NeedsRiskParameters.
[[nodiscard]] bool FindRiskParameters(const SurvContext& context, tagOrderInfoForSurv& order);

/// Enters the order's categories among those that the contract reaches, where contracts have risk parameters.
void RegisterContract(CSurveillanceManager& manager, const CHierarchy& hierarchy, const tagOrderInfoForSurv& order);

}  // namespace surv
