#pragma once

// The same day once more: from its script, and with those who trade in another order.

#include "runner.h"

namespace soak {

struct AgainDay {
    Script script;           ///< of the second playing
    Fault fault;             ///< what it answered or ended with otherwise than the first
    std::size_t orders = 0;  ///< checks and events
};

/// The script of a day, played in a process of its own: each answer and the end are the same to the last bit.
[[nodiscard]] AgainDay PlayAgain(std::uint32_t seed, int calls);
/// A day without limits, in which each holder's calls keep their order and the holders are shuffled.
[[nodiscard]] AgainDay PlayShuffled(std::uint32_t seed, int calls);

}  // namespace soak
