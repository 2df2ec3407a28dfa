// What each event moves, worked by hand, and what the library answers to events that tell of nothing it knows.

#include <gtest/gtest.h>

#include "platform/format.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

/// What an entity has ordered and traded, in shares and paise, and what its row of all securities says is open and has
/// changed hands.
std::string Figures(CScenario& s, std::string_view entity = "C1") {
    CSurvPosition* const held = s.Held(entity, Period::kExpiry);
    const tagSurvPositionData p = held ? held->data : tagSurvPositionData{};
    const BKSurveillanceLimitDefTag& row = s.Row(entity, 3);
    return Format("%lld %.0f, %lld %.0f; %.0f %.0f", static_cast<long long>(p.orderBuyQty), p.orderBuyValue,
                  static_cast<long long>(p.tradedBuyQty), p.tradedBuyValue, row.usedPendingOrder,
                  row.usedNetPositionTraded);
}

/// A buy of 60 at 240.00 tells of a stored one of 100 at 250.00, of which 30 have traded.
OrderSpec EventOf(std::int16_t code, std::int16_t status = 0) {
    return {.messageCode = code,
            .quantity = 60,
            .price = 24000,
            .hasStored = true,
            .storedQuantity = 100,
            .storedPrice = 25000,
            .storedFilled = 30,
            .storedStatus = status};
}

TEST(Event, MovesWhatItTellsOf) {
    constexpr const char* kNothing = "0 0, 0 0; 0 0";
    const struct {
        std::vector<std::int16_t> codes;
        std::vector<std::int16_t> states;
        const char* figures;
    } cases[] = {
        {{2000, 2150, 30160}, {0}, "60 1440000, 0 0; 1440000 0"},
        {{2012}, {0}, "0 -60000, 0 0; -60000 0"},
        {{2040}, {0}, "-10 -310000, 0 0; -310000 0"},
        {{2042}, {0}, "10 310000, 0 0; 310000 0"},
        {{2155, 2156, 2075, 2076, 2231, 9002}, {0}, "-70 -1750000, 0 0; -1750000 0"},
        {{2222}, {0, 1, 4}, "0 -60000, 60 1440000; -1500000 1440000"},
        {{2222}, {2, 8, 10}, "60 1440000, 60 1440000; 0 1440000"},
        {{2286, 2288}, {0}, "-60 -1500000, -60 -1500000; 0 0"},
        {{2286, 2288}, {2, 8}, kNothing},
        {{2223}, {0, 0x20}, "0 0, 0 0; 0 2400000"},
        {{2223}, {1, 0x10, 0x4000}, "40 960000, 40 960000; 0 2400000"},
        {{5440}, {0}, "-100 -2500000, -100 -2500000; 0 0"},
        {{5445}, {0}, "-40 -1060000, -40 -1060000; 0 1440000"},
        {{31000}, {0x40, 1, 2, 8, 0x80, 0x800}, "100 2500000, 0 0; 2500000 0"},
        {{31000}, {0x100}, "30 750000, 0 0; 750000 0"},
        {{31000}, {0, 3, 4, 0x10, 0x41, 0x101, 0x200, -1}, kNothing},
        {{2070, 2072, 2073, 2074, 2154, 2212, 2282, 2287}, {0}, kNothing},
    };
    for (const auto& c : cases) {
        for (const std::int16_t code : c.codes) {
            for (const std::int16_t state : c.states) {
                SCOPED_TRACE(testing::Message() << code << " of an order in state " << state);
                CScenario s;
                for (const int mask : {2, 3}) s.House(static_cast<std::int16_t>(mask));
                const EventAnswer answer = s.Event(EventOf(code, state));
                EXPECT_EQ(answer.result, 0);
                EXPECT_EQ(answer.text, "");
                EXPECT_EQ(Figures(s), c.figures);
                if (c.figures != kNothing) {
                    EXPECT_EQ(answer.limitRows.size(), 8) << "each row once";
                }
            }
        }
    }
}

