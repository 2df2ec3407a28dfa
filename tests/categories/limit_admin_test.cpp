#include <gtest/gtest.h>

#include "support/scenario.h"

namespace surv::test {
namespace {

using LimitRow = BKSurveillanceLimitDefTag;
using Figures = std::vector<double>;

TEST(LimitAdmin, EachRefusalHasItsText) {
    using Operation = std::function<std::int16_t(CSurveillanceManager&, LimitRow&, tagAdminErrMessage*)>;
    const Operation kAdd = &CSurveillanceManager::AddSurvLimits;
    const Operation kChange = &CSurveillanceManager::UpdateSurvLimits;
    const Operation kRemove = [](auto& manager, auto& row, auto* error) {
        return manager.RemoveSurvLimits(row, error);
    };
    const Operation kRead = [](auto& manager, auto& row, auto*) { return manager.GetSurveillancePositions(row); };
    const struct {
        const char* name;
        const Operation& operation;
        const char* entity;
        std::int16_t mask;
        std::int32_t token;
        const char* text;  // null: done
        bool stamped;
    } cases[] = {
        {"add", kAdd, "C1", 3, -9, "Surveillance Limits already available for C1 - across all securities", true},
        {"add scrip", kAdd, "C1", 3, 500, "500|Surveillance Limits already available for C1", true},
        {"add without a mask", kAdd, "NEW", 0, -101, "-101|Surveillance Limits already available for NEW", true},
        {"add a mask", kAdd, "C1", 2, 500, nullptr, false},
        {"change, no mask", kChange, "C1", 5, -9, "Surveillance Limits not available for C1 - across all securities",
         false},
        {"change, no entity", kChange, "NEW", 3, -9,
         "Surveillance Limits not available for NEW - across all securities", false},
        {"change, no scrip", kChange, "C1", 3, 501, "501|Surveillance Limits not available for  C1", true},
        {"change, full field", kChange, "ABCDEFGH", 3, 1, "1|Surveillance Limits not available for  ABCDEFGH", true},
        {"remove", kRemove, "C1", 3, -9, "Surveillance Limits across all securities cannot be removed", false},
        {"remove, no scrip", kRemove, "C1", 3, 501, "501|Surveillance Limits not available for  C1", true},
        {"remove, no mask", kRemove, "C1", 5, 500, "500|Surveillance Limits not available for  C1", true},
        {"remove scrip", kRemove, "C1", 3, 500, nullptr, false},
        {"read, no mask", kRead, "C1", 5, -9, "", false},
        {"read, removed", kRead, "C1", 3, 500, "", false},
    };
    CScenario s;
    s.Limit("C1", 3);
    s.Limit("C1", 3, {}, 500);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        LimitRow row = EmptyLimit(c.entity, c.mask, c.token);
        tagAdminErrMessage error{};
        EXPECT_EQ(c.operation(*s.library.manager, row, &error), c.text ? kNotDone : kDone);
        EXPECT_STREQ(error.errorText, c.text ? c.text : "");
        EXPECT_EQ(error.timeStamp, c.stamped ? CScenario::kNow : 0);
    }
    EXPECT_EQ(s.library.manager->FindCategory("NEW"), nullptr) << "a failed add has left its entity";
}

TEST(LimitAdmin, AChangeTakesOverTheDefinitionAndNoFigure) {
    // From, to, and whether always or only when messageKind isn't 13: the stamp; limits, fund, net quantity; the
    // defined fund; multipliers, rowOption; minima of an order.
    constexpr std::tuple<std::size_t, std::size_t, bool> kTaken[] = {
        {24, 28, true}, {46, 134, true}, {451, 459, true}, {134, 170, false}, {467, 479, false}};
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
                row.limitMask = 3, row.token = kAllSecurities;
                return row;
            };
            live = filled(stored);
            LimitRow given = filled(0xFF - stored), expected = live;
            given.messageKind = kind;
            ASSERT_EQ(s.library.manager->UpdateSurvLimits(given, nullptr), kDone);
            for (const auto& [from, to, always] : kTaken) {
                if (always || kind != 13)
                    std::memset(reinterpret_cast<char*>(&expected) + from, 0xFF - stored, to - from);
            }
            expected.limitOptions = static_cast<std::uint8_t>(stored ^ (kind == 13 ? 0b0000'1001 : 0b0001'1111));
            const std::string_view seen(reinterpret_cast<char*>(&live), sizeof live);
            const std::string_view due(reinterpret_cast<char*>(&expected), sizeof expected);
            EXPECT_EQ(std::mismatch(seen.begin(), seen.end(), due.begin()).first - seen.begin(), sizeof live);
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
        Limit("C2", 3);
        Order("C1", 2885, kBuy, 100, 25000, 60);
        Order("C2", 2885, kSell, 100, 25000, 30);
        Order("C1", 500, kSell, 40, 10000, 10);
        Held("D1", Period::kExpiry)->data.lastPrice = 26000;
    }
    /// A row with `figure` in some of its figures, as it comes back.
    LimitRow Added(std::int16_t mask, std::int32_t token, double figure) {
        LimitRow row = EmptyLimit("D1", mask, token);
        row.usedGrossOrder = row.usedMtm = row.usedTurnoverTraded = row.usedMaxNet = row.grossUsedMaxGross = figure;
        EXPECT_EQ(library.manager->AddSurvLimits(row, nullptr), kDone);
        const LimitRow stored = Row("D1", mask, token);
        EXPECT_EQ(std::memcmp(&row, &stored, sizeof row), 0) << "the caller's record shows what was stored";
        return row;
    }

 private:
    void Order(const char* client, std::int32_t token, std::int16_t side, std::int32_t quantity, std::int32_t price,
               std::int32_t traded) {
        Check({.token = token, .buySell = side, .quantity = quantity, .price = price, .client = client});
        for (CSurvPosition* p :
             {Held("D1", Period::kExpiry, token), HeldBy("D1", Period::kExpiry, "G1", client, token)}) {
            (side == kBuy ? p->data.tradedBuyQty : p->data.tradedSellQty) += traded;
            (side == kBuy ? p->data.tradedBuyValue : p->data.tradedSellValue) += double{1} * traded * price;
        }
    }
};

