// The margin of cash positions: formed once at the start, and moved when a client's preference changes.

#include <algorithm>
#include <array>

#include "limits/row_masks.h"
#include "reference/preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

/// A cash exchange, and where a category keeps its margin.
struct CashMarket {
    std::int16_t exchangeMask;
    Segment segment;
    CashMargin CSurveillanceCategory::*margin;

    [[nodiscard]] constexpr std::int16_t MarketSegment() const { return static_cast<std::int16_t>(segment); }
};
constexpr CashMarket kNse{kMaskNseCash, Segment::kNseEquity, &CSurveillanceCategory::cashMarginNse};
constexpr CashMarket kBse{kMaskBseCash, Segment::kBseEquity, &CSurveillanceCategory::cashMarginBse};

/// An order that names nothing but a position, its market and a preference.
tagOrderInfoForSurv OrderOf(const CashMarket& market, const CSurvPosition& position, const RiskPreference& preference,
                            const SurvContext& context) {
    tagOrderInfoForSurv order;
    order.marketSegment = market.MarketSegment();
    order.periodicity = PeriodicityOf(order.marketSegment, Period::kExpiry);
    order.token = position.GetToken();
    order.riskPreference = preference;
    if (const tagExposureScripSpecificInfo* scrip = position.data.scripInfo) {
        const SeriesKey series(market.exchangeMask, FieldText(scrip->contract.series));
        order.compulsoryDelivery = context.products.compulsoryDeliverySeries.Contains(series);
    }
    context.stores.TakeVarMargin(order);
    return order;
}

/// Every position but one of margin funding: raised by the client's add-on.
CashMargin CashMarginOf(const CSurvPosition& position, const tagOrderInfoForSurv& order) {
    constexpr double kMillion = 1000000.0;
    const double addOn = order.riskPreference.marginAddOnFactor;
    const auto raised = [addOn](double margin) { return margin + margin * addOn / kMillion; };
    return {raised(position.GetCashMargin(order)), raised(position.GetTradedCashMargin(order)),
            raised(position.GetMaxCashMargin(order))};
}
/// Margin funding has a rate of its own, and no add-on.
CashMargin FundingMarginOf(const CSurvPosition& position, const tagOrderInfoForSurv& order) {
    return {position.GetExtraCashMargin(order), position.GetTradedExtraCashMargin(order),
            position.GetMaxExtraCashMargin(order)};
}

bool IsFunding(const PositionKey& key, const CashMarket& market) {
    return key.family == PositionFamily::kMtf && key.exchangeMask == market.exchangeMask;
}
bool IsPlain(const PositionKey& key, const CashMarket& market) {
    return key.family == PositionFamily::kPlain && key.exchangeMask == market.exchangeMask;
}

void Add(CashMargin& sum, const CashMargin& terms, double sign = 1.0) {
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += sign * terms[i];
}

/// The rows across all securities of every settlement mask that covers the market take the figures on top.
void AddToRows(const CSurveillanceCategory& category, const CashMarket& market, const CashMargin& figures) {
    for (const std::int16_t mask : MasksOfScope(market.MarketSegment()).expiry) {
        CSurvLimitEntry* entry = category.FindRow(mask, kAllSecurities);
        if (!entry) continue;
        BKSurveillanceLimitDefTag& row = entry->Row();
        row.usedMarginOrder += figures[0];
        row.usedMarginTraded += figures[1];
        row.usedMarginMax += figures[2];
    }
}

/// What a category's margin on a market moves by when its own preference becomes another. Delivery and two-leg
/// positions aren't margined by it.
CashMargin ChangeOf(const CSurveillanceCategory& category, const CashMarket& market, const RiskPreference& now,
                    const RiskPreference& before) {
    const SurvContext& context = category.Context();
    CashMargin change{};
    for (const auto& entry : category.Book(Period::kExpiry).exposures.positions) {
        const CSurvPosition& position = *entry.value;
        if (position.GetMarketSegment() != market.MarketSegment()) continue;
        const bool funding = IsFunding(entry.key, market);
        if (!funding && !IsPlain(entry.key, market)) continue;
        tagOrderInfoForSurv order = OrderOf(market, position, now, context);
        const auto margin = funding ? &FundingMarginOf : &CashMarginOf;
        CashMargin moved = margin(position, order);
        order.riskPreference = before;
        Add(moved, margin(position, order), -1.0);
        Add(change, moved);
    }
    return change;
}

}  // namespace

void CSurveillanceManager::RecomputeCashMargin(std::int16_t exchangeMask) {
    const CashMarket& market = exchangeMask == kMaskNseCash ? kNse : kBse;
    for (const auto& each : categories) {
        CSurveillanceCategory& category = *each.value;
        const RiskPreference preference = EffectivePreference(category, market.exchangeMask);
        CashMargin& margin = category.*market.margin;
        for (const auto& entry : category.Book(Period::kExpiry).exposures.positions) {
            const CSurvPosition& position = *entry.value;
            if (LimitMaskToExchangeMask(position.data.limitMask) != market.exchangeMask) continue;
            const tagOrderInfoForSurv order = OrderOf(market, position, preference, context_);
            Add(margin,
                IsFunding(entry.key, market) ? FundingMarginOf(position, order) : CashMarginOf(position, order));
        }
        AddToRows(category, market, margin);
    }
}

std::int16_t CSurveillanceManager::RecomputeCashVaRMargin(std::int32_t exchange, std::string_view categoryCode,
                                                          const tagClientRiskPreferenceInfoForSurv& newPreference,
                                                          const tagClientRiskPreferenceInfoForSurv& oldPreference) {
    if (exchange != kMaskNseCash && exchange != kMaskBseCash) return kDone;
    const CashMarket& market = exchange == kMaskNseCash ? kNse : kBse;
    const RiskPreference now = TravellingPart(newPreference);
    const RiskPreference before = TravellingPart(oldPreference);
    return ForCategories(categoryCode, [&](CSurveillanceCategory& category) {
        const CashMargin change = ChangeOf(category, market, now, before);
        Add(category.*market.margin, change);
        AddToRows(category, market, change);
    });
}

}  // namespace surv
