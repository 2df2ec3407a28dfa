#include "again.h"

#include <algorithm>
#include <map>

#include "call_table.h"
#include "child.h"
#include "day.h"

namespace soak {
namespace {

/// A day as it went: each call with its answer, and what the rows say in the end.
struct Played {
    Script script;
    std::vector<Json> told;
    Snapshot end;
    std::string died;
    DayStyle style;
};

/// What decides and a hash of all the rest, rows included, which make an answer long.
Json Told(const Json& answer) {
    return {{"result", answer.value("result", 0)},
            {"status", answer.value("status", 0)},
            {"hash", std::hash<std::string>{}(answer.dump())}};
}

/// Plays in a process of its own: next() gives a call by the answer to the one before it, or nothing at the end.
Played PlayEach(const std::function<std::optional<Json>(const Json& answer)>& next) {
    const ChildEnd child = InChild([&](const Say& say) {
        survhost::Session session;
        Json answer;
        while (const std::optional<Json> line = next(answer)) {
            answer = survhost::RunCall(session, *line);
            if (answer.is_null()) answer = Json::object();
            say({{"line", *line}, {"told", Told(answer)}});
        }
        say({{"end", Snapshot::Take(session).AsJson()}});
    });
    Played played;
    played.died = child.died;
    for (const Json& said : child.said) {
        if (said.contains("line")) played.script.push_back(said["line"]), played.told.push_back(said["told"]);
        if (said.contains("end")) played.end = Snapshot::FromJson(said["end"]);
    }
    return played;
}

Played Replay(const Script& script) {
    std::size_t at = 0;
    return PlayEach([&](const Json&) { return at < script.size() ? std::optional(script[at++]) : std::nullopt; });
}

/// Goes by chance, and ends with a touchline of every scrip.
Played PlayByChance(std::uint32_t seed, DayKind kind, int calls) {
    CDice dice(seed);
    CHouse house(dice, kind);
    CDay day(dice, house);
    const Script opening = house.Opening();
    std::size_t opened = 0;
    int made = 0;
    Played played = PlayEach([&](const Json& answer) -> std::optional<Json> {
        if (opened < opening.size()) return opening[opened++];
        if (made > 0 && made <= calls) day.Answered(answer);
        if (made++ < calls) return day.Next();
        const auto last = static_cast<std::size_t>(made - calls - 1);
        if (last >= house.instruments.size()) return std::nullopt;
        return Touchline(house.instruments[last].exchangeMask, house.instruments[last].token, 24500);
    });
    played.style = house.style;
    return played;
}

std::string HolderOf(const Json& line) {
    if (!line.contains("request")) return {};
    return line["request"].value("dealerCode", "") + "|" + line["request"].value("clientCode", "");
}

/// The orders take the places of a shuffled row of holders; each holder's keep their order, and all else its place.
void Shuffle(Played& day, std::uint32_t seed) {
    std::map<std::string, std::vector<std::size_t>> byHolder;
    std::vector<std::string> places;
    for (std::size_t i = 0; i < day.script.size(); ++i) {
        const std::string holder = HolderOf(day.script[i]);
        if (!holder.empty()) byHolder[holder].push_back(i), places.push_back(holder);
    }
    std::mt19937 random(seed);
    for (std::size_t i = places.size(); i > 1; --i) std::swap(places[i - 1], places[random() % i]);
    const Played from = day;
    std::map<std::string, std::size_t> next;
    auto place = places.begin();
    for (std::size_t i = 0; i < day.script.size(); ++i) {
        if (HolderOf(from.script[i]).empty()) continue;
        const std::size_t taken = byHolder[*place][next[*place]++];
        day.script[i] = from.script[taken], day.told[i] = from.told[taken];
        ++place;
    }
}

/// The end of the second playing, or the first answer in which it differs from the first.
AgainDay Compared(const Played& first, const Played& second,
                  const std::function<bool(const Json& now, const Json& then)>& isSame,
                  const std::function<std::string()>& difference) {
    AgainDay day{first.script, {}, 0};
    for (const Json& line : first.script) day.orders += HolderOf(line).empty() ? 0 : 1;
    for (std::size_t i = 0; i < second.told.size() && !day.fault.Found(); ++i) {
        if (isSame(second.told[i], first.told[i])) continue;
        day.fault = {"again", second.told[i].dump() + " was " + first.told[i].dump(), i + 1};
    }
    if (day.fault.Found()) return day;
    if (const std::string died = first.died + second.died; !died.empty()) day.fault = {"died", died, 0};
    if (const std::string what = difference(); !what.empty()) day.fault = {"again", what, first.script.size()};
    return day;
}

}  // namespace

AgainDay PlayAgain(std::uint32_t seed, int calls) {
    const Played first = PlayByChance(seed, DayKind::kWhole, calls), second = Replay(first.script);
    return Compared(
        first, second, [](const Json& now, const Json& then) { return now == then; },
        [&] { return second.end.Difference(first.end); });
}

AgainDay PlayShuffled(std::uint32_t seed, int calls) {
    Played first = PlayByChance(seed, DayKind::kUnlimited, calls);
    Shuffle(first, seed);
    const Played second = Replay(first.script);
    const auto isSame = [](const Json& now, const Json& then) {
        return now["result"] == then["result"] && now["status"] == then["status"];
    };
    const auto counts = [&](const BKSurveillanceLimitDefTag& row, std::string_view) {
        const std::string entity = Text(row.entityCode);
        return first.style.told || !first.style.products || !(entity == "-" || entity == "*****" || entity[0] == 'G');
    };
    return Compared(first, second, isSame, [&] {
        std::string difference = RowsDiffer(second.end, first.end, counts);
        if (difference.empty())
            difference = PositionsDiffer(second.end, first.end, Amounts::kAll, [](const std::string&) { return true; });
        return difference;
    });
}

}  // namespace soak
