#include "runner.h"

#include <algorithm>
#include <fstream>

#include "child.h"
#include "day.h"
#include "script_error.h"

namespace soak {
namespace {

/// What a child says: calls, a fault, and what it has seen.
Day DayOf(const ChildEnd& end) {
    Day day;
    for (const Json& line : end.said) {
        if (line.contains("call")) {
            day.script.push_back(line);
        } else if (line.contains("seen")) {
            for (const auto& [what, count] : line["seen"].items()) day.seen[what] = count;
        } else {
            day.fault = {line["check"], line["what"], line["at"]};
        }
    }
    if (!end.died.empty()) day.fault = {"died", end.died, day.script.size()};
    return day;
}

}  // namespace

Json AsJson(const Fault& fault) { return {{"check", fault.check}, {"what", fault.what}, {"at", fault.call}}; }

Day Simulate(std::uint32_t seed, int calls, Planted planted) {
    return DayOf(InChild([&](const Say& say) {
        CDice dice(seed);
        CHouse house(dice);
        CDay day(dice, house);
        CSimulation simulation(planted);
        const auto holds = [&](const Json& line) {
            say(line);
            const Fault fault = simulation.Play(line);
            if (fault.Found()) say(AsJson(fault));
            return !fault.Found();
        };
        for (const Json& line : house.Opening()) {
            if (!holds(line)) return;
        }
        for (int i = 0; i < calls; ++i) {
            if (!holds(day.Next())) return;
            day.Answered(simulation.Answer());
        }
        if (const Fault fault = simulation.End(); fault.Found()) return say(AsJson(fault));
        say({{"seen", simulation.Seen()}});
    }));
}

Fault Play(const Script& script, Planted planted) {
    return DayOf(InChild([&](const Say& say) {
               CSimulation simulation(planted);
               try {
                   for (const Json& line : script) {
                       const Fault fault = simulation.Play(line);
                       if (fault.Found()) return say(AsJson(fault));
                   }
                   if (const Fault fault = simulation.End(); fault.Found()) say(AsJson(fault));
               } catch (const survhost::ScriptError&) {
                   return;  // what is left of a day that is cut short may be no script
               }
           }))
        .fault;
}

namespace {

/// The parts of a script that can be left out one by one: calls, and the elements of their lists.
struct Part {
    std::size_t call;
    std::string list;  ///< empty: the whole call
    std::size_t element;
};

std::vector<Part> PartsOf(const Script& script, bool elements) {
    std::vector<Part> parts;
    for (std::size_t i = 0; i < script.size(); ++i) {
        if (!elements) parts.push_back({i, "", 0});
        if (!elements) continue;
        for (const auto& [name, value] : script[i].items()) {
            if (!value.is_array() || name == "texts") continue;
            for (std::size_t n = 0; n < value.size(); ++n) parts.push_back({i, name, n});
        }
    }
    return parts;
}

Script Without(const Script& script, const std::vector<Part>& parts, std::size_t from, std::size_t to) {
    Script left = script;
    for (std::size_t i = to; i > from; --i) {  // backwards, so that the indexes ahead stay good
        const Part& part = parts[i - 1];
        const auto at = static_cast<std::ptrdiff_t>(part.call);
        if (part.list.empty()) {
            left.erase(left.begin() + at);
        } else {
            left[part.call][part.list].erase(part.element);
        }
    }
    return left;
}

}  // namespace

Script Shrink(Script script, const Fault& fault, Planted planted) {
    if (fault.call < script.size()) script.resize(fault.call);
    const auto stillFails = [&](const Script& left) { return Play(left, planted).check == fault.check; };
    for (const bool elements : {false, true, false}) {
        std::size_t chunk = std::max<std::size_t>(1, PartsOf(script, elements).size() / 2);
        while (chunk > 0) {
            bool smaller = false;
            for (std::size_t end = PartsOf(script, elements).size(); end > 0;) {
                const std::vector<Part> parts = PartsOf(script, elements);
                end = std::min(end, parts.size());
                const std::size_t from = end > chunk ? end - chunk : 0;
                Script left = Without(script, parts, from, end);
                if (stillFails(left)) script = std::move(left), smaller = true;
                end = from;
            }
            if (chunk == 1 && !smaller) break;
            chunk = chunk == 1 ? 1 : chunk / 2;
        }
    }
    return script;
}

void WriteScript(const std::string& file, const Script& script, const std::string& about) {
    std::ofstream out(file);
    out << "# " << about << "\n# TZ=" << kTimeZone << " survhost replay " << file << "\n";
    for (const Json& line : script) {
        std::string text;
        survhost::WriteJson(line, text);
        out << text << '\n';
    }
    out << R"({"call":"GetAllSurveillancePositions"})" << '\n';
}

Script ReadScript(const std::string& file) {
    Script script;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line[0] == '{') script.push_back(survhost::ParseLine(line));
    }
    return script;
}

}  // namespace soak
