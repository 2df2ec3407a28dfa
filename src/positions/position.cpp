#include "positions/position.h"

#include <cmath>
#include <string_view>

namespace surv {

namespace {

bool IsFill(std::int16_t orderEventKind) {
    return orderEventKind == event::kTrade || orderEventKind == event::kCorrection;
}

/// A quantity and its worth, as they enter or leave a total together.
struct Amount {
    std::int64_t quantity;
    double value;
};

Amount AtPrice(std::int64_t quantity, double price) { return {quantity, price * static_cast<double>(quantity)}; }

/// Conversions and two-leg orders never are.
bool IsLotWeighted(const tagOrderInfoForSurv& order) {
    return order.marketSegment == static_cast<std::int16_t>(Segment::kMcxFutures) &&
           order.lotWeighting == LotWeighting::kOn && !order.IsConversion() &&
           order.productType != product::kMarginPlus;
}

Amount OldAmount(const tagOrderInfoForSurv& order) {
    if (!IsLotWeighted(order)) return AtPrice(order.prevQuantity, order.prevPrice);
    return {order.prevQuantity, LotWeightedValue(order.marginRates, order.prevQuantity, order.prevPrice)};
}

Amount NewAmount(const tagOrderInfoForSurv& order) {
    if (!IsLotWeighted(order)) return AtPrice(order.quantity, order.price);
    if (order.quantity <= 0) return {order.quantity, 0.0};
    return {order.quantity, LotWeightedValue(order.marginRates, order.quantity, order.price)};
}

/// The totals of one direction, buys or sells.
struct Totals {
    std::int64_t& orderQty;
    double& orderValue;
    std::int64_t& tradedQty;
    double& tradedValue;

