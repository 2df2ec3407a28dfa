// What an enquiry is told of one row: every breach, and nothing changed.

#include <gtest/gtest.h>

#include "limits/category_check.h"
#include "support/row_bench.h"

namespace surv::test {
namespace {

/// Sets every limit that an enquiry reports.
void Limit(BKSurveillanceLimitDefTag& row, double limit) {
    for (const RowField& field : {kNetQuantityLimit, kMaxValueLimit, kMaxQuantityLimit, kGrossLimit, kNetLimit,
                                  kNetSaleLimit, kPositionLimit, kPendingLimit, kTurnoverLimit}) {
        field.Set(row, limit);
    }
}

TEST(Report, BitsAddUpTheLastTextStandsAndTheRowStays) {
    RowBench bench(0x1FF);
    BKSurveillanceLimitDefTag& row = bench.row;
    std::memset(static_cast<void*>(&row), 'h', sizeof tagBreachRow::rowHead);
    std::memcpy(row.entityCode, "ABCDEFGH", sizeof row.entityCode);
    Limit(row, 0);
    row.baseFund = 100;
    row.turnoverMultiplier = 20000;  // a limit of 2.00 that only the report knows
    // An enquiry is told of no minimum, no loss and no mode.
    row.minSingleOrderValue = row.minSingleOrderQty = 1'000'000'000;
    row.usedMtm = -500, row.mtmLossLimit = 0;
    bench.order.squareOffOnlyFlag = bench.order.preAutoSquareOffOn = bench.order.autoSquareOffOn = true;
    bench.order.productType = product::kConvertToMargin, bench.order.nriClient = true;
    const BKSurveillanceLimitDefTag before = row;
    tagBreachRow breach;
    std::memset(static_cast<void*>(&breach), 0xFF, sizeof breach);
    const RuleAnswer answer = bench.Report(breach);
    EXPECT_EQ(answer.code, -204);
    EXPECT_EQ(answer.text, "Order failed Turnover  25000.00 exceeded, Limit = 2.00 (Utilised =   0.00)");
    EXPECT_EQ(breach.breachBitsA, 1 | 2 | 8 | 0x40 | 0x10);
    EXPECT_EQ(breach.breachBitsB, 4 | 1 | 2);
    EXPECT_EQ((std::string{breach.rowHead, sizeof breach.rowHead}), std::string(24, 'h'));
    EXPECT_EQ((std::string{breach.entityCode, sizeof breach.entityCode}), (std::string{"ABCDE\0", 6}));
    EXPECT_EQ(breach.token, kAllSecurities);
    EXPECT_EQ(breach.limitMask, 0x1FF);
    EXPECT_EQ(std::memcmp(&row, &before, sizeof before), 0);
    EXPECT_TRUE(bench.undo.Empty());
}

TEST(Report, ARowOverItsLimitIsReportedOnlyIfTheOrderRaisesIt) {
    // An order of 100 at 250.00 changes its price.
    for (const auto& [price, bitsA] : {std::pair{24999, 0x40}, {25000, 0x40}, {25001, 1 | 2 | 8 | 0x10 | 0x40}}) {
        SCOPED_TRACE(price);
        RowBench bench;
        Limit(bench.row, 0);
        bench.row.usedMaxGross = bench.row.usedMaxNet = bench.row.usedMaxNetPosition = 25'000'00;
        bench.row.usedMaxTurnover = 25'000'00, bench.row.usedPendingOrder = 26'000'00;
        bench.held.orderBuyQty = bench.ownHeld.orderBuyQty = bench.order.prevQuantity = 100;
        bench.held.orderBuyValue = bench.ownHeld.orderBuyValue = 25'000'00;
        bench.order.prevPrice = 25000, bench.order.price = price;
        tagBreachRow breach{};
        EXPECT_FALSE(bench.Report(breach).Passed());
        EXPECT_EQ(breach.breachBitsA, bitsA);
    }
}

/// A corrected sale leaves more bought, a corrected purchase more sold: the judgement of an order asks neither.
TEST(Report, NetAndNetSaleAreReportedForBothDirections) {
    for (const std::int16_t buySell : {kBuy, kSell}) {
        SCOPED_TRACE(buySell);
        const bool buys = buySell == kBuy;
        RowBench bench;
        bench.order.buySell = buySell, bench.order.orderEventKind = event::kCorrection;
        bench.order.prevQuantity = 60, bench.order.quantity = 10;
        bench.order.prevPrice = bench.order.price = 20000;
        bench.held = buys ? Traded(60, 20000, 100, 20000) : Traded(100, 20000, 60, 20000);
        (buys ? bench.held.orderBuyQty : bench.held.orderSellQty) += 200;  // so that it squares nothing off
        bench.row.netExposureLimit = bench.row.netSaleExposureLimit = 0;
        tagBreachRow breach{};
        EXPECT_EQ(bench.Report(breach).code, buys ? -221 : -203);
        EXPECT_EQ(breach.breachBitsA, buys ? 4 : 2);
        EXPECT_TRUE(bench.Check().Passed());
    }
}

TEST(Report, AnEnquiryNetsBuysAndSellsOfAnyClient) {
    RowBench bench;
    bench.order.scripInfo = &bench.scrip, bench.order.buySell = kSell, bench.order.nriClient = true;
    CScenario s;
    s.House();
    ASSERT_TRUE(s.Check({}).Passed());
    s.Row("C1", 3).grossExposureLimit = 30'000'00;  // netted it is 25,000.00, together 50,000.00
    for (const CheckMode mode : {CheckMode::kReal, CheckMode::kProbe}) {
        LevelTrial level;
        level.category = s.library.manager->FindCategory("C1");
        level.order = bench.order;
        TrialBuffers buffers;
        EXPECT_EQ(CheckCategory(level, buffers, mode, nullptr).passed, mode == CheckMode::kProbe);
        EXPECT_TRUE(buffers.breaches.empty());
        s.library.context.undo.RestoreBackTo({});
    }
}

}  // namespace
}  // namespace surv::test
