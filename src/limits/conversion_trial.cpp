#include "limits/conversion_trial.h"

#include "limits/margin_change.h"

namespace surv {
namespace {

/// A delivery that is bought may already stand for sale.
std::int64_t FreeQuantity(const tagOrderInfoForSurv& order, const tagSurvPositionData& source) {
    if (!order.IsBuy()) return source.tradedSellQty;
    const bool ofDelivery = order.productType == product::kConvertToMargin;
    return source.tradedBuyQty - (ofDelivery ? source.orderSellQty : 0);
}

}  // namespace

const CSurvPosition* FindConversionSource(const CSurveillanceCategory& category, const tagOrderInfoForSurv& order) {
    const bool toMargin = order.productType == product::kConvertToMargin;
    const PositionFamily family = toMargin ? PositionFamily::kDelivery : PositionFamily::kPlain;
    return category.Book(Period::kExpiry).exposures.Find({order.ExchangeMask(), family, order.token});
}

bool TryConversion(const CSurveillanceCategory& category, const tagOrderInfoForSurv& order,
                   ConversionTrial& conversion) {
    const CSurvPosition* const source = FindConversionSource(category, order);
    if (!source || FreeQuantity(order, source->data) < order.quantity) return false;
    conversion.before = *source;
    conversion.after = *source;
    tagOrderInfoForSurv leaving = order;
    leaving.prevQuantity = order.quantity;
    leaving.prevPrice = order.price;
    leaving.quantity = 0;
    leaving.price = 0;
    conversion.after.ApplyChange(leaving);
    return true;
}

double ConversionMargin(const tagOrderInfoForSurv& order, const ConversionTrial& conversion) {
    if (order.productType == product::kConvertToMargin) {
        return NetValueChange(conversion.before, conversion.after).Largest();
    }
    return CashMarginChange(order, conversion.before, conversion.after).Raised(order.riskPreference).Largest();
}

}  // namespace surv
