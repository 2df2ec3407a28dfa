#include <gtest/gtest.h>

#include "positions/exposure_row.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

using Figures = std::vector<double>;
using Texts = std::vector<std::string>;
constexpr PositionKey kScrip{kMaskNseCash, PositionFamily::kPlain, 2885};

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
        return category_->AddPositionRow(row, order);
    }
    /// Who holds the scrip by the index of clients: "group|account", each listed as well.
    Texts Holders() {
        Texts codes;
        const CClientBook::Side& side = category_->ClientBook().Of(Period::kExpiry);
        const auto* holders = side.positions.scrips.Find(kScrip);
        EXPECT_EQ(side.lists.Of(ProductGroup::kNormal).size(), holders ? holders->Size() : 0);
        if (!holders) return codes;
        for (const auto& holder : *holders) {
            const tagPositionOwnerInfo& owner = *holder.value->position.data.ownerInfo;
            codes.push_back(std::string{owner.groupCode.View()} + "|" + std::string{owner.accountCode.View()});
        }
        return codes;
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
    row.mtmValue = mtm, row.openPositionValue = open, row.lastPrice = lastPrice;
    return row;
}

TEST(PositionRows, AreSummedByScripByAccountBySegmentAndByMask) {
    const std::string key = "G1|C1";
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{1}, std::int16_t{2}}) {
        SCOPED_TRACE(mode);
        CRows rows(mode);
        rows.Add(WithMtm(PositionRow("C1", 3, 100, " C1 "), 900, 2510000, 25100));
        rows.Add(WithMtm(PositionRow("C1", 3, -40), -250, -1000000, 25300));  // the same contract again
        rows.Add(WithMtm(PositionRow("C1", 3, 10, "C2"), 7, 5, 0));
        const PeriodBook& book = rows->Book(Period::kExpiry);
        EXPECT_EQ(Traded(book.exposures.Find(kScrip)), (Figures{110, 40, 657, 1510005, 25100})) << "the first price";
        const CClientExposure* account = book.accounts.FindAccount("G1", "C1");
        EXPECT_EQ(Traded(&account->FindScripByKey(kScrip)->position), (Figures{100, 40, 650, 1510000, 25100}));
        EXPECT_EQ(Traded(&account->FindScripByKey(kScrip)->dayPosition), Figures(5)) << "a carried row isn't today's";
        EXPECT_EQ(account->FindScripByKey(kScrip)->position.data.ownerInfo, account->ownerInfo.get());
        const SegmentFigures* sums = account->FindSegmentFigures(1);
        EXPECT_EQ((Figures{sums->profitSum, sums->lossSum, sums->openValueSum}), (Figures{900, 250, 1510000}));
        const CSurvPosition* segment = account->FindSegmentPosition(1, ProductGroup::kNormal);
        EXPECT_EQ(Traded(segment), mode == 0 ? Figures{} : (Figures{100, 40, 650, 1510000, 0}));
        const CClientBook* clients = rows->FindClientBook();
        EXPECT_EQ(clients == nullptr, mode == 0);
        if (!clients) continue;
        const auto* holder = clients->Of(Period::kExpiry).positions.scrips.Find(kScrip)->Find(std::string_view{key});
        EXPECT_EQ(Traded(&holder->position), (Figures{100, 40, 650, 1510000, 25300})) << "the last price";
        EXPECT_EQ(holder->clientExposure, account);
        EXPECT_EQ(rows.Holders(), (Texts{key, "G1|C2"}));
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
        {"type 3 at its own level", 3, 3, 3, 0, 2, true, false},
        {"type 3 on MCX", 0x81, 3, 2, 0, 2, true, false},
        {"composite dealer off MCX", 0x81, 5, 0x83, 7, 0, true, true},
        {"type 3 on MCX at place 7, mode 3", 0x81, 3, 7, 0, 3, true, true},
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
        row.contract.expiryDate = 500000, row.contract.strikePrice = strike;
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

TEST(AggregateAccounts, StandWhereTheLevelSumsOverTheHoldersAccounts) {
    const std::string own = "G1|LONGCLIENT123";
    const std::string dealer = "G1|LONGCL+";
    const std::string groupless = "|LONGCL+";
    const std::string group = "G1|LONGCLIENT+";
    const struct {
        const char *name, *code;
        std::int16_t level, subLevel, mode, orderBased, client, sub, group;
        std::string holder;  // by whom the row is recorded; empty: by no one
    } cases[] = {
        {"root, mode 2", "-", 2, 0, 2, 0, 1, -1, 0, dealer},
        {"root, mode 3", "-", 2, 0, 3, 0, 1, -1, 0, ""},
        {"root, groupless client", "-", 2, 0, 2, 0, 6, -1, 0, groupless},
        {"root, groupless group", "-", 2, 0, 2, 0, 2, -1, 6, groupless},
        {"place 7, mode 3", "D1", 7, 0, 3, 0, 1, -1, 0, dealer},
        {"place 7, mode 2", "D1", 7, 0, 2, 0, 1, -1, 0, ""},
        {"place 7, order-based, client type 2", "D1", 7, 0, 0, 1, 2, -1, 0, ""},
        {"the composite dealer of cash", "D1", 0x82, 7, 2, 0, 1, -1, 0, dealer},
        {"the composite dealer off cash", "D1", 0x83, 7, 2, 0, 1, -1, 0, own},
        {"place 6, sub client", "G1", 6, 0, 2, 0, 2, 1, 6, group},
        {"dealer summing by group", "D1", 0, 6, 3, 0, 1, -1, 6, group},
        {"mode 1 knows none", "D1", 0, 7, 1, 0, 1, -1, 0, own},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CRows rows(c.mode, c.orderBased, c.level, c.subLevel, c.code);
        BKExposureTag row = PositionRow(c.code, 3, 25, "LONGCLIENT123");
        row.clientLevelType = c.client, row.subClientLevelType = c.sub, row.groupLevelType = c.group;
        for (int i = 0; i < 2; ++i) rows.Add(row);
        const Texts expected = c.holder.empty() ? Texts{} : Texts{c.holder};
        EXPECT_EQ(rows.Holders(), expected);
        const bool aggregate = !c.holder.empty() && c.holder != own;
        const auto& accounts = rows->Book(Period::kExpiry).accounts.accounts;
        ASSERT_EQ(accounts.Size(), aggregate ? 2 : 1);
        const CClientExposure& last = *(accounts.end() - 1)->value;
        EXPECT_EQ(last.aggregate, aggregate);
        EXPECT_EQ(last.levelTypes.client, c.holder == groupless ? 6 : c.client);
        if (!aggregate) continue;
        EXPECT_EQ(last.FindSegmentPosition(1, ProductGroup::kNormal)->data.tradedBuyQty, 50);
    }
}

}  // namespace
}  // namespace surv::test
