#include <gtest/gtest.h>

#include <cstring>

#include "support/scenario.h"

namespace surv::test {
namespace {

using LimitRow = BKSurveillanceLimitDefTag;

TEST(LimitAdmin, EachRefusalHasItsText) {
    constexpr auto kAdd = &CSurveillanceManager::AddSurvLimits;
    constexpr auto kChange = &CSurveillanceManager::UpdateSurvLimits;
    const auto remove = [](CSurveillanceManager& manager, LimitRow& row, tagAdminErrMessage* error) {
        return manager.RemoveSurvLimits(row, error);
    };
    const auto read = [](CSurveillanceManager& manager, LimitRow& row, tagAdminErrMessage*) {
        return manager.GetSurveillancePositions(row);
    };
    const struct {
        const char* name;
        std::function<std::int16_t(CSurveillanceManager&, LimitRow&, tagAdminErrMessage*)> operation;
        const char* entity;
        std::int16_t mask;
        std::int32_t token;
        std::int16_t result;
        const char* text;
        bool stamped;
    } cases[] = {
        {"add, there", kAdd, "C1", 3, -9, -1,
         "Surveillance Limits already available for C1 - across all securities", true},
        {"add scrip, there", kAdd, "C1", 3, 500, -1, "500|Surveillance Limits already available for C1", true},
        {"add scrip, no mask", kAdd, "NEW", 0, -101, -1, "-101|Surveillance Limits already available for NEW", true},
        {"add", kAdd, "C1", 2, 500, 0, "", false},
        {"change, no mask", kChange, "C1", 5, -9, -1,
         "Surveillance Limits not available for C1 - across all securities", false},
        {"change, no entity", kChange, "NEW", 3, -9, -1,
         "Surveillance Limits not available for NEW - across all securities", false},
        {"change, no scrip", kChange, "C1", 3, 501, -1, "501|Surveillance Limits not available for  C1", true},
        {"change, full field", kChange, "ABCDEFGH", 3, 1, -1, "1|Surveillance Limits not available for  ABCDEFGH", true},
        {"change", kChange, "C1", 3, 500, 0, "", false},
        {"remove", remove, "C1", 3, -9, -1, "Surveillance Limits across all securities cannot be removed", false},
        {"remove, no scrip", remove, "C1", 3, 501, -1, "501|Surveillance Limits not available for  C1", true},
        {"remove, no mask", remove, "C1", 5, 500, -1, "500|Surveillance Limits not available for  C1", true},
        {"remove, no entity", remove, "NEW", 3, 7, -1, "7|Surveillance Limits not available for  NEW", true},
        {"remove scrip", remove, "C1", 3, 500, 0, "", false},
        {"read, no entity", read, "NEW", 3, -9, -1, "", false},
        {"read, no mask", read, "C1", 5, -9, -1, "", false},
        {"read, removed", read, "C1", 3, 500, -1, "", false},
        {"read", read, "C1", 3, -9, 0, "", false},
    };
    CScenario s;
    s.Limit("C1", 3);
    s.Limit("C1", 3, {}, 500);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        LimitRow row = EmptyLimit(c.entity, c.mask, c.token);
        tagAdminErrMessage error{};
        EXPECT_EQ(c.operation(*s.library.manager, row, &error), c.result);
        EXPECT_STREQ(error.errorText, c.text);
        EXPECT_EQ(error.timeStamp, c.stamped ? CScenario::kNow : 0);
    }
    EXPECT_EQ(s.library.manager->FindCategory("NEW"), nullptr) << "a failed add has left its entity";
}

TEST(LimitAdmin, AChangeTakesOverTheDefinitionAndNoFigure) {
    struct Range {
        std::size_t from, to;
        bool always;  // or only when messageKind isn't 13
    };
    constexpr Range kTaken[] = {{24, 28, true},     // rowStamp
                                {46, 134, true},    // limits, fund, net quantity
                                {451, 459, true},   // definedFund
                                {134, 170, false},  // multipliers, rowOption
                                {467, 479, false}}; // minima of an order
    CScenario s;
    s.Limit("C1", 3);
    LimitRow& live = s.Row("C1", 3);
    for (const std::int16_t kind : {std::int16_t{13}, std::int16_t{12}}) {
        for (const int stored : {0x00, 0xFF}) {
            SCOPED_TRACE(testing::Message() << "kind " << kind << " on " << stored);
            const auto filled = [](int byte) {
                LimitRow row;
                std::memset(reinterpret_cast<char*>(&row), byte, sizeof row);
                WriteField(row.entityCode, "C1");
                row.limitMask = 3;
                row.token = kAllSecurities;
                return row;
            };
            live = filled(stored);
            LimitRow given = filled(0xFF - stored), expected = live;
            given.messageKind = kind;
            ASSERT_EQ(s.library.manager->UpdateSurvLimits(given, nullptr), kDone);
            for (const Range& range : kTaken) {
                if (!range.always && kind == 13) continue;
                std::memset(reinterpret_cast<char*>(&expected) + range.from, 0xFF - stored, range.to - range.from);
            }
            expected.limitOptions = static_cast<std::uint8_t>(stored ^ (kind == 13 ? 0b0000'1001 : 0b0001'1111));
            for (std::size_t at = 0; at < sizeof(LimitRow); ++at) {
                ASSERT_EQ(reinterpret_cast<char*>(&live)[at], reinterpret_cast<char*>(&expected)[at]) << "offset " << at;
            }
        }
    }
}

/// D1 with a bought and a sold scrip in two accounts. Settlement side, in paise:
/// 2885 by C1: 100 at 250.00 ordered, 60 of them traded, last price 260.00. 2885 by C2: 100 at 250.00 sold, 30 traded.
/// 500 by C1: 40 at 100.00 sold, 10 traded.
class CHeldHouse : public CScenario {
 public:
    CHeldHouse() {
        House();
        House(2);
        for (const std::int16_t mask : std::initializer_list<std::int16_t>{2, 3}) Limit("C2", mask);
        Order("C1", 2885, kBuy, 100, 25000, 60);
        Order("C2", 2885, kSell, 100, 25000, 30);
        Order("C1", 500, kSell, 40, 10000, 10);
        Held("D1", Period::kExpiry)->data.lastPrice = 26000;
    }
    LimitRow Added(std::int16_t mask, std::int32_t token, double figure) {
        LimitRow row = EmptyLimit("D1", mask, token);
        row.usedGrossOrder = row.usedMtm = row.usedTurnoverOrder = row.usedTurnoverTraded = figure;
        row.usedPendingOrder = row.usedMaxNet = row.grossUsedMaxGross = figure;
        tagAdminErrMessage error{};
        EXPECT_EQ(library.manager->AddSurvLimits(row, &error), kDone) << error.errorText;
        const LimitRow stored = this->Row("D1", mask, token);
        EXPECT_EQ(std::memcmp(&row, &stored, sizeof row), 0) << "the caller's record shows what was stored";
        return row;
    }

