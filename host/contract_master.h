#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "risk_file.h"

namespace survhost {

using ContractTokens = std::map<ContractKey, std::int32_t>;

/// Reads a contract master: comma separated, with a line of column names, of which exchange_token, underlying_symbol,
/// instrument_type (FUT, CE or PE; other rows are passed over), strike_price and expiry (2025-08-28) are read.
ContractTokens ReadContractMaster(const std::string& name);

/// Symbol and series.
using EquityKey = std::pair<std::string, std::string>;
using EquityTokens = std::map<EquityKey, std::int32_t>;

/// The same for equity: exchange_token, trading_symbol and instrument_type (the series) are read.
EquityTokens ReadEquityMaster(const std::string& name);

}  // namespace survhost
