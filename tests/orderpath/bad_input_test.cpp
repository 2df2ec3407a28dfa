// Requests as no host should send them, in buffers without a byte to spare: a read past a field or a record shows
// under the address sanitizer.

#include <gtest/gtest.h>

#include <limits>

#include "orderpath/request_view.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

TEST(BadInput, FieldsWithoutAnEnd) {
    CScenario s({.featureBits = 0x10});
    for (const char* entity : {"-", "XXXXXX"}) s.Limit(entity, 3);
    for (const std::int16_t code : std::initializer_list<std::int16_t>{2000, 2040, 2150, 30160, 5440, 5445}) {
        SCOPED_TRACE(code);
        const OrderSpec spec{.messageCode = code, .hasStored = true, .storedQuantity = 1};
        std::vector<char> buffer = MakeRequest(spec);
        const tagSurveillanceInfo good = *reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
        // Everything that isn't a number is full of letters.
        std::fill(buffer.begin() + 154, buffer.end(), 'X');
        auto& head = *reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
        std::memset(buffer.data(), 'X', sizeof head);
        head.messageCode = code;
        head.levelMarginFlags = good.levelMarginFlags;
        head.requestFlags = good.requestFlags;
        head.token = 7;
        const RequestView view = ViewRequest(head);
        (view.order ? view.order->exchangeMask : view.correction->exchangeMask) = kMaskNseCash;
        (view.order ? view.order->contract : view.correction->contract).strikePrice = 0;
        if (view.order) view.order->price = 0;
        if (view.correction) view.correction->buySellCharacter[0] = '2';
        const std::string before = s.Dump();
        const Answer answer = s.Send(buffer);
        EXPECT_EQ(answer.result, 0);
        if (code == 5445) continue;  // it has a price
        EXPECT_EQ(answer.status, -314);
        EXPECT_EQ(answer.failedLevelCode, "XXXXX") << "cut, and ended";
        EXPECT_EQ(answer.text, "XXXXXXXXXXXX|Market for XXXXXXXXXXXXX XXX does not exist. Order pending with admin");
        EXPECT_TRUE(s.Dump() == before);
    }
}

TEST(BadInput, NumbersAtTheirEnds) {
    CScenario s({.featureBits = 0x10});
    s.House();
    s.House(2);
    s.Market(kMaskNseCash, 2885, 1, 1, 1, 1);
    const std::int32_t ends[] = {kMin, -1, 0, 1, kMax};
    s.Row("-", 3).maxSingleOrderQty = kMax - 1;
    for (const std::int32_t quantity : ends) {
        for (const std::int32_t price : ends) {
            for (const std::int16_t code : std::initializer_list<std::int16_t>{2000, 2040}) {
                SCOPED_TRACE(testing::Message() << code << ": " << quantity << " at " << price);
                const OrderSpec order{.messageCode = code, .quantity = quantity, .price = price,
                                      .scripGroupNumber = quantity, .priceMultiplier = price, .hasStored = true,
                                      .storedQuantity = price, .storedPrice = quantity};
                const std::string before = s.Dump();
                s.Probe(order);
                EXPECT_TRUE(s.Dump() == before);
                const bool passed = s.Check(order).Passed();
                EXPECT_EQ(passed, quantity != kMax);
                EXPECT_TRUE(passed || s.Dump() == before);
            }
        }
    }
    EXPECT_EQ(s.Check({.token = kMin, .scripGroupNumber = kMin}).status, 1);
    EXPECT_EQ(s.Check({.token = kAllSecurities, .scripGroupNumber = kAllSecurities}).status, 1);
}

TEST(BadInput, LevelsAndMarketsThatDoNotExist) {
    CScenario s({.featureBits = 0x10});
    s.House();
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{7, 45, 128, 255}) {
        const OrderSpec order{.groupType = type, .dealerType = type, .clientType = type, .subClientType = 255,
                              .levelCheckFlags = 255, .levelMarginFlags = 0x7F};
        EXPECT_TRUE(s.Check(order).Passed()) << int{type};
    }
    const std::string before = s.Dump();
    for (const std::int16_t mask : std::initializer_list<std::int16_t>{-1, 3, 5, 0x20, 0x100, 0x7FFF, -0x8000}) {
        SCOPED_TRACE(mask);
        const Answer answer = s.Check({.exchangeMask = mask, .levelCheckFlags = 0});
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.text, "C1|Relevant Limits not Set for Dealer Code : - ");
    }
    for (const std::int16_t side : std::initializer_list<std::int16_t>{0, 3, -1, 0x7FFF}) {
        s.Probe({.buySell = side});
    }
    EXPECT_TRUE(s.Dump() == before);
}

}  // namespace
}  // namespace surv::test