    void AddToOrders(const Amount& amount) {
        orderQty += amount.quantity;
        orderValue += amount.value;
    }
    void AddToTrades(const Amount& amount) {
        tradedQty += amount.quantity;
        tradedValue += amount.value;
    }
    void TakeFromOrders(const Amount& amount) {
        orderQty -= amount.quantity;
        orderValue -= amount.value;
    }
    void TakeFromTrades(const Amount& amount) {
        tradedQty -= amount.quantity;
        tradedValue -= amount.value;
    }
};

Totals Bought(tagSurvPositionData& data) {
    return {data.orderBuyQty, data.orderBuyValue, data.tradedBuyQty, data.tradedBuyValue};
}
Totals Sold(tagSurvPositionData& data) {
    return {data.orderSellQty, data.orderSellValue, data.tradedSellQty, data.tradedSellValue};
}
/// The totals of the order's own direction.
Totals Own(tagSurvPositionData& data, const tagOrderInfoForSurv& order) {
    return order.IsBuy() ? Bought(data) : Sold(data);
}
/// The totals of the direction that closes the order.
Totals Opposite(tagSurvPositionData& data, const tagOrderInfoForSurv& order) {
    return order.IsBuy() ? Sold(data) : Bought(data);
}

/// marginPlusLeg of the stop-loss leg of a two-leg order; every other number counts as its first leg.
constexpr std::int16_t kSecondLeg = 2;

/// Events that count the open second leg as traded.
bool TradesSecondLeg(std::int16_t orderEventKind) {
    return orderEventKind == event::kMarginPlusChange || orderEventKind == event::kMarginPlusEnd;
}

/// The amount of a two-leg order is its quantity at the distance between two of its prices.
Amount AtDistance(std::int64_t quantity, std::int32_t from, std::int32_t to) {
    return AtPrice(quantity, static_cast<double>(from) - static_cast<double>(to));
}

void AddTotals(tagSurvPositionData& data, const tagSurvPositionData& other) {
    data.orderBuyQty += other.orderBuyQty;
    data.orderBuyValue += other.orderBuyValue;
    data.orderSellQty += other.orderSellQty;
    data.orderSellValue += other.orderSellValue;
    data.tradedBuyQty += other.tradedBuyQty;
    data.tradedBuyValue += other.tradedBuyValue;
    data.tradedSellQty += other.tradedSellQty;
    data.tradedSellValue += other.tradedSellValue;
    data.openPositionValue += other.openPositionValue;
    data.mtmValue += other.mtmValue;
}

/// Cuts the code at a '+' that stands exactly at `index`.
void CutAtPlus(FixedText<32>& code, std::size_t index) {
    const std::string_view text = code.View();
    if (text.size() > index && text[index] == '+') code = FixedText<32>{text.substr(0, index)};
}

/// A ratio that the reference data leaves without a denominator counts as 1.
double LotRatio(std::int32_t numerator, std::int32_t denominator) {
    return denominator == 0 ? 1.0 : static_cast<double>(numerator) / denominator;
}

constexpr std::int16_t kGrouplessClient = 6;  ///< client level type whose group code is not shown

}  // namespace

double RoundTo(double value, int decimals) {
    double scale = 1.0;
    for (int i = 0; i < decimals; ++i) scale *= 10.0;
    return std::trunc((value * (scale * 10.0) + (value < 0 ? -5.0 : 5.0)) / 10.0) / scale;
}

double LotWeight(const tagMarginRateBlock& rates) {
    return LotRatio(rates.generalNumerator, rates.generalDenominator) *
           LotRatio(rates.priceNumerator, rates.priceDenominator) * rates.lotMultiplier;
}

double LotWeightedValue(const tagMarginRateBlock& rates, std::int64_t quantity, std::int32_t price) {
    // Not LotWeight times price: a value takes its factors in this order, and a last digit may hang on it.
    const double unit = LotRatio(rates.priceNumerator, rates.priceDenominator) * price *
                        LotRatio(rates.generalNumerator, rates.generalDenominator) * rates.lotMultiplier;
    return RoundTo(unit * static_cast<double>(quantity), 2);
}

void CSurvPosition::Update11(const tagOrderInfoForSurv& order) {
    if (order.lastTradedPrice != 0) data.lastPrice = order.lastTradedPrice;

    const bool conversion = order.IsConversion();
    const bool fill = IsFill(order.orderEventKind);
    const bool withoutLegs = order.productType == product::kMarginPlus && order.marginPlusLeg == 0;
    const Amount amount = NewAmount(order);
    Totals own = Own(data, order);
    own.AddToOrders(amount);
    if (conversion || (fill && !withoutLegs)) own.AddToTrades(amount);

    // A fill has the last word on the price: one without a price leaves none.
    if (fill) SetLastPrice(order);
    if (order.scripInfo) data.scripInfo = order.scripInfo;
    if (order.ownerInfo) data.ownerInfo = order.ownerInfo;
}

void CSurvPosition::ReversePositions(const tagOrderInfoForSurv& order) {
    const Amount amount = OldAmount(order);
    Totals own = Own(data, order);
    own.TakeFromOrders(amount);
    if (order.IsConversion()) own.TakeFromTrades(amount);
    // A trade's old quantity was only open; a correction's had traded.
    if (order.orderEventKind == event::kCorrection) own.TakeFromTrades(amount);
}

void CSurvPosition::ApplyMarginPlusLeg(const tagOrderInfoForSurv& order) {
    if (order.lastTradedPrice != 0) data.lastPrice = order.lastTradedPrice;

    const bool fill = IsFill(order.orderEventKind);
    const bool secondLeg = order.marginPlusLeg == kSecondLeg;
    Totals own = Own(data, order);
    if (fill) {
        const Amount traded = AtDistance(order.quantity, order.price, order.secondLegPrice);
        if (secondLeg) own.AddToOrders(traded);
        own.AddToTrades(traded);
    }
    if (!secondLeg) {
        own.AddToOrders(AtDistance(order.quantity, order.firstLegPrice, order.secondLegPrice));
    } else if (!fill) {
        Totals closing = Opposite(data, order);
        const Amount open = AtDistance(order.quantity, order.firstLegPrice, order.price);
        closing.orderValue += open.value;
        if (TradesSecondLeg(order.orderEventKind)) closing.AddToTrades(open);
    }

    if (fill) SetLastPrice(order);
    data.scripInfo = order.scripInfo;
    data.ownerInfo = order.ownerInfo;
}

void CSurvPosition::ReverseMarginPlusLeg(const tagOrderInfoForSurv& order) {
    Totals own = Own(data, order);
    const Amount open = AtDistance(order.prevQuantity, order.firstLegPrice, order.prevPrice);
    if (order.marginPlusLeg != kSecondLeg) {
        // By the distance to its own old price, not to the stop that it came in with.
        own.TakeFromOrders(open);
    } else if (order.orderEventKind == event::kTrade) {
        const Amount traded = AtDistance(order.prevQuantity, order.prevPrice, order.secondLegPrice);
        own.TakeFromOrders(traded);
        own.TakeFromTrades(traded);
    } else {
        Totals closing = Opposite(data, order);
        closing.orderValue -= open.value;
        if (TradesSecondLeg(order.orderEventKind)) closing.TakeFromTrades(open);
    }
}

tagSurvPositionData CSurvPosition::GetPositionData() const {
    const tagSurvPositionData figures = data;
    if (data.ownerInfo) {
        tagPositionOwnerInfo& owner = *data.ownerInfo;
        CutAtPlus(owner.accountCode, 6);
        if (owner.clientLevelType == kGrouplessClient) owner.groupCode = FixedText<8>{};
        CutAtPlus(owner.accountCode, 10);
    }
    return figures;
}

void CSurvPosition::MergePositionData(const tagSurvPositionData& other) {
    AddTotals(data, other);
    data.limitMask = other.limitMask;
    data.scripInfo = other.scripInfo;
    data.ownerInfo = other.ownerInfo;
}

void CSurvPosition::AddPositionData(const tagSurvPositionData& other) {
    MergePositionData(other);
    data.lastPrice = other.lastPrice;
}

}  // namespace surv
