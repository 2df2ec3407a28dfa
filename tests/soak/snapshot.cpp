#include "snapshot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>

#include "call_table.h"

namespace soak {
namespace {

template <class Row, class List>
std::vector<Row> Copies(List& list) {
    std::vector<Row> rows;
    CPtrList& from = *list.Get();
    for (CPtrList::Position at = from.GetHeadPosition(); at;)
        rows.push_back(*static_cast<const Row*>(from.GetNext(at)));
    return rows;
}

template <class Row>
std::string FirstDifference(const std::vector<Row>& a, const std::vector<Row>& b, const char* kind) {
    if (a.size() != b.size()) {
        return std::to_string(a.size()).append(kind).append(" were ").append(std::to_string(b.size()));
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::memcmp(static_cast<const void*>(&a[i]), &b[i], sizeof(Row)) == 0) continue;
        const survhost::Json now = survhost::DecodeRecord(a[i]), then = survhost::DecodeRecord(b[i]);
        return now.dump().append(kind).append(" was ").append(then.dump());
    }
    return {};
}

/// A sum over an account's holders has a code of 6 or 10 characters, padded, and a '+' behind it, which the first look
/// at it takes off for good. Gives whether the row is one, and leaves it without.
bool TakesSumsMark(BKExposureTag& row) {
    const std::string_view code(static_cast<const char*>(row.accountCode), sizeof row.accountCode);
    const std::string_view text = code.substr(0, code.find('\0'));
    const bool marked = text.ends_with('+');
    if (marked) row.accountCode[text.size() - 1] = '\0';
    return marked || text.ends_with(' ');
}

}  // namespace

Snapshot Snapshot::Take(const survhost::Session& session) {
    constexpr int kEveryCategory = 0;
    Snapshot snapshot;
    survhost::LimitRows limits(survhost::LimitRowOwner(session));
    survhost::PositionRows positions;
    GetAllSurveillancePositions(limits.Get(), positions.Get());
    snapshot.rows = Copies<BKSurveillanceLimitDefTag>(limits);
    for (BKExposureTag& row : Copies<BKExposureTag>(positions)) {
        const std::string label = Text(row.contract.optionType);
        if (label == "DD" || label == "MP" || label == "MD") {
            row.mtmValue = row.openPositionValue = 0;  // formed anew whenever a screen shows them
            snapshot.netted.push_back(row);
        } else {
            (TakesSumsMark(row) ? snapshot.sums : snapshot.positions).push_back(row);
        }
    }
    survhost::HoldingRows holdings;
    std::string code, everyIsin = "ALL";
    GetDPPositionInfoFromDll(kEveryCategory, code.data(), everyIsin.data(), holdings.Get());
    snapshot.holdings = Copies<tagDPHolding>(holdings);
    return snapshot;
}

std::string Snapshot::Difference(const Snapshot& other) const {
    std::string difference = FirstDifference(rows, other.rows, " limit row(s)");
    if (difference.empty()) difference = FirstDifference(positions, other.positions, " position(s)");
    if (difference.empty()) difference = FirstDifference(sums, other.sums, " sum(s)");
    if (difference.empty()) difference = FirstDifference(netted, other.netted, " netted position(s)");
    if (difference.empty()) difference = FirstDifference(holdings, other.holdings, " holding(s)");
    return difference;
}

namespace {

template <class Row>
std::string Hex(const std::vector<Row>& rows) {
    std::string text;
    const auto* bytes = reinterpret_cast<const unsigned char*>(rows.data());
    for (std::size_t i = 0; i < rows.size() * sizeof(Row); ++i) {
        text += "0123456789abcdef"[bytes[i] >> 4];
        text += "0123456789abcdef"[bytes[i] & 15];
    }
    return text;
}

template <class Row>
std::vector<Row> FromHex(const std::string& text) {
    const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
    std::vector<Row> rows(text.size() / 2 / sizeof(Row));
    auto* bytes = reinterpret_cast<unsigned char*>(rows.data());
    for (std::size_t i = 0; i < rows.size() * sizeof(Row); ++i)
        bytes[i] = static_cast<unsigned char>(digit(text[2 * i]) << 4 | digit(text[2 * i + 1]));
    return rows;
}

}  // namespace

survhost::Json Snapshot::AsJson() const { return {Hex(rows), Hex(positions), Hex(sums), Hex(netted), Hex(holdings)}; }

Snapshot Snapshot::FromJson(const survhost::Json& json) {
    return {FromHex<BKSurveillanceLimitDefTag>(json[0]), FromHex<BKExposureTag>(json[1]),
            FromHex<BKExposureTag>(json[2]), FromHex<BKExposureTag>(json[3]), FromHex<tagDPHolding>(json[4])};
}

// ---------------------------------------------------------------------------------------------------------------
// Figures

