// A house that starts with positions in equity, MCX and NCDEX, and lives through changed preferences, orders and
// trades. After each step the rows of every category have to show what a calculation from scratch gives.
//
// That holds under these conditions: the rows start the day without margin of their own; every entity has a record of
// its own for each exchange from the start, and no family; premiums don't count as margin; equity moves in plain
// positions, at levels that take the order in (margin funding and deliveries move a category's cash margin by rules of
// their own, and a level that checks, as the root does, moves its rows alone); and a commodity that trades is margined
// anew before the rows are looked at.

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "support/margin_from_scratch.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

constexpr int kClients = 24;
constexpr int kDealers = 3;
constexpr std::int32_t kDay = 86400;
constexpr std::array<std::int16_t, 9> kRowMasks{3, 0x11, 0x13, 0xF, 0x7F, 0x81, 0x101, 0x181, 0x1FF};
constexpr std::array<std::int16_t, 4> kExchanges{kMaskNseCash, kMaskBseCash, kMaskMcx, kMaskNcdex};
constexpr const char* kWholeSeries = "BE";  // compulsory delivery, on NSE alone

using Figures3 = std::array<double, 3>;

std::string ClientCode(int client) { return "C" + std::to_string(100 + client); }
std::string DealerCode(int client) { return "D" + std::to_string(client % kDealers); }
constexpr std::array kHigherCodes{"D0", "D1", "D2", "G1", "-"};

/// A position's cash margin, from the words of the rule.
Figures3 CashFromScratch(const CSurvPosition& position, bool funding, const tagClientRiskPreferenceInfoForSurv& own) {
    const tagSurvPositionData& p = position.data;
    const tagScripRateBlock& rates = p.scripInfo->scripRates;
    const bool whole = !funding && p.scripInfo->marketSegment == 1 &&
                       FieldText(p.scripInfo->contract.series) == std::string_view{kWholeSeries};
    const auto charge = [&](double value, double quantity) {
        if (quantity == 0) return 0.0;
        if (funding) return value / 100 * own.prefExtraMarginRate / 1e6;
        const double preferred = own.prefMarginRate / 10000 * value / 10000;  // NOLINT: whole percents count
        double margin = 0;
        if (rates.marginBasis <= 1 || own.prefMarginMode == 2) {
            const double rate = whole ? 10000 : rates.marginRate;
            margin = value / 100 * (rate == 0 ? 1 : rate / 10000);
            if (own.prefMarginMode == 2) margin = std::max(margin, preferred);
            if (own.prefMarginMode == 1) margin = preferred;
        } else if (rates.marginBasis == 2) {
            margin = quantity * (whole ? 10000 : rates.marginRate) / 100;
        } else if (own.prefMarginMode == 1) {
            margin = preferred;
        }
        return margin + margin * own.marginAddOnFactor / 1e6;
    };
    const double sign = whole ? 1 : -1;
    std::array<double, 4> values{}, quantities{};
    for (std::size_t v = 0; v < 4; ++v) {  // order side, traded side, worst long, worst short
        const bool buys = v == 0 || v == 2;
        const bool sells = v == 0 || v == 3;
        values[v] = std::abs((buys ? p.orderBuyValue : p.tradedBuyValue) +
                             sign * (sells ? p.orderSellValue : p.tradedSellValue));
        quantities[v] = std::abs(static_cast<double>(buys ? p.orderBuyQty : p.tradedBuyQty) +
                                 sign * static_cast<double>(sells ? p.orderSellQty : p.tradedSellQty));
    }
    return {charge(values[0], quantities[0]), charge(values[1], quantities[1]),
            charge(*std::max_element(values.begin(), values.end()),
                   *std::max_element(quantities.begin(), quantities.end()))};
}

struct Commodity {
    std::int16_t exchange;
    std::int32_t token, underlying, expiryDate;
    std::int16_t caLevel;
};
struct OpenOrder {
    int client;
    std::size_t commodity;
    std::int16_t side;
    std::int32_t quantity, price;
};

