#include "platform/clock.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/log_file.h"

namespace surv {
namespace {

TEST(Clock, TheDayBeginsAtLocalMidnight) {
    constexpr const char* kIndia = "IST-5:30";
    constexpr std::int64_t kMidnight = 1763663400;  // 2025-11-21 00:00 in India
    constexpr std::int32_t kDay = 16761 * 86400;    // whole days since 1980-01-01 there
    const struct {
        const char *name, *zone;
        std::int64_t now;
        std::int32_t base;
        const char* log;
    } cases[] = {
        {"evening before", kIndia, kMidnight - 1, kDay - 86400, "SurvDllLog_2025Y11M20D~23h59m59s.log"},
        {"midnight", kIndia, kMidnight, kDay, "SurvDllLog_2025Y11M21D~00h00m00s.log"},
        {"a host on UTC", "UTC0", kMidnight, kDay - 86400 + 19800, "SurvDllLog_2025Y11M20D~18h30m00s.log"},
        {"the clocks have gone forward since", "CET-1CEST,M3.5.0,M10.5.0/3", 1743328800, 1743289200 - 315513000,
         "SurvDllLog_2025Y03M30D~12h00m00s.log"},
        {"a year beyond 32 bits", "UTC0", 67767976233532805, 1941808344, "SurvDllLog_2147483648Y01M01D~00h00m05s.log"},
        {"a time beyond all years", "UTC0", 9'000'000'000'000'000'000, 1770379096,
         "SurvDllLog_1900Y01M00D~00h00m00s.log"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ::setenv("TZ", c.zone, 1);
        ::tzset();
        std::int64_t now = c.now;
        CClock clock;
        clock.Set([](void* context) { return *static_cast<std::int64_t*>(context); }, &now);
        EXPECT_EQ(clock.TradingDayBase(), c.base);
        EXPECT_EQ(SurvLogFileName(clock), c.log);
    }
}

}  // namespace
}  // namespace surv
