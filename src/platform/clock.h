#pragma once

#include <cstdint>
#include <ctime>

namespace surv {

/// Calendar seconds of 1980-01-01 00:00 at UTC+5:30, where exchange time starts.
inline constexpr std::int64_t kExchangeEpoch = 315513000;

/// The one source of time: the real clock unless the host has set its own.
class CClock {
 public:
    using Function = std::int64_t (*)(void* context);

    void Set(Function clock, void* context) {
        clock_ = clock;
        context_ = context;
    }
    /// Calendar seconds (UTC epoch).
    [[nodiscard]] std::int64_t Now() const { return clock_ ? clock_(context_) : std::time(nullptr); }
    /// Now, as the 32-bit field of a record.
    [[nodiscard]] std::int32_t Stamp() const { return static_cast<std::int32_t>(Now()); }
    /// Now, in the time zone of the process.
    [[nodiscard]] std::tm LocalNow() const;
    /// Today's local midnight in seconds of exchange time.
    [[nodiscard]] std::int32_t TradingDayBase() const;

 private:
    Function clock_ = nullptr;
    void* context_ = nullptr;
};

}  // namespace surv
