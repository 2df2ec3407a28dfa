#include <gtest/gtest.h>

#include <limits>

#include "support/row_bench.h"

namespace surv::test {
namespace {

using LimitRow = BKSurveillanceLimitDefTag;
using Request = tagRMSFundAllocationRequest;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int16_t kAllExchanges = 0x1FF;

Request Asking(double paise, std::string_view key = "C1", std::string_view name = "Client One") {
    Request request;
    std::memset(static_cast<void*>(&request), 0x55, sizeof request);
    WriteField(request.entityName, name);
    WriteWholeField(request.entityKey, key);
    request.requestedFund = paise;
    return request;
}

/// C1 with a fund of 100 000 rupees beside 20 000 defined, 5 000 of collateral and 2 500 of sales; margin of twice the
/// fund, 100 000 rupees of it in use. So (2 * 127 500 - 100 000) / 2 = 77 500 rupees are free.
class CFundedHouse : public CScenario {
 public:
    CFundedHouse() {
        Limit("C1", kAllExchanges);
        LimitRow& row = FundRow();
        row.baseFund = 10'000'000, row.definedFund = 2'000'000;
        row.collateralFund = 500'000, row.saleCreditFund = 250'000;
        row.marginMultiplier = 20000, row.marginLimit = 20'000'000;
        row.usedMarginOrder = 100'000, row.usedMarginMax = 120'000;
    }
    LimitRow& FundRow() { return Row("C1", kAllExchanges); }
    std::int16_t Allocate(Request& request, LimitRow* limit = nullptr) {
        return library.manager->RMSFundAllocation(request, limit);
    }
};

TEST(Funds, EachRequestIsAnsweredByWhatIsFree) {
    constexpr const char* kRetained = "Retain Multiplier setting should not be turned on";
    const struct {
        const char* name;
        void (*change)(LimitRow&);
        double requested;
        const char* text;  // null: done
        double marginLimit;
    } cases[] = {
        {"exactly what is free", nullptr, -7'750'000, nullptr, 4'500'000},
        {"a paisa more", nullptr, -7'750'001,
         "Insufficient Fund, Available Fund = 77500.00 , Requested Fund = -77500.01", 25'500'000},
        {"no more than the fund itself", [](LimitRow& r) { r.usedMarginOrder = 0; }, -10'000'001,
         "Insufficient Fund, Available Fund = 100000.00 , Requested Fund = -100000.01", 25'500'000},
        {"nothing, and the margin is overdrawn", [](LimitRow& r) { r.usedMarginOrder = 255'001; }, 0,
         "Insufficient Fund, Available Fund = -0.50 , Requested Fund = 0.00", 25'500'000},
        {"retained", [](LimitRow& r) { r.limitOptions = 0xFF, r.marginMultiplier = -1; }, 0, kRetained, 20'000'000},
        {"no multiplier", [](LimitRow& r) { r.marginMultiplier = -1; }, -1, "Margin Multiplier not set", 20'000'000},
        {"no margin limit, deposit", [](LimitRow& r) { r.marginLimit = -1; }, 1, nullptr, -1},
        {"margin that is no number", [](LimitRow& r) { r.usedMarginOrder = kNotANumber; }, -1,
         "Insufficient Fund, Available Fund = nan , Requested Fund = -0.01", 25'500'000},
        {"endless deposit", nullptr, kInfinity, "Insufficient Fund, Available Fund = 77500.00 , Requested Fund = inf",
         25'500'000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CFundedHouse s;
        LimitRow& row = s.FundRow();
        if (c.change) c.change(row);
        const double before = row.baseFund;
        Request request = Asking(c.requested);
        LimitRow given = EmptyLimit("?", 0);
        EXPECT_EQ(s.Allocate(request, &given), c.text ? kNotDone : kDone);
        EXPECT_EQ(request.headCode, c.text ? -1 : 0);
        EXPECT_EQ(request.messageCode, 13002);
        EXPECT_EQ(request.timeStamp, CScenario::kNow);
        EXPECT_EQ(row.baseFund, c.text ? before : before + c.requested);
        EXPECT_EQ(row.marginLimit, c.marginLimit);
        EXPECT_EQ(FieldText(given.entityCode), c.text ? "?" : "C1") << "the row is handed out on success alone";
        if (c.text) {
            EXPECT_STREQ(request.errorText, c.text);
        } else {
            EXPECT_EQ(request.usedMargin, 120'000) << "rupees, the larger of the two sides";
            EXPECT_EQ(given.baseFund, row.baseFund);
            EXPECT_EQ(given.marginLimit, row.marginLimit);
        }
    }
}

TEST(Funds, WithoutItsRowARequestIsRefused) {
    const std::string longName(60, 'N');
    const struct {
        const char* name;
        std::string key;
        std::int16_t headCode;
        std::string text;
    } cases[] = {
        {"never ending", longName, -100, "Surveillance Limits not available for  Client One"},
        {"other masks", "D1", -100, "Surveillance Limits for All Exchange Combined not available for  Client One"},
        {"a scrip alone", "ABCDEFGH", -1, "Surveillance details not available for the Dealer"},
    };
    CFundedHouse s;
    s.Limit("D1", 0x1FE);
    s.Limit("D1", 0x7F);
    LimitRow scrip = EmptyLimit("", kAllExchanges, 2885);
    WriteWholeField(scrip.entityCode, "ABCDEFGH");  // fills its field
    ASSERT_EQ(s.library.manager->AddSurvLimits(scrip, nullptr), kDone);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Request request = Asking(1'000'000, c.key);
        EXPECT_EQ(s.Allocate(request), kNotDone);
        EXPECT_EQ(request.headCode, c.headCode);
        EXPECT_STREQ(request.errorText, c.text.c_str());
    }
    Request unended = Asking(1, "NOPE");
    std::memset(unended.entityName, 'N', sizeof unended.entityName);
    s.Allocate(unended);
    EXPECT_EQ(std::string(unended.errorText), "Surveillance Limits not available for  " + std::string(32, 'N'));
}

TEST(Funds, TheLimitsThatAreSetFollowTheFundAlone) {
    CFundedHouse s;
    LimitRow& row = s.FundRow();
    row.grossExposureLimit = row.netExposureLimit = row.netSaleExposureLimit = row.turnoverLimit = row.mtmLossLimit = 5;
    row.grossExposureMultiplier = 15000, row.netExposureMultiplier = 10000, row.netSaleExposureMultiplier = -1;
    row.netPositionLimit = kNoLimit, row.netPositionMultiplier = 10000;
    row.turnoverMultiplier = 30000, row.mtmLossMultiplier = 5000;
    row.pendingOrderLimit = 7, row.pendingOrderMultiplier = 10000;
    Request deposit = Asking(1'000'000);
    ASSERT_EQ(s.Allocate(deposit), kDone);
    EXPECT_EQ(row.grossExposureLimit, 16'500'000);
    EXPECT_EQ(row.netExposureLimit, 11'000'000);
    EXPECT_EQ(row.netSaleExposureLimit, -1100) << "a multiplier of -1 is one like any other";
    EXPECT_EQ(row.netPositionLimit, kNoLimit);
    EXPECT_EQ(row.turnoverLimit, 33'000'000);
    EXPECT_EQ(row.mtmLossLimit, 5'500'000);
    EXPECT_EQ(row.marginLimit, 22'000'000);
    EXPECT_EQ(row.pendingOrderLimit, 7);

    row.baseFund = 9000;
    Request toAHundredRupees = Asking(1000);
    ASSERT_EQ(s.Allocate(toAHundredRupees), kDone);
    EXPECT_LT(row.netSaleExposureLimit, kNoLimit) << "a derived limit of -1.0 is not no limit";
    EXPECT_NEAR(row.netSaleExposureLimit, kNoLimit, 1e-9);
}

TEST(Funds, AnOrderIsJudgedByTheFundOfTheMoment) {
    constexpr std::uint8_t kBoth = kFundFlagCollateral | kFundFlagSaleCredit;
    const struct {
        const char* name;
        std::int32_t token;
        int fundFlags;
        std::uint8_t options;
        int limit;
    } cases[] = {
        {"collateral", kAllSecurities, kFundFlagCollateral, 0, 17'300'00},
        {"sale credit", kAllSecurities, kFundFlagSaleCredit, 0, 16'050'00},
        {"both", kAllSecurities, kBoth, 0, 18'350'00},
        {"the scrip's row", 2885, kBoth, 0, 18'000'00},
        {"kept as defined", kAllSecurities, kBoth, kRetainMultiplier, 9'000'00},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RowBench bench;
        bench.row.token = c.token, bench.row.limitOptions = c.options, bench.row.definedFund = 10'000'00;
        bench.row.baseFund = 5'000'00, bench.row.collateralFund = 2'000'00, bench.row.saleCreditFund = 1'000'00;
        bench.row.grossExposureLimit = 9'000'00, bench.row.grossExposureMultiplier = 10000;
        bench.order.riskPreference.fundFlags = static_cast<std::uint8_t>(c.fundFlags);
        bench.order.collateralDelta = 300'00, bench.order.saleCreditDelta = 50'00, bench.order.quantity = 1;
        bench.order.price = c.limit + 1;
        EXPECT_EQ(bench.Check().code, -202);
        bench.order.price = c.limit;
        ASSERT_TRUE(bench.Check().Passed());
        const bool taken = c.token == kAllSecurities;
        EXPECT_EQ(bench.row.grossExposureLimit, c.limit);
        EXPECT_EQ(bench.row.collateralFund, taken ? 2'300'00 : 2'000'00);
        EXPECT_EQ(bench.row.saleCreditFund, taken ? 1'050'00 : 1'000'00);
    }
}

}  // namespace
}  // namespace surv::test
