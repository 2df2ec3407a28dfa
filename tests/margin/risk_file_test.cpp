// The messages of a risk parameter file, right ones and wrong ones.

#include <gtest/gtest.h>

#include <limits>

#include "support/derivatives.h"

namespace surv::test {
namespace {

using Texts = std::vector<std::string>;

/// Of each code the replay of a whole file shows it.
TEST(RiskFile, NothingIsReadBeyondWhatTheHostGives) {
    CScenario house;
    char body[200]{};
    EXPECT_EQ(house.RiskMessage(28006, 2, nullptr, 0, true, 106), kNotDone) << "the head claims more";
    EXPECT_EQ(house.RiskMessage(28009, 2, nullptr, 0, true, 146), kNotDone);
    EXPECT_EQ(house.notifications, (Texts{"Invalid underlying info", "Invalid contract info"}));
    house.notifications.clear();
    for (const std::int32_t length : {0, 8}) EXPECT_EQ(house.library.ProcessRPFInfo(body, length, true), kNotDone);
    EXPECT_EQ(house.library.ProcessRPFInfo(nullptr, 24, true), kNotDone);
    EXPECT_TRUE(house.notifications.empty());
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
    house.RiskMessage(28006, 2, &underlying, sizeof underlying);
    house.RiskMessage(28006, 2, &infinite, sizeof infinite);
    house.RiskMessage(28005, 2, &two, sizeof two);
    house.RiskMessage(28009, 2, &orphan, sizeof orphan);
    house.RiskMessage(28009, 2, &broken, sizeof broken);
    house.RiskMessage(28008, 2, &two, sizeof two);
    EXPECT_EQ(house.notifications, (Texts{"Update of underlying info failed", "Update of contract info failed",
                                          "Update of contract info failed"}))
        << "failed stores count";
    for (const std::int32_t told : {1, 3}) {
        house.notifications.clear();
        house.RiskMessage(28005, 2, &told, sizeof told);
        house.RiskMessage(28008, 2, &told, sizeof told);
        EXPECT_EQ(house.notifications, (Texts{"Number of underlyings incorrect", "Number of contracts incorrect"}));
    }
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
    house.RiskFile(kMaskMcx, {charge}, {contract(5, 10)});  // which nothing is margined by
    EXPECT_NE(risk.live.FindUnderlying(kMaskMcx, kUnderlying)->FindContract(kMaskMcx, 5), nullptr);
    EXPECT_TRUE(house.notifications.empty());
}

}  // namespace
}  // namespace surv::test