 private:
    void Order(const char* client, std::int32_t token, std::int16_t side, std::int32_t quantity, std::int32_t price,
               std::int32_t traded) {
        EXPECT_TRUE(Check({.token = token, .buySell = side, .quantity = quantity, .price = price, .client = client})
                        .Passed());
        for (CSurvPosition* position : {Held("D1", Period::kExpiry, token),
                                        HeldBy("D1", Period::kExpiry, "G1", client, token)}) {
            (side == kBuy ? position->data.tradedBuyQty : position->data.tradedSellQty) += traded;
            (side == kBuy ? position->data.tradedBuyValue : position->data.tradedSellValue) += double{1} * traded * price;
        }
    }
};

TEST(LimitAdmin, AnAddWorksOutWhatIsUsedOnTheScopeOfTheRow) {
    CHeldHouse s;
    // Netted: 2885 buys 2.5 M and sells 2.5 M, 1.5 M and 0.75 M traded; 500 sells 0.4 M, 0.1 M traded.
    const LimitRow all = s.Added(0x13, kAllSecurities, 1);
    const struct {
        const char* name;
        double figure, wanted;
    } cases[] = {
        {"gross, orders", all.usedGrossOrder, 1 + 400'000},
        {"gross, trades", all.usedGrossTraded, 750'000 + 100'000},
        {"net, orders", all.usedNetOrder, 0},
        {"net, trades", all.usedNetTraded, 750'000},
        {"net sale, orders", all.usedNetSaleOrder, 400'000},
        {"net sale, trades", all.usedNetSaleTraded, 100'000},
        {"net position, orders", all.usedNetPositionOrder, -400'000},
        {"net position, trades", all.usedNetPositionTraded, 750'000 - 100'000},
        {"turnover, orders", all.usedTurnoverOrder, 1 + 5'400'000},
        {"turnover, trades", all.usedTurnoverTraded, 1 + 2'350'000},
        {"worst gross", all.usedMaxGross, 1'750'000 + 400'000},
        {"worst net", all.usedMaxNet, 1 + 1'750'000},
        {"worst net sale", all.usedMaxNetSale, 1'000'000 + 400'000},
        {"worst net position", all.usedMaxNetPosition, 1'750'000 - 400'000},
        {"worst turnover", all.usedMaxTurnover, 5'000'000 + 400'000},
        {"mtm", all.usedMtm, 1 + 30 * 1000},
        {"pending", all.usedPendingOrder, 1 + 5'400'000 - 2'350'000},
        {"grossing, orders", all.grossUsedGrossOrder, 2'500'000 + 2'500'000 + 400'000},
        {"grossing, worst", all.grossUsedMaxGross, 1 + 2'500'000 + 2'500'000 + 400'000},
        {"grossing, worst net", all.grossUsedMaxNet, 2'500'000},
        {"grossing, net", all.grossUsedNetOrder, 2'500'000},
        {"grossing, worst net sale", all.grossUsedMaxNetSale, 2'500'000 + 400'000},
        {"grossing, net sale", all.grossUsedNetSaleOrder, 2'500'000 + 400'000},
        {"grossing, trades", all.grossUsedGrossTraded, 1'500'000 + 750'000 + 100'000},
        {"grossing, net trades", all.grossUsedNetTraded, 1'500'000},
        {"grossing, net sale trades", all.grossUsedNetSaleTraded, 750'000 + 100'000},
    };
    for (const auto& c : cases) EXPECT_EQ(c.figure, c.wanted) << c.name;

    const LimitRow scrip = s.Added(3, 500, 7);
    EXPECT_EQ(scrip.usedGrossOrder, 400'000) << "a scrip's row is overwritten";
    EXPECT_EQ(scrip.usedPendingOrder, 300'000);
    EXPECT_EQ(scrip.usedTurnoverTraded, 100'000);
    EXPECT_EQ(scrip.usedMtm, 0);
    EXPECT_EQ(scrip.usedMaxNet, 0);
    EXPECT_EQ(scrip.grossUsedMaxGross, 7 + 400'000) << "its grossing figures are added";
    const LimitRow missing = s.Added(3, 999, 7);
    EXPECT_EQ(missing.usedGrossOrder + missing.usedPendingOrder + missing.usedTurnoverTraded + missing.usedMtm, 0);
    EXPECT_EQ(missing.grossUsedMaxGross, 7);
    EXPECT_EQ(s.Added(2, 500, 7).usedTurnoverTraded, 0) << "nothing has traded in the daily set";
    EXPECT_EQ(s.Added(0x12, kAllSecurities, 0).usedPendingOrder, 5'400'000);
}

TEST(LimitAdmin, AWideRowTakesItsScopeAndStartsWithoutTurnover) {
    CHeldHouse s;
    s.Held("D1", Period::kExpiry, 500)->data.limitMask = 9;  // as a row of options had brought it
    s.HeldBy("D1", Period::kExpiry, "G1", "C1", 500)->data.limitMask = 9;
    const auto& accounts = s.library.manager->FindCategory("D1")->Book(Period::kExpiry).accounts;
    accounts.FindAccount("G1", "C2")->aggregate = true;
    const struct {
        std::int16_t mask;
        double turnover, turnoverTraded, grossing;
    } cases[] = {
        {0x13, 5'000'000, 2'250'000, 2'500'000}, {0xD, 0, 2'350'000, 2'900'000},   {0xF, 0, 2'350'000, 2'900'000},
        {0x7F, 0, 2'350'000, 2'900'000},         {0x1FF, 0, 2'350'000, 2'900'000}, {0x61, 0, 2'250'000, 2'500'000},
        {0x101, 0, 2'250'000, 2'500'000},        {0x181, 0, 2'250'000, 2'500'000}, {0x81, 5'000'000, 2'250'000, 2'500'000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mask);
        const LimitRow row = s.Added(c.mask, kAllSecurities, 0);
        EXPECT_EQ(row.usedTurnoverOrder, c.turnover);
        EXPECT_EQ(row.usedTurnoverTraded, c.turnoverTraded);
        EXPECT_EQ(row.grossUsedGrossOrder, c.grossing) << "the aggregate account counts";
    }
    EXPECT_EQ(s.Added(3, 2885, 0).grossUsedGrossOrder, 2'500'000);
}

TEST(LimitAdmin, StoresAreCountedAndLevelsFollowTheLastRow) {
    CScenario s({.positionMode = 2});
    const auto levels = [](std::int16_t level, std::int16_t sub) {
        return [=](LimitRow& row) { row.entityLevel = level, row.subLevel = sub; };
    };
    s.Limit("C1", 3, levels(4, -1));
    s.Limit("C1", 3, levels(7, 2), 500);
    s.Limit("C1", 2, levels(0x82, 6));
    s.Limit("C1", 5, levels(0x83, 5));
    LimitRow row = EmptyLimit("C1", 3, 500);
    row.entityLevel = 9;
    ASSERT_EQ(s.library.manager->UpdateSurvLimits(row, nullptr), kDone);
    ASSERT_EQ(s.library.manager->RemoveSurvLimits(row, nullptr), kDone);
    const CSurveillanceCategory& client = *s.library.manager->FindCategory("C1");
    EXPECT_EQ(client.Book(Period::kDaily).rowCount, 1);
    EXPECT_EQ(client.Book(Period::kExpiry).rowCount, 2) << "stores, not rows, and emptied ones too";
    EXPECT_EQ(client.allSecuritiesMask, 2 + 4);
    EXPECT_EQ(client.lastLevel, 0x83);
    EXPECT_EQ(client.secondLevel, 5);
    EXPECT_EQ(client.definitionLevel, 9);

    s.Limit("D1", 3, levels(7, 2));
    for (const auto& [key, code] : {std::pair{4, "C1"}, {27, "D1"}, {0x82 + 60, nullptr}, {-6, nullptr}}) {
        const CategoryGroup* group = s.library.manager->categoriesByPeriod.Find(static_cast<std::int16_t>(key));
        EXPECT_EQ(group ? group->begin()->key.View() : "", code ? code : "") << key;
        EXPECT_EQ(group ? group->Size() : 0, code ? 1U : 0U) << key;
    }
    const struct {
        std::int16_t level, cash, others;
    } resolved[] = {{0x82, 0, 1}, {0x83, 1, 0}, {7, 7, 7}};
    for (const auto& c : resolved) {
        for (std::int16_t segment = 1; segment <= 8; ++segment) {
            const bool cash = segment == 1 || segment == 4;
            EXPECT_EQ(EffectiveLevel(c.level, LevelGroupOf(segment)), cash ? c.cash : c.others) << segment;
        }
    }
}

TEST(LimitAdmin, ARowAddedAfterManyWereRemovedJudges) {
    CScenario s;
    s.House();
    for (std::int32_t token = 1; token <= 12; ++token) s.Limit("C1", 3, {}, token);
    for (std::int32_t token = 1; token <= 8; ++token) {
        ASSERT_EQ(s.library.manager->RemoveSurvLimits(EmptyLimit("C1", 3, token), nullptr), kDone);
    }
    s.Limit("C1", 3, [](LimitRow& row) { row.maxSingleOrderQty = 99; }, 2885);
    EXPECT_EQ(s.Check({}).errorCode, code::kOrderQuantity);
}

TEST(LimitAdmin, AReadRebuildsTheLimitsFromTheFundOfThePreference) {
    constexpr double kFund = 100 + 20;          // baseFund, definedFund
    constexpr double kCollateral = 1000, kCredit = 30000;
    struct Preference {
        const char* code;
        std::int32_t exchange;
        std::uint8_t fundFlags;
    };
    const struct {
        const char* name;
        std::vector<Preference> preferences;
        std::uint8_t options, optionsAfter;
        double limit;  // -2: not rebuilt
    } cases[] = {
        {"no preference", {}, 0x60, 0x00, kFund},
        {"collateral", {{"C1", -1, 0x20}}, 0x40, 0x20, kFund + kCollateral},
        {"sale credit", {{"C1", -1, 0x40}}, 0x00, 0x40, kFund + kCredit},
        {"both, other bits apart", {{"C1", -1, 0xFF}}, 0x0E, 0x6E, kFund + kCollateral + kCredit},
        {"an exchange's record tells nothing", {{"C1", 1, 0x60}}, 0x20, 0x00, kFund},
        {"nor does everybody's", {{"*****", -1, 0x60}, {"C1", 1, 0}}, 0x00, 0x00, kFund},
        {"the family's comes first", {{"F1", -1, 0x20}, {"C1", -1, 0x40}}, 0x00, 0x20, kFund + kCollateral},
        {"a family without one", {{"F1", 1, 0x20}, {"C1", -1, 0x40}}, 0x00, 0x40, kFund + kCredit},
        {"limits stay as defined", {{"C1", -1, 0x20}}, 0x01, 0x21, -2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CScenario s({.featureBits = 0x10});
        s.library.context.stores.clientFamilyMap.FindOrMake("C1", "F1");
        for (const Preference& p : c.preferences) {
            s.Preference(p.code, p.exchange, [&p](auto& record) { record.fundFlags = p.fundFlags; });
        }
        s.Limit("C1", 3, [&c](LimitRow& row) {
            row.baseFund = 100, row.definedFund = 20, row.collateralFund = kCollateral, row.saleCreditFund = kCredit;
            row.limitOptions = c.options;
            row.grossExposureLimit = row.turnoverLimit = row.pendingOrderLimit = row.netExposureLimit = -2;
            row.grossExposureMultiplier = row.netSaleExposureMultiplier = row.netPositionMultiplier = 10000;
            row.mtmLossMultiplier = row.marginMultiplier = 10000;
            row.turnoverMultiplier = 25000;
            row.pendingOrderMultiplier = 10000;
        });
        LimitRow copy = EmptyLimit("C1", 3);
        ASSERT_EQ(s.library.manager->GetSurveillancePositions(copy), kDone);
        EXPECT_EQ(copy.limitOptions, c.options) << "a copy comes as it is stored";
        LimitRow* live = nullptr;
        ASSERT_EQ(s.library.manager->GetSurvPositions("C1", 3, kAllSecurities, live), kDone);
        ASSERT_EQ(live, &s.Row("C1", 3));
        EXPECT_EQ(live->limitOptions, c.optionsAfter);
        const bool rebuilt = c.limit != -2;
        EXPECT_EQ(live->grossExposureLimit, c.limit);
        EXPECT_EQ(live->turnoverLimit, rebuilt ? 2.5 * c.limit : -2);
        for (const double limit : {live->netSaleExposureLimit, live->netPositionLimit, live->mtmLossLimit,
                                   live->marginLimit}) {
            EXPECT_EQ(limit, rebuilt ? c.limit : -1);
        }
        EXPECT_EQ(live->netExposureLimit, -2) << "no multiplier";
        EXPECT_EQ(live->pendingOrderLimit, -2) << "never rebuilt";
    }
}

TEST(LimitAdmin, NoLimitIsNeverTheResultOfArithmetic) {
    CScenario s;
    s.House();
    s.Row("C1", 3).grossExposureMultiplier = 10000;
    s.Row("C1", 3).baseFund = -1;
    LimitRow* live = nullptr;
    ASSERT_EQ(s.library.manager->GetSurvPositions("C1", 3, kAllSecurities, live), kDone);
    EXPECT_LT(live->grossExposureLimit, -1.0);
    EXPECT_EQ(s.Check({}).errorCode, code::kGrossExposure);
}

}  // namespace
}  // namespace surv::test
