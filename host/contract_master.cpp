#include "contract_master.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <sstream>
#include <string_view>
#include <vector>

namespace survhost {
namespace {

/// Names with a comma stand in quotes; a quote inside them stands twice.
std::vector<std::string> SplitCells(std::string_view line) {
    std::vector<std::string> cells(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"') {
            cells.back() += line[++i];
        } else if (line[i] == '"') {
            quoted = !quoted;
        } else if (line[i] == ',' && !quoted) {
            cells.emplace_back();
        } else {
            cells.back() += line[i];
        }
    }
    return cells;
}

enum Column : std::uint8_t { kToken, kSymbol, kType, kStrike, kExpiry, kColumnCount };
constexpr std::array<std::string_view, kColumnCount> kColumnNames{"exchange_token", "underlying_symbol",
                                                                  "instrument_type", "strike_price", "expiry"};

class MasterReader {
 public:
    explicit MasterReader(const std::string& name) : name_(name) {}

    ContractTokens Read() {
        std::istringstream text(ReadWhole(name_));
        for (std::string line; std::getline(text, line);) {
            ++line_;
            if (line.ends_with('\r')) line.pop_back();
            cells_ = SplitCells(line);
            if (line_ == 1) {
                ReadNames();
            } else if (!line.empty()) {
                ReadRow();
            }
        }
        if (line_ == 0) throw Fault("the file is empty");
        return std::move(tokens_);
    }

 private:
    [[nodiscard]] RunError Fault(std::string_view what) const {
        return FileFault(name_, std::max(line_, kFirst), what);
    }

    void ReadNames() {
        for (std::size_t i = 0; i < kColumnCount; ++i) {
            const auto found = std::find(cells_.begin(), cells_.end(), kColumnNames[i]);
            if (found == cells_.end()) throw Fault(fmt::format("no column \"{}\"", kColumnNames[i]));
            places_[i] = static_cast<std::size_t>(found - cells_.begin());
        }
    }

    [[nodiscard]] const std::string& Cell(Column column) const {
        if (places_[column] >= cells_.size()) throw Fault(fmt::format("\"{}\" is missing", kColumnNames[column]));
        return cells_[places_[column]];
    }
    /// The value read from a cell, or a complaint about what stands there.
    template <class Value>
    [[nodiscard]] Value Checked(Column column, std::optional<Value> value) const {
        if (!value) throw Fault(fmt::format("\"{}\": {} will not do", kColumnNames[column], Cell(column)));
        return *value;
    }

    [[nodiscard]] std::optional<ContractType> Type() const {
        const std::string& type = Cell(kType);
        if (type == "FUT") return ContractType::kFuture;
        if (type == "CE") return ContractType::kCall;
        if (type == "PE") return ContractType::kPut;
        return std::nullopt;
    }
    [[nodiscard]] std::int32_t Strike() const {
        const std::optional<double> rupees = FiniteNumber(Cell(kStrike));
        return Checked(kStrike, rupees ? StrikeInPaise(*rupees) : std::nullopt);
    }
    [[nodiscard]] std::int32_t Token() const {
        const std::string& text = Cell(kToken);
        std::int32_t token = 0;
        const auto read = std::from_chars(text.data(), text.data() + text.size(), token);
        const bool good = read.ec == std::errc{} && read.ptr == text.data() + text.size() && token > 0;
        return Checked(kToken, good ? std::optional(token) : std::nullopt);
    }

    void ReadRow() {
        const std::optional<ContractType> type = Type();
        if (!type) return;
        const ContractKey key{Cell(kSymbol), *type, Checked(kExpiry, ExchangeDate(Cell(kExpiry), "-")),
                              *type == ContractType::kFuture ? -1 : Strike()};
        if (!tokens_.try_emplace(key, Token()).second) throw Fault(fmt::format("{} stands twice", Described(key)));
    }

    static constexpr std::size_t kFirst = 1;
    const std::string& name_;
    std::size_t line_ = 0;
    std::vector<std::string> cells_;
    std::array<std::size_t, kColumnCount> places_{};
    ContractTokens tokens_;
};

}  // namespace

ContractTokens ReadContractMaster(const std::string& name) { return MasterReader(name).Read(); }

}  // namespace survhost
