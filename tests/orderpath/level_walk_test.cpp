#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "platform/format.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

using LimitRow = BKSurveillanceLimitDefTag;
constexpr std::int32_t kToken = 2885;
constexpr double kHundred = 100 * 25000.0;  // value of an order

struct LevelOfHouse {
    const char* code;
    const char* parent;  // of its accounts
    std::int16_t type;
    std::uint8_t checkFlag;
};
/// From the lowest to the root.
constexpr LevelOfHouse kLevels[] = {{"S1", "C1", 12, 1 << 5}, {"C1", "G1", 2, 1 << 4},  {"F1", "G1", 8, 1 << 3},
                                    {"D1", "G1", 0, 1 << 2},  {"G1", "G1", 11, 1 << 1}, {"-", "G1", -1, 0}};

/// Six levels with a daily row, a settlement row and a settlement row of the scrip each, and 100 shares bought.
class CSixLevels : public CScenario {
 public:
    explicit CSixLevels(std::int16_t positionMode = 0)
        : CScenario({.positionMode = positionMode, .featureBits = 0x10}) {
        for (const LevelOfHouse& level : kLevels) {
            Limit(level.code, 2);
            Limit(level.code, 3);
            Limit(level.code, 3, {}, kToken);
        }
        EXPECT_TRUE(Check(Order()).Passed());
    }
    static OrderSpec Order() { return {.family = "F1", .subClient = "S1", .groupType = 11, .subClientType = 12}; }
    /// The level refuses an order of 100 at the last of its rows, or no longer does.
    void Refuse(const char* entity, std::int32_t limit = 50) { Row(entity, 3, kToken).maxSingleOrderQty = limit; }
    double Pending(const char* entity) { return Row(entity, 3).usedPendingOrder; }
    /// Of each level from the lowest, in orders of 100: pending in its row, held, and held by the account.
    std::string State() {
        std::string out;
        for (const LevelOfHouse& level : kLevels) {
            const auto* account = HeldBy(level.code, Period::kExpiry, level.parent, "C1");
            out += std::to_string(std::lround(Pending(level.code) / kHundred)) + "/" +
                   std::to_string(Held(level.code, Period::kExpiry)->data.orderBuyQty / 100) + "/" +
                   std::to_string(account->data.orderBuyQty / 100) + " ";
        }
        return out;
    }
};

TEST(LevelWalk, RowsGoToTheHostLevelByLevelLiveOrAsCopies) {
    for (const std::int16_t mode : std::initializer_list<std::int16_t>{0, 1, 2, 3}) {
        SCOPED_TRACE(mode);
        CSixLevels s(mode);
        s.Limit("C1", 3, {}, -95);
        OrderSpec order = CSixLevels::Order();
        order.scripGroupNumber = -95;
        const Answer answer = s.Check(order);
        std::string rows;
        for (std::size_t i = 0; i < answer.limitRows.size(); ++i) {
            const LimitRow& row = answer.limitRows[i];
            rows += std::string(FieldText(row.entityCode)) + ":" + std::to_string(row.limitMask) + "/" +
                    std::to_string(row.token) + " ";
            const LimitRow& live = s.Row(FieldText(row.entityCode), row.limitMask, row.token);
            EXPECT_EQ(answer.limitRowAddresses[i] == &live, mode >= 2);
            EXPECT_EQ(std::memcmp(&row, &live, sizeof row), 0) << "a copy shows the row as it is now";
        }
        EXPECT_EQ(rows,
                  "G1:2/-9 G1:3/-9 G1:3/2885 D1:2/-9 D1:3/-9 D1:3/2885 C1:2/-9 C1:3/-9 C1:3/-95 C1:3/2885 "
                  "S1:2/-9 S1:3/-9 S1:3/2885 F1:2/-9 F1:3/-9 F1:3/2885 -:2/-9 -:3/-9 -:3/2885 ");
    }
}

TEST(LevelWalk, ALevelThatIsNotCheckedTakesTheOrderIn) {
    for (const LevelOfHouse& level : kLevels) {
        SCOPED_TRACE(level.code);
        CSixLevels s;
        s.Refuse(level.code);
        OrderSpec order = CSixLevels::Order();
        const bool root = level.checkFlag == 0;  // it has no flag: it is checked when all others aren't
        order.levelCheckFlags = static_cast<std::uint8_t>(root ? 0 : 62 & ~level.checkFlag);
        const Answer answer = s.Check(order);
        EXPECT_EQ(answer.Passed(), !root);
        EXPECT_EQ(answer.limitRows.size(), root ? 0U : 18U);
        EXPECT_EQ(s.State(), root ? "2/1/2 2/1/2 2/1/2 2/1/2 2/1/2 1/1/1 " : "2/2/2 2/2/2 2/2/2 2/2/2 2/2/2 2/2/2 ");
    }
}

