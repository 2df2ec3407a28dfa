// The margin rule of every set, the texts of the product sets, and the sale of deliveries. Figures are rupees.

#include <gtest/gtest.h>

#include "limits/conversion_trial.h"
#include "limits/holding_trial.h"
#include "limits/row_masks.h"
#include "platform/format.h"
#include "reference/preferences.h"
#include "support/row_bench.h"

namespace surv::test {
namespace {

constexpr int kRupee = 100;

/// 40 at 200.00 are held, 100 at 250.00 are bought, without a rate of the scrip: so an order of 25,000 on 8,000. The
/// row has used 8,000 on the order side, 8,100 traded and 8,200 in the worst case.
RowBench Margined(std::int16_t mask, std::int16_t productType = product::kMargin) {
    RowBench bench(mask);
    bench.held = Traded(40, 20000);
    bench.order.productType = productType, bench.order.deliveryLevel = productType != product::kMargin;
    bench.order.isinCode = "INE002A01018";
    bench.row.usedMarginOrder = 8000, bench.row.usedMarginTraded = 8100, bench.row.usedMarginMax = 8200;
    if (productType == product::kMarginPlus) bench.order.firstLegPrice = 30000, bench.order.secondLegPrice = 25000;
    bench.order.riskPreference.prefExtraMarginRate = 250'000;
    return bench;
}
/// An option order on a tree whose margin goes from 1,000 to 1,500, worst case 1,100 to 1,700, its exposure margin from
/// 200 to 300 and its premium from 0 to 150, worst case from 100 to 300.
RowBench OnTree(std::int16_t mask) {
    RowBench bench = Margined(mask);
    bench.held = {};
    bench.order.marketSegment = bench.scrip.marketSegment = 3;
    bench.order.contract.strikePrice = 20000, bench.order.riskPreference.marginAddOnFactor = 100'000;
    bench.treeBefore = {1000, 0, 1100, 200, 0, 0, 100'00};
    bench.treeAfter = {1500, 0, 1700, 300, 150'00, 0, 300'00};
    bench.row.usedExposureMargin = 50;
    return bench;
}

template <int kFlags>
void Counts(RowBench& b) {
    b.order.riskPreference.marginFlags = kFlags;
}
void PremiumInRow(RowBench& b) { b.row.limitOptions = kPremiumInMargin; }
void NoStrike(RowBench& b) { PremiumInRow(b), b.order.contract.strikePrice = 0; }
void AddOnOfAHalf(RowBench& b) { b.order.riskPreference.marginAddOnFactor = 500'000; }
void MuchTraded(RowBench& b) { b.row.usedMarginTraded = 50000; }
void Correction(RowBench& b) {  // of 40 traded to 100
    b.order.orderEventKind = event::kCorrection, b.order.prevQuantity = 40, b.order.prevPrice = 20000;
    b.row.usedMarginTraded = 9000;
}
void OfType7(RowBench& b) {
    Counts<kExposureMarginCounts>(b);
    b.row.entityLevel = 7, b.settings.limitDetailMessages = 1;
}

TEST(MarginRule, TheGeneralSetWeighsTheLargestOfThreeViews) {
    const struct {
        RowBench bench;
        void (*change)(RowBench&);
        int initial, exposure;
    } cases[] = {
        {Margined(3), nullptr, 33200, 0},
        {Margined(0xF), &MuchTraded, 50000, 0},
        {Margined(0x13), &AddOnOfAHalf, 45700, 0},
        {Margined(2), &Correction, 26000, 0},
        {OnTree(0x1FF), &NoStrike, 8860, 0},
        {OnTree(0x61), &PremiumInRow, 9080, 0},
        {OnTree(0x81), &PremiumInRow, 8860, 0},
        {OnTree(0x7F), &Counts<kPremiumCounts>, 9080, 0},
        {OnTree(0xF), &Counts<kExposureMarginCounts>, 8860, 160},  // 50, the change of 100 and its add-on
        {OnTree(0xD), &OfType7, 8860, 50},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bench.row.limitMask);
        RowBench bench = c.bench;
        if (c.change) c.change(bench);
        bench.order.levelMarginFlag = IsCashExchange(bench.order.ExchangeMask()) ? 0 : 1;
        const int used = c.initial + c.exposure;
        const std::string text = Format(
            "Margin Limit exceeded.Set=%d.00,Used=%d.00(I)(Prev=%d.00)[UsedIM=%d.00,PrevIM=8200.00,EM=%d.00,"
            "MTM=0.00,B.PL=0.00]",
            used - 1, used, 8200 + c.exposure, c.initial, c.exposure);
        ExpectRefusal(bench, {kMarginLimit, 1.0 * used * kRupee, -kRupee, -227, 0, 0, text, ""});
    }
    for (const auto& [mask, used] : {std::pair{0x7F, 75000.0}, std::pair{0x1FF, 50000.0}}) {
        RowBench bench = Margined(static_cast<std::int16_t>(mask), product::kConvertToMargin);
        MuchTraded(bench);
        ExpectRefusal(bench, {kMarginLimit, used * kRupee, -kRupee, -227, 0, 0, "Margin Limit exceeded", ""});
    }
}

/// The set that judges, its text, and what it says was used without and with the order.
struct Set {
    std::int16_t productType;
    const char* form;
    int before, after;
};
constexpr const char* kProductForm = "Margin Limit exceeded. Set = %d.00, Used = %d.00 (M) (Prev = %d.00)";
constexpr Set kSets[] = {
    {product::kDelivery, kProductForm, 8200, 33200},
    {product::kConvertToDelivery, "Limit exceeded-PC.Set=%d.00,Used=%d.00(M)(Prev=%d.00)", 8200, 33200},
    {product::kMarginPlus, "Margin Limit exceeded for Margin Plus Order.Set=%d.00,Used=%d.00(M)(Prev=%d.00)", 8200,
     13200},
    {product::kMtf, kProductForm, 8200, 14450},
};

TEST(MarginRule, ProductSetsSayWhatTheyWeigh) {
    const auto expect = [](const RowBench& bench, const char* form, int set, int used, int before) {
        const std::string text = Format(form, set - 1, used, before);
        ExpectRefusal(bench, {kMarginLimit, 1.0 * set * kRupee, -kRupee, -227, 0x20, 0, text, text});
    };
    for (const Set& set : kSets) {
        RowBench bench = Margined(0x13, set.productType);
        bench.order.riskPreference.marginAddOnFactor = 500'000;  // which is not for them
        expect(bench, set.form, set.after, set.after, set.before);
        // Only two-leg orders weigh the other views.
        bench.row.usedMarginOrder = 90000;
        const int largest = set.productType == product::kMarginPlus ? 95000 : set.after;
        expect(bench, set.form, largest, largest, set.before);
    }
    // 60 are sold: of the 25,000 bought only 13,000 are a net purchase. A conversion frees 3,000 elsewhere.
    RowBench bench = Margined(3, product::kDelivery);
    bench.held = Traded(0, 0, 60, 20000);
    expect(bench, kProductForm, 21200, 21200, 8200);
    bench.held.tradedSellQty = 0, bench.held.tradedSellValue = 0;
    expect(bench, kProductForm, 33200, 33200, 8200);  // a sale that is only open may not come
    bench = Margined(3, product::kConvertToDelivery);
    bench.conversionMargin = -3000;
    expect(bench, kSets[1].form, 30200, 33200, 8200);
    bench.row.limitMask = 0xF, bench.order.buySell = kSell, bench.order.dpSetQty = 1000, bench.row.marginLimit = 0;
    EXPECT_EQ(bench.Check().text, "") << "a sale takes no margin";
}

TEST(MarginRule, TheClientsPreferenceSaysWhatCountsBesideTheMargin) {
    constexpr int kExposure = kExposureMarginCounts, kMtmProfit = kMtmProfitCounts, kMtmLoss = kMtmLossCounts;
    constexpr int kProfit = kBookedProfitCounts, kLoss = kBookedLossCounts;
    const struct {
        int flags, mtm, booked, general, product, shownMtm;
    } cases[] = {
        {0, -100, -30, 0, 0, -100},
        {kMtmProfit, 100, 30, -70, -70, 70},
        {kMtmProfit | kProfit, 100, 30, -100, -100, 70},
        {kMtmProfit | kMtmLoss, 20, 50, 30, 30, -30},
        {kMtmLoss, -100, -30, 100, 70, -100},  // the general set parts a loss where booked figures count
        {kMtmLoss | kProfit, -100, -30, 70, 70, -70},
        {kMtmLoss | kLoss, -100, -30, 100, 100, -70},
        {kLoss, 0, -30, 30, 30, 0},
        {0xFF, -100, -30, 600, 600, -70},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "flags " << c.flags << ", mtm " << c.mtm << ", booked " << c.booked);
        const auto weigh = [&c](RowBench bench) {
            bench.row.usedExposureMargin = 500;
            bench.row.usedMtm = c.mtm * 100.0, bench.row.usedBookedPnl = c.booked * 100.0;
            bench.order.riskPreference.marginFlags = static_cast<std::uint8_t>(c.flags);
            return bench;
        };
        const int used = 33200 + c.general;
        const std::string text = Format(
            "Margin Limit exceeded.Set=%d.00,Used=%d.00(I)(Prev=%d.00)[UsedIM=33200.00,PrevIM=8200.00,EM=%d.00,"
            "MTM=%d.00,B.PL=%d.00]",
            used - 1, used, 8200 + c.general, c.flags & kExposure ? 500 : 0, c.shownMtm, c.booked);
        ExpectRefusal(weigh(Margined(0x1FF)), {kMarginLimit, 1.0 * used * kRupee, -kRupee, -227, 0, 0, text, ""});
        for (const Set& set : kSets) {
            const int after = set.after + c.product;
            const std::string told = Format(set.form, after - 1, after, set.before + c.product);
            ExpectRefusal(weigh(Margined(0x1FF, set.productType)),
                          {kMarginLimit, 1.0 * after * kRupee, -kRupee, -227, 0x20, 0, told, told});
        }
    }
}

TEST(MarginRule, LevelsWithoutMarginLetDerivativesButThoseOfMcxPass) {
    std::string judged;
    for (const std::int16_t flag : {std::int16_t{0}, std::int16_t{1}}) {
        for (std::int16_t segment = 1; segment <= 8; ++segment) {
            RowBench bench(0x1FF);
            bench.row.marginLimit = -200, bench.order.levelMarginFlag = flag, bench.order.marketSegment = segment;
            if (!bench.Check().Passed()) judged.append(Format("%d", segment));
        }
        judged.append("|");
    }
    EXPECT_EQ(judged, "147|12345678|");
}

TEST(MarginRule, AnEnquiryIsToldOfARowThatStoodAboveItsLimit) {
    constexpr std::uint8_t kSpan = kExposureMarginInLimit;
    constexpr const char* kInitial = "Initial Margin Limit exceeded. Set = %d.00, Used = %d.00 (%s) (Prev = %d.00)";
    const struct {
        std::int16_t mask;
        std::uint8_t options;
        int order, traded, worst, figure;
        std::string text;
    } cases[] = {
        {3, 0, 8000, 8100, 8200, 8200, Format(kInitial, 8199, 8200, "M", 8200)},
        {0x81, 0, 8300, 8100, 8200, 8300, Format(kInitial, 8299, 8300, "O", 8300)},
        {0x61, 0, 8000, 8300, 8200, 8300, Format(kInitial, 8299, 8300, "T", 8300)},
        {0xD, kSpan, 8000, 8300, 8200, 8350,
         "SPAN Margin Limit exceeded. Set = 8349.00, Used = 8350.00(E) (Prev = 8250.00) [Details ->UsedIM = 8300.00, "
         "PrevIM = 8200.00, EM = 50.00]"},
        {3, kSpan, 8000, 8100, 8200, 0, ""},
        {4, 0, 8000, 8100, 8200, 0, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        RowBench bench = OnTree(c.mask);
        bench.order.levelMarginFlag = 1;
        BKSurveillanceLimitDefTag& row = bench.row;
        row.limitOptions = c.options;
        row.usedMarginOrder = c.order, row.usedMarginTraded = c.traded, row.usedMarginMax = c.worst;
        tagBreachRow breach;
        const auto report = [&](double limit) {
            row.marginLimit = limit * kRupee;
            return bench.Report(breach).text;
        };
        EXPECT_EQ(report(c.figure), "");
        EXPECT_EQ(report(c.figure - 1), c.text);
        EXPECT_EQ(breach.breachBitsA, c.text.empty() ? 0 : 0x20);
        row.entityLevel = 7;
        EXPECT_EQ(report(c.figure - 1), c.text.substr(0, c.text.find("exceeded") + 8)) << "the short one";
        bench.held = Traded(0, 0, 100, 20000);
        EXPECT_EQ(report(c.figure - 1), "") << "it only squares off";
        bench.held = {}, bench.order.levelMarginFlag = 0, bench.order.marketSegment = 1;
        EXPECT_EQ(report(c.figure - 1), "") << "a level without margin, on any market";
    }
}

TEST(MarginRule, AConversionFreesMarginOnTheSideItTakesFrom) {
    tagExposureScripSpecificInfo scrip;
    scrip.marketSegment = 1, scrip.scripRates = {0, 1, 2000};
    tagOrderInfoForSurv order;
    order.marketSegment = 1, order.riskPreference.marginAddOnFactor = 100'000;
    ConversionTrial conversion;
    conversion.before = CSurvPosition(Traded(100, 25000));
    conversion.after = CSurvPosition(Traded(60, 25000));
    conversion.before.data.scripInfo = conversion.after.data.scripInfo = &scrip;
    order.productType = product::kConvertToDelivery;
    EXPECT_EQ(ConversionMargin(order, conversion), -2200) << "a fifth of 10,000, and the add-on";
    order.productType = product::kConvertToMargin;
    EXPECT_EQ(ConversionMargin(order, conversion), -10000);
}

/// An order of the last quantity passes, one share more doesn't.
TEST(DeliverySell, WhatIsHeldAndBoughtMustCoverIt) {
    const std::string plain =
        "Delivery Order Sell Qty Limit exceeded QTY (DP+SAR) Set = %d, Net Used = %d , (DP+SAR)"
        "Prev Blocked = %d, Today Free Qty = %d ";
    const std::string conversion = "Limit exceeded Set = %d, N.Used = %d ,Prev= %d, T.Free Qty = %d ";
    const struct {
        const char* name;
        std::int16_t productType;
        bool compulsory;
        int bought, ordered;  ///< traded, and open to sell
        int set, blocked, free, last;
        int used;  ///< by the order that is refused
    } cases[] = {
        {"at the depository", product::kDelivery, false, 0, 0, 100, 30, 0, 70, 71},
        {"beside an open sale", product::kDelivery, false, 50, 20, 100, 30, 30, 100, 101},
        {"of compulsory delivery", product::kDelivery, true, 200, 20, 100, 30, 0, 70, 71},
        {"conversion", product::kConvertToDelivery, false, 0, 0, 100, 30, 0, 70, 71},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RowBench bench = Margined(3, c.productType);
        bench.order.buySell = kSell, bench.order.compulsoryDelivery = c.compulsory;
        bench.held = Traded(c.bought, 20000);
        bench.held.orderSellQty = c.ordered;
        bench.held.orderBuyQty += 1000;  // covers nothing before it trades
        bench.order.dpSetQty = c.set, bench.order.dpPrevBlockedQty = c.blocked, bench.order.dpTodayFreeQty = c.free;
        bench.order.quantity = c.last;
        EXPECT_EQ(bench.Check().text, "");
        ++bench.order.quantity;
        const RuleAnswer answer = bench.Check();
        const std::string& form = c.productType == product::kDelivery ? plain : conversion;
        EXPECT_EQ(answer.text, Format(form.c_str(), c.set, c.used, c.blocked, c.free));
        EXPECT_EQ(answer.code, -227);
    }
}

/// 100 are held, 80 of them as collateral at 10.00 less a tenth: 720.00. 300.00 are due of today's sales. Both
/// exchanges have bought, sold and blocked some.
TEST(DeliverySell, AnOrderBlocksReceiptsThenSharesAndMovesTheFund) {
    const struct {
        const char* name;
        std::int16_t segment, buySell;
        bool nri, compulsory;
        std::array<std::int32_t, 3> asked;    ///< set, blocked before, free of today's
        std::array<std::int64_t, 2> blocked;  ///< after an order of 60: receipts, shares
        double collateral, saleCredit;        ///< changes, paise
    } cases[] = {
        {"sale", 1, kSell, false, false, {120, 10, 10}, {20, 30}, -117'00, 0},
        {"of an NRI", 1, kSell, true, false, {100, 10, 0}, {0, 100}, -747'00, 0},
        {"of compulsory delivery", 1, kSell, false, true, {120, 10, 0}, {20, 80}, -567'00, 0},
        {"on BSE", 4, kSell, false, false, {107, 9, 0}, {7, 73}, -522'00, 0},
        {"purchase", 1, kBuy, false, false, {120, 10, 10}, {0, 0}, 0, -150'00},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CScenario s;
        s.House();
        CSurveillanceCategory& category = *s.library.manager->FindCategory("C1");
        tagOrderInfoForSurv order;
        order.marketSegment = c.segment, order.nriClient = c.nri, order.compulsoryDelivery = c.compulsory;
        order.productType = product::kDelivery, order.deliveryLevel = true;
        order.isinCode = "INE002A01018", order.levelCode = "C1";
        Holding& held = category.holdingsByIsin.FindOrMake(order.isinCode);
        held.holdingQty = 100, held.collateralQty = 80, held.collateralPrice = 1000, held.haircutRate = 1000;
        held.nse.sarQty = 20, held.nse.blockedQty = 5, held.nse.sarBlockedQty = 2;
        held.nse.tradedBuyQty = 50, held.nse.orderSellQty = 40;
        held.nse.tradedSellValue = 500'00, held.nse.orderBuyValue = 200'00;
        held.bse.sarQty = 7, held.bse.blockedQty = 3, held.bse.sarBlockedQty = 1;
        held.bse.tradedBuyQty = 10, held.bse.orderSellQty = 30;
        held.collateralValue = held.FormCollateralValue(), held.saleCredit = held.FormSaleCredit();
        const CSurvPosition before(Traded(0, 0));
        CSurvPosition after;
        if (c.buySell == kSell) after.data.orderSellQty = 60, after.data.orderSellValue = 150'00;
        if (c.buySell == kBuy) after.data.orderBuyQty = 60, after.data.orderBuyValue = 150'00;

        TryHolding(category, order, before, after);
        EXPECT_EQ((std::array{order.dpSetQty, order.dpPrevBlockedQty, order.dpTodayFreeQty}), c.asked);
        EXPECT_NEAR(order.collateralDelta, c.collateral, 1e-6);
        EXPECT_EQ(order.saleCreditDelta, c.saleCredit);
        CommitHolding(category, order, before, after);
        const HoldingSide& side = held.Of(c.segment);
        EXPECT_EQ((std::array{side.sarBlockedQty, side.blockedQty}), c.blocked);
        EXPECT_NEAR(category.collateralTotal, c.collateral, 1e-6);
        EXPECT_EQ(category.saleCreditTotal, c.saleCredit);
    }
}

}  // namespace
}  // namespace surv::test
