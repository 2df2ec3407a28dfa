#pragma once

// One account's position in one scrip, found by scrip first: who holds it, and whose MTM a price moves.

#include "positions/accounts.h"

namespace surv {

class CClientPosition {
 public:
    explicit CClientPosition(CClientExposure* account) : clientExposure(account) {}

    CSurvPosition position;
    CClientExposure* clientExposure;  ///< the account of the same period that the position belongs to; not owned

    /// Adds the order's new figures; only a conversion takes its old ones out. The position gets the account's owner.
    void ApplyOrder(const tagOrderInfoForSurv& order, const TreeContext& context);
    /// Adds the figures of a row.
    void AddData(const tagSurvPositionData& row, const TreeContext& context);
    /// A new price: the account moves its sums before the position takes it.
    void ApplyPrice(const tagOrderInfoForSurv& order, const Settings& settings);
};

/// dailyClientPositions or expiryClientPositions of a category: scrip, then account.
class CClientPositions {
 public:
    using Holders = HashMap<AccountKey, CClientPosition>;
    HashMap<PositionKey, Holders> scrips{53};

    /// Whether an order's event counts in the positions by client.
    [[nodiscard]] static bool Counts(const tagOrderInfoForSurv& order, const Settings& settings);
    /// RecordClientPosition. The order has the codes of `account`, which is of the same period.
    void RecordOrder(const tagOrderInfoForSurv& order, Period period, CClientExposure& account,
                     const TreeContext& context);
    /// RecordRowPosition; order and account as above.
    void RecordRow(const tagSurvPositionData& row, const tagOrderInfoForSurv& order, CClientExposure& account,
                   const TreeContext& context);

 private:
    CClientPosition& FindOrMake(const PositionKey& key, const tagOrderInfoForSurv& order, CClientExposure& account);
};

}  // namespace surv
