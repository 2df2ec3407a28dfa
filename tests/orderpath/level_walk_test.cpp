#include <gtest/gtest.h>

#include <algorithm>

#include "support/scenario.h"

namespace surv::test {
namespace {

using LimitRow = BKSurveillanceLimitDefTag;
constexpr std::int32_t kToken = 2885;

struct LevelOfHouse {
    const char* code;
    std::int16_t type;
    std::uint8_t checkFlag;
};
/// From the lowest to the root.
constexpr LevelOfHouse kLevels[] = {{"S1", 12, 1 << 5}, {"C1", 2, 1 << 4},  {"F1", 8, 1 << 3},
                                    {"D1", 0, 1 << 2},  {"G1", 11, 1 << 1}, {"-", -1, 0}};

/// Six levels with a daily row, a settlement row and a settlement row of the scrip each, and 10 shares bought.
class CSixLevels : public CScenario {
 public:
    explicit CSixLevels(std::int16_t positionMode = 0)
        : CScenario({.positionMode = positionMode, .featureBits = 0x10}) {
        for (const LevelOfHouse& level : kLevels) {
            Limit(level.code, 2);
            Limit(level.code, 3);
            Limit(level.code, 3, {}, kToken);
        }
        OrderSpec first = Order();
        first.quantity = 10;
        EXPECT_TRUE(Check(first).Passed());
    }
    static OrderSpec Order() {
        return {.family = "F1", .subClient = "S1", .groupType = 11, .subClientType = 12};
    }
    /// The level refuses an order of 100 at the last of its rows.
    void Refuse(const LevelOfHouse& level) { Row(level.code, 3, kToken).maxSingleOrderQty = 50; }
    double Pending(const char* entity) { return Row(entity, 3).usedPendingOrder; }
};

constexpr const char* kQuantityText = "Order failed Max. Single Transaction Qty Check where the limit is 50 and "
                                      "current value is 100 ";

TEST(LevelWalk, ARefusalAtAnyLevelLeavesNoTraceBelowIt) {
    for (const std::int16_t mode : std::initializer_list<std::int16_t>{0, 2}) {
        CSixLevels s(mode);
        // The levels above refuse as well, and aren't reached.
        for (auto level = std::rbegin(kLevels); level != std::rend(kLevels); ++level) {
            SCOPED_TRACE(level->code);
            s.Refuse(*level);
            const std::string before = s.Dump();
            for (OrderSpec order : {CSixLevels::Order(), CSixLevels::Order()}) {
                const Answer answer = s.Check(order);
                EXPECT_EQ(answer.status, -312);
                EXPECT_EQ(answer.errorCode, code::kOrderQuantity);
                EXPECT_EQ(answer.headCode, code::kOrderQuantity);
                EXPECT_EQ(answer.timeStamp, CScenario::kNow);
                EXPECT_EQ(answer.failedLevelCode, level->code);
                EXPECT_EQ(answer.failedLevelType, level->type);
                const std::string words = level->type == -1 ? "Max. Single Transaction Qty. exceeded" : kQuantityText;
                EXPECT_EQ(answer.text, "C1|" + words + " for SCRIP EQ of Equity ( NSE-Settlement)  of ");
                EXPECT_TRUE(answer.limitRows.empty());
                EXPECT_TRUE(s.Dump() == before);
            }
        }
    }
}

TEST(LevelWalk, AnAcceptedOrderStandsAtEveryLevelInBothPeriods) {
    CSixLevels s;
    const Answer answer = s.Check(CSixLevels::Order());
    EXPECT_TRUE(answer.Passed());
    EXPECT_EQ(answer.text, "");
    EXPECT_EQ(answer.failedLevelCode, "");
    EXPECT_EQ(answer.failedLevelType, -1);
    for (const LevelOfHouse& level : kLevels) {
        SCOPED_TRACE(level.code);
        const char* group = level.type == 12 ? "C1" : "G1";  // the sub client's accounts stand under its client
        for (const Period period : {Period::kDaily, Period::kExpiry}) {
            for (const CSurvPosition* held :
                 {s.Held(level.code, period), s.HeldBy(level.code, period, group, "C1")}) {
                ASSERT_NE(held, nullptr);
                EXPECT_EQ(held->data.orderBuyQty, 110);
                EXPECT_EQ(held->data.orderBuyValue, 110 * 25000.0);
                EXPECT_EQ(held->data.tradedBuyQty, 0);
                EXPECT_FALSE(held->HasSavedPosition());
            }
        }
        EXPECT_EQ(s.Pending(level.code), 110 * 25000.0);
        EXPECT_EQ(s.Row(level.code, 2).usedMaxGross, 110 * 25000.0);
        EXPECT_EQ(s.Row(level.code, 3, kToken).grossUsedNetOrder, 110 * 25000.0);
    }
}

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
            LimitRow& live = s.Row(FieldText(row.entityCode), row.limitMask, row.token);
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
        if (level.checkFlag == 0) continue;
        SCOPED_TRACE(level.code);
        CSixLevels s;
        s.Refuse(level);
        OrderSpec order = CSixLevels::Order();
        order.levelCheckFlags = static_cast<std::uint8_t>(62 & ~level.checkFlag);
        const Answer answer = s.Check(order);
        EXPECT_TRUE(answer.Passed()) << answer.text;
        EXPECT_EQ(answer.limitRows.size(), 18U);
        EXPECT_EQ(s.Pending(level.code), 110 * 25000.0);
        EXPECT_EQ(s.Held(level.code, Period::kExpiry)->data.orderBuyQty, 110);
        EXPECT_EQ(s.HeldBy(level.code, Period::kDaily, level.type == 12 ? "C1" : "G1", "C1")->data.orderBuyQty, 110);
    }
    // The root has no flag.
    CSixLevels s;
    s.Refuse(kLevels[5]);
    OrderSpec order = CSixLevels::Order();
    order.levelCheckFlags = 0;
    EXPECT_EQ(s.Check(order).failedLevelCode, "-");
}

