#pragma once

// What a host can see of the library's state, by its exported functions.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "json_record.h"
#include "session.h"
#include "surveillance/surveillance.h"

namespace soak {

struct Snapshot {
    std::vector<BKSurveillanceLimitDefTag> rows;
    std::vector<BKExposureTag> positions;  ///< of every account, the day's ahead of the whole
    std::vector<BKExposureTag> sums;       ///< over the holders of an account, where a level sums
    std::vector<BKExposureTag> netted;     ///< of products, over accounts; positionMode 1 alone shows them
    std::vector<tagDPHolding> holdings;

    [[nodiscard]] static Snapshot Take(const survhost::Session& session);
    /// Empty, or what differs first, byte for byte.
    [[nodiscard]] std::string Difference(const Snapshot& other) const;

    /// Every byte, as text from process to process.
    [[nodiscard]] survhost::Json AsJson() const;
    [[nodiscard]] static Snapshot FromJson(const survhost::Json& json);
};

/// Empty, or the first figure in use of a limit row that differs by more than a millionth, where it counts.
[[nodiscard]] std::string RowsDiffer(
    const Snapshot& now, const Snapshot& then,
    const std::function<bool(const BKSurveillanceLimitDefTag& row, std::string_view figure)>& counts);

enum class Amounts : std::uint8_t { kAll, kQuantities };
/// Empty, or what an account holds otherwise, its place in the list apart; or a holding that has moved. Of the entities
/// that count.
[[nodiscard]] std::string PositionsDiffer(const Snapshot& now, const Snapshot& then, Amounts amounts,
                                          const std::function<bool(const std::string& entity)>& counts);

/// A text field up to its first zero, without blanks at its end.
template <std::size_t Width>
std::string Text(const char (&field)[Width]) {
    const std::string_view text(static_cast<const char*>(field), Width);
    const std::string_view upToZero = text.substr(0, text.find('\0'));
    return std::string(upToZero.substr(0, upToZero.find_last_not_of(' ') + 1));
}

}  // namespace soak
