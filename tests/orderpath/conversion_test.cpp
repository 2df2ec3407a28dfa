// A position goes from one product to another: what the target takes in, the source has lost.

#include <gtest/gtest.h>

#include "platform/format.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

/// Whose shares are converted: a client's, or those of a dealer that is its own client.
struct Holder {
    const char* code;
    std::uint8_t dealerType, clientType;
    std::vector<const char*> levels;
};
const Holder kClient{"C1", 0, 2, {"C1", "D1", "G1", "-"}};
const Holder kDealer{"D1", 4, 255, {"D1", "G1", "-"}};
const Holder kOwnDealing{"C1", 0, 4, {"C1", "D1", "G1", "-"}};  ///< a client that deals for itself

class CConversions : public CScenario {
 public:
    explicit CConversions(Holder holder, std::int16_t positionMode = 0)
        : CScenario({.positionMode = positionMode}), holder_(std::move(holder)) {
        for (const int mask : {2, 3, 0x1FF}) House(static_cast<std::int16_t>(mask));
        library.context.stores.isinByNseToken.FindOrMake(2885) = "INE002A01018";
    }
    [[nodiscard]] OrderSpec Spec(std::int32_t productType, std::int32_t quantity, std::int32_t price,
                                 std::int16_t buySell = kBuy) const {
        OrderSpec spec;
        spec.productType = productType, spec.quantity = quantity, spec.price = price, spec.buySell = buySell;
        spec.dealerType = holder_.dealerType, spec.clientType = holder_.clientType;
        return spec;
    }
    /// An order and its trade.
    void Trade(std::int32_t quantity, std::int32_t price, std::int16_t buySell = kBuy) {
        OrderSpec trade = Spec(product::kMargin, quantity, price, buySell);
        ASSERT_EQ(Event(trade).result, 0);
        trade.messageCode = 2222, trade.hasStored = true, trade.storedQuantity = quantity, trade.storedPrice = price;
        ASSERT_EQ(Event(trade).result, 0);
    }
    Answer Convert(std::int32_t productType, std::int32_t quantity, std::int32_t price = 0,
                   std::int16_t buySell = kBuy) {
        return Check(Spec(productType, quantity, price, buySell));
    }
    /// Shares and paise of the margin position and of the delivery, ordered and traded alike at every level and in the
    /// account.
    std::string Held(std::int16_t buySell = kBuy) {
        std::string first;
        for (const char* level : holder_.levels) {
            std::string held;
            for (const PositionFamily family : {PositionFamily::kPlain, PositionFamily::kDelivery}) {
                const PeriodBook& book = library.manager->FindCategory(level)->Book(Period::kExpiry);
                const PositionKey key{kMaskNseCash, family, 2885};
                const CSurvPosition* flat = book.exposures.Find(key);
                const CClientExposure* account = book.accounts.FindAccount("G1", "C1");
                if (!account) account = book.accounts.FindAccount("", "C1");
                const CScripExposure* own = account ? account->FindScripByKey(key) : nullptr;
                held.append(held.empty() ? "" : "; ").append(Side(flat, buySell));
                EXPECT_EQ(Side(own ? &own->position : nullptr, buySell), Side(flat, buySell)) << level;
            }
            if (first.empty()) first = held;
            EXPECT_EQ(held, first) << level;
        }
        return first;
    }

 private:
    static std::string Side(const CSurvPosition* position, std::int16_t buySell) {
        const tagSurvPositionData p = position ? position->data : tagSurvPositionData{};
        const bool buy = buySell == kBuy;
        EXPECT_EQ(buy ? p.orderBuyQty : p.orderSellQty, buy ? p.tradedBuyQty : p.tradedSellQty);
        EXPECT_EQ(buy ? p.orderBuyValue : p.orderSellValue, buy ? p.tradedBuyValue : p.tradedSellValue);
        return Format("%lld at %.0f", static_cast<long long>(buy ? p.tradedBuyQty : p.tradedSellQty),
                      buy ? p.tradedBuyValue : p.tradedSellValue);
    }

    Holder holder_;
};

