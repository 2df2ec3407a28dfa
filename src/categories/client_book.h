#pragma once

#include <array>

#include "categories/account_lists.h"
#include "categories/totals.h"
#include "positions/client_position.h"

namespace surv {

/// What a category keeps by client for position screens and for the MTM of accounts, beside the sets that limits are
/// judged by. Only houses that hold positions by client have one.
class CClientBook {
 public:
    /// Of one period.
    struct Side {
        CClientPositions positions;  ///< dailyClientPositions, expiryClientPositions
        CAccountLists lists;
    };

    CMaskTotals totals;

    [[nodiscard]] Side& Of(Period period) { return sides_[period == Period::kDaily ? 0 : 1]; }
    [[nodiscard]] const Side& Of(Period period) const { return sides_[period == Period::kDaily ? 0 : 1]; }

 private:
    std::array<Side, 2> sides_;
};

}  // namespace surv
