#include "contract_master.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>
#include <set>

#include "csv_file.h"

namespace survhost {
namespace {

constexpr const char* kUnderlyingSymbol = "underlying_symbol";  ///< a column of contracts alone

std::int32_t TokenIn(const CsvFile& file, std::size_t column) {
    const std::string& text = file.Cell(column);
    std::int32_t token = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), token);
    const bool good = read.ec == std::errc{} && read.ptr == text.data() + text.size() && token > 0;
    return file.Checked(column, good ? std::optional(token) : std::nullopt);
}

std::optional<ContractType> TypeOf(const std::string& text) {
    if (text == "FUT") return ContractType::kFuture;
    if (text == "CE") return ContractType::kCall;
    if (text == "PE") return ContractType::kPut;
    return std::nullopt;
}

class ContractReader {
 public:
    explicit ContractReader(const std::string& name)
        : file_(name),
          token_(file_.Column("exchange_token")),
          symbol_(file_.Column(kUnderlyingSymbol)),
          type_(file_.Column("instrument_type")),
          strike_(file_.Column("strike_price")),
          expiry_(file_.Column("expiry")) {}

    ContractTokens Read() {
        while (file_.NextRow()) {
            if (const auto type = TypeOf(file_.Cell(type_))) Enter(*type);
        }
        return std::move(tokens_);
    }

 private:
    void Enter(ContractType type) {
        const auto expiry = file_.Checked(expiry_, ExchangeDate(file_.Cell(expiry_), "-"));
        const ContractKey key{file_.Cell(symbol_), type, expiry, type == ContractType::kFuture ? -1 : Strike()};
        if (!tokens_.try_emplace(key, TokenIn(file_, token_)).second) {
            throw file_.Fault(fmt::format("{} stands twice", Described(key)));
        }
    }
    [[nodiscard]] std::int32_t Strike() const {
        const std::optional<double> rupees = FiniteNumber(file_.Cell(strike_));
        return file_.Checked(strike_, rupees ? StrikeInPaise(*rupees) : std::nullopt);
    }

    CsvFile file_;
    std::size_t token_;
    std::size_t symbol_;
    std::size_t type_;
    std::size_t strike_;
    std::size_t expiry_;
    ContractTokens tokens_;
};

}  // namespace

ContractTokens ReadContractMaster(const std::string& name) { return ContractReader(name).Read(); }

std::vector<Security> ReadSecurityMaster(const std::string& name) {
    CsvFile file(name);
    if (file.HasColumn(kUnderlyingSymbol)) throw file.Fault("this is a master of contracts, not of cash securities");
    const std::size_t token = file.Column("exchange_token");
    const std::size_t symbol = file.Column("trading_symbol");
    const std::size_t series = file.Column("instrument_type");
    std::vector<Security> securities;
    std::set<std::string> names;
    while (file.NextRow()) {
        securities.push_back({file.Cell(symbol), file.Cell(series), TokenIn(file, token)});
        const std::string described = securities.back().Name();
        if (!names.insert(described).second) throw file.Fault(fmt::format("{} stands twice", described));
    }
    return securities;
}

}  // namespace survhost
