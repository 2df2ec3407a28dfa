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

/// The MTM and the booked profit of a position before and after a change, as limit rows count them. Paise.
struct MtmFigures {
    double before = 0;
    double after = 0;
    double bookedBefore = 0;
    double bookedAfter = 0;
};

/// One order at one category in one period: the positions before and after it, and the figures of both. Rows read
/// it; nothing in it depends on a row.
struct ScripTrial {
    CSurvPosition before;  ///< the netted position of the scrip
    CSurvPosition after;
    CSurvPosition grossBefore;  ///< the account's own
    CSurvPosition grossAfter;

    ExposureFigures figuresBefore;
    ExposureFigures figuresAfter;
    ExposureFigures grossFiguresBefore;
    ExposureFigures grossFiguresAfter;
    bool squareOff = false;       ///< the order only reduces a held position
    bool grossSquareOff = false;  ///< the same on the grossing position
    double newValue = 0;          ///< paise, of the order after the event
    double oldValue = 0;          ///< paise, before it
    MtmFigures mtm;               ///< formed for updates alone: a check moves no MTM

    /// Forms the figures from the four positions. REQUIRES: they are in place.
    void FormFigures(const tagOrderInfoForSurv& order, GrossMode mode);
};

/// Whether the order only reduces a held position; `after` is the position with the order in it.
[[nodiscard]] bool IsSquareOffOrder(const tagOrderInfoForSurv& order, const CSurvPosition& after);

}  // namespace surv
