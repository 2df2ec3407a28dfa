#include "book.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "read.h"
#include "surveillance/codes.h"

namespace soak {
namespace {

using namespace surv;

constexpr std::string_view kOwnAccount = "*****";
constexpr int kDelivery = 5, kMtf = 20;  ///< families

/// What the codes mean: the parts of the request that leave a position and enter it.
struct Meaning {
    bool known = false, trade = false, correction = false;
    std::int64_t prevQuantity = 0, quantity = 0;
    double prevPrice = 0, price = 0;

    void Leaves(const Json& record, const char* number, const char* at) {
        prevQuantity = Get<std::int64_t>(record, number), prevPrice = Get<double>(record, at);
    }
    void Enters(const Json& record, const char* number, const char* at) {
        quantity = Get<std::int64_t>(record, number), price = Get<double>(record, at);
    }
};

Meaning MeaningOf(const Json& line, int code, bool check, bool legs, std::int16_t positionMode) {
    const Json &order = Part(line, "order"), &stored = Part(line, "orderInfo"), &trade = Part(line, "trade");
    const Json& correction = Part(line, "tradeCorrection");
    Meaning m;
    m.known = true;
    switch (code) {
        case 2000:
        case 2150: m.Enters(order, "quantity", "price"); break;
        case 2012:
            m.Enters(order, "quantity", "price");
            m.prevQuantity = m.quantity, m.prevPrice = Get<double>(stored, "price");
            break;
        case 2040:
            m.Enters(order, "quantity", "price");
            m.Leaves(stored, check ? "quantity" : "quantityRemaining", "price");
            break;
        case 2042:
            m.Enters(stored, "quantityRemaining", "price");
            m.Leaves(order, "quantity", "price");
            break;
        case 2155:
        case 2156:
        case 2075:
        case 2076:
        case 2231:
        case 9002: m.Leaves(stored, "quantityRemaining", "price"); break;
        case 2222:
        case 2286:
        case 2288: {
            m.trade = code == 2222, m.correction = !m.trade;
            if (m.trade) m.Enters(trade, "tradedQuantity", "tradePrice");
            const bool offBook = (Get<int>(stored, "orderStatus") & 0b1010) != 0 && positionMode != 1;
            if (offBook) break;
            m.Leaves(trade, "tradedQuantity", "tradePrice");
            m.prevPrice = legs ? Get<double>(trade, "secondLegPrice") : Get<double>(stored, "price");
            break;
        }
        case 5440:
        case 5445:
            m.correction = true;
            m.Leaves(trade, "tradedQuantity", "tradePrice");
            if (code == 5445) m.Enters(correction, "newQuantity", "tradePrice");
            break;
        case 2223:
            m.correction = true;
            m.Enters(correction, "tradedQuantity", "tradePrice");
            m.Leaves(correction, (Get<int>(stored, "orderStatus") & 0x601F) != 0 ? "newQuantity" : "tradedQuantity",
                     "tradePrice");
            break;
        case 31000: {
            // One in any other state moves nothing, and stays for the account to look at its contract anew.
            constexpr std::array kRestored{0x40, 1, 2, 8, 0x100, 0x80, 0x800};
            const int state = Get<int>(stored, "orderStatus");
            if (std::find(kRestored.begin(), kRestored.end(), state) == kRestored.end()) break;
            m.Enters(stored, state == 0x100 ? "quantityFilled" : "quantity", "price");
            break;
        }
        default: m.known = false;
    }
    return m;
}

bool Covers(int mask, const Event& event, int period) {
    const bool odd = (mask & kExpiryBit) != 0;
    if (odd != (period == 1)) return false;
    return event.IsDelivery() || (mask & event.SegmentBit()) != 0;  // a delivery reaches every settlement row
}

/// A row of all securities, of the scrip, or of its group.
bool Concerns(const BKSurveillanceLimitDefTag& row, const Event& event) {
    return row.token == kAllSecurities || row.token == event.token || row.token == event.scripGroup;
}

double Field(const BKSurveillanceLimitDefTag& row, std::size_t offset) {
    double value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(&row) + offset, sizeof value);
    return value;
}

std::string NameOf(const BKSurveillanceLimitDefTag& row) {
    return Text(row.entityCode)
        .append(", mask ")
        .append(std::to_string(row.limitMask))
        .append(", token ")
        .append(std::to_string(row.token));
}

/// A figure of a limit row by name, and what it should be.
struct Due {
    const char* name;
    std::size_t offset;
    double value;
};
#define FIGURE(name) #name, offsetof(BKSurveillanceLimitDefTag, name)

}  // namespace

// ---------------------------------------------------------------------------------------------------------------
// Events

