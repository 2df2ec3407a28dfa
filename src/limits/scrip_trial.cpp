#include "limits/scrip_trial.h"

namespace surv {
namespace {

/// Worth of a quantity at a price, by lot on MCX when the house weights so.
double OrderValue(const tagOrderInfoForSurv& order, std::int32_t quantity, std::int32_t price) {
    constexpr std::int16_t kMcxFutures = 7;
    if (order.marketSegment == kMcxFutures && order.lotWeighting == LotWeighting::kOn) {
        return LotWeightedValue(order.marginRates, quantity, price);
    }
    return static_cast<double>(quantity) * static_cast<double>(price);
}

}  // namespace

void ScripTrial::FormFigures(const tagOrderInfoForSurv& order, GrossMode mode) {
    figuresBefore = ExposureFigures::Of(before, mode);
    figuresAfter = ExposureFigures::Of(after, mode);
    grossFiguresBefore = ExposureFigures::Of(grossBefore, mode);
    grossFiguresAfter = ExposureFigures::Of(grossAfter, mode);
    squareOff = IsSquareOffOrder(order, after);
    grossSquareOff = IsSquareOffOrder(order, grossAfter);
    newValue = OrderValue(order, order.quantity, order.price);
    oldValue = OrderValue(order, order.prevQuantity, order.prevPrice);
}

bool IsSquareOffOrder(const tagOrderInfoForSurv& order, const CSurvPosition& after) {
    switch (order.buySell) {
        case kBuy: return after.data.orderBuyQty - after.data.tradedSellQty <= 0;
        case kSell: return after.data.orderSellQty - after.data.tradedBuyQty <= 0;
        default: return true;
    }
}

}  // namespace surv
