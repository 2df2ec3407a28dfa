#pragma once

// A day that stops anywhere and goes on in a process that has just started, from the rows that a host can keep.

#include "runner.h"

namespace soak {

struct RestartDay {
    Script fresh;               ///< what the second process was told, the rest of the day included
    Fault fault;                ///< what it answered or ended with otherwise than the day without the stop
    std::size_t orders;         ///< checks and events after the stop
    std::size_t refusals;       ///< of those
    std::size_t rowsOfScreens;  ///< positions that the screens showed at the stop
};

[[nodiscard]] RestartDay Restart(std::uint32_t seed, int callsBefore, int callsAfter);

}  // namespace soak