TEST(LevelWalk, AnUpdateBelowARefusalStaysAndLevelsAboveItSeeNothing) {
    CSixLevels s;
    s.Refuse(kLevels[3]);
    OrderSpec order = CSixLevels::Order();
    order.levelCheckFlags = 1 << 5 | 1 << 2;  // sub client and dealer are checked
    const Answer answer = s.Check(order);
    EXPECT_EQ(answer.failedLevelCode, "D1");
    const double taken = 110 * 25000.0, untouched = 10 * 25000.0;
    const double pending[] = {untouched, taken, taken, untouched, untouched, untouched};
    const std::int64_t inAccount[] = {10, 110, 110, 10, 10, 10};
    for (std::size_t i = 0; i < std::size(kLevels); ++i) {
        SCOPED_TRACE(kLevels[i].code);
        EXPECT_EQ(s.Pending(kLevels[i].code), pending[i]);
        EXPECT_EQ(s.HeldBy(kLevels[i].code, Period::kExpiry, i == 0 ? "C1" : "G1", "C1")->data.orderBuyQty,
                  inAccount[i]);
        EXPECT_EQ(s.Held(kLevels[i].code, Period::kExpiry)->data.orderBuyQty, 10) << "positions move in the commit";
    }
}

TEST(LevelWalk, AProbeReportsEveryBreachAndKeepsNothing) {
    CSixLevels s;
    for (const char* entity : {"S1", "D1", "-"}) s.Row(entity, 3).maxSingleOrderQty = 50;
    s.Row("S1", 2).pendingOrderLimit = 10 * 25000;
    s.Row("S1", 3, kToken).netQuantityLimit = 50;
    s.Row("F1", 3, kToken).maxSingleOrderValue = 1;
    const std::string before = s.Dump();
    OrderSpec order = CSixLevels::Order();
    const auto text = [](const std::vector<tagBreachRow>& rows) {
        std::string out;
        for (const tagBreachRow& row : rows) {
            out += std::string(FieldText(row.entityCode)) + ":" + std::to_string(row.limitMask) + "/" +
                   std::to_string(row.token) + "=" + std::to_string(row.breachBitsA) + "," +
                   std::to_string(row.breachBitsB) + " ";
        }
        return out;
    };
    Answer answer = s.Probe(order);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.status, -312);
    EXPECT_EQ(answer.timeStamp, CScenario::kNow);
    // A store's answer is its scrip row's. The refusal of the family keeps the dealer from being asked.
    const std::string below = "S1:2/-9=64,0 S1:3/-9=0,2 S1:3/2885=0,4 ";
    EXPECT_EQ(text(answer.probeRows), below + "F1:3/2885=0,1 -:3/-9=0,2 ");
    EXPECT_EQ(text(answer.rollbackRows), "F1:3/2885=0,1 " + below + "-:3/-9=0,2 ");
    EXPECT_EQ(answer.text, "C1|Order failed Max. Single Transaction Value 25000.00 exceeded 0.01 Limit for SCRIP EQ of ");
    EXPECT_EQ(answer.errorCode, code::kOrderValue);
    EXPECT_TRUE(s.Dump() == before);

    s.Row("F1", 3, kToken).maxSingleOrderValue = s.Row("S1", 3, kToken).netQuantityLimit = -1;
    answer = s.Probe(order);
    EXPECT_EQ(text(answer.probeRows), "S1:2/-9=64,0 S1:3/-9=0,2 D1:3/-9=0,2 -:3/-9=0,2 ");
    EXPECT_EQ(text(answer.rollbackRows), "D1:3/-9=0,2 S1:2/-9=64,0 S1:3/-9=0,2 -:3/-9=0,2 ");

    order.quantity = 1;
    s.Row("S1", 2).pendingOrderLimit = -1;
    order.levelCheckFlags = 0;
    answer = s.Probe(order);
    EXPECT_EQ(answer.status, -312) << "also when every level would pass";
    EXPECT_EQ(answer.text, "C1| of ");
    EXPECT_TRUE(answer.probeRows.empty() && answer.rollbackRows.empty());
}

