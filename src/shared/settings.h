#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "surveillance/codes.h"

namespace surv {

/// Two settings for each exchange that tell whether square-off alone is allowed now.
class CAutoSquareOffSettings {
 public:
    enum Kind : std::int16_t { kTime = 0, kSession = 1 };

    /// An unknown kind or mask changes nothing.
    void Set(std::int16_t kind, std::int16_t exchangeMask, std::int16_t value);
    /// 0 for an unknown mask.
    [[nodiscard]] std::int16_t Get(Kind kind, std::int16_t exchangeMask) const;

 private:
    std::array<std::array<std::int16_t, 6>, 2> values_{};
};

/// The passes that lay the whole MTM of every position into the limit rows, where others move differences.
enum class MtmReload : std::uint8_t {
    kNone,
    kOpening,  ///< the end of a start: booked profit is laid in as well
    kOnline,   ///< the rebuild during the day: booked profit goes on by its differences
};

/// Everything that the host fixes at the start or changes later; all zero when the library is loaded.
struct Settings {
    bool started = false;                  ///< survInitialized: a start has succeeded and no clean-up has followed
    std::int16_t rpfMarginMode = 0;        ///< 1: derivative orders are margined from the risk parameter tables
    std::int16_t limitDetailMessages = 0;  ///< 0: short refusal texts at the root, ADMIN and entities of type 7
    std::int16_t mtmMode = 0;              ///< 0: no mark to market; else bits 1 cash, 2 futures, 4 options
    bool mtmCashOn = false;                ///< class flags of mtmMode: they only ever turn on
    bool mtmFuturesOn = false;
    bool mtmOptionsOn = false;
    MtmReload mtmReloadPhase = MtmReload::kNone;
    std::int16_t positionMode = 0;             ///< 0 to 3: how positions are held; any other value acts as 0
    bool familyLevelEnabled = false;           ///< the family level of the hierarchy is in force; only ever turns on
    std::int32_t featureBits = 0;              ///< as the long start gave them
    std::int32_t tradingDayBase = 0;           ///< today's local midnight, exchange seconds
    std::int32_t marginPlusMinOrderValue = 0;  ///< rupees; 0: no such test
    std::int16_t orderBasedPosition = 0;       ///< 1: positions are built from orders
    std::int32_t mtmTimeInterval = 0;          ///< seconds between two MTM recomputations of a scrip
    std::int16_t mtmTickCount = 0;             ///< ticks that force one
    std::int16_t mcxLotWeightOn = 0;           ///< 1: MCX quantities and values are weighted by lot
    std::int16_t transactionLogging = 0;       ///< stored; nothing reads it
    CAutoSquareOffSettings autoSquareOff;
    std::string survLogFileName;  ///< rebuilt by each operation that logs

    /// positionMode 2 or 3: limit rows in lists are the live rows.
    [[nodiscard]] bool RowsAreLive() const { return positionMode == 2 || positionMode == 3; }
    /// positionMode 2 or 3, or positions built from orders: positions by client are held inside categories, and the
    /// rows handed in at the start stay alive.
    [[nodiscard]] bool HoldsClientPositions() const { return RowsAreLive() || orderBasedPosition == 1; }
    /// Position rows fill the positions by client of their accounts; in mode 1 orders don't.
    [[nodiscard]] bool RowsFillClientPositions() const { return positionMode == 1 || HoldsClientPositions(); }
    /// The class flags follow the mask, but a flag that is on stays on.
    void WidenMtmClasses(std::int16_t mask);
};

}  // namespace surv
