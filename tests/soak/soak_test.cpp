// Days of a house by chance, and the simulation itself: what it plays reaches everything, and what it finds is cut
// short.

#include <gtest/gtest.h>

#include <algorithm>

#include "again.h"
#include "restart.h"

namespace soak {
namespace {

constexpr int kCalls = 300;
#ifdef SURVEILLANCE_SANITIZED
constexpr std::uint32_t kDays = 12, kRestartDays = 6, kDaysAgain = 3;  // the whole row of days is the release build's
#else
constexpr std::uint32_t kDays = 24, kRestartDays = 12, kDaysAgain = 10;
#endif

TEST(Soak, EverythingHoldsAfterEveryCall) {
    Tally seen;
    for (std::uint32_t seed = 1; seed <= kDays; ++seed) {
        const Day day = Simulate(seed, kCalls);
        for (const auto& [what, count] : day.seen) seen[what] += count;
        if (!day.fault.Found()) continue;
        const std::string file = testing::TempDir() + "soak-" + std::to_string(seed) + ".jsonl";
        WriteScript(file, Shrink(day.script, day.fault), day.fault.check);
        FAIL() << "seed " << seed << ", call " << day.fault.call << ": " << day.fault.check << ": " << day.fault.what
               << "\nthe calls that it takes are in " << file;
    }
    // A day that does nothing holds, too.
    for (const char* what : {"accepted", "refused", "UpdateSurveillance"}) EXPECT_GT(seen[what], 15 * kDays) << what;
    for (const char* what :
         {"probes", "AddAndComputeMTM", "UpdateSurvLimits", "UpdateDPPositionInfo", "ended at once"}) {
        EXPECT_GT(seen[what], 2 * kDays) << what;
    }
    for (const char* what : {"code 2223", "told to the dealer alone", "orders in lots"}) {
        EXPECT_GT(seen[what], 0U) << what;
    }
    EXPECT_GT(seen["figures compared"], 300'000 * kDays);
    EXPECT_GT(seen["figures of scrips compared"], 100'000 * kDays);
    EXPECT_GT(seen["rows shown"], 150 * kDays);
    EXPECT_GT(seen["margins compared"], 100'000 * kDays);
}

TEST(Soak, AStoppedDayGoesOnFromTheRowsThatAHostKeeps) {
    std::size_t orders = 0, refusals = 0, rowsOfScreens = 0;
    for (std::uint32_t seed = 1; seed <= kRestartDays; ++seed) {
        const RestartDay day = Restart(seed, kCalls / 2, kCalls / 2);
        ASSERT_FALSE(day.fault.Found()) << "seed " << seed << ", call " << day.fault.call << ": " << day.fault.what;
        orders += day.orders, refusals += day.refusals, rowsOfScreens += day.rowsOfScreens;
    }
    EXPECT_GT(orders, 60 * kRestartDays);
    EXPECT_GT(refusals, 15 * kRestartDays);
    EXPECT_GT(rowsOfScreens, 15 * kRestartDays);
}

TEST(Soak, ADayIsTheSameAgainAndInAnyOrderOfItsHolders) {
    std::size_t orders = 0;
    for (std::uint32_t seed = 1; seed <= kDaysAgain; ++seed) {
        for (const auto play : {&PlayAgain, &PlayShuffled}) {
            const AgainDay day = play(seed, kCalls);
            ASSERT_FALSE(day.fault.Found()) << "seed " << seed << (play == &PlayAgain ? "" : ", shuffled") << ", call "
                                            << day.fault.call << ": " << day.fault.what;
            orders += day.orders;
        }
    }
    EXPECT_GT(orders, 400 * kDaysAgain);
}

TEST(Soak, AFalseInvariantIsCutToTheCallsThatBreakIt) {
    Day day;
    for (std::uint32_t seed = 6; seed < 16 && !day.fault.Found(); ++seed) day = Simulate(seed, kCalls, Planted::kYes);
    ASSERT_EQ(day.fault.check, "planted");
    const Script left = Shrink(day.script, day.fault, Planted::kYes);
    EXPECT_LE(left.size(), 6U);  // a start, a buy, a sell, and what they need to be taken
    const std::string file = testing::TempDir() + "soak-planted.jsonl";
    WriteScript(file, left, "a false invariant");
    EXPECT_EQ(Play(ReadScript(file), Planted::kYes).check, "planted");
    EXPECT_FALSE(Play(left).Found());
}

}  // namespace
}  // namespace soak