TEST(Event, TakesAPartAMarketPriceAndTheModeIntoAccount) {
    CScenario mode1({.positionMode = 1});
    mode1.House();
    mode1.Event(EventOf(2222, 2));
    EXPECT_EQ(Figures(mode1), "0 -60000, 60 1440000; -1500000 1440000") << "mode 1 doesn't ask for the state";

    // A stored order at market went in at the offer, 251.00.
    for (const auto& [code, figures] :
         {std::pair{2075, "-70 -1757000, 0 0; -1757000 0"}, std::pair{2042, "10 317000, 0 0; 317000 0"},
          std::pair{2222, "0 -66000, 60 1440000; -1506000 1440000"}}) {
        CScenario s;
        s.House();
        s.Market(kMaskNseCash, 2885, 24900, 25100, 25050, 25000);
        OrderSpec event = EventOf(static_cast<std::int16_t>(code));
        event.storedPrice = 0;
        s.Event(event);
        EXPECT_EQ(Figures(s), figures) << code;
    }

    for (const auto& [exchangeMask, cancelled, left] : {std::tuple{8, 20, -20}, {8, 0, -70}, {1, 20, -70}}) {
        CScenario part;
        for (const int mask : {3, 0x11}) part.House(static_cast<std::int16_t>(mask));
        OrderSpec of = EventOf(2075);
        of.exchangeMask = static_cast<std::int16_t>(exchangeMask);
        std::vector<char> request = MakeRequest(of);
        reinterpret_cast<tagOrderRequest*>(request.data() + sizeof(tagSurveillanceInfo))->cancelledQuantity = cancelled;
        part.SendEvent(request);
        EXPECT_EQ(part.Row("C1", exchangeMask == 8 ? 0x11 : 3).usedPendingOrder, left * 25000.0);
    }
}

TEST(Event, ThatCannotBePlacedLeavesNoTrace) {
    using Edit = void (*)(OrderSpec&);
    const struct {
        Edit edit;
        const char* text;
    } cases[] = {
        {[](OrderSpec& e) { e.messageCode = 9999; }, "Invalid Message Code"},
        {[](OrderSpec& e) { e.exchangeMask = 0; }, ""},
        {[](OrderSpec& e) { e.exchangeMask = kMaskMcx, e.strikePrice = 100; }, ""},
        {[](OrderSpec& e) { e.messageCode = 31000, e.hasStored = false; }, ""},
        {[](OrderSpec& e) { e.dealer = "DX", e.group = "GX"; }, "Limits not Set or Invalid Dealer Code : DX "},
        {[](OrderSpec& e) { e.group = "GX", e.family = "FX"; }, "Limits not Set or Invalid Group Code : GX "},
        {[](OrderSpec& e) { e.family = "FX", e.client = "CX"; }, "Limits not Set or Invalid Family Code : FX "},
        {[](OrderSpec& e) {
             e.client = "CX", e.subClient = "SX", e.clientType = 1;
             e.subClientType = 12;
         },
         "Limits not Set or Invalid Client Code : CX "},
        {[](OrderSpec& e) { e.subClient = "SX", e.subClientType = 12; },
         "Limits not Set or Invalid Sub Client Code : SX "},
    };
    for (const auto& c : cases) {
        CScenario s({.featureBits = 0x10});
        s.House();
        s.Event({});
        const std::string before = s.Dump();
        OrderSpec event;
        c.edit(event);
        const EventAnswer answer = s.Event(event);
        EXPECT_EQ(answer.result, -1) << c.text;
        EXPECT_EQ(answer.text, c.text);
        EXPECT_EQ(answer.errorCode, 0);
        EXPECT_EQ(answer.timeStamp, *c.text ? CScenario::kNow : 0) << c.text;
        EXPECT_TRUE(answer.limitRows.empty());
        EXPECT_TRUE(s.Dump() == before) << c.text;
    }
    CScenario rootless;
    for (const char* entity : {"G1", "D1", "C1"}) rootless.Limit(entity, 3);
    EXPECT_EQ(rootless.Event({}).text, "Limits not Set or Invalid dealer Code : - ");
}