namespace {

bool Near(double a, double b) {
    constexpr double kMillionth = 1e-6;
    return std::abs(a - b) <= kMillionth + 1e-12 * std::max(std::abs(a), std::abs(b));
}

using RowKey = std::tuple<std::string, int, std::int32_t>;
std::map<RowKey, const BKSurveillanceLimitDefTag*> ByKey(const std::vector<BKSurveillanceLimitDefTag>& rows) {
    std::map<RowKey, const BKSurveillanceLimitDefTag*> byKey;
    for (const BKSurveillanceLimitDefTag& row : rows)
        byKey[{Text(row.entityCode), int{row.limitMask}, std::int32_t{row.token}}] = &row;
    return byKey;
}

/// Empty, or a number of a record that isn't as it was, of those whose names count.
std::string NumbersDiffer(const survhost::Json& now, const survhost::Json& then,
                          const std::function<bool(std::string_view name)>& counts) {
    survhost::Json names = now;
    names.update(then);
    for (const auto& [name, any] : names.items()) {
        if (!any.is_number() || !counts(name)) continue;
        const double is = now.value(name, 0.0), was = then.value(name, 0.0);
        if (!Near(is, was)) return name + " is " + std::to_string(is) + ", was " + std::to_string(was);
    }
    return {};
}

/// What an account holds of a scrip, blanks apart. The dump tells no period and no product: it is a set.
using Held = std::map<std::string, std::vector<std::array<double, 8>>>;
using Counts = std::function<bool(const std::string& entity)>;
void Add(Held& held, const std::vector<BKExposureTag>& rows, Amounts amounts, const Counts& counts, bool byAccount) {
    for (const BKExposureTag& row : rows) {
        if (!counts(Text(row.levelCode))) continue;
        const double money = amounts == Amounts::kAll ? 1 : 0;
        const std::array<double, 8> position{static_cast<double>(row.orderBuyQty),
                                             static_cast<double>(row.orderSellQty),
                                             static_cast<double>(row.tradedBuyQty),
                                             static_cast<double>(row.tradedSellQty),
                                             money * row.orderBuyValue,
                                             money * row.orderSellValue,
                                             money * row.tradedBuyValue,
                                             money * row.tradedSellValue};
        if (position == std::array<double, 8>{}) continue;
        std::string place = Text(row.levelCode) + ", segment " + std::to_string(row.marketSegment) + ", token " +
                            std::to_string(row.token);
        if (byAccount) place += ", account " + Text(row.groupCode) + "/" + Text(row.accountCode);
        held[place].push_back(position);
    }
}
Held HeldIn(const Snapshot& state, Amounts amounts, const Counts& counts) {
    Held held;
    Add(held, state.positions, amounts, counts, true);
    Add(held, state.sums, amounts, counts, true);
    Add(held, state.netted, amounts, counts, false);  // tells the first account of all
    for (auto& [place, positions] : held) std::sort(positions.begin(), positions.end());
    return held;
}

std::string Told(const std::vector<std::array<double, 8>>& positions) {
    std::string text;
    for (const auto& position : positions) {
        for (const double amount : position) text += std::to_string(amount) + " ";
        text += "; ";
    }
    return text;
}

}  // namespace

std::string RowsDiffer(const Snapshot& now, const Snapshot& then,
                       const std::function<bool(const BKSurveillanceLimitDefTag&, std::string_view)>& counts) {
    const auto rows = ByKey(now.rows), before = ByKey(then.rows);
    for (const auto& [key, row] : rows) {
        const auto old = before.find(key);
        if (old == before.end()) return std::get<0>(key) + " has a new row";
        if (std::memcmp(row, old->second, sizeof *row) == 0) continue;
        const auto figure = [&, of = row](std::string_view name) {
            return (name.starts_with("used") || name.starts_with("grossUsed")) && counts(*of, name);
        };
        const std::string what =
            NumbersDiffer(survhost::DecodeRecord(*row), survhost::DecodeRecord(*old->second), figure);
        if (what.empty()) continue;
        return std::get<0>(key) + ", mask " + std::to_string(std::get<1>(key)) + ", token " +
               std::to_string(std::get<2>(key)) + ": " + what;
    }
    return rows.size() == before.size() ? std::string() : "a row has gone";
}

std::string PositionsDiffer(const Snapshot& now, const Snapshot& then, Amounts amounts, const Counts& counts) {
    const Held is = HeldIn(now, amounts, counts), was = HeldIn(then, amounts, counts);
    for (const auto& [place, positions] : is) {
        const auto old = was.find(place);
        if (old == was.end()) return place + " held nothing";
        if (old->second != positions) return place + " holds " + Told(positions) + ", held " + Told(old->second);
    }
    for (const auto& [place, positions] : was) {
        if (!is.contains(place)) return place + " holds nothing any more";
    }
    for (std::size_t i = 0; i < now.holdings.size() && now.holdings.size() == then.holdings.size(); ++i) {
        const survhost::Json holding = survhost::DecodeRecord(now.holdings[i]);
        const bool quantities = amounts == Amounts::kQuantities;
        const std::string what =
            NumbersDiffer(holding, survhost::DecodeRecord(then.holdings[i]),
                          [&](std::string_view name) { return !quantities || name.ends_with("Qty"); });
        if (!what.empty()) return "holding of " + Text(now.holdings[i].categoryCode) + ": " + what;
    }
    return {};
}

}  // namespace soak
