// A house of 200 accounts through a day of orders, changes, trades, enquiries, refusals and new risk parameters. After
// each step the margins in the trees and in the limit rows have to be what a calculation from scratch gives.
//
// Outside the run: rates and preferences that change during the day, trade corrections (the traded view catches up with
// them at the next trade), and MCX, which takes no scan.

#include <gtest/gtest.h>

#include <random>

#include "orderpath/hierarchy.h"
#include "orderpath/intake.h"
#include "orderpath/risk_lookup.h"
#include "support/margin_from_scratch.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

using namespace std::string_literals;

constexpr int kClients = 200;
constexpr int kDealers = 4;
constexpr std::int32_t kDay = 86400;
constexpr std::array<std::int16_t, 3> kExchanges{kMaskNseDerivatives, kMaskBseDerivatives, kMaskNcdex};
constexpr std::array<std::int16_t, 9> kRowMasks{5, 9, 0xD, 0xF, 0x7F, 0x1FF, 0x61, 0x101, 0x181};
constexpr std::array<std::int16_t, 4> kRollUpMasks{0xF, 0x7F, 0x181, 0x1FF};

struct Contract {
    std::int16_t exchange;
    tagRPFContractRecord record{};  ///< as the live table has it
    bool live = false;
    bool priceless = false;

    [[nodiscard]] bool IsOption() const { return record.contract.strikePrice > 0; }
    [[nodiscard]] std::int64_t Key() const { return SegmentTokenKey(exchange, record.token); }
};
struct OpenOrder {
    int client;
    std::size_t contract;
    std::int16_t side;
    std::int32_t quantity, price;
};
/// usedMarginOrder, usedMarginTraded, usedMarginMax, usedExposureMargin, and the size that they had at most.
struct RowDue {
    std::array<double, 4> figures{};
    double size = 0;
};
/// An account of one category.
struct Place {
    CSurveillanceCategory* category;
    CClientExposure* account;
    CUnderlyingExposure* underlying;
    CScripExposure* scrip;  ///< null: the account has never held the contract
    AccountMargin margin;
};

template <class Record>
bool Same(const Record& a, const Record& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}
std::string ClientCode(int client) { return "C" + std::to_string(100 + client); }
std::string DealerCode(int client) { return "D" + std::to_string(client % kDealers); }

class CRandomHouse {
 public:
    explicit CRandomHouse(std::uint32_t seed, std::int16_t positionMode)
        : house_({.rpfMarginMode = 1, .positionMode = positionMode}), random_(seed) {
        base_ = house_.library.context.settings.tradingDayBase;
        MakeContracts();
        for (int c = 0; c < kClients; ++c) MakeEntity(ClientCode(c), c);
        for (int d = 0; d < kDealers; ++d) MakeEntity(DealerCode(d), d);
        MakeEntity("G1", 1);
        MakeEntity("-", 2);
        for (const std::int16_t exchange : kExchanges) SendFile(exchange, /*all=*/true, /*lateOnes=*/0);
    }

    int refused[5]{};  // by client, dealer, group, root; without parameters
    int accepted = 0, trades = 0, files = 0, probes = 0, direct = 0;
    std::string difference;

    void Run(int steps) {
        for (int step = 0; step < steps && difference.empty(); ++step) {
            const int dice = Pick(0, 999);
            const bool dumped = step < 300 || step % 200 == 0;
            if (dice < 8) {
                SendFile(kExchanges[static_cast<std::size_t>(Pick(0, 2))], Pick(0, 2) == 0, Pick(0, 3) == 0 ? 1 : 0);
            } else if (dice < 20) {
                WriteDirectly();
            } else if (dice < 40) {
                Enquire(dumped || Pick(0, 19) == 0);
            } else if (dice < 340 && !open_.empty()) {
                Trade();
            } else {
                Order(dice < 500 && !open_.empty(), dumped);
            }
            if (step % 500 == 499) CompareAll();
            if (!difference.empty()) difference = "step " + std::to_string(step) + ": " + difference;
        }
    }

 private:
    // What there is -----------------------------------------------------------------------------------------------
    int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    std::size_t PickOf(const auto& of) { return static_cast<std::size_t>(Pick(0, static_cast<int>(of.size()) - 1)); }
    float Real(double low, double high) {
        return static_cast<float>(std::uniform_real_distribution<double>(low, high)(random_));
    }

