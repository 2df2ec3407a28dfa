#include "summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "call_table.h"
#include "surveillance/codes.h"

namespace survhost {
namespace {

/// How a used figure is held against its limit, which is in paise.
enum class Measure : std::uint8_t { kPlain, kAbsolute, kLoss, kRupees };

struct LimitKind {
    std::string_view name;
    const char* limit;
    const char* used;
    const char* usedGross;  ///< instead of used, on rows that judge the accounts one by one; null: the same
    Measure measure;
};

/// The limits that a row keeps a running figure for. Limits on a single order have none.
constexpr std::array kLimitKinds{
    LimitKind{"gross exposure", "grossExposureLimit", "usedMaxGross", "grossUsedMaxGross", Measure::kPlain},
    LimitKind{"net exposure", "netExposureLimit", "usedMaxNet", "grossUsedMaxNet", Measure::kPlain},
    LimitKind{"net sale", "netSaleExposureLimit", "usedMaxNetSale", "grossUsedMaxNetSale", Measure::kPlain},
    LimitKind{"net position", "netPositionLimit", "usedMaxNetPosition", nullptr, Measure::kAbsolute},
    LimitKind{"turnover", "turnoverLimit", "usedMaxTurnover", nullptr, Measure::kPlain},
    LimitKind{"pending order", "pendingOrderLimit", "usedPendingOrder", nullptr, Measure::kPlain},
    LimitKind{"mark to market", "mtmLossLimit", "usedMtm", nullptr, Measure::kLoss},
    LimitKind{"margin", "marginLimit", "usedMarginMax", nullptr, Measure::kRupees},
};

constexpr int kGrossBasis = 8;  ///< limitOptions

/// The figure in paise, with the sign by which it eats up its limit.
double UsedPaise(Measure measure, double figure) {
    switch (measure) {
        case Measure::kPlain: return figure;
        case Measure::kAbsolute: return std::abs(figure);
        case Measure::kLoss: return -figure;
        case Measure::kRupees: return figure * 100.0;
    }
    return figure;
}

/// " of Equity ( NSE-Daily) " as "Equity (NSE-Daily)", with the token of a row that isn't for all securities.
std::string ScopeText(const Json& row) {
    const std::int32_t mask = LongAt(row, "limitMask");
    std::string label = Squeezed(surv::LimitMaskLabel(static_cast<std::int16_t>(mask)));
    if (label.starts_with("of ")) label.erase(0, 3);
    if (const auto gap = label.find("( "); gap != std::string::npos) label.erase(gap + 1, 1);
    if (label.empty()) label = fmt::format("mask {}", mask);
    const std::int32_t token = LongAt(row, "token");
    return token == surv::kAllSecurities ? label : fmt::format("{}, token {}", label, token);
}

std::string Percent(double share) {
    return std::isfinite(share) ? fmt::format("{:.1f} %", share * 100.0) : std::string("no limit left");
}

void PrintCount(std::ostream& out, std::size_t count, std::string_view what) {
    out << fmt::format("  {:>9}  {}\n", Grouped(static_cast<std::int64_t>(count)), what);
}

/// The entries of a count, largest first.
template <class Map>
auto LargestFirst(const Map& counts) {
    std::vector<std::pair<typename Map::key_type, std::size_t>> sorted(counts.begin(), counts.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    return sorted;
}

}  // namespace

std::vector<LimitUse> LimitUses(const Json& row) {
    std::vector<LimitUse> uses;
    const bool gross = (LongAt(row, "limitOptions") & kGrossBasis) != 0;
    for (const LimitKind& kind : kLimitKinds) {
        const double limit = NumberAt(row, kind.limit, surv::kNoLimit);
        const char* figure = gross && kind.usedGross ? kind.usedGross : kind.used;
        const double used = UsedPaise(kind.measure, NumberAt(row, figure));
        if (limit == surv::kNoLimit || !(used > 0)) continue;
        const double share = limit > 0 ? used / limit : std::numeric_limits<double>::infinity();
        uses.push_back({TextAt(row, "entityCode"), ScopeText(row), std::string(kind.name), used, limit, share});
    }
    return uses;
}

void Summary::OnCall(const Played& played) {
    const auto order = ViewOrder(played);
    if (!order) {
        ++otherCalls_;
        return;
    }
    ++outcomes_[static_cast<std::size_t>(order->outcome)];
    if (order->outcome != Outcome::kRefused) return;
    ++byRule_[{order->errorCode, order->rule}];
    ++byLevel_[order->level];
}

void Summary::Print(std::ostream& out, Session& session, const Painter& painter) const {
    const auto count = [&](Outcome outcome) { return outcomes_[static_cast<std::size_t>(outcome)]; };
    const std::size_t checked = count(Outcome::kAccepted) + count(Outcome::kRefused);
    out << '\n' << painter.Paint(Colour::kBold, "Orders") << '\n';
    PrintCount(out, checked, "checked");
    PrintCount(out, count(Outcome::kAccepted), painter.Paint(Colour::kGreen, "accepted"));
    PrintCount(out, count(Outcome::kRefused), painter.Paint(Colour::kRed, "refused"));
    if (count(Outcome::kProbed) > 0) PrintCount(out, count(Outcome::kProbed), "probed");
    PrintCount(out, count(Outcome::kTaken), "events taken in");
    if (count(Outcome::kNotDone) > 0) PrintCount(out, count(Outcome::kNotDone), "not done");
    PrintCount(out, otherCalls_, "other calls");
    PrintRefusals(out, painter);
    PrintLimits(out, session, painter);
}

void Summary::PrintRefusals(std::ostream& out, const Painter& painter) const {
    if (byRule_.empty()) return;
    out << '\n' << painter.Paint(Colour::kBold, "Refused by rule") << '\n';
    for (const auto& [rule, count] : LargestFirst(byRule_)) {
        PrintCount(out, count, fmt::format("{:>5}  {:<18}  {}", rule.first, ErrorName(rule.first), rule.second));
    }
    out << '\n' << painter.Paint(Colour::kBold, "Refused at") << '\n';
    for (const auto& [level, count] : LargestFirst(byLevel_)) PrintCount(out, count, level);
}

void Summary::PrintLimits(std::ostream& out, Session& session, const Painter& painter) {
    constexpr std::size_t kShown = 10;
    out << '\n' << painter.Paint(Colour::kBold, "Most used limits") << '\n';
    if (!session.Started()) {
        out << "  the library is not running at the end of the script\n";
        return;
    }
    // The rows come by the same road as a script's, so that live rows are treated alike.
    const Json dump = RunCall(session, {{"call", "GetAllSurveillancePositions"}, {"want", Json::array({"limits"})}});
    std::vector<LimitUse> uses;
    for (const Json& row : dump.value("limits", Json::array())) {
        for (LimitUse& use : LimitUses(row)) uses.push_back(std::move(use));
    }
    std::stable_sort(uses.begin(), uses.end(), [](const LimitUse& a, const LimitUse& b) { return a.share > b.share; });
    if (uses.empty()) out << "  no limit is in use\n";
    for (std::size_t i = 0; i < std::min(kShown, uses.size()); ++i) {
        const LimitUse& use = uses[i];
        const std::string share = fmt::format("{:>13}", Percent(use.share));
        out << fmt::format("{}  {:<8} {:<16} {:<32} {:>20} of {:>20}\n",
                           use.share >= 0.9 ? painter.Paint(Colour::kRed, share) : share, use.entity, use.limit,
                           use.scope, Rupees(use.usedPaise), Rupees(use.limitPaise));
    }
}

}  // namespace survhost
