#include "limits/margin_change.h"

namespace surv {
namespace {

constexpr double kPaisePerRupee = 100.0;
/// Equity margin figures are those of a cash settlement row, on whatever row they count.
constexpr std::int16_t kCashSettlement = 3;

double NetValue(const CSurvPosition& position, Selector side) {
    return position.GetBuyValue(side) - position.GetSellValue(side);
}

/// The largest of the four differences between a side's buys and a side's sells, paise.
double WorstNetValue(const CSurvPosition& position) {
    const tagSurvPositionData& d = position.data;
    return std::max(std::max(d.orderBuyValue - d.orderSellValue, d.tradedBuyValue - d.tradedSellValue),
                    std::max(d.orderBuyValue - d.tradedSellValue, d.tradedBuyValue - d.orderSellValue));
}

double NetBought(double value) { return std::max(value, 0.0); }

/// Only what is bought beyond what is sold takes margin.
MarginChange NetBuyChange(const CSurvPosition& before, const CSurvPosition& after) {
    const auto change = [&](auto value) {
        return (NetBought(value(after)) - NetBought(value(before))) / kPaisePerRupee;
    };
    return {change([](const CSurvPosition& p) { return NetValue(p, Selector::kOrderSide); }),
            change([](const CSurvPosition& p) { return NetValue(p, Selector::kTradedSide); }), change(&WorstNetValue)};
}

MarginChange ExtraCashMarginChange(tagOrderInfoForSurv order, const CSurvPosition& before, const CSurvPosition& after) {
    order.periodicity = kCashSettlement;
    return {after.GetExtraCashMargin(order) - before.GetExtraCashMargin(order),
            after.GetTradedExtraCashMargin(order) - before.GetTradedExtraCashMargin(order),
            after.GetMaxExtraCashMargin(order) - before.GetMaxExtraCashMargin(order)};
}

}  // namespace

MarginChange NetValueChange(const CSurvPosition& before, const CSurvPosition& after) {
    const auto change = [&](auto value) { return (value(after) - value(before)) / kPaisePerRupee; };
    return {change([](const CSurvPosition& p) { return NetValue(p, Selector::kOrderSide); }),
            change([](const CSurvPosition& p) { return NetValue(p, Selector::kTradedSide); }), change(&WorstNetValue)};
}

MarginChange CashMarginChange(tagOrderInfoForSurv order, const CSurvPosition& before, const CSurvPosition& after) {
    order.periodicity = kCashSettlement;
    return {after.GetCashMargin(order) - before.GetCashMargin(order),
            after.GetTradedCashMargin(order) - before.GetTradedCashMargin(order),
            after.GetMaxCashMargin(order) - before.GetMaxCashMargin(order)};
}

MarginChange PositionMarginChange(RuleSet set, const tagOrderInfoForSurv& order, const CSurvPosition& before,
                                  const CSurvPosition& after) {
    switch (set) {
        case RuleSet::kDelivery: return NetBuyChange(before, after);
        case RuleSet::kMarginPlus: return NetValueChange(before, after);
        case RuleSet::kMtf: return ExtraCashMarginChange(order, before, after);
        case RuleSet::kGeneral: break;
        case RuleSet::kReport: return {};  // judges a row as it stood
    }
    // A derivative is margined in the tree; only a delivery of one meets rows that margin positions.
    if (!IsCashExchange(order.ExchangeMask()) && !order.IsDelivery()) return {};
    return CashMarginChange(order, before, after);
}

}  // namespace surv
