// What an order may be by its product and by the price of its underlying: every text, with the nearest request that
// doesn't earn it.

#include <gtest/gtest.h>

#include "support/scenario.h"

namespace surv::test {
namespace {

constexpr const char* kAccepted = "";

struct Request {
    tagSurveillanceInfo& head;
    tagOrderRequest& order;
};
struct Case {
    const char* name;
    std::int16_t product;
    void (*house)(CScenario&);  ///< null: nothing but limits
    void (*change)(Request);    ///< null: a client's buy of 100 at 250.00
    const char* text;
    const char* failedLevel = nullptr;  ///< null: not looked at
};

void Own(Request r) { r.order.proClient = kProClientOwn; }
void DealerIsClient(Request r) { r.head.dealerType = 4; }
template <int kFlags>
void ClientMay(CScenario& s) {
    s.Preference("C1", kMaskNseCash, [](auto& p) { p.allowedProducts = kFlags; });
}
template <int kFlags>
void DealerMay(CScenario& s) {
    s.Preference("D1", kMaskNseCash, [](auto& p) { p.allowedProducts = kFlags; });
}
void DealerElsewhere(CScenario& s) { s.Preference("D1", kMaskBseCash); }
template <int kFlags>
void ScripAllows(CScenario& s) {
    tagProductTypeScripBasket basket{};
    basket.token = 2885;
    basket.productFlags = kFlags;
    basket.firstLegBand = 100;   // 1 percent
    basket.secondLegBand = 200;  // 2 percent
    basket.dailyBand = 1000;     // 10 percent
    basket.basePrice = 25000;
    s.library.context.products.SetBasket(basket);
    s.Preference("*****", kMaskNseCash);
}
template <int kFundFlags>
void AfterMarketBits(CScenario& s) {
    for (const char* code : {"C1", "D1"}) {
        s.Preference(code, kOverallPreference, [](auto& p) { p.fundFlags = kFundFlags; });
        s.Preference(code, kMaskNseCash);
    }
}

/// A bracket buy: first leg 250.00, stop limit 248.00, trigger 249.00. The day's range is 225 to 275; the trigger's for
/// a buy lies between 250 - 1 percent = 247.50 and 248 + 2 percent = 252.96.
void Bracket(Request r) {
    r.order.firstLegPrice = 25000;
    r.order.price = 24800;  // the second leg of leg 0
    r.order.triggerPrice = 24900;
    r.order.quantity = 10;
}
template <auto kChange>
void BracketBut(Request r) {
    Bracket(r);
    kChange(r.order);
}

constexpr std::int16_t kP = product::kMarginPlus;
constexpr std::int16_t kF = product::kMtf;

const Case kCases[]{
    // Margin+: whose preference
    {"no preference anywhere", kP, nullptr, nullptr, "Margin+ Order Preference Not Set for ", "C1"},
    {"client forbids", kP, ClientMay<11>, nullptr, "Margin+ Order Not Allowed for ", "C1"},
    {"dealer as client, other exchange", kP, DealerElsewhere, DealerIsClient, "Margin+ Order Preference Not Set for "},
    {"own account, other exchange", kP, DealerElsewhere, Own, "Margin+ Order Preference Not Set for ", "D1"},
    // Margin+: shape
    {"bracket", kP, ScripAllows<4>, Bracket, kAccepted},
    {"buy below its stop", kP, ScripAllows<4>, BracketBut<[](auto& o) { o.price = 25001; }>,
     "Wrong Price for Margin Plus Buy Order -FirstLegPrice[250.00] and SecondLegPrice[250.01] for "},
    {"sale above its stop", kP, ScripAllows<4>, BracketBut<[](auto& o) { o.buySell = kSell; }>,
     "Wrong Price for Margin Plus Sell Order -FirstLegPrice[250.00] and SecondLegPrice[248.00] for "},
    {"first leg above the day", kP, ScripAllows<4>, BracketBut<[](auto& o) { o.firstLegPrice = 27501; }>,
     "First Leg Price out of Daily Price Range[225.00 - 275.00] of Symbol-[SCRIP] for "},
    {"limit below the day", kP, ScripAllows<4>, BracketBut<[](auto& o) { o.price = 22499; }>,
     "Limit Price out of Daily Price Range[225.00 - 275.00] of Symbol-[SCRIP] for "},
    {"trigger too high", kP, ScripAllows<4>, BracketBut<[](auto& o) { o.triggerPrice = 25297; }>,
     "Trigger Price out of range[252.96 - 247.50] of Symbol-[SCRIP] for "},
    {"trigger at the top", kP, ScripAllows<4>, BracketBut<[](auto& o) { o.triggerPrice = 25296; }>, kAccepted},
    {"sale with its trigger too high", kP, ScripAllows<4>,
     BracketBut<[](auto& o) { o.buySell = kSell, o.firstLegPrice = 24800, o.price = 25000, o.triggerPrice = 25049; }>,
     "Trigger Price out of range[250.48 - 245.00] of Symbol-[SCRIP] for "},
    {"change of an unpriced second leg", kP, ScripAllows<4>,
     [](Request r) {
         Bracket(r);
         r.head.messageCode = 2040;
         r.order.marginPlusLeg = 2;
         r.order.firstLegPrice = r.order.price = 30000;
     },
     kAccepted},
    {"by the exchange of the head", kP, DealerMay<4>,
     [](Request r) { r.head.dealerType = 4, r.head.exchangeMask = kMaskBseCash; },
     "Margin+ Order Preference Not Set for "},
    {"too small", kP,
     [](CScenario& s) { ScripAllows<4>(s), s.library.context.settings.marginPlusMinOrderValue = 2501; }, Bracket,
     "Order failed Min. Margin Plus Order Value Check where the limit = 2501.00 and current value = 2500.00 for"},
    {"just large enough", kP,
     [](CScenario& s) { ScripAllows<4>(s), s.library.context.settings.marginPlusMinOrderValue = 2500; }, Bracket,
     kAccepted},
    {"second leg takes no value and no direction", kP,
     [](CScenario& s) { ScripAllows<4>(s), s.library.context.settings.marginPlusMinOrderValue = 2501; },
     BracketBut<[](auto& o) { o.marginPlusLeg = 2, o.firstLegPrice = 24700; }>, kAccepted},
    // MTF
    {"MTF own account forbidden", kF, DealerMay<7>, Own, "MarginFunding Order Not Allowed for ", "D1"},
    // Delivery and margin on the scrip
    {"margin closed", 1, ScripAllows<14>, nullptr, "Margin Order Not Allowed for the scrip - SCRIP for "},
    {"margin open, own account", 1, ScripAllows<1>, Own, kAccepted},
    // After-market
    {"no overall record", 9, ClientMay<15>, nullptr, "AMO Order Preference Not Set for "},
    {"of the dealer of type 1", 9, DealerMay<15>, [](Request r) { r.head.dealerType = 1; },
     "AMO Order Preference Not Set for "},
    {"checked", 9, AfterMarketBits<8>, nullptr, kAccepted},
    {"own delivery", 10, AfterMarketBits<8>, Own, "AMO Pro Delivery Order Not Allowed for ."},
    // Series of compulsory delivery
    {"series", 1,
     [](CScenario& s) {
         s.library.context.products.compulsoryDeliverySeries.Insert({1, " EQ "});
     },
     nullptr, "Only Delivery Order Allowed"},
    {"series of the other exchange", 1,
     [](CScenario& s) {
         s.library.context.products.compulsoryDeliverySeries.Insert({8, "EQ"});
     },
     nullptr, kAccepted},
};

TEST(ProductPolicy, EveryTextAndTheNearestRequestWithoutIt) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.name);
        CScenario s;
        s.House(2);
        s.House(3);
        s.library.context.stores.isinByNseToken.FindOrMake(2885, "INE002A01018");
        if (c.house) c.house(s);
        const std::string before = s.Dump();
        std::vector<char> buffer = MakeRequest({.productType = c.product});
        const Request request{*reinterpret_cast<tagSurveillanceInfo*>(buffer.data()),
                              *reinterpret_cast<tagOrderRequest*>(buffer.data() + sizeof(tagSurveillanceInfo))};
        if (c.change) c.change(request);
        const Answer answer = s.Send(buffer);
        EXPECT_EQ(answer.text, c.text);
        EXPECT_EQ(answer.Passed(), c.text == kAccepted);
        if (c.failedLevel) {
            EXPECT_EQ(answer.failedLevelCode, c.failedLevel);
        }
        EXPECT_TRUE(answer.Passed() || s.Dump() == before);
    }
}

