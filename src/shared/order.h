#pragma once

#include <cstdint>

#include "platform/fixed_text.h"
#include "shared/scrip_info.h"
#include "surveillance/codes.h"
#include "surveillance/records.h"

namespace surv {

class CRPFContractWiseInfo;
class CRPFUnderlyingWiseInfo;

/// Whether MCX quantities and values are weighted by lot (the setting mcxLotWeightOn).
enum class LotWeighting : std::uint8_t { kOff, kOn };

/// The preference in force while a level is evaluated: the 44 bytes of a preference record from exchange on.
struct RiskPreference {
    std::int32_t exchange = 0;
    std::int32_t token = 0;
    std::int32_t prefMarginRate = 0;
    std::int32_t marginAddOnFactor = 0;    ///< millionths
    std::int32_t prefExtraMarginRate = 0;  ///< millionths of value
    std::int32_t carried = 0;
    std::int32_t preAutoSquareOffPart = 0;  ///< millionths of mtmLossLimit
    std::int32_t autoSquareOffPart = 0;     ///< millionths of mtmLossLimit
    std::int16_t prefMarginMode = 0;
    std::int32_t allowedProducts = 0;
    std::uint8_t marginFlags = 0;
    std::uint8_t fundFlags = 0;
};

/// The 68-byte additional margin record of a token; rates as the host loads them.
struct AdditionalMarginBlock {
    std::int32_t additionalMarginRate = 0;
    std::int32_t longMarginRate = 0;
    std::int32_t shortMarginRate = 0;
    std::int32_t sellExposureRate = 0;
    std::int32_t buyExposureRate = 0;
};

/// The working record of an order. The host never sees it; the order path fills it once, and rewrites the fields of
/// the level before each level. Prices are paise.
struct tagOrderInfoForSurv {
    std::int16_t marketSegment = 0;
    FixedText<8> levelCode;   ///< the level now evaluated
    FixedText<8> parentCode;  ///< group code, the client code at the sub client level, or empty
    FixedText<16> userId;
    FixedText<32> accountCode;         ///< "*****" for own-account orders
    std::int16_t levelMarginFlag = 0;  ///< 1: the margin rule applies at this level
    std::int32_t underlyingToken = 0;
    std::int32_t token = 0;
    std::int32_t scripGroupNumber = 0;
    FixedText<8> scripGroup;  ///< text of scripGroupNumber
    tagContractDescriptor contract{};

    std::int16_t orderEventKind = 0;
    std::int16_t buySell = 0;
    std::int32_t prevQuantity = 0;  ///< the order before this event
    std::int32_t prevPrice = 0;
    std::int32_t quantity = 0;  ///< the order after it
    std::int32_t price = 0;
    std::int32_t lastTradedPrice = 0;  ///< of the scrip, or its close
    std::int32_t marketSidePrice = 0;  ///< best offer for a buy, best bid for a sell
    std::int32_t closePrice = 0;

    const CRPFContractWiseInfo* contractRpf = nullptr;  ///< null: margin isn't taken from risk parameters
    const CRPFUnderlyingWiseInfo* underlyingRpf = nullptr;
    std::int16_t periodicity = 0;                    ///< limit mask that the evaluation works on now
    std::int16_t riskModeCopy = 0;                   ///< rpfMarginMode
    LotWeighting lotWeighting = LotWeighting::kOff;  ///< mcxLotWeightOn
    std::int16_t clientLevelType = 0;
    std::int16_t subClientLevelType = 0;
    std::int16_t groupLevelType = 0;
    std::int32_t priceMultiplier = 0;  ///< 10000 = 1.0
    tagScripRateBlock scripRates{};
    std::int16_t productType = 0;
    FixedText<16> isinCode;  ///< cash segments only
    std::int32_t dpSetQty = 0;
    std::int32_t dpPrevBlockedQty = 0;
    std::int32_t dpTodayFreeQty = 0;
    std::int16_t rpfRecomputeFlag = 0;  ///< 1 while a recomputation runs; 0 on the order path
    RiskPreference riskPreference;
    std::int32_t preAutoSquareOffPart = 0;  ///< millionths of the MTM loss limit
    std::int32_t autoSquareOffPart = 0;
    bool preAutoSquareOffOn = false;
    bool autoSquareOffOn = false;
    bool compulsoryDelivery = false;  ///< the series is one of compulsory delivery
    bool squareOffOnlyFlag = false;   ///< this level accepts square-off orders alone
    std::int16_t proClient = 0;       ///< 1 client, 2 own account
    bool deliveryLevel = false;       ///< this level is the one where delivery holdings count
    bool nriClient = false;
    tagMarginRateBlock marginRates{};
    std::int16_t marginPlusLeg = 0;
    std::int32_t firstLegPrice = 0;
    std::int32_t secondLegPrice = 0;
    std::int32_t firstLegQuantity = 0;
    std::int32_t triggerPrice = 0;
    AdditionalMarginBlock additionalMargin;
    tagExposureScripSpecificInfo* scripInfo = nullptr;
    tagPositionOwnerInfo* ownerInfo = nullptr;
    bool secondPass = false;
    double collateralDelta = 0;  ///< paise
    double saleCreditDelta = 0;  ///< paise

    [[nodiscard]] std::int16_t ExchangeMask() const { return SegmentToExchangeMask(marketSegment); }
    [[nodiscard]] bool IsBuy() const { return buySell == kBuy; }
    /// A delivery, or the conversion of a position to one.
    [[nodiscard]] bool IsDelivery() const {
        return productType == product::kDelivery || productType == product::kConvertToDelivery;
    }
    [[nodiscard]] bool IsConversion() const {
        return productType == product::kConvertToDelivery || productType == product::kConvertToMargin;
    }
    /// Deliveries and two-leg orders are tried, kept and shown on the expiry side alone.
    [[nodiscard]] bool HasDailySide() const { return !IsDelivery() && productType != product::kMarginPlus; }
    /// Compulsory delivery or an NRI client, on a cash exchange: buys and sells don't net.
    [[nodiscard]] bool NoNetting() const { return IsCashExchange(ExchangeMask()) && (compulsoryDelivery || nriClient); }
};

/// Fills a scrip's description from an order.
void FillValues(tagExposureScripSpecificInfo& scrip, const tagOrderInfoForSurv& order);

/// Fills a holder's codes from an order.
void FillOwner(tagPositionOwnerInfo& owner, const tagOrderInfoForSurv& order);

/// Text of a BSE scrip group number (-101 to -91); empty for any other.
[[nodiscard]] std::string_view ScripGroupText(std::int32_t scripGroupNumber);

/// The key under which positions and prices stand: key segment * 10000000 + token.
[[nodiscard]] constexpr std::int64_t PlainKey(std::int16_t keySegment, std::int32_t token) {
    return static_cast<std::int64_t>(keySegment) * kTokenSpan + token;
}

}  // namespace surv
