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

TEST(BadInput, TextsWithoutAnEnd) {
    CScenario s({.featureBits = 0x10});
    for (const char* entity : {"-", "XXXXXX"}) s.Limit(entity, 3);
    constexpr std::int16_t kCodes[] = {2000, 2040, 2150, 30160, 5440, 5445};
    for (const std::int16_t code : kCodes) {
        SCOPED_TRACE(code);
        std::vector<char> buffer = MakeRequest({.messageCode = code, .hasStored = true});
        auto& head = *reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
        const tagSurveillanceInfo good = head;
        std::fill(buffer.begin(), buffer.end(), 'X');
        head.messageCode = code, head.levelMarginFlags = good.levelMarginFlags;
        head.requestFlags = good.requestFlags;
        const RequestView view = ViewRequest(head);
        (view.order ? view.order->exchangeMask : view.correction->exchangeMask) = kMaskNseCash;
        (view.order ? view.order->contract : view.correction->contract).strikePrice = 0;
        if (view.order) view.order->price = 0;
        if (view.correction) view.correction->buySellCharacter[0] = '2';
        const std::string before = s.Dump();
        const Answer answer = s.Send(buffer);
        EXPECT_EQ(answer.failedLevelCode, "XXXXX") << "cut, and ended";
        EXPECT_EQ(answer.text, code == 5445 ? "Wrong Product type "
                                            : "XXXXXXXXXXXX|Market for XXXXXXXXXXXXX XXX does "
                                              "not exist. Order pending with admin");
        EXPECT_TRUE(s.Dump() == before);
    }
}

TEST(BadInput, NumbersAtTheirEnds) {
    CScenario s;
    s.House();
    s.House(2);
    s.Market(kMaskNseCash, 2885, 1, 1, 1, 1);
    s.Row("-", 3).maxSingleOrderQty = kMax - 1;
    constexpr std::int32_t kEnds[] = {kMin, -1, 0, 1, kMax};
    for (const std::int32_t quantity : kEnds) {
        for (const std::int32_t price : kEnds) {
            for (const std::int16_t code : {std::int16_t{2000}, std::int16_t{2040}}) {
                SCOPED_TRACE(testing::Message() << code << ": " << quantity << " at " << price);
                const OrderSpec order{.messageCode = code,
                                      .quantity = quantity,
                                      .price = price,
                                      .scripGroupNumber = quantity,
                                      .priceMultiplier = price,
                                      .hasStored = true,
                                      .storedQuantity = price,
                                      .storedPrice = quantity};
                const std::string before = s.Dump();
                s.Probe(order);
                EXPECT_TRUE(s.Dump() == before);
                const bool passed = s.Check(order).Passed();
                EXPECT_EQ(passed, quantity != kMax);
                EXPECT_TRUE(passed || s.Dump() == before);
            }
        }
    }
    for (const std::int32_t token : {kMin, kAllSecurities, kMax}) {
        EXPECT_TRUE(s.Check({.token = token, .scripGroupNumber = token}).Passed()) << token;
    }
}

TEST(BadInput, LevelsMarketsAndSidesThatDoNotExist) {
    CScenario s({.featureBits = 0x10});
    s.House();
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{7, 45, 128, 255}) {
        EXPECT_TRUE(s.Check({.groupType = type,
                             .dealerType = type,
                             .clientType = type,
                             .levelCheckFlags = 255,
                             .levelMarginFlags = 0x7F})
                        .Passed())
            << int{type};
    }
    const std::string before = s.Dump();
    for (const std::int16_t mask : std::initializer_list<std::int16_t>{-1, 3, 5, 0x20, 0x100, 0x7FFF, -0x8000}) {
        EXPECT_EQ(s.Check({.exchangeMask = mask, .levelCheckFlags = 0}).text,
                  "C1|Relevant Limits not Set for Dealer Code : - ")
            << mask;
    }
    for (const std::int16_t side : std::initializer_list<std::int16_t>{0, 3, -1, 0x7FFF}) s.Probe({.buySell = side});
    EXPECT_TRUE(s.Dump() == before);
}

}  // namespace
}  // namespace surv::test
