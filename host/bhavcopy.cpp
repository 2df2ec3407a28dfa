#include "bhavcopy.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include "contract_master.h"
#include "csv_file.h"
#include "json_record.h"
#include "record_table.h"
#include "surveillance/codes.h"

namespace survhost {
namespace {

/// What tells one kind of day file from the other.
struct FileKind {
    std::string_view key;  ///< column that names the scrip
    std::int16_t exchangeMask;
    std::int32_t firstToken;
    std::array<std::string_view, kDayPriceCount> prices;
};
constexpr FileKind kEquityFile{
    "SYMBOL", surv::kMaskNseCash, 1, {"PREV_CLOSE", "OPEN_PRICE", "HIGH_PRICE", "LOW_PRICE", "CLOSE_PRICE"}};
constexpr FileKind kFuturesFile{"CONTRACT_D",
                                surv::kMaskNseDerivatives,
                                100'001,
                                {"PREVIOUS_S", "OPEN_PRICE", "HIGH_PRICE", "LOW_PRICE", "CLOSE_PRIC"}};

/// "FUTSTK360ONE26-SEP-2024": six letters of the instrument, the symbol, the expiry.
std::optional<ContractKey> FutureNamed(std::string_view text) {
    constexpr std::size_t kInstrument = 6;
    constexpr std::size_t kDate = 11;
    constexpr std::string_view kMonths = "JANFEBMARAPRMAYJUNJULAUGSEPOCTNOVDEC";
    if (text.size() <= kInstrument + kDate || !text.starts_with("FUT")) return std::nullopt;
    const std::string_view date = text.substr(text.size() - kDate);
    const std::size_t month = kMonths.find(date.substr(3, 3));
    if (date[2] != '-' || date[6] != '-' || month % 3 != 0) return std::nullopt;  // nothing found: no multiple of 3
    const auto expiry =
        ExchangeDate(fmt::format("{}{:02}{}", date.substr(7), month / 3 + 1, date.substr(0, 2)), std::string_view{});
    if (!expiry) return std::nullopt;
    const std::string_view symbol = text.substr(kInstrument, text.size() - kInstrument - kDate);
    return ContractKey{std::string(symbol), ContractType::kFuture, *expiry, -1};
}

class DayReader {
 public:
    explicit DayReader(const std::string& name)
        : file_(name),
          kind_(file_.HasColumn(kFuturesFile.key) ? kFuturesFile : kEquityFile),
          key_(file_.Column(kind_.key)) {
        if (!IsFutures()) series_ = file_.Column("SERIES");
        for (std::size_t i = 0; i < prices_.size(); ++i) prices_[i] = file_.Column(kind_.prices[i]);
    }

    Bhavcopy Read() {
        Bhavcopy day{kind_.exchangeMask, {}};
        std::set<std::string> names;
        while (file_.NextRow()) {
            day.scrips.push_back(ReadScrip());
            DayOfScrip& scrip = day.scrips.back();
            scrip.token = kind_.firstToken + static_cast<std::int32_t>(names.size());
            if (!names.insert(scrip.name).second) throw file_.Fault(fmt::format("{} stands twice", scrip.name));
        }
        return day;
    }

 private:
    [[nodiscard]] bool IsFutures() const { return kind_.exchangeMask == surv::kMaskNseDerivatives; }

    [[nodiscard]] DayOfScrip ReadScrip() const {
        DayOfScrip scrip;
        if (IsFutures()) {
            scrip.contract = file_.Checked(key_, FutureNamed(file_.Cell(key_)));
            scrip.name = Described(scrip.contract);
        } else {
            scrip.name = Security{file_.Cell(key_), file_.Cell(series_)}.Name();
        }
        for (std::size_t i = 0; i < prices_.size(); ++i) scrip.prices[i] = Price(prices_[i]);
        const auto traded = [&scrip](DayPrice price) { return scrip.prices[price] > 0; };
        if (traded(kOpen) && !(traded(kHigh) && traded(kLow) && traded(kClose))) {
            throw file_.Fault(fmt::format("{} has an open and lacks another price", scrip.name));
        }
        return scrip;
    }
    /// Nothing, or 0, where no one has traded.
    [[nodiscard]] std::int32_t Price(std::size_t column) const {
        const std::string& text = file_.Cell(column);
        const std::optional<double> rupees = text.empty() ? 0.0 : FiniteNumber(text);
        if (rupees == 0.0) return 0;
        return file_.Checked(column, rupees ? StrikeInPaise(*rupees) : std::nullopt);
    }

