#include "mtm/mtm_log.h"

#include <ctime>
#include <string>

#include "platform/format.h"

namespace surv {
namespace {

constexpr int kNoon = 12;

const char* HalfOfDay(const std::tm& time) { return time.tm_hour < kNoon ? "AM" : "PM"; }

/// Noon and midnight are hour 0.
std::string FileName(const std::tm& time) {
    return Format("BroadcastMTM_%02d%02d%02d%s.log", time.tm_hour % kNoon, time.tm_min, time.tm_sec, HalfOfDay(time));
}

}  // namespace

CMtmLog::CMtmLog(const CClock& clock)
    : clock_(clock), file_(std::fopen(FileName(clock.LocalNow()).c_str(), "at"), &std::fclose) {
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
