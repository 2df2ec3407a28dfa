#include "support/random_house.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "platform/format.h"
#include "positions/position_key.h"

namespace surv::test {
namespace {

constexpr int kGroups = 6, kDealers = 20, kOwnDealers = 4, kFamilies = 12, kClients = 230, kSubClients = 30;
constexpr const char* kIsin = "INE002A01018";

/// As many daily masks as expiry ones, so that no list of stores ends early.
constexpr std::array<std::int16_t, 12> kWideMasks{2, 3, 0x12, 0x13, 0xE, 0xF, 0x7E, 0x7F, 0x180, 0x181, 0x1FE, 0x1FF};
constexpr std::array<std::int16_t, 12> kNarrowMasks{2, 3, 0x10, 0x11, 0xC, 0xD, 0x60, 0x61, 0x80, 0x81, 0x100, 0x101};

std::string Code(char letter, int number) { return Format("%c%03d", letter, number); }

std::string Place(Period period, const PositionKey& key) {
    return std::string{period == Period::kDaily ? "d" : "e"}
        .append(std::to_string(key.exchangeMask))
        .append(".")
        .append(std::to_string(static_cast<int>(key.family)))
        .append(".")
        .append(std::to_string(key.token));
}
std::string Place(Period period, const PositionKey& key, std::string_view account) {
    return Place(period, key).append(" ").append(account);
}

std::string RowPlace(std::int16_t mask, std::int32_t token) {
    return std::to_string(mask).append(" ").append(std::to_string(token));
}

/// What is collected of a category beside its own figures: everything, or one scrip in the accounts of one client and
/// of the house.
struct Scope {
    std::int32_t token = 0;
    std::string_view client;

    [[nodiscard]] bool Holds(const PositionKey& key) const { return token == 0 || key.token == token; }
    [[nodiscard]] bool Holds(std::string_view account) const {
        return token == 0 || account.find(client) != account.npos || account.find('*') != account.npos;
    }
};

/// Collects the figures of one category that aren't 0.
class CCollector {
 public:
    CCollector(Figures& out, std::string_view entity, const CSurveillanceCategory& category, Scope scope)
        : out_(out), entity_(entity), category_(category), scope_(scope) {}

    void Run() {
        for (const auto& info : category_.limitStores) {
            for (const auto& entry : info.value->store.entries) Row(entry.value->Row());
        }
        Add("cash", "nse", category_.cashMarginNse);
        Add("cash", "bse", category_.cashMarginBse);
        for (const auto& held : category_.holdingsByIsin) {
            Side("nse", held.value->nse);
            Side("bse", held.value->bse);
            Add("holding", "worth", std::array{held.value->collateralValue, held.value->saleCredit});
        }
        const CClientBook* const clients = category_.FindClientBook();
        if (clients)
            clients->totals.ForEach([this](ProductGroup group, std::int16_t mask, const CSurvPosition& total) {
                const std::string place = RowPlace(mask, static_cast<int>(group));
                Position("total", place, total.data);
                Add("total mtm", place, std::array{total.data.mtmValue});
            });
        for (const Period period : kPeriods) {
            const PeriodBook& book = category_.Book(period);
            Flat(period, "flat", book.exposures);
            Flat(period, "apart", book.clientLevelExposures);
            for (const auto& account : book.accounts.accounts) {
                if (scope_.Holds(account.key.View())) Account(period, account.key.View(), *account.value);
            }
            if (!clients) continue;
            for (const auto& scrip : clients->Of(period).positions.scrips) {
                if (!scope_.Holds(scrip.key)) continue;
                for (const auto& holder : *scrip.value)
                    Position("client", Place(period, scrip.key, holder.key.View()), holder.value->position.data);
            }
        }
    }

