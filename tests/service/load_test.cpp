#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>

#include "support/scenario.h"

namespace surv::test {
namespace {

using LimitRow = BKSurveillanceLimitDefTag;
using Figures = std::vector<double>;

LimitRow* Add(CPtrList& list, std::string_view entity, std::int16_t mask = 3, std::int32_t token = kAllSecurities) {
    return static_cast<LimitRow*>(list.AddTail(new LimitRow(EmptyLimit(entity, mask, token)))->element);
}

/// Runs in a directory of its own, where the log of a failed start lands.
class Load : public ::testing::Test {
 protected:
    Load() {
        std::string name = (std::filesystem::temp_directory_path() / "loadXXXXXX").string();
        std::filesystem::current_path(directory_ = ::mkdtemp(name.data()));
        library.context.clock.Set([](void*) { return CScenario::kNow; }, nullptr);
        library.context.window.Set(
            [](void* context, unsigned, unsigned, const char* text) {
                static_cast<std::vector<std::string>*>(context)->emplace_back(text);
            },
            &texts);
    }
    ~Load() override {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(directory_);
    }
    /// What the log holds; it is gone then.
    std::string TakeLog() {
        const std::string& name = library.context.settings.survLogFileName;
        std::ifstream file(name);
        std::filesystem::remove(name);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    CPtrList limits;
    Library library;
    std::vector<std::string> texts;

 private:
    std::filesystem::path before_ = std::filesystem::current_path();
    std::filesystem::path directory_;
};

TEST_F(Load, RowsAreTakenOverAsThePositionModeSays) {
    const struct {
        const char* name;
        std::int16_t positionMode, orderBased;
        bool adopted, handedOutLive, mtmReset, marginReset;
    } cases[] = {
        {"mode 0", 0, 0, false, false, false, false},    {"mode 1", 1, 0, false, false, true, true},
        {"mode 2", 2, 0, true, true, true, false},       {"mode 3", 3, 0, true, true, true, false},
        {"order-based", 0, 1, true, false, true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        LimitRow* given = Add(limits, "C1");
        given->entityLevel = 4, given->subLevel = -1;
        given->usedMtm = 11, given->usedMtmFull = 12, given->usedBookedPnl = 13, given->usedNetOrder = 25;
        given->usedMarginOrder = 21, given->usedMarginTraded = 22, given->usedMarginMax = 23;
        given->usedExposureMargin = 24;
        Add(limits, "C1", 2);
        limits.AddTail(nullptr);
        library.context.settings.orderBasedPosition = c.orderBased;
        ASSERT_EQ(library.Start({.positionMode = c.positionMode}, {.limits = &limits}), kDone);
        EXPECT_EQ(limits.GetCount(), c.adopted ? 3 : 0);

        LimitRow& row = library.manager->FindCategory("C1")->FindRow(3, kAllSecurities)->Row();
        EXPECT_EQ(&row == given, c.adopted);
        EXPECT_EQ((Figures{row.usedMtm, row.usedMtmFull, row.usedBookedPnl}),
                  c.mtmReset ? Figures(3) : (Figures{11, 12, 13}));
        EXPECT_EQ((Figures{row.usedMarginOrder, row.usedMarginTraded, row.usedMarginMax, row.usedExposureMargin}),
                  c.marginReset ? Figures(4) : (Figures{21, 22, 23, 24}));
        EXPECT_EQ(row.usedNetOrder, 25) << "other figures stand as the host gave them";
        EXPECT_EQ(row.subLevel, c.adopted ? 0 : -1);

        CPtrList dump;
        library.manager->DownloadSurvInfo("C1", &dump);
        EXPECT_EQ(dump.GetCount(), 2);
        EXPECT_EQ(dump.GetHeadPosition()->element == &row, c.handedOutLive);
        c.handedOutLive ? ForgetRows(dump) : FreeRows<LimitRow>(dump);
        library.CleanUp();
        limits.RemoveAll();  // adopted rows go with the manager
    }
    EXPECT_TRUE(std::filesystem::is_empty(".")) << "a start that succeeds writes no log";
}

TEST_F(Load, AFailingRowStaysFirstAndARetryGoesOnFromIt) {
    for (const bool adopted : {false, true}) {
        SCOPED_TRACE(adopted);
        LimitRow* first = Add(limits, "C1");
        first->usedNetOrder = 5;
        LimitRow* failing = Add(limits, "C1");
        failing->messageCode = 7;
        Add(limits, "D1");
        const Library::StartSettings settings{.positionMode = static_cast<std::int16_t>(adopted ? 2 : 0)};
        EXPECT_EQ(library.Start(settings, {.limits = &limits}), kNotDone);
        EXPECT_EQ(TakeLog(), " , C1, 7, 3, -9 ((AddSurvLimits-1)CSurveillanceManager::Initialize) \n");
        EXPECT_EQ(std::exchange(texts, {}), std::vector<std::string>{"Surveillance Manager initialization Failed"});
        EXPECT_FALSE(library.context.settings.started);
        EXPECT_EQ(limits.GetCount(), adopted ? 3 : 2);
        EXPECT_EQ(limits.GetHeadPosition()->element, adopted ? first : failing);
        EXPECT_EQ(library.manager->FindCategory("D1"), nullptr) << "the load ends at the row";

        failing->token = 2885;  // the host puts it right and tries again with what is left
        EXPECT_EQ(library.Start(settings, {.limits = &limits}), kDone);
        EXPECT_EQ(limits.GetCount(), adopted ? 3 : 0);
        const CSurveillanceCategory& client = *library.manager->FindCategory("C1");
        EXPECT_EQ(client.FindRow(3, kAllSecurities)->Row().usedNetOrder, 5);
        EXPECT_NE(client.FindRow(3, 2885), nullptr);
        EXPECT_NE(library.manager->FindCategory("D1"), nullptr);
        library.CleanUp();
        limits.RemoveAll();
    }
}

TEST_F(Load, PositionRowsAreTakenOverAsThePositionModeSays) {
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{1}, std::int16_t{2}, std::int16_t{3}}) {
        SCOPED_TRACE(mode);
        const bool adopted = mode >= 2;
        Add(limits, "C1");
        CPtrList exposures;
        exposures.AddTail(new BKExposureTag(PositionRow("C1", 3, 100)));
        exposures.AddTail(nullptr);
        exposures.AddTail(new BKExposureTag(PositionRow("NONE", 3, 5, "C1", 77)));  // names no category
        static_cast<BKExposureTag*>(exposures.AddTail(new BKExposureTag(PositionRow("C1", 3, 5)))->element)
            ->marketSegment = 9;  // no market: nothing is registered for it
        auto* failing = new BKExposureTag(PositionRow("C1", 3, 1));
        constexpr const char* kLabels[]{"DD", "MP", "MD", "DD"};
        WriteField(failing->contract.optionType, kLabels[mode]);
        exposures.AddTail(failing);
        exposures.AddTail(new BKExposureTag(PositionRow("C1", 2, 8)));
        const Library::StartSettings settings{.positionMode = mode};
        EXPECT_EQ(library.Start(settings, {.limits = &limits, .exposures = &exposures}), kNotDone);
        EXPECT_EQ(TakeLog(),
                  "Invalid Periodicity  C1, C1, 2885, 3 ((AddExposures)CSurveillanceManager::Initialize) \n");
        EXPECT_EQ(exposures.GetCount(), adopted ? 6 : 2) << "what is left starts with the failing row";
        EXPECT_NE(library.context.stores.FindScrip(kMaskNseCash, 77), nullptr);

        WriteField(failing->contract.optionType, "");  // put right; a retry counts nothing twice
        EXPECT_EQ(library.Start(settings, {.limits = &limits, .exposures = &exposures}), kDone);
        EXPECT_EQ(exposures.GetCount(), adopted ? 6 : 0);
        const CSurveillanceCategory& client = *library.manager->FindCategory("C1");
        const PositionKey key{kMaskNseCash, PositionFamily::kPlain, 2885};
        EXPECT_EQ(client.Book(Period::kExpiry).exposures.Find(key)->data.tradedBuyQty, 101);
        EXPECT_EQ(client.Book(Period::kDaily).exposures.Find(key)->data.tradedBuyQty, 8);
        library.CleanUp();
        limits.RemoveAll();
        exposures.RemoveAll();
    }
}

TEST_F(Load, ARowRegistersItsScripAndItsContract) {
    CPtrList exposures;
    for (const char* code : {"C1", "C2"}) {
        Add(limits, code);
        for (const int mask : {5, 0x101}) {
            auto* row = new BKExposureTag(PositionRow(code, static_cast<std::int16_t>(mask), 20, "C1", 50));
            row->priceMultiplier = 20000;
            exposures.AddTail(row);
        }
    }
    ASSERT_EQ(library.Start({.rpfMarginMode = 1}, {.limits = &limits, .exposures = &exposures}), kDone);
    const CSurveillanceManager& manager = *library.manager;
    for (const std::int16_t exchange : {kMaskNseDerivatives, kMaskNcdex}) {
        EXPECT_EQ(manager.rpfCategoriesByToken.Find(SegmentTokenKey(exchange, 50))->categories.Size(), 2);
        EXPECT_EQ(manager.broadcastHash.Find(PlainKey(exchange, 50))->categories.Size(), 2);
    }
    EXPECT_EQ(manager.broadcastHash.Find(PlainKey(kMaskNcdex, 50))->closePrice, 12500) << "half, at a multiplier of 2";
}

TEST(LoadedRows, OddValuesLoadAndJudge) {
    constexpr std::int32_t kBigToken = kTokenSpan + 5;
    constexpr std::int32_t kPrintsLikeBse5 = 7 * kTokenSpan + 5;
    CPtrList limits;
    for (const char* entity : {"-", "G1", "D1", "C1"}) {
        Add(limits, entity);
        Add(limits, entity, 17);
    }
    Add(limits, "C1", 0);  // covers no market
    Add(limits, "C1", 3, 77)->grossExposureLimit = std::numeric_limits<double>::quiet_NaN();
    Add(limits, "C1", 3, kBigToken)->maxSingleOrderQty = 99;
    CScenario s({.positionMode = 2}, {.limits = &limits});
    EXPECT_EQ(s.library.manager->FindCategory("C1")->Book(Period::kDaily).rowCount, 1);
    EXPECT_EQ(s.Check({.token = 77}).errorCode, code::kGrossExposure) << "a limit that is no number is exceeded";
    EXPECT_EQ(s.Check({.token = kBigToken}).errorCode, code::kOrderQuantity);
    EXPECT_TRUE(s.Check({.token = 5}).Passed()) << "the row of another token has judged";
    EXPECT_TRUE(s.Check({.token = kPrintsLikeBse5}).Passed());
    EXPECT_TRUE(s.Check({.exchangeMask = kMaskBseCash, .token = 5}).Passed());
    EXPECT_EQ(s.Held("C1", Period::kExpiry, kPrintsLikeBse5)->data.orderBuyQty, 100);
}

TEST(ExposureMarginBit, FollowsThePreferenceOnEveryRoad) {
    constexpr std::int16_t kMasks[] = {0xD, 0xF, 0x7F, 0x181, 0x1FF, 0x61, 0x81, 0x101, 3};
    struct Given {
        const char* code;
        std::int32_t exchange;
        std::uint8_t marginFlags;
    };
    const struct {
        const char* name;
        std::vector<Given> preferences;
        std::int32_t features;
        std::vector<std::int16_t> masks;  // whose rows get the bit
    } cases[] = {
        {"none", {}, 0, {}},
        {"derivatives", {{"C1", 2, 1}}, 0, {0xD, 0xF, 0x7F, 0x1FF}},
        {"commodities", {{"C1", 0x40, 0xFF}}, 0, {0x181, 0x1FF}},
        {"everybody's stands in", {{"C1", 1, 0}, {"*****", 2, 1}}, 0, {0xD, 0xF, 0x7F, 0x1FF}},
        {"the own one hides everybody's", {{"C1", 2, 0}, {"*****", 2, 1}}, 0, {}},
        {"families in force", {{"C1", 2, 1}}, 0x10, {}},
    };
    enum Road { kLoad, kAdd, kChange };
    for (const auto& c : cases) {
        for (const Road road : {kLoad, kAdd, kChange}) {
            SCOPED_TRACE(testing::Message() << c.name << ", road " << road);
            Library library;
            CPtrList preferences, limits;
            std::vector<tagClientRiskPreferenceInfoForSurv> records(c.preferences.size());
            for (std::size_t i = 0; i < records.size(); ++i) {
                WriteField(records[i].preferenceCode, c.preferences[i].code);
                records[i].exchange = c.preferences[i].exchange;
                records[i].marginFlags = c.preferences[i].marginFlags;
                preferences.AddTail(&records[i]);
            }
            library.LoadPreferences(preferences);
            for (const std::int16_t mask : kMasks) road == kLoad ? Add(limits, "C1", mask) : nullptr;
            ASSERT_EQ(library.Start({.featureBits = c.features}, {.limits = &limits}), kDone);
            for (const std::int16_t mask : kMasks) {
                LimitRow row = EmptyLimit("C1", mask);
                if (road != kLoad) library.manager->AddSurvLimits(row, nullptr);
                LimitRow& stored = library.manager->FindCategory("C1")->FindRow(mask, kAllSecurities)->Row();
                if (road == kChange) {
                    stored.limitOptions = row.limitOptions = 0;
                    library.manager->UpdateSurvLimits(row, nullptr);
                }
                const bool expected = std::find(c.masks.begin(), c.masks.end(), mask) != c.masks.end();
                EXPECT_EQ(stored.limitOptions, expected ? 0x10 : 0) << "mask " << mask;
            }
        }
    }
}

}  // namespace
}  // namespace surv::test
