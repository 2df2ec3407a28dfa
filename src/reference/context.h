#pragma once

#include "margin/risk_parameters.h"
#include "platform/clock.h"
#include "platform/host_window.h"
#include "platform/undo_log.h"
#include "reference/products.h"
#include "reference/stores.h"
#include "shared/settings.h"

namespace surv {

/// Everything process-wide that the subsystems share, held by the one Library object and passed by reference.
struct SurvContext {
    Settings settings;
    ReferenceStores stores;
    ProductReference products;
    RiskParameters risk;  ///< not stores: a file replaces them during the day
    CClock clock;
    CHostWindow window;
    CUndoLog undo;  ///< empty between calls
};

}  // namespace surv
