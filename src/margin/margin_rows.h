#pragma once

#include "categories/category.h"

namespace surv {

class CSurveillanceManager;

/// The part whose limit row an exchange's derivatives stand in. REQUIRES: a derivative exchange mask.
[[nodiscard]] MarginPart PartOfExchange(std::int16_t exchangeMask);

/// Writes a category's margin of one part, summed from its accounts, into the part's own row and into every row that
/// holds the part among others. A missing row is stepped over.
void PublishMargin(const CSurveillanceManager& manager, CSurveillanceCategory& category, MarginPart part);

/// The same for the part's own row alone.
void PublishOwnRow(const CSurveillanceManager& manager, CSurveillanceCategory& category, MarginPart part);

}  // namespace surv
