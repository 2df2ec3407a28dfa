#include <gtest/gtest.h>

#include <limits>

#include "support/scenario.h"

namespace surv::test {
namespace {

constexpr const char* kIsin = "INE002A01018";
constexpr const char* kSarIsin = "INE009A01021";

TEST(HoldingWorth, CollateralAndSaleCreditInPaise) {
    constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* name;
        std::int64_t held, nseBlocked, bseBlocked, counting;
        double price;
        std::int32_t haircut;
        double value;
    } collateral[] = {
        {"a quarter off 25 000 rupees", 100, 0, 0, 100, 25000, 2500, 1'875'000},
        {"more blocked than held", 100, 90, 60, 100, 25000, 2500, -937'500},
        {"beyond 32 bits", 3'000'000'000, 0, 0, 3'000'000'000, 100, 0, 3e11},
        {"no price", 100, 0, 0, 100, kNotANumber, 2500, 0},
    };
    for (const auto& c : collateral) {
        Holding holding;
        holding.holdingQty = c.held, holding.collateralQty = c.counting;
        holding.nse.blockedQty = c.nseBlocked, holding.bse.blockedQty = c.bseBlocked;
        holding.collateralPrice = c.price, holding.haircutRate = c.haircut;
        EXPECT_EQ(holding.FormCollateralValue(), c.value) << c.name;
    }
    const struct {
        double nseSold, nseBuys, bseSold, bseBuys, credit;
    } sales[] = {{1000, 400, 0, 0, 600}, {400, 1000, 0, 0, 0}, {400, 1000, 800, 300, 500}, {1000, 400, 300, 800, 600}};
    for (const auto& c : sales) {
        Holding holding;
        holding.nse.tradedSellValue = c.nseSold, holding.nse.orderBuyValue = c.nseBuys;
        holding.bse.tradedSellValue = c.bseSold, holding.bse.orderBuyValue = c.bseBuys;
        EXPECT_EQ(holding.FormSaleCredit(), c.credit) << c.nseSold << " " << c.bseSold;
    }
}

tagDPHolding HoldingRow(const char* code, std::string_view isin, std::int32_t quantity, double price,
                        std::int32_t haircut) {
    tagDPHolding row;
    std::memset(static_cast<void*>(&row), 0x7F, sizeof row);  // what isn't read must not get in
    WriteField(row.categoryCode, code);
    WriteField(row.isinCode, isin);
    row.holdingQty = quantity, row.collateralPrice = price, row.haircutRate = haircut;
    return row;
}
tagSarRow SarRow(const char* code, const char* isin, std::int16_t mask, std::int32_t quantity) {
    tagSarRow row{};
    WriteField(row.categoryCode, code);
    WriteField(row.isinCode, isin);
    WriteField(row.carriedText1, "SAR");
    row.limitMask = mask, row.quantity = quantity;
    return row;
}
tagDPUpload Upload(const char* code, const char* isin, std::int32_t quantity, double price, std::int32_t haircut) {
    tagDPUpload upload;
    std::memset(static_cast<void*>(&upload), 'U', sizeof upload);
    WriteField(upload.categoryCode, code);
    WriteField(upload.isinCode, isin);
    upload.quantity = quantity, upload.collateralPrice = price, upload.haircutRate = haircut;
    return upload;
}
tagSecurityIsinRow SecurityRow(std::int32_t token, const char* isin, std::int16_t exchange) {
    tagSecurityIsinRow row{};
    row.token = token, row.exchange = exchange;
    WriteField(row.isinCode, isin);
    return row;
}

/// C1 and C2 at the start of a day, each with rows of the masks 2, 3 and 0x1FF, C1 with one of a scrip too.
/// C1: two holding rows of one ISIN and a SAR row for it; SAR rows for two more. C2: one holding.
class CDepositoryHouse : public CScenario {
 public:
    CDepositoryHouse() {
        for (const char* code : {"C1", "C2"}) {
            for (const std::int16_t mask : std::initializer_list<std::int16_t>{2, 3, 0x1FF}) Limit(code, mask);
        }
        Limit("C1", 3, {}, 2885);
        tagDPHolding rows[]{HoldingRow("C1", kIsin, 100, 25000, 2500), HoldingRow("NOPE", kIsin, 1000, 25000, 0),
                            HoldingRow("C1", kIsin, 50, 26000, 5000), HoldingRow("C1", "", 7, 25000, 0),
                            HoldingRow("C2", "LONGISIN123456", 10, 100, 0)};
        WriteWholeField(rows[4].isinCode, "LONGISIN123456");  // fills its field
        tagSarRow sarRows[]{SarRow("C1", kSarIsin, 3, 20), SarRow("C1", kIsin, 0x11, 30), SarRow("C1", kIsin, 3, 4),
                            SarRow("C1", kIsin, 0x11, 5),  SarRow("C1", "", 3, 1),        SarRow("C1", "OTHER", 5, 9),
                            SarRow("NOPE", kIsin, 3, 1)};
        tagSecurityIsinRow securities[]{SecurityRow(2885, kIsin, 1), SecurityRow(2885, "SECOND", 1),
                                        SecurityRow(2885, "ATBSE", 8), SecurityRow(50, "FUTURE", 2)};
        Fill(rows, holdings_), Fill(sarRows, sar_), Fill(securities, securities_);
        EXPECT_EQ(library.manager->InitializeDPPositionInfo(&securities_, &holdings_, &sar_), kDone);
        EXPECT_EQ(library.manager->CollateralRecompute(0, "ALL", "ALL"), kDone);
    }
    CSurveillanceCategory& Client(const char* code = "C1") { return *library.manager->FindCategory(code); }
    Holding& Of(const char* isin) { return *Client().holdingsByIsin.Find(isin); }
    std::int16_t Take(const tagDPUpload& upload) { return library.manager->UpdateDPPositionInfo(upload); }
    /// The rows that a query gives, and its result; -9 where the list is null.
    std::vector<tagDPHolding> Ask(int kind, std::string_view code, std::string_view isin, std::int16_t result = kDone) {
        CPtrList list;
        EXPECT_EQ(library.manager->GetDPPositionInfoFromDll(kind, code, isin, &list), result);
        std::vector<tagDPHolding> rows;
        while (!list.IsEmpty()) {
            const std::unique_ptr<tagDPHolding> row(static_cast<tagDPHolding*>(list.RemoveHead()));
            rows.push_back(*row);
        }
        return rows;
    }

