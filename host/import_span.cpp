#include "import_span.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <pugixml.hpp>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace survhost {
namespace {

using Node = pugi::xml_node;

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view TextOf(Node node) {
    std::string_view text = node.child_value();
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    text.remove_suffix(text.size() - std::min(text.find_last_not_of(kBlanks) + 1, text.size()));
    return text;
}

class SpanReader {
 public:
    SpanReader(const std::string& text, const std::string& name) : text_(text), name_(name) {}

    RiskFile Read() {
        Parse();
        const Node root = document_.document_element();
        if (root.name() != std::string_view("spanFile")) {
            throw Fault(root, fmt::format("this is no risk parameter file: it begins with <{}>", root.name()));
        }
        if (const Node format = Only(root, "fileFormat"); TextOf(format) != "4.00") {
            throw Fault(format, fmt::format("file format {} is not known, only 4.00", TextOf(format)));
        }
        const Node house = Only(Only(root, "pointInTime"), "clearingOrg");
        for (const Node commodity : house.children("ccDef")) ReadLinks(commodity);
        for (const Node exchange : house.children("exchange")) ReadExchange(exchange);
        if (file_.contracts.empty()) throw Fault(house, "the file holds no future and no option");
        ReadUnderlyings();
        return std::move(file_);
    }

 private:
    using Portfolio = std::tuple<std::string, std::string, std::string>;  ///< exchange, kind, number

    struct Commodity {
        Node node;
        bool used = false;
    };

    // Faults and lines

    [[nodiscard]] RunError FaultAt(std::ptrdiff_t offset, std::string_view what) const {
        const auto end = text_.begin() + std::clamp<std::ptrdiff_t>(offset, 0, std::ssize(text_));
        return FileFault(name_, 1 + static_cast<std::size_t>(std::count(text_.begin(), end, '\n')), what);
    }
    [[nodiscard]] RunError Fault(Node node, std::string_view what) const { return FaultAt(node.offset_debug(), what); }

    /// The bytes are taken as they are, whatever encoding they claim: what is read of them is ASCII (see Code), and
    /// the parser's offsets stay those of the file.
    void Parse() {
        const auto parsed = document_.load_buffer(text_.data(), text_.size(), pugi::parse_default, pugi::encoding_utf8);
        if (parsed) return;
        if (parsed.status == pugi::status_no_document_element) throw FaultAt(0, "the file holds no XML");
        // Only at its end does a file that was cut off turn out not to be whole.
        const bool cut = parsed.offset >= static_cast<std::ptrdiff_t>(text_.find_last_not_of(kBlanks));
        throw FaultAt(parsed.offset,
                      fmt::format("broken XML: {}", cut ? "the file ends too early" : parsed.description()));
    }

    // Elements

    /// The child of that name, if there is one. Which of two was meant can't be known.
    [[nodiscard]] Node Maybe(Node parent, const char* name) const {
        const Node child = parent.child(name);
        if (const Node second = child.next_sibling(name)) {
            throw Fault(second, fmt::format("<{}> has a second <{}>", parent.name(), name));
        }
        return child;
    }
    [[nodiscard]] Node Only(Node parent, const char* name) const {
        const Node child = Maybe(parent, name);
        if (!child) throw Fault(parent, fmt::format("<{}> lacks <{}>", parent.name(), name));
        return child;
    }

    [[nodiscard]] double Number(Node node) const {
        const std::optional<double> number = FiniteNumber(TextOf(node));
        if (!number) throw Fault(node, fmt::format("<{}>: \"{}\" is not a number", node.name(), TextOf(node)));
        return *number;
    }
    /// As the 32-bit number that records hold. A zero has no sign.
    [[nodiscard]] float Short(double number, Node node) const {
        if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
            throw Fault(node, fmt::format("<{}>: {} is too large", node.name(), number));
        }
        return static_cast<float>(number) + 0.0F;
    }
    [[nodiscard]] float Charge(Node rate) const {
        const Node value = Only(rate, "val");
        const double charge = Number(value);
        if (charge < 0) throw Fault(value, "a charge is below zero");
        return Short(charge, value);
    }
    [[nodiscard]] std::string Code(Node parent, const char* name) const {
        const Node node = Only(parent, name);
        const std::string_view code = TextOf(node);
        const bool plain = std::all_of(code.begin(), code.end(), [](char c) { return c > ' ' && c <= '~'; });
        if (code.empty() || !plain) throw Fault(node, fmt::format("<{}> holds no code", name));
        return std::string(code);
    }

