#pragma once

#include "categories/category.h"

namespace surv {

/// The position that a conversion takes its quantity from, before and after it.
struct ConversionTrial {
    CSurvPosition before;
    CSurvPosition after;
};

/// The position that holds what the order converts: of margin orders for a conversion to delivery, of deliveries for
/// one to margin. Null when there is none. REQUIRES: a conversion.
[[nodiscard]] const CSurvPosition* FindConversionSource(const CSurveillanceCategory& category,
                                                        const tagOrderInfoForSurv& order);

/// Takes the order's quantity out of a copy of its source. False: the category hasn't got that much free.
/// REQUIRES: a conversion with its price.
[[nodiscard]] bool TryConversion(const CSurveillanceCategory& category, const tagOrderInfoForSurv& order,
                                 ConversionTrial& conversion);

/// What the conversion frees on the side it takes from, rupees.
[[nodiscard]] double ConversionMargin(const tagOrderInfoForSurv& order, const ConversionTrial& conversion);

}  // namespace surv
