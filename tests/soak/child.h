#pragma once

// Work in a process of its own, which the library takes for the host's: it keeps settings as long as a process lives.

#include <functional>
#include <string>
#include <vector>

#include "house.h"

namespace soak {

/// What a child said, line by line: what it has said isn't lost when it dies.
struct ChildEnd {
    std::vector<Json> said;
    std::string died;  ///< empty: it ended by itself
};
using Say = std::function<void(const Json& line)>;

[[nodiscard]] ChildEnd InChild(const std::function<void(const Say& say)>& work);

}  // namespace soak
