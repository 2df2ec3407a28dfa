// What people are shown: the wrong word for a refusal, or a limit in the wrong unit, misleads where numbers can't.

#include <gtest/gtest.h>

#include "order_view.h"
#include "pretty.h"
#include "summary.h"
#include "text_format.h"

namespace survhost {
namespace {

/// `answer` to an order of S1, C1, F1, D1 and G1.
OrderView ViewOf(const Json& answer) {
    const Json line = ParseLine(
        R"({"call":"CheckSurveillance","request":{"groupCode":"G1","groupType":5,"dealerCode":"D1","familyCode":"F1",
            "clientCode":"C1","clientType":2,"subClientCode":"S1","subClientType":7},"order":{}})");
    return ViewOrder({line, answer, std::nullopt}).value();
}

TEST(OrderView, RefusalsOfOneRuleShareItsName) {
    const std::tuple<const char*, const char*> cases[]{
        {"|Order failed Max. Single Transaction Qty Check where the limit is 500 and current value is 1000  of ",
         "Max. Single Transaction Qty"},
        {"C1|Gross Exposure Limit exceeded of ", "Gross Exposure"},
        {"C1|Limits not Set or Invalid Client Code : C1 ", "Limits not Set or Invalid Client Code"},
        {"Only Square Off Orders allowed - User is in SquareOff mode",
         "Only Square Off Orders allowed - User is in SquareOff mode"},
        {"Trigger Price out of range[925.37 - 846.73] of Symbol-[SBIN] for ", "Trigger Price out of range"},
        {"MTF Order Not Allowed for the scrip - 3M for ", "MTF Order Not Allowed"},
        {"", ""},
    };
    for (const auto& [text, rule] : cases) {
        EXPECT_EQ(ViewOf({{"result", 0}, {"status", -312}, {"errorText", text}}).rule, rule);
    }
}

TEST(Pretty, AnOrderIsOneLine) {
    const Json line = ParseLine(
        R"({"call":"CheckSurveillance","request":{"messageCode":2000,"groupCode":"G1","dealerCode":"D1","clientCode":"C1",
            "clientType":2},"order":{"symbol":"NIFTY","expiryDate":1437696000,"strikePrice":2415050,"optionType":"CE",
            "buySell":2,"quantity":150000,"price":12345678,"productType":1}})");
    const Json answer = ParseLine(
        R"({"call":"CheckSurveillance","result":0,"status":-312,"errorCode":-206,"failedLevelCode":"C1","failedLevelType":2,
            "errorText":"C1|Max. Single Transaction Qty. exceeded of "})");
    EXPECT_EQ(PrettyLine({line, answer, std::nullopt}, Painter(false)),
              "          order        margin       sell  1,50,000 @  1,23,456.78  NIFTY 23JUL25 24150.5CE  G1/D1/C1"
              "               REFUSED [-206, client C1]  Max. Single Transaction Qty. exceeded");
}

TEST(Summary, HoldsEachFigureAgainstItsLimitInOneUnit) {
    const std::tuple<const char*, const char*, double> cases[]{
        {R"({"grossExposureLimit":400,"usedMaxGross":100,"grossUsedMaxGross":300})", "gross exposure", 0.25},
        {R"({"grossExposureLimit":400,"usedMaxGross":100,"grossUsedMaxGross":300,"limitOptions":8})", "gross exposure",
         0.75},
        {R"({"mtmLossLimit":400,"usedMtm":-100})", "mark to market", 0.25},
        {R"({"marginLimit":40000,"usedMarginMax":300})", "margin", 0.75},
        {R"({"turnoverLimit":0,"usedMaxTurnover":1})", "turnover", std::numeric_limits<double>::infinity()},
    };
    for (const auto& [row, limit, share] : cases) {
        const auto uses = LimitUses(ParseLine(row));
        ASSERT_EQ(uses.size(), 1u) << row;
        EXPECT_EQ(uses[0].limit, limit);
        EXPECT_DOUBLE_EQ(uses[0].share, share);
    }
    EXPECT_TRUE(LimitUses(ParseLine(R"({"mtmLossLimit":400,"usedMtm":100,"usedMaxGross":9})")).empty());
}

TEST(TextFormat, GroupsRupeesByLakhAndCrore) {
    const std::tuple<double, const char*> cases[]{
        {0, "0.00"},         {-100000, "-1,000.00"}, {12345678, "1,23,456.78"}, {1e11, "1,00,00,00,000.00"},
        {std::nan(""), "-"},
    };
    for (const auto& [paise, text] : cases) EXPECT_EQ(Rupees(paise), text);
    EXPECT_EQ(Grouped(std::numeric_limits<std::int64_t>::min()), "-92,23,37,20,36,85,47,75,808");
}

}  // namespace
}  // namespace survhost