class CRandomHouse {
 public:
    CRandomHouse(std::uint32_t seed, std::int16_t positionMode) : random_(seed) {
        MakeCommodities();
        MakeRows();
        const LoadLists lists{.limits = &limits_, .exposures = &exposures_};
        house_ = std::make_unique<CScenario>(Library::StartSettings{.rpfMarginMode = 1, .positionMode = positionMode},
                                             lists, [this](Library& library) { Prepare(library); });
        for (const auto& category : Manager().categories) {
            MarginFacts& facts = facts_[category.value.get()];
            facts = {base_, rates_, {}};
            for (const std::int16_t exchange : kExchanges) TakeOver(facts, exchange, category.key.View());
        }
        CompareAll();
        if (!difference.empty()) difference = "after the start: " + difference;
    }

    std::string difference;
    int changes[4]{}, orders = 0, trades = 0, cashOrders = 0, cashTrades = 0;

    void Run(int steps) {
        for (int step = 0; step < steps && difference.empty(); ++step) {
            const int dice = Pick(0, 9);
            const int client = Pick(0, kClients - 1);
            int touched = client;
            if (dice < 4) {
                ChangePreference(PickOf(At(client)));
            } else if (dice < 7) {
                MoveCash(client);
            } else if (dice < 9 || open_.empty()) {
                Order(client);
            } else {
                touched = Trade();
            }
            for (const std::string& code : At(touched)) Compare(code, Category(code));
            if (step % 50 == 0) CompareAll();
            if (!difference.empty()) difference = "step " + std::to_string(step) + ": " + difference;
        }
    }

 private:
    int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    template <class Choices>
    const typename Choices::value_type& PickOf(const Choices& of) {
        return of[static_cast<std::size_t>(Pick(0, static_cast<int>(of.size()) - 1))];
    }
    const std::array<std::string, 4>& At(int client) const { return levels_[static_cast<std::size_t>(client)]; }
    CSurveillanceManager& Manager() { return *house_->library.manager; }
    CSurveillanceCategory& Category(std::string_view code) { return *Manager().FindCategory(code); }

    // Before the start --------------------------------------------------------------------------------------------
    void MakeCommodities() {
        CClock clock;
        clock.Set([](void*) { return CScenario::kNow; }, nullptr);
        base_ = clock.TradingDayBase();
        std::int32_t token = 1;  // exchanges share tokens with equity
        for (const std::int16_t exchange : {kMaskMcx, kMaskNcdex}) {
            for (const std::int32_t underlying : {11, 12}) {
                for (const std::int32_t days : {10, 40, 70}) {
                    Commodity c{exchange, token++, underlying, base_ + days * kDay, 0};
                    if (exchange == kMaskMcx && days == 10) c.caLevel = static_cast<std::int16_t>(9 + underlying % 3);
                    commodities_.push_back(c);
                    if (c.token % 4 == 3) continue;  // some have no rates
                    const ExposureRates rates{exchange == kMaskNcdex ? 400 : 0, 150, 250, 40000, 60000};
                    rates_[PlainKey(exchange, c.token)] = rates;
                }
            }
        }
    }

