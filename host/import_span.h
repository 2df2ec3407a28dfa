#pragma once

// Risk parameter files in the XML form 4.00, as clearing houses publish them for scenario margins.

#include <string>

#include "risk_file.h"

namespace survhost {

/// Reads a file; `name` is for complaints. Throws RunError at the first thing that isn't as it must be.
///
/// Underlyings are the combined commodities that a future or an option belongs to; a commodity with cash instruments
/// only has none. Of several calendar charges or short option minimums the largest is taken, which is the safe side.
/// Values of the file are those of one contract, so the price and the delta are made so too: price times contract value
/// factor, delta times delta scale.
RiskFile ReadSpan(const std::string& text, const std::string& name);

/// Reads the file of the options, gives its tokens and writes its replay lines.
std::string ImportSpan(const ImportOptions& options, std::ostream& notes);

}  // namespace survhost
