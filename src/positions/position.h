#pragma once

#include <cstdint>

#include "shared/order.h"

namespace surv {

/// Which buy and sell totals a figure is read from.
enum class Selector : std::int8_t {
    kOrderSide = 1,   ///< every open order counted as filled
    kTradedSide = 2,  ///< no open order counted
    kWorstLong = 6,   ///< open buys fill, open sells don't
    kWorstShort = 7,  ///< open sells fill, open buys don't
};

/// The worth in paise of `quantity` at `price`, weighted by contract size and rounded to 2 decimals.
[[nodiscard]] double LotWeightedValue(const tagMarginRateBlock& rates, std::int64_t quantity, std::int32_t price);

/// What one unit of a contract weighs, by its size factors. A ratio without a denominator counts as 1.
[[nodiscard]] double LotWeight(const tagMarginRateBlock& rates);

/// Half away from zero.
[[nodiscard]] double RoundTo(double value, int decimals);

/// The plain figures of a position. Values are paise; the order side holds every accepted order and every trade, the
/// traded side the trades alone, so order side minus traded side is what is still open.
struct tagSurvPositionData {
    std::int16_t limitMask = 0;  ///< of the row it came from; 0 for a position made by an order
    std::int32_t lastPrice = 0;  ///< last known market price; 0: none
    std::int64_t orderBuyQty = 0;
    double orderBuyValue = 0;
    std::int64_t orderSellQty = 0;
    double orderSellValue = 0;
    std::int64_t tradedBuyQty = 0;
    double tradedBuyValue = 0;
    std::int64_t tradedSellQty = 0;
    double tradedSellValue = 0;
    double openPositionValue = 0;                       ///< written by GetMTM
    double mtmValue = 0;                                ///< written by GetMTM
    tagExposureScripSpecificInfo* scripInfo = nullptr;  ///< shared, not owned
    tagPositionOwnerInfo* ownerInfo = nullptr;          ///< not owned
};

/// What a gross exposure is put together from: the share argument of a limit row only matters to options.
struct GrossParts {
    double base = 0;    ///< counts whole
    double perNet = 0;  ///< counts times the whole part of optionNetPercent / 10000; 0 unless an option

    [[nodiscard]] double Value(std::int32_t optionNetPercent) const {
        if (optionNetPercent <= 0) return base;
        const std::int32_t wholeTimes = optionNetPercent / 10000;
        return base + wholeTimes * perNet;
    }
};

/// How the gross exposure of equity counts: buys and sells against each other, or together.
enum class GrossMode : std::uint8_t { kNetted = 0, kBuyPlusSell = 1 };

/// What one holder has done in one scrip in one period. The smallest unit of exposure.
///
/// A change of an order is ReversePositions with the old figures, then Update11 with the new ones; a trade is the
/// same pair. Whoever may have to put a change back keeps the figures in the undo log.
class CSurvPosition {
 public:
    CSurvPosition() = default;
    explicit CSurvPosition(const tagSurvPositionData& figures) : data(figures) {}

    tagSurvPositionData data;

    // Changes -----------------------------------------------------------------------------------------------
    /// Adds the order's new quantity and price.
    void Update11(const tagOrderInfoForSurv& order);
    /// Takes the order's previous quantity and price out.
    void ReversePositions(const tagOrderInfoForSurv& order);
    void ApplyChange(const tagOrderInfoForSurv& order) {
        ReversePositions(order);
        Update11(order);
    }
    /// The same for a two-leg order.
    void ApplyMarginPlusLeg(const tagOrderInfoForSurv& order);
    void ReverseMarginPlusLeg(const tagOrderInfoForSurv& order);
    void ApplyLegChange(const tagOrderInfoForSurv& order) {
        ReverseMarginPlusLeg(order);
        ApplyMarginPlusLeg(order);
    }
    /// Even if the order's last traded price is 0.
    void SetLastPrice(const tagOrderInfoForSurv& order) { data.lastPrice = order.lastTradedPrice; }

    // Data movement -----------------------------------------------------------------------------------------
    /// Copies the figures out; then shortens the '+' code of the owner record itself.
    [[nodiscard]] tagSurvPositionData GetPositionData() const;
    /// Adds the totals, takes mask, scrip and owner; the last price stays.
    void MergePositionData(const tagSurvPositionData& other);
    /// As MergePositionData, and takes the last price.
    void AddPositionData(const tagSurvPositionData& other);
    /// A position row: the first one gives the last price too, later ones are merged.
    void TakeRow(const tagSurvPositionData& row) {
        if (data.scripInfo) {
            MergePositionData(row);
        } else {
            AddPositionData(row);
        }
    }