/// An after-market order that its holder doesn't want checked passes, and nothing takes it in.
TEST(ProductPolicy, AnUncheckedAfterMarketOrderPassesAtOnce) {
    CScenario s;
    s.House(3);
    AfterMarketBits<0>(s);
    const std::string before = s.Dump();
    for (const std::int16_t product : {product::kAmoMargin, product::kAmoDelivery}) {
        for (const std::int16_t proClient : {std::int16_t{1}, kProClientOwn}) {
            EXPECT_TRUE(s.Check({.productType = product, .proClient = proClient}).Passed());
        }
    }
    EXPECT_TRUE(s.Dump() == before);
}

/// Options against the price of their underlying, 100.00. Strike 90.00: a call is worth 10.00, a put -10.00.
TEST(ProductPolicy, OptionPricesAgainstTheirUnderlying) {
    const char* const kNoPrice = "LTP of Underlying is Not Available for the Scrip of ";
    const struct {
        const char* name;
        std::int16_t side;
        const char* type;
        std::int32_t strike;
        std::int32_t price;
        std::int32_t ltp;
        std::int16_t percent;
        const char* text;
        std::int32_t pricedAt = 0;  ///< of the request afterwards, for an order at market; 0: unchanged
        std::int16_t mode = 1;
    } cases[]{
        {"call sold below", kSell, "CA", 9000, 999, 10000, 0,
         "Order is not allowed as Price entered is less than the Percentage defined on the difference between the "
         "underlying price and the strike price ; Strike Price = 90.00 and LTP = 100.00 of "},
        {"put sold below", kSell, "PE", 11000, 999, 10000, 0,
         "Order is not allowed as Price entered is less than the Percentage defined on the difference between the "
         "underlying price and the strike price ; LTP =  100.00 and  Strike Price = 110.00 of "},
        {"worthless put", kSell, "PA", 9000, 1, 10000, 0, kAccepted, 1000},
        {"in another mode", kSell, "CE", 9000, 1, 10000, 0, kAccepted, 0, 0},
        {"no price known", kSell, "CE", 9000, 1000, 0, 0, kNoPrice},
        {"call bought above", kBuy, "CE", 9000, 1001, 10000, 0,
         "Order is not allowed as Price entered is more than the Percentage defined on the difference between the "
         "underlying price and the strike price ; Strike Price = 90.00 and LTP = 100.00 of "},
        {"call bought at its worth", kBuy, "CE", 9000, 1000, 10000, 0, kAccepted, 1000},
        {"put bought above", kBuy, "PE", 11000, 1101, 10000, 10,
         "Order is not allowed as Price entered is more than the Percentage defined on the difference between the "
         "underlying price and the strike price ; LTP =  100.00 and  Strike Price = 110.00  of "},
        {"a worthless option bought dear", kBuy, "PE", 9000, 99999, 10000, 0, kAccepted, 1000},
    };
    constexpr std::uint8_t kAtMarket = 1 << 6;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CScenario s({.positionMode = c.mode});
        s.House(9);
        const bool sells = c.side == kSell;
        ProductReference& products = s.library.context.products;
        (sells ? products.sellPriceTest : products.buyPriceTest) = {c.percent, true};
        if (c.ltp != 0) {
            tagTokenPriceRecord record{};
            record.lastTradedPrice = sells ? 0 : c.ltp;
            record.closePrice = sells ? c.ltp : 1;  // stands in for a missing last price alone
            products.tokenPrices.FindOrMake(26000, record);
        }
        std::vector<char> buffer = MakeRequest({.exchangeMask = kMaskNseDerivatives,
                                                .token = 100,
                                                .buySell = c.side,
                                                .price = c.price,
                                                .productType = 0,
                                                .strikePrice = c.strike,
                                                .underlyingToken = 26000});
        auto& order = *reinterpret_cast<tagOrderRequest*>(buffer.data() + sizeof(tagSurveillanceInfo));
        WriteField(order.contract.optionType, c.type);
        order.orderFlags = kAtMarket;
        EXPECT_EQ(s.Send(buffer).text, c.text);
        EXPECT_EQ(order.price, c.pricedAt != 0 ? c.pricedAt : c.price);
    }
}

TEST(ProductReference, TheFirstRecordOfAKeyStandsAndAChangeOverwrites) {
    ProductReference products;
    tagProductTypeScripBasket baskets[2]{};
    tagTokenPriceRecord prices[3]{};  // the last of another exchange
    baskets[0].basePrice = prices[0].closePrice = 1;
    prices[0].exchange = prices[1].exchange = kMaskNseCash;
    prices[2].exchange = kMaskBseCash, prices[2].token = 7;
    CPtrList lists[2];
    for (auto& record : baskets) lists[0].AddTail(&record);
    for (auto& record : prices) lists[1].AddTail(&record);
    lists[0].AddTail(nullptr);
    products.LoadBaskets(lists[0]);
    products.LoadTokenPrices(lists[1]);
    EXPECT_EQ(products.scripBaskets.Find(0)->basePrice, 1);
    EXPECT_EQ(products.tokenPrices.Size(), 1U);
    EXPECT_EQ(products.tokenPrices.Find(0)->closePrice, 1);
    products.SetBasket(baskets[1]);
    EXPECT_EQ(products.scripBaskets.Find(0)->basePrice, 0);
}

}  // namespace
}  // namespace surv::test
