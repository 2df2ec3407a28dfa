#pragma once

#include <span>

#include "limits/level_trial.h"
#include "surveillance/containers.h"

namespace surv {

/// Makes the order real at the levels, one after the other: the flat positions take it, and a level that the walk
/// passed over runs its accounts. Then the trials of the rows that they have touched end: they go to limitRows, which
/// may be null; where a level's positions don't move they get their images back instead.
void CommitLevels(std::span<LevelTrial* const> levels, const TrialBuffers& buffers, bool updateAllLevels,
                  CPtrList* limitRows);

}  // namespace surv