TEST(LimitAdmin, AnAddWorksOutWhatIsUsed) {
    CHeldHouse s;
    // Netted: 2885 buys 2.5 M and sells 2.5 M, 1.5 M and 0.75 M traded; 500 sells 0.4 M, 0.1 M traded.
    const LimitRow r = s.Added(0x13, kAllSecurities, 1);
    EXPECT_EQ((Figures{r.usedGrossOrder, r.usedNetSaleOrder, r.usedNetPositionOrder, r.usedTurnoverOrder}),
              (Figures{400'001, 400'000, -400'000, 5'400'000}));
    EXPECT_EQ((Figures{r.usedGrossTraded, r.usedNetTraded, r.usedNetSaleTraded, r.usedNetPositionTraded}),
              (Figures{850'000, 750'000, 100'000, 650'000}));
    EXPECT_EQ((Figures{r.usedMaxGross, r.usedMaxNet, r.usedMaxNetSale, r.usedMaxNetPosition, r.usedMaxTurnover}),
              (Figures{2'150'000, 1'750'001, 1'400'000, 1'350'000, 5'400'000}));
    EXPECT_EQ((Figures{r.usedPendingOrder, r.usedMtm, r.grossUsedMaxGross, r.grossUsedMaxNet, r.grossUsedMaxNetSale}),
              (Figures{3'050'000, 30'001, 5'400'001, 2'500'000, 2'900'000}));

    const std::tuple<const char*, std::int16_t, std::int32_t, Figures> scrips[]{
        {"a scrip's row is overwritten, its grossing figures added",
         3,
         500,
         {400'000, 0, 100'000, 0, 400'007, 300'000}},
        {"no such position", 3, 999, {0, 0, 0, 0, 7, 0}},
        {"nothing has traded in the daily set", 2, 500, {400'000, 0, 0, 0, 400'007, 400'000}},
        {"a combined mask has no scrip", 0x13, 500, {0, 0, 0, 0, 7, 0}},
    };
    for (const auto& [name, mask, token, figures] : scrips) {
        const LimitRow row = s.Added(mask, token, 7);
        EXPECT_EQ((Figures{row.usedGrossOrder, row.usedMtm, row.usedTurnoverTraded, row.usedMaxNet,
                           row.grossUsedMaxGross, row.usedPendingOrder}),
                  figures)
            << name;
    }
}

TEST(LimitAdmin, AWideRowTakesItsScopeAndStartsWithoutTurnover) {
    CHeldHouse s;
    s.Held("D1", Period::kExpiry, 500)->data.limitMask = 9;  // as a row of options had brought it
    s.HeldBy("D1", Period::kExpiry, "G1", "C1", 500)->data.limitMask = 9;
    s.library.manager->FindCategory("D1")->Book(Period::kExpiry).accounts.FindAccount("G1", "C2")->aggregate = true;
    const Figures all{0, 2'350'000, 2'900'000}, withoutOptions{0, 2'250'000, 2'500'000};
    const Figures withTurnover{5'000'000, 2'250'000, 2'500'000};
    // figures: turnover of orders, of trades; grossing: the aggregate account is left out
    const std::tuple<std::int16_t, const Figures&> cases[]{{0x13, withTurnover},
                                                           {0x81, withTurnover},
                                                           {0xD, all},
                                                           {0xF, all},
                                                           {0x7F, all},
                                                           {0x1FF, all},
                                                           {0x61, withoutOptions},
                                                           {0x101, withoutOptions},
                                                           {0x181, withoutOptions}};
    for (const auto& [mask, figures] : cases) {
        const LimitRow row = s.Added(mask, kAllSecurities, 0);
        EXPECT_EQ((Figures{row.usedTurnoverOrder, row.usedTurnoverTraded, row.grossUsedGrossOrder}), figures) << mask;
    }
    EXPECT_EQ(s.Added(3, 2885, 0).grossUsedGrossOrder, 2'500'000);
}

TEST(LimitAdmin, AReadRebuildsTheLimitsFromTheFundOfThePreference) {
    constexpr double kFund = 100 + 20, kCollateral = 1000, kCredit = 30000;
    struct Given {
        const char* code;
        std::int32_t exchange;
        std::uint8_t fundFlags;
    };
    const struct {
        const char* name;
        std::vector<Given> preferences;
        std::uint8_t options, optionsAfter;
        double limit;  // -2: as it was
    } cases[] = {
        {"sale credit", {{"C1", -1, 0x40}}, 0x00, 0x40, kFund + kCredit},
        {"both, other bits apart", {{"C1", -1, 0xFF}}, 0x0E, 0x6E, kFund + kCollateral + kCredit},
        {"nor does everybody's", {{"*****", -1, 0x60}, {"C1", 1, 0}}, 0x00, 0x00, kFund},
        {"the family's comes first", {{"F1", -1, 0x20}, {"C1", -1, 0x40}}, 0x00, 0x20, kFund + kCollateral},
        {"limits stay as defined", {{"C1", -1, 0x20}}, 0x01, 0x21, -2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CScenario s({.featureBits = 0x10});
        s.library.context.stores.clientFamilyMap.FindOrMake("C1", "F1");
        for (const Given& p : c.preferences) {
            s.Preference(p.code, p.exchange, [&p](auto& record) { record.fundFlags = p.fundFlags; });
        }
        s.Limit("C1", 3, [&c](LimitRow& row) {
            row.baseFund = 100, row.definedFund = 20, row.collateralFund = kCollateral, row.saleCreditFund = kCredit;
            row.limitOptions = c.options, row.grossExposureLimit = -2, row.grossExposureMultiplier = 10000;
        });
        LimitRow copy = EmptyLimit("C1", 3);
        ASSERT_EQ(s.library.manager->GetSurveillancePositions(copy), kDone);
        EXPECT_EQ(copy.limitOptions, c.options) << "a copy comes as it is stored";
        LimitRow* live = nullptr;
        ASSERT_EQ(s.library.manager->GetSurvPositions("C1", 3, kAllSecurities, live), kDone);
        ASSERT_EQ(live, &s.Row("C1", 3));
        EXPECT_EQ(live->limitOptions, c.optionsAfter);
        EXPECT_EQ(live->grossExposureLimit, c.limit);
    }
}

}  // namespace
}  // namespace surv::test
