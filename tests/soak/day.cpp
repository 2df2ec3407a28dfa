#include "day.h"

#include <algorithm>
#include <limits>

#include "surveillance/codes.h"

namespace soak {
namespace {

using namespace surv;

/// Every level checked.
constexpr int kAllLevels = 62;

}  // namespace

Json CDay::Request(const char* call, int code, const Order& order) {
    const Holder& h = house_.holders[order.holder];
    const Instrument& i = house_.instruments[order.instrument];
    Json head{{"messageCode", code}, {"token", i.token}, {"groupCode", h.group}, {"dealerCode", h.dealer}};
    if (!h.family.empty()) head["familyCode"] = h.family;
    head["clientCode"] = h.client;
    if (!h.subClient.empty()) head["subClientCode"] = h.subClient;
    head["groupType"] = h.groupType, head["dealerType"] = h.dealerType, head["clientType"] = h.clientType;
    head["subClientType"] = h.subClientType;
    head["levelCheckFlags"] = kAllLevels, head["levelMarginFlags"] = 0x1F;
    if (i.underlyingToken != 0) head["underlyingToken"] = i.underlyingToken;
    if (i.scripGroup != 0) head["scripGroupNumber"] = i.scripGroup;
    if (i.marginBasis != 0) head["marginBasis"] = i.marginBasis;
    if (i.marginRate != 0) head["marginRate"] = i.marginRate;
    head.update(i.factors);
    return {{"call", call}, {"request", std::move(head)}};
}

Json CDay::Tell(int code, const Order& order) {
    Json call = Request("UpdateSurveillance", code, order);
    if (order.dealerOnly) call["dealerOnly"] = 1;
    return call;
}

namespace {

void PutContract(Json& record, const Instrument& i) {
    record["symbol"] = "SCRIP";
    record["series"] = "EQ";
    if (i.strikePrice != 0) record["strikePrice"] = i.strikePrice;
    if (i.expiryDate != 0) record["expiryDate"] = i.expiryDate;
}

}  // namespace

Json CDay::Record(const Order& order) const {
    const Holder& h = house_.holders[order.holder];
    const Instrument& i = house_.instruments[order.instrument];
    Json record{{"exchangeMask", i.exchangeMask}};
    PutContract(record, i);
    record["accountText"] = record["clientAccount"] = h.client;
    record["buySell"] = order.buySell, record["quantity"] = order.remaining + order.filled;
    record["price"] = order.price, record["proClient"] = h.proClient, record["productType"] = order.product;
    if (h.nri) record["clientCategory"] = "N";
    if (order.firstLegPrice != 0) {
        record["firstLegPrice"] = order.firstLegPrice, record["secondLegPrice"] = order.secondLegPrice;
        record["triggerPrice"] = order.triggerPrice;
    }
    return record;
}

Json CDay::Stored(const Order& order) const {
    Json record = Record(order);
    record["quantityRemaining"] = order.remaining;
    record["quantityFilled"] = order.filled;
    return record;
}

Json CDay::TradeRecord(const Order& order, int quantity, int price) const {
    const Instrument& i = house_.instruments[order.instrument];
    Json record{{"exchangeMask", i.exchangeMask}};
    PutContract(record, i);
    record["clientAccount"] = house_.holders[order.holder].client;
    record["buySell"] = order.buySell, record["tradedQuantity"] = quantity, record["tradePrice"] = price;
    record["productType"] = order.product;
    if (order.firstLegPrice != 0) {
        record["firstLegPrice"] = order.firstLegPrice, record["secondLegPrice"] = order.secondLegPrice;
    }
    return record;
}

// ---------------------------------------------------------------------------------------------------------------
// Orders

CDay::Order CDay::NewOrder() {
    Order order;
    // A client of type 3 or 5 takes its order in, whatever its family says of it; and its margin may stand in rows that
    // leave it out when they are summed, or the other way about.
    const auto narrow = [this](const Holder& h) {
        return (h.clientType == 3 || h.clientType == 5) && !house_.style.clientLevel;
    };
    do {
        order.holder = dice_.IndexOf(house_.holders);
    } while ((house_.holders[order.holder].nri && !house_.style.products) ||
             (narrow(house_.holders[order.holder]) && !house_.holders[order.holder].family.empty()));
    const Holder& holder = house_.holders[order.holder];
    const auto trades = [&](const Instrument& i) {
        const bool clear = i.exchangeMask == kMaskMcx ? !house_.style.HoldsByClient()
                                                      : IsCashExchange(i.exchangeMask) || house_.style.HoldsByClient();
        return holder.nri == (i.token % 100 == 99) && (clear || !narrow(holder));
    };
    do {
        order.instrument = dice_.IndexOf(house_.instruments);
    } while (!trades(house_.instruments[order.instrument]));
    const Instrument& i = house_.instruments[order.instrument];
    order.buySell = dice_.Among(kBuy, kBuy, kSell);
    order.remaining = dice_.Among(1, 5, 50, 100, 100, 150, 200);
    order.price = SomePrice();
    if (!IsCashExchange(i.exchangeMask)) return order;
    // A family sells what all its clients have bought: whether a sale is refused hangs on the others.
    const bool buysAlone = !house_.style.limits && !holder.family.empty();
    order.product = product::kMargin;
    if (holder.nri) {
        order.product = product::kDelivery;
    } else if (house_.style.products) {
        order.product = dice_.Among<int>(1, 1, 1, 2, 4, 8, 9);
    }
    // A two-leg order that comes as an event moves its first leg by nothing: it is laid in by its check alone.
    if (order.product == product::kMarginPlus && house_.style.told) order.product = product::kMargin;
    if (order.product == product::kMtf && buysAlone) order.buySell = kBuy;
    if (order.product == product::kMarginPlus) {
        const int away = order.buySell == kBuy ? -1 : 1;
        order.firstLegPrice = 25000, order.price = order.secondLegPrice = 25000 + 500 * away;
        order.triggerPrice = 25000 + 400 * away;
    }
    return order;
}

Json CDay::Enter() {
    entering_ = NewOrder();
    const bool told = house_.style.told || dice_.OneIn(12);
    if (told && entering_->product == product::kMarginPlus) entering_->product = product::kMargin;
    if (entering_->product == product::kMargin) entering_->firstLegPrice = 0;
    entering_->dealerOnly = told && house_.style.dealerOnly && dice_.OneIn(4);
    Json call = told ? Tell(dice_.Among(2000, 2000, 2150), *entering_)
                     : Request("CheckSurveillance", dice_.Among(2000, 2000, 2000, 2150), *entering_);
    if (house_.style.openLevels && dice_.OneIn(4)) call["request"]["levelCheckFlags"] = dice_.Pick(0, 31) * 2;
    call["order"] = Record(*entering_);
    return call;
}

Json CDay::Probe() {
    const Order order = NewOrder();
    Json call = Request("CheckSurveillance", 2000, order);
    call["order"] = Record(order);
    call["probe"] = 1;
    return call;
}

Json CDay::Trade(std::size_t at) {
    Order& order = open_[at];
    const bool legs = order.product == product::kMarginPlus;
    const int quantity = dice_.OneIn(3) ? dice_.Pick(1, order.remaining) : order.remaining;
    const int price = (legs ? 25000 : order.price) - 5 * dice_.Among(0, 0, 1, 20);
    Json call = Tell(2222, order);
    call["trade"] = TradeRecord(order, quantity, price);
    call["orderInfo"] = Stored(order);
    order.remaining -= quantity;
    order.filled += quantity;
    if (order.product == product::kMargin) {
        trades_.push_back(order);
        trades_.back().remaining = quantity, trades_.back().filled = 0, trades_.back().price = price;
    }
    if (order.remaining == 0) open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(at));
    return call;
}

