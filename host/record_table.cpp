#include "record_table.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace survhost {
namespace {

template <std::size_t... Counts>
constexpr auto Join(const std::array<Field, Counts>&... parts) {
    std::array<Field, (Counts + ...)> all{};
    auto end = all.begin();
    ((end = std::copy(parts.begin(), parts.end(), end)), ...);
    return all;
}

/// The fields of a block as fields of the record that holds it at `offset`.
template <std::size_t Count>
constexpr std::array<Field, Count> At(std::size_t offset, std::array<Field, Count> block) {
    for (Field& field : block) field = field.ShiftedBy(offset);
    return block;
}

// A table is a constant expression of its own, in which R is the record.
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage)
#define FIELD(member) MakeField<decltype(R::member)>(#member, offsetof(R, member))

// ---------------------------------------------------------------------------------------------------------------
// Blocks; they appear flat in the records that hold them

constexpr auto kContract = [] {
    using R = tagContractDescriptor;
    return std::array{FIELD(instrumentName), FIELD(symbol),     FIELD(series), FIELD(expiryDate),
                      FIELD(strikePrice),    FIELD(optionType), FIELD(caLevel)};
}();

constexpr auto kMarginRates = [] {
    using R = tagMarginRateBlock;
    return std::array{FIELD(priceNumerator), FIELD(priceDenominator), FIELD(generalNumerator),
                      FIELD(generalDenominator), FIELD(lotMultiplier)};
}();

constexpr auto kScripRates = [] {
    using R = tagScripRateBlock;
    return std::array{FIELD(scripRate), FIELD(marginBasis), FIELD(marginRate)};
}();

// ---------------------------------------------------------------------------------------------------------------
// Requests

constexpr auto kSurveillanceInfo = [] {
    using R = tagSurveillanceInfo;
    return Join(std::array{FIELD(exchangeMask), FIELD(groupCode), FIELD(dealerCode), FIELD(familyCode),
                           FIELD(clientCode), FIELD(subClientCode), FIELD(userId), FIELD(groupType), FIELD(dealerType),
                           FIELD(clientType), FIELD(subClientType), FIELD(levelCheckFlags), FIELD(levelMarginFlags),
                           FIELD(requestFlags), FIELD(token), FIELD(underlyingToken)},
                At(offsetof(R, scripRates), kScripRates),
                std::array{FIELD(failedLevelCode), FIELD(failedLevelType), FIELD(messageCode), FIELD(scripGroupNumber),
                           FIELD(priceMultiplier)},
                At(offsetof(R, marginRates), kMarginRates));
}();

constexpr auto kOrderRequest = [] {
    using R = tagOrderRequest;
    return Join(
        std::array{FIELD(messageCode), FIELD(exchangeMask), FIELD(clientCategory).Unterminated()},
        At(offsetof(R, contract), kContract),
        std::array{FIELD(clientAccount).Unterminated(), FIELD(buySell), FIELD(quantityRemaining), FIELD(quantity),
                   FIELD(quantityFilled), FIELD(price), FIELD(triggerPrice), FIELD(cancelledQuantity),
                   FIELD(orderFlags), FIELD(accountText).Unterminated(), FIELD(proClient), FIELD(rejectionText),
                   FIELD(productType), FIELD(marginPlusLeg), FIELD(firstLegPrice), FIELD(secondLegPrice)});
}();

constexpr auto kOrderInfo = [] {
    using R = tagOrderInfo;
    return Join(std::array{FIELD(messageCode), FIELD(exchangeMask), FIELD(clientCategory).Unterminated()},
                At(offsetof(R, contract), kContract),
                std::array{FIELD(clientAccount).Unterminated(), FIELD(buySell), FIELD(quantityRemaining),
                           FIELD(quantity), FIELD(quantityFilled), FIELD(price), FIELD(triggerPrice),
                           FIELD(cancelledQuantity), FIELD(orderFlags), FIELD(accountText).Unterminated(),
                           FIELD(proClient), FIELD(rejectionText), FIELD(productType), FIELD(marginPlusLeg),
                           FIELD(firstLegPrice), FIELD(secondLegPrice), FIELD(orderStatus)});
}();

constexpr auto kTradeCorrection = [] {
    using R = tagTradeCorrectionRequest;
    return Join(std::array{FIELD(exchangeMask)}, At(offsetof(R, contract), kContract),
                std::array{FIELD(tradedQuantity), FIELD(tradePrice), FIELD(newQuantity),
                           FIELD(buySellCharacter).Unterminated(), FIELD(sellClientAccount).Unterminated(),
                           FIELD(buyClientAccount).Unterminated(), FIELD(accountText).Unterminated()});
}();