int Event::SegmentBit() const { return SegmentToBit(SegmentOfContract(exchangeMask, strikePrice)); }

int Event::Family() const {
    if (IsDelivery()) return kDelivery;
    return product == product::kMtf ? kMtf : 0;
}

void Position::Add(const Position& other) {
    const auto add = [](Amount& to, const Amount& from) { to.quantity += from.quantity, to.value += from.value; };
    add(orderBuy, other.orderBuy), add(orderSell, other.orderSell);
    add(tradedBuy, other.tradedBuy), add(tradedSell, other.tradedSell);
}

Position Event::Change() const {
    const Position::Amount out{prevQuantity, Out()}, in{quantity, In()};
    Position change;
    Position::Amount& ordered = buy ? change.orderBuy : change.orderSell;
    Position::Amount& traded = buy ? change.tradedBuy : change.tradedSell;
    ordered = {in.quantity - out.quantity, in.value - out.value};
    if (IsConversion() || correction) traded = ordered;
    if (trade && product != product::kMarginPlus) traded = in;
    return change;
}

template <class Dues>
std::string CBook::FirstWrong(const Row& row, const Dues& dues) const {
    compared_ += dues.size();
    if (row.token != kAllSecurities) comparedOfScrips_ += dues.size();
    for (const Due& due : dues) {
        const double seen = Field(row, due.offset);
        if (std::abs(seen - due.value) <= 1e-6 + 1e-11 * std::abs(due.value)) continue;
        char text[160];
        std::snprintf(text, sizeof text, ": %s is %.6f, not %.6f", due.name, seen, due.value);
        return NameOf(row).append(text);
    }
    return {};
}

// ---------------------------------------------------------------------------------------------------------------
// Entering

void CBook::Take(const Json& line, const Json& answer) {
    const std::string call = Get(line, "call", "");
    arrivals_.clear();
    if (call == "InitializeSurvManager") return Start(line);
    if (call == "CheckSurveillance" || call == "UpdateSurveillance") return Order(line, answer);
    if (call == "AddSurvLimits" || call == "RemoveSurvLimits") return RowCall(line, answer);
    if (call == "InitializeMCXLOTWeightOnOrOff") lotWeights_ = Get<int>(line, "value") == 1;
    if (call == "SetOrderBasedPosition") orderBased_ = Get<int>(line, "value") == 1;
    if (call == "ComputeMTMOnOrOff")
        everyClassMarked_ |= Get<int>(line, "mode") == 7 && Get<int>(answer, "result") == 0;
    if (call == "MTMTimeIntervalAndTickCount") everyTickMarks_ = Get<int>(line, "seconds") == 0;
    if (call == "AddAndComputeMTM") return Tick(Part(line, "touchline"));
    if (call == "AddUpdateClientPreferencesInfo") {
        const Json& record = Part(line, "preference");
        profits_[{Get(record, "preferenceCode", ""), Get<int>(record, "exchange")}] = Get<int>(record, "marginFlags");
    }
}

void CBook::Start(const Json& line) {
    positionMode_ = Get<std::int16_t>(line, "positionMode");
    families_ = (Get<int>(line, "featureBits") & 0x10) != 0;
    for (const Json& row : Part(line, "limitList")) {
        const std::string entity = Get(row, "entityCode", "");
        entities_.insert(entity);
        fromStart_.insert({entity, Get<int>(row, "limitMask"), Get<std::int32_t>(row, "token")});
    }
}

/// A row that is added starts from other figures, and so does one that comes again.
void CBook::RowCall(const Json& line, const Json& answer) {
    const Json& row = Part(line, "limit");
    const std::string entity = Get(row, "entityCode", "");
    if (line["call"] == "AddSurvLimits") entities_.insert(entity);
    if (line["call"] == "RemoveSurvLimits" && Get<int>(answer, "result") == 0)
        fromStart_.erase({entity, Get<int>(row, "limitMask"), Get<std::int32_t>(row, "token")});
}

/// What one of the quantity counts. Factors of a ratio without a denominator count as 1.
double CBook::LotOf(const Json& request, const Event& event) const {
    if (!lotWeights_ || event.exchangeMask != kMaskMcx) return 1;
    const auto ratio = [&](const char* numerator, const char* denominator) {
        const double below = Get<double>(request, denominator);
        return below == 0 ? 1 : Get<double>(request, numerator) / below;
    };
    return ratio("priceNumerator", "priceDenominator") * ratio("generalNumerator", "generalDenominator") *
           Get<double>(request, "lotMultiplier");
}

void CBook::Tick(const Json& touchline) {
    const auto scrip = market_.find({Get<std::int16_t>(touchline, "exchange"), Get<std::int32_t>(touchline, "token")});
    if (scrip != market_.end()) scrip->second = Get<std::int32_t>(touchline, "lastTradedPrice");
}

