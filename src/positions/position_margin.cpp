// The margins of a position, rupees. Rates are stored so that paise times rate over the divisor gives rupees.

#include "positions/position.h"
#include "positions/selector_view.h"

namespace surv {

using namespace measure;

namespace {

constexpr double kRateDivisor = 100'000'000.0;
constexpr double kMillionthsDivisor = 1'000'000.0;

/// prefMarginMode
constexpr std::int16_t kReplaces = 1;
constexpr std::int16_t kLargerCounts = 2;

/// The margin after a holder's preference: its own margin, or the larger of the two.
double Preferred(double margin, double preferred, const RiskPreference& preference) {
    if (preference.prefMarginMode == kReplaces) return preferred;
    if (preference.prefMarginMode == kLargerCounts) return std::max(margin, preferred);
    return margin;
}

/// For a rate that is no rate when 0: it compares with nothing.
double PreferredByRate(double margin, double value, double divisor, const RiskPreference& preference) {
    if (preference.prefMarginMode == kLargerCounts && preference.prefMarginRate == 0) return margin;
    return Preferred(margin, preference.prefMarginRate / divisor * value, preference);
}

/// Only whole percents of the preference count.
double PreferredPercent(double value, const RiskPreference& preference) {
    const std::int32_t wholePercents = preference.prefMarginRate / 10000;
    return wholePercents * value / 10000.0;
}

}  // namespace

double CSurvPosition::GetFuturesExposureMargin(const tagOrderInfoForSurv& order, Selector selector) const {
    const View view = ViewOf(data, selector);
    const AdditionalMarginBlock& rates = order.additionalMargin;
    double rate = rates.additionalMarginRate;
    double divisor = kRateDivisor;
    switch (static_cast<Segment>(GetMarketSegment())) {
        case Segment::kNseFutures: break;
        case Segment::kNcdexFutures: divisor = kMillionthsDivisor; break;
        case Segment::kMcxFutures:
            if (view.NetQty() == 0) return 0.0;
            rate = view.NetQty() > 0 ? rates.longMarginRate : rates.shortMarginRate;
            break;
        default: return 0.0;
    }
    const double value = AbsNetValue(view);
    return PreferredByRate(rate / divisor * value, value, kRateDivisor, order.riskPreference);
}

double CSurvPosition::GetAdditionalExposureMargin(const tagOrderInfoForSurv& order, Selector selector) const {
    if (!data.scripInfo) return 0.0;
    const bool cross = IsCross(selector);
    const double net = cross ? GetCrossNetExposure(selector) : GetNetExposure(selector);
    const double sale = cross ? GetCrossNetSaleExposure(selector) : GetNetSaleExposure(selector);
    const double larger =
        std::max(order.additionalMargin.buyExposureRate * net, order.additionalMargin.sellExposureRate * sale);
    return larger / (Is(data.scripInfo, Segment::kMcxFutures) ? kRateDivisor : kMillionthsDivisor);
}

double CSurvPosition::GetOptionExposureMargin(const tagOrderInfoForSurv& order, Selector selector) const {
    if (!Is(data.scripInfo, Segment::kNseOptions)) return 0.0;
    const double value = std::abs(GetOptionSaleValue(selector)) / 100.0;
    const double margin = order.additionalMargin.additionalMarginRate / kMillionthsDivisor * value;
    return PreferredByRate(margin, value, kMillionthsDivisor, order.riskPreference);
}

double CSurvPosition::GetMcxPositionMargin(const tagOrderInfoForSurv& order, Selector selector, std::int16_t basis,
                                           double rate) const {
    const View view = ViewOf(data, selector);
    const std::int64_t quantity = AbsNetQty(view);
    if (quantity == 0) return 0.0;
    const double value = AbsNetValue(view);
    double margin = 0.0;
    if (basis == 1) margin = value * rate / 10000.0;
    if (basis == 2) margin = static_cast<double>(quantity) * rate / 100.0;
    return Preferred(margin, PreferredPercent(value, order.riskPreference), order.riskPreference);
}

// ---------------------------------------------------------------------------------------------------------------
// Cash margin

namespace {

/// The worth and the quantity that a cash margin is asked for.
struct Exposed {
    double value;
    std::int64_t quantity;
};

struct OneView {
    View view;
    [[nodiscard]] Exposed Netted() const { return {AbsNetValue(view), AbsNetQty(view)}; }
    [[nodiscard]] Exposed Together() const { return {AbsTotalValue(view), AbsTotalQty(view)}; }
};

/// Value and quantity are each the largest of their own: they may come from different selectors.
struct AllViews {
    const tagSurvPositionData& d;
    [[nodiscard]] Exposed Netted() const { return {Largest(d, AbsNetValue), Largest(d, AbsNetQty)}; }
    [[nodiscard]] Exposed Together() const { return {Largest(d, AbsTotalValue), Largest(d, AbsTotalQty)}; }
};

/// The rows of the cash markets alone, daily and settlement.
bool IsEquityRow(std::int16_t periodicity) {
    return periodicity == 2 || periodicity == 3 || (periodicity >= 0x10 && periodicity <= 0x13);
}

/// The expiry rows that take the cash markets in with others.
bool IsCombinedRow(std::int16_t periodicity) {
    return periodicity == 0xF || periodicity == 0x7F || periodicity == 0x1FF;
}

/// REQUIRES: exposed.quantity is not 0.
double ChargeCashMargin(const tagOrderInfoForSurv& order, Exposed exposed, std::int16_t basis, double rate) {
    const RiskPreference& preference = order.riskPreference;
    const bool equityScope =
        IsEquityRow(order.periodicity) || (IsCashSegment(order.marketSegment) && IsCombinedRow(order.periodicity));
    const double preferred = PreferredPercent(exposed.value, preference);
    if (basis == 0 || basis == 1 || preference.prefMarginMode == kLargerCounts) {
        if (!equityScope) return exposed.value * rate / 10000.0;
        // Hundredths of a percent of paise, hence rupees; without a rate the whole value is charged.
        const double rupeeRate = rate == 0 ? 100.0 : rate / 100.0;
        return Preferred(exposed.value * rupeeRate / 10000.0, preferred, preference);
    }
    if (basis == 2) return static_cast<double>(exposed.quantity) * rate / 100.0;
    return equityScope ? Preferred(0.0, preferred, preference) : 0.0;
}

template <class Views>
double CashMargin(const tagOrderInfoForSurv& order, const tagExposureScripSpecificInfo* scrip, const Views& views) {
    const bool cash = IsCashSegment(order.marketSegment);
    const tagScripRateBlock& rates = cash && scrip ? scrip->scripRates : order.scripRates;
    const bool together = order.NoNetting();
    const Exposed exposed = together ? views.Together() : views.Netted();
    if (exposed.quantity == 0) return 0.0;
    return ChargeCashMargin(order, exposed, rates.marginBasis, together ? 10000.0 : rates.marginRate);
}

template <class Views>
double ExtraCashMargin(const tagOrderInfoForSurv& order, const Views& views) {
    if (!IsEquityRow(order.periodicity) && !IsCombinedRow(order.periodicity)) return 0.0;
    const Exposed exposed = views.Netted();
    if (exposed.quantity == 0) return 0.0;
    return exposed.value / 100.0 * order.riskPreference.prefExtraMarginRate / kMillionthsDivisor;
}

}  // namespace

double CSurvPosition::GetCashMargin(const tagOrderInfoForSurv& order) const {
    return CashMargin(order, data.scripInfo, OneView{OrderView(data)});
}

double CSurvPosition::GetTradedCashMargin(const tagOrderInfoForSurv& order) const {
    return CashMargin(order, data.scripInfo, OneView{TradedView(data)});
}

double CSurvPosition::GetMaxCashMargin(const tagOrderInfoForSurv& order) const {
    return CashMargin(order, data.scripInfo, AllViews{data});
}

double CSurvPosition::GetExtraCashMargin(const tagOrderInfoForSurv& order) const {
    return ExtraCashMargin(order, OneView{OrderView(data)});
}

double CSurvPosition::GetTradedExtraCashMargin(const tagOrderInfoForSurv& order) const {
    return ExtraCashMargin(order, OneView{TradedView(data)});
}

double CSurvPosition::GetMaxExtraCashMargin(const tagOrderInfoForSurv& order) const {
    return ExtraCashMargin(order, AllViews{data});
}

}  // namespace surv
