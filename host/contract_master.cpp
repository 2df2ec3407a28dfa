#include "contract_master.h"

#include <fmt/format.h>

#include <array>
#include <optional>
#include <string_view>

#include "csv_file.h"

namespace survhost {
namespace {

enum ContractColumn : std::uint8_t { kToken, kSymbol, kType, kStrike, kExpiry };
constexpr std::array<std::string_view, 5> kContractColumns{"exchange_token", "underlying_symbol", "instrument_type",
                                                           "strike_price", "expiry"};

std::optional<ContractType> TypeIn(std::string_view text) {
    if (text == "FUT") return ContractType::kFuture;
    if (text == "CE") return ContractType::kCall;
    if (text == "PE") return ContractType::kPut;
    return std::nullopt;
}

std::int32_t StrikeOf(const CsvFile& file) {
    const std::optional<double> rupees = FiniteNumber(file.Cell(kStrike));
    return file.Checked(kStrike, rupees ? StrikeInPaise(*rupees) : std::nullopt);
}

}  // namespace

ContractTokens ReadContractMaster(const std::string& name) {
    CsvFile file(name, kContractColumns);
    ContractTokens tokens;
    while (file.Next()) {
        const std::optional<ContractType> type = TypeIn(file.Cell(kType));
        if (!type) continue;
        const ContractKey key{file.Cell(kSymbol), *type, file.Checked(kExpiry, ExchangeDate(file.Cell(kExpiry), "-")),
                              *type == ContractType::kFuture ? -1 : StrikeOf(file)};
        if (!tokens.try_emplace(key, file.Token(kToken)).second) {
            throw file.Fault(fmt::format("{} stands twice", Described(key)));
        }
    }
    return tokens;
}

namespace {
enum EquityColumn : std::uint8_t { kEquityToken, kTradingSymbol, kSeries };
constexpr std::array<std::string_view, 3> kEquityColumns{"exchange_token", "trading_symbol", "instrument_type"};
}  // namespace

EquityTokens ReadEquityMaster(const std::string& name) {
    CsvFile file(name, kEquityColumns);
    EquityTokens tokens;
    while (file.Next()) {
        const EquityKey key{file.Cell(kTradingSymbol), file.Cell(kSeries)};
        if (!tokens.try_emplace(key, file.Token(kEquityToken)).second) {
            throw file.Fault(fmt::format("{} {} stands twice", key.first, key.second));
        }
    }
    return tokens;
}

}  // namespace survhost
