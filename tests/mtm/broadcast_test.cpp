#include <gtest/gtest.h>

#include "mtm/marked_house.h"

namespace surv::test {
namespace {

constexpr std::int32_t kScrip = 2885;

TEST(Touchline, IsDueByCountOrByTimeAndOnlyForANewPrice) {
    struct Step {
        std::int64_t now;
        std::int32_t price;
        bool due;
    };
    const struct {
        std::int16_t ticks;
        std::int32_t seconds;
        std::vector<Step> steps;
    } cases[] = {
        // The third touchline; sixty seconds; always; a clock that goes back.
        {3, 1'000'000, {{9, 5, false}, {9, 5, false}, {9, 5, true}, {9, 6, false}, {9, 6, false}, {9, 5, false}}},
        {0, 60, {{1000, 5, true}, {1059, 6, false}, {1060, 6, true}, {1119, 7, false}, {1120, 6, false}}},
        {0, 0, {{7, 5, true}, {7, 5, false}, {7, 0, true}, {7, -3, true}}},
        {0, 60, {{1000, 5, true}, {10, 6, false}, {INT64_MAX, 6, true}, {INT64_MIN, 7, false}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.ticks << " " << c.seconds);
        Settings settings;
        settings.mtmTickCount = c.ticks, settings.mtmTimeInterval = c.seconds;
        CBroadcastScrip scrip;
        for (std::size_t i = 0; i < c.steps.size(); ++i) {
            std::int64_t now = c.steps[i].now;
            CClock clock;
            clock.Set([](void* context) { return *static_cast<std::int64_t*>(context); }, &now);
            tagBcastMBOOrMBPTouchline touchline{};
            touchline.lastTradedPrice = c.steps[i].price;
            EXPECT_EQ(scrip.Tick(touchline, settings, clock), c.steps[i].due) << "step " << i;
        }
    }
}

TEST(Touchline, ChangesWhatItNamesAndNothingElse) {
    CMarkedHouse s;
    s.AddLimit("C1", 3);
    s.AddPosition(PositionRow("C1", 3, 100));
    s.Start(0, 1);
    CPtrList records;
    for (const std::int32_t token : {kScrip, 77}) {
        auto* record = new tagTokenPriceRecord{};
        record->token = token, record->exchange = kMaskNseCash, record->closePrice = 1;
        records.AddTail(record);
    }
    s.library.context.products.LoadTokenPrices(records);
    FreeRows<tagTokenPriceRecord>(records);
    tagBcastMBOOrMBPTouchline touchline{};
    touchline.exchange = kMaskNseCash, touchline.token = kScrip, touchline.lastTradedPrice = 24900;
    touchline.closePrice = 25000, touchline.priceA = 1, touchline.priceB = 2, touchline.priceC = 3;
    const auto send = [&] { s.Manager().AddAndComputeMTM(touchline, CSurveillanceManager::Marking::kWanted, nullptr); };
    send();
    const CBroadcastScrip& scrip = s.Scrip(kMaskNseCash, kScrip);
    EXPECT_EQ((std::vector{scrip.priceA, scrip.priceB, scrip.priceC}), (std::vector{1, 2, 3}));
    auto& prices = s.library.context.products.tokenPrices;
    EXPECT_EQ(prices.Find(kScrip)->lastTradedPrice, 0) << "only while orders are tested against them";

    s.library.context.products.sellPriceTest.on = true;
    touchline.lastTradedPrice = 24800;
    send();
    touchline.token = 77, touchline.lastTradedPrice = 500;  // held by no one
    send();
    touchline.lastTradedPrice = 0, touchline.closePrice = 9;
    send();
    touchline.token = kScrip;  // another exchange's key that comes to the same number
    touchline.exchange = 0, touchline.token = kScrip + kTokenSpan, touchline.lastTradedPrice = 1;
    send();
    EXPECT_EQ(prices.Find(kScrip)->lastTradedPrice, 24800);
    const tagTokenPriceRecord& other = *prices.Find(77);
    EXPECT_EQ((std::vector<int>{other.lastTradedPrice, other.closePrice, other.priceA, other.priceB, other.priceC}),
              (std::vector{500, 25000, 1, 2, 3}));
    EXPECT_EQ(scrip.lastTradedPrice, 24800);
    EXPECT_EQ(s.Manager().broadcastHash.Size(), 1) << "the broadcast makes no scrip";
}

TEST(Touchline, MovesTheClassesThatAreOn) {
    constexpr std::int16_t kCash = 2, kFuture = 4, kOption = 8, kNseFuture = 2, kNone = 0;
    const std::tuple<std::int16_t, std::int16_t> cases[]{
        {0, kNone}, {1, kCash}, {2, kFuture}, {4, kOption}, {3, kCash | kFuture},
    };
    for (const auto& [mtmMode, classes] : cases) {
        SCOPED_TRACE(mtmMode);
        CMarkedHouse s;
        for (const std::int16_t mask : std::vector<std::int16_t>{3, 5, 9}) s.AddLimit("C1", mask);
        s.AddPosition(PositionRow("C1", 3, 100));
        s.AddPosition(ContractRow("C1", 5, 100, -1, 50));
        s.AddPosition(ContractRow("C1", 9, 100, 30000, 60));
        s.Start(0, mtmMode);
        EXPECT_EQ(s.Touch(kMaskNseCash, kScrip, 24999).size(), (classes & kCash) ? 1 : 0);
        EXPECT_EQ(s.Touch(kNseFuture, 50, 24999).size(), (classes & kFuture) ? 1 : 0);
        EXPECT_EQ(s.Touch(kNseFuture, 60, 24999).size(), (classes & kOption) ? 1 : 0);
        EXPECT_EQ((Figures{s.Row("C1", 3).usedMtm, s.Row("C1", 5).usedMtm, s.Row("C1", 9).usedMtm}),
                  (Figures{(classes & kCash) ? -100.0 : 0, (classes & kFuture) ? -100.0 : 0, 0}));
        EXPECT_EQ(s.Scrip(kNseFuture, 60).lastTradedPrice, 24999) << "prices are kept whatever is on";
    }
}

TEST(Touchline, OneThatIsNotToBeMarkedUsesItsPriceUp) {
    CMarkedHouse s;
    s.AddLimit("C1", 3);
    s.AddPosition(PositionRow("C1", 3, 100));
    s.Start(0, 1);
    EXPECT_TRUE(s.Touch(kMaskNseCash, kScrip, 24000, false).empty());
    EXPECT_TRUE(s.Touch(kMaskNseCash, kScrip, 24000).empty());
    EXPECT_EQ(s.Row("C1", 3).usedMtm, 0);
    s.RecomputeAll();
    EXPECT_EQ(s.Row("C1", 3).usedMtm, -100 * 1000) << "a whole pass asks no touchline";
}

TEST(Touchline, CommodityPricesAreScaledToWholePaise) {
    CMarkedHouse s;
    s.AddLimit("C1", 0x101);
    BKExposureTag row = ContractRow("C1", 0x101, 100, -1, 60);
    row.priceMultiplier = 15000;
    s.AddPosition(row);
    s.Start(0, 2);
    s.Touch(kMaskNcdex, 60, 16601);  // times 1.5: 24901.5
    EXPECT_EQ(s.Row("C1", 0x101).usedMtm, -100 * 99);
}

}  // namespace
}  // namespace surv::test