void CBook::Order(const Json& line, const Json& answer) {
    const bool check = line["call"] == "CheckSurveillance";
    const Json& request = Part(line, "request");
    if (Get<int>(line, "probe") != 0 || Get<int>(answer, "result", -1) != 0) return;
    if (!check && Get<int>(answer, "errorCode") != 0) return;  // without risk parameters nothing happened
    const int code = Get<int>(request, "messageCode");
    const Json* primary = &Part(line, "order");
    for (const char* name : {"tradeCorrection", "trade", "orderInfo"}) {
        if (primary->empty()) primary = &Part(line, name);
    }
    Event event;
    event.exchangeMask = Get<std::int16_t>(*primary, "exchangeMask");
    event.token = Get<std::int32_t>(request, "token");
    event.strikePrice = Get<std::int32_t>(*primary, "strikePrice");
    event.expiryDate = Get<std::int32_t>(*primary, "expiryDate");
    event.underlyingToken = Get<std::int32_t>(request, "underlyingToken");
    event.product = line.contains("tradeCorrection") ? 0 : Get<int>(*primary, "productType");
    event.nri = Get(*primary, "clientCategory", "") == "N" ||
                (line.contains("trade") && Get(Part(line, "orderInfo"), "clientCategory", "") == "N");
    const std::string side = Get(*primary, "buySellCharacter", "");
    event.buy = side.empty() ? Get<int>(*primary, "buySell") == kBuy : side == "1";
    const Meaning m = MeaningOf(line, code, check, event.product == product::kMarginPlus, positionMode_);
    if (!m.known) return;
    event.trade = m.trade, event.correction = m.correction;
    event.prevQuantity = m.prevQuantity, event.prevPrice = m.prevPrice;
    event.quantity = m.quantity, event.price = m.price;
    event.scripGroup = Get<std::int32_t>(request, "scripGroupNumber");
    event.lot = LotOf(request, event);
    if (event.exchangeMask == kMaskNcdex) {
        const double factor = Get<double>(request, "priceMultiplier") / 10000;
        for (double* price : {&event.price, &event.prevPrice}) *price = std::floor(*price * factor + 0.5);
        priceFactors_.try_emplace(event.token, factor);
    }
    lots_.try_emplace({event.exchangeMask, event.token}, event.lot);
    Json whole = request;
    whole["proClient"] = line.contains("orderInfo") ? Get<int>(Part(line, "orderInfo"), "proClient", 0)
                                                    : Get<int>(*primary, "proClient");
    whole["dealerOnly"] = Get<int>(line, "dealerOnly");
    whole["account"] = Get(line.contains("orderInfo") ? Part(line, "orderInfo") : *primary, "accountText", "");
    if (!check || Get<int>(answer, "status") == status::kPass) {
        if (event.IsConversion()) event.price = Get<double>(Part(answer, "order"), "price", event.price);
        if (event.trade) market_.try_emplace({event.exchangeMask, event.token}, 0);
    }
    Enter(whole, event, check, answer);
    const bool passed = !check || Get<int>(answer, "status") == status::kPass;
    if (passed && event.IsConversion()) {  // what has been converted leaves the other product, as an event
        Event source = event;
        source.product =
            event.product == product::kConvertToDelivery ? product::kConvertToMargin : product::kConvertToDelivery;
        source.prevQuantity = event.quantity, source.prevPrice = event.price, source.quantity = 0, source.price = 0;
        Enter(whole, source, false, answer);
    }
}