TEST(Event, OfTheDealerAloneMovesTheDealer) {
    CScenario s;
    s.House();
    const OrderSpec strangers{.group = "GX", .client = "CX"};
    EXPECT_EQ(s.Event(strangers).result, -1);
    EXPECT_EQ(s.Event(strangers, true).result, 0);
    EXPECT_EQ(Figures(s, "D1"), "100 2500000, 0 0; 2500000 0");
    for (const char* other : {"-", "G1", "C1"}) EXPECT_EQ(Figures(s, other), "0 0, 0 0; 0 0") << other;
}

/// A client of type 6 has no group: its own group level is the client that its sub clients stand under.
TEST(Event, OfASubClientIsHeldUnderTheClient) {
    CScenario s;
    s.House();
    s.Limit("S1", 3);
    ASSERT_EQ(s.Event({.subClient = "S1", .clientType = 6, .subClientType = 12}).result, 0);
    for (const char* entity : {"C1", "S1"}) EXPECT_NE(s.HeldBy(entity, Period::kExpiry, "C1", "C1"), nullptr) << entity;
    EXPECT_NE(s.HeldBy("D1", Period::kExpiry, "", "C1"), nullptr);
    // Of any other client, it stands under the client and the client under its group.
    ASSERT_EQ(s.Event({.client = "C1", .subClient = "S1", .subClientType = 12}).result, 0);
    EXPECT_NE(s.HeldBy("C1", Period::kExpiry, "G1", "C1"), nullptr);
}

TEST(Event, OfTheHousesOwnAccountPutsItUnderMtm) {
    CScenario s({.positionMode = 2});
    s.House();
    s.Limit("*****", 3);
    ASSERT_EQ(s.Event({.messageCode = 2222, .proClient = kProClientOwn, .hasStored = true}).result, 0);
    const CSurveillanceManager& house = *s.library.manager;
    const CBroadcastScrip* const scrip = house.broadcastHash.Find(PlainKey(kMaskNseCash, 2885));
    ASSERT_NE(scrip, nullptr);
    EXPECT_TRUE(scrip->categories.Contains(house.FindCategory("*****")));
}

/// 100 are bought at 250.00, and 40 of them stand for sale: of an NRI only the buys count.
TEST(Event, OfADeliveryIsMarginedWhereDeliveriesCount) {
    for (const char* category : {"", "N"}) {
        CScenario s;
        s.House();
        OrderSpec event{.productType = product::kDelivery, .clientCategory = category};
        ASSERT_EQ(s.Event(event).result, 0);
        event.messageCode = 2222, event.hasStored = true, event.storedQuantity = 100, event.storedPrice = 25000;
        ASSERT_EQ(s.Event(event).result, 0);
        ASSERT_EQ(
            s.Event({.buySell = kSell, .quantity = 40, .productType = product::kDelivery, .clientCategory = category})
                .result,
            0);
        const double ordered = *category ? 25000 : 15000;
        EXPECT_EQ(s.library.manager->FindCategory("C1")->cashMarginNse, (CashMargin{ordered, 25000, 25000}));
        EXPECT_EQ(s.library.manager->FindCategory("D1")->cashMarginNse, CashMargin{});
    }
}

/// Without risk parameters mode 1 doesn't take an event; any other takes it without margin.
TEST(Event, WithoutRiskParameters) {
    for (const std::int16_t mode : std::initializer_list<std::int16_t>{0, 1, 2, 3}) {
        CScenario s({.rpfMarginMode = 1, .positionMode = mode});
        for (const int mask : {5, 0xD}) s.House(static_cast<std::int16_t>(mask));
        OrderSpec future{.exchangeMask = kMaskNseDerivatives, .token = 50, .series = "XX"};
        future.productType = 0, future.expiryDate = 1'000'000'000, future.underlyingToken = 5;
        future.levelMarginFlags = 0x1F;
        const EventAnswer answer = s.Event(future);
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.errorCode, mode == 1 ? -317 : 0);
        EXPECT_EQ(answer.text, mode == 1 ? "RPF Details not available" : "");
        EXPECT_EQ(s.Row("C1", 5).usedPendingOrder, mode == 1 ? 0 : 2'500'000.0);
        EXPECT_EQ(s.Row("C1", 0xD).usedMarginOrder, 0);
    }
}

}  // namespace
}  // namespace surv::test
