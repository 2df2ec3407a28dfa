// Margins of small cash and MCX books at published rates, worked by hand.

#include <gtest/gtest.h>

#include <cmath>

#include "support/scenario.h"

namespace surv::test {
namespace {

using Figures = std::array<double, 3>;

Figures MarginOf(const BKSurveillanceLimitDefTag& row) {
    return {row.usedMarginOrder, row.usedMarginTraded, row.usedMarginMax};
}
void ExpectNear(const Figures& seen, const Figures& due, const std::string& what) {
    for (std::size_t i = 0; i < seen.size(); ++i) EXPECT_NEAR(seen[i], due[i], 0.005) << what << ", figure " << i;
}

/// The lists of a start: each row in mode 0 is freed by the library.
struct Lists {
    CPtrList limits, exposures;

    void Limits(std::string_view entity, std::initializer_list<int> masks) {
        for (const int mask : masks) {
            limits.AddTail(new BKSurveillanceLimitDefTag(EmptyLimit(entity, static_cast<std::int16_t>(mask))));
        }
    }
    /// A bought position at a price in paise.
    BKExposureTag& Held(std::int16_t mask, std::int32_t token, std::int32_t bought, double paise) {
        auto* row = new BKExposureTag(PositionRow("C1", mask, bought, "C1", token));
        row->orderBuyValue = row->tradedBuyValue = bought * paise;
        WriteField(row->contract.series, "EQ");
        exposures.AddTail(row);
        return *row;
    }
    [[nodiscard]] LoadLists Get() { return {.limits = &limits, .exposures = &exposures}; }
};

tagClientRiskPreferenceInfoForSurv Preference(std::int32_t exchange, std::int32_t addOn) {
    tagClientRiskPreferenceInfoForSurv record{};
    WriteField(record.preferenceCode, "C1");
    record.exchange = exchange, record.marginAddOnFactor = addOn;
    return record;
}
void LoadPreference(Library& library, tagClientRiskPreferenceInfoForSurv record) {
    CPtrList list;
    list.AddTail(&record);
    library.LoadPreferences(list);
}

/// BSE, 21-Nov-2024: SBIN at 11.25 + 3.50 percent, ADANIPORTS at 50.00 percent. 100 x 889.35 x 14.75 percent =
/// 13,117.91; 10 x 1,469.30 x 50 percent = 7,346.50.
TEST(CashMargin, TheStartChargesEachPositionItsPublishedRate) {
    Lists lists;
    lists.Limits("C1", {3, 0x11, 0x13, 0xF, 0x7F, 0x1FF});
    lists.Held(0x11, 500112, 100, 88935).scripRates = {0, 1, 1475.0};
    lists.Held(0x11, 532921, 10, 146930).scripRates = {0, 0, 5000.0};
    // 20 x 100.00 of NSE at 10 percent, 10 of them open: 100.00 traded, 200.00 in all, raised by half.
    BKExposureTag& nse = lists.Held(3, 7, 10, 10000);
    nse.scripRates = {0, 1, 1000.0};
    nse.orderBuyQty = 20, nse.orderBuyValue = 200000;
    // Margin funding: 4 x 50.00 at a quarter of its value, without the add-on.
    lists.Held(3, 8, 4, 5000).messageKind = 8;
    CScenario house({}, lists.Get(), [](Library& library) {
        tagClientRiskPreferenceInfoForSurv own = Preference(kMaskNseCash, 500000);
        own.prefExtraMarginRate = 250000;
        LoadPreference(library, own);
    });
    const double bse = 13117.9125 + 7346.50;
    const CSurveillanceCategory& client = *house.library.manager->FindCategory("C1");
    ExpectNear(client.cashMarginBse, {bse, bse, bse}, "BSE");
    ExpectNear(client.cashMarginNse, {350, 200, 350}, "NSE");
    ExpectNear(MarginOf(house.Row("C1", 3)), {350, 200, 350}, "row 3");
    ExpectNear(MarginOf(house.Row("C1", 0x7F)), {350 + bse, 200 + bse, 350 + bse}, "row 0x7F");

    // Another add-on reaches its own exchange alone, and the same one again nothing.
    for (int i = 0; i < 2; ++i) {
        tagClientRiskPreferenceInfoForSurv changed = Preference(kMaskNseCash, 1000000);
        changed.prefExtraMarginRate = 500000;
        house.library.AddUpdatePreference(changed);
        ExpectNear(MarginOf(house.Row("C1", 0x7F)), {500 + bse, 300 + bse, 500 + bse}, "row 0x7F, changed");
    }
}

/// A series of compulsory delivery is charged whole, buys and sells together; without its own rate a scrip is, too.
TEST(CashMargin, SeriesOfCompulsoryDeliveryAndScripsWithoutARateAreChargedWhole) {
    Lists lists;
    lists.Limits("C1", {3});
    BKExposureTag& both = lists.Held(3, 7, 10, 10000);
    both.scripRates = {0, 1, 1000.0};
    both.orderSellQty = both.tradedSellQty = 4, both.orderSellValue = both.tradedSellValue = 40000;
    WriteField(both.contract.series, "BE");
    lists.Held(3, 8, 1, 5000).scripRates = {0, 1, 0};
    CScenario house({}, lists.Get(), [](Library& library) {
        std::array<tagCompulsoryDeliverySeries, 10> series{};  // more than are looked through one by one
        CPtrList list;
        for (tagCompulsoryDeliverySeries& one : series) {
            WriteField(one.series, list.IsEmpty() ? "BE" : "X" + std::to_string(list.GetCount()));
            one.exchange = kMaskNseCash;
            list.AddTail(&one);
        }
        library.context.products.LoadSeries(list);
    });
    ExpectNear(MarginOf(house.Row("C1", 3)), {1450, 1450, 1450}, "row 3");
}

struct Commodity {
    std::int32_t token;
    double rupees;  ///< a unit
    double ratePercent;
    double margin;
};
/// MCX, 9-Apr-2019, 100 units each: crude oil and gold.
constexpr Commodity kCommodities[]{{101, 4481, 8.93, 40015.33}, {102, 32186, 5.25, 168976.50}};

void HoldCommodities(Lists& lists) {
    constexpr std::int32_t kFarAway = 2'000'000'000;
    for (const Commodity& c : kCommodities) {
        BKExposureTag& row = lists.Held(0x81, c.token, 100, c.rupees * 100);
        row.underlyingToken = c.token, row.contract.strikePrice = -1;
        row.contract.expiryDate = kFarAway;
    }
}
void LoadRates(Library& library) {
    for (const Commodity& c : kCommodities) {
        tagAdditionalMarginInfo rates{};
        rates.exchange = kMaskMcx, rates.token = c.token;
        // Paise times rate over 10^8 are rupees.
        rates.longMarginRate = rates.shortMarginRate = static_cast<std::int32_t>(std::lround(c.ratePercent * 10000));
        library.context.stores.AddAdditionalMargin(rates);
        tagMcxMarginRecord record{};
        record.token = c.token, record.marginBasis = 1, record.marginRate = c.ratePercent, record.exchange = kMaskMcx;
        library.context.stores.AddMcxMargin(record);
        record.marginRate = 1;
        library.context.stores.AddMcxMargin(record);  // the first stands
        record.token = 103, record.exchange = kMaskNcdex;
        library.context.stores.AddMcxMargin(record);  // dropped
    }
}
const tagScripMargin* MarginRecord(const CScenario& house, std::int32_t token) {
    const CAccountExposureSet& set = house.library.manager->FindCategory("C1")->Book(Period::kExpiry).accounts;
    return set.FindAccount("G1", "C1")->FindScripByKey({kMaskMcx, PositionFamily::kPlain, token})->scripMargin.get();
}

/// 100 x 100.00 at 10 percent, bought and sold: 1,000.00 each. Netted, 66 percent of both come back; a contract near
/// its delivery is netted with none.
TEST(CommodityMargin, AContractNearItsDeliveryStandsApart) {
    for (const auto& [days, due] : {std::pair{0, 680.0}, {30000, 2000.0}}) {
        Lists lists;
        lists.Limits("C1", {0x81});
        BKExposureTag& bought = lists.Held(0x81, 101, 100, 10000);
        BKExposureTag& sold = lists.Held(0x81, 102, 0, 0);
        sold.orderSellQty = sold.tradedSellQty = 100, sold.orderSellValue = sold.tradedSellValue = 1000000;
        for (BKExposureTag* row : {&bought, &sold}) {
            row->underlyingToken = 90, row->contract.strikePrice = -1;
            row->contract.expiryDate = 2'000'000'000 - row->token;
        }
        sold.contract.caLevel = static_cast<std::int16_t>(days);
        CScenario house({.rpfMarginMode = 1}, lists.Get(), [](Library& library) {
            tagAdditionalMarginInfo rates{};
            rates.exchange = kMaskMcx, rates.longMarginRate = rates.shortMarginRate = 100'000;
            for (const int token : {101, 102}) {
                rates.token = token;
                library.context.stores.AddAdditionalMargin(rates);
            }
        });
        ExpectNear(MarginOf(house.Row("C1", 0x81)), {due, due, due}, "row 0x81");
    }
}

TEST(CommodityMargin, TheStartChargesCrudeOilAndGoldTheirPublishedMargins) {
    Lists lists;
    lists.Limits("C1", {3, 0x81, 0x181, 0x1FF});
    lists.Limits("C2", {0x81, 0x181, 0x1FF});
    for (CPtrList::Position at = lists.limits.GetHeadPosition(); at;) {
        static_cast<BKSurveillanceLimitDefTag*>(lists.limits.GetNext(at))->usedMarginOrder = 7;
    }
    lists.Held(3, 7, 10, 10000).scripRates = {0, 1, 1000.0};  // 100.00, and a row that came with 7.00
    HoldCommodities(lists);
    CScenario house({.rpfMarginMode = 1}, lists.Get(), &LoadRates);
    const double both = kCommodities[0].margin + kCommodities[1].margin;
    ExpectNear(MarginOf(house.Row("C1", 0x81)), {both, both, both}, "row 0x81");
    ExpectNear(MarginOf(house.Row("C1", 0x1FF)), {both + 107, both + 100, both + 100}, "row 0x1FF");
    EXPECT_EQ(house.Row("C2", 0x81).usedMarginOrder, 7.0) << "no MCX business, no change";
    EXPECT_EQ(house.Row("C1", 0x81).usedExposureMargin, 0.0) << "it is inside the margin";

    // Half on top, for the client alone; the record is new and reaches the rows with the change after it.
    for (const std::int32_t addOn : {0, 500000}) {
        tagClientRiskPreferenceInfoForSurv own = Preference(kMaskMcx, addOn);
        house.library.AddUpdatePreference(own);
    }
    ExpectNear(MarginOf(house.Row("C1", 0x1FF)), {1.5 * both + 107, 1.5 * both + 100, 1.5 * both + 100}, "raised, all");
    // A row that is added now shows its margin; nothing is rolled up from it.
    house.library.manager->FindCategory("C1")->limitStores.Take(0x81);
    house.Limit("C1", 0x81);
    ExpectNear(MarginOf(house.Row("C1", 0x81)), {1.5 * both, 1.5 * both, 1.5 * both}, "added");
    EXPECT_EQ(house.library.manager->RecomputeMCXMargin(kMaskMcx, "NONE"), kNotDone);
    EXPECT_EQ(house.library.manager->RecomputeMCXMargin(kMaskNseDerivatives, "NONE"), kDone);
}

/// Long 10 of one expiry at 8 percent of 100.00, short 10 of a later one at 10 percent: 80.00 and 100.00, of which 66
/// percent are given back.
TEST(CommodityMargin, ExpiriesThatStandAgainstEachOtherGiveMostOfItBack) {
    Lists lists;
    lists.Limits("C1", {0x81});
    for (const auto& [token, bought] : {std::pair{101, 10}, std::pair{102, -10}}) {
        auto* row = new BKExposureTag(PositionRow("C1", 0x81, bought, "C1", token));
        row->orderBuyValue = row->tradedBuyValue = bought > 0 ? 100000 : 0;
        row->orderSellValue = row->tradedSellValue = bought < 0 ? 100000 : 0;
        row->underlyingToken = 9, row->contract.strikePrice = -1;
        row->contract.expiryDate = 2'000'000'000 + token * 86400;
        lists.exposures.AddTail(row);
    }
    CScenario house({.rpfMarginMode = 1}, lists.Get(), [](Library& library) {
        for (const auto& [token, onLong, onShort] : {std::tuple{101, 80000, 90000}, std::tuple{102, 110000, 100000}}) {
            tagAdditionalMarginInfo rates{};
            rates.exchange = kMaskMcx, rates.token = token;
            rates.longMarginRate = onLong, rates.shortMarginRate = onShort;
            library.context.stores.AddAdditionalMargin(rates);
        }
    });
    ExpectNear(MarginOf(house.Row("C1", 0x81)), {61.2, 61.2, 61.2}, "netted");
}

/// Only a percentage of 15 or less is taken from the rates into a loaded contract; a missing one is none.
TEST(CommodityMargin, ALoadedContractTakesALowPercentageAtItsWord) {
    const std::tuple<std::int16_t, double, bool> cases[]{
        {1, 15.0, true}, {1, 15.01, false}, {2, 5.0, false}, {0, 5.0, false}};
    for (const auto& [basis, rate, taken] : cases) {
        Lists lists;
        lists.Limits("C1", {0x81});
        lists.Held(0x81, 101, 10, 10000);
        CScenario house({}, lists.Get(), [basis = basis, rate = rate](Library& library) {
            tagMcxMarginRecord record{};
            record.token = 101, record.marginBasis = basis, record.marginRate = rate, record.exchange = kMaskMcx;
            library.context.stores.AddMcxMargin(record);
        });
        const tagScripMargin* margin = MarginRecord(house, 101);
        EXPECT_EQ(margin != nullptr, taken) << rate;
        if (!margin) continue;
        EXPECT_EQ(margin->loadedMargin, (PerView<double>{150, 150, 150, 150}));
        EXPECT_EQ(margin->view[kOrderView].spreadPosition, 10.0);
    }
}

/// 75 options bought, 30 of them today at 100.00: where premiums count, 3,000.00 is margin. Nothing else is, as long
/// options alone never cost.
TEST(OptionPremium, OfALoadedPositionIsThatOfToday) {
    Lists lists;
    auto* limit = new BKSurveillanceLimitDefTag(EmptyLimit("C1", 0xD));
    limit->limitOptions = kPremiumInMargin;
    lists.limits.AddTail(limit);
    for (const auto& [mask, bought] : {std::pair<std::int16_t, int>{8, 30}, {9, 70}, {9, 5}}) {
        BKExposureTag& row = lists.Held(mask, 50, bought, 10000);
        row.underlyingToken = 90, row.contract.strikePrice = 100, row.contract.expiryDate = 2'000'000'000;
    }
    CScenario house({.rpfMarginMode = 1}, lists.Get(), [](Library& library) {
        tagRPFUnderlyingRecord underlying{};
        underlying.underlyingToken = 90;
        library.context.risk.live.StoreUnderlying(underlying, kMaskNseDerivatives);
        tagRPFContractRecord record{};
        record.token = 50, record.underlyingToken = 90, record.contractPrice = 100, record.riskArray[0] = 7;
        record.contract.strikePrice = 100, record.contract.expiryDate = 2'000'000'000;
        library.context.risk.live.StoreContract(record, kMaskNseDerivatives);
    });
    ExpectNear(MarginOf(house.Row("C1", 0xD)), {3000, 3000, 3000}, "row 0xD");
}

}  // namespace
}  // namespace surv::test