    void MakeRows() {
        const auto limits = [this](const std::string& code) {
            for (const std::int16_t mask : kRowMasks) {
                if (code == "D1" && (mask == 3 || mask == 0x11 || mask == 0x101)) continue;  // rolled up without them
                if (code == "D2" && mask == 0x81) continue;
                limits_.AddTail(new BKSurveillanceLimitDefTag(EmptyLimit(code, mask)));
            }
        };
        for (int client = 0; client < kClients; ++client) {
            levels_.push_back({ClientCode(client), DealerCode(client), "G1", "-"});
            limits(ClientCode(client));
        }
        for (const char* code : kHigherCodes) limits(code);
        for (int client = 0; client < kClients; ++client) {
            const bool commodities = client % 4 != 0;  // some trade equity alone
            for (int i = Pick(5, 15); i > 0; --i) AddRows(client, CashRow());
            for (int i = commodities ? Pick(1, 6) : 0; i > 0; --i) AddRows(client, CommodityRow(PickOf(commodities_)));
        }
    }
    BKExposureTag CashRow() {
        const std::int32_t token = Pick(1, 12);
        const bool bse = Pick(0, 2) == 0;
        BKExposureTag row = PositionRow("", bse ? 0x11 : 3, 1, "", token);
        if (Pick(0, 4) == 0) row.messageKind = 8;
        WriteField(row.contract.series, token % 5 == 0 ? kWholeSeries : "EQ");
        row.scripRates.marginBasis = static_cast<std::int16_t>(token % 4);
        row.scripRates.marginRate = token % 3 * 875.0;
        Fill(row);
        return row;
    }
    BKExposureTag CommodityRow(const Commodity& c) {
        BKExposureTag row = PositionRow("", c.exchange == kMaskMcx ? 0x81 : 0x101, 1, "", c.token);
        row.priceMultiplier = 10000;
        row.underlyingToken = c.underlying, row.contract.caLevel = c.caLevel;
        row.contract.strikePrice = -1, row.contract.expiryDate = c.expiryDate;
        Fill(row);
        return row;
    }
    void Fill(BKExposureTag& row) {
        row.tradedBuyQty = Pick(0, 2) * Pick(1, 50), row.tradedBuyValue = row.tradedBuyQty * Pick(9000, 11000);
        row.tradedSellQty = Pick(0, 2) * Pick(1, 50), row.tradedSellValue = row.tradedSellQty * Pick(9000, 11000);
        const int buys = Pick(0, 1) * Pick(1, 20);
        const int sells = Pick(0, 1) * Pick(1, 20);
        row.orderBuyQty = row.tradedBuyQty + buys, row.orderBuyValue = row.tradedBuyValue + buys * 10000.0;
        row.orderSellQty = row.tradedSellQty + sells, row.orderSellValue = row.tradedSellValue + sells * 10000.0;
    }
    void AddRows(int client, BKExposureTag row) {
        WriteField(row.accountCode, ClientCode(client));
        for (const std::string& level : At(client)) {
            WriteField(row.levelCode, level);
            exposures_.AddTail(new BKExposureTag(row));
        }
    }

    void Prepare(Library& library) {
        tagCompulsoryDeliverySeries series{};
        WriteField(series.series, kWholeSeries);
        series.exchange = kMaskNseCash;
        CPtrList list;
        list.AddTail(&series);
        library.context.products.LoadSeries(list);
        for (const Commodity& c : commodities_) LoadRates(library, c);

        std::vector<std::string> codes(kHigherCodes.begin(), kHigherCodes.end());
        for (int client = 0; client < kClients; ++client) codes.push_back(ClientCode(client));
        CPtrList records;
        for (const std::string& code : codes) {
            for (const std::int16_t exchange : kExchanges) records.AddTail(&NewPreference(code, exchange));
        }
        library.LoadPreferences(records);
    }
    void LoadRates(Library& library, const Commodity& c) {
        if (const auto found = rates_.find(PlainKey(c.exchange, c.token)); found != rates_.end()) {
            tagAdditionalMarginInfo rates{};
            rates.exchange = c.exchange, rates.token = c.token;
            rates.additionalMarginRate = found->second.additional;
            rates.buyExposureRate = found->second.onBuys, rates.sellExposureRate = found->second.onSells;
            rates.longMarginRate = found->second.onLong, rates.shortMarginRate = found->second.onShort;
            library.context.stores.AddAdditionalMargin(rates);
        }
        if (c.exchange == kMaskMcx) return;
        tagRPFUnderlyingRecord underlying{};
        underlying.underlyingToken = c.underlying, underlying.calendarSpreadCharge = 3;
        library.context.risk.live.StoreUnderlying(underlying, c.exchange);
        tagRPFContractRecord record{};
        record.token = c.token, record.underlyingToken = c.underlying, record.contract.expiryDate = c.expiryDate;
        record.contract.strikePrice = -1, record.contractPrice = 10000, record.compositeDelta = 1;
        for (int i = 0; i < 16; ++i) record.riskArray[i] = static_cast<float>((i % 2 ? i : -i) + c.token);
        library.context.risk.live.StoreContract(record, c.exchange);
    }

