#pragma once

#include <cstdint>

#include "margin/margin_records.h"
#include "positions/exposure_figures.h"
#include "positions/position.h"

namespace surv {

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
    MarginReading marginBefore;   ///< of the account on the order's exchange
    MarginReading marginAfter;
    MtmFigures mtm;  ///< formed for updates alone: a check moves no MTM

    /// Forms the figures from the four positions. REQUIRES: they are in place.
    void FormFigures(const tagOrderInfoForSurv& order, GrossMode mode);
};

/// Whether the order only reduces a held position; `after` is the position with the order in it.
[[nodiscard]] bool IsSquareOffOrder(const tagOrderInfoForSurv& order, const CSurvPosition& after);

}  // namespace surv