constexpr auto kTradeInfo = [] {
    using R = tagTradeInfo;
    return Join(std::array{FIELD(exchangeMask), FIELD(clientAccount).Unterminated(), FIELD(buySell),
                           FIELD(tradedQuantity), FIELD(tradePrice)},
                At(offsetof(R, contract), kContract),
                std::array{FIELD(productType), FIELD(marginPlusLeg), FIELD(firstLegPrice), FIELD(secondLegPrice)});
}();

// ---------------------------------------------------------------------------------------------------------------
// Answers

template <class R>
constexpr auto kErrorRecord =
    std::array{FIELD(timeStamp).NeverWritten(), FIELD(headCode), FIELD(errorCode), FIELD(errorText)};

constexpr auto kBreachRow = [] {
    using R = tagBreachRow;
    return std::array{FIELD(token), FIELD(entityCode), FIELD(limitMask), FIELD(breachBitsA), FIELD(breachBitsB)};
}();

// ---------------------------------------------------------------------------------------------------------------
// Risk parameters and margin rates

constexpr auto kRiskUnderlying = [] {
    using R = tagRPFUnderlyingRecord;
    return std::array{FIELD(underlyingToken), FIELD(calendarSpreadCharge), FIELD(shortOptionMinimumCharge)};
}();

constexpr auto kRiskContract = [] {
    using R = tagRPFContractRecord;
    return Join(At(offsetof(R, contract), kContract),
                std::array{FIELD(token), FIELD(underlyingToken), FIELD(contractPrice), FIELD(riskArray),
                           FIELD(compositeDelta)});
}();

constexpr auto kAdditionalMargin = [] {
    using R = tagAdditionalMarginInfo;
    return std::array{FIELD(exchange),       FIELD(token),           FIELD(additionalMarginRate),
                      FIELD(longMarginRate), FIELD(shortMarginRate), FIELD(sellExposureRate),
                      FIELD(buyExposureRate)};
}();

// ---------------------------------------------------------------------------------------------------------------
// Rows and preferences

/// A limit or multiplier that a script leaves out is no limit, not a limit of 0.
constexpr auto kLimitRow = [] {
    using R = BKSurveillanceLimitDefTag;
    constexpr int kNone = -1;
    return std::array{
        FIELD(messageCode),
        FIELD(messageKind),
        FIELD(rowStamp),
        FIELD(entityCode),
        FIELD(entityLevel),
        FIELD(subLevel),
        FIELD(token),
        FIELD(limitMask),
        FIELD(grossExposureLimit).Default(kNone),
        FIELD(netExposureLimit).Default(kNone),
        FIELD(netSaleExposureLimit).Default(kNone),
        FIELD(netPositionLimit).Default(kNone),
        FIELD(turnoverLimit).Default(kNone),
        FIELD(pendingOrderLimit).Default(kNone),
        FIELD(mtmLossLimit).Default(kNone),
        FIELD(maxSingleOrderValue).Default(kNone),
        FIELD(maxSingleOrderQty).Default(kNone),
        FIELD(marginLimit).Default(kNone),
        FIELD(baseFund),
        FIELD(netQuantityLimit).Default(kNone),
        FIELD(grossExposureMultiplier).Default(kNone),
        FIELD(netExposureMultiplier).Default(kNone),
        FIELD(netSaleExposureMultiplier).Default(kNone),
        FIELD(netPositionMultiplier).Default(kNone),
        FIELD(turnoverMultiplier).Default(kNone),
        FIELD(pendingOrderMultiplier).Default(kNone),
        FIELD(mtmLossMultiplier).Default(kNone),
        FIELD(marginMultiplier).Default(kNone),
        FIELD(rowOption),
        FIELD(limitOptions),
        FIELD(usedGrossOrder),
        FIELD(usedNetOrder),
        FIELD(usedNetSaleOrder),
        FIELD(usedNetPositionOrder),
        FIELD(usedTurnoverOrder),
        FIELD(usedGrossTraded),
        FIELD(usedNetTraded),
        FIELD(usedNetSaleTraded),
        FIELD(usedNetPositionTraded),
        FIELD(usedTurnoverTraded),
        FIELD(usedPendingOrder),
        FIELD(usedMtm),
        FIELD(usedMaxGross),
        FIELD(usedMaxNet),
        FIELD(usedMaxNetSale),
        FIELD(usedMaxNetPosition),
        FIELD(usedMaxTurnover),
        FIELD(usedMarginOrder),
        FIELD(usedMarginTraded),
        FIELD(usedMarginMax),
        FIELD(grossUsedGrossOrder),
        FIELD(grossUsedNetOrder),
        FIELD(grossUsedNetSaleOrder),
        FIELD(grossUsedGrossTraded),
        FIELD(grossUsedNetTraded),
        FIELD(grossUsedNetSaleTraded),
        FIELD(grossUsedMaxGross),
        FIELD(grossUsedMaxNet),
        FIELD(grossUsedMaxNetSale),
        FIELD(usedMtmFull),
        FIELD(usedBookedPnl),
        FIELD(collateralFund),
        FIELD(saleCreditFund),
        FIELD(definedFund),
        FIELD(usedExposureMargin),
        FIELD(minSingleOrderValue).Default(kNone),
        FIELD(minSingleOrderQty).Default(kNone),
    };
}();