Json CDay::Change(std::size_t at) {
    const Order& order = open_[at];
    changed_ = order;
    changed_.remaining = dice_.Among(1, 5, 100, 150, order.remaining);
    changed_.filled = 0;  // what was filled stands apart from what stays open
    changed_.price = dice_.OneIn(2) ? order.price : SomePrice();
    const bool checked = !house_.style.told && dice_.OneIn(2) && order.filled == 0 && !order.dealerOnly;
    Json call = checked ? Request("CheckSurveillance", 2040, order) : Tell(2040, order);
    call["order"] = Record(changed_);
    changed_.filled = order.filled;
    call["orderInfo"] = Stored(order);
    changing_ = at;
    return call;
}

Json CDay::End(std::size_t at) {
    const Order order = open_[at];
    Json call = Tell(dice_.Among(2155, 2156, 2075, 2076, 2231, 9002), order);
    call["order"] = Record(order);
    call["orderInfo"] = Stored(order);
    open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(at));
    return call;
}

Json CDay::FollowUp() {
    if (open_.empty()) return Enter();
    const std::size_t at = dice_.IndexOf(open_);
    const int chance = dice_.Pick(0, 9);
    if (chance < 3) return End(at);
    if (chance < 5 && open_[at].product != product::kMarginPlus) return Change(at);
    return Trade(at);
}

/// The codes that come seldom, on an order that goes on as if they hadn't.
Json CDay::Seldom() {
    if (open_.empty()) return Enter();
    const Order& order = dice_.PickOf(open_);
    if (order.product != product::kMargin && order.product != product::kNone) return FollowUp();
    const int code = dice_.Among(2012, 2042, 31000, 2286, 2288);
    Json call = Tell(code, order);
    if (code == 2012 || code == 2042) call["order"] = Record(order), call["order"]["price"] = SomePrice();
    call["orderInfo"] = Stored(order);
    call["orderInfo"]["orderStatus"] = dice_.Among(0, 1, 2, 8, 0x40, 0x100);
    if (code == 2286 || code == 2288) call["trade"] = TradeRecord(order, order.remaining, SomePrice());
    return call;
}

