#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "positions/position.h"

namespace surv {
namespace {

constexpr Selector kOrders = Selector::kOrderSide;
constexpr Selector kTrades = Selector::kTradedSide;
constexpr Selector kSelectors[] = {kOrders, kTrades, Selector::kWorstLong, Selector::kWorstShort};

struct Side {
    std::int64_t buyQty;
    double buyValue;
    std::int64_t sellQty;
    double sellValue;
};
// Quantities and values of the four selectors: 60, -25, 45, -10 and 2600, -2100, 1700, -1200.
constexpr Side kMixedOrders{100, 5000, 40, 2400}, kMixedTrades{30, 1200, 55, 3300};
// Net nothing, and bought for more.
constexpr Side kFlatLoss{5, 900, 5, 500};

CSurvPosition Position(const Side& orders, const Side& trades, tagExposureScripSpecificInfo* scrip = nullptr) {
    return CSurvPosition({0, 0, orders.buyQty, orders.buyValue, orders.sellQty, orders.sellValue, trades.buyQty,
                          trades.buyValue, trades.sellQty, trades.sellValue, 0, 0, scrip, nullptr});
}
CSurvPosition Mixed(tagExposureScripSpecificInfo* scrip = nullptr) {
    return Position(kMixedOrders, kMixedTrades, scrip);
}

tagExposureScripSpecificInfo Scrip(int segment) {
    tagExposureScripSpecificInfo scrip;
    scrip.marketSegment = static_cast<std::int16_t>(segment);
    scrip.priceMultiplier = 3, scrip.contract.strikePrice = 7;
    return scrip;
}

template <class... Numbers>
std::string Text(const Numbers&... numbers) {
    std::ostringstream text;
    text.precision(12);
    ((text << " " << numbers + 0), ...);  // a negative zero shows as 0
    return text.str();
}

TEST(Measures, QuantitiesOfEachSelector) {
    const CSurvPosition p = Mixed();
    const std::int64_t net[] = {-1, 60, -25, -1, -45, -10, 45, -10, -1};
    for (int selector = 0; selector < 9; ++selector) EXPECT_EQ(p.GetNetQuantity(selector), net[selector]) << selector;
    std::string sale, buy;
    for (const Selector side : {kOrders, kTrades}) sale += Text(p.GetNetSaleQuantity(side), p.GetSellQty(side));
    for (const Selector side : {kOrders, kTrades}) buy += Text(p.GetNetBuyQuantity(side), p.GetBuyQty(side));
    for (const Selector cross : {Selector::kWorstLong, Selector::kWorstShort}) {
        sale += Text(p.GetCrossNetSaleQuantity(cross)), buy += Text(p.GetCrossNetBuyQuantity(cross));
    }
    EXPECT_EQ(sale, " 0 40 25 55 0 10");
    EXPECT_EQ(buy, " 60 100 0 30 45 0");
    EXPECT_EQ(Position({50, 0, 50, 0}, {}).GetMaxNetQuantity(), 50) << "a tie is bought";
    tagExposureScripSpecificInfo future = Scrip(2);
    EXPECT_EQ(Position(kFlatLoss, kFlatLoss, &future).GetMaxNetExposure(), 0) << "nothing is held";
}

/// Bought at 100 and sold at 120 on average, or the other way round.
TEST(Measures, WhatIsMatchedIsBookedAndWhatIsOpenIsMarked) {
    const tagMarginRateBlock thirty{5, 1, 4, 2, 3};  // 4 / 2 * 5 / 1 * 3
    const std::tuple<int, LotWeighting, Side, int, const char*> cases[]{
        {2, LotWeighting::kOff, {10, 1000, 4, 480}, 110, " 80 140"},
        {1, LotWeighting::kOff, {4, 400, 10, 1200}, 125, " 80 50"},
        {2, LotWeighting::kOff, {10, 1000, 4, 480}, 0, " 80 0"},
        {7, LotWeighting::kOn, {10, 30000, 4, 14400}, 110, " 2400 4200"},
    };
    for (const auto& [segment, weighting, trades, lastPrice, figures] : cases) {
        tagExposureScripSpecificInfo scrip = Scrip(segment);
        scrip.marginRates = thirty;
        CSurvPosition p = Position({}, trades, &scrip);
        p.data.lastPrice = lastPrice;
        EXPECT_EQ(Text(p.GetBookedProfit(weighting), p.GetMTM(weighting)), figures);
    }
}

TEST(Measures, WhereNothingNetsBuysAndSellsOfCashCountTogether) {
    tagExposureScripSpecificInfo cash = Scrip(1), future = Scrip(2);
    EXPECT_EQ(Mixed(&cash).GetGrossExposure(kOrders, 0, GrossMode::kBuyPlusSell), 3 * (5000 + 2400));
    EXPECT_EQ(Mixed(&future).GetGrossExposure(kOrders, 0, GrossMode::kBuyPlusSell), 5000 - 2400);
}

/// 25 more sold than bought at a strike of 7, for 2,100 more.
TEST(Measures, AWrittenOptionIsWorthItsStrikeAndWhatItBrought) {
    tagExposureScripSpecificInfo option = Scrip(3);
    EXPECT_EQ(Mixed(&option).GetNetSaleExposure(kTrades), 25 * 7);
    EXPECT_EQ(Mixed(&option).GetOptionSaleValue(kTrades), 25 * 7 + 2100);
    EXPECT_EQ(Mixed(&option).GetGrossExposure(kOrders, 25000, GrossMode::kNetted), 2 * 2600) << "bought: whole times";
}

tagOrderInfoForSurv MarginOrder(std::int16_t prefMode, std::int32_t prefRate) {
    tagOrderInfoForSurv order;
    order.additionalMargin = {2'500'000, 1'000'000, 3'000'000, 30'000, 20'000};  // all, long, short, sold, bought
    order.riskPreference.prefMarginMode = prefMode, order.riskPreference.prefMarginRate = prefRate;
    return order;
}

TEST(Measures, MarginsOfADerivative) {
    using P = const CSurvPosition&;
    using O = const tagOrderInfoForSurv&;
    using Margin = double (*)(P, O, Selector);
    constexpr Margin kFutures = [](P p, O o, Selector s) { return p.GetFuturesExposureMargin(o, s); };
    constexpr Margin kAdditional = [](P p, O o, Selector s) { return p.GetAdditionalExposureMargin(o, s); };
    constexpr Margin kOption = [](P p, O o, Selector s) { return p.GetOptionExposureMargin(o, s); };
    constexpr Margin kMcxValue = [](P p, O o, Selector s) { return p.GetMcxPositionMargin(o, s, 1, 500); };
    constexpr Margin kMcxUnit = [](P p, O o, Selector s) { return p.GetMcxPositionMargin(o, s, 2, 300); };
    const struct {
        const char* name;
        Margin margin;
        int segment;  // 0: no scrip
        std::int16_t prefMode;
        std::int32_t prefRate;
        const char* margins;  // of the four selectors, and of orders that bought for 400 more and net to nothing
    } cases[] = {
        {"NSE", kFutures, 2, 0, 5'000'000, " 65 52.5 42.5 30 10"},
        {"NCDEX", kFutures, 8, 0, 0, " 6500 5250 4250 3000 1000"},
        {"MCX", kFutures, 7, 0, 0, " 26 63 17 36 0"},
        {"no scrip", kFutures, 0, 1, 5'000'000, " 0 0 0 0 0"},
        {"preference larger for longs only", kFutures, 7, 2, 2'000'000, " 52 63 34 36 0"},
        {"own preference", kFutures, 2, 1, 1'000'000, " 26 21 17 12 4"},
        {"additional", kAdditional, 5, 0, 0, " 52 63 34 36 0"},
        {"additional, option", kAdditional, 3, 0, 0, " 52 5.25 34 2.1 0"},
        {"option", kOption, 3, 0, 4'000'000, " 0 56.875 0 31.75 0"},
        {"table, per unit", kMcxUnit, 7, 0, 990'000, " 180 75 135 30 0"},
        {"table, preference in whole percents", kMcxValue, 7, 1, 129'999, " 3.12 2.52 2.04 1.44 0"},
        {"table, larger preference", kMcxValue, 7, 2, 10'000'000, " 260 210 170 120 0"},
    };
    for (const auto& c : cases) {
        tagExposureScripSpecificInfo info = Scrip(c.segment);
        tagExposureScripSpecificInfo* scrip = c.segment == 0 ? nullptr : &info;
        const tagOrderInfoForSurv order = MarginOrder(c.prefMode, c.prefRate);
        std::string margins;
        for (const Selector s : kSelectors) margins += Text(c.margin(Mixed(scrip), order, s));
        EXPECT_EQ(margins + Text(c.margin(Position(kFlatLoss, {}, scrip), order, kOrders)), c.margins) << c.name;
    }
    tagExposureScripSpecificInfo scrip = Scrip(2);
    tagOrderInfoForSurv rebate = MarginOrder(2, 0);
    rebate.additionalMargin.additionalMarginRate = -2'500'000;
    EXPECT_EQ(Mixed(&scrip).GetFuturesExposureMargin(rebate, kOrders), -65);  // no rate, nothing to compare with
}

TEST(Measures, CashMarginRules) {
    const struct {
        const char* name;
        std::int16_t periodicity, segment, basis;
        double rate;
        std::int16_t prefMode;
        std::int32_t prefRate;
        bool noNetting;
        const char* margins;  // orders, largest; largest of a flat position's open orders
    } cases[] = {
        {"rate", 2, 1, 1, 2000, 0, 990'000, false, " 5.2 5.2 1.8"},
        {"no rate charges the whole value", 2, 1, 0, 0, 0, 0, false, " 26 26 9"},
        {"smaller preference", 2, 1, 1, 2000, 2, 209'999, false, " 5.2 5.2 1.8"},
        {"own preference in whole percents", 2, 1, 1, 2000, 1, 129'999, false, " 3.12 3.12 1.08"},
        {"preference out of scope", 4, 1, 1, 2000, 1, 120'000, false, " 520 520 180"},
        {"per unit", 2, 1, 2, 300, 1, 120'000, false, " 180 180 15"},
        {"per unit against a preference", 2, 1, 2, 300, 2, 0, false, " 0.78 0.78 0.27"},
        {"unknown basis, own preference", 2, 1, 5, 300, 1, 120'000, false, " 3.12 3.12 1.08"},
        {"unknown basis out of scope", 4, 1, 5, 300, 1, 120'000, false, " 0 0 0"},
        {"no netting", 2, 4, 1, 2000, 0, 0, true, " 74 83 14"},
        {"no netting off the cash markets", 2, 2, 1, 2000, 0, 0, true, " 5.2 5.2 1.8"},
    };
    for (const auto& c : cases) {
        tagExposureScripSpecificInfo scrip = Scrip(c.segment);
        tagOrderInfoForSurv order = MarginOrder(c.prefMode, c.prefRate);
        order.periodicity = c.periodicity, order.marketSegment = c.segment;
        (IsCashSegment(c.segment) ? scrip.scripRates : order.scripRates) = {0, c.basis, c.rate};
        const CSurvPosition flat = Position(kFlatLoss, {}, &scrip);
        for (const bool delivery : {true, false}) {
            SCOPED_TRACE(std::string(c.name) + (delivery ? ", compulsory delivery" : ", NRI client"));
            order.compulsoryDelivery = c.noNetting && delivery, order.nriClient = c.noNetting && !delivery;
            EXPECT_EQ(Text(Mixed(&scrip).GetCashMargin(order), Mixed(&scrip).GetMaxCashMargin(order),
                           flat.GetMaxCashMargin(order)),
                      c.margins);
            EXPECT_EQ(flat.GetCashMargin(order) != 0, order.NoNetting());
        }
    }
}

}  // namespace
}  // namespace surv
