#include <gtest/gtest.h>

#include "support/scenario.h"

namespace surv::test {
namespace {

/// Of a client of type 1, whose orders the root sums under a '+' account.
const OrderSpec kOrdinary{.clientType = 1};

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

TEST(ClientRecords, MoveWhenTheWholeOrderIsAccepted) {
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{1}, std::int16_t{2}}) {
        SCOPED_TRACE(mode);
        CScenario s({.positionMode = mode});
        s.House(3);
        for (int i = 0; i < 2; ++i) ASSERT_TRUE(s.Check(kOrdinary).Passed());
        const CSurveillanceCategory& root = *s.library.manager->FindCategory("-");
        EXPECT_EQ(root.FindClientBook() != nullptr, mode == 2);
        EXPECT_EQ(root.Book(Period::kExpiry).accounts.accounts.Size(), mode == 2 ? 2 : 1);
        if (mode != 2) continue;
        for (const Period period : kPeriods) {
            const CClientExposure* sum = root.Book(period).accounts.FindAccount("G1", "C1    +");
            EXPECT_TRUE(sum->aggregate);
            EXPECT_EQ(s.HeldBy("-", period, "G1", "C1    +")->data.orderBuyQty, 200);
            const auto listed = root.FindClientBook()->Of(period).lists.Of(ProductGroup::kNormal);
            ASSERT_EQ(listed.size(), 1) << "the '+' account alone, once";
            EXPECT_EQ(listed[0], sum);
            EXPECT_EQ(Indexed(s, "-", period, "G1|C1    +"), -1) << "an open order is no position";
        }
        EXPECT_EQ(root.FindClientBook()->totals.Find(ProductGroup::kNormal, 3), nullptr) << "a check moves no total";
    }
}

TEST(ClientRecords, ARefusalOrAProbeLeavesThemAlone) {
    for (const bool orderBased : {false, true}) {
        CScenario s({.positionMode = 2});
        s.library.context.settings.orderBasedPosition = orderBased ? 1 : 0;
        s.House(3);
        for (const bool known : {false, true}) {
            SCOPED_TRACE(testing::Message() << orderBased << known);
            if (known) {
                ASSERT_TRUE(s.Check(kOrdinary).Passed());
            }
            s.Row("-", 3).maxSingleOrderQty = 50;
            const std::string before = s.Dump();
            EXPECT_FALSE(s.Check(kOrdinary).Passed());
            EXPECT_TRUE(s.Dump() == before);
            s.Probe(kOrdinary);
            EXPECT_TRUE(s.Dump() == before);
            s.Row("-", 3).maxSingleOrderQty = kNoLimitQuantity;
        }
        EXPECT_EQ(Indexed(s, "-", Period::kExpiry, "G1|C1    +"), orderBased ? 100 : -1);
        EXPECT_EQ(Indexed(s, "C1", Period::kDaily, "G1|C1"), orderBased ? 100 : -1);
    }
}

TEST(ClientRecords, ALevelThatIsOnlyUpdatedMovesThemInPlace) {
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
}

TEST(ClientRecords, ATradesMtmMovesItsTotalWhereItsQuantitiesMove) {
    CScenario s({.positionMode = 2});
    s.House(5);
    s.Market(kMaskNseDerivatives, 50, 0, 0, 26000, 26000);
    OrderSpec correction{.messageCode = 5445, .exchangeMask = kMaskNseDerivatives, .token = 50};
    correction.levelCheckFlags = 0b0000'0110;
    ASSERT_TRUE(s.Check(correction).Passed());
    const CSurvPosition* total = BookOf(s, "C1").totals.Find(ProductGroup::kNormal, 5);
    ASSERT_NE(total, nullptr);
    EXPECT_EQ(total->data.mtmValue, 100 * (26000.0 - 25000.0));
    EXPECT_EQ(BookOf(s, "D1").totals.Find(ProductGroup::kNormal, 5), nullptr) << "checked";
    EXPECT_EQ(BookOf(s, "C1").Of(Period::kExpiry).positions.scrips.Size(), 1);
}

}  // namespace
}  // namespace surv::test
