#pragma once

#include "positions/position.h"
#include "shared/settings.h"

namespace surv {

/// Moves the MTM figures of a limit row by what a change of one position makes of them. `before` and `after` are the
/// position, of which this takes copies.
void UpdateRowMtm(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, CSurvPosition before,
                  CSurvPosition after, const Settings& settings);

}  // namespace surv
