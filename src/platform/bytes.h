#pragma once

#include <string_view>
#include <type_traits>

namespace surv {

/// Whether two records are the same to the last byte. A zero and its negative are not.
template <class Record>
[[nodiscard]] bool SameBytes(const Record& a, const Record& b) {
    static_assert(std::is_trivially_copyable_v<Record>);
    return std::string_view{reinterpret_cast<const char*>(&a), sizeof a} ==
           std::string_view{reinterpret_cast<const char*>(&b), sizeof b};
}

}  // namespace surv