    void Add(std::int16_t exchange, std::int32_t underlying, std::int32_t expiry, std::int32_t strike,
             bool priceless = false) {
        Contract contract{exchange};
        contract.priceless = priceless, contract.record.underlyingToken = underlying;
        contract.record.token = 1001 + static_cast<std::int32_t>(contracts_.size()) % 20;  // exchanges share tokens
        contract.record.contract.expiryDate = base_ + expiry, contract.record.contract.strikePrice = strike;
        contracts_.push_back(contract);
        if (exchange == kMaskBseDerivatives || contract.record.token % 5 == 0) return;  // some have no rates
        tagAdditionalMarginInfo rates{};
        rates.exchange = exchange, rates.token = contract.record.token;
        rates.additionalMarginRate = exchange == kMaskNcdex ? 400 : strike > 0 ? 30000 : 50000;
        rates.buyExposureRate = 150, rates.sellExposureRate = 250;
        house_.library.context.stores.AddAdditionalMargin(rates);
        rates_[PlainKey(exchange, rates.token)] = {rates.additionalMarginRate, 150, 250};
    }

    void MakeContracts() {
        constexpr std::int32_t kNear = 2 * kDay, kEdge = 311460, kFar = 30 * kDay, kFarther = 60 * kDay;
        for (const std::int16_t exchange : {kMaskNseDerivatives, kMaskBseDerivatives}) {
            for (const std::int32_t expiry : {kNear, kFar, kFarther, kFarther + kFar}) Add(exchange, 11, expiry, -1);
            for (const std::int32_t strike : {90000, 100000, 110000}) Add(exchange, 11, kFar, strike);
            for (const std::int32_t expiry : {kNear, kFarther}) Add(exchange, 11, expiry, 100000);
            for (const std::int32_t expiry : {kEdge, kFar, kFarther}) Add(exchange, 12, expiry, -1);
            for (const std::int32_t strike : {45000, 50000}) Add(exchange, 12, kEdge, strike);
            Add(exchange, 12, kFar, 50000, /*priceless=*/true);
            Add(exchange, 12, 3 * kFar, 50000);  // an expiry of options alone, until the next one comes
            Add(exchange, 12, 3 * kFar, -1);
            Add(exchange, 12, kFarther, 48000);
            Add(exchange, 13, kFar, 20000);
            Add(exchange, 13, kFarther, -1);
        }
        for (const std::int32_t underlying : {11, 14}) {
            for (const std::int32_t expiry : {kNear, kFar, kFarther, 3 * kFar}) Add(kMaskNcdex, underlying, expiry, -1);
        }
        for (Contract& contract : contracts_) Renew(contract);
        for (const std::int16_t exchange : kExchanges) {
            for (const std::int32_t underlying : {11, 12, 13, 14}) RenewCharges(exchange, underlying);
        }
    }

    void Renew(Contract& contract) {
        tagRPFContractRecord& record = contract.record;
        const double spot = record.underlyingToken == 12 ? 50000 : record.underlyingToken == 13 ? 20000 : 100000;
        const bool priceless = contract.priceless || Pick(0, 19) == 0;  // a price may go away and come back
        record.contractPrice = priceless ? 0 : Real(contract.IsOption() ? 500 : spot * 0.95, spot * 1.05);
        if (contract.IsOption()) record.contractPrice *= 0.05F;
        const double slope = contract.IsOption() ? Real(-0.6, 0.6) : 1.0;
        for (int i = 0; i < 16; ++i) {
            record.riskArray[i] = Real(-0.001, 0.001) * static_cast<float>(spot) +
                                  static_cast<float>(slope * spot / 100 * 0.1 * (i % 2 ? 1 : -1) * (i / 2) / 7);
        }
        record.compositeDelta = contract.IsOption() ? Real(-0.9, 0.9) : Real(0.9, 1.1);
    }
    void RenewCharges(std::int16_t exchange, std::int32_t underlying) {
        tagRPFUnderlyingRecord& record = charges_[SegmentTokenKey(exchange, underlying)];
        record.underlyingToken = underlying;
        record.calendarSpreadCharge = Real(1, 15);
        record.shortOptionMinimumCharge = 0.25F * static_cast<float>(Pick(8, 160));  // products end in .50 at times
    }

