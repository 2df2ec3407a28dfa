#pragma once

// Small pieces of text for people.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace survhost {

/// 1234567 as 12,34,567: thousands, then lakhs and crores.
std::string Grouped(std::int64_t number);
/// Paise as rupees with two decimals, grouped. A figure that isn't finite comes as "-".
std::string Rupees(double paise);

/// "09:15:02" in the time zone of the process; blanks without a time.
std::string TimeOfDay(std::optional<std::int64_t> seconds);
/// "Fri 21 Nov 2025".
std::string DateOf(std::int64_t seconds);
/// "27NOV25", from exchange seconds.
std::string ExpiryText(std::int32_t exchangeSeconds);

/// Without blanks at the ends, and one blank for each run of them.
std::string Squeezed(std::string_view text);

/// What may have been meant by a word that isn't among the known ones: `; do you mean "price"?`, or nothing.
std::string Suggestion(std::string_view word, const std::vector<std::string_view>& known);

enum class Colour : std::uint8_t { kNone, kRed, kGreen, kYellow, kDim, kBold };

/// Colours text on a terminal, and leaves it alone elsewhere.
class Painter {
 public:
    explicit Painter(bool on) : on_(on) {}
    [[nodiscard]] std::string Paint(Colour colour, std::string_view text) const;

 private:
    bool on_;
};

/// The stream with this descriptor is a terminal.
bool IsTerminal(int descriptor);
/// A terminal, and its owner hasn't asked for plain text.
bool WantsColour(int descriptor);

}  // namespace survhost
