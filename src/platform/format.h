#pragma once

#include <string>

namespace surv {

/// The formatted text, whatever its length.
[[gnu::format(printf, 1, 2)]] [[nodiscard]] std::string Format(const char* format, ...);

}  // namespace surv