/// A refused check leaves the order at the levels that were only to take it in and that the walk had come to.
void CBook::Enter(const Json& request, const Event& event, bool check, const Json& answer) {
    struct Level {
        char kind;
        std::string code;
        int type, checkBit;
    };
    const std::string group = Get(request, "groupCode", ""), client = Get(request, "clientCode", "");
    const int dealerType = Get<int>(request, "dealerType");
    const int clientType = Get<int>(request, "clientType"), subClientType = Get<int>(request, "subClientType");
    const bool own = Get<int>(request, "proClient") == kProClientOwn;
    const bool ofClient = dealerType == 0 && !own;
    std::vector<Level> levels;  // as the walk goes
    if (ofClient && subClientType != 255) levels.push_back({'S', Get(request, "subClientCode", ""), subClientType, 5});
    if (ofClient && clientType != 255) levels.push_back({'C', client, clientType, 4});
    if (families_ && request.contains("familyCode")) levels.push_back({'F', Get(request, "familyCode", ""), 8, 3});
    levels.push_back({'D', Get(request, "dealerCode", ""), dealerType, 2});
    levels.push_back({'G', group, Get<int>(request, "groupType"), 1});
    levels.push_back({'-', "-", -1, 0});
    if (own && !check && HoldsByClient()) levels.push_back({'*', std::string(kOwnAccount), 0, 0});
    if (Get<int>(request, "dealerOnly") != 0) {
        std::erase_if(levels, [](const Level& level) { return level.kind != 'D'; });
        levelsAgree_ = false;
    }

    constexpr int kCommodity = 0x30;
    const bool narrow = (clientType == 3 || clientType == 5 || dealerType == 5) && !(event.exchangeMask & kCommodity);
    const bool passed = !check || Get<int>(answer, "status") == status::kPass;
    const int flags = narrow ? Get<int>(request, "levelCheckFlags") & 8 : Get<int>(request, "levelCheckFlags");
    const std::string failed = Get(answer, "failedLevelCode", "");
    const bool walked = Get<int>(answer, "failedLevelType") != -1 || failed == "-";
    if (!passed && !walked) return;  // refused ahead of all levels
    const bool apart = event.IsDelivery() || event.product == product::kMtf;
    const int ownType = clientType == 255 ? (dealerType == 4 || dealerType == 5 ? dealerType : -1) : clientType;
    LevelTypes types{ownType, ownType == 6 ? -1 : Get<int>(request, "groupType"), subClientType};
    if (own) types = {};

    for (const Level& level : levels) {
        if (!entities_.contains(level.code)) {  // an optional one
            levelsAgree_ = false;
            continue;
        }
        const bool moves = !narrow || level.kind == 'F' || level.kind == 'C';
        const bool house = level.kind == 'G' || level.kind == '-';
        const bool ownRules =
            level.kind == (dealerType == 4 || dealerType == 5 ? 'D' : 'C') && ofClient == (level.kind == 'C');
        const bool judges = level.kind != 'D' || !apart || ownRules;  // else it only takes deliveries and funding in
        const bool asked = level.kind == '-' || (judges && (flags >> level.checkBit & 1) != 0);
        const bool takes = !asked && (!narrow || level.type == 3 || level.type == 5 || level.type == 8);
        if (!passed) {
            if (level.code == failed) break;  // the walk ended here
            if (!takes) continue;
            levelsAgree_ = false;
            fundsDoubted_.insert(level.code);  // the rows have taken it in, the holding not
        }
        const bool passedBy = check && house && apart;  // the walk doesn't come here; the commit moves no row
        Entry entry{ownType < 0 || ownType == 6 ? "" : group, Get(request, "account", ""), types, event};
        if (own) entry.account = kOwnAccount, entry.group.clear();
        if (level.kind == 'S') entry.group = client;
        entry.flat = passed && moves;
        entry.told = !check || (takes && !passedBy);
        entry.rows = moves && event.product != product::kMarginPlus && !(apart && (ownRules || passedBy));
        entry.productRows = moves && apart && ownRules;
        entry.judged = check && asked && !(apart && level.kind == 'D' && !ownRules);
        if (event.IsConversion()) doubted_.insert(level.code);
        if (!passed || (entry.flat != entry.rows && (!apart || passedBy))) exposuresDoubted_.insert(level.code);
        if (entry.flat != entry.rows) grossDoubted_.insert(level.code);
        if (apart && entry.rows) mtmDoubted_.insert(level.code);
        const std::tuple held{level.code, event.exchangeMask, event.token};
        if (event.trade) traded_.insert(held);
        if (event.correction && !traded_.contains(held)) mtmDoubted_.insert(level.code);
        arrivals_.push_back({level.code, entry});
        entries_[level.code].push_back(std::move(entry));
    }
}

// ---------------------------------------------------------------------------------------------------------------
// Adding up

