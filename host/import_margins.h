#pragma once

// Margin rates as exchanges and clearing houses publish them, to the calls that load them.

#include <ostream>
#include <string>

#include "risk_file.h"

namespace survhost {

// Each reads the file of the options and gives its replay lines; `notes` is told what was left out for want of a token.
// A rate that is no number, or below 0, ends the import.

/// VaR margins of equity, extreme loss margin and additions included. NSE's lines, which begin with a control line,
/// need the equity master for their tokens; BSE's columns bring them as security codes.
std::string ImportVarMargins(const ImportOptions& options, std::ostream& notes);

/// Exposure margins of NSE derivatives by symbol, for every contract of the master. Options take the larger of their
/// symbol's two rates: which of them are far out of the money, the file doesn't tell.
std::string ImportExposureMargins(const ImportOptions& options, std::ostream& notes);

/// MCX margins: the rate of value that a loaded position is told, and the exposure rates that its margin is formed by.
/// Without a master contracts are numbered.
std::string ImportMcxMargins(const ImportOptions& options, std::ostream& notes);

}  // namespace survhost