    void MakeEntity(const std::string& code, int number) {
        const bool client = code[0] == 'C';
        for (const std::int16_t mask : kRowMasks) {
            if (code == "D3" && (mask == 0xD || mask == 0x101)) continue;  // rolled up from the accounts
            if (code == "D2" && mask == 0x61) continue;
            house_.Limit(code, mask, [&](BKSurveillanceLimitDefTag& row) {
                row.entityLevel = code == "D1" && mask == 0x7F ? 7 : 0;  // such a row has no exposure margin
                if ((number + mask) % 3 == 0) row.limitOptions |= kPremiumInMargin;
                if (client && mask == 0xD && number % 5 == 0) row.netQuantityLimit = 250;
                if (client && mask == 0x1FF && number % 7 == 0) row.maxSingleOrderQty = 180;
                if (code == "D1" && mask == 0xF) row.netQuantityLimit = 1500;
                if (code == "D2" && mask == 0x1FF) row.maxSingleOrderQty = 190;
                if (code == "G1" && mask == 0x7F) row.maxSingleOrderValue = 19.5e6;
                if (code == "-" && mask == 0x1FF) row.maxSingleOrderValue = 18.5e6;
            });
        }
        MarginFacts& facts = facts_[house_.library.manager->FindCategory(std::string_view(code))];
        facts = {base_, rates_, {}};
        for (const std::int16_t exchange : kExchanges) {
            MarginPreference own{70000, static_cast<std::int16_t>((number + exchange / 2) % 3), 50000 * (number % 2),
                                 code == "D1"};
            if (exchange == kMaskNcdex && number % 4 == 1) own.marginRate = 0;
            facts.preferences[exchange] = own;
            house_.Preference(code, exchange, [&own](tagClientRiskPreferenceInfoForSurv& record) {
                record.prefMarginRate = own.marginRate, record.prefMarginMode = own.mode;
                record.marginAddOnFactor = own.addOn, record.marginFlags = own.premiumCounts ? 0x20 : 0;
            });
        }
    }

    // Orders ------------------------------------------------------------------------------------------------------
    OrderSpec SpecOf(const OpenOrder& wish, const OpenOrder* stored = nullptr, std::uint8_t checkFlags = 62) {
        const Contract& contract = contracts_[wish.contract];
        OrderSpec spec{.exchangeMask = contract.exchange, .token = contract.record.token, .series = ""};
        spec.buySell = wish.side;
        spec.quantity = wish.quantity, spec.price = wish.price;
        spec.dealer = DealerCode(wish.client), spec.client = ClientCode(wish.client);
        spec.levelCheckFlags = checkFlags, spec.priceMultiplier = 10000;
        spec.strikePrice = contract.record.contract.strikePrice;
        spec.expiryDate = contract.record.contract.expiryDate;
        spec.underlyingToken = contract.record.underlyingToken;
        spec.hasStored = stored != nullptr;
        if (!stored) return spec;
        spec.messageCode = 2040;
        spec.storedQuantity = stored->quantity, spec.storedPrice = stored->price;
        return spec;
    }
    OpenOrder Wish() {
        OpenOrder wish{Pick(0, kClients - 1), PickOf(contracts_), static_cast<std::int16_t>(Pick(1, 2)),
                       10 * Pick(1, 20), 0};
        const Contract& contract = contracts_[wish.contract];
        const double worth = contract.record.contractPrice == 0 ? 1000.0 : contract.record.contractPrice;
        wish.price = std::max(5, static_cast<int>(worth * Real(0.98, 1.02)));
        return wish;
    }

