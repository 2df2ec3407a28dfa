#include "mtm/mtm_log.h"

#include <array>
#include <ctime>

namespace surv {
namespace {

constexpr int kNoon = 12;

const char* HalfOfDay(const std::tm& time) { return time.tm_hour < kNoon ? "AM" : "PM"; }

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Noon and midnight are hour 0. Takes no memory that could be missing.
File OpenLog(const std::tm& time) {
    std::array<char, 96> name{};
    std::snprintf(name.data(), name.size(), "BroadcastMTM_%02d%02d%02d%s.log", time.tm_hour % kNoon, time.tm_min,
                  time.tm_sec, HalfOfDay(time));
    return {std::fopen(name.data(), "at"), &std::fclose};
}

}  // namespace

CMtmLog::CMtmLog(const CClock& clock) : clock_(clock), file_(OpenLog(clock.LocalNow())) {
    if (file_) std::fputs("Time|Token|LastTradedPrice", file_.get());
}

void CMtmLog::Tell(const CBroadcastScrip& scrip) const {
    if (!file_) return;
    constexpr double kPaise = 100.0;
    const std::tm now = clock_.LocalNow();
    std::fprintf(file_.get(), "\n%02d:%02d:%02d_%s|%d|%.2f", now.tm_hour % kNoon, now.tm_min, now.tm_sec,
                 HalfOfDay(now), scrip.broadcastToken, scrip.lastTradedPrice / kPaise);
}

}  // namespace surv
