#pragma once

#include <cstdint>

#include "positions/position.h"

namespace surv {

/// Every exposure that a limit row sums, of one position. Paise; formed once and shared by all rows.
struct ExposureFigures {
    std::int64_t maxNetQuantity = 0;
    GrossParts maxGross;
    GrossParts grossOrder;
    GrossParts grossTraded;
    double maxNet = 0;
    double netOrder = 0;
    double netTraded = 0;
    double maxNetSale = 0;
    double netSaleOrder = 0;
    double netSaleTraded = 0;
    double maxNetPosition = 0;
    double maxTurnover = 0;

    [[nodiscard]] static ExposureFigures Of(const CSurvPosition& position, GrossMode mode);
};

}  // namespace surv
