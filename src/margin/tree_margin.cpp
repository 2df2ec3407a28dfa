#include "margin/tree_margin.h"

#include <cmath>

#include "platform/bytes.h"

namespace surv {
namespace {

constexpr std::int16_t kMaskMcxExpiry = 0x81;
constexpr std::int16_t kMaskNcdexExpiry = 0x101;
constexpr std::int32_t kSecondsPerDay = 86400;
/// Three days, 14 hours and 31 minutes. A contract with no more left has no calendar position.
constexpr std::int64_t kNearExpirySeconds = 311460;
constexpr double kSpreadBenefitPercent = 83.33;
constexpr double kMcxSpreadBenefitPercent = 66.0;
/// What is left of a sum when all that entered has left again.
constexpr double kNothing = 1e-9;

double Settled(double sum) { return std::abs(sum) < kNothing ? 0.0 : sum; }

bool IsOption(const tagOrderInfoForSurv& order) { return order.contract.strikePrice > 0; }
bool IsFuture(const tagOrderInfoForSurv& order) {
    return order.contract.strikePrice < 0 && order.contract.expiryDate > 0;
}
bool IsMcx(const tagOrderInfoForSurv& order) { return order.periodicity == kMaskMcxExpiry; }

// ---------------------------------------------------------------------------------------------------------------
// The contract

/// A contract's figures, view after view. One without a price takes no share in premium and futures margin, whatever it
/// had before; its scenarios and its spread count.
class CScripFigures {
 public:
    CScripFigures(tagScripMargin& margin, const ContractPositions& positions, const tagOrderInfoForSurv& order,
                  std::int32_t tradingDayBase)
        : margin_(margin),
          positions_(positions),
          order_(order),
          secondsLeft_(std::int64_t{order.contract.expiryDate} - tradingDayBase),
          priced_(margin.contract.contractPrice != 0.0F) {}

    void Form() {
        for (std::size_t v = 0; v < kViewCount; ++v) FormView(margin_.view[v], kSelectors[v]);
    }

 private:
    void FormView(ScripBlock& block, Selector selector) {
        const std::int64_t net = positions_.whole.GetNetQuantity(static_cast<int>(selector));
        FormSpread(block, net);
        if (IsOption(order_)) {
            FormOption(block, net, selector);
        } else if (order_.contract.expiryDate > 0) {
            FormFuture(block, net, selector);
        }
        if (!IsMcx(order_)) block.riskQuantity = net;
    }

    void FormSpread(ScripBlock& block, std::int64_t net) const {
        if (IsMcx(order_)) {
            const bool near = secondsLeft_ < std::int64_t{order_.contract.caLevel} * kSecondsPerDay;
            block.spreadPosition = near ? 0.0 : static_cast<double>(net);
        } else if (secondsLeft_ > kNearExpirySeconds) {
            block.spreadPosition = static_cast<double>(net) * margin_.contract.compositeDelta;
        }
    }

    void FormOption(ScripBlock& block, std::int64_t net, Selector selector) const {
        block.longOptionQuantity = priced_ ? std::max<std::int64_t>(net, 0) : 0;
        block.shortOptionQuantity = priced_ ? std::max<std::int64_t>(-net, 0) : 0;
        block.exposureMargin = priced_ ? positions_.whole.GetOptionExposureMargin(order_, selector) : 0.0;
        block.netOptionValue = static_cast<double>(net) * margin_.contract.contractPrice / 100.0;
        block.optionValue = margin_.HasContract() ? ValueOfToday(selector) : 0.0;
    }

    void FormFuture(ScripBlock& block, std::int64_t net, Selector selector) const {
        if (!priced_ && !IsMcx(order_)) {
            block.futuresQuantity = 0;
            block.futuresExposureMargin = 0;
            block.exposureMargin = 0;
            return;
        }
        block.futuresQuantity = std::abs(net);
        block.futuresExposureMargin = positions_.whole.GetFuturesExposureMargin(order_, selector);
        block.exposureMargin = block.futuresExposureMargin;
        const bool commodity = IsMcx(order_) || order_.periodicity == kMaskNcdexExpiry;
        if (commodity && order_.riskPreference.prefMarginMode == 0) {
            block.exposureMargin += positions_.whole.GetAdditionalExposureMargin(order_, selector);
        }
    }

