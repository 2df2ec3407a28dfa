#include "orderpath/intake.h"

#include <cmath>

#include "platform/numeric.h"

namespace surv {
namespace {

constexpr std::int16_t kNoLevel = 255;
constexpr std::int16_t kOwnLevel = -1;

bool HasNoClientLevel(const tagOrderInfoForSurv& order) {
    return order.clientLevelType == kOwnLevel || order.clientLevelType == kNoLevel;
}

/// Of an order as it is requested, or as the host has stored it.
template <class Record>
void ReadOrderRecord(OrderIntake& intake, const Record& record, std::int16_t messageCode) {
    tagOrderInfoForSurv& order = intake.order;
    intake.clientText = ClientTextOf(record.clientAccount);
    order.accountCode = AccountOf(record.accountText);
    order.proClient = record.proClient;
    order.contract = record.contract;
    order.marginPlusLeg = record.marginPlusLeg;
    order.triggerPrice = record.triggerPrice;
    order.buySell = record.buySell;
    order.nriClient = record.clientCategory[0] == 'N';
    order.productType = ProductTypeOf(record.productType, messageCode);
}

/// A correction names no product; the stored order tells whose account it is.
void ReadCorrectionRecord(OrderIntake& intake, const tagTradeCorrectionRequest& record) {
    tagOrderInfoForSurv& order = intake.order;
    order.accountCode = AccountOf(record.accountText);
    order.buySell = static_cast<std::int16_t>(record.buySellCharacter[0] - '0');
    if (order.buySell == kBuy) intake.clientText = ClientTextOf(record.buyClientAccount);
    if (order.buySell == kSell) intake.clientText = ClientTextOf(record.sellClientAccount);
    order.contract = record.contract;
    if (intake.view.orderInfo) order.proClient = intake.view.orderInfo->proClient;
}

/// A trade's account and holder stand in its stored order.
void ReadTradeRecord(OrderIntake& intake, const tagTradeInfo& record, std::int16_t messageCode) {
    tagOrderInfoForSurv& order = intake.order;
    intake.clientText = ClientTextOf(record.clientAccount);
    order.contract = record.contract;
    order.marginPlusLeg = record.marginPlusLeg;
    order.buySell = record.buySell;
    order.productType = ProductTypeOf(record.productType, messageCode);
    if (const tagOrderInfo* stored = intake.view.orderInfo) {
        order.accountCode = AccountOf(stored->accountText);
        order.proClient = stored->proClient;
        order.nriClient = stored->clientCategory[0] == 'N';
    }
}

/// Reads the record that the message code makes the primary one. Gives its exchange mask; 0: there is none.
std::int16_t ReadPrimaryRecord(OrderIntake& intake) {
    const RequestView& view = intake.view;
    const std::int16_t messageCode = view.message->code;
    if (const tagOrderRequest* record = view.order) {
        ReadOrderRecord(intake, *record, messageCode);
        return record->exchangeMask;
    }
    if (const tagTradeCorrectionRequest* record = view.correction) {
        ReadCorrectionRecord(intake, *record);
        return record->exchangeMask;
    }
    if (const tagTradeInfo* record = view.primaryTrade) {
        ReadTradeRecord(intake, *record, messageCode);
        return record->exchangeMask;
    }
    if (const tagOrderInfo* record = view.orderInfo) {
        ReadOrderRecord(intake, *record, messageCode);
        return record->exchangeMask;
    }
    return 0;
}

void CopyHead(tagOrderInfoForSurv& order, const tagSurveillanceInfo& request, const Settings& settings) {
    constexpr std::size_t kUserIdWidth = 15;
    order.token = request.token;
    order.underlyingToken = request.underlyingToken;
    order.scripGroupNumber = request.scripGroupNumber;
    order.scripGroup = ScripGroupText(request.scripGroupNumber);
    order.scripRates = request.scripRates;
    order.userId = FieldText(request.userId).substr(0, kUserIdWidth);
    order.priceMultiplier = request.priceMultiplier;
    order.marginRates = request.marginRates;
    order.riskModeCopy = settings.rpfMarginMode;
    order.lotWeighting = settings.mcxLotWeightOn == 1 ? LotWeighting::kOn : LotWeighting::kOff;
    order.levelCode = FieldText(request.dealerCode);
}

/// The level types as the hierarchy reads them, rule after rule.
void SetLevelTypes(tagOrderInfoForSurv& order, const tagSurveillanceInfo& request) {
    constexpr std::int16_t kGroupless = 6;
    const int dealerType = request.dealerType;
    order.clientLevelType = request.clientType;
    order.subClientLevelType = request.subClientType;
    order.groupLevelType = request.groupType;
    if (order.clientLevelType == kGroupless) order.groupLevelType = kOwnLevel;
    if (dealerType == 1 && HasNoClientLevel(order)) order.clientLevelType = 1;
    if ((dealerType == 4 || dealerType == 5) && HasNoClientLevel(order)) {
        order.clientLevelType = static_cast<std::int16_t>(dealerType);
        order.groupLevelType = request.groupType;
    }
    if (dealerType == 0 && order.groupLevelType == kGroupless && HasNoClientLevel(order)) {
        order.clientLevelType = kGroupless;
        order.groupLevelType = kOwnLevel;
    }
    if (order.proClient == kProClientOwn) {
        order.clientLevelType = kOwnLevel;
        order.subClientLevelType = kOwnLevel;
        order.groupLevelType = kOwnLevel;
        order.accountCode = kEverybodyCode;
    }
}

/// A client or dealer of type 3 or 5 off the commodity exchange reaches only levels of type 3, 5 and 8.
void NarrowLevels(OrderIntake& intake, tagSurveillanceInfo& request, std::int16_t exchangeMask, OrderRoad road) {
    constexpr int kCommodityBits = 0x30;
    // Bits 0, 1, 2, 4 and 5; an update leaves the sub client's.
    const std::uint8_t clearedChecks = road == OrderRoad::kCheck ? 0b0011'0111 : 0b0001'0111;
    const bool narrow = request.clientType == 3 || request.clientType == 5 || request.dealerType == 5;
    if ((exchangeMask & kCommodityBits) != 0 || !narrow) return;
    intake.updateAllLevels = false;
    request.levelCheckFlags &= static_cast<std::uint8_t>(~clearedChecks);
}

/// Prices and quantity of the two legs of a bracket order.
void FillLegs(tagOrderInfoForSurv& order, const tagOrderRequest& record, std::int16_t messageCode) {
    const std::int16_t leg = order.marginPlusLeg;
    const bool change = messageCode == 2040;
    if (leg == 2 || (leg == 0 && !change)) {
        order.firstLegPrice = record.firstLegPrice;
        order.secondLegPrice = record.price;
        order.firstLegQuantity = record.quantity;
    } else if (!change) {
        order.firstLegPrice = record.firstLegPrice;
        order.secondLegPrice = record.secondLegPrice;
    }
}

}  // namespace

bool ReadRequest(tagSurveillanceInfo& request, const SurvContext& context, OrderRoad road, OrderIntake& intake) {
    tagOrderInfoForSurv& order = intake.order;
    const std::int16_t exchangeMask = ReadPrimaryRecord(intake);
    if (exchangeMask == 0) return false;
    CopyHead(order, request, context.settings);
    SetLevelTypes(order, request);
    order.marketSegment = SegmentOfContract(exchangeMask, order.contract.strikePrice);
    order.isinCode = context.stores.FindIsin(exchangeMask, order.token);
    NarrowLevels(intake, request, exchangeMask, road);
    return true;
}

void FillCheckEvent(OrderIntake& intake) {
    tagOrderInfoForSurv& order = intake.order;
    const RequestView& view = intake.view;
    const std::int16_t messageCode = view.message->code;
    if (const tagOrderRequest* record = view.order) {
        order.orderEventKind = event::kOrder;
        order.quantity = record->quantity;
        order.price = messageCode == 30160 ? 0 : record->price;
        if (messageCode == 2040) {
            if (order.productType == product::kMarginPlus) order.orderEventKind = event::kMarginPlusChange;
            if (view.orderInfo) {
                order.prevQuantity = view.orderInfo->quantity;
                order.prevPrice = view.orderInfo->price;
            }
        }
        if (order.productType == product::kMarginPlus && messageCode != 30160) FillLegs(order, *record, messageCode);
        return;
    }
    if (!view.correction) return;
    order.orderEventKind = event::kCorrection;
    if (messageCode == 5445) {
        order.quantity = view.correction->newQuantity;
        order.price = view.correction->tradePrice;
    }
    if (view.trade) {
        order.prevQuantity = view.trade->tradedQuantity;
        order.prevPrice = view.trade->tradePrice;
    }
}

CodeText ParentCodeOf(const tagOrderInfoForSurv& order, const tagSurveillanceInfo& request) {
    constexpr std::int16_t kGroupless = 6;
    if (order.clientLevelType == kGroupless || HasNoClientLevel(order)) return {};
    return FieldText(request.groupCode);
}

void ScaleNcdexPrices(tagOrderInfoForSurv& order) {
    constexpr std::int16_t kNcdexFutures = 8;
    if (order.marketSegment != kNcdexFutures || order.priceMultiplier <= 0) return;
    const float factor = static_cast<float>(order.priceMultiplier) / 10000.0F;
    const auto scaled = [factor](std::int32_t price) {
        const double product = static_cast<double>(price) * static_cast<double>(factor);
        const double whole = std::floor(product);
        return ClampToInt32(product - whole >= 0.5 ? whole + 1 : whole);
    };
    order.price = scaled(order.price);
    order.prevPrice = scaled(order.prevPrice);
    if (order.contract.strikePrice > 0) order.contract.strikePrice = scaled(order.contract.strikePrice);
}

}  // namespace surv