    // Preferences -------------------------------------------------------------------------------------------------
    tagClientRiskPreferenceInfoForSurv& NewPreference(const std::string& code, std::int16_t exchange) {
        tagClientRiskPreferenceInfoForSurv& record = preferences_[{code, exchange}];
        WriteField(record.preferenceCode, code);
        record.exchange = exchange, record.token = kAllSecurities, record.allowedProducts = 0xF;
        record.prefMarginMode = static_cast<std::int16_t>(Pick(0, 2));
        record.prefMarginRate = Pick(0, 3) * 73456;
        record.marginAddOnFactor = Pick(0, 2) * 250000;
        record.prefExtraMarginRate = Pick(0, 4) * 100000;
        return record;
    }
    void TakeOver(MarginFacts& facts, std::int16_t exchange, std::string_view code) {
        const auto& own = preferences_.at({std::string(code), exchange});
        facts.preferences[exchange] = {own.prefMarginRate, own.prefMarginMode, own.marginAddOnFactor, false};
    }
    void ChangePreference(const std::string& code) {
        const std::size_t which = static_cast<std::size_t>(Pick(0, 3));
        tagClientRiskPreferenceInfoForSurv record = NewPreference(code, kExchanges[which]);
        const std::string before = Others(code);
        house_->library.AddUpdatePreference(record);
        if (before != Others(code)) Blame("a preference of " + code + " has moved another entity");
        TakeOver(facts_.at(&Category(code)), kExchanges[which], code);
        ++changes[which];
    }
    /// Every row but those of one entity, as bytes.
    std::string Others(const std::string& code) {
        std::string all;
        for (const auto& category : Manager().categories) {
            if (category.key.View() == code) continue;
            for (const auto& store : category.value->limitStores) {
                const auto& row = store.value->store.Find(kAllSecurities)->Row();
                all.append(reinterpret_cast<const char*>(&row), sizeof row);
            }
        }
        return all;
    }

    // Orders ------------------------------------------------------------------------------------------------------
    /// An order in a scrip that is held, taken in without a check at every level but the root, which always checks.
    void CashOrder(int client, const CSurvPosition& held, std::int16_t exchange) {
        constexpr std::uint8_t kNoLevelChecks = 0;
        OrderSpec spec{.exchangeMask = exchange, .token = held.GetToken()};
        spec.buySell = Pick(0, 1) == 0 ? kBuy : kSell;
        spec.quantity = Pick(1, 40), spec.price = Pick(9000, 11000);
        spec.dealer = DealerCode(client), spec.client = ClientCode(client), spec.levelCheckFlags = kNoLevelChecks;
        const Answer answer = house_->Check(spec);
        if (!answer.Passed()) return Blame("refused: " + answer.text);
        ++cashOrders;
    }

    /// Moves a plain equity position at every level, and each level's margin with it: by an order, or as a trade will.
    void MoveCash(int client) {
        const auto& positions = Category(ClientCode(client)).Book(Period::kExpiry).exposures.positions;
        auto held = positions.begin() + Pick(0, static_cast<int>(positions.Size()) - 1);
        if (held->key.family != PositionFamily::kPlain || !IsCashExchange(held->key.exchangeMask)) return;
        const PositionKey key = held->key;
        const bool whole = FieldText(held->value->data.scripInfo->contract.series) == std::string_view{kWholeSeries};
        if (!whole && Pick(0, 1) == 0) return CashOrder(client, *held->value, key.exchangeMask);
        tagOrderInfoForSurv order;
        order.marketSegment = held->value->GetMarketSegment(), order.token = key.token;
        order.orderEventKind = event::kTrade;
        order.buySell = Pick(0, 1) == 0 ? kBuy : kSell;
        order.quantity = Pick(1, 40), order.price = order.lastTradedPrice = Pick(9000, 11000);
        for (const std::string& code : At(client)) {
            CSurveillanceCategory& category = Category(code);
            CSurvPosition& position = *category.Book(Period::kExpiry).exposures.Find(key);
            const auto& own = preferences_.at({code, key.exchangeMask});
            const Figures3 before = CashFromScratch(position, false, own);
            position.ApplyChange(order);
            const Figures3 after = CashFromScratch(position, false, own);
            const bool nse = key.exchangeMask == kMaskNseCash;
            CashMargin& sum = nse ? category.cashMarginNse : category.cashMarginBse;
            for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += after[i] - before[i];
            for (const auto& store : category.limitStores) {
                if ((store.key & (nse ? 2 : 0x10)) == 0) continue;
                BKSurveillanceLimitDefTag& row = store.value->store.Find(kAllSecurities)->Row();
                row.usedMarginOrder += after[0] - before[0];
                row.usedMarginTraded += after[1] - before[1];
                row.usedMarginMax += after[2] - before[2];
            }
        }
        ++cashTrades;
    }

