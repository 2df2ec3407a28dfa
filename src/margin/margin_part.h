#pragma once

// The parts that a category's margin is made of, and the sums that travel into its limit rows.

#include <array>
#include <cstdint>

#include "surveillance/codes.h"

namespace surv {

/// Derivative markets that a category has had an order or a row of. A market never seen is never recomputed.
struct MarketsSeen {
    bool ncdex = false;          ///< seenNcdex
    bool nseDerivative = false;  ///< seenNseDerivative
    bool bseDerivative = false;  ///< seenBseDerivative
    bool mcx = false;            ///< seenMcx

    [[nodiscard]] bool Has(std::int16_t exchangeMask) const {
        switch (exchangeMask) {
            case kMaskNcdex: return ncdex;
            case kMaskNseDerivatives: return nseDerivative;
            case kMaskBseDerivatives: return bseDerivative;
            case kMaskMcx: return mcx;
            default: return false;
        }
    }
};

/// How an order comes to a category.
enum class OrderRoad : std::uint8_t { kCheck, kUpdate };

/// Margin of a category's cash positions on one exchange: order side, traded side, worst case. Rupees.
using CashMargin = std::array<double, 3>;

/// The seven figures of a category that travel into a limit row. Rupees.
struct MarginSums {
    double orderSide = 0;
    double tradedSide = 0;
    double worst = 0;
    double exposure = 0;
    double premiumOrderSide = 0;
    double premiumTradedSide = 0;
    double premiumWorst = 0;
};

/// What a row's margin is put together from. Each part has a limit row of its own.
enum class MarginPart : std::uint8_t { kNseCash, kNseDerivatives, kBseCash, kBseDerivatives, kMcx, kNcdex };
inline constexpr std::size_t kMarginPartCount = 6;

}  // namespace surv
