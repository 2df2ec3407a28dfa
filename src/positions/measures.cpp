// The figures that limits are judged by: all read from the totals of one position.

#include "positions/exposure_figures.h"
#include "positions/position.h"
#include "positions/selector_view.h"

namespace surv {

using namespace measure;

namespace {

double NetExposure(const View& view, const tagExposureScripSpecificInfo* scrip) {
    return view.NetQty() > 0 ? Scaled(scrip, view.NetValue()) : 0.0;
}

/// Buys and sells of equity may count together; everything else nets.
bool CountsTogether(const tagExposureScripSpecificInfo& scrip, GrossMode mode) {
    return mode == GrossMode::kBuyPlusSell && IsCashSegment(scrip.marketSegment);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------
// Quantities

std::int64_t CSurvPosition::GetNetQuantity(int selector) const {
    switch (selector) {
        case 1: return OrderView(data).NetQty();
        case 2: return TradedView(data).NetQty();
        case 4: return LongView(data).NetSaleQty();
        case 5: return ShortView(data).NetQty();
        case 6: return LongView(data).NetQty();
        case 7: return ShortView(data).NetQty();
        default: return -1;
    }
}

std::int64_t CSurvPosition::GetMaxNetQuantity() const {
    const auto net = [](const View& view) { return view.NetQty(); };
    return Outermost(Smallest(data, net), Largest(data, net));
}

std::int64_t CSurvPosition::GetNetSaleQuantity(Selector side) const { return Clip(SideView(data, side).NetSaleQty()); }

std::int64_t CSurvPosition::GetCrossNetSaleQuantity(Selector cross) const {
    return IsCross(cross) ? Clip(CrossView(data, cross).NetSaleQty()) : 0;
}

std::int64_t CSurvPosition::GetNetBuyQuantity(Selector side) const { return Clip(SideView(data, side).NetQty()); }

std::int64_t CSurvPosition::GetCrossNetBuyQuantity(Selector cross) const {
    return IsCross(cross) ? Clip(CrossView(data, cross).NetQty()) : 0;
}

std::int64_t CSurvPosition::GetMaxNetSaleQuantity() const {
    return Clip(Largest(data, [](const View& view) { return view.NetSaleQty(); }));
}

// ---------------------------------------------------------------------------------------------------------------
// Money of one selector

double CSurvPosition::GetBuyValue(Selector side) const { return SideView(data, side).buyValue; }
double CSurvPosition::GetSellValue(Selector side) const { return SideView(data, side).sellValue; }
std::int64_t CSurvPosition::GetBuyQty(Selector side) const { return SideView(data, side).buyQty; }
std::int64_t CSurvPosition::GetSellQty(Selector side) const { return SideView(data, side).sellQty; }

double CSurvPosition::GetNetValue(Selector side) const {
    return Scaled(data.scripInfo, SideView(data, side).NetValue());
}

double CSurvPosition::GetCrossNetValue(Selector cross) const {
    return Scaled(data.scripInfo, CrossView(data, cross).NetValue());
}

double CSurvPosition::GetNetPosition(Selector side) const { return SideView(data, side).NetValue(); }
double CSurvPosition::GetTurnover(Selector side) const { return SideView(data, side).TotalValue(); }

double CSurvPosition::GetPendingOrderValue() const {
    return OrderView(data).TotalValue() - TradedView(data).TotalValue();
}

double CSurvPosition::GetNetExposure(Selector side) const { return NetExposure(SideView(data, side), data.scripInfo); }

double CSurvPosition::GetCrossNetExposure(Selector cross) const {
    return NetExposure(CrossView(data, cross), data.scripInfo);
}

double CSurvPosition::GetNetSaleExposure(Selector side) const {
    const View view = SideView(data, side);
    if (!data.scripInfo || view.NetSaleQty() <= 0) return 0.0;
    if (IsOptionSegment(data.scripInfo)) return Clip(AtStrike(*data.scripInfo, view.NetSaleQty()));
    return Clip(Scaled(data.scripInfo, view.NetSaleValue()));
}

double CSurvPosition::GetCrossNetSaleExposure(Selector cross) const {
    const std::int64_t quantity = GetCrossNetSaleQuantity(cross);
    if (!data.scripInfo || quantity <= 0) return 0.0;
    if (IsOptionSegment(data.scripInfo)) return Clip(AtStrike(*data.scripInfo, quantity));
    return Clip(CrossView(data, cross).NetSaleValue());  // unlike the sides, never scaled
}

double CSurvPosition::GetOptionSaleValue(Selector selector) const {
    const View view = ViewOf(data, selector);
    if (!IsOptionSegment(data.scripInfo) || view.NetSaleQty() <= 0) return 0.0;
    return Clip(AtStrike(*data.scripInfo, view.NetSaleQty()) + view.sellValue - view.buyValue);
}

GrossParts CSurvPosition::GetGrossParts(Selector side, GrossMode mode) const {
    if (!data.scripInfo) return {};
    if (IsOptionSegment(data.scripInfo)) return {GetNetSaleExposure(side), GetNetExposure(side)};
    const View view = SideView(data, side);
    const double gross = CountsTogether(*data.scripInfo, mode) ? AbsTotalValue(view) : AbsNetValue(view);
    return {Scaled(data.scripInfo, gross), 0.0};
}

// ---------------------------------------------------------------------------------------------------------------
// Money over the four selectors

double CSurvPosition::GetMaxNetExposure() const {
    if (Largest(data, [](const View& view) { return view.NetQty(); }) < 1) return 0.0;
    return Clip(Scaled(data.scripInfo, Largest(data, [](const View& view) { return view.NetValue(); })));
}

double CSurvPosition::GetMaxNetSaleExposure() const {
    const std::int64_t quantity = GetMaxNetSaleQuantity();
    if (!data.scripInfo || quantity <= 0) return 0.0;
    if (IsOptionSegment(data.scripInfo)) return Clip(AtStrike(*data.scripInfo, quantity));
    return Clip(Scaled(data.scripInfo, Largest(data, [](const View& view) { return view.NetSaleValue(); })));
}

double CSurvPosition::GetMaxNetPosition() const {
    const auto net = [](const View& view) { return view.NetValue(); };
    return Outermost(Smallest(data, net), Largest(data, net));
}

double CSurvPosition::GetMaxTurnover() const {
    return Largest(data, [](const View& view) { return view.TotalValue(); });
}

GrossParts CSurvPosition::GetMaxGrossParts(GrossMode mode) const {
    if (!data.scripInfo) return {};
    if (IsOptionSegment(data.scripInfo)) return {GetMaxNetSaleExposure(), GetMaxNetExposure()};
    const bool together = CountsTogether(*data.scripInfo, mode);
    const double gross = together ? Largest(data, AbsTotalValue) : Largest(data, AbsNetValue);
    return {Scaled(data.scripInfo, gross), 0.0};
}

double CSurvPosition::GetMaxGrossExposure(std::int32_t optionNetPercent, GrossMode mode) const {
    return Clip(GetMaxGrossParts(mode).Value(optionNetPercent));
}

// ---------------------------------------------------------------------------------------------------------------
// All that a limit row sums. It stands beside the figures, which the order path asks for thousands of times a second.

ExposureFigures ExposureFigures::Of(const CSurvPosition& position, GrossMode mode) {
    constexpr Selector kOrder = Selector::kOrderSide;
    constexpr Selector kTraded = Selector::kTradedSide;
    ExposureFigures figures;
    figures.maxNetQuantity = position.GetMaxNetQuantity();
    figures.maxGross = position.GetMaxGrossParts(mode);
    figures.grossOrder = position.GetGrossParts(kOrder, mode);
    figures.grossTraded = position.GetGrossParts(kTraded, mode);
    figures.maxNet = position.GetMaxNetExposure();
    figures.netOrder = position.GetNetExposure(kOrder);
    figures.netTraded = position.GetNetExposure(kTraded);
    figures.maxNetSale = position.GetMaxNetSaleExposure();
    figures.netSaleOrder = position.GetNetSaleExposure(kOrder);
    figures.netSaleTraded = position.GetNetSaleExposure(kTraded);
    figures.maxNetPosition = position.GetMaxNetPosition();
    figures.maxTurnover = position.GetMaxTurnover();
    return figures;
}

// ---------------------------------------------------------------------------------------------------------------
// Mark to market

namespace {

/// The terms that the profit of the traded side is made of.
struct ProfitTerms {
    double weight;  ///< contract units per unit of quantity
    double buyAverage;
    double sellAverage;
    double openQty;  ///< below 0 when sold
    double matchedQty;

    [[nodiscard]] double Booked() const { return (sellAverage - buyAverage) * weight * matchedQty; }
};

/// 0 where nothing was traded, and for a contract that weighs nothing.
double AveragePrice(double value, double weightedQty) { return weightedQty == 0 ? 0.0 : value / weightedQty; }

/// A stored value of a lot-weighted scrip holds the weight already, so its average is a price like any other.
ProfitTerms MakeProfitTerms(const tagSurvPositionData& d, LotWeighting weighting) {
    const bool weighted = weighting == LotWeighting::kOn && Is(d.scripInfo, Segment::kMcxFutures);
    const double weight = weighted ? LotWeight(d.scripInfo->marginRates) : 1.0;
    return {weight, AveragePrice(d.tradedBuyValue, weight * static_cast<double>(d.tradedBuyQty)),
            AveragePrice(d.tradedSellValue, weight * static_cast<double>(d.tradedSellQty)),
            static_cast<double>(d.tradedBuyQty - d.tradedSellQty),
            static_cast<double>(std::min(d.tradedBuyQty, d.tradedSellQty))};
}

}  // namespace

double CSurvPosition::GetMTM(LotWeighting weighting) {
    if (!data.scripInfo) return 0.0;
    const ProfitTerms terms = MakeProfitTerms(data, weighting);
    if (data.lastPrice == 0 && terms.openQty != 0) {  // no price to mark it with
        data.openPositionValue = 0.0;
        data.mtmValue = 0.0;
        return 0.0;
    }
    const double reference = terms.openQty < 0 ? terms.sellAverage : terms.buyAverage;
    data.openPositionValue = terms.weight * terms.openQty * data.lastPrice;
    data.mtmValue = (data.lastPrice - reference) * terms.weight * terms.openQty + terms.Booked();
    return data.mtmValue;
}

double CSurvPosition::GetBookedProfit(LotWeighting weighting) const {
    return data.scripInfo ? MakeProfitTerms(data, weighting).Booked() : 0.0;
}

}  // namespace surv
