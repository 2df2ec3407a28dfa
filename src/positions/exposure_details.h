#pragma once

#include <cstdint>
#include <string>

#include "platform/hash_map.h"
#include "platform/undo_log.h"
#include "positions/position.h"
#include "positions/position_key.h"

namespace surv {

/// The flat view of a category for one period: one position per scrip and product, netted across all accounts.
/// A position lives from its first order or row to the end of the category.
class CExposureDetails {
 public:
    using PositionMap = HashMap<PositionKey, CSurvPosition>;

    PositionMap positions{53};
    std::int16_t errorCode = 0;  ///< -100 after a failed look-up
    std::string errorText;

    [[nodiscard]] CSurvPosition* Find(const PositionKey& key) const { return positions.Find(key); }

    // Changes -----------------------------------------------------------------------------------------------
    /// The order's position, or a new one, takes the change. Its image goes to the log, for a call that is cut short.
    /// known: the position, if the caller has found it; null looks it up.
    CSurvPosition& CommitPosition(const tagOrderInfoForSurv& order, CSurvPosition* known, CUndoLog& undo);
    /// As CommitPosition, for the position under a key of the caller's.
    CSurvPosition& CommitAt(const PositionKey& key, const tagOrderInfoForSurv& order, CUndoLog& undo);
    /// As CommitPosition; leg 1 of a two-leg order takes the two-leg arithmetic.
    CSurvPosition& CommitLegPosition(const tagOrderInfoForSurv& order, int leg, CUndoLog& undo);
    /// A position row: a new key takes its figures, an existing one adds them.
    void AddRow(const BKExposureTag& row, const tagSurvPositionData& data, CUndoLog& undo);

    // Figures: a missing key gives 0, -1 and the error text ---------------------------------------------------
    std::int16_t GetGrossExposure(Selector side, const PositionKey& key, double& out);
    std::int16_t GetNetExposure(Selector side, const PositionKey& key, double& out);
    std::int16_t GetNetSaleExposure(Selector side, const PositionKey& key, double& out);
    std::int16_t GetNetPosition(Selector side, const PositionKey& key, double& out);
    std::int16_t GetTurnover(Selector side, const PositionKey& key, double& out);
    std::int16_t GetMaxGrossExposure(const PositionKey& key, double& out);
    std::int16_t GetMaxNetExposure(const PositionKey& key, double& out);
    std::int16_t GetMaxNetSaleExposure(const PositionKey& key, double& out);
    std::int16_t GetMaxNetPosition(const PositionKey& key, double& out);
    std::int16_t GetMaxTurnover(const PositionKey& key, double& out);
    std::int16_t GetMTM(const PositionKey& key, LotWeighting weighting, double& out);
    std::int16_t GetPendingOrderValue(const PositionKey& key, double& out);

 private:
    CSurvPosition* FindOrReport(const PositionKey& key);
    template <class Figure>
    std::int16_t Read(const PositionKey& key, double& out, Figure figure);
};

}  // namespace surv