    /// The accounts that an order meets, as they stand.
    std::vector<Place> Places(const OpenOrder& wish) {
        std::vector<Place> places;
        for (const std::string& code : {ClientCode(wish.client), DealerCode(wish.client), "G1"s, "-"s}) {
            CSurveillanceCategory& category = *house_.library.manager->FindCategory(std::string_view(code));
            auto* account = category.Book(Period::kExpiry).accounts.FindAccount("G1", ClientCode(wish.client));
            places.push_back(PlaceOf(category, account, contracts_[wish.contract]));
        }
        return places;
    }
    Place PlaceOf(CSurveillanceCategory& category, CClientExposure* account, const Contract& contract) {
        Place place{&category, account, nullptr, nullptr, {}};
        if (!account) return place;
        place.margin = known_[account];
        for (const auto& node : account->underlyings) {
            const CExpiryExposure* expiry = node.value->expiries.Find(contract.record.contract.expiryDate);
            const PositionKey key{contract.exchange, PositionFamily::kPlain, contract.record.token};
            CScripExposure* scrip = expiry ? expiry->scrips.Find(key) : nullptr;
            if (scrip && !scrip->IsBlank()) place.underlying = node.value.get(), place.scrip = scrip;
        }
        return place;
    }
    const MarginFacts& FactsOf(const CSurveillanceCategory& category) { return facts_.at(&category); }

    /// After an event at one of its places: the new margin, which the tree has to show.
    const AccountMargin& Settle(const OpenOrder& wish, std::size_t level) {
        const Contract& contract = contracts_[wish.contract];
        const Place now = Places(wish)[level];
        Compare(*now.category, *now.account);
        charged_[now.underlying] = charges_[SegmentTokenKey(contract.exchange, contract.record.underlyingToken)];
        if (!Same(now.scrip->scripMargin->contract, contract.record)) Blame("an order left its contract as it was");
        if (!Same(now.underlying->underlyingMargin->underlying, charged_[now.underlying])) {
            Blame("an order left the charges as they were");
        }
        return known_[now.account];
    }
    void Compare(const CSurveillanceCategory& category, const CClientExposure& account) {
        std::string found;
        known_[&account] = MarginFromScratch(account, FactsOf(category), found);
        if (!found.empty()) Blame(found);
    }
    void Blame(const std::string& what) {
        if (difference.empty()) difference = what;
    }

