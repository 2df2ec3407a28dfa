#include "support/row_bench.h"

#include <gtest/gtest.h>

#include <cstring>

#include "mtm/row_mtm.h"

namespace surv::test {
using Row = BKSurveillanceLimitDefTag;

void RowField::Set(Row& row, double value) const {
    char* place = reinterpret_cast<char*>(&row) + at;
    const auto quantity = whole ? static_cast<std::int32_t>(value) : 0;
    whole ? std::memcpy(place, &quantity, sizeof quantity) : std::memcpy(place, &value, sizeof value);
}

tagSurvPositionData Traded(int bought, int buyPrice, int sold, int sellPrice) {
    tagSurvPositionData position;
    position.orderBuyQty = position.tradedBuyQty = bought;
    position.orderBuyValue = position.tradedBuyValue = 1.0 * bought * buyPrice;
    position.orderSellQty = position.tradedSellQty = sold;
    position.orderSellValue = position.tradedSellValue = 1.0 * sold * sellPrice;
    return position;
}

RowBench::RowBench(std::int16_t mask) : row(EmptyLimit("C1", mask)) {
    order.marketSegment = scrip.marketSegment = 1;
    scrip.priceMultiplier = 1;
    order.token = scrip.token = 2885;
    order.levelCode = "C1";
    order.orderEventKind = event::kOrder, order.productType = product::kMargin, order.buySell = kBuy;
    order.quantity = 100, order.price = 25000;
}

ScripTrial RowBench::Trial(CheckMode mode) {
    order.scripInfo = held.scripInfo = ownHeld.scripInfo = &scrip;
    order.periodicity = row.limitMask;
    ScripTrial trial;
    trial.set = RuleSetOf(order, mode);
    trial.marginBefore = treeBefore, trial.marginAfter = treeAfter, trial.conversionMargin = conversionMargin;
    trial.before = trial.after = CSurvPosition(held);
    trial.grossBefore = trial.grossAfter = CSurvPosition(ownHeld);
    for (CSurvPosition* after : {&trial.after, &trial.grossAfter}) {
        order.productType == product::kMarginPlus ? after->ApplyLegChange(order) : after->ApplyChange(order);
    }
    trial.FormFigures(order, order.NoNetting() ? GrossMode::kBuyPlusSell : GrossMode::kNetted);
    trial.mtm = FormMtmFigures(order, trial.before, trial.after, settings);
    return trial;
}

RuleAnswer RowBench::Check(CheckMode mode, tagBreachRow* breach) {
    const ScripTrial trial = Trial(mode);
    const Judgement::Context context{settings, undo};
    return CSurvLimitEntry(&row).CheckOrder({order, trial, context, breach});
}
RuleAnswer RowBench::Check() { return Check(CheckMode::kReal, nullptr); }
RuleAnswer RowBench::Report(tagBreachRow& breach) {
    breach = {};
    return Check(CheckMode::kProbe, &breach);
}

void ExpectRefusal(const RowBench& bench, const RowRefusal& expected) {
    SCOPED_TRACE(expected.text);
    tagBreachRow breach{};
    RuleAnswer report;
    const auto judge = [&](double limit) {
        RowBench copy = bench;
        expected.limit.Set(copy.row, limit);
        report = copy.Report(breach);
        return copy.Check();
    };
    EXPECT_EQ(judge(-1).text, "") << "no limit";
    EXPECT_EQ(judge(0).Passed(), expected.step > 0) << "0 is a limit";
    EXPECT_EQ(judge(expected.figure).text, "");
    EXPECT_EQ(report.text, "");
    EXPECT_EQ(breach.breachBitsA + breach.breachBitsB, 0);
    const RuleAnswer answer = judge(expected.figure + expected.step);
    EXPECT_EQ(answer.code, expected.code);
    EXPECT_EQ(answer.text, expected.text);
    EXPECT_EQ(report.code, expected.report.empty() ? 0 : expected.code);
    EXPECT_EQ(report.text, expected.report);
    EXPECT_EQ(breach.breachBitsA, expected.bitsA);
    EXPECT_EQ(breach.breachBitsB, expected.bitsB);
}

}  // namespace surv::test
