#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace soak {

/// All chance of a day. The same seed throws the same dice on every machine.
class CDice {
 public:
    explicit CDice(std::uint32_t seed) : random_(seed) {}

    int Pick(int low, int high) { return low + static_cast<int>(random_() % static_cast<unsigned>(high - low + 1)); }
    bool OneIn(int chances) { return Pick(1, chances) == 1; }
    std::size_t IndexOf(const auto& of) { return static_cast<std::size_t>(Pick(0, static_cast<int>(of.size()) - 1)); }
    template <class Of>
    auto& PickOf(Of& of) {
        return of[IndexOf(of)];
    }
    /// One of a few that stand in the call.
    template <class First, class... Rest>
    First Among(First first, Rest... rest) {
        const First all[] = {first, static_cast<First>(rest)...};
        return all[Pick(0, static_cast<int>(sizeof...(rest)))];
    }

 private:
    std::mt19937 random_;
};

}  // namespace soak
