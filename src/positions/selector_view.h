#pragma once

// Inside the figures of a position: what a selector reads, and the classes of scrips that change the arithmetic.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "positions/position.h"

namespace surv::measure {

/// The buy and sell totals that one selector reads.
struct View {
    std::int64_t buyQty;
    double buyValue;
    std::int64_t sellQty;
    double sellValue;

    [[nodiscard]] std::int64_t NetQty() const { return buyQty - sellQty; }
    [[nodiscard]] std::int64_t NetSaleQty() const { return sellQty - buyQty; }
    [[nodiscard]] std::int64_t TotalQty() const { return buyQty + sellQty; }
    [[nodiscard]] double NetValue() const { return buyValue - sellValue; }
    [[nodiscard]] double NetSaleValue() const { return sellValue - buyValue; }
    [[nodiscard]] double TotalValue() const { return buyValue + sellValue; }
};

inline View OrderView(const tagSurvPositionData& d) {
    return {d.orderBuyQty, d.orderBuyValue, d.orderSellQty, d.orderSellValue};
}
inline View TradedView(const tagSurvPositionData& d) {
    return {d.tradedBuyQty, d.tradedBuyValue, d.tradedSellQty, d.tradedSellValue};
}
inline View LongView(const tagSurvPositionData& d) {
    return {d.orderBuyQty, d.orderBuyValue, d.tradedSellQty, d.tradedSellValue};
}
inline View ShortView(const tagSurvPositionData& d) {
    return {d.tradedBuyQty, d.tradedBuyValue, d.orderSellQty, d.orderSellValue};
}

/// Whatever isn't the order side is the traded side.
inline View SideView(const tagSurvPositionData& d, Selector side) {
    return side == Selector::kOrderSide ? OrderView(d) : TradedView(d);
}
/// Whatever isn't the worst short case is the worst long case.
inline View CrossView(const tagSurvPositionData& d, Selector cross) {
    return cross == Selector::kWorstShort ? ShortView(d) : LongView(d);
}

inline bool IsCross(Selector selector) { return selector == Selector::kWorstLong || selector == Selector::kWorstShort; }

inline View ViewOf(const tagSurvPositionData& d, Selector selector) {
    return IsCross(selector) ? CrossView(d, selector) : SideView(d, selector);
}

/// The largest of a figure over the four selectors.
template <class Figure>
auto Largest(const tagSurvPositionData& d, Figure figure) {
    return std::max(std::max(figure(OrderView(d)), figure(TradedView(d))),
                    std::max(figure(LongView(d)), figure(ShortView(d))));
}

template <class Figure>
auto Smallest(const tagSurvPositionData& d, Figure figure) {
    return std::min(std::min(figure(OrderView(d)), figure(TradedView(d))),
                    std::min(figure(LongView(d)), figure(ShortView(d))));
}

/// The one of the two that is further from 0; the positive one on a tie.
template <class Number>
Number Outermost(Number low, Number high) {
    return std::abs(low) > high ? low : high;
}

/// Nothing below 0; what is no number stays none.
template <class Number>
Number Clip(Number x) {
    return x <= 0 ? Number{0} : x;
}

inline bool Is(const tagExposureScripSpecificInfo* scrip, Segment segment) {
    return scrip && scrip->marketSegment == static_cast<std::int16_t>(segment);
}

/// The market makes an option here, not the strike: CSurvPosition::IsOption asks for that.
inline bool IsOptionSegment(const tagExposureScripSpecificInfo* scrip) {
    return Is(scrip, Segment::kNseOptions) || Is(scrip, Segment::kBseOptions);
}

inline double Scaled(const tagExposureScripSpecificInfo* scrip, double value) {
    return Is(scrip, Segment::kNseEquity) ? value * scrip->priceMultiplier : value;
}

inline double AtStrike(const tagExposureScripSpecificInfo& scrip, std::int64_t quantity) {
    return static_cast<double>(quantity) * scrip.contract.strikePrice;
}

inline double AbsNetValue(const View& view) { return std::abs(view.NetValue()); }
inline double AbsTotalValue(const View& view) { return std::abs(view.TotalValue()); }
inline std::int64_t AbsNetQty(const View& view) { return std::abs(view.NetQty()); }
inline std::int64_t AbsTotalQty(const View& view) { return std::abs(view.TotalQty()); }

}  // namespace surv::measure
