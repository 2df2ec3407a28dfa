#include "demo.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "replay.h"

namespace survhost {
namespace {

/// What is shown of a small day, its orders given by client and quantity.
std::string Shown(bool all, const std::vector<std::pair<const char*, int>>& orders) {
    const auto folder = std::filesystem::path(testing::TempDir()) / "survhost_demo";
    std::filesystem::create_directories(folder);
    std::ofstream day(folder / "day.jsonl");
    day << R"({"call":"@clock","now":1763695800})" << '\n'
        << R"({"call":"InitializeSurvManager","limitList":[{"entityCode":"-","token":-9,"limitMask":3},)"
        << R"({"entityCode":"G1","token":-9,"limitMask":3},{"entityCode":"D1","token":-9,"limitMask":3},)"
        << R"({"entityCode":"C1","token":-9,"limitMask":3,"maxSingleOrderQty":500,"grossExposureLimit":1e7}]})" << '\n';
    for (const auto& [client, quantity] : orders) {
        day << R"({"call":"CheckSurveillance","request":{"messageCode":2000,"token":2885,"groupCode":"G1",)"
            << R"("dealerCode":"D1","subClientType":255,"clientType":2,"levelCheckFlags":62,"priceMultiplier":1,)"
            << R"("clientCode":")" << client << R"("},"order":{"exchangeMask":1,"symbol":"SCRIP","series":"EQ",)"
            << R"("buySell":1,"price":10000,"proClient":1,"productType":1,"quantity":)" << quantity << "}}\n";
    }
    day.close();
    std::ostringstream shown;
    PlayDemo({.examples = folder.string(), .all = all}, shown, Painter(false));
    std::istringstream end(R"({"call":"CleanupSurvManager"})");
    Replay({}).Play(end, "end");
    std::filesystem::remove_all(folder);
    return shown.str();
}
int Count(const std::string& text, const std::string& word) {
    int count = 0;
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
    return count;
}

TEST(Demo, TheSampleHoldsOneRefusalOfEachKindAndAllEveryOrder) {
    std::vector<std::pair<const char*, int>> orders(20, {"C1", 1});
    EXPECT_EQ(Count(Shown(true, orders), "ACCEPTED"), 20);
    orders.insert(orders.end(),
                  {{"C1", 501}, {"C1", 502}, {"C1", 503}, {"C9", 1}, {"C1", 500}, {"C1", 500}, {"C1", 1}});
    const std::string shown = Shown(false, orders);
    EXPECT_EQ(Count(shown, "REFUSED [-206, client C1]"), 1);
    EXPECT_EQ(Count(shown, "REFUSED [-208, ahead of the levels]"), 1);
    EXPECT_EQ(Count(shown, "REFUSED [-202, client C1]"), 1);
    EXPECT_EQ(Count(shown, "ACCEPTED"), 12);
    for (const char* line : {"1 group, 1 dealer, 1 client; 4 limit rows",
                             "        3   -206  order quantity      Max. Single Transaction Qty",
                             "52.1 %  C1       gross exposure   Equity (NSE-Settlement)"}) {
        EXPECT_NE(shown.find(line), std::string::npos) << shown;
    }
}

}  // namespace
}  // namespace survhost
