#include "limits/margin_change.h"

namespace surv {
namespace {

constexpr double kPaisePerRupee = 100.0;
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

/// The figures of an equity position depend on the row they are for; an order of equity has a cash mask of its own.
struct CashFigures {
    double (CSurvPosition::*orderSide)(const tagOrderInfoForSurv&) const;
    double (CSurvPosition::*tradedSide)(const tagOrderInfoForSurv&) const;
    double (CSurvPosition::*worst)(const tagOrderInfoForSurv&) const;
};
constexpr CashFigures kByRate{&CSurvPosition::GetCashMargin, &CSurvPosition::GetTradedCashMargin,
                              &CSurvPosition::GetMaxCashMargin};
constexpr CashFigures kFunded{&CSurvPosition::GetExtraCashMargin, &CSurvPosition::GetTradedExtraCashMargin,
                              &CSurvPosition::GetMaxExtraCashMargin};

MarginChange ChangeOf(const CashFigures& figures, const tagOrderInfoForSurv& order, const CSurvPosition& before,
                      const CSurvPosition& after) {
    const auto change = [&](auto figure) { return (after.*figure)(order) - (before.*figure)(order); };
    return {change(figures.orderSide), change(figures.tradedSide), change(figures.worst)};
}

/// As on a cash settlement row, whatever mask the order has.
MarginChange ChangeOnCashRow(const CashFigures& figures, tagOrderInfoForSurv order, const CSurvPosition& before,
                             const CSurvPosition& after) {
    order.periodicity = kCashSettlement;
    return ChangeOf(figures, order, before, after);
}

}  // namespace

MarginChange NetValueChange(const CSurvPosition& before, const CSurvPosition& after) {
    const auto change = [&](auto value) { return (value(after) - value(before)) / kPaisePerRupee; };
    return {change([](const CSurvPosition& p) { return NetValue(p, Selector::kOrderSide); }),
            change([](const CSurvPosition& p) { return NetValue(p, Selector::kTradedSide); }), change(&WorstNetValue)};
}

MarginChange CashMarginChange(const tagOrderInfoForSurv& order, const CSurvPosition& before,
                              const CSurvPosition& after) {
    return ChangeOnCashRow(kByRate, order, before, after);
}

MarginChange PositionMarginChange(RuleSet set, const tagOrderInfoForSurv& order, const CSurvPosition& before,
                                  const CSurvPosition& after) {
    const bool cash = IsCashExchange(order.ExchangeMask());
    switch (set) {
        case RuleSet::kDelivery: return NetBuyChange(before, after);
        case RuleSet::kMarginPlus: return NetValueChange(before, after);
        case RuleSet::kMtf:
            return cash ? ChangeOf(kFunded, order, before, after) : ChangeOnCashRow(kFunded, order, before, after);
        case RuleSet::kGeneral: break;
        case RuleSet::kReport: return {};  // judges a row as it stood
    }
    if (cash) return ChangeOf(kByRate, order, before, after);
    // A derivative is margined in the tree; only a delivery of one meets rows that margin positions.
    return order.IsDelivery() ? ChangeOnCashRow(kByRate, order, before, after) : MarginChange{};
}

}  // namespace surv