/// 100 at 250.00 and 50 at 280.00 are 150 for 39,000.00, 260.00 each. A conversion without a price of its own goes at
/// that average.
TEST(Conversion, MovesSharesAtTheirPriceAtEveryLevel) {
    for (const Holder& holder : {kClient, kDealer, kOwnDealing}) {
        for (const std::int16_t mode : std::initializer_list<std::int16_t>{0, 1, 2, 3}) {
            SCOPED_TRACE(testing::Message() << holder.code << int{holder.clientType} << " in mode " << mode);
            CConversions s(holder, mode);
            s.Trade(100, 25000);
            s.Trade(50, 28000);
            ASSERT_EQ(s.Held(), "150 at 3900000; 0 at 0");
            const Answer toDelivery = s.Convert(product::kConvertToDelivery, 90);
            ASSERT_EQ(toDelivery.text, "");
            EXPECT_EQ(s.Held(), "60 at 1560000; 90 at 2340000");
            ASSERT_EQ(s.Convert(product::kConvertToMargin, 40).text, "");
            EXPECT_EQ(s.Held(), "100 at 2600000; 50 at 1300000");
            ASSERT_EQ(s.Convert(product::kConvertToDelivery, 100, 24000).text, "") << "all of it, at the host's price";
            EXPECT_EQ(s.Held(), "0 at 200000; 150 at 3700000");
            s.Trade(30, 20000, kSell);
            ASSERT_EQ(s.Convert(product::kConvertToDelivery, 30, 0, kSell).text, "");
            EXPECT_EQ(s.Held(kSell), "0 at 0; 30 at 600000");
            ASSERT_EQ(s.Event(s.Spec(product::kDelivery, 100, 25000, kSell)).result, 0);
            EXPECT_NE(s.Convert(product::kConvertToMargin, 21).text, "") << "130 of the 150 stand for sale";
            EXPECT_EQ(s.Convert(product::kConvertToMargin, 20).text, "");
        }
    }
}

TEST(Conversion, IsRefusedWithoutTraceAndSaidInTheOrderOfOneWhoDealsForHimself) {
    const std::string noFree = "Free Qty not available for Position Conversion of ";
    const std::string session = "Position conversion Not Allowed after squareoff session";
    const struct {
        const char* what;
        std::int32_t productType, quantity;
        std::int16_t buySell;
        bool afterSession, nri;
        std::string text, inOrder;
        const char* head;
    } cases[] = {
        {"a share too many", product::kConvertToDelivery, 101, kBuy, false, false, noFree, noFree, "-227, -227"},
        {"after the session", product::kConvertToDelivery, 100, kBuy, true, false, session, "", "0, 0"},
        {"an NRI", product::kConvertToDelivery, 100, kBuy, false, true, "Only Delivery Order Allowed", "", "0, 0"},
    };
    for (const Holder& holder : {kClient, kDealer, kOwnDealing}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << c.what << ", " << holder.code << int{holder.clientType});
            CConversions s(holder);
            s.Trade(100, 25000);
            if (c.afterSession) {
                s.library.context.settings.autoSquareOff.Set(CAutoSquareOffSettings::kSession, kMaskNseCash, 1);
            }
            OrderSpec spec = s.Spec(c.productType, c.quantity, 0, c.buySell);
            spec.clientCategory = c.nri ? "N" : "";
            std::vector<char> request = MakeRequest(spec);
            const std::string before = s.Dump();
            const Answer answer = s.Send(request);
            EXPECT_EQ(answer.text, c.text == noFree ? "C1|" + noFree : c.text);
            EXPECT_EQ(Format("%d, %d", answer.errorCode, answer.headCode), c.head);
            EXPECT_EQ(answer.status, status::kRefused);
            EXPECT_TRUE(s.Dump() == before);
            const auto& order = *reinterpret_cast<tagOrderRequest*>(request.data() + sizeof(tagSurveillanceInfo));
            const bool dealsForItself = holder.clientType != 2;
            EXPECT_EQ(FieldText(order.rejectionText), dealsForItself ? c.inOrder : "");
        }
    }
}

}  // namespace
}  // namespace surv::test
