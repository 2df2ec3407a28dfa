#include <gtest/gtest.h>

#include <functional>

#include "positions/exposure_row.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

using Figures = std::vector<double>;
using Texts = std::vector<std::string>;

/// A category C1 and what its rows make of it.
class CRows {
 public:
    explicit CRows(std::int16_t positionMode = 0, std::int16_t orderBased = 0, std::int16_t level = 2,
                   std::int16_t subLevel = 0, const char* code = "C1")
        : scenario_({.positionMode = positionMode}) {
        scenario_.library.context.settings.orderBasedPosition = orderBased;
        const auto levels = [&](BKSurveillanceLimitDefTag& row) { row.entityLevel = level, row.subLevel = subLevel; };
        scenario_.Limit(code, 3, levels);
        category_ = scenario_.library.manager->FindCategory(code);
    }
    CSurveillanceCategory* operator->() const { return category_; }

    std::int16_t Add(BKExposureTag row) {
        tagOrderInfoForSurv order;
        FillExposureValuesToOrderInfo(row, order);
        order.scripInfo = scenario_.library.context.stores.FindOrMakeScrip(row, order);
        const std::int16_t result =
            row.messageKind == 8 ? category_->AddMtfPositionRow(row, order) : category_->AddPositionRow(row, order);
        EXPECT_TRUE(scenario_.library.context.undo.Empty());
        return result;
    }
    /// The keys of the accounts that a list holds, as they stand in the tree.
    Texts Listed(Period period, ProductGroup group) const {
        Texts keys;
        if (!category_->FindClientBook()) return keys;
        for (const CClientExposure* listed : category_->FindClientBook()->Of(period).lists.Of(group)) {
            for (const auto& account : category_->Book(period).accounts.accounts) {
                if (account.value.get() == listed) keys.emplace_back(account.key.View());
            }
        }
        return keys;
    }
    /// The keys of the accounts that hold the scrip, by the index of clients.
    Texts Holders(Period period, PositionFamily family = PositionFamily::kPlain) const {
        Texts keys;
        const CClientBook* book = category_->FindClientBook();
        const auto* holders = book ? book->Of(period).positions.scrips.Find({kMaskNseCash, family, 2885}) : nullptr;
        if (!holders) return keys;
        for (const auto& holder : *holders) keys.emplace_back(holder.key.View());
        return keys;
    }

 private:
    CScenario scenario_;
    CSurveillanceCategory* category_;
};

Figures Traded(const CSurvPosition* position) {
    if (!position) return {};
    const tagSurvPositionData& p = position->data;
    return {static_cast<double>(p.tradedBuyQty), static_cast<double>(p.tradedSellQty), p.mtmValue, p.openPositionValue,
            static_cast<double>(p.lastPrice)};
}

BKExposureTag WithMtm(BKExposureTag row, double mtm, double open, std::int32_t lastPrice) {
    row.mtmValue = mtm;
    row.openPositionValue = open;
    row.lastPrice = lastPrice;
    return row;
}

