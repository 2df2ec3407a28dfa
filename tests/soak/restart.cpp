#include "restart.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <stdexcept>
#include <tuple>

#include "call_table.h"
#include "child.h"
#include "day.h"
#include "surveillance/codes.h"

namespace soak {
namespace {

using namespace surv;

constexpr std::int16_t kNcdexBit = 0x100;
constexpr const char* kOpening[] = {"@clock",
                                    "MTMTimeIntervalAndTickCount",
                                    "SetOrderBasedPosition",
                                    "InitializeProductMasterInfo",
                                    "InitializeAllAdditionalMarginInfo",
                                    "InitializeMCXLOTWeightOnOrOff",
                                    "ProcessRPFInfo"};

/// A limit row as it was handed out. The start forms the margins of the rows of all securities on the expiry side:
/// those of equity are added to what the row says, so it must say nothing.
Json KeptLimit(BKSurveillanceLimitDefTag row) {
    if (row.token == kAllSecurities && (row.limitMask & kExpiryBit))
        row.usedMarginOrder = row.usedMarginTraded = row.usedMarginMax = 0;
    return survhost::DecodeRecord(row);
}

/// An account's position in one scrip and period.
using Holding = std::tuple<std::string, std::string, std::string, int, std::int32_t, bool>;

/// The rows that the screens show of each account, mask by mask.
std::map<Holding, BKExposureTag> ShownPositions(const CBook& book) {
    constexpr int kPositionsOfAccount = 6;
    std::map<Holding, BKExposureTag> shown;
    for (const auto& [entity, entries] : book.EntriesByEntity()) {
        std::set<std::pair<std::string, std::string>> accounts;
        for (const Entry& e : entries) accounts.insert({e.group, e.account});
        for (auto [group, account] : accounts) {
            for (std::int16_t mask = 2; mask < 2 * kNcdexBit;
                 mask = static_cast<std::int16_t>(mask & 1 ? 2 * (mask - 1) : mask + 1)) {
                std::string code = entity;
                survhost::PositionRows rows;
                ::GetNetPositionInfoFromDll(kPositionsOfAccount, code.data(), group.data(), account.data(),
                                            kAllSecurities, mask, rows.Get(), 0, 0);
                for (CPtrList::Position at = rows.Get()->GetHeadPosition(); at;) {
                    const auto& row = *static_cast<const BKExposureTag*>(rows.Get()->GetNext(at));
                    if (Text(row.accountCode) != account) continue;  // a sum over accounts comes of itself
                    shown[{entity, group, account, int{row.marketSegment}, std::int32_t{row.token}, (mask & 1) != 0}] =
                        row;
                }
            }
        }
    }
    return shown;
}

/// The rows of the screens, and of what they don't show those of the dump, which say no mask: the day's come first of
/// each account. Open orders and corrected trades are the host's own to know, and so is the last price.
Json KeptPositions(const Snapshot& state, const CBook& book, std::size_t& fromScreens) {
    const std::map<Holding, BKExposureTag> shown = ShownPositions(book);
    Json rows = Json::array();
    std::set<Holding> seen;
    for (const BKExposureTag& dumped : state.positions) {
        Holding holding{Text(dumped.levelCode),    Text(dumped.groupCode),     Text(dumped.accountCode),
                        int{dumped.marketSegment}, std::int32_t{dumped.token}, false};
        std::get<bool>(holding) = !seen.insert(holding).second;
        const auto screen = shown.find(holding);
        BKExposureTag row = screen == shown.end() ? dumped : screen->second;
        if (screen == shown.end()) {
            row.limitMask =
                PeriodicityOf(row.marketSegment, std::get<bool>(holding) ? Period::kExpiry : Period::kDaily);
            row.lastPrice = static_cast<std::int32_t>(
                book.LastPriceOf(SegmentToExchangeMask(row.marketSegment), row.token));  // a row tells it by its factor
        } else {
            ++fromScreens;
        }
        row.scripRates = dumped.scripRates;
        row.orderBuyQty = dumped.orderBuyQty, row.orderBuyValue = dumped.orderBuyValue;
        row.orderSellQty = dumped.orderSellQty, row.orderSellValue = dumped.orderSellValue;
        row.tradedBuyQty = dumped.tradedBuyQty, row.tradedBuyValue = dumped.tradedBuyValue;
        row.tradedSellQty = dumped.tradedSellQty, row.tradedSellValue = dumped.tradedSellValue;
        rows.push_back(survhost::DecodeRecord(row));
    }
    return rows;
}

/// The calls with which a host starts again: what it loads every day, as it stands now, and the rows that it kept.
Script Kept(const Script& day, const Snapshot& state, const CBook& book, std::size_t& fromScreens) {
    Script calls;
    Json start, preferences = Json::array();
    for (const Json& line : day) {
        const std::string call = line["call"];
        if (call == "InitializeSurvManager") start = line;
        if (call == "AddUpdateClientPreferencesInfo") preferences.push_back(line["preference"]);
        const bool loaded = std::find(std::begin(kOpening), std::end(kOpening), call) != std::end(kOpening);
        if (loaded) calls.push_back(line);
    }
    calls.push_back({{"call", "InitializeClientPreferencesInfo"}, {"preferences", std::move(preferences)}});
    Json limits = Json::array(), holdings = Json::array(), receipts = Json::array();
    for (const BKSurveillanceLimitDefTag& row : state.rows) limits.push_back(KeptLimit(row));
    for (const tagDPHolding& holding : state.holdings) {
        holdings.push_back(survhost::DecodeRecord(holding));
        for (const auto& [mask, quantity] : {std::pair{3, holding.nseSarQty}, std::pair{0x11, holding.bseSarQty}}) {
            if (quantity == 0) continue;
            receipts.push_back({{"categoryCode", Text(holding.categoryCode)},
                                {"limitMask", mask},
                                {"quantity", quantity},
                                {"isinCode", kIsin}});
        }
    }
    start["limitList"] = std::move(limits);
    start["exposureList"] = KeptPositions(state, book, fromScreens);
    start["dpList"] = std::move(holdings);
    start["sarList"] = std::move(receipts);
    calls.push_back(std::move(start));
    calls.push_back({{"call", "ComputeMTMOnOrOff"}, {"mode", 7}});
    for (const auto& [scrip, price] : book.LastPrices()) {
        if (price != 0) calls.push_back(Touchline(scrip.first, scrip.second, price));
    }
    return calls;
}

/// What an answer says, rows apart: those are compared in the end.
Json Told(const Json& answer) {
    Json told = Json::object();
    for (const char* name : {"result", "status", "errorCode", "headCode", "errorText", "failedLevelCode",
                             "failedLevelType", "levelCheckFlags"}) {
        if (const auto found = answer.find(name); found != answer.end()) told[name] = *found;
    }
    return told;
}

std::string RowKey(const BKSurveillanceLimitDefTag& row) {
    return Text(row.entityCode) + ", mask " + std::to_string(row.limitMask) + ", token " + std::to_string(row.token);
}

/// What a start forms anew, or leaves to the host, so that it isn't as it was without the stop.
bool IsFormedAnew(const BKSurveillanceLimitDefTag& row, std::string_view figure, int positionMode) {
    constexpr int kTakesExposureFromFilesAlone = 7;
    const bool margin = figure.starts_with("usedMargin") || figure == "usedExposureMargin";
    if (figure == "subLevel" || figure == "usedTurnoverOrder") return true;
    if (figure == "usedExposureMargin" && row.entityLevel == kTakesExposureFromFilesAlone) return true;
    if (margin && Text(row.entityCode) == "*****") return true;  // no level of a check
    const bool profit = figure.starts_with("usedMtm") || figure == "usedBookedPnl";
    if (profit && row.token != kAllSecurities) return true;  // a start marks the rows of all securities alone
    return positionMode == 1 && (margin || profit);
}

/// Figures of limit rows by row and name.
Json FiguresOf(const Snapshot& state, int positionMode) {
    Json figures = Json::object();
    for (const BKSurveillanceLimitDefTag& row : state.rows) {
        Json& own = figures[RowKey(row)] = Json::object();
        const Json fields = survhost::DecodeRecord(row);
        for (const auto& [name, value] : fields.items()) {
            if (value.is_number() && !IsFormedAnew(row, name, positionMode)) own[name] = value;
        }
    }
    return figures;
}

/// Empty, or the first figure that isn't as it was. One that is left out is 0.
std::string Difference(const Json& now, const Json& then) {
    for (const auto& [row, values] : then.items()) {
        if (!now.contains(row)) return row + " isn't there";
        Json names = values;
        names.update(now[row]);
        for (const auto& [name, any] : names.items()) {
            const double is = now[row].value(name, 0.0), was = values.value(name, 0.0);
            if (std::abs(is - was) <= 1e-4 + 1e-9 * std::abs(was)) continue;
            return std::string(row)
                .append(": ")
                .append(name)
                .append(" is ")
                .append(std::to_string(is))
                .append(", was ")
                .append(std::to_string(was));
        }
    }
    return {};
}

}  // namespace

RestartDay Restart(std::uint32_t seed, int callsBefore, int callsAfter) {
    RestartDay day{};
    int positionMode = 0;
    const auto withoutStop = InChild([&](const Say& say) {
        CDice dice(seed);
        CHouse house(dice, DayKind::kStopped);
        CDay calls(dice, house);
        CSimulation simulation;
        Script before;
        const auto play = [&](const Json& line) {
            const Fault fault = simulation.Play(line);
            if (fault.Found()) throw std::runtime_error(fault.check + ": " + fault.what);
        };
        for (const Json& line : house.Opening()) before.push_back(line), play(line);
        for (int i = 0; i < callsBefore || calls.InTheMiddle(); ++i) {
            before.push_back(calls.Next());
            play(before.back());
            calls.Answered(simulation.Answer());
        }
        std::size_t fromScreens = 0;
        for (const Json& line : Kept(before, simulation.State(), simulation.Book(), fromScreens)) say({{"kept", line}});
        say({{"fromScreens", fromScreens}});
        house.Stopped();
        for (int i = 0; i < callsAfter; ++i) {
            const Json line = calls.Next();
            play(line);
            calls.Answered(simulation.Answer());
            say({{"line", line}, {"told", Told(simulation.Answer())}});
            if (line.value("request", Json::object()).value("messageCode", 0) != 2222) continue;
            // A scrip that nobody holds at the stop is new to a fresh start: its next trade comes with a touchline.
            const auto scrip =
                std::pair{line["trade"].value("exchangeMask", std::int16_t{0}), line["request"].value("token", 0)};
            const std::int32_t price = simulation.Book().LastPrices().at(scrip);
            if (price == 0) continue;
            const Json touchline = Touchline(scrip.first, scrip.second, price);
            play(touchline);
            say({{"line", touchline}, {"told", Told(simulation.Answer())}});
        }
        say({{"ended", FiguresOf(simulation.State(), house.style.positionMode)}, {"mode", house.style.positionMode}});
    });
    if (!withoutStop.died.empty()) {
        day.fault = {"died", withoutStop.died, 0};
        return day;
    }
    std::vector<Json> told;
    Json ended;
    for (const Json& said : withoutStop.said) {
        if (said.contains("kept")) day.fresh.push_back(said["kept"]);
        if (said.contains("line")) day.fresh.push_back(said["line"]), told.push_back(said["told"]);
        if (said.contains("fromScreens")) day.rowsOfScreens = said["fromScreens"];
        if (said.contains("ended")) ended = said["ended"], positionMode = said["mode"];
    }
    const std::size_t opening = day.fresh.size() - told.size();
    const auto afterStop = InChild([&](const Say& say) {
        survhost::Session session;
        const auto blame = [&](const std::string& what, std::size_t call) { say(AsJson({"restart", what, call})); };
        for (std::size_t i = 0; i < day.fresh.size(); ++i) {
            const Json answer = survhost::RunCall(session, day.fresh[i]);
            if (i < opening) continue;
            const Json now = Told(answer), then = told[i - opening];
            if (now != then) return blame(now.dump() + " was " + then.dump(), i + 1);
        }
        const std::string difference = Difference(FiguresOf(Snapshot::Take(session), positionMode), ended);
        if (!difference.empty()) blame(difference, day.fresh.size());
    });
    for (const Json& said : afterStop.said) day.fault = {said["check"], said["what"], said["at"]};
    if (!afterStop.died.empty()) day.fault = {"died", afterStop.died, 0};
    for (std::size_t i = opening; i < day.fresh.size(); ++i) {
        const std::string call = day.fresh[i]["call"];
        day.orders += call == "CheckSurveillance" || call == "UpdateSurveillance" ? 1 : 0;
        const Json& answer = told[i - opening];
        day.refusals += answer.value("status", 0) == status::kRefused ? 1 : 0;
    }
    return day;
}

}  // namespace soak
