// A position goes from one product to another: what the target takes in, the source has lost.

#include <gtest/gtest.h>

#include "platform/format.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

/// Shares of C1; of client type 4 it deals for itself.
class CConversions : public CScenario {
 public:
    explicit CConversions(std::uint8_t clientType = 2) : clientType_(clientType) {
        for (const int mask : {2, 3, 0x1FF}) House(static_cast<std::int16_t>(mask));
        library.context.stores.isinByNseToken.FindOrMake(2885) = "INE002A01018";
    }
    [[nodiscard]] OrderSpec Spec(std::int32_t productType, std::int32_t quantity, std::int32_t price,
                                 std::int16_t buySell = kBuy) const {
        OrderSpec spec{.buySell = buySell, .quantity = quantity, .price = price, .productType = productType};
        spec.clientType = clientType_;
        return spec;
    }
    /// An order and its trade.
    void Trade(std::int32_t quantity, std::int32_t price) {
        OrderSpec trade = Spec(product::kMargin, quantity, price);
        ASSERT_EQ(Event(trade).result, 0);
        trade.messageCode = 2222, trade.hasStored = true, trade.storedQuantity = quantity, trade.storedPrice = price;
        ASSERT_EQ(Event(trade).result, 0);
    }
    std::string Convert(std::int32_t productType, std::int32_t quantity, std::int32_t price = 0) {
        return Check(Spec(productType, quantity, price)).text;
    }
    /// Shares and paise of the client's margin position and of its delivery.
    std::string Held() {
        std::string held;
        for (const PositionFamily family : {PositionFamily::kPlain, PositionFamily::kDelivery}) {
            const PeriodBook& book = library.manager->FindCategory("C1")->Book(Period::kExpiry);
            const CSurvPosition* position = book.exposures.Find({kMaskNseCash, family, 2885});
            const tagSurvPositionData p = position ? position->data : tagSurvPositionData{};
            held += Format("%lld at %.0f; ", static_cast<long long>(p.tradedBuyQty), p.tradedBuyValue);
        }
        return held;
    }

 private:
    std::uint8_t clientType_;
};

/// 100 at 250.00 and 50 at 280.00 are 150 for 39,000.00, 260.00 each. A conversion without a price of its own goes at
/// that average.
TEST(Conversion, MovesSharesAtTheirPrice) {
    CConversions s;
    s.Trade(100, 25000);
    s.Trade(50, 28000);
    ASSERT_EQ(s.Held(), "150 at 3900000; 0 at 0; ");
    ASSERT_EQ(s.Convert(product::kConvertToDelivery, 90), "");
    EXPECT_EQ(s.Held(), "60 at 1560000; 90 at 2340000; ");
    EXPECT_EQ(s.Row("D1", 3).usedTurnoverTraded, 3'900'000 + 2'340'000) << "where it is only taken in, it is a trade";
    ASSERT_EQ(s.Convert(product::kConvertToMargin, 40), "");
    EXPECT_EQ(s.Held(), "100 at 2600000; 50 at 1300000; ");
    ASSERT_EQ(s.Convert(product::kConvertToDelivery, 100, 24000), "") << "all of it, at the host's price";
    EXPECT_EQ(s.Held(), "0 at 200000; 150 at 3700000; ");
    ASSERT_EQ(s.Event(s.Spec(product::kDelivery, 100, 25000, kSell)).result, 0);
    EXPECT_NE(s.Convert(product::kConvertToMargin, 51), "") << "100 of the 150 stand for sale";
    EXPECT_EQ(s.Convert(product::kConvertToMargin, 50), "");
}

TEST(Conversion, IsRefusedWithoutTraceAndSaidInTheOrderOfOneWhoDealsForHimself) {
    const std::string noFree = "Free Qty not available for Position Conversion of ";
    const struct {
        std::int32_t quantity;
        bool afterSession, nri;
        std::string text, inOrder;
        const char* head;
    } cases[] = {
        {101, false, false, "C1|" + noFree, noFree, "-227, -227"},
        {100, true, false, "Position conversion Not Allowed after squareoff session", "", "0, 0"},
        {100, false, true, "Only Delivery Order Allowed", "", "0, 0"},
    };
    for (const std::uint8_t clientType : {std::uint8_t{2}, std::uint8_t{4}}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << c.text << ", client type " << int{clientType});
            CConversions s(clientType);
            s.Trade(100, 25000);
            if (c.afterSession) {
                s.library.context.settings.autoSquareOff.Set(CAutoSquareOffSettings::kSession, kMaskNseCash, 1);
            }
            OrderSpec spec = s.Spec(product::kConvertToDelivery, c.quantity, 0);
            spec.clientCategory = c.nri ? "N" : "";
            std::vector<char> request = MakeRequest(spec);
            const std::string before = s.Dump();
            const Answer answer = s.Send(request);
            EXPECT_EQ(answer.text, c.text);
            EXPECT_EQ(Format("%d, %d", answer.errorCode, answer.headCode), c.head);
            EXPECT_EQ(answer.status, status::kRefused);
            EXPECT_TRUE(s.Dump() == before);
            const auto& order = *reinterpret_cast<tagOrderRequest*>(request.data() + sizeof(tagSurveillanceInfo));
            EXPECT_EQ(FieldText(order.rejectionText), clientType == 4 ? c.inOrder : "");
        }
    }
}

}  // namespace
}  // namespace surv::test
