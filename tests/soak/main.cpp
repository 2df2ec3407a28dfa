// soak: days of a broker's house by chance, for as long as one likes.

#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <random>

#include "again.h"
#include "restart.h"

namespace {

struct Options {
    std::optional<std::uint32_t> seed;  ///< of the first day; each day after it takes the next
    int days = 1;
    double minutes = 0;  ///< above 0: for as long, whatever the number of days
    int calls = 300;
    bool planted = false;
    std::string folder = ".";
    std::string script;
    bool restart = false;  ///< stop each day in its middle and go on afresh
    bool again = false;    ///< play each day twice, and one without limits in another order
};

soak::Planted PlantedOf(const Options& options) { return options.planted ? soak::Planted::kYes : soak::Planted::kNo; }

int Report(const Options& options, const std::string& name, const soak::Script& script, const soak::Fault& fault) {
    std::cout << name << ", call " << fault.call << ": " << fault.check << ": " << fault.what << "\nshrinking "
              << script.size() << " calls" << std::endl;
    const soak::Script left = soak::Shrink(script, fault, PlantedOf(options));
    const std::string file = options.folder + "/soak-" + name + ".jsonl";
    const soak::Fault last = soak::Play(left, PlantedOf(options));
    soak::WriteScript(file, left, fault.check + ": " + last.what);
    std::cout << left.size() << " calls are left in " << file << ": " << last.what << std::endl;
    return 1;
}

int Run(const Options& options) {
    if (!options.script.empty()) {
        const soak::Script script = soak::ReadScript(options.script);
        const soak::Fault fault = soak::Play(script, PlantedOf(options));
        std::cout << (fault.Found() ? fault.check + ": " + fault.what : std::string("all holds")) << std::endl;
        return fault.Found() ? 1 : 0;
    }
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(options.minutes * 60);
    const std::uint32_t first = options.seed ? *options.seed : std::random_device{}();
    soak::Tally seen;
    std::uint32_t day = 0;
    for (; options.minutes > 0 ? Clock::now() < end : day < static_cast<std::uint32_t>(options.days); ++day) {
        if (options.restart || (options.minutes > 0 && day % 8 == 7)) {
            const soak::RestartDay stopped = soak::Restart(first + day, options.calls / 2, options.calls / 2);
            seen["orders after a stop"] += stopped.orders;
            seen["refusals after a stop"] += stopped.refusals;
            seen["rows of screens at a stop"] += stopped.rowsOfScreens;
            if (!stopped.fault.Found()) continue;
            const std::string file = options.folder + "/restart-" + std::to_string(first + day) + ".jsonl";
            soak::WriteScript(file, stopped.fresh, stopped.fault.what);
            std::cout << first + day << ", call " << stopped.fault.call << ": " << stopped.fault.what << std::endl;
            return 1;
        }
        if (options.again || (options.minutes > 0 && day % 8 == 6)) {
            for (const auto play : {&soak::PlayAgain, &soak::PlayShuffled}) {
                const soak::AgainDay twice = play(first + day, options.calls);
                seen["orders of days played again"] += twice.orders;
                if (!twice.fault.Found()) continue;
                const std::string file = options.folder + "/again-" + std::to_string(first + day) + ".jsonl";
                soak::WriteScript(file, twice.script, twice.fault.what);
                std::cout << first + day << ", call " << twice.fault.call << ": " << twice.fault.what << std::endl;
                return 1;
            }
            continue;
        }
        const soak::Day played = soak::Simulate(first + day, options.calls, PlantedOf(options));
        for (const auto& [what, count] : played.seen) seen[what] += count;
        seen["calls"] += played.script.size();
        if (played.fault.Found()) return Report(options, std::to_string(first + day), played.script, played.fault);
    }
    for (const auto& [what, count] : seen) std::cout << what << ": " << count << "\n";
    std::cout << day << " days held, from seed " << first << std::endl;
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Plays days of a broker's house by chance and checks the library after every call");
    app.add_option("--seed", options.seed, "of the first day; left out: any");
    app.add_option("--days", options.days);
    app.add_option("--minutes", options.minutes, "play for as long, whatever the number of days");
    app.add_option("--calls", options.calls, "of a day, after its opening");
    app.add_option("--folder", options.folder, "where the shortest script of a fault goes");
    app.add_option("--script", options.script, "check this script instead");
    app.add_flag("--restart", options.restart, "stop each day in its middle and go on in a fresh process");
    app.add_flag("--again", options.again, "play each day twice, and one without limits in another order");
    app.add_flag("--planted", options.planted)->group("");  // hidden: finds a false invariant
    CLI11_PARSE(app, argc, argv);
    return Run(options);
}