 private:
    void Row(const BKSurveillanceLimitDefTag& row) {
        constexpr std::pair<int, int> kFigureOffsets[] = {{171, 379}, {387, 419}, {427, 467}};
        const std::string place = RowPlace(row.limitMask, row.token);
        for (const auto& [from, to] : kFigureOffsets) {
            for (int at = from; at < to; at += 8) {
                double value = 0;
                std::memcpy(&value, reinterpret_cast<const char*>(&row) + at, sizeof value);
                AddOne("row", place, at, value);
            }
        }
    }
    void Side(const char* exchange, const HoldingSide& side) {
        Add("holding", exchange,
            std::array{side.orderBuyQty, side.orderSellQty, side.tradedBuyQty, side.tradedSellQty, side.blockedQty,
                       side.sarBlockedQty});
        Add("holding value", exchange,
            std::array{side.orderBuyValue, side.orderSellValue, side.tradedBuyValue, side.tradedSellValue});
    }
    void Flat(Period period, const char* kind, const CExposureDetails& set) {
        for (const auto& position : set.positions) {
            if (scope_.Holds(position.key)) Position(kind, Place(period, position.key), position.value->data);
        }
    }
    void Account(Period period, std::string_view key, const CClientExposure& account) {
        for (const auto& underlying : account.underlyings) {
            for (const auto& expiry : underlying.value->expiries) {
                for (const auto& scrip : expiry.value->scrips) {
                    if (!scope_.Holds(scrip.key)) continue;
                    Position("account", Place(period, scrip.key, key), scrip.value->position.data);
                    Position("day", Place(period, scrip.key, key), scrip.value->dayPosition.data);
                }
            }
        }
        for (const std::int16_t mask : {kMaskNseDerivatives, kMaskBseDerivatives, kMaskMcx, kMaskNcdex}) {
            const MarginReading m = account.ReadMargins(mask);
            Add("margin", std::to_string(mask).append(" ").append(key),
                std::array{m.orderSide, m.tradedSide, m.worst, m.exposure, m.optionOrderSide, m.optionTradedSide,
                           m.optionWorst});
        }
    }
    void Position(const char* kind, const std::string& place, const tagSurvPositionData& p) {
        Add(kind, place,
            std::array{static_cast<double>(p.orderBuyQty), p.orderBuyValue, static_cast<double>(p.orderSellQty),
                       p.orderSellValue, static_cast<double>(p.tradedBuyQty), p.tradedBuyValue,
                       static_cast<double>(p.tradedSellQty), p.tradedSellValue});
    }
    template <class Values>
    void Add(const char* kind, const std::string& place, const Values& values) {
        int at = 0;
        for (const auto value : values) AddOne(kind, place, at++, static_cast<double>(value));
    }
    void AddOne(const char* kind, const std::string& place, int index, double value) {
        if (value != 0) out_.push_back({std::string{entity_}, kind, place, index, value});
    }