 private:
    template <class Row, std::size_t Count>
    static void Fill(Row (&rows)[Count], CPtrList& list) {
        for (Row& row : rows) list.AddTail(&row);
        list.AddTail(nullptr);
    }
    CPtrList holdings_, sar_, securities_;
};

TEST(Depository, AStartAddsUpWhatItsRowsBring) {
    CDepositoryHouse s;
    const std::vector<tagDPHolding> rows = s.Ask(1, "C1", "ALL");
    ASSERT_EQ(rows.size(), 3U);
    const tagDPHolding& held = rows[0];
    EXPECT_EQ(held.collateralQty, 150) << "the row's own is not read";
    EXPECT_EQ(held.collateralValue, 150 * 26000 * 0.5);
    EXPECT_EQ(held.nseSarQty, 4);
    EXPECT_EQ(held.bseSarQty, 35);
    EXPECT_EQ(std::string(held.carriedText4, 51), std::string(51, 0x7F)) << "carried to its last byte";
    EXPECT_EQ(rows[1].nseSarQty, 20) << "a receipt makes a holding";
    EXPECT_EQ(FieldText(rows[1].carriedText1), "SAR");
    EXPECT_EQ(rows[2].nseSarQty + rows[2].bseSarQty, 0) << "no exchange, no shares";
    EXPECT_EQ(s.Row("C1", 2).collateralFund, 0) << "daily rows have no fund of holdings";
    EXPECT_EQ(s.Row("C1", 3).collateralFund, 1'950'000.0);
    EXPECT_EQ(s.Row("C1", 3, 2885).collateralFund, 0);

    const ReferenceStores& stores = s.library.context.stores;
    EXPECT_EQ(stores.FindIsin(kMaskNseCash, 2885), std::string_view{kIsin}) << "the first row of a token stands";
    EXPECT_EQ(stores.FindIsin(kMaskBseCash, 2885), std::string_view{"ATBSE"});
    EXPECT_TRUE(stores.FindIsin(kMaskNseDerivatives, 50).Empty());
}

TEST(Depository, AnUploadAddsSharesAndUnblocksNothing) {
    CDepositoryHouse s;
    HoldingSide& nse = s.Of(kIsin).nse;
    nse.blockedQty = 40, nse.sarBlockedQty = 3, nse.tradedSellQty = 40;
    nse.tradedSellValue = 1'000'000, nse.orderBuyValue = 400'000;
    EXPECT_EQ(s.Take(Upload("C1", kIsin, 50, 20000, 1000)), kDone);
    const tagDPHolding held = s.Ask(1, "C1", kIsin).at(0);
    EXPECT_EQ(held.nseBlockedQty, 40);
    EXPECT_EQ(held.nseSarBlockedQty, 3);
    EXPECT_EQ(held.collateralValue, 160 * 20000 * 0.9);
    EXPECT_EQ(held.carriedText3[0], 0x7F) << "of the row that made the holding";
    EXPECT_EQ(s.Row("C1", 3).collateralFund, 2'880'000);
    EXPECT_EQ(s.Row("C1", 3).saleCreditFund, 600'000);
    EXPECT_EQ(s.Row("C1", 3).marginLimit, kNoLimit) << "limits follow when an order or a reader needs them";

    s.Take(Upload("C1", "NEW", 5, 100, 0));
    const tagDPHolding fresh = s.Ask(1, "C1", "NEW").at(0);
    EXPECT_EQ(std::string(fresh.carriedText3, 12), std::string(9, 'U') + std::string(3, '\0'));
    EXPECT_EQ(s.Row("C1", 0x1FF).collateralFund, 2'880'500);
    for (const char* code : {"C1", "NOPE"}) EXPECT_EQ(s.Take(Upload(code, code[0] == 'C' ? "" : kIsin, 5, 1, 0)), 0);
    EXPECT_EQ(s.Ask(0, "", "ALL").size(), 5U) << "no ISIN, no holding";
    s.Client().AddDPInfo(HoldingRow("C1", kIsin, -200, 1, 0));  // a row as at a start
    EXPECT_EQ(nse.blockedQty + nse.sarBlockedQty, 0);
    EXPECT_EQ(nse.tradedSellQty, 40);
}

TEST(Depository, QueriesShowWhatKindAndCodesSay) {
    CDepositoryHouse s;
    s.Client().holdingsByIsin.FindOrMake("BLANK");  // left by a call that was cut short
    s.Of(kIsin).holdingQty = 5'000'000'000, s.Of(kIsin).nse.blockedQty = -5'000'000'000;
    const struct {
        int kind;
        const char *code, *isin;
        std::int16_t result;
        std::vector<std::string_view> isins;
    } cases[] = {
        {0, "", "ALL", 0, {kIsin, kSarIsin, "OTHER", "LONGISIN123456"}},
        {1, "C1", "ALL", 0, {kIsin, kSarIsin, "OTHER"}},
        {1, "C1", "BLANK", 0, {}},
        {1, "NOPE", "ALL", -1, {}},
        {-1, "C1", "ALL", 0, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.kind << " " << c.code << " " << c.isin);
        const std::vector<tagDPHolding> rows = s.Ask(c.kind, c.code, c.isin, c.result);
        std::vector<std::string_view> isins;
        for (const tagDPHolding& row : rows) isins.push_back(FieldText(row.isinCode));
        EXPECT_EQ(isins, c.isins);
        EXPECT_EQ(s.library.manager->GetDPPositionInfoFromDll(c.kind, c.code, c.isin, nullptr), c.result);
        EXPECT_EQ(s.library.manager->CollateralRecompute(c.kind, c.code, "one"), c.result);
    }
    const tagDPHolding saturated = s.Ask(1, "C1", kIsin).at(0);
    EXPECT_EQ(saturated.holdingQty, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(saturated.nseBlockedQty, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(s.Take(Upload("C1", "BLANK", 5, 100, 0)), kDone);
    EXPECT_EQ(FieldText(s.Ask(1, "C1", "BLANK").at(0).categoryCode), "C1") << "a blank is made anew by its first row";
}

TEST(Depository, OneIsinWritesTheTotalsAsTheyStand) {
    CDepositoryHouse s;
    s.Of(kIsin).collateralPrice = 1;
    s.Client().collateralTotal = 77, s.Client().saleCreditTotal = 88;
    ASSERT_EQ(s.library.manager->CollateralRecompute(1, "C1", kIsin), kDone);
    EXPECT_EQ(s.Row("C1", 3).collateralFund, 77);
    EXPECT_EQ(s.Row("C1", 0x1FF).saleCreditFund, 88);
    EXPECT_EQ(s.Of(kIsin).collateralValue, 1'950'000) << "nothing is computed";
    EXPECT_EQ(s.Row("C2", 3).collateralFund, 1000) << "another category";
}

}  // namespace
}  // namespace surv::test