    [[nodiscard]] double ValueOfToday(Selector selector) const {
        const bool cross = selector == Selector::kWorstLong || selector == Selector::kWorstShort;
        return cross ? positions_.today.GetCrossNetValue(selector) : positions_.today.GetNetValue(selector);
    }

    tagScripMargin& margin_;
    const ContractPositions& positions_;
    const tagOrderInfoForSurv& order_;
    std::int64_t secondsLeft_;
    bool priced_;
};

bool SameFigures(const tagScripMargin& a, const tagScripMargin& b) {
    return a.view == b.view && SameBytes(a.contract, b.contract);
}

// ---------------------------------------------------------------------------------------------------------------
// The sums above it

/// The sums of an expiry take the change of one contract.
void MoveExpiry(tagExpiryMargin& expiry, const tagScripMargin& old, const tagScripMargin& now,
                const tagOrderInfoForSurv& order) {
    for (std::size_t v = 0; v < kViewCount; ++v) {
        const ScripBlock& a = old.view[v];
        const ScripBlock& b = now.view[v];
        ExpiryBlock& sum = expiry.view[v];
        sum.spreadPosition = Settled(sum.spreadPosition + b.spreadPosition - a.spreadPosition);
        if (IsOption(order)) {
            sum.shortOptionQuantity += b.shortOptionQuantity - a.shortOptionQuantity;
            sum.longOptionQuantity += b.longOptionQuantity - a.longOptionQuantity;
            sum.netOptionValue += b.netOptionValue - a.netOptionValue;
            sum.optionValue += b.optionValue - a.optionValue;
        } else if (IsFuture(order)) {
            sum.futuresQuantity += b.futuresQuantity - a.futuresQuantity;
            sum.futuresExposureMargin += b.futuresExposureMargin - a.futuresExposureMargin;
        }
        sum.exposureMargin += b.exposureMargin - a.exposureMargin;
    }
    if (IsFuture(order)) expiry.hasFuture = true;
}

/// The scenarios of an underlying take the change of one contract.
void MoveScenarios(tagUnderlyingMargin& underlying, const tagScripMargin& old, const tagScripMargin& now) {
    const bool sameArray = SameBytes(old.contract, now.contract);
    for (std::size_t v = 0; v < kViewCount; ++v) {
        if (sameArray && old.view[v].riskQuantity == now.view[v].riskQuantity) continue;
        auto& sums = underlying.view[v].riskValues;
        for (std::size_t i = 0; i < kScenarioCount; ++i) {
            sums[i] += static_cast<double>(now.RiskValue(v, i)) - static_cast<double>(old.RiskValue(v, i));
        }
    }
}

/// An expiry stands on the long side while its spread position is 0 or more, else on the short side.
void MoveSpread(UnderlyingBlock& sum, double spreadPosition, double sign) {
    double& side = spreadPosition >= 0 ? sum.spreadLong : sum.spreadShort;
    side = Settled(side + sign * spreadPosition);
}
void MoveNetting(UnderlyingBlock& sum, const ExpiryBlock& expiry, double sign) {
    const bool isLong = expiry.spreadPosition >= 0;
    double& position = isLong ? sum.longSidePosition : sum.shortSidePosition;
    double& margin = isLong ? sum.longSideMargin : sum.shortSideMargin;
    position = Settled(position + sign * expiry.spreadPosition);
    margin = Settled(margin + sign * expiry.futuresExposureMargin);
}

/// The sums of an underlying take the change of one expiry.
void MoveUnderlying(tagUnderlyingMargin& underlying, const tagExpiryMargin& old, const tagExpiryMargin& now) {
    for (std::size_t v = 0; v < kViewCount; ++v) {
        const ExpiryBlock& a = old.view[v];
        const ExpiryBlock& b = now.view[v];
        UnderlyingBlock& sum = underlying.view[v];
        MoveSpread(sum, b.spreadPosition, +1.0);
        MoveSpread(sum, a.spreadPosition, -1.0);
        sum.shortOptionQuantity += b.shortOptionQuantity - a.shortOptionQuantity;
        sum.longOptionQuantity += b.longOptionQuantity - a.longOptionQuantity;
        sum.futuresQuantity += b.futuresQuantity - a.futuresQuantity;
        sum.netOptionValue += b.netOptionValue - a.netOptionValue;
        sum.optionValue += b.optionValue - a.optionValue;
        if (old.hasFuture) MoveNetting(sum, a, -1.0);
        if (now.hasFuture) MoveNetting(sum, b, +1.0);
        sum.exposureMarginTotal += b.exposureMargin - a.exposureMargin;
    }
}

// ---------------------------------------------------------------------------------------------------------------
// What is formed at the underlying

/// Exposure margin after the benefit of expiries that stand against each other.
double NettedExposure(const UnderlyingBlock& sum, double benefitPercent) {
    const double longSide = sum.longSidePosition;
    const double shortSide = std::abs(sum.shortSidePosition);
    const double rate = benefitPercent / 100.0;
    double benefit = 0;
    if (longSide == 0 && shortSide == 0) {
        benefit = 0;
    } else if (longSide < shortSide) {
        benefit = rate * sum.longSideMargin + longSide / shortSide * rate * sum.shortSideMargin;
    } else {
        benefit = rate * sum.shortSideMargin + shortSide / longSide * rate * sum.longSideMargin;
    }
    return sum.exposureMarginTotal - benefit;
}

/// To whole rupees; a fraction of exactly .50 goes down.
double Rounded(double rupees) {
    return std::fmod(rupees * 100.0, 100.0) <= 50.0 ? std::floor(rupees) : std::ceil(rupees);
}

double LargestScenario(const UnderlyingBlock& sum) {
    const auto& values = sum.riskValues;
    std::array<double, 4> largest{values[0], values[1], values[2], values[3]};  // four at a time
    for (std::size_t i = 4; i < kScenarioCount; i += 4) {
        for (std::size_t j = 0; j < 4; ++j) largest[j] = std::max(largest[j], values[i + j]);
    }
    return std::max(std::max(largest[0], largest[1]), std::max(largest[2], largest[3]));
}
double SpreadQuantity(const UnderlyingBlock& sum) {
    return std::min(std::abs(sum.spreadLong), std::abs(sum.spreadShort));
}

/// The margin of one view from its scan and the quantities that are charged beside it.
void FormInitialMargin(UnderlyingBlock& result, const tagRPFUnderlyingRecord& charges, double scanRisk,
                       double spreadQuantity, std::int64_t shortQuantity, double netOptionValue) {
    result.scanRisk = scanRisk;
    result.calendarCharge = Rounded(charges.calendarSpreadCharge * spreadQuantity);
    result.shortOptionMinimum = Rounded(charges.shortOptionMinimumCharge * static_cast<double>(shortQuantity));
    result.initialMargin =
        std::max(result.scanRisk + result.calendarCharge, result.shortOptionMinimum) - netOptionValue;
}

/// The smallest or largest of a figure over the four views.
template <class Compare, class Figure>
auto Extreme(const tagUnderlyingMargin& margin, Compare better, Figure figure) {
    auto best = figure(margin.view[0]);
    for (std::size_t v = 1; v < kViewCount; ++v) {
        const auto other = figure(margin.view[v]);
        if (better(other, best)) best = other;
    }
    return best;
}
template <class Figure>
auto Smallest(const tagUnderlyingMargin& margin, Figure figure) {
    return Extreme(
        margin, [](auto a, auto b) { return a < b; }, figure);
}
template <class Figure>
auto Largest(const tagUnderlyingMargin& margin, Figure figure) {
    return Extreme(
        margin, [](auto a, auto b) { return a > b; }, figure);
}

void Scan(tagUnderlyingMargin& margin) {
    PerView<double> scans{};
    for (std::size_t v = 0; v < kViewCount; ++v) scans[v] = LargestScenario(margin.view[v]);
    for (const std::size_t v : {kOrderView, kTradedView}) {
        UnderlyingBlock& block = margin.view[v];
        FormInitialMargin(block, margin.underlying, scans[v], SpreadQuantity(block), block.shortOptionQuantity,
                          block.netOptionValue);
    }
    // The worst case takes the smallest spread, the largest short quantity and the smallest value.
    FormInitialMargin(margin.view[kWorstView], margin.underlying, *std::max_element(scans.begin(), scans.end()),
                      Smallest(margin, SpreadQuantity),
                      Largest(margin, [](const UnderlyingBlock& b) { return b.shortOptionQuantity; }),
                      Smallest(margin, [](const UnderlyingBlock& b) { return b.netOptionValue; }));
}

/// Netting of exposure margin, then the scan. Commodities of MCX have no scan: the netted margin is their margin.
void FormUnderlying(tagUnderlyingMargin& margin, bool mcx) {
    const double percent = mcx ? kMcxSpreadBenefitPercent : kSpreadBenefitPercent;
    const auto netted = [percent](const UnderlyingBlock& block) { return NettedExposure(block, percent); };
    const double largest = Largest(margin, netted);
    if (mcx) {
        margin.view[kOrderView].initialMargin = netted(margin.view[kOrderView]);
        margin.view[kTradedView].initialMargin = netted(margin.view[kTradedView]);
        margin.view[kWorstView].initialMargin = largest;
    } else {
        margin.nettedExposureMargin = largest;
        Scan(margin);
    }
}

// ---------------------------------------------------------------------------------------------------------------
// The account

/// What the account's totals hold of an underlying.
struct UnderlyingFigures {
    double orderSide;
    double tradedSide;
    double worst;
    double optionOrderSide;
    double optionTradedSide;
    double optionWorst;
    double exposure;

