// Which rows of a category an order meets, in which order, and what the host is told of a refusal.

#include <gtest/gtest.h>

#include <utility>

#include "support/scenario.h"

namespace surv::test {
namespace {

using Row = BKSurveillanceLimitDefTag;

constexpr std::int32_t kGroupB = -101;
constexpr std::int32_t kScrip = 2885;

const OrderSpec kOrderOfGroupB{.symbol = "SYM", .scripGroupNumber = kGroupB};

/// What is expected of a client's refusal: "quantity 10" or "size 10", by the rule and its limit, and the suffix.
std::string Refusal(const std::string& rule, const std::string& suffix) {
    const std::string limit = rule.substr(rule.find(' ') + 1);
    const std::string text = rule[0] == 'q' ? "Order failed Net Quantity check where the limit is " + limit +
                                                  " , prev. utilized was 0 and current value is 100 "
                                            : "Order failed Max. Single Transaction Qty Check where the limit is " +
                                                  limit + " and current value is 100 ";
    return "C1|" + text + suffix + " of Equity ( NSE-Settlement)  of ";
}

TEST(StoreCheck, AScripRowLiftsANetQuantityRefusalAndTheTextNamesTheRow) {
    // Rows of all securities, the group, the scrip: absent, passing, over net quantity, over order size. Their limits
    // are 10, 20 and 30.
    constexpr const char* kAll = " across all securities";
    constexpr const char* kGroup = " for the Group B";
    constexpr const char* kSymbol = " for SYM EQ";
    // refusing: empty: the order passes
    const std::tuple<const char*, const char*, std::vector<const char*>> cases[]{
        {"", "", {"---", "p--", "ppp", "q-p", "qpp", "qqp", "pqp"}},
        {"quantity 10", kAll, {"q--", "qp-"}},
        {"quantity 20", kAll, {"qq-"}},
        {"quantity 30", kAll, {"q-q", "qqq"}},
        {"size 10", kAll, {"sqq"}},
        {"size 30", kAll, {"q-s", "qqs"}},
        {"quantity 20", kGroup, {"pq-", "-q-"}},
        {"quantity 30", kGroup, {"pqq"}},
        {"size 20", kGroup, {"psp", "-s-", "qsp"}},
        {"size 30", kGroup, {"pqs"}},
        {"quantity 30", kSymbol, {"ppq", "--q"}},
        {"size 30", kSymbol, {"pps", "p-s", "--s"}},
    };
    constexpr std::int32_t kTokens[] = {kAllSecurities, kGroupB, kScrip};
    for (const auto& [refusing, suffix, rows] : cases) {
        for (const char* given : rows) {
            SCOPED_TRACE(given);
            CScenario s;
            s.House();
            s.House(0x13);
            // Without a row of all securities on mask 3 the client still has one on another.
            s.library.manager->FindCategory("C1")->limitStores.Find(3)->store.RemoveRow(kAllSecurities);
            for (int i = 0; i < 3; ++i) {
                const auto limit = [&](Row& row) {
                    if (given[i] == 'q') row.netQuantityLimit = 10 * (i + 1);
                    if (given[i] == 's') row.maxSingleOrderQty = 10 * (i + 1);
                };
                if (given[i] != '-') s.Limit("C1", 3, limit, kTokens[i]);
            }
            const std::string before = s.Dump();
            const Answer answer = s.Check(kOrderOfGroupB);
            if (*refusing) {
                EXPECT_EQ(answer.text, Refusal(refusing, suffix));
                EXPECT_EQ(answer.errorCode, refusing[0] == 'q' ? -229 : -206);
                EXPECT_EQ(s.Dump(), before);
                continue;
            }
            EXPECT_TRUE(answer.Passed()) << answer.text;
            for (int i = 0; i < 3; ++i) {
                if (given[i] == '-') continue;
                EXPECT_EQ(s.Row("C1", 3, kTokens[i]).usedMaxGross, given[i] == 'p' ? 25'000'00 : 0)
                    << "a row that has refused takes no figures";
            }
        }
    }
}

TEST(StoreCheck, AnEnquiryAsksTheScripWhateverTheWiderRowsSay) {
    CScenario s;
    s.House();
    const auto tooLarge = [](Row& row) { row.maxSingleOrderQty = 99; };
    const auto tooMuch = [](Row& row) { row.netQuantityLimit = 99; };
    s.Limit("C1", 2, tooLarge);
    s.Limit("C1", 2, tooLarge, kGroupB);
    s.Limit("C1", 2, tooLarge, kScrip);
    s.Limit("C1", 0x12, tooMuch);
    s.Limit("C1", 0x12, tooMuch, kGroupB);
    s.Limit("C1", 0x1FE);
    s.Limit("C1", 0x13, tooLarge, kScrip);
    s.Limit("G1", 2, tooLarge);
    const std::string before = s.Dump();
    const Answer answer = s.Probe(kOrderOfGroupB);
    std::vector<std::pair<int, int>> found;
    for (const tagBreachRow& row : answer.probeRows) found.emplace_back(row.limitMask, row.token);
    // The group of mask 2 isn't asked behind a refusal, that of mask 0x12 is, its refusal being put off. The last
    // daily row passes, so the settlement rows are asked too.
    const std::vector<std::pair<int, int>> expected{{2, kAllSecurities}, {2, kScrip},    {0x12, kAllSecurities},
                                                    {0x12, kGroupB},     {0x13, kScrip}, {2, kAllSecurities}};
    EXPECT_EQ(found, expected);
    EXPECT_EQ(s.Dump(), before);
}

/// The walk ends once every store of the period has been met. It mustn't end before, whatever else there is.
TEST(StoreCheck, NoStoreIsSkippedForTheSakeOfAnEarlyStop) {
    constexpr std::int16_t kScopes[] = {2, 0x12, 0xE, 0x7E, 0x1FE};
    for (const int period : {0, 1}) {
        for (std::size_t refusing = 0; refusing < std::size(kScopes); ++refusing) {
            for (unsigned present = 0; present < 1U << std::size(kScopes); ++present) {
                CScenario s;
                s.House();
                const auto limit = [&](std::int16_t scope, int odd, std::int32_t size) {
                    s.Limit("C2", static_cast<std::int16_t>(scope + odd),
                            [size](Row& row) { row.maxSingleOrderQty = size; });
                };
                for (std::size_t i = 0; i < std::size(kScopes); ++i) {
                    if (i == refusing)
                        limit(kScopes[i], period, 99);
                    else if (present >> i & 1)
                        limit(kScopes[i], period, -1);
                }
                // The bit that the refusing scope doesn't need says whether the other period has rows.
                if (present >> refusing & 1) limit(0x12, 1 - period, -1);
                EXPECT_EQ(s.Check({.client = "C2"}).errorCode, -206)
                    << kScopes[refusing] + period << " beside " << present;
            }
        }
    }
}

TEST(StoreCheck, ARowThatStandsForTwoOfTheThreeIsAskedOnce) {
    const std::tuple<const char*, std::int32_t, std::int32_t, std::int32_t> cases[]{
        {"the scrip is all securities", kAllSecurities, 0, kAllSecurities},
        {"the scrip is the group", kGroupB, kGroupB, kGroupB},
    };
    for (const auto& [name, token, group, row] : cases) {
        SCOPED_TRACE(name);
        CScenario s;
        s.House();
        OrderSpec order{.token = token, .scripGroupNumber = group};
        if (row != kAllSecurities) {
            s.Row("C1", 3).netQuantityLimit = 10;  // which the scrip's row lifts
            s.Limit("C1", 3, {}, row);
        }
        ASSERT_TRUE(s.Check(order).Passed());
        EXPECT_EQ(s.Row("C1", 3, row).usedMaxGross, 25'000'00);
        order.levelCheckFlags = 62 & ~(1 << 4);  // the client takes the next one in unasked
        ASSERT_TRUE(s.Check(order).Passed());
        EXPECT_EQ(s.Row("C1", 3, row).usedMaxGross, 50'000'00);
    }
}

}  // namespace
}  // namespace surv::test
