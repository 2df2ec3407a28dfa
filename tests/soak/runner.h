#pragma once

// Days in processes of their own, and what is left of a day that went wrong.

#include <string>

#include "simulation.h"

namespace soak {

struct Day {
    Script script;
    Fault fault;
    Tally seen;
};

/// Plays a day by chance, to its end or its first fault.
[[nodiscard]] Day Simulate(std::uint32_t seed, int calls, Planted planted = Planted::kNo);
/// Plays a script with every check.
[[nodiscard]] Fault Play(const Script& script, Planted planted = Planted::kNo);
/// A script with as few calls as it takes for the same check to fail.
[[nodiscard]] Script Shrink(Script script, const Fault& fault, Planted planted = Planted::kNo);

[[nodiscard]] Json AsJson(const Fault& fault);
void WriteScript(const std::string& file, const Script& script, const std::string& about);
[[nodiscard]] Script ReadScript(const std::string& file);

}  // namespace soak