std::string CBook::Positions(const Snapshot& state) const {
    struct Account {
        std::string entity, group, account;
        int segmentBit;
        std::int32_t token;
        auto operator<=>(const Account&) const = default;
    };
    // The dump doesn't tell period and family: the positions of a scrip in an account compare as a set.
    std::map<Account, std::vector<Position>> due, seen;
    for (const auto& [entity, entries] : entries_) {
        std::map<std::tuple<std::string_view, std::string_view, Place>, Position> held;
        for (const Entry& e : entries) {
            const Position change = e.event.Change();
            for (const int period : {0, 1}) {
                if (period == 0 && !e.event.HasDaily()) continue;
                const Place place{period, e.event.Family(), e.event.SegmentBit(), e.event.token};
                held[{e.group, e.account, place}].Add(change);
            }
        }
        for (const auto& [where, position] : held) {
            const auto& [group, account, place] = where;
            if (position == Position{}) continue;
            due[{entity, std::string(group), std::string(account), place.segmentBit, place.token}].push_back(position);
        }
    }
    for (const BKExposureTag& row : state.positions) {
        const std::string account = Text(row.accountCode);
        const Position position{{row.orderBuyQty, row.orderBuyValue},
                                {row.orderSellQty, row.orderSellValue},
                                {row.tradedBuyQty, row.tradedBuyValue},
                                {row.tradedSellQty, row.tradedSellValue}};
        if (position != Position{})
            seen[{Text(row.levelCode), Text(row.groupCode), account, SegmentToBit(row.marketSegment), row.token}]
                .push_back(position);
    }
    const auto told = [](const Account& a, const std::vector<Position>& positions) {
        std::string text =
            a.entity + ", account " + a.group + "/" + a.account + ", token " + std::to_string(a.token) + ":";
        for (const Position& p : positions) {
            for (const auto& amount : {p.orderBuy, p.orderSell, p.tradedBuy, p.tradedSell}) {
                text += " " + std::to_string(amount.quantity) + "@" +
                        std::to_string(static_cast<std::int64_t>(amount.value));
            }
            text += ";";
        }
        return text;
    };
    for (auto* all : {&due, &seen}) {
        for (auto& [account, positions] : *all) std::sort(positions.begin(), positions.end());
    }
    for (const auto& [account, positions] : due) {
        if (seen[account] != positions) return told(account, seen[account]) + " due:" + told(account, positions);
    }
    for (const auto& [account, positions] : seen) {
        if (due[account] != positions) return told(account, positions) + " due: nothing";
    }
    return {};
}

std::set<std::string> Uneven(const Snapshot& state) {
    std::map<std::string, std::array<std::set<int>, 2>> masks;
    for (const BKSurveillanceLimitDefTag& row : state.rows) {
        masks[Text(row.entityCode)][row.limitMask & kExpiryBit].insert(row.limitMask);
    }
    std::set<std::string> uneven;
    for (const auto& [entity, sides] : masks) {
        if (sides[0].size() != sides[1].size()) uneven.insert(entity);
    }
    return uneven;
}

std::string CBook::AskRows(const Snapshot& state, const std::set<std::string>& doubted, const Ask& ask) const {
    return AskOf(state, doubted, false, ask);
}

std::string CBook::AskRowsOfScrips(const Snapshot& state, const std::set<std::string>& doubted, const Ask& ask) const {
    return AskOf(state, doubted, true, ask);
}

std::string CBook::AskOf(const Snapshot& state, const std::set<std::string>& doubted, bool scrips,
                         const Ask& ask) const {
    static const Entries kNone;
    const std::set<std::string> uneven = Uneven(state);
    std::map<std::string, std::vector<const Row*>> rows;
    // A scrip's own row may lift what the row of all securities refuses for its net quantity: the order is in, and that
    // row, put back, doesn't know.
    std::set<std::pair<std::string, int>> mayRefuse;
    for (const Row& row : state.rows) {
        const bool all = row.token == kAllSecurities;
        if (all && row.netQuantityLimit >= 0) mayRefuse.insert({Text(row.entityCode), int{row.limitMask}});
    }
    for (const Row& row : state.rows) {
        const std::string entity = Text(row.entityCode);
        if (row.token != kAllSecurities && mayRefuse.contains({entity, int{row.limitMask}})) lifted_.insert(entity);
    }
    for (const Row& row : state.rows) {
        const std::string entity = Text(row.entityCode);
        const bool known = scrips && fromStart_.contains({entity, int{row.limitMask}, std::int32_t{row.token}});
        if (row.token == kAllSecurities || known) rows[entity].push_back(&row);
    }
    for (const auto& [entity, own] : rows) {
        if (doubted_.contains(entity) || doubted.contains(entity) || uneven.contains(entity)) continue;
        if (lifted_.contains(entity)) continue;
        const auto entries = entries_.find(entity);
        std::string wrong = ask(entity, entries == entries_.end() ? kNone : entries->second, own);
        if (!wrong.empty()) return wrong;
    }
    return {};
}

