#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/hash_map.h"
#include "shared/order.h"

namespace surv {

/// What one exchange has done today with the shares of a holding. Values are paise.
struct HoldingSide {
    std::int64_t blockedQty = 0;     ///< shares at the depository that today's sales use up
    std::int64_t sarQty = 0;         ///< on the sale-against-receipt account
    std::int64_t sarBlockedQty = 0;  ///< the part of it that is used up
    std::int64_t orderBuyQty = 0;
    std::int64_t orderSellQty = 0;
    std::int64_t tradedBuyQty = 0;
    std::int64_t tradedSellQty = 0;
    double orderBuyValue = 0;
    double orderSellValue = 0;
    double tradedBuyValue = 0;
    double tradedSellValue = 0;
};

/// What the row that made a holding says beside it: read by nobody here, and given back as it came.
struct HoldingCarried {
    char carriedText1[16] = {};
    char carriedText2[16] = {};
    std::int32_t carriedLong1 = 0;
    std::int32_t carriedLong2 = 0;
    char carriedText3[36] = {};
    char carriedText4[51] = {};
};

/// Shares of one ISIN that one category holds at the depository.
struct Holding {
    FixedText<8> categoryCode;  ///< empty: made by a call that was cut short, and shown nowhere
    FixedText<16> isinCode;
    std::int64_t holdingQty = 0;
    std::int64_t collateralQty = 0;  ///< that counts as collateral
    double collateralPrice = 0;      ///< paise
    double collateralValue = 0;      ///< paise, after the haircut
    double saleCredit = 0;           ///< paise
    std::int32_t haircutRate = 0;    ///< ten-thousandths
    HoldingSide nse;
    HoldingSide bse;
    HoldingCarried carried;

    [[nodiscard]] bool IsBlank() const { return categoryCode.Empty(); }

    /// REQUIRES: a cash segment.
    [[nodiscard]] HoldingSide& Of(std::int16_t marketSegment) {
        return marketSegment == static_cast<std::int16_t>(Segment::kNseEquity) ? nse : bse;
    }
    [[nodiscard]] const HoldingSide& Of(std::int16_t marketSegment) const {
        return const_cast<Holding*>(this)->Of(marketSegment);
    }

    /// What the free shares are worth as collateral, paise; below 0 when more is blocked than is held, and 0 when the
    /// price is no number to reckon with.
    [[nodiscard]] double FormCollateralValue() const {
        const std::int64_t free = holdingQty - (nse.blockedQty + bse.blockedQty);
        const auto quantity = static_cast<double>(std::min(free, collateralQty));
        const double value = quantity * collateralPrice - haircutRate / 10000.0 * quantity * collateralPrice;
        return std::isfinite(value) ? value : 0.0;
    }
    /// What today's sales bring beyond the day's buys, paise, each exchange for itself.
    [[nodiscard]] double FormSaleCredit() const {
        return std::max(0.0, nse.tradedSellValue - nse.orderBuyValue) +
               std::max(0.0, bse.tradedSellValue - bse.orderBuyValue);
    }
};

using Holdings = HashMap<FixedText<16>, Holding>;  ///< by ISIN

}  // namespace surv
