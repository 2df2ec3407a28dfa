#pragma once

#include <span>

#include "limits/level_trial.h"
#include "surveillance/containers.h"

namespace surv {

/// Makes the order real at one level: the flat positions take it, a level that the walk passed over runs its accounts,
/// and the touched rows go to limitRows. Where the level's positions don't move its rows get their images back.
/// `rows` are those that the level touched.
void CommitOrder(LevelTrial& level, std::span<CSurvLimitEntry* const> rows, bool updateAllLevels, CPtrList* limitRows);

}  // namespace surv