    CsvFile file_;
    const FileKind& kind_;
    std::size_t key_;
    std::size_t series_ = 0;
    std::array<std::size_t, kDayPriceCount> prices_{};
};

std::map<std::string, std::int32_t> SecurityTokens(const std::string& master) {
    std::map<std::string, std::int32_t> tokens;
    for (const Security& security : ReadSecurityMaster(master)) tokens.emplace(security.Name(), security.token);
    return tokens;
}

template <class Tokens, class Key>
void LookUp(Bhavcopy& day, const Tokens& tokens, Key keyOf) {
    std::erase_if(day.scrips, [&](DayOfScrip& scrip) {
        const auto found = tokens.find(keyOf(scrip));
        if (found != tokens.end()) scrip.token = found->second;
        return found == tokens.end();
    });
}

/// Gives the scrips the tokens of a master and takes out what it lacks.
void TakeTokens(Bhavcopy& day, const std::string& master, std::ostream& notes) {
    const std::size_t all = day.scrips.size();
    if (day.exchangeMask == surv::kMaskNseCash) {
        LookUp(
            day, SecurityTokens(master), [](const DayOfScrip& scrip) -> const auto& { return scrip.name; });
    } else {
        LookUp(
            day, ReadContractMaster(master), [](const DayOfScrip& scrip) -> const auto& { return scrip.contract; });
    }
    if (const std::size_t missing = all - day.scrips.size(); missing > 0) {
        notes << fmt::format("{}: {} of {} scrips are not in the master and are left out\n", master, missing, all);
    }
}

void WriteLine(const Json& line, std::string& lines) {
    WriteJson(line, lines);
    lines += '\n';
}

/// Until the day's own close is known, the close of a touchline is the one before.
Json TouchlineOf(const DayOfScrip& scrip, std::int16_t exchangeMask, DayPrice price) {
    tagBcastMBOOrMBPTouchline touchline{};
    touchline.exchange = exchangeMask;
    touchline.token = scrip.token;
    touchline.lastTradedPrice = scrip.prices[price];
    touchline.closePrice = scrip.prices[price == kClose ? kClose : kPreviousClose];
    return DecodeRecord(touchline);
}

}  // namespace

Bhavcopy ReadBhavcopy(const std::string& name) { return DayReader(name).Read(); }

std::string ImportBhavcopy(const ImportOptions& options, std::ostream& notes) {
    Bhavcopy day = ReadBhavcopy(options.file);
    if (!options.master.empty()) TakeTokens(day, options.master, notes);
    std::string lines;
    for (const DayPrice price : {kPreviousClose, kOpen, kHigh, kLow, kClose}) {
        for (const DayOfScrip& scrip : day.scrips) {
            const bool known = price == kPreviousClose ? scrip.prices[price] > 0 : scrip.prices[kOpen] > 0;
            if (!known) continue;
            WriteLine({{"call", "AddAndComputeMTM"},
                       {"compute", 1},
                       {"touchline", TouchlineOf(scrip, day.exchangeMask, price)}},
                      lines);
        }
    }
    return lines;
}

std::string ImportMaster(const ImportOptions& options, std::ostream& notes) {
    const std::vector<Security> securities = ReadSecurityMaster(options.file);
    std::map<std::string, std::int32_t> closes;
    if (!options.closes.empty()) {
        for (const DayOfScrip& scrip : ReadBhavcopy(options.closes).scrips) {
            if (scrip.prices[kClose] > 0) closes.emplace(scrip.name, scrip.prices[kClose]);
        }
    }
    Json records = Json::array();
    std::size_t missing = 0;
    for (const Security& security : securities) {
        constexpr std::size_t kSymbol = sizeof(tagTokenPriceRecord::symbol) - 1;
        constexpr std::size_t kSeries = sizeof(tagTokenPriceRecord::series) - 1;
        Json record{{"token", security.token},
                    {"exchange", surv::kMaskNseCash},
                    {"symbol", security.symbol.substr(0, kSymbol)},
                    {"series", security.series.substr(0, kSeries)}};
        const auto close = closes.find(security.Name());
        if (close != closes.end()) {
            record["closePrice"] = close->second;
        } else {
            ++missing;
        }
        records.push_back(std::move(record));
    }
    if (!options.closes.empty() && missing > 0) {
        notes << fmt::format("{}: {} of {} securities have no close\n", options.closes, missing, securities.size());
    }
    std::string lines;
    WriteLine({{"call", "InitializeTokenInfo"}, {"records", std::move(records)}}, lines);
    return lines;
}

}  // namespace survhost
