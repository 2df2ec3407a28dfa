#pragma once

#include <array>
#include <cstdint>

#include "surveillance/codes.h"

namespace surv {

/// The products that a scrip may be closed to, and two that a holder's preference must allow.
struct ProductPolicy {
    std::int16_t productType;
    std::int16_t flag;  ///< in allowedProducts and productFlags
    const char* name;
    const char* ownAccountName;  ///< null: no preference is asked here
};
inline constexpr std::array kProducts{
    ProductPolicy{product::kMarginPlus, 4, "Margin+", "Margin+"},
    ProductPolicy{product::kMtf, 8, "MTF", "MarginFunding"},
    ProductPolicy{product::kDelivery, 2, "Delivery", nullptr},
    ProductPolicy{product::kAmoDelivery, 2, "Delivery", nullptr},
    ProductPolicy{product::kMargin, 1, "Margin", nullptr},
    ProductPolicy{product::kAmoMargin, 1, "Margin", nullptr},
};

}  // namespace surv
