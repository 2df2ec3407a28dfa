// What a row has used after an order that it let pass, or took in without being asked.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "mtm/row_mtm.h"
#include "support/row_bench.h"

namespace surv::test {
namespace {

using Row = BKSurveillanceLimitDefTag;
using Order = tagOrderInfoForSurv;

TEST(RowFigures, ChecksAndUpdatesMoveWhatTheEventSays) {
    constexpr const char* kSame = nullptr;
    constexpr const char* kNotChecked = "";
    const struct {
        const char* name;
        std::int16_t kind, productType, buySell;
        bool sold;  ///< 100 at 200.00 have traded: bought or sold
        int open;   ///< to buy at 210.00 beside them
        int prevQuantity, prevPrice, quantity, price;
        const char *checked, *updated;
    } cases[] = {
        {"correction of a sale", 3, 0, kSell, true, 0, 40, 20000, 10, 21000,
         "order: gross -5900 sale -5900 position 5900 turnover -5900; "
         "traded: gross -5900 sale -5900 position 5900 turnover -5900; "
         "max: gross -5900 sale -5900 position 5900 turnover -5900; open: pending -14000",
         "order: gross -5900 sale -5900 position 5900 turnover -5900; "
         "traded: gross -5900 sale -5900 position -2100 turnover 2100; "
         "max: gross -5900 sale -5900 position 5900 turnover -5900"},
        {"trade of an open order", 2, 1, kBuy, false, 10, 10, 21000, 10, 20500, kNotChecked,
         "order: gross,net -50 position,turnover -50; traded: gross,net 2050 position,turnover 2050; "
         "max: gross,net -50 position,turnover -50; open: pending -2100 mtm -50"},
        {"conversion to delivery", 1, 0x10, kSell, true, 0, 0, 0, 10, 20500,
         "order: gross 2050 sale 2050 position -2050 turnover 2050; "
         "max: gross 2050 sale 2050 position -2050 turnover 2050; open: pending 2050",
         "order: gross 2050 sale 2050 position -2050 turnover 2050; "
         "traded: gross 2050 sale 2050 position -2050 turnover 2050; "
         "max: gross 2050 sale 2050 position -2050 turnover 2050; open: pending 2050"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RowBench bench;
        bench.held = c.sold ? Traded(0, 0, 100, 20000) : Traded(100, 20000);
        bench.held.orderBuyQty += c.open;
        bench.held.orderBuyValue += c.open * 210'00.0;
        bench.ownHeld = bench.held, bench.row.usedPendingOrder = 14'000'00, bench.order.orderEventKind = c.kind;
        bench.order.productType = c.productType, bench.order.buySell = c.buySell;
        bench.order.prevQuantity = c.prevQuantity, bench.order.prevPrice = c.prevPrice;
        bench.order.quantity = c.quantity, bench.order.price = c.price;
        if (c.kind == event::kTrade) bench.order.lastTradedPrice = 20000;
        const Row before = bench.row;
        if (c.checked != kNotChecked) {
            ASSERT_TRUE(bench.Check().Passed());
            EXPECT_EQ(Changes(before, bench.row), c.checked);
            bench.undo.RestoreBackTo({});
            EXPECT_EQ(std::memcmp(&bench.row, &before, sizeof before), 0) << "what is undone is another row";
        }
        bench.Update();
        EXPECT_EQ(Changes(before, bench.row), c.updated == kSame ? c.checked : c.updated);
        bench.undo.RestoreBackTo({});
        EXPECT_EQ(std::memcmp(&bench.row, &before, sizeof before), 0);
    }
}

TEST(RowFigures, TheMaskTellsWhoseTurnoverStaysAndWhoseOptionsCountNet) {
    const auto isOneOf = [](const auto& masks, std::int16_t mask) {
        return std::find(std::begin(masks), std::end(masks), mask) != std::end(masks);
    };
    constexpr std::int16_t kTurnoverStays[] = {0xD, 0xF, 0x7F, 0x101, 0x181, 0x1FF};
    constexpr std::int16_t kNetCounts[] = {0xE, 0xF, 0x7E, 0x7F, 0x1FE, 0x1FF};
    for (const std::int16_t mask : kRowMasks) {
        RowBench bench(mask);
        bench.order.marketSegment = bench.scrip.marketSegment = 3;  // bought, it has net exposure and no sale value
        bench.row.limitOptions = kRetainMultiplier;
        bench.row.netExposureMultiplier = 29999;  // 2 whole ones
        const std::string own = isOneOf(kNetCounts, mask) ? "gross 50000 net 25000" : "net 25000";
        const std::string turnover = isOneOf(kTurnoverStays, mask) ? "position 25000" : "position,turnover 25000";
        const std::string used =
            "order: " + own + " " + turnover + "; max: " + own + " position,turnover 25000; open: pending 25000";
        ASSERT_TRUE(bench.Check().Passed());
        EXPECT_EQ(Changes(Row{}, bench.row), used) << mask;
        bench.undo.RestoreBackTo({});
        bench.Update();
        EXPECT_EQ(Changes(Row{}, bench.row), used) << mask;
    }
}

TEST(RowFigures, AnOrderIsJudgedByTheFundOfTheMoment) {
    constexpr std::uint8_t kBoth = kFundFlagCollateral | kFundFlagSaleCredit;
    const struct {
        const char* name;
        std::int32_t token;
        int fundFlags;
        std::uint8_t options;
        int limit;
    } cases[] = {
        {"collateral", kAllSecurities, kFundFlagCollateral, 0, 17'300'00},
        {"sale credit", kAllSecurities, kFundFlagSaleCredit, 0, 16'050'00},
        {"both", kAllSecurities, kBoth, 0, 18'350'00},
        {"the scrip's row", 2885, kBoth, 0, 18'000'00},
        {"kept as defined", kAllSecurities, kBoth, kRetainMultiplier, 9'000'00},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RowBench bench;
        bench.row.token = c.token, bench.row.limitOptions = c.options, bench.row.definedFund = 10'000'00;
        bench.row.baseFund = 5'000'00, bench.row.collateralFund = 2'000'00, bench.row.saleCreditFund = 1'000'00;
        bench.row.grossExposureLimit = 9'000'00, bench.row.grossExposureMultiplier = 10000;
        bench.order.riskPreference.fundFlags = static_cast<std::uint8_t>(c.fundFlags);
        bench.order.collateralDelta = 300'00, bench.order.saleCreditDelta = 50'00, bench.order.quantity = 1;
        bench.order.price = c.limit + 1;
        EXPECT_EQ(bench.Check().code, -202);
        EXPECT_EQ(bench.row.collateralFund, 2'000'00) << "a refusal leaves a trace";
        bench.order.price = c.limit;
        const auto expectFund = [&] {
            const bool taken = c.token == kAllSecurities;
            EXPECT_EQ(bench.row.grossExposureLimit, c.limit);
            EXPECT_EQ(bench.row.collateralFund, taken ? 2'300'00 : 2'000'00);
            EXPECT_EQ(bench.row.saleCreditFund, taken ? 1'050'00 : 1'000'00);
        };
        ASSERT_TRUE(bench.Check().Passed());
        expectFund();
        bench.undo.RestoreBackTo({});
        bench.Update();
        expectFund();
    }
}

TEST(RowFigures, SevenLimitsFollowTheirMultiplierAndNoneBecomesNoLimit) {
    Row row = EmptyLimit("C1", 3);
    row.grossExposureLimit = row.pendingOrderLimit = 111;
    RebuildLimits(row, 1'000'000);
    EXPECT_EQ(row.grossExposureLimit, 111) << "it has no multiplier yet";
    row.grossExposureMultiplier = row.pendingOrderMultiplier = 10000;
    row.netExposureMultiplier = 20000, row.netSaleExposureMultiplier = 30000, row.netPositionMultiplier = 5000;
    row.turnoverMultiplier = 40000, row.mtmLossMultiplier = 0, row.marginMultiplier = 2500;
    RebuildLimits(row, 1'000'000);
    EXPECT_EQ(row.grossExposureLimit, 1'000'000);
    EXPECT_EQ(row.netExposureLimit, 2'000'000);
    EXPECT_EQ(row.netSaleExposureLimit, 3'000'000);
    EXPECT_EQ(row.netPositionLimit, 500'000);
    EXPECT_EQ(row.turnoverLimit, 4'000'000);
    EXPECT_EQ(row.mtmLossLimit, 0);
    EXPECT_EQ(row.marginLimit, 250'000);
    EXPECT_EQ(row.pendingOrderLimit, 111) << "its multiplier derives nothing";
    RebuildLimits(row, -1.0);
    EXPECT_EQ(row.grossExposureLimit, std::nextafter(-1.0, -2.0));
}

/// What is booked comes again as the mark of what is open: the MTM is twice the booked profit.
CSurvPosition Booked(int profit, tagExposureScripSpecificInfo& scrip) {
    CSurvPosition position(Traded(20, 10000, 10, 10000 + profit / 10));
    position.data.scripInfo = &scrip, position.data.lastPrice = 10000 + profit / 10;
    return position;
}

/// A row without figures after a move from `before` to `after` of what is booked.
Row MovedRow(int before, int after, const Order& order, std::int16_t segment = 1, std::int16_t positionMode = 0) {
    tagExposureScripSpecificInfo scrip;
    scrip.marketSegment = segment;
    Settings settings;
    settings.positionMode = positionMode;
    Row row{};
    UpdateRowMtm(row, order.riskPreference.marginFlags,
                 FormMtmFigures(order, Booked(before, scrip), Booked(after, scrip), settings));
    return row;
}

TEST(RowMtm, LossesCountAndProfitsOnlyIfTheClientHasItSo) {
    constexpr int kMtmProfits = 1 << 1;
    constexpr int kBookedProfits = 1 << 3;
    constexpr int kOthers = 0xFF & ~kMtmProfits & ~kBookedProfits;
    const std::tuple<int, int, int, int> cases[]{
        {-300, -100, 200, 200},
        {-100, 200, 100, 300},
        {200, -100, -100, -300},
        {500, 200, 0, -300},
    };
    for (const auto& [before, after, losses, all] : cases) {
        for (const int profits : {0, kMtmProfits, kBookedProfits}) {
            SCOPED_TRACE(testing::Message() << before << " to " << after << ", flags " << profits);
            Order order;
            order.riskPreference.marginFlags = static_cast<std::uint8_t>(kOthers | profits);
            const Row row = MovedRow(before, after, order);
            EXPECT_EQ(row.usedMtm, 2 * (profits == kMtmProfits ? all : losses));
            EXPECT_EQ(row.usedBookedPnl, profits == kBookedProfits ? all : losses);
            EXPECT_EQ(row.usedMtmFull, 2 * (after - before));
        }
    }
}

TEST(RowMtm, OptionsNeverCountAndARebuildLaysTheWholeIn) {
    const std::tuple<std::int16_t, std::int16_t, std::int16_t, double> cases[]{
        {1, 0, 1, -200}, {5, 0, 2, -200}, {3, 0, 1, 0},    {6, 0, 1, 0},    {3, 1, 1, 0},
        {1, 1, 0, -200}, {1, 1, 1, -300}, {1, 1, 2, -300}, {1, 1, 3, -300}, {1, 1, 4, -200},
    };
    for (const auto& [segment, recompute, positionMode, change] : cases) {
        SCOPED_TRACE(testing::Message() << segment << " " << recompute << " " << positionMode);
        Order order;
        order.rpfRecomputeFlag = recompute;
        const Row row = MovedRow(-100, -300, order, segment, positionMode);
        EXPECT_EQ(row.usedMtm, 2 * change);
        EXPECT_EQ(row.usedMtmFull, 2 * change);
        EXPECT_EQ(row.usedBookedPnl, change);
    }
}

}  // namespace
}  // namespace surv::test