    // Combined commodities

    void ReadLinks(Node commodity) {
        if (!codes_.insert(Code(commodity, "cc")).second) {
            throw Fault(commodity, fmt::format("the combined commodity {} stands twice", Code(commodity, "cc")));
        }
        for (const Node link : commodity.children("pfLink")) {
            const Portfolio portfolio{Code(link, "exch"), Code(link, "pfType"), Code(link, "pfId")};
            if (!links_.try_emplace(portfolio, commodities_.size()).second) {
                throw Fault(link, fmt::format("the portfolio {} is linked twice", Code(link, "pfId")));
            }
        }
        commodities_.push_back({commodity});
    }

    /// A spread whose legs all lie in the commodity itself is one between its expiries.
    [[nodiscard]] static bool IsCalendarSpread(Node spread, std::string_view code) {
        return std::all_of(spread.begin(), spread.end(), [&](Node leg) {
            return !std::string_view(leg.name()).ends_with("Leg") || TextOf(leg.child("cc")) == code;
        });
    }

    [[nodiscard]] float CalendarSpreadCharge(Node commodity) const {
        float largest = 0;
        for (const Node spread : commodity.children("dSpread")) {
            if (!IsCalendarSpread(spread, Code(commodity, "cc"))) continue;
            if (const Node method = Maybe(spread, "chargeMeth"); method && TextOf(method) != "F") {
                throw Fault(method, fmt::format("a spread is charged by method {}, only F (a flat charge) is known",
                                                TextOf(method)));
            }
            for (const Node rate : spread.children("rate")) largest = std::max(largest, Charge(rate));
        }
        return largest;
    }

    [[nodiscard]] float ShortOptionMinimum(Node commodity) const {
        float largest = 0;
        for (const Node tier : Maybe(commodity, "somTiers").children("tier")) {
            for (const Node rate : tier.children("rate")) largest = std::max(largest, Charge(rate));
        }
        return largest;
    }

    /// Makes the commodities in use the file's underlyings. Until here contracts point into commodities_.
    void ReadUnderlyings() {
        std::vector<std::size_t> places(commodities_.size());
        for (std::size_t i = 0; i < commodities_.size(); ++i) {
            const auto& [node, used] = commodities_[i];
            places[i] = file_.underlyings.size();
            if (!used) continue;
            file_.underlyings.push_back({.code = Code(node, "cc"),
                                         .calendarSpreadCharge = CalendarSpreadCharge(node),
                                         .shortOptionMinimumCharge = ShortOptionMinimum(node)});
        }
        for (RiskContract& contract : file_.contracts) contract.underlying = places[contract.underlying];
    }

    // Contracts

    /// Portfolios of the cash market have no margin by scenarios. One of another kind would leave contracts without.
    void ReadExchange(Node exchange) {
        const std::string code = Code(exchange, "exch");
        for (const Node child : exchange.children()) {
            const std::string_view kind = child.name();
            if (kind == "futPf") {
                ReadFutures(child, code);
            } else if (kind == "oopPf") {
                ReadOptions(child, code);
            } else if (kind.ends_with("Pf") && kind != "phyPf") {
                throw Fault(child, fmt::format("<{}>: instruments of this kind are not known", kind));
            }
        }
    }

    void ReadFutures(Node portfolio, const std::string& exchange) {
        const std::size_t commodity = CommodityOf(portfolio, exchange, "FUT");
        for (const Node future : portfolio.children("fut")) {
            RiskContract contract;
            contract.key = {Code(portfolio, "pfCode"), ContractType::kFuture, Expiry(future), -1};
            ReadFigures(future, future, portfolio, contract);
            Add(std::move(contract), commodity, future);
        }
    }

    void ReadOptions(Node portfolio, const std::string& exchange) {
        const std::size_t commodity = CommodityOf(portfolio, exchange, "OOP");
        const bool american = IsAmerican(portfolio);
        for (const Node series : portfolio.children("series")) {
            const std::int32_t expiry = Expiry(series);
            for (const Node option : series.children("opt")) {
                RiskContract contract;
                contract.key = {Code(portfolio, "pfCode"), OptionType(option), expiry, Strike(option)};
                contract.american = american;
                ReadFigures(option, series, portfolio, contract);
                Add(std::move(contract), commodity, option);
            }
        }
    }

