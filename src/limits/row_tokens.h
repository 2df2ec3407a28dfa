#pragma once

#include "shared/order.h"

namespace surv {

// An order meets up to three rows of a store: of all securities, of its scrip's group, of the scrip. A token that
// stands for two of them is asked once: as the scrip's if it is the group's too, as that of all securities if it is -9.

[[nodiscard]] inline bool HasScripRow(const tagOrderInfoForSurv& order) { return order.token != kAllSecurities; }

[[nodiscard]] inline bool HasGroupRow(const tagOrderInfoForSurv& order) {
    const std::int32_t group = order.scripGroupNumber;
    return group != 0 && group != kAllSecurities && group != order.token;
}

}  // namespace surv
