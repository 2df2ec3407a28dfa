#include "limits/scrip_trial.h"

namespace surv {
namespace {

/// Worth of a quantity at a price; `weighted`: by lot on MCX when the house weights so.
double OrderValue(const tagOrderInfoForSurv& order, bool weighted, std::int32_t quantity, std::int32_t price) {
    constexpr std::int16_t kMcxFutures = 7;
    if (weighted && order.marketSegment == kMcxFutures && order.lotWeighting == LotWeighting::kOn) {
        return LotWeightedValue(order.marginRates, quantity, price);
    }
    return static_cast<double>(quantity) * static_cast<double>(price);
}

}  // namespace

void ScripTrial::FormFigures(const tagOrderInfoForSurv& order, GrossMode mode) {
    const bool judgesExposures = set == RuleSet::kGeneral || set == RuleSet::kReport;
    if (judgesExposures) {
        figuresBefore = ExposureFigures::Of(before, mode);
        figuresAfter = ExposureFigures::Of(after, mode);
        grossFiguresBefore = ExposureFigures::Of(grossBefore, mode);
        grossFiguresAfter = ExposureFigures::Of(grossAfter, mode);
    }
    positionMargin = PositionMarginChange(set, order, before, after);
    squareOff = IsSquareOffOrder(order, after);
    grossSquareOff = IsSquareOffOrder(order, grossAfter);
    newValue = OrderValue(order, judgesExposures, order.quantity, order.price);
    oldValue = OrderValue(order, judgesExposures, order.prevQuantity, order.prevPrice);
}

bool IsSquareOffOrder(const tagOrderInfoForSurv& order, const CSurvPosition& after) {
    switch (order.buySell) {
        case kBuy: return after.data.orderBuyQty - after.data.tradedSellQty <= 0;
        case kSell: return after.data.orderSellQty - after.data.tradedBuyQty <= 0;
        default: return true;
    }
}

}  // namespace surv