TEST(LevelWalk, AProbeTellsTheLastRefusalOfALevelThoughLaterRowsPass) {
    CSixLevels s;
    s.Limit("-", 2, [](LimitRow& row) { row.maxSingleOrderQty = 50; }, kToken);
    s.Limit("-", 0x12);
    const Answer answer = s.Probe(CSixLevels::Order());
    EXPECT_EQ(answer.errorCode, code::kOrderQuantity);
    EXPECT_EQ(answer.text, "C1|Max. Single Transaction Qty. exceeded for SCRIP EQ of ");
}

TEST(LevelWalk, OneEntityAtTwoLevelsCountsTwiceAndIsHandedOutOnce) {
    CSixLevels s;
    OrderSpec order = CSixLevels::Order();
    order.group = "D1";
    const double before = s.Pending("D1"), value = 100 * 25000.0;
    s.Row("D1", 3).pendingOrderLimit = before + 2 * value - 1;
    const std::string dump = s.Dump();
    Answer answer = s.Check(order);
    EXPECT_EQ(answer.errorCode, code::kPendingOrder);
    EXPECT_EQ(answer.failedLevelCode, "D1");
    EXPECT_EQ(answer.failedLevelType, 11) << "as a group";
    EXPECT_TRUE(s.Dump() == dump);

    s.Row("D1", 3).pendingOrderLimit = before + 2 * value;
    s.Refuse(kLevels[5]);
    const std::string again = s.Dump();
    EXPECT_EQ(s.Check(order).failedLevelCode, "-");
    EXPECT_TRUE(s.Dump() == again);
    s.Row("-", 3, kToken).maxSingleOrderQty = -1;

    answer = s.Check(order);
    EXPECT_TRUE(answer.Passed()) << answer.text;
    EXPECT_EQ(s.Pending("D1"), before + 2 * value);
    EXPECT_EQ(s.Held("D1", Period::kExpiry)->data.orderBuyQty, 210);
    EXPECT_EQ(s.HeldBy("D1", Period::kExpiry, "D1", "C1")->data.orderBuyQty, 200);
    const auto ofDealer = [](const LimitRow& row) { return FieldText(row.entityCode) == "D1"; };
    EXPECT_EQ(std::count_if(answer.limitRows.begin(), answer.limitRows.end(), ofDealer), 3);
}

TEST(LevelWalk, AnOwnAccountOrderPassesItsClientsBy) {
    CSixLevels s;
    for (const std::size_t i : {0U, 1U}) s.Refuse(kLevels[i]);
    OrderSpec order = CSixLevels::Order();
    order.proClient = 2;
    EXPECT_TRUE(s.Check(order).Passed());
    EXPECT_EQ(s.Pending("C1"), 10 * 25000.0);
    for (const char* entity : {"F1", "D1", "G1", "-"}) {
        EXPECT_EQ(s.HeldBy(entity, Period::kExpiry, "", "*****")->data.orderBuyQty, 100) << entity;
    }
}

