#include "limits/holding_trial.h"

#include "platform/numeric.h"

namespace surv {
namespace {

bool TouchesHolding(const tagOrderInfoForSurv& order) {
    return order.deliveryLevel && order.IsDelivery() && IsCashSegment(order.marketSegment) && !order.isinCode.Empty();
}

/// Buys of today don't cover sales: all must come from the depository.
bool IsBuyCoverBarred(const tagOrderInfoForSurv& order) { return order.nriClient || order.compulsoryDelivery; }

/// Today's totals of the order's exchange follow the scrip's position.
void MoveTotals(HoldingSide& side, const tagSurvPositionData& before, const tagSurvPositionData& after) {
    side.orderBuyQty += after.orderBuyQty - before.orderBuyQty;
    side.orderSellQty += after.orderSellQty - before.orderSellQty;
    side.tradedBuyQty += after.tradedBuyQty - before.tradedBuyQty;
    side.tradedSellQty += after.tradedSellQty - before.tradedSellQty;
    side.orderBuyValue += after.orderBuyValue - before.orderBuyValue;
    side.orderSellValue += after.orderSellValue - before.orderSellValue;
    side.tradedBuyValue += after.tradedBuyValue - before.tradedBuyValue;
    side.tradedSellValue += after.tradedSellValue - before.tradedSellValue;
}

/// What is sold beyond the buys that cover it uses up the receipts first, then the depository; an NRI's sales the
/// depository alone.
void BlockSales(HoldingSide& side, const tagOrderInfoForSurv& order) {
    side.blockedQty = 0;
    side.sarBlockedQty = 0;
    const std::int64_t net = side.orderSellQty - (IsBuyCoverBarred(order) ? 0 : side.tradedBuyQty);
    if (net <= 0) return;
    if (!order.nriClient) side.sarBlockedQty = std::min(net, side.sarQty);
    side.blockedQty = net - side.sarBlockedQty;
}

void TakeOrder(Holding& holding, const tagOrderInfoForSurv& order, const CSurvPosition& before,
               const CSurvPosition& after) {
    HoldingSide& side = holding.Of(order.marketSegment);
    MoveTotals(side, before.data, after.data);
    BlockSales(side, order);
    holding.collateralValue = holding.FormCollateralValue();
    holding.saleCredit = holding.FormSaleCredit();
}

/// The holding's quantities as the sell rule asks for them, before the order.
void FillQuantities(tagOrderInfoForSurv& order, const Holding& holding) {
    const HoldingSide& side = holding.Of(order.marketSegment);
    const std::int64_t set = holding.holdingQty + (order.nriClient ? 0 : side.sarQty);
    order.dpSetQty = ClampToInt32(static_cast<double>(set));
    order.dpPrevBlockedQty =
        ClampToInt32(static_cast<double>(holding.nse.blockedQty + holding.bse.blockedQty + side.sarBlockedQty));
    const std::int64_t free = IsBuyCoverBarred(order) ? 0 : side.tradedBuyQty - side.orderSellQty;
    order.dpTodayFreeQty = ClampToInt32(static_cast<double>(std::max<std::int64_t>(free, 0)));
}

}  // namespace

void TryHolding(const CSurveillanceCategory& category, tagOrderInfoForSurv& order, const CSurvPosition& before,
                const CSurvPosition& after) {
    order.dpSetQty = 0;
    order.dpPrevBlockedQty = 0;
    order.dpTodayFreeQty = 0;
    order.collateralDelta = 0;
    order.saleCreditDelta = 0;
    if (!TouchesHolding(order)) return;
    const Holding* const held = category.holdingsByIsin.Find(order.isinCode);
    Holding holding = held ? *held : Holding{};
    FillQuantities(order, holding);
    const double collateralBefore = holding.collateralValue;
    const double saleCreditBefore = holding.saleCredit;
    TakeOrder(holding, order, before, after);
    order.collateralDelta = holding.collateralValue - collateralBefore;
    order.saleCreditDelta = holding.saleCredit - saleCreditBefore;
}

void CommitHolding(CSurveillanceCategory& category, const tagOrderInfoForSurv& order, const CSurvPosition& before,
                   const CSurvPosition& after) {
    if (!TouchesHolding(order)) return;
    CUndoLog& undo = category.Context().undo;
    Holding& holding = category.holdingsByIsin.FindOrMake(order.isinCode);
    undo.Save(holding);
    undo.Save(category.collateralTotal);
    undo.Save(category.saleCreditTotal);
    if (holding.categoryCode.Empty()) {
        holding.categoryCode = order.levelCode;
        holding.isinCode = order.isinCode;
    }
    const double collateralBefore = holding.collateralValue;
    const double saleCreditBefore = holding.saleCredit;
    TakeOrder(holding, order, before, after);
    category.collateralTotal += holding.collateralValue - collateralBefore;
    category.saleCreditTotal += holding.saleCredit - saleCreditBefore;
}

}  // namespace surv
