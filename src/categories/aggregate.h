#pragma once

// Aggregate accounts: at the levels that see only the sum of a holder's accounts, an order or a row also runs under a
// shorter code with a '+' behind it.

#include <cstdint>

#include "shared/order.h"
#include "shared/settings.h"

namespace surv {

/// A level as these rules see it.
struct LevelPlace {
    std::int16_t level = -1;  ///< lastLevel, composite levels resolved
    std::int16_t secondLevel = -1;
};

enum class AggregateForm : std::uint8_t {
    kNone,
    kDealer,  ///< six characters and a '+'
    kGroup,   ///< ten characters and a '+'
};

/// The form in which an order or a row also stands at a level.
[[nodiscard]] AggregateForm AggregateFormOf(const tagOrderInfoForSurv& order, const LevelPlace& place,
                                            const Settings& settings);

/// Gives the order the codes of its aggregate account. REQUIRES: form is not kNone.
void TakeAggregateCodes(tagOrderInfoForSurv& order, AggregateForm form);

/// Whether the level records the holder's own account by client, when it has no aggregate one.
[[nodiscard]] bool RecordsOwnAccount(const tagOrderInfoForSurv& order, const LevelPlace& place,
                                     const Settings& settings);

}  // namespace surv
