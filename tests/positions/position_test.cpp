#include "positions/position.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace surv {
namespace {

std::string Text(std::int64_t quantity, double value) {
    return std::to_string(quantity) + "@" + std::to_string(std::lround(value * 100)) + " ";
}

/// "order traded | order traded" as quantity@value, values in hundredths: the order's own direction, then the other.
std::string Totals(const tagSurvPositionData& d, bool buy = true) {
    const std::string bought = Text(d.orderBuyQty, d.orderBuyValue) + Text(d.tradedBuyQty, d.tradedBuyValue);
    const std::string sold = Text(d.orderSellQty, d.orderSellValue) + Text(d.tradedSellQty, d.tradedSellValue);
    return buy ? bought + "| " + sold : sold + "| " + bought;
}

tagOrderInfoForSurv Order(std::int16_t productType, std::int16_t leg, std::int16_t kind) {
    tagOrderInfoForSurv order;
    order.productType = productType, order.marginPlusLeg = leg, order.orderEventKind = kind;
    order.buySell = kBuy;
    return order;
}

TEST(Position, ChangesReachTheSidesOfTheProductAndTheEvent) {
    using Change = void (CSurvPosition::*)(const tagOrderInfoForSurv&);
    constexpr Change kUpdate = &CSurvPosition::Update11, kReverse = &CSurvPosition::ReversePositions;
    constexpr Change kApplyLeg = &CSurvPosition::ApplyMarginPlusLeg, kReverseLeg = &CSurvPosition::ReverseMarginPlusLeg;
    const struct {
        const char* name;
        Change change;
        std::vector<std::int16_t> products, legs, kinds;
        const char* totals;
    } cases[] = {
        // 10 at 100 come, 3 at 110 go.
        {"open", kUpdate, {1, 2, 8}, {0}, {1, 4, 8}, "10@100000 0@0 | 0@0 0@0 "},
        {"converted", kUpdate, {0x10, 0x20}, {0, 1}, {1, 2}, "10@100000 10@100000 | 0@0 0@0 "},
        {"leg filled", kUpdate, {4}, {1, 2}, {2, 3}, "10@100000 10@100000 | 0@0 0@0 "},
        {"corrected out", kReverse, {1, 4}, {0, 1}, {3}, "-3@-33000 -3@-33000 | 0@0 0@0 "},
        {"conversion corrected", kReverse, {0x10, 0x20}, {0}, {3}, "-3@-33000 -6@-66000 | 0@0 0@0 "},
        // Legs are worth the distance between two prices: entry 130, stop 95.
        {"first leg", kApplyLeg, {4}, {0, 1}, {1, 8}, "10@35000 0@0 | 0@0 0@0 "},
        {"first leg filled", kApplyLeg, {4}, {0, 1}, {2, 3}, "10@35000 10@5000 | 0@0 0@0 "},
        {"second leg", kApplyLeg, {4}, {2}, {1}, "0@0 0@0 | 0@30000 0@0 "},
        {"second leg ended", kApplyLeg, {4}, {2}, {8, 9}, "0@0 0@0 | 0@30000 10@30000 "},
        {"first leg out", kReverseLeg, {4}, {0, 1}, {1, 2, 3, 8}, "-3@-6000 0@0 | 0@0 0@0 "},
        {"second leg traded out", kReverseLeg, {4}, {2}, {2}, "-3@-4500 -3@-4500 | 0@0 0@0 "},
        {"second leg ended out", kReverseLeg, {4}, {2}, {8, 9}, "0@0 0@0 | 0@-6000 -3@-6000 "},
    };
    const auto run = [](const auto& c, tagOrderInfoForSurv order) {
        order.quantity = 10, order.price = 100, order.prevQuantity = 3, order.prevPrice = 110;
        order.firstLegPrice = 130, order.secondLegPrice = 95;
        for (const std::int16_t buySell : {kBuy, kSell}) {
            SCOPED_TRACE(std::string(c.name) + ", kind " + std::to_string(order.orderEventKind));
            order.buySell = buySell;
            CSurvPosition position;
            (position.*c.change)(order);
            EXPECT_EQ(Totals(position.data, buySell == kBuy), c.totals);
        }
    };
    for (const auto& c : cases) {
        for (const std::int16_t product : c.products) {
            for (const std::int16_t leg : c.legs) {
                for (const std::int16_t kind : c.kinds) run(c, Order(product, leg, kind));
            }
        }
    }
}

TEST(Position, McxValuesAreWeightedByLot) {
    const tagMarginRateBlock rates{1, 8, 5, 4, 10};  // 1 / 8 * 101 * 5 / 4 * 10 * 7 = 1104.6875; it goes at 202
    const struct {
        const char* name;
        std::int16_t segment, productType;
        LotWeighting weighting;
        tagMarginRateBlock rates;
        int quantity;
        double added, taken;
    } cases[] = {
        {"weighted", 7, 1, LotWeighting::kOn, rates, 7, 1104.69, -2209.38},
        {"conversion", 7, 0x10, LotWeighting::kOn, rates, 7, 707, -1414},
        {"margin+", 7, 4, LotWeighting::kOn, rates, 7, 707, -1414},
        {"less than nothing", 7, 1, LotWeighting::kOn, rates, -7, 0, 2209.38},
        {"no price denominator", 7, 1, LotWeighting::kOn, {9, 0, 5, 4, 10}, 7, 8837.5, -17675},
    };
    for (const auto& c : cases) {
        tagOrderInfoForSurv order = Order(c.productType, 0, event::kOrder);
        order.marketSegment = c.segment, order.lotWeighting = c.weighting, order.marginRates = c.rates;
        order.quantity = order.prevQuantity = c.quantity;
        order.price = 101, order.prevPrice = 202;
        CSurvPosition added, taken;
        added.Update11(order);
        taken.ReversePositions(order);
        EXPECT_EQ(added.data.orderBuyValue, c.added) << c.name;
        EXPECT_EQ(taken.data.orderBuyValue, c.taken) << c.name;
    }
    EXPECT_EQ(RoundTo(-12.345, 2), -12.35) << "half away from zero";
}

TEST(Position, LastPriceAndLinksFollowTheOrder) {
    tagExposureScripSpecificInfo scrip;
    tagPositionOwnerInfo owner;
    const std::tuple<std::int16_t, int, int> cases[]{
        {event::kOrder, 7, 7}, {event::kOrder, 0, 5}, {event::kTrade, 0, 0}, {event::kCorrection, 0, 0}};
    for (const auto& [kind, orderPrice, lastPrice] : cases) {
        SCOPED_TRACE("kind " + std::to_string(kind) + ", price " + std::to_string(orderPrice));
        tagOrderInfoForSurv order = Order(4, 1, kind);
        order.lastTradedPrice = orderPrice;
        CSurvPosition plain(tagSurvPositionData{.lastPrice = 5, .scripInfo = &scrip, .ownerInfo = &owner});
        CSurvPosition leg = plain, fresh;
        plain.Update11(order);
        leg.ApplyMarginPlusLeg(order);
        EXPECT_EQ(plain.data.lastPrice, lastPrice);
        EXPECT_EQ(leg.data.lastPrice, lastPrice);
        // An order without links leaves them, but not on the road of the legs.
        EXPECT_TRUE(plain.data.scripInfo == &scrip && plain.data.ownerInfo == &owner);
        EXPECT_TRUE(!leg.data.scripInfo && !leg.data.ownerInfo);
        order.scripInfo = &scrip, order.ownerInfo = &owner;
        fresh.Update11(order);
        EXPECT_TRUE(fresh.data.scripInfo == &scrip && fresh.data.ownerInfo == &owner);
    }
}

TEST(Position, ReadingTheDataShortensTheOwnersCode) {
    const std::tuple<const char*, std::int16_t, const char*, const char*> cases[]{
        {"ABCDEF+HIJ+", 0, "ABCDEF", "G1"},
        {"ABCDE+G", 6, "ABCDE+G", ""},
        {"ABCDEFGHIJ+", 5, "ABCDEFGHIJ", "G1"},
    };
    for (const auto& [code, clientLevelType, shortened, group] : cases) {
        tagPositionOwnerInfo owner;
        owner.groupCode = "G1", owner.accountCode = code, owner.clientLevelType = clientLevelType;
        CSurvPosition position(tagSurvPositionData{.orderBuyQty = 4, .ownerInfo = &owner});
        EXPECT_EQ(position.GetPositionData().orderBuyQty, 4);
        EXPECT_EQ(owner.accountCode.View(), shortened);
        EXPECT_EQ(owner.groupCode.View(), group) << code;
    }
    EXPECT_EQ(CSurvPosition{}.GetPositionData().ownerInfo, nullptr);
}

TEST(Position, RowsAddUpAndTheLastOneNamesTheScrip) {
    tagExposureScripSpecificInfo scrip;
    const tagSurvPositionData row{2, 7, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, nullptr, nullptr};
    CSurvPosition merged(tagSurvPositionData{3, 5, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, &scrip, nullptr});
    CSurvPosition added = merged;
    merged.MergePositionData(row);
    added.AddPositionData(row);
    EXPECT_EQ(Totals(merged.data), "11@2200 55@6600 | 33@4400 77@8800 ");
    EXPECT_EQ(Totals(added.data), Totals(merged.data));
    EXPECT_EQ(merged.data.openPositionValue * 1000 + merged.data.mtmValue, 99110);
    EXPECT_TRUE(merged.data.limitMask == 2 && !merged.data.scripInfo);
    EXPECT_EQ(merged.data.lastPrice, 5);
    EXPECT_EQ(added.data.lastPrice, 7);
}

}  // namespace
}  // namespace surv
