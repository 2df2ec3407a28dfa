#pragma once

#include <ostream>
#include <string>

#include "text_format.h"

namespace survhost {

struct DemoOptions {
    std::string examples;  ///< the folder that holds the example day
    bool all = false;      ///< show every order instead of a sample
    bool json = false;     ///< write the answers instead
};

/// Plays the example day and shows it: the house, its orders, the summary. Throws RunError as a replay does.
void PlayDemo(const DemoOptions& options, std::ostream& out, const Painter& painter);

}  // namespace survhost