std::string CBook::RowFigures(const Snapshot& state) const {
    return AskRowsOfScrips(
        state, {}, [this](const std::string&, const Entries& entries, const std::vector<const Row*>& rows) {
            for (const Row* row : rows) {
                const int period = row->limitMask & kExpiryBit;
                double netOrder = 0, netTraded = 0, turnoverTraded = 0, pending = 0;
                for (const Entry& e : entries) {
                    if (!e.rows || !Covers(row->limitMask, e.event, period) || !Concerns(*row, e.event)) continue;
                    if (period == 0 && !e.event.HasDaily()) continue;
                    const double out = e.event.Out(), in = e.event.In();
                    const double sign = e.event.buy ? 1 : -1;
                    netOrder += sign * (in - out);
                    if (e.event.trade) {
                        pending -= out;
                    } else if (!e.event.correction) {
                        pending += in - out;
                    }
                    if (e.event.trade || e.event.correction) netTraded += sign * in, turnoverTraded += in;
                }
                const std::array dues{
                    Due{FIGURE(usedNetPositionOrder), netOrder}, Due{FIGURE(usedNetPositionTraded), netTraded},
                    Due{FIGURE(usedTurnoverTraded), turnoverTraded}, Due{FIGURE(usedPendingOrder), pending}};
                if (std::string wrong = FirstWrong(*row, dues); !wrong.empty()) return wrong;
            }
            return std::string();
        });
}

CBook::Flat CBook::FlatOf(const Entries& entries) {
    Flat flat;
    for (const Entry& e : entries) {
        // A two-leg order has two positions of its own, which are in no row.
        if (!e.flat || e.event.product == product::kMarginPlus) continue;
        for (const int period : {0, 1}) {
            if (period == 0 && !e.event.HasDaily()) continue;
            Held& held = flat[{period, e.event.Family(), e.event.SegmentBit(), e.event.token}];
            held.position.Add(e.event.Change());
            held.about = e.event;
        }
    }
    return flat;
}

namespace {

/// The four cases of what may yet fill: all open orders, none, the buys alone, the sells alone.
struct Case {
    double buyQty, sellQty, buyValue, sellValue;
    [[nodiscard]] double Net() const { return buyQty - sellQty; }
};
std::array<Case, 4> CasesOf(const Position& p) {
    const auto of = [](const Position::Amount& b, const Position::Amount& s) {
        return Case{static_cast<double>(b.quantity), static_cast<double>(s.quantity), b.value, s.value};
    };
    return {of(p.orderBuy, p.orderSell), of(p.tradedBuy, p.tradedSell), of(p.orderBuy, p.tradedSell),
            of(p.tradedBuy, p.orderSell)};
}

/// The exposures of one position, as limit rows sum them. Paise.
struct Measures {
    double maxGross, grossOrder, grossTraded, maxNet, netOrder, netTraded, maxNetSale, netSaleOrder, netSaleTraded;
    double maxNetPosition, maxTurnover;
};

Measures MeasuresOf(const Position& p, const Event& about, std::int32_t optionNetPercent) {
    const std::array<Case, 4> cases = CasesOf(p);
    const bool option = !IsCashExchange(about.exchangeMask) && about.strikePrice > 0;
    const bool together = IsCashExchange(about.exchangeMask) && about.nri;
    double largestNet = 0, largestSale = 0, largestSaleValue = -HUGE_VAL, largestValue = -HUGE_VAL;
    double lowest = HUGE_VAL, turnover = -HUGE_VAL, gross = 0;
    for (const Case& c : cases) {
        const double value = c.buyValue - c.sellValue;
        largestNet = std::max(largestNet, c.Net()), largestSale = std::max(largestSale, -c.Net());
        largestValue = std::max(largestValue, value), largestSaleValue = std::max(largestSaleValue, -value);
        lowest = std::min(lowest, value), turnover = std::max(turnover, c.buyValue + c.sellValue);
        gross = std::max(gross, std::abs(together ? c.buyValue + c.sellValue : value));
    }
    const auto net = [](const Case& c) { return c.Net() > 0 ? c.buyValue - c.sellValue : 0.0; };
    const auto sale = [&](const Case& c) {
        if (c.Net() >= 0) return 0.0;
        return std::max(0.0, option ? -c.Net() * about.strikePrice : c.sellValue - c.buyValue);
    };
    Measures m{};
    m.maxNet = largestNet > 0 ? std::max(0.0, largestValue) : 0;
    m.netOrder = net(cases[0]), m.netTraded = net(cases[1]);
    m.maxNetSale = largestSale > 0 ? std::max(0.0, option ? largestSale * about.strikePrice : largestSaleValue) : 0;
    m.netSaleOrder = sale(cases[0]), m.netSaleTraded = sale(cases[1]);
    m.maxNetPosition = std::abs(lowest) > largestValue ? lowest : largestValue;
    m.maxTurnover = turnover;
    if (option) {  // what is written, and a share of what is bought
        const double share = optionNetPercent > 0 ? optionNetPercent / 10000 : 0;
        m.maxGross = m.maxNetSale + share * m.maxNet;
        m.grossOrder = m.netSaleOrder + share * m.netOrder, m.grossTraded = m.netSaleTraded + share * m.netTraded;
    } else {
        const auto one = [&](const Case& c) {
            return std::abs(together ? c.buyValue + c.sellValue : c.buyValue - c.sellValue);
        };
        m.maxGross = gross, m.grossOrder = one(cases[0]), m.grossTraded = one(cases[1]);
    }
    return m;
}

void Sum(Measures& to, const Measures& m) {
    const double* from = &m.maxGross;
    double* into = &to.maxGross;
    for (std::size_t i = 0; i < sizeof m / sizeof(double); ++i) into[i] += from[i];
}

/// Rows over equity and other markets count a share of what is bought in options.
std::int32_t OptionNetPercent(const BKSurveillanceLimitDefTag& row) {
    constexpr int kEquity = 0x12, kOther = 0x1EC;
    const int bits = row.limitMask & kSegmentBits;
    return (bits & kEquity) && (bits & kOther) ? row.netExposureMultiplier : 0;
}

}  // namespace

