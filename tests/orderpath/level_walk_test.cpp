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
};
/// From the lowest to the root.
constexpr LevelOfHouse kLevels[] = {{"S1", "C1"}, {"C1", "G1"}, {"F1", "G1"}, {"D1", "G1"}, {"G1", "G1"}, {"-", "G1"}};

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
    /// The level refuses an order of 100 at the last of its rows.
    void Refuse(const char* entity) { Row(entity, 3, kToken).maxSingleOrderQty = 50; }
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
    const std::string before = s.Dump();
    Answer answer = s.Check(order);
    EXPECT_EQ(answer.errorCode, code::kPendingOrder);
    EXPECT_EQ(answer.failedLevelType, 11) << "as a group";
    EXPECT_TRUE(s.Dump() == before);

    s.Row("D1", 3).pendingOrderLimit = 3 * kHundred;
    answer = s.Check(order);
    EXPECT_TRUE(answer.Passed()) << answer.text;
    EXPECT_EQ(s.Pending("D1"), 3 * kHundred);
    EXPECT_EQ(s.Held("D1", Period::kExpiry)->data.orderBuyQty, 300);
    EXPECT_EQ(s.HeldBy("D1", Period::kExpiry, "D1", "C1")->data.orderBuyQty, 200);
    const auto ofDealer = [](const LimitRow& row) { return FieldText(row.entityCode) == "D1"; };
    EXPECT_EQ(std::count_if(answer.limitRows.begin(), answer.limitRows.end(), ofDealer), 3);
}

TEST(LevelWalk, ANarrowOrderMovesOnlyLevelsThatFollowIt) {
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{2}}) {
        CSixLevels s(mode);
        s.library.manager->FindCategory("C1")->lastLevel = 3;
        s.library.manager->FindCategory("G1")->lastLevel = 5;
        s.Refuse("-");  // isn't asked
        OrderSpec order = CSixLevels::Order();
        order.clientType = 3;
        const Answer answer = s.Check(order);
        EXPECT_EQ(answer.levelCheckFlags, 1 << 3);
        EXPECT_EQ(answer.limitRows.size(), 3U) << "of the client";
        // The family is checked, but keeps the order only where its limits are those of a family. The group's type in
        // the order keeps its rows still, the level of its limits moves what it holds. Accounts take everything.
        EXPECT_EQ(s.State(), "1/1/2 2/2/2 1/1/2 1/1/2 1/2/2 1/1/2 ");

        // Where the house aggregates, such clients are kept apart at the root.
        const auto& apart = s.library.manager->FindCategory("-")->Book(Period::kDaily).clientLevelExposures;
        const CSurvPosition* position = apart.Find({kMaskNseCash, PositionFamily::kPlain, kToken});
        EXPECT_EQ(position ? position->data.orderBuyQty : 0, mode == 2 ? 100 : 0);
    }
}

const CClientBook& BookOf(CScenario& s, std::string_view entity) {
    return s.library.manager->FindCategory(entity)->ClientBook();
}

/// Bought by order in the index of clients; -1: not there.
double Indexed(CScenario& s, std::string_view entity, Period period, std::string_view account) {
    const auto* holders =
        BookOf(s, entity).Of(period).positions.scrips.Find({kMaskNseCash, PositionFamily::kPlain, 2885});
    const CClientPosition* holder = holders ? holders->Find(account) : nullptr;
    return holder ? static_cast<double>(holder->position.data.orderBuyQty) : -1;
}

TEST(LevelWalk, ALevelThatIsOnlyUpdatedMovesPositionsByClientInPlace) {
    CScenario s({.positionMode = 2});
    s.library.context.settings.orderBasedPosition = 1;
    s.House(3);
    OrderSpec order;
    order.levelCheckFlags = 0b0000'0110;  // group and dealer are checked, the client takes it in
    s.Row("D1", 3).maxSingleOrderQty = 50;
    EXPECT_FALSE(s.Check(order).Passed());
    EXPECT_EQ(Indexed(s, "C1", Period::kExpiry, "G1|C1"), 100) << "kept after the refusal";
    EXPECT_EQ(BookOf(s, "C1").totals.Find(ProductGroup::kNormal, 2)->data.orderBuyQty, 100);
    EXPECT_EQ(BookOf(s, "C1").totals.Find(ProductGroup::kNormal, 3)->data.orderBuyQty, 100);
    EXPECT_EQ(BookOf(s, "D1").Of(Period::kExpiry).lists.Of(ProductGroup::kNormal).size(), 0);
    s.Row("D1", 3).maxSingleOrderQty = kNoLimitQuantity;
    ASSERT_TRUE(s.Check(order).Passed());
    EXPECT_EQ(Indexed(s, "C1", Period::kExpiry, "G1|C1"), 200) << "once an order, not in the commit again";
    EXPECT_EQ(Indexed(s, "D1", Period::kExpiry, "G1|C1"), 100);
    ASSERT_TRUE(s.Check({.clientType = 1}).Passed());
    EXPECT_NE(s.HeldBy("-", Period::kExpiry, "G1", "C1    +"), nullptr) << "the root sums under six characters";
    ASSERT_TRUE(s.Check({.clientType = 6}).Passed());
    EXPECT_NE(s.HeldBy("-", Period::kExpiry, "", "C1    +"), nullptr) << "a client without a group";
}

}  // namespace
}  // namespace surv::test
