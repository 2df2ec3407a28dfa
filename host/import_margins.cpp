#include "import_margins.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "contract_master.h"
#include "csv_file.h"
#include "json_record.h"
#include "surveillance/codes.h"

namespace survhost {
namespace {

constexpr std::int16_t kRateOfValue = 1;  ///< marginBasis

/// One call with an array of records, as a line.
class RateCall {
 public:
    RateCall(std::string_view call, std::string_view argument) : call_(call), argument_(argument) {}

    template <class Record>
    void Add(const Record& record) {
        records_.push_back(DecodeRecord(record));
    }
    [[nodiscard]] std::string Line() const {
        std::string line;
        WriteJson(Json{{"call", call_}, {argument_, records_}}, line);
        return line + '\n';
    }

 private:
    std::string call_;
    std::string argument_;
    Json records_ = Json::array();
};

/// Rates have no more digits than this, so what lies below is the dust of a product.
double WithoutDust(double rate) { return std::round(rate * 1e4) / 1e4; }

void TellLeftOut(std::ostream& notes, const ImportOptions& options, std::size_t missing, std::size_t all,
                 std::string_view what) {
    if (missing == 0) return;
    notes << fmt::format("{}: {} of {} {} are not in the master and are left out\n", options.master, missing, all,
                         what);
}

void NeedMaster(const ImportOptions& options, std::string_view what) {
    if (options.master.empty()) throw RunError(fmt::format("{}: {} need a master (--master)", options.file, what));
}

/// Digits above 0.
std::optional<std::int32_t> TokenIn(std::string_view text) {
    std::int32_t token = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), token);
    const bool good = read.ec == std::errc{} && read.ptr == text.data() + text.size() && token > 0;
    return good ? std::optional(token) : std::nullopt;
}

/// Finite, and 0 or more.
std::optional<double> PercentIn(std::string_view text) {
    const std::optional<double> percent = FiniteNumber(text);
    return percent && *percent >= 0 ? percent : std::nullopt;
}
double PercentIn(const CsvFile& file, std::size_t column) { return file.Checked(column, PercentIn(file.Cell(column))); }

// ---------------------------------------------------------------------------------------------------------------
// VaR margins

tagMarginInfo VarRecord(std::int32_t token, double percent, std::int16_t exchange) {
    tagMarginInfo record{};
    record.token = token;
    record.marginBasis = kRateOfValue;
    record.marginRate = WithoutDust(percent * 100);
    record.exchange = exchange;
    return record;
}

constexpr std::string_view kControlLine = "10";
constexpr std::string_view kRecordLine = "20";

/// NSE: a control line "10,DDMMYYYY,index VaR,count", then the lines "20,SYMBOL,SERIES,…,applicable".
class NseVarFile {
 public:
    NseVarFile(const ImportOptions& options, const std::string& text) : options_(options), text_(text) {
        for (const Security& security : ReadSecurityMaster(options.master)) {
            tokens_.emplace(security.Name(), security.token);
        }
    }

    std::string Lines(std::ostream& notes) {
        for (std::string line; std::getline(text_, line);) {
            ++line_;
            if (line.ends_with('\r')) line.pop_back();
            if (line.empty()) continue;
            const std::vector<std::string> cells = SplitCells(line);
            if (line_ == 1) {
                ReadControl(cells);
            } else {
                ReadSecurity(cells);
            }
        }
        if (seen_.size() != announced_) {
            throw Fault(fmt::format("{} securities, but the control line tells of {}", seen_.size(), announced_));
        }
        TellLeftOut(notes, options_, missing_, seen_.size(), "securities");
        return call_.Line();
    }

 private:
    [[nodiscard]] RunError Fault(std::string_view what) const { return FileFault(options_.file, line_, what); }

    void ReadControl(const std::vector<std::string>& cells) {
        constexpr std::size_t kCount = 3;
        const auto count = cells.size() > kCount ? TokenIn(cells[kCount]) : std::nullopt;
        if (!count) throw Fault("the control line tells no count");
        announced_ = static_cast<std::size_t>(*count);
    }

