#pragma once

#include "limits/level_trial.h"
#include "limits/rule_set.h"
#include "surveillance/containers.h"

namespace surv {

/// What a category says about an order.
struct CategoryAnswer {
    bool passed = true;
    bool asked = false;  ///< a store has answered
    RuleAnswer refusal;  ///< of the last store that refused; in a probe also when a later one has passed
};

/// May this order stand at this category? Tries the order on the positions and the account, and asks every limit row
/// that covers it, narrowest mask first, daily before expiry. On a pass the rows and the account hold the order as a
/// trial, with their images in the undo log; the flat positions don't hold it yet. After a refusal the category
/// is as it was before. In a probe breach rows are appended to limitRows as the stores answer.
[[nodiscard]] CategoryAnswer CheckCategory(LevelTrial& level, TrialBuffers& buffers, CheckMode mode,
                                           CPtrList* limitRows);

/// Takes the order in without judging it: rows and account as above, no refusal. Rows move only where the category is
/// active: all levels are updated, or its lastLevel is 3, 5 or 8.
void UpdateCategory(LevelTrial& level, TrialBuffers& buffers, bool updateAllLevels);

}  // namespace surv