constexpr auto kPositionRow = [] {
    using R = BKExposureTag;
    return Join(std::array{FIELD(messageKind), FIELD(rowStamp), FIELD(levelCode), FIELD(groupCode), FIELD(accountCode),
                           FIELD(familyCode), FIELD(userId), FIELD(marketSegment), FIELD(limitMask), FIELD(token),
                           FIELD(underlyingToken)},
                At(offsetof(R, contract), kContract),
                std::array{FIELD(lastPrice), FIELD(orderBuyQty), FIELD(orderBuyValue), FIELD(orderSellQty),
                           FIELD(orderSellValue), FIELD(tradedBuyQty), FIELD(tradedBuyValue), FIELD(tradedSellQty),
                           FIELD(tradedSellValue), FIELD(openPositionValue), FIELD(mtmValue), FIELD(clientLevelType),
                           FIELD(subClientLevelType), FIELD(groupLevelType), FIELD(priceMultiplier)},
                At(offsetof(R, marginRates), kMarginRates), At(offsetof(R, scripRates), kScripRates));
}();

constexpr auto kPreference = [] {
    using R = tagClientRiskPreferenceInfoForSurv;
    return std::array{FIELD(preferenceCode),
                      FIELD(familyCode),
                      FIELD(parentCode),
                      FIELD(accountCode),
                      FIELD(exchange),
                      FIELD(token),
                      FIELD(prefMarginRate),
                      FIELD(marginAddOnFactor),
                      FIELD(prefExtraMarginRate),
                      FIELD(carried),
                      FIELD(preAutoSquareOffPart),
                      FIELD(autoSquareOffPart),
                      FIELD(prefMarginMode),
                      FIELD(allowedProducts),
                      FIELD(marginFlags),
                      FIELD(fundFlags)};
}();

constexpr auto kScripBasket = [] {
    using R = tagProductTypeScripBasket;
    return std::array{FIELD(token),         FIELD(productFlags), FIELD(firstLegBand),
                      FIELD(secondLegBand), FIELD(dailyBand),    FIELD(basePrice)};
}();

constexpr auto kTokenPrice = [] {
    using R = tagTokenPriceRecord;
    return std::array{FIELD(token),  FIELD(exchange), FIELD(symbol),     FIELD(series),         FIELD(priceA),
                      FIELD(priceB), FIELD(priceC),   FIELD(closePrice), FIELD(lastTradedPrice)};
}();

constexpr auto kTouchline = [] {
    using R = tagBcastMBOOrMBPTouchline;
    return std::array{FIELD(exchange),     FIELD(token),         FIELD(lastTradedPrice),
                      FIELD(bestBuyPrice), FIELD(bestSellPrice), FIELD(closePrice),
                      FIELD(priceA),       FIELD(priceB),        FIELD(priceC)};
}();

constexpr auto kCompulsorySeries = [] {
    using R = tagCompulsoryDeliverySeries;
    return std::array{FIELD(series), FIELD(exchange)};
}();

// ---------------------------------------------------------------------------------------------------------------
// Depository and funds

constexpr auto kDpHolding = [] {
    using R = tagDPHolding;
    return std::array{
        FIELD(categoryCode),      FIELD(carriedText1),       FIELD(carriedText2),     FIELD(carriedLong1),
        FIELD(carriedLong2),      FIELD(carriedText3),       FIELD(isinCode),         FIELD(holdingQty),
        FIELD(nseBlockedQty),     FIELD(bseBlockedQty),      FIELD(nseSarQty),        FIELD(nseSarBlockedQty),
        FIELD(bseSarQty),         FIELD(bseSarBlockedQty),   FIELD(nseOrderBuyQty),   FIELD(nseOrderSellQty),
        FIELD(nseTradedBuyQty),   FIELD(nseTradedSellQty),   FIELD(nseOrderBuyValue), FIELD(nseOrderSellValue),
        FIELD(nseTradedBuyValue), FIELD(nseTradedSellValue), FIELD(bseOrderBuyQty),   FIELD(bseOrderSellQty),
        FIELD(bseTradedBuyQty),   FIELD(bseTradedSellQty),   FIELD(bseOrderBuyValue), FIELD(bseOrderSellValue),
        FIELD(bseTradedBuyValue), FIELD(bseTradedSellValue), FIELD(carriedText4),     FIELD(collateralQty),
        FIELD(collateralPrice),   FIELD(collateralValue),    FIELD(saleCredit),       FIELD(haircutRate)};
}();