    void ReadSecurity(const std::vector<std::string>& cells) {
        constexpr std::size_t kSymbol = 1;
        constexpr std::size_t kSeries = 2;
        constexpr std::size_t kApplicable = 9;
        if (cells[0] != kRecordLine) throw Fault(fmt::format("a line of kind {} is not known", cells[0]));
        if (cells.size() <= kApplicable) throw Fault(fmt::format("{} cells, not 10", cells.size()));
        const auto percent = PercentIn(cells[kApplicable]);
        if (!percent) throw Fault(fmt::format("the rate {} will not do", cells[kApplicable]));
        const std::string name = Security{cells[kSymbol], cells[kSeries]}.Name();
        if (!seen_.insert(name).second) throw Fault(fmt::format("{} stands twice", name));
        if (const auto token = tokens_.find(name); token != tokens_.end()) {
            call_.Add(VarRecord(token->second, *percent, surv::kMaskNseCash));
        } else {
            ++missing_;
        }
    }

    const ImportOptions& options_;
    std::istringstream text_;
    std::map<std::string, std::int32_t> tokens_;  ///< by Security::Name
    std::set<std::string> seen_;
    std::size_t line_ = 0;
    std::size_t announced_ = 0;
    std::size_t missing_ = 0;
    RateCall call_{"InitializeMarginInfo", "list"};
};

std::string BseVarLines(const ImportOptions& options) {
    CsvFile file(options.file);
    const std::size_t code = file.Column("security_code");
    const std::size_t applicable = file.Column("latest_var_plus_elm");
    RateCall call("InitializeMarginInfo", "list");
    std::set<std::int32_t> seen;
    while (file.NextRow()) {
        const std::int32_t token = file.Checked(code, TokenIn(file.Cell(code)));
        if (!seen.insert(token).second) throw file.Fault(fmt::format("{} stands twice", token));
        call.Add(VarRecord(token, PercentIn(file, applicable), surv::kMaskBseCash));
    }
    return call.Line();
}

// ---------------------------------------------------------------------------------------------------------------
// Exposure margins: paise times the rate over 10^8 are rupees, so a percent is 10,000.

std::int32_t ExposureRate(const CsvFile& file, std::size_t column) {
    const double rate = std::round(PercentIn(file, column) * 10000);
    const bool fits = rate <= std::numeric_limits<std::int32_t>::max();
    return file.Checked(column, fits ? std::optional(static_cast<std::int32_t>(rate)) : std::nullopt);
}

/// Of a symbol's derivatives; none where the file has no such line.
struct SymbolRates {
    std::optional<std::int32_t> other;
    std::optional<std::int32_t> outOfTheMoney;

    [[nodiscard]] std::optional<std::int32_t> Of(ContractType type) const {
        return type == ContractType::kFuture ? other : std::max(other, outOfTheMoney);
    }
};

std::map<std::string, SymbolRates> ReadSymbolRates(const std::string& name) {
    CsvFile file(name);
    const std::size_t symbolPlace = file.Column("Symbol");
    const std::size_t kindPlace = file.Column("Instrument Type");
    const std::size_t ratePlace = file.Column("Total applicable ELM%");
    std::map<std::string, SymbolRates> rates;
    while (file.NextRow()) {
        const std::string& kind = file.Cell(kindPlace);
        if (kind != "OTH" && kind != "OTM") throw file.Fault(fmt::format("{} is neither OTH nor OTM", kind));
        SymbolRates& symbol = rates[file.Cell(symbolPlace)];
        auto& rate = kind == "OTH" ? symbol.other : symbol.outOfTheMoney;
        if (rate) throw file.Fault(fmt::format("{} {} stands twice", file.Cell(symbolPlace), kind));
        rate = ExposureRate(file, ratePlace);
    }
    return rates;
}

constexpr std::string_view kAllMargins = "InitializeAllAdditionalMarginInfo";

// ---------------------------------------------------------------------------------------------------------------
// MCX

