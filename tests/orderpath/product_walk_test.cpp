// Every product through the levels: where it is judged, where it is only taken in, where it passes by; and that a
// refusal at any point leaves no trace.

#include <gtest/gtest.h>

#include "support/scenario.h"

namespace surv::test {
namespace {

constexpr std::int32_t kToken = 2885;
constexpr const char* kIsin = "INE002A01018";
constexpr const char* kLevels[] = {"S1", "C1", "F1", "D1", "G1", "-"};  // from the lowest to the root

/// Where rows stand at each level: daily, settlement, the scrip's own settlement, everything, and BSE, which no order
/// of these tests is for. In the order in which they are asked.
struct Place {
    std::int16_t mask;
    std::int32_t token;
    const char* name;
};
constexpr Place kPlaces[] = {{2, kAllSecurities, "daily"},
                             {3, kAllSecurities, "all"},
                             {3, kToken, "scrip"},
                             {0x1FF, kAllSecurities, "house"},
                             {0x11, kAllSecurities, "outside"}};

/// Every product is open to everybody; after-market orders are judged; margin funding costs a quarter. The client and
/// the dealer hold 1,000 shares, worth 10.00 each as collateral.
class CProducts : public CScenario {
 public:
    explicit CProducts(std::int16_t positionMode = 0) : CScenario({.positionMode = positionMode, .featureBits = 0x10}) {
        for (const char* level : kLevels) {
            for (const Place& place : kPlaces) Limit(level, place.mask, {}, place.token);
        }
        for (const char* code : {"C1", "D1"}) {
            Preference(code, kMaskNseCash, [](auto& p) { p.prefExtraMarginRate = 250'000; });
            Preference(code, kOverallPreference, [](auto& p) { p.fundFlags = 1 << 3; });
            Holding& held = library.manager->FindCategory(code)->holdingsByIsin.FindOrMake(kIsin);
            held.categoryCode = code, held.isinCode = kIsin;
            held.holdingQty = held.collateralQty = 1000, held.collateralPrice = 1000;
            held.collateralValue = held.FormCollateralValue();
        }
        library.context.stores.isinByNseToken.FindOrMake(kToken) = kIsin;
        tagProductTypeScripBasket basket{};
        basket.token = kToken, basket.productFlags = 15, basket.basePrice = 25000;
        basket.firstLegBand = basket.secondLegBand = basket.dailyBand = 1000;
        library.context.products.SetBasket(basket);
    }
    /// An order of the client's sub client; dealerType 4, 45: of a dealer that is its own client.
    static std::vector<char> Order(std::int16_t productType, std::int16_t buySell = kBuy, std::uint8_t dealerType = 0) {
        OrderSpec spec{
            .family = "F1", .subClient = "S1", .groupType = 11, .dealerType = dealerType, .subClientType = 12};
        spec.productType = productType, spec.buySell = buySell;
        std::vector<char> buffer = MakeRequest(spec);
        auto& order = *reinterpret_cast<tagOrderRequest*>(buffer.data() + sizeof(tagSurveillanceInfo));
        if (productType == product::kMarginPlus) {  // a bracket that can lose 5.00 a share
            order.firstLegPrice = 25000, order.price = 24500, order.triggerPrice = 24600;
        }
        return buffer;
    }
    Answer Buy(std::int16_t productType, std::uint8_t dealerType = 0) {
        return Send(Order(productType, kBuy, dealerType));
    }
    Answer Sell(std::int16_t productType) { return Send(Order(productType, kSell)); }
    Holding* Shares(const char* level) { return library.manager->FindCategory(level)->holdingsByIsin.Find(kIsin); }
};

TEST(ProductWalk, ARefusalAtAnyRowOfAnyLevelLeavesNoTrace) {
    const std::string everywhere = "daily all scrip house, ", expiry = "all scrip house, ";
    const std::string general = "all scrip house outside, ";
    const struct {
        std::vector<std::int16_t> products;
        std::uint8_t dealerType;
        std::string judged;  ///< by level from the lowest: the rows that can refuse
    } cases[] = {
        {{product::kAmoMargin}, 0, everywhere + everywhere + everywhere + everywhere + everywhere + everywhere},
        {{product::kDelivery, product::kAmoDelivery}, 0, general + expiry + general + ", , , "},
        {{product::kMarginPlus}, 0, expiry + expiry + expiry + expiry + expiry + expiry},
        {{product::kMtf}, 0, everywhere + everywhere + everywhere + ", , , "},
        {{product::kMargin}, 4, ", , " + everywhere + everywhere + everywhere + everywhere},
        {{product::kDelivery}, 4, ", , " + general + expiry + ", , "},
        {{product::kMtf}, 45, ", , " + everywhere + everywhere + ", , "},
    };
    for (const auto& c : cases) {
        for (const std::int16_t productType : c.products) {
            SCOPED_TRACE(testing::Message() << "product " << productType << ", dealer " << int{c.dealerType});
            CProducts s(productType == product::kAmoMargin || productType == product::kMtf ? 2 : 0);
            ASSERT_EQ(s.Buy(productType, c.dealerType).text, "");  // so that something stands to be spoilt
            std::string judged;
            for (const char* level : kLevels) {
                std::string places;
                for (const Place& place : kPlaces) {
                    SCOPED_TRACE(std::string{level} + " " + place.name);
                    s.Row(level, place.mask, place.token).maxSingleOrderQty = 50;
                    const std::string limited = s.Dump();
                    const Answer answer = s.Buy(productType, c.dealerType);
                    EXPECT_EQ(s.Dump() == limited, !answer.Passed());
                    if (!answer.Passed()) {
                        EXPECT_EQ(answer.failedLevelCode, level);
                        places.append(places.empty() ? "" : " ").append(place.name);
                    }
                    s.Row(level, place.mask, place.token).maxSingleOrderQty = -1;
                }
                judged.append(places).append(", ");
            }
            EXPECT_EQ(judged, c.judged);
        }
    }
}

TEST(ProductWalk, ASaleOfDeliveriesBlocksTheHolding) {
    CProducts s;
    for (int sold = 100; sold <= 1000; sold += 100) {
        ASSERT_EQ(s.Sell(product::kDelivery).text, "");
        EXPECT_EQ(s.Shares("C1")->nse.blockedQty, sold);
        // 10.00 of collateral a share leaves the fund of the rows, within the scope and outside it.
        for (const std::int16_t mask : {std::int16_t{3}, std::int16_t{0x1FF}, std::int16_t{0x11}}) {
            EXPECT_EQ(s.Row("C1", mask).collateralFund, -1000.0 * sold) << mask;
        }
        EXPECT_EQ(s.Row("C1", 3, kToken).collateralFund, 0);
    }
    const Answer answer = s.Sell(product::kDelivery);
    EXPECT_EQ(
        answer.text,
        "C1|Delivery Order Sell Qty Limit exceeded QTY (DP+SAR) Set = 1000, Net Used = 100 , (DP+SAR)Prev Blocked "
        "= 1000, Today Free Qty = 0  of Equity ( NSE-Settlement)  of ");
    EXPECT_EQ(answer.Head(), "-312, -227, -227 at now: C1, 2");

    // A scrip without an ISIN can't be delivered; one that isn't held yet joins the holdings in the commit.
    s.library.context.stores.isinByNseToken.FindOrMake(kToken) = "";
    EXPECT_EQ(s.Buy(product::kDelivery).text,
              "C1|ISIN Code Not Available for Buy Delivery Order of Equity ( NSE-Settlement)  of ");
    s.library.context.stores.isinByNseToken.FindOrMake(kToken) = "INE009A01021";
    const Holdings& holdings = s.library.manager->FindCategory("C1")->holdingsByIsin;
    s.Send(CProducts::Order(product::kDelivery), true);
    EXPECT_EQ(holdings.Find("INE009A01021"), nullptr) << "an enquiry";
    EXPECT_EQ(s.Buy(product::kDelivery).text, "");
    EXPECT_EQ(holdings.Find("INE009A01021")->categoryCode.View(), "C1");
}

TEST(ProductWalk, ATwoLegOrderStandsOnceInThePositionOfItsFirstLeg) {
    CProducts s;
    ASSERT_EQ(s.Buy(product::kMarginPlus).text, "");
    const auto& held = s.library.manager->FindCategory("C1")->Book(Period::kExpiry).exposures;
    EXPECT_EQ(held.Find({kMaskNseCash, PositionFamily::kMarginPlusFirst, kToken})->data.orderBuyQty, 100);
}

TEST(ProductWalk, ADealerWithTheClientsCodeBuysTheSharesOnce) {
    CProducts s;
    OrderSpec order;
    order.productType = product::kDelivery, order.dealer = "C1";
    for (const int bought : {100, 200}) {
        ASSERT_EQ(s.Check(order).text, "");
        EXPECT_EQ(s.Shares("C1")->nse.orderBuyQty, bought);
    }
}

TEST(ProductWalk, MarginFundingSellsWhatHasTraded) {
    CProducts s;
    const Answer fresh = s.Sell(product::kMtf);
    EXPECT_EQ(fresh.text, "C1|Fresh SELL order not allowed for MTF of ");
    EXPECT_EQ(fresh.Head(), "-312, -227, -227 at now: S1, 12");
    ASSERT_EQ(s.Buy(product::kMtf).text, "");
    for (const char* level : {"S1", "C1", "F1"}) {
        CSurvPosition& held = *s.library.manager->FindCategory(level)
                                   ->Book(Period::kExpiry)
                                   .exposures.Find({kMaskNseCash, PositionFamily::kMtf, kToken});
        held.data.tradedBuyQty = 99;
        const Answer tooMuch = s.Sell(product::kMtf);
        EXPECT_EQ(tooMuch.text, "C1|Only Square Off Orders allowed for MTF of ");
        EXPECT_EQ(tooMuch.failedLevelCode, level);
        held.data.tradedBuyQty = 100;
    }
    EXPECT_EQ(s.Sell(product::kMtf).text, "") << "the dealer isn't asked";
}

TEST(ProductWalk, AnAfterMarketDeliveryNeedsLeaveForDeliveries) {
    CProducts s;
    s.Preference("C1", kMaskNseCash, [](auto& p) { p.allowedProducts = 2; });
    EXPECT_EQ(s.Buy(product::kAmoDelivery).text, "");
    EXPECT_EQ(s.Buy(product::kAmoMargin).text, "AMO Margin Order Not Allowed for ");
    // Only a client without records of its own keeps the after-market product as far as its family's record.
    CScenario family({.featureBits = 0x10});
    for (const char* level : kLevels) family.Limit(level, 3);
    family.Preference("F1", kMaskNseCash, [](auto& p) { p.allowedProducts = 1; });
    EXPECT_EQ(family.Send(CProducts::Order(product::kAmoDelivery)).text, "AMO Delivery Order Not Allowed for ");
}

}  // namespace
}  // namespace surv::test
