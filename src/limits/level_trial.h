#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "categories/category.h"
#include "platform/undo_log.h"
#include "shared/order.h"

namespace surv {

/// What happened to the order at one level in this call.
enum class LevelRoad : std::uint8_t {
    kPassedOver,  ///< the walk didn't come here, or left the level alone
    kChecked,
    kUpdated,  ///< taken in without a check: stays after a refusal
};

/// A run of elements in one of the shared buffers below.
struct BufferRange {
    std::size_t from = 0;
    std::size_t to = 0;
};

/// The lists of the host that a check fills; each may be null.
struct CheckLists {
    CPtrList* limitRows = nullptr;
    CPtrList* rollbackRows = nullptr;
};

/// One level's part in a call: its category, the order record its trial used, and where its traces lie.
struct LevelTrial {
    CSurveillanceCategory* category = nullptr;
    tagOrderInfoForSurv order;
    LevelRoad road = LevelRoad::kPassedOver;
    std::array<CSurvPosition*, 2> flatPositions{};  ///< the scrip's, by period, as the trial found them
    PeriodAccounts accounts{};                      ///< the order's own, once they hold it
    CUndoLog::Mark undoFrom;
    CUndoLog::Mark undoTo;
    BufferRange touched;   ///< rows that took the order
    BufferRange breaches;  ///< breach rows of a probe
};

/// Rows that the levels of one call have touched, and breach rows of a probe, level after level. Kept between calls
/// for its memory alone.
struct TrialBuffers {
    std::vector<CSurvLimitEntry*> touched;
    std::vector<tagBreachRow> breaches;

    void Clear() {
        touched.clear();
        breaches.clear();
    }
};

}  // namespace surv