/// A trade is cancelled or changed. A correction names no product.
Json CDay::Correct() {
    if (trades_.empty()) return FollowUp();
    const std::size_t at = dice_.IndexOf(trades_);
    Order order = trades_[at];
    order.product = product::kNone;
    trades_.erase(trades_.begin() + static_cast<std::ptrdiff_t>(at));
    const Instrument& i = house_.instruments[order.instrument];
    const int code = dice_.Among(5440, 5445, 2223);
    const bool checked = code != 2223 && !order.dealerOnly && dice_.OneIn(8);
    Json call = checked ? Request("CheckSurveillance", code, order) : Tell(code, order);
    Json correction{{"exchangeMask", i.exchangeMask}};
    PutContract(correction, i);
    correction["tradedQuantity"] = order.remaining, correction["newQuantity"] = dice_.Among(1, 5, 100);
    correction["tradePrice"] = SomePrice(), correction["buySellCharacter"] = std::to_string(order.buySell);
    const std::string& client = house_.holders[order.holder].client;
    correction["accountText"] = correction["sellClientAccount"] = correction["buyClientAccount"] = client;
    call["tradeCorrection"] = std::move(correction);
    call["orderInfo"] = Stored(order);
    if (code == 2223) {
        call["orderInfo"]["orderStatus"] = dice_.Among(0, 0x20, 1, 0x10, 0x4000);
    } else {
        call["trade"] = TradeRecord(order, order.remaining, order.price);
    }
    return call;
}

Json CDay::Convert() {
    Order order = NewOrder();
    const Instrument& i = house_.instruments[order.instrument];
    if (!IsCashExchange(i.exchangeMask)) return Enter();
    order.product = dice_.Among(product::kConvertToDelivery, product::kConvertToMargin);
    order.firstLegPrice = 0, order.price = 25000;
    Json call = Request("CheckSurveillance", 2000, order);
    call["order"] = Record(order);
    return call;
}

// ---------------------------------------------------------------------------------------------------------------
// All else

Json CDay::Tick() {
    const Instrument& i = dice_.PickOf(house_.instruments);
    if (dice_.OneIn(6)) return {{"call", "RecomputeMTM"}};
    if (dice_.OneIn(6)) return {{"call", "RecomputeMTMOnline"}};
    return Touchline(i.exchangeMask, i.token, SomePrice());
}

Json CDay::SetLimit() {
    const std::string& entity = dice_.PickOf(house_.entities);
    Json row = house_.BareRow(entity, dice_.PickOf(house_.MasksOf(entity)), kAllSecurities);
    row["messageKind"] = 13;
    if (!dice_.OneIn(3)) SetSomeLimit(dice_, row);
    return {{"call", "UpdateSurvLimits"}, {"limit", std::move(row)}};
}

Json CDay::Prefer() {
    const std::string& entity = dice_.PickOf(house_.entities);
    if (entity[0] == 'F') return SetLimit();
    const int exchange = dice_.PickOf(house_.instruments).exchangeMask;
    return {{"call", "AddUpdateClientPreferencesInfo"}, {"preference", house_.Preference(entity, exchange)}};
}

Json CDay::AddOrRemoveRow() {
    const Instrument& i = dice_.PickOf(house_.instruments);
    const std::string& entity = dice_.PickOf(house_.entities);
    Json row = house_.BareRow(entity, dice_.PickOf(house_.MasksOf(entity)), i.token);
    if (dice_.OneIn(2)) return {{"call", "RemoveSurvLimits"}, {"limit", std::move(row)}};
    SetSomeLimit(dice_, row);
    return {{"call", "AddSurvLimits"}, {"limit", std::move(row)}};
}

Json CDay::MoveFund() {
    const double fund = dice_.Among(1e6, 5e5, 0.0, -5e5, -1e9);
    return {{"call", "RMSFundAllocation"},
            {"request", {{"entityKey", dice_.PickOf(house_.entities)}, {"requestedFund", fund}}}};
}

Json CDay::Upload() {
    Json upload{{"categoryCode", dice_.PickOf(house_.entities)},
                {"isinCode", kIsin},
                {"quantity", dice_.Among(100, 5, -5, -100)},
                {"collateralPrice", dice_.Among(1000.0, 0.0, 1200.0)},
                {"haircutRate", dice_.Among(0, 2500, 10000)}};
    return {{"call", "UpdateDPPositionInfo"}, {"upload", std::move(upload)}};
}

