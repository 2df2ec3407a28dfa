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

}  // namespace

Snapshot Snapshot::Take(const survhost::Session& session) {
    constexpr int kEveryCategory = 0;
    Snapshot snapshot;
    survhost::LimitRows limits(survhost::LimitRowOwner(session));
    survhost::PositionRows positions;
    GetAllSurveillancePositions(limits.Get(), positions.Get());
    snapshot.rows = Copies<BKSurveillanceLimitDefTag>(limits);
    for (const BKExposureTag& row : Copies<BKExposureTag>(positions)) {
        const std::string label = Text(row.contract.optionType);
        const bool product = label == "DD" || label == "MP" || label == "MD";
        (product ? snapshot.netted : snapshot.positions).push_back(row);
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
    if (difference.empty()) difference = FirstDifference(netted, other.netted, " netted position(s)");
    if (difference.empty()) difference = FirstDifference(holdings, other.holdings, " holding(s)");
    return difference;
}

}  // namespace soak
