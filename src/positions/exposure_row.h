#pragma once

// Between position rows, as the host loads and reads them, and the library's own records.

#include "positions/position.h"

namespace surv {

/// Copies the scrip of a row into an order.
void FillExposureValuesToOrderInfo(const BKExposureTag& row, tagOrderInfoForSurv& order);

/// Copies the holder of a row into an order, and the product that the row names.
void FillOrderFromRow(tagOrderInfoForSurv& order, const BKExposureTag& row);

/// The figures of a row, with the scrip and the owner of the order that was filled from it.
[[nodiscard]] tagSurvPositionData PositionDataOf(const BKExposureTag& row, const tagOrderInfoForSurv& order);

/// Fills a row from a position. Without an owner or a scrip their fields stay as they are; a quantity that a row can't
/// hold comes out as the nearest that it can.
void FillRowFromPosition(const tagSurvPositionData& data, BKExposureTag& row);

}  // namespace surv