    void Order(bool change, bool dumped) {
        OpenOrder wish = Wish();
        const std::size_t at = change ? PickOf(open_) : 0;
        if (change) {
            const OpenOrder& stored = open_[at];
            wish = {stored.client, stored.contract, stored.side, Pick(0, 5) == 0 ? 0 : wish.quantity,
                    std::max(5, stored.price + Pick(-stored.price / 50, stored.price / 50))};
        }
        constexpr std::uint8_t kAllChecked = 62, kDealerOnlyTakes = 58, kGroupOnlyTakes = 60;
        const int dice = Pick(0, 19);
        const std::uint8_t flags = dice == 0 ? kDealerOnlyTakes : dice == 1 ? kGroupOnlyTakes : kAllChecked;
        const std::vector<Place> before = Places(wish);
        const std::string dump = dumped ? house_.Dump() : std::string();
        const Answer answer = house_.Check(SpecOf(wish, change ? &open_[at] : nullptr, flags));
        const bool live = contracts_[wish.contract].live;
        const std::string& level = answer.failedLevelCode;
        // The level that refused, among the four, or the one behind the last.
        const std::size_t end = answer.Passed() ? 4
                                : !live         ? 0
                                : level == "-"  ? 3
                                : level == "G1" ? 2
                                                : level[0] == 'D';
        bool kept = false;
        for (std::size_t i = 0; i < before.size(); ++i) {
            // A level that only takes the order keeps it, whatever the levels above say.
            const bool takes = (i == 1 && flags == kDealerOnlyTakes) || (i == 2 && flags == kGroupOnlyTakes);
            if (answer.Passed() || (takes && i < end)) {
                const AccountMargin& after = Settle(wish, i);
                MoveRows(*before[i].category, contracts_[wish.contract], before[i].margin, after, takes);
                kept = true;
            } else if (before[i].account) {
                Compare(*before[i].category, *before[i].account);
            }
        }
        if (!answer.Passed()) {
            ++refused[live ? end : 4];
            if (live != (answer.status == status::kRefused)) Blame("refused as " + answer.text);
            if (dumped && !kept && dump != house_.Dump()) Blame("a refused order left a trace: " + answer.text);
        } else {
            ++accepted;
            if (!change) {
                open_.push_back(wish);
            } else if (wish.quantity == 0) {
                open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(at));
            } else {
                open_[at] = wish;
            }
        }
        for (const Place& place : before) CompareRows(*place.category);
    }

    void Enquire(bool dumped) {
        const OpenOrder wish = Wish();
        const std::string dump = dumped ? house_.Dump() : std::string();
        house_.Probe(SpecOf(wish));
        ++probes;
        if (dumped && dump != house_.Dump()) Blame("an enquiry left a trace");
        for (const Place& place : Places(wish)) {
            if (place.account) Compare(*place.category, *place.account);
        }
    }

    /// A fill of an open order, whole or in part, laid into the accounts of all levels.
    void Trade() {
        const std::size_t at = PickOf(open_);
        OpenOrder& order = open_[at];
        OpenOrder fill = order;
        if (Pick(0, 1) == 0) fill.quantity = std::max(1, order.quantity / 2);
        const std::vector<Place> before = Places(fill);

        Library& library = house_.library;
        std::vector<char> request = MakeRequest(SpecOf(fill));
        auto& head = *reinterpret_cast<tagSurveillanceInfo*>(request.data());
        OrderIntake intake;
        intake.view = ViewRequest(head);
        CHierarchy hierarchy;
        if (!ReadRequest(head, library.context, OrderRoad::kCheck, intake) ||
            FindHierarchy(*library.manager, head, intake.order, hierarchy).message ||
            !FindRiskParameters(library.context, intake.order)) {
            return Blame("a trade found no way into the house");
        }
        RegisterContract(*library.manager, hierarchy, intake.order);
        FillCheckEvent(intake);
        tagOrderInfoForSurv& trade = intake.order;
        trade.orderEventKind = event::kTrade, trade.prevQuantity = fill.quantity, trade.prevPrice = order.price;
        trade.price = trade.lastTradedPrice = std::max(5, order.price + Pick(-3, 3));
        trade.scripInfo = library.context.stores.FindOrMakeScrip(trade);
        trade.parentCode = ParentCodeOf(trade, head);
        library.context.stores.TakeAdditionalMargin(trade);
        for (const Place& place : before) {
            trade.ownerInfo = place.category->OwnerOf(trade);
            trade.riskPreference = library.manager->EffectivePreference(*place.category, trade.ExchangeMask());
            for (const Period period : {Period::kDaily, Period::kExpiry}) {
                trade.periodicity = PeriodicityOf(trade.marketSegment, period);
                CAccountExposureSet& set = place.category->Book(period).accounts;
                CClientExposure& account = set.accounts.FindOrMake(MakeAccountKey(trade));
                const ScripPath path = account.FindOrMakePath(trade, library.context.settings);
                account.ApplyOrder(trade, path, TreeContext{library.context.settings});
                if (period == Period::kExpiry) set.EnterHolder(trade, account, path);
            }
        }
        for (std::size_t i = 0; i < before.size(); ++i) Settle(fill, i);
        ++trades;
        order.quantity -= fill.quantity;
        if (order.quantity == 0) open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(at));
    }

    // Rows --------------------------------------------------------------------------------------------------------
    /// How an order moves the rows of one level. A level that only takes the order moves its traded side too.
    void MoveRows(CSurveillanceCategory& category, const Contract& contract, const AccountMargin& before,
                  const AccountMargin& after, bool takes) {
        const auto a = before.Reading(contract.exchange);
        const auto b = after.Reading(contract.exchange);
        const MarginPreference& own = FactsOf(category).preferences.at(contract.exchange);
        const double raise = 1 + own.addOn / 1e6;
        const std::int16_t bit =
            SegmentToBit(SegmentOfContract(contract.exchange, contract.record.contract.strikePrice));
        for (const auto& store : category.limitStores) {
            const std::int16_t mask = store.key;
            if ((mask & bit) == 0) continue;
            const BKSurveillanceLimitDefTag& row = category.FindRow(mask, kAllSecurities)->Row();
            RowDue& due = rows_[&row];
            const bool commodity = contract.exchange == kMaskNcdex;
            const bool premium = contract.IsOption() && !commodity && mask != 0x181 && mask != 0x101 && mask != 9 &&
                                 ((row.limitOptions & kPremiumInMargin) || own.premiumCounts);
            for (const std::size_t i : {kOrder, kTraded, kWorst}) {
                if (mask == 5 || mask == 9 || (i == kTraded && !takes)) continue;
                due.figures[i] += raise * (b[i] - a[i]);
                if (premium) due.figures[i] += raise * (b[kOptionOrder + i] - a[kOptionOrder + i]) / 100;
            }
            if (contract.exchange != kMaskBseDerivatives && row.entityLevel != 7) {
                due.figures[3] += raise * (b[kExposureTotal] - a[kExposureTotal]);
            }
        }
    }

    /// The accounts' sums on an exchange, premiums in rupees.
    std::array<double, 7> Sum(CSurveillanceCategory& category, std::int16_t exchange) {
        std::array<double, 7> sums{};
        const double raise = 1 + FactsOf(category).preferences.at(exchange).addOn / 1e6;
        for (const auto& account : category.Book(Period::kExpiry).accounts.accounts) {
            const auto reading = known_[account.value.get()].Reading(exchange);
            for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += raise * reading[i] / (i < kOptionOrder ? 1 : 100);
        }
        return sums;
    }

    /// After a file each row that holds the exchange shows the accounts' sums; what it holds of the other exchanges
    /// comes from their own rows, or where there is none from the accounts.
    void PublishRows(CSurveillanceCategory& category, std::int16_t exchange) {
        const std::map<std::int16_t, std::int16_t> ownRow{
            {kMaskNseDerivatives, 0xD}, {kMaskBseDerivatives, 0x61}, {kMaskNcdex, 0x101}};
        const std::array<double, 7> fresh = Sum(category, exchange);
        const auto write = [&](std::int16_t mask) {
            CSurvLimitEntry* entry = category.FindRow(mask, kAllSecurities);
            if (!entry) return;
            std::array<double, 4> figures{fresh[0], fresh[1], fresh[2], fresh[3]};
            for (const auto& [other, otherMask] : ownRow) {
                if (other == exchange || mask == otherMask || (mask & otherMask & kSegmentBits) == 0) continue;
                if (mask == ownRow.at(exchange)) continue;
                const std::array<double, 7> sums = Sum(category, other);
                const CSurvLimitEntry* row = category.FindRow(otherMask, kAllSecurities);
                for (std::size_t i = 0; i < 4; ++i) figures[i] += row ? rows_[&row->Row()].figures[i] : sums[i];
            }
            const bool premium = (entry->Row().limitOptions & kPremiumInMargin) ||
                                 FactsOf(category).preferences.at(exchange).premiumCounts;
            for (std::size_t i = 0; i < 3 && premium; ++i) figures[i] += fresh[kOptionOrder + i];
            rows_[&entry->Row()].figures = figures;
        };
        write(ownRow.at(exchange));
        for (const std::int16_t mask : kRollUpMasks) {
            if (mask & ownRow.at(exchange) & kSegmentBits) write(mask);
        }
    }

    void CompareRows(CSurveillanceCategory& category) {
        for (const auto& store : category.limitStores) {
            const BKSurveillanceLimitDefTag& row = category.FindRow(store.key, kAllSecurities)->Row();
            RowDue& due = rows_[&row];
            const std::array seen{row.usedMarginOrder, row.usedMarginTraded, row.usedMarginMax, row.usedExposureMargin};
            for (std::size_t i = 0; i < seen.size(); ++i) {
                due.size = std::max(due.size, std::abs(due.figures[i]));
                if (std::abs(seen[i] - due.figures[i]) > 1e-6 * due.size + 1e-2) {
                    Blame("row " + std::to_string(store.key) + " of " + std::string(FieldText(row.entityCode)) +
                          ", figure " + std::to_string(i) + ": " + std::to_string(seen[i]) + " there, " +
                          std::to_string(due.figures[i]) + " due");
                }
            }
        }
    }

    // Risk parameters -----------------------------------------------------------------------------------------------
    void SendContract(Contract& contract, bool toStaging) {
        const std::int32_t underlying = contract.record.underlyingToken;
        if (Pick(0, 1) == 0) RenewCharges(contract.exchange, underlying);
        const auto& charges = charges_[SegmentTokenKey(contract.exchange, underlying)];
        house_.RiskMessage(28006, contract.exchange, &charges, sizeof charges, toStaging);
        if (Pick(0, 9) != 0) Renew(contract);  // some come as they were
        house_.RiskMessage(28009, contract.exchange, &contract.record, sizeof contract.record, toStaging);
    }

    /// A file of all contracts that the exchange has brought so far, or of some, and of `lateOnes` new ones.
    void SendFile(std::int16_t exchange, bool all, int lateOnes) {
        house_.RiskMessage(28001, exchange);
        std::vector<const Contract*> sent;
        for (std::size_t i = 0; i < contracts_.size(); ++i) {
            Contract& contract = contracts_[i];
            if (contract.exchange != exchange) continue;
            const bool heldBack = files < 3 && i % 6 == 4;
            const bool late = files >= 3 && !contract.live && lateOnes > 0;
            if (late) --lateOnes;
            if (heldBack || (!late && files >= 3 && (!contract.live || (!all && Pick(0, 3) != 0)))) continue;
            SendContract(contract, /*toStaging=*/true);
            contract.live = true;
            sent.push_back(&contract);
        }
        house_.RiskMessage(28002, exchange);
        ++files;
        CompareAll(/*rows=*/false);
        for (const auto& entry : house_.library.manager->categories) {
            bool touched = false;
            for (const Contract* contract : sent) {
                if (!entry.value->contractKeys.Contains(contract->Key())) continue;
                touched = true;
                CheckParameters(*entry.value, *contract);
            }
            if (touched) PublishRows(*entry.value, exchange);
            CompareRows(*entry.value);
        }
    }
    void CheckParameters(CSurveillanceCategory& category, const Contract& contract) {
        for (const auto& account : category.Book(Period::kExpiry).accounts.accounts) {
            const Place place = PlaceOf(category, account.value.get(), contract);
            if (place.scrip && !Same(place.scrip->scripMargin->contract, contract.record)) Blame("a file passed by");
        }
    }
    /// Past the staging table: nothing moves until the next order of the contract.
    void WriteDirectly() {
        Contract& contract = contracts_[PickOf(contracts_)];
        if (!contract.live) return;
        SendContract(contract, /*toStaging=*/false);
        ++direct;
    }

    void CompareAll(bool rows = true) {
        for (const auto& category : house_.library.manager->categories) {
            for (const auto& account : category.value->Book(Period::kExpiry).accounts.accounts) {
                Compare(*category.value, *account.value);
            }
            for (const auto& account : category.value->Book(Period::kDaily).accounts.accounts) {
                if (account.value->clientMarginTotals) Blame("a daily account has margins");
            }
            if (rows) CompareRows(*category.value);
        }
        for (const auto& [node, charges] : charged_) {  // only orders bring new ones
            if (!Same(node->underlyingMargin->underlying, charges)) Blame("the charges of an underlying have changed");
        }
        if (!house_.notifications.empty()) Blame("the library complains: " + house_.notifications.back());
    }

    CScenario house_;
    std::mt19937 random_;
    std::int32_t base_ = 0;
    std::vector<Contract> contracts_;
    std::map<std::int64_t, tagRPFUnderlyingRecord> charges_;
    std::map<std::int64_t, ExposureRates> rates_;
    std::unordered_map<const CSurveillanceCategory*, MarginFacts> facts_;
    std::vector<OpenOrder> open_;
    std::unordered_map<const CUnderlyingExposure*, tagRPFUnderlyingRecord> charged_;
    std::unordered_map<const CClientExposure*, AccountMargin> known_;
    std::unordered_map<const BKSurveillanceLimitDefTag*, RowDue> rows_;
};

class MarginRandomRun : public testing::TestWithParam<std::int16_t> {};

TEST_P(MarginRandomRun, TreesAndRowsAreWhatTheyComeToFromScratch) {
    constexpr std::uint32_t kSeed = 20261;
#ifdef SURVEILLANCE_SANITIZED
    constexpr int kSteps[] = {8000, 6000};  // the whole run is the release build's
#else
    constexpr int kSteps[] = {20000, 6000};
#endif
    CRandomHouse house(kSeed, GetParam());
    house.Run(kSteps[GetParam() == 0 ? 0 : 1]);
    EXPECT_EQ(house.difference, "") << "seed " << kSeed;
    for (const int count : house.refused) EXPECT_GT(count, 10) << "a level has had too little to refuse";
    EXPECT_GT(std::min({house.accepted, house.trades, 20 * house.files, 20 * house.direct, 20 * house.probes}), 800);
}

INSTANTIATE_TEST_SUITE_P(PositionModes, MarginRandomRun, testing::Values(0, 2));

}  // namespace
}  // namespace surv::test
