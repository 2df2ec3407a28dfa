#include "orderpath/intake.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/scenario.h"

namespace surv::test {
namespace {

/// A request as the intake takes it.
struct Reading {
    std::vector<char> buffer;
    SurvContext context;
    OrderIntake intake;

    explicit Reading(const OrderSpec& spec, OrderRoad road = OrderRoad::kCheck) : buffer(MakeRequest(spec)) {
        intake.view = ViewRequest(Head());
        static_cast<void>(ReadRequest(Head(), context, road, intake));
    }
    tagSurveillanceInfo& Head() { return *reinterpret_cast<tagSurveillanceInfo*>(buffer.data()); }
};

/// Numbers in a row, as the tables below have them.
template <class... Number>
std::string Row(Number... numbers) {
    std::string row;
    ((row += (row.empty() ? "" : " ") + std::to_string(numbers)), ...);
    return row;
}

TEST(Intake, LevelTypesFollowTheirRulesInTurn) {
    const struct {
        const char* name;
        std::uint8_t dealer, client, subClient, group;
        std::int16_t proClient;
        const char* levels;  // client, sub client, group
        const char* parent;
    } cases[] = {
        {"as they are", 0, 2, 12, 11, 1, "2 12 11", "G1"},
        {"client without a group", 0, 6, 12, 11, 1, "6 12 -1", ""},
        {"dealer 1 alone", 1, 255, 255, 11, 1, "1 255 11", "G1"},
        {"group of type 6 alone", 0, 255, 255, 6, 1, "6 255 -1", ""},
        {"group of type 6 under another dealer", 7, 255, 255, 6, 1, "255 255 6", ""},
        {"own account", 4, 255, 12, 11, 2, "-1 -1 -1", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Reading reading({.proClient = c.proClient,
                         .groupType = c.group,
                         .dealerType = c.dealer,
                         .clientType = c.client,
                         .subClientType = c.subClient});
        const tagOrderInfoForSurv& order = reading.intake.order;
        EXPECT_EQ(Row(order.clientLevelType, order.subClientLevelType, order.groupLevelType), c.levels);
        EXPECT_EQ(order.accountCode, std::string_view{c.proClient == 2 ? "*****" : "C1"});
        EXPECT_EQ(ParentCodeOf(order, reading.Head()), std::string_view{c.parent});
    }
}

TEST(Intake, TypesThreeAndFiveNarrowTheLevelsOffMcx) {
    const struct {
        const char* name;
        std::int16_t mask;
        std::uint8_t client, dealer;
        bool narrow;
    } cases[] = {
        {"neither", 1, 2, 0, false},    {"client 3", 1, 3, 0, true},         {"client 5", 8, 5, 0, true},
        {"dealer 5", 2, 255, 5, true},  {"dealer 3", 1, 2, 3, false},        {"on MCX", 0x10, 3, 0, false},
        {"on NCDEX", 0x40, 3, 0, true}, {"on mask 0x20", 0x20, 2, 5, false},
    };
    for (const auto& c : cases) {
        for (const auto& [road, kept] : {std::pair{OrderRoad::kCheck, 0xC8}, std::pair{OrderRoad::kUpdate, 0xE8}}) {
            Reading reading(
                {.exchangeMask = c.mask, .dealerType = c.dealer, .clientType = c.client, .levelCheckFlags = 0xFF},
                road);
            EXPECT_EQ(reading.intake.updateAllLevels, !c.narrow) << c.name;
            EXPECT_EQ(reading.Head().levelCheckFlags, c.narrow ? kept : 0xFF) << c.name;
        }
    }
}

TEST(Intake, OnlyOrdersAndTheirChangesConvert) {
    std::string converting;
    for (const std::int16_t code :
         std::initializer_list<std::int16_t>{2000, 2012, 2040, 2042, 2075, 2150, 2155, 2156, 2222, 30160, 31000}) {
        if (ProductTypeOf(product::kConvertToMargin, code) != product::kNone) converting += Row(code) + " ";
    }
    EXPECT_EQ(converting, "2000 2012 2040 2150 2155 2156 30160 ");
}

TEST(Intake, ACorrectionShowsTheClientOfItsSideAndTheAccountOfTheStoredOrder) {
    for (const std::int16_t side : {kBuy, kSell}) {
        std::vector<char> buffer = MakeRequest({.messageCode = 5445, .buySell = side});
        tagOrderInfo stored{};
        stored.proClient = 2;
        buffer.insert(buffer.end(), reinterpret_cast<char*>(&stored), reinterpret_cast<char*>(&stored + 1));
        auto& request = *reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
        request.levelMarginFlags |= 0x80;
        OrderIntake intake;
        intake.view = ViewRequest(request);
        std::memcpy(intake.view.correction->buyClientAccount, "BUYER-TWELVE", 12);
        std::memcpy(intake.view.correction->sellClientAccount, "SELLR-TWELVE", 12);
        ASSERT_TRUE(ReadRequest(request, SurvContext{}, OrderRoad::kCheck, intake));
        EXPECT_EQ(intake.clientText, std::string_view{side == kBuy ? "BUYER-TWELVE" : "SELLR-TWELVE"});
        EXPECT_EQ(Row(intake.order.proClient, intake.order.clientLevelType), "2 -1");
    }
}

TEST(Intake, NcdexPricesAreScaledAndRoundedHalfUp) {
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    const struct {
        const char* name;
        std::int16_t segment;
        std::int32_t multiplier, price, scaled, strike, scaledStrike;
    } cases[] = {
        {"half up", 8, 15000, 3, 5, 1, 2},        {"below half down", 8, 12000, 2, 2, 0, 0},
        {"no strike", 8, 20000, 7, 14, -4, -4},   {"no multiplier", 8, 0, 7, 7, 3, 3},
        {"another market", 7, 20000, 7, 7, 3, 3}, {"beyond the field", 8, 20000, kMax, kMax, 3, 6},
    };
    for (const auto& c : cases) {
        tagOrderInfoForSurv order;
        order.marketSegment = c.segment, order.priceMultiplier = c.multiplier;
        order.price = order.prevPrice = c.price;
        order.contract.strikePrice = c.strike;
        ScaleNcdexPrices(order);
        EXPECT_EQ(Row(order.price, order.prevPrice, order.contract.strikePrice),
                  Row(c.scaled, c.scaled, c.scaledStrike))
            << c.name;
    }
    CScenario s;
    for (const std::int16_t mask : {std::int16_t{0x100}, std::int16_t{0x101}}) s.House(mask);
    ASSERT_TRUE(s.Check({.exchangeMask = kMaskNcdex, .priceMultiplier = 5000, .expiryDate = 1'000'000'000}).Passed());
    EXPECT_EQ(s.Row("C1", 0x101).usedPendingOrder, 100 * 12500.0);
}

}  // namespace
}  // namespace surv::test