TEST(LevelWalk, AnUpdateBelowARefusalStaysAndLevelsAboveItSeeNothing) {
    CSixLevels s;
    s.Refuse("D1");
    OrderSpec order = CSixLevels::Order();
    order.levelCheckFlags = 1 << 5 | 1 << 2;  // sub client and dealer are checked
    EXPECT_EQ(s.Check(order).failedLevelCode, "D1");
    EXPECT_EQ(s.State(), "1/1/1 2/1/2 2/1/2 1/1/1 1/1/1 1/1/1 ") << "positions move in the commit alone";
}

std::string Text(const std::vector<tagBreachRow>& rows) {
    std::string out;
    for (const tagBreachRow& row : rows) {
        out += std::string(FieldText(row.entityCode)) + ":" + std::to_string(row.limitMask) + "/" +
               std::to_string(row.token) + "=" + std::to_string(row.breachBitsA) + "," +
               std::to_string(row.breachBitsB) + " ";
    }
    return out;
}

TEST(LevelWalk, AProbeReportsEveryBreachAndKeepsNothing) {
    CSixLevels s;
    for (const char* entity : {"S1", "C1", "D1", "-"}) s.Row(entity, 3).maxSingleOrderQty = 50;
    s.Row("S1", 2).pendingOrderLimit = kHundred;
    s.Row("S1", 3, kToken).netQuantityLimit = 100;
    s.Row("F1", 3, kToken).maxSingleOrderValue = 1;
    const std::string before = s.Dump();
    OrderSpec order = CSixLevels::Order();
    Answer answer = s.Probe(order);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.status, -312);
    EXPECT_EQ(answer.timeStamp, CScenario::kNow);
    // A store's answer is its scrip row's. The refusal of the family keeps the dealer from being asked.
    const std::string below = "S1:2/-9=64,0 S1:3/-9=0,2 S1:3/2885=0,4 ";
    EXPECT_EQ(Text(answer.probeRows), below + "C1:3/-9=0,2 F1:3/2885=0,1 -:3/-9=0,2 ");
    EXPECT_EQ(Text(answer.rollbackRows), "F1:3/2885=0,1 C1:3/-9=0,2 " + below + "-:3/-9=0,2 ");
    EXPECT_EQ(answer.text,
              "C1|Order failed Max. Single Transaction Value 25000.00 exceeded 0.01 Limit for SCRIP EQ of ");
    EXPECT_EQ(answer.errorCode, code::kOrderValue);
    EXPECT_TRUE(s.Dump() == before);

    s.Row("F1", 3, kToken).maxSingleOrderValue = s.Row("S1", 3, kToken).netQuantityLimit = -1;
    answer = s.Probe(order);
    EXPECT_EQ(Text(answer.probeRows), "S1:2/-9=64,0 S1:3/-9=0,2 C1:3/-9=0,2 D1:3/-9=0,2 -:3/-9=0,2 ");
    EXPECT_EQ(Text(answer.rollbackRows), "D1:3/-9=0,2 C1:3/-9=0,2 S1:2/-9=64,0 S1:3/-9=0,2 -:3/-9=0,2 ");

    order.quantity = 1, order.levelCheckFlags = 0;
    const std::string unlimited = s.Dump();
    answer = s.Probe(order);
    EXPECT_TRUE(s.Dump() == unlimited) << "levels that aren't checked don't take an enquiry in";
    EXPECT_EQ(answer.status, -312) << "also when every level would pass";
    EXPECT_EQ(answer.text, "C1| of ");
    EXPECT_TRUE(answer.probeRows.empty() && answer.rollbackRows.empty());
}

TEST(LevelWalk, AProbeTellsTheLastRefusalOfALevelThoughLaterRowsPass) {
    CSixLevels s;
    s.Limit(
        "-", 2, [](LimitRow& row) { row.maxSingleOrderQty = 50; }, kToken);
    s.Limit("-", 0x12);
    const Answer answer = s.Probe(CSixLevels::Order());
    EXPECT_EQ(answer.errorCode, code::kOrderQuantity);
    EXPECT_EQ(answer.text, "C1|Max. Single Transaction Qty. exceeded for SCRIP EQ of ");
}

TEST(LevelWalk, OneEntityAtTwoLevelsCountsTwiceAndIsHandedOutOnce) {
    CSixLevels s;
    OrderSpec order = CSixLevels::Order();
    order.group = "D1";
    s.Row("D1", 3).pendingOrderLimit = 3 * kHundred - 1;
    std::string before = s.Dump();
    Answer answer = s.Check(order);
    EXPECT_EQ(answer.errorCode, code::kPendingOrder);
    EXPECT_EQ(answer.failedLevelType, 11) << "as a group";
    EXPECT_TRUE(s.Dump() == before);

    s.Row("D1", 3).pendingOrderLimit = 3 * kHundred;
    s.Refuse("-");
    before = s.Dump();
    EXPECT_EQ(s.Check(order).failedLevelCode, "-");
    EXPECT_TRUE(s.Dump() == before);

    s.Refuse("-", -1);
    answer = s.Check(order);
    EXPECT_TRUE(answer.Passed()) << answer.text;
    EXPECT_EQ(s.Pending("D1"), 3 * kHundred);
    EXPECT_EQ(s.Held("D1", Period::kExpiry)->data.orderBuyQty, 300);
    EXPECT_EQ(s.HeldBy("D1", Period::kExpiry, "D1", "C1")->data.orderBuyQty, 200);
    const auto ofDealer = [](const LimitRow& row) { return FieldText(row.entityCode) == "D1"; };
    EXPECT_EQ(std::count_if(answer.limitRows.begin(), answer.limitRows.end(), ofDealer), 3);
}