    explicit UnderlyingFigures(const tagUnderlyingMargin& margin)
        : orderSide(EffectiveMargin(margin, kOrderView)),
          tradedSide(EffectiveMargin(margin, kTradedView)),
          worst(EffectiveWorstMargin(margin)),
          optionOrderSide(margin.view[kOrderView].optionValue),
          optionTradedSide(margin.view[kTradedView].optionValue),
          optionWorst(margin.view[kWorstView].optionValue),
          exposure(margin.nettedExposureMargin) {}
};

void MoveTotals(tagClientMarginTotals& totals, const UnderlyingFigures& old, const UnderlyingFigures& now,
                tagUnderlyingMargin& underlying, const tagOrderInfoForSurv& order, TradedSums traded) {
    const MarginGroup group = MarginGroupOfMask(order.periodicity);
    MarginGroupTotals& total = totals.Of(group);
    const bool tradedFollows = traded == TradedSums::kFollow;
    total.marginOrderSide += now.orderSide - old.orderSide;
    if (group == MarginGroup::kNse || tradedFollows) {
        total.marginTradedSide += now.tradedSide - underlying.tradedInTotals;
        underlying.tradedInTotals = now.tradedSide;
    }
    total.marginWorst += now.worst - old.worst;
    if (IsOption(order) && group != MarginGroup::kMcx) {
        total.optionValueOrderSide += now.optionOrderSide - old.optionOrderSide;
        if (tradedFollows) {
            total.optionValueTradedSide += now.optionTradedSide - underlying.optionTradedInTotals;
            underlying.optionTradedInTotals = now.optionTradedSide;
        }
        total.optionValueWorst += now.optionWorst - old.optionWorst;
    }
    if (group == MarginGroup::kNse || group == MarginGroup::kNcdex) {
        total.exposureMargin += now.exposure - old.exposure;
    }
}

/// Carries the change of a contract whose figures stand formed in the path.
void CarryUp(const MarginPath& path, const tagScripMargin& old, const tagOrderInfoForSurv& order, TradedSums traded) {
    const tagExpiryMargin oldExpiry = path.expiry;
    const UnderlyingFigures oldUnderlying(path.underlying);
    MoveExpiry(path.expiry, old, path.scrip, order);
    if (!IsMcx(order)) MoveScenarios(path.underlying, old, path.scrip);
    MoveUnderlying(path.underlying, oldExpiry, path.expiry);
    FormUnderlying(path.underlying, IsMcx(order));
    MoveTotals(path.totals, oldUnderlying, UnderlyingFigures(path.underlying), path.underlying, order, traded);
}

/// The quantities of the traded view, and what is formed from them, stand still with the sums above; its values follow
/// every event.
void HoldTradedQuantities(ScripBlock& now, const ScripBlock& held) {
    now.riskQuantity = held.riskQuantity;
    now.spreadPosition = held.spreadPosition;
    now.shortOptionQuantity = held.shortOptionQuantity;
    now.longOptionQuantity = held.longOptionQuantity;
    now.futuresQuantity = held.futuresQuantity;
    now.netOptionValue = held.netOptionValue;
}

/// Forms the figures and gives those that the sums hold so far.
tagScripMargin FormContract(const MarginPath& path, const ContractPositions& positions,
                            const tagOrderInfoForSurv& order, const tagRPFContractRecord* parameters,
                            std::int32_t tradingDayBase) {
    const tagScripMargin held = path.scrip.inSums ? path.scrip : tagScripMargin{};
    if (parameters) path.scrip.contract = *parameters;
    CScripFigures(path.scrip, positions, order, tradingDayBase).Form();
    path.scrip.inSums = true;
    return held;
}

}  // namespace

MarginGroup MarginGroupOfMask(std::int16_t periodicity) {
    switch (periodicity) {
        case 5:
        case 9: return MarginGroup::kNse;
        case 0x21:
        case 0x41: return MarginGroup::kBse;
        case kMaskNcdexExpiry: return MarginGroup::kNcdex;
        case kMaskMcxExpiry: return MarginGroup::kMcx;
        default: return MarginGroup::kNone;
    }
}

MarginGroup MarginGroupOfExchange(std::int16_t exchangeMask) {
    switch (exchangeMask) {
        case kMaskNseDerivatives: return MarginGroup::kNse;
        case kMaskBseDerivatives: return MarginGroup::kBse;
        case kMaskNcdex: return MarginGroup::kNcdex;
        case kMaskMcx: return MarginGroup::kMcx;
        default: return MarginGroup::kNone;
    }
}

void CarryContract(const MarginPath& path, const ContractPositions& positions, const tagOrderInfoForSurv& order,
                   const tagRPFContractRecord* parameters, TradedSums traded, std::int32_t tradingDayBase) {
    if (!path.scrip.inSums) traded = TradedSums::kFollow;
    const tagScripMargin held = FormContract(path, positions, order, parameters, tradingDayBase);
    if (traded == TradedSums::kStay) HoldTradedQuantities(path.scrip.view[kTradedView], held.view[kTradedView]);
    CarryUp(path, held, order, traded);
}

void RefreshContract(const MarginPath& path, const ContractPositions& positions, const tagOrderInfoForSurv& order,
                     const tagRPFContractRecord* parameters, std::int32_t tradingDayBase) {
    const bool entering = !path.scrip.inSums;
    const tagScripMargin held = FormContract(path, positions, order, parameters, tradingDayBase);
    if (entering || !SameFigures(held, path.scrip)) CarryUp(path, held, order, TradedSums::kFollow);
}

double EffectiveMargin(const tagUnderlyingMargin& margin, std::size_t of) {
    const UnderlyingBlock& block = margin.view[of];
    const bool longOptionsAlone =
        block.futuresQuantity == 0 && block.shortOptionQuantity == 0 && block.longOptionQuantity > 0;
    if (!longOptionsAlone) return block.initialMargin;
    return std::min(block.scanRisk - block.netOptionValue, 0.0);
}

double EffectiveWorstMargin(const tagUnderlyingMargin& margin) {
    const UnderlyingBlock& worst = margin.view[kWorstView];
    const bool longOptionsAlone =
        Largest(margin, [](const UnderlyingBlock& b) { return b.futuresQuantity; }) == 0 &&
        Largest(margin, [](const UnderlyingBlock& b) { return b.shortOptionQuantity; }) == 0 &&
        Largest(margin, [](const UnderlyingBlock& b) { return b.longOptionQuantity; }) > 0;
    if (!longOptionsAlone) return worst.initialMargin;
    return std::min(worst.scanRisk - Smallest(margin, [](const UnderlyingBlock& b) { return b.netOptionValue; }), 0.0);
}

MarginReading ReadMargins(const tagClientMarginTotals* totals, std::int16_t exchangeMask) {
    const MarginGroup group = MarginGroupOfExchange(exchangeMask);
    if (!totals || group == MarginGroup::kNone) return {};
    const MarginGroupTotals& total = totals->Of(group);
    MarginReading reading;
    reading.orderSide = std::max(total.marginOrderSide, 0.0);
    reading.tradedSide = std::max(total.marginTradedSide, 0.0);
    reading.worst = std::max(total.marginWorst, 0.0);
    reading.exposure = std::max(total.exposureMargin, 0.0);
    reading.optionOrderSide = total.optionValueOrderSide;
    reading.optionTradedSide = total.optionValueTradedSide;
    reading.optionWorst = total.optionValueWorst;
    return reading;
}

}  // namespace surv
