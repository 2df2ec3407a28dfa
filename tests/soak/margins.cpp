#include "margins.h"

#include <algorithm>
#include <cmath>

#include "read.h"
#include "surveillance/codes.h"

namespace soak {
namespace {

using namespace surv;

const std::string kHouse = "*****";       ///< its own account, whose preference is that of everybody
constexpr std::int16_t kNoExchange = -1;  ///< of a preference that is of none
constexpr std::array<std::int16_t, 4> kDerivatives{kMaskNseDerivatives, kMaskBseDerivatives, kMaskMcx, kMaskNcdex};

/// Rows that hold several markets, in the order in which they are published.
constexpr std::array kRollUps{0xF, 0x7F, 0x181, 0x1FF};
/// The row of one market alone.
struct Market {
    std::int16_t exchange;
    int mask;
    [[nodiscard]] bool In(int rowMask) const { return (rowMask & mask & kSegmentBits) != 0; }
};
constexpr std::array kMarkets{Market{kMaskNseDerivatives, 0xD},  Market{kMaskNseCash, 3}, Market{kMaskBseCash, 0x11},
                              Market{kMaskBseDerivatives, 0x61}, Market{kMaskMcx, 0x81},  Market{kMaskNcdex, 0x101}};
int RowOf(std::int16_t exchange) {
    return std::find_if(kMarkets.begin(), kMarkets.end(), [=](const Market& m) { return m.exchange == exchange; })
        ->mask;
}

bool IsRollUp(int mask) { return std::find(kRollUps.begin(), kRollUps.end(), mask) != kRollUps.end(); }
/// Settlement of equity, alone or with others.
bool IsSettlement(int mask) { return mask == 3 || mask == 0x11 || mask == 0x13 || (IsRollUp(mask) && mask != 0x181); }
bool IsEquityOfTheDay(int mask) { return mask == 2 || mask == 0x10 || mask == 0x12; }
bool HoldsDerivatives(int mask) {
    return IsRollUp(mask) || mask == 0xD || mask == 0x61 || mask == 0x81 || mask == 0x101;
}
/// Rows in which the premium of an option may count as margin.
bool MayTakePremium(int mask) { return HoldsDerivatives(mask) && (mask & 0x6C) != 0; }
constexpr int kPremiumInMargin = 4;   ///< limitOptions
constexpr int kPremiumCounts = 0x20;  ///< marginFlags

bool IsNear(const Event& about) {
    constexpr std::int32_t kNear = 311460;
    return about.exchangeMask != kMaskMcx && about.expiryDate - kTradingDayBase < kNear;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------
// What calls bring

void CMargins::Take(const Json& line, const Json& answer, const CBook& book, const Snapshot& state) {
    const std::string call = Get(line, "call", "");
    TakeRows(state);
    dayKnown_ |= call == "@clock";
    holdsByClient_ = book.HoldsByClient();
    if (call == "InitializeAllAdditionalMarginInfo") {
        for (const Json& r : Part(line, "map")) {
            rates_[{Get<std::int16_t>(r, "exchange"), Get<std::int32_t>(r, "token")}] = {
                Get<double>(r, "additionalMarginRate"), Get<double>(r, "longMarginRate"),
                Get<double>(r, "shortMarginRate"), Get<double>(r, "buyExposureRate"),
                Get<double>(r, "sellExposureRate")};
        }
    }
    if (call == "ProcessRPFInfo") RiskMessage(line);
    if (call == "AddUpdateClientPreferencesInfo") Prefer(Part(line, "preference"));
    if (call == "AddSurvLimits" && Get<int>(answer, "result", -1) == 0) AddRow(Part(line, "limit"));
    if (call != "CheckSurveillance" && call != "UpdateSurveillance") return;
    const Json& request = Part(line, "request");
    for (const char* name : {"order", "orderInfo", "trade", "tradeCorrection"}) {
        const auto exchange = Get<std::int16_t>(Part(line, name), "exchangeMask");
        if (exchange == 0) continue;
        NoteAsked(request, exchange);
        scripRates_.try_emplace({exchange, Get<std::int32_t>(request, "token")},
                                ScripRate{Get<int>(request, "marginBasis"), Get<double>(request, "marginRate")});
    }
    const std::set<std::string> uneven = book.Arrivals().empty() ? std::set<std::string>{} : Uneven(state);
    for (const Arrival& arrival : book.Arrivals()) {
        Move(arrival, Get<int>(request, "clientType"));
        if (!uneven.contains(arrival.entity)) continue;
        for (auto& [mask, row] : entities_[arrival.entity].rows) row.known = false;
    }
}

void CMargins::TakeRows(const Snapshot& state) {
    for (const CBook::Row& row : state.rows) {
        if (row.token != kAllSecurities) continue;
        RowDue& due = entities_[Text(row.entityCode)].rows[row.limitMask];
        due.mask = row.limitMask, due.level = row.entityLevel, due.options = row.limitOptions;
    }
}

void CMargins::NoteAsked(const Json& request, std::int16_t exchange) {
    for (const char* name : {"groupCode", "dealerCode", "familyCode", "clientCode", "subClientCode"}) {
        if (const auto found = entities_.find(Get(request, name, "")); found != entities_.end())
            found->second.asked.insert(exchange);
    }
    entities_["-"].asked.insert(exchange);
}

/// Who has any preference has that of everybody where it has none of its own.
OwnMargin CMargins::OwnOf(const std::string& code, std::int16_t exchange) const {
    const auto first = own_.lower_bound({code, kNoExchange});
    if (first == own_.end() || first->first.first != code) return {};
    for (const std::string& from : {code, kHouse}) {
        if (const auto found = own_.find({from, exchange}); found != own_.end()) return found->second;
    }
    return {};
}

/// A changed one margins what its entity holds anew; BSE's derivatives wait for their orders.
void CMargins::Prefer(const Json& record) {
    const std::string code = Get(record, "preferenceCode", "");
    const auto exchange = Get<std::int16_t>(record, "exchange");
    const OwnMargin now{Get<std::int32_t>(record, "prefMarginRate"), Get<std::int32_t>(record, "marginAddOnFactor"),
                        Get<std::int32_t>(record, "prefExtraMarginRate"), Get<int>(record, "prefMarginMode"),
                        (Get<int>(record, "marginFlags") & kPremiumCounts) != 0};
    const auto [stored, isNew] = own_.try_emplace({code, exchange}, now);
    const OwnMargin before = std::exchange(stored->second, now);
    const auto found = entities_.find(code);
    if (isNew || found == entities_.end()) return;
    Entity& entity = found->second;
    for (const auto& [place, position] : entity.flat) {
        const auto& [period, family, scrip] = place;
        constexpr int kPlain = 0, kFunding = 20;
        if (scrip.first != exchange || !IsCashExchange(exchange) || period == 0) continue;
        if (family != kPlain && family != kFunding) continue;
        const auto margins = [&, &position = position, &scrip = scrip, &family = family](const OwnMargin& own) {
            Margins all = family == kFunding ? FundingMargins(position, own)
                                             : CashMargins(position, scripRates_[scrip], own, false);
            for (double& margin : all) margin = family == kFunding ? margin : own.Raised(margin);
            return all;
        };
        const Margins a = margins(before), b = margins(now);
        for (std::size_t i = 0; i < a.size(); ++i) entity.told[exchange][i] += b[i] - a[i];
        for (auto& [mask, row] : entity.rows) {
            const bool covers = (mask & SegmentToBit(SegmentOfContract(exchange, 0))) != 0 && (mask & kExpiryBit) != 0;
            for (std::size_t i = 0; i < a.size() && covers; ++i) row.due[i] += b[i] - a[i];
        }
    }
    bool held = false;
    if (exchange == kMaskMcx) {
        Renew(code, exchange, [&](const Contract& c) {
            return entity.flat.contains({1, 0, {exchange, c.about.token}});
        });
        held = std::any_of(entity.flat.begin(), entity.flat.end(),
                           [](const auto& each) { return std::get<2>(each.first).first == kMaskMcx; });
    } else if (exchange == kMaskNseDerivatives || exchange == kMaskNcdex) {
        Renew(code, exchange, [&](const Contract& c) {
            const bool live = live_.risks.contains({exchange, c.about.token});
            held |= live;
            return live;
        });
    } else {
        return;
    }
    Publish(code, exchange, held);
}

/// A new row of derivatives has the entity's rows published, that of MCX its own row alone.
void CMargins::AddRow(const Json& row) {
    const int mask = Get<int>(row, "limitMask");
    const std::string code = Get(row, "entityCode", "");
    const bool securities = mask == RowOf(kMaskNseDerivatives) || mask == RowOf(kMaskBseDerivatives);
    for (const std::int16_t exchange : {kMaskBseDerivatives, kMaskNseDerivatives, kMaskMcx}) {
        if (exchange == kMaskMcx ? mask != RowOf(kMaskMcx) : !securities) continue;
        bool held = false;
        for (const auto& [key, account] : entities_[code].accounts) {
            for (const auto& [where, underlying] : account.underlyings) held |= std::get<0>(where) == exchange;
        }
        Publish(code, exchange, held, exchange == kMaskMcx);
    }
}

// ---------------------------------------------------------------------------------------------------------------
// Risk parameter files

void CMargins::RiskMessage(const Json& line) {
    constexpr int kCharges = 28006, kContract = 28009, kEnd = 28002;
    const auto segment = Get<std::int16_t>(line, "segment");
    File& file = Get<int>(line, "toStaging") != 0 ? staged_ : live_;
    const int code = Get<int>(line, "messageCode");
    if (code == kCharges) {
        const Json& r = Part(line, "underlying");
        file.charges[{segment, Get<std::int32_t>(r, "underlyingToken")}] = {Get<float>(r, "calendarSpreadCharge"),
                                                                            Get<float>(r, "shortOptionMinimumCharge")};
    } else if (code == kContract) {
        const Json& r = Part(line, "contract");
        const Scrip underlying{segment, Get<std::int32_t>(r, "underlyingToken")};
        if (!file.charges.contains(underlying)) return;
        Risk risk{Get<float>(r, "contractPrice"), Get<float>(r, "compositeDelta")};
        const auto losses = Get<std::vector<float>>(r, "riskArray");
        std::copy_n(losses.begin(), std::min(losses.size(), risk.losses.size()), risk.losses.begin());
        file.risks[{segment, Get<std::int32_t>(r, "token")}] = risk;
    } else if (code == kEnd) {
        for (const auto& [underlying, charges] : staged_.charges) dayKnown_ &= underlying.first == segment;
        for (const auto& [underlying, charges] : staged_.charges) live_.charges[underlying] = charges;
        for (const auto& [contract, risk] : staged_.risks) live_.risks[contract] = risk;
        Replace(std::exchange(staged_, {}));
    }
}

void CMargins::Replace(const File& file) {
    for (auto& [code, entity] : entities_) {
        for (const std::int16_t exchange : kDerivatives) {
            const bool named = std::any_of(file.risks.begin(), file.risks.end(),
                                           [=](const auto& each) { return each.first.first == exchange; });
            if (!named) continue;
            bool held = false;
            Renew(code, exchange, [&, &code = code, &entity = entity](const Contract& c) {
                const Scrip scrip{exchange, c.about.token};
                // The house's own account is told of what it has traded.
                const bool reached = file.risks.contains(scrip) && (code != kHouse || entity.traded.contains(scrip));
                held |= reached;
                return reached;
            });
            Publish(code, exchange, held);
        }
    }
}

void CMargins::Renew(const std::string& code, std::int16_t exchange,
                     const std::function<bool(const Contract&)>& concerns) {
    const OwnMargin own = OwnOf(code, exchange);
    for (auto& [key, account] : entities_.at(code).accounts) {
        for (auto& [where, underlying] : account.underlyings) {
            const auto& [market, near, token] = where;
            if (market != exchange) continue;
            for (auto& [date, contracts] : underlying.expiries) {
                for (auto& [number, contract] : contracts) {
                    if (!concerns(contract) || !Counts(code, account)) continue;
                    const auto charges = live_.charges.find({exchange, token});
                    if (!underlying.charges && charges != live_.charges.end()) underlying.charges = charges->second;
                    const std::optional<Risk> held = contract.risk;
                    const auto risk = live_.risks.find({exchange, number});
                    if (risk != live_.risks.end()) contract.risk = risk->second;
                    if (held == contract.risk) {
                        Refresh(underlying, contract, own);
                    } else {
                        Form(underlying, contract, own, true);
                    }
                }
            }
        }
    }
}

/// Clients of types 3 and 5 count at the levels that hold them alone, where the house keeps positions by client.
bool CMargins::Counts(const std::string& code, const Account& account) const {
    const int level = entities_.at(code).rows.begin()->second.level;
    const bool apart = account.clientType == 3 || account.clientType == 5;
    return !apart || !holdsByClient_ || level == 3 || level == 5 || level == 8;
}

Reading CMargins::Sum(const std::string& code, std::int16_t exchange) const {
    Reading sum{};
    if (const auto told = entities_.at(code).told.find(exchange); told != entities_.at(code).told.end())
        std::copy(told->second.begin(), told->second.end(), sum.begin());
    const OwnMargin own = OwnOf(code, exchange);
    for (const auto& [key, account] : entities_.at(code).accounts) {
        if (!Counts(code, account)) continue;
        const Reading reading = account.Read(exchange);
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += own.Raised(reading[i]) / (i < kPremiumOrder ? 1 : 100);
    }
    return sum;
}

/// The rows of an exchange show what its accounts come to; what they hold of other markets comes from those markets'
/// own rows, premiums and all, or where there is none from the accounts, without premiums.
void CMargins::Publish(const std::string& code, std::int16_t exchange, bool sure, bool ownAlone) {
    Entity& entity = entities_.at(code);
    if (!sure && !entity.asked.contains(exchange)) return;
    const Reading fresh = Sum(code, exchange);
    const int own = RowOf(exchange);
    std::vector<int> masks{own};
    for (const int mask : kRollUps) {
        if ((mask & own & kSegmentBits) != 0 && !ownAlone) masks.push_back(mask);
    }
    const RowDue* const ownRow = entity.rows.contains(own) ? &entity.rows.at(own) : nullptr;
    for (const int mask : masks) {
        const auto found = entity.rows.find(mask);
        if (found == entity.rows.end()) continue;
        RowDue& row = found->second;
        bool known = !ownRow || ownRow->known;
        Four due{fresh[0], fresh[1], fresh[2], fresh[3]};
        for (const Market& market : kMarkets) {
            if (mask == own || market.exchange == exchange || !market.In(mask)) continue;
            const auto other = entity.rows.find(market.mask);
            const bool shown = other != entity.rows.end();
            known = known && (!shown || other->second.known);
            const Reading sum = shown ? Reading{} : Sum(code, market.exchange);
            for (std::size_t i = 0; i < due.size(); ++i) {
                const bool without = i == kExposureMargin && market.exchange == kMaskBseDerivatives;
                due[i] += !shown ? sum[i] : without ? 0 : other->second.due[i];
            }
        }
        const bool premium = (row.options & kPremiumInMargin) != 0 || OwnOf(code, exchange).premium;
        for (std::size_t i = 0; i < 3 && premium; ++i) due[i] += fresh[kPremiumOrder + i];
        if (sure) {
            row.due = due, row.known = known, row.otherwise.reset();
        } else if (known) {
            row.otherwise = due;
        } else {
            row.known = false;
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------
// Orders

Reading CMargins::Account::Read(std::int16_t exchange) const {
    Reading sum{};
    for (const auto& [where, underlying] : underlyings) {
        if (std::get<0>(where) != exchange) continue;
        Reading one = underlying.Read();
        if (exchange == kMaskBseDerivatives) one[kExposureMargin] = 0;
        if (exchange != kMaskNseDerivatives) one[kTradedSide] = underlying.tradedShown;
        one[kPremiumTraded] = underlying.premiumTradedShown;
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += one[i];
    }
    for (std::size_t i = 0; i < kPremiumOrder; ++i) sum[i] = std::max(sum[i], 0.0);
    return sum;
}

void CMargins::Form(Underlying& underlying, Contract& contract, const OwnMargin& own, bool tradedFollows) {
    const Event& about = contract.about;
    Views now = FiguresOf(about, contract.position, contract.risk ? &*contract.risk : nullptr,
                          rates_[{about.exchangeMask, about.token}], own);
    const bool stays = contract.figures && !tradedFollows;
    if (stays) {
        const Figures& held = (*contract.figures)[kTradedView];
        std::copy(held.begin() + kQuantities, held.end(), now[kTradedView].begin() + kQuantities);
    }
    contract.figures = now;
    if (stays) return;
    const Reading shown = underlying.Read();
    underlying.tradedShown = shown[kTradedSide];
    if (about.strikePrice > 0) underlying.premiumTradedShown = shown[kPremiumTraded];
}

void CMargins::Refresh(Underlying& underlying, Contract& contract, const OwnMargin& own) {
    const std::optional<Views> held = contract.figures;
    const Underlying before = underlying;
    Form(underlying, contract, own, true);
    if (held == contract.figures)
        underlying.tradedShown = before.tradedShown, underlying.premiumTradedShown = before.premiumTradedShown;
}

void CMargins::Move(const Arrival& arrival, int clientType) {
    const Event& event = arrival.entry.event;
    Entity& entity = entities_[arrival.entity];
    if (event.trade) entity.traded.insert({event.exchangeMask, event.token});
    if (IsCashExchange(event.exchangeMask)) return MoveEquity(arrival);
    if (arrival.entry.flat) entity.flat[{1, 0, {event.exchangeMask, event.token}}];
    MoveContract(arrival, clientType);
}

void CMargins::MoveContract(const Arrival& arrival, int clientType) {
    const Entry& entry = arrival.entry;
    const Event& event = entry.event;
    const std::int16_t exchange = event.exchangeMask;
    Entity& entity = entities_[arrival.entity];
    Account& account = entity.accounts[entry.group + "|" + entry.account];
    account.clientType = clientType;
    Underlying& underlying = account.underlyings[{exchange, IsNear(event), event.underlyingToken}];
    underlying.mcx = exchange == kMaskMcx;
    Contract& contract = underlying.expiries[event.expiryDate][event.token];
    contract.about = event;
    const OwnMargin own = OwnOf(arrival.entity, exchange);
    const auto risk = live_.risks.find({exchange, event.token});
    const auto charges = live_.charges.find({exchange, event.underlyingToken});

    // What came since without an order of the contract counts as no change of this one, but for new parameters.
    const bool refreshed = exchange == kMaskNseDerivatives || exchange == kMaskNcdex;
    if (contract.figures && refreshed) {
        if (!contract.risk && risk != live_.risks.end()) contract.risk = risk->second;
        Refresh(underlying, contract, own);
    }
    const Reading before = account.Read(exchange);
    const bool newCharges = charges != live_.charges.end() && underlying.charges != charges->second;
    const bool newRisk = risk != live_.risks.end() && contract.risk != risk->second;
    if (newCharges) underlying.charges = charges->second;
    if (newRisk) contract.risk = risk->second;
    if (contract.figures && (newCharges || newRisk)) Form(underlying, contract, own, true);
    contract.position.Add(event.Change());
    Form(underlying, contract, own, event.trade);
    const Reading after = account.Read(exchange);
    if (!entry.rows) return;

    const int bit = event.SegmentBit();
    for (auto& [mask, row] : entity.rows) {
        if ((mask & kExpiryBit) == 0 || (mask & bit) == 0) continue;
        const bool premium =
            event.strikePrice > 0 && MayTakePremium(mask) && ((row.options & kPremiumInMargin) != 0 || own.premium);
        for (const std::size_t i : {kOrderSide, kTradedSide, kWorst}) {
            if (!HoldsDerivatives(mask) || (i == kTradedSide && entry.judged && !event.correction)) continue;
            row.due[i] += own.Raised(after[i] - before[i]);
            if (premium) row.due[i] += own.Raised((after[kPremiumOrder + i] - before[kPremiumOrder + i]) / 100);
        }
        constexpr int kNoExposureMargin = 7;
        if (row.level != kNoExposureMargin) row.due[3] += own.Raised(after[kExposureMargin] - before[kExposureMargin]);
    }
}

void CMargins::MoveEquity(const Arrival& arrival) {
    const Entry& entry = arrival.entry;
    const Event& event = entry.event;
    constexpr int kDelivery = 5;
    Entity& entity = entities_[arrival.entity];
    const Scrip scrip{event.exchangeMask, event.token};
    const OwnMargin own = OwnOf(arrival.entity, event.exchangeMask);
    const int bit = event.SegmentBit();
    const bool ofDelivery = entry.productRows && event.Family() == kDelivery;
    for (const int period : {0, 1}) {
        if (period == 0 && !event.HasDaily()) continue;
        Position& held = entity.flat[{period, event.Family(), scrip}];
        Position moved = held;
        moved.Add(event.Change());
        const auto margins = [&](const Position& position) {
            if (entry.productRows) return ofDelivery ? NetBuys(position) : FundingMargins(position, own);
            Margins all = CashMargins(position, scripRates_[scrip], own, event.nri);
            for (double& margin : all) margin = own.Raised(margin);
            return all;
        };
        const Margins a = margins(held), b = margins(moved);
        for (auto& [mask, row] : entity.rows) {
            if ((mask & kExpiryBit) != period) continue;
            const bool covers = (mask & bit) != 0 || (event.IsDelivery() && !entry.productRows);
            if (event.product == product::kMarginPlus) row.known = row.known && !(covers && IsSettlement(mask));
            if (!(entry.rows || entry.productRows) || !covers) continue;
            if (!IsSettlement(mask) && (entry.productRows || !IsEquityOfTheDay(mask))) continue;
            const bool tradedStays = entry.judged && !event.correction && !ofDelivery;
            for (std::size_t i = 0; i < a.size(); ++i) {
                if (i != kTradedSide || !tradedStays) row.due[i] += b[i] - a[i];
            }
        }
        const bool taken = !entry.judged && (entry.rows || entry.productRows);
        if (taken && period == 1 && (event.product == product::kMargin || ofDelivery)) {
            const Margins c = ofDelivery ? Worth(held, event.nri) : a, d = ofDelivery ? Worth(moved, event.nri) : b;
            for (std::size_t i = 0; i < a.size(); ++i) entity.told[event.exchangeMask][i] += d[i] - c[i];
        }
        if (entry.flat && event.product != product::kMarginPlus) held = moved;
    }
}

// ---------------------------------------------------------------------------------------------------------------

std::string CMargins::Rows(const CBook& book, const Snapshot& state) {
    if (!dayKnown_) return {};
    const auto wrong = [this](RowDue& row, const Four& seen, const Four& due) {
        for (std::size_t i = 0; i < seen.size(); ++i) {
            row.size = std::max(row.size, std::abs(due[i]));
            if (!(std::abs(seen[i] - due[i]) <= 1e-3 + 1e-9 * row.size)) return i;
        }
        compared_ += seen.size();
        return seen.size();
    };
    return book.AskRows(state, {}, [&](const std::string& entity, const auto&, const auto& rows) {
        for (const CBook::Row* shown : rows) {
            RowDue& row = entities_[entity].rows[shown->limitMask];
            if (!row.known) continue;
            const Four seen{shown->usedMarginOrder, shown->usedMarginTraded, shown->usedMarginMax,
                            shown->usedExposureMargin};
            std::size_t at = wrong(row, seen, row.due);
            if (at < seen.size() && row.otherwise && wrong(row, seen, *row.otherwise) == seen.size())
                row.due = *row.otherwise, at = seen.size();
            row.otherwise.reset();
            if (at == seen.size()) continue;
            static constexpr std::array kNames{"usedMarginOrder", "usedMarginTraded", "usedMarginMax",
                                               "usedExposureMargin"};
            char text[160];
            std::snprintf(text, sizeof text, ", mask %d: %s is %.6f, not %.6f", row.mask, kNames[at], seen[at],
                          row.due[at]);
            return entity + text;
        }
        return std::string();
    });
}

}  // namespace soak