TEST(PositionRows, AreSummedByScripByAccountBySegmentAndByMask) {
    const std::string key = "G1|C1";
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{1}, std::int16_t{2}}) {
        SCOPED_TRACE(mode);
        CRows rows(mode);
        rows.Add(WithMtm(PositionRow("C1", 3, 100, " C1 "), 900, 2510000, 25100));
        rows.Add(WithMtm(PositionRow("C1", 3, -40), -250, -1000000, 25300));  // the same contract again
        rows.Add(WithMtm(PositionRow("C1", 3, 10, "C2", 11), 7, 5, 0));
        const PeriodBook& book = rows->Book(Period::kExpiry);
        const PositionKey scrip{kMaskNseCash, PositionFamily::kPlain, 2885};
        EXPECT_EQ(Traded(book.exposures.Find(scrip)), (Figures{100, 40, 650, 1510000, 25100})) << "the first price";
        const CClientExposure* account = book.accounts.FindAccount("G1", "C1");
        EXPECT_EQ(Traded(&account->FindScripByKey(scrip)->position), (Figures{100, 40, 650, 1510000, 25100}));
        EXPECT_EQ(Traded(&account->FindScripByKey(scrip)->dayPosition), Figures(5)) << "a carried row isn't today's";
        EXPECT_EQ(account->FindScripByKey(scrip)->position.data.ownerInfo, account->ownerInfo.get());
        const SegmentFigures* sums = account->FindSegmentFigures(1);
        EXPECT_EQ((Figures{sums->profitSum, sums->lossSum, sums->openValueSum}), (Figures{900, 250, 1510000}));
        const CSurvPosition* segment = account->FindSegmentPosition(1, ProductGroup::kNormal);
        EXPECT_EQ(Traded(segment), mode == 0 ? Figures{} : (Figures{100, 40, 650, 1510000, 0}));
        EXPECT_TRUE(rows->Book(Period::kDaily).accounts.accounts.Empty());

        const CClientBook* clients = rows->FindClientBook();
        EXPECT_EQ(clients == nullptr, mode == 0);
        if (!clients) continue;
        const auto* holder = clients->Of(Period::kExpiry).positions.scrips.Find(scrip)->Find(std::string_view{key});
        EXPECT_EQ(Traded(&holder->position), (Figures{100, 40, 650, 1510000, 25300})) << "the last price";
        EXPECT_EQ(holder->clientExposure, account);
        EXPECT_EQ(rows.Listed(Period::kExpiry, ProductGroup::kNormal), (Texts{key, "G1|C2"}));
        EXPECT_EQ(Traded(clients->totals.Find(ProductGroup::kNormal, 3)),
                  mode == 1 ? Figures{} : (Figures{110, 40, 657, 1510005, 0}));
    }
}