    void Order(int client) {
        const OpenOrder wish{client, static_cast<std::size_t>(Pick(0, 11)), static_cast<std::int16_t>(Pick(1, 2)),
                             Pick(1, 60), Pick(9000, 11000)};
        const Commodity& c = commodities_[wish.commodity];
        if (c.caLevel != 0) return;  // a request doesn't tell it
        OrderSpec spec{.exchangeMask = c.exchange, .token = c.token, .series = ""};
        spec.buySell = wish.side, spec.quantity = wish.quantity, spec.price = wish.price;
        spec.dealer = DealerCode(wish.client), spec.client = ClientCode(wish.client);
        spec.priceMultiplier = 10000, spec.strikePrice = -1, spec.expiryDate = c.expiryDate;
        spec.underlyingToken = c.underlying;
        const Answer answer = house_->Check(spec);
        if (!answer.Passed()) return Blame("refused: " + answer.text);
        open_.push_back(wish);
        ++orders;
    }

    /// A fill of an open order, laid into positions and accounts, and margined anew. Gives its client.
    int Trade() {
        const std::size_t at = static_cast<std::size_t>(Pick(0, static_cast<int>(open_.size()) - 1));
        const OpenOrder fill = open_[at];
        open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(at));
        const Commodity& c = commodities_[fill.commodity];
        Library& library = house_->library;
        tagOrderInfoForSurv trade;
        trade.scripInfo = library.context.stores.FindScrip(c.exchange, c.token);
        trade.marketSegment = trade.scripInfo->marketSegment, trade.token = c.token;
        trade.underlyingToken = c.underlying, trade.contract = trade.scripInfo->contract;
        trade.orderEventKind = event::kTrade, trade.buySell = fill.side;
        trade.quantity = trade.prevQuantity = fill.quantity, trade.prevPrice = fill.price;
        trade.price = trade.lastTradedPrice = fill.price + Pick(-50, 50);
        trade.parentCode = "G1", trade.accountCode = std::string_view(ClientCode(fill.client));
        trade.clientLevelType = 2;
        for (const std::string& code : At(fill.client)) {
            CSurveillanceCategory& category = Category(code);
            PeriodBook& book = category.Book(Period::kExpiry);
            trade.ownerInfo = category.OwnerOf(trade);
            trade.periodicity = PeriodicityOf(trade.marketSegment, Period::kExpiry);
            book.exposures.Find(FlatKey(trade))->ApplyChange(trade);
            CClientExposure& account = *book.accounts.FindAccount(trade);
            account.ApplyOrder(trade, account.FindOrMakePath(trade, library.context.settings),
                               TreeContext{library.context.settings});
            Manager().RecomputeMCXMargin(c.exchange, code);
            Manager().RecomputeMargin(c.exchange, code);
        }
        ++trades;
        return fill.client;
    }

    // Comparison --------------------------------------------------------------------------------------------------
    void Blame(const std::string& what) {
        if (difference.empty()) difference = what;
    }
    void CompareAll() {
        for (const auto& category : Manager().categories) Compare(category.key.View(), *category.value);
        if (!house_->notifications.empty()) Blame("the library complains: " + house_->notifications.back());
    }

    /// The figures of one category by exchange: the three margins and the exposure margin.
    void Compare(std::string_view code, CSurveillanceCategory& category) {
        const MarginFacts& facts = facts_.at(&category);
        std::map<std::int16_t, std::array<double, 4>> due;
        const PeriodBook& book = category.Book(Period::kExpiry);
        for (const auto& entry : book.exposures.positions) {
            const std::int16_t exchange = entry.key.exchangeMask;
            if (!IsCashExchange(exchange)) continue;
            const auto& own = preferences_.at({std::string(code), exchange});
            const bool funding = entry.key.family == PositionFamily::kMtf;
            const Figures3 figures = CashFromScratch(*entry.value, funding, own);
            for (std::size_t i = 0; i < figures.size(); ++i) due[exchange][i] += figures[i];
        }
        for (const auto& account : book.accounts.accounts) {
            std::string found;
            const AccountMargin margin = MarginFromScratch(*account.value, facts, found);
            if (!found.empty()) Blame(std::string(code) + ", " + found);
            for (const std::int16_t exchange : {kMaskMcx, kMaskNcdex}) {
                const auto reading = margin.Reading(exchange);
                const double raise = 1 + facts.preferences.at(exchange).addOn / 1e6;
                for (std::size_t i = 0; i < 4; ++i) due[exchange][i] += raise * reading[i];
            }
        }
        for (std::size_t i = 0; i < 3 && code != kRootCode; ++i) {
            Expect(code, -kMaskNseCash, i, category.cashMarginNse[i], due[kMaskNseCash][i]);
            Expect(code, -kMaskBseCash, i, category.cashMarginBse[i], due[kMaskBseCash][i]);
        }
        for (const auto& store : category.limitStores) {
            const BKSurveillanceLimitDefTag& row = store.value->store.Find(kAllSecurities)->Row();
            std::array<double, 4> sum{};
            for (const auto& [exchange, bit] :
                 {std::pair{kMaskNseCash, 2}, {kMaskBseCash, 0x10}, {kMaskMcx, 0x80}, {kMaskNcdex, 0x100}}) {
                for (std::size_t i = 0; i < 4 && (store.key & bit); ++i) sum[i] += due[exchange][i];
            }
            const std::array seen{row.usedMarginOrder, row.usedMarginTraded, row.usedMarginMax, row.usedExposureMargin};
            for (std::size_t i = 0; i < 4; ++i) Expect(code, store.key, i, seen[i], sum[i]);
        }
    }
    void Expect(std::string_view code, int row, std::size_t figure, double seen, double due) {
        if (std::abs(seen - due) <= 1e-6 * std::abs(due) + 1e-2) return;
        Blame("row " + std::to_string(row) + " of " + std::string(code) + ", figure " + std::to_string(figure) + ": " +
              std::to_string(seen) + " there, " + std::to_string(due) + " due");
    }

    std::mt19937 random_;
    std::vector<std::array<std::string, 4>> levels_;  ///< of each client: its own code, dealer, group, root
    std::int32_t base_ = 0;
    std::vector<Commodity> commodities_;
    std::map<std::int64_t, ExposureRates> rates_;
    std::map<std::pair<std::string, std::int16_t>, tagClientRiskPreferenceInfoForSurv> preferences_;
    CPtrList limits_, exposures_;
    std::unique_ptr<CScenario> house_;
    std::unordered_map<const CSurveillanceCategory*, MarginFacts> facts_;
    std::vector<OpenOrder> open_;
};

class CashCommodityRun : public testing::TestWithParam<std::int16_t> {};

TEST_P(CashCommodityRun, RowsAreWhatTheyComeToFromScratch) {
    constexpr std::uint32_t kSeed = 60364;
    CRandomHouse house(kSeed, GetParam());
    house.Run(1000);
    EXPECT_EQ(house.difference, "") << "seed " << kSeed;
    for (const int count : house.changes) EXPECT_GT(count, 80);
    EXPECT_GT(std::min({house.orders, house.trades, house.cashOrders, house.cashTrades}), 40);
}

INSTANTIATE_TEST_SUITE_P(PositionModes, CashCommodityRun, testing::Values(0, 2));

}  // namespace
}  // namespace surv::test