/// "18APR2019" as midnight of that day.
std::optional<std::int32_t> McxDate(std::string_view text) {
    constexpr std::array<std::string_view, 12> kMonths{"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                                       "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
    if (text.size() != 9) return std::nullopt;
    const auto* month = std::find(kMonths.begin(), kMonths.end(), text.substr(2, 3));
    return ExchangeDate(fmt::format("{}{:02}{}", text.substr(5), month - kMonths.begin() + 1, text.substr(0, 2)), "");
}

/// The tokens of futures: by the master, or numbered in the order in which they are asked for.
class McxTokens {
 public:
    explicit McxTokens(const std::string& master) {
        if (!master.empty()) known_ = ReadContractMaster(master);
    }
    /// Nothing for a contract that the master lacks.
    std::optional<std::int32_t> Of(const ContractKey& key) {
        if (!known_) return next_++;
        const auto found = known_->find(key);
        return found == known_->end() ? std::nullopt : std::optional(found->second);
    }

 private:
    std::optional<ContractTokens> known_;
    std::int32_t next_ = kFirstNumberedContract;
};

}  // namespace

std::string ImportVarMargins(const ImportOptions& options, std::ostream& notes) {
    const std::string text = ReadWhole(options.file);
    if (!text.starts_with(std::string(kControlLine) + ",")) return BseVarLines(options);
    NeedMaster(options, "symbols of NSE");
    return NseVarFile(options, text).Lines(notes);
}

std::string ImportExposureMargins(const ImportOptions& options, std::ostream& notes) {
    NeedMaster(options, "rates by symbol");
    const std::map<std::string, SymbolRates> rates = ReadSymbolRates(options.file);
    const ContractTokens contracts = ReadContractMaster(options.master);
    RateCall call(kAllMargins, "map");
    std::size_t missing = 0;
    for (const auto& [key, token] : contracts) {
        const auto symbol = rates.find(key.symbol);
        const auto rate = symbol == rates.end() ? std::nullopt : symbol->second.Of(key.type);
        if (!rate) {
            ++missing;
            continue;
        }
        tagAdditionalMarginInfo record{};
        record.exchange = surv::kMaskNseDerivatives;
        record.token = token;
        record.additionalMarginRate = *rate;
        call.Add(record);
    }
    if (missing > 0) {
        notes << fmt::format("{}: {} of {} contracts of the master have no rate\n", options.file, missing,
                             contracts.size());
    }
    return call.Line();
}

std::string ImportMcxMargins(const ImportOptions& options, std::ostream& notes) {
    CsvFile file(options.file);
    const std::size_t symbol = file.Column("symbol");
    const std::size_t expiry = file.Column("expiry");
    const std::size_t buy = file.Column("buy_margin_pct");
    const std::size_t sell = file.Column("sell_margin_pct");
    McxTokens tokens(options.master);
    RateCall rates("InitializeMCXMarginInfo", "records");
    RateCall exposure(kAllMargins, "map");
    std::set<ContractKey> seen;
    std::size_t missing = 0;
    while (file.NextRow()) {
        const ContractKey key{file.Cell(symbol), ContractType::kFuture,
                              file.Checked(expiry, McxDate(file.Cell(expiry))), -1};
        if (!seen.insert(key).second) throw file.Fault(fmt::format("{} stands twice", Described(key)));
        tagAdditionalMarginInfo sides{};
        sides.exchange = surv::kMaskMcx;
        sides.longMarginRate = ExposureRate(file, buy);
        sides.shortMarginRate = ExposureRate(file, sell);
        const auto token = tokens.Of(key);
        if (!token) {
            ++missing;
            continue;
        }
        sides.token = *token;
        exposure.Add(sides);
        tagMcxMarginRecord record{};
        record.token = *token;
        key.symbol.copy(record.symbol, sizeof record.symbol - 1);
        record.marginBasis = kRateOfValue;
        record.marginRate = std::max(PercentIn(file, buy), PercentIn(file, sell));
        record.exchange = surv::kMaskMcx;
        rates.Add(record);
    }
    TellLeftOut(notes, options, missing, seen.size(), "contracts");
    return rates.Line() + exposure.Line();
}

}  // namespace survhost
