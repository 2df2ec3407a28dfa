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
        std::int16_t productType;
        tagMarginRateBlock rates;
        double added, taken;
    } cases[] = {
        {"weighted", 1, rates, 1104.69, -2209.38},
        {"conversion", 0x10, rates, 707, -1414},
        {"margin+", 4, rates, 707, -1414},
        {"no price denominator", 1, {9, 0, 5, 4, 10}, 8837.5, -17675},
    };
    for (const auto& c : cases) {
        tagOrderInfoForSurv order = Order(c.productType, 0, event::kOrder);
        order.marketSegment = 7, order.lotWeighting = LotWeighting::kOn, order.marginRates = c.rates;
        order.quantity = order.prevQuantity = 7;
        order.price = 101, order.prevPrice = 202;
        CSurvPosition added, taken;
        added.Update11(order);
        taken.ReversePositions(order);
        EXPECT_EQ(added.data.orderBuyValue, c.added) << c.name;
        EXPECT_EQ(taken.data.orderBuyValue, c.taken) << c.name;
    }
    EXPECT_EQ(RoundTo(-12.345, 2), -12.35) << "half away from zero";
}

}  // namespace
}  // namespace surv
