#include "demo.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "replay.h"

namespace survhost {
namespace {

/// Plays a small day of its own and gives what is shown.
class Demo : public testing::Test {
 protected:
    void SetUp() override {
        // Tests of this suite may run side by side.
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        folder_ = std::filesystem::path(testing::TempDir()) / ("survhost_demo_" + test);
        std::filesystem::create_directories(folder_);
        day_.open(folder_ / "day.jsonl");
        day_ << R"({"call":"@clock","now":1763695800})" << '\n'
             << R"({"call":"InitializeSurvManager","limitList":[{"entityCode":"-","token":-9,"limitMask":3},)"
             << R"({"entityCode":"G1","token":-9,"limitMask":3},{"entityCode":"D1","token":-9,"limitMask":3},)"
             << R"({"entityCode":"C1","token":-9,"limitMask":3,"maxSingleOrderQty":500,"grossExposureLimit":1e7}]})"
             << '\n';
    }
    void TearDown() override {
        std::istringstream end(R"({"call":"CleanupSurvManager"})");
        Replay({}).Play(end, "end");
        std::filesystem::remove_all(folder_);
    }

    void Order(const char* client, int quantity) {
        day_ << fmt::format(
            R"({{"call":"CheckSurveillance","request":{{"messageCode":2000,"token":2885,"groupCode":"G1","dealerCode":"D1",)"
            R"("clientCode":"{}","subClientType":255,"clientType":2,"levelCheckFlags":62,"priceMultiplier":1}},)"
            R"("order":{{"exchangeMask":1,"symbol":"SCRIP","series":"EQ","buySell":1,"quantity":{},"price":10000,)"
            R"("proClient":1,"productType":1}}}})",
            client, quantity);
        day_ << '\n';
    }
    std::string Play(bool all) {
        day_.close();
        std::ostringstream shown;
        PlayDemo({.examples = folder_.string(), .all = all}, shown, Painter(false));
        return shown.str();
    }
    static int Count(const std::string& text, const std::string& word) {
        int count = 0;
        for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
        return count;
    }

 private:
    std::filesystem::path folder_;
    std::ofstream day_;
};

TEST_F(Demo, TheSampleHoldsOneRefusalOfEachKind) {
    for (int i = 0; i < 20; ++i) Order("C1", 1);
    for (int quantity : {501, 502, 503}) Order("C1", quantity);
    Order("C9", 1);
    Order("C1", 500);
    Order("C1", 500);
    Order("C1", 1);
    const std::string shown = Play(false);
    EXPECT_EQ(Count(shown, "REFUSED [-206, client C1]"), 1);
    EXPECT_EQ(Count(shown, "REFUSED [-208, ahead of the levels]"), 1);
    EXPECT_EQ(Count(shown, "REFUSED [-202, client C1]"), 1);
    EXPECT_EQ(Count(shown, "ACCEPTED"), 12);
    EXPECT_NE(shown.find("1 group, 1 dealer, 1 client; 4 limit rows"), std::string::npos) << shown;
    EXPECT_NE(shown.find("        3   -206  order quantity      Max. Single Transaction Qty"), std::string::npos)
        << shown;
    EXPECT_NE(shown.find("52.1 %  C1       gross exposure   Equity (NSE-Settlement)"), std::string::npos) << shown;
}

TEST_F(Demo, AllShowsEveryOrder) {
    for (int i = 0; i < 20; ++i) Order("C1", 1);
    EXPECT_EQ(Count(Play(true), "ACCEPTED"), 20);
}

}  // namespace
}  // namespace survhost