std::string CBook::Exposures(const Snapshot& state) const {
    return AskRowsOfScrips(
        state, exposuresDoubted_,
        [this](const std::string& entity, const Entries& entries, const std::vector<const Row*>& rows) {
            const Flat flat = FlatOf(entries);
            using Account = std::tuple<std::string_view, std::string_view, Place>;
            std::map<Account, Held> accounts;
            std::map<Account, bool> moveRows;
            std::set<int> general;  // families whose orders move the entity's rows
            bool grossDoubted = grossDoubted_.contains(entity);
            for (const Entry& e : entries) {
                if (e.rows) general.insert(e.event.Family());
                for (const int period : {0, 1}) {
                    if (period == 0 && !e.event.HasDaily()) continue;
                    const Account account{
                        e.group, e.account, {period, e.event.Family(), e.event.SegmentBit(), e.event.token}};
                    grossDoubted |= moveRows.try_emplace(account, e.rows).first->second != e.rows;
                    if (!e.rows) continue;
                    accounts[account].position.Add(e.event.Change());
                    accounts[account].about = e.event;
                }
            }
            for (const Row* row : rows) {
                const int period = row->limitMask & kExpiryBit;
                const std::int32_t share = OptionNetPercent(*row);
                Measures m{}, g{};
                for (const auto& [place, held] : flat) {
                    if (place.period != period || !general.contains(place.family)) continue;
                    if (Concerns(*row, held.about) && Covers(row->limitMask, held.about, period))
                        Sum(m, MeasuresOf(held.position, held.about, share));
                }
                const std::array dues{
                    Due{FIGURE(usedMaxGross), m.maxGross},           Due{FIGURE(usedGrossOrder), m.grossOrder},
                    Due{FIGURE(usedGrossTraded), m.grossTraded},     Due{FIGURE(usedMaxNet), m.maxNet},
                    Due{FIGURE(usedNetOrder), m.netOrder},           Due{FIGURE(usedNetTraded), m.netTraded},
                    Due{FIGURE(usedMaxNetSale), m.maxNetSale},       Due{FIGURE(usedNetSaleOrder), m.netSaleOrder},
                    Due{FIGURE(usedNetSaleTraded), m.netSaleTraded}, Due{FIGURE(usedMaxNetPosition), m.maxNetPosition},
                    Due{FIGURE(usedMaxTurnover), m.maxTurnover}};
                if (std::string wrong = FirstWrong(*row, dues); !wrong.empty()) return wrong;
                if (grossDoubted) continue;
                for (const auto& [account, held] : accounts) {
                    if (std::get<Place>(account).period != period) continue;
                    if (Concerns(*row, held.about) && Covers(row->limitMask, held.about, period))
                        Sum(g, MeasuresOf(held.position, held.about, share));
                }
                const std::array gross{Due{FIGURE(grossUsedMaxGross), g.maxGross},
                                       Due{FIGURE(grossUsedGrossOrder), g.grossOrder},
                                       Due{FIGURE(grossUsedGrossTraded), g.grossTraded},
                                       Due{FIGURE(grossUsedMaxNet), g.maxNet},
                                       Due{FIGURE(grossUsedNetOrder), g.netOrder},
                                       Due{FIGURE(grossUsedNetTraded), g.netTraded},
                                       Due{FIGURE(grossUsedMaxNetSale), g.maxNetSale},
                                       Due{FIGURE(grossUsedNetSaleOrder), g.netSaleOrder},
                                       Due{FIGURE(grossUsedNetSaleTraded), g.netSaleTraded}};
                if (std::string wrong = FirstWrong(*row, gross); !wrong.empty()) return wrong;
            }
            return std::string();
        });
}

