#include "risk_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <iterator>
#include <limits>

#include "contract_master.h"
#include "json_record.h"
#include "replay.h"

namespace survhost {
namespace {

using Days = std::chrono::sys_days;
using std::chrono::seconds;

constexpr Days kExchangeStart{std::chrono::year(1980) / 1 / 1};

// Tokens of exchanges have five digits or more; underlyings by number stay below them.
constexpr std::int32_t kFirstUnderlying = 1;
constexpr std::int32_t kFirstContract = kFirstNumberedContract;

/// Cuts to the width of the field and puts zeros behind.
template <std::size_t Width>
void SetText(char (&field)[Width], std::string_view text) {
    text.substr(0, Width - 1).copy(field, Width - 1);
}

/// Whole digits only; nothing else, and not beyond `width` of them.
std::optional<int> Digits(std::string_view text) {
    int number = 0;
    const bool plain = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return plain && read.ec == std::errc{} ? std::optional(number) : std::nullopt;
}

tagRPFUnderlyingRecord RecordOf(const RiskUnderlying& underlying) {
    tagRPFUnderlyingRecord record{};
    record.underlyingToken = underlying.token;
    record.calendarSpreadCharge = underlying.calendarSpreadCharge;
    record.shortOptionMinimumCharge = underlying.shortOptionMinimumCharge;
    return record;
}

tagRPFContractRecord RecordOf(const RiskContract& contract, std::int32_t underlyingToken) {
    const bool option = contract.key.type != ContractType::kFuture;
    tagRPFContractRecord record{};
    SetText(record.contract.instrumentName, option ? "OPT" : "FUT");
    SetText(record.contract.symbol, contract.key.symbol);
    record.contract.expiryDate = contract.key.expiryDate;
    record.contract.strikePrice = contract.key.strikePrice;
    if (option) {
        record.contract.optionType[0] = contract.key.type == ContractType::kCall ? 'C' : 'P';
        record.contract.optionType[1] = contract.american ? 'A' : 'E';
    }
    record.token = contract.token;
    record.underlyingToken = underlyingToken;
    record.contractPrice = contract.price;
    for (std::size_t i = 0; i < contract.risk.size(); ++i) record.riskArray[i] = contract.risk[i];
    record.compositeDelta = contract.compositeDelta;
    return record;
}

/// One ProcessRPFInfo after the other.
class LineWriter {
 public:
    explicit LineWriter(std::int16_t segment) : segment_(segment) {}

    void Add(std::int16_t messageCode) { Write(Message(messageCode)); }
    void Add(std::int16_t messageCode, std::string_view argument, Json value) {
        Json line = Message(messageCode);
        line[std::string(argument)] = std::move(value);
        Write(line);
    }
    [[nodiscard]] std::string Take() { return std::move(lines_); }

 private:
    [[nodiscard]] Json Message(std::int16_t messageCode) const {
        return {{"call", "ProcessRPFInfo"}, {"messageCode", messageCode}, {"segment", segment_}, {"toStaging", 1}};
    }
    void Write(const Json& line) {
        WriteJson(line, lines_);
        lines_ += '\n';
    }

    std::int16_t segment_;
    std::string lines_;
};

void NumberContracts(RiskFile& file) {
    std::int32_t next = kFirstContract;
    for (RiskContract& contract : file.contracts) contract.token = next++;
}

/// Takes out what the master lacks.
void LookUpContracts(RiskFile& file, const std::string& master, std::ostream& notes) {
    const ContractTokens tokens = ReadContractMaster(master);
    const std::size_t all = file.contracts.size();
    std::erase_if(file.contracts, [&](RiskContract& contract) {
        const auto found = tokens.find(contract.key);
        if (found != tokens.end()) contract.token = found->second;
        return found == tokens.end();
    });
    if (const std::size_t missing = all - file.contracts.size(); missing > 0) {
        notes << fmt::format("{}: {} of {} contracts are not in the master and are left out\n", master, missing, all);
    }
}

}  // namespace

std::string Described(const ContractKey& key) {
    const Days expiry = kExchangeStart + std::chrono::duration_cast<std::chrono::days>(seconds(key.expiryDate));
    const std::chrono::year_month_day day(expiry);
    const std::string date = fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()),
                                         static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    if (key.type == ContractType::kFuture) return fmt::format("{} {} future", key.symbol, date);
    return fmt::format("{} {} {:.2f} {}", key.symbol, date, key.strikePrice / 100.0,
                       key.type == ContractType::kCall ? "call" : "put");
}

void GiveTokens(RiskFile& file, const ImportOptions& options, std::ostream& notes) {
    if (file.underlyings.size() > static_cast<std::size_t>(kFirstContract - kFirstUnderlying)) {
        throw RunError(fmt::format("{}: {} underlyings are too many to number", options.file, file.underlyings.size()));
    }
    std::int32_t next = kFirstUnderlying;
    for (RiskUnderlying& underlying : file.underlyings) underlying.token = next++;
    if (options.master.empty()) {
        NumberContracts(file);
    } else {
        LookUpContracts(file, options.master, notes);
    }
}

std::string ReplayLines(const RiskFile& file, std::int16_t segment) {
    LineWriter lines(segment);
    lines.Add(28001);
    lines.Add(28003);
    lines.Add(28004);
    for (const RiskUnderlying& underlying : file.underlyings) {
        lines.Add(28006, "underlying", DecodeRecord(RecordOf(underlying)));
    }
    lines.Add(28005, "count", file.underlyings.size());
    lines.Add(28007);
    for (const RiskContract& contract : file.contracts) {
        const std::int32_t underlyingToken = file.underlyings[contract.underlying].token;
        lines.Add(28009, "contract", DecodeRecord(RecordOf(contract, underlyingToken)));
    }
    lines.Add(28008, "count", file.contracts.size());
    lines.Add(28002);
    return lines.Take();
}

std::string ReadWhole(const std::string& name) {
    std::ifstream file = OpenScript(name);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (file.bad()) throw RunError(fmt::format("{}: cannot be read", name));
    return text;
}

RunError FileFault(const std::string& file, std::size_t line, std::string_view what) {
    return RunError(fmt::format("{}:{}: {}", file, line, what));
}

std::optional<std::int32_t> ExchangeDate(std::string_view text, std::string_view separator) {
    const std::size_t gap = separator.size();
    if (text.size() != 8 + 2 * gap) return std::nullopt;
    if (text.substr(4, gap) != separator || text.substr(6 + gap, gap) != separator) return std::nullopt;
    const auto year = Digits(text.substr(0, 4));
    const auto month = Digits(text.substr(4 + gap, 2));
    const auto day = Digits(text.substr(6 + 2 * gap, 2));
    if (!year || !month || !day) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok()) return std::nullopt;
    const std::int64_t count = seconds(Days(date) - kExchangeStart).count();
    if (count <= 0 || count > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
    return static_cast<std::int32_t>(count);
}

std::optional<double> FiniteNumber(std::string_view text) {
    double number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = read.ec == std::errc{} && read.ptr == text.data() + text.size();
    return whole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<std::int32_t> StrikeInPaise(double rupees) {
    const double paise = std::round(rupees * 100);
    if (!(paise >= 1 && paise <= std::numeric_limits<std::int32_t>::max())) return std::nullopt;
    return static_cast<std::int32_t>(paise);
}

}  // namespace survhost