    [[nodiscard]] std::size_t CommodityOf(Node portfolio, const std::string& exchange, const char* kind) const {
        const std::string number = Code(portfolio, "pfId");
        const auto link = links_.find({exchange, kind, number});
        if (link == links_.end()) {
            throw Fault(portfolio, fmt::format("no combined commodity links the portfolio {} {}", kind, number));
        }
        return link->second;
    }

    [[nodiscard]] bool IsAmerican(Node portfolio) const {
        const Node exercise = Only(portfolio, "exercise");
        const std::string_view style = TextOf(exercise);
        if (style != "EURO" && style != "AMER") {
            throw Fault(exercise, fmt::format("<exercise>: {} is neither EURO nor AMER", style));
        }
        return style == "AMER";
    }

    [[nodiscard]] ContractType OptionType(Node option) const {
        const Node type = Only(option, "o");
        if (TextOf(type) == "C") return ContractType::kCall;
        if (TextOf(type) == "P") return ContractType::kPut;
        throw Fault(type, fmt::format("<o>: \"{}\" is neither C nor P", TextOf(type)));
    }

    [[nodiscard]] std::int32_t Strike(Node option) const {
        const Node strike = Only(option, "k");
        const auto paise = StrikeInPaise(Number(strike));
        if (!paise) throw Fault(strike, fmt::format("<k>: {} is no strike price", TextOf(strike)));
        return *paise;
    }

    [[nodiscard]] std::int32_t Expiry(Node holder) const {
        const Node date = Only(holder, "setlDate");
        const auto expiry = ExchangeDate(TextOf(date), "");
        if (!expiry) throw Fault(date, fmt::format("<setlDate>: \"{}\" is no date", TextOf(date)));
        return *expiry;
    }

    /// `terms` holds the factors: the future itself, or the option's series. A portfolio's own value factor counts
    /// where the terms have none.
    void ReadFigures(Node node, Node terms, Node portfolio, RiskContract& contract) const {
        const Node price = Only(node, "p");
        contract.price = Short(Number(price) * ValueFactor(terms, portfolio) * 100, price);

        const Node array = Only(node, "ra");
        const auto values = array.children("a");
        const auto count = static_cast<std::size_t>(std::distance(values.begin(), values.end()));
        if (count != contract.risk.size()) {
            throw Fault(array, fmt::format("{} scenario values, not {}", count, contract.risk.size()));
        }
        std::transform(values.begin(), values.end(), contract.risk.begin(),
                       [this](Node value) { return Short(Number(value), value); });

        const Node delta = Only(array, "d");
        const Node scale = Maybe(terms, "sc");
        contract.compositeDelta = Short(Number(delta) * (scale ? Number(scale) : 1.0), delta);
    }

    [[nodiscard]] double ValueFactor(Node terms, Node portfolio) const {
        const Node own = Maybe(terms, "cvf");
        const Node node = own ? own : Only(portfolio, "cvf");
        const double factor = Number(node);
        if (factor <= 0) throw Fault(node, "a contract value factor must be above zero");
        return factor;
    }

    void Add(RiskContract contract, std::size_t commodity, Node node) {
        if (!keys_.insert(contract.key).second) throw Fault(node, Described(contract.key) + " stands twice");
        commodities_[commodity].used = true;
        contract.underlying = commodity;
        file_.contracts.push_back(std::move(contract));
    }

    const std::string& text_;
    const std::string& name_;
    pugi::xml_document document_;
    std::vector<Commodity> commodities_;
    std::set<std::string> codes_;
    std::map<Portfolio, std::size_t> links_;  ///< to a place in commodities_
    std::set<ContractKey> keys_;
    RiskFile file_;
};

}  // namespace

RiskFile ReadSpan(const std::string& text, const std::string& name) { return SpanReader(text, name).Read(); }

std::string ImportSpan(const ImportOptions& options, std::ostream& notes) {
    RiskFile file = ReadSpan(ReadWhole(options.file), options.file);
    GiveTokens(file, options, notes);
    return ReplayLines(file, options.segment);
}

}  // namespace survhost
