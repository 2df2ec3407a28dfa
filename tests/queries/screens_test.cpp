// What the screens refuse, and the two small questions.

#include <gtest/gtest.h>

#include "queries/net_position.h"
#include "support/scenario.h"
#include "surveillance/surveillance.h"

namespace surv::test {
namespace {

/// Entities of level 2 and the dealer D1, with position rows from the start on.
class CShown {
 public:
    explicit CShown(const std::vector<BKExposureTag>& rows, const std::function<void(Library&)>& prepare = {}) {
        for (const char* code : {"C1", "EIGHTCOD", "D1"}) {
            auto* limit = new BKSurveillanceLimitDefTag(EmptyLimit(code, 3));
            const bool dealer = std::string_view(code) == "D1";
            limit->entityLevel = dealer ? 0 : 2, limit->subLevel = dealer ? 7 : 0;
            limits_.AddTail(limit);
        }
        for (const BKExposureTag& row : rows) positions_.AddTail(new BKExposureTag(row));
        scenario_ = std::make_unique<CScenario>(Library::StartSettings{.positionMode = 2},
                                                LoadLists{.limits = &limits_, .exposures = &positions_}, prepare);
    }
    /// The result and the rows; the codes as the call leaves them.
    std::pair<short, int> Ask(int kind, std::string_view category, std::string& group, std::string& account,
                              std::int32_t token = kAllSecurities, std::int16_t mask = 3, bool byToken = false) const {
        CPtrList rows;
        const HolderCodes codes{{group.data(), 6}, {account.data(), 32}};
        const short result = scenario_->library.manager->GetNetPositionInfoFromDll(
            {kind, category, codes, token, mask, byToken, 0}, rows);
        const int count = rows.GetCount();
        FreeRows<BKExposureTag>(rows);
        return {result, count};
    }
    CSurveillanceManager* operator->() const { return scenario_->library.manager.get(); }

 private:
    CPtrList limits_, positions_;
    std::unique_ptr<CScenario> scenario_;
};

TEST(NetPositions, AreShownForTheSixteenMasksAndTheKnownKindsAlone) {
    std::vector<BKExposureTag> rows;
    for (std::int16_t segment = 1; segment <= 8; ++segment) {
        for (const Period period : {Period::kDaily, Period::kExpiry}) {
            rows.push_back(PositionRow("C1", PeriodicityOf(segment, period), 5, "A1", 100 * segment));
        }
    }
    const CShown house(rows);
    std::string group, account;
    int shown = 0;
    for (int mask = 0; mask < 0x10000; ++mask) {
        shown += house.Ask(0, "C1", group, account, kAllSecurities, static_cast<std::int16_t>(mask)).second;
    }
    EXPECT_EQ(shown, 16);
    for (const int kind : {-2147483647 - 1, -1, 2, 3, 13, 2147483647}) {
        EXPECT_EQ(house.Ask(kind, "NOSUCH", group, account), (std::pair<short, int>{0, 0})) << kind;
    }
}

TEST(NetPositions, TakeCodesOfAnyLength) {
    const CShown house({PositionRow("C1", 3, 5, "A1", 7), PositionRow("C1", 3, 5, "FIFTEENCHARACTS", 7),
                        PositionRow("D1", 3, 5, "FIFTEE+", 7)});
    const std::string wide(4000, 'X');
    const struct {
        std::string category, group, account;
        std::pair<short, int> answer;
        int rowsOfAnUntrimmedGroup = answer.second;  ///< kinds 6 and 11
    } cases[] = {
        {"C1", "G1", "A1", {0, 1}},
        {"EIGHTCOD", "G1", "A1", {0, 0}},
        {"EIGHTCODX", "G1", "A1", {-1, 0}},
        {"C1", "  G1  ", "  A1   ", {0, 1}, 0},
        {"C1", "G1", "FIFTEENCHARACTS", {0, 1}},
        {"C1", "G1", "FIFTEENCHARACTSX", {0, 0}},
        {"C1", "G1", wide, {0, 0}},
        {"C1", wide, "A1", {0, 0}},
        {"C1", "", "", {0, 0}},
        {"D1", "G1", "FIFTEENCHARACT", {0, 1}},
        {"D1", "G1", "FIFTEENCHARACTSX", {0, 0}},
        {wide, "G1", "A1", {-1, 0}},
        {"", "G1", "A1", {-1, 0}},
    };
    for (const auto& c : cases) {
        for (const int kind : {4, 6, 7, 11}) {
            SCOPED_TRACE(c.category.substr(0, 9) + "|" + c.group.substr(0, 9) + "|" + c.account.substr(0, 20));
            std::string group = c.group, account = c.account;
            const bool trimsTheGroup = kind == 4 || kind == 7;
            if (kind == 11 && c.category == "D1") continue;  // asks for the plain code alone
            EXPECT_EQ(house.Ask(kind, c.category, group, account, 7),
                      (std::pair{c.answer.first, trimsTheGroup ? c.answer.second : c.rowsOfAnUntrimmedGroup}))
                << kind;
        }
    }
}

TEST(NetPositions, WriteOnlyWhatFitsIntoTheCallersBuffers) {
    BKExposureTag rows[] = {PositionRow("C1", 3, 5, "A1", 7), PositionRow("C1", 3, 5, "A1", 7)};
    WriteField(rows[0].groupCode, "LONGG");
    WriteField(rows[1].groupCode, "L2");
    const CShown house({rows[0], rows[1]});
    const struct {
        const char *name, *group, *account, *groupAfter, *accountAfter;
        int kind;
        bool byToken;
        int rows;
    } cases[] = {
        {"trimmed", " L2 ", " A1 ", "L2", "A1", 4, false, 1},
        {"the last holder's group", "ABCDE", "ALL", "L2", "ALL", 4, true, 2},
        {"no longer than it was", "X", "ALL", "L", "ALL", 4, true, 2},
        {"no room", "", "ALL", "", "ALL", 11, true, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string group = c.group, account = c.account;
        EXPECT_EQ(house.Ask(c.kind, "C1", group, account, 7, 3, c.byToken).second, c.rows);
        EXPECT_STREQ(group.c_str(), c.groupAfter);
        EXPECT_STREQ(account.c_str(), c.accountAfter);
    }
}

TEST(PositionPresent, IsWhatIsOpenAndNotAlwaysDelivered) {
    const struct {
        const char* name;
        std::int16_t mask;
        int bought, sold;
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
        BKExposureTag row = PositionRow("C1", c.mask, c.bought, "A1", 7);
        row.tradedBuyQty = c.open ? 0 : c.bought, row.tradedSellQty = c.sold;
        const CShown house({row}, [&c](Library& library) {
            if (c.delivered) library.context.products.compulsoryDeliverySeries.Insert(SeriesKey{1, ""});
        });
        EXPECT_EQ(house->GetClientPositionPresentFromDLL("C1", "G1", c.account), c.present);
        EXPECT_EQ(house->GetClientPositionPresentFromDLL("C2", "G1", c.account), -1);
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