std::string CBook::Holdings(const Snapshot& state) const {
    std::map<std::string, std::pair<double, double>> worth;  // collateral and sale credit
    for (const tagDPHolding& h : state.holdings) {
        const double free = static_cast<double>(h.holdingQty) - h.nseBlockedQty - h.bseBlockedQty;
        const double collateral =
            std::min<double>(free, h.collateralQty) * h.collateralPrice * (1 - h.haircutRate / 1e4);
        const double credit = std::max(0.0, h.nseTradedSellValue - h.nseOrderBuyValue) +
                              std::max(0.0, h.bseTradedSellValue - h.bseOrderBuyValue);
        if (std::abs(collateral - h.collateralValue) > 1e-6 || std::abs(credit - h.saleCredit) > 1e-6) {
            return survhost::DecodeRecord(h).dump().append(": worth something else");
        }
        auto& [c, s] = worth[Text(h.categoryCode)];
        c += collateral, s += credit;
    }
    for (const BKSurveillanceLimitDefTag& row : state.rows) {
        if (row.token != kAllSecurities || (row.limitMask & kExpiryBit) == 0) continue;
        if (fundsDoubted_.contains(Text(row.entityCode))) continue;
        const auto& [collateral, credit] = worth[Text(row.entityCode)];
        const std::array dues{Due{FIGURE(collateralFund), collateral}, Due{FIGURE(saleCreditFund), credit}};
        if (std::string wrong = FirstWrong(row, dues); !wrong.empty()) return wrong;
    }
    return {};
}

namespace {

/// What the trades of a position have made and stand to make at a price. Paise.
struct Profit {
    double booked, marked;

    Profit(const Position& p, double last, double lot) {
        const auto average = [lot](const Position::Amount& a) {
            return a.quantity == 0 ? 0 : a.value / (lot * static_cast<double>(a.quantity));
        };
        const double buyAverage = average(p.tradedBuy), sellAverage = average(p.tradedSell);
        const double done = lot * static_cast<double>(std::min(p.tradedBuy.quantity, p.tradedSell.quantity));
        const double open = lot * static_cast<double>(p.tradedBuy.quantity - p.tradedSell.quantity);
        booked = done * (sellAverage - buyAverage);
        marked = last == 0 && open != 0 ? 0 : open * (last - (open < 0 ? sellAverage : buyAverage)) + booked;
    }
};

}  // namespace

double CBook::LastPriceOf(std::int16_t exchangeMask, std::int32_t token) const {
    const auto price = market_.find({exchangeMask, token});
    if (price == market_.end()) return 0;
    const bool scaled = exchangeMask == kMaskNcdex;
    return scaled ? std::floor(price->second * priceFactors_.at(token)) : price->second;
}

double CBook::LastWorthOf(std::int16_t exchangeMask, std::int32_t token) const {
    const auto lot = lots_.find({exchangeMask, token});
    return lot == lots_.end() ? 0 : lot->second * LastPriceOf(exchangeMask, token);
}

std::string CBook::Mtm(const Snapshot& state) const {
    constexpr int kProfits = 2, kBookedProfits = 8;  // marginFlags
    if (!everyClassMarked_ || !everyTickMarks_) return {};
    if (positionMode_ == 1) return {};  // leaves some rows to the reload
    std::set<std::string> doubted = exposuresDoubted_;
    doubted.insert(mtmDoubted_.begin(), mtmDoubted_.end());
    return AskRows(state, doubted,
                   [this](const std::string& entity, const Entries& entries, const std::vector<const Row*>& rows) {
                       const Flat flat = FlatOf(entries);
                       for (const Row* row : rows) {
                           bool flagsKnown = true;
                           double full = 0, mtm = 0, booked = 0;
                           for (const auto& [place, held] : flat) {
                               if (place.period != (row->limitMask & kExpiryBit) || place.family != 0) continue;
                               if (!Covers(row->limitMask, held.about, place.period) || held.about.strikePrice > 0)
                                   continue;
                               const Profit profit(held.position, LastPriceOf(held.about.exchangeMask, place.token),
                                                   held.about.lot);
                               const auto found = profits_.find({entity, held.about.exchangeMask});
                               flagsKnown = flagsKnown && found != profits_.end();
                               const int flags = flagsKnown ? found->second : 0;
                               full += profit.marked;
                               mtm += (flags & kProfits) ? profit.marked : std::min(profit.marked, 0.0);
                               booked += (flags & kBookedProfits) ? profit.booked : std::min(profit.booked, 0.0);
                           }
                           std::vector<Due> dues{Due{FIGURE(usedMtmFull), full}};
                           if (flagsKnown)
                               dues.push_back({FIGURE(usedMtm), mtm}), dues.push_back({FIGURE(usedBookedPnl), booked});
                           if (std::string wrong = FirstWrong(*row, dues); !wrong.empty()) return wrong;
                       }
                       return std::string();
                   });
}

}  // namespace soak
