#include "limits/limit_rules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "limits/margin_rule.h"
#include "platform/format.h"

namespace surv {
namespace {

constexpr double kMillion = 1000000.0;
constexpr double kPaisePerRupee = 100.0;
constexpr std::int16_t kWholeHouseMask = 0x1FF;

// ---------------------------------------------------------------------------------------------------------------
// Figures, one function a rule

RuleFigures Compared(double figure, double limit, double stored = 0) { return {figure, limit, stored, limit}; }

RuleFigures NetQuantity(const RuleInput& in) {
    const auto quantity = [](const ExposureFigures& f) { return std::abs(static_cast<double>(f.maxNetQuantity)); };
    return Compared(quantity(in.trial.figuresAfter), in.now.netQuantityLimit, quantity(in.trial.figuresBefore));
}
RuleFigures MaxValue(const RuleInput& in) { return Compared(in.trial.newValue, in.now.maxSingleOrderValue); }
RuleFigures MaxQuantity(const RuleInput& in) { return Compared(in.order.quantity, in.now.maxSingleOrderQty); }
RuleFigures MinValue(const RuleInput& in) { return Compared(in.trial.newValue, in.now.minSingleOrderValue); }
RuleFigures MinQuantity(const RuleInput& in) { return Compared(in.order.quantity, in.now.minSingleOrderQty); }
RuleFigures Gross(const RuleInput& in) {
    return in.GrossBasis() ? Compared(in.now.grossUsedMaxGross, in.now.grossExposureLimit, in.stored.grossUsedMaxGross)
                           : Compared(in.now.usedMaxGross, in.now.grossExposureLimit, in.stored.usedMaxGross);
}
RuleFigures Net(const RuleInput& in) {
    return in.GrossBasis() ? Compared(in.now.grossUsedMaxNet, in.now.netExposureLimit, in.stored.grossUsedMaxNet)
                           : Compared(in.now.usedMaxNet, in.now.netExposureLimit, in.stored.usedMaxNet);
}
RuleFigures NetSale(const RuleInput& in) {
    return in.GrossBasis()
               ? Compared(in.now.grossUsedMaxNetSale, in.now.netSaleExposureLimit, in.stored.grossUsedMaxNetSale)
               : Compared(in.now.usedMaxNetSale, in.now.netSaleExposureLimit, in.stored.usedMaxNetSale);
}
RuleFigures NetPosition(const RuleInput& in) {
    return Compared(std::abs(in.now.usedMaxNetPosition), in.now.netPositionLimit,
                    std::abs(in.stored.usedMaxNetPosition));
}
RuleFigures PendingOrder(const RuleInput& in) {
    return Compared(in.now.usedPendingOrder, in.now.pendingOrderLimit, in.stored.usedPendingOrder);
}
RuleFigures Turnover(const RuleInput& in) {
    return Compared(in.now.usedMaxTurnover, in.now.turnoverLimit, in.stored.usedMaxTurnover);
}
RuleFigures MtmLoss(const RuleInput& in) { return Compared(std::abs(in.now.usedMtm), in.now.mtmLossLimit); }
RuleFigures PartOfMtmLoss(const RuleInput& in, std::int32_t millionths) {
    const double limit = in.now.mtmLossLimit;
    return {std::abs(in.now.usedMtm), millionths / kMillion * limit, 0, limit};
}
RuleFigures PreAutoSquareOff(const RuleInput& in) { return PartOfMtmLoss(in, in.order.preAutoSquareOffPart); }
RuleFigures AutoSquareOff(const RuleInput& in) { return PartOfMtmLoss(in, in.order.autoSquareOffPart); }
RuleFigures NoFigure(const RuleInput&) { return {}; }

// ---------------------------------------------------------------------------------------------------------------
// Where a rule is tried

bool Buys(const RuleInput& in) { return in.order.buySell == kBuy; }
bool Sells(const RuleInput& in) { return in.order.buySell == kSell; }
/// A loss; a figure that isn't a number counts as one, so that the comparison refuses it.
bool HasMtmLoss(const RuleInput& in) { return !(in.now.usedMtm >= 0); }
/// Not on a single futures or options segment of NSE or BSE; on a combined row beyond equity only the expiry side.
bool MtmLossApplies(const RuleInput& in) {
    if (!HasMtmLoss(in) || (in.shape.single && in.shape.hasFutOpt)) return false;
    return in.shape.single || !in.shape.hasOther || in.shape.odd;
}
bool SquareOffModeApplies(const RuleInput& in) { return in.order.squareOffOnlyFlag; }
bool AutoSquareOffPossible(const RuleInput& in) { return in.now.limitMask == kWholeHouseMask && HasMtmLoss(in); }
bool PreAutoSquareOffApplies(const RuleInput& in) { return in.order.preAutoSquareOffOn && AutoSquareOffPossible(in); }
bool AutoSquareOffApplies(const RuleInput& in) { return in.order.autoSquareOffOn && AutoSquareOffPossible(in); }
bool NriConversionApplies(const RuleInput& in) {
    return IsAmong(kMarginRows, in.now.limitMask) && in.order.productType == product::kConvertToMargin &&
           IsCashExchange(in.order.ExchangeMask()) && in.order.nriClient;
}

bool IsinMissing(const RuleInput& in) { return in.order.isinCode.Empty(); }
bool NriDeliveryApplies(const RuleInput& in) {
    return in.order.nriClient && in.order.productType == product::kConvertToDelivery;
}

// ---------------------------------------------------------------------------------------------------------------
// The sale of deliveries: what is held and bought must cover it

struct DeliverySell {
    std::int64_t used;       ///< shares that the order takes beyond those bought
    std::int64_t available;  ///< at the depository
};

/// Sold beyond bought; where buys and sells don't net, sold.
std::int64_t SoldQty(const CSurvPosition& position, bool netting) {
    return position.data.orderSellQty - (netting ? position.data.tradedBuyQty : 0);
}
DeliverySell FormDeliverySell(const RuleInput& in) {
    const bool netting = !in.order.NoNetting();
    return {SoldQty(in.trial.after, netting) - SoldQty(in.trial.before, netting),
            std::int64_t{in.order.dpSetQty} - in.order.dpPrevBlockedQty};
}
/// Sells only, and only beyond what is bought already.
bool DeliverySellApplies(const RuleInput& in) {
    const tagSurvPositionData& after = in.trial.after.data;
    if (!Sells(in) || (after.tradedBuyQty >= after.orderSellQty && !in.order.NoNetting())) return false;
    const DeliverySell sell = FormDeliverySell(in);
    return sell.available - (sell.used - in.order.dpTodayFreeQty) < 0;
}
std::string DeliverySellText(const RuleInput& in, const char* form) {
    return Format(form, in.order.dpSetQty, static_cast<long>(FormDeliverySell(in).used), in.order.dpPrevBlockedQty,
                  in.order.dpTodayFreeQty);
}

// ---------------------------------------------------------------------------------------------------------------
// The table

constexpr auto kAbove = Breaks::kAbove;
constexpr auto kQuantity = Unit::kQuantity;
constexpr auto kMoney = Unit::kMoney;
constexpr auto kNobody = Exempt::kNobody;
constexpr auto kSquareOff = Exempt::kSquareOff;

constexpr TextNumbers kOwn = TextNumbers::kNone;
constexpr TextNumbers kLF = TextNumbers::kLimitFigure;
constexpr TextNumbers kLSF = TextNumbers::kLimitStoredFigure;
constexpr TextNumbers kFL = TextNumbers::kFigureLimit;
constexpr TextNumbers kFLS = TextNumbers::kFigureLimitStored;

constexpr const char* kProductMarginText = "Margin Limit exceeded. Set = %.2lf, Used = %.2lf (%s) (Prev = %.2lf)";

// clang-format off
constexpr std::array kRules{
    tagLimitRule{
        RuleId::kNetQuantity, {"net quantity", "the net quantity of the scrip's position in its worst case",
            "netQuantityLimit", ""},
        code::kNetQuantity, kAbove, kQuantity, kSquareOff, nullptr, &NetQuantity,
        "Net Quantity Limit exceeded",
        {kLSF, "Order failed Net Quantity check where the limit is %ld , prev. utilized was %ld and current value is %ld "},
        false, 0, 4,
        {kFLS, "Order failed Net Quantity %ld exceeded, Limit = %ld (Utilised =  % ld)"}},
    tagLimitRule{
        RuleId::kMaxValue, {"largest order by value", "value of the order",
            "maxSingleOrderValue", ""},
        code::kOrderValue, kAbove, kMoney, kNobody, nullptr, &MaxValue,
        "Max. Single Transaction Value exceeded",
        {kLF, "Order failed Max. Single Transaction Value Check where the limit is %.2f and current value is %.2f "},
        false, 0, 1,
        {kFL, "Order failed Max. Single Transaction Value %.2f exceeded %.2f Limit"}},
    tagLimitRule{
        RuleId::kMaxQuantity, {"largest order by quantity", "quantity of the order",
            "maxSingleOrderQty", ""},
        code::kOrderQuantity, kAbove, kQuantity, kNobody, nullptr, &MaxQuantity,
        "Max. Single Transaction Qty. exceeded",
        {kLF, "Order failed Max. Single Transaction Qty Check where the limit is %ld and current value is %ld "},
        false, 0, 2,
        {kFL, "Order failed Max. Single Transaction Qty %ld exceeded %ld Limit"}},
    tagLimitRule{
        RuleId::kMinValue, {"smallest order by value", "value of the order",
            "minSingleOrderValue", ""},
        code::kOrderValue, Breaks::kBelow, kMoney, kNobody, nullptr, &MinValue,
        "Minimum. Single Transaction Value Not Satisfied",
        {kLF, "Order failed Minimum. Single Transaction Value Check where the limit is %.2f and current value is %.2f "},
        false, 0, 0, {}},
    tagLimitRule{
        RuleId::kMinQuantity, {"smallest order by quantity", "quantity of the order",
            "minSingleOrderQty", ""},
        code::kOrderQuantity, Breaks::kBelow, kQuantity, kNobody, nullptr, &MinQuantity,
        "Min. Single Transaction Qty. Not Satisfied ",
        {kLF, "Order failed Min. Single Transaction Qty Check where the limit is %ld and current value is %ld "},
        false, 0, 0, {}},
    tagLimitRule{
        RuleId::kIsin, {"ISIN", "none",
            "", "the scrip has no ISIN"},
        code::kRefused, Breaks::kAlways, kMoney, kNobody, &IsinMissing, &NoFigure,
        nullptr,
        {TextNumbers::kNone, "ISIN Code Not Available for Buy Delivery Order"},
        false, 0, 0, {}},
    tagLimitRule{
        RuleId::kNriDelivery, {"NRI, to delivery", "none",
            "", "a conversion to delivery of an NRI client"},
        code::kRefused, Breaks::kAlways, kMoney, kNobody, &NriDeliveryApplies, &NoFigure,
        nullptr,
        {TextNumbers::kNone, "NRI Client Position Conversion Not Allowed"},
        false, 0, 0, {}},
    tagLimitRule{
        RuleId::kDeliveryMargin, {"margin of deliveries", "usedMarginMax before the order, the change of the order's worst case, what the preference counts, and the margin of a conversion",
            "marginLimit", "buys"},
        code::kRefused, kAbove, kMoney, kNobody, &Buys, &DeliveryMargin,
        nullptr,
        {kOwn, kProductMarginText, nullptr, nullptr, nullptr, "Limit exceeded-PC.Set=%.2lf,Used=%.2lf(%s)(Prev=%.2lf)"},
        false, 0x20, 0, {}, &DeliveryMarginText},
    tagLimitRule{
        RuleId::kDeliverySell, {"sale of deliveries", "shares that the order takes beyond those bought, less those free today, against what is held and not blocked",
            "", "sells beyond what was bought; of an NRI client and in a series of compulsory delivery every sale"},
        code::kRefused, Breaks::kAlways, kQuantity, kNobody, &DeliverySellApplies, &NoFigure,
        nullptr,
        {kOwn,
         "Delivery Order Sell Qty Limit exceeded QTY (DP+SAR) Set = %d, Net Used = %ld , (DP+SAR)Prev Blocked = %d, Today Free Qty = %d ",
         nullptr, nullptr, nullptr,
         "Limit exceeded Set = %d, N.Used = %ld ,Prev= %d, T.Free Qty = %d "},
        false, 0, 0, {}, &DeliverySellText},
    tagLimitRule{
        RuleId::kMarginPlusMargin, {"margin of two-leg orders", "the largest of the three margin views, and what the preference counts",
            "marginLimit", ""},
        code::kRefused, kAbove, kMoney, kNobody, nullptr, &MarginPlusMargin,
        nullptr,
        {kOwn, "Margin Limit exceeded for Margin Plus Order.Set=%.2lf,Used=%.2lf(%s)(Prev=%.2lf)"},
        false, 0x20, 0, {}, &MarginPlusMarginText},
    tagLimitRule{
        RuleId::kMtfMargin, {"margin of margin funding", "usedMarginMax, and what the preference counts",
            "marginLimit", ""},
        code::kRefused, kAbove, kMoney, kNobody, nullptr, &MtfMargin,
        nullptr, {kOwn, kProductMarginText}, false, 0x20, 0, {}, &MtfMarginText},
    tagLimitRule{
        RuleId::kGross, {"gross exposure", "usedMaxGross; on gross basis grossUsedMaxGross",
            "grossExposureLimit", ""},
        code::kGrossExposure, kAbove, kMoney, Exempt::kSquareOffUnlessNoNetting, nullptr, &Gross,
        "Gross Exposure Limit exceeded",
        {kLSF,
         "Order failed Gross Exposure check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
         nullptr,
         "Order failed Gross Exposure(Gross) check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
         nullptr},
        true, 1, 0,
        {kFLS,
         "Order failed Gross Exposure  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)",
         nullptr,
         "Order failed Gross Exposure(Grossing) %.2f exceeded, Limit = %.2f (Utilised =  % .2f)",
         nullptr}},
    tagLimitRule{
        RuleId::kNet, {"net exposure", "usedMaxNet; on gross basis grossUsedMaxNet",
            "netExposureLimit", "buys; in an enquiry sells too"},
        code::kNetExposure, kAbove, kMoney, kSquareOff, &Buys, &Net,
        "Net Exposure Limit exceeded",
        {kLSF,
         "Order failed Net Exposure check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
         "Order failed Net Purchase check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
         "Order failed Net Exposure(Gross) check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
         "Order failed Net Purchase(Gross) check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f "},
        true, 2, 0,
        {kFLS,
         "Order failed Net Exposure  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)",
         "Order failed Net Purchase  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)",
         "Order failed Net Exposure(Grossing)  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)",
         "Order failed Net Purchase(Grossing)  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)"}},
    tagLimitRule{
        RuleId::kNetSale, {"net sale exposure", "usedMaxNetSale; on gross basis grossUsedMaxNetSale",
            "netSaleExposureLimit", "sells; in an enquiry buys too"},
        code::kNetSaleExposure, kAbove, kMoney, kSquareOff, &Sells, &NetSale,
        "Net Sale Exposure Limit exceeded",
        {kLSF,
         "Order failed Net Sale Exposure check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
         "Order failed Net Write check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
         "Order failed Net Sale Exposure(Gross) check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
         "Order failed Net Write(Gross) check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f "},
        true, 4, 0,
        {kFLS,
         "Order failed Net Sale Exposure  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)",
         "Order failed Net Write  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)",
         "Order failed Net Sale Exposure(Grossing)  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)",
         "Order failed Net Write(Grossing)  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)"}},
    tagLimitRule{
        RuleId::kNetPosition, {"net position", "|usedMaxNetPosition|",
            "netPositionLimit", ""},
        code::kNetPosition, kAbove, kMoney, kSquareOff, nullptr, &NetPosition,
        "Net Position Limit exceeded",
        {kLSF, "Order failed Net Position check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f "},
        true, 8, 0,
        {kFLS, "Order failed Net Position  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)"}},
    tagLimitRule{
        RuleId::kPendingOrder, {"pending orders", "usedPendingOrder",
            "pendingOrderLimit", ""},
        code::kPendingOrder, kAbove, kMoney, kNobody, nullptr, &PendingOrder,
        "Pending Order Limit exceeded",
        {kLSF, "Order failed Pending Order check where the limit is %.2f, prev. utilized was %.2f and Current Value is %.2f "},
        false, 0x40, 0,
        {kFLS, "Order failed Pending Order  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)"}},
    tagLimitRule{
        RuleId::kTurnover, {"turnover", "usedMaxTurnover",
            "turnoverLimit", ""},
        code::kTurnover, kAbove, kMoney, kNobody, nullptr, &Turnover,
        "Turnover Limit exceeded",
        {kLSF, "Order failed Turnover check where the limit is %.2f, prev. utilized is  % .2f and current value is %.2f "},
        true, 0x10, 0,
        {kFLS, "Order failed Turnover  %.2f exceeded, Limit = %.2f (Utilised =  % .2f)"}},
    tagLimitRule{
        RuleId::kMtmLoss, {"MTM loss", "|usedMtm|",
            "mtmLossLimit", "usedMtm below 0; not on a row of one futures or options segment of NSE or BSE; on a combined row beyond equity only on its expiry side"},
        code::kMtmLoss, kAbove, kMoney, kSquareOff, &MtmLossApplies, &MtmLoss,
        "MTM Loss Limit exceeded",
        {kLF, "Order failed MTM Loss check where the limit is %.2f, prev. utilized was %.2f "},
        false, 0, 0, {}},
    tagLimitRule{
        RuleId::kSquareOffMode, {"square-off mode", "none",
            "", "the preference, the time or the session of the exchange leaves square-offs alone"},
        code::kMtmLoss, Breaks::kAlways, kMoney, kSquareOff, &SquareOffModeApplies, &NoFigure,
        "Only Square Off Orders allowed",
        {TextNumbers::kNone, "Only Square Off Orders allowed - User is in SquareOff mode"},
        false, 0, 0, {}},
    tagLimitRule{
        RuleId::kPreAutoSquareOff, {"before automatic square-off", "|usedMtm| against preAutoSquareOffPart of the limit",
            "mtmLossLimit", "usedMtm below 0, on rows of mask 511, where the overall preference has the mode on"},
        code::kMtmLoss, kAbove, kMoney, kSquareOff, &PreAutoSquareOffApplies, &PreAutoSquareOff,
        "Only Square Off Orders allowed - MTM Pre AutoSquareOff Mode",
        {kLF, "Only Square Off Orders allowed - MTM Pre AutoSquareOff Mode (limit is %.2f, prev. utilized was %.2f)"},
        false, 0, 0, {}},
    tagLimitRule{
        RuleId::kAutoSquareOff, {"automatic square-off", "|usedMtm| against autoSquareOffPart of the limit",
            "mtmLossLimit", "usedMtm below 0, on rows of mask 511, where the overall preference has the mode on"},
        code::kMtmLoss, kAbove, kMoney, kSquareOff, &AutoSquareOffApplies, &AutoSquareOff,
        "Only Square Off Orders allowed - MTM AutoSquareOff Mode",
        {kLF, "Only Square Off Orders allowed - MTM AutoSquareOff Mode (limit is %.2f, prev. utilized was %.2f)"},
        false, 0, 0, {}},
    tagLimitRule{
        RuleId::kMargin, {"margin", "the largest of the three margin views, what the preference counts, and the margin of a conversion",
            "marginLimit", "margin rows; derivatives but those of MCX only where the level asks for margin"},
        code::kRefused, kAbove, kMoney, Exempt::kSquareOffUnlessNoNettingOrConversion,
        &MarginApplies, &GeneralMargin,
        "Margin Limit exceeded",
        {kOwn, "Margin Limit exceeded.Set=%.2lf,Used=%.2lf(%s)(Prev=%.2lf)[UsedIM=%.2lf,PrevIM=%.2lf,EM=%.2lf,MTM=%.2lf,B.PL=%.2lf]"},
        false, 0x20, 0, {}, &GeneralMarginText},
    tagLimitRule{
        RuleId::kInitialMargin, {"initial margin", "the largest of the three margin views before the order",
            "marginLimit", "margin rows without exposureMarginInLimit, where the level asks for margin"},
        code::kRefused, kAbove, kMoney, kSquareOff, &InitialMarginApplies, &InitialMargin,
        "Initial Margin Limit exceeded",
        {kOwn, "Initial Margin Limit exceeded. Set = %.2lf, Used = %.2lf (%s) (Prev = %.2lf)"},
        false, 0x20, 0, {}, &InitialMarginText},
    tagLimitRule{
        RuleId::kSpanMargin, {"SPAN margin", "the same and usedExposureMargin, before the order",
            "marginLimit", "rows 13, 15, 97, 127, 257, 385, 511 with exposureMarginInLimit, where the level asks for margin"},
        code::kRefused, kAbove, kMoney, kSquareOff, &SpanMarginApplies, &SpanMargin,
        "SPAN Margin Limit exceeded",
        {kOwn, "SPAN Margin Limit exceeded. Set = %.2lf, Used = %.2lf(%s) (Prev = %.2lf) [Details ->UsedIM = %.2lf, PrevIM = %.2lf, EM = %.2lf]"},
        false, 0x20, 0, {}, &SpanMarginText},
    tagLimitRule{
        RuleId::kNriConversion, {"NRI, to margin", "none",
            "", "margin rows, a conversion to margin of an NRI client on a cash exchange"},
        code::kRefused, Breaks::kAlways, kMoney, kNobody, &NriConversionApplies, &NoFigure,
        nullptr,
        {TextNumbers::kNone, "NRI client Position Conversion Not allowed"},
        false, 0, 0, {}},
};
// clang-format on

constexpr bool RulesStandInOrder() {
    for (std::size_t i = 0; i < kRules.size(); ++i) {
        if (static_cast<std::size_t>(kRules[i].id) != i) return false;
    }
    return true;
}
static_assert(RulesStandInOrder(), "one row per RuleId, in its order");

const tagLimitRule& RuleOf(RuleId id) { return kRules[static_cast<std::size_t>(id)]; }

// ---------------------------------------------------------------------------------------------------------------
// The rule sets: which rules each has, and on which rows

struct RuleUse {
    RuleId rule;
    std::array<On, kRuleSetCount> on;
};

// clang-format off
// NOLINTNEXTLINE(readability-identifier-naming): as short as the cells of the table
constexpr On o = On::kNo, x = On::kYes, odd = On::kOdd, sett = On::kSettlement;
constexpr std::array kRuleUses{
    //                                  General  Report  Delivery  Margin+  MTF
    RuleUse{RuleId::kNetQuantity,      {x,       x,      o,        o,       o}},
    RuleUse{RuleId::kMaxValue,         {x,       x,      x,        x,       x}},
    RuleUse{RuleId::kMaxQuantity,      {x,       x,      x,        x,       x}},
    RuleUse{RuleId::kMinValue,         {x,       o,      x,        x,       x}},
    RuleUse{RuleId::kMinQuantity,      {x,       o,      x,        x,       x}},
    RuleUse{RuleId::kIsin,             {o,       o,      sett,     o,       o}},
    RuleUse{RuleId::kNriDelivery,      {o,       o,      sett,     o,       o}},
    RuleUse{RuleId::kDeliveryMargin,   {o,       o,      sett,     o,       o}},
    RuleUse{RuleId::kDeliverySell,     {o,       o,      sett,     o,       o}},
    RuleUse{RuleId::kMarginPlusMargin, {o,       o,      o,        sett,    o}},
    RuleUse{RuleId::kMtfMargin,        {o,       o,      o,        o,       sett}},
    RuleUse{RuleId::kGross,            {x,       x,      o,        o,       o}},
    RuleUse{RuleId::kNet,              {x,       x,      o,        o,       o}},
    RuleUse{RuleId::kNetSale,          {x,       x,      o,        o,       o}},
    RuleUse{RuleId::kNetPosition,      {x,       x,      o,        o,       o}},
    RuleUse{RuleId::kPendingOrder,     {x,       x,      o,        o,       o}},
    RuleUse{RuleId::kTurnover,         {x,       x,      o,        o,       o}},
    RuleUse{RuleId::kMtmLoss,          {x,       o,      o,        o,       o}},
    RuleUse{RuleId::kSquareOffMode,    {odd,     o,      o,        x,       o}},
    RuleUse{RuleId::kPreAutoSquareOff, {x,       o,      x,        x,       x}},
    RuleUse{RuleId::kAutoSquareOff,    {x,       o,      x,        x,       x}},
    RuleUse{RuleId::kMargin,           {x,       o,      o,        o,       o}},
    RuleUse{RuleId::kInitialMargin,    {o,       x,      o,        o,       o}},
    RuleUse{RuleId::kSpanMargin,       {o,       x,      o,        o,       o}},
    RuleUse{RuleId::kNriConversion,    {x,       o,      o,        o,       o}},
};
// clang-format on

constexpr bool UsesStandInOrder() {
    if (kRuleUses.size() != kRules.size()) return false;
    for (std::size_t i = 0; i < kRuleUses.size(); ++i) {
        if (static_cast<std::size_t>(kRuleUses[i].rule) != i) return false;
    }
    return true;
}
static_assert(UsesStandInOrder(), "one row per RuleId, in its order");

constexpr On UseIn(RuleSet set, const RuleUse& use) { return use.on[static_cast<std::size_t>(set)]; }

/// The rules of one set, in order.
template <RuleSet kSet>
constexpr auto ListRules() {
    constexpr auto kCount = static_cast<std::size_t>(std::count_if(
        kRuleUses.begin(), kRuleUses.end(), [](const RuleUse& use) { return UseIn(kSet, use) != On::kNo; }));
    std::array<RuleId, kCount> rules{};
    std::size_t at = 0;
    for (const RuleUse& use : kRuleUses) {
        if (UseIn(kSet, use) != On::kNo) rules[at++] = use.rule;
    }
    return rules;
}
template <RuleSet kSet>
constexpr auto kRulesOf = ListRules<kSet>();

// ---------------------------------------------------------------------------------------------------------------
// Judging and wording

[[gnu::always_inline]] inline bool IsExempt(const tagLimitRule& rule, const RuleInput& in, bool netting) {
    if (rule.exempt == Exempt::kNobody) return false;
    if (rule.exempt != Exempt::kSquareOff && !netting) return false;
    if (rule.exempt == Exempt::kSquareOffUnlessNoNettingOrConversion && in.order.IsConversion()) return false;
    const bool onGross =
        in.GrossBasis() && (rule.id == RuleId::kGross || rule.id == RuleId::kNet || rule.id == RuleId::kNetSale);
    return onGross ? in.trial.grossSquareOff : in.trial.squareOff;
}

[[gnu::always_inline]] inline bool IsBroken(const tagLimitRule& rule, const RuleFigures& figures) {
    if (rule.breaks == Breaks::kAlways) return true;
    if (figures.shownLimit == kNoLimit) return false;
    if (!std::isfinite(figures.limit)) return true;
    return rule.breaks == Breaks::kAbove ? !(figures.figure <= figures.limit) : !(figures.figure >= figures.limit);
}

/// One rule of a set that stops at the first. Both are known when this is compiled, so that their rows of the tables
/// cost nothing.
template <RuleSet kSet, RuleId kId>
[[gnu::always_inline]] inline bool BreaksRule(const RuleInput& in) {
    constexpr const tagLimitRule& kRule = kRules[static_cast<std::size_t>(kId)];
    constexpr On kOn = UseIn(kSet, kRuleUses[static_cast<std::size_t>(kId)]);
    if constexpr (kOn == On::kOdd) {
        if (!in.shape.odd) return false;
    }
    if constexpr (kOn == On::kSettlement) {
        if (!IsAmong(kSettlementRows, in.now.limitMask)) return false;
    }
    if (kRule.applies && !kRule.applies(in)) return false;
    return IsBroken(kRule, kRule.figures(in)) && !IsExempt(kRule, in, !in.order.NoNetting());
}

template <RuleSet kSet, std::size_t... kAt>
const tagLimitRule* FirstBroken(const RuleInput& in, std::index_sequence<kAt...>) {
    const tagLimitRule* broken = nullptr;
    static_cast<void>(
        ((BreaksRule<kSet, kRulesOf<kSet>[kAt]>(in) ? (broken = &RuleOf(kRulesOf<kSet>[kAt]), true) : false) || ...));
    return broken;
}
template <RuleSet kSet>
const tagLimitRule* FirstBroken(const RuleInput& in) {
    return FirstBroken<kSet>(in, std::make_index_sequence<kRulesOf<kSet>.size()>{});
}

const char* PickForm(const RuleText& text, const RuleInput& in) {
    constexpr std::int16_t kOptionBits = 0x48;
    const bool option = (in.order.periodicity & kOptionBits) != 0;
    if (text.conversion && in.order.productType == product::kConvertToDelivery) return text.conversion;
    if (in.GrossBasis()) {
        if (option && text.grossOption) return text.grossOption;
        if (text.gross) return text.gross;
    }
    return option && text.option ? text.option : text.plain;
}

std::array<double, 3> PickNumbers(TextNumbers numbers, const RuleFigures& f) {
    switch (numbers) {
        case TextNumbers::kLimitFigure: return {f.shownLimit, f.figure};
        case TextNumbers::kLimitStoredFigure: return {f.shownLimit, f.stored, f.figure};
        case TextNumbers::kFigureLimit: return {f.figure, f.shownLimit};
        case TextNumbers::kFigureLimitStored: return {f.figure, f.shownLimit, f.stored};
        case TextNumbers::kNone: break;
    }
    return {};
}

/// Quantities as they are, money in rupees. The formats are those of the table above.
std::string Word(const RuleText& text, Unit unit, const RuleInput& in, const RuleFigures& figures) {
    const char* form = PickForm(text, in);
    const std::array<double, 3> numbers = PickNumbers(text.numbers, figures);
    if (unit == Unit::kQuantity) {
        return Format(form, static_cast<long>(numbers[0]), static_cast<long>(numbers[1]),
                      static_cast<long>(numbers[2]));
    }
    return Format(form, numbers[0] / kPaisePerRupee, numbers[1] / kPaisePerRupee, numbers[2] / kPaisePerRupee);
}

/// The square-off modes of a client are told in full, but on conversions to delivery.
Wording WordingOf(const tagLimitRule& rule, const RuleInput& in, Wording row) {
    const bool mode = rule.id == RuleId::kPreAutoSquareOff || rule.id == RuleId::kAutoSquareOff;
    if (!mode || in.set == RuleSet::kGeneral) return row;
    return in.order.productType == product::kConvertToDelivery ? Wording::kShort : Wording::kLong;
}

}  // namespace

std::span<const tagLimitRule> LimitRules() { return kRules; }
On RuleUseOf(RuleSet set, RuleId rule) { return UseIn(set, kRuleUses[static_cast<std::size_t>(rule)]); }

const tagLimitRule* FirstBrokenRule(const RuleInput& input) {
    switch (input.set) {
        case RuleSet::kGeneral: return FirstBroken<RuleSet::kGeneral>(input);
        case RuleSet::kDelivery: return FirstBroken<RuleSet::kDelivery>(input);
        case RuleSet::kMarginPlus: return FirstBroken<RuleSet::kMarginPlus>(input);
        case RuleSet::kMtf: return FirstBroken<RuleSet::kMtf>(input);
        case RuleSet::kReport: break;
    }
    const std::vector<const tagLimitRule*> broken = BrokenReportRules(input);
    return broken.empty() ? nullptr : broken.front();
}

std::vector<const tagLimitRule*> BrokenReportRules(const RuleInput& input) {
    std::vector<const tagLimitRule*> broken;
    for (const RuleId id : kRulesOf<RuleSet::kReport>) {
        const tagLimitRule& rule = RuleOf(id);
        // Buys and sells are told of alike.
        const bool byDirection = id == RuleId::kNet || id == RuleId::kNetSale;
        if (!byDirection && rule.applies && !rule.applies(input)) continue;
        const RuleFigures figures = rule.figures(input);
        if (rule.reportOnlyIfRaised && figures.figure <= figures.stored) continue;
        if (IsBroken(rule, figures) && !IsExempt(rule, input, true)) broken.push_back(&rule);
    }
    return broken;
}

std::string RefusalText(const tagLimitRule& rule, const RuleInput& input, Wording row) {
    if (rule.shortText && WordingOf(rule, input, row) == Wording::kShort) return rule.shortText;
    if (rule.wordOf) return rule.wordOf(input, PickForm(rule.longText, input));
    const RuleText& text = input.set == RuleSet::kReport ? rule.reportText : rule.longText;
    return Word(text, rule.unit, input, rule.figures(input));
}

}  // namespace surv