constexpr auto kDpUpload = [] {
    using R = tagDPUpload;
    return std::array{FIELD(categoryCode), FIELD(carriedText1), FIELD(carriedText2),    FIELD(isinCode),
                      FIELD(carriedText3), FIELD(quantity),     FIELD(collateralPrice), FIELD(haircutRate)};
}();

constexpr auto kSarRow = [] {
    using R = tagSarRow;
    return std::array{FIELD(categoryCode), FIELD(carriedText1), FIELD(carriedText2),
                      FIELD(limitMask),    FIELD(quantity),     FIELD(isinCode)};
}();

constexpr auto kSecurityIsin = [] {
    using R = tagSecurityIsinRow;
    return std::array{FIELD(token), FIELD(isinCode), FIELD(symbol), FIELD(series), FIELD(exchange)};
}();

constexpr auto kFundRequest = [] {
    using R = tagRMSFundAllocationRequest;
    return std::array{FIELD(timeStamp).NeverWritten(),
                      FIELD(messageCode),
                      FIELD(headCode),
                      FIELD(entityName),
                      FIELD(entityKey),
                      FIELD(requestedFund),
                      FIELD(usedMargin),
                      FIELD(errorText)};
}();

#undef FIELD

}  // namespace

const Field* RecordTable::Find(std::string_view field) const {
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const Field& f) { return f.name == field; });
    return found == fields.end() ? nullptr : &*found;
}

// Each record's table under its type.
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage)
#define RECORD(Record, table)                                                \
    template <>                                                              \
    const RecordTable& TableOf<Record>() {                                   \
        static constexpr RecordTable kTable{#Record, sizeof(Record), table}; \
        return kTable;                                                       \
    }

RECORD(tagSurveillanceInfo, kSurveillanceInfo)
RECORD(tagOrderRequest, kOrderRequest)
RECORD(tagOrderInfo, kOrderInfo)
RECORD(tagTradeCorrectionRequest, kTradeCorrection)
RECORD(tagTradeInfo, kTradeInfo)
RECORD(tagAdminErrMessage, kErrorRecord<tagAdminErrMessage>)
RECORD(tagOrdErrMessage, kErrorRecord<tagOrdErrMessage>)
RECORD(tagBreachRow, kBreachRow)
RECORD(tagRPFUnderlyingRecord, kRiskUnderlying)
RECORD(tagRPFContractRecord, kRiskContract)
RECORD(tagAdditionalMarginInfo, kAdditionalMargin)
RECORD(tagProductTypeScripBasket, kScripBasket)
RECORD(tagTokenPriceRecord, kTokenPrice)
RECORD(tagCompulsoryDeliverySeries, kCompulsorySeries)
RECORD(tagBcastMBOOrMBPTouchline, kTouchline)
RECORD(BKSurveillanceLimitDefTag, kLimitRow)
RECORD(BKExposureTag, kPositionRow)
RECORD(tagDPHolding, kDpHolding)
RECORD(tagDPUpload, kDpUpload)
RECORD(tagSarRow, kSarRow)
RECORD(tagSecurityIsinRow, kSecurityIsin)
RECORD(tagRMSFundAllocationRequest, kFundRequest)
RECORD(tagClientRiskPreferenceInfoForSurv, kPreference)

#undef RECORD

std::span<const RecordTable* const> AllTables() {
    static const std::array kAll{&TableOf<tagSurveillanceInfo>(),
                                 &TableOf<tagOrderRequest>(),
                                 &TableOf<tagOrderInfo>(),
                                 &TableOf<tagTradeCorrectionRequest>(),
                                 &TableOf<tagTradeInfo>(),
                                 &TableOf<tagAdminErrMessage>(),
                                 &TableOf<tagOrdErrMessage>(),
                                 &TableOf<tagBreachRow>(),
                                 &TableOf<tagRPFUnderlyingRecord>(),
                                 &TableOf<tagRPFContractRecord>(),
                                 &TableOf<tagAdditionalMarginInfo>(),
                                 &TableOf<tagProductTypeScripBasket>(),
                                 &TableOf<tagTokenPriceRecord>(),
                                 &TableOf<tagCompulsoryDeliverySeries>(),
                                 &TableOf<tagBcastMBOOrMBPTouchline>(),
                                 &TableOf<BKSurveillanceLimitDefTag>(),
                                 &TableOf<BKExposureTag>(),
                                 &TableOf<tagDPHolding>(),
                                 &TableOf<tagDPUpload>(),
                                 &TableOf<tagSarRow>(),
                                 &TableOf<tagSecurityIsinRow>(),
                                 &TableOf<tagRMSFundAllocationRequest>(),
                                 &TableOf<tagClientRiskPreferenceInfoForSurv>()};
    return kAll;
}

}  // namespace survhost