    Figures& out_;
    std::string_view entity_;
    const CSurveillanceCategory& category_;
    Scope scope_;
};

std::string Told(const Figure& figure, double other) {
    const std::string kind{figure.kind};
    return Format("%s, %s %s, figure %d: %.9g, not %.9g", figure.entity.c_str(), kind.c_str(), figure.place.c_str(),
                  figure.index, figure.value, other);
}
bool Near(double a, double b, double tolerance) {
    return std::abs(a - b) <= std::max(tolerance, 1e-12 * std::max(std::abs(a), std::abs(b)));
}

std::string NameOf(std::string_view entity, std::string_view kind, const std::string& place, int index) {
    return std::string{entity}.append("|").append(kind).append("|").append(place).append("|").append(
        std::to_string(index));
}
std::string NameOf(const Figure& f) { return NameOf(f.entity, f.kind, f.place, f.index); }

}  // namespace

std::string Difference(const Figures& a, const Figures& b, double tolerance,
                       const std::function<bool(const Figure&)>& counts) {
    if (a == b) return {};
    const auto differs = [&](const Figure& figure, double other) {
        return !Near(figure.value, other, tolerance) && (!counts || counts(figure));
    };
    std::unordered_map<std::string, const Figure*> others;
    for (const Figure& figure : b) others.emplace(NameOf(figure), &figure);
    for (const Figure& figure : a) {
        const auto other = others.extract(NameOf(figure));
        const double value = other ? other.mapped()->value : 0.0;
        if (differs(figure, value)) return Told(figure, value);
    }
    for (const auto& [name, figure] : others) {
        if (differs(*figure, 0)) return "missing: " + Told(*figure, 0);
    }
    return {};
}

// ---------------------------------------------------------------------------------------------------------------
// The house

CRandomHouse::CRandomHouse(std::int16_t positionMode)
    : CScenario({.rpfMarginMode = 1, .positionMode = positionMode, .featureBits = 0x10}) {
    MakeInstruments();
    LoadReferences();
    OpenMarkets();
    MakeEntity("-", 7, 7, true);
    MakeEntity("*****", 0, -1, true);
    for (int i = 0; i < kGroups; ++i) MakeEntity(Code('G', i), 0, 7, true);
    for (int i = 0; i < kDealers + kOwnDealers; ++i) MakeEntity(Code('D', i), 1, -1, true);
    for (int i = 0; i < kFamilies; ++i) MakeEntity(Code('F', i), 8, -1, true);
    MakeHolders();
}

void CRandomHouse::MakeEntity(const std::string& code, std::int16_t level, std::int16_t subLevel, bool wide) {
    for (const std::int16_t mask : wide ? kWideMasks : kNarrowMasks) {
        Limit(code, mask, [&](BKSurveillanceLimitDefTag& row) { row.entityLevel = level, row.subLevel = subLevel; });
    }
    // A family's preference goes ahead of its client's own in a check and behind it in an event: families have none
    // here.
    if (level == level::kFamily) return;
    for (const std::int16_t exchange : {kMaskNseCash, kMaskBseCash, kMaskNseDerivatives}) {
        Preference(code, exchange, [&](auto& p) {
            p.prefExtraMarginRate = 250'000;
            p.marginAddOnFactor = static_cast<std::int32_t>(code.back() - '0') * 50'000;
        });
    }
    Preference(code, kOverallPreference, [](auto& p) { p.fundFlags = 1 << 3; });
    if (code[0] != 'C' && code[0] != 'D') return;
    Holding& held = library.manager->FindCategory(std::string_view{code})->holdingsByIsin.FindOrMake(kIsin);
    held.categoryCode = std::string_view{code}, held.isinCode = kIsin;
    held.holdingQty = held.collateralQty = 100'000, held.collateralPrice = 1000;
    held.collateralValue = held.FormCollateralValue();
}

/// The last scrip of each cash exchange is the NRI clients' own: they count buys and sells together, others against
/// each other, and a level's figure of a scrip that both trade would hang on who came last.
void CRandomHouse::MakeInstruments() {
    constexpr std::int32_t kDay = 86400;
    const std::int32_t near = library.context.settings.tradingDayBase + 20 * kDay, far = near + 30 * kDay;
    for (const std::int32_t token : {101, 102, 103, 199}) instruments.push_back({kMaskNseCash, token});
    for (const std::int32_t token : {201, 202, 299}) instruments.push_back({kMaskBseCash, token});
    for (const std::int16_t exchange : {kMaskNseDerivatives, kMaskBseDerivatives}) {
        const std::int32_t first = exchange * 100;
        instruments.push_back({exchange, first + 1, -1, near, first});
        instruments.push_back({exchange, first + 2, -1, far, first});
        // An expiry of options alone: it stays among those that are netted from its first future on, even one that
        // ends.
        instruments.push_back({exchange, first + 3, 24000, far + 30 * kDay, first});
        instruments.push_back({exchange, first + 4, 26000, far + 30 * kDay, first});
    }
    for (const std::int16_t exchange : {kMaskMcx, kMaskNcdex}) {
        for (const std::int32_t token : {1, 2}) instruments.push_back({exchange, exchange * 100 + token, -1, near, 90});
    }
}

void CRandomHouse::OpenMarkets() {
    for (const Instrument& i : instruments) Market(i.exchangeMask, i.token, 24950, 25050, 25100, 24900);
}

void CRandomHouse::StartFrom(const LoadLists& lists) {
    const Settings& settings = library.context.settings;
    const Library::StartSettings same{.rpfMarginMode = 1, .positionMode = settings.positionMode, .featureBits = 0x10};
    library.CleanUp();
    LoadReferences();
    EXPECT_EQ(library.Start(same, lists), kDone);
    OpenMarkets();
}

void CRandomHouse::LoadReferences() {
    std::map<std::int16_t, std::pair<std::vector<tagRPFUnderlyingRecord>, std::vector<tagRPFContractRecord>>> files;
    for (const Instrument& i : instruments) {
        if (IsCashExchange(i.exchangeMask)) {
            auto& isins = i.exchangeMask == kMaskNseCash ? library.context.stores.isinByNseToken
                                                         : library.context.stores.isinByBseToken;
            isins.FindOrMake(i.token) = kIsin;
            tagProductTypeScripBasket basket{};
            basket.token = i.token, basket.productFlags = 15, basket.basePrice = 25000;
            basket.firstLegBand = basket.secondLegBand = basket.dailyBand = 1000;
            library.context.products.SetBasket(basket);
            continue;
        }
        tagAdditionalMarginInfo rates{};
        rates.exchange = i.exchangeMask, rates.token = i.token, rates.additionalMarginRate = 50000;
        rates.longMarginRate = 30000, rates.shortMarginRate = 40000;
        rates.buyExposureRate = 150, rates.sellExposureRate = 250;
        library.context.stores.AddAdditionalMargin(rates);
        if (i.exchangeMask == kMaskMcx) continue;
        tagRPFContractRecord contract{};
        contract.contract.expiryDate = i.expiryDate, contract.contract.strikePrice = i.strikePrice;
        contract.token = i.token, contract.underlyingToken = i.underlyingToken, contract.contractPrice = 25000;
        contract.compositeDelta = i.strikePrice > 0 ? 0.5F : 1.0F;
        for (int n = 0; n < 16; ++n) contract.riskArray[n] = static_cast<float>((n - 7) * (i.token % 5 + 1));
        auto& [underlyings, contracts] = files[i.exchangeMask];
        tagRPFUnderlyingRecord underlying{};
        underlying.underlyingToken = i.underlyingToken, underlying.calendarSpreadCharge = 2;
        underlying.shortOptionMinimumCharge = 3;
        if (underlyings.empty()) underlyings.push_back(underlying);
        contracts.push_back(contract);
    }
    for (const auto& [segment, file] : files) RiskFile(segment, file.first, file.second);
}

void CRandomHouse::MakeHolders() {
    for (int i = 0; i < kClients; ++i) {
        Holder holder;
        OrderSpec& order = holder.order;
        order.client = Code('C', i), order.dealer = Code('D', i % kDealers), order.group = Code('G', i % kGroups);
        order.levelMarginFlags = 0x1F;
        switch (i % 10) {
            case 0: order.clientType = 1; break;
            case 1: order.clientType = 3, holder.narrow = true; break;
            case 2: order.clientType = 4; break;
            case 3: holder.nri = true, order.clientCategory = "N"; break;
            default: break;
        }
        if (i % 3 == 0) order.family = Code('F', i % kFamilies);
        MakeEntity(order.client, order.clientType, -1, false);
        if (i % 10 == 4 && i / 10 < kSubClients) {
            order.subClient = Code('S', i), order.subClientType = 12;
            MakeEntity(order.subClient, 12, -1, false);
        }
        holders.push_back(holder);
    }
    for (int i = 0; i < kDealers / 2 + kOwnDealers; ++i) {  // the house's own orders, and dealers that are clients
        Holder holder;
        const bool ownClient = i >= kDealers / 2;
        holder.deliversAtDealer = ownClient;
        holder.order.group = Code('G', i % kGroups);
        holder.order.dealer = Code('D', ownClient ? kDealers + i - kDealers / 2 : i);
        holder.order.client = holder.order.dealer, holder.order.clientType = 255;
        holder.order.dealerType = ownClient ? 4 : 0, holder.order.proClient = ownClient ? 1 : kProClientOwn;
        holders.push_back(holder);
    }
}

std::vector<std::string> EntitiesOf(const CScenario& s, const OrderSpec& spec) {
    std::vector<std::string> entities{"-", spec.group, spec.dealer};
    if (!spec.family.empty()) entities.push_back(spec.family);
    const bool ofClient = spec.dealerType == 0 && spec.proClient != kProClientOwn;
    if (ofClient && spec.clientType != 255) entities.push_back(spec.client);
    if (ofClient && spec.subClientType != 255) entities.push_back(spec.subClient);
    const bool ownAccount = spec.proClient == kProClientOwn && s.library.context.settings.HoldsClientPositions();
    if (ownAccount) entities.emplace_back("*****");
    return entities;
}

bool CRandomHouse::Send(const Step& step) {
    if (step.check) return Check(step.spec).Passed();
    const EventAnswer answer = Event(step.spec);
    EXPECT_EQ(answer.result, 0) << answer.text;
    return true;
}

Figures CRandomHouse::AllFigures() const {
    Figures out;
    for (const auto& category : library.manager->categories) {
        CCollector(out, category.key.View(), *category.value, {}).Run();
    }
    return out;
}

Figures CRandomHouse::FiguresAround(const OrderSpec& spec) const {
    Figures out;
    for (const std::string_view entity : EntitiesOf(*this, spec)) {
        CCollector(out, entity, *library.manager->FindCategory(entity), {spec.token, spec.client}).Run();
    }
    return out;
}

// ---------------------------------------------------------------------------------------------------------------
// The day

Step CRandomDay::NewOrder() {
    std::size_t who = 0;
    const bool deliveries = std::find(products.begin(), products.end(), product::kDelivery) != products.end();
    do {
        who = static_cast<std::size_t>(Pick(0, static_cast<int>(house_.holders.size()) - 1));
    } while (house_.holders[who].nri && !deliveries);
    const Holder& holder = house_.holders[who];
    const Instrument* instrument = nullptr;
    do {
        instrument = &PickOf(house_.instruments);
    } while (holder.nri != (instrument->token % 100 == 99));
    Step step{who, entry_ == Entry::kChecked, holder.order};
    OrderSpec& spec = step.spec;
    spec.exchangeMask = instrument->exchangeMask, spec.token = instrument->token;
    spec.strikePrice = instrument->strikePrice, spec.expiryDate = instrument->expiryDate;
    spec.underlyingToken = instrument->underlyingToken;
    spec.priceMultiplier = instrument->exchangeMask == kMaskNcdex ? 10000 : 1;
    spec.buySell = Pick(0, 2) == 0 ? kSell : kBuy;
    spec.quantity = Pick(1, 40) * 5, spec.price = 24000 + Pick(0, 400) * 5;
    spec.productType = product::kNone;
    if (IsCashExchange(instrument->exchangeMask)) {
        spec.productType = holder.nri ? product::kDelivery : PickOf(products);
        // A two-leg order that comes as an event moves its first leg by nothing: it is laid in by its check alone.
        if (spec.productType == product::kMarginPlus && !step.check) spec.productType = product::kMargin;
    }
    // A family sells what all its clients have bought: whether a sale is refused would hang on the others.
    if (spec.productType == product::kMtf && !spec.family.empty()) spec.buySell = kBuy;
    if (spec.productType == product::kMarginPlus) {
        const int away = spec.buySell == kBuy ? -1 : 1;
        spec.firstLegPrice = 25000, spec.price = spec.secondLegPrice = 25000 + 500 * away;
        spec.triggerPrice = 25000 + 400 * away;
    }
    return step;
}

Step CRandomDay::About(const Open& order, std::int16_t code) const {
    Step step{order.holder, false, order.spec};
    step.spec.messageCode = code, step.spec.hasStored = true;
    step.spec.storedQuantity = order.remaining + order.filled, step.spec.storedFilled = order.filled;
    step.spec.storedPrice = order.spec.price;
    return step;
}

Step CRandomDay::End(const Step& order) {
    constexpr std::array<std::int16_t, 6> kEnds{2155, 2156, 2075, 2076, 2231, 9002};
    return About({order.holder, order.spec, order.spec.quantity, 0}, kEnds[static_cast<std::size_t>(Pick(0, 5))]);
}

Step CRandomDay::Next() {
    if (!trades_.empty() && Pick(0, 19) == 0) {
        const std::size_t at = static_cast<std::size_t>(Pick(0, static_cast<int>(trades_.size()) - 1));
        Step step = trades_[at];
        OrderSpec& spec = step.spec;
        spec.storedQuantity = spec.quantity, spec.storedPrice = spec.price, spec.storedFilled = 0;
        spec.productType = product::kNone;  // a correction names none
        spec.messageCode = Pick(0, 1) == 0 ? 5440 : 5445;
        spec.quantity = Pick(1, 40), spec.price = 24000 + Pick(0, 400) * 5;
        trades_[at] = trades_.back();
        trades_.pop_back();
        return step;
    }
    const std::size_t at = static_cast<std::size_t>(Pick(0, static_cast<int>(open_.size()) - 1));
    Open& order = open_[at];
    const int dice = Pick(0, 9);
    const bool legs = order.spec.productType == product::kMarginPlus;
    if (dice < 3) {
        Step step = End({order.holder, false, order.spec});
        step = About(order, step.spec.messageCode);
        open_[at] = open_.back();
        open_.pop_back();
        return step;
    }
    if (dice < 5 && !legs) {
        Step step = About(order, 2040);
        step.spec.quantity = order.remaining = Pick(1, 200);
        step.spec.price = order.spec.price = 24000 + Pick(0, 400) * 5;
        return step;
    }
    Step step = About(order, 2222);
    step.spec.quantity = dice < 8 ? order.remaining : Pick(1, order.remaining);
    step.spec.price = (legs ? 25000 : order.spec.price) - Pick(0, 20) * 5;
    order.remaining -= step.spec.quantity;
    order.filled += step.spec.quantity;
    if (order.spec.productType == product::kMargin) trades_.push_back(step);
    if (order.remaining == 0) {
        open_[at] = open_.back();
        open_.pop_back();
    }
    return step;
}

}  // namespace surv::test
