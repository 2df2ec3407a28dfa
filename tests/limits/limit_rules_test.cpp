// The rules at one row: what breaks each, what its refusal and its report say, and who is exempt.

#include <gtest/gtest.h>

#include <limits>

#include "platform/format.h"
#include "support/row_bench.h"

namespace surv::test {
namespace {

using Order = tagOrderInfoForSurv;

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

/// 40 at 200.00 are held in the order's direction, and in the account's own position 60 in the other. So an exposure
/// goes from 8,000 to 33,000; the own gross from 12,000 to 13,000, the own net from 0 to 13,000.
RowBench Used(std::int16_t buySell, std::int16_t mask = 3) {
    RowBench bench(mask);
    bench.order.buySell = buySell;
    bench.held = buySell == kBuy ? Traded(40, 20000) : Traded(0, 0, 40, 20000);
    bench.ownHeld = buySell == kBuy ? Traded(0, 0, 60, 20000) : Traded(60, 20000);
    bench.row.usedMaxGross = 10'000'00, bench.row.usedMaxNet = 11'000'00, bench.row.usedMaxNetSale = 12'000'00;
    bench.row.usedMaxNetPosition = -5'000'00, bench.row.usedPendingOrder = 14'000'00;
    bench.row.usedMaxTurnover = 15'000'00, bench.row.grossUsedMaxGross = 16'000'00;
    bench.row.grossUsedMaxNet = 17'000'00, bench.row.grossUsedMaxNetSale = 18'000'00;
    bench.row.usedMtm = -7'000'00;
    return bench;
}

TEST(LimitRules, ExposuresAreRefusedOnePaisaAboveTheirLimit) {
    const struct {
        std::int16_t buySell, mask;
        std::uint8_t options;
        RowField limit;
        double used, now;  ///< rupees
        int code, bit;
        const char *what, *reported;
    } cases[] = {
        {kSell, 3, 0, kGrossLimit, 10000, 35000, -202, 1, "Gross Exposure", "Gross Exposure "},
        {kBuy, 3, 0, kNetLimit, 11000, 36000, -203, 2, "Net Exposure", "Net Exposure "},
        {kBuy, 0x40, 0, kNetLimit, 11000, 36000, -203, 2, "Net Purchase", "Net Purchase "},
        {kSell, 3, 0, kNetSaleLimit, 12000, 37000, -221, 4, "Net Sale Exposure", "Net Sale Exposure "},
        {kSell, 8, 0, kNetSaleLimit, 12000, 37000, -221, 4, "Net Write", "Net Write "},
        {kSell, 3, 0, kPositionLimit, 5000, 30000, -201, 8, "Net Position", "Net Position "},
        // On the gross basis the account's own exposures count.
        {kBuy, 3, 8, kGrossLimit, 16000, 17000, -202, 1, "Gross Exposure(Gross)", "Gross Exposure(Grossing)"},
        {kBuy, 3, 8, kNetLimit, 17000, 30000, -203, 2, "Net Exposure(Gross)", "Net Exposure(Grossing) "},
        {kSell, 0xD, 8, kNetSaleLimit, 18000, 31000, -221, 4, "Net Write(Gross)", "Net Write(Grossing) "},
    };
    for (const auto& c : cases) {
        RowBench bench = Used(c.buySell, c.mask);
        bench.row.limitOptions = c.options;
        const std::string text =
            Format("Order failed %s check where the limit is %.2f, prev. utilized was %.2f and current value is %.2f ",
                   c.what, c.now - 0.01, c.used, c.now);
        const std::string report = Format("Order failed %s %.2f exceeded, Limit = %.2f (Utilised =  % .2f)", c.reported,
                                          c.now, c.now - 0.01, c.used);
        ExpectRefusal(bench, {c.limit, c.now * 100, -1, c.code, c.bit, 0, text, report});
    }
}

TEST(LimitRules, SizesPendingOrdersTurnoverAndLossAreRefusedBeyondTheirLimit) {
    const std::string quantity =
        "Order failed Net Quantity check where the limit is 139 , prev. utilized was 40 and current value is 140 ";
    const std::string quantityReport = "Order failed Net Quantity 140 exceeded, Limit = 139 (Utilised =   40)";
    ExpectRefusal(Used(kBuy), {kNetQuantityLimit, 140, -1, -229, 0, 4, quantity, quantityReport});
    ExpectRefusal(Used(kSell), {kNetQuantityLimit, 140, -1, -229, 0, 4, quantity, quantityReport});
    const RowRefusal others[] = {
        {kMaxValueLimit, 25'000'00, -1, -205, 0, 1,
         "Order failed Max. Single Transaction Value Check where the limit is 24999.99 and current value is 25000.00 ",
         "Order failed Max. Single Transaction Value 25000.00 exceeded 24999.99 Limit"},
        {kMaxQuantityLimit, 100, -1, -206, 0, 2,
         "Order failed Max. Single Transaction Qty Check where the limit is 99 and current value is 100 ",
         "Order failed Max. Single Transaction Qty 100 exceeded 99 Limit"},
        {kMinValueLimit, 25'000'00, 1, -205, 0, 0,
         "Order failed Minimum. Single Transaction Value Check where the limit is 25000.01 and current value is "
         "25000.00 ",
         ""},
        {kMinQuantityLimit, 100, 1, -206, 0, 0,
         "Order failed Min. Single Transaction Qty Check where the limit is 101 and current value is 100 ", ""},
        {kPendingLimit, 39'000'00, -1, -220, 0x40, 0,
         "Order failed Pending Order check where the limit is 38999.99, prev. utilized was 14000.00 and Current Value "
         "is 39000.00 ",
         "Order failed Pending Order  39000.00 exceeded, Limit = 38999.99 (Utilised =   14000.00)"},
        {kTurnoverLimit, 40'000'00, -1, -204, 0x10, 0,
         "Order failed Turnover check where the limit is 39999.99, prev. utilized is   15000.00 and current value is "
         "40000.00 ",
         "Order failed Turnover  40000.00 exceeded, Limit = 39999.99 (Utilised =   15000.00)"},
        {kMtmLossLimit, 7'000'00, -1, -222, 0, 0,
         "Order failed MTM Loss check where the limit is 6999.99, prev. utilized was 7000.00 ", ""},
    };
    for (const RowRefusal& other : others) ExpectRefusal(Used(kSell), other);
}

/// A rule, and what breaks it alone: a limit out of all reach (no minimum is met, nothing is as low as -10,000,000.00),
/// or something of the order's.
struct Rule {
    const char* name;
    int code;
    RowField limit;
    double refusing;
    void (*set)(RowBench&, bool broken);
    const char* shortText;
};
void TakeIsin(RowBench& b, bool broken) { b.order.isinCode = broken ? "" : "INE002A01018"; }
void MakeNriOfDeliveries(RowBench& b, bool broken) { b.order.nriClient = broken && b.order.IsDelivery(); }
void BlockShares(RowBench& b, bool broken) { b.order.dpPrevBlockedQty = broken ? 1000 : 0; }
void SwitchMode(RowBench& b, bool broken) { b.order.squareOffOnlyFlag = broken; }
void SwitchPre(RowBench& b, bool broken) { b.order.preAutoSquareOffOn = broken; }
void SwitchAuto(RowBench& b, bool broken) { b.order.autoSquareOffOn = broken; }
void MakeNriOfMargin(RowBench& b, bool broken) {
    if (b.order.productType != product::kMargin && b.order.productType != product::kConvertToMargin) return;
    b.order.nriClient = broken, b.order.productType = product::kConvertToMargin;
}
constexpr double kMuch = 1e9;
/// In the order of judgement.
constexpr Rule kRules[] = {
    {"quantity", -229, kNetQuantityLimit, -kMuch, nullptr, "Net Quantity Limit exceeded"},
    {"max.value", -205, kMaxValueLimit, -kMuch, nullptr, "Max. Single Transaction Value exceeded"},
    {"max.qty", -206, kMaxQuantityLimit, -kMuch, nullptr, "Max. Single Transaction Qty. exceeded"},
    {"min.value", -205, kMinValueLimit, kMuch, nullptr, "Minimum. Single Transaction Value Not Satisfied"},
    {"min.qty", -206, kMinQuantityLimit, kMuch, nullptr, "Min. Single Transaction Qty. Not Satisfied "},
    {"isin", -227, {}, 0, &TakeIsin, "ISIN Code Not Available for Buy Delivery Order"},
    {"nri.delivery", -227, {}, 0, &MakeNriOfDeliveries, "NRI Client Position Conversion Not Allowed"},
    {"sell", -227, {}, 0, &BlockShares, "Limit exceeded Set = 1000, N.Used = 100 ,Prev= 1000, T.Free Qty = 0 "},
    {"product_margin", -227, kMarginLimit, -kMuch, nullptr, ""},
    {"gross", -202, kGrossLimit, -kMuch, nullptr, "Gross Exposure Limit exceeded"},
    {"net", -203, kNetLimit, -kMuch, nullptr, "Net Exposure Limit exceeded"},
    {"sale", -221, kNetSaleLimit, -kMuch, nullptr, "Net Sale Exposure Limit exceeded"},
    {"position", -201, kPositionLimit, -kMuch, nullptr, "Net Position Limit exceeded"},
    {"pending", -220, kPendingLimit, -kMuch, nullptr, "Pending Order Limit exceeded"},
    {"turnover", -204, kTurnoverLimit, -kMuch, nullptr, "Turnover Limit exceeded"},
    {"mtm", -222, kMtmLossLimit, -kMuch, nullptr, "MTM Loss Limit exceeded"},
    {"mode", -222, {}, 0, &SwitchMode, "Only Square Off Orders allowed"},
    {"pre", -222, {}, 0, &SwitchPre, "Only Square Off Orders allowed - MTM Pre AutoSquareOff Mode"},
    {"auto", -222, {}, 0, &SwitchAuto, "Only Square Off Orders allowed - MTM AutoSquareOff Mode"},
    {"margin", -227, kMarginLimit, -kMuch, nullptr, "Margin Limit exceeded"},
    {"nri", -227, {}, 0, &MakeNriOfMargin, "NRI client Position Conversion Not allowed"},
};
constexpr double kLoss = 500;

/// A row with a loss at its limit: the automatic modes, with parts of 0, need only be switched on.
RowBench AtLoss(std::int16_t mask, std::int16_t productType = product::kMargin) {
    RowBench bench(mask);
    bench.row.usedMtm = -kLoss, bench.row.mtmLossLimit = kLoss;
    bench.order.productType = productType, bench.order.deliveryLevel = productType != product::kMargin;
    bench.order.isinCode = "INE002A01018", bench.order.dpSetQty = 1000;
    return bench;
}
void Break(RowBench& bench, const Rule& rule) {
    rule.set ? rule.set(bench, true) : rule.limit.Set(bench.row, rule.refusing);
}
void Mend(RowBench& bench, const Rule& rule) {
    rule.set ? rule.set(bench, false) : rule.limit.Set(bench.row, rule.code == -222 ? kLoss : -1);
}
/// The margin rule of the product sets stands ahead of the modes, that of the general set behind them.
bool IsOfOtherSet(const RowBench& bench, const Rule& rule) {
    const bool general = RuleSetOf(bench.order, CheckMode::kReal) == RuleSet::kGeneral;
    return rule.name == std::string_view{general ? "product_margin" : "margin"};
}

/// The names of the rules that refuse the bench's order when each is broken alone.
std::string Refusing(const RowBench& arranged) {
    std::string names;
    for (const Rule& rule : kRules) {
        if (IsOfOtherSet(arranged, rule)) continue;
        RowBench bench = arranged;
        Break(bench, rule);
        const int code = bench.Check().code;
        if (code != 0) names.append(names.empty() ? "" : " ").append(rule.name);
        EXPECT_TRUE(code == 0 || code == rule.code) << rule.name << ": " << code;
    }
    return names;
}

TEST(LimitRules, AnOrderThatBreaksSeveralIsAnsweredByTheFirstAndLeavesNoTrace) {
    const std::string sizes = "max.value max.qty min.value min.qty ";
    const std::string general = "quantity " + sizes + "gross %s position pending turnover mtm mode pre auto margin nri";
    const std::tuple<std::int16_t, std::int16_t, std::string> cases[]{
        {product::kMargin, kBuy, Format(general.c_str(), "net")},
        {product::kMargin, kSell, Format(general.c_str(), "sale")},
        {product::kConvertToDelivery, kBuy, sizes + "isin nri.delivery product_margin pre auto"},
        {product::kConvertToDelivery, kSell, sizes + "isin nri.delivery sell pre auto"},
        {product::kMarginPlus, kBuy, sizes + "product_margin mode pre auto"},
        {product::kMtf, kSell, sizes + "product_margin pre auto"},
    };
    for (const auto& [productType, buySell, order] : cases) {
        RowBench bench = AtLoss(0x1FF, productType);
        bench.order.buySell = buySell;
        // A conversion to margin takes the short texts anywhere, others at entities of type 7.
        bench.row.entityLevel = productType == product::kMargin ? 0 : 7;
        for (const Rule& rule : kRules) {
            if (!IsOfOtherSet(bench, rule)) Break(bench, rule);
        }
        std::string answered;
        for (const Rule& rule : kRules) {
            SCOPED_TRACE(rule.name);
            const BKSurveillanceLimitDefTag before = bench.row;
            const RuleAnswer answer = bench.Check();
            if (IsOfOtherSet(bench, rule) || answer.code != rule.code) continue;
            const std::string words = answer.text.substr(0, answer.text.find(" (limit"));
            if (*rule.shortText && words != rule.shortText) continue;
            answered.append(answered.empty() ? "" : " ").append(rule.name);
            EXPECT_EQ(std::memcmp(&bench.row, &before, sizeof before), 0);
            EXPECT_TRUE(bench.undo.Empty());
            Mend(bench, rule);
        }
        EXPECT_EQ(answered, order);
        EXPECT_TRUE(bench.Check().Passed()) << bench.Check().text;
    }
}

TEST(LimitRules, SquareOffOrdersAreExemptFromTheRulesThatSaySo) {
    const std::string sizes = "max.value max.qty min.value min.qty ";
    const std::string squaring = sizes + "pending turnover nri";
    const std::string buying = "quantity " + sizes + "gross net position pending turnover mtm mode pre auto margin nri";
    constexpr std::uint8_t kNetted = 0;
    const struct {
        const char* name;
        std::int16_t buySell, segment;
        int held, ownHeld;  ///< traded the other way; the order is for 100
        std::uint8_t options;
        bool nri, compulsory;
        std::string refusing;
    } cases[] = {
        {"buy", kBuy, 1, 100, 100, kNetted, false, false, squaring},
        {"buy one too many", kBuy, 1, 99, 99, kNetted, false, false, buying},
        {"NRI client", kBuy, 1, 100, 100, kNetted, true, false, sizes + "gross pending turnover margin nri"},
        {"compulsory delivery", kSell, 4, 100, 100, kNetted, false, true, sizes + "gross pending turnover margin nri"},
        {"NRI client in futures", kBuy, 2, 100, 100, kNetted, true, true, sizes + "pending turnover"},
        {"netted alone, gross basis", kBuy, 1, 100, 0, kGrossBasis, false, false,
         sizes + "gross net pending turnover nri"},
        {"own alone, gross basis", kSell, 1, 0, 100, kGrossBasis, false, false,
         "quantity " + sizes + "position pending turnover mtm mode pre auto margin nri"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RowBench bench = AtLoss(0x1FF);
        bench.order.buySell = c.buySell, bench.order.marketSegment = c.segment, bench.order.nriClient = c.nri;
        bench.order.compulsoryDelivery = c.compulsory, bench.row.limitOptions = c.options;
        const bool buys = c.buySell == kBuy;
        bench.held = buys ? Traded(0, 0, c.held, 20000) : Traded(c.held, 20000);
        bench.ownHeld = buys ? Traded(0, 0, c.ownHeld, 20000) : Traded(c.ownHeld, 20000);
        EXPECT_EQ(Refusing(bench), c.refusing);
        bench.row.grossExposureLimit = 0;
        tagBreachRow breach;
        const bool squares = c.refusing.find("quantity") == std::string::npos && c.options == 0;
        EXPECT_TRUE(!squares || bench.Report(breach).Passed()) << "an enquiry exempts it whoever the client is";
    }
    RowBench open = AtLoss(0x1FF);
    open.held.orderSellQty = 100;
    EXPECT_EQ(Refusing(open), buying) << "what is only ordered is not held";
    RowBench conversion = AtLoss(0x1FF, product::kConvertToMargin);
    conversion.held = Traded(0, 0, 100, 20000);
    EXPECT_EQ(Refusing(conversion), sizes + "pending turnover margin nri") << "it brings its margin with it";
}

TEST(LimitRules, WhatARowTriesHangsOnItsMask) {
    // tried: beside the rules of every row; "option": it speaks of purchases
    const std::tuple<const char*, std::vector<std::int16_t>> cases[]{
        {"", {4, 0x20, 0x180}},
        {" mode", {5, 0x21}},
        {" option", {8, 0xC, 0xE, 0x40, 0x60, 0x7E, 0x1FE}},
        {" mode option", {9, 0x41}},
        {" mtm", {0x80, 0x100}},
        {" mtm margin nri", {2, 0x10, 0x12}},
        {" mtm mode margin nri", {3, 0x11, 0x13, 0x81, 0x101, 0x181}},
        {" mtm mode margin nri option", {0xD, 0xF, 0x61, 0x7F}},
        {" mtm mode pre auto margin nri option", {0x1FF}},
    };
    for (const auto& [tried, masks] : cases) {
        for (const std::int16_t mask : masks) {
            RowBench bench(mask);
            bench.row.netExposureLimit = 0;
            const bool option = bench.Check().text.find("Net Purchase") != std::string::npos;
            EXPECT_EQ(
                Refusing(AtLoss(mask)) + (option ? " option" : ""),
                std::string{"quantity max.value max.qty min.value min.qty gross net position pending turnover"} + tried)
                << mask;
        }
    }
}

TEST(LimitRules, TheModesSayWhatTheyAreAndStartAtTheirPartOfTheMtmLossLimit) {
    const char* pre =
        "Only Square Off Orders allowed - MTM Pre AutoSquareOff Mode (limit is 10000.00, prev. utilized was 5000.01)";
    const char* automatic =
        "Only Square Off Orders allowed - MTM AutoSquareOff Mode (limit is 10000.00, prev. utilized was 7500.01)";
    const struct {
        bool modeOn, preOn, autoOn;
        double mtm;
        const char* text;
    } cases[] = {
        {true, true, true, -9'000'00, "Only Square Off Orders allowed - User is in SquareOff mode"},
        {false, true, true, -5'000'00, ""},
        {false, true, true, -5'000'01, pre},
        {false, false, true, -7'500'00, ""},
        {false, false, true, -7'500'01, automatic},
    };
    for (const auto& c : cases) {
        for (const std::int16_t productType : {product::kMargin, product::kMarginPlus}) {
            SCOPED_TRACE(testing::Message() << c.mtm << ", product " << productType);
            RowBench bench = AtLoss(0x1FF, productType);
            // The product sets tell the automatic modes in full even where figures aren't shown.
            bench.row.entityLevel = c.modeOn || productType == product::kMargin ? 0 : 7;
            bench.row.mtmLossLimit = 10'000'00, bench.row.usedMtm = c.mtm, bench.order.squareOffOnlyFlag = c.modeOn;
            bench.order.preAutoSquareOffOn = c.preOn, bench.order.autoSquareOffOn = c.autoOn;
            bench.order.preAutoSquareOffPart = 500'000, bench.order.autoSquareOffPart = 750'000;
            EXPECT_EQ(bench.Check().text, c.text);
        }
    }
}

TEST(LimitRules, ShortTextsAreForTheRootAdminAndEntitiesOfType7) {
    const struct {
        const char* level;
        std::int16_t entityLevel, productType;
        bool shortAtAll, shortInDetail;
    } cases[] = {
        {"-", 0, 1, true, false},   {"ADMIN", 0, 1, true, false},  {"C1", 7, 1, true, false},
        {"C1", 8, 1, false, false}, {"C1", 0, 0x10, false, false}, {"C1", 0, 0x20, true, true},
    };
    for (const auto& c : cases) {
        for (const std::int16_t detail : {std::int16_t{0}, std::int16_t{1}}) {
            SCOPED_TRACE(testing::Message() << c.level << c.entityLevel << " product " << c.productType << detail);
            RowBench bench;
            bench.order.levelCode = c.level, bench.order.productType = c.productType;
            bench.row.entityLevel = c.entityLevel, bench.row.maxSingleOrderQty = 99;
            bench.settings.limitDetailMessages = detail;
            constexpr const char* kShort = "Max. Single Transaction Qty. exceeded";
            const bool isShort = detail ? c.shortInDetail : c.shortAtAll;
            EXPECT_EQ(bench.Check().text == kShort, isShort);
            tagBreachRow breach;
            EXPECT_EQ(bench.Report(breach).text == kShort, isShort && c.productType == 1) << "no product shortens it";
        }
    }
}

TEST(LimitRules, AFigureThatIsNoNumberAndALimitThatIsNotFiniteRefuse) {
    for (const Rule& rule : kRules) {
        if (rule.set || rule.limit.whole) continue;
        SCOPED_TRACE(rule.name);
        RowBench bench;
        BKSurveillanceLimitDefTag& row = bench.row;
        bench.order.buySell = rule.code == -221 ? kSell : kBuy;
        row.usedMtm = -1;
        for (const double limit : {kInfinite, -kInfinite, kNotANumber}) {
            rule.limit.Set(row, limit);
            EXPECT_EQ(bench.Check().code, rule.code);
        }
        row.usedMaxGross = row.usedMaxNet = row.usedMaxNetSale = row.usedMaxNetPosition = kNotANumber;
        row.usedPendingOrder = row.usedMaxTurnover = row.usedMtm = row.usedMarginMax = kNotANumber;
        rule.limit.Set(row, kMuch);
        EXPECT_EQ(bench.Check().code, rule.name == std::string_view{"max.value"} ? 0 : rule.code);
    }
}

/// A bought option has no gross exposure of its own; where its row tells whole times, its net value of 25,000 counts.
TEST(LimitRules, OptionsCountTheirNetValueInWholeTimesOnCombinedRows) {
    for (const auto& [mask, gross] : {std::pair{0x1FF, 50'000'00}, {9, 0}}) {
        RowBench bench(static_cast<std::int16_t>(mask));
        bench.order.marketSegment = bench.scrip.marketSegment = 3;
        bench.row.limitOptions = kRetainMultiplier;
        bench.row.netExposureMultiplier = 29999;  // 2 whole ones
        ASSERT_TRUE(bench.Check().Passed());
        EXPECT_EQ(bench.row.usedGrossOrder, gross) << mask;
    }
}

TEST(LimitRules, AnOrderOfMcxIsWorthItsLots) {
    for (const auto& [weighting, paise] : {std::pair{LotWeighting::kOn, 5789.06}, {LotWeighting::kOff, 3705.0}}) {
        RowBench bench(0x81);
        bench.order.marketSegment = 7, bench.order.lotWeighting = weighting;
        bench.order.marginRates = {1, 8, 5, 4, 10};
        bench.order.quantity = 3;
        bench.order.price = 1235;  // 1 / 8 * 1235 * 5 / 4 * 10 * 3 = 5789.0625
        bench.row.maxSingleOrderValue = bench.row.minSingleOrderValue = paise;
        EXPECT_EQ(bench.Check().text, "");
    }
}

}  // namespace
}  // namespace surv::test
