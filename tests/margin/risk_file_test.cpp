// The messages of a risk parameter file, right ones and wrong ones.

#include <gtest/gtest.h>

#include <limits>

#include "support/derivatives.h"

namespace surv::test {
namespace {

using Texts = std::vector<std::string>;

TEST(RiskFile, WrongLengthsChangeNothing) {
    struct {
        std::int16_t code;
        const char* text;
    } const cases[]{
        {28001, "Invalid Start Of RPF Details"},   {28002, "Invalid End Of RPF Details"},
        {28003, "Invalid RPF File Details"},       {28004, "Invalid start of underlying info"},
        {28005, "Invalid end of underlying info"}, {28006, "Invalid underlying info"},
        {28007, "Invalid start of contract info"}, {28008, "Invalid end of underlying info"},
        {28009, "Invalid contract info"},
    };
    CScenario house;
    char body[200]{};
    for (const auto& [code, text] : cases) {
        EXPECT_EQ(house.RiskMessage(code, 2, body, sizeof body), kNotDone) << code;
        // The head claims more than the host gives: nothing beyond it is read.
        EXPECT_EQ(house.RiskMessage(code, 2, nullptr, 0, true, code == 28006 ? 106 : 146), kNotDone) << code;
        EXPECT_EQ(house.notifications, (Texts{text, text})) << code;
        house.notifications.clear();
    }
    for (const std::int16_t unknown : {std::int16_t{28000}, std::int16_t{28010}}) {
        EXPECT_EQ(house.RiskMessage(unknown, 2, body, 7), kDone);
    }
    EXPECT_EQ(house.library.ProcessRPFInfo(nullptr, 24, true), kNotDone);
    EXPECT_EQ(house.library.ProcessRPFInfo(body, 0, true), kNotDone);
    EXPECT_EQ(house.library.ProcessRPFInfo(body, 8, true), kNotDone) << "too short to hold its code";
    EXPECT_TRUE(house.notifications.empty());
    EXPECT_EQ(house.library.context.risk.underlyingCount, 0);
}

TEST(RiskFile, CountsTellOfWhatIsMissing) {
    CScenario house;
    const tagRPFUnderlyingRecord underlying = UnderlyingRecord(kUnderlying, 1, 1);
    tagRPFUnderlyingRecord infinite = underlying;
    infinite.calendarSpreadCharge = std::numeric_limits<float>::infinity();
    tagRPFContractRecord orphan = ContractRecord({.token = 5, .underlying = 77});
    tagRPFContractRecord broken = ContractRecord({.token = 6});
    broken.riskArray[15] = std::numeric_limits<float>::quiet_NaN();
    const std::int32_t two = 2;
    const std::int32_t three = 3;

    EXPECT_EQ(house.RiskMessage(28004, 2), kDone);
    EXPECT_EQ(house.RiskMessage(28006, 2, &underlying, sizeof underlying), kDone);
    EXPECT_EQ(house.RiskMessage(28006, 2, &infinite, sizeof infinite), kDone);
    EXPECT_EQ(house.RiskMessage(28005, 2, &three, sizeof three), kDone);
    EXPECT_EQ(house.RiskMessage(28007, 2), kDone);
    EXPECT_EQ(house.RiskMessage(28009, 2, &orphan, sizeof orphan), kDone);
    EXPECT_EQ(house.RiskMessage(28009, 2, &broken, sizeof broken), kDone);
    EXPECT_EQ(house.RiskMessage(28008, 2, &three, sizeof three), kDone);
    EXPECT_EQ(house.RiskMessage(28008, 2, &two, sizeof two), kDone) << "failed stores count";
    EXPECT_EQ(house.notifications, (Texts{"Update of underlying info failed", "Number of underlyings incorrect",
                                          "Update of contract info failed", "Update of contract info failed",
                                          "Number of contracts incorrect"}));
    const CRPFParameterTable& staging = house.library.context.risk.staging;
    EXPECT_EQ(staging.FindUnderlying(2, kUnderlying)->record.calendarSpreadCharge, 1.0F);
    EXPECT_EQ(staging.FindUnderlying(2, kUnderlying)->contracts.Size(), 0U);
}

/// Records wait until the end message; its segment keys them; what a second file doesn't name stays.
TEST(RiskFile, TheEndMessageMovesStagingIntoTheLiveTable) {
    CScenario house;
    const RiskParameters& risk = house.library.context.risk;
    const auto contract = [](std::int32_t token, float price) {
        return ContractRecord({.token = token, .price = price});
    };
    house.RiskFile(2, {UnderlyingRecord(kUnderlying, 1, 0)}, {contract(5, 10), contract(6, 10)});
    EXPECT_TRUE(risk.staging.underlyings.Empty());

    const tagRPFUnderlyingRecord charge = UnderlyingRecord(kUnderlying, 9, 0);
    house.RiskMessage(28006, 2, &charge, sizeof charge);
    EXPECT_EQ(risk.live.FindUnderlying(2, kUnderlying)->record.calendarSpreadCharge, 1.0F) << "not yet";
    house.RiskFile(2, {charge}, {contract(6, 20), contract(7, 20)});
    const CRPFUnderlyingWiseInfo* live = risk.live.FindUnderlying(2, kUnderlying);
    EXPECT_EQ(live->record.calendarSpreadCharge, 9.0F);
    EXPECT_EQ(live->FindContract(2, 5)->record.contractPrice, 10.0F);
    EXPECT_EQ(live->FindContract(2, 6)->record.contractPrice, 20.0F);
    EXPECT_EQ(live->FindContract(2, 7)->record.contractPrice, 20.0F);

    // Sent under one segment, ended under another: the end counts.
    const tagRPFContractRecord moved = contract(8, 30);
    house.RiskMessage(28006, 2, &charge, sizeof charge);
    house.RiskMessage(28009, 2, &moved, sizeof moved);
    house.RiskMessage(28002, 64);
    EXPECT_EQ(live->FindContract(2, 8), nullptr);
    EXPECT_NE(risk.live.FindUnderlying(64, kUnderlying)->FindContract(64, 8), nullptr);

    // Straight into the live table.
    const tagRPFContractRecord direct = contract(9, 40);
    house.RiskMessage(28009, 2, &direct, sizeof direct, false);
    EXPECT_NE(live->FindContract(2, 9), nullptr);
    EXPECT_TRUE(house.notifications.empty());
}

}  // namespace
}  // namespace surv::test
