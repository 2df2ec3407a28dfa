#include <gtest/gtest.h>

#include "support/scenario.h"

namespace surv::test {
namespace {

TEST(Check, CodesThatDecideBeforeAnythingIsLookedUp) {
    CScenario s;
    EXPECT_TRUE(s.Check({.messageCode = 2070}).Passed());
    constexpr std::int16_t kUnknown[] = {2012, 2222, 31000, 4711};
    for (const std::int16_t code : kUnknown) {
        const Answer answer = s.Check({.messageCode = code});
        EXPECT_EQ(answer.result, -1) << code;
        EXPECT_EQ(answer.status, 1) << code;
        EXPECT_EQ(answer.text + answer.failedLevelCode, "") << code;
    }
    EXPECT_EQ(s.Check({.exchangeMask = 0}).result, -1);
}

TEST(Check, ACorrectedTradeHasNothingPending) {
    CScenario s;
    s.House(5);
    s.Row("C1", 5).usedPendingOrder = 14'000'00;
    OrderSpec correction{.messageCode = 5445, .exchangeMask = kMaskNseDerivatives, .token = 50, .hasStored = true};
    correction.storedQuantity = 40, correction.storedPrice = 25000;
    ASSERT_TRUE(s.Check(correction).Passed());
    EXPECT_EQ(s.Row("C1", 5).usedPendingOrder, 0);
}

TEST(MarketPrice, AnOrderAtMarketIsValuedAtTheFirstPriceThereIs) {
    const struct {
        const char* name;
        std::int32_t bid, offer, last, close, bought, sold;
    } cases[] = {
        {"own side first", 100, 200, 300, 400, 200, 100},
        {"the other side", 100, 0, 300, 400, 100, 100},
        {"last trade", 0, 0, 300, 400, 300, 300},
        {"close", 0, 0, 0, 400, 400, 400},
        {"nothing", 0, 0, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        for (const std::int16_t side : {kBuy, kSell}) {
            SCOPED_TRACE(testing::Message() << c.name << ", side " << side);
            CScenario s;
            s.House();
            s.Market(kMaskNseCash, 2885, c.bid, c.offer, c.last, c.close);
            const std::int32_t price = side == kBuy ? c.bought : c.sold;
            EXPECT_EQ(s.Check({.buySell = side, .quantity = 10, .price = 0}).status, price ? 1 : -314);
            EXPECT_EQ(s.Row("C1", 3).usedPendingOrder, 10.0 * price);
            if (price == 0) continue;
            OrderSpec change{.messageCode = 2040, .buySell = side, .quantity = 4, .price = 500, .hasStored = true};
            change.storedQuantity = 10;  // at market as well: it went in at the same price
            EXPECT_TRUE(s.Check(change).Passed());
            EXPECT_EQ(s.Row("C1", 3).usedPendingOrder, 4 * 500);
        }
    }
}

TEST(MarketPrice, WithoutAMarketTheOrderIsHeld) {
    CScenario s;
    s.House();
    s.Market(kMaskNseCash, 2886, 1, 1, 1, 1);
    const std::string before = s.Dump();
    for (const OrderSpec& order : {OrderSpec{.price = 0}, OrderSpec{.messageCode = 30160}}) {
        const Answer answer = s.Check(order);
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.Head(), "-314, 0, 0 at now: D1, -1") << "no code is changed";
        EXPECT_EQ(answer.text, "C1|Market for SCRIP EQ does not exist. Order pending with admin");
    }
    EXPECT_TRUE(s.Dump() == before);
    s.Market(kMaskNseCash, 2885, 1, 1, 1, 1);
    EXPECT_TRUE(s.Check({.price = 0}).Passed());
}

TEST(OrderPolicy, WhatAnOrderMayBe) {
    constexpr std::uint8_t kNoNewPositions = 1 << 5;
    const char* const kNoNew = "New Positions for given scrip are not allowed for ";
    const struct {
        const char* name;
        OrderSpec order;
        std::int16_t positionMode;
        std::uint8_t requestFlags;
        const char* text;  // empty: it passes
        std::int16_t errorCode;
    } cases[] = {
        {"closed scrip", {}, 1, kNoNewPositions, kNoNew, -227},
        {"sale of what is held", {.buySell = kSell, .quantity = 60}, 1, kNoNewPositions, "", 0},
        {"sale of one more", {.buySell = kSell, .quantity = 61}, 1, kNoNewPositions, kNoNew, -227},
        {"of another account", {.buySell = kSell, .quantity = 1, .client = "C2"}, 1, kNoNewPositions, kNoNew, -227},
        {"no product", {.productType = 0}, 0, 0, "Wrong Product type ", -227},
        {"NRI client", {.clientCategory = "N"}, 0, 0, "Only Delivery Order Allowed", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CScenario s({.positionMode = c.positionMode});
        s.House();
        s.House(17);
        s.Limit("C2", 3);
        EXPECT_TRUE(s.Check({.quantity = 60}).Passed());
        s.HeldBy("-", Period::kExpiry, "G1", "C1")->data.tradedBuyQty = 60;
        const std::string before = s.Dump();
        std::vector<char> buffer = MakeRequest(c.order);
        reinterpret_cast<tagSurveillanceInfo*>(buffer.data())->requestFlags |= c.requestFlags & 0xFE;
        const Answer answer = s.Send(buffer);
        EXPECT_EQ(answer.text, c.text) << "no client ahead of it";
        EXPECT_EQ(answer.status, *c.text ? -312 : 1);
        EXPECT_EQ(answer.errorCode, c.errorCode);
        EXPECT_TRUE(answer.Passed() || s.Dump() == before);
    }
}

}  // namespace
}  // namespace surv::test
