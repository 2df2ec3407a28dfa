#pragma once

#include <span>

#include "limits/level_trial.h"
#include "surveillance/containers.h"

namespace surv {

/// Makes the order real at one level: the flat positions take it, and a level that the walk passed over runs its
/// accounts.
void CommitOrder(LevelTrial& level, bool updateAllLevels);

/// Ends the trial of the rows that a level has touched: they go to limitRows, which may be null. Where the level's
/// positions don't move they get their images back instead.
void CommitRows(const LevelTrial& level, std::span<CSurvLimitEntry* const> rows, bool updateAllLevels,
                CPtrList* limitRows);

}  // namespace surv