TEST(PositionRows, EnterTheSetsThatTheirClientTypeAndTheLevelCallFor) {
    const struct {
        const char* name;
        std::int16_t mask, clientType, level, subLevel, mode;
        bool flat, clientLevel;
        const char* code = "C1";
    } cases[] = {
        {"client", 3, 2, 2, 0, 2, true, false},
        {"type 3 off MCX", 3, 3, 2, 0, 2, false, false},
        {"type 3 at its own level", 3, 3, 3, 0, 2, true, false},
        {"type 5 at the family", 2, 5, 8, 0, 0, true, false},
        {"an unknown type", 3, 7, 2, 0, 0, false, false},
        {"type 3 on MCX", 0x81, 3, 2, 0, 2, true, false},
        {"type 3 on MCX, dealer summing", 0x81, 3, 0, 7, 0, true, true},
        {"composite dealer off MCX", 0x81, 5, 0x83, 7, 0, true, true},
        {"composite dealer of cash", 0x81, 5, 0x82, 7, 0, true, false},
        {"type 3 on MCX at place 7, mode 3", 0x81, 3, 7, 0, 3, true, true},
        {"type 3 on MCX at place 7, mode 2", 0x81, 3, 7, 0, 2, true, false},
        {"root in mode 2", 0x80, 3, 2, 0, 2, true, true, "-"},
        {"root in mode 3", 0x80, 3, 2, 0, 3, true, false, "-"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CRows rows(c.mode, 0, c.level, c.subLevel, c.code);
        BKExposureTag row = PositionRow(c.code, c.mask, 5);
        row.clientLevelType = c.clientType;
        EXPECT_EQ(rows.Add(row), kDone);
        const PeriodBook& book = rows->Book(CSurveillanceCategory::PeriodOfMask(c.mask));
        EXPECT_EQ(book.exposures.positions.Size(), c.flat ? 1 : 0);
        EXPECT_EQ(book.clientLevelExposures.positions.Size(), c.clientLevel ? 1 : 0);
        EXPECT_EQ(rows->seen.mcx, (c.mask & 0x80) != 0);
    }
    CRows rows;
    EXPECT_EQ(rows.Add(PositionRow("C1", 0, 5)), kNotDone);
    EXPECT_TRUE(rows->Book(Period::kDaily).accounts.accounts.Empty());
}

TEST(PositionRows, AnOptionTakesTodaysPartFromItsDailyRow) {
    CRows rows;
    const auto add = [&rows](std::int16_t mask, std::int32_t traded, std::int32_t strike) {
        BKExposureTag row = PositionRow("C1", mask, traded, "C1", 50);
        row.contract.expiryDate = 500000;
        row.contract.strikePrice = strike;
        rows.Add(row);
    };
    add(8, 30, 100);
    add(9, 70, 100);
    add(9, 5, 100);
    const PositionKey key{kMaskNseDerivatives, PositionFamily::kPlain, 50};
    const CScripExposure* scrip = rows->Book(Period::kExpiry).accounts.FindAccount("G1", "C1")->FindScripByKey(key);
    EXPECT_EQ(scrip->position.data.tradedBuyQty, 75);
    EXPECT_EQ(scrip->dayPosition.data.tradedBuyQty, 30) << "once, whatever the number of rows";
    EXPECT_EQ(rows->Book(Period::kExpiry).accounts.holders.Size(), 1);
}

TEST(PositionRows, ATickMovesTheAccountBehindAPosition) {
    CRows rows(2);
    rows.Add(WithMtm(PositionRow("C1", 3, 100), 100000, 2600000, 26000));
    const PositionKey scrip{kMaskNseCash, PositionFamily::kPlain, 2885};
    CClientPosition* held =
        rows->ClientBook().Of(Period::kExpiry).positions.scrips.Find(scrip)->Find(std::string_view{"G1|C1"});
    tagOrderInfoForSurv tick;
    tick.marketSegment = 1;
    tick.token = 2885;
    const struct {
        std::int32_t price;
        Figures sums;  // profit, loss, open value
    } ticks[] = {{24500, {0, 50000, 2450000}}, {24500, {0, 50000, 2450000}}, {25200, {20000, 0, 2520000}}};
    for (const auto& t : ticks) {
        tick.lastTradedPrice = t.price;
        held->ApplyPrice(tick, rows->Context().settings);
        const SegmentFigures* sums = held->clientExposure->FindSegmentFigures(1);
        EXPECT_EQ((Figures{sums->profitSum, sums->lossSum, sums->openValueSum}), t.sums);
        EXPECT_EQ(held->position.data.lastPrice, t.price);
        EXPECT_EQ(held->clientExposure->FindScripByKey(scrip)->position.data.lastPrice, t.price);
    }
}

TEST(PositionRows, AreReadBackAsTheyWere) {
    CRows rows;
    BKExposureTag given = WithMtm(PositionRow("C1", 3, 100), 7, 9, 26000);
    given.rowStamp = 5, given.host0[3] = 'x', given.underlyingToken = 4, given.marginRates.lotMultiplier = 3;
    WriteField(given.userId, "U1");
    rows.Add(given);
    rows.Add(PositionRow("C1", 5, 3));
    const CClientExposure* account = rows->Book(Period::kExpiry).accounts.FindAccount("G1", "C1");
    CPtrList list;
    account->CollectRows(3, 2885, list);
    EXPECT_TRUE(list.IsEmpty()) << "only the token of all securities collects";
    account->CollectRows(3, kAllSecurities, list);
    ASSERT_EQ(list.GetCount(), 1) << "the future's mask isn't within";
    EXPECT_EQ(std::memcmp(list.GetHeadPosition()->element, &given, sizeof given), 0);
    account->CollectRows(0xF, kAllSecurities, list);
    EXPECT_EQ(list.GetCount(), 3);
    FreeRows<BKExposureTag>(list);
}

TEST(PositionRows, MtfStandsApart) {
    CRows rows(2);
    BKExposureTag row = PositionRow("C1", 3, 60);
    row.messageKind = 8;
    rows.Add(row);
    rows.Add(PositionRow("C1", 3, 40));
    const CClientBook& book = *rows->FindClientBook();
    EXPECT_EQ(book.totals.Find(ProductGroup::kMtf, 3)->data.tradedBuyQty, 60);
    EXPECT_EQ(book.totals.Find(ProductGroup::kNormal, 3)->data.tradedBuyQty, 40);
    EXPECT_EQ(rows.Holders(Period::kExpiry, PositionFamily::kMtf), Texts{"G1|C1"});
    EXPECT_EQ(rows.Listed(Period::kExpiry, ProductGroup::kMtf), Texts{"G1|C1"});
    EXPECT_EQ(rows.Listed(Period::kExpiry, ProductGroup::kNormal), Texts{"G1|C1"});
    EXPECT_EQ(rows->Book(Period::kExpiry).exposures.positions.Size(), 2);
}

TEST(AggregateAccounts, StandWhereTheLevelSumsOverTheHoldersAccounts) {
    const std::string own = "G1|LONGCLIENT123";
    const std::string dealer = "G1|LONGCL+";
    const std::string groupless = "     |LONGCL+";
    const std::string group = "G1|LONGCLIENT+";
    const struct {
        const char* name;
        const char* code;
        std::int16_t level, subLevel, mode, orderBased;
        std::int16_t client, sub, group;
        std::string holder;  // by whom the row is recorded; empty: by no one
    } cases[] = {
        {"root, mode 2", "-", 2, 0, 2, 0, 1, -1, 0, dealer},
        {"root, order-based", "-", 2, 0, 0, 1, 1, -1, 0, dealer},
        {"root, mode 3", "-", 2, 0, 3, 0, 1, -1, 0, ""},
        {"root, mode 1", "-", 2, 0, 1, 0, 1, -1, 0, own},
        {"root, client type 2", "-", 2, 0, 2, 0, 2, -1, 0, own},
        {"root, groupless client", "-", 2, 0, 2, 0, 6, -1, 0, groupless},
        {"root, groupless group", "-", 2, 0, 2, 0, 2, -1, 6, groupless},
        {"place 7, mode 3", "D1", 7, 0, 3, 0, 1, -1, 0, dealer},
        {"place 7, mode 2", "D1", 7, 0, 2, 0, 1, -1, 0, ""},
        {"place 7, order-based", "D1", 7, 0, 0, 1, 1, -1, 0, dealer},
        {"place 7, order-based, client type 2", "D1", 7, 0, 0, 1, 2, -1, 0, ""},
        {"dealer summing by dealer", "D1", 0, 7, 2, 0, 1, -1, 0, dealer},
        {"the composite dealer of cash", "D1", 0x82, 7, 2, 0, 1, -1, 0, dealer},
        {"the composite dealer off cash", "D1", 0x83, 7, 2, 0, 1, -1, 0, own},
        {"place 6", "G1", 6, 0, 2, 0, 1, -1, 6, group},
        {"place 6, sub client", "G1", 6, 0, 2, 0, 2, 1, 6, group},
        {"place 6, no groupless group", "G1", 6, 0, 2, 0, 1, -1, 0, own},
        {"dealer summing by group", "D1", 0, 6, 3, 0, 1, -1, 6, group},
        {"order-based alone", "C1", 2, 0, 0, 1, 1, -1, 6, own},
        {"mode 1 knows none", "D1", 0, 7, 1, 0, 1, -1, 0, own},
        {"mode 0 records nothing", "D1", 0, 7, 0, 0, 1, -1, 0, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CRows rows(c.mode, c.orderBased, c.level, c.subLevel, c.code);
        BKExposureTag row = PositionRow(c.code, 3, 25, "LONGCLIENT123");
        row.clientLevelType = c.client, row.subClientLevelType = c.sub, row.groupLevelType = c.group;
        for (int i = 0; i < 2; ++i) rows.Add(row);
        const Texts expected = c.holder.empty() ? Texts{} : Texts{c.holder};
        EXPECT_EQ(rows.Holders(Period::kExpiry), expected);
        EXPECT_EQ(rows.Listed(Period::kExpiry, ProductGroup::kNormal), expected);
        const bool aggregate = !c.holder.empty() && c.holder != own;
        const auto& accounts = rows->Book(Period::kExpiry).accounts.accounts;
        EXPECT_EQ(accounts.Size(), aggregate ? 2 : 1);
        EXPECT_FALSE(accounts.Find(std::string_view{own})->aggregate);
        if (!aggregate) continue;
        const CClientExposure* sum = accounts.Find(std::string_view{c.holder});
        EXPECT_TRUE(sum->aggregate);
        EXPECT_EQ(sum->FindSegmentPosition(1, ProductGroup::kNormal)->data.tradedBuyQty, 50);
        EXPECT_EQ(sum->levelTypes.client, c.holder == groupless ? 6 : c.client);
    }
}

TEST(AggregateAccounts, NeedACode) {
    CRows rows(2, 0, 2, 0, "-");
    BKExposureTag row = PositionRow("-", 3, 25, "   ");
    row.clientLevelType = 1;
    rows.Add(row);
    EXPECT_EQ(rows.Holders(Period::kExpiry), Texts{"G1|"});
}

}  // namespace
}  // namespace surv::test
