#include "runner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>

#include "day.h"
#include "script_error.h"

namespace soak {
namespace {

constexpr unsigned kMostSeconds = 120;

/// Runs `work` in a child and gives its last line of output as it stands; a child that dies is a fault of its own.
/// What the child says on the way can't get lost: it is written line by line.
struct ChildEnd {
    std::string said;
    std::string died;  ///< empty: it ended by itself
};

ChildEnd InChild(const std::function<void(int pipe)>& work) {
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    const pid_t child = ::fork();
    if (child < 0) std::abort();
    if (child == 0) {
        ::close(ends[0]);
        ::alarm(kMostSeconds);
        ::setenv("TZ", kTimeZone, 1);
        ::tzset();
        work(ends[1]);
        ::_exit(0);
    }
    ::close(ends[1]);
    ChildEnd end;
    char buffer[1 << 16];
    for (ssize_t got = 0; (got = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        end.said.append(static_cast<const char*>(buffer), static_cast<std::size_t>(got));
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) end.died = "signal " + std::to_string(WTERMSIG(status));
    if (WIFEXITED(status) && WEXITSTATUS(status) != 0) end.died = "exit " + std::to_string(WEXITSTATUS(status));
    return end;
}

void Say(int pipe, const Json& line) {
    std::string text;
    survhost::WriteJson(line, text);
    text += '\n';
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t wrote = ::write(pipe, text.data() + done, text.size() - done);
        if (wrote <= 0) ::_exit(3);
        done += static_cast<std::size_t>(wrote);
    }
}

Json AsJson(const Fault& fault) { return {{"check", fault.check}, {"what", fault.what}, {"at", fault.call}}; }

/// Lines of a child: calls, and in the end a fault.
void ReadSaid(const ChildEnd& end, Script& script, Fault& fault, Tally& seen) {
    std::size_t from = 0;
    for (std::size_t to = 0; (to = end.said.find('\n', from)) != std::string::npos; from = to + 1) {
        Json line = Json::parse(end.said.substr(from, to - from));
        if (line.contains("call")) {
            script.push_back(std::move(line));
        } else if (line.contains("seen")) {
            for (const auto& [what, count] : line["seen"].items()) seen[what] = count;
        } else {
            fault = {line["check"], line["what"], line["at"]};
        }
    }
    if (!end.died.empty()) fault = {"died", end.died, script.size()};
}

}  // namespace

Day Simulate(std::uint32_t seed, int calls, Planted planted) {
    const ChildEnd end = InChild([&](int pipe) {
        CDice dice(seed);
        CHouse house(dice);
        CDay day(dice, house);
        CSimulation simulation(planted);
        const auto play = [&](const Json& line) {
            Say(pipe, line);
            const Fault fault = simulation.Play(line);
            if (fault.Found()) Say(pipe, AsJson(fault)), ::_exit(0);
        };
        for (const Json& line : house.Opening()) play(line);
        for (int i = 0; i < calls; ++i) {
            const Json line = day.Next();
            play(line);
            day.Answered(simulation.Answer());
        }
        Say(pipe, {{"seen", simulation.Seen()}});
    });
    Day played;
    ReadSaid(end, played.script, played.fault, played.seen);
    return played;
}

Fault Play(const Script& script, Planted planted) {
    const ChildEnd end = InChild([&](int pipe) {
        CSimulation simulation(planted);
        for (const Json& line : script) {
            try {
                const Fault fault = simulation.Play(line);
                if (fault.Found()) return Say(pipe, AsJson(fault));
            } catch (const survhost::ScriptError&) {
                return;  // what is left of a shrunken day may be no script
            }
        }
    });
    Fault fault;
    Script none;
    Tally seen;
    ReadSaid(end, none, fault, seen);
    return fault;
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
