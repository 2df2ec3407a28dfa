// Margins of small books, worked by hand, read where an account holds them and in the limit rows above.

#include <gtest/gtest.h>

#include "margin/tree_margin.h"
#include "support/derivatives.h"

namespace surv::test {
namespace {

// Losses of a long unit as an exchange published them: an index future of NSE, and two options of another house's file.
constexpr RiskArray kNifty{8.72F,    8.72F,    -736.49F,  -736.49F,  753.93F,  753.93F,  -1481.7F,  -1481.7F,
                           1499.14F, 1499.14F, -2226.91F, -2226.91F, 2244.36F, 2244.36F, -1561.89F, 1568.0F};
constexpr RiskArray kCall{-58.250561F, 70.600822F,   -243.384872F, -125.460716F, 77.452339F,   186.120422F,
                          -472.84201F, -386.932892F, 165.730316F,  235.320908F,  -736.952637F, -685.132202F,
                          215.465347F, 249.336716F,  -828.275635F, 80.667511F};
constexpr RiskArray kPut{-62.045307F,  66.806076F,   71.153397F,   189.077545F,  -244.675415F, -136.007339F,
                         160.030243F,  245.939331F,  -474.731415F, -405.140839F, 214.252594F,  266.073059F,
                         -743.329407F, -709.458008F, 87.310066F,   -837.346802F};

TEST(Margin, OfOneUnitIsItsWorstScenario) {
    const std::tuple<const RiskArray&, std::int32_t, std::int16_t, double> cases[]{
        {kNifty, -1, kBuy, 2244.36},
        {kNifty, -1, kSell, 2226.91},
        {kCall, 9600, kSell, 828.275635},
        {kPut, 9600, kSell, 837.346802},
    };
    for (const auto& [array, strike, buySell, scanRisk] : cases) {
        CDerivativeHouse house;
        const Contract contract{.token = 100, .expiryDate = house.Days(30), .strike = strike, .array = array};
        house.File({contract});
        ASSERT_TRUE(house.Order(contract, buySell, 1, 100).Passed());
        for (const std::size_t view : {kOrderView, kWorstView}) {
            EXPECT_NEAR(house.Underlying().view[view].scanRisk, scanRisk, 0.0005);
        }
        EXPECT_EQ(house.Underlying().view[kTradedView].scanRisk, 0.0) << "an open order hasn't traded";
    }
}

/// Long one expiry, short a later one of the same array: the scenarios cancel and the calendar charge stands.
TEST(Margin, OfACalendarSpreadIsItsCharge) {
    CDerivativeHouse house;
    const Contract near{.token = 100, .expiryDate = house.Days(30), .array = kNifty};
    const Contract far{.token = 101, .expiryDate = house.Days(60), .array = kNifty};
    house.File({near, far}, 425.0F);
    ASSERT_TRUE(house.Order(near, kBuy, 65, 2405180).Passed());
    // One leg alone: 65 * 2244.36 = 145,883.40.
    EXPECT_NEAR(house.Row("C1", 0xD).usedMarginOrder, 145883.40, 0.02);
    ASSERT_TRUE(house.Order(far, kSell, 65, 2405180).Passed());

    const UnderlyingBlock& view = house.Underlying().view[kOrderView];
    EXPECT_EQ(view.scanRisk, 0.0);
    EXPECT_EQ(view.calendarCharge, 27625.0);  // 425 * 65
    EXPECT_EQ(view.initialMargin, 27625.0);
    // The worst case: the buy may fill and the sell not, so the spread quantity is 0 and the scan that of 65 long.
    EXPECT_NEAR(house.Underlying().view[kWorstView].initialMargin, 145883.40, 0.02);
    EXPECT_NEAR(house.Row("C1", 0xD).usedMarginOrder, 27625.0, 0.02);
    EXPECT_NEAR(house.Row("C1", 0xD).usedMarginMax, 145883.40, 0.02);
    EXPECT_EQ(house.Row("C1", 4).usedMarginMax, 0.0) << "daily rows hold no margin";
}

TEST(Margin, ChargesRoundToWholeRupeesWithHalfGoingDown) {
    const std::pair<float, double> cases[]{{1.25F, 12}, {1.251F, 13}};
    for (const auto& [charge, rupees] : cases) {
        CDerivativeHouse house;
        const Contract near{.token = 100, .expiryDate = house.Days(30)};
        const Contract far{.token = 101, .expiryDate = house.Days(60)};
        house.File({near, far}, charge);
        ASSERT_TRUE(house.Order(near, kBuy, 10, 100).Passed());
        ASSERT_TRUE(house.Order(far, kSell, 10, 100).Passed());
        EXPECT_EQ(house.Underlying().view[kOrderView].calendarCharge, rupees) << charge;
    }
}

/// At exactly 311460 seconds a contract is in the far bucket and has no spread position.
TEST(Margin, ContractsAboutToExpireStandApartAndHaveNoSpread) {
    const std::tuple<std::int32_t, std::int16_t, double> cases[]{{311459, 7, 0}, {311460, 2, 0}, {311461, 2, 10}};
    for (const auto& [secondsLeft, keySegment, spread] : cases) {
        CDerivativeHouse house;
        const Contract contract{.token = 100, .expiryDate = house.Days(0) + secondsLeft, .array = kNifty};
        house.File({contract});
        ASSERT_TRUE(house.Order(contract, kBuy, 10, 100).Passed());
        const auto* node = house.Account().underlyings.Find(UnderlyingKey{keySegment, kUnderlying});
        ASSERT_NE(node, nullptr) << secondsLeft;
        EXPECT_EQ(node->underlyingMargin->view[kOrderView].spreadLong, spread) << secondsLeft;
    }
}

/// Long options alone cost nothing; worth more than they can lose, they lower the account's margin, but not below 0.
TEST(Margin, LongOptionsAloneNeverCost) {
    CDerivativeHouse house;
    const Contract cheap{.token = 100, .expiryDate = house.Days(30), .strike = 9600, .array = kCall, .price = 2000};
    const Contract dear{.token = 101, .expiryDate = house.Days(30), .strike = 9600, .array = kPut, .price = 30000};
    house.File({cheap, dear});
    ASSERT_TRUE(house.Order(cheap, kBuy, 2, 2000).Passed());
    // Scan 2 * 249.336716 = 498.67 above the value of 2 * 20.00.
    EXPECT_NEAR(house.Underlying().view[kOrderView].initialMargin, 458.67, 0.01);
    EXPECT_EQ(EffectiveMargin(house.Underlying(), kOrderView), 0.0);
    EXPECT_EQ(house.Row("C1", 0xD).usedMarginOrder, 0.0);

    ASSERT_TRUE(house.Order(dear, kBuy, 2, 30000).Passed());
    // Value 40 + 600 = 640; the worst of the two arrays together is scenario 2: 2 * (70.600822 + 66.806076) = 274.81,
    // or scenario 4: 2 * (-125.460716 + 189.077545) = 127.23. The worst of all is scenario 10 and the like, below that.
    EXPECT_NEAR(EffectiveMargin(house.Underlying(), kOrderView), 274.813796 - 640.0, 0.01);
    EXPECT_EQ(house.Account().GetMargin(1, kMaskNseDerivatives), 0.0) << "read with a floor";
    EXPECT_EQ(house.Account().GetOptionValue(1, kMaskNseDerivatives), 64000.0) << "paise, without one";
}

/// The short option minimum stands when the scan is smaller, and the premium received is taken on top.
TEST(Margin, ShortOptionsMeetTheirMinimum) {
    CDerivativeHouse house;
    RiskArray calm{};
    calm[0] = -1.0F;
    const Contract call{.token = 100, .expiryDate = house.Days(30), .strike = 9600, .array = calm, .price = 500};
    house.File({call}, 0.0F, 12.0F);
    ASSERT_TRUE(house.Order(call, kSell, 10, 500).Passed());
    const UnderlyingBlock& view = house.Underlying().view[kOrderView];
    EXPECT_EQ(view.scanRisk, 10.0);
    EXPECT_EQ(view.shortOptionMinimum, 120.0);
    EXPECT_EQ(view.initialMargin, 170.0);  // 120 - (-10 * 5.00)
    EXPECT_EQ(house.Row("C1", 0xD).usedMarginOrder, 170.0);
}

/// Expiries that stand against each other give back 83.33 percent of their exposure margin.
TEST(Margin, ExposureMarginIsNettedBetweenExpiries) {
    CDerivativeHouse house;
    const Contract near{.token = 100, .expiryDate = house.Days(30), .array = kNifty};
    const Contract far{.token = 101, .expiryDate = house.Days(60), .array = kNifty};
    house.ExposureRate(100, 30000);  // 3 percent: paise * 30000 / 10^8 are rupees
    house.ExposureRate(101, 30000);
    house.File({near, far});
    ASSERT_TRUE(house.Order(near, kBuy, 65, 2405180).Passed());
    // 65 * 24,051.80 * 3 percent.
    EXPECT_NEAR(house.Row("C1", 0xD).usedExposureMargin, 46901.01, 0.005);
    ASSERT_TRUE(house.Order(far, kSell, 65, 2405180).Passed());
    // The order view alone: 93,802.02 less 83.33 percent of both sides. But in the worst case one leg stands alone.
    const double netted = house.Underlying().view[kOrderView].exposureMarginTotal -
                          0.8333 * (house.Underlying().view[kOrderView].longSideMargin +
                                    house.Underlying().view[kOrderView].shortSideMargin);
    EXPECT_NEAR(netted, 15636.80, 0.01);
    EXPECT_NEAR(house.Row("C1", 0xD).usedExposureMargin, 46901.01, 0.005) << "the largest of the four views";
}

/// A correction isn't a trade: the traded view catches up with the next one.
TEST(Margin, ACancelledTradeLeavesTheTradedViewUntilTheNextTrade) {
    CDerivativeHouse house;
    const Contract future{.token = 100, .expiryDate = house.Days(30), .array = kNifty};
    house.File({future});
    const auto tell = [&house, &future](std::int16_t code, std::int32_t quantity) {
        OrderSpec event = CDerivativeHouse::SpecOf(future, kBuy, quantity, 100);
        event.messageCode = code, event.hasStored = code != 2000;
        event.storedQuantity = quantity, event.storedPrice = 100;
        ASSERT_EQ(house.Event(event).result, 0);
    };
    const auto expect = [&house](double ordered, double traded) {
        EXPECT_NEAR(house.Underlying().view[kOrderView].scanRisk, ordered, 0.005);
        EXPECT_NEAR(house.Underlying().view[kTradedView].scanRisk, traded, 0.005);
    };
    for (const std::int16_t code : std::initializer_list<std::int16_t>{2000, 2222}) tell(code, 3);
    expect(3 * 2244.36, 3 * 2244.36);
    tell(5440, 3);
    expect(0, 3 * 2244.36);
    for (const std::int16_t code : std::initializer_list<std::int16_t>{2000, 2222}) tell(code, 1);
    expect(2244.36, 2244.36);
}

/// A change of the client's add-on raises what the client's rows take; others stay.
TEST(Margin, TheAddOnRaisesTheRowsOfItsClient) {
    for (const auto& [exchange, mask] : {std::pair{kMaskNseDerivatives, 0xD}, std::pair{kMaskNcdex, 0x101}}) {
        CDerivativeHouse house;
        house.House(0x101);
        const Contract future{.token = 100, .expiryDate = house.Days(30), .array = kNifty, .exchange = exchange};
        house.RiskFile(exchange, {UnderlyingRecord(kUnderlying, 0, 0)}, {ContractRecord(future)});
        OrderSpec order = CDerivativeHouse::SpecOf(future, kBuy, 65, 2405180);
        order.priceMultiplier = 10000;
        ASSERT_TRUE(house.Check(order).Passed());
        house.Preference("C1", exchange, [](auto& p) { p.marginAddOnFactor = 500000; });
        house.Preference("C1", exchange, [](auto& p) { p.marginAddOnFactor = 1000000; });
        house.RiskFile(exchange, {UnderlyingRecord(kUnderlying, 0, 0)}, {ContractRecord(future)});  // the same again
        EXPECT_NEAR(house.Row("C1", static_cast<std::int16_t>(mask)).usedMarginOrder, 2.0 * 145883.40, 0.03);
        EXPECT_NEAR(house.Row("D1", static_cast<std::int16_t>(mask)).usedMarginOrder, 145883.40, 0.02);
    }
}

}  // namespace
}  // namespace surv::test
