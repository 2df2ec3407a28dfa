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
    house.RiskMessage(28006, 2, &underlying, sizeof underlying);
    house.RiskMessage(28006, 2, &infinite, sizeof infinite);
    house.RiskMessage(28009, 2, &orphan, sizeof orphan);
    house.RiskMessage(28009, 2, &broken, sizeof broken);
    const std::int32_t two = 2, three = 3;
    house.RiskMessage(28005, 2, &two, sizeof two);
    house.RiskMessage(28008, 2, &two, sizeof two);
    EXPECT_EQ(house.notifications, (Texts{"Update of underlying info failed", "Update of contract info failed",
                                          "Update of contract info failed"}))
        << "failed stores count";
    house.notifications.clear();
    house.RiskMessage(28005, 2, &three, sizeof three);
    const std::int32_t one = 1;
    house.RiskMessage(28008, 2, &one, sizeof one);
    EXPECT_EQ(house.notifications, (Texts{"Number of underlyings incorrect", "Number of contracts incorrect"}));
    const CRPFParameterTable& staging = house.library.context.risk.staging;
    EXPECT_EQ(staging.FindUnderlying(2, kUnderlying)->record.calendarSpreadCharge, 1.0F);
    EXPECT_EQ(staging.FindUnderlying(2, kUnderlying)->contracts.Size(), 0U);
}

/// Records wait until the end message, and its segment keys them; what a second file doesn't name stays.
TEST(RiskFile, TheEndMessageMovesStagingIntoTheLiveTable) {
    CScenario house;
    const RiskParameters& risk = house.library.context.risk;
    const tagRPFUnderlyingRecord underlying = UnderlyingRecord(kUnderlying, 1, 0);
    house.RiskFile(2, {underlying}, {ContractRecord({.token = 5})});
    const tagRPFContractRecord moved = ContractRecord({.token = 8});
    house.RiskMessage(28006, 2, &underlying, sizeof underlying);
    house.RiskMessage(28009, 2, &moved, sizeof moved);
    const CRPFUnderlyingWiseInfo* live = risk.live.FindUnderlying(2, kUnderlying);
    EXPECT_EQ(live->FindContract(2, 8), nullptr) << "not yet";
    house.RiskMessage(28002, 64);
    EXPECT_TRUE(risk.staging.underlyings.Empty());
    EXPECT_NE(live->FindContract(2, 5), nullptr);
    EXPECT_EQ(live->FindContract(2, 8), nullptr);
    EXPECT_NE(risk.live.FindUnderlying(64, kUnderlying)->FindContract(64, 8), nullptr);
    house.RiskMessage(28009, 2, &moved, sizeof moved, false);
    EXPECT_NE(live->FindContract(2, 8), nullptr) << "straight into the live table";
    house.RiskFile(kMaskMcx, {underlying}, {ContractRecord({.token = 5})});  // which nothing is margined by
    EXPECT_NE(risk.live.FindUnderlying(kMaskMcx, kUnderlying)->FindContract(kMaskMcx, 5), nullptr);
}

}  // namespace
}  // namespace surv::test
