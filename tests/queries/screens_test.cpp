// What the screens refuse, and the two small questions.

#include <gtest/gtest.h>

#include "queries/kept_house.h"
#include "surveillance/surveillance.h"

namespace surv::test {
namespace {

constexpr int kEveryMask = 0x10000;

TEST(NetPositions, AreShownForTheSixteenMasksAndTheKnownKindsAlone) {
    CKeptHouse house(2, 0, {{"C1", 2, 0}});
    for (std::int16_t segment = 1; segment <= 8; ++segment) {
        const std::int16_t mask = PeriodicityOf(segment, Period::kExpiry);
        for (const int period : {0, 1}) {
            Kept kept;
            kept.mask = static_cast<std::int16_t>(mask - period), kept.account = "A1", kept.token = 100 * segment;
            kept.buy = true, kept.quantity = 5;
            house.Enter(kept);
        }
    }
    int shown = 0;
    for (int mask = 0; mask < kEveryMask; ++mask) {
        Asked asked;
        asked.category = "C1", asked.mask = static_cast<std::int16_t>(mask);
        shown += static_cast<int>(house.Ask(asked).rows.size());
    }
    EXPECT_EQ(shown, 16);
    for (const int kind : {-2147483647 - 1, -1, 2, 3, 13, 2147483647}) {
        Asked asked;
        asked.kind = kind, asked.category = "NOSUCH";
        EXPECT_EQ(house.Ask(asked), Shown{}) << kind;
    }
}

TEST(NetPositions, TakeCodesOfAnyLength) {
    CKeptHouse house(2, 0, {{"EIGHTCOD", 2, 0}, {"D1", 0, 7}});
    for (const char* account : {"A1", "FIFTEENCHARACTS", "FIFTEE+"}) {
        for (const std::size_t category : {0U, 1U}) {
            Kept kept;
            kept.category = category, kept.group = "G1", kept.account = account, kept.mask = 3, kept.token = 7;
            kept.buy = true, kept.quantity = 5;
            house.Enter(kept);
        }
    }
    const std::string wide(4000, 'X');
    const struct {
        std::string category, group, account;
        short result;
        std::size_t rows;
        std::size_t rowsOfAnUntrimmedGroup = rows;  ///< kinds 6 and 11
    } cases[] = {
        {"EIGHTCOD", "G1", "A1", 0, 1},
        {"EIGHTCODX", "G1", "A1", -1, 0},
        {"EIGHTCOD", "  G1  ", "  A1   ", 0, 1, 0},
        {"EIGHTCOD", "G1", "FIFTEENCHARACTS", 0, 1},
        {"EIGHTCOD", "G1", "FIFTEENCHARACTSX", 0, 0},
        {"EIGHTCOD", "G1", wide, 0, 0},
        {"EIGHTCOD", wide, "A1", 0, 0},
        {"EIGHTCOD", "", "", 0, 0},
        {"D1", "G1", "FIFTEENCHARACTSX", 0, 0},
        {wide, "G1", "A1", -1, 0},
        {"", "G1", "A1", -1, 0},
    };
    for (const auto& c : cases) {
        for (const int kind : {4, 6, 7, 11}) {
            SCOPED_TRACE(c.category.substr(0, 9) + "|" + c.group.substr(0, 9) + "|" + c.account.substr(0, 20));
            Asked asked;
            asked.kind = kind, asked.category = c.category, asked.group = c.group, asked.account = c.account;
            asked.token = 7;
            const bool trimsTheGroup = kind == 4 || kind == 7;
            EXPECT_EQ(house.Ask(asked).rows.size(), trimsTheGroup ? c.rows : c.rowsOfAnUntrimmedGroup) << kind;
            EXPECT_EQ(house.Ask(asked).result, c.result) << kind;
        }
    }
}

TEST(NetPositions, WriteOnlyWhatFitsIntoTheCallersBuffers) {
    CKeptHouse house(2, 0, {{"C1", 2, 0}});
    for (const char* group : {"LONGG", "L2"}) {
        Kept kept;
        kept.group = group, kept.account = "A1", kept.mask = 3, kept.token = 7, kept.buy = true, kept.quantity = 5;
        house.Enter(kept);
    }
    const struct {
        const char *name, *group, *account, *groupAfter, *accountAfter;
        int kind;
        bool byToken;
        std::size_t rows;
    } cases[] = {
        {"trimmed", " L2 ", " A1 ", "L2", "A1", 4, false, 1},
        {"the last holder's group", "ABCDE", "ALL", "L2", "ALL", 4, true, 2},
        {"no longer than it was", "X", "ALL", "L", "ALL", 4, true, 2},
        {"no room", "", "ALL", "", "ALL", 11, true, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<char> group(c.group, c.group + std::strlen(c.group) + 1);
        std::vector<char> account(c.account, c.account + std::strlen(c.account) + 1);
        CPtrList rows;
        house.scenario.library.manager->GetNetPositionInfoFromDll(
            {c.kind, "C1", {{group.data(), 6}, {account.data(), 32}}, 7, 3, c.byToken, 0}, rows);
        EXPECT_EQ(rows.GetCount(), static_cast<int>(c.rows));
        EXPECT_STREQ(group.data(), c.groupAfter);
        EXPECT_STREQ(account.data(), c.accountAfter);
        FreeRows<BKExposureTag>(rows);
    }
}

TEST(PositionPresent, IsWhatIsOpenAndNotAlwaysDelivered) {
    const struct {
        const char* name;
        std::int16_t mask;
        std::int64_t bought, sold;
        bool open, delivered;
        const char* account;
        short present;
    } cases[] = {
        {"bought", 3, 5, 0, false, false, "A1", 1},
        {"another's", 3, 5, 0, false, false, "A2", 0},
        {"bought and sold", 3, 5, 5, false, false, "A1", 0},
        {"sold short", 17, 0, 5, false, false, "A1", 1},
        {"an order", 3, 5, 0, true, false, "A1", 0},
        {"today's", 2, 5, 0, false, false, "A1", 0},
        {"a series that is always delivered", 3, 5, 0, false, true, "A1", 0},
        {"the same letters off equity", 9, 5, 0, false, true, "A1", 1},
        {"NCDEX", 257, 5, 0, false, false, "A1", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CKeptHouse house(2, /*orderBased=*/1, {{"C1", 2, 0}});
        if (c.delivered) house.scenario.library.context.products.compulsoryDeliverySeries.Insert(SeriesKey{1, ""});
        for (const bool buy : {true, false}) {
            Kept kept;
            kept.mask = c.mask, kept.group = "G1", kept.account = "A1", kept.token = 7, kept.buy = buy;
            kept.open = c.open, kept.quantity = buy ? c.bought : c.sold;
            if (kept.quantity != 0) house.Enter(kept);
        }
        const CSurveillanceManager& manager = *house.scenario.library.manager;
        EXPECT_EQ(manager.GetClientPositionPresentFromDLL("C1", "G1", c.account), c.present);
        EXPECT_EQ(manager.GetClientPositionPresentFromDLL("C2", "G1", c.account), -1);
    }
}

/// The refused order has left a node that holds nothing.
TEST(NetPositions, AnAccountThatWasRefusedShowsNothing) {
    CScenario s({.positionMode = 2});
    s.House();
    s.Row("-", 3).maxSingleOrderQty = 99;
    ASSERT_EQ(s.Check({}).errorCode, code::kOrderQuantity);
    char group[] = "G1", account[] = "C1";
    for (const int kind : {4, 6, 11, 12}) {
        CPtrList rows;
        const HolderCodes codes{{group, sizeof group}, {account, sizeof account}};
        EXPECT_EQ(s.library.manager->GetNetPositionInfoFromDll({kind, "C1", codes, kAllSecurities, 3}, rows), kDone);
        EXPECT_TRUE(rows.IsEmpty()) << kind;
    }
}

TEST(MarketExposure, TheFamilysOptionsStandBeforeTheOwnOnes) {
    CScenario s({.featureBits = 0x10});
    CSurveillanceManager& manager = *s.library.manager;
    const auto fund = [&s](const char* code, std::uint8_t flags) {
        s.Preference(code, kOverallPreference, [flags](auto& record) { record.fundFlags = flags; });
    };
    fund("F1", kCollateralInFund);
    manager.Context().stores.clientFamilyMap.FindOrMake("C1") = "F1";
    for (const auto& [client, options] : {std::pair{"C1", kCollateralInFund}, std::pair{"C2", kSaleCreditInFund}}) {
        s.Limit(client, 3);
        fund(client, kSaleCreditInFund);
        manager.AddClientRiskPreference(client);
        CPtrList rows;
        ASSERT_EQ(manager.GetMarketExposure(client, 3, &rows), 0);
        EXPECT_EQ(static_cast<BKSurveillanceLimitDefTag*>(rows.GetHeadPosition()->element)->limitOptions, options);
        FreeRows<BKSurveillanceLimitDefTag>(rows);
    }
}

TEST(MarketExposure, ShowsTheRowsOfAMaskWithTheOptionsInForce) {
    constexpr std::uint8_t kFund = kCollateralInFund | kSaleCreditInFund;
    const struct {
        const char* name;
        std::int16_t mode;
        // fundFlags and bit 0 of marginFlags of the own overall record and of that of the exchange; -1: no such record
        int overallFund, overallMargin, ownFund, ownMargin;
        int options;
    } cases[] = {
        {"no preference", 0, -1, 0, -1, 0, kRetainMultiplier | kFund},
        {"of all exchanges, live rows", 2, kCollateralInFund, 1, -1, 0,
         kRetainMultiplier | kCollateralInFund | kExposureMarginInLimit},
        {"of the exchange, fund by the other", 0, kSaleCreditInFund, 1, kFund, 0,
         kRetainMultiplier | kSaleCreditInFund},
        {"of the exchange alone: no word on the fund", 0, -1, 0, kFund, 1, kRetainMultiplier | kExposureMarginInLimit},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CScenario s({.positionMode = c.mode});
        const auto preference = [&](std::int32_t exchange, int fund, int margin) {
            if (fund < 0) return;
            s.Preference("C1", exchange, [&](tagClientRiskPreferenceInfoForSurv& record) {
                record.fundFlags = static_cast<std::uint8_t>(fund),
                record.marginFlags = static_cast<std::uint8_t>(margin);
            });
        };
        for (const char* code : {"C1", "C2"}) s.Limit(code, 0xF), s.Limit(code, 3);
        preference(-1, c.overallFund, c.overallMargin);
        preference(kMaskNseDerivatives, c.ownFund, c.ownMargin);
        preference(kMaskNseCash, kFund, 1);
        BKSurveillanceLimitDefTag& stored = s.Row("C1", 0xF);
        stored.limitOptions = kRetainMultiplier | kFund;
        CPtrList rows, all;
        const CSurveillanceManager& manager = *s.library.manager;
        EXPECT_EQ(manager.GetMarketExposure("C1", 0xF, &rows), 0);
        ASSERT_EQ(rows.GetCount(), 1);
        const auto* row = static_cast<const BKSurveillanceLimitDefTag*>(rows.GetHeadPosition()->element);
        EXPECT_EQ(row->limitOptions, c.options);
        EXPECT_EQ(row == &stored, c.mode == 2);
        EXPECT_EQ(stored.limitOptions, c.mode == 2 ? c.options : kRetainMultiplier | kFund);
        EXPECT_EQ(manager.GetMarketExposure("ALL", 0xF, &all), 0);
        EXPECT_EQ(all.GetCount(), 2);
        EXPECT_EQ(manager.GetMarketExposure("ALL", 0xF, nullptr), 0);
        EXPECT_EQ(manager.GetMarketExposure("C1", 4711, &rows), 0);
        EXPECT_EQ(manager.GetMarketExposure("NOSUCH", 0xF, &rows), -1);
        EXPECT_EQ(rows.GetCount(), 1);
        for (CPtrList* list : {&rows, &all}) {
            c.mode == 2 ? ForgetRows(*list) : FreeRows<BKSurveillanceLimitDefTag>(*list);
        }
    }
}

}  // namespace
}  // namespace surv::test
