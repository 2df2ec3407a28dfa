#pragma once

#include "limits/scrip_trial.h"
#include "shared/settings.h"

namespace surv {

/// The MTM figures of a change of one position, of which this takes copies.
[[nodiscard]] MtmFigures FormMtmFigures(const tagOrderInfoForSurv& order, CSurvPosition before, CSurvPosition after,
                                        const Settings& settings);

/// Moves the MTM figures of a limit row. marginFlags tells whether the client's profits count.
void UpdateRowMtm(BKSurveillanceLimitDefTag& row, std::uint8_t marginFlags, const MtmFigures& mtm);

}  // namespace surv
