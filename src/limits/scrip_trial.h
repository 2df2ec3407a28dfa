#pragma once

#include <cstdint>

#include "limits/margin_change.h"
#include "limits/rule_set.h"
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

    RuleSet set = RuleSet::kGeneral;  ///< the rules that judge the order here
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
    MarginChange positionMargin;  ///< of the netted position
    double conversionMargin = 0;  ///< rupees that a conversion frees on the side it takes from
    MtmFigures mtm;               ///< formed for updates alone: a check moves no MTM

    /// Forms the figures from the four positions. REQUIRES: they and the set are in place.
    void FormFigures(const tagOrderInfoForSurv& order, GrossMode mode);
};

/// Whether the order only reduces a held position; `after` is the position with the order in it.
[[nodiscard]] bool IsSquareOffOrder(const tagOrderInfoForSurv& order, const CSurvPosition& after);

}  // namespace surv
