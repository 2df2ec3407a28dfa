#include "snapshot.h"

#include <cstring>

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

}  // namespace soak
