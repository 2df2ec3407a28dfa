#pragma once

// The refusals of an order, of an event and of a fund request that are no limit rule (limits/limit_rules.h): each text
// stands here once, with its code and with the words in which docs/rules.md tells when it comes. Texts are forms for
// Format.

#include <array>
#include <cstdint>
#include <span>

#include "surveillance/codes.h"

namespace surv {

/// How a refusal writes errorCode: not at all, or with or without headCode beside it.
enum class CodeUse : std::uint8_t { kNone, kErrorCode, kErrorAndHeadCode };

struct RefusalRow {
    const char* text;
    const char* when;  ///< for the page of rules; nothing else reads it
    CodeUse codeUse = CodeUse::kErrorCode;
    std::int16_t code = code::kRefused;
    std::int16_t status = status::kRefused;
};

// clang-format off
namespace refusal {

// Market and risk parameters (orderpath/check.cpp)
inline constexpr RefusalRow kNoMarket{
    "Market for %s %s does not exist. Order pending with admin",
    "an order without a price whose scrip has none either, but a conversion", CodeUse::kNone, 0, status::kNoMarket};
inline constexpr RefusalRow kNoRiskParameters{
    "RPF Details not available",
    "a derivative of NSE, BSE or NCDEX in rpfMarginMode 1 whose contract no risk parameter file has brought",
    CodeUse::kErrorCode, code::kNoRiskParameters, status::kNoRiskParameters};

// What the order may be (orderpath/policy.cpp, product_policy.cpp, option_price_policy.cpp)
inline constexpr RefusalRow kScripClosed{
    "%s Order Not Allowed for the scrip - %s for ",
    "the product master has a record of the scrip, and its productFlags lack the product"};
inline constexpr RefusalRow kPreferenceNotSet{
    "%s Order Preference Not Set for ",
    "Margin+ and MTF: the dealer has preferences, but none of the exchange; or the client has none and there are none for everybody. "
    "AMO: the holder has preferences without an overall record (-1)"};
inline constexpr RefusalRow kProductNotAllowed{
    "%s Order Not Allowed for ",
    "Margin+ and MTF: allowedProducts of the record lacks the product"};
inline constexpr RefusalRow kNoBasket{
    "Product Scrip Basket Info not available for ",
    "Margin+: the product master has no record of the scrip; failedLevelCode is \"-\""};
inline constexpr RefusalRow kBuyLegsWrong{
    "Wrong Price for Margin Plus Buy Order -FirstLegPrice[%.2f] and SecondLegPrice[%.2f] for ",
    "Margin+, not the second leg: a buy whose first leg is below its second"};
inline constexpr RefusalRow kSellLegsWrong{
    "Wrong Price for Margin Plus Sell Order -FirstLegPrice[%.2f] and SecondLegPrice[%.2f] for ",
    "Margin+, not the second leg: a sell whose first leg is above its second"};
inline constexpr RefusalRow kTriggerIsLimit{
    "Trigger Price and Limit Price should not be equal for Margin Plus Order - Trigger Price[%.2f] and Limit "
    "Price[%.2f] for ",
    "Margin+: the trigger price is the price of the second leg"};
inline constexpr RefusalRow kFirstLegOutOfDay{
    "First Leg Price out of Daily Price Range[%.2f - %.2f] of Symbol-[%s] for ",
    "Margin+, legs 0 and 2: the first leg is outside basePrice more or less dailyBand"};
inline constexpr RefusalRow kLimitOutOfDay{
    "Limit Price out of Daily Price Range[%.2f - %.2f] of Symbol-[%s] for ",
    "the same, of the second leg"};
inline constexpr RefusalRow kTriggerOutOfRange{
    "Trigger Price out of range[%.2f - %.2f] of Symbol-[%s] for ",
    "Margin+, legs 0 and 2: the trigger isn't between the bands of the two legs, each away from the other"};
inline constexpr RefusalRow kLeastMarginPlusValue{
    "Order failed Min. Margin Plus Order Value Check where the limit = %.2f and current value = %.2f for",
    "Margin+, leg 0: first leg times quantity is below SetMarginPlusMinOrderValue"};
inline constexpr RefusalRow kAfterMarketOwnDelivery{
    "AMO Pro Delivery Order Not Allowed for .",
    "an after-market delivery of an own account that goes through the checks"};
inline constexpr RefusalRow kNewPositionsClosed{
    "New Positions for given scrip are not allowed for ",
    "positionMode 1 and bit 5 of requestFlags, unless the order squares off what its account holds at the root"};
inline constexpr RefusalRow kWrongProduct{
    "Wrong Product type ",
    "an order of NSE or BSE cash that names no product"};
inline constexpr RefusalRow kNoUnderlyingPrice{
    "LTP of Underlying is Not Available for the Scrip of ",
    "an option of NSE in positionMode 1 with the test of its side on (InitializeTokenInfo): no price of the underlying, "
    "and the order doesn't square off at the root"};
inline constexpr RefusalRow kSellCallBelow{
    "Order is not allowed as Price entered is less than the Percentage defined on the difference between the "
    "underlying price and the strike price ; Strike Price = %.2f and LTP = %.2f of ",
    "the same options, a call for sale below its worth less the band; not for a square-off at the root"};
inline constexpr RefusalRow kSellPutBelow{
    "Order is not allowed as Price entered is less than the Percentage defined on the difference between the "
    "underlying price and the strike price ; LTP =  %.2f and  Strike Price = %.2f of ",
    "the same, a put"};
inline constexpr RefusalRow kBuyCallAbove{
    "Order is not allowed as Price entered is more than the Percentage defined on the difference between the "
    "underlying price and the strike price ; Strike Price = %.2f and LTP = %.2f of ",
    "the same options, a call bought above its worth, where it has one, and the band; not for a square-off at the root"};
inline constexpr RefusalRow kBuyPutAbove{
    "Order is not allowed as Price entered is more than the Percentage defined on the difference between the "
    "underlying price and the strike price ; LTP =  %.2f and  Strike Price = %.2f  of ",
    "the same, a put"};
inline constexpr RefusalRow kDeliveryAlone{
    "Only Delivery Order Allowed",
    "a product other than delivery (2, 10) of an NRI client on a cash exchange, or in a series of compulsory delivery",
    CodeUse::kNone};

// Preferences at the client and dealer levels (orderpath/level_preferences.cpp)
inline constexpr RefusalRow kMarginNotAllowed{
    "Margin Order Not Allowed for ", "cash, product 1: allowedProducts of the level's preference lacks it"};
inline constexpr RefusalRow kToMarginNotAllowed{
    "Position Conversion failed since Margin Order Not Allowed for ", "the same, a conversion to margin"};
inline constexpr RefusalRow kAmoMarginNotAllowed{
    "AMO Margin Order Not Allowed for ", "the same, after-market margin"};
inline constexpr RefusalRow kDeliveryNotAllowed{
    "Delivery Order Not Allowed for ", "the same, delivery"};
inline constexpr RefusalRow kToDeliveryNotAllowed{
    "Position Conversion failed since Delivery Order Not Allowed for ", "the same, a conversion to delivery"};
inline constexpr RefusalRow kAmoDeliveryNotAllowed{
    "AMO Delivery Order Not Allowed for ", "the same, after-market delivery"};
inline constexpr RefusalRow kConversionAfterSession{
    "Position conversion Not Allowed after squareoff session",
    "a conversion while the square-off session setting of the exchange is 1", CodeUse::kNone, 0};

// Conversions and margin funding (limits/category_check.cpp, orderpath/level_walk.cpp)
inline constexpr RefusalRow kNoFreeQuantity{
    "Free Qty not available for Position Conversion",
    "the source product holds less than the order converts, or the conversion comes to no price", CodeUse::kErrorAndHeadCode};
inline constexpr RefusalRow kMtfFreshSell{
    "Fresh SELL order not allowed for MTF",
    "a sale of margin funding where the entity holds none of the scrip", CodeUse::kErrorAndHeadCode};
inline constexpr RefusalRow kMtfOversold{
    "Only Square Off Orders allowed for MTF",
    "a sale of margin funding beyond what was bought", CodeUse::kErrorAndHeadCode};

// Funds (limits/funds.cpp); the code is that of the request's head
inline constexpr RefusalRow kNoEntity{
    "Surveillance Limits not available for  %s",
    "entityKey names no entity", CodeUse::kNone, code::kStore};
inline constexpr RefusalRow kNoCombinedStore{
    "Surveillance Limits for All Exchange Combined not available for  %s",
    "the entity has no row of mask 511", CodeUse::kNone, code::kStore};
inline constexpr RefusalRow kNoFundRow{
    "Surveillance details not available for the Dealer",
    "it has none of token -9 there", CodeUse::kNone, kNotDone};
inline constexpr RefusalRow kRetainsMultiplier{
    "Retain Multiplier setting should not be turned on",
    "a withdrawal from a row with retainMultiplier", CodeUse::kNone, kNotDone};
inline constexpr RefusalRow kNoMarginMultiplier{
    "Margin Multiplier not set",
    "a withdrawal from a row whose marginMultiplier is -1", CodeUse::kNone, kNotDone};
inline constexpr RefusalRow kInsufficientFund{
    "Insufficient Fund, Available Fund = %.2f , Requested Fund = %.2f",
    "a withdrawal of more than the margin in use leaves free", CodeUse::kNone, kNotDone};

}  // namespace refusal

/// The refusals of one step of the order path.
struct RefusalGroup {
    const char* title;
    std::span<const RefusalRow* const> rows;
};
namespace detail {
inline constexpr std::array kMarketRows{&refusal::kNoMarket, &refusal::kNoRiskParameters};
inline constexpr std::array kPolicyRows{
    &refusal::kScripClosed, &refusal::kPreferenceNotSet, &refusal::kProductNotAllowed, &refusal::kNoBasket,
    &refusal::kBuyLegsWrong, &refusal::kSellLegsWrong, &refusal::kTriggerIsLimit, &refusal::kFirstLegOutOfDay,
    &refusal::kLimitOutOfDay, &refusal::kTriggerOutOfRange, &refusal::kLeastMarginPlusValue,
    &refusal::kAfterMarketOwnDelivery, &refusal::kNewPositionsClosed, &refusal::kWrongProduct,
    &refusal::kNoUnderlyingPrice, &refusal::kSellCallBelow, &refusal::kSellPutBelow, &refusal::kBuyCallAbove,
    &refusal::kBuyPutAbove, &refusal::kDeliveryAlone};
inline constexpr std::array kPreferenceRows{
    &refusal::kMarginNotAllowed, &refusal::kToMarginNotAllowed, &refusal::kAmoMarginNotAllowed,
    &refusal::kDeliveryNotAllowed, &refusal::kToDeliveryNotAllowed, &refusal::kAmoDeliveryNotAllowed,
    &refusal::kConversionAfterSession};
inline constexpr std::array kHoldingRows{&refusal::kNoFreeQuantity, &refusal::kMtfFreshSell, &refusal::kMtfOversold};
inline constexpr std::array kFundRows{&refusal::kNoEntity, &refusal::kNoCombinedStore, &refusal::kNoFundRow,
    &refusal::kRetainsMultiplier, &refusal::kNoMarginMultiplier, &refusal::kInsufficientFund};
}  // namespace detail

inline constexpr RefusalGroup kMarketRefusals{"Market and risk parameters", detail::kMarketRows};
inline constexpr RefusalGroup kPolicyRefusals{"What the order may be", detail::kPolicyRows};
inline constexpr RefusalGroup kPreferenceRefusals{"Preferences of the client and the dealer", detail::kPreferenceRows};
inline constexpr RefusalGroup kHoldingRefusals{"Conversions and margin funding", detail::kHoldingRows};
inline constexpr RefusalGroup kFundRefusals{"Fund requests", detail::kFundRows};
// clang-format on

}  // namespace surv