    // Quantities --------------------------------------------------------------------------------------------
    /// selector as a plain number: 4 and 5 are known too, any other gives -1.
    [[nodiscard]] std::int64_t GetNetQuantity(int selector) const;
    [[nodiscard]] std::int64_t GetMaxNetQuantity() const;
    [[nodiscard]] std::int64_t GetNetSaleQuantity(Selector side) const;
    [[nodiscard]] std::int64_t GetCrossNetSaleQuantity(Selector cross) const;
    [[nodiscard]] std::int64_t GetNetBuyQuantity(Selector side) const;
    [[nodiscard]] std::int64_t GetCrossNetBuyQuantity(Selector cross) const;
    [[nodiscard]] std::int64_t GetMaxNetSaleQuantity() const;

    // Money of one selector, paise --------------------------------------------------------------------------
    [[nodiscard]] double GetBuyValue(Selector side) const;
    [[nodiscard]] double GetSellValue(Selector side) const;
    [[nodiscard]] std::int64_t GetBuyQty(Selector side) const;
    [[nodiscard]] std::int64_t GetSellQty(Selector side) const;
    [[nodiscard]] double GetNetValue(Selector side) const;
    [[nodiscard]] double GetCrossNetValue(Selector cross) const;
    [[nodiscard]] double GetNetPosition(Selector side) const;
    [[nodiscard]] double GetTurnover(Selector side) const;
    [[nodiscard]] double GetPendingOrderValue() const;
    [[nodiscard]] double GetNetExposure(Selector side) const;
    [[nodiscard]] double GetCrossNetExposure(Selector cross) const;
    [[nodiscard]] double GetNetSaleExposure(Selector side) const;
    [[nodiscard]] double GetCrossNetSaleExposure(Selector cross) const;
    [[nodiscard]] double GetOptionSaleValue(Selector selector) const;
    [[nodiscard]] GrossParts GetGrossParts(Selector side, GrossMode mode) const;
    [[nodiscard]] double GetGrossExposure(Selector side, std::int32_t optionNetPercent, GrossMode mode) const {
        return GetGrossParts(side, mode).Value(optionNetPercent);
    }

    // Money over the four selectors, paise ------------------------------------------------------------------
    [[nodiscard]] double GetMaxNetExposure() const;
    [[nodiscard]] double GetMaxNetSaleExposure() const;
    [[nodiscard]] double GetMaxNetPosition() const;
    [[nodiscard]] double GetMaxTurnover() const;
    /// Not yet clipped at 0: GetMaxGrossExposure clips what the parts come to.
    [[nodiscard]] GrossParts GetMaxGrossParts(GrossMode mode) const;
    [[nodiscard]] double GetMaxGrossExposure(std::int32_t optionNetPercent, GrossMode mode) const;

    // Mark to market, paise ---------------------------------------------------------------------------------
    /// Writes openPositionValue and mtmValue.
    double GetMTM(LotWeighting weighting);
    [[nodiscard]] double GetBookedProfit(LotWeighting weighting) const;

    // Margin, rupees ----------------------------------------------------------------------------------------
    [[nodiscard]] double GetFuturesExposureMargin(const tagOrderInfoForSurv& order, Selector selector) const;
    [[nodiscard]] double GetAdditionalExposureMargin(const tagOrderInfoForSurv& order, Selector selector) const;
    [[nodiscard]] double GetOptionExposureMargin(const tagOrderInfoForSurv& order, Selector selector) const;
    /// basis and rate: of the token in the MCX margin table; basis 0 when it has none.
    [[nodiscard]] double GetMcxPositionMargin(const tagOrderInfoForSurv& order, Selector selector, std::int16_t basis,
                                              double rate) const;
    [[nodiscard]] double GetCashMargin(const tagOrderInfoForSurv& order) const;
    [[nodiscard]] double GetTradedCashMargin(const tagOrderInfoForSurv& order) const;
    [[nodiscard]] double GetMaxCashMargin(const tagOrderInfoForSurv& order) const;
    [[nodiscard]] double GetExtraCashMargin(const tagOrderInfoForSurv& order) const;
    [[nodiscard]] double GetTradedExtraCashMargin(const tagOrderInfoForSurv& order) const;
    [[nodiscard]] double GetMaxExtraCashMargin(const tagOrderInfoForSurv& order) const;

    // The scrip ---------------------------------------------------------------------------------------------
    [[nodiscard]] std::int16_t GetMarketSegment() const {
        return data.scripInfo ? data.scripInfo->marketSegment : std::int16_t{0};
    }
    [[nodiscard]] std::int32_t GetToken() const { return data.scripInfo ? data.scripInfo->token : 0; }
    [[nodiscard]] std::int32_t GetUnderlyingToken() const {
        return data.scripInfo ? data.scripInfo->underlyingToken : 0;
    }
    [[nodiscard]] std::int32_t GetExpiryDate() const {
        return data.scripInfo ? data.scripInfo->contract.expiryDate : 0;
    }
    [[nodiscard]] std::int16_t GetCaLevel() const {
        return data.scripInfo ? data.scripInfo->contract.caLevel : std::int16_t{0};
    }
    [[nodiscard]] bool IsOption() const { return data.scripInfo && data.scripInfo->contract.strikePrice >= 1; }
};

}  // namespace surv