TEST(LevelWalk, AnOwnAccountOrderPassesItsClientsBy) {
    CSixLevels s;
    for (const char* entity : {"S1", "C1"}) s.Refuse(entity);
    OrderSpec order = CSixLevels::Order();
    order.proClient = 2;
    EXPECT_TRUE(s.Check(order).Passed());
    EXPECT_EQ(s.State(), "1/1/1 1/1/1 2/2/1 2/2/1 2/2/1 2/2/1 ");
    for (const char* entity : {"F1", "D1", "G1", "-"}) {
        EXPECT_EQ(s.HeldBy(entity, Period::kExpiry, "", "*****")->data.orderBuyQty, 100) << entity;
    }
}

TEST(LevelWalk, ANarrowOrderMovesOnlyLevelsThatFollowIt) {
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{2}}) {
        CSixLevels s(mode);
        s.library.manager->FindCategory("C1")->lastLevel = 3;
        s.library.manager->FindCategory("G1")->lastLevel = 5;
        s.Refuse("-");  // isn't asked
        OrderSpec order = CSixLevels::Order();
        order.clientType = 3;
        Answer answer = s.Check(order);
        EXPECT_EQ(answer.levelCheckFlags, 1 << 3);
        EXPECT_EQ(answer.limitRows.size(), 3U) << "of the client";
        // The family is checked, but keeps the order only where its limits are those of a family. The group's type in
        // the order keeps its rows still, the level of its limits moves what it holds. Accounts take everything.
        EXPECT_EQ(s.State(), "1/1/2 2/2/2 1/1/2 1/1/2 1/2/2 1/1/2 ");

        s.library.manager->FindCategory("F1")->lastLevel = 8;
        answer = s.Check(order);
        EXPECT_EQ(answer.limitRows.size(), 6U);
        EXPECT_EQ(s.State(), "1/1/3 3/3/3 2/2/3 1/1/3 1/3/3 1/1/3 ");
        // Where the house aggregates, such clients are kept apart at the root.
        const auto& apart = s.library.manager->FindCategory("-")->Book(Period::kDaily).clientLevelExposures;
        const CSurvPosition* position = apart.Find({kMaskNseCash, PositionFamily::kPlain, kToken});
        EXPECT_EQ(position ? position->data.orderBuyQty : 0, mode == 2 ? 200 : 0);
    }
}

TEST(LevelWalk, AnAcceptedOrderStandsAtEveryLevelInBothPeriodsInPlaceOfTheStoredOne) {
    CSixLevels s;
    s.Market(kMaskNseCash, kToken, 24900, 25100, 25000, 25000);
    const struct {
        const char* name;
        std::int32_t storedQuantity, storedPrice, quantity, price, held;
        double pending;
    } changes[] = {
        {"more, cheaper", 100, 25000, 150, 24000, 150, 150 * 24000},
        {"taken back in full", 150, 24000, 0, 24000, 0, 0},
        {"at market", 0, 0, 100, 0, 100, 100 * 25100},
        {"stored at market: out at the price it came in at", 100, 0, 20, 24000, 20, 20 * 24000},
    };
    for (const auto& c : changes) {
        SCOPED_TRACE(c.name);
        OrderSpec change = CSixLevels::Order();
        change.messageCode = 2040;
        change.quantity = c.quantity, change.price = c.price;
        change.hasStored = true;
        change.storedQuantity = c.storedQuantity, change.storedPrice = c.storedPrice;
        const Answer answer = s.Check(change);
        EXPECT_TRUE(answer.Passed());
        EXPECT_EQ(answer.text + answer.failedLevelCode, "");
        EXPECT_EQ(answer.failedLevelType, -1);
        for (const LevelOfHouse& level : kLevels) {
            SCOPED_TRACE(level.code);
            for (const Period period : {Period::kDaily, Period::kExpiry}) {
                for (const auto* held :
                     {s.Held(level.code, period), s.HeldBy(level.code, period, level.parent, "C1")}) {
                    ASSERT_NE(held, nullptr);
                    EXPECT_EQ(held->data.orderBuyQty, c.held);
                    EXPECT_EQ(held->data.orderBuyValue, c.pending);
                    EXPECT_EQ(held->data.tradedBuyQty, 0);
                }
            }
            EXPECT_EQ(s.Pending(level.code), c.pending);
            EXPECT_EQ(s.Row(level.code, 2).usedMaxGross, c.pending);
            EXPECT_EQ(s.Row(level.code, 3, kToken).grossUsedNetOrder, c.pending);
        }
    }
}

}  // namespace
}  // namespace surv::test
