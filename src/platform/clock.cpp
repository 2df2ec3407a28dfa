#include "platform/clock.h"

namespace surv {

std::tm CClock::LocalNow() const {
    const std::time_t now = Now();
    std::tm local{};
    return ::localtime_r(&now, &local) ? local : std::tm{};  // a time beyond all years may leave anything behind
}

std::int32_t CClock::TradingDayBase() const {
    std::tm midnight = LocalNow();
    midnight.tm_hour = 0;
    midnight.tm_min = 0;
    midnight.tm_sec = 0;
    midnight.tm_isdst = -1;
    return static_cast<std::int32_t>(std::mktime(&midnight) - kExchangeEpoch);
}

}  // namespace surv
