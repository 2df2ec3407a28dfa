#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "mtm/marked_house.h"
#include "platform/bytes.h"
#include "reference/preferences.h"

namespace surv::test {
namespace {

constexpr std::int32_t kToken = 50;

/// Every mask in use, narrowest first, daily before expiry.
std::vector<std::int16_t> AllMasks() {
    std::vector<std::int16_t> masks(kScopeOrder.begin(), kScopeOrder.end());
    for (const std::int16_t scope : kScopeOrder) masks.push_back(static_cast<std::int16_t>(scope | kExpiryBit));
    return masks;
}

TEST(Mark, MovesTheRowsOfAllSecuritiesThatCoverTheScrip) {
    using Masks = std::vector<std::int16_t>;
    const struct {
        const char* name;
        std::int16_t exchange, dailyMask, mode;
        Masks moved;  // in the order in which they are handed out
    } cases[] = {
        {"equity", kMaskNseCash, 2, 0, {2, 0x12, 0xE, 0x7E, 0x1FE, 3, 0x13, 0xF, 0x7F, 0x1FF}},
        {"equity, mode 1", kMaskNseCash, 2, 1, {2, 0x12, 3, 0x13, 0xF, 0x7F, 0x1FF}},
        {"futures, mode 1", kMaskNseDerivatives, 4, 1, {0xD, 0xF, 0x7F, 0x1FF}},
        {"MCX, mode 1", kMaskMcx, 0x80, 1, {0x80, 0x81, 0x181, 0x1FF}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CMarkedHouse s;
        const auto expiryMask = static_cast<std::int16_t>(c.dailyMask | kExpiryBit);
        for (const std::int16_t mask : AllMasks()) s.AddLimit("C1", mask);
        s.AddLimit("C1", expiryMask, kToken);
        s.AddPosition(ContractRow("C1", c.dailyMask, -40, -1, kToken));
        s.AddPosition(ContractRow("C1", expiryMask, 100, -1, kToken));
        s.Start(c.mode, 7);
        const std::vector<LimitRow> handedOut = s.Touch(c.exchange, kToken, 24900);
        Masks masks;
        for (const LimitRow& row : handedOut) {
            masks.push_back(row.limitMask);
            EXPECT_TRUE(SameBytes(row, s.Row("C1", row.limitMask))) << "as the row is after the move";
        }
        EXPECT_EQ(masks, c.moved);
        for (const std::int16_t mask : AllMasks()) {
            const bool moved = std::find(c.moved.begin(), c.moved.end(), mask) != c.moved.end();
            const double mtm = !moved ? 0 : (mask & kExpiryBit) ? 100 * -100 : -40 * -100;
            EXPECT_EQ(s.Row("C1", mask).usedMtmFull, mtm) << mask;
            EXPECT_EQ(s.Row("C1", mask).usedMtm, std::min(mtm, 0.0)) << mask;
        }
        EXPECT_EQ(s.Row("C1", expiryMask, kToken).usedMtmFull, 0) << "a scrip's own row moves with orders alone";
    }
}

TEST(Mark, ProfitsCountByThePreferenceOfEachEntity) {
    CMarkedHouse s;
    for (const char* entity : {"-", "C1", "C2"}) {
        s.AddLimit(entity, 3);
        s.AddPosition(PositionRow(entity, 3, 100));
    }
    s.Start(0, 1);
    constexpr std::uint8_t kMtmProfit = 1 << 1;
    s.Preference("C1", kMaskNseCash, [](auto& record) { record.marginFlags = kMtmProfit; });
    s.Preference("C2", kMaskNseDerivatives, [](auto& record) { record.marginFlags = kMtmProfit; });
    for (const std::int32_t price : {24900, 25050, 25080}) s.Touch(kMaskNseCash, 2885, price);
    EXPECT_EQ((Figures{s.Row("-", 3).usedMtm, s.Row("C1", 3).usedMtm, s.Row("C2", 3).usedMtm}), (Figures{0, 8000, 0}));
}

/// Orders of a client level have no flat position where levels aggregate: only the total knows them.
TEST(Mark, PositionsKeptApartMoveTheTotalAlone) {
    CMarkedHouse s;
    s.AddLimit("-", 5);
    s.AddPosition(ContractRow("-", 5, 100, -1, kToken));
    s.Start(2, 2);
    CSurveillanceCategory& root = *s.Manager().FindCategory("-");
    PeriodBook& book = root.Book(Period::kExpiry);
    const PositionKey key{kMaskNseDerivatives, PositionFamily::kPlain, kToken};
    book.clientLevelExposures.positions.FindOrMake(key).data = book.exposures.Find(key)->data;
    book.exposures.positions.Take(key);
    EXPECT_TRUE(s.Touch(kMaskNseDerivatives, kToken, 25300).empty());
    EXPECT_EQ(root.FindClientBook()->totals.Find(ProductGroup::kNormal, 5)->data.mtmValue, 100 * 300);
    EXPECT_EQ(s.Row("-", 5).usedMtmFull, 0);

    book.exposures.positions.FindOrMake(key).data = book.clientLevelExposures.Find(key)->data;
    book.clientLevelExposures.Find(key)->data.tradedBuyQty = 60;
    s.Touch(kMaskNseDerivatives, kToken, 25400);
    EXPECT_EQ(root.FindClientBook()->totals.Find(ProductGroup::kNormal, 5)->data.mtmValue, 100 * 400)
        << "the category's own position stands before them";
}

TEST(Reload, TheStartLaysTheWholeMtmIn) {
    const struct {
        const char* name;
        std::int16_t mode, mtmMode, orderBased;
        bool laidIn;
    } cases[] = {{"mode 0", 0, 7, 0, false},
                 {"mode 1", 1, 0, 0, true},
                 {"mode 2", 2, 0, 0, true},
                 {"mode 3", 3, 4, 0, true},
                 {"order-based", 0, 0, 1, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CMarkedHouse s;
        for (const std::int16_t mask : std::vector<std::int16_t>{3, 0xD, 9}) {
            LimitRow& row = s.AddLimit("C1", mask);
            row.usedMtm = 11, row.usedMtmFull = 12, row.usedBookedPnl = 13;
        }
        BKExposureTag cash = PositionRow("C1", 3, 100);
        cash.lastPrice = 24000;
        cash.tradedSellQty = 40, cash.tradedSellValue = 40 * 24500.0;  // 40 booked at a loss of 5.00
        s.AddPosition(cash);
        BKExposureTag future = ContractRow("C1", 5, -10, -1, kToken);
        future.lastPrice = 26000;
        s.AddPosition(future);
        BKExposureTag option = ContractRow("C1", 9, 10, 20000, 60);
        option.lastPrice = 1;
        s.AddPosition(option);
        s.Start(c.mode, c.mtmMode, c.orderBased);
        const auto figures = [&s](std::int16_t mask) {
            const LimitRow& row = s.Row("C1", mask);
            return Figures{row.usedMtm, row.usedMtmFull, row.usedBookedPnl};
        };
        constexpr double kBooked = 40 * -500.0;
        constexpr double kCash = kBooked + 60 * -1000.0;
        EXPECT_EQ(figures(3), c.laidIn ? (Figures{kCash, kCash, kBooked}) : (Figures{11, 12, 13}));
        EXPECT_EQ(figures(0xD), c.laidIn ? (Figures{-10 * 1000, -10 * 1000, 0}) : (Figures{11, 12, 13}));
        EXPECT_EQ(figures(9), c.laidIn ? Figures(3) : (Figures{11, 12, 13})) << "options never count";
        EXPECT_EQ(s.library.context.settings.mtmMode, c.mtmMode);
    }
}

/// Runs in a directory of its own, at a fixed local time.
class OnlineReload : public ::testing::Test {
 protected:
    OnlineReload() {
        std::string name = (std::filesystem::temp_directory_path() / "onlineXXXXXX").string();
        std::filesystem::current_path(directory_ = ::mkdtemp(name.data()));
        ::setenv("TZ", "UTC0", 1);
        ::tzset();
    }
    ~OnlineReload() override {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(directory_);
    }
    static std::string TextOf(const char* name) {
        std::ifstream file(name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

 private:
    std::filesystem::path before_ = std::filesystem::current_path();
    std::filesystem::path directory_;
};

TEST_F(OnlineReload, RebuildsTheMtmAndTellsEachScrip) {
    CMarkedHouse s;
    for (const std::int16_t mask : std::vector<std::int16_t>{3, 5, 0xD}) s.AddLimit("C1", mask);
    s.AddPosition(PositionRow("C1", 3, 100));
    BKExposureTag closed = PositionRow("C1", 3, -20, "C1", 77);  // at a loss of 10.00
    closed.tradedBuyQty = 20, closed.tradedBuyValue = 20 * 26000.0;
    s.AddPosition(closed);
    s.AddPosition(ContractRow("C1", 5, 20, -1, kToken));
    s.Start(1, 0);
    s.library.SetMtmMode(1);
    s.Touch(kMaskNseCash, 2885, 24900);
    s.Touch(kMaskNseDerivatives, kToken, 24500);  // futures aren't on: the price alone is kept
    for (const std::int16_t mask : std::vector<std::int16_t>{3, 5, 0xD}) {
        LimitRow& row = s.Row("C1", mask);
        row.usedMtm += 7, row.usedMtmFull += 8, row.usedBookedPnl += 9;
    }
    for (const auto& [second, name] : {std::pair{43509, "BroadcastMTM_000509PM.log"},  // 12:05:09
                                       std::pair{309, "BroadcastMTM_000509AM.log"}}) {
        static std::int64_t now;
        now = second;
        s.library.context.clock.Set([](void*) { return now; }, nullptr);
        s.Manager().RecomputeMTMOnline();
        const std::string time = second == 309 ? "00:05:09_AM" : "00:05:09_PM";
        EXPECT_EQ(TextOf(name),
                  "Time|Token|LastTradedPrice\n" + time + "|2885|249.00\n" + time + "|77|0.00\n" + time + "|50|245.00");
        const auto figures = [&s](std::int16_t mask) {
            return Figures{s.Row("C1", mask).usedMtm, s.Row("C1", mask).usedMtmFull, s.Row("C1", mask).usedBookedPnl};
        };
        EXPECT_EQ(figures(3), (Figures{-30'000, -30'000, -19'991})) << "what is booked goes on";
        EXPECT_EQ(figures(0xD), (Figures{-10'000, -10'000, 9}));
        EXPECT_EQ(figures(5), (Figures{0, 0, 9})) << "a row that passes leave alone stays cleared";
        EXPECT_EQ(s.library.context.settings.mtmMode, 1);
    }
    std::filesystem::create_directory("BroadcastMTM_000510AM.log");  // can't be opened
    s.library.context.clock.Set([](void*) { return std::int64_t{310}; }, nullptr);
    s.Row("C1", 3).usedMtm = 0;
    s.Manager().RecomputeMTMOnline();
    EXPECT_EQ(s.Row("C1", 3).usedMtm, -30'000);

    CMarkedHouse other;
    other.AddLimit("C1", 3);
    other.AddPosition(PositionRow("C1", 3, 100));
    other.Start(2, 7);
    other.Row("C1", 3).usedMtm = 5;
    other.Manager().RecomputeMTMOnline();
    EXPECT_EQ(other.Row("C1", 3).usedMtm, 5) << "it is for mode 1 alone";
}

}  // namespace
}  // namespace surv::test