/// Queries of every kind, for codes that are there and some that aren't.
Json CDay::Ask() {
    const std::string code = dice_.OneIn(9) ? "ALL" : dice_.PickOf(house_.entities);
    const Instrument& i = dice_.PickOf(house_.instruments);
    switch (dice_.Pick(0, 5)) {
        case 0: return {{"call", "GetMarketExposure"}, {"code", code}, {"periodicity", dice_.Pick(0, 40)}};
        case 1: return {{"call", "DownloadSurvInfo"}, {"code", code}};
        case 2: return {{"call", "CaptureAllSurveillancePositions"}};
        case 3: return {{"call", "ClientPositionPresentFromDLL"}, {"texts", {code, "", "G00", code}}};
        default: break;
    }
    const Holder& h = dice_.PickOf(house_.holders);
    const int mask = dice_.PickOf(house_.MasksOf("C"));
    return {{"call", "GetNetPositionInfoFromDll"},
            {"queryKind", dice_.Pick(0, 13)},
            {"categoryCode", code},
            {"groupCode", h.group},
            {"accountCode", dice_.OneIn(3) ? std::string("ALL") : h.client},
            {"token", dice_.OneIn(2) ? kAllSecurities : i.token},
            {"periodicity", mask},
            {"byToken", dice_.Pick(0, 1)},
            {"product", dice_.Among(0, 2, 4, 8)}};
}

/// What a host shouldn't send.
Json CDay::Odd() {
    Order order = NewOrder();
    constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
    switch (dice_.Pick(0, 3)) {
        case 0: {
            Json call = Request(dice_.OneIn(2) ? "CheckSurveillance" : "UpdateSurveillance",
                                dice_.Among(2070, 2072, 2154, 2212, 1, -7, 0), order);
            return call;
        }
        case 1: {
            Json call = Request("CheckSurveillance", 2000, order);
            call["request"][dice_.Among("clientCode", "dealerCode", "groupCode", "subClientCode", "familyCode")] =
                "X99";
            call["order"] = Record(order);
            call["order"]["exchangeMask"] = dice_.Among(0, 3, 0x20, 0x21);
            return call;
        }
        case 2: {
            Json call = Request("CheckSurveillance", 2000, order);
            call["order"] = Record(order);
            call["order"][dice_.Among("quantity", "price")] = dice_.Among(0, -1, -5, kLargest);
            call["order"]["productType"] = dice_.Among(0, 1, 3, 5, 10, 64);
            call["probe"] = 1;
            return call;
        }
        default: {
            Json row{{"entityCode", dice_.Among("-", "C01", "X99")},
                     {"token", dice_.Among(kAllSecurities, 0, kLargest)},
                     {"limitMask", dice_.Among(0, 1, 5, 1000)}};
            return {{"call", dice_.Among("UpdateSurvLimits", "RemoveSurvLimits", "GetSurveillancePositions")},
                    {"limit", std::move(row)}};
        }
    }
}

Json CDay::Next() {
    entering_.reset();
    changing_.reset();
    if (due_.empty() && house_.style.riskFiles && dice_.OneIn(80)) {
        const bool staged = !house_.style.heldBack || dice_.OneIn(2);
        const auto exchange = dice_.Among(kMaskNseDerivatives, kMaskBseDerivatives, kMaskNcdex);
        for (Json& call : house_.RiskFile(exchange, staged)) due_.push_back(std::move(call));
    }
    if (!due_.empty()) {
        Json call = std::move(due_.front());
        due_.pop_front();
        return call;
    }
    if (house_.style.preferences && dice_.OneIn(25)) return Prefer();
    const int chance = dice_.Pick(0, house_.style.limits ? 99 : 73);
    if (chance < 34) return Enter();
    if (chance < 40) return Probe();
    if (chance < 70) return FollowUp();
    if (chance < 73) return Correct();
    if (chance < 74 && house_.style.seldomCodes) return Seldom();
    if (chance < 82) return Tick();
    if (chance < 86) return SetLimit();
    if (chance < 88) return AddOrRemoveRow();
    if (chance < 90) return MoveFund();
    if (chance < 92) return Upload();
    if (chance < 95) return house_.style.conversions ? Convert() : Enter();
    if (chance < 98) return Ask();
    return house_.style.oddCalls ? Odd() : Ask();
}

void CDay::Answered(const Json& answer) {
    const bool check = answer["call"] == "CheckSurveillance";
    const bool taken = answer.value("result", -1) == 0 && (!check || answer.value("status", 0) == status::kPass);
    if (!taken) return;
    if (entering_) {
        open_.push_back(*entering_);
        if (dice_.OneIn(3)) due_.push_back(End(open_.size() - 1));  // at once, which must leave nothing behind
    }
    if (changing_) open_[*changing_] = changed_;
}

}  // namespace soak
