// What each event takes out of a position and what it puts in.

#include <algorithm>
#include <array>

#include "orderpath/intake.h"
#include "platform/numeric.h"

namespace surv {
namespace {

/// The records of an event; one that the request hasn't got reads as zeroes.
struct EventRecords {
    const tagOrderRequest& request;
    const tagOrderInfo& stored;
    const tagTradeInfo& trade;
    const tagTradeCorrectionRequest& correction;
    std::int16_t messageCode;
    const Settings& settings;
};

void Leaves(tagOrderInfoForSurv& order, std::int32_t quantity, std::int32_t price) {
    order.prevQuantity = quantity;
    order.prevPrice = price;
}
void Enters(tagOrderInfoForSurv& order, std::int32_t quantity, std::int32_t price) {
    order.quantity = quantity;
    order.price = price;
}
void TakeLegs(tagOrderInfoForSurv& order, std::int32_t firstLegPrice, std::int32_t secondLegPrice,
              std::int32_t firstLegQuantity = 0) {
    order.firstLegPrice = firstLegPrice;
    order.secondLegPrice = secondLegPrice;
    order.firstLegQuantity = firstLegQuantity;
}
bool IsLimitLeg(const tagOrderInfoForSurv& order) { return order.marginPlusLeg == 0 || order.marginPlusLeg == 2; }
bool IsStopLeg(const tagOrderInfoForSurv& order) { return order.marginPlusLeg == 2; }

// ---------------------------------------------------------------------------------------------------------------
// Every product

StoredPrices EnterOrder(const EventRecords& in, tagOrderInfoForSurv& order) {
    Enters(order, in.request.quantity, in.request.price);
    return {};
}
StoredPrices RepriceOrder(const EventRecords& in, tagOrderInfoForSurv& order) {
    Enters(order, in.request.quantity, in.request.price);
    Leaves(order, in.request.quantity, in.stored.price);
    return {.leaves = true};
}
StoredPrices ChangeOrder(const EventRecords& in, tagOrderInfoForSurv& order) {
    Enters(order, in.request.quantity, in.request.price);
    Leaves(order, in.stored.quantityRemaining, in.stored.price);
    return {.leaves = true};
}
StoredPrices UndoChange(const EventRecords& in, tagOrderInfoForSurv& order) {
    Enters(order, in.stored.quantityRemaining, in.stored.price);
    Leaves(order, in.request.quantity, in.request.price);
    return {.enters = true};
}
StoredPrices EndStored(const EventRecords& in, tagOrderInfoForSurv& order) {
    Leaves(order, in.stored.quantityRemaining, in.stored.price);
    return {.leaves = true};
}
/// BSE may cancel a part of what is open.
StoredPrices EndOrder(const EventRecords& in, tagOrderInfoForSurv& order) {
    const bool part = in.messageCode == 2075 && in.request.exchangeMask == kMaskBseCash;
    const std::int32_t cancelled = in.request.cancelledQuantity;
    Leaves(order, part && cancelled > 0 ? cancelled : std::int32_t{in.stored.quantityRemaining}, in.stored.price);
    return {.leaves = true};
}
/// What a trade fills was open, unless the order's state says that it has left the book.
StoredPrices LeaveBook(const EventRecords& in, tagOrderInfoForSurv& order) {
    constexpr int kOffBook = 1 << 1 | 1 << 3;
    if ((in.stored.orderStatus & kOffBook) != 0 && in.settings.positionMode != 1) return {};
    if (order.productType == product::kMarginPlus) {
        Leaves(order, in.trade.tradedQuantity, in.trade.secondLegPrice);
        return {};
    }
    Leaves(order, in.trade.tradedQuantity, in.stored.price);
    return {.leaves = true};
}
StoredPrices Trade(const EventRecords& in, tagOrderInfoForSurv& order) {
    Enters(order, in.trade.tradedQuantity, in.trade.tradePrice);
    return LeaveBook(in, order);
}
StoredPrices CorrectTrade(const EventRecords& in, tagOrderInfoForSurv& order) {
    constexpr int kNewQuantityStates = 0x601F;
    const bool byNew = (in.stored.orderStatus & kNewQuantityStates) != 0;
    Enters(order, in.correction.tradedQuantity, in.correction.tradePrice);
    Leaves(order, byNew ? in.correction.newQuantity : in.correction.tradedQuantity, in.correction.tradePrice);
    return {};
}
StoredPrices CancelTrade(const EventRecords& in, tagOrderInfoForSurv& order) {
    Leaves(order, in.trade.tradedQuantity, in.trade.tradePrice);
    return {};
}
StoredPrices ModifyTrade(const EventRecords& in, tagOrderInfoForSurv& order) {
    Enters(order, in.correction.newQuantity, in.correction.tradePrice);
    return CancelTrade(in, order);
}
/// A stored order comes in again with what is open and filled; one that is done with what is filled.
StoredPrices RestoreOrder(const EventRecords& in, tagOrderInfoForSurv& order) {
    constexpr std::int16_t kDoneState = 0x100;
    const bool done = in.stored.orderStatus == kDoneState;
    const double open = done ? 0.0 : in.stored.quantityRemaining;
    Enters(order, ClampToInt32(in.stored.quantityFilled + open), in.stored.price);
    return {.enters = true};
}

// ---------------------------------------------------------------------------------------------------------------
// What two-leg orders have differently

StoredPrices EnterLegs(const EventRecords& in, tagOrderInfoForSurv& order) {
    EnterOrder(in, order);
    if (IsLimitLeg(order)) {
        TakeLegs(order, in.request.firstLegPrice, in.request.price, in.request.quantity);
        Leaves(order, in.request.quantity, in.request.price);
    } else {
        TakeLegs(order, in.request.price, in.request.secondLegPrice);
    }
    return {};
}
template <StoredPrices (*kFill)(const EventRecords&, tagOrderInfoForSurv&)>
StoredPrices ChangeLegs(const EventRecords& in, tagOrderInfoForSurv& order) {
    order.orderEventKind = event::kMarginPlusChange;
    TakeLegs(order, in.request.firstLegPrice, in.request.secondLegPrice, in.request.quantity);
    return kFill(in, order);
}
StoredPrices EndStoredLegs(const EventRecords& in, tagOrderInfoForSurv& order) {
    if (IsStopLeg(order)) {
        TakeLegs(order, in.stored.firstLegPrice, 0, in.stored.quantityRemaining);
    } else {
        TakeLegs(order, 0, in.stored.secondLegPrice);
    }
    return EndStored(in, order);
}
/// Runs in the direction of a change.
StoredPrices UndoLegs(const EventRecords& in, tagOrderInfoForSurv& order) {
    TakeLegs(order, in.request.firstLegPrice, in.request.secondLegPrice);
    return ChangeOrder(in, order);
}
StoredPrices EndLegs(const EventRecords& in, tagOrderInfoForSurv& order) {
    order.orderEventKind = event::kMarginPlusEnd;
    const StoredPrices prices = EndOrder(in, order);
    if (IsStopLeg(order)) {
        TakeLegs(order, in.stored.firstLegPrice, 0);
        order.quantity = in.request.quantity;
    }
    return prices;
}
StoredPrices TradeLegs(const EventRecords& in, tagOrderInfoForSurv& order) {
    const std::int32_t first = IsStopLeg(order) ? in.trade.firstLegPrice : in.trade.tradePrice;
    TakeLegs(order, first, in.trade.secondLegPrice, in.trade.tradedQuantity);
    return Trade(in, order);
}
StoredPrices RestoreLegs(const EventRecords& in, tagOrderInfoForSurv& order) {
    const StoredPrices prices = RestoreOrder(in, order);
    if (IsLimitLeg(order)) {
        TakeLegs(order, in.stored.firstLegPrice, in.stored.price, in.stored.quantity);
        Leaves(order, in.stored.quantity, in.stored.secondLegPrice);
    } else {
        TakeLegs(order, in.stored.price, in.stored.secondLegPrice, in.stored.quantity);
    }
    return prices;
}

using Fill = StoredPrices (*)(const EventRecords&, tagOrderInfoForSurv&);
struct EventRow {
    std::int16_t messageCode;
    std::int16_t kind;
    Fill fill;
    Fill fillLegs;  ///< of a two-leg order
};
constexpr std::array kEvents{
    EventRow{2000, event::kOrder, &EnterOrder, &EnterLegs},
    EventRow{2150, event::kOrder, &EnterOrder, &EnterLegs},
    EventRow{30160, event::kOrder, &EnterOrder, &EnterLegs},
    EventRow{2012, event::kOrder, &RepriceOrder, &ChangeLegs<&RepriceOrder>},
    EventRow{2040, event::kOrder, &ChangeOrder, &ChangeLegs<&ChangeOrder>},
    EventRow{2042, event::kOrder, &UndoChange, &UndoLegs},
    EventRow{2155, event::kOrder, &EndStored, &EndStoredLegs},
    EventRow{2156, event::kOrder, &EndStored, &EndStoredLegs},
    EventRow{2075, event::kOrder, &EndOrder, &EndLegs},
    EventRow{2076, event::kOrder, &EndOrder, &EndLegs},
    EventRow{2231, event::kOrder, &EndOrder, &EndLegs},
    EventRow{9002, event::kOrder, &EndOrder, &EndLegs},
    EventRow{2222, event::kTrade, &Trade, &TradeLegs},
    EventRow{2286, event::kCorrection, &LeaveBook, &LeaveBook},
    EventRow{2288, event::kCorrection, &LeaveBook, &LeaveBook},
    EventRow{2223, event::kCorrection, &CorrectTrade, &CorrectTrade},
    EventRow{5440, event::kCorrection, &CancelTrade, &CancelTrade},
    EventRow{5445, event::kCorrection, &ModifyTrade, &ModifyTrade},
    EventRow{31000, event::kOrder, &RestoreOrder, &RestoreLegs},
};

/// A stored order in any other state moves nothing.
bool IsRestored(std::int16_t orderStatus) {
    constexpr std::array<std::int16_t, 7> kStates{0x40, 1, 2, 8, 0x100, 0x80, 0x800};
    return std::find(kStates.begin(), kStates.end(), orderStatus) != kStates.end();
}

template <class Record>
const Record& OrZeroes(const Record* record) {
    static const Record kNone{};
    return record ? *record : kNone;
}

}  // namespace

StoredPrices FillUpdateEvent(OrderIntake& intake, const Settings& settings) {
    const RequestView& view = intake.view;
    tagOrderInfoForSurv& order = intake.order;
    const std::int16_t messageCode = view.message->code;
    const tagOrderInfo& stored = OrZeroes(view.orderInfo);
    if (messageCode == 31000 && !IsRestored(stored.orderStatus)) {
        order.buySell = 0;
        return {};
    }
    const auto* const row = std::find_if(kEvents.begin(), kEvents.end(),
                                         [&](const EventRow& event) { return event.messageCode == messageCode; });
    if (row == kEvents.end()) return {};
    const tagTradeInfo& trade = OrZeroes(view.primaryTrade ? view.primaryTrade : view.trade);
    const EventRecords records{OrZeroes(view.order), stored, trade, OrZeroes(view.correction), messageCode, settings};
    order.orderEventKind = row->kind;
    return (order.productType == product::kMarginPlus ? row->fillLegs : row->fill)(records, order);
}

}  // namespace surv