TEST(LevelWalk, ANarrowOrderMovesOnlyLevelsThatFollowIt) {
    for (const std::int16_t mode : std::initializer_list<std::int16_t>{0, 2}) {
        CSixLevels s(mode);
        s.library.manager->FindCategory("C1")->lastLevel = 3;
        s.Refuse(kLevels[5]);  // isn't asked
        OrderSpec order = CSixLevels::Order();
        order.clientType = 3;
        for (const std::int16_t familyLevel : std::initializer_list<std::int16_t>{0, 8}) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << " family of level " << familyLevel);
            s.library.manager->FindCategory("F1")->lastLevel = familyLevel;
            const std::int64_t in = familyLevel == 8 ? 210 : 110;  // accounts take every order
            const Answer answer = s.Check(order);
            EXPECT_TRUE(answer.Passed()) << answer.text;
            EXPECT_EQ(answer.levelCheckFlags, 1 << 3);
            EXPECT_EQ(answer.limitRows.size(), familyLevel == 8 ? 6U : 3U) << "of the client, and the family with it";
            EXPECT_EQ(s.Pending("C1"), static_cast<double>(in) * 25000);
            EXPECT_EQ(s.Held("C1", Period::kExpiry)->data.orderBuyQty, in);
            // The family is checked, but keeps the order only at its own level.
            EXPECT_EQ(s.Pending("F1"), (familyLevel == 8 ? 110 : 10) * 25000.0);
            EXPECT_EQ(s.Held("F1", Period::kDaily)->data.orderBuyQty, familyLevel == 8 ? 110 : 10);
            for (const char* entity : {"S1", "D1", "G1", "-"}) {
                EXPECT_EQ(s.Pending(entity), 10 * 25000.0) << entity;
                EXPECT_EQ(s.Held(entity, Period::kExpiry)->data.orderBuyQty, 10) << entity;
                EXPECT_EQ(s.HeldBy(entity, Period::kExpiry, entity == kLevels[0].code ? "C1" : "G1", "C1")
                              ->data.orderBuyQty, in) << entity;
            }
            // Where the house aggregates, such clients are kept apart at the root.
            const auto* apart = s.library.manager->FindCategory("-")->Book(Period::kDaily).clientLevelExposures.Find(
                {kMaskNseCash, PositionFamily::kPlain, kToken});
            EXPECT_EQ(apart ? apart->data.orderBuyQty : 0, mode == 2 ? in - 10 : 0);
        }
    }
}

TEST(LevelWalk, AChangedOrderTakesThePlaceOfTheStoredOne) {
    CSixLevels s;
    s.Market(kMaskNseCash, kToken, 24900, 25100, 25000, 25000);
    OrderSpec change = CSixLevels::Order();
    change.messageCode = 2040;
    change.quantity = 150;
    change.price = 24000;
    change.hasStored = true;
    change.storedQuantity = 10;
    change.storedPrice = 25000;
    EXPECT_TRUE(s.Check(change).Passed());
    for (const LevelOfHouse& level : kLevels) {
        EXPECT_EQ(s.Pending(level.code), 150 * 24000.0) << level.code;
        EXPECT_EQ(s.Held(level.code, Period::kDaily)->data.orderBuyQty, 150) << level.code;
    }
    // Taken back in full, the order leaves nothing.
    change.storedQuantity = 150;
    change.storedPrice = 24000;
    change.quantity = 0;
    EXPECT_TRUE(s.Check(change).Passed());
    EXPECT_EQ(s.Pending("D1"), 0);

    // An order that went in at market is taken out at the price that the check had taken.
    OrderSpec atMarket = CSixLevels::Order();
    atMarket.price = 0;
    EXPECT_TRUE(s.Check(atMarket).Passed());
    EXPECT_EQ(s.Pending("D1"), 100 * 25100.0);
    change.storedQuantity = 100;
    change.storedPrice = 0;
    change.quantity = 20;
    EXPECT_TRUE(s.Check(change).Passed());
    EXPECT_EQ(s.Pending("D1"), 20 * 24000.0);
    EXPECT_EQ(s.HeldBy("D1", Period::kExpiry, "G1", "C1")->data.orderBuyValue, 20 * 24000.0);
    // A stored order of no quantity has no price to be taken out at, whatever the market.
    change.storedQuantity = 0;
    EXPECT_TRUE(s.Check(change).Passed());
    EXPECT_EQ(s.Pending("D1"), 40 * 24000.0);
}

}  // namespace
}  // namespace surv::test
