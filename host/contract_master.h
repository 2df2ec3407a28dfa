#pragma once

// Instrument masters: which token an exchange gives to what. Comma separated, with a line of column names.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "risk_file.h"

namespace survhost {

using ContractTokens = std::map<ContractKey, std::int32_t>;

/// Reads a master of contracts, of which exchange_token, underlying_symbol, instrument_type (FUT, CE or PE; other rows
/// are passed over), strike_price and expiry (2025-08-28) are read.
ContractTokens ReadContractMaster(const std::string& name);

/// One share or bond in one series.
struct Security {
    std::string symbol;
    std::string series;
    std::int32_t token = 0;

    /// "SYMBOL EQ": by this one of a master and one of a day file are the same.
    [[nodiscard]] std::string Name() const { return symbol + ' ' + series; }
};

/// Reads a master of cash securities in file order, of which exchange_token, trading_symbol and instrument_type (the
/// series) are read.
std::vector<Security> ReadSecurityMaster(const std::string& name);

}  // namespace survhost
