#include "text_format.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace survhost {
namespace {

/// The exchanges count from 1980-01-01.
constexpr std::int64_t kExchangeEpoch = 315'532'800;

/// Groups the digits of a whole number: three, then twos.
std::string GroupDigits(std::string digits) {
    for (std::size_t at = digits.size(), step = 3; at > step; step = 2) {
        at -= step;
        digits.insert(at, 1, ',');
    }
    return digits;
}

std::string FormatTime(const std::tm& time, const char* format) {
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &time)};
}

std::tm LocalTime(std::int64_t seconds) {
    const std::time_t moment = seconds;
    std::tm time{};
    localtime_r(&moment, &time);
    return time;
}

/// How many letters must be changed, added or left out to make one word of the other.
std::size_t Distance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j) row[j] = j;
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t corner = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = corner + (from[i] == to[j] ? 0 : 1);
            corner = row[j + 1];
            row[j + 1] = std::min({changed, corner + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string Suggestion(std::string_view word, const std::vector<std::string_view>& known) {
    constexpr std::size_t kTypingFault = 2;  // letters
    for (const std::string_view other : known) {
        const bool begun = word.size() > kTypingFault && other.starts_with(word);
        if (begun || Distance(word, other) <= kTypingFault) return fmt::format("; do you mean \"{}\"?", other);
    }
    return {};
}

std::string Grouped(std::int64_t number) {
    const std::string digits = std::to_string(number);
    return number < 0 ? "-" + GroupDigits(digits.substr(1)) : GroupDigits(digits);
}

std::string Rupees(double paise) {
    if (!std::isfinite(paise)) return "-";
    const std::string text = fmt::format("{:.2f}", std::abs(paise) / 100.0);
    const std::size_t point = text.size() - 3;
    return (paise < 0 ? "-" : "") + GroupDigits(text.substr(0, point)) + text.substr(point);
}

std::string TimeOfDay(std::optional<std::int64_t> seconds) {
    return seconds ? FormatTime(LocalTime(*seconds), "%H:%M:%S") : std::string(8, ' ');
}

std::string DateOf(std::int64_t seconds) { return FormatTime(LocalTime(seconds), "%a %d %b %Y"); }

std::string ExpiryText(std::int32_t exchangeSeconds) {
    const std::time_t moment = kExchangeEpoch + exchangeSeconds;
    std::tm time{};
    gmtime_r(&moment, &time);
    std::string text = FormatTime(time, "%d%b%y");
    for (char& letter : text) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return text;
}

std::string Squeezed(std::string_view text) {
    std::string squeezed;
    for (const char letter : text) {
        const bool blank = letter == ' ' || letter == '\t';
        if (!blank || (!squeezed.empty() && squeezed.back() != ' ')) squeezed += blank ? ' ' : letter;
    }
    if (squeezed.ends_with(' ')) squeezed.pop_back();
    return squeezed;
}

std::string Painter::Paint(Colour colour, std::string_view text) const {
    constexpr std::array kCodes{"0", "31", "32", "33", "2", "1"};
    if (!on_ || colour == Colour::kNone) return std::string(text);
    return fmt::format("\x1b[{}m{}\x1b[0m", kCodes[static_cast<std::size_t>(colour)], text);
}

bool IsTerminal(int descriptor) { return isatty(descriptor) != 0; }

bool WantsColour(int descriptor) {
    const char* plain = std::getenv("NO_COLOR");
    return IsTerminal(descriptor) && !(plain && *plain);
}

}  // namespace survhost
