#pragma once

#include <array>
#include <cstddef>

#include "categories/category.h"
#include "surveillance/containers.h"

namespace surv {

/// One category marks what it holds of one scrip: its limit rows of all securities take the change of MTM, and so do
/// its totals and the accounts behind its positions by client. Nothing else of the category is looked at.
///
/// The order names the scrip and has the new price and the preference in force; it outlives the mark.
class CCategoryMark {
 public:
    CCategoryMark(CSurveillanceCategory& category, const tagOrderInfoForSurv& order);

    /// Puts the rows that Move will move into a host's list, live ones or copies. If memory runs out nothing of the
    /// category has moved.
    void HandOut(CPtrList& changedRows);
    /// Moves every figure. Takes no memory.
    void Move();

 private:
    struct MovedRow {
        BKSurveillanceLimitDefTag* row;
        BKSurveillanceLimitDefTag* copy;  ///< the host's; null when it has none, or the live row
    };
    /// What one period holds of the scrip.
    struct Holding {
        CSurvPosition* own = nullptr;
        CSurvPosition* clientLevel = nullptr;
        std::array<MovedRow, kScopeOrder.size()> rows{};
        std::size_t rowCount = 0;
    };

    void FindRows(Period period, Holding& holding);
    void MoveRows(Holding& holding) const;
    void MoveTotal(Period period, const Holding& holding);
    void MoveAccounts(Period period);

    CSurveillanceCategory& category_;
    const tagOrderInfoForSurv& order_;
    const Settings& settings_;
    std::array<Holding, kPeriods.size()> holdings_;
};

}  // namespace surv
